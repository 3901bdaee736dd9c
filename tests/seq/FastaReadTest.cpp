#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "TestSupport.h"
#include "seq/FastaScanner.h"
#include "seq/MSSeq.h"
#include "seq/SSeq.h"
#include "seq/VSeq.h"

namespace genetrain {
namespace {

enum class View { kUpper, kKeepCase, kMixed };

// The labels and sequences read from the text, "|" after each.
template <typename Holder>
std::pair<std::string, std::string> ReadWith(Holder& holder, const std::string& content) {
  test::ScratchDir dir;
  EXPECT_TRUE(holder.ReadFasta(dir.Write("in.fa", content)));
  std::pair<std::string, std::string> read;
  for (const SeqRecord& record : holder.Records()) {
    read.first += record.label + "|";
    read.second += record.sequence + "|";
  }
  return read;
}

TEST(FastaRead, LabelsAndSequencesInEachView) {
  struct Case {
    View view;
    std::string content, labels, sequences;
  };
  const std::string letters = ">r\nacgtu ACGTU\nRYnX bdhkmsvw\n";
  const Case cases[] = {
      {View::kUpper, "ACGT\n", "|", "ACGT|"},  // no header: one record with an empty label
      // Case, U and other letters in each view.
      {View::kUpper, letters, ">r|", "ACGTTACGTTNNNNNNNNNNNN|"},
      {View::kMixed, letters, ">r|", "acgttACGTTNNNNNNNNNNNN|"},
      {View::kKeepCase, ">a\nacgUn\n", ">a|", "acgTN|"},
      // A carriage return stays in the label only.
      {View::kUpper, ">chr1 x\r\nAC\r\nGT\r\n>chr2\r\nTT", ">chr1 x\r|>chr2\r|", "ACGT|TT|"},
      // Digits, blanks, punctuation, zero and high bytes are dropped.
      {View::kMixed, std::string(">gb\n     1 acgtac-gta *.\n    61 ggg\xc3\xa9\x01\0tt\n", 42),
       ">gb|", "acgtacgtagggtt|"},
      // A header mark anywhere starts a record.
      {View::kUpper, "AC>mid line\nGG\n>\n>last", "|>mid line|>|>last|", "AC|GG|||"},
      {View::kUpper, "", "", ""},
      {View::kUpper, " \n\t\r\n\v\f", "|", "|"},
      // White space before a header is skipped, so it makes no record of its own.
      {View::kUpper, "\n\n  >a\nAC\n", ">a|", "AC|"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.content);
    std::pair<std::string, std::string> read;
    if (c.view == View::kMixed) {
      MSSeq seq;
      read = ReadWith(seq, c.content);
    } else {
      SSeq seq;
      if (c.view == View::kKeepCase) seq.KeepCase();
      read = ReadWith(seq, c.content);
    }
    EXPECT_EQ(read.first, c.labels);
    EXPECT_EQ(read.second, c.sequences);
  }
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

// Counting.

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

}  // namespace
}  // namespace genetrain
