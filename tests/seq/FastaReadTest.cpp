#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "TestSupport.h"
#include "seq/FastaScanner.h"
#include "seq/MSSeq.h"
#include "seq/SSeq.h"
#include "seq/VSeq.h"

namespace genetrain {
namespace {

struct Read {
  std::vector<std::string> labels;
  std::vector<std::string> sequences;
};

template <typename Holder>
Read ReadWith(const std::string& content) {
  test::ScratchDir dir;
  Holder holder;
  EXPECT_TRUE(holder.ReadFasta(dir.Write("in.fa", content)));
  Read read;
  for (const SeqRecord& record : holder.Records()) {
    read.labels.push_back(record.label);
    read.sequences.push_back(record.sequence);
  }
  return read;
}

using Strings = std::vector<std::string>;

TEST(FastaRead, TextWithoutHeaderIsOneRecordWithEmptyLabel) {
  const Read read = ReadWith<SSeq>("ACGT\n");
  EXPECT_EQ(read.labels, Strings{""});
  EXPECT_EQ(read.sequences, Strings{"ACGT"});
}

TEST(FastaRead, CaseAndUAndOtherLettersInBothViews) {
  const std::string content = ">r\nacgtu ACGTU\nRYnX bdhkmsvw\n";
  EXPECT_EQ(ReadWith<SSeq>(content).sequences, Strings{"ACGTTACGTTNNNNNNNNNNNN"});
  EXPECT_EQ(ReadWith<MSSeq>(content).sequences, Strings{"acgttACGTTNNNNNNNNNNNN"});
}

TEST(FastaRead, CarriageReturnStaysInTheLabelOnly) {
  const Read read = ReadWith<SSeq>(">chr1 x\r\nAC\r\nGT\r\n>chr2\r\nTT");
  EXPECT_EQ(read.labels, (Strings{">chr1 x\r", ">chr2\r"}));
  EXPECT_EQ(read.sequences, (Strings{"ACGT", "TT"}));
}

TEST(FastaRead, DigitsBlanksAndPunctuationAreDropped) {
  const Read read =
      ReadWith<MSSeq>(std::string(">gb\n     1 acgtac-gta *.\n    61 ggg\xc3\xa9\x01\0tt\n", 42));
  EXPECT_EQ(read.sequences, Strings{"acgtacgtagggtt"});
}

TEST(FastaRead, HeaderMarkAnywhereStartsARecord) {
  const Read read = ReadWith<SSeq>("AC>mid line\nGG\n>\n>last");
  EXPECT_EQ(read.labels, (Strings{"", ">mid line", ">", ">last"}));
  EXPECT_EQ(read.sequences, (Strings{"AC", "GG", "", ""}));
}

TEST(FastaRead, EmptyAndWhiteSpaceOnlyFiles) {
  EXPECT_TRUE(ReadWith<SSeq>("").labels.empty());
  const Read blank = ReadWith<SSeq>(" \n\t\r\n\v\f");
  EXPECT_EQ(blank.labels, Strings{""});
  EXPECT_EQ(blank.sequences, Strings{""});
  // White space before a header is skipped, so it makes no record of its own.
  EXPECT_EQ(ReadWith<SSeq>("\n\n  >a\nAC\n").labels, Strings{">a"});
}

TEST(FastaRead, MissingFileFailsWithTheLoaderMessage) {
  SSeq seq;
  testing::internal::CaptureStderr();
  EXPECT_FALSE(seq.ReadFasta("no-such-file.fa"));
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "error: file <no-such-file.fa> is not found\n");
}

TEST(FastaRead, KeepCaseSwitchesTheSingleCaseView) {
  test::ScratchDir dir;
  SSeq seq;
  seq.KeepCase();
  ASSERT_TRUE(seq.ReadFasta(dir.Write("in.fa", ">a\nacgUn\n")));
  EXPECT_EQ(seq.Records()[0].sequence, "acgTN");
}

TEST(FastaScanner, LongLabelAndLongLineAreViewsIntoTheText) {
  const std::string label = ">" + std::string(1 << 20, 'x');
  const std::string text = label + "\n" + std::string(3 << 20, 'a');
  FastaScanner scanner(text);
  FastaSpan span;
  ASSERT_TRUE(scanner.Next(span));
  EXPECT_EQ(span.label.size(), label.size());
  EXPECT_EQ(span.body.data(), text.data() + label.size());
  EXPECT_FALSE(scanner.Next(span));
}

// Coded sequences.

std::string Codes(const CodeSeq& codes) {
  std::string text;
  for (std::uint8_t code : codes) text.push_back(static_cast<char>('0' + code));
  return text;
}

TEST(VSeqRead, CodesAndComplements) {
  test::ScratchDir dir;
  VSeq seq;
  ASSERT_TRUE(seq.ReadSingle(dir.Write("in.fa", ">x y\nAaCcGgTtUuNnRr-9\n")));
  EXPECT_EQ(Codes(seq.sequence), "00112233334444");
  for (std::uint8_t code = 0; code <= kMasked; ++code) {
    EXPECT_EQ(VSeq::Complement(code), code < 4 ? 3 - code : kOther);
  }
  EXPECT_EQ(VSeq::CodonIndex(kT, kA, kG), 16u * 3 + 2);
}

TEST(VSeqRead, SingleLoadCodesLaterHeadersAsBases) {
  test::ScratchDir dir;
  VSeq seq;
  seq.sequence = {1, 1};
  ASSERT_TRUE(seq.ReadSingle(dir.Write("in.fa", "  >one\nAC\n>Tag2\nGT\n")));
  EXPECT_EQ(Codes(seq.sequence),
            "01"
            "302"
            "23");
}

TEST(VSeqRead, RecordLoadMakesOneSequencePerRecord) {
  test::ScratchDir dir;
  VSeq seq;
  ASSERT_TRUE(seq.ReadRecords(dir.Write("a.fa", "AC\n>h1\n>h2\r\nGt\n")));
  ASSERT_EQ(seq.records.size(), 3u);
  EXPECT_EQ(Codes(seq.records[0]), "01");
  EXPECT_EQ(Codes(seq.records[1]), "");
  EXPECT_EQ(Codes(seq.records[2]), "23");
  VSeq blank;
  ASSERT_TRUE(blank.ReadRecords(dir.Write("b.fa", " \n ")));
  ASSERT_EQ(blank.records.size(), 1u);
  EXPECT_TRUE(blank.records[0].empty());
}

// Writing and counting.

TEST(SSeqWriteLines, CutsAtTheWidth) {
  std::string out;
  SSeq::WriteLines(std::string(130, 'A'), 60, out);
  EXPECT_EQ(
      out, std::string(60, 'A') + "\n" + std::string(60, 'A') + "\n" + std::string(10, 'A') + "\n");
  out.clear();
  SSeq::WriteLines("ACGT", 0, out);
  SSeq::WriteLines("", 60, out);
  SSeq::WriteLines("ACGT", 2, out);
  EXPECT_EQ(out, "ACGT\nAC\nGT\n");
}

TEST(SSeqCount, CountsEveryByteOnShortAndLongRanges) {
  std::string range;
  for (int i = 0; i < 5000; ++i) range.push_back(static_cast<char>(i % 7 == 0 ? 'G' : 'a' + i % 3));
  LetterCounts counts{};
  SSeq::CountLetters(range, counts);
  SSeq::CountLetters("GG\n", counts);
  EXPECT_EQ(counts['G'], 715u + 2);
  EXPECT_EQ(counts['\n'], 1u);
  std::uint64_t total = 0;
  for (std::uint64_t count : counts) total += count;
  EXPECT_EQ(total, 5003u);
}

TEST(SSeqCount, GcLeavesOutNAndOtherLetters) {
  LetterCounts counts{};
  EXPECT_EQ(SSeq::GcPercent(counts), 0.0);
  counts['N'] = 100;
  EXPECT_EQ(SSeq::GcPercent(counts), 0.0);
  counts['G'] = 3;
  counts['C'] = 2;
  counts['A'] = 4;
  counts['T'] = 1;
  EXPECT_EQ(SSeq::GcPercent(counts), 50.0);
}

}  // namespace
}  // namespace genetrain
