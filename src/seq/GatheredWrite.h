#ifndef GENETRAIN_SEQ_GATHEREDWRITE_H
#define GENETRAIN_SEQ_GATHEREDWRITE_H

#include <initializer_list>
#include <string>
#include <string_view>

namespace genetrain {

// Creates (or truncates) the named file and writes the parts one after the other in a single
// gathering request (more only past the kernel's 2 GB limit per request), with no stream buffer
// and no status query: for commands that write many files, or a few large ones from texts
// they already hold. False when the file cannot be opened or written whole, or when there are
// more than kMaxGatheredParts parts (then nothing is opened).
inline constexpr std::size_t kMaxGatheredParts = 8;
bool WriteGathered(const std::string& name, std::initializer_list<std::string_view> parts);

}  // namespace genetrain

#endif
