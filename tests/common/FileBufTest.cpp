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

}  // namespace
}  // namespace genetrain
