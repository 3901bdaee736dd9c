#ifndef GENETRAIN_CONVERT_ANNOTATION_H
#define GENETRAIN_CONVERT_ANNOTATION_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "seq/Strand.h"

namespace genetrain {

// One protein-coding gene of an annotation: 1-based inclusive positions in sequence orientation
// (left <= right) whatever the strand, as the six-column gene-set format writes them.
struct CdsGene {
  std::string id;
  Strand strand = Strand::kNone;
  std::int64_t left = 0;
  std::int64_t right = 0;
  bool leftOpen = false;  // runs off the sequence at its left end: written "<left"
  bool rightOpen = false;
  int geneClass = 1;  // the gene set's last column: 2 marks an atypical gene
  std::int64_t Length() const { return right - left + 1; }
};

// The CDS features the readers leave out, each kind counted.
struct DroppedCounts {
  std::int64_t pseudo = 0;
  std::int64_t joined = 0;
  std::int64_t badLength = 0;  // complete at both ends but not a whole number of codons
};

// The CDS of one sequence record, in the order of the file.
struct AnnotationRecord {
  std::string name;   // the GFF3 seqid, or the GenBank LOCUS name
  std::string alias;  // GenBank only: the VERSION accession, which FASTA headers often carry
  std::vector<CdsGene> genes;
  DroppedCounts dropped;
};

struct Annotation {
  std::vector<AnnotationRecord> records;
  std::int64_t cdsSeen = 0;  // every CDS feature (gene set line), kept or not
};

enum class AnnotationFormat { kUnknown, kGff, kGenBank, kGeneSet };

// Tells the format by the first line that is not blank: "##gff-version" or nine tab-separated
// columns is GFF3, "LOCUS" is GenBank, six blank-separated columns with a strand are a gene set.
AnnotationFormat DetectFormat(std::string_view text);

// The readers fill `out` from the whole text. `source` names the input in messages ("file <x>"
// or "standard input"). On a malformed line they print "error: SOURCE, line N: ..." and return
// false.
bool ReadGff(std::string_view text, std::string_view source, Annotation& out);
bool ReadGenBank(std::string_view text, std::string_view source, Annotation& out);
// A gene set describes one unnamed sequence: its record takes `recordName`.
bool ReadGeneSet(std::string_view text, std::string_view source, std::string_view recordName,
                 Annotation& out);

// Fits a CDS to whole codons and files it in `record`, or counts it among the dropped. An open
// start loses the first `phase` bases (the GFF3 phase, GenBank's /codon_start - 1); an open stop
// loses what is left over.
void AddCds(CdsGene gene, int phase, AnnotationRecord& record);

// The record of that name (or alias) in `records`, or null.
AnnotationRecord* FindRecord(std::vector<AnnotationRecord>& records, std::string_view name);

// The record of that name in `out`, added at the end when new.
AnnotationRecord& RecordNamed(Annotation& out, std::string_view name);

// The six-column gene-set text of one record.
std::string GeneSetText(const AnnotationRecord& record);
// GFF3 of the records, every CDS with its ID and, for a partial gene, Prodigal's partial flag.
std::string GffText(const std::vector<AnnotationRecord>& records);

// Splits a text into lines for the readers: line numbers from 1, a CR before the line feed
// dropped, so that files written on Windows read as any other.
class LineCursor {
 public:
  explicit LineCursor(std::string_view text) : text_(text) {}
  bool Next(std::string_view& line);
  std::int64_t Number() const { return number_; }

 private:
  std::string_view text_;
  std::size_t at_ = 0;
  std::int64_t number_ = 0;
};

// Prints "error: SOURCE, line N: WHAT" and returns false.
bool LineError(std::string_view source, std::int64_t line, std::string_view what);

}  // namespace genetrain

#endif
