#include "common/InputStream.h"

#include <cstdio>

#include "TestSupport.h"
#include "common/Compressors.h"
#include "common/FileBuf.h"

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
      {"bzip2", test::Bzip2(big, 1), big},
      {"bzip2 joined", test::Bzip2(">a\nAC") + test::Bzip2("GT\n") + test::Bzip2(big),
       ">a\nACGT\n" + big},
      {"xz", test::Xz(big), big},
      {"xz joined", test::Xz(">a\nAC") + test::Xz("GT\n") + test::Xz(big), ">a\nACGT\n" + big},
      {"zstd", test::Zstd(big), big},
      {"zstd joined", test::Zstd(">a\nAC") + test::Zstd("GT\n") + test::Zstd(big),
       ">a\nACGT\n" + big},
      {"bzip2 magic then text", "BZh9>a\nACGT\n", "BZh9>a\nACGT\n"},
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
      EXPECT_EQ(input.Compressed(), sample.stored != sample.content) << sample.name;
    }
    std::FILE* file = std::fopen(path.c_str(), "rb");
    std::string text = "kept ";
    InputStream input(file, nullptr);
    EXPECT_TRUE(input.ReadRest(text)) << sample.name;
    EXPECT_TRUE(text == "kept " + sample.content) << sample.name;
    std::fclose(file);
  }
}

// A compression that is not read fails the reading at once, named, before a byte comes out; the
// loader adds its reading message. Cut compressed data is named with its compression.
TEST(InputStream, RefusedAndCutCompressionsAreNamed) {
  test::ScratchDir dir;
  const std::string sevenZip =
      dir.Write("in.7z", std::string("7z\xbc\xaf\x27\x1c\0\4", 8) + "ACGT");
  const test::Outcome refused = test::Capture([&] {
    InputStream input;
    std::string block(4096, '\0');
    return input.Open(sevenZip.c_str()) && input.Read(block) == 0 && input.Failed();
  });
  EXPECT_TRUE(refused.ok);
  EXPECT_EQ(refused.err,
            "error: file <" + sevenZip + "> is compressed with 7z, which cannot be read\n");
  const test::Outcome loaded = test::Capture([&] {
    FileBuf file;
    return file.Load(sevenZip.c_str());
  });
  EXPECT_FALSE(loaded.ok);
  EXPECT_EQ(loaded.err, "error: file <" + sevenZip +
                            "> is compressed with 7z, which cannot be read\n" +
                            "error: on reading file <" + sevenZip + ">\n");
  const std::string text(5000, 'A');
  for (const Compression kind : test::kReadCompressions) {
    const std::string packed = test::Pack(kind, text);
    const std::string path = dir.Write("cut", packed.substr(0, packed.size() - 1));
    const test::Outcome cut = test::Capture([&] {
      FileBuf file;
      return file.Load(path.c_str());
    });
    EXPECT_FALSE(cut.ok);
    EXPECT_EQ(cut.err, "error: truncated " + std::string(CompressionName(kind)) +
                           " data in file <" + path + ">\nerror: on reading file <" + path + ">\n");
  }
}

}  // namespace
}  // namespace genetrain
