#include "common/Output.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "TestSupport.h"

namespace genetrain {
namespace {

using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

// The names in a folder: a temporary file left behind shows here.
std::vector<std::string> Listing(const std::string& folder) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

mode_t Mode(const std::string& path) {
  struct stat status {};
  ::stat(path.c_str(), &status);
  return status.st_mode;
}

// Runs `body` in a child process and returns its wait status: for limits and endings that
// must not touch the test process.
template <typename Body>
int InChild(Body body) {
  const pid_t pid = ::fork();
  if (pid == 0) {
    body();
    ::_exit(0);
  }
  int status = 0;
  ::waitpid(pid, &status, 0);
  return status;
}

std::string Message(const std::string& name, const char* reason) {
  return "error: file <" + name + "> cannot be written: " + reason + "\n";
}

TEST(OutputFile, ReplacesWholeKeepingPermissionsAndLeavingNoTemporary) {
  test::ScratchDir dir;
  const std::string path = dir.Write("out.txt", "an earlier output that is longer\n");
  ::chmod(path.c_str(), 0640);
  OutputFile file;
  ASSERT_TRUE(file.Open(path));
  file.Write("new ");
  // Until Commit the old file is what readers see.
  EXPECT_EQ(test::ReadFile(path), "an earlier output that is longer\n");
  file.Write("text\n");
  ASSERT_TRUE(file.Commit());
  EXPECT_EQ(test::ReadFile(path), "new text\n");
  EXPECT_EQ(Mode(path) & 07777, 0640u);
  EXPECT_EQ(Listing(dir.Path("")), std::vector<std::string>{"out.txt"});
}

TEST(OutputFile, UncommittedOutputLeavesTheTargetAsItWas) {
  test::ScratchDir dir;
  const std::string path = dir.Write("out.txt", "kept\n");
  {
    OutputFile file;
    ASSERT_TRUE(file.Open(path));
    file.Write(std::string(3 << 20, 'A'));  // past the buffer: bytes reached the disk
  }
  EXPECT_EQ(test::ReadFile(path), "kept\n");
  {
    OutputFile file;
    ASSERT_TRUE(file.Open(dir.Path("new.txt")));
    file.Write("never committed");
  }
  EXPECT_EQ(Listing(dir.Path("")), std::vector<std::string>{"out.txt"});
}

// Pieces of every size around the buffer's limits arrive in order: the gathered and the
// straight paths against one plain string.
TEST(OutputFile, PiecesOfAnySizeArriveInOrder) {
  test::ScratchDir dir;
  std::mt19937 random(13);
  std::uniform_int_distribution<std::size_t> size(0, 400000);
  std::string expected;
  OutputFile file;
  ASSERT_TRUE(file.Open(dir.Path("out")));
  for (int i = 0; i < 40; ++i) {
    std::string piece(i % 3 == 0 ? size(random) : size(random) % 200, 'a' + (i % 26));
    expected += piece;
    file.Write(piece);
  }
  ASSERT_TRUE(file.Commit());
  EXPECT_EQ(test::ReadFile(dir.Path("out")), expected);
}

TEST(OutputFile, TargetsThatCannotBeWrittenAreReportedAndKept) {
  test::ScratchDir dir;
  const std::string readOnly = dir.Write("ro.txt", "read only\n");
  ::chmod(readOnly.c_str(), 0444);
  ::mkdir(dir.Path("folder").c_str(), 0755);
  const std::string missing = dir.Path("no/such/out.txt");
  const struct {
    std::string name;
    OutputMode mode;
    const char* reason;
  } cases[] = {
      {readOnly, OutputMode::kReplace, "Permission denied"},
      {readOnly, OutputMode::kAppend, "Permission denied"},
      {missing, OutputMode::kReplace, "No such file or directory"},
      {missing, OutputMode::kAppend, "No such file or directory"},
      {dir.Path("folder"), OutputMode::kReplace, "Is a directory"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    OutputFile file;
    CaptureStderr();
    EXPECT_FALSE(file.Open(c.name, c.mode));
    file.Write("lost");
    EXPECT_FALSE(file.Commit());
    EXPECT_EQ(GetCapturedStderr(), Message(c.name, c.reason));  // once, not twice
  }
  EXPECT_EQ(test::ReadFile(readOnly), "read only\n");
  EXPECT_EQ(Mode(readOnly) & 07777, 0444u);
  // A caller with a message of its own hears nothing.
  OutputFile quiet;
  CaptureStderr();
  EXPECT_FALSE(quiet.Open(readOnly, OutputMode::kReplace, OpenFailure::kQuiet));
  EXPECT_EQ(GetCapturedStderr(), "");
}

TEST(OutputFile, DevicesAreWrittenDirectlyNeverReplaced) {
  for (const OutputMode mode : {OutputMode::kReplace, OutputMode::kAppend}) {
    OutputFile full;
    ASSERT_TRUE(full.Open("/dev/full", mode));
    full.Write("x");
    CaptureStderr();
    EXPECT_FALSE(full.Commit());
    EXPECT_EQ(GetCapturedStderr(), Message("/dev/full", "No space left on device"));
  }
  OutputFile null;
  ASSERT_TRUE(null.Open("/dev/null"));
  null.Write("gone");
  EXPECT_TRUE(null.Commit());
  EXPECT_TRUE(S_ISCHR(Mode("/dev/null")));
  EXPECT_TRUE(S_ISCHR(Mode("/dev/full")));
}

TEST(OutputFile, PipeIsFedNotReplaced) {
  test::ScratchDir dir;
  const std::string fifo = dir.Path("fifo");
  ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
  std::string received;
  std::thread reader([&] { received = test::ReadFile(fifo); });
  OutputFile file;
  ASSERT_TRUE(file.Open(fifo));
  file.Write("through the pipe\n");
  EXPECT_TRUE(file.Commit());
  reader.join();
  EXPECT_EQ(received, "through the pipe\n");
  EXPECT_TRUE(S_ISFIFO(Mode(fifo)));
}

TEST(OutputFile, LinkStaysALinkToTheNewContent) {
  test::ScratchDir dir;
  const std::string real = dir.Write("real.txt", "old\n");
  const std::string link = dir.Path("link.txt");
  ASSERT_EQ(::symlink("real.txt", link.c_str()), 0);
  ASSERT_TRUE(WriteFile(link, "new\n"));
  EXPECT_TRUE(std::filesystem::is_symlink(link));
  EXPECT_EQ(test::ReadFile(real), "new\n");
}

TEST(OutputFile, AppendAddsWholeOrCutsBackToTheOldSize) {
  test::ScratchDir dir;
  const std::string path = dir.Write("log.txt", std::string(1000, 'o'));
  ASSERT_TRUE(WriteFile(path, "first\n", OutputMode::kAppend));
  EXPECT_EQ(test::ReadFile(path), std::string(1000, 'o') + "first\n");
  // A file size limit of 2 KB makes the write of 3 KB stop part way, as a full disk does.
  const int status = InChild([&] {
    const struct rlimit limit { 2048, 2048 };
    ::setrlimit(RLIMIT_FSIZE, &limit);
    std::signal(SIGXFSZ, SIG_IGN);
    ::_exit(WriteFile(path, std::string(3000, 'x'), OutputMode::kAppend) ? 0 : 1);
  });
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 1);
  EXPECT_EQ(test::ReadFile(path), std::string(1000, 'o') + "first\n");
}

// The temporary file goes when a termination signal ends the process before it is in place.
TEST(OutputFile, TemporaryGoesWithTheProcess) {
  test::ScratchDir dir;
  const std::string path = dir.Write("out.txt", "kept\n");
  const int killed = InChild([&] {
    static OutputFile file;
    file.Open(path);
    file.Write(std::string(2 << 20, 'x'));
    std::raise(SIGTERM);
  });
  ASSERT_TRUE(WIFSIGNALED(killed));
  EXPECT_EQ(WTERMSIG(killed), SIGTERM);
  EXPECT_EQ(test::ReadFile(path), "kept\n");
  EXPECT_EQ(Listing(dir.Path("")), std::vector<std::string>{"out.txt"});
}

}  // namespace
}  // namespace genetrain
