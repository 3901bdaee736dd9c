#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "TestSupport.h"
#include "seq/MSSeq.h"

namespace genetrain {
namespace {

using test::Pairs;

// Standard output of a command reading one FASTA text, with extra settings.
std::string Output(bool (MSSeq::*handler)(Param&), const std::string& fasta, Pairs extra = {}) {
  test::ScratchDir dir;
  Param param;
  param.Set("--seq", dir.Write("in.fa", fasta));
  for (const auto& [key, value] : extra) param.Set(key, value);
  MSSeq seq;
  const test::Outcome run = test::Capture([&] { return (seq.*handler)(param); });
  EXPECT_TRUE(run.ok);
  return run.out;
}

std::string Stretches(const std::string& fasta, const std::string& maximum) {
  return Output(&MSSeq::CountSubstringAtcg, fasta, {{"--max_nnn_substring", maximum}});
}

TEST(RecordRuns, HeaderInMidLineAndLimitsAtTheEnds) {
  // A header mark ends the run: the rest of the line is the next record's label.
  EXPECT_EQ(Output(&MSSeq::CountSubstringN, "NN>N\nNA\nNN\n"), "< 2\n>N< 1 2\n");
  // A negative limit lets every N separate; the largest one none.
  EXPECT_EQ(Stretches(">d\nANANNA\n", "-5"), "1\t1\t1\t>d\n3\t3\t1\t>d\n6\t6\t1\t>d\n");
  EXPECT_EQ(Stretches("ANA\n", "2147483647"), "1\t3\t3\t\n");
  EXPECT_EQ(Output(&MSSeq::StatFasta, ">g\n" + std::string(10001, 'G') + "\n"),
            ">g\t10001\t100\t0\t0\t100\t0\t0\t0\t0\t10001\t0\t0\n");
}

// Random texts with long stretches (for the chunked scans), N runs of any length made of all
// kinds of non-base letters, and non-letters everywhere, including inside runs.
std::string RandomFasta(unsigned seed) {
  std::mt19937 random(seed);
  const auto pick = [&random](std::string_view from) { return from[random() % from.size()]; };
  std::string text;
  for (int record = 0; record < 12; ++record) {
    if (record > 0 || random() % 2 == 0)
      text.append(">r").append(std::to_string(record)).append(" x\n");
    for (int piece = 0, pieces = static_cast<int>(random() % 9); piece < pieces; ++piece) {
      const bool run = random() % 3 == 0;
      const std::size_t length = random() % (random() % 4 == 0 ? 400 : 70);
      for (std::size_t i = 0; i < length; ++i) {
        text += run ? pick("NNNNnRYXb") : pick("ACGTacgtuUACGT");
        if (random() % 50 == 0) text += pick("\n\r\t 1-.*@[`{\xc3\xa9\xc1\xe1");
      }
    }
    text += "\n";
  }
  return text;
}

// first + 1, last, length and label of the letters [begin, end), as --count_substring_atcg.
std::string Stretch(std::size_t begin, std::size_t end, const std::string& label) {
  return std::to_string(begin + 1) + "\t" + std::to_string(end) + "\t" +
         std::to_string(end - begin) + "\t" + label + "\n";
}

// The three utilities against what the record reader keeps, computed letter by letter.
TEST(RecordRuns, StreamingAgreesWithTheRecords) {
  for (unsigned seed = 1; seed <= 40; ++seed) {
    const std::string fasta = RandomFasta(seed);
    test::ScratchDir dir;
    std::vector<SeqRecord> records;
    ASSERT_TRUE(ReadFastaRecords(dir.Write("in.fa", fasta), CasePreservingLetterTable(), records));
    std::string runs, stretches, stats;
    for (const auto& [label, seq] : records) {
      runs += label + "<";
      std::size_t start = 0;  // of the current stretch
      for (std::size_t first = seq.find('N'); first != std::string::npos;) {
        const std::size_t end = std::min(seq.find_first_not_of('N', first), seq.size());
        runs.append(" ").append(std::to_string(end - first));
        if (end - first > 5) {
          if (first > start) stretches += Stretch(start, first, label);
          start = end;
        }
        first = seq.find('N', end);
      }
      runs += "\n";
      if (seq.size() > start) stretches += Stretch(start, seq.size(), label);
      const auto count = [&seq](char upper) {
        return std::count(seq.begin(), seq.end(), upper) +
               std::count(seq.begin(), seq.end(), static_cast<char>(upper + 32));
      };
      const std::size_t n = seq.size(), nCount = std::count(seq.begin(), seq.end(), 'N');
      stats += label + "\t" + std::to_string(n) + "\t";
      if (n == 0) continue;
      const double bases = static_cast<double>(n - nCount);
      for (const auto letters :
           {count('C') + count('G'), count('A'), count('C'), count('G'), count('T')}) {
        stats += n == nCount ? std::string("-")
                             : std::to_string(static_cast<int>(letters * 100.0 / bases + 0.5));
        stats += "\t";
      }
      stats += std::to_string(nCount * 100 / n) + "\t";
      for (const char upper : {'A', 'C', 'G', 'T'}) stats += std::to_string(count(upper)) + "\t";
      stats += std::to_string(nCount) + "\n";
    }
    EXPECT_EQ(Output(&MSSeq::CountSubstringN, fasta), runs) << "seed " << seed;
    EXPECT_EQ(Stretches(fasta, "5"), stretches) << "seed " << seed;
    EXPECT_EQ(Output(&MSSeq::StatFasta, fasta), stats) << "seed " << seed;
  }
}

TEST(RecordRuns, SeqIsRequired) {
  for (const auto handler :
       {&MSSeq::StatFasta, &MSSeq::CountSubstringN, &MSSeq::CountSubstringAtcg}) {
    const test::Outcome run = test::RunCommand(handler, {});
    EXPECT_FALSE(run.ok);
    EXPECT_EQ(run.err, "error: missing parameter --seq\n");
  }
}

// Without a stop codon list only the frame and the margins decide.
TEST(CleanCoding, FrameAndMargins) {
  const MSSeq seq;
  EXPECT_TRUE(seq.IsCleanCoding("ATGTAA", 0, 0));
  EXPECT_FALSE(seq.IsCleanCoding("ATGTAAA", 0, 0));
  EXPECT_FALSE(seq.IsCleanCoding("ATGTA", 0, 0));
  EXPECT_FALSE(seq.IsCleanCoding("", 0, 0));
  EXPECT_FALSE(seq.IsCleanCoding("ATGTAA", 3, 3));
  EXPECT_FALSE(seq.IsCleanCoding("ATGTAA", 6, 0));
  EXPECT_FALSE(seq.IsCleanCoding("ATGTAA", 0, 6));
  // Margins beyond the length leave nothing to hold a stop.
  EXPECT_TRUE(seq.IsCleanCoding("ATGTAA", 4, 3));
  EXPECT_TRUE(seq.IsCleanCoding("ATGTAA", 4000000000U, 4000000000U));
  EXPECT_TRUE(seq.HasNoStop("TAATGATAG"));
  EXPECT_TRUE(seq.HasNoStop(""));
}

using Settings = std::vector<std::pair<std::string, std::string>>;

TEST(CleanCoding, StopsInFrameAndMargins) {
  struct Case {
    std::string fasta;
    Settings extra;
    std::string out;   // standard output, the input's path shown as "in.fa"
    std::string kept;  // the output file
  };
  const std::string three = ">taa\nAAATAACCC\n>tga\nAAATGACCC\n>tag\nAAATAGCCC\n";
  const std::string good1 = "in.fa records 1 good 1 bad 0 short 0\n";
  const Case cases[] = {
      // Only the listed stops count.
      {three, {}, "in.fa records 3 good 3 bad 0 short 0\n", three},
      {three,
       {{"--TGA_", "1"}},
       "error in record >tga\nin.fa records 3 good 2 bad 1 short 0\n",
       ">taa\nAAATAACCC\n>tag\nAAATAGCCC\n"},
      {three,
       {{"--TAG_", "1"}},
       "error in record >tag\nin.fa records 3 good 2 bad 1 short 0\n",
       ">taa\nAAATAACCC\n>tga\nAAATGACCC\n"},
      // Stops out of frame or across codons do not count; the last, partial codon of the region
      // ("TA" here) is no codon; codons are counted from the left margin.
      {">o\nATAAGTAGA\n",
       {{"--TAA_", "1"}, {"--TGA_", "1"}, {"--TAG_", "1"}},
       good1,
       ">o\nATAAGTAGA\n"},
      {">p\nCCCCCCCTA\n", {{"--TAG_", "1"}, {"--MKCHAIN_L_MARGING", "1"}}, good1, ">p\nCCCCCCTA\n"},
      {">p\nCTAGCCCCC\n",
       {{"--TAG_", "1"}, {"--MKCHAIN_L_MARGING", "1"}, {"--MKCHAIN_R_MARGING", "2"}},
       "error in record >p\nin.fa records 1 good 0 bad 1 short 0\n",
       ""},
  };
  for (const Case& c : cases) {
    test::ScratchDir dir;
    Param param;
    const std::string input = dir.Write("in.fa", c.fasta);
    for (const auto& [key, value] : Settings{{"--seq", input},
                                             {"--CLEAN_CODING", dir.Path("out.txt")},
                                             {"--PRINT_LABEL", "1"},
                                             {"--MKCHAIN_L_MARGING", "0"},
                                             {"--MKCHAIN_R_MARGING", "0"},
                                             {"--MIN_COD", "0"}}) {
      param.Set(key, value);
    }
    for (const auto& [key, value] : c.extra) param.Set(key, value);
    MSSeq seq;
    test::Outcome run = test::Capture([&] { return seq.CleanCoding(param); });
    EXPECT_TRUE(run.ok);
    const std::size_t at = run.out.rfind(input);
    ASSERT_NE(at, std::string::npos) << run.out;
    run.out = run.out.substr(0, at) + "in.fa" + run.out.substr(at + input.size());
    EXPECT_EQ(run.out, c.out) << c.fasta;
    EXPECT_EQ(test::ReadFile(dir.Path("out.txt")), c.kept) << c.fasta;
  }
}

// Each setting missing in turn, the earlier ones given and the later ones malformed: the
// missing one is named.
void ExpectSettingsReadInOrder(bool (MSSeq::*handler)(Param&), const Settings& settings,
                               const std::string& malformed) {
  for (std::size_t missing = 0; missing < settings.size(); ++missing) {
    Param param;
    for (std::size_t i = 0; i < settings.size(); ++i) {
      if (i != missing) param.Set(settings[i].first, i < missing ? settings[i].second : malformed);
    }
    MSSeq seq;
    testing::internal::CaptureStderr();
    EXPECT_FALSE((seq.*handler)(param));
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "error: missing parameter " + settings[missing].first + "\n");
  }
}

TEST(CleanCoding, SettingsAreReadInOrder) {
  ExpectSettingsReadInOrder(&MSSeq::CleanCoding,
                            {{"--seq", "in.fa"},
                             {"--CLEAN_CODING", "out.txt"},
                             {"--PRINT_LABEL", "1"},
                             {"--MKCHAIN_L_MARGING", "0"},
                             {"--MKCHAIN_R_MARGING", "0"},
                             {"--MIN_COD", "0"}},
                            "x y");
}

TEST(CleanFasta, SettingsAreReadInOrder) {
  ExpectSettingsReadInOrder(&MSSeq::CleanFasta,
                            {{"--clean_fasta", "name"},
                             {"--clean_fasta_index", "name"},
                             {"--clean_fasta_out", "name"},
                             {"--clean_fasta_label", "name"}},
                            "");
}

}  // namespace
}  // namespace genetrain
