#ifndef GENETRAIN_COMMON_DECODER_H
#define GENETRAIN_COMMON_DECODER_H

#include <cstddef>
#include <memory>
#include <span>
#include <string_view>

namespace genetrain {

// The compressions an input may come in, told by their first bytes whatever the file is called.
// Those after kZstd are recognised only to be refused by name: read as text they would give
// letters that are no sequence.
enum class Compression {
  kNone,
  kGzip,
  kBzip2,
  kXz,
  kZstd,
  kZip,
  kSevenZip,
  kRar,
  kLz4,
  kLzip,
  kLzw
};

// The most leading bytes SniffCompression looks at.
inline constexpr std::size_t kSniffSize = 10;

// The compression of content that begins with `start`: the first kSniffSize bytes, or all of
// them when the content is shorter.
Compression SniffCompression(std::string_view start);

// The compression's usual name, for messages: "gzip", "bzip2", "xz", "7z", ...
std::string_view CompressionName(Compression kind);

// Decodes compressed data handed over in pieces of any size. Members (gzip members, bzip2 and
// xz streams, zstd frames) follow one another until the input ends, as in files joined with
// cat; whatever follows a member must be another member. Knows nothing of files: the readers
// report its verdict.
class Decoder {
 public:
  enum class Fault { kNone, kTruncated, kCorrupt };

  virtual ~Decoder() = default;

  // Decodes from the front of `input`, dropping what it used, into `output`, and returns the
  // number of bytes written. That is less than the output size only when the input is used up
  // or the data are corrupt.
  virtual std::size_t Decode(std::string_view& input, std::span<char> output) = 0;

  // The verdict once the whole input has been decoded: corrupt data, a member cut short, or none.
  virtual Fault FaultAtEnd() const {
    if (corrupt_) return Fault::kCorrupt;
    return memberEnded_ ? Fault::kNone : Fault::kTruncated;
  }

 protected:
  // What Decode has found so far: the last member (or frame) read to its end, and data that can
  // never be valid.
  bool memberEnded_ = false;
  bool corrupt_ = false;
};

// The decoder of a compression; null for kNone and for the compressions that are not read.
std::unique_ptr<Decoder> MakeDecoder(Compression kind);

}  // namespace genetrain

#endif
