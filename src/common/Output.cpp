#include "common/Output.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>

#include "common/BackgroundWriter.h"
#include "common/Message.h"
#include "common/PendingFiles.h"

namespace genetrain {

void WriteAll(std::FILE* stream, std::string_view text) {
  constexpr std::size_t kSlice = std::size_t{8} << 20;
  for (std::size_t pos = 0; pos < text.size(); pos += kSlice) {
    const std::size_t length = std::min(kSlice, text.size() - pos);
    if (std::fwrite(text.data() + pos, 1, length, stream) != length) return;
  }
}

namespace {
std::atomic<std::FILE*> noteStream{nullptr};  // null: standard output
}  // namespace

void SetNoteStream(std::FILE* stream) {
  noteStream = stream;
}

void WriteStdout(std::string_view text) {
  std::FILE* stream = noteStream.load();
  WriteAll(stream != nullptr ? stream : stdout, text);
}

namespace {

// Pieces are gathered up to this size. Written directly, a piece of a quarter of it or more goes
// straight out, sparing the copy.
constexpr std::size_t kBuffer = std::size_t{1} << 20;
constexpr std::size_t kStraight = kBuffer / 4;

bool StartsWith(std::string_view text, std::string_view prefix) {
  return text.substr(0, prefix.size()) == prefix;
}

// Names under /dev and /proc stand for streams (/dev/stdout, /dev/fd/3, /proc/self/fd/1) even
// where they resolve to a regular file: that file belongs to whoever opened the stream.
bool IsStreamName(std::string_view name) {
  return StartsWith(name, "/dev/") || StartsWith(name, "/proc/");
}

// The file a symbolic link leads to, so that the link stays a link; empty when it leads nowhere.
std::string Resolved(const std::string& name) {
  char* real = ::realpath(name.c_str(), nullptr);
  if (real == nullptr) return {};
  std::string path(real);
  std::free(real);
  return path;
}

// Write permission as the system grants it, and none for a file that nobody may write: the
// superuser passes every permission check, but replacing a file marked read-only would still
// surprise its owner.
int WriteDenied(const std::string& path, const struct stat& status) {
  if (::access(path.c_str(), W_OK) != 0) return errno;
  if ((status.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0) return EACCES;
  return 0;
}

// The replacement takes over the old file's permissions, and its owner where the process may
// set that (as the superuser, writing another user's file).
void CopyOwnership(int fd, const struct stat& status) {
  ::fchmod(fd, status.st_mode & 07777);
  if (::geteuid() == 0 && (status.st_uid != 0 || status.st_gid != ::getegid())) {
    [[maybe_unused]] const int ignored = ::fchown(fd, status.st_uid, status.st_gid);
  }
}

}  // namespace

OutputFile::OutputFile() = default;

OutputFile::~OutputFile() {
  Discard();
}

bool OutputFile::Open(const std::string& name, OutputMode mode, OpenFailure failure) {
  Discard();
  name_ = name;
  target_ = name;
  error_ = 0;
  // A quiet open leaves its failure to the caller's message; later ones are reported as usual.
  reported_ = false;
  if (OpenTarget(mode)) return true;
  if (failure == OpenFailure::kPrint) Report();
  reported_ = true;
  return false;
}

namespace {

// Where a replaced output goes and whether through a temporary file.
struct Target {
  std::string path;  // links resolved
  bool direct = false;
  bool exists = false;
  struct stat status {};
  int error = 0;  // the target cannot be examined
};

// One lstat settles a name that is no link, the common case: a new output costs one look-up.
Target Examine(const std::string& name) {
  Target target;
  target.path = name;
  target.direct = IsStreamName(name);
  if (!target.direct) {
    if (::lstat(name.c_str(), &target.status) != 0) {
      if (errno != ENOENT) target.error = errno;
      return target;
    }
    if (!S_ISLNK(target.status.st_mode)) {
      target.exists = true;
      target.direct = !S_ISREG(target.status.st_mode);
      return target;
    }
    target.path = Resolved(name);
    // A dangling link is written through, which creates the file it names.
    target.direct = target.path.empty() || IsStreamName(target.path);
    if (target.direct) target.path = name;
  }
  target.exists = ::stat(target.path.c_str(), &target.status) == 0;
  if (!target.exists && errno != ENOENT) target.error = errno;
  if (target.exists && !S_ISREG(target.status.st_mode)) target.direct = true;
  return target;
}

// The folder part of a path, with its slash; empty for a bare name.
std::string FolderOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string::npos ? "" : path.substr(0, slash + 1);
}

// A name for a temporary file next to the target, unique within the process; O_EXCL or an
// EEXIST from link settles a clash with anyone else.
std::string TemporaryName(const std::string& target) {
  const std::string folder = FolderOf(target);
  // Room for the suffix within the 255 bytes of a file name.
  const std::string base = target.substr(folder.size(), 200);
  static std::atomic<unsigned> counter{0};
  static const std::string pid = std::to_string(::getpid());
  std::string name = folder;
  name.append(".").append(base).append(".").append(pid).append(".");
  name.append(std::to_string(counter++)).append(".tmp");
  return name;
}

}  // namespace

bool OutputFile::ReplacesWhole(const std::string& name) {
  return !name.empty() && !Examine(name).direct;
}

bool OutputFile::OpenTarget(OutputMode mode) {
  if (name_.empty()) {
    kind_ = Kind::kStdout;
    return true;
  }
  const Target target = Examine(name_);
  if (target.error != 0) return Fail(target.error);
  target_ = target.path;
  if (target.exists && S_ISREG(target.status.st_mode)) {
    if (const int denied = WriteDenied(target_, target.status); denied != 0) return Fail(denied);
  }
  if (mode == OutputMode::kAppend) {
    if (!OpenDirect(target_, O_WRONLY | O_CREAT | O_APPEND)) return false;
    kind_ = Kind::kAppend;
    return true;
  }
  if (target.direct) {
    if (!OpenDirect(target_, O_WRONLY | O_CREAT | O_TRUNC)) return false;
    kind_ = Kind::kDirect;
    return true;
  }
  if (!target.exists && OpenUnnamed(target_)) {
    kind_ = Kind::kTemporary;
    return true;
  }
  if (!OpenTemporary(target_)) return false;
  if (target.exists) CopyOwnership(fd_, target.status);
  kind_ = Kind::kTemporary;
  return true;
}

bool OutputFile::OpenDirect(const std::string& target, int flags) {
  do {
    fd_ = ::open(target.c_str(), flags | O_CLOEXEC, 0666);
  } while (fd_ < 0 && errno == EINTR);
  return fd_ >= 0 || Fail(errno);
}

// The temporary file is created, not opened: O_EXCL keeps a name someone else holds, and the
// mode 0666 lets the process's umask set a new file's permissions as for the target itself.
bool OutputFile::OpenTemporary(const std::string& target) {
  for (int attempt = 0; attempt < 100; ++attempt) {
    temporary_ = TemporaryName(target);
    fd_ = ::open(temporary_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (fd_ >= 0) {
      pendingSlot_ = HoldPending(temporary_);
      return true;
    }
    if (errno != EEXIST && errno != EINTR) break;
  }
  temporary_.clear();
  return Fail(errno);
}

// A new target is first an unnamed file in its folder, given the target's name at Commit: a
// process that dies on the way leaves nothing behind, and the folder changes once rather than
// twice (create, then rename), the larger part of the cost of thousands of small outputs. Where
// the file system has no unnamed files, or /proc is not mounted, the named file serves instead.
bool OutputFile::OpenUnnamed(const std::string& target) {
  static const bool procFds = ::access("/proc/self/fd", X_OK) == 0;
  if (!procFds) return false;
  const std::string folder = FolderOf(target);
  const char* where = folder.empty() ? "." : folder.c_str();
  do {
    fd_ = ::open(where, O_WRONLY | O_TMPFILE | O_CLOEXEC, 0666);
  } while (fd_ < 0 && errno == EINTR);
  unnamed_ = fd_ >= 0;
  return unnamed_;
}

// Links the unnamed file under the target's name. A target made by someone else since Open is
// replaced, as an existing one is, through a temporary name. True when the name is new.
bool OutputFile::LinkUnnamed() {
  const std::string self = "/proc/self/fd/" + std::to_string(fd_);
  if (::linkat(AT_FDCWD, self.c_str(), AT_FDCWD, target_.c_str(), AT_SYMLINK_FOLLOW) == 0) {
    return true;
  }
  if (errno != EEXIST) return Fail(errno);
  for (int attempt = 0; attempt < 100; ++attempt) {
    const std::string temporary = TemporaryName(target_);
    if (::linkat(AT_FDCWD, self.c_str(), AT_FDCWD, temporary.c_str(), AT_SYMLINK_FOLLOW) == 0) {
      if (::rename(temporary.c_str(), target_.c_str()) != 0) {
        Fail(errno);
        ::unlink(temporary.c_str());
      }
      return false;
    }
    if (errno != EEXIST) break;
  }
  return Fail(errno);
}

void OutputFile::Write(std::string_view bytes) {
  if (error_ != 0 || bytes.empty()) return;
  switch (kind_) {
    case Kind::kClosed:
      return;
    case Kind::kStdout:
      WriteAll(stdout, bytes);
      return;
    case Kind::kAppend:
      buffer_.append(bytes);
      return;
    case Kind::kTemporary:
      // Gathered in whole buffers for the writing thread, whatever the pieces' sizes.
      while (!bytes.empty() && error_ == 0) {
        if (buffer_.capacity() < kBuffer) buffer_.reserve(kBuffer);
        const std::size_t part = std::min(bytes.size(), kBuffer - buffer_.size());
        buffer_.append(bytes.substr(0, part));
        bytes.remove_prefix(part);
        if (buffer_.size() == kBuffer) HandOver(buffer_);
      }
      return;
    case Kind::kDirect:
      break;
  }
  if (bytes.size() >= kStraight) {
    Flush();
    WriteOut(bytes);
    return;
  }
  if (buffer_.size() + bytes.size() > kBuffer) Flush();
  buffer_.append(bytes);
}

void OutputFile::HandOver(std::string& bytes) {
  if (!writer_) writer_ = std::make_unique<BackgroundWriter>(fd_);
  bytes = writer_->Push(std::move(bytes));
  bytes.clear();
  if (const int error = writer_->Error(); error != 0) Fail(error);
}

void OutputFile::StopWriter() {
  if (!writer_) return;
  if (const int error = writer_->Finish(); error != 0) Fail(error);
  writer_.reset();
}

void OutputFile::Flush() {
  WriteOut(buffer_);
  buffer_.clear();
}

void OutputFile::WriteOut(std::string_view bytes) {
  if (error_ == 0 && !bytes.empty()) {
    if (const int error = WriteFully(fd_, bytes); error != 0) Fail(error);
  }
}

// Whatever part of the addition got in before a failure is cut off again.
bool OutputFile::AppendPending() {
  struct stat status {};
  const bool regular = ::fstat(fd_, &status) == 0 && S_ISREG(status.st_mode);
  WriteOut(buffer_);
  buffer_.clear();
  if (error_ != 0 && regular) {
    [[maybe_unused]] const int ignored = ::ftruncate(fd_, status.st_size);
  }
  return error_ == 0;
}

bool OutputFile::Commit() {
  switch (kind_) {
    case Kind::kClosed:
      break;
    case Kind::kStdout:
      kind_ = Kind::kClosed;
      return true;
    case Kind::kAppend:
      if (error_ == 0) AppendPending();
      Close();
      break;
    case Kind::kDirect:
      if (error_ == 0) Flush();
      Close();
      break;
    case Kind::kTemporary:
      StopWriter();
      if (error_ == 0) Flush();
      if (unnamed_) {
        const bool linkedNew = error_ == 0 && LinkUnnamed();
        Close();
        // Written but not kept: a name made here goes again.
        if (error_ != 0 && linkedNew) ::unlink(target_.c_str());
        unnamed_ = false;
        break;
      }
      Close();
      if (error_ == 0 && ::rename(temporary_.c_str(), target_.c_str()) != 0) Fail(errno);
      if (error_ != 0) ::unlink(temporary_.c_str());
      ReleasePending(pendingSlot_);
      pendingSlot_ = -1;
      temporary_.clear();
      break;
  }
  kind_ = Kind::kClosed;
  if (error_ == 0) return true;
  Report();
  return false;
}

void OutputFile::Discard() {
  if (writer_) {
    writer_->Finish();
    writer_.reset();
  }
  Close();
  unnamed_ = false;
  if (!temporary_.empty()) {
    ::unlink(temporary_.c_str());
    ReleasePending(pendingSlot_);
    pendingSlot_ = -1;
    temporary_.clear();
  }
  buffer_.clear();
  kind_ = Kind::kClosed;
}

// A failing close is a failed write: some file systems report a full disk only there.
void OutputFile::Close() {
  if (fd_ < 0) return;
  if (::close(fd_) != 0 && errno != EINTR) Fail(errno);
  fd_ = -1;
}

bool OutputFile::Fail(int error) {
  if (error_ == 0) error_ = error;
  return false;
}

void OutputFile::Report() {
  if (reported_) return;
  reported_ = true;
  PrintError({"error: file <", name_, "> cannot be written: ", std::strerror(error_)});
}

bool WriteFile(const std::string& name, std::string_view text, OutputMode mode) {
  return WriteFile(name, {text}, mode);
}

bool WriteFile(const std::string& name, std::initializer_list<std::string_view> parts,
               OutputMode mode) {
  OutputFile file;
  if (!file.Open(name, mode)) return false;
  for (const std::string_view part : parts) file.Write(part);
  return file.Commit();
}

}  // namespace genetrain
