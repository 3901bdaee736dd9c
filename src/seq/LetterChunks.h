#ifndef GENETRAIN_SEQ_LETTERCHUNKS_H
#define GENETRAIN_SEQ_LETTERCHUNKS_H

#include <string>
#include <string_view>

#include "seq/LetterTables.h"

namespace genetrain {

// Walks a raw FASTA region (line ends and all) in pieces and gives the letters of each piece
// through a letter table, in a buffer owned by the caller and reused from piece to piece: a
// record of any size is normalised in a few hundred kB, and a buffer kept across records is
// allocated once. The pieces stay within the second-level cache, so that what is made of the
// letters next reads them from there.
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
  // Every byte is written, and the write position moves on only for kept ones: no branch per
  // byte.
  std::size_t Copy(std::string_view piece) {
    char* const out = buffer_.data();
    std::size_t kept = 0;
    for (const char byte : piece) {
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
