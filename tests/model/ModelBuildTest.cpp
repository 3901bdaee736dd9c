#include "model/ModelBuild.h"

#include <gtest/gtest.h>

#include "TestSupport.h"

namespace genetrain {
namespace {

using test::CodesOf;

std::array<bool, 64> Starts(std::initializer_list<unsigned> codons) {
  std::array<bool, 64> set{};
  for (const unsigned codon : codons) set[codon] = true;
  return set;
}

TEST(StartCodons, CountsFirstCodonsOfBothCodingListsWithPseudocounts) {
  const std::vector<CodeSeq> cod1 = {CodesOf("ATGAAA"), CodesOf("ATGCCC"), CodesOf("TTGAAA"),
                                     CodesOf("AT"), CodesOf("ANG")};
  const std::vector<CodeSeq> cod2 = {CodesOf("ATGAAA"), CodesOf("GTGTAA")};
  const test::Outcome printed = test::Capture([&] {
    const StartCodonEstimate estimate =
        EstimateStartCodons(cod1, cod2, Starts({kCodonATG, kCodonGTG}), 1);
    EXPECT_EQ(estimate.start_counts[kCodonATG], 3);
    EXPECT_EQ(estimate.start_counts[kCodonGTG], 1);
    EXPECT_EQ(estimate.start_counts[kCodonTTG], 1);  // counted, but no start codon here
    // Two start codons, four starts among them: (1 + count) / (2 * 1 + 4).
    EXPECT_DOUBLE_EQ(estimate.start_probs[kCodonATG], 4.0 / 6.0);
    EXPECT_DOUBLE_EQ(estimate.start_probs[kCodonGTG], 2.0 / 6.0);
    EXPECT_EQ(estimate.start_probs[kCodonTTG], 0.0);
    return true;
  });
  EXPECT_EQ(printed.out, "");
}

TEST(StartCodons, NoStartInTrainingWarnsAndLeavesZeros) {
  const test::Outcome printed = test::Capture([] {
    return EstimateStartCodons({CodesOf("ATGAAA")}, {}, Starts({kCodonCTG}), 0)
               .start_probs[kCodonCTG] == 0.0;
  });
  EXPECT_TRUE(printed.ok);
  EXPECT_EQ(printed.out, "warning, no start sites in training\n\n");
}

TEST(GcFraction, CountsOnlyUnambiguousLetters) {
  EXPECT_EQ(GcFraction({}), 0.0);
  EXPECT_EQ(GcFraction({{4, 5, 4}}), 0.0);
  EXPECT_DOUBLE_EQ(GcFraction({CodesOf("GGC"), {0, 4, 5, 3}}), 3.0 / 5.0);
}

}  // namespace
}  // namespace genetrain
