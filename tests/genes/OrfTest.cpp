#include "genes/Orf.h"

#include <gtest/gtest.h>

#include <array>
#include <random>
#include <string>
#include <vector>

#include "genes/GenesTestSupport.h"

namespace genetrain {
namespace {

using test::CodesOf;
using test::ShowGene;
using test::ShowSpan;
using Lines = std::vector<std::string>;

// The ORFs of both strands, or of one.
std::vector<GENE> Scanned(const CodeSeq& codes, std::uint32_t min, const CodonSet& starts,
                          const CodonSet& stops, Strand only = Strand::kNone) {
  ORF orf;
  orf.SetCodons(starts, stops);
  orf.BuildCodonArray(codes);
  if (only != Strand::kReverse) orf.SearchDirect(min);
  if (only != Strand::kDirect) orf.SearchReverse(min);
  return orf.orfs;
}

Lines Shown(const std::vector<GENE>& orfs) {
  Lines lines;
  for (const GENE& orf : orfs) lines.push_back(ShowGene(orf));
  return lines;
}

// The search rules taken literally: from every end walk back (or up) codon by codon.
void WalkDirect(const ORF& orf, std::uint32_t min, Lines& out) {
  const std::int64_t n = static_cast<std::int64_t>(orf.codon_array.size());
  if (n < min || n == 0) return;
  for (std::int64_t p = 0; p < n; ++p) {
    const bool stop = orf.stops_direct[orf.codon_array[p]];
    if (!stop && p < n - 3) continue;
    std::int64_t found = -1;
    bool walkStopped = false;
    for (std::int64_t q = p - 3; q >= 0 && !walkStopped; q -= 3) {
      walkStopped = orf.stops_direct[orf.codon_array[q]];
      if (!walkStopped && orf.starts_direct[orf.codon_array[q]] && p - 3 - q >= min) found = q;
    }
    if (found >= 0) out.push_back(ShowSpan(1, found, p, walkStopped, stop));
  }
}

void WalkReverse(const ORF& orf, std::uint32_t min, Lines& out) {
  const std::int64_t n = static_cast<std::int64_t>(orf.codon_array.size());
  if (n < min) return;
  for (std::int64_t s = n - 1; s >= 0; --s) {
    while (s > 2 && !orf.stops_reverse[orf.codon_array[s]]) --s;
    std::int64_t found = -1;
    bool walkStopped = false;
    for (std::int64_t t = s + 3; t < n && !walkStopped; t += 3) {
      walkStopped = orf.stops_reverse[orf.codon_array[t]];
      if (!walkStopped && orf.starts_reverse[orf.codon_array[t]] && t - 3 - s >= min) found = t;
    }
    const bool stop = orf.stops_reverse[orf.codon_array[s]];
    if (found >= 0) out.push_back(ShowSpan(2, s, found, stop, walkStopped));
  }
}

TEST(OrfCodonArray, CodonEndingAtEachPositionAndUsage) {
  ORF orf;
  orf.codon_usage[5] = 7;  // reset by the build
  orf.BuildCodonArray(CodesOf("ATGNAAAT"));
  EXPECT_EQ(orf.codon_array, (std::vector<std::uint8_t>{64, 64, 14, 64, 64, 64, 0, 3}));
  std::array<std::uint64_t, 65> usage{};  // positions 2 .. 7
  usage[0] = usage[3] = usage[14] = 1;    // AAA, AAT, ATG
  usage[64] = 3;
  EXPECT_EQ(orf.codon_usage, usage);
}

// The rules the walks encode, worked by hand: a start at the first base, ORFs running off either
// end, the order of the list. The minimum and the furthest start are pinned by cli.orf_atg_taa_*
// and cli.orf_two_starts_one_stop, on the reverse strand by the reverse-complement test below.
TEST(OrfSearch, HandWorkedSequences) {
  const std::pair<std::string_view, Lines> cases[] = {
      {"ATGTAA", {"1 2 5 oc"}},
      // Without a stop an ORF runs to the last codon of its frame (down to 2, 1 or 0 reversed).
      {"TAAATGAAAAAAAAAAAA", {"1 5 17 co"}},
      {"AAAAAAAAAAAACATTTA", {"2 2 14 oc"}},
      // Direct ones by stop end ascending, then reverse ones by stop end descending; the reverse
      // start CAT at 5 gives way to the one at 29 in the same frame.
      {"ATGCATGAATAACTAAATTACATTTACCAT", {"1 2 11 oc", "1 6 15 oc", "2 19 22 cc", "2 2 29 oo"}},
  };
  for (const auto& [bases, orfs] : cases)
    EXPECT_EQ(Shown(Scanned(CodesOf(bases), 0, {kCodonATG}, {kCodonTAA})), orfs) << bases;
}

// Random bases, rich in the codons of the options (either strand) so that ORFs are many and
// close together; now and then an N or a masked base.
CodeSeq RandomCodes(std::mt19937& random, int length) {
  static const std::string_view kCodons = "ATGCATGTGCACTTGCAACTGCAGTAATTATGATCATAGCTA";
  const unsigned alphabet = 4 + random() % 3;  // sometimes N, sometimes masked
  CodeSeq codes;
  while (static_cast<int>(codes.size()) < length) {
    if (random() % 2 == 0) {
      const CodeSeq codon = CodesOf(kCodons.substr(3 * (random() % (kCodons.size() / 3)), 3));
      codes.insert(codes.end(), codon.begin(), codon.end());
    } else {
      codes.push_back(static_cast<std::uint8_t>(random() % (random() % 40 == 0 ? alphabet : 4)));
    }
  }
  codes.resize(length);
  return codes;
}

const CodonSet kStarts = {kCodonATG, kCodonGTG, kCodonTTG, kCodonCTG};
const CodonSet kStops = {kCodonTAA, kCodonTGA, kCodonTAG};

// Each codon of `from` (of all 64 when it is empty) with a chance of one in `oneIn`.
CodonSet RandomSet(std::mt19937& random, unsigned oneIn, CodonSet from = {}) {
  CodonSet set;
  for (unsigned codon = 0; codon < 64; ++codon) {
    if ((from == CodonSet{} || from[codon]) && random() % oneIn == 0) set.Add(codon);
  }
  return set;
}

// Every length up to a few blocks of the scans, then longer ones; random codon sets and
// minimum sizes: the one-pass scans must give exactly what the walks give, in the same order,
// and the in-place codon array what the copying build gives.
TEST(OrfSearch, OnePassScansAgreeWithTheWalks) {
  std::mt19937 random(20240611);
  int found = 0;
  for (int round = 0; round < 4000; ++round) {
    const int length = round < 2700 ? round % 270 : static_cast<int>(random() % 3000);
    const CodeSeq codes = RandomCodes(random, length);
    ORF orf;
    if (round % 7 == 6) {  // any codon in any of the four sets
      orf.starts_direct = RandomSet(random, 16);
      orf.stops_direct = RandomSet(random, 16);
      orf.starts_reverse = RandomSet(random, 16);
      orf.stops_reverse = RandomSet(random, 16);
    } else {
      orf.SetCodons(RandomSet(random, 3, kStarts), RandomSet(random, 3, kStops));
    }
    const std::uint32_t pick = random() % 8;  // many with no minimum at all
    const std::uint32_t min = pick < 2 ? 0 : pick == 2 ? random() % 400 : random() % 30;
    orf.BuildCodonArray(codes);
    ORF moved;  // the in-place build of --orf, in blocks of 256 bases
    moved.BuildCodonArray(CodeSeq(codes));
    ASSERT_EQ(moved.codon_array, orf.codon_array) << "round " << round;
    ASSERT_EQ(moved.codon_usage, orf.codon_usage) << "round " << round;
    Lines expected;
    WalkDirect(orf, min, expected);
    WalkReverse(orf, min, expected);
    orf.SearchDirect(min);
    orf.SearchReverse(min);
    ASSERT_EQ(Shown(orf.orfs), expected) << "round " << round << " min " << min;
    found += static_cast<int>(expected.size());
  }
  EXPECT_GT(found, 20000);  // the cases are not all empty
}

// The reverse strand read on the reverse-complemented sequence is the direct strand: every ORF
// closed by a stop is found on both, mirrored (the codon ending at p ends at n + 1 - p). This
// holds only if the reverse codon sets are the true reverse complements of the options.
TEST(OrfSearch, ReverseStrandIsTheDirectStrandOfTheReverseComplement) {
  std::mt19937 random(77);
  int compared = 0;
  for (int round = 0; round < 200; ++round) {
    const CodeSeq codes = RandomCodes(random, 3 + static_cast<int>(random() % 400));
    CodeSeq reverse(codes.rbegin(), codes.rend());
    for (std::uint8_t& code : reverse) code = code == kMasked ? code : Complement(code);
    const std::uint32_t min = random() % 20;
    const std::int64_t n = static_cast<std::int64_t>(codes.size());
    Lines reverseOrfs, directOrfs;
    for (const GENE& orf : Scanned(codes, min, kStarts, kStops, Strand::kReverse)) {
      if (orf.left_complete) reverseOrfs.push_back(ShowGene(orf));
    }
    for (const GENE& orf : Scanned(reverse, min, kStarts, kStops, Strand::kDirect)) {
      if (orf.right_complete)
        directOrfs.push_back(
            ShowSpan(2, n + 1 - orf.right, n + 1 - orf.left, true, orf.left_complete));
    }
    ASSERT_EQ(reverseOrfs, directOrfs) << "round " << round;
    compared += static_cast<int>(reverseOrfs.size());
  }
  EXPECT_GT(compared, 1000);
}

}  // namespace
}  // namespace genetrain
