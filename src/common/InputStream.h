#ifndef GENETRAIN_COMMON_INPUTSTREAM_H
#define GENETRAIN_COMMON_INPUTSTREAM_H

#include <array>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "common/Decoder.h"

namespace genetrain {

// The content of an input file, or of what remains of an open stream, read piece by piece.
// Content that begins with the magic bytes of gzip, bzip2, xz or zstd is decoded on the way,
// whatever the file is called, so callers see the same bytes as for the uncompressed file; other
// known compressions are refused by name. Plain content is read straight into the caller's
// memory.
class InputStream {
 public:
  InputStream() = default;
  // Reads an open stream, which stays open. `name` only serves messages and may be null.
  InputStream(std::FILE* file, const char* name);
  ~InputStream();
  InputStream(const InputStream&) = delete;
  InputStream& operator=(const InputStream&) = delete;

  // The loader's checks before opening, with their messages on standard error: a name is
  // given and the file's status can be had.
  bool Find(const char* name);
  // Opens the file found; its message on failure.
  bool Open();
  bool Open(const char* name) { return Find(name) && Open(); }
  // From the status: pipes and devices have no useful size.
  bool Regular() const { return regular_; }
  std::uint64_t FileSize() const { return fileSize_; }

  // Fills the block as far as the content goes: less than its size only at the end or after a
  // failure. Faults of compressed data are reported on standard error as they are found.
  std::size_t Read(std::span<char> block);
  // Appends all that remains; false on a failure.
  bool ReadRest(std::string& text);
  bool Compressed() const { return decoder_ != nullptr; }
  bool Failed() const { return failed_; }
  // "error: on reading file <name>", the loader's message for any failure while reading.
  void PrintReadError() const;

 private:
  std::size_t ReadFirst(std::span<char> block);
  void ReadLead();
  bool StartDecoding(std::string_view packed, bool atEnd);
  std::size_t ReadPlain(char* out, std::size_t size);
  std::size_t ReadDecoded(std::span<char> block);
  void Refill();

  std::string name_;
  std::FILE* file_ = nullptr;
  bool owned_ = false;
  bool regular_ = false;
  std::uint64_t fileSize_ = 0;
  bool started_ = false;
  bool failed_ = false;
  // The first bytes, read apart to tell compressed from plain content when the first block is
  // smaller.
  std::array<char, kSniffSize> lead_{};
  std::size_t leadSize_ = 0;
  std::size_t leadUsed_ = 0;
  // Compressed content only: its decoder and the compressed bytes read but not yet decoded.
  Compression kind_ = Compression::kNone;
  std::unique_ptr<Decoder> decoder_;
  std::unique_ptr<char[]> packed_;
  std::size_t packedSize_ = 0;
  std::string_view pending_;
  bool packedEnd_ = false;
};

}  // namespace genetrain

#endif
