#include "convert/Annotation.h"

#include <vector>

#include "common/Message.h"
#include "genes/GeneSet.h"

namespace genetrain {

namespace {

bool StartsWith(std::string_view text, std::string_view prefix) {
  return text.substr(0, prefix.size()) == prefix;
}

std::size_t CountColumns(std::string_view line, char separator) {
  std::size_t count = 1;
  for (const char c : line) count += c == separator ? 1 : 0;
  return count;
}

bool IsGeneSetLine(std::string_view line) {
  std::vector<std::string_view> tokens;
  SplitTokens(line, " \t", tokens);
  return tokens.size() == 6 && (tokens[1] == "+" || tokens[1] == "-");
}

// GFF3 reserves these in column 9 (and seqids allow fewer): they travel as %XX.
bool NeedsEscape(char c, bool seqid) {
  const auto byte = static_cast<unsigned char>(c);
  if (byte < 0x20 || byte == 0x7f || c == '%' || c == ';' || c == '=' || c == '&' || c == ',') {
    return true;
  }
  return seqid && (c == ' ' || c == '>' || c == '#');
}

std::string Escape(std::string_view text, bool seqid) {
  constexpr std::string_view kHex = "0123456789ABCDEF";
  std::string out;
  for (const char c : text) {
    if (!NeedsEscape(c, seqid)) {
      out.push_back(c);
      continue;
    }
    const auto byte = static_cast<unsigned char>(c);
    out.push_back('%');
    out.push_back(kHex[byte >> 4]);
    out.push_back(kHex[byte & 15]);
  }
  return out;
}

void AppendGene(const CdsGene& gene, std::string& out) {
  out.append(gene.id).push_back('\t');
  out.push_back(gene.strand == Strand::kDirect ? '+' : '-');
  out.push_back('\t');
  if (gene.leftOpen) out.push_back('<');
  out.append(std::to_string(gene.left)).push_back('\t');
  if (gene.rightOpen) out.push_back('>');
  out.append(std::to_string(gene.right)).push_back('\t');
  out.append(std::to_string(gene.Length())).push_back('\t');
  out.append(std::to_string(gene.geneClass)).push_back('\n');
}

}  // namespace

bool LineCursor::Next(std::string_view& line) {
  if (at_ >= text_.size()) return false;
  const std::size_t feed = text_.find('\n', at_);
  const std::size_t end = feed == std::string_view::npos ? text_.size() : feed;
  line = text_.substr(at_, end - at_);
  if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
  at_ = end + 1;
  ++number_;
  return true;
}

bool LineError(std::string_view source, std::int64_t line, std::string_view what) {
  PrintError({"error: ", source, ", line ", std::to_string(line), ": ", what});
  return false;
}

AnnotationFormat DetectFormat(std::string_view text) {
  LineCursor lines(text);
  std::string_view line;
  while (lines.Next(line)) {
    if (line.find_first_not_of(" \t") == std::string_view::npos) continue;
    if (StartsWith(line, "##gff-version")) return AnnotationFormat::kGff;
    if (StartsWith(line, "LOCUS ")) return AnnotationFormat::kGenBank;
    if (line.front() == '#') continue;
    if (CountColumns(line, '\t') == 9) return AnnotationFormat::kGff;
    if (IsGeneSetLine(line)) return AnnotationFormat::kGeneSet;
    return AnnotationFormat::kUnknown;
  }
  return AnnotationFormat::kUnknown;
}

void AddCds(CdsGene gene, int phase, AnnotationRecord& record) {
  const bool direct = gene.strand == Strand::kDirect;
  const bool startOpen = direct ? gene.leftOpen : gene.rightOpen;
  const bool stopOpen = direct ? gene.rightOpen : gene.leftOpen;
  // Trims `bases` from the start end (towards the stop) or from the stop end.
  const auto trim = [&gene, direct](std::int64_t bases, bool atStart) {
    if (atStart == direct) {
      gene.left += bases;
    } else {
      gene.right -= bases;
    }
  };
  if (startOpen && phase > 0) trim(phase, true);
  const std::int64_t extra = gene.Length() % 3;
  if (extra != 0) {
    if (!stopOpen && !startOpen) {
      ++record.dropped.badLength;
      return;
    }
    // An open stop has no codon to keep the frame by; an open start takes its frame from the stop.
    trim(extra, !stopOpen);
  }
  if (gene.Length() < 3) {
    ++record.dropped.badLength;
    return;
  }
  record.genes.push_back(std::move(gene));
}

AnnotationRecord* FindRecord(std::vector<AnnotationRecord>& records, std::string_view name) {
  for (AnnotationRecord& record : records) {
    if (record.name == name || (!record.alias.empty() && record.alias == name)) return &record;
  }
  return nullptr;
}

AnnotationRecord& RecordNamed(Annotation& out, std::string_view name) {
  // Records are few and the last one is nearly always the one asked for.
  if (!out.records.empty() && out.records.back().name == name) return out.records.back();
  for (AnnotationRecord& record : out.records) {
    if (record.name == name) return record;
  }
  out.records.push_back(AnnotationRecord{std::string(name), {}, {}, {}});
  return out.records.back();
}

bool ReadGeneSet(std::string_view text, std::string_view source, std::string_view recordName,
                 Annotation& out) {
  AnnotationRecord& record = RecordNamed(out, recordName);
  GeneSet grammar;
  LineCursor lines(text);
  std::string_view line;
  std::vector<std::string_view> tokens;
  while (lines.Next(line)) {
    if (line.find_first_not_of(" \t") == std::string_view::npos) continue;
    const GENE parsed = grammar.ParseLine(line);
    if (!parsed.valid) {
      return LineError(source, lines.Number(),
                       "expected a gene: id, strand (+ or -), left, right, length, class (1 or 2), "
                       "with left <= right and a length that is a multiple of 3");
    }
    tokens.clear();
    SplitTokens(line, " \t", tokens);
    CdsGene gene{std::string(tokens[0]), parsed.strand,          parsed.left + 1,  parsed.right + 1,
                 !parsed.left_complete,  !parsed.right_complete, parsed.gene_class};
    ++out.cdsSeen;
    record.genes.push_back(std::move(gene));
  }
  return true;
}

std::string GeneSetText(const AnnotationRecord& record) {
  std::string out;
  out.reserve(record.genes.size() * 32);
  for (const CdsGene& gene : record.genes) AppendGene(gene, out);
  return out;
}

std::string GffText(const std::vector<AnnotationRecord>& records) {
  std::string out = "##gff-version 3\n";
  for (const AnnotationRecord& record : records) {
    const std::string seqid = Escape(record.name, true);
    for (const CdsGene& gene : record.genes) {
      out.append(seqid).append("\tgenefind\tCDS\t");
      out.append(std::to_string(gene.left)).push_back('\t');
      out.append(std::to_string(gene.right)).append("\t.\t");
      out.push_back(gene.strand == Strand::kDirect ? '+' : '-');
      out.append("\t0\tID=").append(Escape(gene.id, false));
      if (gene.leftOpen || gene.rightOpen) {
        out.append(";partial=").push_back(gene.leftOpen ? '1' : '0');
        out.push_back(gene.rightOpen ? '1' : '0');
      }
      if (gene.geneClass != 1) out.append(";gene_class=").append(std::to_string(gene.geneClass));
      out.push_back('\n');
    }
  }
  return out;
}

}  // namespace genetrain
