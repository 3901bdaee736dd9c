#include "common/StreamDecoders.h"

#include <bzlib.h>
#include <lzma.h>
#include <zstd.h>
#include <zstd_errors.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstdint>
#include <cstring>
#include <new>

namespace genetrain {

namespace {

// bzip2 counts in unsigned int: larger pieces are taken in slices.
constexpr std::size_t kMaxSlice = UINT_MAX;

// zstd refuses frames whose window is larger than 128 MB unless told otherwise; files made with
// --long=31 need the largest window of 64-bit builds, 2 GB.
constexpr int kZstdWindowLogMax = 31;

// The longest zstd frame header: magic 4, descriptor 1, window 1, dictionary id 4, content size 8.
constexpr std::size_t kZstdHeaderMax = 18;

}  // namespace

// ---- bzip2

struct Bzip2Decoder::State {
  bz_stream stream{};
  bool started = false;

  // The only failure of a start is a lack of memory, which ends the program as everywhere else.
  void Start() {
    End();
    stream = bz_stream{};
    if (BZ2_bzDecompressInit(&stream, 0, 0) != BZ_OK) throw std::bad_alloc();
    started = true;
  }
  void End() {
    if (started) BZ2_bzDecompressEnd(&stream);
    started = false;
  }
};

Bzip2Decoder::Bzip2Decoder() : state_(std::make_unique<State>()) {
  state_->Start();
}

Bzip2Decoder::~Bzip2Decoder() {
  state_->End();
}

std::size_t Bzip2Decoder::Decode(std::string_view& input, std::span<char> output) {
  bz_stream& stream = state_->stream;
  std::size_t written = 0;
  while (written < output.size() && !corrupt_) {
    if (memberEnded_) {
      if (input.empty()) break;
      // As with gzip, only another stream may follow: a byte that cannot start one is corrupt.
      if (input.front() != 'B') {
        corrupt_ = true;
        break;
      }
      state_->Start();
      memberEnded_ = false;
    }
    const std::size_t inSlice = std::min(input.size(), kMaxSlice);
    const std::size_t outSlice = std::min(output.size() - written, kMaxSlice);
    stream.next_in = const_cast<char*>(input.data());
    stream.avail_in = static_cast<unsigned>(inSlice);
    stream.next_out = output.data() + written;
    stream.avail_out = static_cast<unsigned>(outSlice);
    const int result = BZ2_bzDecompress(&stream);
    const std::size_t used = inSlice - stream.avail_in;
    const std::size_t made = outSlice - stream.avail_out;
    input.remove_prefix(used);
    written += made;
    if (result == BZ_STREAM_END) {
      memberEnded_ = true;
    } else if (result == BZ_MEM_ERROR) {
      throw std::bad_alloc();
    } else if (result != BZ_OK) {
      corrupt_ = true;
    } else if (used == 0 && made == 0) {
      corrupt_ = !input.empty();  // no progress though there was input and room: never valid
      break;
    }
  }
  return written;
}

// ---- xz

struct XzDecoder::State {
  lzma_stream stream = LZMA_STREAM_INIT;

  // Streams are joined here rather than by LZMA_CONCATENATED, which can tell the end of the
  // last stream only when told the input is over: the verdict is then known at every point.
  void Start() {
    if (lzma_stream_decoder(&stream, UINT64_MAX, 0) != LZMA_OK) throw std::bad_alloc();
  }
};

XzDecoder::XzDecoder() : state_(std::make_unique<State>()) {
  state_->Start();
}

XzDecoder::~XzDecoder() {
  lzma_end(&state_->stream);
}

std::size_t XzDecoder::Decode(std::string_view& input, std::span<char> output) {
  lzma_stream& stream = state_->stream;
  std::size_t written = 0;
  while (written < output.size() && !corrupt_) {
    if (memberEnded_) {
      if (input.empty()) break;
      if (input.front() == '\0') {
        const std::size_t zeros = std::min(input.find_first_not_of('\0'), input.size());
        padding_ += zeros;
        input.remove_prefix(zeros);
        continue;
      }
      if (padding_ % 4 != 0 || input.front() != '\xfd') {
        corrupt_ = true;
        break;
      }
      padding_ = 0;
      state_->Start();
      memberEnded_ = false;
    }
    stream.next_in = reinterpret_cast<const std::uint8_t*>(input.data());
    stream.avail_in = input.size();
    stream.next_out = reinterpret_cast<std::uint8_t*>(output.data() + written);
    stream.avail_out = output.size() - written;
    const lzma_ret result = lzma_code(&stream, LZMA_RUN);
    const std::size_t used = input.size() - stream.avail_in;
    const std::size_t made = output.size() - written - stream.avail_out;
    input.remove_prefix(used);
    written += made;
    if (result == LZMA_STREAM_END) {
      memberEnded_ = true;
    } else if (result == LZMA_MEM_ERROR) {
      throw std::bad_alloc();
    } else if (result == LZMA_BUF_ERROR || (result == LZMA_OK && used == 0 && made == 0)) {
      corrupt_ = !input.empty();  // no progress though there was input and room: never valid
      break;
    } else if (result != LZMA_OK) {
      corrupt_ = true;
    }
  }
  return written;
}

Decoder::Fault XzDecoder::FaultAtEnd() const {
  return padding_ % 4 != 0 ? Fault::kCorrupt : Decoder::FaultAtEnd();
}

// ---- zstd

// zstd checks a frame's content size against its header only when it decodes the frame in one
// piece (the whole frame at hand, room for all of it): a frame whose header promises more than
// its blocks hold passes when streamed. The decoder checks it itself, from the first bytes of
// each frame, so that every reader finds the same faults whatever the size of its pieces.
struct ZstdDecoder::State {
  ZSTD_DCtx* context = nullptr;
  std::array<char, kZstdHeaderMax> header{};
  std::size_t headerSize = 0;
  std::uint64_t frameOutput = 0;

  // The bytes zstd took, of which the first ones of a frame are its header.
  void Took(std::string_view bytes) {
    const std::size_t count = std::min(bytes.size(), header.size() - headerSize);
    std::memcpy(header.data() + headerSize, bytes.data(), count);
    headerSize += count;
  }
  bool FrameSizeAgrees() {
    const unsigned long long promised = ZSTD_getFrameContentSize(header.data(), headerSize);
    const bool agrees = promised == ZSTD_CONTENTSIZE_UNKNOWN ||
                        promised == ZSTD_CONTENTSIZE_ERROR || promised == frameOutput;
    headerSize = 0;
    frameOutput = 0;
    return agrees;
  }
};

ZstdDecoder::ZstdDecoder() : state_(std::make_unique<State>()) {
  state_->context = ZSTD_createDCtx();
  if (state_->context == nullptr) throw std::bad_alloc();
  ZSTD_DCtx_setParameter(state_->context, ZSTD_d_windowLogMax, kZstdWindowLogMax);
}

ZstdDecoder::~ZstdDecoder() {
  ZSTD_freeDCtx(state_->context);
}

// zstd goes from one frame to the next by itself, stopping at each frame's end, and refuses bytes
// that start none.
std::size_t ZstdDecoder::Decode(std::string_view& input, std::span<char> output) {
  State& state = *state_;
  std::size_t written = 0;
  while (written < output.size() && !corrupt_) {
    if (input.empty() && memberEnded_) break;
    ZSTD_inBuffer in{input.data(), input.size(), 0};
    ZSTD_outBuffer out{output.data() + written, output.size() - written, 0};
    const std::size_t result = ZSTD_decompressStream(state.context, &out, &in);
    if (ZSTD_isError(result) != 0) {
      if (ZSTD_getErrorCode(result) == ZSTD_error_memory_allocation) throw std::bad_alloc();
      corrupt_ = true;
      break;
    }
    state.Took(input.substr(0, in.pos));
    input.remove_prefix(in.pos);
    written += out.pos;
    state.frameOutput += out.pos;
    memberEnded_ = result == 0;
    if (memberEnded_ && !state.FrameSizeAgrees()) {
      corrupt_ = true;
    } else if (in.pos == 0 && out.pos == 0) {
      corrupt_ = !input.empty();  // no progress though there was input and room: never valid
      break;
    }
  }
  return written;
}

}  // namespace genetrain
