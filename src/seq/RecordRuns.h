#ifndef GENETRAIN_SEQ_RECORDRUNS_H
#define GENETRAIN_SEQ_RECORDRUNS_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace genetrain {

// The record utilities that only count (--stat_fasta, --count_substring_n,
// --count_substring_atcg). Each reads the FASTA file in blocks of `blockSize` bytes and writes
// its lines to standard output whenever about a block of them is ready; false after a loading
// message. The commands use kFastaBlockSize.
bool WriteRecordStats(const std::string& name, std::size_t blockSize);
bool WriteNRunLengths(const std::string& name, std::size_t blockSize);
// The stretches between runs of N longer than `maximum`.
bool WriteStretches(const std::string& name, std::int32_t maximum, std::size_t blockSize);

}  // namespace genetrain

#endif
