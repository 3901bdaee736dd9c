#include "seq/CodedRecords.h"

#include <cstdio>

#include "common/InputStream.h"
#include "seq/FastaBlocks.h"
#include "seq/FastaScanner.h"
#include "seq/RecordId.h"

namespace genetrain {

namespace {

class CodedSink {
 public:
  explicit CodedSink(CodedRecords& records) : records_(records) {}
  void Begin() { records_.codes.emplace_back(); }
  void Label(std::string_view piece) { id_.Add(piece); }
  void Body(std::string_view piece) { AppendCodes(piece, records_.codes.back()); }
  void End() { records_.ids.push_back(id_.Take(records_.codes.size())); }

 private:
  CodedRecords& records_;
  RecordId id_;
};

}  // namespace

bool ReadCodedRecords(const std::string& name, CodedRecords& records) {
  InputStream input(stdin, "standard input");
  if (name != "-" && !input.Open(name.c_str())) return false;
  CodedSink sink(records);
  return ReadFastaBlocks(input, kFastaBlockSize, sink);
}

}  // namespace genetrain
