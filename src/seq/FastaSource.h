#ifndef GENETRAIN_SEQ_FASTASOURCE_H
#define GENETRAIN_SEQ_FASTASOURCE_H

#include <cstddef>
#include <memory>
#include <string>

#include "common/InputStream.h"
#include "common/Spool.h"
#include "seq/FastaBlocks.h"

namespace genetrain {

// Whether a reading of a FastaSource may be followed by another.
enum class Reading { kAgain, kLast };

// A FASTA file that a command may read more than once: first to check or count, then to write.
// Every reading streams block by block, so memory stays small whatever the file's size. A
// regular file is read again from the start; anything else (a pipe, a device) can be read only
// once, so a first reading that may not be the last keeps the bytes in a spool on disk.
//
// Opening reads the first block, which tells whether the content is compressed: compressed
// content can turn out truncated or corrupt at its very end, so a command that writes as it
// reads, to files it cannot take back, reads such content through once before.
class FastaSource {
 public:
  explicit FastaSource(std::size_t blockSize) : blockSize_(std::max<std::size_t>(blockSize, 1)) {}

  // The loader's checks and messages.
  bool Open(const std::string& name);
  bool Compressed() const { return compressed_; }

  // One reading, every record to the sink (as ReadFastaBlocks hands them); false after a
  // reading message.
  template <typename Sink>
  bool Read(Sink& sink, Reading reading = Reading::kAgain);

 private:
  template <typename Sink>
  bool ReadFirst(Sink& sink, Reading reading);
  template <typename Sink>
  bool ReadSpool(Sink& sink);

  std::size_t blockSize_;
  std::string name_;
  bool regular_ = false;
  bool compressed_ = false;
  // The stream opened by Open with its first block, for the first reading.
  std::unique_ptr<InputStream> stream_;
  std::unique_ptr<char[]> first_;
  std::size_t firstSize_ = 0;
  Spool spool_;
};

inline bool FastaSource::Open(const std::string& name) {
  name_ = name;
  stream_ = std::make_unique<InputStream>();
  if (!stream_->Find(name.c_str()) || !stream_->Open()) return false;
  regular_ = stream_->Regular();
  first_.reset(new char[blockSize_]);
  firstSize_ = stream_->Read({first_.get(), blockSize_});
  if (stream_->Failed()) {
    stream_->PrintReadError();
    return false;
  }
  compressed_ = stream_->Compressed();
  return true;
}

template <typename Sink>
bool FastaSource::Read(Sink& sink, Reading reading) {
  if (stream_ != nullptr) return ReadFirst(sink, reading);
  if (!regular_) return ReadSpool(sink);
  return ReadFastaBlocks(name_, blockSize_, sink);
}

// The first reading goes on from the block read at opening, in its memory. What it reads of a
// stream that will be read again goes to the spool, to the end even where the sink stops early.
template <typename Sink>
bool FastaSource::ReadFirst(Sink& sink, Reading reading) {
  const std::unique_ptr<InputStream> stream = std::move(stream_);
  const std::unique_ptr<char[]> block = std::move(first_);
  const bool spooled = !regular_ && reading == Reading::kAgain;
  if (spooled && !spool_.Create()) return false;
  FastaSplitter splitter;
  std::size_t got = firstSize_;
  for (;;) {
    if (!SinkStopped(sink)) splitter.Feed({block.get(), got}, sink);
    if (spooled && !spool_.Append({block.get(), got})) return false;
    if (got < blockSize_ || (SinkStopped(sink) && !spooled)) break;
    got = stream->Read({block.get(), blockSize_});
  }
  if (stream->Failed()) {
    stream->PrintReadError();
    return false;
  }
  if (!SinkStopped(sink)) splitter.Finish(sink);
  return true;
}

template <typename Sink>
bool FastaSource::ReadSpool(Sink& sink) {
  const std::unique_ptr<char[]> block(new char[blockSize_]);
  FastaSplitter splitter;
  std::size_t got = blockSize_;
  for (std::uint64_t offset = 0; got == blockSize_ && !SinkStopped(sink); offset += got) {
    if (!spool_.ReadAt(offset, {block.get(), blockSize_}, got)) return false;
    splitter.Feed({block.get(), got}, sink);
  }
  if (!SinkStopped(sink)) splitter.Finish(sink);
  return true;
}

}  // namespace genetrain

#endif
