#include "common/Output.h"

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <thread>

#include "TestSupport.h"

namespace genetrain {
namespace {

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

TEST(OutputFile, ReplacesWholeOnCommitOnlyKeepingPermissions) {
  test::ScratchDir dir;
  const std::string path = dir.Write("out.txt", "an earlier output that is longer\n");
  ::chmod(path.c_str(), 0640);
  {
    OutputFile dropped;  // past the buffer: bytes reached the disk, and go
    ASSERT_TRUE(dropped.Open(path));
    dropped.Write(std::string(3 << 20, 'A'));
  }
  OutputFile file;
  ASSERT_TRUE(file.Open(path));
  file.Write("new ");
  EXPECT_EQ(test::ReadFile(path), "an earlier output that is longer\n");  // until Commit
  file.Write("text\n");
  ASSERT_TRUE(file.Commit());
  EXPECT_EQ(test::ReadFile(path), "new text\n");
  EXPECT_EQ(Mode(path) & 07777, 0640u);
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

// A pipe is fed, not replaced; a link stays a link, to the new content.
TEST(OutputFile, PipeAndLinkStayWhatTheyAre) {
  test::ScratchDir dir;
  const std::string fifo = dir.Path("fifo");
  ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
  std::string received;
  std::thread reader([&] { received = test::ReadFile(fifo); });
  EXPECT_TRUE(WriteFile(fifo, "through the pipe\n"));
  reader.join();
  EXPECT_EQ(received, "through the pipe\n");
  EXPECT_TRUE(S_ISFIFO(Mode(fifo)));
  const std::string real = dir.Write("real.txt", "old\n");
  const std::string link = dir.Path("link.txt");
  ASSERT_EQ(::symlink("real.txt", link.c_str()), 0);
  ASSERT_TRUE(WriteFile(link, "new\n"));
  EXPECT_TRUE(std::filesystem::is_symlink(link));
  EXPECT_EQ(test::ReadFile(real), "new\n");
}

// The temporary file goes when a termination signal ends the process before it is in place.
TEST(OutputFile, TemporaryGoesWithTheProcess) {
  test::ScratchDir dir;
  const std::string path = dir.Write("out.txt", "kept\n");
  const pid_t pid = ::fork();
  if (pid == 0) {
    static OutputFile file;
    file.Open(path);
    file.Write(std::string(2 << 20, 'x'));
    std::raise(SIGTERM);
    ::_exit(0);
  }
  int status = 0;
  ::waitpid(pid, &status, 0);
  ASSERT_TRUE(WIFSIGNALED(status));
  EXPECT_EQ(WTERMSIG(status), SIGTERM);
  EXPECT_EQ(test::ReadFile(path), "kept\n");
  EXPECT_EQ(Listing(dir.Path("")), std::vector<std::string>{"out.txt"});
}

}  // namespace
}  // namespace genetrain
