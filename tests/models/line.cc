#include "tests/models/line.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdarg>
#include <cstring>
#include <string_view>

#include "quillonid/transport.h"
#include "tests/testing/hex_text.h"
#include "tests/testing/stand_in_clock.h"

namespace {

double s_started;
termios s_settings;

// The C library's own function of that name.
template <typename Function>
Function* Real(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

void CancelIfDue() {
  std::int64_t& at = line::Now().cancel_at;
  if (at < 0 || line::Milliseconds() < at) return;
  at = -1;
  COMM_Com_CancelLinuxRead();
}

void WaitUntil(std::int64_t time) {
  const std::int64_t cancel = line::Now().cancel_at;
  const auto advance_to = [](std::int64_t to) {
    const double left = s_started + static_cast<double>(to) / 1000 - stand_in_clock::Seconds();
    if (left > 0) stand_in_clock::Advance(left);
  };
  if (cancel >= 0 && cancel <= time) advance_to(cancel);
  CancelIfDue();
  advance_to(time);
}

bool HasArrived() {
  const auto& arrivals = line::Now().arrivals;
  return !arrivals.empty() && arrivals.front().at <= line::Milliseconds();
}

int RateOf(const termios& settings) {
  constexpr int kRates[] = {300, 1200, 2400, 4800, 9600, 19200, 38400, 57600, 115200, 230400};
  constexpr speed_t kCodes[] = {B300,   B1200,  B2400,  B4800,   B9600,
                                B19200, B38400, B57600, B115200, B230400};
  const auto* const code = std::find(std::begin(kCodes), std::end(kCodes), cfgetospeed(&settings));
  return code == std::end(kCodes) ? -1 : kRates[code - std::begin(kCodes)];
}

void Note(const std::string& event) { line::Now().events.push_back(event); }

}  // namespace

namespace line {

State& Now() {
  static State state;
  return state;
}

void Start(int phase) {
  stand_in_clock::SetSpeed(0);
  const double now = stand_in_clock::Seconds();
  stand_in_clock::Advance(std::ceil(now) - now + phase / 1000.0);
  s_started = stand_in_clock::Seconds();
  Now() = State();
  std::memset(&s_settings, 0, sizeof s_settings);
  cfsetspeed(&s_settings, B300);
}

std::int64_t Milliseconds() { return std::llround((stand_in_clock::Seconds() - s_started) * 1000); }

}  // namespace line

extern "C" {

int open(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const unsigned mode = (flags & O_CREAT) != 0 ? va_arg(arguments, unsigned) : 0;
  va_end(arguments);
  if (!std::string_view(path).starts_with("/dev")) {
    static const auto real = Real<int(const char*, int, ...)>("open");
    return real(path, flags, mode);
  }
  Note("open " + std::string(path));
  errno = ENOENT;
  return line::Now().opens ? line::kDescriptor : -1;
}

int close(int fd) {
  static const auto real = Real<decltype(close)>("close");
  if (fd != line::kDescriptor) return real(fd);
  Note("close");
  return 0;
}

ssize_t read(int fd, void* buffer, size_t size) {
  static const auto real = Real<decltype(read)>("read");
  if (fd != line::kDescriptor) return real(fd, buffer, size);
  if (size == 0) ++line::Now().empty_reads;
  if (size == 0 || !HasArrived()) return 0;
  line::Arrival& front = line::Now().arrivals.front();
  const int error = front.error;
  const std::size_t count = std::min(size, front.bytes.size());
  std::memcpy(buffer, front.bytes.data(), count);
  front.bytes.erase(0, count);
  if (front.bytes.empty()) line::Now().arrivals.pop_front();
  errno = error;
  return error != 0 ? -1 : static_cast<ssize_t>(count);
}

ssize_t write(int fd, const void* data, size_t size) {
  static const auto real = Real<decltype(write)>("write");
  if (fd != line::kDescriptor) return real(fd, data, size);
  line::State& now = line::Now();
  int taken = static_cast<int>(size);
  if (!now.writes.empty()) {
    taken = std::min(taken, now.writes.front());
    now.writes.pop_front();
  }
  errno = EIO;
  if (taken < 0) return -1;
  now.written.append(static_cast<const char*>(data), static_cast<std::size_t>(taken));
  if (now.notes_writes) Note("write " + HexText(data, static_cast<std::size_t>(taken)));
  if (!now.answers.empty()) {
    for (const std::string& piece : now.answers.front()) {
      now.arrivals.push_back({line::Milliseconds() + now.answer_after, piece});
    }
    now.answers.pop_front();
  }
  return taken;
}

int poll(pollfd* fds, nfds_t count, int milliseconds) {
  static const auto real = Real<decltype(poll)>("poll");
  if (count != 1 || fds[0].fd != line::kDescriptor) return real(fds, count, milliseconds);
  CancelIfDue();
  fds[0].revents = fds[0].events;
  if ((fds[0].events & POLLOUT) != 0 || HasArrived()) return 1;
  const std::int64_t limit = line::Milliseconds() + milliseconds;
  const auto& arrivals = line::Now().arrivals;
  WaitUntil(arrivals.empty() ? limit : std::min(limit, arrivals.front().at));
  return HasArrived() ? 1 : 0;
}

int tcgetattr(int fd, termios* settings) noexcept {
  static const auto real = Real<int(int, termios*)>("tcgetattr");
  if (fd != line::kDescriptor) return real(fd, settings);
  *settings = s_settings;
  return 0;
}

int tcsetattr(int fd, int action, const termios* settings) noexcept {
  static const auto real = Real<int(int, int, const termios*)>("tcsetattr");
  if (fd != line::kDescriptor) return real(fd, action, settings);
  s_settings = *settings;
  Note("rate " + std::to_string(RateOf(s_settings)));
  return 0;
}

int tcflush(int fd, int queue) noexcept {
  static const auto real = Real<int(int, int)>("tcflush");
  return fd == line::kDescriptor ? 0 : real(fd, queue);
}

}  // extern "C"
