#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "TestSupport.h"
#include "genes/Genome.h"
#include "seq/VSeq.h"

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

std::string ReverseComplement(std::string bases) {
  std::reverse(bases.begin(), bases.end());
  for (char& base : bases) {
    base = base == 'A' ? 'T' : base == 'C' ? 'G' : base == 'G' ? 'C' : base == 'T' ? 'A' : 'N';
  }
  return bases;
}

VSeq Loaded(const std::string& bases) {
  test::ScratchDir dir;
  Param param;
  param.Set("--seq", dir.Write("g.fa", ">g\n" + bases + "\n"));
  VSeq seq;
  EXPECT_TRUE(seq.LoadForGenes(param));
  return seq;
}

GeneSet Genes(const VSeq& seq, const std::string& text) {
  GeneSet set;
  set.max_right = static_cast<std::int32_t>(seq.sequence.size());
  set.Parse(text.data(), text.data() + text.size());
  return set;
}

Genome DefaultGenome() {
  Param none;
  return Genome(none);
}

std::string Letters(const Genome& genome, const CodeSeq& codes) {
  std::string line = genome.WriteSeq(codes);
  line.pop_back();
  return line;
}

// The labels of the regions collected with upstream U and inside P.
std::vector<std::string> Collected(const VSeq& seq, const std::string& genes, int upstream,
                                   int inside, bool intergenic, std::uint32_t minCod = 0) {
  Genome genome = DefaultGenome();
  genome.min_cod = minCod;
  std::vector<std::string> labels;
  genome.CollectPreStarts(seq, Genes(seq, genes), upstream, inside, intergenic, labels);
  EXPECT_EQ(genome.pre_start.size(), labels.size());
  return labels;
}

TEST(PreStart, RegionsEndWithTheStartCodonOnBothStrands) {
  std::string bases = Bases(500);
  bases.replace(100, 3, "ATG");  // 1-based 101..103
  bases.replace(397, 3, "CAT");  // 1-based 398..400, ATG on the reverse strand
  const VSeq seq = Loaded(bases);

  Genome direct = DefaultGenome();
  std::vector<std::string> labels;
  direct.CollectPreStarts(seq, Genes(seq, "a + 101 400 300 1\n"), 17, 3, false, labels);
  ASSERT_EQ(direct.pre_start.size(), 1u);
  const std::string region = Letters(direct, direct.pre_start[0]);
  EXPECT_EQ(region, bases.substr(83, 20));  // 1-based 84..103
  EXPECT_EQ(region.substr(17), "ATG");
  EXPECT_EQ(direct.WritePreStarts(-1, labels), ">1 101 400 +\n" + region + "\n");

  Genome reverse = DefaultGenome();
  labels.clear();
  reverse.CollectPreStarts(seq, Genes(seq, "a - 101 400 300 1\n"), 17, 3, false, labels);
  ASSERT_EQ(reverse.pre_start.size(), 1u);
  const std::string back = Letters(reverse, reverse.pre_start[0]);
  EXPECT_EQ(back, ReverseComplement(bases.substr(397, 20)));  // 1-based 398..417
  EXPECT_EQ(back.substr(17), "ATG");
  EXPECT_EQ(reverse.WritePreStarts(-1, labels), ">1 101 400 -\n" + back + "\n");
}

TEST(PreStart, UpstreamRoomInsideTheSequence) {
  const VSeq seq = Loaded(Bases(60));
  // Direct: the gene must start at 0-based 17 or later for U = 17.
  EXPECT_TRUE(Collected(seq, "a + 10 39 30 1\n", 17, 3, false).empty());
  EXPECT_EQ(Collected(seq, "a + 18 47 30 1\n", 17, 3, false),
            (std::vector<std::string>{" 18 47 +\n"}));
  // Reverse: right may be at most length - U = 43; there the region is clipped to 19 bases.
  EXPECT_TRUE(Collected(seq, "a - 16 45 30 1\n", 17, 3, false).empty());
  Genome genome = DefaultGenome();
  std::vector<std::string> labels;
  genome.CollectPreStarts(seq, Genes(seq, "a - 15 44 30 1\n"), 17, 3, false, labels);
  ASSERT_EQ(genome.pre_start.size(), 1u);
  EXPECT_EQ(Letters(genome, genome.pre_start[0]), ReverseComplement(Bases(60).substr(41)));
}

TEST(PreStart, IntergenicGapsToTheUpstreamNeighbour) {
  const VSeq seq = Loaded(Bases(250));
  const std::string genes =
      "a + 30 59 30 1\n"    // first record: no upstream neighbour
      "b + 69 98 30 1\n"    // 68 - 58 = 10 < 17
      "c + 115 144 30 1\n"  // 114 - 97 = 17
      "d - 150 179 30 1\n"  // 189 - 178 = 11 < 17
      "e - 190 219 30 1\n"  // 245 - 218 = 27
      "f - 246 248 3 1\n";  // last record; too near the end anyway
  EXPECT_EQ(Collected(seq, genes, 17, 3, true),
            (std::vector<std::string>{" 115 144 +\n", " 190 219 -\n"}));
  EXPECT_EQ(Collected(seq, genes, 17, 3, false),
            (std::vector<std::string>{" 30 59 +\n", " 69 98 +\n", " 115 144 +\n", " 150 179 -\n",
                                      " 190 219 -\n"}));
  // The neighbour is the record next to the gene, whatever it holds: an unreadable line has
  // right -1, an invalid gene keeps its coordinates.
  EXPECT_EQ(Collected(seq, "junk\nb + 20 49 30 1\n", 17, 3, true),
            (std::vector<std::string>{" 20 49 +\n"}));
  EXPECT_TRUE(Collected(seq, "x + 1 100 100 1\nb + 110 139 30 1\n", 17, 3, true).empty());
}

TEST(PreStart, GeneFilters) {
  std::string bases = Bases(200);
  bases[95] = 'N';
  const VSeq seq = Loaded(bases);
  // An N in the region drops the gene; one further inside the gene does not matter.
  EXPECT_TRUE(Collected(seq, "a + 101 130 30 1\n", 17, 3, false).empty());
  EXPECT_EQ(Collected(seq, "a + 81 110 30 1\n", 17, 3, false).size(), 1u);
  // Open start ends are dropped, open stop ends are not.
  EXPECT_EQ(Collected(seq, "a + <31 60 30 1\nb + 31 >60 30 1\nc - <31 60 30 1\nd - 31 >60 30 1\n",
                      17, 3, false),
            (std::vector<std::string>{" 31 60 +\n", " 31 60 -\n"}));
  // Short and invalid genes.
  EXPECT_TRUE(Collected(seq, "a + 31 60 30 1\nb + 31 61 31 1\n", 17, 3, false, 33).empty());
  EXPECT_EQ(Collected(seq, "a + 31 63 33 1\n", 17, 3, false, 33).size(), 1u);
}

TEST(PreStart, RelativePositionBeyondWidthStaysInsideTheGene) {
  const std::string bases = Bases(120);
  const VSeq seq = Loaded(bases);
  // W = 3, P = 6: U = -3, the region holds the gene's bases 3..5 on either strand.
  Genome genome = DefaultGenome();
  std::vector<std::string> labels;
  genome.CollectPreStarts(seq, Genes(seq, "a + 31 60 30 1\nb - 61 90 30 1\n"), -3, 6, false,
                          labels);
  ASSERT_EQ(genome.pre_start.size(), 2u);
  EXPECT_EQ(Letters(genome, genome.pre_start[0]), bases.substr(33, 3));
  EXPECT_EQ(Letters(genome, genome.pre_start[1]), ReverseComplement(bases.substr(84, 3)));
}

TEST(RegionSeq, ClipsAtBothSequenceEnds) {
  const std::string bases = Bases(40);
  const VSeq seq = Loaded(bases);
  Genome genome = DefaultGenome();
  EXPECT_EQ(Letters(genome, seq.RegionSeq(5, 20, 1, 10, 3)), bases.substr(0, 8));
  EXPECT_EQ(Letters(genome, seq.RegionSeq(20, 38, 2, 10, 3)), ReverseComplement(bases.substr(35)));
  // Windows that miss the sequence altogether come out empty.
  EXPECT_TRUE(seq.RegionSeq(5, 20, 1, 20, -16).empty());
  EXPECT_TRUE(seq.RegionSeq(20, 38, 2, 30, -45).empty());
}

class PreStartFile : public testing::Test {
 protected:
  // Seven direct genes of 30 bases with 20 bases between each two.
  PreStartFile() : seq_(Loaded(Bases(400))) {
    for (int i = 0; i < 7; ++i) {
      const int left = 21 + 50 * i;
      genes_ += "g + " + std::to_string(left) + " " + std::to_string(left + 29) + " 30 1\n";
    }
    param_.Set("--pre_start", dir_.Path("pre.fa"));
    param_.Set("--PRE_START_WIDTH", "20");
    param_.Set("--PRE_START_RELATIVE_POS", "3");
  }

  bool Write() {
    genome_.pre_start.clear();
    return genome_.WritePreStartFile(seq_, Genes(seq_, genes_), param_);
  }
  std::string Output() const { return test::ReadFile(dir_.Path("pre.fa")); }

  test::ScratchDir dir_;
  VSeq seq_;
  std::string genes_;
  Param param_;
  Genome genome_ = DefaultGenome();
};

TEST_F(PreStartFile, LinesLimitTheRecordsWritten) {
  param_.Set("--PRE_START_INTERGENIC", "0");
  ASSERT_TRUE(Write());
  const std::string all = Output();
  EXPECT_EQ(std::count(all.begin(), all.end(), '>'), 7);
  EXPECT_EQ(all.substr(0, 13 + 21), ">1 21 50 +\n" + Bases(400).substr(3, 20) + "\n" + ">2");

  param_.Set("--PRE_START_LINES", "5");
  ASSERT_TRUE(Write());
  const std::string five = Output();
  EXPECT_EQ(std::count(five.begin(), five.end(), '>'), 5);
  EXPECT_EQ(all.substr(0, five.size()), five);
  EXPECT_EQ(all.substr(five.size(), 3), ">6 ");

  param_.Set("--PRE_START_LINES", "0");
  ASSERT_TRUE(Write());
  EXPECT_EQ(Output(), "");
  EXPECT_EQ(genome_.pre_start.size(), 7u);  // collected all the same
}

TEST_F(PreStartFile, IntergenicByDefault) {
  // With the filter the first gene goes (no upstream neighbour); left - previous right is 21.
  param_.Set("--PRE_START_WIDTH", "23");  // U = 20
  ASSERT_TRUE(Write());
  std::string text = Output();
  EXPECT_EQ(std::count(text.begin(), text.end(), '>'), 6);
  EXPECT_EQ(text.substr(0, 12), ">1 71 100 +\n");
  param_.Set("--PRE_START_WIDTH", "24");  // U = 21: just enough
  ASSERT_TRUE(Write());
  text = Output();
  EXPECT_EQ(std::count(text.begin(), text.end(), '>'), 6);
  param_.Set("--PRE_START_WIDTH", "25");
  ASSERT_TRUE(Write());
  EXPECT_EQ(Output(), "");
  // Without it the first gene is in again.
  param_.Set("--PRE_START_WIDTH", "23");
  param_.Set("--PRE_START_INTERGENIC", "0");
  ASSERT_TRUE(Write());
  text = Output();
  EXPECT_EQ(std::count(text.begin(), text.end(), '>'), 7);
}

TEST_F(PreStartFile, MalformedOptionWritesNothing) {
  testing::internal::CaptureStderr();
  param_.Set("--PRE_START_LINES", "five");
  EXPECT_FALSE(Write());
  param_.Set("--PRE_START_LINES", "5");
  param_.Set("--pre_start", "two words");
  EXPECT_FALSE(Write());
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "error in value of parameter --PRE_START_LINES: five\n"
            "error in value of parameter --pre_start: two words\n");
  EXPECT_FALSE(std::filesystem::exists(dir_.Path("pre.fa")));
}

}  // namespace
}  // namespace genetrain
