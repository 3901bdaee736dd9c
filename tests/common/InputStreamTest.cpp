#include "common/InputStream.h"

#include <cstdio>

#include "TestSupport.h"

namespace genetrain {
namespace {

using test::Gzip;

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

// Read in blocks of any size, or all that remains of an open stream after what the text holds.
TEST(InputStream, BlocksOfAnySizeOrTheRestGiveTheContent) {
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
    std::FILE* file = std::fopen(path.c_str(), "rb");
    std::string text = "kept ";
    InputStream input(file, nullptr);
    EXPECT_TRUE(input.ReadRest(text)) << sample.name;
    EXPECT_TRUE(text == "kept " + sample.content) << sample.name;
    std::fclose(file);
  }
}

}  // namespace
}  // namespace genetrain
