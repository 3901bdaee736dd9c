#include "seq/SeqRecord.h"

#include "common/FileBuf.h"
#include "seq/FastaScanner.h"

namespace genetrain {

bool ReadFastaRecords(const std::string& name, const LetterTable& table,
                      std::vector<SeqRecord>& records) {
  FileBuf file;
  if (!file.Load(name.c_str())) return false;
  FastaScanner scanner(file.View());
  FastaSpan span;
  while (scanner.Next(span)) {
    SeqRecord& record = records.emplace_back();
    record.label.assign(span.label);
    AppendLetters(span.body, table, record.sequence);
  }
  return true;
}

}  // namespace genetrain
