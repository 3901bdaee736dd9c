#ifndef GENETRAIN_SEQ_LETTERTABLES_H
#define GENETRAIN_SEQ_LETTERTABLES_H

#include <array>
#include <cstdint>

namespace genetrain {

// Maps every input byte to the letter stored for it; 0 marks a byte that is dropped (everything
// that is not a letter of the C locale: digits, blanks, line ends, punctuation, bytes above 127).
using LetterTable = std::array<char, 256>;

// A, C, G, T as capitals (U as T), every other letter N: the single-case view.
const LetterTable& UpperLetterTable();
// A, C, G, T and a, c, g, t kept (U as T, u as t), every other letter N: the case-keeping view.
const LetterTable& CasePreservingLetterTable();

// Base codes: A 0, C 1, G 2, T and U 3 (either case), any other letter 4; 5 marks a masked base.
enum BaseCode : std::uint8_t { kA = 0, kC = 1, kG = 2, kT = 3, kOther = 4, kMasked = 5 };
inline constexpr std::uint8_t kDropped = 0xff;

// Whether the code is an unambiguous base, A, C, G or T: only those take part in codons, words
// and complements.
constexpr bool IsBase(std::uint8_t code) {
  return code < kOther;
}

// The codon index of three base codes, 16 * first + 4 * second + third (ATG = 14).
constexpr unsigned CodonIndex(unsigned first, unsigned second, unsigned third) {
  return 16 * first + 4 * second + third;
}

// The index of the codon's reverse complement: the codon as the other strand reads it, its bases
// complemented (x -> 3 - x) in reverse order.
constexpr unsigned ReverseComplementCodon(unsigned codon) {
  return CodonIndex(3 - codon % 4, 3 - codon / 4 % 4, 3 - codon / 16);
}

// Maps every input byte to its base code, or kDropped for a byte that is not a letter.
using CodeTable = std::array<std::uint8_t, 256>;
const CodeTable& BaseCodeTable();

// C locale white space: blank, tab, line feed, vertical tab, form feed, carriage return.
inline bool IsSpace(char byte) {
  return byte == ' ' || (byte >= '\t' && byte <= '\r');
}

}  // namespace genetrain

#endif
