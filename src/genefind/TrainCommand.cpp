#include "genefind/TrainCommand.h"

#include <cstdio>
#include <filesystem>

#include "common/FileBuf.h"
#include "common/Message.h"
#include "common/Output.h"
#include "convert/Convert.h"
#include "predict/GeneModel.h"
#include "seq/CodedRecords.h"
#include "train/Train.h"

namespace genetrain {

namespace {

bool ReadGenome(const std::string& path, TrainingGenome& genome) {
  CodedRecords records;
  if (!ReadCodedRecords(path, records)) return false;
  for (std::size_t r = 0; r < records.ids.size(); ++r) {
    genome.AddRecord(std::move(records.ids[r]), std::move(records.codes[r]));
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
  SortByLeft(genes);
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

// The genes the model file calls on every record, for a training that did not call them with
// the model it kept (from a gene set).
bool CallGenes(const std::string& modelPath, const TrainingGenome& genome, TrainResult& result) {
  GeneModel model;
  if (!LoadGeneModel(modelPath, model)) return false;
  result.calls = PredictRecords(genome, model);
  return true;
}

// Trains, writes the model and the log; with `callGenes`, result.calls holds the genes the model
// calls on every record.
bool Train(const TrainCommandOptions& options, TrainingGenome& genome, TrainResult& result,
           bool callGenes) {
  if (!ReadGenome(options.input, genome)) return false;
  const std::string source =
      options.input == "-" ? std::string("standard input") : "file <" + options.input + ">";
  TrainOptions train;
  const std::int64_t bases = genome.Bases();
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
  train.source = source;
  const std::string scratchModel = ScratchFile(train.scratch, "model");

  std::string log;
  const auto note = [&](const std::string& line) {
    log += line + "\n";
    if (!options.quiet && options.log.empty()) PrintError({line});
  };
  bool trained = false;
  if (!options.genes.empty()) {
    std::vector<TrainingGene> genes;
    trained = GenesOf(genome, options.genes, genes) &&
              TrainSupervised(genome, genes, train, scratchModel, result);
    if (trained) {
      note("trained on " + std::to_string(result.last.codingGenes) + " of " +
           std::to_string(genes.size()) + " genes of " + options.genes);
    }
  } else {
    std::size_t number = 0;
    trained = TrainUnsupervised(genome, train, scratchModel, result,
                                [&](const TrainRound& r) { note(RoundLine(++number, r)); });
    if (trained) note(result.codeNote);
  }
  FileBuf model;
  if (trained) trained = model.Load(scratchModel.c_str());
  if (trained && callGenes && result.calls.size() != genome.Records().size()) {
    trained = CallGenes(scratchModel, genome, result);
  }
  std::remove(scratchModel.c_str());
  if (!trained) return false;
  if (!result.last.motif.consensus.empty()) {
    char line[200];
    std::snprintf(line, sizeof line, "motif %s in %lld upstream regions, %.2f bits, spacer %d",
                  result.last.motif.consensus.c_str(), static_cast<long long>(result.last.regions),
                  result.last.motif.totalInformation, result.last.motif.commonSpacer);
    note(line);
  } else if (options.motif) {
    note("no RBS motif: " + std::to_string(result.last.regions) +
         " upstream regions of sure starts, fewer than the " + std::to_string(kMinMotifRegions) +
         " a motif needs");
  }
  if (!options.output.empty()) {
    note("model " + options.output + ": order " + std::to_string(result.order) + ", code " +
         std::to_string(result.geneticCode));
  }
  if (!options.log.empty() && !WriteFile(options.log, log)) return false;
  return options.output.empty() || WriteFile(options.output, model.View());
}

}  // namespace

bool RunTrain(const TrainCommandOptions& options) {
  TrainingGenome genome;
  TrainResult result;
  return Train(options, genome, result, false);
}

// The genome is read once: training keeps its records, and the last round of training already
// called the genes with the model it kept (otherwise Train calls them).
bool RunRun(RunCommandOptions options) {
  options.train.input = options.predict.input;
  options.train.quiet = options.train.quiet || options.predict.quiet;
  TrainingGenome genome;
  TrainResult result;
  if (!Train(options.train, genome, result, true)) return false;
  return WritePredictions(options.predict, genome.Ids(), genome.Records(), result.calls,
                          result.geneticCode);
}

}  // namespace genetrain
