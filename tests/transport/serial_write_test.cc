// Writing to the serial port.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <thread>

#include "quillonid/results.h"
#include "quillonid/transport.h"
#include "tests/testing/hex_text.h"
#include "tests/testing/private_root.h"
#include "tests/testing/pty.h"
#include "tests/testing/stand_in_clock.h"
#include "tests/transport/system_calls.h"

namespace {

// More than a pseudo-terminal takes while nobody reads the other end.
constexpr int kTooMuch = 100'000;

std::string Pattern(int size) {
  std::string bytes(static_cast<std::size_t>(size), '\0');
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<char>(i & 0xFF);
  return bytes;
}

class SerialWrite : public testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(0, COMM_Com_OpenLinux(pty_.path().c_str(), 115200)); }
  int fd() const { return DescriptorsOn(pty_.path()).at(0); }

  // Until the line takes nothing for good: what was written moves on to the other end's buffer a
  // little later and makes room once more.
  void FillLine() const {
    const std::string bytes = Pattern(4096);
    fcntl(fd(), F_SETFL, O_NONBLOCK);
    for (int full = 0; full < 5; ++full) {
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
      while (WriteBlock(reinterpret_cast<const unsigned char*>(bytes.data()), 4096) > 0) full = 0;
    }
    fcntl(fd(), F_SETFL, 0);
  }

  Pty pty_;
};

int Write(std::string_view text) {
  return COMM_Com_WriteLinux(reinterpret_cast<const unsigned char*>(text.data()),
                             static_cast<int>(text.size()));
}

}  // namespace

namespace {

struct WriteFunction {
  const char* name;
  int (*call)(const unsigned char*, int);
};
void PrintTo(const WriteFunction& tested, std::ostream* out) { *out << tested.name; }
class SerialWriteFunction : public SerialWrite,
                            public testing::WithParamInterface<WriteFunction> {};

}  // namespace

TEST_P(SerialWriteFunction, SendsEveryByteValueAsItIs) {
  const std::string bytes = Pattern(256);

  EXPECT_EQ(256, GetParam().call(reinterpret_cast<const unsigned char*>(bytes.data()), 256));

  EXPECT_EQ(HexText(bytes), HexText(pty_.Receive(256)));
}

TEST_P(SerialWriteFunction, SendsNothingWithoutDataOrLength) {
  const unsigned char byte = 'x';

  EXPECT_EQ(RET_PUB_INVAL_PARAM, GetParam().call(nullptr, 1));
  EXPECT_EQ(RET_PUB_INVAL_PARAM, GetParam().call(&byte, 0));
  EXPECT_EQ(RET_PUB_INVAL_PARAM, GetParam().call(&byte, -1));

  ASSERT_EQ(1, Write("."));
  EXPECT_EQ(".", pty_.Receive(1));
}

TEST_P(SerialWriteFunction, RefusesWithoutAPort) {
  const unsigned char byte = 'x';
  COMM_Com_CloseLinux();

  EXPECT_EQ(RET_PUB_INVAL_PARAM, GetParam().call(&byte, 1));
}

INSTANTIATE_TEST_SUITE_P(Functions, SerialWriteFunction,
                         testing::Values(WriteFunction{"WriteLinux", COMM_Com_WriteLinux},
                                         WriteFunction{"SendDataToTransPort",
                                                       QL_SendDataToTransPort}));

TEST_F(SerialWrite, ReadsNoBytesBeforeItWrites) {
  system_calls::Watch(fd());

  EXPECT_EQ(3, Write("abc"));

  const std::vector<std::string> expected = {"read 0", "write 3"};
  EXPECT_EQ(expected, system_calls::Noted());
}

TEST_F(SerialWrite, LeavesArrivedBytesForTheNextRead) {
  pty_.Send("kept");
  EXPECT_EQ(3, Write("abc"));

  unsigned char reply[4] = {};
  EXPECT_EQ(4, COMM_Com_ReadLinux(reply, 4, 5, nullptr));
  EXPECT_EQ(HexText("kept", 4), HexText(reply));
}

TEST_F(SerialWrite, WritesTheRemainderOfAShortWrite) {
  system_calls::Watch(fd());
  system_calls::ScriptWrites({
      {2, 0},
      {1, 0}
  });

  EXPECT_EQ(6, Write("abcdef"));

  const std::vector<std::string> expected = {"read 0", "write 6", "write 4", "write 3"};
  EXPECT_EQ(expected, system_calls::Noted());
  EXPECT_EQ("abcdef", pty_.Receive(6));
}

TEST_F(SerialWrite, StopsAtAFailureWithTheCountSoFar) {
  system_calls::Watch(fd());
  system_calls::ScriptWrites({
      {2,  0  },
      {-1, EIO}
  });

  EXPECT_EQ(2, Write("abcdef"));

  EXPECT_EQ("ab", pty_.Receive(2));
}

TEST_F(SerialWrite, ReturnsZeroWhenTheFirstWriteFails) {
  pty_.HangUp();

  EXPECT_EQ(0, Write("abc"));
}

TEST_F(SerialWrite, GoesOnAfterASignal) {
  system_calls::Watch(fd());
  system_calls::ScriptWrites({
      {-1, EINTR},
      {2,  0    },
      {-1, EINTR}
  });

  EXPECT_EQ(6, Write("abcdef"));

  EXPECT_EQ("abcdef", pty_.Receive(6));
}

// As a login program does that was left on the port.
TEST_F(SerialWrite, DoesNotWaitForAnotherProgramThatReads) {
  ASSERT_EQ(0, COMM_Com_CloseLinux());
  termios settings = pty_.Settings();
  cfmakeraw(&settings);  // A read waits for a byte.
  pty_.SetSettings(settings);
  const int other = open(pty_.path().c_str(), O_RDWR | O_NOCTTY);
  std::atomic<bool> done = false;
  std::thread reader([&] {
    char byte = 0;
    EXPECT_EQ(1, read(other, &byte, 1));
    done = true;
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(200));  // It waits by now.
  ASSERT_EQ(0, COMM_Com_OpenLinux(pty_.path().c_str(), 115200));

  EXPECT_EQ(3, Write("abc"));

  EXPECT_FALSE(done);
  EXPECT_EQ("abc", pty_.Receive(3));
  pty_.Send("x");
  reader.join();
  close(other);
}

TEST_F(SerialWrite, EndsWhenNothingIsTakenTwiceInARow) {
  system_calls::Watch(fd());
  system_calls::ScriptWrites({
      {0, 0},
      {2, 0},
      {0, 0},
      {0, 0}
  });

  EXPECT_EQ(2, Write("abcdef"));
}

TEST_F(SerialWrite, GivesUpOnALineThatTakesNothing) {
  stand_in_clock::SetSpeed(20);
  const std::string bytes = Pattern(kTooMuch);

  const int sent = Write(bytes);

  EXPECT_LT(0, sent);
  EXPECT_GT(kTooMuch, sent);
  EXPECT_EQ(HexText(bytes.substr(0, 64)), HexText(pty_.Receive(64)));
  EXPECT_EQ(0, fcntl(fd(), F_GETFL) & O_NONBLOCK);
}

TEST_F(SerialWrite, GivesUpInTimeWhenTheWallClockIsSetBack) {
  stand_in_clock::SetSpeed(20);
  const double start = stand_in_clock::Seconds();
  std::atomic<bool> done = false;
  std::thread operator_at_the_clock([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    stand_in_clock::StepWallClock(-3600);
    // Should the write still wait.
    while (!done && stand_in_clock::Seconds() - start < 200) {
      std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    COMM_Com_CancelLinuxRead();
  });

  const int sent = Write(Pattern(kTooMuch));

  EXPECT_GT(100, stand_in_clock::Seconds() - start);
  done = true;
  operator_at_the_clock.join();
  EXPECT_GT(kTooMuch, sent);
}

TEST_F(SerialWrite, EndsWithinASecondOfACancel) {
  stand_in_clock::UseSystemClock();
  std::atomic<bool> done = false;
  std::thread canceller([&] {
    // Until it is done: a cancel before the write starts is forgotten.
    while (!done) {
      std::this_thread::sleep_for(std::chrono::milliseconds(50));
      EXPECT_EQ(0, COMM_Com_CancelLinuxRead());
    }
  });
  const auto start = std::chrono::steady_clock::now();

  const int sent = Write(Pattern(kTooMuch));

  const auto taken = std::chrono::steady_clock::now() - start;
  done = true;
  canceller.join();
  EXPECT_GT(kTooMuch, sent);
  EXPECT_LT(taken, std::chrono::seconds(3));
}

TEST_F(SerialWrite, WaitsForALineThatDrains) {
  stand_in_clock::UseSystemClock();
  std::string received;
  std::thread reader([&] { received = pty_.Receive(kTooMuch); });
  const std::string bytes = Pattern(kTooMuch);

  EXPECT_EQ(kTooMuch, Write(bytes));

  reader.join();
  EXPECT_TRUE(bytes == received);
}

// The line says it has room and takes nothing: a driver out of buffers does that.
TEST_F(SerialWrite, DoesNotSpinOnALineThatOnlySeemsToHaveRoom) {
  system_calls::Watch(fd());
  system_calls::ScriptWrites({
      10'000, {-1, EAGAIN}
  });

  EXPECT_EQ(0, Write("abc"));

  EXPECT_GT(1000u, system_calls::Noted().size());
  EXPECT_LT(3, stand_in_clock::SecondsSlept());  // most of the five seconds
}

// Each byte in time to show progress: ten of them would take 49 seconds.
TEST_F(SerialWrite, GivesUpOnALineThatTakesAByteNowAndThen) {
  stand_in_clock::SetSpeed(0);  // It counts naps alone.
  std::deque<system_calls::Answer> answers;
  for (int byte = 0; byte < 10; ++byte) {
    answers.insert(answers.end(), 490, {-1, EAGAIN});  // a hundredth of a second each
    answers.push_back({1, 0});
  }
  system_calls::Watch(fd());
  system_calls::ScriptWrites(answers);
  const double start = stand_in_clock::Seconds();

  EXPECT_EQ(1, Write("abcdefghij"));

  EXPECT_LT(5, stand_in_clock::Seconds() - start);
  EXPECT_GT(9, stand_in_clock::Seconds() - start);
}

// A driver has room when most of its queue has left: 4,096 bytes last 137 s at 300 bit/s.
TEST_F(SerialWrite, WaitsWhileWhatWasWrittenBeforeLeaves) {
  stand_in_clock::SetSpeed(0);  // It counts naps alone.
  std::deque<int> queue;
  for (int left = 4096; left > 0; left -= 100) queue.insert(queue.end(), 300, left);
  system_calls::Watch(fd());
  system_calls::ScriptQueue(queue);
  system_calls::ScriptWrites({
      6000, {-1, EAGAIN}
  });
  const double start = stand_in_clock::Seconds();

  EXPECT_EQ(3, Write("abc"));

  EXPECT_LT(59, stand_in_clock::Seconds() - start);
}

// A byte lasts 33 ms at 300 bit/s, the slowest speed.
TEST_F(SerialWrite, WaitsForALineThatIsSlow) {
  stand_in_clock::SetSpeed(0);  // It counts naps alone.
  std::deque<system_calls::Answer> answers;
  for (int byte = 0; byte < 300; ++byte) {
    answers.insert(answers.end(), 3, {-1, EAGAIN});
    answers.push_back({1, 0});
  }
  system_calls::Watch(fd());
  system_calls::ScriptWrites(answers);
  const double start = stand_in_clock::Seconds();

  EXPECT_EQ(300, Write(Pattern(300)));

  EXPECT_LT(8.9, stand_in_clock::Seconds() - start);
}

TEST_F(SerialWrite, DoesNotKeepAPseudoTerminalFromClosing) {
  FillLine();

  EXPECT_EQ(0, COMM_Com_CloseLinux());
}

TEST_F(SerialWrite, RestoresTheBlockingModeThatItFound) {
  ASSERT_EQ(0, fcntl(fd(), F_GETFL) & O_NONBLOCK);
  EXPECT_EQ(3, Write("abc"));
  EXPECT_EQ(0, fcntl(fd(), F_GETFL) & O_NONBLOCK);

  fcntl(fd(), F_SETFL, O_NONBLOCK);
  EXPECT_EQ(3, Write("abc"));
  EXPECT_NE(0, fcntl(fd(), F_GETFL) & O_NONBLOCK);
}

TEST_F(SerialWrite, BlockFunctionsMakeOneCall) {
  unsigned char reply[8] = {};
  pty_.Send("xyz");
  system_calls::Watch(fd());

  EXPECT_EQ(3, WriteBlock(reinterpret_cast<const unsigned char*>("abc"), 3));
  EXPECT_EQ(3, ReadBlock(reply, 8));
  EXPECT_EQ(0, ReadBlock(reply, 8));

  const std::vector<std::string> expected = {"write 3", "read 8", "read 8"};
  EXPECT_EQ(expected, system_calls::Noted());
  EXPECT_EQ("abc", pty_.Receive(3));
  EXPECT_EQ("78 79 7A 00 00 00 00 00", HexText(reply));
}

TEST_F(SerialWrite, BlockFunctionsPassAFailureOn) {
  unsigned char byte = 'x';
  system_calls::Watch(fd());
  system_calls::ScriptReads({
      {-1, EIO},
      {-1, EIO}
  });
  system_calls::ScriptWrites({
      {-1, EIO},
      {-1, EIO}
  });
  pty_.Send("x");

  EXPECT_EQ(-1, ReadBlock(&byte, 1));
  EXPECT_EQ(-1, WriteBlock(&byte, 1));
  EXPECT_EQ(-1, ReadUnBlock(&byte, 1));
  EXPECT_EQ(-1, WriteUnBlock(&byte, 1));
}

TEST_F(SerialWrite, UnBlockFunctionsMakeOneCallWhenReady) {
  unsigned char reply[8] = {};
  pty_.Send("xyz");
  system_calls::Watch(fd());

  EXPECT_EQ(3, WriteUnBlock(reinterpret_cast<const unsigned char*>("abc"), 3));
  EXPECT_EQ(3, ReadUnBlock(reply, 8));

  const std::vector<std::string> expected = {"write 3", "read 8"};
  EXPECT_EQ(expected, system_calls::Noted());
}

TEST_F(SerialWrite, UnBlockReadReturnsZeroWhenNothingArrives) {
  unsigned char byte = 0;
  system_calls::Watch(fd());
  stand_in_clock::SetSpeed(20);

  EXPECT_EQ(0, ReadUnBlock(&byte, 1));

  EXPECT_TRUE(system_calls::Noted().empty());
}

TEST_F(SerialWrite, UnBlockWriteDiscardsOutputThatTheLineDoesNotTake) {
  FillLine();
  system_calls::Watch(fd());

  EXPECT_EQ(0, WriteUnBlock(reinterpret_cast<const unsigned char*>("abc"), 3));

  EXPECT_EQ(std::vector<std::string>{"tcflush output"}, system_calls::Noted());
}

TEST(UnBlockFunctions, RefuseWithoutAPort) {
  unsigned char byte = 'x';

  EXPECT_EQ(RET_PUB_INVAL_PARAM, ReadUnBlock(&byte, 1));
  EXPECT_EQ(RET_PUB_INVAL_PARAM, WriteUnBlock(&byte, 1));
  EXPECT_EQ(RET_PUB_INVAL_PARAM, ReadBlock(&byte, 1));
  EXPECT_EQ(RET_PUB_INVAL_PARAM, WriteBlock(&byte, 1));
}

TEST_F(SerialWrite, BlockFunctionsRefuseANullBufferAndANegativeLength) {
  unsigned char byte = 'x';
  pty_.Send("x");

  EXPECT_EQ(RET_PUB_INVAL_PARAM, ReadUnBlock(nullptr, 1));
  EXPECT_EQ(RET_PUB_INVAL_PARAM, ReadUnBlock(&byte, -1));
  EXPECT_EQ(RET_PUB_INVAL_PARAM, WriteUnBlock(nullptr, 1));
  EXPECT_EQ(RET_PUB_INVAL_PARAM, WriteUnBlock(&byte, -1));
}

// A descriptor set holds 1,024 of them.
TEST_F(SerialWrite, UnBlockFunctionsServeAHighDescriptor) {
  rlimit limit = {};
  ASSERT_EQ(0, getrlimit(RLIMIT_NOFILE, &limit));
  limit.rlim_cur = limit.rlim_max;
  setrlimit(RLIMIT_NOFILE, &limit);
  const int high = fcntl(fd(), F_DUPFD, 1500);
  if (high < 0) GTEST_SKIP() << "no descriptor above 1,024 here";
  SetAuxFd(high);
  unsigned char reply[8] = {};
  pty_.Send("xyz");

  EXPECT_EQ(3, ReadUnBlock(reply, 8));
  EXPECT_EQ(3, WriteUnBlock(reinterpret_cast<const unsigned char*>("abc"), 3));

  EXPECT_EQ("abc", pty_.Receive(3));
}

TEST_F(SerialWrite, UnBlockFunctionsLogTheirNames) {
  NEEDS_PRIVATE_ROOT();
  unsigned char byte = 'x';
  pty_.Send("x");
  SwitchLogging(true);

  EXPECT_EQ(1, ReadUnBlock(&byte, 1));
  EXPECT_EQ(1, WriteUnBlock(&byte, 1));

  const std::vector<std::string> expected = {"  TIME  INFO:    CommDev:  ReadUnblock\n",
                                             "  TIME  INFO:    CommDev:  WriteUnblock\n"};
  EXPECT_EQ(expected, LogLines());
}
