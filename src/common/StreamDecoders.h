#ifndef GENETRAIN_COMMON_STREAMDECODERS_H
#define GENETRAIN_COMMON_STREAMDECODERS_H

#include <memory>

#include "common/Decoder.h"

namespace genetrain {

// The decoders of the compressions other than gzip, one library each. Each takes streams
// joined one after the other, as Decoder says; the libraries' states stay in the source file.

class Bzip2Decoder final : public Decoder {
 public:
  Bzip2Decoder();
  ~Bzip2Decoder() override;
  std::size_t Decode(std::string_view& input, std::span<char> output) override;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

class XzDecoder final : public Decoder {
 public:
  XzDecoder();
  ~XzDecoder() override;
  std::size_t Decode(std::string_view& input, std::span<char> output) override;
  Fault FaultAtEnd() const override;

 private:
  struct State;
  std::unique_ptr<State> state_;
  // Zero bytes after a stream: xz's stream padding, valid in multiples of four.
  std::size_t padding_ = 0;
};

class ZstdDecoder final : public Decoder {
 public:
  ZstdDecoder();
  ~ZstdDecoder() override;
  std::size_t Decode(std::string_view& input, std::span<char> output) override;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace genetrain

#endif
