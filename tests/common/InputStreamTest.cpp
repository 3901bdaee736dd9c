#include "common/InputStream.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdio>
#include <random>
#include <string>
#include <thread>

#include "TestSupport.h"

namespace genetrain {
namespace {

using test::Gzip;
using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

std::string RandomBytes(unsigned seed, std::size_t size) {
  std::mt19937 random(seed);
  std::string bytes(size, '\0');
  for (char& byte : bytes) byte = static_cast<char>(random() % 7 == 0 ? 0x1f : random());
  return bytes;
}

// The whole content, read in blocks of the given size; every block but the last is full.
std::string ReadInBlocks(InputStream& input, std::size_t blockSize) {
  std::string content;
  std::string block(blockSize, '\0');
  std::size_t got = blockSize;
  while (got == blockSize) {
    got = input.Read(block);
    content.append(block, 0, got);
  }
  EXPECT_EQ(input.Read(block), 0u);  // and nothing after the end
  return content;
}

struct Sample {
  std::string name;
  std::string stored;   // the file's bytes
  std::string content;  // what a reader must see
};

std::vector<Sample> Samples() {
  const std::string big = RandomBytes(1, 3'000'000);  // more than a piece of compressed input
  return {
      {"empty", "", ""},
      {"one 0x1f", "\x1f", "\x1f"},
      {"0x1f then text", "\x1f>a\nACGT\n", "\x1f>a\nACGT\n"},
      {"magic reversed", "\x8b\x1f", "\x8b\x1f"},
      {"plain", big, big},
      {"gzip", Gzip(big, 1), big},
      {"gzip of nothing", Gzip(""), ""},
      {"joined", Gzip(">a\nAC") + Gzip("") + Gzip("GT\n>b\n") + Gzip(big), ">a\nACGT\n>b\n" + big},
  };
}

TEST(InputStream, BlocksOfAnySizeGiveTheContent) {
  test::ScratchDir dir;
  for (const Sample& sample : Samples()) {
    const std::string path = dir.Write("in", sample.stored);
    for (const std::size_t blockSize : {1, 2, 3, 7, 4096, 1 << 20}) {
      if (blockSize < 4096 && sample.content.size() > 100000) continue;  // slow, nothing new
      InputStream input;
      ASSERT_TRUE(input.Open(path.c_str()));
      EXPECT_TRUE(ReadInBlocks(input, blockSize) == sample.content)
          << sample.name << ", blocks of " << blockSize;
      EXPECT_FALSE(input.Failed()) << sample.name;
      EXPECT_EQ(input.Compressed(), sample.stored.starts_with("\x1f\x8b")) << sample.name;
    }
  }
}

TEST(InputStream, RestOfAnOpenStream) {
  test::ScratchDir dir;
  for (const Sample& sample : Samples()) {
    std::FILE* file = std::fopen(dir.Write("in", sample.stored).c_str(), "rb");
    std::string text = "kept ";
    InputStream input(file, nullptr);
    EXPECT_TRUE(input.ReadRest(text)) << sample.name;
    EXPECT_TRUE(text == "kept " + sample.content) << sample.name;
    std::fclose(file);
  }
}

TEST(InputStream, PipeWithGzipIsDecoded) {
  test::ScratchDir dir;
  const std::string fifo = dir.Path("fifo");
  ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
  const std::string content = RandomBytes(2, 500000);
  const std::string packed = Gzip(content) + Gzip(">x\n");
  std::thread writer([&] {
    std::FILE* out = std::fopen(fifo.c_str(), "wb");
    for (std::size_t pos = 0; pos < packed.size(); pos += 1000) {  // in small writes
      std::fwrite(packed.data() + pos, 1, std::min<std::size_t>(1000, packed.size() - pos), out);
      std::fflush(out);
    }
    std::fclose(out);
  });
  InputStream input;
  ASSERT_TRUE(input.Open(fifo.c_str()));
  EXPECT_FALSE(input.Regular());
  const std::string read = ReadInBlocks(input, 65536);
  writer.join();
  EXPECT_TRUE(read == content + ">x\n");
}

TEST(InputStream, OpeningMessagesAreTheLoaders) {
  test::ScratchDir dir;
  InputStream input;
  CaptureStderr();
  EXPECT_FALSE(input.Open(nullptr));
  EXPECT_FALSE(input.Open(""));
  EXPECT_FALSE(input.Open(dir.Path("none").c_str()));
  EXPECT_EQ(GetCapturedStderr(),
            "error: file name is missing\nerror: file name is missing\n"
            "error: file <" +
                dir.Path("none") + "> is not found\n");
  const std::string path = dir.Write("in", "12345");
  InputStream found;
  ASSERT_TRUE(found.Find(path.c_str()));
  EXPECT_TRUE(found.Regular());
  EXPECT_EQ(found.FileSize(), 5u);
}

// A directory opens but cannot be read: no gzip message, the caller reports the reading.
TEST(InputStream, ReadingADirectoryFails) {
  test::ScratchDir dir;
  InputStream input;
  ASSERT_TRUE(input.Open(dir.Path("").c_str()));
  std::string block(10, '\0');
  CaptureStderr();
  EXPECT_EQ(input.Read(block), 0u);
  EXPECT_TRUE(input.Failed());
  input.PrintReadError();
  EXPECT_EQ(GetCapturedStderr(), "error: on reading file <" + dir.Path("") + ">\n");
}

// The fault is told once, naming the file when there is a name, and the content stops there.
TEST(InputStream, BadGzipIsReportedOnce) {
  test::ScratchDir dir;
  const std::string content = RandomBytes(3, 200000);
  std::string corrupt = Gzip(content);
  corrupt[corrupt.size() - 6] ^= 0x10;  // the check sum
  const std::string cut = Gzip(content).substr(0, 1000);
  const std::pair<std::string, std::string> cases[] = {{corrupt, "corrupt"}, {cut, "truncated"}};
  for (const auto& [stored, what] : cases) {
    const std::string path = dir.Write("in.gz", stored);
    InputStream input;
    ASSERT_TRUE(input.Open(path.c_str()));
    CaptureStderr();
    const std::string read = ReadInBlocks(input, 4096);
    EXPECT_EQ(GetCapturedStderr(), "error: " + what + " gzip data in file <" + path + ">\n");
    EXPECT_TRUE(input.Failed());
    EXPECT_TRUE(content.starts_with(read));

    std::FILE* file = std::fopen(path.c_str(), "rb");
    std::string text;
    InputStream unnamed(file, nullptr);
    CaptureStderr();
    EXPECT_FALSE(unnamed.ReadRest(text));
    EXPECT_EQ(GetCapturedStderr(), "error: " + what + " gzip data\n");
    std::fclose(file);
  }
}

}  // namespace
}  // namespace genetrain
