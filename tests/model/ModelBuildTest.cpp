#include "model/ModelBuild.h"

#include <gtest/gtest.h>

namespace genetrain {
namespace {

// Codes of a codon's letters.
CodeSeq Codon(const char* letters) {
  CodeSeq codes;
  for (const char* letter = letters; *letter != '\0'; ++letter) {
    codes.push_back(static_cast<std::uint8_t>(std::string_view("ACGT").find(*letter)));
  }
  return codes;
}

Genome StartGenome(std::initializer_list<std::pair<const char*, const char*>> options) {
  Param param;
  for (const auto& [key, value] : options) param.Set(key, value);
  return Genome(param);
}

TEST(StartCodons, CountsFirstCodonsOfBothCodingListsWithPseudocounts) {
  Genome genome = StartGenome({{"--ATG_", "1"}, {"--GTG_", "0.5"}, {"--START_PSEUDOCOUNTS", "1"}});
  genome.cod1 = {Codon("ATGAAA"), Codon("ATGCCC"), Codon("TTGAAA"), Codon("AT"), {0, 4, 2}};
  genome.cod2 = {Codon("ATGAAA"), Codon("GTGTAA")};
  testing::internal::CaptureStdout();
  EstimateStartCodons(genome);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(genome.start_counts[kCodonATG], 3);
  EXPECT_EQ(genome.start_counts[kCodonGTG], 1);
  EXPECT_EQ(genome.start_counts[kCodonTTG], 1);  // counted, but no start codon here
  // Two start codons, four starts among them: (1 + count) / (2 * 1 + 4).
  EXPECT_DOUBLE_EQ(genome.start_probs[kCodonATG], 4.0 / 6.0);
  EXPECT_DOUBLE_EQ(genome.start_probs[kCodonGTG], 2.0 / 6.0);
  EXPECT_EQ(genome.start_probs[kCodonTTG], 0.0);
}

TEST(StartCodons, NoStartInTrainingWarnsAndLeavesZeros) {
  Genome genome = StartGenome({{"--CTG_", "1"}});
  genome.cod1 = {Codon("ATGAAA")};
  testing::internal::CaptureStdout();
  EstimateStartCodons(genome);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "warning, no start sites in training\n\n");
  EXPECT_EQ(genome.start_probs[kCodonCTG], 0.0);
}

TEST(GcFraction, CountsOnlyUnambiguousLetters) {
  EXPECT_EQ(GcFraction({}), 0.0);
  EXPECT_EQ(GcFraction({{4, 5, 4}}), 0.0);
  EXPECT_DOUBLE_EQ(GcFraction({Codon("GGC"), {0, 4, 5, 3}}), 3.0 / 5.0);
}

}  // namespace
}  // namespace genetrain
