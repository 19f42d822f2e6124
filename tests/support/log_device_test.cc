// A terminal of the log file's name that fails when it is written to: a real one that is pulled no
// longer opens, and only the line that is on its way then meets the failure.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "tests/support/still_log.h"
#include "tests/testing/pty.h"

namespace {

int s_failures;  // that the next writes to a terminal meet
int s_writes;    // to a terminal

}  // namespace

extern "C" ssize_t write(int fd, const void* data, std::size_t size) {
  static const auto real = reinterpret_cast<decltype(write)*>(dlsym(RTLD_NEXT, "write"));
  if (s_failures == 0 || isatty(fd) == 0) return real(fd, data, size);
  ++s_writes;
  --s_failures;
  errno = EIO;
  return -1;
}

TEST(Logging, GivesUpATerminalThatFails) {
  NEEDS_PRIVATE_ROOT();
  const Pty terminal;
  StartLog();
  std::filesystem::create_symlink(terminal.path(), kLogFile);
  s_failures = 1000;

  DPrintLogToFile("one");

  s_failures = 0;
  EXPECT_EQ(1, s_writes);
}
