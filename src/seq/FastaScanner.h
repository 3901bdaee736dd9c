#ifndef GENETRAIN_SEQ_FASTASCANNER_H
#define GENETRAIN_SEQ_FASTASCANNER_H

#include <string>
#include <string_view>
#include <vector>

#include "seq/LetterTables.h"

namespace genetrain {

// One record of a FASTA text as it stands in the buffer.
struct FastaSpan {
  std::string_view label;  // the header line from its ">", without the line feed; may be empty
  std::string_view body;   // raw bytes up to the next ">" (line ends, digits and all)
};

// Walks the records of a FASTA text in place, without copying:
// - white space before a record is skipped;
// - a record starting with ">" has that line as label, else the label is empty;
// - the body runs to the next ">" wherever it stands, even inside a line, or to the end.
// So text before the first ">" is a record with an empty label, and a non-empty text of white
// space only is one empty record.
class FastaScanner {
 public:
  explicit FastaScanner(std::string_view text) : text_(text) {}
  bool Next(FastaSpan& record);

 private:
  std::string_view text_;
  std::size_t cursor_ = 0;
};

// Appends the letters of a raw region through the table, dropping what the table drops (as
// CopyLetters does).
void AppendLetters(std::string_view region, const LetterTable& table, std::string& out);
// Appends the base codes of the letters of a raw region, dropping every non-letter.
void AppendCodes(std::string_view region, std::vector<std::uint8_t>& out);

}  // namespace genetrain

#endif
