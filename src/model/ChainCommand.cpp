// --mkchain: the coding and non-coding Markov chains of one annotated sequence, written to two
// chain files without building a model.

#include <cstdint>
#include <cstdio>
#include <limits>
#include <string>
#include <string_view>

#include "common/Message.h"
#include "common/Output.h"
#include "genes/Genome.h"
#include "model/MkChain.h"

namespace genetrain {

namespace {

// The two file names and the order, checked in this order; the misspelt messages are part of
// the output that scripts see.
bool CheckChainOptions(Param& param, int& order) {
  if (!param.Has("--chain_cod")) {
    PrintError({"error, key missing ", "--chain_cod"});
    return false;
  }
  if (!param.IsWord("--chain_cod")) {
    PrintError({"error, key missing ", "--chain_cod"});
    return false;
  }
  if (!param.IsWord("--chain_non")) {
    PrintError({"error, key missing ", "--chain_non"});
    return false;
  }
  if (!param.IsWord("--chain_non")) {
    PrintError({"erorr, file name missing ", "--chain_non"});
    return false;
  }
  if (!param.Has("--order")) {
    PrintError({"error, key missing ", "--order"});
    return false;
  }
  if (!param.IsUnsigned("--order")) {
    PrintError({"erorr, key value missing ", "--order"});
    return false;
  }
  std::uint32_t value = 0;
  param.GetOpt(value, "--order");
  order = static_cast<int>(std::min<std::uint32_t>(value, std::numeric_limits<int>::max()));
  return true;
}

// The file is opened (and emptied) before the texts are made, so a chain that cannot be printed
// leaves it empty. With a second chain both come with their labels. A file that cannot be
// opened is not reported.
void WriteChainFile(const std::string& name, const MkChain& first, const MkChain* second) {
  std::FILE* file = std::fopen(name.c_str(), "wb");
  const std::string firstText = first.ToText();
  const std::string secondText = second != nullptr ? second->ToText() : std::string();
  if (file == nullptr) return;
  if (second != nullptr) WriteAll(file, "COD1\n");
  WriteAll(file, firstText);
  if (second != nullptr) {
    WriteAll(file, "COD2\n");
    WriteAll(file, secondText);
  }
  std::fclose(file);
}

}  // namespace

bool RunMkchain(Genome& genome, Param& param) {
  int order = 0;
  if (!CheckChainOptions(param, order)) return false;
  VSeq seq;
  GeneSet set;
  if (!LoadAnnotated(seq, set, param, false)) return false;
  // Whole genes: the chain's own margins trim them.
  genome.ExtractCoding(seq, set, 0, 0);
  genome.ExtractNonCoding(seq, set);

  MkChain coding1(order, 3, param);
  MkChain coding2(order, 3, param);
  coding1.Estimate(genome.cod1);
  if (genome.separate_cod) coding2.Estimate(genome.cod2);
  MkChain noncoding(order, 1, param);
  noncoding.ClearMargins();
  noncoding.Estimate(genome.non);

  WriteChainFile(*param.Find("--chain_cod"), coding1, genome.separate_cod ? &coding2 : nullptr);
  WriteChainFile(*param.Find("--chain_non"), noncoding, nullptr);
  return true;
}

}  // namespace genetrain
