// The command line: the input cut at zero bytes; the first part is the content of a file
// named "p" in the working folder (so "--par p" reads it), the other parts are the arguments.
// A "/" in an argument becomes "_", so that no argument reaches outside the private folder.
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "FuzzSupport.h"
#include "common/Param.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  genetrain::fuzz::Setup();
  // libFuzzer reads its corpus folders after this: run.sh gives them as absolute paths.
  if (chdir(genetrain::fuzz::Folder().c_str()) != 0) std::abort();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::vector<std::string> parts = genetrain::fuzz::SplitAtZero(data, size);
  genetrain::fuzz::WriteFile(genetrain::fuzz::Path("p"), parts.front());
  std::vector<const char*> argv;
  argv.reserve(parts.size() + 1);
  argv.push_back("genetrain");
  for (std::size_t i = 1; i < parts.size(); ++i) {
    for (char& c : parts[i]) {
      if (c == '/') c = '_';
    }
    argv.push_back(parts[i].c_str());
  }
  argv.push_back(nullptr);
  genetrain::Param param;
  param.Init(static_cast<int>(argv.size() - 1), argv.data());
  return 0;
}
