#ifndef GENETRAIN_SEQ_LETTERCHUNKS_H
#define GENETRAIN_SEQ_LETTERCHUNKS_H

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "seq/LetterTables.h"

namespace genetrain {

// Walks a raw FASTA region (line ends and all) in pieces and gives the letters of each piece
// through a letter table, in a buffer owned by the caller and reused from piece to piece: a
// record of any size is normalised in a few hundred kB, and a buffer kept across records is
// allocated once. The pieces stay within the second-level cache, so that what is made of the
// letters next reads them from there. Every table used here keeps the capitals A, C, G, T and N
// as they are.
class LetterChunks {
 public:
  static constexpr std::size_t kPiece = std::size_t{256} << 10;

  LetterChunks(std::string_view raw, const LetterTable& table, std::string& buffer)
      : raw_(raw), table_(table), buffer_(buffer) {
    if (buffer_.size() < kPiece) buffer_.resize(kPiece);
  }

  // The letters of the next piece; false once the region is used up.
  bool Next(std::string_view& letters) {
    if (raw_.empty()) return false;
    const std::string_view piece = raw_.substr(0, kPiece);
    raw_.remove_prefix(piece.size());
    letters = {buffer_.data(), Copy(piece)};
    return true;
  }

 private:
  // Line by line: a line of the capitals A, C, G, T and N alone, which every letter table keeps
  // as they are, is copied whole; any other line goes byte by byte through the table. Most
  // FASTA lines are such lines, and finding a line end, checking the line and copying it are
  // each done many bytes at a time.
  std::size_t Copy(std::string_view piece) {
    char* const out = buffer_.data();
    std::size_t kept = 0;
    while (!piece.empty()) {
      const void* lineEnd = std::memchr(piece.data(), '\n', piece.size());
      const std::size_t length =
          lineEnd == nullptr
              ? piece.size()
              : static_cast<std::size_t>(static_cast<const char*>(lineEnd) - piece.data());
      const std::string_view line = piece.substr(0, length);
      if (OnlyPlainBases(line)) {
        std::memcpy(out + kept, line.data(), line.size());
        kept += line.size();
      } else {
        kept += CopyThroughTable(line, out + kept);
      }
      piece.remove_prefix(std::min(length + 1, piece.size()));  // the line feed is no letter
    }
    return kept;
  }

  // Counted in sums rather than tested as a set, so that the compiler checks many bytes at once;
  // a block of 240 keeps the count within one byte.
  static bool OnlyPlainBases(std::string_view line) {
    constexpr std::size_t kBlock = 240;
    for (std::size_t start = 0; start < line.size(); start += kBlock) {
      const std::size_t end = std::min(line.size(), start + kBlock);
      std::uint8_t bases = 0;
      for (std::size_t i = start; i < end; ++i) {
        const char byte = line[i];
        bases += byte == 'A';
        bases += byte == 'C';
        bases += byte == 'G';
        bases += byte == 'T';
        bases += byte == 'N';
      }
      if (bases != end - start) return false;
    }
    return true;
  }

  // Every byte is written, and the write position moves on only for kept ones: no branch per
  // byte.
  std::size_t CopyThroughTable(std::string_view line, char* out) const {
    std::size_t kept = 0;
    for (const char byte : line) {
      const char letter = table_[static_cast<unsigned char>(byte)];
      out[kept] = letter;
      kept += letter != 0;
    }
    return kept;
  }

  std::string_view raw_;
  const LetterTable& table_;
  std::string& buffer_;
};

}  // namespace genetrain

#endif
