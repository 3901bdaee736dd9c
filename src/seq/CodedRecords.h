#ifndef GENETRAIN_SEQ_CODEDRECORDS_H
#define GENETRAIN_SEQ_CODEDRECORDS_H

#include <cstdint>
#include <string>
#include <vector>

namespace genetrain {

// The records of a FASTA file in memory, for the commands that need them all at once: each
// record's id (RecordId's rule) and its letters as base codes.
struct CodedRecords {
  std::vector<std::string> ids;
  std::vector<std::vector<std::uint8_t>> codes;
};

// Reads a FASTA file (gzip or plain; "-" standard input) block by block into `records`. False,
// with the message printed, when it cannot be read.
bool ReadCodedRecords(const std::string& name, CodedRecords& records);

}  // namespace genetrain

#endif
