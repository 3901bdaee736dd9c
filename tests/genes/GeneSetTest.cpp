#include "genes/GeneSet.h"

#include <gtest/gtest.h>

#include <utility>

#include <string>
#include <vector>

#include "genes/GenesTestSupport.h"

namespace genetrain {
namespace {

// The record as ShowGene shows it, then its validity and class.
std::string Show(const GENE& gene) {
  return test::ShowGene(gene) + " " + (gene.valid ? "valid" : "invalid") + " " +
         std::to_string(gene.gene_class);
}

TEST(GeneSetSixColumns, CoordinatesStrandClassAndUnreadableSpans) {
  const std::pair<std::string_view, std::string_view> lines[] = {
      {"g1 + 1 99 99 1", "1 0 98 cc valid 1"},
      {"g1 + 1 100 100 1", "1 0 99 cc invalid 0"},  // not whole codons
      {"g1\t-\t<3\t>101\t99\t2\r", "2 2 100 oo valid 2"},
      {"g1 + 1 99 99 3", "1 0 98 cc invalid 3"},
      {"g1 + 1 99 99 257", "1 0 98 cc valid 1"},  // low 8 bits
      {"g1 + 1 99 99 x", "1 0 98 cc invalid 255"},
      // A span that cannot be read drops both coordinates.
      {"g1 * 1 99 99 1", "0 -1 -1 cc invalid 0"},
      {"g1 + 0 98 98 1", "1 -1 -1 cc invalid 0"},
      {"g1 + <x 98 98 1", "1 -1 -1 oc invalid 0"},
      {"g1 + 10 >9 98 1", "1 -1 -1 co invalid 0"},
      {"g1 + 1 2147483648 1 1", "1 -1 -1 cc invalid 0"},
      {"g1 + 1 99 99", "0 -1 -1 cc invalid 0"},
      {"g1 + 1 99 99 1 extra", "0 -1 -1 cc invalid 0"},
      {"", "0 -1 -1 cc invalid 0"},
  };
  const GeneSet set;
  for (const auto& [line, shown] : lines) EXPECT_EQ(Show(set.ParseLine(line)), shown) << line;
}

TEST(GeneSetSixColumns, LimitAdmitsAGeneOneBasePastTheEnd) {
  GeneSet set;
  set.max_right = 1000;
  EXPECT_TRUE(set.ParseLine("g + 3 1001 999 1").valid);
  EXPECT_FALSE(set.ParseLine("g + 4 1002 999 1").valid);
  set.max_right = 0;  // no limit
  EXPECT_TRUE(set.ParseLine("g + 4 1002 999 1").valid);
}

TEST(GeneSetTwoColumns, ShiftMakesTheFileZeroBased) {
  GeneSet set;
  set.shift_zero = 1;
  EXPECT_EQ(Show(set.ParsePair("0 98")), "0 0 98 cc valid 0");
  set.shift_zero = 0;
  EXPECT_EQ(Show(set.ParsePair("0 98")), "0 -1 97 cc valid 0");
  EXPECT_EQ(Show(set.ParsePair("50 10")), "0 49 9 cc invalid 0");
  EXPECT_EQ(Show(set.ParsePair("x 10")), "0 -2 9 cc valid 0");  // not examined further
  EXPECT_EQ(Show(set.ParsePair("1 2 3")), "0 -1 -1 cc invalid 0");
}

TEST(GeneSetParse, EveryLineIsARecordAndBadLinesAreKeptAsText) {
  GeneSet set;
  set.rejected_text = "old";
  const std::string text = "# comment\na + 1 99 99 1\n\nb + 1 9 9 1\r\nc + 1 4 4 1\n";
  set.Parse(text.data(), text.data() + text.size());
  ASSERT_EQ(set.genes.size(), 5u);
  EXPECT_TRUE(set.genes[1].valid);
  EXPECT_TRUE(set.genes[3].valid);
  EXPECT_FALSE(set.genes[4].valid);
  EXPECT_EQ(set.rejected_text, "old# comment\n\nc + 1 4 4 1");
}

TEST(GeneSetParse, LineEndsAtTheBufferEdges) {
  GeneSet set;
  const std::string empty;
  set.Parse(empty.data(), empty.data());
  EXPECT_TRUE(set.genes.empty());
  for (const std::string text : {"\n", "a + 1 3 3 1", "a + 1 3 3 1\n"}) {
    set.Parse(text.data(), text.data() + text.size());
    EXPECT_EQ(set.genes.size(), 1u) << text;
  }
  const std::string two = "\na + 1 3 3 1";
  set.Parse(two.data(), two.data() + two.size());
  ASSERT_EQ(set.genes.size(), 2u);
  EXPECT_TRUE(set.genes[1].valid);
}

TEST(GeneSetTokens, ReadCountTakesPlainDecimalsThatFit) {
  EXPECT_EQ(ReadCount("0"), 0);
  EXPECT_EQ(ReadCount("0042"), 42);
  EXPECT_EQ(ReadCount("2147483647"), 2147483647);
  EXPECT_EQ(ReadCount("2147483648"), -1);
  EXPECT_EQ(ReadCount("99999999999999"), -1);
  EXPECT_EQ(ReadCount("+5"), -1);
  EXPECT_EQ(ReadCount("5\r"), -1);
  EXPECT_EQ(ReadCount(""), -1);
  std::vector<std::string_view> tokens;
  SplitTokens("\t a  b\r\nc ", " \t\n\r", tokens);
  EXPECT_EQ(tokens, (std::vector<std::string_view>{"a", "b", "c"}));
}

}  // namespace
}  // namespace genetrain
