#include "common/Report.h"

#include "TestSupport.h"

namespace genetrain {
namespace {

std::string Written(Report& report) {
  return test::Capture([&] { return report.Write(""); }).out;
}

TEST(Report, RequestsChooseEntriesAndTheirOrderElseKeyOrder) {
  Report report;
  report.Set("--PHMM", "PHMM ", "1");
  report.SetInt("--ORDM", "ORDM ", -5);
  report.SetInt("--big", "", 9000000000);
  report.Set("--C", "", "upper case sorts first");
  report.Set("--e", "empty value\n", "");
  EXPECT_EQ(Written(report),
            "upper case sorts first\nORDM -5\nPHMM 1\n9000000000\nempty value\n\n");
  for (const char* key : {"--ORDM", "--PHMM", "--ORDM", "--big"}) report.Request(key);
  EXPECT_EQ(Written(report), "ORDM -5\nPHMM 1\nORDM -5\n9000000000\n");
  report.Set("--PHMM", "P: ", "2");
  report.ClearRequests();
  report.Request("--PHMM");
  EXPECT_EQ(Written(report), "P: 2\n");
}

TEST(Report, FaultyRequestWritesNothing) {
  const std::pair<std::vector<std::string>, std::string> cases[] = {
      {{"--a", "", "--missing"}, "error: no value in request\n"},
      {{"--a", "--missing", ""}, "error: no entry to report, --missing\n"},
      {{"--a", "--empty", "--missing"}, "error: no value to report, --empty\n"},
      {{""}, "error: no value in request\n"},  // even though the table holds an empty key
  };
  test::ScratchDir dir;
  for (const auto& [requests, message] : cases) {
    Report report;
    report.Set("--a", "A ", "1");
    report.Set("--empty", "E ", "");
    report.Set("", "blank key ", "1");
    for (const std::string& key : requests) report.Request(key);
    const test::Outcome run = test::Capture([&] { return report.Write(dir.Path("out")); });
    EXPECT_FALSE(run.ok);
    EXPECT_EQ(run.err, message);
    EXPECT_FALSE(std::filesystem::exists(dir.Path("out")));
  }
}

}  // namespace
}  // namespace genetrain
