#include "common/Output.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "TestSupport.h"
#include "common/BackgroundWriter.h"

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

// Pieces of every size around the buffer's limits arrive in order, through the gathering buffer
// and the writing thread: against one plain string.
TEST(OutputFile, PiecesOfAnySizeArriveInOrder) {
  test::ScratchDir dir;
  std::mt19937 random(13);
  std::uniform_int_distribution<std::size_t> size(0, 1500000);
  std::string expected;
  OutputFile file;
  ASSERT_TRUE(file.Open(dir.Path("out")));
  for (int i = 0; i < 60; ++i) {
    std::string piece(i % 3 == 0 ? size(random) : size(random) % 200, 'a' + (i % 26));
    expected += piece;
    file.Write(piece);
  }
  EXPECT_EQ(test::ReadFile(dir.Path("out")), "");  // nothing in place before Commit
  ASSERT_TRUE(file.Commit());
  EXPECT_EQ(test::ReadFile(dir.Path("out")), expected);
}

// A write that fails on the writing thread (here beyond the process's file size limit) fails
// Commit with the usual message, leaves the target as it was and no temporary file behind.
TEST(OutputFile, FailureOnTheWritingThreadFailsCommit) {
  test::ScratchDir dir;
  const std::string path = dir.Write("out.txt", "kept\n");
  const pid_t pid = ::fork();
  if (pid == 0) {
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{rlim_t{3} << 20, rlim_t{3} << 20};
    ::setrlimit(RLIMIT_FSIZE, &limit);
    ::close(2);
    ::open(dir.Path("stderr.txt").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    OutputFile file;
    file.Open(path);
    for (int i = 0; i < 12; ++i) file.Write(std::string(1 << 20, 'x'));
    ::_exit(file.Commit() ? 1 : 0);
  }
  int status = 0;
  ::waitpid(pid, &status, 0);
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 0);
  EXPECT_EQ(test::ReadFile(path), "kept\n");
  EXPECT_EQ(test::ReadFile(dir.Path("stderr.txt")),
            "error: file <" + path + "> cannot be written: File too large\n");
  EXPECT_EQ(dir.Entries(), 2);
}

// After a failure the writer drops what it is given rather than leaving Push waiting.
TEST(BackgroundWriter, FailureDropsTheRestAndIsReportedOnce) {
  test::ScratchDir dir;
  const std::string path = dir.Write("in.txt", "");
  const int fd = ::open(path.c_str(), O_RDONLY);
  ASSERT_GE(fd, 0);
  BackgroundWriter writer(fd);
  std::string buffer;
  for (int i = 0; i < 20; ++i) {
    buffer.assign(1000, 'x');
    buffer = writer.Push(std::move(buffer));
    EXPECT_TRUE(buffer.empty());
  }
  EXPECT_EQ(writer.Finish(), EBADF);
  EXPECT_EQ(writer.Finish(), EBADF);
  ::close(fd);
}

// A new name is written unnamed: a process killed outright leaves nothing behind; a name that
// someone else makes meanwhile is replaced whole; the umask sets the new file's permissions, as
// it does for any file created; and a bare name lands in the working folder.
TEST(OutputFile, NewNamesAppearWholeOrNotAtAll) {
  test::ScratchDir dir;
  const std::string path = dir.Path("new.txt");
  const pid_t pid = ::fork();
  if (pid == 0) {
    static OutputFile file;
    file.Open(path);
    file.Write(std::string(3 << 20, 'x'));
    std::raise(SIGKILL);
  }
  int status = 0;
  ::waitpid(pid, &status, 0);
  ASSERT_TRUE(WIFSIGNALED(status));
  EXPECT_EQ(dir.Entries(), 0);

  const mode_t mask = ::umask(027);
  OutputFile file;
  ASSERT_TRUE(file.Open(path));
  file.Write("ours\n");
  dir.Write("new.txt", "theirs, made meanwhile\n");
  ASSERT_TRUE(file.Commit());
  ::umask(mask);
  EXPECT_EQ(test::ReadFile(path), "ours\n");
  EXPECT_EQ(dir.Entries(), 1);
  ASSERT_TRUE(WriteFile(dir.Path("fresh.txt"), "fresh\n"));
  struct stat fresh {};
  ::stat(dir.Path("fresh.txt").c_str(), &fresh);
  EXPECT_EQ(fresh.st_mode & 0777, 0666u & ~mask);

  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(dir.Path(""));
  const bool bare = WriteFile("bare.txt", "bare\n");
  std::filesystem::current_path(before);
  EXPECT_TRUE(bare);
  EXPECT_EQ(test::ReadFile(dir.Path("bare.txt")), "bare\n");
  EXPECT_EQ(dir.Entries(), 3);
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
