// Gene predictions as GFF3, a gene set and FASTA.

#include "predict/Writers.h"

#include <cctype>
#include <cstdio>

#include "common/Format.h"

namespace genetrain {

namespace {

// Amino acids by codon index (first base most significant, A C G T), the bacterial code.
constexpr std::string_view kCode11 =
    "KNKNTTTTRSRSIIMIQHQHPPPPRRRRLLLLEDEDAAAAGGGGVVVV*Y*YSSSS*CWCLFLF";

// GFF3 escapes every character of a seqid outside its allowed set, and in attribute values the
// separators ; = & , and control characters.
void AppendEscaped(std::string& out, std::string_view text, bool seqid) {
  for (const char ch : text) {
    const auto byte = static_cast<unsigned char>(ch);
    const bool plain = seqid ? (std::isalnum(byte) != 0 ||
                                std::string_view(".:^*$@!+_?-|").find(ch) != std::string_view::npos)
                             : (byte > 0x20 && byte < 0x7f &&
                                std::string_view(";=&,%").find(ch) == std::string_view::npos);
    if (plain) {
      out += ch;
    } else {
      char hex[4];
      std::snprintf(hex, sizeof hex, "%%%02X", byte);
      out += hex;
    }
  }
}

std::string GeneId(std::string_view recordId, std::size_t number) {
  std::string id;
  AppendEscaped(id, recordId, false);
  id += '_';
  AppendInteger(id, static_cast<std::int64_t>(number));
  return id;
}

void AppendCodon(std::string& out, unsigned codon) {
  if (codon >= 64) {
    out += "Edge";
    return;
  }
  out += BaseLetter(static_cast<std::uint8_t>(codon >> 4));
  out += BaseLetter(static_cast<std::uint8_t>((codon >> 2) & 3));
  out += BaseLetter(static_cast<std::uint8_t>(codon & 3));
}

void AppendWrapped(std::string& out, std::string_view text) {
  for (std::size_t i = 0; i < text.size(); i += 60) {
    out.append(text.substr(i, 60));
    out += '\n';
  }
}

void AppendFastaHeader(std::string& out, std::string_view recordId, std::size_t number,
                       const PredictedGene& gene) {
  out += '>';
  out += GeneId(recordId, number);
  out += ' ';
  AppendInteger(out, gene.left + 1);
  out += "..";
  AppendInteger(out, gene.right + 1);
  out += gene.strand == Strand::kDirect ? " +" : " -";
  out += '\n';
}

}  // namespace

std::vector<std::uint8_t> GeneCodes(std::span<const std::uint8_t> codes,
                                    const PredictedGene& gene) {
  std::vector<std::uint8_t> bases(codes.begin() + gene.left, codes.begin() + gene.right + 1);
  if (gene.strand == Strand::kReverse) ReverseComplement(bases);
  return bases;
}

void AppendGff3Header(std::string& out) {
  out += "##gff-version 3\n";
}

void AppendGff3Record(std::string& out, std::string_view recordId, std::int64_t recordLength,
                      const std::vector<PredictedGene>& genes) {
  std::string seqid;
  AppendEscaped(seqid, recordId, true);
  out += "##sequence-region ";
  out += seqid;
  out += " 1 ";
  AppendInteger(out, recordLength);
  out += '\n';
  for (std::size_t g = 0; g < genes.size(); ++g) {
    const PredictedGene& gene = genes[g];
    out += seqid;
    out += "\tgenefind\tCDS\t";
    AppendInteger(out, gene.left + 1);
    out += '\t';
    AppendInteger(out, gene.right + 1);
    out += '\t';
    AppendFixed(out, gene.score, 2);
    out += gene.strand == Strand::kDirect ? "\t+\t0\tID=" : "\t-\t0\tID=";
    out += GeneId(recordId, g + 1);
    out += ";partial=";
    out += gene.openLeft ? '1' : '0';
    out += gene.openRight ? '1' : '0';
    out += ";start_type=";
    AppendCodon(out, gene.startCodon);
    out += ";rbs_motif=";
    out += gene.rbsMotif.empty() ? "None" : gene.rbsMotif;
    out += ";rbs_spacer=";
    if (gene.rbsSpacer < 0) {
      out += "None";
    } else {
      AppendInteger(out, gene.rbsSpacer);
    }
    out += ";score=";
    AppendFixed(out, gene.score, 2);
    out += ";conf=";
    AppendFixed(out, gene.confidence, 2);
    out += '\n';
  }
}

void AppendGeneSet(std::string& out, std::string_view recordId,
                   const std::vector<PredictedGene>& genes) {
  for (std::size_t g = 0; g < genes.size(); ++g) {
    const PredictedGene& gene = genes[g];
    out += GeneId(recordId, g + 1);
    out += gene.strand == Strand::kDirect ? "\t+\t" : "\t-\t";
    if (gene.openLeft) out += '<';
    AppendInteger(out, gene.left + 1);
    out += '\t';
    if (gene.openRight) out += '>';
    AppendInteger(out, gene.right + 1);
    out += '\t';
    AppendInteger(out, gene.right - gene.left + 1);
    out += "\t1\n";
  }
}

void AppendNucleotides(std::string& out, std::string_view recordId,
                       std::span<const std::uint8_t> codes,
                       const std::vector<PredictedGene>& genes) {
  std::string text;
  for (std::size_t g = 0; g < genes.size(); ++g) {
    AppendFastaHeader(out, recordId, g + 1, genes[g]);
    text.clear();
    for (const std::uint8_t code : GeneCodes(codes, genes[g])) text += BaseLetter(code);
    AppendWrapped(out, text);
  }
}

void AppendProteins(std::string& out, std::string_view recordId,
                    std::span<const std::uint8_t> codes, const std::vector<PredictedGene>& genes,
                    int geneticCode) {
  std::string text;
  for (std::size_t g = 0; g < genes.size(); ++g) {
    const PredictedGene& gene = genes[g];
    AppendFastaHeader(out, recordId, g + 1, gene);
    const std::vector<std::uint8_t> bases = GeneCodes(codes, gene);
    text.clear();
    const std::size_t end = gene.OpenStop() ? bases.size() : bases.size() - 3;
    for (std::size_t i = 0; i + 3 <= end; i += 3) {
      if (!IsBase(bases[i]) || !IsBase(bases[i + 1]) || !IsBase(bases[i + 2])) {
        text += 'X';
        continue;
      }
      const unsigned codon = CodonIndex(bases[i], bases[i + 1], bases[i + 2]);
      char amino = kCode11[codon];
      if (codon == kCodonTGA && geneticCode == 4) amino = 'W';
      if (i == 0 && !gene.OpenStart()) amino = 'M';
      text += amino;
    }
    AppendWrapped(out, text);
  }
}

}  // namespace genetrain
