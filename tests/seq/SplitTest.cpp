#include "TestSupport.h"
#include "seq/SSeq.h"

namespace genetrain {
namespace {

// The pieces as "offset letters|".
std::string Pieces(std::string_view letters, std::int32_t maxRun, std::int32_t margin) {
  std::string shown;
  for (const SSeq::Range& range : SSeq::PiecesAtN(letters, maxRun, margin)) {
    shown += std::to_string(range.begin) + " " +
             std::string(letters.substr(range.begin, range.end - range.begin)) + "|";
  }
  return shown;
}

TEST(PiecesAtN, CutsAtLongRunsKeepingTheMargin) {
  struct Case {
    std::string letters;
    std::int32_t maxRun, margin;
    std::string pieces;
  };
  const Case cases[] = {
      {"ACGTNNNNNNNNACGT", 5, 0, "0 ACGT|12 ACGT|"},
      {"AANNNNNNCCNNGGNNNNNNNTT", 3, 1, "0 AAN|7 NCCNNGGN|20 NTT|"},
      // A run exactly at the maximum stays, one more cuts; 0 or less cuts at every N.
      {"ACGTNNNNNACGT", 5, 2, "0 ACGTNNNNNACGT|"},
      {"ACGTNNNNNNACGT", 5, 2, "0 ACGTNN|8 NNACGT|"},
      {"ANC", 0, 0, "0 A|2 C|"},
      {"ANC", -4, 0, "0 A|2 C|"},
      // Leading and trailing runs shrink to the margin whatever their length.
      {"NNNNNACGTNNNNNNN", 100, 2, "3 NNACGTNN|"},
      {"NACGTN", 100, 0, "1 ACGT|"},
      // Margins stop at the sequence ends; an inner margin wider than the run reaches into the
      // letters beyond it, so the pieces overlap; a negative margin keeps nothing.
      {"NNNACGTNN", 1, 10, "0 NNNACGTNN|"},
      {"AAAANNNNNNCCCC", 1, 8, "0 AAAANNNNNNCC|2 AANNNNNNCCCC|"},
      {"ANNT", 1, 2147483647, "0 ANNT|0 ANNT|"},
      {"NNACGTNNNNNNACGTNN", 3, -2, "2 ACGT|12 ACGT|"},
      // Nothing but N gives no piece.
      {"", 5, 2, ""},
      {std::string(1000, 'N'), 5, 2, ""},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(Pieces(c.letters, c.maxRun, c.margin), c.pieces)
        << c.letters.substr(0, 30) << " " << c.maxRun << " " << c.margin;
  }
}

// 200 000 cuts in a 2 MB record: scanning the rest of the record at each cut would not finish.
TEST(PiecesAtN, ManyCutsInALongRecordTakeOnePass) {
  std::string letters;
  for (int i = 0; i < 200000; ++i) letters += "ACGTNNNNNN";
  const std::vector<SSeq::Range> pieces = SSeq::PiecesAtN(letters, 3, 1);
  ASSERT_EQ(pieces.size(), 200000u);
  EXPECT_EQ(pieces[1].begin, 9u);
  EXPECT_EQ(pieces.back().begin, letters.size() - 11);
  EXPECT_EQ(pieces.back().end, letters.size() - 5);
}

// Runs --split in a scratch folder on the given FASTA text with base name "out".
struct SplitRun {
  test::ScratchDir dir;
  test::Outcome run;

  SplitRun(const std::string& fasta, test::Pairs settings) {
    Param param;
    param.Set("--split", dir.Path("out"));
    param.Set("--seq", dir.Write("in.fa", fasta));
    for (const auto& [key, value] : settings) param.Set(key, value);
    SSeq seq;
    run = test::Capture([&] { return seq.Split(param); });
  }
  std::string File(int k) const { return test::ReadFile(dir.Path("out_" + std::to_string(k))); }
  std::ptrdiff_t FileCount() const { return dir.Entries() - 1; }
};

// A negative minimum skips every whole record, but no piece.
TEST(Split, NegativeMinimum) {
  EXPECT_EQ(SplitRun(">a\nACGT\n>b\nAC\n", {{"--MIN_SPLIT_SIZE", "-1"}}).FileCount(), 0);
  const SplitRun fixed(">a\nACGTACGTAC\n", {{"--SPLIT_SIZE", "12"}, {"--MIN_SPLIT_SIZE", "-5"}});
  EXPECT_EQ(fixed.File(1), ">a SUBSTRING POS_L 1 POS_R 10\nACGTACGTAC\n");
  EXPECT_EQ(fixed.FileCount(), 1);
  const SplitRun rest(">a\nACGTACGTAC\n", {{"--SPLIT_SIZE", "4"}, {"--MIN_SPLIT_SIZE", "-1"}});
  EXPECT_EQ(rest.File(3), ">a SUBSTRING POS_L 9 POS_R 10\nAC\n");
  EXPECT_EQ(rest.FileCount(), 3);
}

TEST(Split, SoftMaskedRunCountRestartsInEachPieceAndAtEveryOtherLetter) {
  const std::string masked(1500, 'g');
  const SplitRun pieces(">a\n" + masked + "\n", {{"--soft", "1"}, {"--SPLIT_SIZE", "1100"}});
  EXPECT_EQ(pieces.File(1), ">a SUBSTRING POS_L 1 POS_R 1100\n" + std::string(1000, 'N') +
                                std::string(100, ' ') + "\n");
  EXPECT_EQ(pieces.File(2), ">a SUBSTRING POS_L 1101 POS_R 1500\n" + std::string(400, 'N') + "\n");
  // Eight capitals in a row end a run too, wherever the run ends against the 8-byte blocks.
  const std::string capitals = "ACGTNACGTNACGTNACGTNACGT";
  for (std::size_t length = 993; length <= 1000; ++length) {
    const std::string run(length, 'a');
    const std::string masked(length, 'N');
    EXPECT_EQ(SplitRun(">c\n" + run + capitals + run + "\n", {{"--soft", "1"}}).File(1),
              ">c\n" + masked + capitals + masked + "\n")
        << length;
  }
}

}  // namespace
}  // namespace genetrain
