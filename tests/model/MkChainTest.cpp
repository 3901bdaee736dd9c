#include "model/MkChain.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <limits>
#include <optional>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "TestSupport.h"

namespace genetrain {
namespace {

using test::Capture;
using test::CodesOf;

MkChain Chain(int order, int period, int countOrder) {
  ChainSettings settings;
  settings.countOrder = countOrder;
  return MkChain(order, period, settings);
}

std::size_t Word(const std::string& letters) {
  std::size_t index = 0;
  for (const std::uint8_t code : CodesOf(letters)) index = index * 4 + code;
  return index;
}

// The printed table of `rows` rows, each `fill` but the words given as "AA TT:value; ...".
std::string Table(std::size_t rows, const std::string& fill, std::string_view words = "") {
  std::vector<std::string> lines(rows, fill);
  while (!words.empty()) {
    const std::size_t end = std::min(words.find(';'), words.size());
    const std::string_view group = words.substr(0, end);
    const std::size_t colon = group.find(':');
    std::istringstream names{std::string(group.substr(0, colon))};
    for (std::string word; names >> word;) lines[Word(word)] = group.substr(colon + 1);
    words.remove_prefix(std::min(end + 2, words.size()));
  }
  std::string text = "\n";
  for (const std::string& line : lines) text.append(line).push_back('\n');
  return text;
}

std::vector<CodeSeq> Codes(const std::vector<std::string>& sequences) {
  std::vector<CodeSeq> list;
  for (const std::string& letters : sequences) list.push_back(CodesOf(letters));
  return list;
}

// The reverse-complement index built letter by letter, as the definition reads.
std::uint32_t ReverseComplementByDefinition(std::uint32_t word, int letters) {
  std::uint32_t r = 0;
  for (int i = 0; i < letters; ++i, word /= 4) r = (r * 4 + (word % 4)) ^ 3;
  return r;
}

TEST(MkChainTest, ReverseComplementWordAgainstTheDefinition) {
  EXPECT_EQ(ReverseComplementWord(Word("GGAC"), 2), Word("GT"));  // the last letters
  EXPECT_EQ(ReverseComplementWord(5, 0), 0u);
  EXPECT_EQ(ReverseComplementWord(5, -1), 0u);
  std::mt19937 random(7);
  for (int letters = 1; letters <= 15; ++letters) {
    for (int i = 0; i < 2000; ++i) {
      const std::uint32_t word = random() & ((1u << (2 * letters)) - 1);
      ASSERT_EQ(ReverseComplementWord(word, letters), ReverseComplementByDefinition(word, letters))
          << word << " " << letters;
    }
  }
}

// A chain of (order, period, count order) estimated from the sequences with (left margin, right
// margin, pseudocount), against its table worked out by hand.
void ExpectChain(const char* what, std::array<int, 3> chain, std::array<int, 3> trim, bool revcomp,
                 const std::vector<std::string>& sequences, const std::string& expected) {
  MkChain made = Chain(chain[0], chain[1], chain[2]);
  made.revcomp = revcomp;
  ASSERT_TRUE(made.Estimate(Codes(sequences), trim[0], trim[1], trim[2])) << what;
  EXPECT_EQ(made.ToText(), expected) << what;
}

TEST(MkChainTest, HandComputedChains) {
  ExpectChain("A 2, C 2, G 1, T 1: (count + 1) / (6 + 4)", {0, 1, 0}, {0, 0, 1}, false, {"ACGTAC"},
              Table(4, "0.20000", "A C:0.30000"));
  ExpectChain("no pseudocount", {0, 1, 0}, {0, 0, 0}, false, {"ACGTAC"},
              Table(4, "0.16667", "A C:0.33333"));
  ExpectChain("(count + 2) / (6 + 8)", {0, 1, 0}, {0, 0, 2}, false, {"ACGTAC"},
              Table(4, "0.21429", "A C:0.28571"));
  ExpectChain("AA, AC, CG, GA of 4, plus 1 each of 16", {1, 1, 1}, {0, 0, 1}, false, {"AACGA"},
              Table(16, "0.05000", "AA AC CG GA:0.10000"));
  // Margins 3 and 3 leave ACGACTGCA; frame 0 starts at its first letter: A A G, C C C, G T A.
  ExpectChain("frames follow the left margin", {0, 3, 0}, {3, 3, 1}, false, {"ATGACGACTGCATAA"},
              "\n0.42857 0.14286 0.28571\n0.14286 0.57143 0.14286\n0.28571 0.14286 0.28571\n"
              "0.14286 0.14286 0.28571\n");
  // One more letter on the left: C C C, G T A, A G.
  ExpectChain("frames shift", {0, 3, 0}, {4, 3, 1}, false, {"ATGACGACTGCATAA"},
              "\n0.14286 0.28571 0.33333\n0.57143 0.14286 0.16667\n0.14286 0.28571 0.33333\n"
              "0.14286 0.28571 0.16667\n");
  // Frame 0: AT AA CC TA; frame 1: TG AA CC AA; frame 2: GA AC CT.
  ExpectChain("order 1, period 3", {1, 3, 1}, {0, 0, 1}, false, {"ATGAAACCCTAA"},
              Table(16, "0.05000 0.05000 0.05263",
                    "AT TA:0.10000 0.05000 0.05263; AA:0.10000 0.15000 0.05263; "
                    "CC:0.10000 0.10000 0.05263; TG:0.05000 0.10000 0.05263; "
                    "GA AC CT:0.05000 0.05000 0.10526"));
  // AC (frame 0), CN and NG not counted (frames 1, 2), GT (0), TA (1), AC (2); X the same.
  for (const char* letters : {"ACNGTAC", "ACXGTAC"}) {
    ExpectChain(letters, {1, 3, 1}, {0, 0, 0}, false, {letters},
                Table(16, "0.00000 0.00000 0.00000",
                      "AC:0.50000 0.00000 1.00000; GT:0.50000 0.00000 0.00000; "
                      "TA:0.00000 1.00000 0.00000"));
  }
  ExpectChain("a stretch of the count order counts nothing", {2, 1, 2}, {0, 0, 0}, false,
              {"AC", "ACGN", "TTT"}, Table(64, "0.00000", "ACG TTT:0.50000"));
  ExpectChain("6 letters within margins 3 and 3 give nothing", {0, 1, 0}, {3, 3, 0}, false,
              {"GGGCCC", "TTTATTT"}, Table(4, "0.00000", "A:1.00000"));
  // Forward ACGT: AC CG GT; reverse strand of AACG (margins swap ends) CGTT: CG GT TT;
  // symmetrised: AC = GT = 1.5, CG = 2, AA = TT = 0.5, of 6.
  ExpectChain("reverse strand with swapped margins", {1, 1, 1}, {1, 0, 0}, true, {"AACGT"},
              Table(16, "0.00000", "AC GT:0.25000; CG:0.33333; AA TT:0.08333"));
  ExpectChain("period 3 never counts the reverse strand", {0, 3, 0}, {0, 0, 0}, true, {"AAA"},
              Table(4, "0.00000 0.00000 0.00000", "A:1.00000 1.00000 1.00000"));
  // A 3/7, C 1/7, G 1/7, T 2/7; products symmetrised, of 49: AA = TT = 6.5, AT = TA = 6,
  // CC = CG = GC = GG = 1, the rest 2.5.
  ExpectChain("order 1 from count order 0", {1, 1, 0}, {0, 0, 1}, false, {"AAT"},
              Table(16, "0.05102", "AA TT:0.13265; AT TA:0.12245; CC CG GC GG:0.02041"));
  // A 2/3, T 1/3; AA = TT = 5/18, AT = TA = 4/18; after A: A 5/9, T 4/9; after T: A 4/9,
  // T 5/9. AAA 25, AAT 20, ATA 20, ATT 16, TAA 16, TAT 20, TTA 20, TTT 25 of 162, and
  // symmetrised AAT = ATT = TAA = TTA = 18.
  ExpectChain("order 2 from count order 0", {2, 1, 0}, {0, 0, 0}, false, {"AAT"},
              Table(64, "0.00000", "AAA TTT:0.15432; ATA TAT:0.12346; AAT ATT TAA TTA:0.11111"));
  // AC = CA = AG = 1/3. Group A: C and G, 1/2 each; group C: A only. ACC = ACG = AGC = AGG
  // = 1/6, CAA = 1/3, symmetrised with GGT, CGT, GCT, CCT, TTG. ACA stays 0: the letter after
  // AC is weighed by the group of its first letter A.
  ExpectChain("extension weighs by the first letters", {2, 1, 1}, {0, 0, 0}, false, {"ACAG"},
              Table(64, "0.00000", "ACC GGT ACG CGT AGC GCT AGG CCT:0.08333; CAA TTG:0.16667"));
  // One sequence taken whole, without margins; each entry is the quotient itself (3 * (1 / 10)
  // would be one unit in the last place off).
  MkChain exact = Chain(0, 1, 0);
  ASSERT_TRUE(exact.Estimate(CodesOf("ACGTAC")));
  EXPECT_EQ(exact.tables[0], (std::vector<double>{3.0 / 10, 3.0 / 10, 2.0 / 10, 2.0 / 10}));
  // The chain's own pseudocount, both strands unsymmetrised.
  MkChain whole = Chain(0, 1, 0);
  whole.pseudocount = 0;
  whole.revcomp = true;
  ASSERT_TRUE(whole.Estimate(CodesOf("AAC")));
  EXPECT_EQ(whole.ToText(), Table(4, "0.16667", "A T:0.33333"));
}

TEST(MkChainTest, SetRandom) {
  MkChain chain = Chain(1, 3, 1);
  chain.SetRandom(0.6);  // A = T = 0.2, C = G = 0.3
  EXPECT_EQ(chain.ToText(), Table(16, "0.06000 0.06000 0.06000",
                                  "AA AT TA TT:0.04000 0.04000 0.04000; "
                                  "CC CG GC GG:0.09000 0.09000 0.09000"));
}

TEST(MkChainTest, PrintingMatchesPrintfOnManyValues) {
  std::mt19937_64 random(11);
  std::uniform_real_distribution<double> unit(0, 1);
  MkChain chain = Chain(4, 3, 4);
  for (int digits = 0; digits <= 10; ++digits) {
    for (std::vector<double>& table : chain.tables) {
      for (double& value : table) value = std::ldexp(unit(random), -int(random() % 30));
    }
    chain.tables[0][0] = 0.125;  // ties in decimal at the printed precision
    chain.tables[1][0] = 0.375;
    chain.tables[2][0] = 2.5;
    const double step = std::pow(10.0, -digits);
    std::string expected = "\n";
    for (std::size_t word = 0; word < chain.tables[0].size(); ++word) {
      for (std::size_t f = 0; f < 3; ++f) {
        double value = chain.tables[f][word];
        if (value != 0 && value < step) value = step;
        char number[64];
        std::snprintf(number, sizeof number, "%#.*f", digits, value);
        expected.append(number).push_back(f == 2 ? '\n' : ' ');
      }
    }
    ASSERT_EQ(chain.ToText(digits), expected) << digits;
  }
  // Negatives and NaN print as the smallest step too.
  MkChain odd = Chain(0, 1, 0);
  odd.tables[0] = {-0.5, std::numeric_limits<double>::quiet_NaN(), 0.0, 1.0};
  EXPECT_EQ(odd.ToText(), "\n0.00001\n0.00001\n0.00000\n1.00000\n");
}

TEST(MkChainTest, WrittenTextIsTheTextInSlices) {
  // Order 7 in three frames: 65,536 rows of 36 bytes, more than two slices of the writer.
  MkChain chain = Chain(7, 3, 7);
  std::mt19937 random(3);
  std::vector<CodeSeq> genes(40, CodeSeq(3000));
  for (CodeSeq& gene : genes) std::generate(gene.begin(), gene.end(), [&] { return random() % 5; });
  chain.precision = 9;
  ASSERT_TRUE(chain.Estimate(genes));
  test::ScratchDir dir;
  OutputFile file;
  ASSERT_TRUE(file.Open(dir.Path("chain.txt")) && chain.WriteText(file) && file.Commit());
  const std::string written = test::ReadFile(dir.Path("chain.txt"));
  EXPECT_EQ(written, chain.ToText());
  EXPECT_GT(written.size(), std::size_t{1} << 20);
}

// Before any tuning option: a bad one would add its message.
TEST(MkChainSettings, AnInvalidChainReadsNoTuningOption) {
  Param param;
  ASSERT_TRUE(param.Load("--order_non 6 --MKCHAIN_PSEUDOCOUNTS +1 --MKCHAIN_PRECISION x"));
  EXPECT_EQ(Capture([&] { return MkChain(5, 1, param).Valid(); }).err,
            "error: order_count 6 is higher than order 5\n");
}

// The settings and estimate arguments no option can give, and their messages.
TEST(MkChainFailureTest, InvalidSettingsAndEstimates) {
  const std::pair<std::array<int, 3>, const char*> settings[] = {{{-1, 1, 0}, "error: order -1\n"},
                                                                 {{14, 1, 15}, "error: order 15\n"},
                                                                 {{5, 1, -2}, "error: order -2\n"},
                                                                 {{2, 2, 2}, "error: period 2\n"}};
  for (const auto& [s, message] : settings) {
    std::optional<MkChain> chain;
    EXPECT_EQ(Capture([&] { return chain.emplace(Chain(s[0], s[1], s[2])).Valid(); }).err, message);
    EXPECT_TRUE(chain->tables.empty()) << message;  // a table of the order could not be held
  }
  // Order, period, count order, then the margins and the pseudocount of the estimate.
  const std::pair<std::array<int, 6>, const char*> estimates[] = {
      {{1, 1, 1, -1, 2, 1}, "error: Lmarg -1 Rmarg 2\n"},
      {{2, 1, 1, 0, 0, -3}, "error: pseudocount -3\n"},
      {{2, 3, 1, 0, 0, 1}, "error: order_count is supported only for period == 1 1\n"}};
  for (const auto& [e, message] : estimates) {
    MkChain chain = Chain(e[0], e[1], e[2]);
    EXPECT_EQ(Capture([&] { return chain.Estimate(Codes({"ACGT"}), e[3], e[4], e[5]); }).err,
              message);
  }
}

// Whether every frame gets a word of countOrder + 1 known letters within the margins, worked
// out word by word, independently of the rolling count of the chain.
bool EveryFrameCounted(const std::vector<CodeSeq>& sequences, int left, int right, int countOrder,
                       int period) {
  std::vector<bool> counted(static_cast<std::size_t>(period), false);
  const int letters = countOrder + 1;
  for (const CodeSeq& sequence : sequences) {
    const int end = static_cast<int>(sequence.size()) - right;
    for (int start = left; start + letters <= end; ++start) {
      const auto first = sequence.begin() + start;
      if (std::all_of(first, first + letters, [](std::uint8_t code) { return code < 4; })) {
        counted[static_cast<std::size_t>((start - left) % period)] = true;
      }
    }
  }
  return !sequences.empty() && std::find(counted.begin(), counted.end(), false) == counted.end();
}

// With the message of the first failure.
TEST(MkChainFailureTest, EstimateFailsExactlyWhenAFrameHasNoWord) {
  std::mt19937 random(17);
  std::uniform_int_distribution<int> count(0, 3), length(0, 9), base(0, 6);
  int failures = 0;
  for (int round = 0; round < 200; ++round) {
    std::vector<CodeSeq> sequences(count(random));
    for (CodeSeq& sequence : sequences) {
      sequence.resize(length(random));
      std::generate(sequence.begin(), sequence.end(), [&] { return std::min(base(random), 4); });
    }
    const int order = round % 3;
    const int period = round % 2 == 0 ? 1 : 3;
    MkChain chain = Chain(order, period, order);
    chain.left_margin = round % 4 == 0 ? 2 : 0;
    chain.right_margin = round % 5 == 0 ? 1 : 0;
    const bool expected =
        EveryFrameCounted(sequences, chain.left_margin, chain.right_margin, order, period);
    const test::Outcome printed = Capture([&] { return chain.Estimate(sequences); });
    EXPECT_EQ(printed.ok, expected) << round;
    const std::string message =
        sequences.empty() ? "error: data input empty \n" : "error: count 0\n";
    EXPECT_EQ(printed.err, expected ? "" : message) << round;
    failures += expected ? 0 : 1;
  }
  EXPECT_GT(failures, 20);  // both outcomes are met often
  EXPECT_LT(failures, 180);
}

}  // namespace
}  // namespace genetrain
