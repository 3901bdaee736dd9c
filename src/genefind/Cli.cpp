#include "genefind/Cli.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <iostream>
#include <new>
#include <string>

#include "common/Output.h"
#include "convert/Convert.h"
#include "driver/Usage.h"
#include "genefind/MotifCommand.h"
#include "genefind/PredictCommand.h"
#include "genefind/TrainCommand.h"

namespace genetrain {

namespace {

constexpr int kUsageStatus = 2;

enum class Command { kNone, kConvert, kPredict, kMotif, kTrain, kRun };

struct CommandLine {
  Command command = Command::kNone;
  ConvertOptions convert;
  std::string convertFormat = "genes";
  PredictOptions predict;
  std::string predictFormat = "gff";
  MotifOptions motif;
  std::string motifFormat = "motif";
  std::string motifModel = "zoops";
  double motifPseudocounts = -1.0;  // below 0: the sampler's own choice
  TrainCommandOptions train;
  RunCommandOptions run;
  std::string runFormat = "gff";
};

void AddConvert(CLI::App& app, CommandLine& line) {
  CLI::App* convert = app.add_subcommand(
      "convert",
      "Turn the CDS of a GFF3 or GenBank annotation (plain, gzip, bzip2, xz or zstd) into the "
      "six-column gene set "
      "that genetrain --geneset reads, or into GFF3; a gene set can be turned into GFF3 too.");
  convert
      ->add_option("-r,--record", line.convert.record,
                   "The record (GFF3 seqid, GenBank LOCUS name or VERSION) to convert; needed "
                   "for a gene set from an annotation of several records. For a gene-set "
                   "input, the seqid of the GFF3 written (default: the file name without "
                   "extensions)")
      ->type_name("NAME");
  convert
      ->add_option("-f,--format", line.convertFormat,
                   "Output format: genes (six-column gene set) or gff (GFF3)")
      ->type_name("FORMAT")
      ->check(CLI::IsMember({"genes", "gff"}))
      ->capture_default_str();
  convert
      ->add_option("-o,--output", line.convert.output,
                   "Output file, written whole or not at all (default: standard output)")
      ->type_name("FILE");
  convert->add_flag("-q,--quiet", line.convert.quiet,
                    "No note on standard error of the CDS kept and left out");
  convert
      ->add_option(
          "ANNOTATION", line.convert.input,
          "GFF3, GenBank or gene-set file, plain, gzip, bzip2, xz or zstd; - for standard input")
      ->type_name("FILE")
      ->required();
  convert->callback([&line] { line.command = Command::kConvert; });
}

void AddPredict(CLI::App& app, CommandLine& line) {
  CLI::App* predict = app.add_subcommand("predict",
                                         "Predict the protein-coding genes of every record of a "
                                         "FASTA file (plain, gzip, bzip2, xz or zstd) with a "
                                         "model file as genetrain --mkmod writes it.");
  PredictOptions& options = line.predict;
  predict
      ->add_option("-m,--model", options.model,
                   "Model file written by genetrain --mkmod, with or without the RBS sections")
      ->type_name("FILE")
      ->required();
  predict
      ->add_option("-o,--output", options.output,
                   "Output file, written whole or not at all (default: standard output)")
      ->type_name("FILE");
  predict
      ->add_option("-f,--format", line.predictFormat,
                   "Output format: gff (GFF3) or genes (the six-column gene set of genetrain "
                   "--geneset; for a FASTA file of one record only)")
      ->type_name("FORMAT")
      ->check(CLI::IsMember({"gff", "genes"}))
      ->capture_default_str();
  predict
      ->add_option("--proteins", options.proteins,
                   "Also write the genes' translations as FASTA to this file (default: none)")
      ->type_name("FILE");
  predict
      ->add_option("--nucleotides", options.nucleotides,
                   "Also write the genes' bases as FASTA to this file (default: none)")
      ->type_name("FILE");
  predict
      ->add_option("-t,--threads", options.threads,
                   "Threads that predict records side by side; the output is the same for any "
                   "number")
      ->type_name("N")
      ->check(CLI::Range(1, 1024))
      ->capture_default_str();
  predict
      ->add_option("--max-n-run", options.maxNRun,
                   "No gene crosses a run of this many unknown letters (N) or more")
      ->type_name("N")
      ->check(CLI::Range(1, 1 << 30))
      ->capture_default_str();
  predict->add_flag("-q,--quiet", options.quiet,
                    "No progress on standard error (shown only when it is a terminal)");
  predict
      ->add_option(
          "GENOME", options.input,
          "FASTA file of the genome, contigs or metagenome, plain, gzip, bzip2, xz or zstd; - for "
          "standard input")
      ->type_name("FILE")
      ->required();
  predict->callback([&line] { line.command = Command::kPredict; });
}

void AddMotif(CLI::App& app, CommandLine& line) {
  CLI::App* motif = app.add_subcommand(
      "motif",
      "Find the ribosome binding site motif, one site per region, in the upstream regions that "
      "genetrain --pre_start writes (FASTA, plain, gzip, bzip2, xz or zstd), with a Gibbs site "
      "sampler; the "
      "sites are written as genetrain --gibbs reads them.");
  SamplerSettings& sampler = line.motif.sampler;
  motif->add_option("-w,--width", sampler.width, "Motif width")
      ->type_name("N")
      ->check(CLI::Range(1, 100))
      ->capture_default_str();
  motif
      ->add_option("--restarts", sampler.restarts,
                   "Runs from random sites; the one whose sites score best is kept")
      ->type_name("N")
      ->check(CLI::Range(1, 100000))
      ->capture_default_str();
  motif
      ->add_option("--iterations", sampler.iterations,
                   "Sweeps over all regions per run at most; a run also ends after " +
                       std::to_string(sampler.plateau) + " sweeps without a better alignment")
      ->type_name("N")
      ->check(CLI::Range(1, 1000000))
      ->capture_default_str();
  motif
      ->add_option("--pseudocounts", line.motifPseudocounts,
                   "Pseudocounts per motif position, spread over the letters by their "
                   "frequency in the regions (default: the square root of the number of "
                   "regions)")
      ->type_name("X")
      ->check(CLI::Range(0.0, 1e9));
  motif
      ->add_option("--sites", line.motifModel,
                   "zoops: a region holds a site or none, and each site counts in the matrix "
                   "with the posterior that its region holds one; oops: every region holds one, "
                   "every site counts fully")
      ->type_name("MODEL")
      ->check(CLI::IsMember({"zoops", "oops"}))
      ->capture_default_str();
  motif
      ->add_option("--seed", sampler.seed,
                   "Seed of the random numbers; a seed gives the same sites on every run")
      ->type_name("N")
      ->capture_default_str();
  motif
      ->add_option("-o,--output", line.motif.output,
                   "Output file, written whole or not at all (default: standard output)")
      ->type_name("FILE");
  motif
      ->add_option("-f,--format", line.motifFormat,
                   "Output format: motif (the MOTIF A site list of genetrain --gibbs) or table "
                   "(tab-separated: region, id, start, end, spacer, site)")
      ->type_name("FORMAT")
      ->check(CLI::IsMember({"motif", "table"}))
      ->capture_default_str();
  motif->add_flag("-q,--quiet", line.motif.quiet,
                  "No report (consensus, information, spacers) on standard error");
  motif
      ->add_option("REGIONS", line.motif.input,
                   "FASTA file of regions of one length, plain, gzip, bzip2, xz or zstd; - for "
                   "standard input")
      ->type_name("FILE")
      ->required();
  motif->callback([&line] { line.command = Command::kMotif; });
}

// The training options that train and run share.
void AddTrainingOptions(CLI::App* command, TrainCommandOptions& options) {
  command
      ->add_option("-g,--genes", options.genes,
                   "Train on these genes instead of finding them: a six-column gene set, GFF3 or "
                   "GenBank (as genefind convert reads), plain, gzip, bzip2, xz or zstd; records "
                   "are matched by "
                   "name")
      ->type_name("FILE");
  command
      ->add_option("--code", options.geneticCode,
                   "Genetic code: 11 (bacteria, archaea) or 4 (TGA read as tryptophan, as in "
                   "Mycoplasma); 0 detects it")
      ->type_name("N")
      ->check(CLI::IsMember({0, 4, 11}))
      ->capture_default_str();
  command
      ->add_option("--order", options.order,
                   "Order of the Markov chains, 1 to 8; 0 chooses by the genome's size (4 from "
                   "300 kb, else 3)")
      ->type_name("N")
      ->check(CLI::Range(0, 8))
      ->capture_default_str();
  command
      ->add_option("--rounds", options.maxRounds,
                   "Rounds of training at most, without -g; training ends earlier when fewer "
                   "than 1 % of the genes change")
      ->type_name("N")
      ->check(CLI::Range(2, 100))
      ->capture_default_str();
  command->add_flag(
      "--no-motif", [&options](std::int64_t) { options.motif = false; },
      "No RBS motif: the model has no RBS sections");
  command
      ->add_option("--seed", options.seed,
                   "Seed of the motif sampler's random numbers; a seed gives the same model")
      ->type_name("N")
      ->capture_default_str();
  command
      ->add_option("--log", options.log,
                   "Write what each round changed to this file instead of standard error")
      ->type_name("FILE");
}

void AddTrain(CLI::App& app, CommandLine& line) {
  CLI::App* train =
      app.add_subcommand("train",
                         "Train a model of a genome (FASTA, plain, gzip, bzip2, xz or zstd; a "
                         "draft's records together), without "
                         "annotation or from its genes (-g), in genetrain's model format.");
  train->add_option("-o,--output", line.train.output, "Model file, written whole or not at all")
      ->type_name("FILE")
      ->required();
  AddTrainingOptions(train, line.train);
  train->add_flag("-q,--quiet", line.train.quiet, "No report of the rounds on standard error");
  train
      ->add_option("GENOME", line.train.input,
                   "FASTA file of the genome, plain, gzip, bzip2, xz or zstd")
      ->type_name("FILE")
      ->required();
  train->callback([&line] { line.command = Command::kTrain; });
}

void AddRun(CLI::App& app, CommandLine& line) {
  CLI::App* run = app.add_subcommand(
      "run",
      "From a genome to its genes: train a model (as genefind train), then predict with it (as "
      "genefind predict).");
  PredictOptions& predict = line.run.predict;
  run->add_option("-o,--output", predict.output,
                  "Output file, written whole or not at all (default: standard output)")
      ->type_name("FILE");
  run->add_option("-f,--format", line.runFormat,
                  "Output format: gff (GFF3) or genes (the six-column gene set; one record only)")
      ->type_name("FORMAT")
      ->check(CLI::IsMember({"gff", "genes"}))
      ->capture_default_str();
  run->add_option("--proteins", predict.proteins, "Also write the genes' translations as FASTA")
      ->type_name("FILE");
  run->add_option("--nucleotides", predict.nucleotides, "Also write the genes' bases as FASTA")
      ->type_name("FILE");
  run->add_option("--model-out", line.run.train.output, "Keep the trained model in this file")
      ->type_name("FILE");
  AddTrainingOptions(run, line.run.train);
  run->add_flag("-q,--quiet", predict.quiet, "No report of the rounds, no progress");
  run->add_option("GENOME", predict.input,
                  "FASTA file of the genome, plain, gzip, bzip2, xz or zstd")
      ->type_name("FILE")
      ->required();
  run->callback([&line] { line.command = Command::kRun; });
}

bool IsCommand(CLI::App& app, std::string_view word) {
  const auto named = [word](CLI::App* command) { return command->get_name() == word; };
  return !app.get_subcommands(named).empty();
}

// CLI11 reports the faults of a command line by exceptions; they end here, the one place that
// turns them into a message and status 2.
int Parse(int argc, const char* const* argv, CommandLine& line) {
  CLI::App app("genefind: protein-coding genes of prokaryotic genomes, with genetrain's models",
               "genefind");
  app.set_version_flag("--version", std::string(Version()), "Print the version and exit");
  app.require_subcommand(1);
  app.failure_message([](const CLI::App*, const CLI::Error& error) {
    return "error: " + std::string(error.what()) + "\nRun with --help for more information.\n";
  });
  AddConvert(app, line);
  AddPredict(app, line);
  AddMotif(app, line);
  AddTrain(app, line);
  AddRun(app, line);
  // Set after the commands, which would otherwise inherit it.
  app.footer("Run 'genefind COMMAND --help' for the options of a command.");
  if (argc > 1 && argv[1][0] != '-' && !IsCommand(app, argv[1])) {
    // CLI11 would only say that a command is required, not which word it took for one.
    std::fprintf(stderr, "error: unknown command %s\nRun with --help for more information.\n",
                 argv[1]);
    return kUsageStatus;
  }
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    std::fflush(stdout);
    const int status = app.exit(error, std::cout, std::cerr);
    std::cout.flush();
    std::cerr.flush();
    return status == 0 ? 0 : kUsageStatus;
  }
  return -1;
}

}  // namespace

int RunGenefind(int argc, const char* const* argv) {
  // The core's training notes are genetrain's output; here the output may be on standard output.
  SetNoteStream(stderr);
  CommandLine line;
  const int status = Parse(argc, argv, line);
  if (status >= 0) return status;
  try {
    if (line.command == Command::kConvert) {
      line.convert.format = line.convertFormat == "gff" ? GeneFormat::kGff : GeneFormat::kGenes;
      return RunConvert(line.convert) ? 0 : 1;
    }
    if (line.command == Command::kPredict) {
      line.predict.format = line.predictFormat == "genes" ? GeneFormat::kGenes : GeneFormat::kGff;
      return RunPredict(line.predict) ? 0 : 1;
    }
    if (line.command == Command::kMotif) {
      line.motif.format = line.motifFormat == "table" ? MotifFormat::kTable : MotifFormat::kMotif;
      if (line.motifPseudocounts >= 0.0) line.motif.sampler.pseudocounts = line.motifPseudocounts;
      line.motif.sampler.model = line.motifModel == "oops" ? SiteModel::kOops : SiteModel::kZoops;
      return RunMotif(line.motif) ? 0 : 1;
    }
    if (line.command == Command::kTrain) return RunTrain(line.train) ? 0 : 1;
    if (line.command == Command::kRun) {
      line.run.predict.format = line.runFormat == "genes" ? GeneFormat::kGenes : GeneFormat::kGff;
      return RunRun(line.run) ? 0 : 1;
    }
  } catch (const std::bad_alloc&) {
    std::fputs("error: out of memory\n", stderr);
  }
  return 1;
}

}  // namespace genetrain
