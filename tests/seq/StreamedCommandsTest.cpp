// The commands that read their FASTA input block by block and write as they go (--clean_join,
// --clean, --mask, --split, --clean_fasta), checked against plain computations on the whole
// text, for block sizes down to one byte. Every third input or so comes through a named pipe,
// which a command that reads twice keeps in a spool.
#include <optional>

#include "seq/StreamedSupport.h"

namespace genetrain {
namespace {

using namespace streamed;

// ---- The differential tests ----

// Both paths of --clean_join: the text and report on standard output (two readings), and a file
// replaced whole with the report in a log (one reading).
TEST(StreamedCommands, CleanJoinEqualsThePlainJoin) {
  std::mt19937 random(18);
  for (int round = 0; round < 150; ++round) {
    const std::string fasta = RandomFasta(random, random() % 12);
    const std::uint32_t minContig = random() % 4 == 0 ? 0 : random() % 30;
    const std::string filler = std::string("NN-ACx").substr(0, random() % 7);
    const std::int32_t maxN = static_cast<std::int32_t>(random() % 12) - 2;
    const std::size_t blockSize = RandomBlock(random);
    const PlainJoin join = Join(PlainRecords(fasta, false), filler, minContig);
    const std::string text = maxN >= 0 ? TrimRuns(join.text, maxN) : join.text;
    const std::string report = PlainReport(join, text.size(), minContig, maxN, filler);

    test::ScratchDir dir;
    const bool piped = round % 3 == 0;
    std::optional<Input> input(std::in_place, dir, "in.fa", fasta, piped);
    const test::Pairs options = {{"--seq", input->Path()},
                                 {"--MIN_CONTIG_SIZE", std::to_string(minContig)},
                                 {"--GAP_FILLER", filler},
                                 {"--MAX_N_SUBSTRING", std::to_string(maxN)},
                                 {"--log", ""},
                                 {"--clean_join", ""}};
    const test::Outcome streamed = RunBlocks(&SSeq::CleanJoin, blockSize, options);
    ASSERT_TRUE(streamed.ok) << fasta;
    ASSERT_EQ(streamed.out, report + text + "\n") << "block " << blockSize << "\n" << fasta;

    input.reset();
    input.emplace(dir, "in.fa", fasta, piped);
    const test::Outcome toFile = RunBlocks(&SSeq::CleanJoin, blockSize,
                                           {{"--seq", input->Path()},
                                            {"--MIN_CONTIG_SIZE", std::to_string(minContig)},
                                            {"--GAP_FILLER", filler},
                                            {"--MAX_N_SUBSTRING", std::to_string(maxN)},
                                            {"--log", dir.Path("log")},
                                            {"--clean_join", dir.Path("out")}});
    ASSERT_TRUE(toFile.ok);
    EXPECT_EQ(test::ReadFile(dir.Path("out")), text);
    EXPECT_EQ(test::ReadFile(dir.Path("log")), report);
  }
}

TEST(StreamedCommands, CleanEqualsThePlainJoinAndMask) {
  std::mt19937 random(1818);
  for (int round = 0; round < 150; ++round) {
    const std::string fasta = RandomFasta(random, random() % 12);
    const std::uint32_t minContig = random() % 20;
    const std::string filler = std::string("TTNNA").substr(0, random() % 6);
    const bool replace = random() % 2 == 0;
    const std::string left = std::string("AC").substr(0, random() % 3);
    const std::string right = std::string("GGT").substr(0, random() % 4);
    const std::int32_t minSeq = static_cast<std::int32_t>(random() % 200);
    const std::size_t blockSize = RandomBlock(random);

    PlainJoin join = Join(PlainRecords(fasta, false), filler, minContig);
    std::string clean = join.text;
    auto ranges = join.fillers;
    if (replace) {
      for (std::size_t pos = 0; pos < clean.size();) {
        std::size_t end = pos;
        while (end < clean.size() && clean[end] == 'N') ++end;
        if (end - pos >= left.size() + right.size() && end > pos) {
          clean.replace(pos, left.size(), left);
          clean.replace(end - right.size(), right.size(), right);
          ranges.push_back({pos, end});
        }
        pos = end == pos ? pos + 1 : end;
      }
    }
    std::string masked = clean;
    for (const auto& [begin, end] : ranges) masked.replace(begin, end - begin, end - begin, 'N');
    const bool enough = static_cast<std::int64_t>(join.kept.Acgt()) >= minSeq;

    // A device among the outputs makes a first reading that only counts.
    test::ScratchDir dir;
    const Input input(dir, "in.fa", fasta, round % 3 == 0);
    const bool toDevice = round % 2 == 0;
    const test::Outcome run =
        RunBlocks(&SSeq::Clean, blockSize,
                  {{"--seq", input.Path()},
                   {"--out_clean", dir.Path("clean")},
                   {"--out_masked", toDevice ? "/dev/null" : dir.Path("masked")},
                   {"--MIN_CONTIG_SIZE", std::to_string(minContig)},
                   {"--GAP_FILLER", filler},
                   {"--MIN_SEQ_SIZE", std::to_string(minSeq)},
                   {"--REPLACE_N_STRING", replace ? "1" : "0"},
                   {"--LEFT_GAP_FILLER", left},
                   {"--RIGHT_GAP_FILLER", right}});
    ASSERT_EQ(run.ok, enough) << run.err;
    EXPECT_EQ(run.err, enough ? ""
                              : "error: number of unambiguous letters in output sequence " +
                                    std::to_string(join.kept.Acgt()) + " less than allowed " +
                                    std::to_string(minSeq) + "\n");
    ASSERT_EQ(test::ReadFile(dir.Path("clean")), clean) << "block " << blockSize << "\n" << fasta;
    if (!toDevice) {
      ASSERT_EQ(test::ReadFile(dir.Path("masked")), masked) << "block " << blockSize;
    }
  }
}

// One record, intervals inside it in any order and overlap; now and then a second record or an
// interval past the end, which fail with nothing written.
TEST(StreamedCommands, MaskEqualsThePlainMask) {
  std::mt19937 random(181818);
  for (int round = 0; round < 150; ++round) {
    const bool twoRecords = random() % 10 == 0;
    std::string fasta = RandomFasta(random, twoRecords ? 2 : 1);
    const std::vector<PlainRecord> records = PlainRecords(fasta, false);
    const std::size_t blockSize = RandomBlock(random);
    std::string letters = records[0].letters;
    const std::size_t length = letters.size();
    std::string intervals;
    bool beyond = false;
    for (int i = 0, count = static_cast<int>(random() % 5); i < count && length > 0; ++i) {
      const std::size_t first = 1 + random() % length;
      std::size_t last = first + random() % 20;
      if (last > length) last = length;
      if (random() % 15 == 0) last = length + 1, beyond = true;
      intervals += std::to_string(first) + " " + std::to_string(last) + "\n";
      for (std::size_t p = first; p <= std::min(last, length); ++p) letters[p - 1] = 'N';
    }
    const bool ok = records.size() == 1 && !beyond;

    // Standard output is written only on a second reading, after the checks.
    test::ScratchDir dir;
    const Input input(dir, "in.fa", fasta, round % 3 == 0);
    const bool toStdout = round % 2 == 0;
    const test::Outcome run = RunBlocks(&SSeq::Mask, blockSize,
                                        {{"--seq", input.Path()},
                                         {"--mask", dir.Write("m.txt", intervals)},
                                         {"--out", toStdout ? "/dev/stdout" : dir.Path("out")}});
    ASSERT_EQ(run.ok, ok) << fasta << intervals;
    EXPECT_EQ(run.err, "");
    const std::string expected = records[0].label + "\n" + letters + "\n";
    if (toStdout) {
      ASSERT_EQ(run.out, ok ? expected : "") << "block " << blockSize << "\n" << fasta << intervals;
    } else if (ok) {
      ASSERT_EQ(test::ReadFile(dir.Path("out")), expected) << "block " << blockSize << "\n"
                                                           << fasta << intervals;
    } else {
      EXPECT_FALSE(std::filesystem::exists(dir.Path("out")));
      EXPECT_EQ(dir.Entries(), 2);  // no temporary file left
    }
  }
}

TEST(StreamedCommands, SplitEqualsThePlainSplit) {
  std::mt19937 random(18181818);
  for (int round = 0; round < 120; ++round) {
    const std::string fasta = RandomFasta(random, 1 + random() % 6);
    const bool soft = random() % 2 == 0;
    const std::int64_t size = random() % 3 == 0 ? 0 : 1 + random() % 80;
    const std::int64_t minimum = static_cast<std::int64_t>(random() % 30) - 3;
    const std::size_t width = random() % 3 == 0 ? 0 : 1 + random() % 20;
    const bool noLabel = random() % 2 == 0;
    const std::size_t blockSize = RandomBlock(random);

    test::ScratchDir dir;
    const Input input(dir, "in.fa", fasta, round % 3 == 0);
    const std::string base = dir.Path("part");
    std::map<std::string, std::string> expected;
    std::int64_t k = 0;
    for (const PlainRecord& record : PlainRecords(fasta, soft)) {
      const auto n = static_cast<std::int64_t>(record.letters.size());
      if (size == 0) {
        ++k;
        if (record.letters.size() < static_cast<std::size_t>(minimum)) continue;
        expected["part_" + std::to_string(k)] =
            record.label + "\n" + PlainLines(record.letters, width, soft);
        continue;
      }
      for (std::int64_t p = 0; p < n;) {
        ++k;
        const std::int64_t e = p + size + minimum >= n ? n : std::min(p + size, n);
        if (e - p > minimum) {
          const std::string name = "part_" + std::to_string(k);
          const std::string label = noLabel
                                        ? ">" + base + "_" + std::to_string(k)
                                        : record.label + " SUBSTRING POS_L " +
                                              std::to_string(p + 1) + " POS_R " + std::to_string(e);
          expected[name] = label + "\n" + PlainLines(record.letters.substr(p, e - p), width, soft);
        }
        p = e;
      }
    }
    const test::Outcome run = RunBlocks(&SSeq::Split, blockSize,
                                        {{"--split", base},
                                         {"--seq", input.Path()},
                                         {"--SPLIT_SIZE", std::to_string(size)},
                                         {"--MIN_SPLIT_SIZE", std::to_string(minimum)},
                                         {"--letters_per_line", std::to_string(width)},
                                         {"--NO_LABEL", noLabel ? "1" : "0"},
                                         {"--soft", soft ? "1" : "0"}});
    ASSERT_TRUE(run.ok) << run.err;
    ASSERT_EQ(FilesOf(dir, "part_"), expected) << "block " << blockSize << "\n" << fasta;
  }
}

TEST(StreamedCommands, SplitAtNRunsGivesTheSameFilesForEveryBlockSize) {
  std::mt19937 random(81);
  for (int round = 0; round < 60; ++round) {
    const std::string fasta = RandomFasta(random, 1 + random() % 6);
    const std::string maxRun = std::to_string(random() % 10);
    const std::string margin = std::to_string(random() % 4);
    std::map<std::string, std::string> first;
    for (const std::size_t blockSize : {kFastaBlockSize, RandomBlock(random), std::size_t{1}}) {
      test::ScratchDir dir;
      const test::Outcome run = RunBlocks(&SSeq::Split, blockSize,
                                          {{"--split", dir.Path("p")},
                                           {"--seq", dir.Write("in.fa", fasta)},
                                           {"--max_nnn_substring", maxRun},
                                           {"--nnn_margin", margin},
                                           {"--SPLIT_SIZE", "40"}});
      ASSERT_TRUE(run.ok);
      const std::map<std::string, std::string> files = FilesOf(dir, "p_");
      if (blockSize == kFastaBlockSize) first = files;
      ASSERT_EQ(files, first) << "block " << blockSize << "\n" << fasta;
    }
  }
}

TEST(StreamedCommands, CleanFastaEqualsThePlainRenaming) {
  std::mt19937 random(8);
  for (int round = 0; round < 100; ++round) {
    const std::string fasta = RandomFasta(random, random() % 8);
    const std::size_t blockSize = RandomBlock(random);
    std::string out, index;
    std::size_t i = 0;
    for (const PlainRecord& record : PlainRecords(fasta, true)) {
      const std::string name = ">L." + std::to_string(i++);
      out += name + "\n" + record.letters + "\n\n";
      index += name + "\t" + record.label + "\n";
    }
    test::ScratchDir dir;
    const Input input(dir, "in.fa", fasta, round % 3 == 0);
    const test::Outcome run = RunBlocks(&MSSeq::CleanFasta, blockSize,
                                        {{"--clean_fasta", input.Path()},
                                         {"--clean_fasta_index", dir.Path("index")},
                                         {"--clean_fasta_out", dir.Path("out")},
                                         {"--clean_fasta_label", "L"}});
    ASSERT_TRUE(run.ok);
    ASSERT_EQ(test::ReadFile(dir.Path("out")), out) << "block " << blockSize << "\n" << fasta;
    ASSERT_EQ(test::ReadFile(dir.Path("index")), index);
  }
}

}  // namespace
}  // namespace genetrain
