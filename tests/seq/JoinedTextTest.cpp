#include <cstdint>

#include "StreamedSupport.h"
#include "TestSupport.h"
#include "common/Output.h"
#include "seq/JoinedText.h"
#include "seq/RecordJoiner.h"

namespace genetrain {
namespace {

// A joined text written to a file of a scratch folder, as the commands write it.
struct JoinedFile {
  test::ScratchDir dir;
  OutputFile file;
  JoinedText text{&file};

  JoinedFile() { file.Open(dir.Path("out")); }
  // Ends the text and gives what the file holds.
  std::string Finish() {
    text.Finish();
    EXPECT_TRUE(file.Commit());
    return test::ReadFile(dir.Path("out"));
  }
};

// Some hand-made texts, then texts of A, C and N runs of every length from 0 to 12, so that runs
// meet the pieces' boundaries in every way. Only the capital N forms runs.
std::vector<std::string> Texts(std::mt19937& random) {
  std::vector<std::string> texts = {"",         "ACNNNNNNNGT", "NNNNNAGNNNNNNCNTNNNNNN",
                                    "NNNNNNNN", "AnnnnNNNNnT", "CNNNCNNNNCNNNNNNC",
                                    "NANNGN"};
  std::uniform_int_distribution<std::size_t> length(0, 12);
  for (int round = 0; round < 200; ++round) {
    std::string& text = texts.emplace_back();
    for (std::size_t i = 0; i < 30; ++i) {
      text.append(length(random), 'N');
      text.append(length(random) % 4, "AC"[i % 2]);
    }
  }
  return texts;
}

// Hands the text over in pieces of random sizes, empty ones included.
void PutInPieces(JoinedText& out, std::string_view text, std::mt19937& random) {
  std::uniform_int_distribution<std::size_t> size(0, 9);
  while (!text.empty()) {
    const std::size_t part = std::min(size(random), text.size());
    out.Put(text.substr(0, part));
    text.remove_prefix(part);
  }
}

// Each run of at least |left| + |right| N, found in the text as a whole, flanked.
std::string FlankedByHand(const std::string& text, const std::string& left,
                          const std::string& right) {
  std::string out = text;
  for (std::size_t start = text.find('N'); start != std::string::npos;) {
    const std::size_t end = std::min(text.find_first_not_of('N', start), text.size());
    if (end - start >= left.size() + right.size()) {
      out.replace(start, left.size(), left);
      out.replace(end - right.size(), right.size(), right);
    }
    start = text.find('N', end);
  }
  return out;
}

// Trimming and flanking in pieces give what the plain versions give on the whole text.
TEST(JoinedText, EditsInPiecesAgreeWithTheWholeText) {
  std::mt19937 random(7);
  for (const std::string& text : Texts(random)) {
    for (const std::size_t maximum : {0, 1, 2, 11}) {
      const std::string whole = streamed::TrimRuns(text, maximum);
      JoinedFile out;
      out.text.TrimRuns(maximum);
      PutInPieces(out.text, text, random);
      ASSERT_EQ(out.Finish(), whole) << text << " " << maximum;
      EXPECT_EQ(out.text.Size(), whole.size());
    }
    for (const auto& [left, right] : std::vector<std::pair<std::string, std::string>>{
             {"AA", "TT"}, {"", "G"}, {"GCG", ""}, {"", ""}, {"NA", "AN"}}) {
      JoinedFile out;
      out.text.FlankRuns(left, right);
      PutInPieces(out.text, text, random);
      ASSERT_EQ(out.Finish(), FlankedByHand(text, left, right)) << text << " " << left << right;
    }
  }
}

TEST(JoinedText, LongTextGoesOutInSlicesOrIsOnlyCounted) {
  // Beyond one slice of 1 MB, with runs of N longer than a slice, and 300 000 short runs: a
  // version that erased each run from the middle of the text would take minutes.
  std::string text;
  for (int i = 0; i < 40; ++i) {
    text.append(100000, "ACGT"[i % 4]);
    text.append(static_cast<std::size_t>(i) * 60000, 'N');
  }
  for (int i = 0; i < 300000; ++i) text.append("ACG").append(static_cast<std::size_t>(i % 7), 'N');
  const std::string expected = streamed::TrimRuns(text, 1500000);
  JoinedFile streamed;
  streamed.text.TrimRuns(1500000);
  streamed.text.Put(text);
  EXPECT_EQ(streamed.Finish(), expected);
  JoinedText counted;
  counted.TrimRuns(1500000);
  counted.Put(text);
  counted.Finish();
  EXPECT_EQ(counted.Size(), expected.size());
}

std::string Show(const SSeq::Tally& tally) {
  return std::to_string(tally.a) + " " + std::to_string(tally.c) + " " + std::to_string(tally.g) +
         " " + std::to_string(tally.t) + " " + std::to_string(tally.n);
}

// Records below the minimum go, without a filler; the filler comes only after text, so empty
// records kept first get none; a minimum of 3,000,000,000 arrives here as a negative number, so
// every record is kept.
TEST(RecordJoiner, FillerBetweenRecordsKeptAndTallies) {
  const struct {
    std::string_view records;  // "|" between them
    std::string filler;
    std::int32_t minimum;
    std::size_t count;
    std::string out, all, kept;  // tallies: A C G T N
  } cases[] = {
      {"ACGTNNNN|NNNNNNNN|GGGG", "NNNNN", 1, 2, "ACGTNNNNNNNNNGGGG", "1 1 5 1 12", "1 1 5 1 4"},
      {"||AC||GT", "xy", 0, 5, "ACxyxyGT", "1 1 1 1 0", "1 1 1 1 0"},
      {"NN||A", "-", static_cast<std::int32_t>(3000000000u), 3, "NN--A", "1 0 0 0 2", "1 0 0 0 2"},
      {"", "-", 1, 0, "", "0 0 0 0 0", "0 0 0 0 0"},
  };
  for (const auto& c : cases) {
    JoinedFile out;
    RecordJoiner joiner(c.filler, c.minimum);
    joiner.AddOutput(out.text);
    for (std::size_t start = 0, end = 0; !c.records.empty() && end != std::string_view::npos;
         start = end + 1) {
      end = c.records.find('|', start);
      joiner.Add(c.records.substr(start, end - start));
    }
    EXPECT_EQ(out.Finish(), c.out);
    EXPECT_EQ(joiner.KeptRecords(), c.count) << c.out;
    EXPECT_EQ(Show(joiner.All()), c.all) << c.out;
    EXPECT_EQ(Show(joiner.Kept()), c.kept) << c.out;
  }
}

}  // namespace
}  // namespace genetrain
