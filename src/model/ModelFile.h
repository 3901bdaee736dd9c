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

// The same sections as option names: the report keys and the parameter keys of a model.
inline constexpr std::array<std::string_view, 25> kModelOptions = {
    "--PHMM", "--NAME", "--ORDM", "--ATG_", "--GTG_", "--TTG_", "--CTG_", "--TAA_", "--TAG_",
    "--TGA_", "--MINC", "--MAXC", "--MAXN", "--NDEC", "--CDEC", "--CDCD", "--CD1P", "--CD2P",
    "--COD1", "--COD2", "--NONC", "--RBSS", "--RBSM", "--RBSL", "--RBSD"};

// Checks the scalar values (PHMM ... CD2P) of a parameter set by their rules, in file order,
// stopping at the first bad value (reported by the store); then requires --COD1, --COD2 and
// --NONC to be present (their absence fails without a message). An absent scalar is judged as
// the empty value: a word fails, a number passes.
bool ValidateModel(Param& param);

// Fills the 14 scalar entries (PHMM, NAME, ORDM, TAA_ ... CD2P) from the parameters, sets the
// request list (PHMM ... NONC; then each RBS section the parameters hold; all four RBS sections
// once more with --fixmotif) and writes the report to the model file, truncating it. The caller
// has set the start codon, chain and RBS entries.
bool WriteModel(Report& report, const Param& param, const std::string& name);

// Model text as parameter text: "--" before the first occurrence of each key's four letters,
// keys in file order, each search seeing the dashes put in for the keys before it.
std::string ModelToParamText(std::string_view text);

// Loads a model file into `model` (cleared first) and validates it. A file that cannot be
// loaded fails with the loader's message; a text that does not parse or does not validate
// fails with "error in fomat of model " and the name.
bool ReadModel(const std::string& name, Param& model);

// The commands.
bool RunMkmod(Report& report, Param& param);
bool RunCombine(Report& report, Param& param);

}  // namespace genetrain

#endif
