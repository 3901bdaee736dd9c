#include "common/Output.h"

#include <fcntl.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <vector>

namespace genetrain {

void WriteAll(std::FILE* stream, std::string_view text) {
  constexpr std::size_t kSlice = std::size_t{8} << 20;
  for (std::size_t pos = 0; pos < text.size(); pos += kSlice) {
    const std::size_t length = std::min(kSlice, text.size() - pos);
    if (std::fwrite(text.data() + pos, 1, length, stream) != length) return;
  }
}

void WriteStdout(std::string_view text) {
  WriteAll(stdout, text);
}

bool WriteFile(const std::string& name, std::string_view text, bool append) {
  std::FILE* file = std::fopen(name.c_str(), append ? "ab" : "wb");
  if (file == nullptr) return false;
  WriteAll(file, text);
  std::fclose(file);
  return true;
}

namespace {

// The most vectors one gathering write takes on Linux.
constexpr int kMaxVectors = 1024;

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

// One open, one gathering write (more only past the kernel's 2 GB per request) and one close:
// no stream buffer and no status query, for commands that write thousands of files.
bool WriteFile(const std::string& name, std::initializer_list<std::string_view> parts) {
  std::vector<iovec> vectors;
  vectors.reserve(parts.size());
  for (const std::string_view part : parts) {
    if (!part.empty()) vectors.push_back({const_cast<char*>(part.data()), part.size()});
  }
  const int file = ::open(name.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  if (file < 0) return false;
  iovec* next = vectors.data();
  int count = static_cast<int>(vectors.size());
  bool written = true;
  while (count > 0) {
    const ssize_t done = ::writev(file, next, std::min(count, kMaxVectors));
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
