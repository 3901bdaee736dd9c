#include "common/Report.h"

#include <gtest/gtest.h>

#include <string>

#include "TestSupport.h"

namespace genetrain {
namespace {

using testing::internal::CaptureStderr;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStderr;
using testing::internal::GetCapturedStdout;

TEST(Report, WithoutRequestsWritesEveryEntryInKeyOrder) {
  Report report;
  report.Set("--b", "B ", "2");
  report.Set("--a", "A=", "1");
  report.Set("--C", "", "upper case sorts first");
  report.Set("--e", "empty value\n", "");
  CaptureStdout();
  EXPECT_TRUE(report.Write(""));
  EXPECT_EQ(GetCapturedStdout(), "upper case sorts first\nA=1\nB 2\nempty value\n\n");
}

TEST(Report, RequestsChooseEntriesAndTheirOrder) {
  Report report;
  report.Set("--PHMM", "PHMM ", "1");
  report.SetInt("--ORDM", "ORDM ", -5);
  report.SetInt("--big", "", 9000000000);
  report.Set("--unused", "X ", "x");
  for (const char* key : {"--ORDM", "--PHMM", "--ORDM", "--big"}) report.Request(key);
  CaptureStdout();
  EXPECT_TRUE(report.Write(""));
  EXPECT_EQ(GetCapturedStdout(), "ORDM -5\nPHMM 1\nORDM -5\n9000000000\n");
  report.Set("--PHMM", "P: ", "2");
  report.ClearRequests();
  report.Request("--PHMM");
  CaptureStdout();
  EXPECT_TRUE(report.Write(""));
  EXPECT_EQ(GetCapturedStdout(), "P: 2\n");
}

TEST(Report, FaultyRequestWritesNothing) {
  struct Case {
    std::vector<std::string> requests;
    std::string message;
  };
  const std::vector<Case> cases = {
      {{"--a", "", "--missing"}, "error: no value in request\n"},
      {{"--a", "--missing", ""}, "error: no entry to report, --missing\n"},
      {{"--a", "--empty", "--missing"}, "error: no value to report, --empty\n"},
      {{""}, "error: no value in request\n"},  // even though the table holds an empty key
  };
  test::ScratchDir dir;
  for (const Case& c : cases) {
    Report report;
    report.Set("--a", "A ", "1");
    report.Set("--empty", "E ", "");
    report.Set("", "blank key ", "1");
    for (const std::string& key : c.requests) report.Request(key);
    CaptureStderr();
    EXPECT_FALSE(report.Write(dir.Path("out")));
    EXPECT_EQ(GetCapturedStderr(), c.message);
    EXPECT_FALSE(std::filesystem::exists(dir.Path("out")));
  }
}

TEST(Report, TruncatesOrAppends) {
  test::ScratchDir dir;
  const std::string path = dir.Write("model", "old content\n");
  Report report;
  report.Set("--k", "K ", "1");
  ASSERT_TRUE(report.Write(path));
  EXPECT_EQ(test::ReadFile(path), "K 1\n");
  ASSERT_TRUE(report.Write(path, true));
  ASSERT_TRUE(report.Write(path, true));
  EXPECT_EQ(test::ReadFile(path), "K 1\nK 1\nK 1\n");
  ASSERT_TRUE(report.Write(path));  // the first form always truncates
  EXPECT_EQ(test::ReadFile(path), "K 1\n");
  ASSERT_TRUE(report.Write(dir.Path("new"), true));
  EXPECT_EQ(test::ReadFile(dir.Path("new")), "K 1\n");
  // A file that cannot be created fails the write and says why.
  const std::string lost = dir.Path("no/such/folder/out");
  CaptureStderr();
  EXPECT_FALSE(report.Write(lost));
  EXPECT_EQ(GetCapturedStderr(),
            "error: file <" + lost + "> cannot be written: No such file or directory\n");
}

}  // namespace
}  // namespace genetrain
