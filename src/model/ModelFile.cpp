#include "model/ModelFile.h"

#include <algorithm>
#include <vector>

#include "common/FileBuf.h"
#include "common/Message.h"

namespace genetrain {

namespace {

enum class Rule { kWord, kDigits, kNonNegative };

// The rule of each scalar section, PHMM ... CD2P in file order.
constexpr std::array<Rule, 18> kScalarRules = {
    Rule::kWord,        Rule::kWord,        Rule::kDigits,      Rule::kNonNegative,
    Rule::kNonNegative, Rule::kNonNegative, Rule::kNonNegative, Rule::kNonNegative,
    Rule::kNonNegative, Rule::kNonNegative, Rule::kDigits,      Rule::kDigits,
    Rule::kDigits,      Rule::kNonNegative, Rule::kNonNegative, Rule::kNonNegative,
    Rule::kNonNegative, Rule::kNonNegative};

constexpr std::size_t kFirstChain = 18;  // COD1
constexpr std::size_t kFirstRbs = 21;    // RBSS
constexpr std::size_t kKeyLength = 4;

// Sections copied from the parameters as they stand; the start codons are the builder's.
bool IsCopiedScalar(std::size_t index) {
  return index < kFirstChain && (index < 3 || index > 6);
}

bool Check(Param& param, std::string_view option, Rule rule) {
  switch (rule) {
    case Rule::kWord:
      return param.IsWord(option);
    case Rule::kDigits:
      return param.IsUnsigned(option);
    case Rule::kNonNegative:
      return param.IsNonNegative(option);
  }
  return false;
}

void RequestRbsSections(Report& report, const Param& param, bool always) {
  for (std::size_t i = kFirstRbs; i < kModelOptions.size(); ++i) {
    if (always || param.Has(kModelOptions[i])) report.Request(kModelOptions[i]);
  }
}

// True when an occurrence at `pos` is cut in two by one of the dashes already put in.
bool IsSplit(std::size_t pos, const std::vector<std::size_t>& inserts) {
  return std::any_of(inserts.begin(), inserts.end(),
                     [pos](std::size_t at) { return at > pos && at < pos + kKeyLength; });
}

}  // namespace

bool ValidateModel(Param& param) {
  for (std::size_t i = 0; i < kScalarRules.size(); ++i) {
    if (!Check(param, kModelOptions[i], kScalarRules[i])) return false;
  }
  return param.Has("--COD1") && param.Has("--COD2") && param.Has("--NONC");
}

bool WriteModel(Report& report, const Param& param, const std::string& name) {
  for (std::size_t i = 0; i < kFirstChain; ++i) {
    if (!IsCopiedScalar(i)) continue;
    const std::string* value = param.Find(kModelOptions[i]);
    std::string label(kModelKeys[i]);
    label.push_back(' ');
    report.Set(kModelOptions[i], label,
               value != nullptr ? std::string_view(*value) : std::string_view());
  }
  report.ClearRequests();
  for (std::size_t i = 0; i < kFirstRbs; ++i) report.Request(kModelOptions[i]);
  RequestRbsSections(report, param, false);
  if (param.Has("--fixmotif")) RequestRbsSections(report, param, true);
  return report.Write(name);
}

// The dashes never hold key letters, so putting them in can only cut a later key's occurrence
// in two, never make a new one: the searches run over the original text, skipping occurrences
// cut by earlier insertions, and the result is built once.
std::string ModelToParamText(std::string_view text) {
  std::vector<std::size_t> inserts;
  inserts.reserve(kModelKeys.size());
  for (std::string_view key : kModelKeys) {
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
