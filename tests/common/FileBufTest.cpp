#include "common/FileBuf.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdio>
#include <string>
#include <thread>

#include "TestSupport.h"

namespace genetrain {
namespace {

using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

TEST(FileBuf, EmptyFileIsOneZeroByte) {
  test::ScratchDir dir;
  FileBuf buf;
  ASSERT_TRUE(buf.Load(dir.Write("empty", "").c_str()));
  ASSERT_NE(buf.Data(), nullptr);
  EXPECT_EQ(buf.End(), buf.Data());
  EXPECT_EQ(*buf.End(), '\0');
}

TEST(FileBuf, KeepsEveryByteAndAddsAZero) {
  test::ScratchDir dir;
  const std::string content("a\0b\r\n\xff", 6);
  FileBuf buf;
  ASSERT_TRUE(buf.Load(dir.Write("bytes", content).c_str()));
  EXPECT_EQ(buf.View(), content);
  EXPECT_EQ(buf.End() - buf.Data(), 6);
  EXPECT_EQ(*buf.End(), '\0');
}

TEST(FileBuf, SecondLoadReplacesTheFirst) {
  test::ScratchDir dir;
  FileBuf buf;
  ASSERT_TRUE(buf.Load(dir.Write("long", "a longer first content").c_str()));
  ASSERT_TRUE(buf.Load(dir.Write("short", "second").c_str()));
  EXPECT_EQ(buf.View(), "second");
  CaptureStderr();
  EXPECT_FALSE(buf.Load(dir.Path("none").c_str()));
  GetCapturedStderr();
  EXPECT_EQ(buf.Size(), 0u);
}

TEST(FileBuf, MessagesInTheOrderOfTheChecks) {
  test::ScratchDir dir;
  FileBuf buf;
  CaptureStderr();
  EXPECT_FALSE(buf.Load(nullptr));
  EXPECT_FALSE(buf.Load(""));
  EXPECT_FALSE(buf.Load(dir.Path("none").c_str()));
  EXPECT_FALSE(buf.Load(dir.Path("none/deeper").c_str()));
  EXPECT_EQ(GetCapturedStderr(),
            "error: file name is missing\nerror: file name is missing\n"
            "error: file <" +
                dir.Path("none") +
                "> is not found\n"
                "error: file <" +
                dir.Path("none/deeper") + "> is not found\n");
}

TEST(FileBuf, DirectoryPassesTheStatusTestAndFailsOnReading) {
  test::ScratchDir dir;
  FileBuf buf;
  CaptureStderr();
  EXPECT_FALSE(buf.Load(dir.Path("").c_str()));
  EXPECT_EQ(GetCapturedStderr(), "error: on reading file <" + dir.Path("") + ">\n");
  EXPECT_EQ(buf.Data(), nullptr);
}

TEST(FileBuf, PipeIsReadToItsEnd) {
  test::ScratchDir dir;
  const std::string fifo = dir.Path("fifo");
  ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
  const std::string content(200000, 'x');  // more than one chunk and more than a pipe holds
  std::thread writer([&] {
    std::FILE* out = std::fopen(fifo.c_str(), "wb");
    std::fwrite(content.data(), 1, content.size(), out);
    std::fclose(out);
  });
  FileBuf buf;
  const bool loaded = buf.Load(fifo.c_str());
  writer.join();
  ASSERT_TRUE(loaded);
  EXPECT_EQ(buf.View(), content);
  EXPECT_EQ(*buf.End(), '\0');
}

// Compressed files load as their content: the block outgrows the size of the file.
TEST(FileBuf, GzipContentIsDecoded) {
  test::ScratchDir dir;
  std::string content(1 << 20, 'A');
  content.replace(1000, 4, std::string("\0\x1f\x8b\r", 4));
  FileBuf buf;
  ASSERT_TRUE(buf.Load(dir.Write("in.gz", test::Gzip(content) + test::Gzip(">b\n")).c_str()));
  EXPECT_TRUE(buf.View() == content + ">b\n");
  EXPECT_EQ(*buf.End(), '\0');
  ASSERT_TRUE(buf.Load(dir.Write("empty.gz", test::Gzip("")).c_str()));
  ASSERT_NE(buf.Data(), nullptr);
  EXPECT_EQ(buf.Size(), 0u);
  EXPECT_EQ(*buf.End(), '\0');
  // The name says nothing: only the first bytes do.
  ASSERT_TRUE(buf.Load(dir.Write("plain.gz", ">a\nACGT\n").c_str()));
  EXPECT_EQ(buf.View(), ">a\nACGT\n");
  ASSERT_TRUE(buf.Load(dir.Write("in.fa", test::Gzip(">a\nACGT\n")).c_str()));
  EXPECT_EQ(buf.View(), ">a\nACGT\n");
}

// Bad data give the gzip message, then the loader's own, and an empty buffer.
TEST(FileBuf, BadGzipFailsLikeAReadError) {
  test::ScratchDir dir;
  std::string corrupt = test::Gzip(std::string(5000, 'C'));
  corrupt[10] = 7;
  const std::pair<std::string, std::string> cases[] = {
      {corrupt, "corrupt"}, {test::Gzip(">a\nACGT\n").substr(0, 20), "truncated"}};
  FileBuf buf;
  for (const auto& [stored, what] : cases) {
    const std::string path = dir.Write("bad.gz", stored);
    CaptureStderr();
    EXPECT_FALSE(buf.Load(path.c_str()));
    EXPECT_EQ(GetCapturedStderr(), "error: " + what + " gzip data in file <" + path +
                                       ">\nerror: on reading file <" + path + ">\n");
    EXPECT_EQ(buf.Data(), nullptr);
    EXPECT_EQ(buf.Size(), 0u);
  }
}

TEST(FileBuf, PipeWithGzipIsDecoded) {
  test::ScratchDir dir;
  const std::string fifo = dir.Path("fifo");
  ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
  const std::string content(300000, 'g');
  std::thread writer([&] {
    const std::string packed = test::Gzip(content);
    std::FILE* out = std::fopen(fifo.c_str(), "wb");
    std::fwrite(packed.data(), 1, packed.size(), out);
    std::fclose(out);
  });
  FileBuf buf;
  const bool loaded = buf.Load(fifo.c_str());
  writer.join();
  ASSERT_TRUE(loaded);
  EXPECT_TRUE(buf.View() == content);
}

TEST(FileBuf, RestOfAStreamNamesTheFileIfGiven) {
  test::ScratchDir dir;
  const std::string path = dir.Write("cut.gz", test::Gzip("1 10\n").substr(0, 12));
  std::FILE* file = std::fopen(path.c_str(), "rb");
  std::string text;
  CaptureStderr();
  EXPECT_FALSE(FileBuf::ReadRest(file, text, path.c_str()));
  EXPECT_EQ(GetCapturedStderr(), "error: truncated gzip data in file <" + path + ">\n");
  std::fclose(file);
}

}  // namespace
}  // namespace genetrain
