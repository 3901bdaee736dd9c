#include "seq/GatheredWrite.h"

#include <fcntl.h>
#include <sys/uio.h>
#include <unistd.h>

#include <array>
#include <cerrno>

namespace genetrain {

namespace {

// Drops the first `done` bytes from the vectors, whole ones first.
void Advance(iovec*& vec, int& count, std::size_t done) {
  while (count > 0 && done >= vec->iov_len) {
    done -= vec->iov_len;
    ++vec;
    --count;
  }
  if (count > 0) {
    vec->iov_base = static_cast<char*>(vec->iov_base) + done;
    vec->iov_len -= done;
  }
}

}  // namespace

bool WriteGathered(const std::string& name, std::initializer_list<std::string_view> parts) {
  std::array<iovec, kMaxGatheredParts> vectors{};
  if (parts.size() > vectors.size()) return false;
  int count = 0;
  for (const std::string_view part : parts) {
    if (!part.empty()) vectors[count++] = {const_cast<char*>(part.data()), part.size()};
  }
  const int file = ::open(name.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  if (file < 0) return false;
  iovec* next = vectors.data();
  bool written = true;
  while (count > 0) {
    const ssize_t done = ::writev(file, next, count);
    if (done < 0 && errno == EINTR) continue;
    if (done <= 0) {
      written = false;
      break;
    }
    Advance(next, count, static_cast<std::size_t>(done));
  }
  return ::close(file) == 0 && written;
}

}  // namespace genetrain
