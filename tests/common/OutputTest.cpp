#include "common/Output.h"

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "TestSupport.h"

namespace genetrain {
namespace {

TEST(OutputFile, ReplacesWholeOnCommitOnlyKeepingPermissionsAndLinks) {
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
  struct stat status {};
  ::stat(path.c_str(), &status);
  EXPECT_EQ(status.st_mode & 07777, 0640u);
  EXPECT_EQ(dir.Entries(), 1);
  // A link stays a link, to the new content.
  const std::string link = dir.Path("link.txt");
  ASSERT_EQ(::symlink("out.txt", link.c_str()), 0);
  ASSERT_TRUE(WriteFile(link, "newer\n"));
  EXPECT_TRUE(std::filesystem::is_symlink(link));
  EXPECT_EQ(test::ReadFile(path), "newer\n");
  EXPECT_EQ(dir.Entries(), 2);
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
  EXPECT_EQ(dir.Entries(), 1);
}

}  // namespace
}  // namespace genetrain
