// Waits for a terminal that is slow, stuck, or in a process with a timer. poll() and the length of
// the output queue are played here; each call of poll() moves the library's clock on.
#include "support/terminal_wait.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/ioctl.h>

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <functional>

#include "tests/testing/stand_in_clock.h"

namespace {

constexpr int kTerminal = 1'000'000;  // no descriptor of this process

std::function<int(int)> s_poll;  // from the milliseconds that it may wait to poll's result
int s_polls;
int s_queued;

int Interrupt() {
  errno = EINTR;
  return -1;
}

// A wait that nothing ends.
int WaitInVain(int milliseconds) {
  stand_in_clock::Advance(milliseconds / 1000.0);
  return 0;
}

}  // namespace

extern "C" int poll(pollfd* /*files*/, nfds_t /*count*/, int milliseconds) {
  ++s_polls;
  return s_poll(milliseconds);
}

extern "C" int ioctl(int fd, unsigned long request, ...) noexcept {
  if (fd != kTerminal || request != TIOCOUTQ) return -1;
  va_list arguments;
  va_start(arguments, request);
  *va_arg(arguments, int*) = s_queued;
  va_end(arguments);
  return 0;
}

TEST(WaitForTerminal, WaitsItsTimeThroughAnyNumberOfSignals) {
  s_poll = [](int) {
    stand_in_clock::Advance(0.0001);
    return Interrupt();
  };
  const double start = stand_in_clock::Seconds();

  EXPECT_EQ(0, WaitForTerminal(kTerminal, POLLIN, 1000));

  EXPECT_LE(1, stand_in_clock::Seconds() - start);
}

TEST(WaitForTerminal, WaitsForTheRestAfterASignal) {
  int asked_last = 0;
  s_poll = [&](int milliseconds) {
    asked_last = milliseconds;
    stand_in_clock::Advance(0.3);
    return s_polls < 3 ? Interrupt() : 1;
  };

  EXPECT_EQ(1, WaitForTerminal(kTerminal, POLLIN, 1000));

  EXPECT_EQ(3, s_polls);
  EXPECT_GE(400, asked_last);
  EXPECT_LE(300, asked_last);
}

TEST(WaitForTerminal, EndsWhereTheClockStandsStill) {
  stand_in_clock::SetSpeed(0);
  s_poll = [](int) { return Interrupt(); };

  EXPECT_EQ(0, WaitForTerminal(kTerminal, POLLIN, 1000));

  EXPECT_EQ(1000, s_polls);
}

TEST(WaitForTerminal, EndsAtAFailure) {
  s_poll = [](int) {
    errno = EBADF;
    return -1;
  };

  EXPECT_EQ(-1, WaitForTerminal(kTerminal, POLLIN, 1000));

  EXPECT_EQ(1, s_polls);
}

TEST(Patience, EndsWithoutProgress) {
  Patience patience(500, 10'000);

  stand_in_clock::Advance(0.4);
  EXPECT_FALSE(patience.IsOver());
  patience.SeeProgress();
  stand_in_clock::Advance(0.4);
  EXPECT_FALSE(patience.IsOver());
  stand_in_clock::Advance(0.2);
  EXPECT_FALSE(patience.IsOver());  // The process may have been held up.
  EXPECT_TRUE(patience.IsOver());
}

TEST(Patience, EndsInSpiteOfProgress) {
  Patience patience(500, 10'000);
  for (int i = 0; i < 24; ++i) {
    stand_in_clock::Advance(0.4);
    EXPECT_FALSE(patience.IsOver());
    patience.SeeProgress();
  }

  stand_in_clock::Advance(0.48);
  EXPECT_TRUE(patience.IsOver());
}

TEST(WaitForRoom, GoesOnAsLongAsTheQueueGetsShorter) {
  s_queued = 4096;
  s_poll = [](int milliseconds) {
    if (s_polls % 40 == 0) s_queued -= 100;  // every four seconds
    return s_queued < 256 ? 1 : WaitInVain(milliseconds);
  };
  Patience patience(5000, 200'000);

  EXPECT_TRUE(WaitForRoom(kTerminal, patience, nullptr));

  EXPECT_GT(256, s_queued);
}

TEST(WaitForRoom, LooksOnceMoreInAProcessThatWasHeldUp) {
  s_poll = [](int) { return 1; };
  Patience patience(500, 10'000);
  stand_in_clock::Advance(0.6);

  EXPECT_TRUE(WaitForRoom(kTerminal, patience, nullptr));
  EXPECT_FALSE(WaitForRoom(kTerminal, patience, nullptr));

  EXPECT_EQ(1, s_polls);
}

TEST(WaitForRoom, EndsWhereTheQueueStays) {
  s_queued = 4096;
  s_poll = WaitInVain;
  Patience patience(5000, 200'000);
  const double start = stand_in_clock::Seconds();

  EXPECT_FALSE(WaitForRoom(kTerminal, patience, nullptr));

  EXPECT_LE(5, stand_in_clock::Seconds() - start);
  EXPECT_GE(7, stand_in_clock::Seconds() - start);
}

TEST(WaitForRoom, EndsWhereTheClockStandsStill) {
  stand_in_clock::SetSpeed(0);
  s_poll = [](int) { return 0; };
  Patience patience(5000, 10'000);

  EXPECT_FALSE(WaitForRoom(kTerminal, patience, nullptr));

  EXPECT_EQ(1000, s_polls);
}

TEST(WaitForRoom, EndsWithinATenthOfASecondOfACancel) {
  std::atomic<int> cancel = 0;
  s_poll = [&](int milliseconds) {
    EXPECT_GE(100, milliseconds);
    if (s_polls == 3) cancel = 1;
    return WaitInVain(milliseconds);
  };
  Patience patience(5000, 10'000);

  EXPECT_FALSE(WaitForRoom(kTerminal, patience, &cancel));

  EXPECT_EQ(3, s_polls);
}
