// Model files: the model text turned into parameter text, loaded into a store and validated,
// as the commands that read a model do.
#include <cstddef>
#include <cstdint>
#include <string>

#include "FuzzSupport.h"
#include "common/Param.h"
#include "model/ModelFile.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  genetrain::fuzz::Setup();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text = genetrain::ModelToParamText(genetrain::fuzz::AsText(data, size));
  genetrain::Param model;
  if (!model.Load(text)) return 0;
  genetrain::Param copy = model;
  genetrain::ValidateModel(copy);
  // The file reader on the same bytes.
  static const std::string path = genetrain::fuzz::Path("model.mod");
  genetrain::fuzz::WriteFile(path, genetrain::fuzz::AsText(data, size));
  genetrain::Param read;
  genetrain::ReadModel(path, read);
  return 0;
}
