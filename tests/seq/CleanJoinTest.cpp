#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "TestSupport.h"
#include "common/Param.h"
#include "seq/SSeq.h"

namespace genetrain {
namespace {

using Strings = std::vector<std::string>;

std::string Trimmed(std::string text, std::int32_t maximum) {
  SSeq::TrimNRuns(text, maximum);
  return text;
}

TEST(TrimNRuns, LongRunsShrinkToTheMaximumShortOnesStay) {
  EXPECT_EQ(Trimmed("ACNNNNNNNGT", 3), "ACNNNGT");
  EXPECT_EQ(Trimmed("ACNNNGT", 3), "ACNNNGT");
  EXPECT_EQ(Trimmed("ACNNGT", 3), "ACNNGT");
  // Runs at both ends, a whole-N text, several runs moving down by what earlier ones lost.
  EXPECT_EQ(Trimmed("NNNNNAGNNNNNNCNTNNNNNN", 2), "NNAGNNCNTNN");
  EXPECT_EQ(Trimmed("NNNNNNNN", 1), "N");
  EXPECT_EQ(Trimmed("", 1), "");
  EXPECT_EQ(Trimmed("ACGT", 0), "ACGT");
}

TEST(TrimNRuns, ZeroRemovesEveryNAndNegativeLeavesTheText) {
  EXPECT_EQ(Trimmed("NACNNGTNNNN", 0), "ACGT");
  EXPECT_EQ(Trimmed("NNNN", 0), "");
  EXPECT_EQ(Trimmed("ACNNNNNGT", -1), "ACNNNNNGT");
  EXPECT_EQ(Trimmed("ACNNNNNGT", -2147483647 - 1), "ACNNNNNGT");
  // Only the capital N forms runs.
  EXPECT_EQ(Trimmed("AnnnnNNNNnT", 1), "AnnnnNnT");
}

TEST(TrimNRuns, ManyRunsInALongText) {
  // 300,000 runs: a version that erases each run from the middle of the text would take minutes.
  std::string text;
  std::string expected;
  for (int i = 0; i < 300000; ++i) {
    text.append("ACG").append(static_cast<std::size_t>(i % 7), 'N');
    expected.append("ACG").append(static_cast<std::size_t>(std::min(i % 7, 2)), 'N');
  }
  SSeq::TrimNRuns(text, 2);
  EXPECT_EQ(text, expected);
}

struct Replaced {
  std::string text;
  std::vector<std::pair<std::size_t, std::size_t>> ranges;
};

Replaced Replace(std::string text, std::string_view left, std::string_view right) {
  std::vector<SSeq::Range> ranges = {{100, 200}};  // earlier entries stay in front
  SSeq::ReplaceNRuns(text, ranges, left, right);
  Replaced result{text, {}};
  for (const SSeq::Range& range : ranges) result.ranges.emplace_back(range.begin, range.end);
  return result;
}

using Ranges = std::vector<std::pair<std::size_t, std::size_t>>;

TEST(ReplaceNRuns, RunsAsLongAsBothFillersGetThemAndAreRecorded) {
  const Replaced r = Replace("CNNNCNNNNCNNNNNNC", "AA", "TT");
  EXPECT_EQ(r.text, "CNNNCAATTCAANNTTC");
  EXPECT_EQ(r.ranges, (Ranges{{100, 200}, {5, 9}, {10, 16}}));
  // A run at either end of the text.
  const Replaced ends = Replace("NNNNNACNNNN", "AA", "TT");
  EXPECT_EQ(ends.text, "AANTTACAATT");
  EXPECT_EQ(ends.ranges, (Ranges{{100, 200}, {0, 5}, {7, 11}}));
}

TEST(ReplaceNRuns, FillersOfUnequalOrNoLength) {
  const Replaced leftOnly = Replace("ANNNCNG", "GT", "");
  EXPECT_EQ(leftOnly.text, "AGTNCNG");
  EXPECT_EQ(leftOnly.ranges, (Ranges{{100, 200}, {1, 4}}));
  const Replaced rightOnly = Replace("ANCNNT", "", "A");
  EXPECT_EQ(rightOnly.text, "AACNAT");
  EXPECT_EQ(rightOnly.ranges, (Ranges{{100, 200}, {1, 2}, {3, 5}}));
  // Both empty: every run is recorded, nothing changes.
  const Replaced none = Replace("NANNGN", "", "");
  EXPECT_EQ(none.text, "NANNGN");
  EXPECT_EQ(none.ranges, (Ranges{{100, 200}, {0, 1}, {2, 4}, {5, 6}}));
  EXPECT_EQ(Replace("", "", "").ranges, (Ranges{{100, 200}}));
}

SSeq Holding(const Strings& sequences) {
  SSeq seq;
  for (const std::string& sequence : sequences) seq.Records().push_back({">r", sequence});
  return seq;
}

TEST(JoinRecords, DropsRecordsBelowTheMinimumWithoutAFiller) {
  const SSeq seq = Holding({"ACGTNNNN", "NNNNNNNN", "GGGG"});
  std::string out = "old";
  SSeq::Tally all;
  SSeq::Tally kept;
  EXPECT_EQ(seq.JoinRecords(out, "NNNNN", 1, all, kept), 2u);
  EXPECT_EQ(out, "ACGTNNNNNNNNNGGGG");
  EXPECT_EQ((Strings{std::to_string(all.a), std::to_string(all.c), std::to_string(all.g),
                     std::to_string(all.t), std::to_string(all.n)}),
            (Strings{"1", "1", "5", "1", "12"}));
  EXPECT_EQ((Strings{std::to_string(kept.a), std::to_string(kept.c), std::to_string(kept.g),
                     std::to_string(kept.t), std::to_string(kept.n)}),
            (Strings{"1", "1", "5", "1", "4"}));
  // Room for the text and an end of line after it.
  EXPECT_GT(out.capacity(), out.size());
}

TEST(JoinRecords, TalliesAddToWhatTheyHold) {
  const SSeq seq = Holding({"AC", "NNN"});
  std::string out;
  SSeq::Tally all{1, 1, 1, 1, 1};
  SSeq::Tally kept{2, 2, 2, 2, 2};
  EXPECT_EQ(seq.JoinRecords(out, "", 2, all, kept), 1u);
  EXPECT_EQ(out, "AC");
  EXPECT_EQ(all.All(), 10u);
  EXPECT_EQ(all.n, 4u);
  EXPECT_EQ(kept.All(), 12u);
  EXPECT_EQ(kept.Unambiguous(), 10u);
}

TEST(JoinRecords, CountsLongRecordsExactly) {
  // Long runs of one letter and lengths around multiples of 255 and 256.
  std::string first = std::string(600, 'A') + std::string(300, 'N') + std::string(256, 'G') +
                      std::string(255, 'C') + "T";
  std::string second;
  for (int i = 0; i < 100000; ++i) second.push_back("ACGTNNTTTG"[i % 10]);
  const SSeq seq = Holding({first, second});
  std::string out;
  SSeq::Tally all;
  SSeq::Tally kept;
  EXPECT_EQ(seq.JoinRecords(out, "", 1, all, kept), 2u);
  EXPECT_EQ(out.size(), 1412u + 100000u);
  EXPECT_EQ(all.a, 600u + 10000u);
  EXPECT_EQ(all.c, 255u + 10000u);
  EXPECT_EQ(all.g, 256u + 20000u);
  EXPECT_EQ(all.t, 1u + 40000u);
  EXPECT_EQ(all.n, 300u + 20000u);
  EXPECT_EQ(kept.All(), out.size());
}

TEST(JoinRecords, FillerOnlyAfterTextSoEmptyRecordsKeptFirstGetNone) {
  const SSeq seq = Holding({"", "", "AC", "", "GT"});
  std::string out;
  SSeq::Tally all;
  SSeq::Tally kept;
  EXPECT_EQ(seq.JoinRecords(out, "xy", 0, all, kept), 5u);
  EXPECT_EQ(out, "ACxyxyGT");
}

TEST(JoinRecords, NegativeMinimumKeepsEveryRecord) {
  // A minimum of 3,000,000,000 arrives here as a negative signed number.
  const SSeq seq = Holding({"NN", "", "A"});
  std::string out;
  SSeq::Tally all;
  SSeq::Tally kept;
  EXPECT_EQ(seq.JoinRecords(out, "-", static_cast<std::int32_t>(3000000000u), all, kept), 3u);
  EXPECT_EQ(out, "NN--A");
  SSeq::Tally none;
  EXPECT_EQ(Holding({}).JoinRecords(out, "-", 1, all, none), 0u);
  EXPECT_EQ(out, "");
}

TEST(JoinRecordsMarked, RecordsEveryFillerRange) {
  const SSeq seq = Holding({"ACG", "N", "TT", "", "CC"});
  std::string out;
  SSeq::Tally all;
  SSeq::Tally kept;
  std::vector<SSeq::Range> ranges = {{7, 9}};
  EXPECT_EQ(seq.JoinRecordsMarked(out, "NNNN", 1, all, kept, ranges), 3u);
  EXPECT_EQ(out, "ACGNNNNTTNNNNCC");
  Ranges got;
  for (const SSeq::Range& range : ranges) got.emplace_back(range.begin, range.end);
  EXPECT_EQ(got, (Ranges{{7, 9}, {3, 7}, {9, 13}}));
  // An empty filler is still recorded, as an empty range.
  ranges.clear();
  EXPECT_EQ(seq.JoinRecordsMarked(out, "", 1, all, kept, ranges), 3u);
  EXPECT_EQ(out, "ACGTTCC");
  ASSERT_EQ(ranges.size(), 2u);
  EXPECT_EQ(ranges[1].begin, 5u);
  EXPECT_EQ(ranges[1].end, 5u);
}

// --mask through its handler: the interval file's grammar and the intervals refused.
struct MaskRun {
  bool ok = false;
  std::string out;
  bool written = false;
};

MaskRun RunMask(const std::string& fasta, const std::string& intervals) {
  test::ScratchDir dir;
  Param param;
  param.Set("--seq", dir.Write("in.fa", fasta));
  param.Set("--mask", dir.Write("mask.txt", intervals));
  param.Set("--out", dir.Path("out.fa"));
  SSeq seq;
  MaskRun run;
  run.ok = seq.Mask(param);
  run.written = std::filesystem::exists(dir.Path("out.fa"));
  if (run.written) run.out = test::ReadFile(dir.Path("out.fa"));
  return run;
}

constexpr std::string_view kTwenty = ">chr\r\nACGTACGTACGTACGTACGT\r\n";

TEST(Mask, LinesOfTwoTokensAreIntervalsOthersAreIgnored) {
  const MaskRun run = RunMask(std::string(kTwenty),
                              "  2\t \t3\r\n"  // blanks and tabs; "3\r" reads as 3
                              "7 7 \r\n"       // "\r" is a third token
                              "12\r\n\r\n\n"   // one token, or none
                              "9 9 x\n"
                              "+15 015\n"
                              "18 19");  // no end of line
  EXPECT_TRUE(run.ok);
  EXPECT_EQ(run.out, ">chr\r\nANNTACGTACGTACNTANNT\n");
}

TEST(Mask, EmptyStretchChangesNothingWholeSequenceWorks) {
  EXPECT_EQ(RunMask(std::string(kTwenty), "6 5\n").out, ">chr\r\nACGTACGTACGTACGTACGT\n");
  EXPECT_EQ(RunMask(std::string(kTwenty), "1 20\n").out, ">chr\r\nNNNNNNNNNNNNNNNNNNNN\n");
  EXPECT_EQ(RunMask(std::string(kTwenty), "21 20\n").ok, false);
}

TEST(Mask, RefusedIntervalsWriteNothing) {
  // Beyond the end, position 0, first past last + 1, negative (a huge unsigned number), and
  // numbers beyond the int range: each fails, even after good intervals.
  for (const char* intervals : {"1 2\n15 25\n", "21 21\n", "0 3\n", "0 0\n", "8 6\n", "-1 5\n",
                                "1 -1\n", "1 99999999999\n", "4 5\n-99999999999 3\n"}) {
    const MaskRun run = RunMask(std::string(kTwenty), intervals);
    EXPECT_FALSE(run.ok) << intervals;
    EXPECT_FALSE(run.written) << intervals;
  }
}

TEST(Mask, NeedsExactlyOneRecord) {
  testing::internal::CaptureStderr();
  EXPECT_FALSE(RunMask(">a\nAC\n>b\nGT\n", "1 1\n").ok);
  EXPECT_FALSE(RunMask("", "1 1\n").ok);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  // No header: one record with an empty label, written as an empty line.
  EXPECT_EQ(RunMask("ACGT\n", "2 3\n").out, "\nANNT\n");
}

TEST(Mask, IntervalFolderIsReportedAsUnopenable) {
  test::ScratchDir dir;
  Param param;
  param.Set("--seq", dir.Write("in.fa", ">a\nACGT\n"));
  param.Set("--mask", dir.Path(""));
  param.Set("--out", dir.Path("out.fa"));
  SSeq seq;
  testing::internal::CaptureStderr();
  EXPECT_FALSE(seq.Mask(param));
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            " : error, opening file " + dir.Path("") + "\n");
  EXPECT_FALSE(std::filesystem::exists(dir.Path("out.fa")));
}

}  // namespace
}  // namespace genetrain
