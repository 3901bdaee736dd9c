#include "seq/LetterTables.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string_view>

namespace genetrain {
namespace {

TEST(IsBase, OnlyTheFourBases) {
  constexpr std::uint8_t kBases[] = {kA, kC, kG, kT};
  constexpr std::uint8_t kNoBases[] = {kOther, kMasked, kDropped};
  for (const std::uint8_t code : kBases) EXPECT_TRUE(IsBase(code)) << int{code};
  for (const std::uint8_t code : kNoBases) EXPECT_FALSE(IsBase(code)) << int{code};
}

// Through the code table: exactly the letters A, C, G, T and U, in either case, are bases.
TEST(IsBase, ExactlyTheBaseLettersOfEveryByte) {
  const std::string_view base_letters = "ACGTUacgtu";
  const CodeTable& table = BaseCodeTable();
  for (int byte = 0; byte < 256; ++byte) {
    const bool letter = base_letters.find(static_cast<char>(byte)) != std::string_view::npos;
    EXPECT_EQ(IsBase(table[static_cast<std::size_t>(byte)]), letter) << byte;
  }
}

}  // namespace
}  // namespace genetrain
