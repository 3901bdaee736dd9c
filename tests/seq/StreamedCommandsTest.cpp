// The commands that read their FASTA input block by block and write as they go (--clean_join,
// --clean, --mask, --split, --clean_fasta), checked against plain computations on the whole
// text, for block sizes down to one byte.
#include <filesystem>
#include <map>

#include "TestSupport.h"
#include "seq/FastaBlocks.h"
#include "seq/MSSeq.h"
#include "seq/SSeq.h"

namespace genetrain {
namespace {

template <typename Object>
test::Outcome RunBlocks(bool (Object::*handler)(Param&, std::size_t), std::size_t blockSize,
                        test::Pairs pairs) {
  Param param;
  for (const auto& [key, value] : pairs) param.Set(key, value);
  Object object;
  return test::Capture([&] { return (object.*handler)(param, blockSize); });
}

// ---- The plain computations, on the whole text ----

struct PlainRecord {
  std::string label, letters;
};

bool Space(char byte) {
  return byte == ' ' || (byte >= '\t' && byte <= '\r');
}

char PlainLetter(char byte, bool keepCase) {
  if (!((byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z'))) return 0;
  const bool lower = byte >= 'a';
  char upper = static_cast<char>(lower ? byte - 32 : byte);
  if (upper == 'U') upper = 'T';
  if (std::string_view("ACGT").find(upper) == std::string_view::npos) return 'N';
  return keepCase && lower ? static_cast<char>(upper + 32) : upper;
}

// White space before a record is skipped; a ">" line is its label; the body runs to the next
// ">" wherever it stands.
std::vector<PlainRecord> PlainRecords(std::string_view text, bool keepCase) {
  std::vector<PlainRecord> records;
  std::size_t pos = 0;
  while (pos < text.size()) {
    while (pos < text.size() && Space(text[pos])) ++pos;
    PlainRecord record;
    std::size_t body = pos;
    if (pos < text.size() && text[pos] == '>') {
      body = std::min(text.find('\n', pos), text.size());
      record.label = std::string(text.substr(pos, body - pos));
    }
    const std::size_t end = std::min(text.find('>', body), text.size());
    for (std::size_t i = body; i < end; ++i) {
      if (const char letter = PlainLetter(text[i], keepCase)) record.letters.push_back(letter);
    }
    records.push_back(record);
    pos = end;
  }
  return records;
}

struct PlainTally {
  std::uint64_t a = 0, c = 0, g = 0, t = 0, n = 0;
  std::uint64_t Acgt() const { return a + c + g + t; }
  void Add(std::string_view letters) {
    for (const char letter : letters) {
      a += letter == 'A';
      c += letter == 'C';
      g += letter == 'G';
      t += letter == 'T';
      n += letter == 'N';
    }
  }
  void Add(const PlainTally& other) {
    a += other.a, c += other.c, g += other.g, t += other.t, n += other.n;
  }
};

struct PlainJoin {
  std::string text;
  std::vector<std::pair<std::size_t, std::size_t>> fillers;  // [begin, end)
  PlainTally all, kept;
  std::size_t records = 0, keptRecords = 0;
};

PlainJoin Join(const std::vector<PlainRecord>& records, const std::string& filler,
               std::int64_t minimum) {
  PlainJoin join;
  for (const PlainRecord& record : records) {
    PlainTally own;
    own.Add(record.letters);
    join.all.Add(own);
    ++join.records;
    if (static_cast<std::int64_t>(own.Acgt()) < minimum) continue;
    if (!join.text.empty()) {
      join.fillers.push_back({join.text.size(), join.text.size() + filler.size()});
      join.text += filler;
    }
    join.text += record.letters;
    join.kept.Add(own);
    ++join.keptRecords;
  }
  return join;
}

std::string TrimRuns(const std::string& text, std::size_t maximum) {
  std::string out;
  std::size_t run = 0;
  for (const char letter : text) {
    run = letter == 'N' ? run + 1 : 0;
    if (run <= maximum) out.push_back(letter);
  }
  return out;
}

std::string Pair(std::string_view caption, std::uint64_t all, std::uint64_t kept) {
  return std::string(caption) + std::to_string(all) + " " + std::to_string(kept) + "\n";
}

std::string PlainReport(const PlainJoin& join, std::size_t outLength, std::uint32_t minContig,
                        std::int32_t maxN, const std::string& filler) {
  const PlainTally& all = join.all;
  const PlainTally& kept = join.kept;
  return "Clean-Join      IN   OUT\n" + Pair("Contigs - ", join.records, join.keptRecords) +
         "All letters - " + std::to_string(all.Acgt() + all.n) + "   " + std::to_string(outLength) +
         "\n" + Pair("Unambiguous letters - ", all.Acgt(), kept.Acgt()) +
         Pair("A - ", all.a, kept.a) + Pair("C - ", all.c, kept.c) + Pair("G - ", all.g, kept.g) +
         Pair("T - ", all.t, kept.t) + Pair("N - ", all.n, kept.n) + "Parameters:\n" +
         "  Minimum of unambiguous letters per record: " + std::to_string(minContig) + "\n" +
         "  Trim down substrings \"N...N\" to maximum length: " + std::to_string(maxN) + "\n" +
         "  Connect records using gap filler: " + filler + "\n" +
         "  Minimum of unambiguous letters in output: 1\n";
}

// ---- Random inputs ----

// FASTA text with what the reader must cope with: text before the first header, empty records,
// carriage returns, digits and blanks in sequence lines, soft-masked and ambiguous letters, a
// ">" inside a line, and runs of N of every length.
std::string RandomFasta(std::mt19937& random, std::size_t records) {
  const auto pick = [&](int below) { return static_cast<int>(random() % below); };
  std::string text;
  if (pick(4) == 0) text += "  \n";
  if (pick(4) == 0) text += "ACNNG\n";
  for (std::size_t r = 0; r < records; ++r) {
    text += ">r" + std::to_string(r);
    if (pick(3) == 0) text += " some words";
    text += pick(5) == 0 ? "\r\n" : "\n";
    const int length = pick(6) == 0 ? 0 : pick(300);
    for (int i = 0, column = 0; i < length; ++i) {
      const int kind = pick(40);
      if (kind < 4) {
        text.append(static_cast<std::size_t>(1 + pick(kind == 0 ? 60 : 8)), 'N');
      } else if (kind < 6) {
        text += "acgtun"[pick(6)];
      } else if (kind == 6) {
        text += "RYX 7-*"[pick(7)];
      } else {
        text += "ACGT"[pick(4)];
      }
      if (++column == 13) {
        text += pick(4) == 0 ? "\r\n" : "\n";
        column = 0;
      }
    }
    if (pick(30) == 0) text += ">inline";
    text += "\n";
  }
  return text;
}

constexpr std::size_t kBlockSizes[] = {1, 2, 3, 7, 16, 61, 500, kFastaBlockSize};

std::size_t RandomBlock(std::mt19937& random) {
  return kBlockSizes[random() % std::size(kBlockSizes)];
}

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
    const std::string input = dir.Write("in.fa", fasta);
    const test::Pairs options = {{"--seq", input},
                                 {"--MIN_CONTIG_SIZE", std::to_string(minContig)},
                                 {"--GAP_FILLER", filler},
                                 {"--MAX_N_SUBSTRING", std::to_string(maxN)},
                                 {"--log", ""},
                                 {"--clean_join", ""}};
    const test::Outcome streamed = RunBlocks(&SSeq::CleanJoin, blockSize, options);
    ASSERT_TRUE(streamed.ok) << fasta;
    ASSERT_EQ(streamed.out, report + text + "\n") << "block " << blockSize << "\n" << fasta;

    const test::Outcome toFile = RunBlocks(&SSeq::CleanJoin, blockSize,
                                           {{"--seq", input},
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

    test::ScratchDir dir;
    const test::Outcome run = RunBlocks(&SSeq::Clean, blockSize,
                                        {{"--seq", dir.Write("in.fa", fasta)},
                                         {"--out_clean", dir.Path("clean")},
                                         {"--out_masked", dir.Path("masked")},
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
    ASSERT_EQ(test::ReadFile(dir.Path("masked")), masked) << "block " << blockSize;
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

    test::ScratchDir dir;
    const test::Outcome run = RunBlocks(&SSeq::Mask, blockSize,
                                        {{"--seq", dir.Write("in.fa", fasta)},
                                         {"--mask", dir.Write("m.txt", intervals)},
                                         {"--out", dir.Path("out")}});
    ASSERT_EQ(run.ok, ok) << fasta << intervals;
    EXPECT_EQ(run.err, "");
    if (ok) {
      ASSERT_EQ(test::ReadFile(dir.Path("out")), records[0].label + "\n" + letters + "\n")
          << "block " << blockSize << "\n"
          << fasta << intervals;
    } else {
      EXPECT_FALSE(std::filesystem::exists(dir.Path("out")));
      EXPECT_EQ(dir.Entries(), 2);  // no temporary file left
    }
  }
}

std::map<std::string, std::string> FilesOf(const test::ScratchDir& dir, std::string_view prefix) {
  std::map<std::string, std::string> files;
  for (const auto& entry : std::filesystem::directory_iterator(dir.Path(""))) {
    const std::string name = entry.path().filename().string();
    if (name.starts_with(prefix)) files[name] = test::ReadFile(entry.path().string());
  }
  return files;
}

std::string PlainLines(std::string letters, std::size_t width, bool soft) {
  if (soft) {
    std::size_t run = 0;
    for (char& letter : letters) {
      if (std::string_view("acgt").find(letter) == std::string_view::npos) {
        run = 0;
        continue;
      }
      letter = ++run <= 1000 ? 'N' : ' ';
    }
  }
  std::string out;
  if (width == 0) width = letters.size();
  for (std::size_t pos = 0; pos < letters.size(); pos += width) {
    out += letters.substr(pos, width) + "\n";
  }
  return out;
}

// Whole records and fixed-size pieces, with and without soft-masked letters. Cutting at runs of
// N (the pieces' own tests cover it) is compared between the block sizes instead.
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
                                         {"--seq", dir.Write("in.fa", fasta)},
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
    const test::Outcome run = RunBlocks(&MSSeq::CleanFasta, blockSize,
                                        {{"--clean_fasta", dir.Write("in.fa", fasta)},
                                         {"--clean_fasta_index", dir.Path("index")},
                                         {"--clean_fasta_out", dir.Path("out")},
                                         {"--clean_fasta_label", "L"}});
    ASSERT_TRUE(run.ok);
    ASSERT_EQ(test::ReadFile(dir.Path("out")), out) << "block " << blockSize << "\n" << fasta;
    ASSERT_EQ(test::ReadFile(dir.Path("index")), index);
  }
}

// ---- Block boundaries, by hand ----

// Records, labels and a run of N that straddle the block boundaries, and a record longer than a
// block, for every block size from one byte to past the whole file.
TEST(StreamedCommands, EveryBlockSizeGivesTheSameResult) {
  const std::string fasta =
      ">first record\nACGTNNN\nNNNNNNNNGT\n>second\nNNNNNNNNNN\n>third\n"
      "GGGGGGGGGGCCCCCCCCCCAAAAAAAAAATTTTTTTTTTNNNNNNNNNNNNNNNNNNNNACGT\n";
  for (std::size_t blockSize = 1; blockSize <= fasta.size() + 1; ++blockSize) {
    test::ScratchDir dir;
    const std::string input = dir.Write("in.fa", fasta);
    const test::Outcome join = RunBlocks(&SSeq::CleanJoin, blockSize,
                                         {{"--clean_join", ""},
                                          {"--seq", input},
                                          {"--GAP_FILLER", "NN"},
                                          {"--MIN_CONTIG_SIZE", "4"},
                                          {"--MAX_N_SUBSTRING", "5"}});
    // The second record has no unambiguous letter and goes; the run of 11 N of the first
    // (across the line end) and the 20 of the third shrink to 5, the filler joining the first's
    // GT to the third record.
    EXPECT_EQ(join.out, "ACGTNNNNNGTNNGGGGGGGGGGCCCCCCCCCCAAAAAAAAAATTTTTTTTTTNNNNNACGT\n")
        << blockSize;

    const test::Outcome clean = RunBlocks(&SSeq::Clean, blockSize,
                                          {{"--seq", input},
                                           {"--out_clean", dir.Path("c")},
                                           {"--out_masked", dir.Path("m")},
                                           {"--GAP_FILLER", "TT"},
                                           {"--REPLACE_N_STRING", "1"},
                                           {"--LEFT_GAP_FILLER", "A"},
                                           {"--RIGHT_GAP_FILLER", "C"}});
    EXPECT_TRUE(clean.ok);
    EXPECT_EQ(test::ReadFile(dir.Path("c")),
              "ACGTANNNNNNNNNCGTTTGGGGGGGGGGCCCCCCCCCCAAAAAAAAAATTTTTTTTTTA" +
                  std::string(18, 'N') + "CACGT")
        << blockSize;
    EXPECT_EQ(test::ReadFile(dir.Path("m")), "ACGT" + std::string(11, 'N') +
                                                 "GTNNGGGGGGGGGGCCCCCCCCCCAAAAAAAAAATTTTTTTTTT" +
                                                 std::string(20, 'N') + "ACGT")
        << blockSize;

    const test::Outcome split = RunBlocks(&SSeq::Split, blockSize,
                                          {{"--split", dir.Path("p")},
                                           {"--seq", input},
                                           {"--SPLIT_SIZE", "30"},
                                           {"--max_nnn_substring", "10"},
                                           {"--nnn_margin", "1"}});
    EXPECT_TRUE(split.ok);
    EXPECT_EQ(
        FilesOf(dir, "p_"),
        (std::map<std::string, std::string>{
            {"p_1", ">first record ; 0 SUBSTRING POS_L 1 POS_R 5\nACGTN\n"},
            {"p_2", ">first record ; 14 SUBSTRING POS_L 1 POS_R 3\nNGT\n"},
            {"p_3", ">third ; 0 SUBSTRING POS_L 1 POS_R 30\n" + std::string(10, 'G') +
                        std::string(10, 'C') + std::string(10, 'A') + "\n"},
            {"p_4", ">third ; 0 SUBSTRING POS_L 31 POS_R 41\n" + std::string(10, 'T') + "N\n"},
            {"p_5", ">third ; 59 SUBSTRING POS_L 1 POS_R 5\nNACGT\n"}}))
        << blockSize;
  }
}

// ---- Inputs that fail on the way ----

// Compressed input cut short far beyond the first block: what the commands write as they read
// is a temporary file or nothing, so a stream gets no text and --split writes no piece.
TEST(StreamedCommands, TruncatedCompressedInputWritesNothing) {
  std::string fasta;
  for (int i = 0; i < 300; ++i) fasta += ">r" + std::to_string(i) + "\nACGTTGCANNACGT\n";
  std::string packed = test::Gzip(fasta);
  packed.resize(packed.size() * 3 / 4);
  const std::string oneRecord = test::Gzip(">one\n" + std::string(5000, 'A') + "\n");
  for (const std::size_t blockSize : {std::size_t{64}, std::size_t{1000}}) {
    test::ScratchDir dir;
    const std::string input = dir.Write("in.fa.gz", packed);
    const test::Outcome split =
        RunBlocks(&SSeq::Split, blockSize, {{"--split", dir.Path("p")}, {"--seq", input}});
    EXPECT_FALSE(split.ok);
    EXPECT_NE(split.err.find("truncated gzip data"), std::string::npos) << split.err;
    EXPECT_TRUE(FilesOf(dir, "p_").empty()) << blockSize;

    const test::Outcome join = RunBlocks(&SSeq::CleanJoin, blockSize,
                                         {{"--clean_join", ""}, {"--seq", input}, {"--log", ""}});
    EXPECT_FALSE(join.ok);
    EXPECT_EQ(join.out, "");

    const test::Outcome clean = RunBlocks(
        &SSeq::Clean, blockSize,
        {{"--seq", input}, {"--out_clean", dir.Path("c")}, {"--out_masked", dir.Path("m")}});
    EXPECT_FALSE(clean.ok);

    const std::string cut = dir.Write("one.fa.gz", oneRecord.substr(0, oneRecord.size() - 4));
    const test::Outcome mask = RunBlocks(
        &SSeq::Mask, blockSize,
        {{"--seq", cut}, {"--mask", dir.Write("m.txt", "1 2\n")}, {"--out", dir.Path("o")}});
    EXPECT_FALSE(mask.ok);
    // Only the inputs: no output and no temporary file is left.
    EXPECT_EQ(dir.Entries(), 3);
  }
}

// ---- Output equal to input ----

// Each command reads its input to the end before its output takes the input's place.
TEST(StreamedCommands, OutputMayBeTheInput) {
  const std::string fasta = ">a\nACGTNNNN\n>b\nNNNN\n>c\nGGGGacgt\n";
  for (const std::size_t blockSize : {std::size_t{3}, kFastaBlockSize}) {
    test::ScratchDir dir;
    const std::string file = dir.Path("x.fa");
    dir.Write("x.fa", fasta);
    EXPECT_TRUE(RunBlocks(&SSeq::CleanJoin, blockSize,
                          {{"--clean_join", file}, {"--seq", file}, {"--GAP_FILLER", "TT"}})
                    .ok);
    EXPECT_EQ(test::ReadFile(file), "ACGTNNNNTTGGGGACGT");

    dir.Write("x.fa", fasta);
    EXPECT_TRUE(RunBlocks(&SSeq::Clean, blockSize,
                          {{"--seq", file},
                           {"--out_clean", file},
                           {"--out_masked", dir.Path("m")},
                           {"--GAP_FILLER", "TT"}})
                    .ok);
    EXPECT_EQ(test::ReadFile(file), "ACGTNNNNTTGGGGACGT");
    EXPECT_EQ(test::ReadFile(dir.Path("m")), "ACGTNNNNNNGGGGACGT");

    dir.Write("x.fa", ">one\nACGTACGTAC\n");
    EXPECT_TRUE(RunBlocks(&SSeq::Mask, blockSize,
                          {{"--seq", file}, {"--mask", dir.Write("iv", "2 3\n")}, {"--out", file}})
                    .ok);
    EXPECT_EQ(test::ReadFile(file), ">one\nANNTACGTAC\n");

    dir.Write("x.fa", fasta);
    EXPECT_TRUE(RunBlocks(&MSSeq::CleanFasta, blockSize,
                          {{"--clean_fasta", file},
                           {"--clean_fasta_index", dir.Path("i")},
                           {"--clean_fasta_out", file},
                           {"--clean_fasta_label", "s"}})
                    .ok);
    EXPECT_EQ(test::ReadFile(file), ">s.0\nACGTNNNN\n\n>s.1\nNNNN\n\n>s.2\nGGGGacgt\n\n");

    // The second record's file is the input itself; the third is still read from it.
    const std::string second = dir.Path("w_2");
    dir.Write("w_2", fasta);
    EXPECT_TRUE(
        RunBlocks(&SSeq::Split, blockSize, {{"--split", dir.Path("w")}, {"--seq", second}}).ok);
    EXPECT_EQ(test::ReadFile(second), ">b\nNNNN\n");
    EXPECT_EQ(test::ReadFile(dir.Path("w_3")), ">c\nGGGGACGT\n");
  }
}

}  // namespace
}  // namespace genetrain
