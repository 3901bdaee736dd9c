#include <gtest/gtest.h>

#include <filesystem>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "TestSupport.h"
#include "seq/SSeq.h"

namespace genetrain {
namespace {

using Piece = std::pair<std::string, std::string>;  // label, sequence
using Pieces = std::vector<Piece>;

TEST(SplitAtN, CutsAtLongRunsKeepingTheMargin) {
  struct Case {
    std::string sequence;
    std::int32_t maxRun, margin;
    Pieces pieces;
    std::string label = ">r";
  };
  const Case cases[] = {
      // An inner run longer than the maximum is cut, keeping the margin on each side.
      {"ACGTNNNNNNNNACGT", 5, 2, {{">r ; 0", "ACGTNN"}, {">r ; 10", "NNACGT"}}},
      {"ACGTNNNNNNNNACGT", 5, 0, {{">r ; 0", "ACGT"}, {">r ; 12", "ACGT"}}},
      {"AANNNNNNCCNNGGNNNNNNNTT",
       3,
       1,
       {{">r ; 0", "AAN"}, {">r ; 7", "NCCNNGGN"}, {">r ; 20", "NTT"}}},
      // A run exactly at the maximum stays, one more cuts; 0 or less cuts at every N.
      {"ACGTNNNNNACGT", 5, 2, {{">r ; 0", "ACGTNNNNNACGT"}}},
      {"ACGTNNNNNNACGT", 5, 2, {{">r ; 0", "ACGTNN"}, {">r ; 8", "NNACGT"}}},
      {"ANC", 0, 0, {{">r ; 0", "A"}, {">r ; 2", "C"}}},
      {"ANC", -4, 0, {{">r ; 0", "A"}, {">r ; 2", "C"}}},
      // Leading and trailing runs shrink to the margin whatever their length.
      {"NNNNNACGTNNNNNNN", 100, 2, {{">r ; 3", "NNACGTNN"}}},
      {"NNNNNACGTNNNNNNN", 100, 0, {{">r ; 5", "ACGT"}}},
      {"NACGTN", 100, 0, {{">r ; 1", "ACGT"}}},
      {"A", 1, 0, {{">r ; 0", "A"}}},
      // Margins larger than runs stop at the sequence ends; an inner margin wider than the run
      // reaches into the letters beyond it, so the pieces overlap.
      {"NNNACGTNN", 1, 10, {{">r ; 0", "NNNACGTNN"}}},
      {"AAAANNNNNNCCCC", 1, 8, {{">r ; 0", "AAAANNNNNNCC"}, {">r ; 2", "AANNNNNNCCCC"}}},
      {"ANNT", 1, 5, {{">r ; 0", "ANNT"}, {">r ; 0", "ANNT"}}},
      {"ANNT", 1, 2147483647, {{">r ; 0", "ANNT"}, {">r ; 0", "ANNT"}}},
      {"NNACGTNNNNNNACGTNN", 3, -2, {{">r ; 2", "ACGT"}, {">r ; 12", "ACGT"}}},
      // Nothing but N gives no piece.
      {"", 5, 2, {}},
      {"N", 5, 2, {}},
      {std::string(1000, 'N'), 5, 2, {}},
      // The label is kept as it is, with the offset appended.
      {"NAC", 5, 0, {{">chr1 x\r ; 1", "AC"}}, ">chr1 x\r"},
      {"NAC", 5, 0, {{" ; 1", "AC"}}, ""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.sequence.substr(0, 30) + " " + std::to_string(c.maxRun) + " " +
                 std::to_string(c.margin));
    Pieces pieces;
    for (const SeqRecord& piece : SSeq::SplitAtN({c.label, c.sequence}, c.maxRun, c.margin)) {
      pieces.emplace_back(piece.label, piece.sequence);
    }
    EXPECT_EQ(pieces, c.pieces);
  }
}

// 200 000 cuts in a 2 MB record: copying the rest of the record at each cut would not finish.
TEST(SplitAtN, ManyCutsInALongRecordTakeOnePass) {
  std::string sequence;
  constexpr int kBlocks = 200000;
  for (int i = 0; i < kBlocks; ++i) sequence += "ACGTNNNNNN";
  const std::vector<SeqRecord> pieces = SSeq::SplitAtN({">r", sequence}, 3, 1);
  ASSERT_EQ(pieces.size(), static_cast<std::size_t>(kBlocks));
  EXPECT_EQ(pieces.front().label, ">r ; 0");
  EXPECT_EQ(pieces.front().sequence, "ACGTN");
  EXPECT_EQ(pieces[1].label, ">r ; 9");
  EXPECT_EQ(pieces[1].sequence, "NACGTN");
  EXPECT_EQ(pieces.back().label, ">r ; " + std::to_string(10 * (kBlocks - 1) - 1));
  EXPECT_EQ(pieces.back().sequence, "NACGTN");
}

TEST(MakeName, JoinsTwoTextsAndTheNumberInDecimal) {
  EXPECT_EQ(SSeq::MakeName("genome.fa", "_", 3), "genome.fa_3");
  EXPECT_EQ(SSeq::MakeName(">r", " ; ", 0), ">r ; 0");
  EXPECT_EQ(SSeq::MakeName("", "", -12), "-12");
  EXPECT_EQ(SSeq::MakeName("a", "b", 9223372036854775807), "ab9223372036854775807");
  EXPECT_EQ(SSeq::MakeName("a", "b", -9223372036854775807 - 1), "ab-9223372036854775808");
}

// Runs --split in a scratch folder on the given FASTA text with base name "out".
struct SplitRun {
  test::ScratchDir dir;
  bool ok = false;
  std::string err;

  SplitRun(const std::string& fasta,
           std::initializer_list<std::pair<std::string_view, std::string_view>> settings) {
    Param param;
    param.Set("--split", dir.Path("out"));
    param.Set("--seq", dir.Write("in.fa", fasta));
    for (const auto& [key, value] : settings) param.Set(key, value);
    SSeq seq;
    testing::internal::CaptureStderr();
    ok = seq.Split(param);
    err = testing::internal::GetCapturedStderr();
  }
  std::string File(int k) const { return test::ReadFile(dir.Path("out_" + std::to_string(k))); }
  std::size_t FileCount() const {
    const auto folder = std::filesystem::path(dir.Path("in.fa")).parent_path();
    return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(folder),
                                                  std::filesystem::directory_iterator())) -
           1;
  }
};

TEST(Split, ValueClampedToTheSignedRangeIsStillNegative) {
  const SplitRun huge(">r\nACGT\n", {{"--SPLIT_SIZE", "-99999999999"}});
  EXPECT_FALSE(huge.ok);
  EXPECT_EQ(huge.err, "error in value of parameter --SPLIT_SIZE: -99999999999\n");
  EXPECT_EQ(huge.FileCount(), 0u);
}

TEST(Split, NegativeMinimumSkipsEveryRecordButNoPiece) {
  const SplitRun whole(">a\nACGT\n>b\nAC\n", {{"--MIN_SPLIT_SIZE", "-1"}});
  EXPECT_TRUE(whole.ok);
  EXPECT_EQ(whole.FileCount(), 0u);
  // Pieces of 12 with minimum -5 on 10 letters: the only piece ends at the record's end.
  const SplitRun fixed(">a\nACGTACGTAC\n", {{"--SPLIT_SIZE", "12"}, {"--MIN_SPLIT_SIZE", "-5"}});
  EXPECT_TRUE(fixed.ok);
  EXPECT_EQ(fixed.File(1), ">a SUBSTRING POS_L 1 POS_R 10\nACGTACGTAC\n");
  EXPECT_EQ(fixed.FileCount(), 1u);
  // With pieces of 4 the last piece is the 2-letter rest.
  const SplitRun rest(">a\nACGTACGTAC\n", {{"--SPLIT_SIZE", "4"}, {"--MIN_SPLIT_SIZE", "-1"}});
  EXPECT_EQ(rest.File(3), ">a SUBSTRING POS_L 9 POS_R 10\nAC\n");
  EXPECT_EQ(rest.FileCount(), 3u);
}

TEST(Split, SoftMaskedRunCountRestartsInEachPieceAndAtEveryOtherLetter) {
  const std::string masked(1500, 'g');
  const SplitRun pieces(">a\n" + masked + "\n", {{"--soft", "1"}, {"--SPLIT_SIZE", "1100"}});
  EXPECT_EQ(pieces.File(1), ">a SUBSTRING POS_L 1 POS_R 1100\n" + std::string(1000, 'N') +
                                std::string(100, ' ') + "\n");
  EXPECT_EQ(pieces.File(2), ">a SUBSTRING POS_L 1101 POS_R 1500\n" + std::string(400, 'N') + "\n");
  // Whole records in lines: the blanks fill their share of the lines.
  const SplitRun lines(">a\n" + masked + "\n", {{"--soft", "1"}, {"--letters_per_line", "1200"}});
  EXPECT_EQ(lines.File(1), ">a\n" + std::string(1000, 'N') + std::string(200, ' ') + "\n" +
                               std::string(300, ' ') + "\n");

  // Capitals, N and n (read as N) end a run; u is read as t and belongs to it.
  const std::string text = std::string(999, 'a') + "u" + "c" + "A" + std::string(1001, 't') + "n" +
                           std::string(1001, 'c');
  const SplitRun whole(">b\n" + text + "\n", {{"--soft", "1"}});
  const std::string expected = std::string(1000, 'N') + " " + "A" + std::string(1000, 'N') + " " +
                               "N" + std::string(1000, 'N') + " ";
  EXPECT_EQ(whole.File(1), ">b\n" + expected + "\n");

  // Long stretches of capitals between two runs end the first run too, wherever it ends.
  const std::string capitals = "ACGTNACGTNACGTNACGTNACGT";
  for (std::size_t length = 993; length <= 1000; ++length) {
    const std::string run(length, 'a');
    const SplitRun apart(">c\n" + run + capitals + run + "\n", {{"--soft", "1"}});
    const std::string masked(length, 'N');
    EXPECT_EQ(apart.File(1), ">c\n" + masked + capitals + masked + "\n") << length;
  }
  // Without --soft lower case is read as capitals, however long the run.
  const SplitRun plain(">a\n" + std::string(1200, 'a') + "\n", {});
  EXPECT_EQ(plain.File(1), ">a\n" + std::string(1200, 'A') + "\n");
}

}  // namespace
}  // namespace genetrain
