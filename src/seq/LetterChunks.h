#ifndef GENETRAIN_SEQ_LETTERCHUNKS_H
#define GENETRAIN_SEQ_LETTERCHUNKS_H

#include <string>
#include <string_view>

#include "seq/LetterTables.h"
#include "seq/SSeq.h"

namespace genetrain {

// The letters of a raw FASTA region through the table into `out` (room for the region's size),
// dropping what the table drops; returns their number. Line by line: a line of the capitals A,
// C, G, T and N alone, which every letter table keeps as they are, is copied whole; any other
// line goes byte by byte through the table. Most FASTA lines are such lines, and finding a line
// end, checking the line and copying it are each done many bytes at a time. With a tally, the
// letters copied are also counted into it, as SSeq::TallyLetters counts them.
std::size_t CopyLetters(std::string_view raw, const LetterTable& table, char* out,
                        SSeq::Tally* tally = nullptr);

// Walks a raw FASTA region (line ends and all) in pieces and gives the letters of each piece
// through a letter table, in a buffer owned by the caller and reused from piece to piece: a
// record of any size is normalised in a few hundred kB, and a buffer kept across records is
// allocated once. The pieces stay within the second-level cache, so that what is made of the
// letters next reads them from there. Every table used here keeps the capitals A, C, G, T and N
// as they are.
class LetterChunks {
 public:
  static constexpr std::size_t kPiece = std::size_t{256} << 10;

  // With a tally, the letters of each piece are also counted into it.
  LetterChunks(std::string_view raw, const LetterTable& table, std::string& buffer,
               SSeq::Tally* tally = nullptr)
      : raw_(raw), table_(table), buffer_(buffer), tally_(tally) {
    if (buffer_.size() < kPiece) buffer_.resize(kPiece);
  }

  // The letters of the next piece; false once the region is used up.
  bool Next(std::string_view& letters) {
    if (raw_.empty()) return false;
    const std::string_view piece = raw_.substr(0, kPiece);
    raw_.remove_prefix(piece.size());
    letters = {buffer_.data(), CopyLetters(piece, table_, buffer_.data(), tally_)};
    return true;
  }

 private:
  std::string_view raw_;
  const LetterTable& table_;
  std::string& buffer_;
  SSeq::Tally* tally_;
};

}  // namespace genetrain

#endif
