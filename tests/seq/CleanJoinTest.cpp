#include "TestSupport.h"
#include "seq/SSeq.h"

namespace genetrain {
namespace {

TEST(CleanJoin, ReportTellsTheLengthOfTheTrimmedText) {
  test::ScratchDir dir;
  const std::string fasta = dir.Write("in.fa", ">a\nACNNNNNNGT\n>b\nNNNN\n>c\nNNA\n");
  const test::Outcome run = test::RunCommand(&SSeq::CleanJoin, {{"--clean_join", ""},
                                                                {"--seq", fasta},
                                                                {"--log", ""},
                                                                {"--GAP_FILLER", "NN"},
                                                                {"--MAX_N_SUBSTRING", "2"}});
  EXPECT_TRUE(run.ok);
  // The records hold 17 letters, the joined text ACNNNNNNGTNNNNA 15, trimmed 9.
  EXPECT_NE(run.out.find("All letters - 17   9\n"), std::string::npos) << run.out;
  EXPECT_EQ(run.out.substr(run.out.size() - 10), "ACNNGTNNA\n");
}

// A record without header is written with an empty label line. Positions beyond the int range,
// however written, fail even after good intervals, and nothing is written.
TEST(Mask, HeaderlessRecordAndHugePositions) {
  const struct {
    std::string fasta, intervals, out;  // out: "<none>" when nothing was written
  } cases[] = {{"ACGT\n", "2 3\n", "\nANNT\n"},
               {">chr\nACGTACGT\n", "1 99999999999\n", "<none>"},
               {">chr\nACGTACGT\n", "4 5\n-99999999999 3\n", "<none>"}};
  for (const auto& c : cases) {
    test::ScratchDir dir;
    const test::Outcome run =
        test::RunCommand(&SSeq::Mask, {{"--seq", dir.Write("in.fa", c.fasta)},
                                       {"--mask", dir.Write("mask.txt", c.intervals)},
                                       {"--out", dir.Path("out.fa")}});
    EXPECT_EQ(run.ok, c.out != "<none>");
    EXPECT_EQ(run.err, "");
    const bool written = std::filesystem::exists(dir.Path("out.fa"));
    EXPECT_EQ(written ? test::ReadFile(dir.Path("out.fa")) : "<none>", c.out) << c.intervals;
  }
}

// A record far longer than one piece of letters, with intervals across the pieces' boundaries.
TEST(Mask, LongRecordIsMaskedAcrossPieces) {
  std::string sequence;
  for (std::size_t i = 0; i < 700000; ++i) sequence.push_back("acgT"[i % 4]);
  std::string fasta = ">long\n";
  for (std::size_t i = 0; i < sequence.size(); i += 61) fasta.append(sequence, i, 61).append("\n");
  std::string expected = sequence;
  for (char& letter : expected) letter = static_cast<char>(letter & ~0x20);
  const std::vector<std::pair<std::size_t, std::size_t>> intervals = {
      {262140, 262150}, {1, 3}, {500000, 699999}, {262144, 262144}, {600000, 700000}, {2, 2}};
  std::string lines;
  for (const auto& [first, last] : intervals) {
    lines.append(std::to_string(first)).append(" ").append(std::to_string(last)).append("\n");
    for (std::size_t p = first; p <= last; ++p) expected[p - 1] = 'N';
  }
  test::ScratchDir dir;
  const test::Outcome run = test::RunCommand(&SSeq::Mask, {{"--seq", dir.Write("in.fa", fasta)},
                                                           {"--mask", dir.Write("m.txt", lines)},
                                                           {"--out", dir.Path("out.fa")}});
  EXPECT_TRUE(run.ok);
  EXPECT_EQ(test::ReadFile(dir.Path("out.fa")), ">long\n" + expected + "\n");
}

}  // namespace
}  // namespace genetrain
