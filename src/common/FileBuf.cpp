#include "common/FileBuf.h"

#include <sys/stat.h>

#include <cstring>

namespace genetrain {

void FileBuf::Clear() {
  data_.reset();
  size_ = 0;
}

bool FileBuf::Load(const char* name) {
  Clear();
  if (name == nullptr || *name == '\0') {
    std::fputs("error: file name is missing\n", stderr);
    return false;
  }
  struct stat status;
  if (::stat(name, &status) != 0) {
    std::fprintf(stderr, "error: file <%s> is not found\n", name);
    return false;
  }
  // Pipes, process substitutions and devices report no useful size: they are read to the end.
  const bool regular = S_ISREG(status.st_mode);
  const auto size = static_cast<std::size_t>(status.st_size);
  if (regular && !Allocate(name, size)) return false;

  std::FILE* file = std::fopen(name, "rb");
  if (file == nullptr) {
    Clear();
    std::fprintf(stderr, "error: on opening file <%s>\n", name);
    return false;
  }
  const bool read = regular ? ReadRegular(file, size) : ReadStream(file);
  std::fclose(file);
  if (!read) {
    Clear();
    std::fprintf(stderr, "error: on reading file <%s>\n", name);
    return false;
  }
  return true;
}

// The allocation raises std::bad_alloc on exhaustion; the null test serves allocators that
// return no block instead (as sanitizer runtimes may be configured to).
bool FileBuf::Allocate(const char* name, std::size_t size) {
  data_.reset(new char[size + 1]);
  size_ = 0;
  if (data_) return true;
  std::fprintf(stderr, "error: not enough memory to load file <%s>\n", name);
  return false;
}

// One read request of the size the file system reports; a short read simply gives less content.
bool FileBuf::ReadRegular(std::FILE* file, std::size_t size) {
  size_ = std::fread(data_.get(), 1, size, file);
  data_[size_] = '\0';
  return std::ferror(file) == 0;
}

bool FileBuf::ReadRest(std::FILE* file, std::string& text) {
  constexpr std::size_t kChunk = std::size_t{1} << 16;
  std::size_t count = kChunk;
  while (count == kChunk) {
    const std::size_t used = text.size();
    text.resize(used + kChunk);
    count = std::fread(text.data() + used, 1, kChunk, file);
    text.resize(used + count);
  }
  return std::ferror(file) == 0;
}

bool FileBuf::ReadStream(std::FILE* file) {
  std::string content;
  if (!ReadRest(file, content)) return false;
  data_.reset(new char[content.size() + 1]);
  std::memcpy(data_.get(), content.data(), content.size());
  size_ = content.size();
  data_[size_] = '\0';
  return true;
}

}  // namespace genetrain
