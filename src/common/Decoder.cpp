#include "common/Decoder.h"

#include <array>

#include "common/GzipDecoder.h"
#include "common/StreamDecoders.h"

namespace genetrain {

namespace {

struct Magic {
  Compression kind;
  std::string_view bytes;
};

// Every magic holds a byte that no text file starts with, so plain content is never taken for
// compressed. bzip2's three letters and level digit could start a text: its first block's (or
// the empty stream's end) marker must follow.
constexpr std::array kMagics{
    Magic{Compression::kGzip, "\x1f\x8b"},
    Magic{Compression::kXz,
          {"\xfd"
           "7zXZ\0",
           6}},
    Magic{Compression::kZstd, "\x28\xb5\x2f\xfd"},
    Magic{Compression::kZip, "PK\x03\x04"},
    Magic{Compression::kZip, "PK\x05\x06"},  // an empty archive
    Magic{Compression::kSevenZip, "7z\xbc\xaf\x27\x1c"},
    Magic{Compression::kRar, "Rar!\x1a\x07"},
    Magic{Compression::kLz4, "\x04\x22\x4d\x18"},
    Magic{Compression::kLz4, "\x02\x21\x4c\x18"},  // the legacy frame
    Magic{Compression::kLzip, "LZIP\x01"},
    Magic{Compression::kLzw, "\x1f\x9d"},
};

bool IsBzip2(std::string_view start) {
  if (start.size() < 4 || !start.starts_with("BZh") || start[3] < '1' || start[3] > '9') {
    return false;
  }
  // A file cut inside the marker is still a (truncated) bzip2 file.
  const std::string_view marker = start.substr(4, 6);
  return std::string_view("1AY&SY").starts_with(marker) ||
         std::string_view("\x17\x72\x45\x38\x50\x90").starts_with(marker);
}

// zstd's skippable frames (magic 0x184D2A50 to 0x184D2A5F, little-endian) may open a file.
bool IsZstdSkippable(std::string_view start) {
  return start.size() >= 4 && (static_cast<unsigned char>(start[0]) & 0xf0) == 0x50 &&
         start.substr(1, 3) == "\x2a\x4d\x18";
}

}  // namespace

Compression SniffCompression(std::string_view start) {
  for (const Magic& magic : kMagics) {
    if (start.starts_with(magic.bytes)) return magic.kind;
  }
  if (IsBzip2(start)) return Compression::kBzip2;
  if (IsZstdSkippable(start)) return Compression::kZstd;
  return Compression::kNone;
}

std::string_view CompressionName(Compression kind) {
  switch (kind) {
    case Compression::kNone:
      return "no";
    case Compression::kGzip:
      return "gzip";
    case Compression::kBzip2:
      return "bzip2";
    case Compression::kXz:
      return "xz";
    case Compression::kZstd:
      return "zstd";
    case Compression::kZip:
      return "zip";
    case Compression::kSevenZip:
      return "7z";
    case Compression::kRar:
      return "rar";
    case Compression::kLz4:
      return "lz4";
    case Compression::kLzip:
      return "lzip";
    case Compression::kLzw:
      return "compress (.Z)";
  }
  return "unknown";
}

std::unique_ptr<Decoder> MakeDecoder(Compression kind) {
  switch (kind) {
    case Compression::kGzip:
      return std::make_unique<GzipDecoder>();
    case Compression::kBzip2:
      return std::make_unique<Bzip2Decoder>();
    case Compression::kXz:
      return std::make_unique<XzDecoder>();
    case Compression::kZstd:
      return std::make_unique<ZstdDecoder>();
    default:
      return nullptr;
  }
}

}  // namespace genetrain
