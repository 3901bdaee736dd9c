#include "seq/FastaBlocks.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "TestSupport.h"
#include "seq/FastaScanner.h"
#include "seq/RecordRuns.h"
#include "seq/SSeq.h"
#include "seq/SeqRecord.h"

namespace genetrain {
namespace {

using namespace std::string_literals;
using test::Capture;

std::vector<std::string> Pieces(std::string_view listed) {  // "|" between the pieces
  std::vector<std::string> pieces(1);
  for (const char c : listed) {
    if (c == '|') {
      pieces.emplace_back();
    } else {
      pieces.back().push_back(c);
    }
  }
  return pieces;
}

// FASTA texts with what real files hold and what they should not: CRLF, empty records, lower
// case, U, N runs, zero bytes, bytes above 127, ">" inside lines and labels, text before the
// first header, white space only, no line end at the end.
std::vector<std::string> Texts() {
  std::vector<std::string> texts =
      Pieces("| |\n\r\n|>|>a|A|>a\n|\n>a\nAC\n>|NN\n>b\nNN>c\nN|ACGT\r\n>x>y\r\nNNNNA\r\n");
  const std::vector<std::string> pieces = Pieces(
      "ACGT|acgtu|NNNNNNN|n|N|\n|\r\n|\n>|>rec one\n|>r2\r\n|>\n|  |\t|\0|\xc3\xa9|RYKM|x>y|123 |"
      "GGGCCC|"s +
      std::string(300, 'A') + "|" + std::string(250, 'N'));
  for (unsigned seed = 1; seed <= 60; ++seed) {
    std::mt19937 random(seed);
    std::string& text = texts.emplace_back(random() % 3 == 0 ? " \r\n\t" : "");
    for (std::size_t i = 0, count = random() % 60; i < count; ++i) {
      text += pieces[random() % pieces.size()];
    }
  }
  return texts;
}

constexpr std::size_t kSmallBlocks[] = {1, 2, 3, 7, 64};

// Records as one scan of the whole text finds them: label, then the raw body.
struct RecordSink {
  std::vector<std::pair<std::string, std::string>> records;
  bool open = false;
  void Begin() {
    EXPECT_FALSE(open);
    open = true;
    records.emplace_back();
  }
  void Label(std::string_view piece) {
    EXPECT_TRUE(records.back().second.empty());
    records.back().first.append(piece);
  }
  void Body(std::string_view piece) { records.back().second.append(piece); }
  void End() { open = false; }
};

TEST(FastaSplitter, BlockBoundariesChangeNothing) {
  for (const std::string& text : Texts()) {
    RecordSink whole;
    FastaScanner scanner(text);
    FastaSpan span;
    while (scanner.Next(span)) {
      std::string_view body = span.body;
      if (!span.label.empty() && !body.empty()) body.remove_prefix(1);  // the label's line feed
      whole.records.emplace_back(span.label, body);
    }
    for (const std::size_t blockSize : kSmallBlocks) {
      FastaSplitter splitter;
      RecordSink sink;
      for (std::size_t pos = 0; pos < text.size(); pos += blockSize) {
        splitter.Feed(std::string_view(text).substr(pos, blockSize), sink);
      }
      splitter.Finish(sink);
      EXPECT_FALSE(sink.open);
      EXPECT_EQ(sink.records, whole.records) << "blocks of " << blockSize << ": " << text;
    }
  }
}

// Letters A C G T N, records, and the label of a lone record.
std::string Show(const SSeq::FileCounts& counts) {
  const SSeq::Tally& letters = counts.letters;
  return std::to_string(letters.a) + " " + std::to_string(letters.c) + " " +
         std::to_string(letters.g) + " " + std::to_string(letters.t) + " " +
         std::to_string(letters.n) + " " + std::to_string(counts.records) + " '" +
         counts.firstLabel + "'";
}

// --stat and --gc count block by block, plain or gzip, whatever the block size: the letters must
// be those the record reader keeps, the label that of a lone record.
TEST(FastaBlocks, FileCountsAreThoseOfTheRecords) {
  std::vector<std::string> texts = Texts();
  std::string everyByte;  // but the header mark, twice
  for (int byte = 0; byte < 512; ++byte) {
    if (byte % 256 != '>') everyByte.push_back(static_cast<char>(byte));
  }
  texts.push_back(">all bytes\n" + everyByte);
  texts.push_back(everyByte + ">more\n" + everyByte.substr(100) + std::string(5000, 'g'));
  test::ScratchDir dir;
  for (const std::string& text : texts) {
    std::vector<SeqRecord> records;
    ASSERT_TRUE(ReadFastaRecords(dir.Write("in.fa", text), UpperLetterTable(), records));
    SSeq::FileCounts expected;
    expected.records = records.size();
    if (records.size() == 1) expected.firstLabel = records[0].label;
    for (const SeqRecord& record : records) {
      SSeq::Tally& tally = expected.letters;
      std::uint64_t* const counters[] = {&tally.a, &tally.c, &tally.g, &tally.t, &tally.n};
      for (const char letter : record.sequence) {
        ++*counters[std::min<std::size_t>(std::string_view("ACGT").find(letter), 4)];
      }
    }
    const std::string plain = dir.Write("in.fa", text);
    const std::string packed = dir.Write("in.fa.gz", test::Gzip(text));
    for (const std::size_t blockSize : {std::size_t{1}, std::size_t{7}, kFastaBlockSize}) {
      for (const std::string& path : {plain, packed}) {
        SSeq::FileCounts counts;
        ASSERT_TRUE(SSeq::CountFile(path, blockSize, counts));
        EXPECT_EQ(Show(counts), Show(expected))
            << path << ", blocks of " << blockSize << ": " << text;
      }
    }
  }
}

// The record utilities write the same bytes whatever the blocks, also while flushing their
// output in pieces as small as a block.
TEST(FastaBlocks, RecordUtilitiesAgreeForEveryBlockSize) {
  test::ScratchDir dir;
  for (const std::string& text : Texts()) {
    const std::string plain = dir.Write("in.fa", text);
    const std::string packed = dir.Write("in.fa.gz", test::Gzip(text));
    const auto all = [&](const std::string& path, std::size_t blockSize) {
      return Capture([&] { return WriteRecordStats(path, blockSize); }).out + "|" +
             Capture([&] { return WriteNRunLengths(path, blockSize); }).out + "|" +
             Capture([&] { return WriteStretches(path, 3, blockSize); }).out + "|" +
             Capture([&] { return WriteStretches(path, 0, blockSize); }).out;
    };
    const std::string whole = all(plain, text.size() + 1);
    for (const std::size_t blockSize : kSmallBlocks) {
      EXPECT_EQ(all(plain, blockSize), whole) << "blocks of " << blockSize << ": " << text;
      EXPECT_EQ(all(packed, blockSize), whole) << "gzip, blocks of " << blockSize;
    }
  }
}

// A bad file fails with the loader's messages; output held back is not written.
TEST(FastaBlocks, BadGzipFailsWithoutOutput) {
  test::ScratchDir dir;
  const std::string path = dir.Write("in.gz", test::Gzip(">a\nACGTNNNA\n>b\nNA\n").substr(0, 25));
  SSeq::FileCounts counts;
  for (const test::Outcome& run : {Capture([&] { return WriteRecordStats(path, 64); }),
                                   Capture([&] { return WriteNRunLengths(path, 64); }),
                                   Capture([&] { return WriteStretches(path, 0, 64); }),
                                   Capture([&] { return SSeq::CountFile(path, 2, counts); })}) {
    EXPECT_FALSE(run.ok);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "error: truncated gzip data in file <" + path +
                           ">\nerror: on reading file <" + path + ">\n");
  }
}

}  // namespace
}  // namespace genetrain
