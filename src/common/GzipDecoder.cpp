#include "common/GzipDecoder.h"

#include <zlib.h>

#include <algorithm>
#include <climits>
#include <new>

namespace genetrain {

namespace {

// zlib counts in unsigned int: larger pieces are taken in slices.
constexpr std::size_t kMaxSlice = UINT_MAX;

// Window bits of the largest window, plus 16: a gzip wrapper, no raw or zlib streams.
constexpr int kGzipWindowBits = 15 + 16;

}  // namespace

void GzipDecoder::Release::operator()(z_stream_s* stream) const {
  inflateEnd(stream);
  delete stream;
}

// The only failure of a start is a lack of memory, which ends the program as everywhere else.
GzipDecoder::GzipDecoder() : stream_(nullptr) {
  auto stream = std::make_unique<z_stream>();
  if (inflateInit2(stream.get(), kGzipWindowBits) != Z_OK) throw std::bad_alloc();
  stream_.reset(stream.release());
}

bool GzipDecoder::IsGzip(std::string_view start) {
  return start.size() >= 2 && static_cast<unsigned char>(start[0]) == 0x1f &&
         static_cast<unsigned char>(start[1]) == 0x8b;
}

// zlib may still hold output when its input is used up, so it is called as long as there is
// room, and stops making progress (Z_BUF_ERROR) only when it needs more input.
std::size_t GzipDecoder::Decode(std::string_view& input, std::span<char> output) {
  z_stream& stream = *stream_;
  std::size_t written = 0;
  while (written < output.size() && !corrupt_) {
    if (memberEnded_) {
      if (input.empty()) break;
      // Only another member may follow, as in joined files: a byte that cannot start one is
      // found corrupt at once, not taken for the start of a cut member.
      if (static_cast<unsigned char>(input.front()) != 0x1f) {
        corrupt_ = true;
        break;
      }
      inflateReset(&stream);
      memberEnded_ = false;
    }
    const std::size_t inSlice = std::min(input.size(), kMaxSlice);
    const std::size_t outSlice = std::min(output.size() - written, kMaxSlice);
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(input.data()));
    stream.avail_in = static_cast<uInt>(inSlice);
    stream.next_out = reinterpret_cast<Bytef*>(output.data() + written);
    stream.avail_out = static_cast<uInt>(outSlice);
    const int result = inflate(&stream, Z_NO_FLUSH);
    input.remove_prefix(inSlice - stream.avail_in);
    written += outSlice - stream.avail_out;
    if (result == Z_STREAM_END) {
      memberEnded_ = true;
    } else if (result == Z_MEM_ERROR) {
      throw std::bad_alloc();
    } else if (result == Z_BUF_ERROR) {
      corrupt_ = !input.empty();  // no progress though there was input and room: never valid
      break;
    } else if (result != Z_OK) {
      corrupt_ = true;
    }
  }
  return written;
}

GzipDecoder::Fault GzipDecoder::FaultAtEnd() const {
  if (corrupt_) return Fault::kCorrupt;
  return memberEnded_ ? Fault::kNone : Fault::kTruncated;
}

}  // namespace genetrain
