#ifndef GENETRAIN_COMMON_SPOOL_H
#define GENETRAIN_COMMON_SPOOL_H

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace genetrain {

// Bytes of an input that can be read only once (a pipe), kept on disk for a second reading, so
// that memory stays small whatever the input's size. The file is unnamed, in $TMPDIR (or /tmp),
// and goes with the process however it ends.
//
// Failures print "error: temporary file in <FOLDER> cannot be written: REASON" (or "read").
class Spool {
 public:
  Spool() = default;
  ~Spool();
  Spool(const Spool&) = delete;
  Spool& operator=(const Spool&) = delete;

  // Starts an empty spool; false after the message.
  bool Create();
  bool Active() const { return fd_ >= 0; }
  // False after the message.
  bool Append(std::string_view bytes);
  // Fills the block from the offset as far as the bytes go; false after the message.
  bool ReadAt(std::uint64_t offset, std::span<char> block, std::size_t& got);
  std::uint64_t Size() const { return size_; }

 private:
  bool Fail(std::string_view what, int error);

  std::string folder_;
  int fd_ = -1;
  std::uint64_t size_ = 0;
};

}  // namespace genetrain

#endif
