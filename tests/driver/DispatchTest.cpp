#include "driver/Dispatch.h"

#include <gtest/gtest.h>

namespace genetrain {
namespace {

// Keys match whole and case-sensitively: near misses of command keys select no command (the
// golden cases cover the precedence and the message).
TEST(Dispatch, NearMissesOfCommandKeysSelectNothing) {
  Param param;
  for (const char* key : {"--seq", "--STAT", "--stats", "--gc=5", "-gc", "--Orf", "--orf_"})
    param.Set(key, "");
  EXPECT_EQ(SelectCommand(param), nullptr);
  param.Set("--orf", "");
  ASSERT_NE(SelectCommand(param), nullptr);
  EXPECT_EQ(SelectCommand(param)->key, "--orf");
}

}  // namespace
}  // namespace genetrain
