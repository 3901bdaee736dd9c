#include "common/InputStream.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstring>

namespace genetrain {

namespace {

// Compressed bytes are read in pieces of this size.
constexpr std::size_t kPackedChunk = std::size_t{1} << 20;

void PrintFault(Decoder::Fault fault, Compression kind, const std::string& name) {
  const char* what = fault == Decoder::Fault::kCorrupt ? "corrupt" : "truncated";
  const std::string compression(CompressionName(kind));
  if (name.empty()) {
    std::fprintf(stderr, "error: %s %s data\n", what, compression.c_str());
  } else {
    std::fprintf(stderr, "error: %s %s data in file <%s>\n", what, compression.c_str(),
                 name.c_str());
  }
}

void PrintUnreadable(Compression kind, const std::string& name) {
  const std::string compression(CompressionName(kind));
  if (name.empty()) {
    std::fprintf(stderr, "error: data compressed with %s cannot be read\n", compression.c_str());
  } else {
    std::fprintf(stderr, "error: file <%s> is compressed with %s, which cannot be read\n",
                 name.c_str(), compression.c_str());
  }
}

}  // namespace

InputStream::InputStream(std::FILE* file, const char* name)
    : name_(name == nullptr ? "" : name), file_(file) {}

InputStream::~InputStream() {
  if (owned_ && file_ != nullptr) std::fclose(file_);
}

bool InputStream::Find(const char* name) {
  if (name == nullptr || *name == '\0') {
    std::fputs("error: file name is missing\n", stderr);
    return false;
  }
  name_ = name;
  struct stat status;
  if (::stat(name, &status) != 0) {
    std::fprintf(stderr, "error: file <%s> is not found\n", name);
    return false;
  }
  regular_ = S_ISREG(status.st_mode);
  fileSize_ = static_cast<std::uint64_t>(status.st_size);
  return true;
}

// Unbuffered: every read request of a block goes to the system as it is, into the block. The
// file is read once from start to end, which the system may use for reading ahead.
bool InputStream::Open() {
  file_ = std::fopen(name_.c_str(), "rb");
  if (file_ == nullptr) {
    std::fprintf(stderr, "error: on opening file <%s>\n", name_.c_str());
    return false;
  }
  owned_ = true;
  std::setvbuf(file_, nullptr, _IONBF, 0);
  ::posix_fadvise(::fileno(file_), 0, 0, POSIX_FADV_SEQUENTIAL);
  return true;
}

void InputStream::PrintReadError() const {
  std::fprintf(stderr, "error: on reading file <%s>\n", name_.c_str());
}

// The first request goes straight into the block: plain content is then read exactly as it
// would be without this reader. Only a block too small to tell compressed from plain content
// waits for the first bytes apart.
std::size_t InputStream::Read(std::span<char> block) {
  if (!started_) {
    started_ = true;
    if (block.size() >= lead_.size()) return ReadFirst(block);
    ReadLead();
  }
  if (failed_) return 0;
  if (decoder_ != nullptr) return ReadDecoded(block);
  std::size_t got = 0;
  for (; leadUsed_ < leadSize_ && got < block.size(); ++leadUsed_) block[got++] = lead_[leadUsed_];
  if (got < block.size()) got += ReadPlain(block.data() + got, block.size() - got);
  return got;
}

bool InputStream::ReadRest(std::string& text) {
  constexpr std::size_t kChunk = std::size_t{1} << 16;
  std::size_t count = kChunk;
  while (count == kChunk) {
    const std::size_t used = text.size();
    text.resize(used + kChunk);
    count = Read({text.data() + used, kChunk});
    text.resize(used + count);
  }
  return !failed_;
}

std::size_t InputStream::ReadFirst(std::span<char> block) {
  const std::size_t got = ReadPlain(block.data(), block.size());
  if (failed_ || !StartDecoding({block.data(), got}, got < block.size())) return got;
  return failed_ ? 0 : ReadDecoded(block);
}

void InputStream::ReadLead() {
  leadSize_ = ReadPlain(lead_.data(), lead_.size());
  if (failed_ || !StartDecoding({lead_.data(), leadSize_}, leadSize_ < lead_.size())) return;
  leadSize_ = 0;
}

// False for plain content. Otherwise the compressed bytes read so far move to the decoder's
// input, which they may outgrow; a compression that is not read fails the stream at once, before
// any of its bytes could pass for letters.
bool InputStream::StartDecoding(std::string_view packed, bool atEnd) {
  kind_ = SniffCompression(packed.substr(0, kSniffSize));
  if (kind_ == Compression::kNone) return false;
  decoder_ = MakeDecoder(kind_);
  if (decoder_ == nullptr) {
    PrintUnreadable(kind_, name_);
    failed_ = true;
    return true;
  }
  packedSize_ = std::max(kPackedChunk, packed.size());
  packed_.reset(new char[packedSize_]);
  std::memcpy(packed_.get(), packed.data(), packed.size());
  pending_ = {packed_.get(), packed.size()};
  packedEnd_ = atEnd;
  return true;
}

std::size_t InputStream::ReadPlain(char* out, std::size_t size) {
  const std::size_t got = std::fread(out, 1, size, file_);
  if (std::ferror(file_) != 0) failed_ = true;
  return got;
}

void InputStream::Refill() {
  const std::size_t got = ReadPlain(packed_.get(), packedSize_);
  packedEnd_ = got < packedSize_;
  pending_ = {packed_.get(), got};
}

std::size_t InputStream::ReadDecoded(std::span<char> block) {
  std::size_t got = 0;
  while (got < block.size() && !failed_) {
    if (pending_.empty() && !packedEnd_) Refill();
    if (failed_) break;
    got += decoder_->Decode(pending_, block.subspan(got));
    const Decoder::Fault fault = decoder_->FaultAtEnd();
    const bool atEnd = pending_.empty() && packedEnd_;
    if (fault == Decoder::Fault::kCorrupt || (atEnd && got < block.size())) {
      if (fault != Decoder::Fault::kNone) {
        PrintFault(fault, kind_, name_);
        failed_ = true;
      }
      break;
    }
  }
  return got;
}

}  // namespace genetrain
