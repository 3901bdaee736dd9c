#include "TestSupport.h"
#include "seq/MSSeq.h"

namespace genetrain {
namespace {

// Without a stop codon list only the frame and the margins decide; margins that add up past
// the length (even past 2^32) leave nothing to hold a stop.
TEST(CleanCoding, FrameAndMargins) {
  const struct {
    std::string_view sequence;
    std::uint32_t left, right;
    bool clean;
  } cases[] = {{"ATGTAA", 0, 0, true},  {"ATGTA", 0, 0, false},
               {"", 0, 0, false},       {"ATGTAA", 6, 0, false},
               {"ATGTAA", 0, 6, false}, {"ATGTAA", 4, 3, true},
               {"ATGTAA", 3, 3, false}, {"ATGTAA", 4000000000U, 4000000000U, true}};
  const MSSeq seq;
  for (const auto& c : cases) {
    EXPECT_EQ(seq.IsCleanCoding(c.sequence, c.left, c.right), c.clean)
        << c.sequence << " " << c.left << " " << c.right;
  }
}

// Codons are counted from the left margin; stops out of that frame do not count, and the last,
// partial codon of the region is no codon even when the right margin completes a stop.
TEST(CleanCoding, StopsInTheFrameOfTheLeftMargin) {
  test::ScratchDir dir;
  const std::string input =
      dir.Write("in.fa", ">f\nCTAGCCCCCCCC\n>o\nCATAAGTAGCCC\n>p\nCCCCCCCTAGCC\n");
  const test::Outcome run =
      test::RunCommand(&MSSeq::CleanCoding, {{"--seq", input},
                                             {"--CLEAN_CODING", dir.Path("out.txt")},
                                             {"--PRINT_LABEL", "1"},
                                             {"--MKCHAIN_L_MARGING", "1"},
                                             {"--MKCHAIN_R_MARGING", "3"},
                                             {"--MIN_COD", "0"},
                                             {"--TAA_", "1"},
                                             {"--TGA_", "1"},
                                             {"--TAG_", "1"}});
  EXPECT_TRUE(run.ok);
  EXPECT_EQ(run.out, "error in record >f\n" + input + " records 3 good 2 bad 1 short 0\n");
  EXPECT_EQ(test::ReadFile(dir.Path("out.txt")), ">o\nATAAGTAG\n>p\nCCCCCCTA\n");
}

// Each setting missing in turn, the earlier ones given and the later ones malformed: the
// missing one is named.
TEST(RecordUtils, SettingsAreReadInOrder) {
  using Settings = std::vector<std::pair<std::string, std::string>>;
  const std::pair<bool (MSSeq::*)(Param&), Settings> commands[] = {
      {&MSSeq::CleanCoding,
       {{"--seq", "in.fa"},
        {"--CLEAN_CODING", "out.txt"},
        {"--PRINT_LABEL", "1"},
        {"--MKCHAIN_L_MARGING", "0"},
        {"--MKCHAIN_R_MARGING", "0"},
        {"--MIN_COD", "0"}}},
      {&MSSeq::CleanFasta,
       {{"--clean_fasta", "a"},
        {"--clean_fasta_index", "b"},
        {"--clean_fasta_out", "c"},
        {"--clean_fasta_label", "d"}}}};
  for (const auto& [handler, settings] : commands) {
    for (std::size_t missing = 0; missing < settings.size(); ++missing) {
      Param param;
      for (std::size_t i = 0; i < settings.size(); ++i) {
        if (i != missing) param.Set(settings[i].first, i < missing ? settings[i].second : "x y");
      }
      MSSeq seq;
      const test::Outcome run = test::Capture([&] { return (seq.*handler)(param); });
      EXPECT_FALSE(run.ok);
      EXPECT_EQ(run.err, "error: missing parameter " + settings[missing].first + "\n");
    }
  }
}

}  // namespace
}  // namespace genetrain
