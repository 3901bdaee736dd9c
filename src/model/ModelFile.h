#ifndef GENETRAIN_MODEL_MODELFILE_H
#define GENETRAIN_MODEL_MODELFILE_H

#include <array>
#include <string>
#include <string_view>

#include "common/Param.h"
#include "common/Report.h"

namespace genetrain {

// The sections of a model file, in file order.
inline constexpr std::array<std::string_view, 25> kModelKeys = {
    "PHMM", "NAME", "ORDM", "ATG_", "GTG_", "TTG_", "CTG_", "TAA_", "TAG_",
    "TGA_", "MINC", "MAXC", "MAXN", "NDEC", "CDEC", "CDCD", "CD1P", "CD2P",
    "COD1", "COD2", "NONC", "RBSS", "RBSM", "RBSL", "RBSD"};

// Checks the scalar values (PHMM ... CD2P) of a parameter set by their rules, then requires
// --COD1, --COD2 and --NONC to be present.
bool ValidateModel(Param& param);

// Fills the scalar entries from the parameters, lists the sections, and writes the report to
// the model file (truncated). The builder has set the start codon, chain and RBS entries.
bool WriteModel(Report& report, Param& param, const std::string& name);

// Model text as parameter text: "--" before the first occurrence of each key.
std::string ModelToParamText(std::string text);

// Loads a model file into a fresh parameter store.
bool ReadModel(const std::string& name, Param& model);

// The commands.
bool RunMkmod(Report& report, Param& param);
bool RunCombine(Report& report, Param& param);

}  // namespace genetrain

#endif
