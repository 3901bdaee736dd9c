#ifndef GENETRAIN_MODEL_MODELFILE_H
#define GENETRAIN_MODEL_MODELFILE_H

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "common/Param.h"
#include "common/Report.h"

namespace genetrain {

// How a section's value is checked when a model is validated.
enum class ValueRule { kNone, kWord, kDigits, kNonNegative };

// Where a written model takes the section's value from.
enum class SectionSource {
  kSetting,     // the parameters, as they stand
  kStartCodon,  // the start codon estimate (or the setting, as the builder decides)
  kChain,       // a Markov chain
  kRbs,         // the ribosome binding site model, written when present
};

struct ModelSection {
  std::string_view key;     // as in the file: "PHMM"
  std::string_view option;  // the parameter and report key: "--PHMM"
  ValueRule rule;
  bool spansLines;  // the value starts on the line after the key
  SectionSource source;
};

// The one description of the model sections, in file order.
inline constexpr std::array<ModelSection, 25> kModelSections = {{
    {"PHMM", "--PHMM", ValueRule::kWord, false, SectionSource::kSetting},
    {"NAME", "--NAME", ValueRule::kWord, false, SectionSource::kSetting},
    {"ORDM", "--ORDM", ValueRule::kDigits, false, SectionSource::kSetting},
    {"ATG_", "--ATG_", ValueRule::kNonNegative, false, SectionSource::kStartCodon},
    {"GTG_", "--GTG_", ValueRule::kNonNegative, false, SectionSource::kStartCodon},
    {"TTG_", "--TTG_", ValueRule::kNonNegative, false, SectionSource::kStartCodon},
    {"CTG_", "--CTG_", ValueRule::kNonNegative, false, SectionSource::kStartCodon},
    {"TAA_", "--TAA_", ValueRule::kNonNegative, false, SectionSource::kSetting},
    {"TAG_", "--TAG_", ValueRule::kNonNegative, false, SectionSource::kSetting},
    {"TGA_", "--TGA_", ValueRule::kNonNegative, false, SectionSource::kSetting},
    {"MINC", "--MINC", ValueRule::kDigits, false, SectionSource::kSetting},
    {"MAXC", "--MAXC", ValueRule::kDigits, false, SectionSource::kSetting},
    {"MAXN", "--MAXN", ValueRule::kDigits, false, SectionSource::kSetting},
    {"NDEC", "--NDEC", ValueRule::kNonNegative, false, SectionSource::kSetting},
    {"CDEC", "--CDEC", ValueRule::kNonNegative, false, SectionSource::kSetting},
    {"CDCD", "--CDCD", ValueRule::kNonNegative, false, SectionSource::kSetting},
    {"CD1P", "--CD1P", ValueRule::kNonNegative, false, SectionSource::kSetting},
    {"CD2P", "--CD2P", ValueRule::kNonNegative, false, SectionSource::kSetting},
    {"COD1", "--COD1", ValueRule::kNone, true, SectionSource::kChain},
    {"COD2", "--COD2", ValueRule::kNone, true, SectionSource::kChain},
    {"NONC", "--NONC", ValueRule::kNone, true, SectionSource::kChain},
    {"RBSS", "--RBSS", ValueRule::kNone, false, SectionSource::kRbs},
    {"RBSM", "--RBSM", ValueRule::kNone, true, SectionSource::kRbs},
    {"RBSL", "--RBSL", ValueRule::kNone, false, SectionSource::kRbs},
    {"RBSD", "--RBSD", ValueRule::kNone, true, SectionSource::kRbs},
}};

// The row of a key, looked up while compiling: a key missing from the table does not compile.
consteval const ModelSection& Section(std::string_view key) {
  for (const ModelSection& section : kModelSections) {
    if (section.key == key) return section;
  }
  throw "no such model section";  // only ever evaluated while compiling: stops the build
}

// Sets the report entry of a section: the key and a blank as the label, and for a section that
// spans lines a line feed before a value that does not bring its own. kOnKeyLine keeps the value
// on the key's line whatever the section: the fixed motif's spacer section holds one number.
enum class Placement { kAsSection, kOnKeyLine };
void SetSection(Report& report, const ModelSection& section, std::string value,
                Placement placement = Placement::kAsSection);
void SetSection(Report& report, const ModelSection& section, std::int64_t value);

// Checks the values of a parameter set by their sections' rules, in file order, stopping at the
// first bad value (reported by the store); then requires the chain sections to be present (their
// absence fails without a message). An absent scalar is judged as
// the empty value: a word fails, a number passes.
bool ValidateModel(const Param& param);

// Fills the entries of the sections taken from the settings, sets the request list (every section
// up to the chains; then each RBS section the parameters hold; all RBS sections once more with
// --fixmotif) and writes the report to the model file, truncating it. The caller has set the
// start codon, chain and RBS entries.
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
