// A model from a genome and its genes, in process: the same estimators as genetrain --mkmod and
// --gibbs, fed from memory instead of files.

#include "train/TrainModel.h"

#include <algorithm>
#include <cctype>

#include "common/Param.h"
#include "common/Report.h"
#include "genes/GeneSet.h"
#include "genes/Genome.h"
#include "model/MkChain.h"
#include "model/ModelBuild.h"
#include "model/ModelFile.h"
#include "motif/Gibbs.h"
#include "seq/VSeq.h"

namespace genetrain {

namespace {

// The settings of a trained model, in the parameter file layout genetrain reads: those of
// examples/ecoli.par, which hold for bacteria and archaea alike. The name, the order and the
// stop codons are set per model.
constexpr const char* kModelParameters = R"(
--PHMM prokaryote_v1
--ATG_ 1 --GTG_ 1 --TTG_ 1 --CTG_ 0
--START_PRECISION 3 --START_PSEUDOCOUNTS 1
--TAA_ 1 --TAG_ 1
--MINC 90 --MAXC 30000 --MAXN 10000
--NDEC 300 --CDEC 250 --CDCD 600
--CD1P 0.9 --CD2P 0.1
--EXCLUDE_PARTIAL 1
--MKCHAIN_L_MARGING 3 --MKCHAIN_R_MARGING 3
--MKCHAIN_PSEUDOCOUNTS 1 --MKCHAIN_PRECISION 5
--COD1 --COD2 --NONC
)";

Param ModelParameters(const ModelSettings& settings) {
  Param param;
  param.Load(kModelParameters);
  param.Set("--NAME", settings.name);
  param.Set("--ORDM", std::to_string(settings.order));
  param.Set("--TGA_", settings.geneticCode == 4 ? "0" : "1");
  param.Set("--MIN_COD", std::to_string(settings.minCoding));
  param.Set("--MIN_NON", std::to_string(settings.minNonCoding));
  return param;
}

GeneSet ToGeneSet(std::span<const TrainingGene> genes) {
  GeneSet set;
  set.genes.reserve(genes.size());
  for (const TrainingGene& gene : genes) {
    GENE line;
    line.strand = gene.strand;
    line.left = static_cast<std::int32_t>(gene.left);
    line.right = static_cast<std::int32_t>(gene.right);
    line.left_complete = !gene.openLeft;
    line.right_complete = !gene.openRight;
    line.valid = true;
    line.gene_class = 1;
    set.genes.push_back(line);
  }
  return set;
}

// The coding and non-coding chains and the start codon probabilities, into the report.
bool SetTrainedEntries(Report& report, Param& param, const Genome& genome, const Genome& sureStarts,
                       const GenomeSettings& genomeSettings, int order) {
  MkChain coding(order, 3, ReadChainSettings(param, order, 3));
  if (!coding.Valid() || !coding.Estimate(genome.cod1)) return false;
  MkChain nonCoding(order, 1, ReadChainSettings(param, order, 1));
  if (!nonCoding.Valid()) return false;
  nonCoding.ClearMargins();
  if (!nonCoding.Estimate(genome.non) || !SetChainEntries(report, coding, nullptr, nonCoding)) {
    return false;
  }
  const StartCodonEstimate starts =
      EstimateStartCodons(sureStarts.cod1, sureStarts.cod2, genomeSettings.start_codons,
                          genomeSettings.start_pseudocounts);
  std::vector<std::string> startTexts;
  for (const char* key : {"--ATG_", "--GTG_", "--TTG_", "--CTG_"}) {
    startTexts.push_back(param.ValueOrEmpty(key));
  }
  SetStartEntries(report, starts, genomeSettings.start_precision, startTexts);
  return true;
}

// The sampler's sites in the upstream regions of the genes, appended to the model as RBS
// sections. Regions that do not have the full length (at a record's start) are left out.
bool AppendMotif(const VSeq& seq, const GeneSet& set, Genome& genome, const MotifSettings& motif,
                 const std::string& path, ModelBuildReport& report) {
  std::vector<std::string> labels;
  genome.CollectPreStarts(seq, set, motif.upstream, 0, true, labels);
  std::vector<std::vector<std::uint8_t>> regions;
  for (CodeSeq& region : genome.pre_start) {
    if (static_cast<int>(region.size()) == motif.upstream) regions.push_back(std::move(region));
  }
  report.regions = static_cast<std::int64_t>(regions.size());
  if (static_cast<std::int64_t>(regions.size()) < kMinMotifRegions ||
      motif.upstream < motif.sampler.width) {
    return true;
  }
  const SiteAlignment alignment = SampleSites(regions, motif.sampler);
  report.motif = ProfileOf(regions, alignment.starts, alignment.weights, motif.sampler.width,
                           alignment.background);
  report.siteShare = alignment.siteShare;
  Gibbs gibbs;
  VSeq sequences;
  for (std::size_t r = 0; r < regions.size(); ++r) {
    const std::int32_t start = std::max<std::int32_t>(0, alignment.starts[r]);
    std::string site;
    for (int k = 0; k < motif.sampler.width; ++k) {
      site.push_back(BaseLetter(regions[r][static_cast<std::size_t>(start + k)]));
    }
    gibbs.sites.push_back(std::move(site));
    gibbs.positions.push_back(start + 1);
    sequences.records.push_back(std::move(regions[r]));
  }
  gibbs.width = motif.sampler.width;
  if (!gibbs.ConvertPositions(sequences) || !gibbs.BuildDuration(1)) return false;
  gibbs.SmoothDuration();
  if (!gibbs.BuildMatrix(1)) return false;
  GibbsOptions options;
  options.model = path;
  return gibbs.WriteModel(options);
}

}  // namespace

void TrainingGenome::AddRecord(std::string id, std::vector<std::uint8_t> codes) {
  if (!records_.empty()) joinedLength_ += kJunction;
  offsets_.push_back(joinedLength_);
  joinedLength_ += static_cast<std::int64_t>(codes.size());
  bases_ += static_cast<std::int64_t>(codes.size());
  records_.push_back(std::move(codes));
  ids_.push_back(std::move(id));
}

std::vector<std::uint8_t> TrainingGenome::Joined() const {
  std::vector<std::uint8_t> joined;
  joined.reserve(static_cast<std::size_t>(joinedLength_));
  for (std::size_t r = 0; r < records_.size(); ++r) {
    if (r > 0) joined.insert(joined.end(), static_cast<std::size_t>(kJunction), kOther);
    joined.insert(joined.end(), records_[r].begin(), records_[r].end());
  }
  return joined;
}

std::vector<TrainingGene> JoinedGenes(const TrainingGenome& genome,
                                      std::span<const std::vector<PredictedGene>> byRecord) {
  std::vector<TrainingGene> genes;
  for (std::size_t r = 0; r < byRecord.size(); ++r) {
    const std::int64_t offset = genome.Offset(r);
    for (const PredictedGene& gene : byRecord[r]) {
      genes.push_back({gene.left + offset, gene.right + offset, gene.strand, gene.openLeft,
                       gene.openRight, gene.confidence});
    }
  }
  SortByLeft(genes);
  return genes;
}

void SortByLeft(std::vector<TrainingGene>& genes) {
  std::sort(genes.begin(), genes.end(), [](const TrainingGene& a, const TrainingGene& b) {
    return a.left != b.left ? a.left < b.left : a.right < b.right;
  });
}

bool BuildModel(const TrainingGenome& genome, std::span<const TrainingGene> genes,
                const ModelSettings& settings, const MotifSettings* motif, const std::string& path,
                ModelBuildReport& report) {
  Param param = ModelParameters(settings);
  VSeq seq;
  seq.sequence = genome.Joined();
  if (!ReadStopCodons(param, OnBadFlag::kFail, seq.stops)) return false;
  const GeneSet set = ToGeneSet(genes);
  const GenomeSettings genomeSettings = ReadGenomeSettings(param);
  // The genes with sure starts, for the non-coding chain, the start codons and the motif.
  std::vector<TrainingGene> sure;
  for (const TrainingGene& gene : genes) {
    if (gene.confidence >= kStartConfidence) sure.push_back(gene);
  }
  const bool allSure = sure.size() == genes.size();
  const GeneSet sureSet = allSure ? GeneSet() : ToGeneSet(sure);
  Genome training(genomeSettings);
  training.ExtractCoding(seq, set, 0, 0);
  // The non-coding chain learns from the stretches between the genes with sure starts. An unsure
  // start has often been pulled upstream over non-coding sequence; masked as a gene, that
  // sequence would never reach the chain, so the next round would read it as the head of a gene
  // again and keep the start where it is. The bodies of those genes, mostly coding, make the chain
  // a little stricter, which costs some short weak genes.
  training.ExtractNonCoding(seq, allSure ? set : sureSet);
  report = ModelBuildReport{};
  report.codingGenes = static_cast<std::int64_t>(training.cod1.size());
  Genome sureStarts(genomeSettings);
  if (!allSure) sureStarts.ExtractCoding(seq, sureSet, 0, 0);
  Report model;
  if (!SetTrainedEntries(model, param, training, allSure ? training : sureStarts, genomeSettings,
                         settings.order) ||
      !WriteModel(model, param, path)) {
    return false;
  }
  if (motif == nullptr) return true;
  return allSure ? AppendMotif(seq, set, training, *motif, path, report)
                 : AppendMotif(seq, sureSet, sureStarts, *motif, path, report);
}

}  // namespace genetrain
