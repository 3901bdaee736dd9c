#include <string>
#include <vector>

#include "convert/Annotation.h"
#include "genes/GeneSet.h"

namespace genetrain {

namespace {

// Feature keys start in column 6, qualifiers and continued locations in column 22.
constexpr std::size_t kKeyColumn = 5;
constexpr std::size_t kQualifierColumn = 21;

// The parts of a CDS feature that the gene set needs.
struct Feature {
  std::string key;
  std::string location;
  std::int64_t line = 0;
  std::string locusTag;
  std::string proteinId;
  std::string gene;
  std::string codonStart;
  bool pseudo = false;
  std::string* continued = nullptr;  // the qualifier value a continuation line extends
  bool inQualifiers = false;
};

std::string_view Trim(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

std::string_view Unquote(std::string_view value) {
  if (!value.empty() && value.front() == '"') value.remove_prefix(1);
  if (!value.empty() && value.back() == '"') value.remove_suffix(1);
  return value;
}

void ReadQualifier(std::string_view text, Feature& feature) {
  const std::size_t equals = text.find('=');
  const std::string_view name =
      text.substr(1, equals == std::string_view::npos ? text.size() - 1 : equals - 1);
  const std::string_view value =
      equals == std::string_view::npos ? std::string_view{} : text.substr(equals + 1);
  feature.continued = nullptr;
  if (name == "pseudo" || name == "pseudogene") {
    feature.pseudo = true;
    return;
  }
  std::string* target = name == "locus_tag"     ? &feature.locusTag
                        : name == "protein_id"  ? &feature.proteinId
                        : name == "gene"        ? &feature.gene
                        : name == "codon_start" ? &feature.codonStart
                                                : nullptr;
  if (target == nullptr) return;
  target->assign(value);
  feature.continued = target;
}

// "[<]N..[>]M" or a single base "N"; false for anything else (remote entries, "N^M").
bool ReadSpan(std::string_view text, CdsGene& gene) {
  const std::size_t dots = text.find("..");
  std::string_view first = text.substr(0, dots);
  std::string_view second = dots == std::string_view::npos ? first : text.substr(dots + 2);
  if (!first.empty() && first.front() == '<') {
    gene.leftOpen = true;
    first.remove_prefix(1);
  }
  if (!second.empty() && second.front() == '>') {
    gene.rightOpen = true;
    second.remove_prefix(1);
  }
  gene.left = ReadCount(first);
  gene.right = ReadCount(second);
  return gene.left >= 1 && gene.right >= gene.left;
}

enum class Location { kSpan, kJoined, kUnreadable };

Location ReadLocation(std::string_view text, CdsGene& gene) {
  gene.strand = Strand::kDirect;
  if (text.starts_with("complement(") && text.ends_with(")")) {
    gene.strand = Strand::kReverse;
    text = text.substr(11, text.size() - 12);
  }
  if (text.starts_with("join(") || text.starts_with("order(")) return Location::kJoined;
  return ReadSpan(text, gene) ? Location::kSpan : Location::kUnreadable;
}

bool FinishFeature(Feature& feature, std::string_view source, AnnotationRecord* record,
                   Annotation& out) {
  if (feature.key != "CDS") return true;
  ++out.cdsSeen;
  CdsGene gene;
  const Location location = ReadLocation(feature.location, gene);
  if (location == Location::kUnreadable) {
    return LineError(source, feature.line,
                     "expected a CDS location such as 10..90, <1..>90, complement(10..90) or "
                     "join(...), found \"" +
                         feature.location + "\"");
  }
  if (location == Location::kJoined) {
    ++record->dropped.joined;
    return true;
  }
  if (feature.pseudo) {
    ++record->dropped.pseudo;
    return true;
  }
  const int codonStart = ReadCount(Unquote(feature.codonStart));
  for (std::string* value : {&feature.locusTag, &feature.proteinId, &feature.gene}) {
    value->assign(Unquote(*value));
  }
  gene.id = !feature.locusTag.empty()    ? feature.locusTag
            : !feature.proteinId.empty() ? feature.proteinId
            : !feature.gene.empty()      ? feature.gene
                                         : record->name + "_" + std::to_string(out.cdsSeen);
  for (char& c : gene.id) c = c == ' ' || c == '\t' ? '_' : c;
  AddCds(std::move(gene), codonStart >= 2 && codonStart <= 3 ? codonStart - 1 : 0, *record);
  return true;
}

}  // namespace

bool ReadGenBank(std::string_view text, std::string_view source, Annotation& out) {
  LineCursor cursor(text);
  std::string_view line;
  AnnotationRecord* record = nullptr;
  bool inFeatures = false;
  Feature feature;
  std::vector<std::string_view> tokens;
  while (cursor.Next(line)) {
    const bool indented = line.starts_with("     ");
    if (inFeatures && indented) {
      const bool keyLine = line.size() > kKeyColumn && line[kKeyColumn] != ' ';
      if (keyLine) {
        if (!FinishFeature(feature, source, record, out)) return false;
        feature = Feature{};
        tokens.clear();
        SplitTokens(line, " ", tokens);
        feature.key = tokens[0];
        feature.line = cursor.Number();
        if (tokens.size() > 1) feature.location = Trim(line.substr(tokens[1].data() - line.data()));
        continue;
      }
      const std::string_view content = Trim(line);
      if (content.starts_with("/") && line.size() > kQualifierColumn &&
          line[kQualifierColumn] == '/') {
        feature.inQualifiers = true;
        ReadQualifier(content, feature);
      } else if (!feature.inQualifiers) {
        feature.location.append(content);
      } else if (feature.continued != nullptr) {
        feature.continued->append(" ").append(content);
      }
      continue;
    }
    if (inFeatures) {
      if (!FinishFeature(feature, source, record, out)) return false;
      feature = Feature{};
      inFeatures = false;
    }
    if (line.starts_with("LOCUS ")) {
      tokens.clear();
      SplitTokens(line, " \t", tokens);
      if (tokens.size() < 2)
        return LineError(source, cursor.Number(), "expected a record name after LOCUS");
      record = &RecordNamed(out, tokens[1]);
    } else if (line.starts_with("VERSION ") && record != nullptr) {
      tokens.clear();
      SplitTokens(line, " \t", tokens);
      if (tokens.size() >= 2) record->alias = tokens[1];
    } else if (line.starts_with("FEATURES")) {
      if (record == nullptr)
        return LineError(source, cursor.Number(), "FEATURES before any LOCUS line");
      inFeatures = true;
    } else if (line.starts_with("//")) {
      record = nullptr;
    }
  }
  return !inFeatures || FinishFeature(feature, source, record, out);
}

}  // namespace genetrain
