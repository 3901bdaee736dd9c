#include <gtest/gtest.h>

#include <string>

#include "genes/GenesTestSupport.h"

namespace genetrain {
namespace {

TEST(GeneSeq, InFrameStopBeforeTheLastCodonGivesAWarningAndNothing) {
  struct Case {
    std::string bases;
    int left, right;
    Strand strand;
    bool stops;
    std::string piece, warning;
  };
  const std::string stopInside = "ATGTAAGGGTAA";
  const Case cases[] = {
      {stopInside, 0, 11, Strand::kDirect, true, "",
       "warning, STOP codon found inside protein: 0 11 6\n"},
      {stopInside, 0, 11, Strand::kDirect, false, stopInside, ""},  // no stop unless named
      {"ATGGGGGGGTAA", 0, 11, Strand::kDirect, true, "ATGGGGGGGTAA", ""},
      {"ATGTNAGGGTAA", 0, 11, Strand::kDirect, true, "ATGTNAGGGTAA", ""},  // N: no codon
      // Reversed, then complemented: the stop is the last codon.
      {"TTACATGG", 0, 5, Strand::kReverse, true, "ATGTAA", ""},
      {"TTACATGG", 2, 7, Strand::kReverse, true, "CCATGT", ""},
      // Clipped: one past the end comes out short; wholly past it, empty.
      {"ATGTNAGGGTAA", 9, 12, Strand::kDirect, true, "TAA", ""},
      {"ATGTNAGGGTAA", 12, 14, Strand::kDirect, true, "", ""},
  };
  for (const Case& c : cases) {
    const VSeq seq = test::GeneSequence(c.bases, c.stops);
    std::string piece;
    const test::Outcome run = test::Capture([&] {
      piece = test::Letters(seq.GeneSeq(c.left, c.right, c.strand));
      return true;
    });
    EXPECT_EQ(piece, c.piece) << c.bases << " " << c.left;
    EXPECT_EQ(run.out, c.warning) << c.bases << " " << c.left;
  }
  EXPECT_EQ(test::Letters({0, 1, 2, 3, 4, 5}), "ACGTNX");
}

}  // namespace
}  // namespace genetrain
