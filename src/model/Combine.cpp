#include <string>

#include "model/ModelFile.h"

namespace genetrain {

namespace {

struct CombineOptions {
  std::string output;
  std::string firstName;
  std::string secondName;
  bool firstNon = false;  // the non-coding chain of the first model instead of the second
};

bool ReadCombineOptions(Param& param, CombineOptions& options) {
  return param.GetWord(options.output, "--combine") &&
         param.GetWord(options.firstName, "--first") &&
         param.GetWord(options.secondName, "--second") &&
         param.GetOpt(options.firstNon, "--first_NON");
}

// Values read back are trimmed: a section that spans lines gets its line feed back.
void Copy(Report& report, const Param& from, const ModelSection& section) {
  SetSection(report, section, from.ValueOrEmpty(section.option));
}

// The model that gives a section: the second coding chain of the second model, the non-coding
// chain of either, everything else of the first.
const Param& SourceOf(const ModelSection& section, const Param& first, const Param& second,
                      bool firstNon) {
  if (section.key == Section("COD2").key) return second;
  if (section.key == Section("NONC").key) return firstNon ? first : second;
  return first;
}

}  // namespace

bool RunCombine(Report& report, Param& param) {
  CombineOptions options;
  if (!ReadCombineOptions(param, options)) return false;
  Param first;
  Param second;
  if (!ReadModel(options.firstName, first) || !ReadModel(options.secondName, second)) {
    return false;
  }
  const bool rbs = first.Has(Section("RBSS").option);
  for (const ModelSection& section : kModelSections) {
    if (section.source == SectionSource::kSetting) continue;  // WriteModel's, from the first
    if (section.source == SectionSource::kRbs && !rbs) continue;
    Copy(report, SourceOf(section, first, second, options.firstNon), section);
  }
  return WriteModel(report, first, options.output);
}

}  // namespace genetrain
