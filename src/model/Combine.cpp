#include <array>
#include <string>
#include <string_view>

#include "model/ModelFile.h"

namespace genetrain {

namespace {

struct Section {
  std::string_view option;
  std::string_view label;
};

// Values read back are trimmed, so the multi-line sections get their label on a line of its own.
constexpr std::array<Section, 4> kStartSections = {{
    {"--ATG_", "ATG_ "},
    {"--GTG_", "GTG_ "},
    {"--TTG_", "TTG_ "},
    {"--CTG_", "CTG_ "},
}};

constexpr std::array<Section, 4> kRbsSections = {{
    {"--RBSS", "RBSS "},
    {"--RBSM", "RBSM \n"},
    {"--RBSL", "RBSL "},
    {"--RBSD", "RBSD \n"},
}};

void Copy(Report& report, const Param& from, const Section& section) {
  const std::string* value = from.Find(section.option);
  report.Set(section.option, section.label,
             value != nullptr ? std::string_view(*value) : std::string_view());
}

}  // namespace

// A new model from two: the second coding chain of the second model, the non-coding chain of
// either, everything else of the first.
bool RunCombine(Report& report, Param& param) {
  std::string output;
  std::string firstName;
  std::string secondName;
  bool firstNon = false;
  if (!param.GetWord(output, "--combine") || !param.GetWord(firstName, "--first") ||
      !param.GetWord(secondName, "--second") || !param.GetOpt(firstNon, "--first_NON")) {
    return false;
  }
  Param first;
  Param second;
  if (!ReadModel(firstName, first) || !ReadModel(secondName, second)) return false;

  Copy(report, first, {"--COD1", "COD1 \n"});
  Copy(report, second, {"--COD2", "COD2 \n"});
  Copy(report, firstNon ? first : second, {"--NONC", "NONC \n"});
  for (const Section& section : kStartSections) Copy(report, first, section);
  if (first.Has("--RBSS")) {
    for (const Section& section : kRbsSections) Copy(report, first, section);
  }
  return WriteModel(report, first, output);
}

}  // namespace genetrain
