// Shared setup of the fuzz targets: silent standard streams and a private working folder
// where the readers that want a file name find the input.
#ifndef GENETRAIN_FUZZ_FUZZSUPPORT_H
#define GENETRAIN_FUZZ_FUZZSUPPORT_H

#include <fcntl.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace genetrain::fuzz {

// The private folder of this process under /tmp, made on first use and removed at exit.
inline const std::string& Folder() {
  static const std::string folder = [] {
    char pattern[] = "/tmp/genetrain-fuzz-XXXXXX";
    if (mkdtemp(pattern) == nullptr) std::abort();
    return std::string(pattern);
  }();
  return folder;
}

// The absolute name of a file of the private folder.
inline std::string Path(std::string_view name) {
  std::string path = Folder();
  path.append("/").append(name);
  return path;
}

// Sends standard output to /dev/null (the code under test prints a lot) and makes the private
// folder. Call once, from LLVMFuzzerInitialize. Standard error is left to libFuzzer: its
// -close_fd_mask=3 silences the target while its own and the sanitizers' reports still show.
inline void Setup() {
  Folder();
  std::atexit([] {
    std::error_code ignored;
    std::filesystem::remove_all(Folder(), ignored);
  });
  std::fflush(stdout);
  const int null = open("/dev/null", O_WRONLY);
  if (null < 0) std::abort();
  dup2(null, 1);
  close(null);
}

// Replaces the file `path` with the bytes.
inline void WriteFile(const std::string& path, std::string_view bytes) {
  std::FILE* file = std::fopen(path.c_str(), "wb");
  if (file == nullptr) std::abort();
  if (!bytes.empty() && std::fwrite(bytes.data(), 1, bytes.size(), file) != bytes.size()) {
    std::abort();
  }
  std::fclose(file);
}

// The input cut at its zero bytes (an input without one is one part).
inline std::vector<std::string> SplitAtZero(const std::uint8_t* data, std::size_t size) {
  std::vector<std::string> parts(1);
  for (std::size_t i = 0; i < size; ++i) {
    if (data[i] == 0) {
      parts.emplace_back();
    } else {
      parts.back().push_back(static_cast<char>(data[i]));
    }
  }
  return parts;
}

inline std::string_view AsText(const std::uint8_t* data, std::size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

}  // namespace genetrain::fuzz

#endif
