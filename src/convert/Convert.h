#ifndef GENETRAIN_CONVERT_CONVERT_H
#define GENETRAIN_CONVERT_CONVERT_H

#include <string>

#include "convert/Annotation.h"

namespace genetrain {

enum class GeneFormat {
  kGenes,  // the six-column gene-set format of `genetrain --geneset`
  kGff,    // GFF3
};

struct ConvertOptions {
  std::string input;   // "-": standard input
  std::string output;  // empty or "-": standard output
  std::string record;  // empty: the annotation's only record
  GeneFormat format = GeneFormat::kGenes;
  bool quiet = false;  // no note of what was kept and left out
};

// The convert command: reads a GFF3, GenBank or gene-set file and writes its CDS as a gene set
// or as GFF3. False, with the message printed, on any failure; the output is then not written.
bool RunConvert(const ConvertOptions& options);

// Reads the CDS of a GFF3, GenBank or gene-set file ("-": standard input) into `annotation`; a
// gene set's record takes the file's name without extensions. False, with the message printed,
// when the file cannot be read or is no annotation.
bool LoadAnnotation(const std::string& input, Annotation& annotation);

}  // namespace genetrain

#endif
