#ifndef GENETRAIN_PREDICT_GENEMODEL_H
#define GENETRAIN_PREDICT_GENEMODEL_H

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "seq/LetterTables.h"

namespace genetrain {

// Everything a model file holds, turned into the scoring tables of the gene finder.
//
// The chains hold joint frequencies of words of order + 1 letters; the finder needs the
// probability of a word's last letter given the letters before it, so every table becomes
// log P(last | prefix). The coding score of a base is the log-odds of its coding chain (the
// table of its codon position) against the non-coding chain.
//
// Which table is which codon position: the estimator skips `left_margin` letters of each gene
// (3 by default: the start codon), loads `order` letters, and files the first complete word in
// table 0, the next in table 1, and so on round the three tables. The first word thus ends at
// gene position left_margin + order, and table f holds the words whose last letter stands at
// codon position (left_margin + order + f) mod 3, codon position 0 being a codon's first base.
// The model file does not record the margin: LoadGeneModel takes it as a setting, default 3.
struct GeneModel {
  std::string name;
  int order = 0;
  // Log-odds of the last letter of a word of order + 1 letters, coding against non-coding, by
  // codon position of that letter; cod2 for the atypical class (equal to cod1 when the file
  // repeats the chain).
  std::array<std::vector<float>, 3> cod1;
  std::array<std::vector<float>, 3> cod2;
  bool separateCod2 = false;
  // The mean COD1 log-odds per base of coding sequence (above 0) and of non-coding sequence
  // (below 0), over the chains' own word frequencies.
  double codingDensity = 0, nonCodingDensity = 0;
  double cod1Share = 1.0;  // CD1P and CD2P, made to sum to 1
  double cod2Share = 0.0;
  // log P(codon | start) for the start codons, by codon index; kNoStart for the others.
  std::array<double, 64> startLogProb{};
  CodonSet starts;
  CodonSet stops;
  int geneticCode = 11;  // 4 when TGA is not a stop
  // Letter frequencies of the non-coding chain: the background of the start codon and RBS terms.
  std::array<double, 4> background{0.25, 0.25, 0.25, 0.25};
  std::int64_t minGeneLength = 90;     // MINC
  std::int64_t maxGeneLength = 30000;  // MAXC
  std::int64_t maxNonCoding = 10000;   // MAXN
  double nonCodingDecay = 300;         // NDEC: mean length of the non-coding stretch between genes
  double codingDecay = 250;            // CDEC: length scale below which genes are rare
  double codingCodingDecay = 600;  // CDCD: mean distance between the stops of neighbouring genes
  // RBS: log-odds of each motif row against the background, row 0 the motif's last position;
  // log P(spacer) from spacer 0 (bases between the motif's last base and the start codon).
  std::vector<std::array<double, 4>> rbsMatrix;
  std::vector<double> rbsSpacerLog;
  bool HasRbs() const { return !rbsMatrix.empty() && !rbsSpacerLog.empty(); }
};

inline constexpr double kNoStart = -1e30;

struct ModelLoadSettings {
  int chainLeftMargin = 3;  // the estimator's left margin the coding chains were counted with
};

// Reads a model file as `genetrain --mkmod` writes it (with or without the RBS sections). A file
// that cannot be read, or a section that does not parse, prints a message naming the file.
bool LoadGeneModel(const std::string& path, GeneModel& model,
                   const ModelLoadSettings& settings = {});

// The codon position (0: first base) of the words table `frame` holds, for a chain of `order`
// counted with `leftMargin` letters skipped.
constexpr int TableCodonPosition(int frame, int order, int leftMargin) {
  return (leftMargin + order + frame) % 3;
}

}  // namespace genetrain

#endif
