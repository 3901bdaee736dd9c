#include "common/Param.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <limits>

#include "common/FileBuf.h"
#include "common/Message.h"

namespace genetrain {

namespace {

constexpr std::string_view kPrefix = "--";
constexpr std::string_view kCommandLineSeparators = " \t";
constexpr std::string_view kFileSeparators = " \t\n\r";
constexpr std::string_view kBlanks = " \t\n\r";
constexpr std::string_view kNumberChars = "+-eE.0123456789";
constexpr std::string_view kUnsignedChars = "0123456789";
constexpr std::string_view kSignedChars = "-0123456789";

bool HoldsOnly(std::string_view value, std::string_view allowed) {
  return value.find_first_not_of(allowed) == std::string_view::npos;
}

// C conversions; the value has passed its character check. Integers out of the 32-bit range
// are held at its nearest end instead of wrapping around.
double ToReal(const std::string& value) {
  return std::atof(value.c_str());
}

std::int64_t ToInteger(const std::string& value) {
  return std::strtoll(value.c_str(), nullptr, 10);
}

std::uint32_t ToUnsigned32(const std::string& value) {
  const std::int64_t number = ToInteger(value);
  return static_cast<std::uint32_t>(
      std::clamp<std::int64_t>(number, 0, std::numeric_limits<std::uint32_t>::max()));
}

std::int32_t ToSigned32(const std::string& value) {
  const std::int64_t number = ToInteger(value);
  return static_cast<std::int32_t>(std::clamp<std::int64_t>(
      number, std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()));
}

// The value region trimmed of separators, with one pair of enclosing double quotes removed.
std::string_view CutValue(std::string_view region, std::string_view separators) {
  const std::size_t first = region.find_first_not_of(separators);
  if (first == std::string_view::npos) return {};
  const std::size_t last = region.find_last_not_of(separators);
  std::string_view value = region.substr(first, last - first + 1);
  if (value.size() > 1 && value.front() == '"' && value.back() == '"') {
    value = value.substr(1, value.size() - 2);
  }
  return value;
}

// A key starts at `pos` when the prefix stands there, after a separator (or at the start) and
// not followed by one.
bool IsKeyStart(std::string_view text, std::size_t pos, std::string_view prefix,
                std::string_view separators) {
  if (pos > text.size() || text.size() - pos < prefix.size()) return false;
  if (text.compare(pos, prefix.size(), prefix) != 0) return false;
  if (pos > 0 && separators.find(text[pos - 1]) == std::string_view::npos) return false;
  const std::size_t after = pos + prefix.size();
  return after == text.size() || separators.find(text[after]) == std::string_view::npos;
}

// The value of a key as found, the empty text for an absent one.
std::string_view OrEmpty(const std::string* value) {
  return value != nullptr ? std::string_view(*value) : std::string_view();
}

}  // namespace

bool Param::Init(int argc, const char* const* argv) {
  Clear();
  if (!ParseCommandLine(argc, argv)) return false;
  if (!Has("--par")) return true;
  std::string name;
  if (!GetOptWord(name, "--par")) return false;
  Param commandLine;
  commandLine.pairs_.swap(pairs_);
  if (!LoadFile(name)) return false;
  Merge(commandLine);
  return true;
}

bool Param::ParseCommandLine(int argc, const char* const* argv) {
  std::string text;
  for (int i = 1; i < argc; ++i) {
    text.append(argv[i]).push_back('\t');
  }
  if (ParseText(text, kPrefix, kCommandLineSeparators)) return true;
  std::fputs("error in command line\n", stderr);
  return false;
}

bool Param::LoadFile(const std::string& name) {
  std::string text;
  {
    FileBuf file;
    if (!file.Load(name.c_str())) return false;
    text.assign(file.View());
  }
  StripComments(text);
  if (ParseText(text, kPrefix, kFileSeparators)) return true;
  PrintError({"error in format of file ", name});
  return false;
}

bool Param::Load(const std::string& text) {
  Clear();
  return ParseText(text, kPrefix, kFileSeparators);
}

bool Param::ParseText(std::string_view text, std::string_view prefix, std::string_view separators) {
  if (prefix.empty()) return false;
  std::size_t start = text.find_first_not_of(separators);
  while (start != std::string_view::npos) {
    if (!IsKeyStart(text, start, prefix, separators)) return false;
    const std::size_t keyEnd = std::min(text.find_first_of(separators, start), text.size());
    // The value runs up to the next occurrence of the prefix, wherever it stands, which must
    // then start a key: "a--b" inside a value spoils the whole text.
    const std::size_t next = text.find(prefix, keyEnd);
    if (next != std::string_view::npos && !IsKeyStart(text, next, prefix, separators)) {
      return false;
    }
    const std::size_t valueEnd = std::min(next, text.size());
    Set(text.substr(start, keyEnd - start),
        CutValue(text.substr(keyEnd, valueEnd - keyEnd), separators));
    start = next;
  }
  return true;
}

void Param::StripComments(std::string& text) {
  std::size_t hash = text.find('#');
  while (hash != std::string::npos) {
    const std::size_t stop = std::min(text.find_first_of("\n\r", hash), text.size());
    std::fill(text.begin() + static_cast<std::ptrdiff_t>(hash),
              text.begin() + static_cast<std::ptrdiff_t>(stop), ' ');
    hash = text.find('#', stop);
  }
}

void Param::Merge(const Param& other) {
  for (const auto& [key, value] : other.pairs_) pairs_.insert_or_assign(key, value);
}

void Param::Set(std::string_view key, std::string_view value) {
  auto [it, inserted] = pairs_.try_emplace(std::string(key));
  it->second.assign(value);
}

const std::string* Param::Find(std::string_view key) const {
  const auto it = pairs_.find(key);
  return it == pairs_.end() ? nullptr : &it->second;
}

std::string Param::ValueOrEmpty(std::string_view key) const {
  const std::string* value = Find(key);
  return value != nullptr ? *value : std::string();
}

const std::string* Param::Lookup(std::string_view key, Need need) const {
  const std::string* value = Find(key);
  if (value == nullptr && need == Need::kRequired) PrintError({"error: missing parameter ", key});
  return value;
}

// Getters: an absent key is an error only when required; otherwise the target stays as it is.

bool Param::ReadText(std::string& target, std::string_view key, Need need) const {
  const std::string* value = Lookup(key, need);
  if (value != nullptr) target = *value;
  return value != nullptr || need == Need::kOptional;
}

bool Param::ReadWord(std::string& target, std::string_view key, Need need) {
  const std::string* value = Lookup(key, need);
  if (value == nullptr) return need == Need::kOptional;
  if (!IsWord(key)) return false;
  target = *value;
  return true;
}

bool Param::ReadBool(bool& target, std::string_view key, Need need) {
  const std::string* value = Lookup(key, need);
  if (value == nullptr) return need == Need::kOptional;
  if (!IsNumber(key)) return false;
  target = ToReal(*value) != 0;
  return true;
}

bool Param::ReadUnsigned(std::uint32_t& target, std::string_view key, Need need) {
  const std::string* value = Lookup(key, need);
  if (value == nullptr) return need == Need::kOptional;
  if (!IsUnsigned(key)) return false;
  target = ToUnsigned32(*value);
  return true;
}

bool Param::Get(std::string& target, std::string_view key) const {
  return ReadText(target, key, Need::kRequired);
}

bool Param::GetOpt(std::string& target, std::string_view key) const {
  return ReadText(target, key, Need::kOptional);
}

bool Param::GetWord(std::string& target, std::string_view key) {
  return ReadWord(target, key, Need::kRequired);
}

bool Param::GetOptWord(std::string& target, std::string_view key) {
  return ReadWord(target, key, Need::kOptional);
}

bool Param::Get(bool& target, std::string_view key) {
  return ReadBool(target, key, Need::kRequired);
}

bool Param::GetOpt(bool& target, std::string_view key) {
  return ReadBool(target, key, Need::kOptional);
}

bool Param::Get(std::uint32_t& target, std::string_view key) {
  return ReadUnsigned(target, key, Need::kRequired);
}

bool Param::GetOpt(std::uint32_t& target, std::string_view key) {
  return ReadUnsigned(target, key, Need::kOptional);
}

bool Param::GetOpt(std::int32_t& target, std::string_view key) {
  const std::string* value = Find(key);
  if (value == nullptr) return true;
  if (!IsSigned(key)) return false;
  target = ToSigned32(*value);
  return true;
}

// The real getter checks the characters itself: its bad-value message appears once.
bool Param::GetOpt(double& target, std::string_view key) {
  const std::string* value = Find(key);
  if (value == nullptr) return true;
  if (!HoldsOnly(*value, kNumberChars)) {
    ReportBadValue(key);
    return false;
  }
  target = ToReal(*value);
  return true;
}

// Value checks: an absent key is judged as the empty value.

bool Param::IsWord(std::string_view key) const {
  const std::string_view value = OrEmpty(Find(key));
  if (!value.empty() && value.find_first_of(kBlanks) == std::string_view::npos) return true;
  ReportBadValue(key);
  return false;
}

bool Param::IsNumber(std::string_view key) const {
  if (HoldsOnly(OrEmpty(Find(key)), kNumberChars)) return true;
  ReportBadValue(key);
  ReportBadValue(key);
  return false;
}

bool Param::IsNonNegative(std::string_view key) const {
  if (!IsNumber(key)) return false;
  if (ToReal(ValueOrEmpty(key)) >= 0) return true;
  ReportBadValue(key);
  return false;
}

bool Param::IsUnsigned(std::string_view key) const {
  if (HoldsOnly(OrEmpty(Find(key)), kUnsignedChars)) return true;
  ReportBadValue(key);
  return false;
}

bool Param::IsSigned(std::string_view key) const {
  if (HoldsOnly(OrEmpty(Find(key)), kSignedChars)) return true;
  ReportBadValue(key);
  return false;
}

void Param::ReportBadValue(std::string_view key) const {
  PrintError({"error in value of parameter ", key, ": ", OrEmpty(Find(key))});
}

}  // namespace genetrain
