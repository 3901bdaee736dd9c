#include "seq/LetterTables.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace genetrain {
namespace {

// Through the code table: exactly the letters A, C, G, T and U, in either case, are bases.
TEST(IsBase, ExactlyTheBaseLettersOfEveryByte) {
  const std::string_view base_letters = "ACGTUacgtu";
  const CodeTable& table = BaseCodeTable();
  for (int byte = 0; byte < 256; ++byte) {
    const bool letter = base_letters.find(static_cast<char>(byte)) != std::string_view::npos;
    EXPECT_EQ(IsBase(table[static_cast<std::size_t>(byte)]), letter) << byte;
  }
}

// Against the letters: every codon written out, reverse-complemented as text and coded again.
TEST(ReverseComplementCodon, MatchesTheReverseComplementOfTheLetters) {
  const std::string_view letters = "ACGT";
  const auto complement = [](char letter) { return "TGCA"[std::string_view("ACGT").find(letter)]; };
  const auto index = [&](std::string_view codon) {
    return CodonIndex(static_cast<unsigned>(letters.find(codon[0])),
                      static_cast<unsigned>(letters.find(codon[1])),
                      static_cast<unsigned>(letters.find(codon[2])));
  };
  for (const char first : letters) {
    for (const char second : letters) {
      for (const char third : letters) {
        const std::string codon = {first, second, third};
        const std::string reverse = {complement(third), complement(second), complement(first)};
        EXPECT_EQ(ReverseComplementCodon(index(codon)), index(reverse)) << codon;
      }
    }
  }
  EXPECT_EQ(index("ATG"), 14u);  // the index the model files and the ORF search use
  // The named codons are the codons their names spell.
  const std::pair<unsigned, std::string_view> named[] = {
      {kCodonATG, "ATG"}, {kCodonGTG, "GTG"}, {kCodonTTG, "TTG"}, {kCodonCTG, "CTG"},
      {kCodonTAA, "TAA"}, {kCodonTGA, "TGA"}, {kCodonTAG, "TAG"}};
  for (const auto& [codon, spelled] : named) EXPECT_EQ(codon, index(spelled)) << spelled;
  EXPECT_EQ(CodonSet({kCodonTAA, kCodonTGA, kCodonTAG}).ReverseComplemented(),
            CodonSet({index("TTA"), index("TCA"), index("CTA")}));
}

}  // namespace
}  // namespace genetrain
