#include "seq/JoinedText.h"

#include <algorithm>
#include <cstring>

namespace genetrain {

namespace {

// The end of the run of N that starts at `pos`.
std::size_t RunEnd(std::string_view text, std::size_t pos) {
  while (pos < text.size() && text[pos] == 'N') ++pos;
  return pos;
}

// The next N at or after `pos`, or the end of the text.
std::size_t NextN(std::string_view text, std::size_t pos) {
  const void* hit = std::memchr(text.data() + pos, 'N', text.size() - pos);
  return hit == nullptr ? text.size()
                        : static_cast<std::size_t>(static_cast<const char*>(hit) - text.data());
}

}  // namespace

void JoinedText::TrimRuns(std::size_t maximum) {
  edit_ = RunEdit::kTrim;
  maximum_ = maximum;
}

void JoinedText::FlankRuns(std::string_view left, std::string_view right) {
  edit_ = RunEdit::kFlank;
  left_.assign(left);
  right_.assign(right);
}

void JoinedText::Put(std::string_view text) {
  switch (edit_) {
    case RunEdit::kNone:
      Emit(text);
      break;
    case RunEdit::kTrim:
      PutTrimmed(text);
      break;
    case RunEdit::kFlank:
      PutFlanked(text);
      break;
  }
}

void JoinedText::Finish() {
  if (edit_ == RunEdit::kFlank) EndFlankedRun();
}

// All N look alike: keeping the first `maximum_` of a run gives what keeping its last ones does.
void JoinedText::PutTrimmed(std::string_view text) {
  std::size_t pos = 0;
  while (pos < text.size()) {
    const std::size_t start = NextN(text, pos);
    if (start > pos) {
      Emit(text.substr(pos, start - pos));
      run_ = 0;
    }
    if (start == text.size()) break;
    const std::size_t end = RunEnd(text, start);
    const std::uint64_t room = run_ < maximum_ ? maximum_ - run_ : 0;
    EmitN(std::min<std::uint64_t>(end - start, room));
    run_ += end - start;
    pos = end;
  }
}

// A run is held back as a count until a letter other than N (or the end) shows its length.
void JoinedText::PutFlanked(std::string_view text) {
  std::size_t pos = 0;
  while (pos < text.size()) {
    const std::size_t start = NextN(text, pos);
    if (start > pos) {
      EndFlankedRun();
      Emit(text.substr(pos, start - pos));
    }
    if (start == text.size()) break;
    const std::size_t end = RunEnd(text, start);
    run_ += end - start;
    pos = end;
  }
}

void JoinedText::EndFlankedRun() {
  if (run_ == 0) return;
  const std::uint64_t flanks = left_.size() + right_.size();
  if (run_ >= flanks) {
    Emit(left_);
    EmitN(run_ - flanks);
    Emit(right_);
  } else {
    EmitN(run_);
  }
  run_ = 0;
}

void JoinedText::Emit(std::string_view bytes) {
  size_ += bytes.size();
  if (output_ != nullptr) output_->Write(bytes);
}

void JoinedText::EmitN(std::uint64_t count) {
  size_ += count;
  if (output_ == nullptr) return;
  static const std::string kRun(std::size_t{64} << 10, 'N');
  for (; count > 0; count -= std::min<std::uint64_t>(count, kRun.size())) {
    output_->Write(std::string_view(kRun).substr(0, std::min<std::uint64_t>(count, kRun.size())));
  }
}

}  // namespace genetrain
