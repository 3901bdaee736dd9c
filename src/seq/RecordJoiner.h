#ifndef GENETRAIN_SEQ_RECORDJOINER_H
#define GENETRAIN_SEQ_RECORDJOINER_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "seq/JoinedText.h"
#include "seq/SSeq.h"

namespace genetrain {

// Joins records into one text, for --clean_join and --clean: a record with fewer unambiguous
// letters than the minimum is dropped whole; a filler stands between two records kept, never at
// the ends (records kept while the text is still empty get none). Each record's letters are
// made once, piece by piece, and handed to every output: with the filler as given, or with N in
// its place (the masked copy of --clean). With no output only the counts are made.
class RecordJoiner {
 public:
  // The minimum arrives as a signed 32-bit number: one of 2^31 or more has turned negative and
  // keeps every record. Counts are 64-bit and compared as such.
  RecordJoiner(std::string_view filler, std::int32_t minimum);

  void AddOutput(JoinedText& text, bool maskFiller = false);

  // Takes a record's sequence, either as read or as raw FASTA text (line ends and all): both are
  // counted and copied through the single-case view, which leaves read sequences as they are.
  void Add(std::string_view raw);

  const SSeq::Tally& All() const { return all_; }
  const SSeq::Tally& Kept() const { return kept_; }
  std::size_t KeptRecords() const { return keptRecords_; }
  // The length of the joined text before any edit of its N runs.
  std::uint64_t Length() const { return length_; }

 private:
  struct Output {
    JoinedText* text = nullptr;
    bool maskFiller = false;
  };

  void PutFiller();

  std::string filler_;
  std::string maskedFiller_;
  std::int32_t minimum_;
  std::vector<Output> outputs_;
  SSeq::Tally all_;
  SSeq::Tally kept_;
  std::size_t keptRecords_ = 0;
  std::uint64_t length_ = 0;
  std::string buffer_;  // the letters of one piece of a record
};

}  // namespace genetrain

#endif
