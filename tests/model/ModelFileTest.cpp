#include "model/ModelFile.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "TestSupport.h"

namespace genetrain {
namespace {

using test::Capture;

std::string BadValue(std::string_view key, std::string_view value) {
  return "error in value of parameter " + std::string(key) + ": " + std::string(value) + "\n";
}

// The scalar part of a model's parameter set, every value valid, and the chain keys.
const std::string kScalars =
    "--PHMM phmm_1 --NAME test --ORDM 0 --ATG_ 1 --GTG_ 0.0 --TTG_ 1e-2 --CTG_ 0 "
    "--TAA_ 1 --TAG_ 1 --TGA_ 0 --MINC 90 --MAXC 2000 --MAXN 10000 --NDEC 150 "
    "--CDEC 150.5 --CDCD +0.5 --CD1P .8 --CD2P 0.2 ";
const std::string kChains = "--COD1 x --COD2 x --NONC x";

test::Outcome Validate(const std::string& text) {
  Param param;
  EXPECT_TRUE(param.Load(text)) << text;
  return Capture([&] { return ValidateModel(param); });
}

TEST(ValidateModel, EachRuleReportsItsBadValue) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"--ORDM 0", ""},  // the valid set passes silently
      {"--PHMM \"\"", BadValue("--PHMM", "")},
      {"--NAME \"a b\"", BadValue("--NAME", "a b")},
      {"--ORDM 1.5", BadValue("--ORDM", "1.5")},
      {"--CD2P 1,5", BadValue("--CD2P", "1,5") + BadValue("--CD2P", "1,5")},
      // Pairs are stored in key order (--CD2P before --NAME), yet the file order decides.
      {"--CD2P -1 --NAME \"a b\" --ORDM x", BadValue("--NAME", "a b")},
      {"--TAA_ -1 --CD1P x --ORDM x", BadValue("--ORDM", "x")},
  };
  for (const auto& [pairs, message] : cases) {
    const test::Outcome printed = Validate(kScalars + kChains + " " + pairs);  // later pairs win
    EXPECT_EQ(printed.ok, message.empty()) << pairs;
    EXPECT_EQ(printed.err, message) << pairs;
  }
  // An absent scalar is judged as the empty value: numbers pass.
  EXPECT_TRUE(Validate("--PHMM p --NAME n " + kChains).ok);
}

// Insert-and-search on the growing text, the plain way.
std::string InsertOneByOne(std::string text) {
  for (const ModelSection& section : kModelSections) {
    const std::size_t pos = text.find(section.key);
    if (pos != std::string::npos) text.insert(pos, "--");
  }
  return text;
}

TEST(ModelToParamText, SameAsInsertingOneByOne) {
  EXPECT_EQ(ModelToParamText("CD2PHMM CD2P"), "CD2--PHMM --CD2P");  // PHMM cuts the first CD2P
  EXPECT_EQ(ModelToParamText("NAME NAME\n"), "--NAME NAME\n");      // the first occurrence only
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

// The model as the builder's entries and the settings make it, with the RBS entries set.
test::Outcome Write(const std::string& extra, const std::string& name) {
  Param param;
  EXPECT_TRUE(param.Load(kScalars + kChains + " " + extra));
  Report report;
  report.Set("--log", "", "matrix");
  report.Request("--log");  // an earlier list is replaced
  for (const ModelSection& section : kModelSections) {
    if (section.source == SectionSource::kStartCodon || section.source == SectionSource::kChain) {
      SetSection(report, section, param.ValueOrEmpty(section.option));
    }
  }
  SetSection(report, Section("RBSS"), 3);
  SetSection(report, Section("RBSM"), "0.1 0.2 0.3 0.4");
  SetSection(report, Section("RBSL"), 4);
  SetSection(report, Section("RBSD"), "1", Placement::kOnKeyLine);
  return Capture([&] { return WriteModel(report, param, name); });
}

TEST(WriteModel, SettingsThenChainsThenTheRbsSectionsTheStoreHolds) {
  const std::string scalars =
      "PHMM phmm_1\nNAME test\nORDM 0\nATG_ 1\nGTG_ 0.0\nTTG_ 1e-2\nCTG_ 0\nTAA_ 1\nTAG_ 1\n"
      "TGA_ 0\nMINC 90\nMAXC 2000\nMAXN 10000\nNDEC 150\nCDEC 150.5\nCDCD +0.5\nCD1P .8\n"
      "CD2P 0.2\nCOD1 \nx\nCOD2 \nx\nNONC \nx\n";
  const std::string rbs = "RBSS 3\nRBSM \n0.1 0.2 0.3 0.4\nRBSL 4\nRBSD 1\n";
  const std::pair<std::string, std::string> cases[] = {
      {"--RBSM m --RBSD d", "RBSM \n0.1 0.2 0.3 0.4\nRBSD 1\n"},
      // --fixmotif lists the RBS sections (again); its presence counts, not its value.
      {"--RBSS 1 --RBSM --RBSL 1 --RBSD 1 --fixmotif", rbs + rbs},
      {"--fixmotif 0", rbs},
  };
  test::ScratchDir dir;
  for (const auto& [extra, expected] : cases) {
    const std::string name = dir.Write("m.mod", std::string(5000, 'x'));  // truncated
    const test::Outcome printed = Write(extra, name);
    EXPECT_TRUE(printed.ok) << extra << printed.err;
    EXPECT_EQ(test::ReadFile(name), scalars + expected) << extra;
  }
}

}  // namespace
}  // namespace genetrain
