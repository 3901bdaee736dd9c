#ifndef GENETRAIN_COMMON_REPORT_H
#define GENETRAIN_COMMON_REPORT_H

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace genetrain {

// A table of output entries, key -> (label, value), written as label, value and an end of line
// per entry: in the order of the request list, or in key order when nothing was requested.
class Report {
 public:
  void Set(std::string_view key, std::string_view label, std::string_view value);
  // The same, taking over a large value instead of copying it.
  void Set(std::string_view key, std::string_view label, std::string&& value);
  void Set(std::string_view key, std::string_view label, const char* value) {
    Set(key, label, std::string_view(value));
  }
  void SetInt(std::string_view key, std::string_view label, std::int64_t value);
  void Request(std::string_view key) { requests_.emplace_back(key); }
  void ClearRequests() { requests_.clear(); }

  // Checks that every requested key has an entry with a value; prints the first fault.
  bool CheckRequests() const;

  // Writes to the named file (replaced, or appended to with the append flag), or to standard
  // output for an empty name. Fails when the requests do not check (nothing is written then) or
  // when the file cannot be written whole (the message names it).
  bool Write(const std::string& name);
  bool Write(const std::string& name, bool append);

 private:
  struct Entry {
    std::string label;
    std::string value;
  };
  // The entries to write, in output order.
  std::vector<const Entry*> Selected() const;

  std::vector<std::string> requests_;
  bool append_ = false;
  std::map<std::string, Entry, std::less<>> table_;
};

}  // namespace genetrain

#endif
