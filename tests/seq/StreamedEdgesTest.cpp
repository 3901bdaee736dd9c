// The streamed commands at block boundaries, on inputs that fail on the way, and with the
// output in place of the input.
#include "seq/StreamedSupport.h"

namespace genetrain {
namespace {

using namespace streamed;

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
