#ifndef GENETRAIN_COMMON_OUTPUT_H
#define GENETRAIN_COMMON_OUTPUT_H

#include <cstdio>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>

namespace genetrain {

class BackgroundWriter;

// Writes a whole text to an open stream. Texts beyond a few MB go out in slices of 8 MB, which
// the kernel takes faster than one giant request.
void WriteAll(std::FILE* stream, std::string_view text);

// Writes the text to standard output (or to the note stream below).
void WriteStdout(std::string_view text);

// Where WriteStdout goes: standard output unless a program sets another stream. genefind sends
// the core's notes (warnings of the training steps) to standard error, since its own output may
// be on standard output.
void SetNoteStream(std::FILE* stream);

enum class OutputMode {
  kReplace,  // the file is created or replaced whole
  kAppend,   // the file gains the whole addition at its end
};

enum class OpenFailure {
  kPrint,  // the standard message names the file and the reason
  kQuiet,  // the caller prints a message of its own
};

// One output of a command, written whole or not at all.
//
// A replaced regular file (or a new name) is written to a temporary file in the same folder,
// which Commit renames over the target: a run that fails on the way, or is killed, leaves the
// old file as it was, and an output that is also the command's input is read to its end before
// it changes. An existing target that may not be written is refused rather than replaced, and the
// replacement keeps its permissions. Targets that are not regular files (devices, pipes, the
// names under /dev and /proc) are written directly, since renaming over them would replace the
// name rather than feed the reader. A new name is written as an unnamed file in its folder
// where the file system has them, linked under the name at Commit, so that a killed run leaves
// nothing at all.
//
// A temporary file is written by a thread of its own once its first full buffer goes out, so
// that the kernel's copying overlaps the making of the next bytes; smaller outputs never start
// one.
//
// An appended file gets its addition in one write at Commit; a short write (a full disk) cuts
// the file back to its old size.
//
// An empty name is standard output, written through the C stream so that it keeps its place
// among the command's messages; its failures are not reported, as before.
//
// Failures print "error: file <NAME> cannot be written: REASON" once and make Commit false.
class OutputFile {
 public:
  OutputFile();
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  bool Open(const std::string& name, OutputMode mode = OutputMode::kReplace,
            OpenFailure failure = OpenFailure::kPrint);
  // Buffered: small pieces are gathered, large ones go straight out. After a failure the bytes
  // are dropped, and Commit reports it.
  void Write(std::string_view bytes);
  // Puts the output in place. False (the message printed) when anything failed since Open; the
  // target is then as it was (but for direct targets, which have no old state to keep).
  bool Commit();
  // Drops what was written; the target stays as it was. The destructor does this too.
  void Discard();

  bool Failed() const { return error_ != 0; }
  // True when a replaced output of that name goes through a temporary file: two such outputs
  // never share a stream.
  static bool ReplacesWhole(const std::string& name);

 private:
  enum class Kind { kClosed, kStdout, kDirect, kTemporary, kAppend };

  bool OpenTarget(OutputMode mode);
  bool OpenTemporary(const std::string& target);
  bool OpenUnnamed(const std::string& target);
  bool LinkUnnamed();
  bool OpenDirect(const std::string& target, int flags);
  void Flush();
  void WriteOut(std::string_view bytes);
  // Queues the full buffer for the writing thread, starting it the first time.
  void HandOver(std::string& bytes);
  // Waits for the writing thread to end, taking over its failure.
  void StopWriter();
  bool AppendPending();
  // Records the first failure; Report prints it once.
  bool Fail(int error);
  void Report();
  void Close();

  std::string name_;       // as the user gave it: the messages show it
  std::string target_;     // the file renamed over (links resolved)
  std::string temporary_;  // the file written, for Kind::kTemporary (empty: unnamed)
  bool unnamed_ = false;
  Kind kind_ = Kind::kClosed;
  int fd_ = -1;
  int error_ = 0;
  int pendingSlot_ = -1;
  bool reported_ = false;
  std::string buffer_;
  std::unique_ptr<BackgroundWriter> writer_;  // Kind::kTemporary only
};

// The whole text to the named file (standard output for an empty name), replaced or appended
// to; false, with the message printed, when it cannot be written.
bool WriteFile(const std::string& name, std::string_view text,
               OutputMode mode = OutputMode::kReplace);
// The parts one after the other, without joining them first.
bool WriteFile(const std::string& name, std::initializer_list<std::string_view> parts,
               OutputMode mode = OutputMode::kReplace);

}  // namespace genetrain

#endif
