#include <string>
#include <unordered_map>
#include <vector>

#include "convert/Annotation.h"
#include "genes/GeneSet.h"

namespace genetrain {

namespace {

// A CDS line as read, kept until every line is seen: a CDS that NCBI splits over several lines
// (one per segment, all with one ID) is a joined location, known only at the end.
struct GffCds {
  std::size_t record = 0;
  CdsGene gene;
  int phase = 0;
  bool pseudo = false;
  std::string key;  // seqid and ID; empty without an ID
};

struct Attributes {
  std::string id;
  std::string locusTag;
  std::string name;
  std::string partial;
  bool startRange = false;
  bool endRange = false;
  bool pseudo = false;
  int geneClass = 1;
};

int HexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

// Undoes GFF3's %XX escapes.
std::string Unescape(std::string_view text) {
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    char c = text[i];
    if (c == '%' && i + 2 < text.size() && HexValue(text[i + 1]) >= 0 &&
        HexValue(text[i + 2]) >= 0) {
      c = static_cast<char>(HexValue(text[i + 1]) * 16 + HexValue(text[i + 2]));
      i += 2;
    }
    out.push_back(c);
  }
  return out;
}

// A gene id: blanks become '_' since the gene set splits its columns at blanks.
std::string IdOf(std::string_view text) {
  std::string id = Unescape(text);
  for (char& c : id) c = c == ' ' || c == '\t' ? '_' : c;
  return id;
}

Attributes ReadAttributes(std::string_view column) {
  Attributes attributes;
  std::vector<std::string_view> pairs;
  SplitTokens(column, ";", pairs);
  for (std::string_view pair : pairs) {
    while (!pair.empty() && pair.front() == ' ') pair.remove_prefix(1);
    const std::size_t equals = pair.find('=');
    if (equals == std::string_view::npos) continue;
    const std::string_view key = pair.substr(0, equals);
    const std::string_view value = pair.substr(equals + 1);
    if (key == "ID") {
      attributes.id = IdOf(value);
    } else if (key == "locus_tag") {
      attributes.locusTag = IdOf(value);
    } else if (key == "Name") {
      attributes.name = IdOf(value);
    } else if (key == "partial") {
      attributes.partial = value;
    } else if (key == "start_range") {
      attributes.startRange = true;
    } else if (key == "end_range") {
      attributes.endRange = true;
    } else if (key == "pseudo") {
      attributes.pseudo = value == "true";
    } else if (key == "gene_class") {
      attributes.geneClass = value == "2" ? 2 : 1;
    }
  }
  return attributes;
}

// Prodigal writes partial=LR (1 where the gene runs off that end); NCBI writes partial=true and
// names the open ends with start_range=.,N (left) and end_range=N,. (right).
void ReadOpenEnds(const Attributes& attributes, CdsGene& gene) {
  const std::string& partial = attributes.partial;
  if (partial.size() == 2 && (partial[0] == '0' || partial[0] == '1') &&
      (partial[1] == '0' || partial[1] == '1')) {
    gene.leftOpen = partial[0] == '1';
    gene.rightOpen = partial[1] == '1';
    return;
  }
  gene.leftOpen = attributes.startRange;
  gene.rightOpen = attributes.endRange;
  // Partial without saying where: neither end can be trusted.
  if (partial == "true" && !gene.leftOpen && !gene.rightOpen) {
    gene.leftOpen = true;
    gene.rightOpen = true;
  }
}

std::int64_t ReadPosition(std::string_view token) {
  const int value = ReadCount(token);
  return value >= 1 ? value : -1;
}

bool ReadCdsLine(const std::vector<std::string_view>& columns, std::size_t record,
                 std::string_view source, std::int64_t lineNumber, std::vector<GffCds>& out) {
  GffCds cds;
  cds.record = record;
  CdsGene& gene = cds.gene;
  gene.left = ReadPosition(columns[3]);
  gene.right = ReadPosition(columns[4]);
  if (gene.left < 0 || gene.right < gene.left) {
    return LineError(source, lineNumber,
                     "expected start and end positions from 1 with start <= end, found \"" +
                         std::string(columns[3]) + "\" and \"" + std::string(columns[4]) + "\"");
  }
  if (columns[6] == "+" || columns[6] == "-") {
    gene.strand = columns[6] == "+" ? Strand::kDirect : Strand::kReverse;
  } else {
    return LineError(
        source, lineNumber,
        "expected the strand + or - of a CDS, found \"" + std::string(columns[6]) + "\"");
  }
  const std::string_view phase = columns[7];
  if (phase == "0" || phase == "1" || phase == "2") {
    cds.phase = phase[0] - '0';
  } else if (phase != ".") {
    return LineError(
        source, lineNumber,
        "expected the phase 0, 1, 2 or . of a CDS, found \"" + std::string(phase) + "\"");
  }
  const Attributes attributes = ReadAttributes(columns[8]);
  ReadOpenEnds(attributes, gene);
  gene.geneClass = attributes.geneClass;
  cds.pseudo = attributes.pseudo;
  gene.id = !attributes.locusTag.empty() ? attributes.locusTag
            : !attributes.id.empty()     ? attributes.id
                                         : attributes.name;
  if (!attributes.id.empty()) cds.key = std::string(columns[0]) + '\t' + attributes.id;
  out.push_back(std::move(cds));
  return true;
}

}  // namespace

bool ReadGff(std::string_view text, std::string_view source, Annotation& out) {
  std::vector<GffCds> lines;
  LineCursor cursor(text);
  std::string_view line;
  std::vector<std::string_view> columns;
  while (cursor.Next(line)) {
    if (line.starts_with("##FASTA") || line.starts_with(">")) break;
    if (line.starts_with("##sequence-region")) {
      columns.clear();
      SplitTokens(line, " \t", columns);
      if (columns.size() >= 2) RecordNamed(out, Unescape(columns[1]));
      continue;
    }
    if (line.empty() || line.front() == '#') continue;
    columns.clear();
    std::size_t from = 0;
    for (std::size_t tab = line.find('\t'); tab != std::string_view::npos;
         tab = line.find('\t', from)) {
      columns.push_back(line.substr(from, tab - from));
      from = tab + 1;
    }
    columns.push_back(line.substr(from));
    if (columns.size() != 9) {
      return LineError(source, cursor.Number(),
                       "expected a GFF3 feature of 9 tab-separated columns, found " +
                           std::to_string(columns.size()));
    }
    const std::string seqid = Unescape(columns[0]);
    RecordNamed(out, seqid);
    if (columns[2] != "CDS") continue;
    const auto record = static_cast<std::size_t>(&RecordNamed(out, seqid) - out.records.data());
    if (!ReadCdsLine(columns, record, source, cursor.Number(), lines)) return false;
  }

  std::unordered_map<std::string, int> segments;
  for (const GffCds& cds : lines) {
    if (!cds.key.empty()) ++segments[cds.key];
  }
  std::unordered_map<std::string, bool> counted;
  for (GffCds& cds : lines) {
    AnnotationRecord& record = out.records[cds.record];
    if (!cds.key.empty() && segments[cds.key] > 1) {
      // One count per joined CDS, at its first segment.
      if (!counted[cds.key]) {
        counted[cds.key] = true;
        ++record.dropped.joined;
        ++out.cdsSeen;
      }
      continue;
    }
    ++out.cdsSeen;
    if (cds.pseudo) {
      ++record.dropped.pseudo;
      continue;
    }
    if (cds.gene.id.empty()) cds.gene.id = record.name + "_" + std::to_string(out.cdsSeen);
    AddCds(std::move(cds.gene), cds.phase, record);
  }
  return true;
}

}  // namespace genetrain
