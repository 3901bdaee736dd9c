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

// The file is opened (and emptied) before the chains are printed, so a chain that cannot be
// printed leaves it empty. With a second chain both come with their labels. A file that cannot
// be opened is not reported. The rows go out as they are made: the text is never held whole.
void WriteChainFile(const std::string& name, const MkChain& first, const MkChain* second) {
  std::FILE* file = std::fopen(name.c_str(), "wb");
  first.CheckPrecision();
  if (second != nullptr) second->CheckPrecision();
  if (file == nullptr) return;
  if (second != nullptr) WriteAll(file, "COD1\n");
  first.WriteText(file);
  if (second != nullptr) {
    WriteAll(file, "COD2\n");
    second->WriteText(file);
  }
  std::fclose(file);
}

}  // namespace

// One chain's tables at a time: the coding file is written before the non-coding chain is
// estimated (at order 12 a coding chain holds 1.6 GB of tables, the non-coding one 0.5 GB). A
// non-coding set that cannot train its chain still ends the command before any file is written.
bool RunMkchain(Genome& genome, Param& param) {
  int order = 0;
  if (!CheckChainOptions(param, order)) return false;
  VSeq seq;
  GeneSet set;
  if (!LoadAnnotated(seq, set, param, false)) return false;
  // Whole genes: the chain's own margins trim them.
  genome.ExtractCoding(seq, set, 0, 0);
  genome.ExtractNonCoding(seq, set);

  MkChain coding1(order, 3, param, MkChain::Deferred{});
  MkChain coding2(order, 3, param, MkChain::Deferred{});
  coding1.Estimate(genome.cod1);
  if (genome.separate_cod) coding2.Estimate(genome.cod2);
  MkChain noncoding(order, 1, param, MkChain::Deferred{});
  noncoding.ClearMargins();
  if (!noncoding.CanEstimate(genome.non)) noncoding.Estimate(genome.non);  // ends with its message

  WriteChainFile(*param.Find("--chain_cod"), coding1, genome.separate_cod ? &coding2 : nullptr);
  coding1.Release();
  coding2.Release();
  noncoding.Estimate(genome.non);
  WriteChainFile(*param.Find("--chain_non"), noncoding, nullptr);
  return true;
}

}  // namespace genetrain
