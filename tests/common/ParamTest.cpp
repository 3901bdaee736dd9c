#include "common/Param.h"

#include <cstdio>
#include <type_traits>

#include "TestSupport.h"

namespace genetrain {
namespace {

using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;
using Args = std::vector<std::string>;

bool ParseArgs(Param& param, const Args& args, bool init = false) {
  std::vector<const char*> argv{"genetrain"};
  for (const std::string& arg : args) argv.push_back(arg.c_str());
  const int argc = static_cast<int>(argv.size());
  return init ? param.Init(argc, argv.data()) : param.ParseCommandLine(argc, argv.data());
}

std::string Value(const Param& param, std::string_view key) {
  const std::string* value = param.Find(key);
  return value != nullptr ? *value : "<absent>";
}

// "key value" for the keys that start the lines of `expected` (a value may span lines), and how
// many more the store holds: equal to `expected` only when the store holds just those pairs.
std::string Listing(const Param& param, std::string_view expected) {
  std::string listing;
  std::size_t keys = 0;
  for (std::size_t start = 0; start < expected.size();) {
    const std::size_t end = std::min(expected.find('\n', start), expected.size());
    const std::string_view line = expected.substr(start, end - start);
    start = end + 1;
    if (!line.starts_with("--")) continue;
    const std::string key(line.substr(0, line.find(' ')));
    listing += key + " " + Value(param, key) + "\n";
    ++keys;
  }
  if (param.Size() != keys) listing += std::to_string(param.Size() - keys) + " more\n";
  return listing;
}

void ExpectHolds(const Param& param, const std::string& expected) {
  EXPECT_EQ(Listing(param, expected), expected);
}

std::string BadValue(std::string_view key, std::string_view value) {
  return "error in value of parameter " + std::string(key) + ": " + std::string(value) + "\n";
}

// The tokenizer: keys, values, quotes and the places where a whole text fails. Each case shows
// whether parsing succeeded, the store afterwards (pairs stored before a failure stay) and what
// went to standard error.
struct Parsed {
  bool ok;
  std::string stored;
  std::string err = "";
};

void ExpectParsed(const Param& param, bool ok, const Parsed& expected) {
  EXPECT_EQ(ok, expected.ok);
  ExpectHolds(param, expected.stored);
  EXPECT_EQ(GetCapturedStderr(), expected.err);
}

TEST(ParamGrammar, CommandLine) {
  const std::string error = "error in command line\n";
  const std::pair<Args, Parsed> cases[] = {
      // A value of several arguments keeps the tabs between them.
      {{"--seq", "a.fa", "b.fa", "--stat"}, {true, "--seq a.fa\tb.fa\n--stat \n"}},
      // Blanks inside an argument stay inside the value; a line feed separates nothing here.
      {{"--NAME", "  my model  ", "--x", "a\nb"}, {true, "--NAME my model\n--x a\nb\n"}},
      // Everything up to the separator belongs to the key.
      {{"--seq=a.fa", "--seq:", "x", "---y", "1"}, {true, "---y 1\n--seq: x\n--seq=a.fa \n"}},
      // A single dash is ordinary text.
      {{"--shift_zero", "-5", "--x", "a-b", "-", "--y", "-"},
       {true, "--shift_zero -5\n--x a-b\t-\n--y -\n"}},
      {{"--seq", "genome.fa", "--seq", "other.fa"}, {true, "--seq other.fa\n"}},  // last one wins
      {{}, {true, ""}},
      {{"", " "}, {true, ""}},
      // A lone double dash fails when a separator follows it.
      {{"--stat", "--"}, {false, "", error}},
  };
  for (const auto& [args, expected] : cases) {
    SCOPED_TRACE(testing::PrintToString(args));
    Param param;
    CaptureStderr();
    ExpectParsed(param, ParseArgs(param, args), expected);
  }
}

TEST(ParamGrammar, TextWithPrefixAndSeparators) {
  const std::pair<std::string, Parsed> cases[] = {
      // Quotes go only when both ends hold one; the value is trimmed before, not after.
      {"--a \"my model\" --b \"x --c x\" --d \" --e \"\" --f \"\"\" --g \" a \"",
       {true, "--a my model\n--b \"x\n--c x\"\n--d \"\n--e \n--f \"\n--g  a \n"}},
      {"", {true, ""}},
      {" \t\t \n", {true, ""}},
      // At the very end nothing follows the prefix, so it starts a key of its own.
      {"--a 1 --", {true, "-- \n--a 1\n"}},
      // A double dash anywhere inside a value spoils the whole text.
      {"--a 1 --b x--y", {false, "--a 1\n"}},
      {"--seq a.fa-- --stat", {false, ""}},
      {"--seq x-- y --stat", {false, ""}},
      // Zero bytes are ordinary characters.
      {std::string("--a\0b x\0y", 9), {true, std::string("--a\0b x\0y\n", 10)}},
  };
  for (const auto& [text, expected] : cases) {
    SCOPED_TRACE(text);
    Param param;
    CaptureStderr();
    ExpectParsed(param, param.ParseText(text, "--", " \t\n\r"), expected);
  }
}

// The command line goes over the --par file, whose own --par is overwritten, never read; each
// Init starts afresh.
TEST(ParamFile, InitPutsTheCommandLineOverTheParameterFile) {
  test::ScratchDir dir;
  const std::string path = dir.Write("run.par", "--ORDM 3\n--NAME file\n--par other.par\n");
  Param param;
  param.Set("--stale", "1");
  ASSERT_TRUE(ParseArgs(param, {"--ORDM", "5", "--par", path, "--seq", "g.fa"}, true));
  ExpectHolds(param, "--NAME file\n--ORDM 5\n--par " + path + "\n--seq g.fa\n");
  ASSERT_TRUE(ParseArgs(param, {"--stat", "x"}, true));
  ExpectHolds(param, "--stat x\n");
}

// Getters and checks. Each case runs one getter from a target's starting value on a store
// where --k holds the value (or is absent), and shows "ok" or "fail", the target afterwards and
// what went to standard error.

template <typename T>
std::string Show(T value) {
  if constexpr (std::is_same_v<T, std::string>) {
    return "'" + value + "'";
  } else if constexpr (std::is_same_v<T, bool>) {
    return value ? "true" : "false";
  } else if constexpr (std::is_same_v<T, double>) {
    char text[64];
    std::snprintf(text, sizeof text, "%.17g", value == 0 ? 0.0 : value);  // either zero
    return text;
  } else {
    return std::to_string(value);
  }
}

constexpr const char* kAbsent = nullptr;

template <typename T, typename Getter>
std::string Got(Getter getter, T target, const char* value) {
  Param param;
  if (value != kAbsent) param.Set("--k", value);
  CaptureStderr();
  const bool ok = getter(param, target);
  const std::string err = GetCapturedStderr();
  EXPECT_EQ(Value(param, "--k"), value != kAbsent ? value : "<absent>");  // no insertion
  return (ok ? "ok " : "fail ") + Show(target) + " " + err;
}

#define GETTER(name) [](Param& param, auto& target) { return param.name(target, "--k"); }
#define CHECK(name) [](Param& param, auto&) { return param.name("--k"); }

TEST(ParamGetters, TextAndWords) {
  const std::string missing = "error: missing parameter --k\n";
  const std::string def = "default";
  const std::pair<std::string, std::string> cases[] = {
      {Got(GETTER(Get), def, kAbsent), "fail 'default' " + missing},
      {Got(GETTER(GetOpt), def, kAbsent), "ok 'default' "},
      {Got(GETTER(Get), def, ""), "ok '' "},
      {Got(GETTER(GetOpt), def, "a b"), "ok 'a b' "},
      {Got(GETTER(GetWord), def, "a b"), "fail 'default' " + BadValue("--k", "a b")},
      {Got(GETTER(GetOptWord), def, ""), "fail 'default' " + BadValue("--k", "")},
      {Got(GETTER(GetOptWord), def, "a\tb"), "fail 'default' " + BadValue("--k", "a\tb")},
      {Got(GETTER(GetOptWord), def, "a\rb"), "fail 'default' " + BadValue("--k", "a\rb")},
      {Got(GETTER(GetOptWord), def, kAbsent), "ok 'default' "},
      {Got(GETTER(GetWord), def, "genome.fa"), "ok 'genome.fa' "},
  };
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    EXPECT_EQ(cases[i].first, cases[i].second) << "case " << i;
  }
}

TEST(ParamGetters, Numbers) {
  const std::string missing = "error: missing parameter --k\n";
  std::vector<std::pair<std::string, std::string>> cases = {
      // A bool is the number not being zero; a malformed one is reported twice.
      {Got(GETTER(GetOpt), true, "yes"),
       "fail true " + BadValue("--k", "yes") + BadValue("--k", "yes")},
      {Got(GETTER(Get), true, kAbsent), "fail true " + missing},
      {Got(GETTER(GetOpt), true, kAbsent), "ok true "},
      // Unsigned: digits only, held at the top of the range, never wrapped.
      {Got(GETTER(Get), 7u, kAbsent), "fail 7 " + missing},
      {Got(GETTER(Get), 7u, ""), "ok 0 "},
      {Got(GETTER(Get), 7u, "007"), "ok 7 "},
      {Got(GETTER(Get), 7u, "2147483648"), "ok 2147483648 "},
      {Got(GETTER(Get), 7u, "4294967295"), "ok 4294967295 "},
      {Got(GETTER(Get), 7u, "4294967296"), "ok 4294967295 "},
      {Got(GETTER(Get), 7u, "99999999999999999999999"), "ok 4294967295 "},
      // Signed: a minus and digits, up to the first other character; a plus is refused.
      {Got(GETTER(GetOpt), 99, "+5"), "fail 99 " + BadValue("--k", "+5")},
      {Got(GETTER(GetOpt), 99, kAbsent), "ok 99 "},
      {Got(GETTER(GetOpt), 99, "-5"), "ok -5 "},
      {Got(GETTER(GetOpt), 99, "1-2"), "ok 1 "},
      {Got(GETTER(GetOpt), 99, "-"), "ok 0 "},
      {Got(GETTER(GetOpt), 99, "--5"), "ok 0 "},
      {Got(GETTER(GetOpt), 99, ""), "ok 0 "},
      {Got(GETTER(GetOpt), 99, "2147483648"), "ok 2147483647 "},
      {Got(GETTER(GetOpt), 99, "-2147483649"), "ok -2147483648 "},
      // Real: reported once; read up to the first character that does not fit.
      {Got(GETTER(GetOpt), 0.25, "abc"), "fail 0.25 " + BadValue("--k", "abc")},
      {Got(GETTER(GetOpt), 0.25, kAbsent), "ok 0.25 "},
      {Got(GETTER(GetOpt), 0.25, "1.2.3"), "ok " + Show(1.2) + " "},
      {Got(GETTER(GetOpt), 0.25, "e"), "ok 0 "},
      {Got(GETTER(GetOpt), 0.25, "+"), "ok 0 "},
      {Got(GETTER(GetOpt), 0.25, "."), "ok 0 "},
      {Got(GETTER(GetOpt), 0.25, "-2.5"), "ok -2.5 "},
      {Got(GETTER(GetOpt), 0.25, "1e99"), "ok " + Show(1e99) + " "},
      {Got(GETTER(GetOpt), 0.25, ""), "ok 0 "},
      // Non-negative: a bad character reported twice, a negative value once.
      {Got(CHECK(IsNonNegative), 0.5, "x"),
       "fail 0.5 " + BadValue("--k", "x") + BadValue("--k", "x")},
      {Got(CHECK(IsNonNegative), 0.5, "-0.1"), "fail 0.5 " + BadValue("--k", "-0.1")},
      {Got(CHECK(IsNonNegative), 0.5, "-0"), "ok 0.5 "},
  };
  for (const char* zero : {"0", "0.0", "-0", "", "e"}) {
    cases.push_back({Got(GETTER(Get), true, zero), "ok false "});
  }
  for (const char* nonZero : {"0.5", "-1", "1", "1e3", "+2"}) {
    cases.push_back({Got(GETTER(Get), false, nonZero), "ok true "});
  }
  for (const char* bad : {"-5", "+5", "5.0", "1e3", " 5", "abc"}) {
    cases.push_back({Got(GETTER(GetOpt), 7u, bad), "fail 7 " + BadValue("--k", bad)});
  }
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    EXPECT_EQ(cases[i].first, cases[i].second) << "case " << i;
  }
}

TEST(ParamGetters, BadValueShowsTheValueByteForByte) {
  Param param;
  param.Set("--x", std::string("a\0b", 3));
  CaptureStderr();
  param.ReportBadValue("--x");
  EXPECT_EQ(GetCapturedStderr(), std::string("error in value of parameter --x: a\0b\n", 37));
}

#undef GETTER
#undef CHECK

}  // namespace
}  // namespace genetrain
