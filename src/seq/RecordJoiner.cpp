#include "seq/RecordJoiner.h"

#include "seq/LetterChunks.h"

namespace genetrain {

RecordJoiner::RecordJoiner(std::string_view filler, std::int32_t minimum)
    : filler_(filler), maskedFiller_(filler.size(), 'N'), minimum_(minimum) {}

void RecordJoiner::AddOutput(JoinedText& text, bool maskFiller) {
  outputs_.push_back({&text, maskFiller});
}

void RecordJoiner::Add(std::string_view raw) {
  const SSeq::Tally own = SSeq::TallyLetters(raw);
  all_.Add(own);
  if (static_cast<std::int64_t>(own.Unambiguous()) < minimum_) return;
  // The test is on the text, not on the count of records kept.
  if (length_ > 0) PutFiller();
  if (!outputs_.empty()) {
    LetterChunks chunks(raw, UpperLetterTable(), buffer_);
    std::string_view letters;
    while (chunks.Next(letters)) {
      for (const Output& output : outputs_) output.text->Put(letters);
    }
  }
  length_ += own.All();  // the letters are exactly what the tally counts
  kept_.Add(own);
  ++keptRecords_;
}

void RecordJoiner::PutFiller() {
  for (const Output& output : outputs_) {
    output.text->Put(output.maskFiller ? maskedFiller_ : filler_);
  }
  length_ += filler_.size();
}

}  // namespace genetrain
