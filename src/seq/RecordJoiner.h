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
//
// A record arrives in pieces of any size. Its letters are held back only until it has as many
// unambiguous letters as the minimum asks; from then on it is known to be kept and flows
// straight through. So a record of any length is joined in the memory of the minimum.
class RecordJoiner {
 public:
  // The minimum arrives as a signed 32-bit number: one of 2^31 or more has turned negative and
  // keeps every record. Counts are 64-bit and compared as such.
  RecordJoiner(std::string_view filler, std::int32_t minimum);

  void AddOutput(JoinedText& text, bool maskFiller = false);

  // A whole record's sequence, either as read or as raw FASTA text (line ends and all): both are
  // counted and copied through the single-case view, which leaves read sequences as they are.
  void Add(std::string_view raw);

  // The same in pieces: Begin, any number of Put, End.
  void Begin();
  void Put(std::string_view raw);
  void End();

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

  void PutLetters(std::string_view letters, const SSeq::Tally& counts);
  void Keep();
  void PutFiller();
  void Emit(std::string_view letters);

  std::string filler_;
  std::string maskedFiller_;
  std::int32_t minimum_;
  std::vector<Output> outputs_;
  SSeq::Tally all_;
  SSeq::Tally kept_;
  std::size_t keptRecords_ = 0;
  std::uint64_t length_ = 0;
  // The record under way: its counts so far, whether it is known to be kept, and its letters
  // held back until then.
  SSeq::Tally own_;
  bool keeping_ = false;
  std::string held_;
  std::string buffer_;  // the letters of one piece of a record
};

}  // namespace genetrain

#endif
