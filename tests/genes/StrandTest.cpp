#include "seq/Strand.h"

#include <gtest/gtest.h>

#include <climits>

namespace genetrain {
namespace {

// The ORF listings print these digits, and drivers read them back.
TEST(Strand, NumbersAreThePrintedDigits) {
  EXPECT_EQ(StrandNumber(Strand::kNone), 0);
  EXPECT_EQ(StrandNumber(Strand::kDirect), 1);
  EXPECT_EQ(StrandNumber(Strand::kReverse), 2);
}

TEST(Strand, OnlyTheNamedStrandsCount) {
  EXPECT_TRUE(HasStrand(Strand::kDirect));
  EXPECT_TRUE(HasStrand(Strand::kReverse));
  EXPECT_FALSE(HasStrand(Strand::kNone));
  for (const int number : {-1, 3, 256, 257, INT_MIN, INT_MAX}) {
    EXPECT_FALSE(HasStrand(static_cast<Strand>(number))) << number;
  }
}

}  // namespace
}  // namespace genetrain
