#include "common/PendingFiles.h"

#include <unistd.h>

#include <array>
#include <atomic>
#include <climits>
#include <csignal>
#include <cstring>
#include <mutex>

namespace genetrain {

namespace {

// A signal handler may only read plain memory: the names live in fixed arrays, and a slot is
// marked taken only once its name is complete.
struct Slot {
  std::atomic<bool> taken{false};
  std::atomic<bool> claimed{false};
  std::array<char, PATH_MAX> path{};
};

constexpr int kSlots = 32;
std::array<Slot, kSlots> slots;

void RemoveAll() {
  for (Slot& slot : slots) {
    if (slot.taken.load(std::memory_order_acquire)) ::unlink(slot.path.data());
  }
}

extern "C" void RemoveOnSignal(int signal) {
  RemoveAll();
  std::signal(signal, SIG_DFL);
  std::raise(signal);
}

void InstallOnce() {
  static std::once_flag once;
  std::call_once(once, [] {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) {
      struct sigaction current {};
      // A signal the caller chose to ignore stays ignored.
      if (::sigaction(signal, nullptr, &current) == 0 && current.sa_handler == SIG_IGN) continue;
      struct sigaction action {};
      action.sa_handler = RemoveOnSignal;
      sigemptyset(&action.sa_mask);
      ::sigaction(signal, &action, nullptr);
    }
  });
}

}  // namespace

int HoldPending(const std::string& path) {
  if (path.size() >= PATH_MAX) return -1;
  InstallOnce();
  for (int i = 0; i < kSlots; ++i) {
    Slot& slot = slots[static_cast<std::size_t>(i)];
    bool expected = false;
    if (!slot.claimed.compare_exchange_strong(expected, true)) continue;
    std::memcpy(slot.path.data(), path.c_str(), path.size() + 1);
    slot.taken.store(true, std::memory_order_release);
    return i;
  }
  return -1;
}

void ReleasePending(int slot) {
  if (slot < 0 || slot >= kSlots) return;
  Slot& held = slots[static_cast<std::size_t>(slot)];
  held.taken.store(false, std::memory_order_release);
  held.claimed.store(false, std::memory_order_release);
}

}  // namespace genetrain
