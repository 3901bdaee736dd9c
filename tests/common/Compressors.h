#ifndef GENETRAIN_TESTS_COMMON_COMPRESSORS_H
#define GENETRAIN_TESTS_COMMON_COMPRESSORS_H

#include <bzlib.h>
#include <lzma.h>
#include <zstd.h>

#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <string_view>

#include "TestSupport.h"
#include "common/Decoder.h"

namespace genetrain::test {

// The samples of the decoder tests, made by each format's own library: one member (gzip member,
// bzip2 stream, xz stream, zstd frame) holding the text.

inline std::string Bzip2(std::string_view text, int blockSize = 9) {
  unsigned size = static_cast<unsigned>(text.size() + text.size() / 100 + 600);
  std::string packed(size, '\0');
  BZ2_bzBuffToBuffCompress(packed.data(), &size, const_cast<char*>(text.data()),
                           static_cast<unsigned>(text.size()), blockSize, 0, 0);
  packed.resize(size);
  return packed;
}

inline std::string Xz(std::string_view text, std::uint32_t preset = 1) {
  std::string packed(lzma_stream_buffer_bound(text.size()), '\0');
  std::size_t size = 0;
  lzma_easy_buffer_encode(preset, LZMA_CHECK_CRC64, nullptr,
                          reinterpret_cast<const std::uint8_t*>(text.data()), text.size(),
                          reinterpret_cast<std::uint8_t*>(packed.data()), &size, packed.size());
  packed.resize(size);
  return packed;
}

// With the content checksum, as the zstd program writes it.
inline std::string Zstd(std::string_view text, int level = 3) {
  std::string packed(ZSTD_compressBound(text.size()), '\0');
  ZSTD_CCtx* context = ZSTD_createCCtx();
  ZSTD_CCtx_setParameter(context, ZSTD_c_compressionLevel, level);
  ZSTD_CCtx_setParameter(context, ZSTD_c_checksumFlag, 1);
  packed.resize(ZSTD_compress2(context, packed.data(), packed.size(), text.data(), text.size()));
  ZSTD_freeCCtx(context);
  return packed;
}

inline std::string Pack(Compression kind, std::string_view text) {
  switch (kind) {
    case Compression::kGzip:
      return Gzip(text);
    case Compression::kBzip2:
      return Bzip2(text);
    case Compression::kXz:
      return Xz(text);
    case Compression::kZstd:
      return Zstd(text);
    default:
      return std::string(text);
  }
}

// What a decoder made of some data, and its verdict.
struct Decoded {
  std::string text;
  Decoder::Fault fault = Decoder::Fault::kNone;
};

// Feeds the data to a decoder of the compression in pieces of `inStep` bytes (all at once by
// default) and takes the output in pieces of `outStep`.
inline Decoded Decode(Compression kind, std::string_view packed,
                      std::size_t inStep = std::string_view::npos, std::size_t outStep = 1 << 16) {
  const std::unique_ptr<Decoder> decoder = MakeDecoder(kind);
  Decoded result;
  std::string out(outStep, '\0');
  for (std::size_t pos = 0; pos <= packed.size(); pos += inStep) {
    std::string_view piece = packed.substr(pos, inStep);
    std::size_t made = outStep;
    while (made == outStep) {  // until the piece is used up and nothing more comes out
      made = decoder->Decode(piece, out);
      result.text.append(out, 0, made);
    }
    EXPECT_TRUE(piece.empty() || decoder->FaultAtEnd() == Decoder::Fault::kCorrupt);
  }
  result.fault = decoder->FaultAtEnd();
  return result;
}

// Letters, line ends and the bytes of the gzip magic, so that the texts hold what could be taken
// for the start of a member.
inline std::string RandomText(unsigned seed, std::size_t size) {
  std::mt19937 random(seed);
  std::string text(size, '\0');
  for (char& byte : text) byte = "ACGTN\n>\0\x1f\x8b"[random() % 10];
  return text;
}

inline constexpr Compression kReadCompressions[] = {Compression::kGzip, Compression::kBzip2,
                                                    Compression::kXz, Compression::kZstd};

}  // namespace genetrain::test

#endif
