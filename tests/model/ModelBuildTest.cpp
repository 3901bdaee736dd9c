#include "model/ModelBuild.h"

#include <gtest/gtest.h>

#include "TestSupport.h"

namespace genetrain {
namespace {

using test::CodesOf;

TEST(StartCodons, CountsFirstCodonsOfBothCodingListsWithPseudocounts) {
  StartCodonEstimate result;
  const test::Outcome printed = test::Capture([&] {
    result = EstimateStartCodons(
        {CodesOf("ATGAAA"), CodesOf("ATGCCC"), CodesOf("TTGAAA"), CodesOf("AT"), CodesOf("ANG")},
        {CodesOf("ATGAAA"), CodesOf("GTGTAA")}, CodonSet{kCodonATG, kCodonGTG}, 1);
    return true;
  });
  EXPECT_EQ(printed.out, "");
  EXPECT_EQ(result.start_counts[kCodonATG], 3);
  EXPECT_EQ(result.start_counts[kCodonGTG], 1);
  EXPECT_EQ(result.start_counts[kCodonTTG], 1);  // counted, but no start codon here
  // Two start codons, four starts among them: (1 + count) / (2 * 1 + 4).
  EXPECT_DOUBLE_EQ(result.start_probs[kCodonATG], 4.0 / 6.0);
  EXPECT_DOUBLE_EQ(result.start_probs[kCodonGTG], 2.0 / 6.0);
  EXPECT_EQ(result.start_probs[kCodonTTG], 0.0);
}

TEST(GcFraction, CountsOnlyUnambiguousLetters) {
  EXPECT_EQ(GcFraction({}), 0.0);
  EXPECT_EQ(GcFraction({CodesOf("NXN")}), 0.0);
  EXPECT_DOUBLE_EQ(GcFraction({CodesOf("GGC"), CodesOf("ANXT")}), 3.0 / 5.0);
}

}  // namespace
}  // namespace genetrain
