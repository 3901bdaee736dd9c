#include "genefind/TrainCommand.h"

#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "common/Message.h"
#include "common/Output.h"
#include "convert/Convert.h"
#include "seq/FastaScanner.h"
#include "seq/SeqRecord.h"
#include "train/Train.h"

namespace genetrain {

namespace {

std::string FirstWord(std::string_view label) {
  if (!label.empty() && label.front() == '>') label.remove_prefix(1);
  const std::size_t end = label.find_first_of(" \t\r");
  return std::string(label.substr(0, end));
}

bool ReadGenome(const std::string& path, TrainingGenome& genome) {
  std::vector<SeqRecord> records;
  if (!ReadFastaRecords(path, UpperLetterTable(), records)) return false;
  for (SeqRecord& record : records) {
    if (record.label.empty() && record.sequence.empty()) continue;
    std::vector<std::uint8_t> codes;
    AppendCodes(record.sequence, codes);
    std::string().swap(record.sequence);
    genome.AddRecord(FirstWord(record.label), std::move(codes));
  }
  return true;
}

// The annotation's genes in the genome's joined coordinates: each record of the annotation is
// matched to the genome's record of that name; a gene set (one record, named after its file) to
// a genome of one record.
bool GenesOf(const TrainingGenome& genome, const std::string& path,
             std::vector<TrainingGene>& genes) {
  Annotation annotation;
  if (!LoadAnnotation(path, annotation)) return false;
  const bool single = genome.Ids().size() == 1 && annotation.records.size() == 1;
  for (AnnotationRecord& record : annotation.records) {
    std::size_t index = genome.Ids().size();
    for (std::size_t r = 0; r < genome.Ids().size(); ++r) {
      if (genome.Ids()[r] == record.name || genome.Ids()[r] == record.alias) index = r;
    }
    if (single) index = 0;
    if (index == genome.Ids().size()) {
      PrintError({"error: file <", path, "> names record ", record.name,
                  ", which the genome does not hold"});
      return false;
    }
    const auto length = static_cast<std::int64_t>(genome.Records()[index].size());
    for (const CdsGene& gene : record.genes) {
      if (gene.right > length) {
        PrintError({"error: file <", path, ">: gene ", gene.id, " ends past record ",
                    genome.Ids()[index]});
        return false;
      }
      const std::int64_t offset = genome.Offset(index);
      genes.push_back({offset + gene.left - 1, offset + gene.right - 1, gene.strand, gene.leftOpen,
                       gene.rightOpen});
    }
  }
  std::sort(genes.begin(), genes.end(), [](const TrainingGene& a, const TrainingGene& b) {
    return a.left != b.left ? a.left < b.left : a.right < b.right;
  });
  return true;
}

std::string RoundLine(std::size_t number, const TrainRound& round) {
  char line[200];
  std::snprintf(line, sizeof line, "round %zu (%s): %lld genes, %lld trained the chains", number,
                round.stage.c_str(), static_cast<long long>(round.genes),
                static_cast<long long>(round.trainingGenes));
  std::string text = line;
  if (number > 1) {
    std::snprintf(line, sizeof line, ", %.1f %% changed", 100.0 * round.changed);
    text += line;
  }
  if (!round.motif.empty()) text += ", motif " + round.motif;
  return text;
}

std::string ScratchFolder() {
  std::error_code error;
  const std::filesystem::path folder = std::filesystem::temp_directory_path(error);
  return error ? std::string(".") : folder.string();
}

bool ReadWhole(const std::string& path, std::string& text) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream buffer;
  buffer << file.rdbuf();
  text = buffer.str();
  return static_cast<bool>(file) || file.eof();
}

}  // namespace

bool RunTrain(const TrainCommandOptions& options) {
  TrainingGenome genome;
  if (!ReadGenome(options.input, genome)) return false;
  const std::string source =
      options.input == "-" ? std::string("standard input") : "file <" + options.input + ">";
  TrainOptions train;
  // The genome's own bases: Bases() also counts the unknown letters between two records.
  std::int64_t bases = 0;
  for (const std::vector<std::uint8_t>& record : genome.Records()) {
    bases += static_cast<std::int64_t>(record.size());
  }
  if (bases < train.minBases) {
    PrintError({"error: ", source, " holds ", std::to_string(bases),
                " bases; genefind train needs at least ", std::to_string(train.minBases),
                " (a genome or a draft of one)"});
    return false;
  }
  train.geneticCode = options.geneticCode;
  train.model.order = options.order;
  train.model.name = std::filesystem::path(options.output).stem().string();
  if (train.model.name.empty()) train.model.name = "genefind";
  train.maxRounds = options.maxRounds;
  train.withMotif = options.motif;
  train.motif.sampler.seed = options.seed;
  train.scratch = ScratchFolder();
  const std::string scratchModel =
      train.scratch + "/genefind-train-" + std::to_string(::getpid()) + ".mod";

  std::string log;
  const auto note = [&](const std::string& line) {
    log += line + "\n";
    if (!options.quiet && options.log.empty()) PrintError({line});
  };
  TrainResult result;
  bool trained = false;
  if (!options.genes.empty()) {
    std::vector<TrainingGene> genes;
    trained = GenesOf(genome, options.genes, genes) &&
              TrainSupervised(genome, genes, train, scratchModel, result);
    if (trained)
      note("trained on " + std::to_string(result.last.codingGenes) + " of " +
           std::to_string(genes.size()) + " genes of " + options.genes);
  } else {
    std::size_t number = 0;
    trained = TrainUnsupervised(genome, train, scratchModel, result,
                                [&](const TrainRound& r) { note(RoundLine(++number, r)); });
    if (trained) note(result.codeNote);
  }
  std::string model;
  if (trained) trained = ReadWhole(scratchModel, model);
  std::remove(scratchModel.c_str());
  if (!trained) return false;
  if (!result.last.motif.consensus.empty()) {
    char line[200];
    std::snprintf(line, sizeof line, "motif %s in %lld upstream regions, %.2f bits, spacer %d",
                  result.last.motif.consensus.c_str(), static_cast<long long>(result.last.regions),
                  result.last.motif.totalInformation, result.last.motif.commonSpacer);
    note(line);
  }
  note("model " + options.output + ": order " + std::to_string(result.order) + ", code " +
       std::to_string(result.geneticCode));
  if (!options.log.empty() && !WriteFile(options.log, log)) return false;
  return WriteFile(options.output, model);
}

bool RunRun(RunCommandOptions options) {
  const bool keep = !options.train.output.empty();
  if (!keep) {
    options.train.output = ScratchFolder() + "/genefind-run-" + std::to_string(::getpid()) + ".mod";
  }
  options.train.input = options.predict.input;
  options.train.quiet = options.train.quiet || options.predict.quiet;
  if (!RunTrain(options.train)) return false;
  options.predict.model = options.train.output;
  const bool predicted = RunPredict(options.predict);
  if (!keep) std::remove(options.train.output.c_str());
  return predicted;
}

}  // namespace genetrain
