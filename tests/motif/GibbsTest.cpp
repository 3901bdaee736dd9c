#include "motif/Gibbs.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "TestSupport.h"

namespace genetrain {
namespace {

GibbsLayout LayoutOf(const std::string& text) {
  test::ScratchDir dir;
  Gibbs gibbs;
  return gibbs.DetectLayout(dir.Write("gibbs.out", text));
}

const std::string kTenLines = "1\n2\n3\n4\n5\n6\n7\n8\n9\n10\n";

TEST(GibbsLayout, GibbsLineWithinTheFirstElevenLines) {
  EXPECT_EQ(LayoutOf(kTenLines + "Gibbs 3.10\n"), GibbsLayout::kNumMotifs);  // the eleventh
  EXPECT_EQ(LayoutOf(kTenLines + "11\nGibbs 3.10\n"), GibbsLayout::kMotif);  // the twelfth
  EXPECT_EQ(LayoutOf(" Gibbs 3.10\n"), GibbsLayout::kMotif);  // must stand at the line start
  EXPECT_EQ(LayoutOf(""), GibbsLayout::kMotif);
}

std::string OddLine(const std::string& line) {
  return "warning: unexpected line in gibbs paring: " + line + "\n";
}
std::string OddToken(const std::string& line) {
  return "warning: unexpected format in gibbs line " + line + "\n";
}

// The sites and starts ("site@start " each) that parsing the text finds, and its warnings.
std::pair<std::string, std::string> Parsed(GibbsLayout layout, const std::string& text) {
  test::ScratchDir dir;
  Gibbs gibbs;
  const test::Outcome printed =
      test::Capture([&] { return gibbs.ParseLayout(dir.Write("gibbs.out", text), layout); });
  EXPECT_TRUE(printed.ok) << text;
  EXPECT_EQ(printed.err, "") << text;
  std::string sites;
  for (std::size_t i = 0; i < gibbs.sites.size(); ++i) {
    sites += gibbs.sites[i] + "@" + std::to_string(gibbs.positions.at(i)) + " ";
  }
  return {sites, printed.out};
}

TEST(GibbsParse, SitesStartsAndWarningsOfBothLayouts) {
  const std::string line5 = "2-1 5 AGGAGG 10",
                    badThird = "   3,  1     5 ttag AGGAGG tcaa 1O abc F";
  const std::string markFirst = "F 4, 1 5 ttag AGGAGG tcaa 10 0.8";
  const struct {
    GibbsLayout layout;
    std::string text, sites, out;
  } cases[] = {
      // The site is taken from the token it stands in: both flanks, none at the region start,
      // none at the region end; tabs; leading zeros.
      {GibbsLayout::kMotif,
       "   1-1     5 ttag aGGAGg tcaa    10\n   2-1     1      AGGAGT tcaa     6\n"
       "   3-1    15 ttag AGGUGN         20\n4\t1\t007\tcc\tGGAGGA\ttt\t12\n",
       "aGGAGg@5 AGGAGT@1 AGGUGN@15 GGAGGA@7 ", ""},
      // The MOTIF line is skipped before the stop test; a line holding "(" stops.
      {GibbsLayout::kMotif, "  MOTIF A (sites: 2)\n1-1 5 t AGGAGG t 10\n" + line5 + "\n(\n3-1\n",
       "AGGAGG@5 ", OddLine(line5)},
      // Region numbers are compared with the sites found, never used; starts stop at the end
      // of the 32-bit range.
      {GibbsLayout::kMotif, "3-1 4294967297 t AGGAGG t 10\n", "AGGAGG@2147483647 ",
       OddToken("3-1 4294967297 t AGGAGG t 10")},
      // The sites follow the Num Motifs line at a line start and end at the strand mark.
      {GibbsLayout::kNumMotifs,
       "Gibbs 3.10\n   1,  1     5 ttag AGGAGG tcaa    10\nNum Motifs: 3\n"
       "   1,  1     5 ttag aGGAGg tcaa    10   0.97 F 1 101 400 +\n"
       "   2,  1     1      AGGAGT tcaa     6   x F\n" +
           badThird + "\n" + markFirst + "\n   *****\n   4,  1     5 ttag AGGAGG tcaa 10 F\n",
       "aGGAGg@5 AGGAGT@1 ", OddToken(badThird) + OddLine(markFirst)},
  };
  for (const auto& c : cases) EXPECT_EQ(Parsed(c.layout, c.text), std::pair(c.sites, c.out));
  // Each line has an acceptable count but one token that does not check; its region number 1
  // then differs from the sites found (none).
  for (const char* line :
       {"1-1 5 ttag AGGXGG tcaa 10", "1-1 5 tt.g AGGAGG tcaa 10", "1-1 5 ttag AGGAGG tcaa 1O",
        "1-x 5 ttag AGGAGG tcaa 10", "1-1 +5 ttag AGGAGG tcaa 10", "1-1 1 AGGAGG tcaa 6x"}) {
    EXPECT_EQ(Parsed(GibbsLayout::kMotif, std::string(line) + "\n"),
              std::pair(std::string(), OddToken(line)));
  }
}

TEST(GibbsDuration, CountsPseudocountsAndSmoothing) {
  Gibbs gibbs;
  gibbs.durationLength = 3;
  gibbs.positions = {0};
  EXPECT_TRUE(gibbs.BuildDuration(1));
  EXPECT_EQ(gibbs.duration, (std::vector<double>{0.5, 0.25, 0.25}));
  gibbs.SmoothDuration();  // 0.6 * 0.5 + 0.2 * 0.25, 0.2 * 0.5 + 0.6 * 0.25 + 0.2 * 0.25, ...
  EXPECT_EQ(gibbs.DurationText(true, 3), "0.350\n0.300\n0.200\n");
  EXPECT_EQ(gibbs.DurationText(false, 2), "-2\t0.20\n-1\t0.30\n0\t0.35\n");
  gibbs.durationLength = 4;
  gibbs.positions = {3, 3, 1};
  EXPECT_TRUE(gibbs.BuildDuration(2));  // (0 1 0 2) + 2 over 11
  EXPECT_EQ(gibbs.duration, (std::vector<double>{2.0 / 11, 3.0 / 11, 2.0 / 11, 4.0 / 11}));
  gibbs.positions = {4};
  EXPECT_EQ(test::Capture([&] { return gibbs.BuildDuration(1); }).err,
            "error, checked in Culculate_R_Pos, never enters this place\n");
}

TEST(GibbsMatrix, OnlyCapitalBasesCount) {
  Gibbs gibbs;
  gibbs.sites = {"AcGN", "AaUT", "ATG\xc3"};
  gibbs.width = 4;
  EXPECT_TRUE(gibbs.BuildMatrix(1));
  ASSERT_EQ(gibbs.matrix.size(), 4u);
  // Position 1: A A A; position 2: c a T (one base); position 3: G U G; position 4: N T, 0xc3.
  EXPECT_EQ(gibbs.matrix[0], (MatrixRow{4.0 / 7, 1.0 / 7, 1.0 / 7, 1.0 / 7, 0}));
  EXPECT_EQ(gibbs.matrix[1], (MatrixRow{1.0 / 5, 1.0 / 5, 1.0 / 5, 2.0 / 5, 2}));
  EXPECT_EQ(gibbs.matrix[2], (MatrixRow{1.0 / 6, 1.0 / 6, 3.0 / 6, 1.0 / 6, 1}));
  EXPECT_EQ(gibbs.matrix[3], (MatrixRow{1.0 / 5, 1.0 / 5, 1.0 / 5, 2.0 / 5, 2}));
  EXPECT_EQ(gibbs.MatrixText(false, 1).substr(0, 38), "Pos   A   C   G   T\n1 0.6 0.1 0.1 0.1\n");
}

}  // namespace
}  // namespace genetrain
