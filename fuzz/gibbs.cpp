// The motif finder's output in both layouts (the layout is detected from the text), then the
// motif matrix built from the sites read.
#include <cstddef>
#include <cstdint>
#include <string>

#include "FuzzSupport.h"
#include "motif/Gibbs.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  genetrain::fuzz::Setup();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::string path = genetrain::fuzz::Path("gibbs.out");
  genetrain::fuzz::WriteFile(path, genetrain::fuzz::AsText(data, size));
  genetrain::Gibbs gibbs;
  gibbs.Parse(path);
  genetrain::Gibbs motif;
  motif.ParseLayout(path, genetrain::GibbsLayout::kMotif);
  genetrain::Gibbs numMotifs;
  numMotifs.ParseLayout(path, genetrain::GibbsLayout::kNumMotifs);
  return 0;
}
