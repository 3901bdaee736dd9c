#include "seq/FastaBlocks.h"

#include <algorithm>
#include <cstdint>

#include "TestSupport.h"
#include "seq/MSSeq.h"
#include "seq/RecordRuns.h"
#include "seq/SSeq.h"
#include "seq/SeqRecord.h"

namespace genetrain {
namespace {

using namespace std::string_literals;
using test::Capture;

// FASTA texts with what real files hold and what they should not: CRLF, empty records, lower
// case, U, N runs made of every kind of non-base letter, zero bytes, bytes above 127, ">" inside
// lines and labels, text before the first header, white space only, no line end at the end,
// long records, and every byte but the header mark.
std::vector<std::string> Texts() {
  const auto split = [](std::string_view listed) {  // "|" between the pieces
    std::vector<std::string> pieces;
    for (std::size_t start = 0, end = 0; end != std::string_view::npos; start = end + 1) {
      end = listed.find('|', start);
      pieces.emplace_back(listed.substr(start, end - start));
    }
    return pieces;
  };
  std::vector<std::string> texts =
      split("| |\n\r\n|>|>a|A|>a\n|\n>a\nAC\n>|NN\n>b\nNN>c\nN|ACGT\r\n>x>y\r\nNNNNA\r\n");
  const std::vector<std::string> pieces = split(
      "ACGT|acgtu|NNNNNNN|n|N|\n|\r\n|\n>|>rec one\n|>r2\r\n|>\n|  |\t|\0|\xc3\xa9|RYKM|x>y|123 |"
      "GGGCCC|NnRYXbN|1-.*@[`{"s +
      std::string(300, 'A') + "|" + std::string(250, 'N') + "|" + std::string(2000, 'c'));
  for (unsigned seed = 1; seed <= 100; ++seed) {
    std::mt19937 random(seed);
    std::string& text = texts.emplace_back(random() % 3 == 0 ? " \r\n\t" : "");
    for (std::size_t i = 0, count = random() % 60; i < count; ++i) {
      text += pieces[random() % pieces.size()];
    }
  }
  std::string everyByte;  // but the header mark, twice
  for (int byte = 0; byte < 512; ++byte) {
    if (byte % 256 != '>') everyByte.push_back(static_cast<char>(byte));
  }
  texts.push_back(">all bytes\n" + everyByte);
  texts.push_back(everyByte + ">more\n" + everyByte.substr(100) + std::string(5000, 'g'));
  texts.push_back(">g\n" + std::string(10001, 'G') + "\n");
  return texts;
}

std::string Stretch(std::size_t begin, std::size_t end, const std::string& label) {
  return std::to_string(begin + 1) + "\t" + std::to_string(end) + "\t" +
         std::to_string(end - begin) + "\t" + label + "\n";
}

constexpr std::int32_t kMaxima[] = {-5, 0, 3, 2147483647};

// --stat_fasta, --count_substring_n and --count_substring_atcg for each maximum, computed letter
// by letter from the records the case-keeping record reader makes.
std::string ByHand(const std::vector<SeqRecord>& records) {
  std::string stats, runs, stretches[std::size(kMaxima)];
  for (const auto& [label, seq] : records) {
    runs += label + "<";
    std::size_t starts[std::size(kMaxima)] = {};  // of the current stretch
    for (std::size_t first = seq.find('N'); first != std::string::npos;) {
      const std::size_t end = std::min(seq.find_first_not_of('N', first), seq.size());
      runs.append(" ").append(std::to_string(end - first));
      for (std::size_t m = 0; m < std::size(kMaxima); ++m) {
        if (static_cast<std::int64_t>(end - first) <= kMaxima[m]) continue;
        if (first > starts[m]) stretches[m] += Stretch(starts[m], first, label);
        starts[m] = end;
      }
      first = seq.find('N', end);
    }
    runs += "\n";
    for (std::size_t m = 0; m < std::size(kMaxima); ++m) {
      if (seq.size() > starts[m]) stretches[m] += Stretch(starts[m], seq.size(), label);
    }
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
  std::string all = stats + "|" + runs;
  for (const std::string& lines : stretches) all += "|" + lines;
  return all;
}

// Letters A C G T N, records, and the label of a lone record, as --stat and --gc count them:
// the letters the single-case record reader keeps.
std::string Show(const SSeq::FileCounts& counts) {
  const SSeq::Tally& letters = counts.letters;
  return std::to_string(letters.a) + " " + std::to_string(letters.c) + " " +
         std::to_string(letters.g) + " " + std::to_string(letters.t) + " " +
         std::to_string(letters.n) + " " + std::to_string(counts.records) + " '" +
         counts.firstLabel + "'";
}

SSeq::FileCounts CountedByHand(const std::vector<SeqRecord>& records) {
  SSeq::FileCounts counts;
  counts.records = records.size();
  if (records.size() == 1) counts.firstLabel = records[0].label;
  SSeq::Tally& tally = counts.letters;
  std::uint64_t* const counters[] = {&tally.a, &tally.c, &tally.g, &tally.t, &tally.n};
  for (const SeqRecord& record : records) {
    for (const char letter : record.sequence) {
      ++*counters[std::min<std::size_t>(std::string_view("ACGT").find(letter), 4)];
    }
  }
  return counts;
}

// The block-reading commands give what the records hold, plain or gzip, whatever the blocks,
// also while flushing their output in pieces as small as a block.
TEST(FastaBlocks, CommandsGiveWhatTheRecordsHoldForEveryBlockSize) {
  test::ScratchDir dir;
  for (const std::string& text : Texts()) {
    const std::string plain = dir.Write("in.fa", text);
    const std::string packed = dir.Write("in.fa.gz", test::Gzip(text));
    std::vector<SeqRecord> upper, cased;
    ASSERT_TRUE(ReadFastaRecords(plain, UpperLetterTable(), upper));
    ASSERT_TRUE(ReadFastaRecords(plain, CasePreservingLetterTable(), cased));
    const std::string expected = Show(CountedByHand(upper)) + "|" + ByHand(cased);
    const auto all = [&](const std::string& path, std::size_t blockSize) {
      SSeq::FileCounts counts;
      EXPECT_TRUE(SSeq::CountFile(path, blockSize, counts));
      std::string out = Show(counts) + "|" +
                        Capture([&] { return WriteRecordStats(path, blockSize); }).out + "|" +
                        Capture([&] { return WriteNRunLengths(path, blockSize); }).out;
      for (const std::int32_t maximum : kMaxima) {
        out.append("|").append(
            Capture([&] { return WriteStretches(path, maximum, blockSize); }).out);
      }
      return out;
    };
    for (const std::size_t blockSize : {std::size_t{1}, std::size_t{2}, std::size_t{3},
                                        std::size_t{7}, std::size_t{64}, kFastaBlockSize}) {
      EXPECT_EQ(all(plain, blockSize), expected) << "blocks of " << blockSize << ": " << text;
      EXPECT_EQ(all(packed, blockSize), expected) << "gzip, blocks of " << blockSize;
    }
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

}  // namespace
}  // namespace genetrain
