// A process that leads its session and has no terminal, as a service does, when the reader is
// pulled: what SECURITY.md says under "Running as a service".
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "quillonid/quillonid.h"
#include "simulator/tty_reader.h"
#include "tests/testing/stand_in_clock.h"

namespace {

enum class Preparation { kNone, kIgnoresTheSignal, kReadsInAChild, kHoldsATerminal };

constexpr int kNoFailure = 90;   // exit status: the read of the pulled reader succeeded
constexpr int kNotAgain = 91;    // a read of the next reader failed
constexpr int kNoTerminal = 92;  // it could not take one

int Read(const char* device) {
  PERSONINFO_COLLECT record = {};
  return APP_ID_ReadCollectIDCard(device, "", 115200, 3, nullptr, &record);
}

// Reads the reader that is pulled, then another. The status is the first read's code without its
// sign.
[[noreturn]] void ReadTwice(const char* pulled, const char* next) {
  const int result = Read(pulled);
  if (result == 0) _exit(kNoFailure);
  if (Read(next) != 0) _exit(kNotAgain);
  _exit(-result);
}

[[noreturn]] void Serve(Preparation preparation, const char* pulled, const char* next) {
  setsid();
  if (preparation == Preparation::kIgnoresTheSignal) signal(SIGHUP, SIG_IGN);
  if (preparation == Preparation::kHoldsATerminal) {
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
    if (grantpt(terminal) != 0 || unlockpt(terminal) != 0) _exit(kNoTerminal);
    const int line = open(ptsname(terminal), O_RDWR | O_NOCTTY);
    if (ioctl(line, TIOCSCTTY, 0) != 0) _exit(kNoTerminal);
  }
  if (preparation == Preparation::kReadsInAChild) {
    const pid_t child = fork();
    if (child == 0) ReadTwice(pulled, next);
    int status = 0;
    waitpid(child, &status, 0);
    if (WIFSIGNALED(status)) raise(WTERMSIG(status));
    _exit(WEXITSTATUS(status));
  }
  ReadTwice(pulled, next);
}

// The wait status of a service whose reader is pulled while it reads.
int StatusWhenPulled(Preparation preparation) {
  stand_in_clock::UseSystemClock();
  int names[2];
  if (pipe(names) != 0) abort();
  // Started before there is a reader, whose far end it must not hold open.
  const pid_t service = fork();
  if (service == 0) {
    signal(SIGHUP, SIG_DFL);
    char pulled[64] = {};
    char next[64] = {};
    if (read(names[0], pulled, sizeof pulled) != sizeof pulled) _exit(1);
    if (read(names[0], next, sizeof next) != sizeof next) _exit(1);
    Serve(preparation, pulled, next);
  }
  simulator::TtyReader pulled;
  simulator::TtyReader next;
  next.PutCard(simulator::MakeCard("resident"));
  for (const simulator::TtyReader* reader : {&pulled, &next}) {
    std::string name = reader->path();
    name.resize(64);
    if (write(names[1], name.data(), name.size()) != 64) abort();
  }
  EXPECT_TRUE(pulled.WaitForRequests(1, 20'000));

  pulled.HangUp();

  int status = 0;
  waitpid(service, &status, 0);
  close(names[0]);
  close(names[1]);
  return status;
}

// Whether it ended by itself, with a published code of the read that failed.
bool GoesOn(Preparation preparation) {
  const int status = StatusWhenPulled(preparation);
  EXPECT_FALSE(WIFSIGNALED(status)) << WTERMSIG(status);
  const int code = WIFEXITED(status) ? WEXITSTATUS(status) : 0;
  return code >= 1 && code <= 13;
}

}  // namespace

TEST(SessionLeader, IsEndedByTheHangUpOfTheReader) {
  const int status = StatusWhenPulled(Preparation::kNone);

  EXPECT_TRUE(WIFSIGNALED(status)) << WEXITSTATUS(status);
  EXPECT_EQ(SIGHUP, WTERMSIG(status));
}

TEST(SessionLeader, ReadsOnWhenItIgnoresTheSignal) {
  EXPECT_TRUE(GoesOn(Preparation::kIgnoresTheSignal));
}

TEST(SessionLeader, ReadsOnInAChild) { EXPECT_TRUE(GoesOn(Preparation::kReadsInAChild)); }

TEST(SessionLeader, ReadsOnWithATerminalOfItsOwn) {
  EXPECT_TRUE(GoesOn(Preparation::kHoldsATerminal));
}
