#ifndef GENETRAIN_PREDICT_PREDICT_H
#define GENETRAIN_PREDICT_PREDICT_H

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "predict/GeneModel.h"
#include "seq/Strand.h"

namespace genetrain {

// How neighbouring genes may overlap: up to `maxOverlap` bases, the first `freeOverlap` of them
// free and each further base costing `overlapCost` nats (Schedule.cpp says why).
struct OverlapRule {
  std::int64_t maxOverlap = 60;
  std::int64_t freeOverlap = 4;
  double overlapCost = 0.05;

  double Cost(std::int64_t overlap) const {
    return overlap <= freeOverlap ? 0.0 : overlapCost * static_cast<double>(overlap - freeOverlap);
  }
};

struct PredictSettings {
  std::int32_t maxNRun = 50;  // no gene crosses a run of this many unknown letters or more
  OverlapRule overlap;
  double rbsSiteShare = 0.5;  // prior share of genes with an RBS site (with an RBS model)
};

inline constexpr unsigned kNoCodon = 64;

// A gene in sequence orientation: 0-based inclusive left <= right whatever the strand; a reverse
// gene starts at `right`. An open end runs off the record or into an N run: no start codon
// (openLeft on a direct gene, openRight on a reverse one) or no stop codon.
struct PredictedGene {
  std::int64_t left = 0, right = 0;
  Strand strand = Strand::kDirect;
  bool openLeft = false, openRight = false;
  unsigned startCodon = kNoCodon;  // codon index, kNoCodon for an open start
  double score = 0;                // log-odds of the gene against non-coding, in nats
  double confidence = 0;           // percent, from the score
  double codingScore = 0, startScore = 0, rbsScore = 0;
  std::int32_t rbsSpacer = -1;  // -1: no site scored better than the background
  std::string rbsMotif;         // the best site's bases, 5' to 3'

  bool OpenStart() const { return strand == Strand::kDirect ? openLeft : openRight; }
  bool OpenStop() const { return strand == Strand::kDirect ? openRight : openLeft; }
};

// A candidate gene of one strand's sequence, in that strand's coordinates.
struct Candidate {
  std::int64_t begin = 0, end = 0;  // [begin, end): start codon (or open begin) to stop codon
  bool openBegin = false, openEnd = false;
  unsigned startCodon = kNoCodon;
  double codingScore = 0, startScore = 0, rbsScore = 0, score = 0;
  std::int32_t rbsSpacer = -1;
};

inline constexpr std::uint32_t kNoWord = 0xffffffffu;

// The index of the word of order + 1 letters that ends at each base of one strand's sequence;
// kNoWord where the word would hold an unknown letter or reach before the sequence. The scan and
// the frame sums of a strand read the same words.
std::vector<std::uint32_t> EndingWords(std::span<const std::uint8_t> seq, int order);

// Every candidate gene of one strand's sequence (base codes, read 5' to 3'), scored against
// non-coding (the decoder adds the rival frames and the atypical class, so none is dropped): ORFs
// from each allowed start to their stop, plus the genes that run off either end. The ends of
// `strandSeq` are open ends.
std::vector<Candidate> ScanStrand(const GeneModel& model, std::span<const std::uint8_t> strandSeq,
                                  std::span<const std::uint32_t> words,
                                  const PredictSettings& settings);
// The same, with the words made here.
std::vector<Candidate> ScanStrand(const GeneModel& model, std::span<const std::uint8_t> strandSeq,
                                  const PredictSettings& settings);

// The COD1 coding log-odds summed over the bases of `seq` that end a whole word, read with the
// base at index 0 at codon position `firstCodonPosition` (0: a codon's first base).
double CodingLogOdds(const GeneModel& model, std::span<const std::uint8_t> seq,
                     int firstCodonPosition);

// The COD1 coding log-odds of the three frames of one strand's sequence, summed codon by codon,
// so that the sum of any frame over any stretch is one difference. Frame f holds the codons that
// begin at the positions f, f + 3, ... Floats, to keep two copies of a genome in 8 bytes a base.
class FrameSums {
 public:
  // From the strand's EndingWords.
  FrameSums(const GeneModel& model, std::span<const std::uint32_t> words);
  // The sum over the whole codons of `frame` that lie in [begin, end).
  double Sum(int frame, std::int64_t begin, std::int64_t end) const;

 private:
  std::array<std::vector<float>, 3> prefix_;
};

// The genes of one record, sorted by left end.
std::vector<PredictedGene> PredictGenes(const GeneModel& model, std::span<const std::uint8_t> codes,
                                        const PredictSettings& settings);

}  // namespace genetrain

#endif
