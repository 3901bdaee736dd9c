#ifndef GENETRAIN_COMMON_OUTPUT_H
#define GENETRAIN_COMMON_OUTPUT_H

#include <cstdio>
#include <initializer_list>
#include <string>
#include <string_view>

namespace genetrain {

// Writes a whole text to an open stream. Texts beyond a few MB go out in slices of 8 MB, which
// the kernel takes faster than one giant request.
void WriteAll(std::FILE* stream, std::string_view text);

// Writes the text to standard output.
void WriteStdout(std::string_view text);

// Writes the text to the named file, truncating it or appending to it. The commands do not
// check their outputs: a file that cannot be opened loses the text, and false says so.
bool WriteFile(const std::string& name, std::string_view text, bool append = false);
// Creates or truncates the named file and writes the parts one after the other, without
// joining them first; false when the file cannot be opened or written whole.
bool WriteFile(const std::string& name, std::initializer_list<std::string_view> parts);

}  // namespace genetrain

#endif
