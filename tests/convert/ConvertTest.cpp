#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "TestSupport.h"
#include "convert/Annotation.h"
#include "convert/Convert.h"

namespace genetrain {
namespace {

// GFF3 and GenBank snippets, each read whole: the gene set of `record` and what was left out.
struct ReadCase {
  std::string_view name;
  std::string_view text;
  std::string_view record;
  std::string_view genes;
  DroppedCounts dropped;
};

std::string_view TestSource() {
  return "file <test>";
}

bool ReadAny(std::string_view text, Annotation& out) {
  switch (DetectFormat(text)) {
    case AnnotationFormat::kGff:
      return ReadGff(text, TestSource(), out);
    case AnnotationFormat::kGenBank:
      return ReadGenBank(text, TestSource(), out);
    default:
      return false;
  }
}

const ReadCase kReadCases[] = {
    // NCBI's partial ends: start_range opens the left end, end_range the right end; the phase
    // trims the open start, which is on the right for a minus-strand gene.
    {"ncbi ranges and phase on both strands",
     "##gff-version 3\n"
     "c\tRefSeq\tCDS\t1\t299\t.\t+\t2\tID=x;locus_tag=L1;partial=true;start_range=.,1\n"
     "c\tRefSeq\tCDS\t4702\t5000\t.\t-\t2\tID=y;locus_tag=L2;partial=true;end_range=5000,.\n"
     "c\tRefSeq\tCDS\t7\t90\t.\t-\t0\tID=z;partial=true\n",
     "c",
     "L1\t+\t<3\t299\t297\t1\nL2\t-\t4702\t>4998\t297\t1\nz\t-\t<7\t>90\t84\t1\n",
     {}},
    // Without a header line, nine tab-separated columns make it GFF3; a joined CDS is its
    // segments under one ID, counted once; '>' ends the features as ##FASTA does.
    {"headerless gff, join, pseudo, fasta",
     "c\tsrc\tCDS\t10\t99\t.\t+\t0\tID=j\nc\tsrc\tCDS\t100\t189\t.\t+\t0\tID=j\n"
     "c\tsrc\tCDS\t200\t298\t.\t+\t0\tID=p;pseudo=true\n"
     "c\tsrc\tCDS\t300\t398\t.\t-\t.\tID=a%3Bb;Name=n\n"
     ">c\nc\tsrc\tCDS\t1\t3\t.\t+\t0\tID=hidden\n",
     "c",
     "a;b\t-\t300\t398\t99\t1\n",
     {1, 1, 0}},
    {"genbank partial ends, codon_start, CRLF, continued join",
     "LOCUS       R1   600 bp    DNA\r\nVERSION     R1.2\r\nFEATURES             "
     "Location/Qualifiers\r\n"
     "     CDS             complement(<1..>152)\r\n                     /codon_start=3\r\n"
     "                     /protein_id=\"P 1\"\r\n"
     "     CDS             complement(join(200..250,\r\n                     260..300))\r\n"
     "     CDS             order(310..320,330..340)\r\n"
     "     CDS             400..405\r\n                     /gene=\"g\"\r\n"
     "     CDS             410..414\r\n                     /locus_tag=\"odd\"\r\n"
     "ORIGIN\r\n//\r\n",
     "R1.2",
     "P_1\t-\t<1\t>150\t150\t1\ng\t+\t400\t405\t6\t1\n",
     {0, 2, 1}},
    {"genbank second record, pseudogene qualifier",
     "LOCUS       A 10 bp\nFEATURES             Location/Qualifiers\n"
     "     CDS             1..9\n//\nLOCUS       B 10 bp\n"
     "FEATURES             Location/Qualifiers\n     CDS             4..12\n"
     "                     /locus_tag=\"b1\"\n     CDS             1..3\n"
     "                     /pseudogene=\"unitary\"\n//\n",
     "B",
     "b1\t+\t4\t12\t9\t1\n",
     {1, 0, 0}},
};

TEST(ConvertRead, SnippetsGiveTheirGeneSetAndCounts) {
  for (const ReadCase& test : kReadCases) {
    SCOPED_TRACE(test.name);
    Annotation annotation;
    ASSERT_TRUE(ReadAny(test.text, annotation));
    AnnotationRecord* record = FindRecord(annotation.records, test.record);
    ASSERT_NE(record, nullptr);
    EXPECT_EQ(GeneSetText(*record), test.genes);
    EXPECT_EQ(record->dropped.pseudo, test.dropped.pseudo);
    EXPECT_EQ(record->dropped.joined, test.dropped.joined);
    EXPECT_EQ(record->dropped.badLength, test.dropped.badLength);
  }
}

TEST(ConvertRead, FormatIsToldByTheFirstLine) {
  const std::pair<std::string_view, AnnotationFormat> cases[] = {
      {"\n##gff-version 3\n", AnnotationFormat::kGff},
      {"# comment\na\tb\tc\td\te\tf\tg\th\ti\n", AnnotationFormat::kGff},
      {"LOCUS       X 10 bp\n", AnnotationFormat::kGenBank},
      {"g1 - <1 99 99 1\n", AnnotationFormat::kGeneSet},
      {">seq\nACGT\n", AnnotationFormat::kUnknown},
      {"g1 x 1 99 99 1\n", AnnotationFormat::kUnknown},
      {"", AnnotationFormat::kUnknown},
  };
  for (const auto& [text, format] : cases) EXPECT_EQ(DetectFormat(text), format) << text;
}

// Gene set -> GFF3 -> gene set gives the same bytes: ends, strands, classes and ids that need
// GFF3's escapes all survive.
TEST(ConvertRoundTrip, GeneSetThroughGffIsUnchanged) {
  const std::string_view genes =
      "b0001\t+\t190\t255\t66\t1\nx;y=z\t-\t<1\t300\t300\t2\nq%1\t+\t400\t>402\t3\t1\n"
      "r,s\t-\t<500\t>700\t201\t1\n";
  Annotation fromSet;
  ASSERT_TRUE(ReadGeneSet(genes, TestSource(), "seq 1", fromSet));
  const std::string gff = GffText(fromSet.records);
  Annotation fromGff;
  ASSERT_TRUE(ReadGff(gff, TestSource(), fromGff));
  ASSERT_EQ(fromGff.records.size(), 1u);
  EXPECT_EQ(fromGff.records[0].name, "seq 1");
  EXPECT_EQ(GeneSetText(fromGff.records[0]), genes);
}

// A gzip file with CRLF line ends converts to what the plain LF file gives.
TEST(ConvertRun, GzipAndCrlfReadAsPlainText) {
  const std::string plain =
      "##gff-version 3\nc\tsrc\tCDS\t3\t98\t.\t+\t0\tID=1_1;partial=10\n"
      "c\tsrc\tCDS\t200\t499\t.\t-\t0\tID=1_2;partial=00\n";
  std::string crlf;
  for (const char c : plain) crlf.append(c == '\n' ? "\r\n" : std::string(1, c));
  test::ScratchDir dir;
  ConvertOptions options;
  options.quiet = true;
  options.input = dir.Write("plain.gff", plain);
  options.output = dir.Path("plain.genes");
  ASSERT_TRUE(RunConvert(options));
  options.input = dir.Write("crlf.gff.gz", test::Gzip(crlf));
  options.output = dir.Path("crlf.genes");
  ASSERT_TRUE(RunConvert(options));
  EXPECT_EQ(test::ReadFile(dir.Path("plain.genes")),
            "1_1\t+\t<3\t98\t96\t1\n1_2\t-\t200\t499\t300\t1\n");
  EXPECT_EQ(test::ReadFile(dir.Path("crlf.genes")), test::ReadFile(dir.Path("plain.genes")));
}

}  // namespace
}  // namespace genetrain
