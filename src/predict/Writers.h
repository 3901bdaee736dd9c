#ifndef GENETRAIN_PREDICT_WRITERS_H
#define GENETRAIN_PREDICT_WRITERS_H

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "predict/Predict.h"

namespace genetrain {

// The first line of a GFF3 file.
void AppendGff3Header(std::string& out);
// The sequence-region pragma and one CDS line per gene of one record. IDs are the escaped record
// id, "_" and the gene's number from 1: unique as long as the record ids are.
void AppendGff3Record(std::string& out, std::string_view recordId, std::int64_t recordLength,
                      const std::vector<PredictedGene>& genes);
// The six-column gene set that `genetrain --geneset` reads: id, strand, left, right (1-based,
// "<" and ">" for open ends), length, class 1.
void AppendGeneSet(std::string& out, std::string_view recordId,
                   const std::vector<PredictedGene>& genes);
// FASTA of the genes' bases (read on their strand) or their translations with the genetic code
// (11, or 4: TGA is tryptophan); a complete start codon is translated as M, the stop is left out.
void AppendNucleotides(std::string& out, std::string_view recordId,
                       std::span<const std::uint8_t> codes,
                       const std::vector<PredictedGene>& genes);
void AppendProteins(std::string& out, std::string_view recordId,
                    std::span<const std::uint8_t> codes, const std::vector<PredictedGene>& genes,
                    int geneticCode);

// The bases of a gene read on its strand, as codes.
std::vector<std::uint8_t> GeneCodes(std::span<const std::uint8_t> codes, const PredictedGene& gene);

}  // namespace genetrain

#endif
