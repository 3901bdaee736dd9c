// --mkchain: the coding and non-coding Markov chains of one annotated sequence, written to two
// chain files without building a model.

#include <algorithm>
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

struct MkchainOptions {
  std::string codingName;     // --chain_cod
  std::string nonCodingName;  // --chain_non
  int order = 0;
};

bool Missing(std::string_view message, std::string_view key) {
  PrintError({message, key});
  return false;
}

// The two file names and the order, checked in this order; the misspelt messages are part of
// the output that scripts see.
bool ReadMkchainOptions(Param& param, MkchainOptions& options) {
  if (!param.Has("--chain_cod") || !param.IsWord("--chain_cod")) {
    return Missing("error, key missing ", "--chain_cod");
  }
  if (!param.IsWord("--chain_non")) return Missing("error, key missing ", "--chain_non");
  if (!param.Has("--order")) return Missing("error, key missing ", "--order");
  if (!param.IsUnsigned("--order")) return Missing("erorr, key value missing ", "--order");
  options.codingName = *param.Find("--chain_cod");
  options.nonCodingName = *param.Find("--chain_non");
  std::uint32_t order = 0;
  param.GetOpt(order, "--order");
  options.order = static_cast<int>(std::min<std::uint32_t>(order, std::numeric_limits<int>::max()));
  return true;
}

// A chain that cannot be printed (its precision) ends the command before the file is touched.
// With a second chain both come with their labels. The rows go out as they are made: the text is
// never held whole.
// Writes the chains to the opened file, the first with its label when a second one follows.
bool WriteChains(OutputFile& file, const MkChain& first, const MkChain* second) {
  if (second != nullptr) file.Write("COD1\n");
  if (!first.WriteText(file)) return false;
  if (second == nullptr) return true;
  file.Write("COD2\n");
  return second->WriteText(file);
}

bool WriteChainFile(const std::string& name, const MkChain& first, const MkChain* second) {
  if (!first.CheckPrecision()) return false;
  if (second != nullptr && !second->CheckPrecision()) return false;
  OutputFile file;
  return file.Open(name) && WriteChains(file, first, second) && file.Commit();
}

}  // namespace

// One chain's tables at a time (at order 12 a coding chain holds 1.6 GB of tables, the
// non-coding one 0.5 GB): the coding chains go to their file's temporary copy and are dropped
// before the non-coding chain is estimated. That file is put in place only once the non-coding
// chain has trained, so a chain that cannot be made or trained ends the command, with its
// message, before any file is written. Each chain is checked as soon as it is made or
// estimated, and a precision that cannot be printed after that, so the messages keep their
// order.
bool RunMkchain(Genome& genome, Param& param) {
  MkchainOptions options;
  if (!ReadMkchainOptions(param, options)) return false;
  VSeq seq;
  GeneSet set;
  if (!LoadAnnotated(seq, set, param, false)) return false;
  // Whole genes: the chain's own margins trim them.
  genome.ExtractCoding(seq, set, 0, 0);
  genome.ExtractNonCoding(seq, set);

  // Each chain reads its settings as it is made: a malformed value is reported once per chain.
  const int order = options.order;
  MkChain coding1(order, 3, ReadChainSettings(param, order, 3), MkChain::Deferred{});
  if (!coding1.Valid()) return false;
  MkChain coding2(order, 3, ReadChainSettings(param, order, 3), MkChain::Deferred{});
  if (!coding2.Valid() || !coding1.Estimate(genome.cod1)) return false;
  if (genome.separate_cod && !coding2.Estimate(genome.cod2)) return false;
  MkChain noncoding(order, 1, ReadChainSettings(param, order, 1), MkChain::Deferred{});
  if (!noncoding.Valid()) return false;
  noncoding.ClearMargins();

  const MkChain* second = genome.separate_cod ? &coding2 : nullptr;
  const bool printable = coding1.Printable() && (second == nullptr || second->Printable());
  OutputFile codingFile;
  if (printable) {
    if (!codingFile.Open(options.codingName) || !WriteChains(codingFile, coding1, second)) {
      return false;
    }
    coding1.Release();
    coding2.Release();
  }
  if (!noncoding.Estimate(genome.non)) return false;
  if (!printable) return WriteChainFile(options.codingName, coding1, second);
  return codingFile.Commit() && WriteChainFile(options.nonCodingName, noncoding, nullptr);
}

}  // namespace genetrain
