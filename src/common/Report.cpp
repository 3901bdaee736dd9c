#include "common/Report.h"

#include <cstdio>

#include "common/Message.h"
#include "common/Output.h"

namespace genetrain {

void Report::Set(std::string_view key, std::string_view label, std::string_view value) {
  Entry& entry = table_[std::string(key)];
  entry.label.assign(label);
  entry.value.assign(value);
}

void Report::Set(std::string_view key, std::string_view label, std::string&& value) {
  Entry& entry = table_[std::string(key)];
  entry.label.assign(label);
  entry.value = std::move(value);
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

std::vector<const Report::Entry*> Report::Selected() const {
  std::vector<const Entry*> entries;
  if (requests_.empty()) {
    for (const auto& [key, entry] : table_) entries.push_back(&entry);
    return entries;
  }
  for (const std::string& key : requests_) {
    const auto it = table_.find(key);
    if (it != table_.end()) entries.push_back(&it->second);
  }
  return entries;
}

bool Report::Write(const std::string& name) {
  return Write(name, false);
}

// Entries go out one after the other, without being joined into one text first.
bool Report::Write(const std::string& name, bool append) {
  append_ = append;
  if (!requests_.empty() && !CheckRequests()) return false;
  OutputFile file;
  if (!file.Open(name, append_ ? OutputMode::kAppend : OutputMode::kReplace)) return false;
  for (const Entry* entry : Selected()) {
    file.Write(entry->label);
    file.Write(entry->value);
    file.Write("\n");
  }
  return file.Commit();
}

}  // namespace genetrain
