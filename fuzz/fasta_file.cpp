// The FASTA file readers, all on the same file: the single-case view (plain and keeping case),
// the case-keeping record view and the base-code views (one sequence, one per record).
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "FuzzSupport.h"
#include "seq/MSSeq.h"
#include "seq/SSeq.h"
#include "seq/VSeq.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  genetrain::fuzz::Setup();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::string path = genetrain::fuzz::Path("in.fa");
  genetrain::fuzz::WriteFile(path, genetrain::fuzz::AsText(data, size));

  genetrain::SSeq upper;
  if (upper.ReadFasta(path)) {
    for (const genetrain::SeqRecord& record : upper.Records()) {
      for (const char c : record.sequence) {
        if (c != 'A' && c != 'C' && c != 'G' && c != 'T' && c != 'N') std::abort();
      }
    }
  }
  genetrain::SSeq soft;
  soft.KeepCase();
  soft.ReadFasta(path);
  genetrain::MSSeq mixed;
  mixed.ReadFasta(path);
  // Both views keep one record per record of the file.
  if (!upper.Records().empty() && !mixed.Records().empty() &&
      upper.Records().size() != mixed.Records().size()) {
    std::abort();
  }

  genetrain::VSeq single;
  single.ReadSingle(path);
  genetrain::VSeq records;
  records.ReadRecords(path);
  return 0;
}
