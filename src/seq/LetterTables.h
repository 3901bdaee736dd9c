#ifndef GENETRAIN_SEQ_LETTERTABLES_H
#define GENETRAIN_SEQ_LETTERTABLES_H

#include <algorithm>
#include <array>
#include <cstdint>
#include <initializer_list>
#include <span>

namespace genetrain {

class Param;

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

// The capital letter of a code as the gene finder writes sequences: A, C, G, T, and N for any
// code that is not a base.
constexpr char BaseLetter(std::uint8_t code) {
  return IsBase(code) ? "ACGT"[code] : 'N';
}

// The complement of a base code; any code that is not a base has none and gives kOther.
constexpr std::uint8_t Complement(std::uint8_t code) {
  return IsBase(code) ? static_cast<std::uint8_t>(kT - code) : std::uint8_t{kOther};
}

// Turns a coded stretch into the other strand's reading of it, in place.
inline void ReverseComplement(std::span<std::uint8_t> codes) {
  std::reverse(codes.begin(), codes.end());
  for (std::uint8_t& code : codes) code = Complement(code);
}

// The index of a word of base codes, two bits per base with the first base highest: a word of
// k bases indexes 4^k entries.
constexpr std::uint32_t WordIndex(const std::uint8_t* codes, int letters) {
  std::uint32_t index = 0;
  for (int i = 0; i < letters; ++i) index = index << 2 | codes[i];
  return index;
}

// The index of the word's reverse complement: the word as the other strand reads it, its bases
// complemented in reverse order; 0 for no letters. The chains take it once per table entry, so
// the 2-bit letters are reversed in five swaps rather than one by one.
constexpr std::uint32_t ReverseComplementWord(std::uint32_t word, int letters) {
  if (letters <= 0) return 0;
  std::uint32_t r = word;
  r = ((r >> 2) & 0x33333333u) | ((r & 0x33333333u) << 2);
  r = ((r >> 4) & 0x0f0f0f0fu) | ((r & 0x0f0f0f0fu) << 4);
  r = ((r >> 8) & 0x00ff00ffu) | ((r & 0x00ff00ffu) << 8);
  r = (r >> 16) | (r << 16);
  // The last `letters` letters of the word are now the first ones; complementing is x XOR 3.
  const std::uint32_t all =
      letters >= 16 ? ~std::uint32_t{0} : (std::uint32_t{1} << (2 * letters)) - 1;
  return (letters >= 16 ? r : r >> (32 - 2 * letters)) ^ all;
}

// The codon index of three base codes, 16 * first + 4 * second + third.
constexpr unsigned CodonIndex(unsigned first, unsigned second, unsigned third) {
  return 16 * first + 4 * second + third;
}

constexpr unsigned ReverseComplementCodon(unsigned codon) {
  return ReverseComplementWord(codon, 3);
}

// The codons the options name.
inline constexpr unsigned kCodonATG = CodonIndex(kA, kT, kG), kCodonGTG = CodonIndex(kG, kT, kG),
                          kCodonTTG = CodonIndex(kT, kT, kG), kCodonCTG = CodonIndex(kC, kT, kG);
inline constexpr unsigned kCodonTAA = CodonIndex(kT, kA, kA), kCodonTGA = CodonIndex(kT, kG, kA),
                          kCodonTAG = CodonIndex(kT, kA, kG);

// A set of codons by index, 0..63; any other index is never a member.
class CodonSet {
 public:
  constexpr CodonSet() = default;
  constexpr CodonSet(std::initializer_list<unsigned> codons) {
    for (const unsigned codon : codons) Add(codon);
  }

  constexpr bool operator[](unsigned codon) const { return codon < 64 && (bits_ >> codon & 1); }
  constexpr void Add(unsigned codon) { bits_ |= std::uint64_t{1} << codon; }
  constexpr bool operator==(const CodonSet&) const = default;

  // The set as the other strand's codons appear on this one: each codon's reverse complement.
  constexpr CodonSet ReverseComplemented() const {
    CodonSet reverse;
    for (unsigned codon = 0; codon < 64; ++codon) {
      if ((*this)[codon]) reverse.Add(ReverseComplementCodon(codon));
    }
    return reverse;
  }

 private:
  std::uint64_t bits_ = 0;
};

// What a malformed codon flag does: its message is printed either way; then it is left out of
// the set and reading goes on, or reading stops with false.
enum class OnBadFlag { kLeaveOut, kFail };

// The stop codons named by --TAA_, --TGA_, --TAG_ and the start codons named by --ATG_, --GTG_,
// --TTG_, --CTG_, read in these orders: a flag is any number, true unless zero; an absent one is
// false. The set is filled only on success.
bool ReadStopCodons(Param& param, OnBadFlag onBad, CodonSet& stops);
bool ReadStartCodons(Param& param, OnBadFlag onBad, CodonSet& starts);

// Maps every input byte to its base code, or kDropped for a byte that is not a letter.
using CodeTable = std::array<std::uint8_t, 256>;
const CodeTable& BaseCodeTable();

// C locale white space: blank, tab, line feed, vertical tab, form feed, carriage return.
inline bool IsSpace(char byte) {
  return byte == ' ' || (byte >= '\t' && byte <= '\r');
}

}  // namespace genetrain

#endif
