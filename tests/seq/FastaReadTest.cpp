#include "TestSupport.h"
#include "seq/SeqRecord.h"

namespace genetrain {
namespace {

TEST(FastaRead, LabelsAndSequencesInEachView) {
  struct Case {
    bool keepCase;
    std::string content, read;  // read: label, "=", sequence and "|" per record
  };
  const std::string letters = ">r\nacgtu ACGTU\nRYnX bdhkmsvw\n";
  const Case cases[] = {
      {false, "ACGT\n", "=ACGT|"},  // no header: one record with an empty label
      // Case, U and other letters in each view.
      {false, letters, ">r=ACGTTACGTTNNNNNNNNNNNN|"},
      {true, letters, ">r=acgttACGTTNNNNNNNNNNNN|"},
      // A carriage return stays in the label only.
      {false, ">chr1 x\r\nAC\r\nGT\r\n>chr2\r\nTT", ">chr1 x\r=ACGT|>chr2\r=TT|"},
      // Digits, blanks, punctuation, zero and high bytes are dropped.
      {true, std::string(">gb\n     1 acgtac-gta *.\n    61 ggg\xc3\xa9\x01\0tt\n", 42),
       ">gb=acgtacgtagggtt|"},
      // A header mark anywhere starts a record.
      {false, "AC>mid line\nGG\n>\n>last", "=AC|>mid line=GG|>=|>last=|"},
      {false, "", ""},
      {false, " \n\t\r\n\v\f", "=|"},
      // White space before a header is skipped, so it makes no record of its own.
      {false, "\n\n  >a\nAC\n", ">a=AC|"},
  };
  test::ScratchDir dir;
  for (const Case& c : cases) {
    std::vector<SeqRecord> records;
    ASSERT_TRUE(ReadFastaRecords(dir.Write("in.fa", c.content),
                                 c.keepCase ? CasePreservingLetterTable() : UpperLetterTable(),
                                 records));
    std::string read;
    for (const SeqRecord& record : records) read += record.label + "=" + record.sequence + "|";
    EXPECT_EQ(read, c.read) << c.content;
  }
}

std::string Codes(const CodeSeq& codes) {
  std::string text;
  for (std::uint8_t code : codes) text.push_back(static_cast<char>('0' + code));
  return text;
}

TEST(VSeqRead, OneSequenceOrOnePerRecord) {
  test::ScratchDir dir;
  VSeq seq;
  seq.sequence = {1, 1};  // replaced
  ASSERT_TRUE(seq.ReadSingle(dir.Write("in.fa", ">x y\nAaCcGgTtUuNnRr-9\n")));
  EXPECT_EQ(Codes(seq.sequence), "00112233334444");
  // Only a first header is skipped: later ones are coded as bases.
  ASSERT_TRUE(seq.ReadSingle(dir.Write("in.fa", "  >one\nAC\n>Tag2\nGT\n")));
  EXPECT_EQ(Codes(seq.sequence), "0130223");
  ASSERT_TRUE(seq.ReadRecords(dir.Write("a.fa", "AC\n>h1\n>h2\r\nGt\n")));
  ASSERT_TRUE(seq.ReadRecords(dir.Write("b.fa", " \n ")));
  std::string records;
  for (const CodeSeq& record : seq.records) records += Codes(record) + "|";
  EXPECT_EQ(records, "01||23||");
  for (std::uint8_t code = 0; code <= kMasked; ++code) {
    EXPECT_EQ(Complement(code), code < 4 ? 3 - code : kOther);
  }
}

}  // namespace
}  // namespace genetrain
