#include "driver/Dispatch.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

namespace genetrain {
namespace {

// The command keys in the order in which they are tested.
std::vector<std::string> Order() {
  std::istringstream keys(
      "--clean_fasta --stat_fasta --clean_join --gc --stat --clean --split --parse --intergenic "
      "--mkchain --mkmod --CLEAN_CODING --compare --pre_start --gibbs --mask --combine "
      "--STAT_NON_VS_ALL --ORF_PER_SEQ --orf --GENE_SET_STAT --count_substring_n "
      "--count_substring_atcg");
  std::vector<std::string> order;
  for (std::string key; keys >> key;) order.push_back(key);
  return order;
}

TEST(Dispatch, EarliestPresentKeyOfTheTableWinsWhateverItsValue) {
  const std::vector<std::string> order = Order();
  std::vector<std::string> keys;
  for (const Command& command : Commands()) keys.emplace_back(command.key);
  EXPECT_EQ(keys, order);
  for (std::size_t first = 0; first < order.size(); ++first) {
    Param param;
    for (std::size_t i = order.size(); i-- > first;) param.Set(order[i], i == first ? "" : "x");
    const Command* command = SelectCommand(param);
    ASSERT_NE(command, nullptr) << order[first];
    EXPECT_EQ(command->key, order[first]);
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
