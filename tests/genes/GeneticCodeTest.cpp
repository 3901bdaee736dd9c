#include <gtest/gtest.h>

#include <string>

#include "TestSupport.h"
#include "genes/Genome.h"
#include "seq/VSeq.h"

namespace genetrain {
namespace {

using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;

VSeq Loaded(const std::string& bases, const std::vector<std::string>& args) {
  test::ScratchDir dir;
  Param param;
  param.Set("--seq", dir.Write("g.fa", ">g\n" + bases + "\n"));
  for (std::size_t i = 0; i + 1 < args.size(); i += 2) param.Set(args[i], args[i + 1]);
  VSeq seq;
  EXPECT_TRUE(seq.LoadForGenes(param));
  return seq;
}

std::string Letters(const CodeSeq& codes) {
  Param none;
  return Genome(none).WriteSeq(codes);
}

TEST(GeneSeq, InternalStopGivesAWarningAndNothing) {
  const VSeq seq = Loaded(
      "ATGTAAGGGTAA"
      "ATGGGGGGGTAA",
      {"--TAA_", "1"});
  CaptureStdout();
  EXPECT_TRUE(seq.GeneSeq(0, 11, Strand::kDirect).empty());
  EXPECT_EQ(Letters(seq.GeneSeq(12, 23, Strand::kDirect)), "ATGGGGGGGTAA\n");
  EXPECT_EQ(GetCapturedStdout(), "warning, STOP codon found inside protein: 0 11 6\n");
}

TEST(GeneSeq, NoStopCodonUnlessNamed) {
  const VSeq seq = Loaded("ATGTAAGGGTAA", {"--TGA_", "1", "--TAG_", "0"});
  EXPECT_EQ(Letters(seq.GeneSeq(0, 11, Strand::kDirect)), "ATGTAAGGGTAA\n");
  testing::internal::CaptureStderr();
  const VSeq bad = Loaded("ATGTAAGGGTAA", {"--TAA_", "yes"});
  testing::internal::GetCapturedStderr();
  EXPECT_EQ(bad.GeneSeq(0, 11, Strand::kDirect).size(), 12u);
}

TEST(GeneSeq, ReverseStrandIsReversedThenComplemented) {
  const VSeq seq = Loaded("TTACATGG", {"--TAA_", "1"});
  CaptureStdout();
  EXPECT_EQ(Letters(seq.GeneSeq(0, 5, Strand::kReverse)),
            "ATGTAA\n");  // the stop is the last codon
  EXPECT_EQ(GetCapturedStdout(), "");
  EXPECT_EQ(Letters(seq.GeneSeq(2, 7, Strand::kReverse)), "CCATGT\n");
}

TEST(GeneSeq, CodonWithNIsSkippedAndEndsAreClipped) {
  const VSeq seq = Loaded("ATGTNAGGGTAA", {"--TAA_", "1"});
  EXPECT_EQ(seq.GeneSeq(0, 11, Strand::kDirect).size(), 12u);
  EXPECT_EQ(Letters(seq.GeneSeq(9, 12, Strand::kDirect)),
            "TAA\n");  // one past the end comes out short
  EXPECT_TRUE(seq.GeneSeq(12, 14, Strand::kDirect).empty());
}

TEST(GenomeSettings, FlagsAreNumbers) {
  Param param;
  param.Set("--EXCLUDE_PARTIAL", "0.0");
  param.Set("--ATG_", "0.3");
  param.Set("--MIN_COD", "-5");
  testing::internal::CaptureStderr();
  const Genome genome(param);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "error in value of parameter --MIN_COD: -5\n");
  EXPECT_FALSE(genome.exclude_partial);
  EXPECT_TRUE(genome.start_codons[kCodonATG]);
  EXPECT_FALSE(genome.start_codons[kCodonGTG]);
  EXPECT_EQ(genome.min_cod, 0u);
  EXPECT_EQ(Letters({0, 1, 2, 3, 4, 5}), "ACGTNX\n");
}

}  // namespace
}  // namespace genetrain
