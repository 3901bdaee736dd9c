#include "common/BackgroundWriter.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

namespace genetrain {

namespace {
// The kernel takes at most about 2 GB per write.
constexpr std::size_t kMaxWrite = std::size_t{1} << 30;
}  // namespace

int WriteFully(int fd, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t done = ::write(fd, bytes.data(), std::min(bytes.size(), kMaxWrite));
    if (done < 0 && errno == EINTR) continue;
    if (done < 0) return errno;
    if (done == 0) return ENOSPC;
    bytes.remove_prefix(static_cast<std::size_t>(done));
  }
  return 0;
}

BackgroundWriter::BackgroundWriter(int fd) : fd_(fd), thread_([this] { Run(); }) {}

BackgroundWriter::~BackgroundWriter() {
  Finish();
}

std::string BackgroundWriter::Push(std::string bytes) {
  std::string spare;
  {
    std::unique_lock lock(mutex_);
    written_.wait(lock, [this] { return queue_.size() < kDepth; });
    queue_.push_back(std::move(bytes));
    if (!spare_.empty()) {
      spare = std::move(spare_.back());
      spare_.pop_back();
    }
  }
  queued_.notify_one();
  return spare;
}

int BackgroundWriter::Error() {
  const std::lock_guard lock(mutex_);
  return error_;
}

int BackgroundWriter::Finish() {
  {
    const std::lock_guard lock(mutex_);
    ending_ = true;
  }
  queued_.notify_one();
  if (thread_.joinable()) thread_.join();
  return error_;
}

void BackgroundWriter::Run() {
  for (;;) {
    std::string bytes;
    int failed = 0;
    {
      std::unique_lock lock(mutex_);
      queued_.wait(lock, [this] { return !queue_.empty() || ending_; });
      if (queue_.empty()) return;
      bytes = std::move(queue_.front());
      queue_.pop_front();
      failed = error_;
    }
    written_.notify_one();
    if (failed == 0) failed = WriteFully(fd_, bytes);
    bytes.clear();
    const std::lock_guard lock(mutex_);
    if (error_ == 0) error_ = failed;
    spare_.push_back(std::move(bytes));
  }
}

}  // namespace genetrain
