#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "genes/GenesTestSupport.h"

namespace genetrain {
namespace {

using test::GeneSequence;
using test::GenesOn;

// The genes turned away as "left-right", with "<" and ">" marking open ends.
std::string Rejected(const Genome& genome) {
  std::string text;
  for (const GENE& gene : genome.rejected) {
    text += std::string(gene.left_complete ? "" : "<") + std::to_string(gene.left) + "-" +
            std::to_string(gene.right) + (gene.right_complete ? "" : ">") + " ";
  }
  return text;
}

std::string A(int count) {
  return std::string(count, 'A');
}
std::string T(int count) {
  return std::string(count, 'T');
}

// 99 bases: CCC, a 93-base gene body from ATG to TAA, GGG; both strands of 1..99 are annotated.
const std::string kGene99 = "CCCATG" + A(87) + "TAAGGG";
const std::string kBothStrands = "d + 1 99 99 1\nr - 1 99 99 1\n";

TEST(ExtractCoding, MarginsLengthLimitsAndRefusedGenes) {
  struct Case {
    std::string bases, genes;
    int left, right;
    std::string coding, rejected;
    bool stops = false;
    std::uint32_t minCod = 0;
    bool excludePartial = true;
  };
  const Case cases[] = {
      // L comes off the start end, R off the stop end: at the right for a reverse gene, which is
      // read backwards and complemented.
      {kGene99, kBothStrands, 6, 3, A(87) + "TAA\n" + T(87) + "CAT\n", ""},
      // Six bases minus 3 + 3 leave nothing: turned away even with MIN_COD 0.
      {A(300), "a + 1 6 6 1\n", 3, 3, "", "0-5 "},
      // The limit applies after trimming: 96 - 3 - 3 = 90 is kept, 93 - 6 = 87 is not.
      {A(300), "a + 1 96 96 1\nb + 101 193 93 1\n", 3, 3, A(90) + "\n", "100-192 ", false, 90},
      // Every refused record is kept, in gene set order, the unreadable line too.
      {A(300), "a + <1 99 99 1\nb - 101 >199 99 1\nc + 201 300 100 1\njunk\n", 0, 0,
       A(99) + "\n" + T(99) + "\n", "200-299 -1--1 ", false, 0, false},
      // A stop followed by one base past the region is still the gene's last codon.
      {"CCCATGAAATAAGGG", "a + 4 12 9 1\n", 0, -1, "ATGAAATAAG\n", "", true},
      // R = -3 adds three bases past each stop: inside the sequence for the direct gene at 4..12,
      // past the end for the one at 7..15 and past the start for the reverse gene at 1..9.
      {"CCCATGAAATAAGGG", "a + 4 12 9 1\nb + 7 15 9 1\nc - 1 9 9 1\n", 0, -3, "ATGAAATAAGGG\n",
       "6-14 0-8 "},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.genes + " margins " + std::to_string(c.left) + " " + std::to_string(c.right));
    const VSeq seq = GeneSequence(c.bases, c.stops);
    Genome genome(GenomeSettings{.min_cod = c.minCod, .exclude_partial = c.excludePartial});
    genome.ExtractCoding(seq, GenesOn(seq, c.genes), c.left, c.right);
    EXPECT_EQ(genome.WriteCoding(), ">cod1\n" + c.coding);
    EXPECT_EQ(Rejected(genome), c.rejected);
  }
}

TEST(ExtractNonCoding, MasksTheUnionOfAllSpans) {
  struct Case {
    std::string bases, genes;
    std::string nonCoding;
    std::uint32_t minNon = 0;
    bool twoColumn = false;
    std::string err = "";
  };
  const std::string outside = "error, if this is printed - error in code\n";
  const std::string runs = "ACGTNACGTAAACCCGGGTTT";
  const Case cases[] = {
      // Overlapping 6..11 and 9..14 mask 6..14; 18..20 and 21..23 touch and leave nothing
      // between; margins, strands, completeness and validity (30..33 holds 4 bases) play no part.
      {"AAAAACCCCCGGGGGTTTTTNNAAACCCGGGTTTAACCGG",
       "a + 7 12 6 1\nb - 10 15 6 2\nc + 19 21 3 1\nd - 22 24 3 1\ne + <31 >34 4 1\n",
       "AAAAAC\nTTT\nACCCGG\nAACCGG\n"},
      {runs, "", runs + "\n"},                               // N stays a base
      {runs, "a + 5 7 3 1\nb + 13 18 6 1\n", "GTAAA\n", 5},  // ACGT and TTT are too short
      // b ends one past the sequence: reported. The comment and the left coordinate 0 give no
      // span and are skipped silently.
      {"ACGTACGTACGT", "a + 1 3 3 1\nb + 10 13 3 1\n# comment\nc + 0 5 6 1\n", "TACGTACGT\n", 0,
       false, outside},
      // "9 4" is an empty span; "x 3" reads a malformed left as -2: outside, reported.
      {"ACGTACGTACGT", "2 3\n9 4\nx 3\n", "A\nTACGTACGT\n", 0, true, outside},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.bases + " / " + c.genes);
    const VSeq seq = GeneSequence(c.bases);
    Genome genome(GenomeSettings{.min_non = c.minNon});
    const test::Outcome run = test::Capture([&] {
      genome.ExtractNonCoding(seq, GenesOn(seq, c.genes, c.twoColumn));
      return true;
    });
    EXPECT_EQ(run.err, c.err);
    EXPECT_EQ(genome.WriteNonCoding(), c.nonCoding);
  }
}

}  // namespace
}  // namespace genetrain
