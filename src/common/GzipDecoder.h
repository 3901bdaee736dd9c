#ifndef GENETRAIN_COMMON_GZIPDECODER_H
#define GENETRAIN_COMMON_GZIPDECODER_H

#include <cstddef>
#include <memory>
#include <span>
#include <string_view>

struct z_stream_s;  // zlib's stream state

namespace genetrain {

// Decodes gzip data handed over in pieces of any size. Members follow one another until the
// input ends, as in files joined with cat; whatever follows a member must be another member.
// Knows nothing of files: the readers report its verdict.
class GzipDecoder {
 public:
  enum class Fault { kNone, kTruncated, kCorrupt };

  GzipDecoder();

  // True when the bytes begin with the gzip magic bytes 0x1f 0x8b.
  static bool IsGzip(std::string_view start);

  // Decodes from the front of `input`, dropping what it used, into `output`, and returns the
  // number of bytes written. That is less than the output size only when the input is used up
  // or the data are corrupt.
  std::size_t Decode(std::string_view& input, std::span<char> output);

  // The verdict once the whole input has been decoded: corrupt data, a member cut short, or none.
  Fault FaultAtEnd() const;

 private:
  struct Release {
    void operator()(z_stream_s* stream) const;
  };

  std::unique_ptr<z_stream_s, Release> stream_;
  bool memberEnded_ = false;
  bool corrupt_ = false;
};

}  // namespace genetrain

#endif
