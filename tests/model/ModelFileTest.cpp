#include "model/ModelFile.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "TestSupport.h"

namespace genetrain {
namespace {

using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

std::string BadValue(std::string_view key, std::string_view value) {
  return "error in value of parameter " + std::string(key) + ": " + std::string(value) + "\n";
}

// The scalar part of a model's parameter set, every value valid; the chain keys come separately.
const std::string kScalars =
    "--PHMM phmm_1 --NAME test --ORDM 0 --ATG_ 1 --GTG_ 0.0 --TTG_ 1e-2 --CTG_ 0 "
    "--TAA_ 1 --TAG_ 1 --TGA_ 0 --MINC 90 --MAXC 2000 --MAXN 10000 --NDEC 150 "
    "--CDEC 150.5 --CDCD +0.5 --CD1P .8 --CD2P 0.2 ";
const std::string kChains = "--COD1 x --COD2 x --NONC x";

Param Load(const std::string& text) {
  Param param;
  EXPECT_TRUE(param.Load(text)) << text;
  return param;
}

std::string Value(const Param& param, std::string_view key) {
  const std::string* value = param.Find(key);
  return value != nullptr ? *value : "<absent>";
}

// Validation.

TEST(ValidateModel, EachRuleReportsItsBadValue) {
  struct Case {
    std::string key;
    std::string value;
    std::string message;
  };
  const std::vector<Case> cases = {
      {"--ORDM", "0", ""},                         // the valid set passes silently
      {"--PHMM", "\"\"", BadValue("--PHMM", "")},  // an empty word
      {"--NAME", "\"a b\"", BadValue("--NAME", "a b")},
      {"--ORDM", "1.5", BadValue("--ORDM", "1.5")},
      {"--ORDM", "-1", BadValue("--ORDM", "-1")},
      {"--ATG_", "x", BadValue("--ATG_", "x") + BadValue("--ATG_", "x")},  // bad character: twice
      {"--CTG_", "-0.5", BadValue("--CTG_", "-0.5")},                      // negative: once
      {"--TGA_", "yes", BadValue("--TGA_", "yes") + BadValue("--TGA_", "yes")},
      {"--MINC", "-5", BadValue("--MINC", "-5")},
      {"--MAXN", "1e4", BadValue("--MAXN", "1e4")},
      {"--CDEC", "-1e-3", BadValue("--CDEC", "-1e-3")},
      {"--CD2P", "1,5", BadValue("--CD2P", "1,5") + BadValue("--CD2P", "1,5")},
  };
  for (const Case& c : cases) {
    // The later pair replaces the valid value.
    Param param = Load(kScalars + c.key + " " + c.value + " " + kChains);
    CaptureStderr();
    EXPECT_EQ(ValidateModel(param), c.message.empty()) << c.key << " " << c.value;
    EXPECT_EQ(GetCapturedStderr(), c.message);
  }
}

TEST(ValidateModel, StopsAtTheFirstBadValueInFileOrder) {
  // Pairs are stored in key order (--CD2P before --NAME), yet the file order decides.
  Param param = Load(kScalars + kChains + " --CD2P -1 --NAME \"a b\" --ORDM x");
  CaptureStderr();
  EXPECT_FALSE(ValidateModel(param));
  EXPECT_EQ(GetCapturedStderr(), BadValue("--NAME", "a b"));

  Param later = Load(kScalars + kChains + " --TAA_ -1 --CD1P x --ORDM x");
  CaptureStderr();
  EXPECT_FALSE(ValidateModel(later));
  EXPECT_EQ(GetCapturedStderr(), BadValue("--ORDM", "x"));
}

TEST(ValidateModel, MissingChainFailsSilently) {
  for (const std::string chains :
       {"--COD2 x --NONC x", "--COD1 x --NONC x", "--COD1 x --COD2 x", ""}) {
    Param param = Load(kScalars + chains);
    CaptureStderr();
    EXPECT_FALSE(ValidateModel(param)) << chains;
    EXPECT_EQ(GetCapturedStderr(), "");
  }
  // Present with an empty value is enough.
  Param empty = Load(kScalars + "--COD1 --COD2 --NONC");
  EXPECT_TRUE(ValidateModel(empty));
}

TEST(ValidateModel, AbsentScalarsAreJudgedEmpty) {
  // Numbers read empty pass; a word does not.
  Param numbers = Load("--PHMM p --NAME n " + kChains);
  CaptureStderr();
  EXPECT_TRUE(ValidateModel(numbers));
  EXPECT_EQ(GetCapturedStderr(), "");

  Param word = Load("--NAME n " + kChains);
  CaptureStderr();
  EXPECT_FALSE(ValidateModel(word));
  EXPECT_EQ(GetCapturedStderr(), BadValue("--PHMM", ""));
}

// Model text to parameter text.

// Insert-and-search on the growing text, the plain way.
std::string InsertOneByOne(std::string text) {
  for (const ModelSection& section : kModelSections) {
    const std::string_view key = section.key;
    const std::size_t pos = text.find(key);
    if (pos != std::string::npos) text.insert(pos, "--");
  }
  return text;
}

TEST(ModelToParamText, DashesBeforeTheFirstOccurrenceOfEachKey) {
  const std::pair<std::string, std::string> cases[] = {
      {"", ""},
      {"no keys here\n", "no keys here\n"},
      {"PHMM a\nNAME b\nORDM 0\n", "--PHMM a\n--NAME b\n--ORDM 0\n"},
      {"NAME NAME\nNAME\n", "--NAME NAME\nNAME\n"},
      {"RBSD \n1\nPHMM p\n", "--RBSD \n1\n--PHMM p\n"},  // text order does not matter
      // A later key inside an earlier value gets the dashes there.
      {"NAME xNONC\nNONC \n0.1\n", "--NAME x--NONC\nNONC \n0.1\n"},
      {std::string("a\0b ORDM\r\n", 10), std::string("a\0b --ORDM\r\n", 12)},  // bytes as they are
      // PHMM comes first and cuts the CD2P in front of it; the next CD2P gets the dashes.
      {"CD2PHMM CD2P", "CD2--PHMM --CD2P"},
      {"CD2PHMM", "CD2--PHMM"},
      // Dashes right after an occurrence leave it whole.
      {"TAA_PHMM", "--TAA_--PHMM"},
      {"NAMEPHMM", "--NAME--PHMM"},
      // Overlapping occurrences of keys later in the table: NONC cuts nothing before it.
      {"COD1NONC COD1", "--COD1--NONC COD1"},
  };
  for (const auto& [text, expected] : cases) EXPECT_EQ(ModelToParamText(text), expected) << text;
}

TEST(ModelToParamText, SameAsInsertingOneByOne) {
  // Texts made of pieces of keys, so that occurrences overlap and get cut.
  const std::vector<std::string> pieces = {"PH", "MM", "CD", "2P", "1P", "NA", "ME", "NO", "NC",
                                           "CO", "D1", "D2", "RB", "S",  "M",  "TA", "A_", "G_",
                                           " ",  "\n", "0",  "C",  "D",  "E",  "P"};
  std::mt19937 random(17);
  std::uniform_int_distribution<std::size_t> pick(0, pieces.size() - 1);
  for (int round = 0; round < 2000; ++round) {
    std::string text;
    for (int n = 0; n < 30; ++n) text += pieces[pick(random)];
    ASSERT_EQ(ModelToParamText(text), InsertOneByOne(text)) << text;
  }
}

// Reading a model file.

// A model file as model building writes it, order 0.
const std::string kBuiltModel =
    "PHMM phmm_1\nNAME test\nORDM 0\nATG_ 0.900\nGTG_ 0.0\nTTG_ 0.100\nCTG_ 0\n"
    "TAA_ 1\nTAG_ 1\nTGA_ 0\nMINC 90\nMAXC 2000\nMAXN 10000\nNDEC 150\nCDEC 150.5\n"
    "CDCD +0.5\nCD1P .8\nCD2P 0.2\n"
    "COD1 \n0.30000 0.20000 0.25000\n0.20000 0.30000 0.25000\n"
    "0.30000 0.20000 0.25000\n0.20000 0.30000 0.25000\n\n"
    "COD2 \n0.25000 0.25000 0.25000\n0.25000 0.25000 0.25000\n"
    "0.25000 0.25000 0.25000\n0.25000 0.25000 0.25000\n\n"
    "NONC \n0.30000\n0.20000\n0.20000\n0.30000\n\n";

TEST(ReadModel, ChainsReadBackTrimmed) {
  test::ScratchDir dir;
  const std::string name = dir.Write("m.mod", kBuiltModel + "RBSS 3\nRBSM \n0.1 0.2 0.3 0.4\n");
  Param model;
  model.Set("--stale", "1");
  CaptureStderr();
  ASSERT_TRUE(ReadModel(name, model));
  EXPECT_EQ(GetCapturedStderr(), "");
  EXPECT_FALSE(model.Has("--stale"));
  EXPECT_EQ(Value(model, "--COD1"),
            "0.30000 0.20000 0.25000\n0.20000 0.30000 0.25000\n"
            "0.30000 0.20000 0.25000\n0.20000 0.30000 0.25000");
  EXPECT_EQ(Value(model, "--NONC"), "0.30000\n0.20000\n0.20000\n0.30000");
  EXPECT_EQ(Value(model, "--GTG_"), "0.0");
  EXPECT_EQ(Value(model, "--RBSS"), "3");
  EXPECT_EQ(Value(model, "--RBSM"), "0.1 0.2 0.3 0.4");
  EXPECT_FALSE(model.Has("--RBSL"));
  EXPECT_EQ(model.Size(), 23u);
}

// The text after its first `lines` lines.
std::string AfterLines(const std::string& text, int lines) {
  std::size_t pos = 0;
  for (int i = 0; i < lines; ++i) pos = text.find('\n', pos) + 1;
  return text.substr(pos);
}

TEST(ReadModel, FailuresAndTheirMessages) {
  test::ScratchDir dir;
  struct Case {
    std::string content;
    std::string message;  // before the format message
  };
  const std::vector<Case> cases = {
      {"# comment\n" + kBuiltModel, ""},  // text before the first key: not parameter text
      {"XPHMM p\n" + AfterLines(kBuiltModel, 1), ""},  // dashes not after a separator
      {"PHMM a--b\n" + AfterLines(kBuiltModel, 1), ""},
      {kBuiltModel.substr(0, kBuiltModel.find("NONC")), ""},  // no NONC section
      // The name captures the dashes of NONC and is left empty.
      {"PHMM p\nNAME NONC1\n" + AfterLines(kBuiltModel, 2), BadValue("--NAME", "")},
      {"PHMM p\nNAME a\nORDM 2.0\n" + AfterLines(kBuiltModel, 3), BadValue("--ORDM", "2.0")},
  };
  for (const Case& c : cases) {
    const std::string name = dir.Write("bad.mod", c.content);
    Param model;
    CaptureStderr();
    EXPECT_FALSE(ReadModel(name, model)) << c.content;
    EXPECT_EQ(GetCapturedStderr(), c.message + "error in fomat of model " + name + "\n");
  }
}

// Writing.

// Sets the start codon and chain entries the way model building does.
void SetBuilderEntries(Report& report, const Param& param) {
  for (std::string_view key : {"ATG_", "GTG_", "TTG_", "CTG_"}) {
    const std::string option = "--" + std::string(key);
    report.Set(option, std::string(key) + " ", param.ValueOrEmpty(option));
  }
  report.Set("--COD1", "COD1 ", "\n0.1 0.2 0.3\n0.2 0.3 0.4\n0.3 0.4 0.2\n0.4 0.1 0.1\n");
  report.Set("--COD2", "COD2 ", "\n0.1 0.2 0.3\n0.2 0.3 0.4\n0.3 0.4 0.2\n0.4 0.1 0.1\n");
  report.Set("--NONC", "NONC ", "\n0.1\n0.2\n0.3\n0.4\n");
}

void SetRbsEntries(Report& report) {
  report.SetInt("--RBSS", "RBSS ", 3);
  report.Set("--RBSM", "RBSM \n", "0.1 0.2 0.3 0.4");
  report.SetInt("--RBSL", "RBSL ", 4);
  report.SetInt("--RBSD", "RBSD ", 1);
}

const std::string kWrittenScalars =
    "PHMM phmm_1\nNAME test\nORDM 0\nATG_ 1\nGTG_ 0.0\nTTG_ 1e-2\nCTG_ 0\n"
    "TAA_ 1\nTAG_ 1\nTGA_ 0\nMINC 90\nMAXC 2000\nMAXN 10000\nNDEC 150\nCDEC 150.5\n"
    "CDCD +0.5\nCD1P .8\nCD2P 0.2\n";
const std::string kWrittenChains =
    "COD1 \n0.1 0.2 0.3\n0.2 0.3 0.4\n0.3 0.4 0.2\n0.4 0.1 0.1\n\n"
    "COD2 \n0.1 0.2 0.3\n0.2 0.3 0.4\n0.3 0.4 0.2\n0.4 0.1 0.1\n\n"
    "NONC \n0.1\n0.2\n0.3\n0.4\n\n";
const std::string kWrittenRbs = "RBSS 3\nRBSM \n0.1 0.2 0.3 0.4\nRBSL 4\nRBSD 1\n";

TEST(WriteModel, ScalarsAsTheirTextThenChainsThenTheRbsSectionsTheStoreHolds) {
  test::ScratchDir dir;
  struct Case {
    std::string extra;
    std::string rbs;
  };
  const std::vector<Case> cases = {
      {"", ""},
      {"--RBSL 9", "RBSL 4\n"},
      {"--RBSM m --RBSD d", "RBSM \n0.1 0.2 0.3 0.4\nRBSD 1\n"},
      // --fixmotif lists the RBS sections (again); its presence counts, not its value.
      {"--RBSS 1 --RBSM --RBSL 1 --RBSD 1 --fixmotif", kWrittenRbs + kWrittenRbs},
      {"--fixmotif 0", kWrittenRbs},
      {"--RBSD d --fixmotif", "RBSD 1\n" + kWrittenRbs},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.extra);
    const std::string name = dir.Write("m.mod", std::string(5000, 'x'));  // truncated
    Param param = Load(kScalars + kChains + " " + c.extra);
    ASSERT_TRUE(ValidateModel(param));
    Report report;
    report.Set("--log", "", "matrix");
    report.Request("--log");  // an earlier list is replaced
    report.Set("--PHMM", "stale ", "stale");
    SetBuilderEntries(report, param);
    SetRbsEntries(report);
    CaptureStderr();
    ASSERT_TRUE(WriteModel(report, param, name));
    EXPECT_EQ(GetCapturedStderr(), "");
    // Start values of 0.0 and 0 stay as written.
    EXPECT_EQ(test::ReadFile(name), kWrittenScalars + kWrittenChains + c.rbs);
  }
}

TEST(WriteModel, FaultsWriteNothing) {
  struct Case {
    std::string params;
    bool rbsEntries;
    std::string message;
  };
  const std::vector<Case> cases = {
      {kScalars + kChains + " --RBSS 3", false, "error: no entry to report, --RBSS\n"},
      {kScalars + kChains + " --fixmotif", false, "error: no entry to report, --RBSS\n"},
      // Absent stop value: validation judges it empty, writing refuses it.
      {"--PHMM p --NAME n --ORDM 0 --ATG_ 1 --GTG_ 1 --TTG_ 1 --CTG_ 1 --TAG_ 1 " + kChains, true,
       "error: no value to report, --TAA_\n"},
      // Absent start value copied by the builder: the first empty entry in file order.
      {"--PHMM p --NAME n --ORDM 0 " + kChains, true, "error: no value to report, --ATG_\n"},
  };
  test::ScratchDir dir;
  const std::string name = dir.Path("m.mod");
  for (const Case& c : cases) {
    Param param = Load(c.params);
    CaptureStderr();
    ASSERT_TRUE(ValidateModel(param)) << c.params;
    EXPECT_EQ(GetCapturedStderr(), "");
    Report report;
    SetBuilderEntries(report, param);
    if (c.rbsEntries) SetRbsEntries(report);
    CaptureStderr();
    EXPECT_FALSE(WriteModel(report, param, name)) << c.params;
    EXPECT_EQ(GetCapturedStderr(), c.message);
    EXPECT_FALSE(std::filesystem::exists(name));
  }
  // Without validation an absent scalar is written as an empty entry and refused as well.
  Param unchecked = Load("--PHMM p " + kChains);
  Report report;
  SetRbsEntries(report);
  CaptureStderr();
  EXPECT_FALSE(WriteModel(report, unchecked, name));
  EXPECT_EQ(GetCapturedStderr(), "error: no value to report, --NAME\n");
}

}  // namespace
}  // namespace genetrain
