#include "genes/Orf.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "TestSupport.h"
#include "genes/Genome.h"

namespace genetrain {
namespace {

using test::CodesOf;
using testing::internal::CaptureStderr;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStderr;
using testing::internal::GetCapturedStdout;

// strand, left, right, then "c"losed or "o"pen for the left and the right side.
std::string Show(const GENE& orf) {
  return std::to_string(StrandNumber(orf.strand)) + " " + std::to_string(orf.left) + " " +
         std::to_string(orf.right) + " " + (orf.left_complete ? "c" : "o") +
         (orf.right_complete ? "c" : "o") + (orf.valid ? "" : " invalid");
}

std::vector<std::string> Shown(const std::vector<GENE>& orfs) {
  std::vector<std::string> lines;
  for (const GENE& orf : orfs) lines.push_back(Show(orf));
  return lines;
}

Param Options(const std::vector<std::string>& pairs) {
  Param param;
  for (std::size_t i = 0; i + 1 < pairs.size(); i += 2) param.Set(pairs[i], pairs[i + 1]);
  return param;
}

// An ORF object with the codon sets of the options, searched over the bases.
ORF Searched(std::string_view bases, const std::vector<std::string>& pairs, std::uint32_t min) {
  Param param = Options(pairs);
  ORF orf;
  EXPECT_TRUE(orf.ReadCodons(param));
  orf.BuildCodonArray(CodesOf(bases));
  orf.SearchDirect(min);
  orf.SearchReverse(min);
  return orf;
}

const std::vector<std::string> kAtgTaa = {"--ATG_", "1", "--TAA_", "1"};

// The search rules taken literally: from every end walk back (or up) codon by codon.
void WalkDirect(const ORF& orf, std::uint32_t min, std::vector<GENE>& out) {
  const std::int64_t n = static_cast<std::int64_t>(orf.codon_array.size());
  if (n < min || n == 0) return;
  for (std::int64_t p = 0; p < n; ++p) {
    const bool stop = orf.stops_direct[orf.codon_array[p]];
    if (!stop && p < n - 3) continue;
    std::int64_t found = -1;
    bool walk_stopped = false;
    for (std::int64_t q = p - 3; q >= 0; q -= 3) {
      if (orf.stops_direct[orf.codon_array[q]]) {
        walk_stopped = true;
        break;
      }
      if (orf.starts_direct[orf.codon_array[q]] && p - 3 - q >= min) found = q;
    }
    if (found < 0) continue;
    GENE gene;
    gene.strand = Strand::kDirect;
    gene.left = static_cast<std::int32_t>(found);
    gene.right = static_cast<std::int32_t>(p);
    gene.left_complete = walk_stopped;
    gene.right_complete = stop;
    gene.valid = true;
    out.push_back(gene);
  }
}

void WalkReverse(const ORF& orf, std::uint32_t min, std::vector<GENE>& out) {
  const std::int64_t n = static_cast<std::int64_t>(orf.codon_array.size());
  if (n < min) return;
  for (std::int64_t s = n - 1; s >= 0; --s) {
    while (s > 2 && !orf.stops_reverse[orf.codon_array[s]]) --s;
    std::int64_t found = -1;
    bool walk_stopped = false;
    for (std::int64_t t = s + 3; t < n; t += 3) {
      if (orf.stops_reverse[orf.codon_array[t]]) {
        walk_stopped = true;
        break;
      }
      if (orf.starts_reverse[orf.codon_array[t]] && t - 3 - s >= min) found = t;
    }
    if (found < 0) continue;
    GENE gene;
    gene.strand = Strand::kReverse;
    gene.left = static_cast<std::int32_t>(s);
    gene.right = static_cast<std::int32_t>(found);
    gene.left_complete = orf.stops_reverse[orf.codon_array[s]];
    gene.right_complete = walk_stopped;
    gene.valid = true;
    out.push_back(gene);
  }
}

TEST(OrfCodons, OptionsFillBothStrandsSets) {
  Param param = Options({"--TAA_", "1", "--TGA_", "0.5", "--TAG_", "0", "--ATG_", "1", "--GTG_",
                         "2", "--TTG_", "-1", "--CTG_", "1"});
  ORF orf;
  ASSERT_TRUE(orf.ReadCodons(param));
  std::vector<int> starts, stops, rstarts, rstops;
  for (int codon = 0; codon < 65; ++codon) {
    if (orf.starts_direct[codon]) starts.push_back(codon);
    if (orf.stops_direct[codon]) stops.push_back(codon);
    if (orf.starts_reverse[codon]) rstarts.push_back(codon);
    if (orf.stops_reverse[codon]) rstops.push_back(codon);
  }
  EXPECT_EQ(starts, (std::vector<int>{14, 30, 46, 62}));
  EXPECT_EQ(rstarts, (std::vector<int>{16, 17, 18, 19}));
  EXPECT_EQ(stops, (std::vector<int>{48, 56}));
  EXPECT_EQ(rstops, (std::vector<int>{52, 60}));
}

TEST(OrfCodons, FirstMalformedOptionFails) {
  Param param = Options({"--TAG_", "yes", "--ATG_", "no"});
  ORF orf;
  CaptureStderr();
  EXPECT_FALSE(orf.ReadCodons(param));
  EXPECT_EQ(GetCapturedStderr(),
            "error in value of parameter --TAG_: yes\nerror in value of parameter --TAG_: yes\n");
}

TEST(OrfCodonArray, CodonEndingAtEachPositionAndUsage) {
  ORF orf;
  orf.codon_usage[5] = 7;  // reset by the build
  orf.BuildCodonArray(CodesOf("ATGNAAAT"));
  EXPECT_EQ(orf.codon_array, (std::vector<std::uint8_t>{64, 64, 14, 64, 64, 64, 0, 3}));
  std::uint64_t total = 0;
  for (const std::uint64_t count : orf.codon_usage) total += count;
  EXPECT_EQ(total, 6u);  // positions 2 .. 7
  EXPECT_EQ(orf.codon_usage[64], 3u);
  EXPECT_EQ(orf.codon_usage[14], 1u);
  EXPECT_EQ(orf.codon_usage[5], 0u);

  orf.BuildCodonArray(CodesOf("AC"));
  EXPECT_EQ(orf.codon_array, (std::vector<std::uint8_t>{64, 64}));
  EXPECT_EQ(orf.codon_usage[64], 0u);
}

TEST(OrfCodonArray, BuiltInPlaceOfTheCodesAsFromACopy) {
  std::mt19937 random(5);
  std::uniform_int_distribution<int> code(0, 5);
  // Lengths around the blocks of the in-place build (256 codons), and the shortest ones.
  for (const std::size_t length : {0u, 1u, 2u, 3u, 257u, 258u, 259u, 514u, 1000u}) {
    CodeSeq codes(length);
    for (std::uint8_t& base : codes) base = static_cast<std::uint8_t>(std::min(code(random), 4));
    ORF copied;
    copied.BuildCodonArray(codes);
    ORF moved;
    CodeSeq given = codes;
    moved.BuildCodonArray(std::move(given));
    EXPECT_EQ(moved.codon_array, copied.codon_array) << length;
    EXPECT_EQ(moved.codon_usage, copied.codon_usage) << length;
    EXPECT_TRUE(given.empty());
  }
}

TEST(OrfSearch, MinimumCountsTheBasesBetweenStartAndStop) {
  EXPECT_EQ(Shown(Searched("ATGAAATAA", kAtgTaa, 3).orfs), (std::vector<std::string>{"1 2 8 oc"}));
  EXPECT_TRUE(Searched("ATGAAATAA", kAtgTaa, 4).orfs.empty());
  // The same on the other strand: stop TTA closes the left side, start CAT at the right.
  EXPECT_EQ(Shown(Searched("TTATTTCAT", kAtgTaa, 3).orfs), (std::vector<std::string>{"2 2 8 co"}));
  EXPECT_TRUE(Searched("TTATTTCAT", kAtgTaa, 4).orfs.empty());
  // A stop right after the start leaves nothing between, which a minimum of 0 accepts.
  EXPECT_EQ(Shown(Searched("ATGTAA", kAtgTaa, 0).orfs), (std::vector<std::string>{"1 2 5 oc"}));
}

TEST(OrfSearch, StartWithoutStopRunsToTheLastCodonOfItsFrame) {
  const ORF orf = Searched("ATGAAAAAAAAAAAAAA", kAtgTaa, 0);
  EXPECT_EQ(Shown(orf.orfs), (std::vector<std::string>{"1 2 14 oo"}));
  const ORF closed = Searched("TAAATGAAAAAAAAAAAA", kAtgTaa, 0);
  EXPECT_EQ(Shown(closed.orfs), (std::vector<std::string>{"1 5 17 co"}));
  // Reverse: runs down to position 2, 1 or 0.
  EXPECT_EQ(Shown(Searched("AAAAAAAAAAAACATTTA", kAtgTaa, 0).orfs),
            (std::vector<std::string>{"2 2 14 oc"}));
}

TEST(OrfSearch, FurthestStartWinsAndOrderIsDirectThenReverse) {
  EXPECT_EQ(Shown(Searched("ATGATGAAATAA", kAtgTaa, 0).orfs),
            (std::vector<std::string>{"1 2 11 oc"}));
  // With a minimum the upstream start is still the one that counts.
  EXPECT_EQ(Shown(Searched("ATGATGAAATAA", kAtgTaa, 6).orfs),
            (std::vector<std::string>{"1 2 11 oc"}));
  EXPECT_TRUE(Searched("ATGATGAAATAA", kAtgTaa, 7).orfs.empty());
  // Direct ones by stop end ascending, then reverse ones by stop end descending; the reverse
  // start CAT at 5 gives way to the one at 29 in the same frame.
  const ORF orf = Searched("ATGCATGAATAACTAAATTACATTTACCAT", kAtgTaa, 0);
  EXPECT_EQ(Shown(orf.orfs),
            (std::vector<std::string>{"1 2 11 oc", "1 6 15 oc", "2 19 22 cc", "2 2 29 oo"}));
}

TEST(OrfSearch, NoCodonOptionsFindNothing) {
  const ORF orf = Searched("ATGAAATAATTATTTCAT", {}, 0);
  EXPECT_TRUE(orf.orfs.empty());
  EXPECT_EQ(orf.StartCount(), 0u);
  EXPECT_EQ(orf.StopCount(), 0u);
}

TEST(OrfSearch, CountsAddBothStrandsSets) {
  const ORF orf = Searched("ATGAAATAATTATTTCATCAT", kAtgTaa, 0);
  EXPECT_EQ(orf.StartCount(), 3u);  // ATG, CAT, CAT
  EXPECT_EQ(orf.StopCount(), 2u);   // TAA, TTA
}

// Random bases, rich in the codons of the options (either strand) so that ORFs are many and
// close together; now and then an N or a masked base.
CodeSeq RandomCodes(std::mt19937& random, int length) {
  static const std::vector<std::string> kCodons = {"ATG", "CAT", "GTG", "CAC", "TTG", "CAA", "CTG",
                                                   "CAG", "TAA", "TTA", "TGA", "TCA", "TAG", "CTA"};
  const int alphabet = 4 + static_cast<int>(random() % 3);  // sometimes N, sometimes masked
  CodeSeq codes;
  while (static_cast<int>(codes.size()) < length) {
    if (random() % 2 == 0) {
      const CodeSeq codon = CodesOf(kCodons[random() % kCodons.size()]);
      codes.insert(codes.end(), codon.begin(), codon.end());
    } else {
      codes.push_back(
          static_cast<std::uint8_t>(random() % 40 == 0 ? random() % alphabet : random() % 4));
    }
  }
  codes.resize(length);
  return codes;
}

// Every length up to a few blocks of the scans, then longer ones; random codon sets and
// minimum sizes: the one-pass scans must give exactly what the walks give, in the same order.
TEST(OrfSearch, OnePassScansAgreeWithTheWalks) {
  std::mt19937 random(20240611);
  const std::vector<std::string> options = {"--TAA_", "--TGA_", "--TAG_", "--ATG_",
                                            "--GTG_", "--TTG_", "--CTG_"};
  int found = 0;
  for (int round = 0; round < 4000; ++round) {
    const int length = round < 2700 ? round % 270 : static_cast<int>(random() % 3000);
    const CodeSeq codes = RandomCodes(random, length);
    ORF orf;
    if (round % 7 == 6) {
      // Any codon in any set.
      for (unsigned codon = 0; codon < 64; ++codon) {
        for (CodonSet* set :
             {&orf.starts_direct, &orf.stops_direct, &orf.starts_reverse, &orf.stops_reverse}) {
          if (random() % 16 == 0) set->Add(codon);
        }
      }
    } else {
      Param param;
      for (const std::string& key : options) param.Set(key, random() % 3 == 0 ? "0" : "1");
      ASSERT_TRUE(orf.ReadCodons(param));
    }
    const std::uint32_t pick = random() % 8;  // many with no minimum at all
    const std::uint32_t min = pick < 2 ? 0 : pick == 2 ? random() % 400 : random() % 30;
    orf.BuildCodonArray(codes);
    std::vector<GENE> expected;
    WalkDirect(orf, min, expected);
    WalkReverse(orf, min, expected);
    orf.SearchDirect(min);
    orf.SearchReverse(min);
    ASSERT_EQ(Shown(orf.orfs), Shown(expected)) << "round " << round << " min " << min;
    found += static_cast<int>(expected.size());
  }
  EXPECT_GT(found, 20000);  // the cases are not all empty
}

TEST(OrfSearch, ScansAppendToTheList) {
  ORF orf = Searched("ATGAAATAA", kAtgTaa, 0);
  orf.BuildCodonArray(CodesOf("TTATTTCAT"));
  orf.SearchDirect(0);
  orf.SearchReverse(0);
  EXPECT_EQ(Shown(orf.orfs), (std::vector<std::string>{"1 2 8 oc", "2 2 8 co"}));
}

std::string ListOf(const ORF& orf, std::string_view bases, const std::vector<std::string>& pairs) {
  Param param = Options(pairs);
  VSeq seq;
  seq.sequence = CodesOf(bases);
  std::string list = "untouched";
  EXPECT_TRUE(orf.ListWithMargins(param, seq, list));
  return list;
}

TEST(OrfList, InteriorLessMarginsTruncatedToWholeCodons) {
  const std::string bases =
      "ATGAAAAAAAAAAAAAAATAA"
      "NNN"
      "TTATTTTTTTTTTTTTTTCAT";
  const ORF orf = Searched(bases, kAtgTaa, 0);
  ASSERT_EQ(Shown(orf.orfs), (std::vector<std::string>{"1 2 20 oc", "2 26 44 co"}));
  EXPECT_EQ(ListOf(orf, bases, {}), "4 18 15 1\n28 42 15 2\n");
  EXPECT_EQ(ListOf(orf, bases, {"--ORF_MARGIN_LEFT", "4"}), "7 18 12 1\n28 39 12 2\n");
  EXPECT_EQ(ListOf(orf, bases, {"--ORF_MARGIN_LEFT", "5"}), "7 18 12 1\n28 39 12 2\n");
  EXPECT_EQ(ListOf(orf, bases, {"--ORF_MARGIN_LEFT", "-4"}), "1 18 18 1\n28 45 18 2\n");
  EXPECT_EQ(ListOf(orf, bases, {"--ORF_MARGIN_RIGHT", "-4"}), "4 21 18 1\n25 42 18 2\n");
  EXPECT_EQ(ListOf(orf, bases, {"--ORF_MARGIN_RIGHT", "2"}), "4 18 15 1\n28 42 15 2\n");
  // from >= to: left out without a word.
  EXPECT_EQ(ListOf(orf, bases, {"--ORF_MARGIN_LEFT", "12"}), "16 18 3 1\n28 30 3 2\n");
  EXPECT_EQ(ListOf(orf, bases, {"--ORF_MARGIN_LEFT", "15", "--ORF_MARGIN_RIGHT", "1"}), "");
}

TEST(OrfList, SequencesAreTakenFromTheBareNumbersAndClipped) {
  const std::string bases =
      "ATGAAAAAAAAAAAAAAATAA"
      "NNN"
      "TTATTTTTTTTTTTTTTTCAT";
  const ORF orf = Searched(bases, kAtgTaa, 0);
  EXPECT_EQ(ListOf(orf, bases, {"--ORF_OUT", "1"}),
            "> POS_L 4 POS_R 18 STRAND(1/2) 1\nAAAAAAAAAAAAAAT\n"
            "> POS_L 28 POS_R 42 STRAND(1/2) 2\nGAAAAAAAAAAAAAA\n");
  // Past either end of the sequence nothing is read.
  const ORF small = Searched("ATGAAATAA", kAtgTaa, 0);
  EXPECT_EQ(ListOf(small, "ATGAAATAA",
                   {"--ORF_OUT", "-2", "--ORF_MARGIN_LEFT", "-4", "--ORF_MARGIN_RIGHT", "-4"}),
            "> POS_L 1 POS_R 9 STRAND(1/2) 1\nTGAAATAA\n");
  EXPECT_EQ(ListOf(small, "ATGAAATAA",
                   {"--ORF_OUT", "1", "--ORF_MARGIN_LEFT", "30", "--ORF_MARGIN_RIGHT", "-60"}),
            "> POS_L 34 POS_R 66 STRAND(1/2) 1\n\n");
  const ORF reverse = Searched("TTATTTCAT", kAtgTaa, 0);
  EXPECT_EQ(ListOf(reverse, "TTATTTCAT",
                   {"--ORF_OUT", "1", "--ORF_MARGIN_LEFT", "-3", "--ORF_MARGIN_RIGHT", "-6"}),
            "> POS_L -2 POS_R 9 STRAND(1/2) 2\nATGAAATAA\n");
}

TEST(OrfList, MalformedMarginOrOutputChoiceFails) {
  const ORF orf = Searched("ATGAAATAA", kAtgTaa, 0);
  VSeq seq;
  for (const std::string key : {"--ORF_MARGIN_LEFT", "--ORF_MARGIN_RIGHT", "--ORF_OUT"}) {
    Param param = Options({key, "1.5"});
    std::string list = "untouched";
    CaptureStderr();
    EXPECT_FALSE(orf.ListWithMargins(param, seq, list));
    EXPECT_EQ(GetCapturedStderr(), "error in value of parameter " + key + ": 1.5\n");
    EXPECT_EQ(list, "untouched");
  }
}

TEST(OrfList, PlainListReportsOrfsWithNothingInside) {
  const ORF orf = Searched("ATGTAAATGAAAAAATAA", kAtgTaa, 0);
  ASSERT_EQ(Shown(orf.orfs), (std::vector<std::string>{"1 2 5 oc", "1 8 17 cc"}));
  CaptureStderr();
  const std::string list = orf.ListPlain();
  EXPECT_EQ(GetCapturedStderr(), "error orf\n");
  EXPECT_EQ(list, "10 15 6 1\n");
}

TEST(OrfCommand, CountsThenListToTheNamedFile) {
  test::ScratchDir dir;
  Param param = Options({"--seq", dir.Write("a.fa", ">a\nATGAAATAA\n"), "--orf",
                         dir.Path("out.txt"), "--ATG_", "1", "--TAA_", "1"});
  ORF orf;
  CaptureStdout();
  EXPECT_TRUE(RunOrf(orf, param));
  EXPECT_EQ(GetCapturedStdout(), "# Starts 1\n# Stops 1\n");
  EXPECT_EQ(test::ReadFile(dir.Path("out.txt")), "4 6 3 1\n\n");
}

TEST(OrfCommand, MalformedMinimumFailsAfterTheCounts) {
  test::ScratchDir dir;
  Param param = Options({"--seq", dir.Write("a.fa", ">a\nATGAAATAA\n"), "--orf",
                         dir.Path("out.txt"), "--ATG_", "1", "--MIN_ORF_SIZE", "-3"});
  ORF orf;
  CaptureStdout();
  CaptureStderr();
  EXPECT_FALSE(RunOrf(orf, param));
  EXPECT_EQ(GetCapturedStderr(), "error in value of parameter --MIN_ORF_SIZE: -3\n");
  EXPECT_EQ(GetCapturedStdout(), "# Starts 1\n# Stops 0\n");
  EXPECT_TRUE(test::ReadFile(dir.Path("out.txt")).empty());
}

TEST(OrfPerSeqCommand, NonCodingStretchesAreSearchedOneByOne) {
  test::ScratchDir dir;
  // Non-coding: bases 1..21 and 31..37 (1-based); each is a sequence of its own.
  const std::vector<std::string> common = {
      "--seq",     dir.Write("a.fa", ">a\nATGAAAAAAAAAAAAAAATAACCCCCCCCCATGTAAG\n"),
      "--geneset", dir.Write("g.txt", "g1 + 22 30 9 1\n"),
      "--ATG_",    "1",
      "--TAA_",    "1"};
  Param density = Options(common);
  ORF orf;
  CaptureStdout();
  EXPECT_TRUE(RunOrfPerSeq(orf, density));
  EXPECT_EQ(GetCapturedStdout(), "71428.6\n");  // 2 ORFs in 28 bases
  EXPECT_EQ(Shown(orf.orfs), (std::vector<std::string>{"1 2 20 oc", "1 2 5 oc"}));

  std::vector<std::string> listed = common;
  listed.insert(listed.end(), {"--ORF_OUT", "1"});
  Param list = Options(listed);
  ORF again;
  CaptureStdout();
  CaptureStderr();
  EXPECT_TRUE(RunOrfPerSeq(again, list));
  EXPECT_EQ(GetCapturedStderr(), "error orf\n");
  EXPECT_EQ(GetCapturedStdout(), "4 18 15 1\n");
}

TEST(OrfPerSeqCommand, NoNonCodingBaseIsAnErrorForTheDensityOnly) {
  test::ScratchDir dir;
  const std::vector<std::string> common = {"--seq",     dir.Write("a.fa", ">a\nATGAAATAA\n"),
                                           "--geneset", dir.Write("g.txt", "g + 1 9 9 1\n"),
                                           "--ATG_",    "1",
                                           "--TAA_",    "1"};
  Param density = Options(common);
  ORF orf;
  CaptureStdout();
  CaptureStderr();
  EXPECT_FALSE(RunOrfPerSeq(orf, density));
  EXPECT_EQ(GetCapturedStderr(), "error: non-coding sequence size is <0>\n");
  EXPECT_EQ(GetCapturedStdout(), "");

  std::vector<std::string> listed = common;
  listed.insert(listed.end(), {"--ORF_OUT", "1"});
  Param list = Options(listed);
  ORF again;
  CaptureStdout();
  EXPECT_TRUE(RunOrfPerSeq(again, list));
  EXPECT_EQ(GetCapturedStdout(), "");
}

}  // namespace
}  // namespace genetrain
