#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "TestSupport.h"
#include "common/Param.h"
#include "seq/JoinedText.h"
#include "seq/RecordJoiner.h"
#include "seq/SSeq.h"

namespace genetrain {
namespace {

using Strings = std::vector<std::string>;

// The N-run edits and the join as --clean_join and --clean make them, on whole texts.
std::string Trimmed(std::string_view text, std::int32_t maximum) {
  if (maximum < 0) return std::string(text);
  std::string out;
  JoinedText edited(out);
  edited.TrimRuns(static_cast<std::size_t>(maximum));
  edited.Put(text);
  edited.Finish();
  return out;
}

std::string Flanked(std::string_view text, std::vector<SSeq::Range>& ranges, std::string_view left,
                    std::string_view right) {
  std::string out;
  JoinedText edited(out);
  edited.FlankRuns(left, right, &ranges);
  edited.Put(text);
  edited.Finish();
  return out;
}

std::size_t Join(const Strings& records, std::string& out, std::string_view filler,
                 std::int32_t minimum, SSeq::Tally& all, SSeq::Tally& kept,
                 std::vector<SSeq::Range>* ranges = nullptr) {
  out.clear();
  JoinedText text(out);
  RecordJoiner joiner(filler, minimum);
  joiner.AddOutput(text);
  if (ranges != nullptr) joiner.RecordFillers(*ranges);
  for (const std::string& record : records) joiner.Add(record);
  text.Finish();
  all.Add(joiner.All());
  kept.Add(joiner.Kept());
  return joiner.KeptRecords();
}

TEST(JoinedTextTrim, LongRunsShrinkToTheMaximum) {
  struct Case {
    std::string text;
    std::int32_t maximum;
    std::string trimmed;
  };
  const Case cases[] = {
      {"ACNNNNNNNGT", 3, "ACNNNGT"},
      {"ACNNNGT", 3, "ACNNNGT"},
      {"ACNNGT", 3, "ACNNGT"},
      // Runs at both ends, a whole-N text, several runs moving down by what earlier ones lost.
      {"NNNNNAGNNNNNNCNTNNNNNN", 2, "NNAGNNCNTNN"},
      {"NNNNNNNN", 1, "N"},
      {"", 1, ""},
      {"ACGT", 0, "ACGT"},
      // Zero removes every N, a negative maximum leaves the text.
      {"NACNNGTNNNN", 0, "ACGT"},
      {"NNNN", 0, ""},
      {"ACNNNNNGT", -1, "ACNNNNNGT"},
      {"ACNNNNNGT", -2147483647 - 1, "ACNNNNNGT"},
      {"AnnnnNNNNnT", 1, "AnnnnNnT"},  // only the capital N forms runs
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text + " " + std::to_string(c.maximum));
    EXPECT_EQ(Trimmed(c.text, c.maximum), c.trimmed);
  }
}

TEST(JoinedTextTrim, ManyRunsInALongText) {
  // 300,000 runs: a version that erases each run from the middle of the text would take minutes.
  std::string text;
  std::string expected;
  for (int i = 0; i < 300000; ++i) {
    text.append("ACG").append(static_cast<std::size_t>(i % 7), 'N');
    expected.append("ACG").append(static_cast<std::size_t>(std::min(i % 7, 2)), 'N');
  }
  EXPECT_EQ(Trimmed(text, 2), expected);
}

using Ranges = std::vector<std::pair<std::size_t, std::size_t>>;

Ranges Pairs(const std::vector<SSeq::Range>& ranges) {
  Ranges pairs;
  for (const SSeq::Range& range : ranges) pairs.emplace_back(range.begin, range.end);
  return pairs;
}

TEST(JoinedTextFlank, RunsAsLongAsBothFillersGetThemAndAreRecorded) {
  struct Case {
    std::string text, left, right;
    std::string replaced;
    Ranges ranges;  // after the entry that was there before
  };
  const Case cases[] = {
      {"CNNNCNNNNCNNNNNNC", "AA", "TT", "CNNNCAATTCAANNTTC", {{5, 9}, {10, 16}}},
      {"NNNNNACNNNN", "AA", "TT", "AANTTACAATT", {{0, 5}, {7, 11}}},  // runs at both ends
      {"ANNNCNG", "GT", "", "AGTNCNG", {{1, 4}}},
      {"ANCNNT", "", "A", "AACNAT", {{1, 2}, {3, 5}}},
      // Both empty: every run is recorded, nothing changes.
      {"NANNGN", "", "", "NANNGN", {{0, 1}, {2, 4}, {5, 6}}},
      {"", "", "", "", {}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text + " " + c.left + " " + c.right);
    std::vector<SSeq::Range> ranges = {{100, 200}};  // earlier entries stay in front
    EXPECT_EQ(Flanked(c.text, ranges, c.left, c.right), c.replaced);
    Ranges expected = {{100, 200}};
    expected.insert(expected.end(), c.ranges.begin(), c.ranges.end());
    EXPECT_EQ(Pairs(ranges), expected);
  }
}

std::string Show(const SSeq::Tally& tally) {
  return std::to_string(tally.a) + " " + std::to_string(tally.c) + " " + std::to_string(tally.g) +
         " " + std::to_string(tally.t) + " " + std::to_string(tally.n);
}

TEST(RecordJoinerJoin, FillerBetweenRecordsKeptAndTallies) {
  struct Case {
    Strings records;
    std::string filler;
    std::int32_t minimum;
    std::size_t count;
    std::string out, all, kept;  // tallies: A C G T N
  };
  const Case cases[] = {
      // Records below the minimum go, without a filler.
      {{"ACGTNNNN", "NNNNNNNN", "GGGG"},
       "NNNNN",
       1,
       2,
       "ACGTNNNNNNNNNGGGG",
       "1 1 5 1 12",
       "1 1 5 1 4"},
      // The filler comes only after text, so empty records kept first get none.
      {{"", "", "AC", "", "GT"}, "xy", 0, 5, "ACxyxyGT", "1 1 1 1 0", "1 1 1 1 0"},
      // A minimum of 3,000,000,000 arrives here as a negative number: every record is kept.
      {{"NN", "", "A"},
       "-",
       static_cast<std::int32_t>(3000000000u),
       3,
       "NN--A",
       "1 0 0 0 2",
       "1 0 0 0 2"},
      {{}, "-", 1, 0, "", "0 0 0 0 0", "0 0 0 0 0"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.out);
    std::string out = "old";
    SSeq::Tally all, kept;
    EXPECT_EQ(Join(c.records, out, c.filler, c.minimum, all, kept), c.count);
    EXPECT_EQ(out, c.out);
    EXPECT_EQ(Show(all), c.all);
    EXPECT_EQ(Show(kept), c.kept);
  }
  // Tallies add to what they hold.
  std::string out;
  SSeq::Tally all{1, 1, 1, 1, 1}, kept{2, 2, 2, 2, 2};
  EXPECT_EQ(Join({"AC", "NNN"}, out, "", 2, all, kept), 1u);
  EXPECT_EQ(out, "AC");
  EXPECT_EQ(Show(all), "2 2 1 1 4");
  EXPECT_EQ(Show(kept), "3 3 2 2 2");
}

TEST(RecordJoinerJoin, CountsLongRecordsExactly) {
  // Long runs of one letter and lengths around multiples of 255 and 256.
  std::string first = std::string(600, 'A') + std::string(300, 'N') + std::string(256, 'G') +
                      std::string(255, 'C') + "T";
  std::string second;
  for (int i = 0; i < 100000; ++i) second.push_back("ACGTNNTTTG"[i % 10]);
  std::string out;
  SSeq::Tally all, kept;
  EXPECT_EQ(Join({first, second}, out, "", 1, all, kept), 2u);
  EXPECT_EQ(out.size(), 1412u + 100000u);
  EXPECT_EQ(Show(all), "10600 10255 20256 40001 20300");
  EXPECT_EQ(kept.All(), out.size());
}

TEST(RecordJoinerMarked, RecordsEveryFillerRange) {
  const Strings records = {"ACG", "N", "TT", "", "CC"};
  std::string out;
  SSeq::Tally all, kept;
  std::vector<SSeq::Range> ranges = {{7, 9}};
  EXPECT_EQ(Join(records, out, "NNNN", 1, all, kept, &ranges), 3u);
  EXPECT_EQ(out, "ACGNNNNTTNNNNCC");
  EXPECT_EQ(Pairs(ranges), (Ranges{{7, 9}, {3, 7}, {9, 13}}));
  // An empty filler is still recorded, as an empty range.
  ranges.clear();
  EXPECT_EQ(Join(records, out, "", 1, all, kept, &ranges), 3u);
  EXPECT_EQ(out, "ACGTTCC");
  EXPECT_EQ(Pairs(ranges), (Ranges{{3, 3}, {5, 5}}));
}

TEST(Mask, IntervalsAndRecords) {
  struct Case {
    std::string fasta, intervals;
    bool ok;
    std::string out;  // the output file; "<none>" when none was written
  };
  const std::string twenty = ">chr\r\nACGTACGTACGTACGTACGT\r\n";
  const Case cases[] = {
      {twenty, "1 20\n", true, ">chr\r\nNNNNNNNNNNNNNNNNNNNN\n"},
      // No header: one record with an empty label, written as an empty line.
      {"ACGT\n", "2 3\n", true, "\nANNT\n"},
      // Beyond the end, position 0, a negative number (a huge unsigned one) and numbers beyond
      // the int range fail, even after good intervals.
      {twenty, "21 21\n", false, "<none>"},
      {twenty, "0 0\n", false, "<none>"},
      {twenty, "1 -1\n", false, "<none>"},
      {twenty, "1 99999999999\n", false, "<none>"},
      {twenty, "4 5\n-99999999999 3\n", false, "<none>"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.fasta + c.intervals);
    test::ScratchDir dir;
    Param param;
    param.Set("--seq", dir.Write("in.fa", c.fasta));
    param.Set("--mask", dir.Write("mask.txt", c.intervals));
    param.Set("--out", dir.Path("out.fa"));
    SSeq seq;
    testing::internal::CaptureStderr();
    EXPECT_EQ(seq.Mask(param), c.ok);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    const bool written = std::filesystem::exists(dir.Path("out.fa"));
    EXPECT_EQ(written ? test::ReadFile(dir.Path("out.fa")) : "<none>", c.out);
  }
}

}  // namespace
}  // namespace genetrain
