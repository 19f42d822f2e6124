#include "fuzz/scripted_tty.h"

#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstring>

#include "fuzz/check.h"
#include "fuzz/virtual_clock.h"

namespace {

enum class Fault : std::uint8_t { kNone, kOpen, kGetSettings, kSetSettings, kCalls };

constexpr std::int64_t kTick = 100'000;  // VTIME: a read returns after 0.1 s
constexpr int kNoDescriptor = -1;

Input* s_script;
ScriptedCard* s_card;
Fault s_fault;
int s_fd = kNoDescriptor;  // a real one, of /dev/null, so that no other file gets the number
int s_open;                // opens without their close
termios s_settings;
bool s_were_set;
std::int64_t s_full_until, s_stalled;

bool IsTty(int fd) { return s_script != nullptr && virtual_clock::Runs() && fd == s_fd && fd >= 0; }

// The settings before anything opens the port.
termios FirstSettings() {
  termios settings;
  std::memset(&settings, 0, sizeof settings);
  settings.c_iflag = ICRNL | IXON;
  settings.c_cflag = B9600 | CS7 | CREAD;
  settings.c_lflag = ICANON | ECHO;
  settings.c_cc[VINTR] = 3;
  return settings;
}

bool SameSettings(const termios& a, const termios& b) {
  return a.c_iflag == b.c_iflag && a.c_oflag == b.c_oflag && a.c_cflag == b.c_cflag &&
         a.c_lflag == b.c_lflag && std::memcmp(a.c_cc, b.c_cc, sizeof a.c_cc) == 0;
}

int Failed(int error) {
  errno = error;
  return -1;
}

}  // namespace

namespace scripted_tty {

void Plug(Input* script, ScriptedCard* card) {
  s_card = card;
  s_fd = kNoDescriptor;
  s_open = 0;
  s_settings = FirstSettings();
  s_were_set = false;
  s_full_until = s_stalled = 0;
  // Three in four lines are good.
  const int choice = script->Byte() % 16;
  s_fault = choice < 12 ? Fault::kNone : static_cast<Fault>(choice - 11);
  s_script = script;
}

void Unplug() {
  s_script = nullptr;
  s_card = nullptr;
}

int OpenDescriptors() { return s_open; }
std::int64_t Stalled() { return s_stalled; }
bool Flawless() { return s_fault == Fault::kNone; }

}  // namespace scripted_tty

extern "C" {

int __real_open(const char* path, int flags, ...);
int __real_close(int fd);
ssize_t __real_read(int fd, void* buffer, size_t size);
ssize_t __real_write(int fd, const void* data, size_t size);
int __real_poll(pollfd* fds, nfds_t count, int milliseconds);
int __real_fcntl(int fd, int command, ...);
int __real_tcgetattr(int fd, termios* settings);
int __real_tcsetattr(int fd, int action, const termios* settings);
int __real_tcflush(int fd, int queue);

int __wrap_open(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): it was started.
  const unsigned mode = (flags & O_CREAT) != 0 ? va_arg(arguments, unsigned) : 0;
  va_end(arguments);
  const bool scripted = s_script != nullptr && virtual_clock::Runs() && path != nullptr &&
                        std::strcmp(path, kScriptedTty) == 0;
  if (!scripted) return __real_open(path, flags, mode);
  virtual_clock::CountCall();
  if (s_fault == Fault::kOpen) return Failed(ENOENT);
  FUZZ_CHECK(s_open == 0);  // one link at a time
  s_fd = __real_open("/dev/null", O_RDWR | O_CLOEXEC);
  ++s_open;
  return s_fd;
}

int __wrap_close(int fd) {
  if (IsTty(fd)) {
    FUZZ_CHECK(s_open == 1);
    FUZZ_CHECK(!s_were_set || SameSettings(s_settings, FirstSettings()));
    --s_open;
    s_fd = kNoDescriptor;
  }
  return __real_close(fd);
}

ssize_t __wrap_read(int fd, void* buffer, size_t size) {
  if (!IsTty(fd)) return __real_read(fd, buffer, size);
  if (size == 0) return 0;
  std::memset(buffer, 0xEE, std::min<std::size_t>(size, 5000));  // it says that it has room
  if (s_card->HungUp()) {
    virtual_clock::Wait(1);
    return 0;
  }
  if (const int fault = s_card->TakeFault()) {
    virtual_clock::Wait(0);
    return Failed(fault);
  }
  virtual_clock::Wait(s_card->UntilNext(kTick));
  const Bytes bytes = s_card->Give(size);
  if (!bytes.empty()) std::memcpy(buffer, bytes.data(), bytes.size());
  return static_cast<ssize_t>(bytes.size());
}

ssize_t __wrap_write(int fd, const void* data, size_t size) {
  if (!IsTty(fd)) return __real_write(fd, data, size);
  virtual_clock::CountCall();
  if (s_card->HungUp()) return Failed(EIO);
  std::size_t taken = size;
  if (s_fault == Fault::kCalls) {
    if (virtual_clock::Microseconds() < s_full_until) return Failed(EAGAIN);
    switch (s_script->Byte() % 8) {
      case 1:
        taken = (size + 1) / 2;
        break;
      case 2:
        return Failed(EINTR);
      case 3:
        s_full_until = virtual_clock::Microseconds() + s_script->Byte() * std::int64_t{30'000};
        return Failed(EAGAIN);
      case 4:
        return Failed(EIO);
      case 5:
        taken = 0;
        break;
      default:
        break;
    }
  }
  s_card->Receive(static_cast<const std::uint8_t*>(data), taken);
  return static_cast<ssize_t>(taken);
}

int __wrap_poll(pollfd* fds, nfds_t count, int milliseconds) {
  if (count != 1 || !IsTty(fds[0].fd)) return __real_poll(fds, count, milliseconds);
  const std::int64_t limit = milliseconds * std::int64_t{1000};
  fds[0].revents = 0;
  if (s_fault == Fault::kCalls) {
    switch (s_script->Byte() % 16) {
      case 1:
        virtual_clock::Wait(limit / 2);
        return Failed(EINTR);
      case 2:
        virtual_clock::Wait(0);
        return Failed(ENOMEM);
      default:
        break;
    }
  }
  if ((fds[0].events & POLLOUT) != 0) {
    const std::int64_t left = s_full_until - virtual_clock::Microseconds();
    const std::int64_t wait = std::clamp<std::int64_t>(left, 0, limit);
    s_stalled += wait;
    virtual_clock::Wait(wait);
    if (left > limit) return 0;
    fds[0].revents = POLLOUT;
    return 1;
  }
  // A read tells of these at once.
  if (s_card->HungUp() || s_card->HasFault()) {
    fds[0].revents = POLLIN | POLLHUP;
    return 1;
  }
  const std::int64_t wait = s_card->UntilNext(limit);
  virtual_clock::Wait(wait);
  if (wait == limit) return 0;
  fds[0].revents = POLLIN;
  return 1;
}

int __wrap_fcntl(int fd, int command, ...) {
  va_list arguments;
  va_start(arguments, command);
  const long argument = va_arg(arguments, long);
  va_end(arguments);
  if (IsTty(fd)) virtual_clock::CountCall();
  return __real_fcntl(fd, command, argument);
}

int __wrap_tcgetattr(int fd, termios* settings) {
  if (!IsTty(fd)) return __real_tcgetattr(fd, settings);
  if (s_fault == Fault::kGetSettings) return Failed(EIO);
  *settings = s_settings;
  return 0;
}

int __wrap_tcsetattr(int fd, int action, const termios* settings) {
  if (!IsTty(fd)) return __real_tcsetattr(fd, action, settings);
  if (s_fault == Fault::kSetSettings) return Failed(EIO);
  s_settings = *settings;
  s_were_set = true;
  return 0;
}

int __wrap_tcflush(int fd, int queue) {
  if (!IsTty(fd)) return __real_tcflush(fd, queue);
  virtual_clock::CountCall();
  return 0;
}

}  // extern "C"
