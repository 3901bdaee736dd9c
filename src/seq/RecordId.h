#ifndef GENETRAIN_SEQ_RECORDID_H
#define GENETRAIN_SEQ_RECORDID_H

#include <cstddef>
#include <string>
#include <string_view>

#include "seq/LetterTables.h"

namespace genetrain {

// The id of a FASTA record, as GFF3 seqids and gene names use it: the first word of its label
// after the ">", gathered from the pieces a FastaSplitter hands over; "seqN" for a record
// without one.
class RecordId {
 public:
  void Reset() {
    id_.clear();
    done_ = false;
    start_ = true;
  }
  void Add(std::string_view piece) {
    if (start_ && !piece.empty()) {
      piece.remove_prefix(1);  // the ">"
      start_ = false;
    }
    for (const char byte : piece) {
      if (done_) return;
      if (IsSpace(byte)) {
        done_ = !id_.empty();
        continue;
      }
      id_.push_back(byte);
    }
  }
  // The id of record `number` (counted from 1), leaving this one empty.
  std::string Take(std::size_t number) {
    if (id_.empty()) id_ = "seq" + std::to_string(number);
    std::string id = std::move(id_);
    Reset();
    return id;
  }

 private:
  std::string id_;
  bool done_ = false, start_ = true;
};

}  // namespace genetrain

#endif
