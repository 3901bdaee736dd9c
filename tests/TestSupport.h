#ifndef GENETRAIN_TESTS_TESTSUPPORT_H
#define GENETRAIN_TESTS_TESTSUPPORT_H

#include <gtest/gtest.h>
#include <zlib.h>

#include "common/Param.h"
#include "seq/LetterTables.h"
#include "seq/VSeq.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace genetrain::test {

// A fresh folder for one test, removed with everything in it at the end.
class ScratchDir {
 public:
  ScratchDir() {
    std::string pattern = (std::filesystem::temp_directory_path() / "genetrain-XXXXXX").string();
    path_ = ::mkdtemp(pattern.data());
  }
  ~ScratchDir() { std::filesystem::remove_all(path_); }
  ScratchDir(const ScratchDir&) = delete;
  ScratchDir& operator=(const ScratchDir&) = delete;

  std::string Path(std::string_view name) const { return (path_ / name).string(); }
  // How many entries the folder holds: a temporary file left behind shows here.
  std::ptrdiff_t Entries() const {
    return std::distance(std::filesystem::directory_iterator(path_), {});
  }
  std::string Write(std::string_view name, std::string_view content) const {
    const std::string path = Path(name);
    std::ofstream(path, std::ios::binary).write(content.data(), std::ssize(content));
    return path;
  }

 private:
  std::filesystem::path path_;
};

inline std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// What a command handler returned and printed.
struct Outcome {
  bool ok = false;
  std::string out, err;
};

using Pairs = std::initializer_list<std::pair<std::string, std::string>>;

template <typename Call>
Outcome Capture(Call&& call) {
  Outcome run;
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  run.ok = call();
  run.out = testing::internal::GetCapturedStdout();
  run.err = testing::internal::GetCapturedStderr();
  return run;
}

// Letters to base codes as the sequence reader makes them; X is a masked base.
inline genetrain::CodeSeq CodesOf(std::string_view letters) {
  genetrain::CodeSeq codes;
  for (const char letter : letters) {
    codes.push_back(letter == 'X' ? std::uint8_t{genetrain::kMasked}
                                  : genetrain::BaseCodeTable()[static_cast<unsigned char>(letter)]);
  }
  return codes;
}

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

// Runs a handler of a fresh working object on a store holding the pairs, catching both streams.
template <typename Object>
Outcome RunCommand(bool (Object::*handler)(genetrain::Param&), Pairs pairs) {
  genetrain::Param param;
  for (const auto& [key, value] : pairs) param.Set(key, value);
  Object object;
  return Capture([&] { return (object.*handler)(param); });
}

}  // namespace genetrain::test

#endif
