#include <dlfcn.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "tests/failures/calls.h"
#include "tests/failures/world.h"

namespace failures {
namespace {

const Import& Row(std::string_view name) { return *FindImport(name); }

int Fail(Way way, int error) {
  if (way == kInterrupted) Pass(0.01);
  errno = way == kInterrupted ? EINTR : error;
  return -1;
}

bool DiscardsInput(int queue) { return queue == TCIFLUSH || queue == TCIOFLUSH; }

void* Held(void* block) {
  if (block != nullptr) TheWorld().blocks.insert(block);
  return block;
}

double Seconds(const timespec& length) {
  return static_cast<double>(length.tv_sec) + static_cast<double>(length.tv_nsec) / 1e9;
}

timespec Length(double seconds) {
  const auto whole = static_cast<time_t>(seconds);
  return {whole, static_cast<long>((seconds - static_cast<double>(whole)) * 1e9)};
}

}  // namespace

int Poll(pollfd* waits, nfds_t count, int milliseconds) {
  if (!IsRunning()) return poll(waits, count, milliseconds);
  static const Import& row = Row("poll");
  if (const Way way = NextWay(row, false)) return Fail(way, ENOMEM);
  World& world = TheWorld();
  const bool writes = (waits->events & POLLOUT) != 0;
  waits->revents = writes || !world.arrived.empty() ? waits->events : short{0};
  if (writes) world.taken = 0;
  if (waits->revents != 0) return 1;
  Pass(milliseconds / 1000.0);
  return 0;
}

int Tcgetattr(int fd, termios* settings) {
  if (!IsRunning()) return tcgetattr(fd, settings);
  static const Import& row = Row("tcgetattr");
  if (const Way way = NextWay(row, false)) return Fail(way, EIO);
  return tcgetattr(fd, settings);
}

int Tcsetattr(int fd, int action, const termios* settings) {
  if (!IsRunning()) return tcsetattr(fd, action, settings);
  static const Import& row = Row("tcsetattr");
  if (const Way way = NextWay(row, false)) {
    World& world = TheWorld();
    world.restoring_refused |= way == kError && SameSettings(*settings, world.first_settings);
    return Fail(way, EIO);
  }
  if (action == TCSAFLUSH) TheWorld().arrived.clear();
  return tcsetattr(fd, action, settings);
}

int Tcflush(int fd, int queue) {
  if (!IsRunning()) return tcflush(fd, queue);
  static const Import& row = Row("tcflush");
  if (const Way way = NextWay(row, false)) return Fail(way, EIO);
  if (DiscardsInput(queue)) TheWorld().arrived.clear();
  return tcflush(fd, queue);
}

// The library asks with one pointer.
int Ioctl(int fd, unsigned long request, ...) {
  va_list arguments;
  va_start(arguments, request);
  void* const value = va_arg(arguments, void*);
  va_end(arguments);
  if (!IsRunning()) return ioctl(fd, request, value);
  static const Import& row = Row("ioctl");
  if (const Way way = NextWay(row, false)) return Fail(way, EIO);
  return ioctl(fd, request, value);
}

// Standard output is the terminal that the reader stands behind.
int TtynameR(int fd, char* name, std::size_t size) {
  if (!IsRunning() || fd != STDOUT_FILENO) return ttyname_r(fd, name, size);
  static const Import& row = Row("ttyname_r");
  if (NextWay(row, false) != kNone) return ENOTTY;
  const std::string& path = TheWorld().tty.path();
  if (path.size() >= size) return ERANGE;
  std::memcpy(name, path.c_str(), path.size() + 1);
  return 0;
}

void* Malloc(std::size_t size) {
  if (!IsRunning()) return std::malloc(size);
  static const Import& row = Row("malloc");
  if (const Way way = NextWay(row, false)) {
    Fail(way, ENOMEM);
    return nullptr;
  }
  return Held(std::malloc(size));
}

void* Calloc(std::size_t count, std::size_t size) {
  if (!IsRunning()) return std::calloc(count, size);
  static const Import& row = Row("calloc");
  if (const Way way = NextWay(row, false)) {
    Fail(way, ENOMEM);
    return nullptr;
  }
  return Held(std::calloc(count, size));
}

void Free(void* block) {
  if (IsRunning() && block != nullptr && TheWorld().blocks.erase(block) == 0) {
    TheWorld().misuse.emplace_back("frees a block that it does not hold");
    return;
  }
  std::free(block);
}

void* Dlopen(const char* path, int flags) {
  if (!IsRunning()) return dlopen(path, flags);
  static const Import& row = Row("dlopen");
  if (NextWay(row, false) != kNone) return nullptr;
  void* const library = dlopen(path, flags);
  if (library != nullptr) TheWorld().libraries.insert(library);
  return library;
}

void* Dlsym(void* library, const char* name) {
  if (!IsRunning()) return dlsym(library, name);
  static const Import& row = Row("dlsym");
  return NextWay(row, false) == kNone ? dlsym(library, name) : nullptr;
}

int Dlclose(void* library) {
  if (!IsRunning()) return dlclose(library);
  static const Import& row = Row("dlclose");
  const Way way = NextWay(row, false);
  if (TheWorld().libraries.erase(library) == 0) {
    TheWorld().misuse.emplace_back("closes a library that it does not hold");
    return -1;
  }
  const int result = dlclose(library);
  return way == kNone ? result : -1;
}

// Both clocks run from a fixed time on.
int ClockGettime(clockid_t clock, timespec* time) {
  if (!IsRunning()) return clock_gettime(clock, time);
  static const Import& row = Row("clock_gettime");
  if (const Way way = NextWay(row, false)) return Fail(way, EPERM);
  constexpr std::int64_t kSecond = 1'000'000'000;
  const std::int64_t start = clock == CLOCK_REALTIME ? 1'700'000'000 : 300'000;
  const std::int64_t now = TheWorld().nanoseconds;
  *time = {static_cast<time_t>(start + now / kSecond), static_cast<long>(now % kSecond)};
  return 0;
}

int Nanosleep(const timespec* length, timespec* left) {
  if (!IsRunning()) return nanosleep(length, left);
  static const Import& row = Row("nanosleep");
  const Way way = NextWay(row, false);
  const double slept = way == kNone          ? Seconds(*length)
                       : way == kInterrupted ? Seconds(*length) / 2
                                             : 0;
  if (way == kInterrupted) *left = Length(Seconds(*length) - slept);
  Pass(slept);
  return way == kNone ? 0 : Fail(way, EINVAL);
}

unsigned Sleep(unsigned seconds) {
  if (!IsRunning()) return sleep(seconds);
  static const Import& row = Row("sleep");
  const bool cut = NextWay(row, false) != kNone;
  Pass(cut ? seconds / 2.0 : seconds);
  return cut ? (seconds + 1) / 2 : 0;
}

tm* LocaltimeR(const time_t* time, tm* local) {
  if (!IsRunning()) return localtime_r(time, local);
  static const Import& row = Row("localtime_r");
  if (const Way way = NextWay(row, true)) {
    Fail(way, EOVERFLOW);
    return nullptr;
  }
  return localtime_r(time, local);
}

}  // namespace failures
