#include "driver/Dispatch.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace genetrain {
namespace {

const std::vector<std::string> kOrder = {"--clean_fasta",
                                         "--stat_fasta",
                                         "--clean_join",
                                         "--gc",
                                         "--stat",
                                         "--clean",
                                         "--split",
                                         "--parse",
                                         "--intergenic",
                                         "--mkchain",
                                         "--mkmod",
                                         "--CLEAN_CODING",
                                         "--compare",
                                         "--pre_start",
                                         "--gibbs",
                                         "--mask",
                                         "--combine",
                                         "--STAT_NON_VS_ALL",
                                         "--ORF_PER_SEQ",
                                         "--orf",
                                         "--GENE_SET_STAT",
                                         "--count_substring_n",
                                         "--count_substring_atcg"};

TEST(Dispatch, TableHoldsTheCommandKeysInTestOrder) {
  std::vector<std::string> keys;
  for (const Command& command : Commands()) keys.emplace_back(command.key);
  EXPECT_EQ(keys, kOrder);
}

TEST(Dispatch, EarliestPresentKeyWinsWhateverItsValue) {
  for (std::size_t first = 0; first < kOrder.size(); ++first) {
    Param param;
    for (std::size_t i = kOrder.size(); i-- > first;) param.Set(kOrder[i], i == first ? "" : "x");
    const Command* command = SelectCommand(param);
    ASSERT_NE(command, nullptr) << kOrder[first];
    EXPECT_EQ(command->key, kOrder[first]);
  }
}

TEST(Dispatch, NoCommandKeyIsACommandLineError) {
  Param param;
  for (const char* key : {"--seq", "--STAT", "--stats", "--gc=5", "-gc", "--par"})
    param.Set(key, "");
  EXPECT_EQ(SelectCommand(param), nullptr);
  testing::internal::CaptureStderr();
  EXPECT_EQ(Dispatch(param), 1);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "error in command line\n");
}

}  // namespace
}  // namespace genetrain
