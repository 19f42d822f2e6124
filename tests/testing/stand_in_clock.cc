#include "tests/testing/stand_in_clock.h"

#include <dlfcn.h>
#include <link.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cmath>

#include "quillonid/support.h"

namespace {

std::atomic<bool> s_system;          // true: no stand-in
std::atomic<double> s_speed{1.0};    // library seconds for each real second
std::atomic<double> s_skipped;       // seconds moved on by sleeps and Advance()
std::atomic<double> s_wall_step;     // seconds the wall clock was stepped by
std::atomic<bool> s_wall_held;       // true: the wall clock stands at s_held
timespec s_held;                     // set before s_wall_held
std::atomic<double> s_slept;         // seconds slept by the library
std::atomic<int> s_sleep_calls;      // calls of sleep() by the library
std::atomic<bool> s_sleeping;        // a sleep() goes on
std::atomic<unsigned> s_last_sleep;  // argument of the last one

struct Range {
  std::uintptr_t begin, end;
};

int FindLibrary(dl_phdr_info* info, std::size_t, void* range) {
  auto* found = static_cast<Range*>(range);
  for (int i = 0; i < info->dlpi_phnum; ++i) {
    const auto& header = info->dlpi_phdr[i];
    if (header.p_type != PT_LOAD) continue;
    const std::uintptr_t begin = info->dlpi_addr + header.p_vaddr;
    if (found->begin >= begin && found->begin < begin + header.p_memsz) {
      *found = {begin, begin + header.p_memsz};
      return 1;
    }
  }
  return 0;
}

// The mapped code that holds the library: where one of its functions stands.
const Range& Library() {
  static const Range range = [] {
    void* symbol = dlsym(RTLD_DEFAULT, "time_Valid_YYMMDD");
    Range found = {reinterpret_cast<std::uintptr_t>(symbol), 0};
    dl_iterate_phdr(FindLibrary, &found);
    return found;
  }();
  return range;
}

bool FromLibrary(const void* caller) {
  if (s_system) return false;
  const auto address = reinterpret_cast<std::uintptr_t>(caller);
  return address >= Library().begin && address < Library().end;
}

timespec RealTime(clockid_t clock) {
  timespec time = {};
  syscall(SYS_clock_gettime, clock, &time);
  return time;
}

timespec Shifted(timespec time, double seconds) {
  double whole = 0;
  const double nanoseconds = std::modf(seconds, &whole) * 1e9;
  time.tv_sec += static_cast<time_t>(whole);
  time.tv_nsec += static_cast<long>(nanoseconds);
  if (time.tv_nsec >= 1'000'000'000) {
    time.tv_nsec -= 1'000'000'000;
    ++time.tv_sec;
  } else if (time.tv_nsec < 0) {
    time.tv_nsec += 1'000'000'000;
    --time.tv_sec;
  }
  return time;
}

double Seconds(const timespec& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

const double s_started = Seconds(RealTime(CLOCK_MONOTONIC));

// `now`: the monotonic clock, read once, so that a clock of speed 0 stands still whatever comes
// between two readings.
double AheadOfRealTime(const timespec& now) {
  const double running = Seconds(now) - s_started;
  return running * (s_speed - 1.0) + s_skipped;
}

void Add(std::atomic<double>& sum, double seconds) {
  double old = sum;
  while (!sum.compare_exchange_weak(old, old + seconds)) {
  }
}

}  // namespace

namespace stand_in_clock {

void UseSystemClock() { s_system = true; }
void SetSpeed(double factor) {
  // What ran so far stays as it was.
  const timespec now = RealTime(CLOCK_MONOTONIC);
  const double ahead = AheadOfRealTime(now);
  s_speed = factor;
  Add(s_skipped, ahead - AheadOfRealTime(now));
}
void Advance(double seconds) { Add(s_skipped, seconds); }
void StepWallClock(double seconds) { Add(s_wall_step, seconds); }
void HoldWallClock(std::int64_t seconds, std::int64_t nanoseconds) {
  s_held.tv_sec = static_cast<time_t>(seconds);
  s_held.tv_nsec = static_cast<long>(nanoseconds);
  s_wall_held = true;
}
double Seconds() {
  const timespec now = RealTime(CLOCK_MONOTONIC);
  return ::Seconds(now) + (s_system ? 0.0 : AheadOfRealTime(now));
}
double SecondsSlept() { return s_slept; }
bool IsSleeping() { return s_sleeping; }
int SleepCalls() { return s_sleep_calls; }
unsigned LastSleep() { return s_last_sleep; }

}  // namespace stand_in_clock

extern "C" {

int clock_gettime(clockid_t clock, timespec* time) noexcept {
  if (!FromLibrary(__builtin_return_address(0))) {
    return static_cast<int>(syscall(SYS_clock_gettime, clock, time));
  }
  const timespec now = RealTime(CLOCK_MONOTONIC);
  *time = Shifted(clock == CLOCK_MONOTONIC ? now : RealTime(clock), AheadOfRealTime(now));
  if (clock == CLOCK_REALTIME) {
    *time = s_wall_held ? s_held : Shifted(*time, s_wall_step);
  }
  return 0;
}

int nanosleep(const timespec* length, timespec* left) {
  if (!FromLibrary(__builtin_return_address(0))) {
    return static_cast<int>(syscall(SYS_nanosleep, length, left));
  }
  Add(s_slept, Seconds(*length));
  Add(s_skipped, Seconds(*length));
  return 0;
}

unsigned int sleep(unsigned int seconds) {
  const bool from_library = FromLibrary(__builtin_return_address(0));
  if (from_library || s_system) {
    ++s_sleep_calls;
    s_last_sleep = seconds;
  }
  if (!from_library) {
    timespec rest = {static_cast<time_t>(seconds), 0};
    s_sleeping = true;
    const bool whole = syscall(SYS_nanosleep, &rest, &rest) == 0;
    s_sleeping = false;
    if (whole) return 0;
    return static_cast<unsigned>(rest.tv_sec);
  }
  Add(s_slept, seconds);
  Add(s_skipped, seconds);
  return 0;
}

}  // extern "C"
