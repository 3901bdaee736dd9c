#include "seq/RecordJoiner.h"

#include "seq/LetterChunks.h"

namespace genetrain {

RecordJoiner::RecordJoiner(std::string_view filler, std::int32_t minimum)
    : filler_(filler), maskedFiller_(filler.size(), 'N'), minimum_(minimum) {}

void RecordJoiner::AddOutput(JoinedText& text, bool maskFiller) {
  outputs_.push_back({&text, maskFiller});
}

void RecordJoiner::Add(std::string_view raw) {
  Begin();
  Put(raw);
  End();
}

// A minimum of 0 or less keeps every record, even an empty one, before any letter is seen.
void RecordJoiner::Begin() {
  own_ = {};
  keeping_ = false;
  held_.clear();
  if (minimum_ <= 0) Keep();
}

void RecordJoiner::Put(std::string_view raw) {
  if (outputs_.empty()) {
    own_.Add(SSeq::TallyLetters(raw));
    return;
  }
  SSeq::Tally counts;
  LetterChunks chunks(raw, UpperLetterTable(), buffer_, &counts);
  std::string_view letters;
  while (chunks.Next(letters)) {
    PutLetters(letters, counts);
    counts = {};
  }
}

void RecordJoiner::PutLetters(std::string_view letters, const SSeq::Tally& counts) {
  own_.Add(counts);
  if (keeping_) {
    Emit(letters);
    return;
  }
  held_.append(letters);
  if (static_cast<std::int64_t>(own_.Unambiguous()) < minimum_) return;
  Keep();
  Emit(held_);
  held_.clear();
}

void RecordJoiner::End() {
  all_.Add(own_);
  if (!keeping_ && static_cast<std::int64_t>(own_.Unambiguous()) >= minimum_) Keep();
  if (!keeping_) return;
  length_ += own_.All();  // the letters are exactly what the tally counts
  kept_.Add(own_);
  ++keptRecords_;
}

// The test is on the text, not on the count of records kept: the filler goes before the record's
// first letter, after everything kept before it.
void RecordJoiner::Keep() {
  keeping_ = true;
  if (length_ > 0) PutFiller();
}

void RecordJoiner::PutFiller() {
  for (const Output& output : outputs_) {
    output.text->Put(output.maskFiller ? maskedFiller_ : filler_);
  }
  length_ += filler_.size();
}

void RecordJoiner::Emit(std::string_view letters) {
  for (const Output& output : outputs_) output.text->Put(letters);
}

}  // namespace genetrain
