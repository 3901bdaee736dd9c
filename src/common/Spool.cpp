#include "common/Spool.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "common/BackgroundWriter.h"
#include "common/Message.h"

namespace genetrain {

Spool::~Spool() {
  if (fd_ >= 0) ::close(fd_);
}

// Where the file system has no unnamed files, a named one is removed at once.
bool Spool::Create() {
  const char* folder = std::getenv("TMPDIR");
  folder_ = folder != nullptr && *folder != '\0' ? folder : "/tmp";
  do {
    fd_ = ::open(folder_.c_str(), O_RDWR | O_TMPFILE | O_CLOEXEC, 0600);
  } while (fd_ < 0 && errno == EINTR);
  if (fd_ >= 0) return true;
  std::string name = folder_;
  name.append("/.genetrain-spool.XXXXXX");
  fd_ = ::mkostemp(name.data(), O_CLOEXEC);
  if (fd_ < 0) return Fail("written", errno);
  ::unlink(name.c_str());
  return true;
}

bool Spool::Append(std::string_view bytes) {
  if (const int error = WriteFully(fd_, bytes); error != 0) return Fail("written", error);
  size_ += bytes.size();
  return true;
}

bool Spool::ReadAt(std::uint64_t offset, std::span<char> block, std::size_t& got) {
  got = 0;
  while (got < block.size()) {
    const ssize_t done =
        ::pread(fd_, block.data() + got, block.size() - got, static_cast<off_t>(offset + got));
    if (done < 0 && errno == EINTR) continue;
    if (done < 0) return Fail("read", errno);
    if (done == 0) break;
    got += static_cast<std::size_t>(done);
  }
  return true;
}

bool Spool::Fail(std::string_view what, int error) {
  PrintError(
      {"error: temporary file in <", folder_, "> cannot be ", what, ": ", std::strerror(error)});
  return false;
}

}  // namespace genetrain
