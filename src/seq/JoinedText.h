#ifndef GENETRAIN_SEQ_JOINEDTEXT_H
#define GENETRAIN_SEQ_JOINEDTEXT_H

#include <cstdint>
#include <string>
#include <string_view>

#include "common/Output.h"

namespace genetrain {

// The joined text of --clean_join and --clean on its way out. The text arrives in pieces of any
// size; runs of N can be edited across the pieces' boundaries (trimmed, or given flanking
// texts); what comes out goes straight on to an output file, which gathers it, or is only
// counted. So a joined text of any length is written without ever being held whole.
class JoinedText {
 public:
  // Only counted.
  JoinedText() = default;
  // Written to the output; a null output only counts.
  explicit JoinedText(OutputFile* output) : output_(output) {}
  JoinedText(const JoinedText&) = delete;
  JoinedText& operator=(const JoinedText&) = delete;

  // Every run of N longer than `maximum` keeps `maximum` of its N.
  void TrimRuns(std::size_t maximum);
  // Every run of N at least as long as both texts together starts with `left` and ends with
  // `right`, keeping its length.
  void FlankRuns(std::string_view left, std::string_view right);

  void Put(std::string_view text);
  // Ends the last run and hands out what is still held back: call once, after the last piece.
  void Finish();
  // The bytes handed out (all of them, after Finish).
  std::uint64_t Size() const { return size_; }

 private:
  enum class RunEdit { kNone, kTrim, kFlank };

  void PutTrimmed(std::string_view text);
  void PutFlanked(std::string_view text);
  void EndFlankedRun();
  void Emit(std::string_view bytes);
  void EmitN(std::uint64_t count);

  OutputFile* output_ = nullptr;
  RunEdit edit_ = RunEdit::kNone;
  std::size_t maximum_ = 0;
  std::string left_;
  std::string right_;
  std::uint64_t run_ = 0;   // N of the current run: seen so far (trim) or held back (flank)
  std::uint64_t size_ = 0;  // bytes handed out
};

}  // namespace genetrain

#endif
