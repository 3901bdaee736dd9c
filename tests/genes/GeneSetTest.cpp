#include "genes/GeneSet.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
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

// Shift 1, reversed and unreadable pairs are pinned by the cli.intergenic_* cases.
TEST(GeneSetTwoColumns, UnshiftedZeroAndAThirdColumn) {
  const GeneSet set;
  EXPECT_EQ(Show(set.ParsePair("0 98")), "0 -1 97 cc valid 0");
  EXPECT_EQ(Show(set.ParsePair("1 2 3")), "0 -1 -1 cc invalid 0");
}

// A line feed closing the buffer opens no further line, and an empty buffer has none; each
// Parse replaces the records of the one before.
TEST(GeneSetParse, EveryLineIsARecordUpToTheBufferEdges) {
  const std::pair<std::string_view, std::string_view> cases[] = {
      {"", ""},
      {"\n", "-"},
      {"a + 1 3 3 1", "v"},
      {"a + 1 3 3 1\n", "v"},
      {"\na + 1 3 3 1", "-v"},
      {"# comment\na + 1 99 99 1\n\nb + 1 9 9 1\r\nc + 1 4 4 1\n", "-v-v-"},
  };
  GeneSet set;
  for (const auto& [text, validity] : cases) {
    set.Parse(text.data(), text.data() + text.size());
    std::string shown;
    for (const GENE& gene : set.genes) shown += gene.valid ? 'v' : '-';
    EXPECT_EQ(shown, validity) << text;
  }
}

TEST(GeneSetTokens, ReadCountTakesPlainDecimalsThatFit) {
  for (const std::string_view refused : {"2147483648", "99999999999999", "+5", "5\r", ""})
    EXPECT_EQ(ReadCount(refused), -1) << refused;
  EXPECT_EQ(ReadCount("0"), 0);
  EXPECT_EQ(ReadCount("0042"), 42);
  EXPECT_EQ(ReadCount("2147483647"), 2147483647);
  std::vector<std::string_view> tokens;
  SplitTokens("\t a  b\r\nc ", " \t\n\r", tokens);
  EXPECT_EQ(tokens, (std::vector<std::string_view>{"a", "b", "c"}));
}

}  // namespace
}  // namespace genetrain
