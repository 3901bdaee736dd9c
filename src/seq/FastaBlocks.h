#ifndef GENETRAIN_SEQ_FASTABLOCKS_H
#define GENETRAIN_SEQ_FASTABLOCKS_H

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "common/InputStream.h"
#include "seq/LetterTables.h"

namespace genetrain {

// The counting commands read their FASTA file in blocks of this size, so that their memory
// stays small whatever the size of the file. A block of 1 MB stays in the processor's cache
// from the system's copy through both scans (header marks, letters): measured faster than
// blocks of 4 to 16 MB.
inline constexpr std::size_t kFastaBlockSize = std::size_t{1} << 20;

// Cuts a FASTA text handed over block by block into the records that FastaScanner finds in the
// whole text, whatever the block boundaries. The sink hears, per record: Begin(), the label in
// pieces through Label() (from its ">", without the line feed; none for a record without
// header), the raw body in pieces through Body(), then End().
//
// Only white space at the very start is skipped: every later record starts at a ">", since a
// body runs up to the next one. A text that does not start (after white space) with ">" opens
// with a record without header, and a non-empty text of white space only is one empty record.
class FastaSplitter {
 public:
  template <typename Sink>
  void Feed(std::string_view block, Sink& sink);
  template <typename Sink>
  void Finish(Sink& sink);

 private:
  enum class Part { kStart, kLabel, kBody };
  Part part_ = Part::kStart;
  bool sawBytes_ = false;
};

template <typename Sink>
void FastaSplitter::Feed(std::string_view block, Sink& sink) {
  sawBytes_ = sawBytes_ || !block.empty();
  std::size_t pos = 0;
  while (pos < block.size()) {
    if (part_ == Part::kStart) {
      while (pos < block.size() && IsSpace(block[pos])) ++pos;
      if (pos == block.size()) return;
      sink.Begin();
      part_ = block[pos] == '>' ? Part::kLabel : Part::kBody;
    } else if (part_ == Part::kLabel) {
      const std::size_t end = block.find('\n', pos);
      sink.Label(block.substr(pos, end - pos));
      if (end == std::string_view::npos) return;
      part_ = Part::kBody;
      pos = end + 1;  // the line feed is no letter
    } else {
      const std::size_t end = block.find('>', pos);
      sink.Body(block.substr(pos, end - pos));
      if (end == std::string_view::npos) return;
      sink.End();
      sink.Begin();
      part_ = Part::kLabel;
      pos = end;
    }
  }
}

template <typename Sink>
void FastaSplitter::Finish(Sink& sink) {
  if (part_ == Part::kStart) {
    if (!sawBytes_) return;
    sink.Begin();
  }
  sink.End();
  part_ = Part::kStart;
  sawBytes_ = false;
}

// A sink may end the reading early (an output it cannot write) through Stopped().
template <typename Sink>
bool SinkStopped(const Sink& sink) {
  if constexpr (requires { sink.Stopped(); }) {
    return sink.Stopped();
  } else {
    return false;
  }
}

// Reads an open FASTA stream (gzip or plain) in blocks and hands its records to the sink. After a
// failure while reading the sink may have heard part of the file. A sink that stops is not told
// the end of the file: the caller asks it.
template <typename Sink>
bool ReadFastaBlocks(InputStream& input, std::size_t blockSize, Sink& sink) {
  blockSize = std::max<std::size_t>(blockSize, 1);
  const std::unique_ptr<char[]> block(new char[blockSize]);
  FastaSplitter splitter;
  std::size_t got = blockSize;
  while (got == blockSize) {
    if (SinkStopped(sink)) return true;
    got = input.Read({block.get(), blockSize});
    splitter.Feed({block.get(), got}, sink);
  }
  if (input.Failed()) {
    input.PrintReadError();
    return false;
  }
  splitter.Finish(sink);
  return true;
}

// The same for the named file, failing with the messages of FileBuf::Load.
template <typename Sink>
bool ReadFastaBlocks(const std::string& name, std::size_t blockSize, Sink& sink) {
  InputStream input;
  return input.Open(name.c_str()) && ReadFastaBlocks(input, blockSize, sink);
}

}  // namespace genetrain

#endif
