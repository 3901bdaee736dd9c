#include "model/ModelFile.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "common/FileBuf.h"
#include "common/Format.h"
#include "common/Message.h"

namespace genetrain {

namespace {

constexpr std::size_t kKeyLength = 4;

bool Check(const Param& param, const ModelSection& section) {
  switch (section.rule) {
    case ValueRule::kNone:
      return true;
    case ValueRule::kWord:
      return param.IsWord(section.option);
    case ValueRule::kDigits:
      return param.IsUnsigned(section.option);
    case ValueRule::kNonNegative:
      return param.IsNonNegative(section.option);
  }
  return false;
}

void RequestRbsSections(Report& report, const Param& param, bool always) {
  for (const ModelSection& section : kModelSections) {
    if (section.source == SectionSource::kRbs && (always || param.Has(section.option))) {
      report.Request(section.option);
    }
  }
}

// True when an occurrence at `pos` is cut in two by one of the dashes already put in.
bool IsSplit(std::size_t pos, const std::vector<std::size_t>& inserts) {
  return std::any_of(inserts.begin(), inserts.end(),
                     [pos](std::size_t at) { return at > pos && at < pos + kKeyLength; });
}

}  // namespace

void SetSection(Report& report, const ModelSection& section, std::string value,
                Placement placement) {
  std::string label(section.key);
  label.push_back(' ');
  if (placement == Placement::kAsSection && section.spansLines && !value.starts_with('\n')) {
    label.push_back('\n');
  }
  report.Set(section.option, label, std::move(value));
}

void SetSection(Report& report, const ModelSection& section, std::int64_t value) {
  std::string text;
  AppendInteger(text, value);
  SetSection(report, section, std::move(text));
}

bool ValidateModel(const Param& param) {
  for (const ModelSection& section : kModelSections) {
    if (!Check(param, section)) return false;
  }
  return std::all_of(kModelSections.begin(), kModelSections.end(), [&](const ModelSection& s) {
    return s.source != SectionSource::kChain || param.Has(s.option);
  });
}

bool WriteModel(Report& report, const Param& param, const std::string& name) {
  report.ClearRequests();
  for (const ModelSection& section : kModelSections) {
    if (section.source == SectionSource::kSetting) {
      SetSection(report, section, param.ValueOrEmpty(section.option));
    }
    if (section.source != SectionSource::kRbs) report.Request(section.option);
  }
  RequestRbsSections(report, param, false);
  if (param.Has("--fixmotif")) RequestRbsSections(report, param, true);
  return report.Write(name);
}

// The dashes never hold key letters, so putting them in can only cut a later key's occurrence
// in two, never make a new one: the searches run over the original text, skipping occurrences
// cut by earlier insertions, and the result is built once.
std::string ModelToParamText(std::string_view text) {
  std::vector<std::size_t> inserts;
  inserts.reserve(kModelSections.size());
  for (const ModelSection& section : kModelSections) {
    const std::string_view key = section.key;
    std::size_t pos = text.find(key);
    while (pos != std::string_view::npos && IsSplit(pos, inserts)) pos = text.find(key, pos + 1);
    if (pos != std::string_view::npos) inserts.push_back(pos);
  }
  std::sort(inserts.begin(), inserts.end());
  std::string result;
  result.reserve(text.size() + 2 * inserts.size());
  std::size_t done = 0;
  for (std::size_t at : inserts) {
    result.append(text.substr(done, at - done)).append("--");
    done = at;
  }
  result.append(text.substr(done));
  return result;
}

bool ReadModel(const std::string& name, Param& model) {
  std::string text;
  {
    FileBuf file;
    if (!file.Load(name.c_str())) return false;
    text = ModelToParamText(file.View());
  }
  if (model.Load(text) && ValidateModel(model)) return true;
  PrintError({"error in fomat of model ", name});
  return false;
}

}  // namespace genetrain
