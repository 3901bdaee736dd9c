#include "seq/LetterTables.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <utility>

#include "common/Param.h"
#include "seq/LetterChunks.h"

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

// The codon index of three letters, from their position in "ACGT".
unsigned Index(std::string_view codon) {
  const auto code = [](char letter) {
    return static_cast<unsigned>(std::string_view("ACGT").find(letter));
  };
  return CodonIndex(code(codon[0]), code(codon[1]), code(codon[2]));
}

// Against the letters: every codon written out, reverse-complemented as text and coded again.
TEST(ReverseComplementCodon, MatchesTheReverseComplementOfTheLetters) {
  const std::string_view letters = "ACGT";
  const auto complement = [](char letter) { return "TGCA"[std::string_view("ACGT").find(letter)]; };
  for (const char first : letters) {
    for (const char second : letters) {
      for (const char third : letters) {
        const std::string codon = {first, second, third};
        const std::string reverse = {complement(third), complement(second), complement(first)};
        EXPECT_EQ(ReverseComplementCodon(Index(codon)), Index(reverse)) << codon;
      }
    }
  }
  EXPECT_EQ(Index("ATG"), 14u);  // the index the model files and the ORF search use
  EXPECT_EQ(CodonSet({kCodonTAA, kCodonTGA, kCodonTAG}).ReverseComplemented(),
            CodonSet({Index("TTA"), Index("TCA"), Index("CTA")}));
}

// The named codons, and each codon flag alone, name the codon they spell.
TEST(CodonFlags, EachNamesTheCodonItSpells) {
  const std::pair<unsigned, std::string_view> named[] = {
      {kCodonTAA, "TAA"}, {kCodonTGA, "TGA"}, {kCodonTAG, "TAG"}, {kCodonATG, "ATG"},
      {kCodonGTG, "GTG"}, {kCodonTTG, "TTG"}, {kCodonCTG, "CTG"}};
  for (const auto& [codon, spelled] : named) {
    EXPECT_EQ(codon, Index(spelled)) << spelled;
    Param param;
    param.Set("--" + std::string(spelled) + "_", "0.5");
    CodonSet stops, starts;
    ASSERT_TRUE(ReadStopCodons(param, OnBadFlag::kFail, stops));
    ASSERT_TRUE(ReadStartCodons(param, OnBadFlag::kFail, starts));
    const bool stop = spelled.starts_with("TA") || spelled == "TGA";
    EXPECT_EQ(stops, stop ? CodonSet{Index(spelled)} : CodonSet{}) << spelled;
    EXPECT_EQ(starts, stop ? CodonSet{} : CodonSet{Index(spelled)}) << spelled;
  }
}

}  // namespace
}  // namespace genetrain

namespace genetrain {
namespace {

// The line copy of CopyLetters (plain lines taken whole, several at a time, others through the
// table) against the table applied byte by byte, on lines of shifting widths with now and then a
// byte that is not a capital base, a carriage return or no final line feed.
TEST(CopyLetters, EqualsTheTableByteByByte) {
  std::mt19937 random(5);
  const std::string odd = "acgtRYn \r\t*-0>";
  for (const LetterTable* table : {&UpperLetterTable(), &CasePreservingLetterTable()}) {
    for (int round = 0; round < 300; ++round) {
      std::string raw;
      std::size_t width = 1 + random() % 130;
      for (int line = 0, lines = static_cast<int>(random() % 40); line < lines; ++line) {
        // Short widths now and then, so that another line's feed may fall where a base should.
        if (random() % 4 == 0) width = random() % 2 == 0 ? random() % 6 : random() % 300;
        for (std::size_t i = 0; i < width; ++i) {
          raw.push_back(random() % 50 == 0 ? odd[random() % odd.size()] : "ACGTN"[random() % 5]);
        }
        if (line + 1 < lines || random() % 2 == 0) raw.push_back('\n');
      }
      std::string expected;
      SSeq::Tally expectedTally;
      for (const char byte : raw) {
        if (const char letter = (*table)[static_cast<unsigned char>(byte)]) {
          expected.push_back(letter);
        }
      }
      expectedTally.Add(SSeq::TallyLetters(expected));
      std::string out(raw.size(), '\0');
      SSeq::Tally tally;
      out.resize(CopyLetters(raw, *table, out.data(), &tally));
      ASSERT_EQ(out, expected) << raw;
      EXPECT_EQ(tally.a, expectedTally.a);
      EXPECT_EQ(tally.c, expectedTally.c);
      EXPECT_EQ(tally.g, expectedTally.g);
      EXPECT_EQ(tally.t, expectedTally.t);
      ASSERT_EQ(tally.n, expectedTally.n) << raw;
    }
  }
}

}  // namespace
}  // namespace genetrain
