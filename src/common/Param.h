#ifndef GENETRAIN_COMMON_PARAM_H
#define GENETRAIN_COMMON_PARAM_H

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace genetrain {

// The settings of one run: an ordered map from key text (with its leading "--") to value text,
// filled from the command line and the --par file, read through typed getters.
//
// Getters take the target and the key; they return true on success and false after printing
// their message on standard error. Required getters fail on an absent key; optional getters then
// leave the target as it is, so the caller's initial value is the default. A present but
// malformed value is an error for both. The target changes only on success.
//
// The value checks (IsWord ... IsSigned) judge an absent key as the empty value. Neither they nor
// the getters ever change the store.
class Param {
 public:
  // Filling the store.
  bool Init(int argc, const char* const* argv);
  bool ParseCommandLine(int argc, const char* const* argv);
  bool LoadFile(const std::string& name);
  bool Load(const std::string& text);
  bool ParseText(std::string_view text, std::string_view prefix, std::string_view separators);
  static void StripComments(std::string& text);
  void Merge(const Param& other);
  void Clear() { pairs_.clear(); }
  void Set(std::string_view key, std::string_view value);

  // Plain lookups, no message and no insertion.
  bool Has(std::string_view key) const { return pairs_.find(key) != pairs_.end(); }
  const std::string* Find(std::string_view key) const;
  // The value as stored, or the empty text for an absent key: the output file named by a
  // command key, for instance, where empty means standard output.
  std::string ValueOrEmpty(std::string_view key) const;
  std::size_t Size() const { return pairs_.size(); }

  // Typed getters.
  bool Get(std::string& target, std::string_view key) const;
  bool GetOpt(std::string& target, std::string_view key) const;
  bool GetWord(std::string& target, std::string_view key);
  bool GetOptWord(std::string& target, std::string_view key);
  bool Get(bool& target, std::string_view key);
  bool GetOpt(bool& target, std::string_view key);
  bool Get(std::uint32_t& target, std::string_view key);
  bool GetOpt(std::uint32_t& target, std::string_view key);
  bool GetOpt(std::int32_t& target, std::string_view key);
  bool GetOpt(double& target, std::string_view key);

  // Value checks; each prints the bad-value message on failure (IsNumber twice, IsNonNegative
  // twice for a bad character and once for a negative value).
  bool IsWord(std::string_view key) const;
  bool IsNumber(std::string_view key) const;
  bool IsNonNegative(std::string_view key) const;
  bool IsUnsigned(std::string_view key) const;
  bool IsSigned(std::string_view key) const;
  void ReportBadValue(std::string_view key) const;

 private:
  enum class Need { kRequired, kOptional };

  // The value of a present key, or null; a missing required key is reported here.
  const std::string* Lookup(std::string_view key, Need need) const;
  bool ReadText(std::string& target, std::string_view key, Need need) const;
  bool ReadWord(std::string& target, std::string_view key, Need need);
  bool ReadBool(bool& target, std::string_view key, Need need);
  bool ReadUnsigned(std::uint32_t& target, std::string_view key, Need need);

  std::map<std::string, std::string, std::less<>> pairs_;
};

}  // namespace genetrain

#endif
