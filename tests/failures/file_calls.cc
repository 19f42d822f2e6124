#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
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

bool IsForLog(const char* path) { return std::string_view(path).starts_with("/home/quillon/"); }

const File& FileOf(int fd) {
  static const File unknown = {false, false, false};
  const auto found = TheWorld().descriptors.find(fd);
  return found != TheWorld().descriptors.end() ? found->second : unknown;
}

// A failed call. `error` unless a signal came first.
int Fail(Way way, int error) {
  if (way == kInterrupted) Pass(0.01);  // At 100 signals a second.
  errno = way == kInterrupted ? EINTR : way == kBusy ? EAGAIN : error;
  return -1;
}

std::size_t Half(Way way, std::size_t size) {
  return way == kShort ? std::max<std::size_t>(size / 2, 1) : size;
}

// 0.1 s pass when nothing has arrived, as VTIME says.
ssize_t ReadLine(int fd, void* buffer, std::size_t size) {
  auto& arrived = TheWorld().arrived;
  if (arrived.empty() && size > 0) {
    if ((fcntl(fd, F_GETFL) & O_NONBLOCK) != 0) return Fail(kBusy, 0);
    Pass(0.1);
  }
  const std::size_t count = std::min(size, arrived.size());
  const auto end = arrived.begin() + static_cast<std::ptrdiff_t>(count);
  std::copy(arrived.begin(), end, static_cast<std::uint8_t*>(buffer));
  arrived.erase(arrived.begin(), end);
  return static_cast<ssize_t>(count);
}

int SpeedOf(const termios& settings) {
  const speed_t code = cfgetospeed(&settings);
  return code == B9600 ? 9600 : code == B115200 ? 115200 : 1;
}

// The reader answers before the write returns.
ssize_t WriteLine(const void* data, std::size_t size) {
  World& world = TheWorld();
  if (world.taken >= world.room) return Fail(kBusy, 0);
  size = std::min(size, world.room - world.taken);
  world.taken += size;
  const std::span bytes(static_cast<const std::uint8_t*>(data), size);
  for (const auto& exchange : world.module.Receive(bytes, SpeedOf(world.tty.Settings()))) {
    for (const auto& step : exchange.steps) {
      world.arrived.insert(world.arrived.end(), step.bytes.begin(), step.bytes.end());
    }
  }
  return static_cast<ssize_t>(size);
}

}  // namespace

int Open(const char* path, int flags, ...) {
  std::va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
  va_end(arguments);
  if (!IsRunning()) return open(path, flags, mode);

  static const Import& row = Row("open");
  const bool logging = IsForLog(path);
  if (const Way way = NextWay(row, logging)) return Fail(way, EMFILE);
  const int fd = open(path, flags, mode);
  if (fd < 0) return fd;
  const bool tty = isatty(fd) == 1;
  TheWorld().descriptors[fd] = {logging, tty, (flags & O_ACCMODE) != O_RDONLY};
  TheWorld().tty_was_open |= tty;
  return fd;
}

int Close(int fd) {
  if (!IsRunning()) return close(fd);
  static const Import& row = Row("close");
  const File file = FileOf(fd);
  const Way way = NextWay(row, file.logging);
  if (TheWorld().descriptors.erase(fd) == 0) {
    TheWorld().misuse.emplace_back("closes a descriptor that it does not hold");
    return -1;
  }
  // What was written is lost with it.
  if (way == kError && file.writing && !file.tty && ftruncate(fd, 0) != 0) std::abort();
  const int result = close(fd);
  return way == kNone ? result : Fail(way, EIO);
}

ssize_t Read(int fd, void* buffer, std::size_t size) {
  if (!IsRunning()) return read(fd, buffer, size);
  static const Import& row = Row("read");
  const Way way = NextWay(row, FileOf(fd).logging);
  if (way == kError || way == kInterrupted) return Fail(way, EIO);
  size = size == 0 ? 0 : Half(way, size);
  return FileOf(fd).tty ? ReadLine(fd, buffer, size) : read(fd, buffer, size);
}

ssize_t Write(int fd, const void* data, std::size_t size) {
  if (!IsRunning()) return write(fd, data, size);
  static const Import& row = Row("write");
  const bool tty = FileOf(fd).tty;
  const Way way = NextWay(row, FileOf(fd).logging, tty ? ~0U : ~unsigned{kBusy});
  if (way != kNone && way != kShort) return Fail(way, tty ? EIO : ENOSPC);
  return tty ? WriteLine(data, Half(way, size)) : write(fd, data, Half(way, size));
}

ssize_t Pread(int fd, void* buffer, std::size_t size, off_t offset) {
  if (!IsRunning()) return pread(fd, buffer, size, offset);
  static const Import& row = Row("pread");
  const Way way = NextWay(row, FileOf(fd).logging);
  if (way == kError || way == kInterrupted) return Fail(way, EIO);
  // Half of what there is: asking for half of a page brings the whole of a small file.
  const ssize_t got = pread(fd, buffer, size, offset);
  return way == kShort && got > 1 ? got / 2 : got;
}

ssize_t Pwrite(int fd, const void* data, std::size_t size, off_t offset) {
  if (!IsRunning()) return pwrite(fd, data, size, offset);
  static const Import& row = Row("pwrite");
  const Way way = NextWay(row, FileOf(fd).logging);
  if (way == kError || way == kInterrupted) return Fail(way, ENOSPC);
  return pwrite(fd, data, Half(way, size), offset);
}

int Ftruncate(int fd, off_t size) {
  if (!IsRunning()) return ftruncate(fd, size);
  static const Import& row = Row("ftruncate");
  if (const Way way = NextWay(row, FileOf(fd).logging)) return Fail(way, EIO);
  return ftruncate(fd, size);
}

int Stat(const char* path, struct stat* status) {
  if (!IsRunning()) return stat(path, status);
  static const Import& row = Row("stat");
  if (const Way way = NextWay(row, IsForLog(path))) return Fail(way, EACCES);
  return stat(path, status);
}

int Fstat(int fd, struct stat* status) {
  if (!IsRunning()) return fstat(fd, status);
  static const Import& row = Row("fstat");
  if (const Way way = NextWay(row, FileOf(fd).logging)) return Fail(way, EIO);
  return fstat(fd, status);
}

int Fcntl(int fd, int command, ...) {
  std::va_list arguments;
  va_start(arguments, command);
  const bool sets = command == F_SETFL || command == F_SETFD;
  const int value = sets ? va_arg(arguments, int) : 0;
  va_end(arguments);
  if (!IsRunning()) return fcntl(fd, command, value);
  static const Import& row = Row("fcntl");
  if (const Way way = NextWay(row, FileOf(fd).logging)) return Fail(way, EBADF);
  return fcntl(fd, command, value);
}

int Getrlimit(__rlimit_resource_t resource, rlimit* limit) {
  if (!IsRunning()) return getrlimit(resource, limit);
  static const Import& row = Row("getrlimit");
  if (const Way way = NextWay(row, true)) return Fail(way, EPERM);
  return getrlimit(resource, limit);
}

}  // namespace failures
