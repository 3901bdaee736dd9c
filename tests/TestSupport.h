#ifndef GENETRAIN_TESTS_TESTSUPPORT_H
#define GENETRAIN_TESTS_TESTSUPPORT_H

#include <gtest/gtest.h>

#include "common/Param.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <utility>
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

// What a command handler returned and printed.
struct Outcome {
  bool ok = false;
  std::string out;
  std::string err;
};

using Pairs = std::initializer_list<std::pair<std::string, std::string>>;

// Runs a handler of a fresh working object on a store holding the pairs, catching both streams.
template <typename Object>
Outcome RunCommand(bool (Object::*handler)(genetrain::Param&), Pairs pairs) {
  genetrain::Param param;
  for (const auto& [key, value] : pairs) param.Set(key, value);
  Object object;
  Outcome run;
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  run.ok = (object.*handler)(param);
  run.out = testing::internal::GetCapturedStdout();
  run.err = testing::internal::GetCapturedStderr();
  return run;
}

}  // namespace genetrain::test

#endif
