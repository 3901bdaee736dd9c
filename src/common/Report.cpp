#include "common/Report.h"

#include <cstdio>

#include "common/Message.h"
#include "common/Output.h"

namespace genetrain {

namespace {

void AppendEntry(std::string& text, std::string_view label, std::string_view value) {
  text.append(label).append(value).push_back('\n');
}

}  // namespace

void Report::Set(std::string_view key, std::string_view label, std::string_view value) {
  Entry& entry = table_[std::string(key)];
  entry.label.assign(label);
  entry.value.assign(value);
}

void Report::SetInt(std::string_view key, std::string_view label, std::int64_t value) {
  Set(key, label, std::to_string(value));
}

bool Report::CheckRequests() const {
  for (const std::string& key : requests_) {
    if (key.empty()) {
      std::fputs("error: no value in request\n", stderr);
      return false;
    }
    const auto it = table_.find(key);
    if (it == table_.end()) {
      PrintError({"error: no entry to report, ", key});
      return false;
    }
    if (it->second.value.empty()) {
      PrintError({"error: no value to report, ", key});
      return false;
    }
  }
  return true;
}

std::string Report::Text() const {
  std::string text;
  if (requests_.empty()) {
    for (const auto& [key, entry] : table_) AppendEntry(text, entry.label, entry.value);
    return text;
  }
  for (const std::string& key : requests_) {
    const auto it = table_.find(key);
    if (it != table_.end()) AppendEntry(text, it->second.label, it->second.value);
  }
  return text;
}

bool Report::Write(const std::string& name) {
  return Write(name, false);
}

bool Report::Write(const std::string& name, bool append) {
  append_ = append;
  if (!requests_.empty() && !CheckRequests()) return false;
  const std::string text = Text();
  if (name.empty()) {
    WriteStdout(text);
  } else {
    WriteFile(name, text, append_);  // an output that cannot be opened is not a failure
  }
  return true;
}

}  // namespace genetrain
