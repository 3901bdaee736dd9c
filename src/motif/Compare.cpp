#include "motif/Compare.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include "common/Format.h"
#include "common/Output.h"

namespace genetrain {

namespace {

constexpr std::string_view kEmptySetWarning = "warning, gene set in comparision is empty\n";

// A direct gene stops at `right`; every other strand value, 0 included, stops at `left`.
std::int32_t StopEnd(const GENE& gene) {
  return gene.strand == Strand::kDirect ? gene.right : gene.left;
}

std::int32_t StartEnd(const GENE& gene) {
  return gene.strand == Strand::kDirect ? gene.left : gene.right;
}

// Strand and stop end in one number: two genes can only pair when these agree.
std::uint64_t StopKey(const GENE& gene) {
  return (std::uint64_t{static_cast<std::uint32_t>(gene.strand)} << 32) |
         static_cast<std::uint32_t>(StopEnd(gene));
}

// The target gene that decides for every source gene with a given strand and stop end: the
// first one in file order with that strand and stop end. Any target before it either lies on
// another strand or stops elsewhere, so it can neither match exactly nor at the stop alone.
struct Partner {
  std::uint64_t key;
  std::uint32_t order;  // position in the target file
  std::int32_t start;
};

// The deciding partners, sorted by key, one per key.
std::vector<Partner> DecidingPartners(const std::vector<GENE>& genes) {
  std::vector<Partner> partners;
  partners.reserve(genes.size());
  for (std::size_t i = 0; i < genes.size(); ++i) {
    partners.push_back({StopKey(genes[i]), static_cast<std::uint32_t>(i), StartEnd(genes[i])});
  }
  std::sort(partners.begin(), partners.end(), [](const Partner& a, const Partner& b) {
    return a.key != b.key ? a.key < b.key : a.order < b.order;
  });
  const auto sameKey = [](const Partner& a, const Partner& b) { return a.key == b.key; };
  partners.erase(std::unique(partners.begin(), partners.end(), sameKey), partners.end());
  return partners;
}

}  // namespace

void Compare::Match() {
  match_both_direct = 0;
  match_both_reverse = 0;
  match_stop_direct = 0;
  match_stop_reverse = 0;
  if (source.genes.empty()) return;
  const std::vector<Partner> partners = DecidingPartners(target.genes);
  const auto byKey = [](const Partner& partner, std::uint64_t key) { return partner.key < key; };
  for (const GENE& gene : source.genes) {
    const std::uint64_t key = StopKey(gene);
    const auto found = std::lower_bound(partners.begin(), partners.end(), key, byKey);
    if (found == partners.end() || found->key != key) continue;
    const bool exact = found->start == StartEnd(gene);
    if (gene.strand == Strand::kDirect) {
      ++(exact ? match_both_direct : match_stop_direct);
    } else {
      ++(exact ? match_both_reverse : match_stop_reverse);
    }
  }
}

std::string Compare::ResultText(std::uint32_t precision, bool bothEnds, bool stopEnd) const {
  std::string text;
  text.reserve(64);
  const std::size_t genes = source.genes.size() + target.genes.size();
  if (genes == 0) {
    AppendFixed(text, 0.0, precision);
    return text;
  }
  const std::int64_t both = std::int64_t{match_both_direct} + match_both_reverse;
  const std::int64_t stop = both + match_stop_direct + match_stop_reverse;
  const double total = static_cast<double>(genes);
  if (bothEnds) {
    AppendFixed(text, 2.0 * static_cast<double>(both) / total, precision);
    if (stopEnd) text.push_back('\t');
  }
  if (stopEnd) AppendFixed(text, 2.0 * static_cast<double>(stop) / total, precision);
  return text;
}

bool ReadCompareOptions(Param& param, CompareOptions& options) {
  options.output = param.ValueOrEmpty("--compare");
  return param.GetWord(options.sourceName, "--source") &&
         param.GetWord(options.targetName, "--target") &&
         param.GetOpt(options.precision, "--COMPARE_PRECISION") &&
         param.GetOpt(options.bothEnds, "--COMPARE_START") &&
         param.GetOpt(options.stopEnd, "--COMPARE_END");
}

bool Compare::Run(Param& param) {
  CompareOptions options;
  return ReadCompareOptions(param, options) && Run(options);
}

bool Compare::Run(const CompareOptions& options) {
  if (!source.LoadFile(options.sourceName) || !target.LoadFile(options.targetName)) return false;
  if (source.genes.empty() || target.genes.empty()) WriteStdout(kEmptySetWarning);
  Match();
  Set("--compare", "", ResultText(options.precision, options.bothEnds, options.stopEnd));
  return Write(options.output);
}

}  // namespace genetrain
