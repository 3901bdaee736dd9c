// Predicts genes on every record of a FASTA file with a model file and writes them as a gene set
// (and GFF3), then prints the CPU time and peak memory of the whole run: the accuracy and speed
// check of the gene finder (bench/predict_accuracy.sh).
//
//   predict_bench MODEL FASTA GENES [GFF]

#include <sys/resource.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "common/Output.h"
#include "predict/GeneModel.h"
#include "predict/Predict.h"
#include "predict/Writers.h"
#include "seq/VSeq.h"

int main(int argc, char** argv) {
  using namespace genetrain;
  if (argc < 4) {
    std::fprintf(stderr, "usage: predict_bench MODEL FASTA GENES [GFF]\n");
    return 2;
  }
  GeneModel model;
  if (!LoadGeneModel(argv[1], model)) return 1;
  VSeq seq;
  if (!seq.ReadRecords(argv[2])) return 1;
  PredictSettings settings;
  if (const char* overlap = std::getenv("PREDICT_MAX_OVERLAP"))
    settings.overlap.maxOverlap = std::atoi(overlap);
  std::string genes, gff;
  AppendGff3Header(gff);
  for (std::size_t r = 0; r < seq.records.size(); ++r) {
    const std::string id = "seq" + std::to_string(r + 1);
    const std::vector<PredictedGene> found = PredictGenes(model, seq.records[r], settings);
    AppendGeneSet(genes, id, found);
    AppendGff3Record(gff, id, static_cast<std::int64_t>(seq.records[r].size()), found);
  }
  if (!WriteFile(argv[3], genes)) return 1;
  if (argc > 4 && !WriteFile(argv[4], gff)) return 1;
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  const double cpu = static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
                     static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) * 1e-6;
  std::fprintf(stderr, "cpu_seconds %.3f peak_mb %.1f\n", cpu,
               static_cast<double>(usage.ru_maxrss) / 1024.0);
  return 0;
}
