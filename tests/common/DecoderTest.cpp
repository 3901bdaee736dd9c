#include "common/Decoder.h"

#include "TestSupport.h"
#include "common/Compressors.h"

namespace genetrain {
namespace {

using Fault = Decoder::Fault;
using test::Decode;
using test::Decoded;
using test::Pack;
using test::RandomText;

std::string Name(Compression kind) {
  return std::string(CompressionName(kind));
}

TEST(Decoder, EveryCompressionInPiecesOfAnySizeGivesTheText) {
  for (const Compression kind : test::kReadCompressions) {
    for (const std::size_t size : {std::size_t{0}, std::size_t{1}, std::size_t{300000}}) {
      const std::string text = RandomText(static_cast<unsigned>(size), size);
      const std::string packed = Pack(kind, text);
      ASSERT_EQ(SniffCompression(packed.substr(0, kSniffSize)), kind) << Name(kind);
      for (const std::size_t inStep : {std::size_t{1}, std::size_t{7}, packed.size()}) {
        for (const std::size_t outStep : {std::size_t{1}, std::size_t{3}, std::size_t{1} << 16}) {
          if (size > 1 && inStep * outStep < 7) continue;  // slow and nothing new
          const Decoded decoded = Decode(kind, packed, inStep, outStep);
          EXPECT_EQ(decoded.fault, Fault::kNone) << Name(kind) << " " << size << " " << inStep;
          EXPECT_TRUE(decoded.text == text) << Name(kind) << " " << size << " " << inStep;
        }
      }
    }
  }
}

// Files joined with cat: gzip members, bzip2 streams, xz streams (with and without xz's stream
// padding between them), zstd frames; an empty member anywhere changes nothing.
TEST(Decoder, JoinedMembersGiveTheJoinedText) {
  const std::string first = RandomText(1, 70000);
  const std::string second = RandomText(2, 1000);
  for (const Compression kind : test::kReadCompressions) {
    const std::string joined = Pack(kind, first) + Pack(kind, "") + Pack(kind, second);
    for (const std::size_t inStep :
         {std::size_t{1}, std::size_t{2}, std::size_t{5}, joined.size()}) {
      const Decoded decoded = Decode(kind, joined, inStep, inStep < 5 ? 4096 : 999);
      EXPECT_EQ(decoded.fault, Fault::kNone) << Name(kind);
      EXPECT_TRUE(decoded.text == first + second) << Name(kind);
    }
  }
  const std::string padded = test::Xz(first) + std::string(8, '\0') + test::Xz(second);
  EXPECT_TRUE(Decode(Compression::kXz, padded).text == first + second);
  EXPECT_EQ(Decode(Compression::kXz, padded).fault, Fault::kNone);
  EXPECT_EQ(Decode(Compression::kXz, test::Xz(first) + std::string(4, '\0')).fault, Fault::kNone);
  EXPECT_EQ(Decode(Compression::kXz, test::Xz(first) + std::string(3, '\0')).fault,
            Fault::kCorrupt);
  EXPECT_EQ(
      Decode(Compression::kXz, test::Xz(first) + std::string(6, '\0') + test::Xz(second)).fault,
      Fault::kCorrupt);
}

// Cut anywhere: truncated, and what came out is the start of the text. Followed by anything but
// another member: corrupt, after the whole text.
TEST(Decoder, CutDataIsTruncatedTrailingBytesCorrupt) {
  const std::string text = RandomText(4, 3000);
  for (const Compression kind : test::kReadCompressions) {
    const std::string packed = Pack(kind, text);
    for (std::size_t size = 1; size < packed.size(); ++size) {
      const Decoded decoded = Decode(kind, packed.substr(0, size));
      EXPECT_EQ(decoded.fault, Fault::kTruncated) << Name(kind) << " cut at " << size;
      EXPECT_TRUE(text.starts_with(decoded.text)) << Name(kind) << " cut at " << size;
    }
    EXPECT_EQ(Decode(kind, packed + packed.substr(0, packed.size() / 2)).fault, Fault::kTruncated)
        << Name(kind);
    for (const std::string_view trailer : {"\n", ">plain\nACGT\n", "\x1f\x8b plain"}) {
      const Decoded decoded = Decode(kind, packed + std::string(trailer), 3, 5);
      EXPECT_EQ(decoded.fault, Fault::kCorrupt) << Name(kind) << " " << trailer;
      EXPECT_TRUE(decoded.text == text) << Name(kind);
    }
    std::string damaged = packed;
    damaged[packed.size() / 2] = static_cast<char>(damaged[packed.size() / 2] ^ 0x55);
    EXPECT_NE(Decode(kind, damaged).fault, Fault::kNone) << Name(kind);
  }
}

// Found by the fuzzer: a zstd frame whose header promises 16 bytes and whose one block is empty
// (its check sum that of no bytes) passed when decoded in small pieces of output and failed in
// large ones. Every reader must find it corrupt, whatever its block size.
TEST(Decoder, ZstdFrameShorterThanItsHeaderSaysIsCorruptInAnyPieces) {
  const std::string frame("\x28\xb5\x2f\xfd\x24\x10\x01\x00\x00\x99\xe9\xd8\x51", 13);
  for (const std::size_t outStep : {std::size_t{1}, std::size_t{8}, std::size_t{1} << 16}) {
    EXPECT_EQ(Decode(Compression::kZstd, frame, std::string_view::npos, outStep).fault,
              Fault::kCorrupt)
        << outStep;
    EXPECT_EQ(Decode(Compression::kZstd, test::Zstd(">a\n") + frame, 1, outStep).fault,
              Fault::kCorrupt)
        << outStep;
  }
}

// The magic bytes, at their edges: a text never passes for compressed, a compressed file never
// for text, and the known compressions that are not read are still told.
TEST(Decoder, SniffTellsEachMagicAndNothingElse) {
  using enum Compression;
  const std::pair<std::string_view, Compression> cases[] = {
      {"", kNone},
      {">a\nACGT\n", kNone},
      {"\x1f", kNone},
      {"\x1f\x8b", kGzip},
      {"\x1f\x9d\x90", kLzw},
      {"BZh91AY&SY\x01", kBzip2},
      {"BZh9\x17\x72\x45\x38\x50\x90", kBzip2},  // the empty stream
      {"BZh9", kBzip2},                          // cut after the header: a truncated bzip2 file
      {"BZh91AY", kBzip2},
      {"BZh0", kNone},
      {"BZh9ACGT", kNone},
      {"BZh91AYACGT", kNone},
      {{"\xfd"
        "7zXZ\0\x00",
        7},
       kXz},
      {"\xfd"
       "7zXZ",
       kNone},
      {"\x28\xb5\x2f\xfd", kZstd},
      {"\x5a\x2a\x4d\x18", kZstd},  // a skippable frame
      {"\x28\xb5\x2f", kNone},
      {"PK\x03\x04", kZip},
      {"7z\xbc\xaf\x27\x1c", kSevenZip},
      {"Rar!\x1a\x07\x01", kRar},
      {"\x04\x22\x4d\x18", kLz4},
      {"LZIP\x01", kLzip},
      {"LZIP is a name", kNone},
  };
  for (const auto& [start, kind] : cases) {
    EXPECT_EQ(SniffCompression(start), kind) << start;
    EXPECT_EQ(MakeDecoder(kind) != nullptr,
              kind == kGzip || kind == kBzip2 || kind == kXz || kind == kZstd);
  }
}

}  // namespace
}  // namespace genetrain
