#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

#include "TestSupport.h"
#include "common/Output.h"
#include "seq/JoinedText.h"
#include "seq/RecordJoiner.h"
#include "seq/SSeq.h"

namespace genetrain {
namespace {

using Ranges = std::vector<std::pair<std::size_t, std::size_t>>;

// Texts of A, C and N runs of every length from 0 to `longest`, so that runs meet the pieces'
// boundaries in every way.
std::string RandomRuns(std::mt19937& random, std::size_t runs, std::size_t longest) {
  std::string text;
  std::uniform_int_distribution<std::size_t> length(0, longest);
  for (std::size_t i = 0; i < runs; ++i) {
    text.append(length(random), 'N');
    text.append(length(random) % 4, "AC"[i % 2]);
  }
  return text;
}

// Hands the text over in pieces of random sizes, empty ones included.
void PutInPieces(JoinedText& out, std::string_view text, std::mt19937& random) {
  std::uniform_int_distribution<std::size_t> size(0, 9);
  while (!text.empty()) {
    const std::size_t part = std::min(size(random), text.size());
    out.Put(text.substr(0, part));
    text.remove_prefix(part);
  }
  out.Finish();
}

// Every run of N cut to `maximum`, letter by letter: the plain version of the trim.
std::string TrimmedPlainly(std::string_view text, std::size_t maximum) {
  std::string out;
  std::size_t run = 0;
  for (const char letter : text) {
    run = letter == 'N' ? run + 1 : 0;
    if (run <= maximum) out.push_back(letter);
  }
  return out;
}

TEST(JoinedText, TrimmingInPiecesGivesWhatTrimmingTheWholeTextGives) {
  std::mt19937 random(7);
  for (int round = 0; round < 200; ++round) {
    const std::string text = RandomRuns(random, 30, 12);
    for (const std::int32_t maximum : {0, 1, 3, 11}) {
      const std::string whole = TrimmedPlainly(text, static_cast<std::size_t>(maximum));
      std::string pieces;
      JoinedText out(pieces);
      out.TrimRuns(static_cast<std::size_t>(maximum));
      PutInPieces(out, text, random);
      ASSERT_EQ(pieces, whole) << text << " " << maximum;
      EXPECT_EQ(out.Size(), whole.size());
    }
  }
}

// Each run of at least |left| + |right| N, found in the text as a whole, flanked and recorded.
std::string FlankedByHand(const std::string& text, const std::string& left,
                          const std::string& right, Ranges& ranges) {
  std::string out = text;
  for (std::size_t start = text.find('N'); start != std::string::npos;) {
    const std::size_t end = std::min(text.find_first_not_of('N', start), text.size());
    if (end - start >= left.size() + right.size()) {
      out.replace(start, left.size(), left);
      out.replace(end - right.size(), right.size(), right);
      ranges.emplace_back(start, end);
    }
    start = text.find('N', end);
  }
  return out;
}

TEST(JoinedText, FlankingInPiecesGivesWhatFlankingTheWholeTextGives) {
  std::mt19937 random(11);
  for (int round = 0; round < 200; ++round) {
    const std::string text = RandomRuns(random, 30, 12);
    for (const auto& [left, right] : std::vector<std::pair<std::string, std::string>>{
             {"AA", "TT"}, {"", "G"}, {"GCG", ""}, {"", ""}, {"NA", "AN"}}) {
      Ranges expectedRanges;
      const std::string expected = FlankedByHand(text, left, right, expectedRanges);
      std::string pieces;
      std::vector<SSeq::Range> ranges;
      JoinedText out(pieces);
      out.FlankRuns(left, right, &ranges);
      PutInPieces(out, text, random);
      ASSERT_EQ(pieces, expected) << text << " " << left << " " << right;
      Ranges got;
      for (const SSeq::Range& range : ranges) got.emplace_back(range.begin, range.end);
      EXPECT_EQ(got, expectedRanges);
    }
  }
}

TEST(JoinedText, StreamGetsTheTextInSlicesCountOnlyJustCounts) {
  // Beyond one slice of 1 MB, with runs of N longer than a slice.
  std::string text;
  for (int i = 0; i < 40; ++i) {
    text.append(100000, "ACGT"[i % 4]);
    text.append(static_cast<std::size_t>(i) * 60000, 'N');
  }
  const std::string expected = TrimmedPlainly(text, 1500000);
  test::ScratchDir dir;
  const std::string name = dir.Path("out.txt");
  OutputFile file;
  ASSERT_TRUE(file.Open(name));
  JoinedText streamed(&file);
  streamed.TrimRuns(1500000);
  streamed.Put(text);
  streamed.Finish();
  ASSERT_TRUE(file.Commit());
  EXPECT_EQ(test::ReadFile(name), expected);
  JoinedText counted;
  counted.TrimRuns(1500000);
  counted.Put(text);
  counted.Finish();
  EXPECT_EQ(counted.Size(), expected.size());
}

TEST(RecordJoiner, FeedsEveryOutputWithItsFillerAndCountsWithoutAny) {
  RecordJoiner joiner("xy", 1);
  std::string clean;
  std::string masked;
  JoinedText cleanText(clean);
  JoinedText maskedText(masked);
  joiner.AddOutput(cleanText);
  joiner.AddOutput(maskedText, true);
  std::vector<SSeq::Range> fillers;
  joiner.RecordFillers(fillers);
  for (const char* raw : {"ac\ngt\n", "nnn\n", "12 g-u\r\n", "RY"}) joiner.Add(raw);
  cleanText.Finish();
  maskedText.Finish();
  EXPECT_EQ(clean, "ACGTxyGT");
  EXPECT_EQ(masked, "ACGTNNGT");
  ASSERT_EQ(fillers.size(), 1u);
  EXPECT_EQ(fillers[0].begin, 4u);
  EXPECT_EQ(fillers[0].end, 6u);
  EXPECT_EQ(joiner.KeptRecords(), 2u);
  EXPECT_EQ(joiner.All().n, 5u);
  EXPECT_EQ(joiner.Kept().t, 2u);

  RecordJoiner counting("xy", 1);
  for (const char* raw : {"ac\ngt\n", "nnn\n", "12 g-u\r\n", "RY"}) counting.Add(raw);
  EXPECT_EQ(counting.Length(), clean.size());
  EXPECT_EQ(counting.KeptRecords(), 2u);
}

// --clean writes both copies in one pass, unless they name the same file: that then holds the
// masked copy, written last, as when the copies are written one after the other.
TEST(Clean, SameFileUnderTwoNamesEndsWithTheMaskedCopy) {
  test::ScratchDir dir;
  const std::string fasta = dir.Write("in.fa", ">a\nACGT\n>b\nGGNNNNCC\n");
  const auto run = [&](const std::string& clean, const std::string& masked) {
    return test::RunCommand(&SSeq::Clean, {{"--seq", fasta},
                                           {"--out_clean", clean},
                                           {"--out_masked", masked},
                                           {"--GAP_FILLER", "TTT"},
                                           {"--REPLACE_N_STRING", "1"},
                                           {"--LEFT_GAP_FILLER", "A"},
                                           {"--RIGHT_GAP_FILLER", "C"}});
  };
  EXPECT_TRUE(run(dir.Path("c.txt"), dir.Path("m.txt")).ok);
  EXPECT_EQ(test::ReadFile(dir.Path("c.txt")), "ACGTTTTGGANNCCC");
  EXPECT_EQ(test::ReadFile(dir.Path("m.txt")), "ACGTNNNGGNNNNCC");
  EXPECT_TRUE(run(dir.Path("same.txt"), dir.Path("same.txt")).ok);
  EXPECT_EQ(test::ReadFile(dir.Path("same.txt")), "ACGTNNNGGNNNNCC");
  EXPECT_TRUE(run(dir.Path("alias.txt"), dir.Path(".") + "/alias.txt").ok);
  EXPECT_EQ(test::ReadFile(dir.Path("alias.txt")), "ACGTNNNGGNNNNCC");
}

TEST(CleanJoin, ReportTellsTheLengthOfTheTrimmedText) {
  test::ScratchDir dir;
  const std::string fasta = dir.Write("in.fa", ">a\nACNNNNNNGT\n>b\nNNNN\n>c\nNNA\n");
  const test::Outcome run = test::RunCommand(&SSeq::CleanJoin, {{"--clean_join", ""},
                                                                {"--seq", fasta},
                                                                {"--GAP_FILLER", "NN"},
                                                                {"--MAX_N_SUBSTRING", "2"},
                                                                {"--log", ""}});
  EXPECT_TRUE(run.ok);
  // The records hold 17 letters, the joined text ACNNNNNNGTNNNNA 15, trimmed 9.
  EXPECT_NE(run.out.find("All letters - 17   9\n"), std::string::npos) << run.out;
  EXPECT_EQ(run.out.substr(run.out.size() - 10), "ACNNGTNNA\n");
}

// A record far longer than one piece of letters, with intervals across the pieces' boundaries.
TEST(Mask, LongRecordIsMaskedAcrossPieces) {
  std::string sequence;
  for (std::size_t i = 0; i < 700000; ++i) sequence.push_back("acgT"[i % 4]);
  std::string fasta = ">long\n";
  for (std::size_t i = 0; i < sequence.size(); i += 61) fasta.append(sequence, i, 61).append("\n");
  std::string expected = sequence;
  for (char& letter : expected) letter = static_cast<char>(letter & ~0x20);
  const std::vector<std::pair<std::size_t, std::size_t>> intervals = {
      {262140, 262150}, {1, 3}, {500000, 699999}, {262144, 262144}, {600000, 700000}, {2, 2}};
  std::string lines;
  for (const auto& [first, last] : intervals) {
    lines.append(std::to_string(first)).append(" ").append(std::to_string(last)).append("\n");
    for (std::size_t p = first; p <= last; ++p) expected[p - 1] = 'N';
  }
  test::ScratchDir dir;
  const test::Outcome run = test::RunCommand(&SSeq::Mask, {{"--seq", dir.Write("in.fa", fasta)},
                                                           {"--mask", dir.Write("m.txt", lines)},
                                                           {"--out", dir.Path("out.fa")}});
  EXPECT_TRUE(run.ok);
  EXPECT_EQ(test::ReadFile(dir.Path("out.fa")), ">long\n" + expected + "\n");
}

TEST(WriteFile, WritesThePartsInOrder) {
  test::ScratchDir dir;
  const std::string name = dir.Path("out.txt");
  EXPECT_TRUE(WriteFile(name, {">x", "", "\n", "ACGT", "\n"}));
  EXPECT_EQ(test::ReadFile(name), ">x\nACGT\n");
  EXPECT_TRUE(WriteFile(name, {}));
  EXPECT_EQ(test::ReadFile(name), "");
  EXPECT_TRUE(WriteFile(name, {"1", "2", "3", "4", "5", "6", "7", "8", "9"}));
  EXPECT_EQ(test::ReadFile(name), "123456789");
  EXPECT_FALSE(WriteFile(dir.Path(""), {"x"}));
}

}  // namespace
}  // namespace genetrain
