#include "driver/Dispatch.h"

#include <array>

#include "common/Message.h"

namespace genetrain {

namespace {

// Test order decides between two command keys given together (--stat with --gc runs --gc), so
// this order is part of the interface.
constexpr std::array<Command, 23> kCommands = {{
    {"--clean_fasta", nullptr},
    {"--stat_fasta", nullptr},
    {"--clean_join", nullptr},
    {"--gc", nullptr},
    {"--stat", nullptr},
    {"--clean", nullptr},
    {"--split", nullptr},
    {"--parse", nullptr},
    {"--intergenic", nullptr},
    {"--mkchain", nullptr},
    {"--mkmod", nullptr},
    {"--CLEAN_CODING", nullptr},
    {"--compare", nullptr},
    {"--pre_start", nullptr},
    {"--gibbs", nullptr},
    {"--mask", nullptr},
    {"--combine", nullptr},
    {"--STAT_NON_VS_ALL", nullptr},
    {"--ORF_PER_SEQ", nullptr},
    {"--orf", nullptr},
    {"--GENE_SET_STAT", nullptr},
    {"--count_substring_n", nullptr},
    {"--count_substring_atcg", nullptr},
}};

}  // namespace

std::span<const Command> Commands() {
  return kCommands;
}

const Command* SelectCommand(const Param& param) {
  for (const Command& command : kCommands) {
    if (param.Has(command.key)) return &command;
  }
  return nullptr;
}

int Dispatch(Param& param) {
  const Command* command = SelectCommand(param);
  if (command == nullptr) {
    PrintError({"error in command line"});
    return 1;
  }
  if (command->run == nullptr) {
    PrintError({"error: command not yet available: ", command->key});
    return 1;
  }
  return command->run(param) ? 0 : 1;
}

}  // namespace genetrain
