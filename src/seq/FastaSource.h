#ifndef GENETRAIN_SEQ_FASTASOURCE_H
#define GENETRAIN_SEQ_FASTASOURCE_H

#include <cstddef>
#include <memory>
#include <string>

#include "common/FileBuf.h"
#include "common/InputStream.h"
#include "seq/FastaBlocks.h"

namespace genetrain {

// A FASTA file that a command may read more than once: first to check or count, then to write.
// A regular file is streamed block by block at every reading, so memory stays small whatever
// its size; anything else (a pipe, a device) can be read only once, so it is held whole.
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
  bool Read(Sink& sink);

 private:
  std::size_t blockSize_;
  std::string name_;
  bool held_ = false;
  bool compressed_ = false;
  FileBuf whole_;
  // The stream opened by Open with its first block, for the first reading.
  std::unique_ptr<InputStream> stream_;
  std::unique_ptr<char[]> first_;
  std::size_t firstSize_ = 0;
};

inline bool FastaSource::Open(const std::string& name) {
  name_ = name;
  stream_ = std::make_unique<InputStream>();
  if (!stream_->Find(name.c_str())) return false;
  held_ = !stream_->Regular();
  if (held_) {
    stream_.reset();
    return whole_.Load(name.c_str());
  }
  if (!stream_->Open()) return false;
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
bool FastaSource::Read(Sink& sink) {
  FastaSplitter splitter;
  if (held_) {
    splitter.Feed(whole_.View(), sink);
  } else if (stream_ == nullptr) {
    return ReadFastaBlocks(name_, blockSize_, sink);
  } else {
    // The first reading goes on from the block read at opening, in its memory.
    const std::unique_ptr<InputStream> stream = std::move(stream_);
    const std::unique_ptr<char[]> block = std::move(first_);
    std::size_t got = firstSize_;
    splitter.Feed({block.get(), got}, sink);
    while (got == blockSize_ && !SinkStopped(sink)) {
      got = stream->Read({block.get(), blockSize_});
      splitter.Feed({block.get(), got}, sink);
    }
    if (stream->Failed()) {
      stream->PrintReadError();
      return false;
    }
  }
  if (!SinkStopped(sink)) splitter.Finish(sink);
  return true;
}

}  // namespace genetrain

#endif
