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

// A chain that cannot be printed (its precision) ends the command before the file is touched.
// With a second chain both come with their labels. The rows go out as they are made: the text is
// never held whole.
bool WriteChainFile(const std::string& name, const MkChain& first, const MkChain* second) {
  if (!first.CheckPrecision()) return false;
  if (second != nullptr && !second->CheckPrecision()) return false;
  OutputFile file;
  if (!file.Open(name)) return false;
  if (second != nullptr) file.Write("COD1\n");
  if (!first.WriteText(file)) return false;
  if (second != nullptr) {
    file.Write("COD2\n");
    if (!second->WriteText(file)) return false;
  }
  return file.Commit();
}

}  // namespace

// The coding file is written before the coding chains' tables are dropped (at order 12 a coding
// chain holds 1.6 GB of tables, the non-coding one 0.5 GB). A chain that cannot be made or
// trained ends the command with its message before any file is written: each is checked as soon
// as it is made or estimated, so that the messages keep their order.
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
  if (!coding1.Valid()) return false;
  MkChain coding2(order, 3, param, MkChain::Deferred{});
  if (!coding2.Valid() || !coding1.Estimate(genome.cod1)) return false;
  if (genome.separate_cod && !coding2.Estimate(genome.cod2)) return false;
  MkChain noncoding(order, 1, param, MkChain::Deferred{});
  if (!noncoding.Valid()) return false;
  noncoding.ClearMargins();
  if (!noncoding.Estimate(genome.non)) return false;

  if (!WriteChainFile(*param.Find("--chain_cod"), coding1,
                      genome.separate_cod ? &coding2 : nullptr)) {
    return false;
  }
  coding1.Release();
  coding2.Release();
  return WriteChainFile(*param.Find("--chain_non"), noncoding, nullptr);
}

}  // namespace genetrain
