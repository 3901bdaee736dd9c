// Pre-start regions: the stretch upstream of each start codon (and a few bases of the gene),
// the input of the motif search for the ribosome binding site. Command --pre_start.

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <string>
#include <string_view>

#include "common/Format.h"
#include "common/Output.h"
#include "genes/Genome.h"

namespace genetrain {

namespace {

// The strand as the gene set file writes it, and '.' for a record without one.
char StrandSign(Strand strand) {
  switch (strand) {
    case Strand::kDirect:
      return '+';
    case Strand::kReverse:
      return '-';
    default:
      return '.';
  }
}

// " left right strand\n" with 1-based coordinates, as the gene set file writes them.
std::string Label(const GENE& gene) {
  std::string label;
  label.reserve(28);
  label.push_back(' ');
  AppendInteger(label, std::int64_t{gene.left} + 1);
  label.push_back(' ');
  AppendInteger(label, std::int64_t{gene.right} + 1);
  label.push_back(' ');
  label.push_back(StrandSign(gene.strand));
  label.push_back('\n');
  return label;
}

// The gap to the upstream neighbour record (whatever it holds) must leave room for the
// upstream part; the first direct and the last reverse record have no neighbour there.
bool HasIntergenicRoom(const std::vector<GENE>& genes, std::size_t i, std::int64_t upstream) {
  const GENE& gene = genes[i];
  if (gene.strand == Strand::kDirect) {
    return i > 0 && std::int64_t{gene.left} - genes[i - 1].right >= upstream;
  }
  return i + 1 < genes.size() && std::int64_t{genes[i + 1].left} - gene.right >= upstream;
}

struct PreStartRules {
  std::int64_t length;  // of the sequence
  std::int64_t min_cod;
  std::int64_t upstream;
  bool intergenic;
};

// Whether gene i may give a region: a valid, long enough gene whose start end is complete and
// leaves room for the upstream part before the sequence end (and, for intergenic, its neighbour).
bool TakesPreStart(const std::vector<GENE>& genes, std::size_t i, const PreStartRules& rules) {
  const GENE& gene = genes[i];
  if (!gene.valid) return false;
  if (std::int64_t{gene.right} + 1 - gene.left < rules.min_cod) return false;
  if (gene.strand == Strand::kDirect) {
    if (!gene.left_complete || gene.left < rules.upstream) return false;
  } else if (gene.strand == Strand::kReverse) {
    if (!gene.right_complete || gene.right > rules.length - rules.upstream) return false;
  } else {
    return false;  // no strand, no start
  }
  return !rules.intergenic || HasIntergenicRoom(genes, i, rules.upstream);
}

}  // namespace

CodeSeq VSeq::RegionSeq(int left, int right_end, Strand strand, int upstream, int inside) const {
  const std::int64_t length = static_cast<std::int64_t>(sequence.size());
  std::int64_t begin = std::int64_t{left} - upstream;
  std::int64_t end = std::int64_t{left} + inside;
  if (strand == Strand::kReverse) {
    begin = std::int64_t{right_end} - inside;
    end = std::int64_t{right_end} + upstream;
  }
  begin = std::clamp<std::int64_t>(begin, 0, length);
  end = std::clamp<std::int64_t>(end, begin, length);
  CodeSeq region(sequence.begin() + begin, sequence.begin() + end);
  if (strand == Strand::kReverse) {
    ReverseComplement(region);
  }
  return region;
}

void Genome::CollectPreStarts(const VSeq& seq, const GeneSet& set, int upstream, int inside,
                              bool intergenic, std::vector<std::string>& labels) {
  const PreStartRules rules{static_cast<std::int64_t>(seq.sequence.size()), min_cod, upstream,
                            intergenic};
  const std::vector<GENE>& genes = set.genes;
  for (std::size_t i = 0; i < genes.size(); ++i) {
    if (!TakesPreStart(genes, i, rules)) continue;
    const GENE& gene = genes[i];
    CodeSeq region = seq.RegionSeq(gene.left, gene.right + 1, gene.strand, upstream, inside);
    if (std::find(region.begin(), region.end(), kOther) != region.end()) continue;
    pre_start.push_back(std::move(region));
    labels.push_back(Label(gene));
  }
}

std::string Genome::WritePreStarts(int lines, const std::vector<std::string>& labels) const {
  std::size_t count = std::min(pre_start.size(), labels.size());
  if (lines >= 0) count = std::min(count, static_cast<std::size_t>(lines));
  std::size_t size = 0;
  for (std::size_t i = 0; i < count; ++i) size += 12 + labels[i].size() + pre_start[i].size() + 1;
  std::string text;
  text.reserve(size);
  for (std::size_t i = 0; i < count; ++i) {
    text.push_back('>');
    AppendInteger(text, static_cast<std::int64_t>(i) + 1);
    text.append(labels[i]);
    AppendSeq(text, pre_start[i]);
  }
  return text;
}

bool ReadPreStartOptions(Param& param, PreStartOptions& options) {
  return param.GetWord(options.name, "--pre_start") &&
         param.GetOpt(options.width, "--PRE_START_WIDTH") &&
         param.GetOpt(options.inside, "--PRE_START_RELATIVE_POS") &&
         param.GetOpt(options.intergenic, "--PRE_START_INTERGENIC") &&
         param.GetOpt(options.lines, "--PRE_START_LINES");
}

// The upstream length is W - P. With P above W it is negative and the region, still W bases
// ending P bases into the gene, lies wholly inside the gene.
bool Genome::WritePreStartFile(const VSeq& seq, const GeneSet& set,
                               const PreStartOptions& options) {
  // Room for the regions written, but never more than there are genes.
  std::size_t room = set.genes.size();
  if (options.lines >= 1) room = std::min(room, static_cast<std::size_t>(options.lines));
  pre_start.reserve(pre_start.size() + room);
  std::vector<std::string> labels;
  labels.reserve(room);
  const std::int64_t upstream = std::int64_t{options.width} - options.inside;
  CollectPreStarts(seq, set, ClampToInt(upstream), ClampToInt(options.inside), options.intergenic,
                   labels);
  return WriteFile(options.name, WritePreStarts(options.lines, labels));
}

bool Genome::WritePreStartFile(const VSeq& seq, const GeneSet& set, Param& param) {
  PreStartOptions options;
  return ReadPreStartOptions(param, options) && WritePreStartFile(seq, set, options);
}

bool RunPreStart(Param& param) {
  Genome genome(param);
  VSeq seq;
  GeneSet set;
  if (!LoadAnnotated(seq, set, param, false)) return false;
  return genome.WritePreStartFile(seq, set, param);
}

}  // namespace genetrain
