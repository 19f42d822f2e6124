// Reading from the serial port: ends, limits, cancel, and lines that misbehave.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <thread>
#include <utility>

#include "quillonid/results.h"
#include "quillonid/transport.h"
#include "tests/testing/hex_text.h"
#include "tests/testing/private_root.h"
#include "tests/testing/pty.h"
#include "tests/testing/signals.h"
#include "tests/testing/stand_in_clock.h"
#include "tests/transport/system_calls.h"

namespace {

class SerialRead : public testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(0, COMM_Com_OpenLinux(pty_.path().c_str(), 115200)); }
  int fd() const { return DescriptorsOn(pty_.path()).at(0); }

  Pty pty_;
};

int Never(const unsigned char*, int) { return -1; }

std::atomic<int> s_passes;
int CountPasses(const unsigned char*, int) {
  ++s_passes;
  return 1;
}

// Seconds of the library's clock: what it slept and what really went by.
double LibrarySeconds() {
  const std::chrono::duration<double> real = std::chrono::steady_clock::now().time_since_epoch();
  return stand_in_clock::SecondsSlept() + real.count();
}

double CpuSeconds() {
  rusage usage = {};
  getrusage(RUSAGE_SELF, &usage);
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

}  // namespace

TEST_F(SerialRead, ReturnsWantedBytesAsTheyAre) {
  std::string bytes(256, '\0');
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<char>(i);
  unsigned char reply[256] = {};
  pty_.Send(bytes);

  EXPECT_EQ(256, COMM_Com_ReadLinux(reply, 256, 5, nullptr));

  EXPECT_EQ(HexText(bytes), HexText(reply));
}

TEST_F(SerialRead, TakesNoMoreThanWanted) {
  unsigned char reply[8] = {};
  pty_.Send("abcdef");

  EXPECT_EQ(4, COMM_Com_ReadLinux(reply, 4, 5, nullptr));
  EXPECT_EQ("61 62 63 64 00 00 00 00", HexText(reply));

  EXPECT_EQ(2, COMM_Com_ReadLinux(reply, 2, 5, nullptr));
  EXPECT_EQ("65 66 63 64 00 00 00 00", HexText(reply));
}

TEST_F(SerialRead, CollectsBytesThatComeOneByOne) {
  unsigned char reply[3] = {};
  std::thread reader([&] {
    for (const char* byte : {"x", "y", "z"}) {
      std::this_thread::sleep_for(std::chrono::milliseconds(150));
      pty_.Send(byte);
    }
  });

  EXPECT_EQ(3, COMM_Com_ReadLinux(reply, 3, 60, nullptr));

  reader.join();
  EXPECT_EQ("78 79 7A", HexText(reply));
}

TEST_F(SerialRead, EndsAtTheEndCondition) {
  unsigned char reply[8] = {};
  pty_.Send("abc");

  EXPECT_EQ(3, COMM_Com_ReadLinux(reply, 8, 5, [](const unsigned char* buffer, int count) {
              return count == 3 && buffer[2] == 'c' ? 0 : 1;
            }));
}

TEST_F(SerialRead, ReturnsTheCountWhenTheFirstByteEndsIt) {
  unsigned char reply[8] = {};
  pty_.Send("a");

  EXPECT_EQ(1, COMM_Com_ReadLinux(reply, 8, 5, [](const unsigned char*, int count) {
              return count >= 1 ? 0 : -1;
            }));
}

TEST_F(SerialRead, AsksForWhatIsMissing) {
  unsigned char reply[8] = {};
  system_calls::Watch(fd());
  system_calls::ScriptReads({
      {3, 0}
  });
  pty_.Send("abcdefgh");

  EXPECT_EQ(8, COMM_Com_ReadLinux(reply, 8, 5, Never));

  const std::vector<std::string> expected = {"read 8", "read 5"};
  EXPECT_EQ(expected, system_calls::Noted());
}

TEST_F(SerialRead, AsksTheEndConditionAlsoWithoutBytes) {
  unsigned char reply[8] = {};

  EXPECT_EQ(0,
            COMM_Com_ReadLinux(reply, 8, 5, [](const unsigned char*, int count) { return count; }));
}

// wanted counts first: the end condition is not asked about a full buffer.
TEST_F(SerialRead, PrefersWantedToTheEndCondition) {
  unsigned char reply[3] = {};
  s_passes = 0;
  pty_.Send("abc");

  EXPECT_EQ(3, COMM_Com_ReadLinux(reply, 3, 5, CountPasses));

  EXPECT_EQ(0, s_passes);
}

TEST_F(SerialRead, ReturnsAtOnceWhenNothingIsWanted) {
  unsigned char reply[1] = {};
  s_passes = 0;

  EXPECT_EQ(0, COMM_Com_ReadLinux(reply, 0, 5, CountPasses));

  EXPECT_EQ(0, s_passes);
}

TEST_F(SerialRead, WaitsForNothingWhenNothingIsWanted) {
  stand_in_clock::UseSystemClock();
  unsigned char reply[1] = {};
  const auto start = std::chrono::steady_clock::now();

  for (int i = 0; i < 100; ++i) EXPECT_EQ(0, COMM_Com_ReadLinux(reply, 0, 5, nullptr));

  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(3));
}

TEST_F(SerialRead, RefusesANullBufferANegativeCountAndAClosedPort) {
  NEEDS_PRIVATE_ROOT();
  unsigned char reply[8] = {};
  pty_.Send("abc");
  SwitchLogging(true);

  EXPECT_EQ(RET_PUB_INVAL_PARAM, COMM_Com_ReadLinux(nullptr, 3, 5, nullptr));
  EXPECT_EQ(RET_PUB_INVAL_PARAM, COMM_Com_ReadLinux(reply, 0x80000000, 5, nullptr));
  EXPECT_EQ(RET_PUB_INVAL_PARAM, COMM_Com_ReadLinux(reply, 0xFFFFFFFF, 5, nullptr));
  COMM_Com_CloseLinux();
  EXPECT_EQ(RET_PUB_INVAL_PARAM, COMM_Com_ReadLinux(reply, 3, 5, nullptr));

  const std::string line = "  TIME  INFO:    CommDev:  [RET_PUB_INVAL_PARAM]  ";
  EXPECT_EQ(std::vector<std::string>(4, line), LogLines());
  EXPECT_EQ("00 00 00 00 00 00 00 00", HexText(reply));
}

TEST_F(SerialRead, LogsNothingOtherwise) {
  NEEDS_PRIVATE_ROOT();
  unsigned char reply[3] = {};
  pty_.Send("abc");
  SwitchLogging(true);

  EXPECT_EQ(3, COMM_Com_ReadLinux(reply, 3, 5, nullptr));

  EXPECT_TRUE(LogLines().empty());
}

namespace {

struct LimitCase {
  int timeout;
  double least, most;  // seconds; a pass of 0.1 s is added
};
void PrintTo(const LimitCase& tested, std::ostream* out) { *out << tested.timeout << " s"; }
class SerialReadLimit : public SerialRead, public testing::WithParamInterface<LimitCase> {};

}  // namespace

// On a line that was hung up every pass is a nap, which costs no real time.
TEST_P(SerialReadLimit, EndsBetweenTheLimitAndOneSecondMore) {
  unsigned char reply[8] = {};
  pty_.HangUp();
  const double before = LibrarySeconds();

  EXPECT_EQ(RET_PUB_TIMEOUT, COMM_Com_ReadLinux(reply, 8, GetParam().timeout, Never));

  const double taken = LibrarySeconds() - before;
  EXPECT_LT(GetParam().least - 0.01, taken);
  EXPECT_GT(GetParam().most + 0.2, taken);
}

INSTANTIATE_TEST_SUITE_P(Limits, SerialReadLimit,
                         testing::Values(LimitCase{0, 0, 1}, LimitCase{1, 1, 2}, LimitCase{3, 3, 4},
                                         LimitCase{120, 120, 121},
                                         // A negative limit counts as 1.
                                         LimitCase{-5, 1, 2}, LimitCase{INT32_MIN, 1, 2}),
                         [](const auto& tested) {
                           const std::int64_t limit = tested.param.timeout;
                           return limit < 0 ? "Minus" + std::to_string(-limit)
                                            : std::to_string(limit);
                         });

TEST_F(SerialRead, KeepsItsLimitOnASilentLine) {
  unsigned char reply[8] = {};
  stand_in_clock::SetSpeed(4);

  EXPECT_EQ(RET_PUB_TIMEOUT, COMM_Com_ReadLinux(reply, 8, 2, nullptr));
}

TEST_F(SerialRead, KeepsItsLimitWhileBytesTrickleIn) {
  unsigned char reply[4096] = {};
  std::atomic<bool> done = false;
  std::thread reader([&] {
    while (!done) {
      pty_.Send("x");
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
  });
  stand_in_clock::SetSpeed(10);

  EXPECT_EQ(RET_PUB_TIMEOUT, COMM_Com_ReadLinux(reply, 4096, 3, Never));

  done = true;
  reader.join();
}

TEST_F(SerialRead, PrefersACompleteMessageToTheLimit) {
  unsigned char reply[3] = {};
  pty_.Send("abc");

  EXPECT_EQ(3, COMM_Com_ReadLinux(reply, 8, 0, [](const unsigned char*, int count) {
              stand_in_clock::Advance(100);
              return count - 3;
            }));
}

// The wall clock may be set while a card is read.
TEST_F(SerialRead, KeepsItsLimitWhenTheWallClockIsStepped) {
  for (const double step : {-3600.0, 3600.0}) {
    unsigned char reply[8] = {};
    pty_.HangUp();
    const double before = LibrarySeconds();
    static double s_step;
    s_step = step;

    EXPECT_EQ(RET_PUB_TIMEOUT, COMM_Com_ReadLinux(reply, 8, 3, [](const unsigned char*, int) {
                stand_in_clock::StepWallClock(std::exchange(s_step, 0.0));
                return -1;
              }));

    const double taken = LibrarySeconds() - before;
    EXPECT_LT(2.8, taken);
    EXPECT_GT(4.2, taken);
  }
}

TEST_F(SerialRead, ReportsAFailedRead) {
  unsigned char reply[8] = {};
  system_calls::Watch(fd());
  system_calls::ScriptReads({
      {2,  0  },
      {-1, EIO}
  });
  pty_.Send("abc");

  EXPECT_EQ(RET_PUB_READ_ERROR, COMM_Com_ReadLinux(reply, 8, 5, nullptr));
}

TEST_F(SerialRead, TakesASignalForAPassWithoutBytes) {
  unsigned char reply[3] = {};
  system_calls::Watch(fd());
  system_calls::ScriptReads({
      {-1, EINTR},
      {2,  0    },
      {-1, EINTR}
  });
  s_passes = 0;
  pty_.Send("abc");

  EXPECT_EQ(3, COMM_Com_ReadLinux(reply, 3, 5, CountPasses));

  EXPECT_EQ(3, s_passes);
  EXPECT_EQ("61 62 63", HexText(reply));
}

TEST_F(SerialRead, SurvivesAHundredSignalsASecond) {
  BlockSignals();
  std::thread reader([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(400));
    pty_.Send("abc");
  });
  UnblockSignals();
  unsigned char reply[3] = {};
  {
    const Signals signals;

    EXPECT_EQ(3, COMM_Com_ReadLinux(reply, 3, 60, nullptr));

    EXPECT_LT(0, signals.count());
  }
  reader.join();
  EXPECT_EQ("61 62 63", HexText(reply));
}

TEST_F(SerialRead, LeavesTheCoreAloneOnAHungUpLine) {
  stand_in_clock::UseSystemClock();
  unsigned char reply[8] = {};
  pty_.HangUp();
  s_passes = 0;
  const auto start = std::chrono::steady_clock::now();
  const double cpu = CpuSeconds();

  EXPECT_EQ(RET_PUB_TIMEOUT, COMM_Com_ReadLinux(reply, 8, 1, CountPasses));

  const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
  EXPECT_GT(taken.count() / 10, CpuSeconds() - cpu);
  EXPECT_GE(taken.count() * 10 + 2, s_passes);
}

TEST_F(SerialRead, PollsTenTimesASecondOnAHungUpLine) {
  unsigned char reply[8] = {};
  pty_.HangUp();
  s_passes = 0;

  EXPECT_EQ(RET_PUB_TIMEOUT, COMM_Com_ReadLinux(reply, 8, 60, CountPasses));

  EXPECT_LE(600, s_passes);
  EXPECT_GE(615, s_passes);
}

// A read that has begun waits for VTIME, twice as long as the look at the cancel may take.
TEST_F(SerialRead, BeginsNoReadWhileTheLineIsSilent) {
  unsigned char reply[8] = {};
  s_passes = 0;
  system_calls::Watch(system_calls::kAny);

  EXPECT_EQ(RET_PUB_TIMEOUT, COMM_Com_ReadLinux(reply, 8, 0, CountPasses));

  const auto& noted = system_calls::Noted();
  EXPECT_EQ(0, std::count(noted.begin(), noted.end(), "read 8"));
  EXPECT_LT(0, s_passes);
}

TEST_F(SerialRead, EndsSoonAfterACancelFromAnotherThread) {
  stand_in_clock::UseSystemClock();
  unsigned char reply[8] = {};
  s_passes = 0;
  std::chrono::steady_clock::time_point cancelled;
  std::thread canceller([&] {
    while (s_passes == 0) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    cancelled = std::chrono::steady_clock::now();
    EXPECT_EQ(0, COMM_Com_CancelLinuxRead());
  });

  EXPECT_EQ(RET_PUB_CANCEL, COMM_Com_ReadLinux(reply, 8, 60, CountPasses));

  canceller.join();
  EXPECT_GT(std::chrono::seconds(2), std::chrono::steady_clock::now() - cancelled);
}

TEST_F(SerialRead, EndsAfterACancelOnAHungUpLine) {
  unsigned char reply[8] = {};
  pty_.HangUp();

  EXPECT_EQ(RET_PUB_CANCEL, COMM_Com_ReadLinux(reply, 8, 60, [](const unsigned char*, int) {
              return COMM_Com_CancelLinuxRead() - 1;
            }));
}

TEST_F(SerialRead, PrefersTheLimitToACancel) {
  unsigned char reply[8] = {};

  EXPECT_EQ(RET_PUB_TIMEOUT, COMM_Com_ReadLinux(reply, 8, 5, [](const unsigned char*, int) {
              stand_in_clock::Advance(100);
              return COMM_Com_CancelLinuxRead() - 1;
            }));
}

TEST_F(SerialRead, ForgetsACancelThatCameBefore) {
  unsigned char reply[3] = {};

  EXPECT_EQ(0, COMM_Com_CancelLinuxRead());

  std::thread reader([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    pty_.Send("abc");
  });
  EXPECT_EQ(3, COMM_Com_ReadLinux(reply, 3, 60, nullptr));
  reader.join();
}

TEST_F(SerialRead, ForgetsTheCancelOfTheReadBefore) {
  unsigned char reply[3] = {};
  const auto cancel = [](const unsigned char*, int) { return COMM_Com_CancelLinuxRead() - 1; };

  ASSERT_EQ(RET_PUB_CANCEL, COMM_Com_ReadLinux(reply, 3, 60, cancel));
  ASSERT_EQ(0, COMM_Com_CancelLinuxRead());

  pty_.HangUp();
  EXPECT_EQ(RET_PUB_TIMEOUT, COMM_Com_ReadLinux(reply, 3, 5, Never));
}

TEST(CancelLinuxRead, SucceedsWithoutAPort) { EXPECT_EQ(0, COMM_Com_CancelLinuxRead()); }

TEST(CancelLinuxRead, AnswersOnDescriptorZero) {
  SetAuxFd(0);

  EXPECT_EQ(RET_PUB_CANCEL, COMM_Com_CancelLinuxRead());
}

// A program that closed its standard input gets descriptor 0 for the reader.
TEST(CancelLinuxRead, DoesNotReachAReadOnDescriptorZero) {
  Pty pty;
  close(STDIN_FILENO);
  ASSERT_EQ(0, COMM_Com_OpenLinux(pty.path().c_str(), 9600));
  ASSERT_EQ(0, DescriptorsOn(pty.path()).at(0));
  pty.HangUp();
  unsigned char reply[8] = {};

  EXPECT_EQ(RET_PUB_TIMEOUT, COMM_Com_ReadLinux(reply, 8, 3, [](const unsigned char*, int) {
              return COMM_Com_CancelLinuxRead();
            }));
}

TEST(ReadLinux, ReportsADescriptorThatCannotBeRead) {
  unsigned char reply[8] = {};
  SetAuxFd(open("/dev/null", O_WRONLY));

  EXPECT_EQ(RET_PUB_READ_ERROR, COMM_Com_ReadLinux(reply, 8, 5, nullptr));
}
