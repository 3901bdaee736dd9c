#ifndef GENETRAIN_COMMON_FILEBUF_H
#define GENETRAIN_COMMON_FILEBUF_H

#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

namespace genetrain {

class InputStream;

// A whole file in one block of memory, followed by a zero byte so that parsers may scan it as
// one text. The content may hold zero bytes of its own: View() gives the exact range.
class FileBuf {
 public:
  // Loads the named file, replacing any earlier content; compressed content is decoded. On failure
  // prints its message on standard error, leaves the buffer empty and returns false.
  bool Load(const char* name);

  const char* Data() const { return data_.get(); }  // null while nothing is loaded
  const char* End() const { return data_.get() + size_; }
  std::size_t Size() const { return size_; }
  std::string_view View() const { return {data_.get(), size_}; }

  // Appends what remains of an open stream to the text, decoding compressed content; false on a
  // read error or bad compressed data. `name`, if given, is shown in the decoders' messages.
  static bool ReadRest(std::FILE* file, std::string& text, const char* name = nullptr);

 private:
  bool Allocate(const char* name, std::size_t size);
  bool ReadRegular(InputStream& input, std::size_t size);
  bool ReadStream(InputStream& input);
  void Clear();

  std::unique_ptr<char[]> data_;
  std::size_t size_ = 0;
};

}  // namespace genetrain

#endif
