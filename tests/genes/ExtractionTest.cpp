#include "genes/Genome.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "genes/GenesTestSupport.h"

namespace genetrain {
namespace {

using test::GeneSequence;
using test::GenesOn;

// The record as ShowGene shows it, then its validity and class.
std::string Show(const GENE& gene) {
  return test::ShowGene(gene) + " " + (gene.valid ? "valid" : "invalid") + " " +
         std::to_string(gene.gene_class);
}

TEST(GeneSetSixColumns, CoordinatesStrandClassLimitAndUnreadableSpans) {
  const std::pair<std::string_view, std::string_view> lines[] = {
      {"\n g1  + 1 99 99 1", "1 0 98 cc valid 1"},  // a line starts after the line feed
      {"g1 + 1 100 100 1", "1 0 99 cc invalid 0"},  // not whole codons
      {"g1\t-\t<3\t>101\t99\t2\r", "2 2 100 oo valid 2"},
      {"g1 + 1 99 99 3", "1 0 98 cc invalid 3"},
      {"g1 + 1 99 99 257", "1 0 98 cc valid 1"},  // low 8 bits
      {"g1 + 1 99 99 x", "1 0 98 cc invalid 255"},
      // A span that cannot be read drops both coordinates.
      {"g1 * 1 99 99 1", "0 -1 -1 cc invalid 0"},
      {"g1 + 0 98 98 1", "1 -1 -1 cc invalid 0"},
      {"g1 + <x 98 98 1", "1 -1 -1 oc invalid 0"},
      {"g1 + 10 >9 98 1", "1 -1 -1 co invalid 0"},
      {"g1 + 1 2147483648 1 1", "1 -1 -1 cc invalid 0"},
      {"g1 + 1 99 99", "0 -1 -1 cc invalid 0"},
      {"g1 + 1 99 99 1 extra", "0 -1 -1 cc invalid 0"},
      {"", "0 -1 -1 cc invalid 0"},
      // The limit admits a gene one base past the end.
      {"g + 3 1001 999 1", "1 2 1000 cc valid 1"},
      {"g + 4 1002 999 1", "1 3 1001 cc invalid 0"},
  };
  GeneSet set;
  set.max_right = 1000;
  for (const auto& [line, shown] : lines) EXPECT_EQ(Show(set.ParseLine(line)), shown) << line;
  set.max_right = 0;  // no limit
  EXPECT_TRUE(set.ParseLine("g + 4 1002 999 1").valid);
}

// A line feed closing the buffer opens no further line, and an empty buffer has none; each
// Parse replaces the records of the one before.
TEST(GeneSetParse, EveryLineIsARecordUpToTheBufferEdges) {
  const std::pair<std::string_view, std::string_view> cases[] = {
      {"", ""},
      {"\n", "-"},
      {"a + 1 3 3 1", "v"},
      {"a + 1 3 3 1\n", "v"},
      {"\na + 1 3 3 1", "-v"},
      {"# comment\na + 1 99 99 1\n\nb + 1 9 9 1\r\nc + 1 4 4 1\n", "-v-v-"},
  };
  GeneSet set;
  for (const auto& [text, validity] : cases) {
    set.Parse(text.data(), text.data() + text.size());
    std::string shown;
    for (const GENE& gene : set.genes) shown += gene.valid ? 'v' : '-';
    EXPECT_EQ(shown, validity) << text;
  }
}

// Two columns: shift 1, reversed and unreadable pairs are pinned by the cli.intergenic_* cases.
TEST(GeneSetTokens, ReadCountTakesPlainDecimalsThatFitAndPairsTwoColumns) {
  for (const std::string_view refused : {"2147483648", "99999999999999", "+5", "5\r", ""})
    EXPECT_EQ(ReadCount(refused), -1) << refused;
  EXPECT_EQ(ReadCount("0"), 0);
  EXPECT_EQ(ReadCount("0042"), 42);
  EXPECT_EQ(ReadCount("2147483647"), 2147483647);
  EXPECT_EQ(Show(GeneSet().ParsePair("0 98")), "0 -1 97 cc valid 0");
  EXPECT_EQ(Show(GeneSet().ParsePair("1 2 3")), "0 -1 -1 cc invalid 0");
}

TEST(ExtractCoding, MarginsLengthLimitsAndStopsInside) {
  const auto A = [](int count) { return std::string(count, 'A'); };
  struct Case {
    std::string bases, genes;
    int left, right;
    std::string coding;
    bool stops = false;
    std::uint32_t minCod = 0;
  };
  const Case cases[] = {
      // L comes off the start end, R off the stop end: at the right for a reverse gene, which is
      // read backwards and complemented. 99 bases: CCC, ATG..TAA, GGG.
      {"CCCATG" + A(87) + "TAAGGG", "d + 1 99 99 1\nr - 1 99 99 1\n", 6, 3,
       A(87) + "TAA\n" + std::string(87, 'T') + "CAT\n"},
      // Six bases minus 3 + 3 leave nothing: turned away even with MIN_COD 0.
      {A(300), "a + 1 6 6 1\n", 3, 3, ""},
      // The limit applies after trimming: 96 - 3 - 3 = 90 is kept, 93 - 6 = 87 is not.
      {A(300), "a + 1 96 96 1\nb + 101 193 93 1\n", 3, 3, A(90) + "\n", false, 90},
      // R = -3 adds three bases past each stop: inside the sequence for the direct gene at 4..12,
      // past the end for the one at 7..15 and past the start for the reverse gene at 1..9.
      {"CCCATGAAATAAGGG", "a + 4 12 9 1\nb + 7 15 9 1\nc - 1 9 9 1\n", 0, -3, "ATGAAATAAGGG\n"},
      // L = 3 and R = -3 move a gene that ends one past the sequence wholly past it.
      {"ATGTNAGGGTAA", "a + 11 13 3 1\n", 3, -3, ""},
      // A stop before the last codon turns the gene away with a warning
      // (cli.parse_stop_inside_gene); not when no stop is named, nor with an N or a masked base,
      // nor when a single base follows the stop. Reversed, the stop is the last codon.
      {"ATGTAAGGGTAA", "a + 1 12 12 1\n", 0, 0, "ATGTAAGGGTAA\n"},
      {"ATGTNAGXATAA", "a + 1 12 12 1\n", 0, 0, "ATGTNAGXATAA\n", true},
      {"CCCATGAAATAAGGG", "a + 4 12 9 1\n", 0, -1, "ATGAAATAAG\n", true},
      {"TTACATGG", "a - 1 6 6 1\n", 0, 0, "ATGTAA\n", true},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.genes + " margins " + std::to_string(c.left) + " " + std::to_string(c.right));
    const VSeq seq = GeneSequence(c.bases, c.stops);
    Genome genome(GenomeSettings{.min_cod = c.minCod});
    const test::Outcome run = test::Capture([&] {
      genome.ExtractCoding(seq, GenesOn(seq, c.genes), c.left, c.right);
      return true;
    });
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(genome.WriteCoding(), ">cod1\n" + c.coding);
  }
}

TEST(ExtractNonCoding, MasksTheUnionOfAllSpans) {
  // Overlapping 6..11 and 9..14 mask 6..14; 18..20 and 21..23 touch and leave nothing between;
  // margins, strands, completeness and validity (30..33 holds 4 bases) play no part. The comment
  // and the left coordinate 0 give no span and pass silently; g ends one past the sequence: it is
  // reported and masks nothing.
  const VSeq seq = GeneSequence("AAAAACCCCCGGGGGTTTTTNNAAACCCGGGTTTAACCGG");
  const GeneSet set = GenesOn(seq,
                              "a + 7 12 6 1\nb - 10 15 6 2\nc + 19 21 3 1\nd - 22 24 3 1\n"
                              "e + <31 >34 4 1\n# comment\nf + 0 5 6 1\ng + 39 41 3 1\n");
  Genome genome(GenomeSettings{});
  const test::Outcome run = test::Capture([&] {
    genome.ExtractNonCoding(seq, set);
    return true;
  });
  EXPECT_EQ(run.err, "error, if this is printed - error in code\n");
  EXPECT_EQ(genome.WriteNonCoding(), "AAAAAC\nTTT\nACCCGG\nAACCGG\n");
}

// Irregular letters, so that a region taken from the wrong place cannot match.
std::string Bases(std::size_t count) {
  std::mt19937 random(7);
  std::string bases;
  while (bases.size() < count) bases.push_back("ACGT"[random() % 4]);
  return bases;
}

// The labels of the regions collected with upstream U and inside P, and the pre-start file.
struct Collected {
  std::string labels, written;
};

Collected Collect(const std::string& bases, const std::string& genes, int upstream, int inside,
                  bool intergenic = false, std::uint32_t minCod = 0) {
  const VSeq seq = GeneSequence(bases);
  const GeneSet set = GenesOn(seq, genes);
  Genome genome(GenomeSettings{.min_cod = minCod});
  std::vector<std::string> labels;
  genome.CollectPreStarts(seq, set, upstream, inside, intergenic, labels);
  EXPECT_EQ(genome.pre_start.size(), labels.size());
  Collected collected{"", genome.WritePreStarts(-1, labels)};
  for (const std::string& label : labels) collected.labels += label;
  return collected;
}

TEST(PreStart, RegionsAtTheSequenceEndsAndInsideTheGene) {
  const std::string b60 = Bases(60), b120 = Bases(120);
  struct Case {
    std::string bases, genes;
    int upstream, inside;
    std::string written;
  };
  const Case cases[] = {
      // Direct genes need U bases before them, reverse ones U after them (right <= 60 - 17).
      {b60, "a + 17 46 30 1\n", 17, 3, ""},
      {b60, "a + 18 47 30 1\n", 17, 3, ">1 18 47 +\n" + b60.substr(0, 20) + "\n"},
      {b60, "a - 16 45 30 1\n", 17, 3, ""},
      // At the limit the reverse region is clipped to 19 bases.
      {b60, "a - 15 44 30 1\n", 17, 3,
       ">1 15 44 -\n" + test::ReverseComplement(b60.substr(41)) + "\n"},
      // U = -3, P = 6: the region holds the gene's bases 3..5 on either strand.
      {b120, "a + 31 60 30 1\nb - 61 90 30 1\n", -3, 6,
       ">1 31 60 +\n" + b120.substr(33, 3) + "\n>2 61 90 -\n" +
           test::ReverseComplement(b120.substr(84, 3)) + "\n"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.genes);
    EXPECT_EQ(Collect(c.bases, c.genes, c.upstream, c.inside).written, c.written);
  }
}

TEST(PreStart, GeneFilters) {
  const std::string b250 = Bases(250);
  const std::string neighbours =
      "a + 30 59 30 1\n"    // first record: no upstream neighbour
      "b + 69 98 30 1\n"    // 68 - 58 = 10 < 17
      "c + 115 144 30 1\n"  // 114 - 97 = 17
      "d - 150 179 30 1\n"  // 189 - 178 = 11 < 17
      "e - 190 219 30 1\n"  // 245 - 218 = 27
      "f - 246 248 3 1\n";  // last record; too near the end anyway
  std::string withN = Bases(200);
  withN[95] = 'N';
  struct Case {
    std::string bases, genes;
    int upstream;
    bool intergenic;
    std::string labels;
    std::uint32_t minCod = 0;
  };
  const Case cases[] = {
      {b250, neighbours, 17, false, " 30 59 +\n 69 98 +\n 115 144 +\n 150 179 -\n 190 219 -\n"},
      // Intergenic: the gap to the upstream neighbour must hold U bases.
      {b250, neighbours, 17, true, " 115 144 +\n 190 219 -\n"},
      {b250, neighbours, 18, true, " 190 219 -\n"},
      {b250, neighbours, 27, true, " 190 219 -\n"},
      {b250, neighbours, 28, true, ""},
      // The neighbour is the record next to the gene, whatever it holds: an unreadable line has
      // right -1, an invalid gene keeps its coordinates.
      {b250, "junk\nb + 20 49 30 1\n", 17, true, " 20 49 +\n"},
      {b250, "x + 1 100 100 1\nb + 110 139 30 1\n", 17, true, ""},
      // An N inside the gene does not matter (one in the region: cli.pre_start_region_with_n).
      {withN, "a + 81 110 30 1\n", 17, false, " 81 110 +\n"},
      // Open start ends are dropped, open stop ends are not.
      {withN, "a + <31 60 30 1\nb + 31 >60 30 1\nc - <31 60 30 1\nd - 31 >60 30 1\n", 17, false,
       " 31 60 +\n 31 60 -\n"},
      // Short and invalid genes.
      {withN, "a + 31 60 30 1\nb + 31 61 31 1\n", 17, false, "", 33},
      {withN, "a + 31 63 33 1\n", 17, false, " 31 63 +\n", 33},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.genes + " U " + std::to_string(c.upstream));
    EXPECT_EQ(Collect(c.bases, c.genes, c.upstream, 3, c.intergenic, c.minCod).labels, c.labels);
  }
}

}  // namespace
}  // namespace genetrain
