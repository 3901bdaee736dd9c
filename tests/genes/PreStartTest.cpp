#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "genes/GenesTestSupport.h"

namespace genetrain {
namespace {

// Irregular A/C/G/T letters, so that a region taken from the wrong place cannot match.
std::string Bases(std::size_t count) {
  std::string bases;
  std::uint32_t state = 7;
  for (std::size_t i = 0; i < count; ++i) {
    state = state * 1103515245u + 12345u;
    bases.push_back("ACGT"[(state >> 16) & 3u]);
  }
  return bases;
}

using test::ReverseComplement;

struct Collected {
  std::string labels;   // the labels of the regions, one after the other
  std::string written;  // the regions as the pre-start file holds them
};

// The regions collected with upstream U and inside P.
Collected Collect(const std::string& bases, const std::string& genes, int upstream, int inside,
                  bool intergenic = false, std::uint32_t minCod = 0) {
  const VSeq seq = test::GeneSequence(bases);
  const GeneSet set = test::GenesOn(seq, genes);
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
      {b60, "a - 15 44 30 1\n", 17, 3, ">1 15 44 -\n" + ReverseComplement(b60.substr(41)) + "\n"},
      // U = -3, P = 6: the region holds the gene's bases 3..5 on either strand.
      {b120, "a + 31 60 30 1\nb - 61 90 30 1\n", -3, 6,
       ">1 31 60 +\n" + b120.substr(33, 3) + "\n>2 61 90 -\n" +
           ReverseComplement(b120.substr(84, 3)) + "\n"},
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
      // An N in the region drops the gene; one further inside the gene does not matter.
      {withN, "a + 101 130 30 1\n", 17, false, ""},
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
