#include <gtest/gtest.h>
TEST(Predict, Placeholder) {}
