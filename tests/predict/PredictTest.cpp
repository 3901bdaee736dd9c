// The gene finder on synthetic genomes: a model estimated by MkChain from planted genes with a
// strong codon usage and from non-coding letters; genes planted in non-coding sequence drawn
// from the model's own non-coding chain.

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "TestSupport.h"
#include "model/MkChain.h"
#include "predict/GeneModel.h"
#include "predict/Predict.h"
#include "predict/Writers.h"

namespace genetrain::test {
namespace {

constexpr int kOrder = 2;

class Synthetic : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    rng_ = std::mt19937(20260515);
    std::lognormal_distribution<double> weight(0.0, 1.5);
    for (unsigned codon = 0; codon < 64; ++codon) {
      const bool stop = codon == kCodonTAA || codon == kCodonTAG || codon == kCodonTGA;
      codonWeights_.push_back(stop ? 0.0 : weight(rng_));
    }
    static ScratchDir dir;
    BuildModel(codonWeights_, dir, "synthetic.mod", model_, &nonJoint_);
  }

  // A model estimated from 400 genes of the codon usage `weights` and from non-coding letters.
  static void BuildModel(const std::vector<double>& weights, ScratchDir& dir,
                         const std::string& name, GeneModel& model,
                         std::vector<double>* nonJoint = nullptr) {
    std::vector<CodeSeq> genes, non;
    for (int g = 0; g < 400; ++g) genes.push_back(Gene(300, weights));
    std::discrete_distribution<int> letter({0.3, 0.2, 0.2, 0.3});
    for (int n = 0; n < 100; ++n) {
      CodeSeq stretch(1000);
      for (std::uint8_t& code : stretch) code = static_cast<std::uint8_t>(letter(rng_));
      non.push_back(stretch);
    }
    ChainSettings coding;  // the estimator's defaults: margins 3 and 3
    MkChain cod(kOrder, 3, coding);
    ChainSettings nonCoding;
    nonCoding.leftMargin = nonCoding.rightMargin = 0;
    MkChain nonChain(kOrder, 1, nonCoding);
    ASSERT_TRUE(cod.Estimate(genes));
    ASSERT_TRUE(nonChain.Estimate(non));
    if (nonJoint != nullptr) *nonJoint = nonChain.tables[0];
    const std::string codText = *cod.ToText(), nonText = *nonChain.ToText();
    std::string text =
        "PHMM test\nNAME synthetic\nORDM 2\nATG_ 0.8\nGTG_ 0.15\nTTG_ 0.05\nCTG_ 0\n"
        "TAA_ 1\nTAG_ 1\nTGA_ 1\nMINC 90\nMAXC 30000\nMAXN 10000\nNDEC 300\nCDEC 250\n"
        "CDCD 600\nCD1P 0.9\nCD2P 0.1\n";
    for (const std::string_view key : {"COD1 ", "COD2 "}) {
      text += key;
      text += codText;
      text += '\n';
    }
    text += "NONC ";
    text += nonText;
    text += '\n';
    ASSERT_TRUE(LoadGeneModel(dir.Write(name, text), model));
  }

  static CodeSeq Gene(int codons) { return Gene(codons, codonWeights_); }

  // ATG, `codons` codons of the codon usage, TAA.
  static CodeSeq Gene(int codons, const std::vector<double>& weights) {
    std::discrete_distribution<unsigned> pick(weights.begin(), weights.end());
    CodeSeq gene = {kA, kT, kG};
    for (int c = 0; c < codons; ++c) {
      const unsigned codon = pick(rng_);
      gene.insert(gene.end(), {std::uint8_t(codon >> 4), std::uint8_t(codon >> 2 & 3),
                               std::uint8_t(codon & 3)});
    }
    gene.insert(gene.end(), {kT, kA, kA});
    return gene;
  }

  // Letters drawn from the non-coding chain: each letter given the kOrder before it.
  static CodeSeq NonCoding(std::size_t length) {
    CodeSeq seq = {kA, kT};
    while (seq.size() < length) {
      const std::uint32_t prefix = WordIndex(seq.data() + seq.size() - kOrder, kOrder);
      std::discrete_distribution<int> next(nonJoint_.begin() + 4 * prefix,
                                           nonJoint_.begin() + 4 * prefix + 4);
      seq.push_back(static_cast<std::uint8_t>(next(rng_)));
    }
    return seq;
  }

  static CodeSeq ReverseComplement(const CodeSeq& seq) {
    CodeSeq out(seq.rbegin(), seq.rend());
    for (std::uint8_t& code : out) code = Complement(code);
    return out;
  }

  // Non-coding letters, an in-frame stop 6 bases before the gene (so that no longer ORF holds
  // it), the gene, non-coding letters; the gene's 0-based left end.
  static std::int64_t Plant(CodeSeq& record, const CodeSeq& gene, std::size_t flank) {
    record = NonCoding(flank);
    record.insert(record.end(), {kT, kA, kG, kC, kC, kA});
    const auto left = static_cast<std::int64_t>(record.size());
    record.insert(record.end(), gene.begin(), gene.end());
    const CodeSeq tail = NonCoding(flank);
    record.insert(record.end(), tail.begin(), tail.end());
    return left;
  }

  static inline std::mt19937 rng_;
  static inline std::vector<double> codonWeights_;
  static inline std::vector<double> nonJoint_;
  static inline GeneModel model_;
};

// The frame assumption: with the estimator's left margin of 3 and order 2, the chain's table 0
// holds the words ending at a codon's second base. Unseen genes score as coding only when read
// in their own frame.
TEST_F(Synthetic, OnlyTheRightFrameScores) {
  EXPECT_EQ(TableCodonPosition(0, kOrder, 3), 2);
  for (int g = 0; g < 5; ++g) {
    const CodeSeq gene = Gene(200);
    const std::span<const std::uint8_t> body(gene.data() + 3, gene.size() - 6);
    EXPECT_GT(CodingLogOdds(model_, body, 0), 20.0);
    EXPECT_LT(CodingLogOdds(model_, body, 1), 0.0);
    EXPECT_LT(CodingLogOdds(model_, body, 2), 0.0);
  }
}

TEST_F(Synthetic, PlantedGenesAreFoundWithTheirStartsOnBothStrands) {
  const CodeSeq gene = Gene(250);
  CodeSeq record;
  const std::int64_t left = Plant(record, gene, 3000);
  const auto length = static_cast<std::int64_t>(gene.size());
  for (const Strand strand : {Strand::kDirect, Strand::kReverse}) {
    const CodeSeq seq = strand == Strand::kDirect ? record : ReverseComplement(record);
    const std::int64_t geneLeft =
        strand == Strand::kDirect ? left : static_cast<std::int64_t>(seq.size()) - left - length;
    const std::vector<PredictedGene> found = PredictGenes(model_, seq, PredictSettings{});
    const auto hit = std::find_if(found.begin(), found.end(), [&](const PredictedGene& g) {
      return g.left == geneLeft && g.right == geneLeft + length - 1 && g.strand == strand;
    });
    ASSERT_NE(hit, found.end()) << "strand " << StrandNumber(strand);
    EXPECT_EQ(hit->startCodon, kCodonATG);
    EXPECT_FALSE(hit->openLeft || hit->openRight);
    EXPECT_GT(hit->confidence, 50.0);
    // Its protein is the planted codons translated, the stop left out.
    std::string proteins;
    AppendProteins(proteins, "r", seq, {*hit}, 11);
    const std::string protein = proteins.substr(proteins.find('\n') + 1);
    EXPECT_EQ(protein[0], 'M');
    EXPECT_EQ(std::count_if(protein.begin(), protein.end(), [](char c) { return c != '\n'; }),
              length / 3 - 1);
  }
}

// The same letters in random order are not a gene: nothing predicted covers half of them.
TEST_F(Synthetic, ShuffledGeneIsNotFound) {
  CodeSeq gene = Gene(250);
  std::shuffle(gene.begin() + 3, gene.end() - 3, rng_);
  CodeSeq record;
  const std::int64_t left = Plant(record, gene, 3000);
  const auto right = left + static_cast<std::int64_t>(gene.size()) - 1;
  for (const PredictedGene& g : PredictGenes(model_, record, PredictSettings{})) {
    const std::int64_t shared = std::min(g.right, right) - std::max(g.left, left) + 1;
    EXPECT_LT(shared, static_cast<std::int64_t>(gene.size()) / 2) << g.left << ".." << g.right;
  }
}

// A record that begins and ends inside genes: both are open at the record's ends, with their
// stop and start where they were planted.
TEST_F(Synthetic, GenesRunningOffEitherEndArePartial) {
  const CodeSeq first = Gene(300), last = Gene(300);
  CodeSeq record(first.begin() + 301, first.end());  // 301: the record starts mid-codon
  const auto firstRight = static_cast<std::int64_t>(record.size()) - 1;
  CodeSeq middle;
  const std::int64_t lastLeft = Plant(middle, last, 2000) + firstRight + 1;
  record.insert(record.end(), middle.begin(), middle.end() - 2000 - 400);
  const std::vector<PredictedGene> found = PredictGenes(model_, record, PredictSettings{});
  ASSERT_GE(found.size(), 2u);
  const PredictedGene& head = found.front();
  EXPECT_TRUE(head.openLeft && !head.openRight);
  EXPECT_EQ(head.left, 2);  // the first whole codon of the gene's frame
  EXPECT_EQ(head.right, firstRight);
  EXPECT_EQ(head.startCodon, kNoCodon);
  const PredictedGene& tail = found.back();
  EXPECT_TRUE(!tail.openLeft && tail.openRight);
  EXPECT_EQ(tail.left, lastLeft);
  EXPECT_EQ(tail.startCodon, kCodonATG);
  EXPECT_EQ((tail.right - tail.left + 1) % 3, 0);
  EXPECT_GE(tail.right, static_cast<std::int64_t>(record.size()) - 3);
  std::string set;
  AppendGeneSet(set, "r", {head, tail});
  std::string expected = "r_1\t+\t<3\t";
  expected += std::to_string(firstRight + 1);
  expected += '\t';
  expected += std::to_string(firstRight - 1);
  expected += "\t1";
  EXPECT_EQ(set.substr(0, set.find('\n')), expected);
  std::string openEnd = ">";
  openEnd += std::to_string(tail.right + 1);
  EXPECT_NE(set.find(openEnd), std::string::npos);
}

// An N run of maxNRun or more cuts the gene in two open pieces; a shorter run is read through.
TEST_F(Synthetic, NoGeneCrossesAnNRun) {
  const CodeSeq gene = Gene(400);
  for (const std::int32_t run : {60, 20}) {
    CodeSeq withGap = gene;
    std::fill(withGap.begin() + 600, withGap.begin() + 600 + run, kOther);
    CodeSeq record;
    const std::int64_t left = Plant(record, withGap, 3000);
    const std::vector<PredictedGene> found = PredictGenes(model_, record, PredictSettings{});
    bool whole = false;
    for (const PredictedGene& g : found) {
      const bool crosses = g.left < left + 600 && g.right >= left + 600 + run;
      if (run >= 50) {
        EXPECT_FALSE(crosses) << g.left << ".." << g.right;
      }
      whole |= crosses && g.left == left;
    }
    EXPECT_EQ(whole, run < 50);
    if (run >= 50) {
      EXPECT_TRUE(std::any_of(found.begin(), found.end(), [&](const PredictedGene& g) {
        return g.left == left && g.openRight && g.right < left + 600;
      }));
    }
  }
}

// The shadow of a gene, the ORF on the other strand inside it, reads as coding against non-coding
// when the codon usage resembles its own reverse complement (as in genomes of strong GC skew at
// the third position). Scored against the gene's own frame it is dropped, even with overlaps of
// any length allowed, while the gene stays.
TEST_F(Synthetic, ShadowsOfAGeneAreDropped) {
  const auto reverseCodon = [](unsigned c) {
    return (3 - (c & 3)) << 4 | (3 - (c >> 2 & 3)) << 2 | (3 - (c >> 4));
  };
  std::vector<double> weights(64);
  for (unsigned c = 0; c < 64; ++c) {
    const bool stop = codonWeights_[c] == 0 || codonWeights_[reverseCodon(c)] == 0;
    weights[c] = stop ? 0.0 : codonWeights_[c] + 0.5 * codonWeights_[reverseCodon(c)];
  }
  ScratchDir dir;
  GeneModel model;
  BuildModel(weights, dir, "shadowy.mod", model);
  PredictSettings anyOverlap;
  anyOverlap.overlap.maxOverlap = 100000;
  anyOverlap.overlap.overlapCost = 0;
  int shadows = 0;
  for (int g = 0; g < 4; ++g) {
    const CodeSeq gene = Gene(600, weights);
    CodeSeq record;
    const std::int64_t left = Plant(record, gene, 2000);
    const std::int64_t right = left + static_cast<std::int64_t>(gene.size()) - 1;
    const std::vector<PredictedGene> found = PredictGenes(model, record, anyOverlap);
    EXPECT_TRUE(std::any_of(found.begin(), found.end(), [&](const PredictedGene& p) {
      return p.left == left && p.right == right && p.strand == Strand::kDirect;
    }));
    const auto isShadow = [&](std::int64_t l, std::int64_t r) {
      return 2 * (std::min(r, right) - std::max(l, left) + 1) > r - l + 1;
    };
    for (const PredictedGene& p : found) {
      shadows += p.strand == Strand::kReverse && isShadow(p.left, p.right);
    }
    // Without the rival frames a shadow would stand: the reverse strand holds a candidate that
    // lies mostly inside the gene and scores above non-coding.
    const CodeSeq reverse = ReverseComplement(record);
    const auto n = static_cast<std::int64_t>(reverse.size());
    const std::vector<Candidate> candidates = ScanStrand(model, reverse, anyOverlap);
    EXPECT_TRUE(std::any_of(candidates.begin(), candidates.end(), [&](const Candidate& c) {
      return c.score > 0 && isShadow(n - c.end, n - 1 - c.begin);
    }));
  }
  EXPECT_EQ(shadows, 0);
}

// The GFF3 passes genometools' validator, where it is installed.
TEST_F(Synthetic, Gff3PassesTheValidator) {
  if (std::system("gt -version > /dev/null 2>&1") != 0) GTEST_SKIP() << "no genometools";
  CodeSeq record;
  Plant(record, Gene(250), 2000);
  std::string gff;
  AppendGff3Header(gff);
  AppendGff3Record(gff, "rec one;x", static_cast<std::int64_t>(record.size()),
                   PredictGenes(model_, record, PredictSettings{}));
  AppendGff3Record(gff, "rec2", static_cast<std::int64_t>(record.size()),
                   PredictGenes(model_, ReverseComplement(record), PredictSettings{}));
  ScratchDir dir;
  const std::string path = dir.Write("genes.gff", gff);
  EXPECT_EQ(std::system(("gt gff3validator " + path + " > /dev/null 2>&1").c_str()), 0) << gff;
}

}  // namespace
}  // namespace genetrain::test
