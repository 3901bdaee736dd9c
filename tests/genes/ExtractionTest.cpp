#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "TestSupport.h"
#include "genes/Genome.h"
#include "seq/VSeq.h"

namespace genetrain {
namespace {

using testing::internal::CaptureStderr;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStderr;
using testing::internal::GetCapturedStdout;

// The sequence as the gene commands load it; `flags` are further options such as --TAA_ 1.
VSeq Loaded(const std::string& bases, const std::vector<std::string>& flags = {}) {
  test::ScratchDir dir;
  Param param;
  param.Set("--seq", dir.Write("g.fa", ">g\n" + bases + "\n"));
  for (std::size_t i = 0; i + 1 < flags.size(); i += 2) param.Set(flags[i], flags[i + 1]);
  VSeq seq;
  EXPECT_TRUE(seq.LoadForGenes(param));
  return seq;
}

// A six-column gene set (or two-column with `twoColumn`) limited to the sequence.
GeneSet Genes(const VSeq& seq, const std::string& text, bool twoColumn = false) {
  GeneSet set;
  set.max_right = static_cast<std::int32_t>(seq.sequence.size());
  set.two_column = twoColumn;
  set.Parse(text.data(), text.data() + text.size());
  return set;
}

Genome DefaultGenome() {
  Param none;
  return Genome(none);
}

std::vector<std::string> Letters(const Genome& genome, const std::vector<CodeSeq>& list) {
  std::vector<std::string> lines;
  for (const CodeSeq& codes : list) {
    std::string line = genome.WriteSeq(codes);
    line.pop_back();
    lines.push_back(line);
  }
  return lines;
}

// 99 bases: CCC, a gene body of 93 bases from ATG to TAA, GGG. With margins 3 and 3 only the
// body is left; the trimmed ends are the only C runs and G runs of the sequence.
const std::string kGene99 =
    "CCC"
    "ATG" +
    std::string(87, 'A') +
    "TAA"
    "GGG";

TEST(ExtractCoding, MarginsTrimStartEndAndStopEndOnBothStrands) {
  const VSeq seq = Loaded(kGene99, {"--TAA_", "1"});
  Genome genome = DefaultGenome();
  genome.ExtractCoding(seq, Genes(seq, "d + 1 99 99 1\nr - 1 99 99 1\n"), 3, 3);
  ASSERT_EQ(genome.cod1.size(), 2u);
  EXPECT_EQ(Letters(genome, genome.cod1)[0], "ATG" + std::string(87, 'A') + "TAA");
  // Reverse: the complement read backwards, 96..98 (start end) and 0..2 (stop end) trimmed.
  EXPECT_EQ(Letters(genome, genome.cod1)[1], "TTA" + std::string(87, 'T') + "CAT");
  EXPECT_TRUE(genome.rejected.empty());
}

TEST(ExtractCoding, UnequalMarginsFollowTheGeneDirection) {
  const VSeq seq = Loaded(kGene99);
  Genome genome = DefaultGenome();
  // L = 6 comes off the start end, R = 3 off the stop end: for the reverse gene the start end
  // is at the right, so TAA GGG and CCC go and ATG A...A is read backwards and complemented.
  genome.ExtractCoding(seq, Genes(seq, "d + 1 99 99 1\nr - 1 99 99 1\n"), 6, 3);
  ASSERT_EQ(genome.cod1.size(), 2u);
  EXPECT_EQ(Letters(genome, genome.cod1)[0], std::string(87, 'A') + "TAA");
  EXPECT_EQ(Letters(genome, genome.cod1)[1], std::string(87, 'T') + "CAT");
}

TEST(ExtractCoding, LengthLimitsTurnGenesAway) {
  const VSeq seq = Loaded(std::string(300, 'A'));
  Genome genome = DefaultGenome();
  // Six bases minus 3 + 3 leave nothing: turned away even with MIN_COD 0.
  genome.ExtractCoding(seq, Genes(seq, "a + 1 6 6 1\n"), 3, 3);
  EXPECT_TRUE(genome.cod1.empty());
  ASSERT_EQ(genome.rejected.size(), 1u);
  EXPECT_EQ(genome.rejected[0].right, 5);

  Genome strict = DefaultGenome();
  strict.min_cod = 90;
  strict.ExtractCoding(seq, Genes(seq, "a + 1 90 90 1\nb + 101 187 87 1\nc + 201 296 96 1\n"), 0,
                       0);
  EXPECT_EQ(strict.cod1.size(), 2u);
  ASSERT_EQ(strict.rejected.size(), 1u);
  EXPECT_EQ(strict.rejected[0].left, 100);

  // The limit applies after trimming: 96 - 3 - 3 = 90 is kept, 93 - 6 = 87 is not.
  Genome trimmed = DefaultGenome();
  trimmed.min_cod = 90;
  trimmed.ExtractCoding(seq, Genes(seq, "a + 1 96 96 1\nb + 101 193 93 1\n"), 3, 3);
  EXPECT_EQ(trimmed.cod1.size(), 1u);
  EXPECT_EQ(trimmed.cod1[0].size(), 90u);
  ASSERT_EQ(trimmed.rejected.size(), 1u);
  EXPECT_EQ(trimmed.rejected[0].left, 100);
}

TEST(ExtractCoding, PartialAndInvalidGenes) {
  const VSeq seq = Loaded(std::string(300, 'A'));
  const std::string text = "a + <1 99 99 1\nb - 101 >199 99 1\nc + 201 300 100 1\njunk\n";
  Genome genome = DefaultGenome();
  genome.ExtractCoding(seq, Genes(seq, text), 0, 0);
  EXPECT_TRUE(genome.cod1.empty());
  ASSERT_EQ(genome.rejected.size(), 4u);  // every record, in gene set order
  EXPECT_FALSE(genome.rejected[0].left_complete);
  EXPECT_FALSE(genome.rejected[1].right_complete);
  EXPECT_EQ(genome.rejected[2].left, 200);
  EXPECT_EQ(genome.rejected[3].left, -1);

  Genome partial = DefaultGenome();
  partial.exclude_partial = false;
  partial.ExtractCoding(seq, Genes(seq, text), 0, 0);
  EXPECT_EQ(partial.cod1.size(), 2u);
  EXPECT_EQ(partial.rejected.size(), 2u);
}

TEST(ExtractCoding, InternalStopTurnsGeneAway) {
  const VSeq seq = Loaded(
      "ATGTAAGGGTAA"
      "ATGGGGGGGTAA",
      {"--TAA_", "1"});
  Genome genome = DefaultGenome();
  CaptureStdout();
  genome.ExtractCoding(seq, Genes(seq, "a + 1 12 12 1\nb + 13 24 12 1\n"), 0, 0);
  EXPECT_EQ(GetCapturedStdout(), "warning, STOP codon found inside protein: 0 11 6\n");
  ASSERT_EQ(genome.cod1.size(), 1u);
  EXPECT_EQ(Letters(genome, genome.cod1)[0], "ATGGGGGGGTAA");
  ASSERT_EQ(genome.rejected.size(), 1u);
  EXPECT_EQ(genome.rejected[0].left, 0);
}

TEST(ExtractCoding, NegativeRightMarginStaysInsideTheSequence) {
  const VSeq seq = Loaded(
      "CCC"
      "ATGAAATAA"
      "GGG");  // 15 bases
  Genome genome = DefaultGenome();
  // R = -3 adds three bases past each stop: inside the sequence for the direct gene at 4..12,
  // past the end for the one at 7..15 and past the start for the reverse gene at 1..9.
  genome.ExtractCoding(seq, Genes(seq, "a + 4 12 9 1\nb + 7 15 9 1\nc - 1 9 9 1\n"), 0, -3);
  ASSERT_EQ(genome.cod1.size(), 1u);
  EXPECT_EQ(Letters(genome, genome.cod1)[0], "ATGAAATAAGGG");
  ASSERT_EQ(genome.rejected.size(), 2u);
  EXPECT_EQ(genome.rejected[0].left, 6);
  EXPECT_EQ(genome.rejected[1].left, 0);
}

TEST(ExtractCoding, GeneOnePastTheEndIsTurnedAway) {
  const VSeq seq = Loaded(std::string(98, 'A'));
  Genome genome = DefaultGenome();
  // The gene set admits a last base one past the sequence; the piece comes out short.
  const GeneSet set = Genes(seq, "a + 1 99 99 1\n");
  ASSERT_TRUE(set.genes[0].valid);
  genome.ExtractCoding(seq, set, 0, 0);
  EXPECT_TRUE(genome.cod1.empty());
  EXPECT_EQ(genome.rejected.size(), 1u);
}

TEST(ExtractCoding, SeparateCodSplitsByClass) {
  const VSeq seq = Loaded(
      "ATGCCCTAA"
      "ATGGGGTAA"
      "ATGTTTTAA");
  const std::string text = "a + 1 9 9 1\nb + 10 18 9 2\nc + 19 27 9 1\n";
  Genome together = DefaultGenome();
  together.ExtractCoding(seq, Genes(seq, text), 0, 0);
  EXPECT_EQ(together.WriteCoding(), ">cod1\nATGCCCTAA\nATGGGGTAA\nATGTTTTAA\n");

  Genome apart = DefaultGenome();
  apart.separate_cod = true;
  apart.ExtractCoding(seq, Genes(seq, text), 0, 0);
  EXPECT_EQ(apart.WriteCoding(), ">cod1\nATGCCCTAA\nATGTTTTAA\n>cod2\nATGGGGTAA\n");

  // Only class 1 genes: no second block at all.
  Genome onlyFirst = DefaultGenome();
  onlyFirst.separate_cod = true;
  onlyFirst.ExtractCoding(seq, Genes(seq, "a + 1 9 9 1\nc + 19 27 9 1\n"), 0, 0);
  EXPECT_EQ(onlyFirst.WriteCoding(), ">cod1\nATGCCCTAA\nATGTTTTAA\n");

  EXPECT_EQ(DefaultGenome().WriteCoding(), ">cod1\n");
}

TEST(ExtractNonCoding, MasksTheUnionOfAllSpans) {
  //                       0         1         2         3
  //                       0123456789012345678901234567890123456789
  const VSeq seq = Loaded("AAAAACCCCCGGGGGTTTTTNNAAACCCGGGTTTAACCGG");
  Genome genome = DefaultGenome();
  // Overlapping 6..11 and 9..14 mask 6..14; 18..20 and 21..23 touch and leave nothing between;
  // margins, strands and completeness play no part, nor does validity (30..33 holds 4 bases).
  const std::string text =
      "a + 7 12 6 1\nb - 10 15 6 2\nc + 19 21 3 1\nd - 22 24 3 1\ne + <31 >34 4 1\n";
  genome.ExtractNonCoding(seq, Genes(seq, text));
  EXPECT_EQ(Letters(genome, genome.non),
            (std::vector<std::string>{"AAAAAC", "TTT", "ACCCGG", "AACCGG"}));
  EXPECT_EQ(genome.WriteNonCoding(), "AAAAAC\nTTT\nACCCGG\nAACCGG\n");
}

TEST(ExtractNonCoding, RunLengthLimitAndWholeSequence) {
  const VSeq seq = Loaded("ACGTNACGTAAACCCGGGTTT");
  Genome genome = DefaultGenome();
  genome.ExtractNonCoding(seq, Genes(seq, ""));
  EXPECT_EQ(genome.WriteNonCoding(), "ACGTNACGTAAACCCGGGTTT\n");  // N stays a base

  Genome longOnly = DefaultGenome();
  longOnly.min_non = 5;
  longOnly.ExtractNonCoding(seq, Genes(seq, "a + 5 7 3 1\nb + 13 18 6 1\n"));
  EXPECT_EQ(longOnly.WriteNonCoding(), "GTAAA\n");  // ACGT and TTT are too short

  Genome tooLong = DefaultGenome();
  tooLong.min_non = 22;
  tooLong.ExtractNonCoding(seq, Genes(seq, ""));
  EXPECT_EQ(tooLong.WriteNonCoding(), "");

  Genome covered = DefaultGenome();
  covered.ExtractNonCoding(seq, Genes(seq, "a + 1 21 21 1\n"));
  EXPECT_TRUE(covered.non.empty());
}

TEST(ExtractNonCoding, SpansOutsideTheSequenceAreReported) {
  const VSeq seq = Loaded("ACGTACGTACGT");
  Genome genome = DefaultGenome();
  CaptureStderr();
  // b (9..12, 0-based) ends one past the sequence; the comment line and the left coordinate 0
  // give no span (skipped silently); a masks 0..2.
  genome.ExtractNonCoding(seq, Genes(seq, "a + 1 3 3 1\nb + 10 13 3 1\n# comment\nc + 0 5 6 1\n"));
  EXPECT_EQ(GetCapturedStderr(), "error, if this is printed - error in code\n");
  EXPECT_EQ(Letters(genome, genome.non), (std::vector<std::string>{"TACGTACGT"}));
}

TEST(ExtractNonCoding, TwoColumnSpans) {
  const VSeq seq = Loaded("ACGTACGTACGT");
  Genome genome = DefaultGenome();
  CaptureStderr();
  // "9 4" reads left > right: an empty span, skipped without masking anything. "x 3" reads a
  // malformed left as -1 - 1 = -2: outside the sequence, reported.
  genome.ExtractNonCoding(seq, Genes(seq, "2 3\n9 4\nx 3\n", true));
  EXPECT_EQ(GetCapturedStderr(), "error, if this is printed - error in code\n");
  EXPECT_EQ(Letters(genome, genome.non), (std::vector<std::string>{"A", "TACGTACGT"}));
}

}  // namespace
}  // namespace genetrain
