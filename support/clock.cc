#include "support/clock.h"

#include <algorithm>
#include <atomic>
#include <cerrno>

namespace {

// The second of the last look at the time zone.
std::atomic<std::time_t> s_nZoneSecond{-1};

timespec Now(clockid_t clock) {
  timespec now = {};
  clock_gettime(clock, &now);
  return now;
}

std::int64_t Milliseconds(const timespec& time) {
  return std::int64_t{time.tv_sec} * 1000 + time.tv_nsec / 1'000'000;
}

}  // namespace

std::int64_t MonotonicMilliseconds() { return Milliseconds(Now(CLOCK_MONOTONIC)); }

std::int64_t MonotonicSeconds() { return Now(CLOCK_MONOTONIC).tv_sec; }

timespec WallClock() { return Now(CLOCK_REALTIME); }

std::int64_t WallMilliseconds() { return Milliseconds(WallClock()); }

// localtime_r looks at the zone once in a process, and a terminal may run for months; a look for
// each stamp would cost every log line a system call.
tm LocalTime(std::time_t second) {
  if (s_nZoneSecond.exchange(second, std::memory_order_relaxed) != second) tzset();
  tm local = {};
  localtime_r(&second, &local);
  return local;
}

void Nap(std::int64_t milliseconds) { NapMicroseconds(milliseconds * 1000); }

void NapMicroseconds(std::int64_t microseconds) {
  if (microseconds <= 0) return;
  timespec left = {static_cast<time_t>(microseconds / 1'000'000),
                   static_cast<long>(microseconds % 1'000'000 * 1000)};
  while (nanosleep(&left, &left) != 0 && errno == EINTR && (left.tv_sec > 0 || left.tv_nsec > 0)) {
  }
}

void NapRestOfSlice(std::int64_t started, std::int64_t least, std::int64_t slice) {
  // Not below zero: a clock that cannot be read stands at zero, long before `started`.
  const std::int64_t taken = std::max<std::int64_t>(MonotonicMilliseconds() - started, 0);
  if (taken < least) Nap(slice - taken);
}
