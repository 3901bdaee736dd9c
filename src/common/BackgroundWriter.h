#ifndef GENETRAIN_COMMON_BACKGROUNDWRITER_H
#define GENETRAIN_COMMON_BACKGROUNDWRITER_H

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace genetrain {

// Writes all the bytes to the descriptor, through short writes and interruptions: 0, or the
// errno of the failure (ENOSPC for a write that takes nothing).
int WriteFully(int fd, std::string_view bytes);

// Writes buffers to a file on a thread of its own. The kernel's copy of an output into the page
// cache costs about as much as making the bytes does; on a second core it overlaps the making of
// the next buffer, and two outputs are copied side by side.
//
// At most kDepth buffers wait; Push blocks beyond that, so memory stays a few buffers whatever
// the output's size. After a failure the later buffers are dropped, and Finish reports it.
class BackgroundWriter {
 public:
  explicit BackgroundWriter(int fd);
  ~BackgroundWriter();
  BackgroundWriter(const BackgroundWriter&) = delete;
  BackgroundWriter& operator=(const BackgroundWriter&) = delete;

  // Queues the bytes and returns an emptied buffer of an earlier Push to fill next (its capacity
  // kept), or an empty string while there is none.
  std::string Push(std::string bytes);
  // The first failure so far (0: none), without waiting.
  int Error();
  // Waits until every queued buffer is written and ends the thread: the first failure, or 0.
  int Finish();

 private:
  static constexpr std::size_t kDepth = 4;

  void Run();

  int fd_;
  std::mutex mutex_;
  std::condition_variable queued_;   // a buffer waits, or the end was asked for
  std::condition_variable written_;  // a buffer was taken off the queue
  std::deque<std::string> queue_;
  std::vector<std::string> spare_;
  bool ending_ = false;
  int error_ = 0;
  std::thread thread_;  // last: it starts once the members above exist
};

}  // namespace genetrain

#endif
