#include "common/GzipDecoder.h"

#include "TestSupport.h"
#include "common/Compressors.h"

namespace genetrain {
namespace {

using Fault = GzipDecoder::Fault;
using test::Decoded;
using test::Gzip;
using test::RandomText;

Decoded Decode(std::string_view packed, std::size_t inStep = std::string_view::npos,
               std::size_t outStep = 1 << 16) {
  return test::Decode(Compression::kGzip, packed, inStep, outStep);
}

TEST(GzipDecoder, PiecesOfAnySizeGiveTheSameText) {
  for (const std::size_t size :
       {std::size_t{0}, std::size_t{1}, std::size_t{3000}, std::size_t{300000}}) {
    const std::string text = RandomText(static_cast<unsigned>(size), size);
    for (const int level : {0, 1, 9}) {
      const std::string packed = Gzip(text, level);
      for (const std::size_t inStep : {std::size_t{1}, std::size_t{7}, packed.size()}) {
        for (const std::size_t outStep : {std::size_t{1}, std::size_t{3}, std::size_t{1} << 16}) {
          if (size > 3000 && inStep * outStep < 7) continue;  // slow and nothing new
          const Decoded decoded = Decode(packed, inStep, outStep);
          EXPECT_EQ(decoded.fault, Fault::kNone) << size << " " << inStep << " " << outStep;
          EXPECT_TRUE(decoded.text == text) << size << " " << inStep << " " << outStep;
        }
      }
    }
  }
}

// Cut anywhere, from the header to the last byte of the trailer: truncated, and what came out
// is the start of the text. Damaged: corrupt.
TEST(GzipDecoder, CutDataIsTruncatedDamagedDataCorrupt) {
  const std::string text = RandomText(4, 5000);
  const std::string packed = Gzip(text);
  for (std::size_t size = 2; size < packed.size(); ++size) {
    const Decoded decoded = Decode(packed.substr(0, size));
    EXPECT_EQ(decoded.fault, Fault::kTruncated) << size;
    EXPECT_TRUE(text.starts_with(decoded.text)) << size;
  }
  // A cut second member as well.
  EXPECT_EQ(Decode(Gzip(text) + packed.substr(0, 30)).fault, Fault::kTruncated);
  EXPECT_EQ(Decode(Gzip(text) + "\x1f").fault, Fault::kTruncated);
  const auto damaged = [&packed](std::size_t pos, char byte) {
    std::string copy = packed;
    copy[pos] = byte;
    return Decode(copy).fault;
  };
  EXPECT_EQ(damaged(2, 7), Fault::kCorrupt);        // unknown compression method
  EXPECT_EQ(damaged(3, '\xe0'), Fault::kCorrupt);   // reserved flag bits
  EXPECT_EQ(damaged(10, '\x07'), Fault::kCorrupt);  // reserved block type
  const std::size_t trailer = packed.size() - 8;
  EXPECT_EQ(damaged(trailer, static_cast<char>(packed[trailer] ^ 1)), Fault::kCorrupt);  // CRC
  EXPECT_EQ(damaged(packed.size() - 1, '\x7f'), Fault::kCorrupt);                        // length
  // Whatever follows a member must be a member: no trailing text, not even zero bytes.
  EXPECT_EQ(Decode(packed + "\n").fault, Fault::kCorrupt);
  EXPECT_EQ(Decode(packed + std::string(512, '\0')).fault, Fault::kCorrupt);
  EXPECT_EQ(Decode(packed + ">plain\nACGT\n", 3, 5).fault, Fault::kCorrupt);
  const Decoded joined = Decode(packed + "\x1f\x8b plain text");
  EXPECT_EQ(joined.fault, Fault::kCorrupt);
  EXPECT_EQ(joined.text, text);
}

// Found by the fuzzer: a back reference before the start of the output, on which the decoder
// once read the library's counts of what was left as if they were valid.
TEST(GzipDecoder, ReferenceBeforeTheStartIsCorrupt) {
  const std::string packed(
      "\x1f\x8b\x08\x00\x00\x00\x00\x00\x00\x03\xb3\xab\xe0\x72\x74\x76\x0f\xf1\xf3\xe3\xb2\x4b"
      "\xcc\xc9\xf1\xe3\xf2\xf3\xcb\x0b\x8a\xe4\xb2\x4b\xcd\x2d\x28\xa9\xe4\xb2\xcb\x55\xc8\xc9"
      "\x2f\x4f\x2d\xe2\x4a\x4c\x4e\x0f\xe5\x2a\x05\x49\x14\xe5\x97\xe6\xa5\x70\x39\x82\xa1\x33"
      "\x97\x5d\x46\x62\x4e\x1a\xd0\x1c\x00\x08\xe0\x02\x00\x84\xec\x62\xa1\x4d\x00\x00\x00",
      87);
  EXPECT_EQ(Decode(packed).fault, Fault::kCorrupt);
  EXPECT_EQ(Decode(packed, 1, 1).fault, Fault::kCorrupt);
}

}  // namespace
}  // namespace genetrain
