#include "common/Param.h"

#include <cstdio>
#include <optional>
#include <type_traits>

#include "TestSupport.h"

namespace genetrain {
namespace {

using namespace std::string_view_literals;
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

std::string BadValue(std::string_view key, std::string_view value) {
  return "error in value of parameter " + std::string(key) + ": " + std::string(value) + "\n";
}

// The tokenizer: keys, values, quotes and the places where a whole text fails. Each case shows
// whether parsing succeeded, the store afterwards (pairs stored before a failure stay) and what
// went to standard error.
struct Parsed {
  bool ok;
  std::string stored, err = "";
};

template <typename Input, typename Parse>
void ExpectParsed(const std::pair<Input, Parsed>& c, Parse parse) {
  Param param;
  CaptureStderr();
  EXPECT_EQ(parse(param, c.first), c.second.ok);
  EXPECT_EQ(Listing(param, c.second.stored), c.second.stored);
  EXPECT_EQ(GetCapturedStderr(), c.second.err);
}

TEST(ParamGrammar, CommandLineAndText) {
  const std::pair<Args, Parsed> arguments[] = {
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
      {{"--stat", "--"}, {false, "", "error in command line\n"}},
  };
  for (const auto& c : arguments) {
    SCOPED_TRACE(testing::PrintToString(c.first));
    ExpectParsed(c, [](Param& param, const Args& args) { return ParseArgs(param, args); });
  }
  const std::pair<std::string, Parsed> texts[] = {
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
  for (const auto& c : texts) {
    SCOPED_TRACE(c.first);
    ExpectParsed(c, [](Param& param, std::string_view text) {
      return param.ParseText(text, "--", " \t\n\r");
    });
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
  const std::string stored = "--NAME file\n--ORDM 5\n--par " + path + "\n--seq g.fa\n";
  EXPECT_EQ(Listing(param, stored), stored);
  ASSERT_TRUE(ParseArgs(param, {"--stat", "x"}, true));
  EXPECT_EQ(Listing(param, "--stat x\n"), "--stat x\n");
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

constexpr std::optional<std::string_view> kAbsent;

template <typename T, typename Getter>
std::string Got(Getter getter, T target, std::optional<std::string_view> value) {
  Param param;
  if (value) param.Set("--k", *value);
  CaptureStderr();
  const bool ok = getter(param, target);
  const std::string err = GetCapturedStderr();
  EXPECT_EQ(Value(param, "--k"), value ? *value : "<absent>");  // no insertion
  return (ok ? "ok " : "fail ") + Show(target) + " " + err;
}

constexpr auto kGet = [](Param& param, auto& target) { return param.Get(target, "--k"); };
constexpr auto kGetOpt = [](Param& param, auto& target) { return param.GetOpt(target, "--k"); };
constexpr auto kGetWord = [](Param& param, auto& target) { return param.GetWord(target, "--k"); };
constexpr auto kGetOptWord = [](Param& param, auto& target) {
  return param.GetOptWord(target, "--k");
};
constexpr auto kIsNonNegative = [](Param& param, auto&) { return param.IsNonNegative("--k"); };

TEST(ParamGetters, BoundaryTable) {
  const std::string missing = "error: missing parameter --k\n";
  const std::string def = "default";
  std::vector<std::pair<std::string, std::string>> cases = {
      // Text: a word holds no blank, tab or carriage return, and is not empty; a bad value is
      // shown byte for byte.
      {Got(kGet, def, kAbsent), "fail 'default' " + missing},
      {Got(kGetOpt, def, kAbsent), "ok 'default' "},
      {Got(kGet, def, ""), "ok '' "},
      {Got(kGetOpt, def, "a b"), "ok 'a b' "},
      {Got(kGetWord, def, "a b"), "fail 'default' " + BadValue("--k", "a b")},
      {Got(kGetOptWord, def, ""), "fail 'default' " + BadValue("--k", "")},
      {Got(kGetOptWord, def, "a\tb"), "fail 'default' " + BadValue("--k", "a\tb")},
      {Got(kGetOptWord, def, "a\rb"), "fail 'default' " + BadValue("--k", "a\rb")},
      {Got(kGetOptWord, def, "a b\0c"sv), "fail 'default' " + BadValue("--k", "a b\0c"sv)},
      {Got(kGetOptWord, def, kAbsent), "ok 'default' "},
      {Got(kGetWord, def, "genome.fa"), "ok 'genome.fa' "},
      // A bool is the number not being zero; a malformed one is reported twice.
      {Got(kGetOpt, true, "yes"), "fail true " + BadValue("--k", "yes") + BadValue("--k", "yes")},
      {Got(kGet, true, kAbsent), "fail true " + missing},
      {Got(kGetOpt, true, kAbsent), "ok true "},
      // Unsigned: digits only, held at the top of the range, never wrapped.
      {Got(kGet, 7u, kAbsent), "fail 7 " + missing},
      {Got(kGet, 7u, ""), "ok 0 "},
      {Got(kGet, 7u, "007"), "ok 7 "},
      {Got(kGet, 7u, "2147483648"), "ok 2147483648 "},
      {Got(kGet, 7u, "4294967295"), "ok 4294967295 "},
      // Signed: a minus and digits, up to the first other character; a plus is refused.
      {Got(kGetOpt, 99, "+5"), "fail 99 " + BadValue("--k", "+5")},
      {Got(kGetOpt, 99, kAbsent), "ok 99 "},
      {Got(kGetOpt, 99, "-5"), "ok -5 "},
      {Got(kGetOpt, 99, "1-2"), "ok 1 "},
      {Got(kGetOpt, 99, "2147483648"), "ok 2147483647 "},
      {Got(kGetOpt, 99, "-2147483649"), "ok -2147483648 "},
      // Real: reported once; read up to the first character that does not fit.
      {Got(kGetOpt, 0.25, "abc"), "fail 0.25 " + BadValue("--k", "abc")},
      {Got(kGetOpt, 0.25, kAbsent), "ok 0.25 "},
      {Got(kGetOpt, 0.25, "1.2.3"), "ok " + Show(1.2) + " "},
      {Got(kGetOpt, 0.25, "-2.5"), "ok -2.5 "},
      {Got(kGetOpt, 0.25, "1e99"), "ok " + Show(1e99) + " "},
      // Non-negative: a bad character reported twice, a negative value once.
      {Got(kIsNonNegative, 0.5, "x"), "fail 0.5 " + BadValue("--k", "x") + BadValue("--k", "x")},
      {Got(kIsNonNegative, 0.5, "-0.1"), "fail 0.5 " + BadValue("--k", "-0.1")},
      {Got(kIsNonNegative, 0.5, "-0"), "ok 0.5 "},
  };
  // Rows of one getter and starting value that give the same result.
  const auto same = [&cases](auto getter, auto target, std::initializer_list<const char*> values,
                             const std::string& shown) {
    for (const char* value : values) cases.push_back({Got(getter, target, value), shown});
  };
  same(kGet, true, {"0", "0.0", "-0", "", "e"}, "ok false ");
  same(kGet, false, {"0.5", "-1", "1", "1e3", "+2"}, "ok true ");
  same(kGet, 7u, {"4294967296", "99999999999999999999999"}, "ok 4294967295 ");
  same(kGetOpt, 99, {"-", "--5", ""}, "ok 0 ");
  same(kGetOpt, 0.25, {"e", "+", ".", ""}, "ok 0 ");
  for (const char* bad : {"-5", "+5", "5.0", "1e3", " 5", "abc"}) {
    cases.push_back({Got(kGetOpt, 7u, bad), "fail 7 " + BadValue("--k", bad)});
  }
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    EXPECT_EQ(cases[i].first, cases[i].second) << "case " << i;
  }
}

}  // namespace
}  // namespace genetrain
