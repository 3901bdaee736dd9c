#ifndef GENETRAIN_TESTS_TESTSUPPORT_H
#define GENETRAIN_TESTS_TESTSUPPORT_H

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

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

}  // namespace genetrain::test

#endif
