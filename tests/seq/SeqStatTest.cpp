#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <utility>

#include "TestSupport.h"
#include "common/Format.h"
#include "seq/SSeq.h"

namespace genetrain {
namespace {

using namespace std::string_literals;
using test::Outcome;
using test::Pairs;
using test::RunCommand;

// The table as worked out from records read the ordinary way.
std::string TableFromRecords(const std::string& path, std::uint32_t precision) {
  SSeq seq;
  EXPECT_TRUE(seq.ReadFasta(path));
  LetterCounts counts{};
  for (const SeqRecord& record : seq.Records()) SSeq::CountLetters(record.sequence, counts);
  std::string label = path;
  if (seq.Records().size() == 1 && !seq.Records()[0].label.empty()) {
    label += " " + seq.Records()[0].label;
  }
  const std::uint64_t acgt = counts['A'] + counts['C'] + counts['G'] + counts['T'];
  return "LABEL          " + label + "\nSEQUENCE_SIZE  " + std::to_string(acgt + counts['N']) +
         "\nSEQUENCE_ACGT  " + std::to_string(acgt) + "\nNT_A           " +
         std::to_string(counts['A']) + "\nNT_C           " + std::to_string(counts['C']) +
         "\nNT_G           " + std::to_string(counts['G']) + "\nNT_T           " +
         std::to_string(counts['T']) + "\nNT_N           " + std::to_string(counts['N']) +
         "\nGC             " + FormatFixed(SSeq::GcPercent(counts), precision) +
         "\nRECORDS        " + std::to_string(seq.Records().size()) + "\n\n";
}

// Labels full of letters, headers in mid-line, text before the first header, CRLF, digits,
// zero bytes and bytes above 127: the counts must be those of the letters the reader keeps.
TEST(SeqStat, CountsWhatTheReaderKeeps) {
  const std::string big(5000, 'g');
  std::string everyByte;  // but the header mark, twice, in a block and across a block's end
  for (int round = 0; round < 2; ++round) {
    for (int byte = 0; byte < 256; ++byte) {
      if (byte != '>') everyByte.push_back(static_cast<char>(byte));
    }
  }
  const std::string cases[] = {
      "",
      "\n \t\r\n",
      "ACGT",
      ">only GATTACA header\nacgu\n",
      "  lead text RYK\n>ACGT GGCC\r\nAC\r\nGT\r\n>x>y\nTTTT>zz\nNNNN\n",
      ">\n>\n>\n",
      ">a\n1 ac\0gt\xc3\xa9 n\n>b xyz\n"s + big + "\n>tail\nCCCCCCC",
      ">gb ACGT\n" + big + "AUUUU\n",
      ">all bytes\n" + everyByte,
      everyByte + ">more\n" + everyByte.substr(100) + everyByte,
  };
  test::ScratchDir dir;
  for (const std::string& content : cases) {
    const std::string path = dir.Write("in.fa", content);
    const Outcome run =
        RunCommand(&SSeq::Stat, {{"--stat", ""}, {"--seq", path}, {"--GC_PRECISION", "4"}});
    EXPECT_TRUE(run.ok);
    EXPECT_EQ(run.out, TableFromRecords(path, 4)) << "content: " << content.substr(0, 60);
    EXPECT_EQ(run.err, "");
  }
}

TEST(SeqStat, LabelShowsTheHeaderOfAOneRecordFileOnly) {
  test::ScratchDir dir;
  const auto firstLine = [&](const std::string& content) {
    const std::string path = dir.Write("in.fa", content);
    const std::string out = RunCommand(&SSeq::Stat, {{"--stat", ""}, {"--seq", path}}).out;
    return out.substr(0, out.find('\n'));
  };
  const std::string name = dir.Path("in.fa");
  EXPECT_EQ(firstLine(">chr1 E. coli\nACGT\n"), "LABEL          " + name + " >chr1 E. coli");
  EXPECT_EQ(firstLine(">\nACGT\n"), "LABEL          " + name + " >");
  EXPECT_EQ(firstLine("ACGT\n"), "LABEL          " + name);
  EXPECT_EQ(firstLine(">a\nAC\n>b\nGT\n"), "LABEL          " + name);
  EXPECT_EQ(firstLine("AC\n>b\nGT\n"), "LABEL          " + name);
  EXPECT_EQ(firstLine(""), "LABEL          " + name);
}

TEST(SeqStat, GcLabelAndPrecision) {
  test::ScratchDir dir;
  const std::string path = dir.Write("in.fa", ">r\nGGGCC\nAATAT\nNNRY\n");  // 5 of 10
  EXPECT_EQ(RunCommand(&SSeq::Gc, {{"--gc", ""}, {"--seq", path}}).out, "GC% = 50.0\n");
  const std::string third = dir.Write("third.fa", "GCA\n");  // 66.666...
  EXPECT_EQ(RunCommand(&SSeq::Gc, {{"--gc", ""}, {"--seq", third}, {"--GC_PRECISION", "0"}}).out,
            "GC% = 67\n");
  EXPECT_EQ(
      RunCommand(
          &SSeq::Gc,
          {{"--gc", ""}, {"--seq", third}, {"--GC_PRECISION", "3"}, {"--GC_LABEL", "gc of set "}})
          .out,
      "gc of set 66.667\n");
  EXPECT_EQ(RunCommand(&SSeq::Gc, {{"--gc", ""}, {"--seq", third}, {"--GC_LABEL", ""}}).out,
            "66.7\n");
  const std::string onlyN = dir.Write("n.fa", ">n\nNNNN\n");
  EXPECT_EQ(RunCommand(&SSeq::Gc, {{"--gc", ""}, {"--seq", onlyN}}).out, "GC% = 0.0\n");
}

TEST(SeqStat, WritesToTheFileNamedByTheCommandKey) {
  test::ScratchDir dir;
  const std::string path = dir.Write("in.fa", "GC\n");
  const std::string gcFile = dir.Write("gc.txt", "an older and much longer content\n");
  Outcome run = RunCommand(&SSeq::Gc, {{"--gc", gcFile}, {"--seq", path}});
  EXPECT_TRUE(run.ok);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(test::ReadFile(gcFile), "GC% = 100.0\n");
  const std::string statFile = dir.Path("stat.txt");
  run = RunCommand(&SSeq::Stat, {{"--stat", statFile}, {"--seq", path}});
  EXPECT_TRUE(run.ok);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(test::ReadFile(statFile), TableFromRecords(path, 1));
}

TEST(SeqStat, BadSettingsAndFilesFailBeforeAnyOutput) {
  test::ScratchDir dir;
  const std::string path = dir.Write("in.fa", "GC\n");
  for (const auto handler : {&SSeq::Stat, &SSeq::Gc}) {
    Outcome run = RunCommand(handler, {{"--stat", ""}, {"--gc", ""}});
    EXPECT_FALSE(run.ok);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "error: missing parameter --seq\n");
    // --seq is read first: its fault is the one shown.
    run = RunCommand(handler,
                     {{"--stat", ""}, {"--gc", ""}, {"--seq", "a b"}, {"--GC_PRECISION", "x"}});
    EXPECT_FALSE(run.ok);
    EXPECT_EQ(run.err, "error in value of parameter --seq: a b\n");
    run = RunCommand(handler,
                     {{"--stat", ""}, {"--gc", ""}, {"--seq", path}, {"--GC_PRECISION", "-1"}});
    EXPECT_FALSE(run.ok);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "error in value of parameter --GC_PRECISION: -1\n");
    const std::string missing = dir.Path("none.fa");
    run = RunCommand(handler, {{"--stat", ""}, {"--gc", ""}, {"--seq", missing}});
    EXPECT_FALSE(run.ok);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "error: file <" + missing + "> is not found\n");
  }
}

}  // namespace
}  // namespace genetrain
