#include "motif/Gibbs.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "TestSupport.h"

namespace genetrain {
namespace {

using testing::internal::CaptureStderr;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStderr;
using testing::internal::GetCapturedStdout;

GibbsLayout LayoutOf(const std::string& text) {
  test::ScratchDir dir;
  Gibbs gibbs;
  return gibbs.DetectLayout(dir.Write("gibbs.out", text));
}

// `count` filler lines, then the given line.
std::string After(int count, const std::string& line) {
  std::string text;
  for (int i = 0; i < count; ++i) text.append("line ").append(std::to_string(i + 1)).append("\n");
  return text + line;
}

VSeq Regions(const std::vector<std::size_t>& lengths) {
  VSeq regions;
  for (const std::size_t length : lengths) regions.records.emplace_back(length, kA);
  return regions;
}

TEST(GibbsLayout, GibbsLineWithinTheFirstElevenLines) {
  EXPECT_EQ(LayoutOf(After(2, "Gibbs 3.10\nNum Motifs: 1\n")), GibbsLayout::kNumMotifs);
  EXPECT_EQ(LayoutOf("Gibbs"), GibbsLayout::kNumMotifs);
  EXPECT_EQ(LayoutOf(After(10, "Gibbs 3.10\n")), GibbsLayout::kNumMotifs);  // the eleventh
  EXPECT_EQ(LayoutOf(After(11, "Gibbs 3.10\n")), GibbsLayout::kMotif);      // the twelfth
  EXPECT_EQ(LayoutOf(" Gibbs 3.10\n"), GibbsLayout::kMotif);  // must stand at the line start
  EXPECT_EQ(LayoutOf("GIBBS\ngibbs\n     MOTIF A\n"), GibbsLayout::kMotif);
  EXPECT_EQ(LayoutOf(""), GibbsLayout::kMotif);
}

// Warnings of the parsers.
std::string OddLine(const std::string& line) {
  return "warning: unexpected line in gibbs paring: " + line + "\n";
}
std::string OddToken(const std::string& line) {
  return "warning: unexpected format in gibbs line " + line + "\n";
}

TEST(GibbsParse, SitesStartsAndWarningsOfBothLayouts) {
  struct Case {
    bool numMotifs;
    std::string text;
    std::string sites;  // "site@start " each
    std::string out;
  };
  const std::string line8 = "   2-1     5 ttag AGGAGG tcaa    10  0.9";
  const std::string line5 = "2-1 5 AGGAGG 10";
  const std::string site = "1-1 5 t AGGAGG t 10\n", second = "2-1 5 t AGGAGG t 10\n";
  const std::string reverse = "   2,  1     5 ttag CCTCCT tcaa    10   0.81 R 2 505 900 -";
  const std::string noMark = "   3,  1     5 ttag AGGAGG tcaa    10   0.81 3";
  const std::string badThird = "   3,  1     5 ttag AGGAGG tcaa    10   abc F";
  const std::string markFirst = "F 4, 1 5 ttag AGGAGG tcaa 10 0.8";
  const std::string hyphens = "   1-1     5 ttag AGGAGG tcaa    10   0.97 F";
  std::vector<Case> cases = {
      // The site is taken from the token it stands in: both flanks, none at the region start,
      // none at the region end; tabs; leading zeros.
      {false,
       "   1-1     5 ttag aGGAGg tcaa    10\n"
       "   2-1     1      AGGAGT tcaa     6\n"
       "   3-1    15 ttag AGGUGN         20\n"
       "4\t1\t007\tcc\tGGAGGA\ttt\t12\n",
       "aGGAGg@5 AGGAGT@1 AGGUGN@15 GGAGGA@7 ", ""},
      // Blank lines and the MOTIF line are skipped; a line holding "sites:" or "(" and ")" stops.
      {false,
       " \t \n"
       "\n"
       "         MOTIF A (sites: 2)\n"  // skipped before the stop test
       "   1-1     5 ttag AGGAGG tcaa    10\n"
       "   2-1     5 ttag AGGAGG tcaa    10\n"
       "  residue frequencies x 100)\n"
       "   3-1     5 ttag AGGAGG tcaa    10\n",
       "AGGAGG@5 AGGAGG@5 ", ""},
      {false, site + "sites: 1\n" + second, "AGGAGG@5 ", ""},
      {false, site + "(\n" + second, "AGGAGG@5 ", ""},
      {false, site + "a)b\n" + second, "AGGAGG@5 ", ""},
      // Lines of other token counts.
      {false, "   1-1     5 ttag AGGAGG tcaa    10\n" + line8 + "\n" + line5 + "\n*****\n",
       "AGGAGG@5 ", OddLine(line8) + OddLine(line5) + OddLine("*****")},
      // Region numbers are compared with the sites found, never used.
      {false,
       site +
           "3-1 5 t AGGAGG t 10\n2-1 5 t AGGAGX t 10\n3-1 5 t AGGAGG t 10\n0-1 5 t AGGAGG t 10\n",
       "AGGAGG@5 AGGAGG@5 AGGAGG@5 AGGAGG@5 ",
       OddToken("3-1 5 t AGGAGG t 10") + OddToken("0-1 5 t AGGAGG t 10")},
      {false, "1-1 4294967297 t AGGAGG t 10\n", "AGGAGG@2147483647 ", ""},
      {false, "1-1 5 t AGGAGG t 10\r\n", "", OddToken("1-1 5 t AGGAGG t 10\r")},
      // The sites follow the Num Motifs line at a line start and end at the strand mark.
      {true,
       "Gibbs 3.10\n"
       "   1,  1     5 ttag AGGAGG tcaa    10\n"
       " Num Motifs: 3\n"
       "Num Motifs: 3\n"
       "\t \n"
       "   1,  1     5 ttag aGGAGg tcaa    10   0.97 F 1 101 400 +\n"
       "   2,  1     1      AGGAGT tcaa     6   x F\n"
       "   3,  1    15 ttag AGGAGN         20   0.90 F seq 3 F\n"
       "         *****\n"
       "   4,  1     5 ttag AGGAGG tcaa    10   0.97 F 4\n",
       "aGGAGg@5 AGGAGT@1 AGGAGN@15 ", ""},
      {true,
       "Num Motifs: 4\n   1,1,5,ttag,AGGAGG,tcaa,10,0.9,F,x\n" + reverse + "\n" + noMark + "\n" +
           badThird + "\n" + markFirst + "\n",
       "AGGAGG@5 AGGAGG@5 ",
       OddLine(reverse) + OddLine(noMark) + OddToken(badThird) + OddLine(markFirst)},
      {true, "Num Motifs: 1\n" + hyphens + "\n", "", OddToken(hyphens)},
      {true, "Gibbs 3.10\n   1,  1     5 ttag AGGAGG tcaa  10  0.9 F\n", "", ""},
  };
  // Each line has an acceptable count but one token that does not check; its region number 1
  // then differs from the sites found (none).
  for (const char* line :
       {"1-1 5 ttag AGGXGG tcaa 10", "1-1 5 tt.g AGGAGG tcaa 10", "1-1 5 ttag AGGAGG tcaa 1O",
        "1-1 5 ttag AGGAGG tc9a 10", "1-x 5 ttag AGGAGG tcaa 10", "1-1 +5 ttag AGGAGG tcaa 10",
        "1-1 5 AGGAGG tcaa t10", "1-1 1 AGGAGG tcaa 6x"}) {
    cases.push_back({false, std::string(line) + "\n", "", OddToken(line)});
  }
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    test::ScratchDir dir;
    const std::string name = dir.Write("gibbs.out", c.text);
    Gibbs gibbs;
    CaptureStdout();
    EXPECT_TRUE(c.numMotifs ? gibbs.ParseLayout(name, GibbsLayout::kNumMotifs)
                            : gibbs.ParseLayout(name, GibbsLayout::kMotif));
    EXPECT_EQ(GetCapturedStdout(), c.out);
    ASSERT_EQ(gibbs.sites.size(), gibbs.positions.size());
    std::string sites;
    for (std::size_t i = 0; i < gibbs.sites.size(); ++i) {
      sites += gibbs.sites[i] + "@" + std::to_string(gibbs.positions[i]) + " ";
    }
    EXPECT_EQ(sites, c.sites);
  }
}

TEST(GibbsConvert, StartsBecomeSpacers) {
  Gibbs gibbs;
  gibbs.sites = {"AGGAGG", "AGGAGT", "GGAGGA"};
  gibbs.positions = {15, 1, 8};
  gibbs.width = 6;
  EXPECT_TRUE(gibbs.ConvertPositions(Regions({20, 20, 20})));
  EXPECT_EQ(gibbs.durationLength, 15);
  EXPECT_EQ(gibbs.positions, (std::vector<std::int32_t>{0, 14, 7}));
}

TEST(GibbsConvert, Failures) {
  struct Case {
    std::vector<std::string> sites;
    std::vector<std::int32_t> positions;
    std::vector<std::size_t> regions;
    std::string err;
  };
  const std::string contradiction =
      "error: contradiction in sequence size and motif position in gibbs\n";
  const std::string position = "error: unexpected motif position in gibbs\n";
  const std::vector<std::string> two(2, "AGGAGG"), three(3, "AGGAGG");
  const Case cases[] = {
      {two, {1, 16}, {20, 20}, contradiction},
      {two, {1, 0}, {20, 20}, position},
      {two, {1, -3}, {20, 20}, position},
      {{"AGGAGG"}, {1}, {5}, contradiction},  // motif longer than the region
      // The first label carries the number of regions, the second the number of sites.
      {three,
       {1, 1, 1},
       {10, 10},
       "gibbs lines: 2\nseq lines: 3\nerror: in gibbs parse input data\n"},
      {three, {1, 1, 1}, {10, 10, 11}, ""},  // regions of different lengths
      {{}, {}, {}, ""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.positions) + " " + testing::PrintToString(c.regions));
    Gibbs gibbs;
    gibbs.sites = c.sites;
    gibbs.positions = c.positions;
    gibbs.width = c.sites.empty() ? 0 : static_cast<std::int32_t>(c.sites[0].size());
    CaptureStderr();
    EXPECT_FALSE(gibbs.ConvertPositions(Regions(c.regions)));
    EXPECT_EQ(GetCapturedStderr(), c.err);
  }
}

TEST(GibbsDuration, CountsPseudocountsAndSmoothing) {
  Gibbs gibbs;
  gibbs.durationLength = 3;
  gibbs.positions = {0};
  EXPECT_TRUE(gibbs.BuildDuration(1));
  EXPECT_EQ(gibbs.duration, (std::vector<double>{0.5, 0.25, 0.25}));
  gibbs.SmoothDuration();
  ASSERT_EQ(gibbs.duration.size(), 3u);
  EXPECT_DOUBLE_EQ(gibbs.duration[0], 0.35);
  EXPECT_DOUBLE_EQ(gibbs.duration[1], 0.30);
  EXPECT_DOUBLE_EQ(gibbs.duration[2], 0.20);
  EXPECT_EQ(gibbs.DurationText(true, 3), "0.350\n0.300\n0.200\n");
  EXPECT_EQ(gibbs.DurationText(false, 2), "-2\t0.20\n-1\t0.30\n0\t0.35\n");

  gibbs.durationLength = 4;
  gibbs.positions = {3, 3, 1};
  EXPECT_TRUE(gibbs.BuildDuration(0));
  EXPECT_EQ(gibbs.duration, (std::vector<double>{0.0, 1.0 / 3, 0.0, 2.0 / 3}));
  EXPECT_TRUE(gibbs.BuildDuration(2));  // starts afresh: (0 1 0 2) + 2 over 11
  EXPECT_EQ(gibbs.duration, (std::vector<double>{2.0 / 11, 3.0 / 11, 2.0 / 11, 4.0 / 11}));

  gibbs.durationLength = 1;
  gibbs.positions = {0, 0};
  EXPECT_TRUE(gibbs.BuildDuration(5));
  gibbs.SmoothDuration();
  EXPECT_EQ(gibbs.duration, (std::vector<double>{0.6}));
}

TEST(GibbsDuration, Refusals) {
  Gibbs gibbs;
  gibbs.durationLength = 3;
  EXPECT_FALSE(gibbs.BuildDuration(0));  // no spacer, no pseudocount
  gibbs.durationLength = 0;
  EXPECT_FALSE(gibbs.BuildDuration(1));
  gibbs.durationLength = -2;
  EXPECT_FALSE(gibbs.BuildDuration(1));
  for (const std::int32_t spacer : {3, -1}) {
    gibbs.durationLength = 3;
    gibbs.positions = {spacer};
    CaptureStderr();
    EXPECT_FALSE(gibbs.BuildDuration(1));
    EXPECT_EQ(GetCapturedStderr(), "error, checked in Culculate_R_Pos, never enters this place\n");
  }
}

TEST(GibbsMatrix, OnlyCapitalBasesCount) {
  Gibbs gibbs;
  gibbs.sites = {"AcGN", "AaUT", "ATG\xc3"};
  gibbs.width = 4;
  EXPECT_TRUE(gibbs.BuildMatrix(1));
  ASSERT_EQ(gibbs.matrix.size(), 4u);
  // Position 1: A A A; position 2: c a T (one base); position 3: G U G; position 4: N T, 0xc3.
  EXPECT_EQ(gibbs.matrix[0], (std::array<double, 5>{4.0 / 7, 1.0 / 7, 1.0 / 7, 1.0 / 7, 0}));
  EXPECT_EQ(gibbs.matrix[1], (std::array<double, 5>{1.0 / 5, 1.0 / 5, 1.0 / 5, 2.0 / 5, 2}));
  EXPECT_EQ(gibbs.matrix[2], (std::array<double, 5>{1.0 / 6, 1.0 / 6, 3.0 / 6, 1.0 / 6, 1}));
  EXPECT_EQ(gibbs.matrix[3], (std::array<double, 5>{1.0 / 5, 1.0 / 5, 1.0 / 5, 2.0 / 5, 2}));
}

TEST(GibbsMatrix, ColumnWithoutBases) {
  Gibbs gibbs;
  gibbs.sites = {"AgT", "CgT"};
  gibbs.width = 3;
  EXPECT_TRUE(gibbs.BuildMatrix(2));
  EXPECT_EQ(gibbs.matrix[1], (std::array<double, 5>{0.25, 0.25, 0.25, 0.25, 2}));

  // Without pseudocount the command fails at that column; the later ones stay as counted.
  EXPECT_FALSE(gibbs.BuildMatrix(0));
  EXPECT_EQ(gibbs.matrix[0], (std::array<double, 5>{0.5, 0.5, 0, 0, 0}));
  EXPECT_EQ(gibbs.matrix[2], (std::array<double, 5>{0, 0, 0, 2, 0}));
}

}  // namespace
}  // namespace genetrain
