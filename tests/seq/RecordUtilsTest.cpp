#include <gtest/gtest.h>

#include <algorithm>
#include <initializer_list>
#include <random>
#include <string>
#include <utility>
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
  testing::internal::CaptureStdout();
  EXPECT_TRUE((seq.*handler)(param));
  return testing::internal::GetCapturedStdout();
}

std::string Stretches(const std::string& fasta, const std::string& maximum) {
  return Output(&MSSeq::CountSubstringAtcg, fasta, {{"--max_nnn_substring", maximum}});
}

TEST(RecordRuns, RunsStretchesAndStatLines) {
  struct Case {
    bool (MSSeq::*handler)(Param&);
    std::string fasta;
    std::string maximum;  // --max_nnn_substring, if given
    std::string out;
  };
  const auto runs = &MSSeq::CountSubstringN, stretches = &MSSeq::CountSubstringAtcg;
  const Case cases[] = {
      // Line ends, digits, blanks and other non-letters are dropped by the reader: they neither
      // break a run of N nor take a position. Every non-base letter is an N, n included.
      {runs, ">a\nACNN\nNGTN\n", "", ">a< 3 1\n"},
      {runs, ">a\nN\r\n1 n-*.R\r\nyX\r\n\xc3\xa9N\r\nA", "", ">a< 6\n"},
      {runs, ">a\nACGTU acgtu\n>b\n\n>c\nN", "", ">a<\n>b<\n>c< 1\n"},
      // A header mark ends the run: the rest of the line is the next record's label.
      {runs, "NN>N\nNA\nNN\n", "", "< 2\n>N< 1 2\n"},
      {stretches, ">a\nA C\nG1\nNN NN\nT\n", "3", "1\t3\t3\t>a\n8\t8\t1\t>a\n"},
      // A run as long as the limit belongs to its stretch; no run at all gives the whole record.
      {stretches, ">z\nAANNNCC\n", "3", "1\t7\t7\t>z\n"},
      {stretches, ">z\nacgtACGT\n", "0", "1\t8\t8\t>z\n"},
      // Leading and trailing separating runs give no empty stretch, nor do neighbouring ones.
      {stretches, ">e\nNNNACNNNNGTNN\n", "1", "4\t5\t2\t>e\n10\t11\t2\t>e\n"},
      {stretches, ">e\nNNN\n>f\n\n>g\nNANN\n", "0", "2\t2\t1\t>g\n"},
      // A negative limit lets every N separate.
      {stretches, ">d\nANANNA\n", "-5", "1\t1\t1\t>d\n3\t3\t1\t>d\n6\t6\t1\t>d\n"},
      {stretches, "ANA\n", "2147483647", "1\t3\t3\t\n"},
      {&MSSeq::StatFasta, ">g\n" + std::string(10001, 'G') + "\n", "",
       ">g\t10001\t100\t0\t0\t100\t0\t0\t0\t0\t10001\t0\t0\n"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.fasta.substr(0, 40));
    EXPECT_EQ(c.maximum.empty() ? Output(c.handler, c.fasta) : Stretches(c.fasta, c.maximum),
              c.out);
  }
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

// The N runs [first, first + length) of a sequence as the reader builds it.
std::vector<std::pair<std::size_t, std::size_t>> NRuns(const std::string& sequence) {
  std::vector<std::pair<std::size_t, std::size_t>> runs;
  for (std::size_t i = 0; i < sequence.size(); ++i) {
    if (sequence[i] != 'N') continue;
    if (i == 0 || sequence[i - 1] != 'N') runs.emplace_back(i, 0);
    ++runs.back().second;
  }
  return runs;
}

TEST(RecordRuns, StreamingAgreesWithTheRecords) {
  for (unsigned seed = 1; seed <= 40; ++seed) {
    const std::string fasta = RandomFasta(seed);
    test::ScratchDir dir;
    std::vector<SeqRecord> records;
    ASSERT_TRUE(ReadFastaRecords(dir.Write("in.fa", fasta), CasePreservingLetterTable(), records));
    std::string runs, stretches, stats;
    for (const SeqRecord& record : records) {
      const std::string& seq = record.sequence;
      runs += record.label + "<";
      std::size_t start = 0;
      for (const auto& [first, length] : NRuns(seq)) {
        runs.append(" ").append(std::to_string(length));
        if (length <= 5) continue;
        if (first > start) {
          stretches += std::to_string(start + 1) + "\t" + std::to_string(first) + "\t" +
                       std::to_string(first - start) + "\t" + record.label + "\n";
        }
        start = first + length;
      }
      runs += "\n";
      if (seq.size() > start) {
        stretches += std::to_string(start + 1) + "\t" + std::to_string(seq.size()) + "\t" +
                     std::to_string(seq.size() - start) + "\t" + record.label + "\n";
      }
      const auto count = [&seq](char upper) {
        return std::count(seq.begin(), seq.end(), upper) +
               std::count(seq.begin(), seq.end(), static_cast<char>(upper + 32));
      };
      const std::size_t n = seq.size(), nCount = std::count(seq.begin(), seq.end(), 'N');
      stats += record.label + "\t" + std::to_string(n) + "\t";
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

TEST(CleanCoding, StopsInFrameMarginsAndShortRecords) {
  struct Case {
    std::string fasta;
    Settings extra;
    std::string out;   // standard output, the input's path shown as "in.fa"
    std::string kept;  // the output file
  };
  const std::string three = ">taa\nAAATAACCC\n>tga\nAAATGACCC\n>tag\nAAATAGCCC\n";
  const std::string four = ">a\nATGAAATAA\n>b\nATGCCCGGGTAA\n>c\nATGTAA\n>d\n\n";
  const Settings all{{"--TAA_", "1"}, {"--TGA_", "1"}, {"--TAG_", "1"}};
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
      // Lower case is not recognised; U reads as T; stops out of frame or across codons do not
      // count; the last, partial codon of the region ("TA" here) is no codon; codons are counted
      // from the left margin.
      {">l\nATGtaaTGa\n", all, good1, ">l\nATGtaaTGa\n"},
      {">u\nATGUAGCCC\n", all, "error in record >u\nin.fa records 1 good 0 bad 1 short 0\n", ""},
      {">o\nATAAGTAGA\n", all, good1, ">o\nATAAGTAGA\n"},
      {">p\nCCCCCCCTA\n", {{"--TAG_", "1"}, {"--MKCHAIN_L_MARGING", "1"}}, good1, ">p\nCCCCCCTA\n"},
      {">p\nCTAGCCCCC\n",
       {{"--TAG_", "1"}, {"--MKCHAIN_L_MARGING", "1"}, {"--MKCHAIN_R_MARGING", "2"}},
       "error in record >p\nin.fa records 1 good 0 bad 1 short 0\n",
       ""},
      // >c has no inner region: bad. >d is empty and its margins cross it: good, and short.
      {four,
       {{"--MKCHAIN_L_MARGING", "3"}, {"--MKCHAIN_R_MARGING", "3"}},
       "error in record >c\nin.fa records 4 good 3 bad 1 short 1\n",
       ">a\nAAA\n>b\nCCCGGG\n"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.fasta);
    test::ScratchDir dir;
    Param param;
    const std::string input = dir.Write("in.fa", c.fasta);
    const std::string output = dir.Path("out.txt");
    for (const auto& [key, value] : Settings{{"--seq", input},
                                             {"--CLEAN_CODING", output},
                                             {"--PRINT_LABEL", "1"},
                                             {"--MKCHAIN_L_MARGING", "0"},
                                             {"--MKCHAIN_R_MARGING", "0"},
                                             {"--MIN_COD", "0"}}) {
      param.Set(key, value);
    }
    for (const auto& [key, value] : c.extra) param.Set(key, value);
    MSSeq seq;
    testing::internal::CaptureStdout();
    EXPECT_TRUE(seq.CleanCoding(param));
    std::string out = testing::internal::GetCapturedStdout();
    const std::size_t at = out.rfind(input);
    if (at != std::string::npos) out.replace(at, input.size(), "in.fa");
    EXPECT_EQ(out, c.out);
    EXPECT_EQ(test::ReadFile(output), c.kept);
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

TEST(CleanFasta, RenamesAndIndexes) {
  test::ScratchDir dir;
  Param param;
  param.Set("--clean_fasta", dir.Write("in.fa", "lead\n>one\r\nAc\nGt\n>two x\n>three\nNNn"));
  param.Set("--clean_fasta_index", dir.Path("index.txt"));
  param.Set("--clean_fasta_out", dir.Path("out.fa"));
  param.Set("--clean_fasta_label", "s");
  MSSeq seq;
  EXPECT_TRUE(seq.CleanFasta(param));
  EXPECT_EQ(test::ReadFile(dir.Path("out.fa")),
            ">s.0\nNNaN\n\n>s.1\nAcGt\n\n>s.2\n\n\n>s.3\nNNN\n\n");
  EXPECT_EQ(test::ReadFile(dir.Path("index.txt")),
            ">s.0\t\n>s.1\t>one\r\n>s.2\t>two x\n>s.3\t>three\n");
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
