#include "common/FileBuf.h"

#include <algorithm>
#include <cstring>

#include "common/InputStream.h"

namespace genetrain {

void FileBuf::Clear() {
  data_.reset();
  size_ = 0;
}

bool FileBuf::Load(const char* name) {
  Clear();
  InputStream input;
  if (!input.Find(name)) return false;
  // Pipes, process substitutions and devices report no useful size: they are read to the end.
  const bool regular = input.Regular();
  const auto size = static_cast<std::size_t>(input.FileSize());
  if (regular && !Allocate(name, size)) return false;
  if (!input.Open()) {
    Clear();
    return false;
  }
  const bool read = regular ? ReadRegular(input, size) : ReadStream(input);
  if (!read) {
    Clear();
    input.PrintReadError();
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
// Compressed content outgrows that size: the block then doubles until the content fits.
bool FileBuf::ReadRegular(InputStream& input, std::size_t size) {
  size_ = input.Read({data_.get(), size});
  std::size_t capacity = size;
  while (input.Compressed() && size_ == capacity && !input.Failed()) {
    capacity = std::max(capacity * 2, std::size_t{1} << 16);
    std::unique_ptr<char[]> larger(new char[capacity + 1]);
    std::memcpy(larger.get(), data_.get(), size_);
    data_ = std::move(larger);
    size_ += input.Read({data_.get() + size_, capacity - size_});
  }
  data_[size_] = '\0';
  return !input.Failed();
}

bool FileBuf::ReadRest(std::FILE* file, std::string& text, const char* name) {
  InputStream input(file, name);
  return input.ReadRest(text);
}

bool FileBuf::ReadStream(InputStream& input) {
  std::string content;
  if (!input.ReadRest(content)) return false;
  data_.reset(new char[content.size() + 1]);
  std::memcpy(data_.get(), content.data(), content.size());
  size_ = content.size();
  data_[size_] = '\0';
  return true;
}

}  // namespace genetrain
