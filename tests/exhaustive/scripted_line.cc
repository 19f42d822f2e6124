#include "tests/exhaustive/scripted_line.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <vector>

#include "tests/testing/hex_text.h"
#include "tests/testing/pty.h"

namespace {

dev_t s_device;         // of the tty; 0: no line yet
std::string s_pending;  // answered and not read yet
std::string s_reply;
int s_read_commands;

std::string Bytes(const std::string& hex) {
  const std::vector<std::uint8_t> bytes = FromHex(hex);
  return {bytes.begin(), bytes.end()};
}

bool IsLine(int fd) {
  struct stat status = {};
  return s_device != 0 && fstat(fd, &status) == 0 && status.st_rdev == s_device;
}

// The two bytes behind the length tell a command.
void Respond(const std::string& command) {
  static const std::string kSearch = Bytes("20 01");
  static const std::string kSelect = Bytes("20 02");
  static const std::string kFound = Bytes("AA AA AA 96 69 00 08 00 00 9F 00 00 00 00 97");
  static const std::string kSelected =
      Bytes("AA AA AA 96 69 00 0C 00 00 90 00 00 00 00 00 00 00 00 9C");
  if (command.size() < 9) return;
  const std::string code = command.substr(7, 2);
  if (code == kSearch) {
    s_pending += kFound;
  } else if (code == kSelect) {
    s_pending += kSelected;
  } else if (code[0] == 0x30) {
    ++s_read_commands;
    s_pending += s_reply;
  }
}

template <typename Function>
Function* Real(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

namespace scripted_line {

std::string Open() {
  static const auto pty = std::make_unique<Pty>();
  struct stat status = {};
  if (stat(pty->path().c_str(), &status) == 0) s_device = status.st_rdev;
  return pty->path();
}

void HoldCard(const std::string& reply) {
  s_pending.clear();
  s_reply = reply;
  s_read_commands = 0;
}

int ReadCommands() { return s_read_commands; }

}  // namespace scripted_line

extern "C" {

ssize_t read(int fd, void* buffer, std::size_t size) {
  static const auto real = Real<decltype(read)>("read");
  if (!IsLine(fd)) return real(fd, buffer, size);
  const std::size_t count = std::min(size, s_pending.size());
  s_pending.copy(static_cast<char*>(buffer), count);
  s_pending.erase(0, count);
  return static_cast<ssize_t>(count);
}

// The line is never waited for: what is not there does not come.
int poll(pollfd* fds, nfds_t count, int milliseconds) {
  static const auto real = Real<decltype(poll)>("poll");
  if (count != 1 || !IsLine(fds->fd)) return real(fds, count, milliseconds);
  fds->revents = fds->events;
  return 1;
}

ssize_t write(int fd, const void* data, std::size_t size) {
  static const auto real = Real<decltype(write)>("write");
  if (!IsLine(fd)) return real(fd, data, size);
  Respond({static_cast<const char*>(data), size});
  return static_cast<ssize_t>(size);
}

}  // extern "C"
