// Waits for a terminal: for its bytes, and for room where it takes them slowly or not at all.
#ifndef QUILLONID_SUPPORT_TERMINAL_WAIT_H
#define QUILLONID_SUPPORT_TERMINAL_WAIT_H

#include <atomic>
#include <cstdint>

// Waits up to `milliseconds` for one of poll's `events`, signals or not. Returns poll's result.
int WaitForTerminal(int fd, short events, int milliseconds);

// Bytes that have not left yet; 0 also when the driver does not tell.
int QueuedOutput(int fd);

constexpr int kShortestLook = 10;  // milliseconds between two looks at the end of patience

// The time that bytes on their way out are given: a terminal that is stuck, or takes a byte now and
// then, must not hold its writer for ever.
class Patience {
 public:
  // Over after `stuck` milliseconds without progress and after `in_all` milliseconds.
  Patience(int stuck, std::int64_t in_all);
  void SeeProgress();
  // Asked before each look at the terminal. A process that was held up gets one more.
  bool IsOver();

 private:
  int stuck_;
  std::int64_t stuck_end_;
  std::int64_t end_;
  bool was_stuck_ = false;   // at the last look
  std::int64_t looks_left_;  // should the clock not be readable
};

// Waits until the terminal takes bytes again. False: `cancel`, which may be null, became non-zero
// first, or patience came to its end. A driver may have room only when most of its queue has left:
// as long as the queue gets shorter, the terminal is not stuck.
bool WaitForRoom(int fd, Patience& patience, const std::atomic<int>* cancel);

#endif
