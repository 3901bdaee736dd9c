#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <utility>

#include "TestSupport.h"
#include "seq/FastaBlocks.h"
#include "seq/SSeq.h"

namespace genetrain {
namespace {

using namespace std::string_literals;
using test::Outcome;
using test::RunCommand;

// Letters A C G T N, records, and the label of a lone record.
std::string Show(const SSeq::Tally& letters, std::size_t records, const std::string& label) {
  return std::to_string(letters.a) + " " + std::to_string(letters.c) + " " +
         std::to_string(letters.g) + " " + std::to_string(letters.t) + " " +
         std::to_string(letters.n) + " " + std::to_string(records) + " '" + label + "'";
}

// Labels full of letters, headers in mid-line, text before the first header, CRLF, digits,
// zero bytes and bytes above 127: counted block by block, whatever the block size, the letters
// must be those the ordinary reader keeps in its records.
TEST(SeqStat, CountFileCountsWhatTheReaderKeeps) {
  const std::string big(5000, 'g');
  std::string everyByte;  // but the header mark, twice
  for (int round = 0; round < 2; ++round) {
    for (int byte = 0; byte < 256; ++byte) {
      if (byte != '>') everyByte.push_back(static_cast<char>(byte));
    }
  }
  const std::string cases[] = {
      "",
      "\n \t\r\n",
      "ACGT",
      ">only GATTACA header\nacgu\n",
      "  lead text RYK\n>ACGT GGCC\r\nAC\r\nGT\r\n>x>y\nTTTT>zz\nNNNN\n",
      ">\n>\n>\n",
      ">a\nAC\n>b\nGT\n",
      ">a\n1 ac\0gt\xc3\xa9 n\n>b xyz\n"s + big + "\n>tail\nCCCCCCC",
      ">gb ACGT\n" + big + "AUUUU\n",
      ">all bytes\n" + everyByte,
      everyByte + ">more\n" + everyByte.substr(100) + everyByte,
  };
  test::ScratchDir dir;
  for (const std::string& content : cases) {
    SCOPED_TRACE(content.substr(0, 60));
    const std::string path = dir.Write("in.fa", content);
    SSeq seq;
    ASSERT_TRUE(seq.ReadFasta(path));
    LetterCounts counts{};
    for (const SeqRecord& record : seq.Records()) SSeq::CountLetters(record.sequence, counts);
    const std::size_t records = seq.Records().size();
    const std::string expected =
        Show({counts['A'], counts['C'], counts['G'], counts['T'], counts['N']}, records,
             records == 1 ? seq.Records()[0].label : "");
    for (const std::size_t blockSize :
         {std::size_t{1}, std::size_t{7}, std::size_t{300}, kFastaBlockSize}) {
      SSeq::FileCounts file;
      ASSERT_TRUE(SSeq::CountFile(path, blockSize, file));
      EXPECT_EQ(Show(file.letters, file.records, file.firstLabel), expected) << blockSize;
    }
  }
}

TEST(SeqStat, EmptyHeaderOfAOneRecordFileIsShown) {
  test::ScratchDir dir;
  const std::string path = dir.Write("in.fa", ">\nACGT\n");
  const std::string out = RunCommand(&SSeq::Stat, {{"--stat", ""}, {"--seq", path}}).out;
  EXPECT_EQ(out.substr(0, out.find('\n')), "LABEL          " + path + " >");
}

TEST(SeqStat, SeqIsReadBeforeThePrecision) {
  for (const auto handler : {&SSeq::Stat, &SSeq::Gc}) {
    const Outcome run = RunCommand(
        handler, {{"--stat", ""}, {"--gc", ""}, {"--seq", "a b"}, {"--GC_PRECISION", "x"}});
    EXPECT_FALSE(run.ok);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "error in value of parameter --seq: a b\n");
  }
}

}  // namespace
}  // namespace genetrain
