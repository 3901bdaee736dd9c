#include "seq/VSeq.h"

#include <algorithm>

#include "common/FileBuf.h"
#include "seq/FastaScanner.h"

namespace genetrain {

bool VSeq::ReadSingle(const std::string& name) {
  FileBuf file;
  if (!file.Load(name.c_str())) return false;
  const std::string_view text = file.View();
  std::size_t start = 0;
  while (start < text.size() && IsSpace(text[start])) ++start;
  if (start < text.size() && text[start] == '>')
    start = std::min(text.find('\n', start), text.size());
  sequence.clear();
  AppendCodes(text.substr(start), sequence);
  return true;
}

bool VSeq::ReadRecords(const std::string& name) {
  FileBuf file;
  if (!file.Load(name.c_str())) return false;
  FastaScanner scanner(file.View());
  FastaSpan span;
  while (scanner.Next(span)) AppendCodes(span.body, records.emplace_back());
  return true;
}

}  // namespace genetrain
