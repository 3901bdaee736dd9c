#include "common/Format.h"

#include <gtest/gtest.h>

namespace genetrain {
namespace {

// Rounds at the precision, shows the point on request, and holds a huge precision at the cap.
TEST(Format, FixedNotation) {
  EXPECT_EQ(FormatFixed(50.0, 1), "50.0");
  EXPECT_EQ(FormatFixed(50.79, 0), "51");
  EXPECT_EQ(FormatFixed(2.0 / 3.0, 3), "0.667");
  EXPECT_EQ(FormatFixed(0.0, 2), "0.00");
  EXPECT_EQ(FormatFixed(1e22, 1), "10000000000000000000000.0");
  std::string text = "x=";
  AppendFixedPoint(text, 0.0, 0);
  AppendFixedPoint(text, 0.25, 1);
  EXPECT_EQ(text, "x=0.0.2");
  EXPECT_EQ(FormatFixed(1.5, 4000000000u).size(), 2 + kMaxPrecision);
  EXPECT_EQ(FormatFixed(1e300, kMaxPrecision).size(), 301 + 1 + kMaxPrecision);
}

}  // namespace
}  // namespace genetrain
