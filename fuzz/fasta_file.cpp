// The FASTA file readers, all on the same file: the single-case view, the case-keeping view
// (through the record reader and MSSeq) and the base-code views (one sequence, one per record).
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "FuzzSupport.h"
#include "seq/MSSeq.h"
#include "seq/SeqRecord.h"
#include "seq/VSeq.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  genetrain::fuzz::Setup();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::string path = genetrain::fuzz::Path("in.fa");
  genetrain::fuzz::WriteFile(path, genetrain::fuzz::AsText(data, size));

  std::vector<genetrain::SeqRecord> upper;
  if (genetrain::ReadFastaRecords(path, genetrain::UpperLetterTable(), upper)) {
    for (const genetrain::SeqRecord& record : upper) {
      for (const char c : record.sequence) {
        if (c != 'A' && c != 'C' && c != 'G' && c != 'T' && c != 'N') std::abort();
      }
    }
  }
  std::vector<genetrain::SeqRecord> soft;
  genetrain::ReadFastaRecords(path, genetrain::CasePreservingLetterTable(), soft);
  // Both views keep one record per record of the file.
  if (!upper.empty() && upper.size() != soft.size()) std::abort();
  genetrain::MSSeq mixed;
  mixed.ReadFasta(path);

  genetrain::VSeq single;
  single.ReadSingle(path);
  genetrain::VSeq records;
  records.ReadRecords(path);
  return 0;
}
