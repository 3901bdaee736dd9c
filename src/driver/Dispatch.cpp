#include "driver/Dispatch.h"

#include <array>
#include <type_traits>

#include "common/Message.h"
#include "genes/GeneSet.h"
#include "genes/Genome.h"
#include "genes/Orf.h"
#include "model/ModelFile.h"
#include "motif/Compare.h"
#include "motif/Gibbs.h"
#include "seq/MSSeq.h"
#include "seq/SSeq.h"

namespace genetrain {

namespace {

// Builds the command's working object, runs its handler on it and destroys it.
template <typename Object, bool (Object::*Handler)(Param&)>
bool Run(Param& param) {
  Object object;
  return (object.*Handler)(param);
}

// The same for handlers that take the object: a Genome is built from the parameters.
template <typename Object, bool (*Handler)(Object&, Param&)>
bool RunWith(Param& param) {
  if constexpr (std::is_constructible_v<Object, Param&>) {
    Object object(param);
    return Handler(object, param);
  } else {
    Object object;
    return Handler(object, param);
  }
}

// Test order decides between two command keys given together (--stat with --gc runs --gc), so
// this order is part of the interface.
constexpr std::array<Command, 23> kCommands = {{
    {"--clean_fasta", Run<MSSeq, &MSSeq::CleanFasta>},
    {"--stat_fasta", Run<MSSeq, &MSSeq::StatFasta>},
    {"--clean_join", Run<SSeq, &SSeq::CleanJoin>},
    {"--gc", Run<SSeq, &SSeq::Gc>},
    {"--stat", Run<SSeq, &SSeq::Stat>},
    {"--clean", Run<SSeq, &SSeq::Clean>},
    {"--split", Run<SSeq, &SSeq::Split>},
    {"--parse", RunParse},
    {"--intergenic", RunIntergenic},
    {"--mkchain", RunWith<Genome, RunMkchain>},
    {"--mkmod", RunWith<Report, RunMkmod>},
    {"--CLEAN_CODING", Run<MSSeq, &MSSeq::CleanCoding>},
    {"--compare", Run<Compare, &Compare::Run>},
    {"--pre_start", RunPreStart},
    {"--gibbs", Run<Gibbs, &Gibbs::Run>},
    {"--mask", Run<SSeq, &SSeq::Mask>},
    {"--combine", RunWith<Report, RunCombine>},
    {"--STAT_NON_VS_ALL", RunStatNonVsAll},
    {"--ORF_PER_SEQ", RunOrfPerSeq},
    {"--orf", RunOrf},
    {"--GENE_SET_STAT", RunGeneSetStat},
    {"--count_substring_n", Run<MSSeq, &MSSeq::CountSubstringN>},
    {"--count_substring_atcg", Run<MSSeq, &MSSeq::CountSubstringAtcg>},
}};

}  // namespace

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
  return command->run(param) ? 0 : 1;
}

}  // namespace genetrain
