#ifndef GENETRAIN_SEQ_SEQRECORD_H
#define GENETRAIN_SEQ_SEQRECORD_H

#include <string>
#include <string_view>
#include <vector>

#include "seq/LetterTables.h"

namespace genetrain {

// A FASTA record in memory: the header line with its ">" (a carriage return before the line
// feed stays in it; empty for text before the first header) and the normalised letters.
struct SeqRecord {
  std::string label;
  std::string sequence;
};

// Reads a FASTA file through a letter table and appends its records. Only loading can fail; its
// message is printed by the loader.
bool ReadFastaRecords(const std::string& name, const LetterTable& table,
                      std::vector<SeqRecord>& records);

}  // namespace genetrain

#endif
