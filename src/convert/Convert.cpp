#include "convert/Convert.h"

#include <cstdio>
#include <string>
#include <vector>

#include "common/FileBuf.h"
#include "common/Message.h"
#include "common/Output.h"
#include "convert/Annotation.h"

namespace genetrain {

namespace {

constexpr std::string_view kExpected =
    "expected GFF3 (a first line \"##gff-version 3\" or features of 9 tab-separated columns), "
    "GenBank (a first line \"LOCUS\") or a six-column gene set";

bool LoadText(const std::string& input, std::string& text) {
  if (input == "-") return FileBuf::ReadRest(stdin, text, "standard input");
  FileBuf file;
  if (!file.Load(input.c_str())) return false;
  text.assign(file.View());
  return true;
}

// The name of a gene set's one record when GFF3 is written from it: the file name without its
// folders and extensions ("ecoli" for data/ecoli.genes.gz).
std::string GeneSetRecordName(const std::string& input) {
  if (input == "-") return "sequence";
  std::string name = input.substr(input.find_last_of('/') + 1);
  if (name.ends_with(".gz")) name.resize(name.size() - 3);
  const std::size_t dot = name.find('.');
  if (dot != std::string::npos && dot > 0) name.resize(dot);
  return name.empty() ? "sequence" : name;
}

std::string RecordList(const std::vector<AnnotationRecord>& records) {
  std::string list;
  for (const AnnotationRecord& record : records) {
    if (!list.empty()) list.append(", ");
    list.append(record.name);
  }
  return list;
}

void AppendCount(std::int64_t count, std::string_view one, std::string_view many,
                 std::string& text) {
  if (count == 0) return;
  text.append(text.ends_with(": ") ? "" : ", ").append(std::to_string(count)).append(" ");
  text.append(count == 1 ? one : many);
}

// "NAME: 4241 CDS; left out: 13 pseudogenes, 1 joined location".
std::string Note(const AnnotationRecord& record) {
  std::string note = "record " + record.name + ": " + std::to_string(record.genes.size()) + " CDS";
  const DroppedCounts& dropped = record.dropped;
  if (dropped.pseudo + dropped.joined + dropped.badLength == 0) return note;
  note.append("; left out: ");
  AppendCount(dropped.pseudo, "pseudogene", "pseudogenes", note);
  AppendCount(dropped.joined, "joined location", "joined locations", note);
  AppendCount(dropped.badLength, "complete CDS whose length is not a multiple of 3",
              "complete CDS whose length is not a multiple of 3", note);
  return note;
}

bool ReadAnnotation(const ConvertOptions& options, std::string_view text, std::string_view source,
                    Annotation& annotation) {
  switch (DetectFormat(text)) {
    case AnnotationFormat::kGff:
      return ReadGff(text, source, annotation);
    case AnnotationFormat::kGenBank:
      return ReadGenBank(text, source, annotation);
    case AnnotationFormat::kGeneSet:
      return ReadGeneSet(text, source,
                         options.record.empty() ? GeneSetRecordName(options.input) : options.record,
                         annotation);
    case AnnotationFormat::kUnknown:
      break;
  }
  PrintError({"error: ", source, " is not an annotation: ", kExpected});
  return false;
}

// The records to write: the one named, else all of them where the output can hold several.
bool SelectRecords(const ConvertOptions& options, std::string_view source,
                   std::vector<AnnotationRecord>& records) {
  if (!options.record.empty()) {
    AnnotationRecord* chosen = FindRecord(records, options.record);
    if (chosen == nullptr) {
      PrintError({"error: ", source, " has no record ", options.record,
                  "; its records: ", RecordList(records)});
      return false;
    }
    AnnotationRecord kept = std::move(*chosen);
    records.assign(1, std::move(kept));
  } else if (options.format == GeneFormat::kGenes && records.size() > 1) {
    PrintError({"error: ", source, " holds ", std::to_string(records.size()),
                " records and a gene set describes one: choose one with --record (",
                RecordList(records), ")"});
    return false;
  }
  std::size_t genes = 0;
  for (const AnnotationRecord& record : records) genes += record.genes.size();
  if (genes == 0) {
    const std::string where =
        records.size() == 1 ? " in record " + records.front().name : std::string();
    PrintError({"error: ", source, " holds no CDS to convert", where,
                ": expected GFF3 features of type CDS or GenBank CDS features that are not "
                "pseudogenes or joined locations"});
    if (!records.empty() && !options.quiet) PrintError({Note(records.front())});
    return false;
  }
  return true;
}

}  // namespace

bool RunConvert(const ConvertOptions& options) {
  const std::string source =
      options.input == "-" ? std::string("standard input") : "file <" + options.input + ">";
  std::string text;
  if (!LoadText(options.input, text)) return false;
  Annotation annotation;
  if (!ReadAnnotation(options, text, source, annotation)) return false;
  text = std::string();
  if (!SelectRecords(options, source, annotation.records)) return false;
  if (!options.quiet) {
    for (const AnnotationRecord& record : annotation.records) PrintError({Note(record)});
  }
  const std::string output = options.format == GeneFormat::kGenes
                                 ? GeneSetText(annotation.records.front())
                                 : GffText(annotation.records);
  return WriteFile(options.output == "-" ? std::string() : options.output, output);
}

bool LoadAnnotation(const std::string& input, Annotation& annotation) {
  ConvertOptions options;
  options.input = input;
  const std::string source = input == "-" ? std::string("standard input") : "file <" + input + ">";
  std::string text;
  return LoadText(input, text) && ReadAnnotation(options, text, source, annotation);
}

}  // namespace genetrain
