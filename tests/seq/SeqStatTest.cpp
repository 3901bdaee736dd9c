#include "TestSupport.h"
#include "seq/SSeq.h"

namespace genetrain {
namespace {

std::string Show(const SSeq::Tally& tally) {
  return std::to_string(tally.a) + " " + std::to_string(tally.c) + " " + std::to_string(tally.g) +
         " " + std::to_string(tally.t) + " " + std::to_string(tally.n);
}

// The tally adds up 8-bit counters per block of 240 bytes: long runs of one letter and lengths
// around multiples of 255 and 256 must not overflow them.
TEST(TallyLetters, CountsLongRunsExactly) {
  std::string text = std::string(600, 'A') + std::string(300, 'N') + std::string(256, 'G') +
                     std::string(255, 'c') + "u";
  for (int i = 0; i < 100000; ++i) text.push_back("ACGTNNTTTG"[i % 10]);
  EXPECT_EQ(Show(SSeq::TallyLetters(text)), "10600 10255 20256 40001 20300");
  EXPECT_EQ(Show(SSeq::TallyLetters("x1 \n\r>-RYK\xc3\xa9")), "0 0 0 0 4");
}

TEST(SeqStat, EmptyHeaderOfAOneRecordFileIsShown) {
  test::ScratchDir dir;
  const std::string path = dir.Write("in.fa", ">\nACGT\n");
  const std::string out = test::RunCommand(&SSeq::Stat, {{"--stat", ""}, {"--seq", path}}).out;
  EXPECT_EQ(out.substr(0, out.find('\n')), "LABEL          " + path + " >");
}

TEST(SeqStat, SeqIsReadBeforeThePrecision) {
  for (const auto handler : {&SSeq::Stat, &SSeq::Gc}) {
    const test::Outcome run = test::RunCommand(
        handler, {{"--stat", ""}, {"--gc", ""}, {"--seq", "a b"}, {"--GC_PRECISION", "x"}});
    EXPECT_FALSE(run.ok);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "error in value of parameter --seq: a b\n");
  }
}

}  // namespace
}  // namespace genetrain
