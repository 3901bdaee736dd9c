#include "motif/Gibbs.h"

#include <gtest/gtest.h>

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

// The sites, positions and standard output of one parse.
struct Parsed {
  std::vector<std::string> sites;
  std::vector<std::int32_t> positions;
  std::string out;
};

Parsed ParseText(const std::string& text, bool numMotifs) {
  test::ScratchDir dir;
  const std::string name = dir.Write("gibbs.out", text);
  Gibbs gibbs;
  CaptureStdout();
  const bool ok = numMotifs ? gibbs.ParseNumMotifsLayout(name) : gibbs.ParseMotifLayout(name);
  Parsed parsed{gibbs.sites, gibbs.positions, GetCapturedStdout()};
  EXPECT_TRUE(ok);
  return parsed;
}

int LayoutOf(const std::string& text) {
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
  EXPECT_EQ(LayoutOf(After(2, "Gibbs 3.10\nNum Motifs: 1\n")), Gibbs::kNumMotifsLayout);
  EXPECT_EQ(LayoutOf("Gibbs"), Gibbs::kNumMotifsLayout);
  EXPECT_EQ(LayoutOf(After(10, "Gibbs 3.10\n")), Gibbs::kNumMotifsLayout);  // the eleventh
  EXPECT_EQ(LayoutOf(After(11, "Gibbs 3.10\n")), Gibbs::kMotifLayout);      // the twelfth
  EXPECT_EQ(LayoutOf(" Gibbs 3.10\n"), Gibbs::kMotifLayout);  // must stand at the line start
  EXPECT_EQ(LayoutOf("GIBBS\ngibbs\n     MOTIF A\n"), Gibbs::kMotifLayout);
  EXPECT_EQ(LayoutOf(""), Gibbs::kMotifLayout);
}

TEST(GibbsLayout, UnreadableFileIsReported) {
  test::ScratchDir dir;
  Gibbs gibbs;
  CaptureStderr();
  EXPECT_EQ(gibbs.DetectLayout(dir.Path("absent")), Gibbs::kUnreadable);
  EXPECT_FALSE(gibbs.Parse(dir.Path("absent")));
  EXPECT_FALSE(gibbs.ParseMotifLayout(dir.Path(".")));
  const std::string expected = "error: opening file " + dir.Path("absent") + "\n";
  EXPECT_EQ(GetCapturedStderr(),
            expected + expected + "error: opening file " + dir.Path(".") + "\n");
  EXPECT_TRUE(gibbs.sites.empty());
}

TEST(GibbsMotifLayout, SiteTakenFromTheTokenItStandsIn) {
  const Parsed parsed = ParseText(
      "   1-1     5 ttag aGGAGg tcaa    10\n"  // both flanks
      "   2-1     1      AGGAGT tcaa     6\n"  // at the region start: no left flank
      "   3-1    15 ttag AGGUGN         20\n"  // at the region end: no right flank
      "4\t1\t007\tcc\tGGAGGA\ttt\t12\n",       // tabs; leading zeros
      false);
  EXPECT_EQ(parsed.sites, (std::vector<std::string>{"aGGAGg", "AGGAGT", "AGGUGN", "GGAGGA"}));
  EXPECT_EQ(parsed.positions, (std::vector<std::int32_t>{5, 1, 15, 7}));
  EXPECT_EQ(parsed.out, "");
}

TEST(GibbsMotifLayout, SkippedAndStopLines) {
  const Parsed parsed = ParseText(
      " \t \n"
      "\n"
      "         MOTIF A (sites: 2)\n"  // skipped before the stop test
      "   1-1     5 ttag AGGAGG tcaa    10\n"
      "   2-1     5 ttag AGGAGG tcaa    10\n"
      "  residue frequencies x 100)\n"
      "   3-1     5 ttag AGGAGG tcaa    10\n",
      false);
  EXPECT_EQ(parsed.sites.size(), 2u);
  EXPECT_EQ(parsed.out, "");
  for (const char* stop : {"sites: 1\n", "(\n", "a)b\n"}) {
    const Parsed stopped =
        ParseText(std::string("1-1 5 t AGGAGG t 10\n") + stop + "2-1 5 t AGGAGG t 10\n", false);
    EXPECT_EQ(stopped.sites.size(), 1u) << stop;
  }
}

TEST(GibbsMotifLayout, LinesOfOtherTokenCountsAreWarnedAbout) {
  const std::string line8 = "   2-1     5 ttag AGGAGG tcaa    10  0.9";
  const std::string line5 = "2-1 5 AGGAGG 10";
  const Parsed parsed = ParseText(
      "   1-1     5 ttag AGGAGG tcaa    10\n" + line8 + "\n" + line5 + "\n*****\n", false);
  EXPECT_EQ(parsed.sites.size(), 1u);
  EXPECT_EQ(parsed.out, "warning: unexpected line in gibbs paring: " + line8 +
                            "\nwarning: unexpected line in gibbs paring: " + line5 +
                            "\nwarning: unexpected line in gibbs paring: *****\n");
}

TEST(GibbsMotifLayout, TokensAreChecked) {
  // Each line has an acceptable count but one token that does not check; its region number 1
  // then differs from the sites found (none).
  for (const char* line :
       {"1-1 5 ttag AGGXGG tcaa 10", "1-1 5 tt.g AGGAGG tcaa 10", "1-1 5 ttag AGGAGG tcaa 1O",
        "1-1 5 ttag AGGAGG tc9a 10", "1-x 5 ttag AGGAGG tcaa 10", "1-1 +5 ttag AGGAGG tcaa 10",
        "1-1 5 AGGAGG tcaa t10", "1-1 1 AGGAGG tcaa 6x"}) {
    const Parsed parsed = ParseText(std::string(line) + "\n", false);
    EXPECT_TRUE(parsed.sites.empty()) << line;
    EXPECT_EQ(parsed.out, std::string("warning: unexpected format in gibbs line ") + line + "\n");
  }
}

TEST(GibbsMotifLayout, RegionNumbersFollowTheSitesFound) {
  const Parsed parsed = ParseText(
      "1-1 5 t AGGAGG t 10\n"
      "3-1 5 t AGGAGG t 10\n"  // a region left out
      "2-1 5 t AGGAGX t 10\n"  // does not check, but its number fits the sites found
      "3-1 5 t AGGAGG t 10\n"
      "0-1 5 t AGGAGG t 10\n",  // numbers are compared, never used
      false);
  EXPECT_EQ(parsed.sites.size(), 4u);
  EXPECT_EQ(parsed.out,
            "warning: unexpected format in gibbs line 3-1 5 t AGGAGG t 10\n"
            "warning: unexpected format in gibbs line 0-1 5 t AGGAGG t 10\n");
}

TEST(GibbsMotifLayout, HugeStartsStopAtTheIntegerRange) {
  const Parsed parsed = ParseText("1-1 4294967297 t AGGAGG t 10\n", false);
  EXPECT_EQ(parsed.positions, (std::vector<std::int32_t>{2147483647}));
}

TEST(GibbsMotifLayout, CarriageReturnsAreNotSeparators) {
  const Parsed parsed = ParseText("1-1 5 t AGGAGG t 10\r\n", false);
  EXPECT_TRUE(parsed.sites.empty());
  EXPECT_EQ(parsed.out, "warning: unexpected format in gibbs line 1-1 5 t AGGAGG t 10\r\n");
}

TEST(GibbsNumMotifsLayout, SitesFollowTheNumMotifsLine) {
  const Parsed parsed = ParseText(
      "Gibbs 3.10\n"
      "   1,  1     5 ttag AGGAGG tcaa    10\n"  // before the sites: skipped
      " Num Motifs: 3\n"                         // not at the line start: skipped too
      "Num Motifs: 3\n"
      "\t \n"
      "   1,  1     5 ttag aGGAGg tcaa    10   0.97 F 1 101 400 +\n"
      "   2,  1     1      AGGAGT tcaa     6   x F\n"  // t6 is not examined
      "   3,  1    15 ttag AGGAGN         20   0.90 F seq 3 F\n"
      "         *****\n"
      "   4,  1     5 ttag AGGAGG tcaa    10   0.97 F 4\n",
      true);
  EXPECT_EQ(parsed.sites, (std::vector<std::string>{"aGGAGg", "AGGAGT", "AGGAGN"}));
  EXPECT_EQ(parsed.positions, (std::vector<std::int32_t>{5, 1, 15}));
  EXPECT_EQ(parsed.out, "");
}

TEST(GibbsNumMotifsLayout, TheStrandMarkEndsTheLine) {
  const std::string reverse = "   2,  1     5 ttag CCTCCT tcaa    10   0.81 R 2 505 900 -";
  const std::string noMark = "   3,  1     5 ttag AGGAGG tcaa    10   0.81 3";
  const std::string third = "   3,  1     5 ttag AGGAGG tcaa    10   abc F";
  const std::string markFirst = "F 4, 1 5 ttag AGGAGG tcaa 10 0.8";
  const Parsed parsed =
      ParseText("Num Motifs: 4\n   1,1,5,ttag,AGGAGG,tcaa,10,0.9,F,x\n" + reverse + "\n" + noMark +
                    "\n" + third + "\n" + markFirst + "\n",
                true);
  EXPECT_EQ(parsed.sites, (std::vector<std::string>{"AGGAGG", "AGGAGG"}));
  EXPECT_EQ(parsed.out, "warning: unexpected line in gibbs paring: " + reverse +
                            "\nwarning: unexpected line in gibbs paring: " + noMark +
                            "\nwarning: unexpected format in gibbs line " + third +
                            "\nwarning: unexpected line in gibbs paring: " + markFirst + "\n");
}

TEST(GibbsNumMotifsLayout, HyphensAreNoSeparatorsHere) {
  const std::string line = "   1-1     5 ttag AGGAGG tcaa    10   0.97 F";
  const Parsed parsed = ParseText("Num Motifs: 1\n" + line + "\n", true);
  EXPECT_TRUE(parsed.sites.empty());
  EXPECT_EQ(parsed.out, "warning: unexpected format in gibbs line " + line + "\n");
}

TEST(GibbsNumMotifsLayout, WithoutNumMotifsLineNothingIsRead) {
  const Parsed parsed = ParseText("Gibbs 3.10\n   1,  1     5 ttag AGGAGG tcaa  10  0.9 F\n", true);
  EXPECT_TRUE(parsed.sites.empty());
  EXPECT_EQ(parsed.out, "");
}

TEST(GibbsParse, DetectedLayoutChoosesTheParser) {
  test::ScratchDir dir;
  const std::string body = "Num Motifs: 1\n   1,  1     5 ttag AGGAGG tcaa  10  0.9 F\n";
  Gibbs numMotifs;
  CaptureStdout();
  EXPECT_TRUE(numMotifs.Parse(dir.Write("a", "\n\nGibbs 3.10\n" + body)));
  EXPECT_EQ(numMotifs.sites.size(), 1u);
  Gibbs motif;  // the same lines read in the other layout
  EXPECT_TRUE(motif.Parse(dir.Write("b", After(11, "Gibbs 3.10\n") + body)));
  EXPECT_TRUE(motif.sites.empty());
  EXPECT_NE(GetCapturedStdout(), "");
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

TEST(GibbsConvert, StartsOutsideTheRegionFail) {
  struct Case {
    std::int32_t position;
    const char* message;
  };
  for (const Case& c :
       {Case{16, "error: contradiction in sequence size and motif position in gibbs\n"},
        Case{0, "error: unexpected motif position in gibbs\n"},
        Case{-3, "error: unexpected motif position in gibbs\n"}}) {
    Gibbs gibbs;
    gibbs.sites = {"AGGAGG", "AGGAGG"};
    gibbs.positions = {1, c.position};
    gibbs.width = 6;
    CaptureStderr();
    EXPECT_FALSE(gibbs.ConvertPositions(Regions({20, 20})));
    EXPECT_EQ(GetCapturedStderr(), c.message) << c.position;
  }
}

TEST(GibbsConvert, MotifLongerThanTheRegions) {
  Gibbs gibbs;
  gibbs.sites = {"AGGAGG"};
  gibbs.positions = {1};
  gibbs.width = 6;
  CaptureStderr();
  EXPECT_FALSE(gibbs.ConvertPositions(Regions({5})));
  EXPECT_EQ(GetCapturedStderr(),
            "error: contradiction in sequence size and motif position in gibbs\n");
}

TEST(GibbsConvert, RegionsMustMatchTheSites) {
  Gibbs gibbs;
  gibbs.sites = {"AGG", "AGG", "AGG"};
  gibbs.positions = {1, 1, 1};
  gibbs.width = 3;
  CaptureStderr();
  EXPECT_FALSE(gibbs.ConvertPositions(Regions({10, 10})));
  // The first label carries the number of regions, the second the number of sites.
  EXPECT_EQ(GetCapturedStderr(),
            "gibbs lines: 2\nseq lines: 3\nerror: in gibbs parse input data\n");

  CaptureStderr();
  EXPECT_FALSE(gibbs.ConvertPositions(Regions({10, 10, 11})));
  Gibbs none;
  EXPECT_FALSE(none.ConvertPositions(Regions({})));
  EXPECT_EQ(GetCapturedStderr(), "");
}

TEST(GibbsDuration, OneSiteWorkedExample) {
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
}

TEST(GibbsDuration, PseudocountsAndSingleValue) {
  Gibbs gibbs;
  gibbs.durationLength = 4;
  gibbs.positions = {3, 3, 1};
  EXPECT_TRUE(gibbs.BuildDuration(0));
  EXPECT_EQ(gibbs.duration, (std::vector<double>{0.0, 1.0 / 3, 0.0, 2.0 / 3}));
  EXPECT_TRUE(gibbs.BuildDuration(2));  // starts afresh: (0 1 0 2) + 2 over 11
  EXPECT_EQ(gibbs.duration, (std::vector<double>{2.0 / 11, 3.0 / 11, 2.0 / 11, 4.0 / 11}));

  Gibbs single;
  single.durationLength = 1;
  single.positions = {0, 0};
  EXPECT_TRUE(single.BuildDuration(5));
  single.SmoothDuration();
  EXPECT_EQ(single.duration, (std::vector<double>{0.6}));
}

TEST(GibbsDuration, NothingToNormalise) {
  Gibbs gibbs;
  gibbs.durationLength = 3;
  EXPECT_FALSE(gibbs.BuildDuration(0));  // no spacer, no pseudocount
  gibbs.durationLength = 0;
  EXPECT_FALSE(gibbs.BuildDuration(1));
  gibbs.durationLength = -2;
  EXPECT_FALSE(gibbs.BuildDuration(1));
}

TEST(GibbsDuration, SpacerOutsideTheRangeIsGuarded) {
  for (const std::int32_t spacer : {3, -1}) {
    Gibbs gibbs;
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

TEST(GibbsText, MatrixRowsRunBackwardsInTheModel) {
  Gibbs gibbs;
  gibbs.sites = {"AGT", "AGC", "AGT"};
  gibbs.width = 3;
  ASSERT_TRUE(gibbs.BuildMatrix(0));
  EXPECT_EQ(gibbs.MatrixText(true, 2),
            "0.00 0.33 0.00 0.67\n0.00 0.00 1.00 0.00\n1.00 0.00 0.00 0.00\n");
  EXPECT_EQ(gibbs.MatrixText(false, 0),
            "Pos   A   C   G   T\n1 1. 0. 0. 0.\n2 0. 0. 1. 0.\n3 0. 0. 0. 1.\n");
}

TEST(GibbsRun, EmptyOutputIsNoError) {
  test::ScratchDir dir;
  const std::string log = dir.Write("run.log", "before\n");
  Param param;
  param.Set("--gibbs", dir.Write("g.out", "\n   MOTIF A\n\n"));
  param.Set("--seq", dir.Path("absent.fa"));
  param.Set("--log", log);
  Gibbs gibbs;
  EXPECT_TRUE(gibbs.Run(param));
  EXPECT_EQ(test::ReadFile(log), "before\nGibbs output is empty: " + dir.Path("g.out") + "\n");
}

TEST(GibbsRun, ModelSectionsAppended) {
  test::ScratchDir dir;
  const std::string model = dir.Write("m.mod", "NONC \n0.25\n\n");
  Param param;
  param.Set("--gibbs", dir.Write("g.out", "1-1 2 a AGG t 4\n2-1 1 AGG tt 3\n"));
  param.Set("--seq", dir.Write("r.fa", ">1\nAAGGT\n>2\nAGGTT\n"));
  param.Set("--mod", model);
  param.Set("--GIBBS_PRECISION_DUR", "4");
  param.Set("--GIBBS_PSEUDOCOUNTS_MAT", "0");
  Gibbs gibbs;
  EXPECT_TRUE(gibbs.Run(param));
  // Spacers 1 and 2 of 0..2: (1 2 2) / 5, smoothed.
  EXPECT_EQ(test::ReadFile(model),
            "NONC \n0.25\n\n"
            "RBSS 3\nRBSM \n0.000 0.000 1.000 0.000\n0.000 0.000 1.000 0.000\n"
            "1.000 0.000 0.000 0.000\n\n"
            "RBSL 3\nRBSD \n0.2000\n0.3600\n0.3200\n\n");
}

}  // namespace
}  // namespace genetrain
