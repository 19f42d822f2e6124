#include "support/terminal_wait.h"

#include <poll.h>
#include <sys/ioctl.h>

#include <algorithm>
#include <cerrno>

#include "support/clock.h"

namespace {

constexpr int kSlice = 100;         // milliseconds: longest time between two looks at a cancel
constexpr int kMostSignals = 1000;  // while the clock stands still: it may not be readable

}  // namespace

int WaitForTerminal(int fd, short events, int milliseconds) {
  const std::int64_t start = MonotonicMilliseconds();
  std::int64_t passed = 0;
  for (int signals = 0; signals < kMostSignals; ++signals) {
    pollfd terminal = {fd, events, 0};
    const int ready = poll(&terminal, 1, static_cast<int>(milliseconds - passed));
    if (ready >= 0 || errno != EINTR) return ready;
    // Not below zero: a clock that cannot be read stands at zero, long before `start`.
    const std::int64_t now =
        std::clamp<std::int64_t>(MonotonicMilliseconds() - start, passed, milliseconds);
    if (now > passed) signals = 0;
    passed = now;
  }
  return 0;
}

int QueuedOutput(int fd) {
  int bytes = 0;
  return ioctl(fd, TIOCOUTQ, &bytes) == 0 ? std::max(bytes, 0) : 0;
}

Patience::Patience(int stuck, std::int64_t in_all)
    : stuck_(stuck), looks_left_(in_all / kShortestLook) {
  const std::int64_t now = MonotonicMilliseconds();
  stuck_end_ = now + stuck;
  end_ = now + in_all;
}

void Patience::SeeProgress() {
  stuck_end_ = MonotonicMilliseconds() + stuck_;
  was_stuck_ = false;
}

bool Patience::IsOver() {
  const std::int64_t now = MonotonicMilliseconds();
  const bool is_stuck = now > stuck_end_;
  const bool is_over = looks_left_-- <= 0 || now > end_ || (is_stuck && was_stuck_);
  was_stuck_ = is_stuck;
  return is_over;
}

bool WaitForRoom(int fd, Patience& patience, const std::atomic<int>* cancel) {
  const std::int64_t start = MonotonicMilliseconds();
  int queued = QueuedOutput(fd);
  int ready = 0;
  while (ready == 0 && (cancel == nullptr || *cancel == 0) && !patience.IsOver()) {
    ready = WaitForTerminal(fd, POLLOUT, kSlice);
    const int left = QueuedOutput(fd);
    if (left < queued) patience.SeeProgress();
    queued = left;
  }
  NapRestOfSlice(start, kShortestLook, kShortestLook);
  return ready > 0;
}
