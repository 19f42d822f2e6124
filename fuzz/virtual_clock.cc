#include "fuzz/virtual_clock.h"

#include <time.h>

#include <utility>

namespace {

// Of the thread that runs the session: the fuzzer's own threads go by the system's clock.
thread_local bool s_runs;
std::int64_t s_now;  // microseconds
std::int64_t s_calls;
std::function<void()> s_at_wait;

constexpr std::int64_t kStart = 1'700'000'000'000'000;  // some day
constexpr std::int64_t kSecond = 1'000'000;

}  // namespace

namespace virtual_clock {

void Start(std::function<void()> at_wait) {
  s_now = kStart;
  s_calls = 0;
  s_at_wait = std::move(at_wait);
  s_runs = true;
}

void Stop() {
  s_runs = false;
  s_at_wait = nullptr;
}

bool Runs() { return s_runs; }
std::int64_t Microseconds() { return s_now - kStart; }
void Pass(std::int64_t microseconds) { s_now += microseconds; }
void CountCall() { ++s_calls; }
std::int64_t Calls() { return s_calls; }

void Wait(std::int64_t microseconds) {
  CountCall();
  if (s_at_wait) s_at_wait();
  Pass(microseconds);
}

}  // namespace virtual_clock

extern "C" {

int __real_clock_gettime(clockid_t clock, timespec* time);
int __real_nanosleep(const timespec* length, timespec* left);
unsigned __real_sleep(unsigned seconds);

int __wrap_clock_gettime(clockid_t clock, timespec* time) {
  if (!s_runs) return __real_clock_gettime(clock, time);
  ++s_now;
  time->tv_sec = static_cast<time_t>(s_now / kSecond);
  time->tv_nsec = static_cast<long>(s_now % kSecond * 1000);
  return 0;
}

int __wrap_nanosleep(const timespec* length, timespec* left) {
  if (!s_runs) return __real_nanosleep(length, left);
  virtual_clock::Wait(length->tv_sec * kSecond + length->tv_nsec / 1000);
  return 0;
}

unsigned __wrap_sleep(unsigned seconds) {
  if (!s_runs) return __real_sleep(seconds);
  virtual_clock::Wait(seconds * kSecond);
  return 0;
}

}  // extern "C"
