#include "common/Param.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "TestSupport.h"

namespace genetrain {
namespace {

using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

std::vector<const char*> Argv(const std::vector<std::string>& args) {
  std::vector<const char*> argv{"genetrain"};
  for (const std::string& arg : args) argv.push_back(arg.c_str());
  return argv;
}

bool ParseArgs(Param& param, const std::vector<std::string>& args) {
  const std::vector<const char*> argv = Argv(args);
  return param.ParseCommandLine(static_cast<int>(argv.size()), argv.data());
}

bool InitArgs(Param& param, const std::vector<std::string>& args) {
  const std::vector<const char*> argv = Argv(args);
  return param.Init(static_cast<int>(argv.size()), argv.data());
}

std::string Value(const Param& param, std::string_view key) {
  const std::string* value = param.Find(key);
  return value != nullptr ? *value : "<absent>";
}

std::string BadValue(std::string_view key, std::string_view value) {
  return "error in value of parameter " + std::string(key) + ": " + std::string(value) + "\n";
}

// The tokenizer: keys, values, quotes and the places where a whole text fails.

TEST(ParamGrammar, ValueOfSeveralArgumentsKeepsTheTabsBetweenThem) {
  Param param;
  ASSERT_TRUE(ParseArgs(param, {"--seq", "a.fa", "b.fa", "--stat"}));
  EXPECT_EQ(Value(param, "--seq"), "a.fa\tb.fa");
  EXPECT_EQ(Value(param, "--stat"), "");
}

TEST(ParamGrammar, ArgumentHoldingBlanksKeepsThemInsideTheValue) {
  Param param;
  ASSERT_TRUE(ParseArgs(param, {"--NAME", "  my model  ", "--x", "a\nb"}));
  EXPECT_EQ(Value(param, "--NAME"), "my model");
  EXPECT_EQ(Value(param, "--x"), "a\nb");  // a line feed separates nothing on the command line
}

TEST(ParamGrammar, EverythingUpToTheSeparatorBelongsToTheKey) {
  Param param;
  ASSERT_TRUE(ParseArgs(param, {"--seq=a.fa", "--seq:", "x", "---y", "1"}));
  EXPECT_FALSE(param.Has("--seq"));
  EXPECT_EQ(Value(param, "--seq=a.fa"), "");
  EXPECT_EQ(Value(param, "--seq:"), "x");
  EXPECT_EQ(Value(param, "---y"), "1");
}

TEST(ParamGrammar, DoubleDashAnywhereInsideAValueSpoilsTheWholeText) {
  for (const std::string value : {"my--genome.fa", "a.fa--", "x-- y"}) {
    Param param;
    EXPECT_FALSE(param.ParseText("--seq " + value + " --stat", "--", " \t")) << value;
  }
  Param param;
  EXPECT_FALSE(param.ParseText("--a 1 --b x--y", "--", " \t"));
  EXPECT_EQ(Value(param, "--a"), "1");  // pairs stored before the failure stay
}

TEST(ParamGrammar, SingleDashIsOrdinaryText) {
  Param param;
  ASSERT_TRUE(ParseArgs(param, {"--shift_zero", "-5", "--x", "a-b", "-", "--y", "-"}));
  EXPECT_EQ(Value(param, "--shift_zero"), "-5");
  EXPECT_EQ(Value(param, "--x"), "a-b\t-");
  EXPECT_EQ(Value(param, "--y"), "-");
}

TEST(ParamGrammar, LoneDoubleDashFailsWhenASeparatorFollows) {
  Param param;
  CaptureStderr();
  EXPECT_FALSE(ParseArgs(param, {"--", "--stat"}));
  EXPECT_FALSE(ParseArgs(param, {"--stat", "--"}));
  EXPECT_EQ(GetCapturedStderr(), "error in command line\nerror in command line\n");
  // At the very end of a text nothing follows the prefix, so it starts a key of its own.
  Param atEnd;
  EXPECT_TRUE(atEnd.ParseText("--a 1 --", "--", " \t\n\r"));
  EXPECT_EQ(Value(atEnd, "--"), "");
  EXPECT_EQ(Value(atEnd, "--a"), "1");
}

TEST(ParamGrammar, EmptyOrSeparatorOnlyTextAddsNothing) {
  Param param;
  EXPECT_TRUE(param.ParseText("", "--", " \t"));
  EXPECT_TRUE(param.ParseText(" \t\t ", "--", " \t"));
  EXPECT_TRUE(ParseArgs(param, {}));
  EXPECT_TRUE(ParseArgs(param, {"", " "}));
  EXPECT_EQ(param.Size(), 0u);
}

TEST(ParamGrammar, QuotesAreRemovedOnlyWhenBothEndsHoldOne) {
  Param param;
  ASSERT_TRUE(param.ParseText(
      "--a \"my model\" --b \"x --c x\" --d \" --e \"\" --f \"\"\" --g \" a \"", "--", " \t\n\r"));
  EXPECT_EQ(Value(param, "--a"), "my model");
  EXPECT_EQ(Value(param, "--b"), "\"x");
  EXPECT_EQ(Value(param, "--c"), "x\"");
  EXPECT_EQ(Value(param, "--d"), "\"");
  EXPECT_EQ(Value(param, "--e"), "");
  EXPECT_EQ(Value(param, "--f"), "\"");
  EXPECT_EQ(Value(param, "--g"), " a ");  // trimmed before the quotes go, not after
}

TEST(ParamGrammar, LastOccurrenceOfAKeyWins) {
  Param param;
  ASSERT_TRUE(ParseArgs(param, {"--seq", "genome.fa", "--seq", "other.fa"}));
  EXPECT_EQ(Value(param, "--seq"), "other.fa");
}

TEST(ParamGrammar, KeyStartNeedsASeparatorBeforeAndNoneAfter) {
  const std::string_view seps = " \t";
  EXPECT_TRUE(Param::IsKeyStart("--a", 0, "--", seps));
  EXPECT_TRUE(Param::IsKeyStart("x --a", 2, "--", seps));
  EXPECT_TRUE(Param::IsKeyStart("x --", 2, "--", seps));  // end of text is not a separator
  EXPECT_FALSE(Param::IsKeyStart("x--a", 1, "--", seps));
  EXPECT_FALSE(Param::IsKeyStart("-- a", 0, "--", seps));
  EXPECT_FALSE(Param::IsKeyStart("x -", 2, "--", seps));  // prefix runs past the end
  EXPECT_FALSE(Param::IsKeyStart("x -a", 2, "--", seps));
  EXPECT_FALSE(Param::IsKeyStart("--a", 4, "--", seps));
}

TEST(ParamGrammar, ZeroBytesAreOrdinaryCharacters) {
  Param param;
  ASSERT_TRUE(param.ParseText(std::string_view("--a\0b x\0y", 9), "--", " \t\n\r"));
  EXPECT_FALSE(param.Has("--a"));
  EXPECT_EQ(Value(param, std::string_view("--a\0b", 5)), std::string("x\0y", 3));
}

// Comments and parameter files.

TEST(ParamFile, CommentRunsToTheNextLineEndWhereverItStands) {
  std::string text = "--NAME a#b c\n--seq#x\r--ORDM 5 # five\n#";
  Param::StripComments(text);
  EXPECT_EQ(text, "--NAME a    \n--seq  \r--ORDM 5       \n ");
  Param param;
  ASSERT_TRUE(param.ParseText(text, "--", " \t\n\r"));
  EXPECT_EQ(Value(param, "--NAME"), "a");
  EXPECT_EQ(Value(param, "--seq"), "");
  EXPECT_EQ(Value(param, "--ORDM"), "5");
}

TEST(ParamFile, LineStructureHasNoMeaning) {
  test::ScratchDir dir;
  const std::string path = dir.Write(
      "a.par", "# model settings\r\n\r\n--seq\r\n   genome.fa --ORDM 5 --NAME \"E coli\"\n");
  Param param;
  ASSERT_TRUE(param.LoadFile(path));
  EXPECT_EQ(param.ToText(), "--NAME E coli\n--ORDM 5\n--seq genome.fa\n");
}

TEST(ParamFile, LoadClearsTheStoreAndKeepsHashes) {
  Param param;
  param.Set("--old", "1");
  ASSERT_TRUE(param.Load("--COD1 0.1#2\n--NAME x"));
  EXPECT_EQ(param.ToText(), "--COD1 0.1#2\n--NAME x\n");
  EXPECT_FALSE(param.Load("junk --NAME x"));
}

// Init: command line over the --par file.

class ParamInit : public testing::Test {
 protected:
  test::ScratchDir dir_;
};

TEST_F(ParamInit, CommandLineWinsOverTheParameterFile) {
  const std::string path = dir_.Write("run.par", "--ORDM 3\n--NAME file\n--par other.par\n");
  Param param;
  ASSERT_TRUE(InitArgs(param, {"--ORDM", "5", "--par", path, "--seq", "g.fa"}));
  EXPECT_EQ(Value(param, "--ORDM"), "5");
  EXPECT_EQ(Value(param, "--NAME"), "file");
  EXPECT_EQ(Value(param, "--seq"), "g.fa");
  EXPECT_EQ(Value(param, "--par"), path);  // the inner --par is overwritten, never read
}

TEST_F(ParamInit, StartsFromAnEmptyStore) {
  Param param;
  param.Set("--stale", "1");
  ASSERT_TRUE(InitArgs(param, {"--stat", "x"}));
  EXPECT_EQ(param.ToText(), "--stat x\n");
}

TEST(ParamStore, MergeReplacesAndAdds) {
  Param base;
  base.Set("--a", "1");
  base.Set("--b", "2");
  Param top;
  top.Set("--b", "3");
  top.Set("--c", "");
  base.Merge(top);
  EXPECT_EQ(base.ToText(), "--a 1\n--b 3\n--c \n");
}

// Getters and checks.

class ParamGetters : public testing::Test {
 protected:
  void SetUp() override {
    param_.Set("--text", "a b");
    param_.Set("--empty", "");
    param_.Set("--word", "genome.fa");
  }
  // Runs a getter with standard error captured; returns what it printed.
  template <typename Getter>
  std::string Printed(Getter getter, bool expect_ok) {
    CaptureStderr();
    EXPECT_EQ(getter(), expect_ok);
    return GetCapturedStderr();
  }
  Param param_;
};

TEST_F(ParamGetters, TextGetters) {
  std::string target = "default";
  EXPECT_EQ(Printed([&] { return param_.Get(target, "--none"); }, false),
            "error: missing parameter --none\n");
  EXPECT_EQ(target, "default");
  EXPECT_EQ(Printed([&] { return param_.GetOpt(target, "--none"); }, true), "");
  EXPECT_EQ(target, "default");
  EXPECT_TRUE(param_.Get(target, "--empty"));
  EXPECT_EQ(target, "");
  EXPECT_TRUE(param_.GetOpt(target, "--text"));
  EXPECT_EQ(target, "a b");
}

TEST_F(ParamGetters, WordGetters) {
  std::string target = "default";
  EXPECT_EQ(Printed([&] { return param_.GetWord(target, "--text"); }, false),
            BadValue("--text", "a b"));
  EXPECT_EQ(Printed([&] { return param_.GetOptWord(target, "--empty"); }, false),
            BadValue("--empty", ""));
  EXPECT_EQ(Printed([&] { return param_.GetWord(target, "--none"); }, false),
            "error: missing parameter --none\n");
  EXPECT_EQ(target, "default");
  EXPECT_TRUE(param_.GetOptWord(target, "--none"));
  EXPECT_TRUE(param_.GetWord(target, "--word"));
  EXPECT_EQ(target, "genome.fa");
  for (const char* blank : {"a\tb", "a\nb", "a\rb"}) {
    param_.Set("--w", blank);
    EXPECT_FALSE(Printed([&] { return param_.GetOptWord(target, "--w"); }, false).empty());
  }
}

TEST_F(ParamGetters, BoolIsTheNumberNotBeingZero) {
  const std::vector<std::pair<std::string, bool>> cases = {
      {"0", false},  {"0.0", false}, {"-0", false}, {"", false},   {"e", false},
      {"0.5", true}, {"-1", true},   {"1", true},   {"1e3", true}, {"+2", true}};
  for (const auto& [text, expected] : cases) {
    param_.Set("--TAA_", text);
    bool target = !expected;
    EXPECT_TRUE(param_.Get(target, "--TAA_")) << text;
    EXPECT_EQ(target, expected) << text;
  }
}

TEST_F(ParamGetters, BadBoolIsReportedTwice) {
  param_.Set("--TAA_", "yes");
  bool target = true;
  EXPECT_EQ(Printed([&] { return param_.GetOpt(target, "--TAA_"); }, false),
            BadValue("--TAA_", "yes") + BadValue("--TAA_", "yes"));
  EXPECT_TRUE(target);
  EXPECT_EQ(Printed([&] { return param_.Get(target, "--TGA_"); }, false),
            "error: missing parameter --TGA_\n");
  EXPECT_TRUE(param_.GetOpt(target, "--TGA_"));
  EXPECT_TRUE(target);
}

TEST_F(ParamGetters, UnsignedTakesDigitsOnly) {
  std::uint32_t target = 7;
  for (const char* bad : {"-5", "+5", "5.0", "1e3", " 5", "abc"}) {
    param_.Set("--MIN_SEQ_SIZE", bad);
    EXPECT_EQ(Printed([&] { return param_.GetOpt(target, "--MIN_SEQ_SIZE"); }, false),
              BadValue("--MIN_SEQ_SIZE", bad));
  }
  EXPECT_EQ(target, 7u);
  EXPECT_EQ(Printed([&] { return param_.Get(target, "--none"); }, false),
            "error: missing parameter --none\n");
  const std::vector<std::pair<std::string, std::uint32_t>> cases = {
      {"", 0},
      {"007", 7},
      {"2147483648", 2147483648u},
      {"4294967295", 4294967295u},
      {"4294967296", 4294967295u},  // held at the top of the range, never wrapped to 0
      {"99999999999999999999999", 4294967295u}};
  for (const auto& [text, expected] : cases) {
    param_.Set("--MIN_SEQ_SIZE", text);
    EXPECT_TRUE(param_.Get(target, "--MIN_SEQ_SIZE")) << text;
    EXPECT_EQ(target, expected) << text;
  }
}

TEST_F(ParamGetters, SignedTakesMinusAndDigits) {
  const std::vector<std::pair<std::string, std::int32_t>> cases = {
      {"-5", -5},
      {"1-2", 1},
      {"-", 0},
      {"--5", 0},
      {"", 0},
      {"2147483648", 2147483647},
      {"-2147483649", -2147483647 - 1}};
  for (const auto& [text, expected] : cases) {
    param_.Set("--shift_zero", text);
    std::int32_t target = 99;
    EXPECT_TRUE(param_.GetOpt(target, "--shift_zero")) << text;
    EXPECT_EQ(target, expected) << text;
  }
  param_.Set("--shift_zero", "+5");
  std::int32_t target = 99;
  EXPECT_EQ(Printed([&] { return param_.GetOpt(target, "--shift_zero"); }, false),
            BadValue("--shift_zero", "+5"));
  EXPECT_EQ(target, 99);
}

TEST_F(ParamGetters, RealIsReportedOnce) {
  double target = 0.25;
  param_.Set("--RANDOM_NONCOD", "abc");
  EXPECT_EQ(Printed([&] { return param_.GetOpt(target, "--RANDOM_NONCOD"); }, false),
            BadValue("--RANDOM_NONCOD", "abc"));
  EXPECT_EQ(target, 0.25);
  EXPECT_TRUE(param_.GetOpt(target, "--none"));
  EXPECT_EQ(target, 0.25);
  const std::vector<std::pair<std::string, double>> cases = {
      {"1.2.3", 1.2}, {"e", 0}, {"+", 0}, {".", 0}, {"-2.5", -2.5}, {"1e99", 1e99}, {"", 0}};
  for (const auto& [text, expected] : cases) {
    param_.Set("--RANDOM_NONCOD", text);
    EXPECT_TRUE(param_.GetOpt(target, "--RANDOM_NONCOD")) << text;
    EXPECT_EQ(target, expected) << text;
  }
}

TEST_F(ParamGetters, NonNegativeReportsABadCharacterTwiceAndANegativeOnce) {
  double target = 0.5;
  param_.Set("--ATG_", "x");
  EXPECT_EQ(Printed([&] { return param_.GetOptNonNegative(target, "--ATG_"); }, false),
            BadValue("--ATG_", "x") + BadValue("--ATG_", "x"));
  param_.Set("--ATG_", "-0.1");
  EXPECT_EQ(Printed([&] { return param_.GetOptNonNegative(target, "--ATG_"); }, false),
            BadValue("--ATG_", "-0.1"));
  EXPECT_EQ(target, 0.5);
  param_.Set("--ATG_", "-0");
  EXPECT_TRUE(param_.GetOptNonNegative(target, "--ATG_"));
  EXPECT_EQ(target, 0.0);
}

TEST_F(ParamGetters, ChecksInsertAnAbsentKeyButGettersDoNot) {
  std::string text;
  double real = 0;
  std::int32_t whole = 0;
  EXPECT_TRUE(param_.GetOpt(text, "--a"));
  EXPECT_TRUE(param_.GetOptWord(text, "--a"));
  EXPECT_TRUE(param_.GetOpt(real, "--a"));
  EXPECT_TRUE(param_.GetOpt(whole, "--a"));
  EXPECT_FALSE(param_.Has("--a"));

  EXPECT_TRUE(param_.IsNumber("--n"));
  EXPECT_TRUE(param_.IsNonNegative("--nn"));
  EXPECT_TRUE(param_.IsUnsigned("--u"));
  EXPECT_TRUE(param_.IsSigned("--s"));
  CaptureStderr();
  EXPECT_FALSE(param_.IsWord("--w"));
  EXPECT_EQ(GetCapturedStderr(), BadValue("--w", ""));
  for (const char* key : {"--n", "--nn", "--u", "--s", "--w"}) {
    EXPECT_EQ(Value(param_, key), "") << key;
  }
}

TEST_F(ParamGetters, BadValueShowsTheValueByteForByte) {
  param_.Set("--x", std::string("a\0b", 3));
  CaptureStderr();
  param_.ReportBadValue("--x");
  EXPECT_EQ(GetCapturedStderr(), std::string("error in value of parameter --x: a\0b\n", 37));
}

}  // namespace
}  // namespace genetrain
