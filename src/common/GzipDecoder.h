#ifndef GENETRAIN_COMMON_GZIPDECODER_H
#define GENETRAIN_COMMON_GZIPDECODER_H

#include <memory>

#include "common/Decoder.h"

struct inflate_state;  // ISA-L's stream state

namespace genetrain {

// Decodes gzip data handed over in pieces of any size, members joined as Decoder says.
class GzipDecoder final : public Decoder {
 public:
  GzipDecoder();
  ~GzipDecoder() override;

  std::size_t Decode(std::string_view& input, std::span<char> output) override;

 private:
  std::unique_ptr<inflate_state> state_;
  std::size_t memberRead_ = 0;  // bytes of the member taken so far, counted up to its flags
};

}  // namespace genetrain

#endif
