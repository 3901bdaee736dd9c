#include "model/MkChain.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <limits>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "TestSupport.h"

namespace genetrain {
namespace {

using test::Capture;
using test::CodesOf;
using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

// A chain counted at its own count order, with the default tuning.
MkChain Chain(int order, int period, int countOrder) {
  ChainSettings settings;
  settings.countOrder = countOrder;
  return MkChain(order, period, settings);
}

// The word index of a word in letters.
std::size_t Word(const std::string& letters) {
  std::size_t index = 0;
  for (const std::uint8_t code : CodesOf(letters)) index = index * 4 + code;
  return index;
}

// The reverse-complement index built letter by letter, as the definition reads.
std::uint32_t ReverseComplementByDefinition(std::uint32_t word, int letters) {
  std::uint32_t r = 0;
  for (int i = 0; i < letters; ++i) {
    r = (r * 4 + (word % 4)) ^ 3;
    word /= 4;
  }
  return r;
}

// A period-3 chain with the given margins and pseudocount, estimated from the sequences.
MkChain Coding(int order, const std::vector<std::string>& sequences, int left, int right,
               int pseudocount) {
  MkChain chain = Chain(order, 3, order);
  std::vector<CodeSeq> list;
  for (const std::string& letters : sequences) list.push_back(CodesOf(letters));
  EXPECT_TRUE(chain.Estimate(list, left, right, pseudocount));
  return chain;
}

std::string Column(const std::vector<std::string>& rows) {
  std::string text = "\n";
  for (const std::string& row : rows) text.append(row).push_back('\n');
  return text;
}

TEST(MkChainTest, ReverseComplementIndex) {
  EXPECT_EQ(MkChain::ReverseComplementIndex(Word("A"), 1), Word("T"));
  EXPECT_EQ(MkChain::ReverseComplementIndex(Word("AC"), 2), Word("GT"));
  EXPECT_EQ(MkChain::ReverseComplementIndex(Word("AAC"), 3), Word("GTT"));
  EXPECT_EQ(MkChain::ReverseComplementIndex(Word("AT"), 2), Word("AT"));
  EXPECT_EQ(MkChain::ReverseComplementIndex(Word("ACGTTGCAAC"), 10), Word("GTTGCAACGT"));
  EXPECT_EQ(MkChain::ReverseComplementIndex(0, 15), (1u << 30) - 1);
  EXPECT_EQ(MkChain::ReverseComplementIndex(5, 0), 0u);
  EXPECT_EQ(MkChain::ReverseComplementIndex(5, -1), 0u);
  // Only the last `letters` letters of the index count.
  EXPECT_EQ(MkChain::ReverseComplementIndex(Word("GGAC"), 2), Word("GT"));
  std::mt19937 random(7);
  for (int letters = 1; letters <= 15; ++letters) {
    for (int i = 0; i < 2000; ++i) {
      const std::uint32_t word = random() & ((1u << (2 * letters)) - 1);
      ASSERT_EQ(MkChain::ReverseComplementIndex(word, letters),
                ReverseComplementByDefinition(word, letters))
          << word << " " << letters;
    }
  }
}

TEST(MkChainTest, ConstructorReadsOptions) {
  Param param;
  param.Set("--order_non", "1");
  param.Set("--MKCHAIN_L_MARGING", "6");
  param.Set("--MKCHAIN_R_MARGING", "0");
  param.Set("--MKCHAIN_PSEUDOCOUNTS", "2");
  param.Set("--MKCHAIN_PRECISION", "3");
  param.Set("--revcomp_non", "0.5");
  const MkChain noncoding(4, 1, param);
  EXPECT_EQ(noncoding.countOrder, 1);
  EXPECT_EQ(noncoding.left_margin, 6);
  EXPECT_EQ(noncoding.right_margin, 0);
  EXPECT_EQ(noncoding.pseudocount, 2);
  EXPECT_EQ(noncoding.precision, 3);
  EXPECT_TRUE(noncoding.revcomp);
  EXPECT_EQ(noncoding.tables[0].size(), 1024u);
  // Coding chains count at their order, whatever --order_non says, even above the order.
  const MkChain coding(4, 3, param);
  EXPECT_EQ(coding.countOrder, 4);
  param.Set("--order_non", "9");
  EXPECT_EQ(MkChain(4, 3, param).countOrder, 4);
  // -1 stands for the order.
  param.Set("--order_non", "-1");
  EXPECT_EQ(MkChain(4, 1, param).countOrder, 4);
}

TEST(MkChainTest, MalformedOptionsAreReportedAndKeepDefaults) {
  Param param;
  param.Set("--order_non", "1.5");
  param.Set("--MKCHAIN_L_MARGING", "-3");
  param.Set("--MKCHAIN_PSEUDOCOUNTS", "+1");
  param.Set("--MKCHAIN_PRECISION", "4 digits");
  param.Set("--revcomp_non", "yes");
  CaptureStderr();
  const MkChain chain(2, 1, param);
  EXPECT_EQ(GetCapturedStderr(),
            "error in value of parameter --order_non: 1.5\n"
            "error in value of parameter --MKCHAIN_L_MARGING: -3\n"
            "error in value of parameter --MKCHAIN_PSEUDOCOUNTS: +1\n"
            "error in value of parameter --MKCHAIN_PRECISION: 4 digits\n"
            "error in value of parameter --revcomp_non: yes\n"
            "error in value of parameter --revcomp_non: yes\n");
  EXPECT_EQ(chain.countOrder, 2);
  EXPECT_EQ(chain.left_margin, 3);
  EXPECT_EQ(chain.pseudocount, 1);
  EXPECT_EQ(chain.precision, 5);
  EXPECT_FALSE(chain.revcomp);
}

TEST(MkChainTest, OrderZeroFromOneSequence) {
  MkChain chain = Chain(0, 1, 0);
  ASSERT_TRUE(chain.Estimate(CodesOf("ACGTAC")));  // A 2, C 2, G 1, T 1; (count + 1) / (6 + 4)
  EXPECT_EQ(chain.ToText(), Column({"0.30000", "0.30000", "0.20000", "0.20000"}));
  // Each entry is the quotient itself (3 * (1 / 10) would be one unit in the last place off).
  EXPECT_EQ(chain.tables[0], (std::vector<double>{3.0 / 10, 3.0 / 10, 2.0 / 10, 2.0 / 10}));
  // The whole sequence counts: the margins play no part here.
  EXPECT_EQ(chain.left_margin, 3);
}

TEST(MkChainTest, PseudocountWeighsEveryWord) {
  MkChain none = Chain(0, 1, 0);
  ASSERT_TRUE(none.Estimate({CodesOf("ACGTAC")}, 0, 0, 0));
  EXPECT_EQ(none.ToText(), Column({"0.33333", "0.33333", "0.16667", "0.16667"}));
  MkChain two = Chain(0, 1, 0);
  ASSERT_TRUE(two.Estimate({CodesOf("ACGTAC")}, 0, 0, 2));  // (count + 2) / (6 + 8)
  EXPECT_EQ(two.ToText(), Column({"0.28571", "0.28571", "0.21429", "0.21429"}));
  // The chain's own pseudocount in the single-sequence form.
  MkChain own = Chain(0, 1, 0);
  own.pseudocount = 0;
  ASSERT_TRUE(own.Estimate(CodesOf("AAAC")));
  EXPECT_EQ(own.ToText(), Column({"0.75000", "0.25000", "0.00000", "0.00000"}));
}

TEST(MkChainTest, OrderOneFromOneSequence) {
  // Words AA, AC, CG, GA; with pseudocount 1: (1 + 1) / (4 + 16) and 1 / 20.
  MkChain chain = Chain(1, 1, 1);
  ASSERT_TRUE(chain.Estimate(CodesOf("AACGA")));
  std::vector<std::string> rows(16, "0.05000");
  for (const char* word : {"AA", "AC", "CG", "GA"}) rows[Word(word)] = "0.10000";
  EXPECT_EQ(chain.ToText(), Column(rows));
}

// ATG ACG ACT GCA TAA: margins 3 and 3 leave ACGACTGCA; frame 0 starts at its first letter.
TEST(MkChainTest, OrderZeroPeriodThreeFramesFollowTheLeftMargin) {
  const MkChain chain = Coding(0, {"ATGACGACTGCATAA"}, 3, 3, 1);
  // Frame 0: A, A, G; frame 1: C, C, C; frame 2: G, T, A; (count + 1) / (3 + 4).
  EXPECT_EQ(chain.ToText(), Column({"0.42857 0.14286 0.28571", "0.14286 0.57143 0.14286",
                                    "0.28571 0.14286 0.28571", "0.14286 0.14286 0.28571"}));
  // One more letter on the left: CGACTGCA, frame 0 now holds the codons' second letters.
  const MkChain shifted = Coding(0, {"ATGACGACTGCATAA"}, 4, 3, 1);
  // Frame 0: C, C, C; frame 1: G, T, A; frame 2: A, G.
  EXPECT_EQ(shifted.ToText(), Column({"0.14286 0.28571 0.33333", "0.57143 0.14286 0.16667",
                                      "0.14286 0.28571 0.33333", "0.14286 0.28571 0.16667"}));
}

TEST(MkChainTest, OrderOnePeriodThree) {
  // A|TG AAA CCC TAA without margins: words end at offsets 1..11, frame 0 at offset 1.
  const MkChain chain = Coding(1, {"ATGAAACCCTAA"}, 0, 0, 1);
  // Frame 0: AT, AA, CC, TA; frame 1: TG, AA, CC, AA; frame 2: GA, AC, CT.
  std::vector<std::string> f0(16, "0.05000"), f1(16, "0.05000"), f2(16, "0.05263");
  for (const char* word : {"AT", "AA", "CC", "TA"}) f0[Word(word)] = "0.10000";
  f1[Word("AA")] = "0.15000";
  for (const char* word : {"TG", "CC"}) f1[Word(word)] = "0.10000";
  for (const char* word : {"GA", "AC", "CT"}) f2[Word(word)] = "0.10526";
  std::vector<std::string> rows;
  for (std::size_t i = 0; i < 16; ++i) rows.push_back(f0[i] + " " + f1[i] + " " + f2[i]);
  EXPECT_EQ(chain.ToText(), Column(rows));
}

TEST(MkChainTest, UnknownLettersBreakWordsButFramesAdvance) {
  // ACNGTAC: AC (frame 0), CN and NG not counted (frames 1 and 2), GT (0), TA (1), AC (2).
  for (const char* letters : {"ACNGTAC", "ACXGTAC"}) {
    const MkChain chain = Coding(1, {letters}, 0, 0, 0);
    std::vector<std::string> rows(16, "0.00000 0.00000 0.00000");
    rows[Word("AC")] = "0.50000 0.00000 1.00000";
    rows[Word("GT")] = "0.50000 0.00000 0.00000";
    rows[Word("TA")] = "0.00000 1.00000 0.00000";
    EXPECT_EQ(chain.ToText(), Column(rows)) << letters;
  }
  // A stretch of exactly the count order loads the word and counts nothing.
  MkChain chain = Chain(2, 1, 2);
  ASSERT_TRUE(chain.Estimate({CodesOf("AC"), CodesOf("ACGN"), CodesOf("TTT")}, 0, 0, 0));
  std::vector<std::string> rows(64, "0.00000");
  rows[Word("ACG")] = "0.50000";
  rows[Word("TTT")] = "0.50000";
  EXPECT_EQ(chain.ToText(), Column(rows));
}

TEST(MkChainTest, ShortSequencesAreSkipped) {
  // Length 6 with margins 3 and 3 gives nothing; length 7 gives one letter.
  MkChain chain = Chain(0, 1, 0);
  ASSERT_TRUE(chain.Estimate({CodesOf("GGGCCC"), CodesOf("TTTATTT")}, 3, 3, 0));
  EXPECT_EQ(chain.tables[0], (std::vector<double>{1, 0, 0, 0}));
}

TEST(MkChainTest, ReverseStrandWithSwappedMargins) {
  // AACGT with margins 1 and 0: forward ACGT gives AC, CG, GT; the reverse strand of AACG
  // (the margins swap ends) reads CGTT: CG, GT, TT. Symmetrised: AC = GT = 1.5, CG = 2,
  // AA = TT = 0.5, of 6.
  MkChain chain = Chain(1, 1, 1);
  chain.revcomp = true;
  ASSERT_TRUE(chain.Estimate({CodesOf("AACGT")}, 1, 0, 0));
  std::vector<std::string> rows(16, "0.00000");
  rows[Word("AC")] = rows[Word("GT")] = "0.25000";
  rows[Word("CG")] = "0.33333";
  rows[Word("AA")] = rows[Word("TT")] = "0.08333";
  EXPECT_EQ(chain.ToText(), Column(rows));
}

TEST(MkChainTest, ReverseStrandMakesWordsAndComplementsEqual) {
  MkChain chain = Chain(3, 1, 3);
  chain.revcomp = true;
  ASSERT_TRUE(chain.Estimate({CodesOf("ATGGCGTTACCAGNTTACAGGGACTTTACGCGAAAT"), CodesOf("CCCGGGAT")},
                             2, 1, 1));
  for (std::uint32_t word = 0; word < 256; ++word) {
    ASSERT_EQ(chain.tables[0][word], chain.tables[0][MkChain::ReverseComplementIndex(word, 4)]);
  }
  // Period 3 never counts the reverse strand.
  MkChain coding = Chain(0, 3, 0);
  coding.revcomp = true;
  ASSERT_TRUE(coding.Estimate({CodesOf("AAA")}, 0, 0, 0));
  EXPECT_EQ(coding.tables[0], (std::vector<double>{1, 0, 0, 0}));
  // Without symmetrising, one sequence on both strands: AAC and GTT.
  MkChain whole = Chain(0, 1, 0);
  whole.revcomp = true;
  whole.pseudocount = 0;
  ASSERT_TRUE(whole.Estimate(CodesOf("AAC")));
  EXPECT_EQ(whole.ToText(), Column({"0.33333", "0.16667", "0.16667", "0.33333"}));
}

TEST(MkChainTest, OrderOneFromCountOrderZero) {
  // AAT: A 3/7, C 1/7, G 1/7, T 2/7 with pseudocount 1; the products are symmetrised, of 49:
  // AA = TT = 6.5, AT = TA = 6, CC = CG = GC = GG = 1, the rest 2.5.
  MkChain chain = Chain(1, 1, 0);
  ASSERT_TRUE(chain.Estimate({CodesOf("AAT")}, 0, 0, 1));
  std::vector<std::string> rows(16, "0.05102");
  rows[Word("AA")] = rows[Word("TT")] = "0.13265";
  rows[Word("AT")] = rows[Word("TA")] = "0.12245";
  for (const char* word : {"CC", "CG", "GC", "GG"}) rows[Word(word)] = "0.02041";
  EXPECT_EQ(chain.ToText(), Column(rows));
}

TEST(MkChainTest, OrderTwoFromCountOrderZero) {
  // AAT, no pseudocount: A 2/3, T 1/3. Two letters: AA = TT = 5/18, AT = TA = 4/18. Three
  // letters from the group of the first letter: after A, A 5/9 and T 4/9; after T, A 4/9 and
  // T 5/9. So AAA 25, AAT 20, ATA 20, ATT 16, TAA 16, TAT 20, TTA 20, TTT 25 (of 162), and
  // symmetrised: AAT = ATT = TAA = TTA = 18.
  MkChain chain = Chain(2, 1, 0);
  ASSERT_TRUE(chain.Estimate({CodesOf("AAT")}, 0, 0, 0));
  std::vector<std::string> rows(64, "0.00000");
  rows[Word("AAA")] = rows[Word("TTT")] = "0.15432";
  rows[Word("ATA")] = rows[Word("TAT")] = "0.12346";
  for (const char* word : {"AAT", "ATT", "TAA", "TTA"}) rows[Word(word)] = "0.11111";
  EXPECT_EQ(chain.ToText(), Column(rows));
}

TEST(MkChainTest, ExtensionWeighsByTheFirstLettersOfTheWord) {
  // Count order 1 on ACAG, no pseudocount, no reverse strand: AC = CA = AG = 1/3. Group A
  // (words AA..AT): C and G, 1/2 each; group C: A only. So ACC = ACG = AGC = AGG = 1/6 and
  // CAA = 1/3; symmetrised with GGT, CGT, GCT, CCT and TTG. ACA stays 0: the letter after AC is
  // weighed by the group of its first letter A, not by the letters that follow C.
  MkChain chain = Chain(2, 1, 1);
  ASSERT_TRUE(chain.Estimate({CodesOf("ACAG")}, 0, 0, 0));
  std::vector<std::string> rows(64, "0.00000");
  for (const char* word : {"ACC", "GGT", "ACG", "CGT", "AGC", "GCT", "AGG", "CCT"}) {
    rows[Word(word)] = "0.08333";
  }
  rows[Word("CAA")] = rows[Word("TTG")] = "0.16667";
  EXPECT_EQ(chain.ToText(), Column(rows));
}

TEST(MkChainTest, SetRandom) {
  MkChain chain = Chain(1, 3, 1);
  chain.SetRandom(0.6);  // A = T = 0.2, C = G = 0.3
  std::vector<std::string> rows;
  for (const char* value :
       {"0.04000", "0.06000", "0.06000", "0.04000", "0.06000", "0.09000", "0.09000", "0.06000",
        "0.06000", "0.09000", "0.09000", "0.06000", "0.04000", "0.06000", "0.06000", "0.04000"}) {
    rows.push_back(std::string(value) + " " + value + " " + value);
  }
  EXPECT_EQ(chain.ToText(), Column(rows));
  // No range check: probabilities below zero print as the smallest step.
  MkChain odd = Chain(0, 1, 0);
  odd.SetRandom(1.2);  // A = T = -0.1, C = G = 0.6
  EXPECT_EQ(odd.ToText(), Column({"0.00001", "0.60000", "0.60000", "0.00001"}));
  MkChain three = Chain(2, 1, 2);
  three.SetRandom(0.5);
  for (const double value : three.tables[0]) ASSERT_EQ(value, 1.0 / 64);
  three.SetRandom(0.0);
  EXPECT_EQ(three.tables[0][Word("ATA")], 0.125);
  EXPECT_EQ(three.tables[0][Word("ATC")], 0.0);
}

TEST(MkChainTest, PrintingFloorsTinyValues) {
  MkChain chain = Chain(0, 1, 0);
  chain.tables[0] = {0.000003, 0.0, -0.5, std::numeric_limits<double>::quiet_NaN()};
  EXPECT_EQ(chain.ToText(), Column({"0.00001", "0.00000", "0.00001", "0.00001"}));
  chain.tables[0] = {0.00001, 0.000015, 0.999996, 2.5};
  EXPECT_EQ(chain.ToText(), Column({"0.00001", "0.00002", "1.00000", "2.50000"}));
  chain.tables[0] = {0.3, 0.0, 2.0, 0.5};
  EXPECT_EQ(chain.ToText(0), Column({"1.", "0.", "2.", "1."}));
  chain.tables[0] = {1e-11, 0.25, 0.123456789012, 0.0};
  EXPECT_EQ(chain.ToText(10),
            Column({"0.0000000001", "0.2500000000", "0.1234567890", "0.0000000000"}));
  chain.precision = 2;
  EXPECT_EQ(chain.ToText(), Column({"0.01", "0.25", "0.12", "0.00"}));
}

TEST(MkChainTest, PrintingMatchesPrintfOnManyValues) {
  std::mt19937_64 random(11);
  std::uniform_real_distribution<double> unit(0, 1);
  MkChain chain = Chain(4, 3, 4);
  for (int digits = 0; digits <= 10; ++digits) {
    for (std::vector<double>& table : chain.tables) {
      for (double& value : table) {
        value = std::ldexp(unit(random), -static_cast<int>(random() % 30));
      }
    }
    // Ties in decimal at the printed precision.
    chain.tables[0][0] = 0.125;
    chain.tables[1][0] = 0.375;
    chain.tables[2][0] = 2.5;
    const std::optional<std::string> text = chain.ToText(digits);
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
    ASSERT_EQ(text, expected) << digits;
  }
}

TEST(MkChainTest, OtherTableCountsPrintOnlyTheNewline) {
  MkChain chain = Chain(1, 3, 1);
  chain.SetRandom(0.5);
  chain.tables.resize(2);
  EXPECT_EQ(chain.ToText(), "\n");
  chain.tables.clear();
  EXPECT_EQ(chain.ToText(), "\n");
}

TEST(MkChainTest, EstimatesAddUp) {
  MkChain chain = Chain(0, 1, 0);
  ASSERT_TRUE(chain.Estimate({CodesOf("A")}, 0, 0, 0));
  ASSERT_TRUE(chain.Estimate({CodesOf("C")}, 0, 0, 0));  // adds 1 to A = 1: A = 1/2, C = 1/2
  EXPECT_EQ(chain.tables[0], (std::vector<double>{0.5, 0.5, 0, 0}));
}

TEST(MkChainTest, WrittenTextIsTheTextInSlices) {
  // Order 7 in three frames: 65,536 rows of 36 bytes, more than two slices of the writer.
  MkChain chain = Chain(7, 3, 7);
  std::mt19937 random(3);
  std::uniform_int_distribution<int> base(0, 4);
  std::vector<CodeSeq> genes(40, CodeSeq(3000));
  for (CodeSeq& gene : genes) {
    for (std::uint8_t& code : gene) code = static_cast<std::uint8_t>(base(random));
  }
  chain.precision = 9;
  ASSERT_TRUE(chain.Estimate(genes));
  test::ScratchDir dir;
  OutputFile file;
  ASSERT_TRUE(file.Open(dir.Path("chain.txt")));
  ASSERT_TRUE(chain.WriteText(file));
  ASSERT_TRUE(file.Commit());
  const std::string written = test::ReadFile(dir.Path("chain.txt"));
  EXPECT_EQ(written, chain.ToText());
  EXPECT_GT(written.size(), std::size_t{1} << 20);
}

std::vector<CodeSeq> One(const std::string& letters) {
  return {CodesOf(letters)};
}

// An invalid setting prints its message once and leaves the chain without tables: a table of the
// asked order could not even be held.
void ExpectInvalid(int order, int period, int countOrder, const std::string& message) {
  CaptureStderr();
  const MkChain chain = Chain(order, period, countOrder);
  EXPECT_EQ(GetCapturedStderr(), message) << order << " " << period << " " << countOrder;
  EXPECT_FALSE(chain.Valid());
  EXPECT_TRUE(chain.tables.empty());
}

TEST(MkChainFailureTest, InvalidSettings) {
  ExpectInvalid(15, 1, 15, "error: order 15\n");
  ExpectInvalid(-1, 1, 0, "error: order -1\n");
  ExpectInvalid(14, 1, 15, "error: order 15\n");
  ExpectInvalid(5, 1, -2, "error: order -2\n");
  ExpectInvalid(5, 1, 6, "error: order_count 6 is higher than order 5\n");
  ExpectInvalid(2, 2, 2, "error: period 2\n");
  ExpectInvalid(2, 0, 2, "error: period 0\n");
  // Valid settings print nothing (small orders: a chain of order 14 would take 8.6 GB).
  for (const auto& [order, period, countOrder] :
       {std::array{3, 1, 0}, std::array{3, 3, 3}, std::array{0, 1, 0}, std::array{1, 1, 1}}) {
    CaptureStderr();
    const MkChain valid = Chain(order, period, countOrder);
    EXPECT_EQ(GetCapturedStderr(), "");
    EXPECT_TRUE(valid.Valid());
    EXPECT_EQ(valid.tables.size(), static_cast<std::size_t>(period));
  }
}

// The options are read up to the invalid setting and no further, as when the process ended there.
TEST(MkChainFailureTest, InvalidSettingsFromOptionsStopTheReading) {
  Param param;
  param.Set("--order_non", "6");
  param.Set("--MKCHAIN_PSEUDOCOUNTS", "+1");
  for (const bool deferred : {false, true}) {
    CaptureStderr();
    const MkChain chain = deferred
                              ? MkChain(5, 1, ReadChainSettings(param, 5, 1), MkChain::Deferred{})
                              : MkChain(5, 1, param);
    EXPECT_EQ(GetCapturedStderr(), "error: order_count 6 is higher than order 5\n");
    EXPECT_FALSE(chain.Valid());
    EXPECT_TRUE(chain.tables.empty());
  }
  param.Set("--order_non", "-2");
  CaptureStderr();
  const MkChain negative(5, 1, param);
  EXPECT_EQ(GetCapturedStderr(), "error: order -2\n");
  EXPECT_FALSE(negative.Valid());
  // A valid chain reads them all.
  param.Set("--order_non", "4");
  CaptureStderr();
  const MkChain valid(5, 1, param);
  EXPECT_EQ(GetCapturedStderr(), "error in value of parameter --MKCHAIN_PSEUDOCOUNTS: +1\n");
  EXPECT_TRUE(valid.Valid());
  EXPECT_EQ(valid.countOrder, 4);
}

void ExpectEstimateFails(MkChain chain, const std::vector<CodeSeq>& sequences, int left, int right,
                         int pseudocount, const std::string& message) {
  const test::Outcome printed =
      Capture([&] { return chain.Estimate(sequences, left, right, pseudocount); });
  EXPECT_FALSE(printed.ok) << message;
  EXPECT_EQ(printed.err, message);
}

TEST(MkChainFailureTest, EstimationErrors) {
  test::Outcome printed = Capture([] { return Chain(1, 3, 1).Estimate(std::vector<CodeSeq>{}); });
  EXPECT_FALSE(printed.ok);
  EXPECT_EQ(printed.err, "error: data input empty \n");
  printed = Capture([] { return Chain(1, 1, 1).Estimate(CodeSeq{}); });
  EXPECT_FALSE(printed.ok);
  EXPECT_EQ(printed.err, "error: data input empty \n");
  ExpectEstimateFails(Chain(1, 1, 1), One("ACGT"), -1, 2, 1, "error: Lmarg -1 Rmarg 2\n");
  ExpectEstimateFails(Chain(1, 1, 1), One("ACGT"), 0, -4, 1, "error: Lmarg 0 Rmarg -4\n");
  ExpectEstimateFails(Chain(1, 1, 1), One("ACGT"), 0, 0, -1, "error: pseudocount -1\n");
  ExpectEstimateFails(Chain(2, 1, 1), One("ACGT"), 0, 0, -3, "error: pseudocount -3\n");
  // Every sequence within the margins: nothing counted.
  printed = Capture([] { return Chain(1, 3, 1).Estimate(One("ACGTAC")); });
  EXPECT_FALSE(printed.ok);
  EXPECT_EQ(printed.err, "error: count 0\n");
  ExpectEstimateFails(Chain(2, 1, 0), One("NNN"), 0, 0, 1, "error: count 0\n");
  // A frame table without words: frame 2 of a three-letter stretch at order 1.
  ExpectEstimateFails(Chain(1, 3, 1), One("ACG"), 0, 0, 1, "error: count 0\n");
  ExpectEstimateFails(Chain(2, 3, 1), One("ACGTACGT"), 0, 0, 1,
                      "error: order_count is supported only for period == 1 1\n");
  MkChain cut = Chain(2, 1, 0);
  cut.tables[0].resize(4);
  ExpectEstimateFails(std::move(cut), One("ACGT"), 0, 0, 1, "error in vector size 4\n");
}

TEST(MkChainFailureTest, PrecisionLimit) {
  MkChain chain = Chain(0, 1, 0);
  chain.SetRandom(0.5);
  for (const int digits : {11, -1}) {
    CaptureStderr();
    EXPECT_EQ(chain.ToText(digits), std::nullopt);
    EXPECT_EQ(GetCapturedStderr(), "error: precision " + std::to_string(digits) + "\n");
  }
  chain.precision = 12;
  CaptureStderr();
  EXPECT_EQ(chain.ToText(), std::nullopt);
  EXPECT_EQ(GetCapturedStderr(), "error: precision 12\n");
  EXPECT_EQ(Capture([&] { return chain.CheckPrecision(); }).err, "error: precision 12\n");
  // Nothing reaches the file.
  test::ScratchDir dir;
  OutputFile file;
  ASSERT_TRUE(file.Open(dir.Path("chain.txt")));
  const test::Outcome printed = Capture([&] { return chain.WriteText(file); });
  EXPECT_FALSE(printed.ok);
  EXPECT_EQ(printed.err, "error: precision 12\n");
  ASSERT_TRUE(file.Commit());
  EXPECT_EQ(test::ReadFile(dir.Path("chain.txt")), "");
  chain.precision = 10;
  EXPECT_TRUE(Capture([&] { return chain.CheckPrecision(); }).ok);
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

// The estimate fails exactly when some frame gets no word, with the message of the first failure.
TEST(MkChainFailureTest, EstimateFailsExactlyWhenAFrameHasNoWord) {
  std::mt19937 random(17);
  std::uniform_int_distribution<int> count(0, 3), length(0, 9), base(0, 6);
  int failures = 0;
  for (int round = 0; round < 200; ++round) {
    std::vector<CodeSeq> sequences(static_cast<std::size_t>(count(random)));
    for (CodeSeq& sequence : sequences) {
      sequence.resize(static_cast<std::size_t>(length(random)));
      for (std::uint8_t& code : sequence)
        code = static_cast<std::uint8_t>(std::min(base(random), 4));
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
    if (expected) {
      EXPECT_EQ(printed.err, "") << round;
    } else {
      ++failures;
      EXPECT_EQ(printed.err, sequences.empty() ? "error: data input empty \n" : "error: count 0\n")
          << round;
    }
  }
  // Both outcomes are met often.
  EXPECT_GT(failures, 20);
  EXPECT_LT(failures, 180);
}

}  // namespace
}  // namespace genetrain
