#ifndef GENETRAIN_TESTS_COMMON_GZIPSUPPORT_H
#define GENETRAIN_TESTS_COMMON_GZIPSUPPORT_H

#include <zlib.h>

#include <string>
#include <string_view>

namespace genetrain::test {

// One gzip member holding the text, as gzip -n writes it (no name, no time).
inline std::string Gzip(std::string_view text, int level = Z_DEFAULT_COMPRESSION) {
  z_stream stream{};
  deflateInit2(&stream, level, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY);
  std::string packed(deflateBound(&stream, text.size()), '\0');
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
  stream.avail_in = static_cast<uInt>(text.size());
  stream.next_out = reinterpret_cast<Bytef*>(packed.data());
  stream.avail_out = static_cast<uInt>(packed.size());
  deflate(&stream, Z_FINISH);
  packed.resize(stream.total_out);
  deflateEnd(&stream);
  return packed;
}

}  // namespace genetrain::test

#endif
