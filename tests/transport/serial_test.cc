// Opening, closing and the descriptor functions of the serial port, on pseudo-terminals.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>

#include "quillonid/results.h"
#include "quillonid/transport.h"
#include "tests/testing/held.h"
#include "tests/testing/hex_text.h"
#include "tests/testing/private_root.h"
#include "tests/testing/pty.h"
#include "tests/testing/stand_in_clock.h"
#include "tests/transport/system_calls.h"

namespace {

constexpr tcflag_t kLowHalf = 0xFFFF;

// The bytes of the settings that a change could show in.
std::string Text(const termios& settings) {
  char flags[64];
  std::snprintf(flags, sizeof flags, "i %X o %X c %X l %X line %d cc ", settings.c_iflag,
                settings.c_oflag, settings.c_cflag, settings.c_lflag, settings.c_line);
  return flags + HexText(settings.c_cc);
}

// Settings unlike the raw ones in every field.
termios OddSettings(const Pty& pty) {
  termios odd = pty.Settings();
  odd.c_iflag = BRKINT | ICRNL | INPCK | ISTRIP | IXON | IXOFF | IGNPAR | PARMRK | INLCR | IUTF8;
  odd.c_oflag = OPOST | ONLCR | OCRNL | ONOCR;
  odd.c_cflag = CS8 | CREAD | CSTOPB | HUPCL | PARODD;
  cfsetspeed(&odd, B1200);
  odd.c_lflag =
      ISIG | ICANON | ECHO | ECHOE | ECHOK | ECHONL | NOFLSH | TOSTOP | ECHOCTL | ECHOKE | IEXTEN;
  for (unsigned i = 0; i < NCCS; ++i) odd.c_cc[i] = static_cast<cc_t>(0x30 + i);
  return odd;
}

bool PortIsOpen() {
  return COMM_Com_WriteLinux(reinterpret_cast<const unsigned char*>("x"), 1) == 1;
}

}  // namespace

namespace {

struct RateCase {
  int baud;
  speed_t code;
};
void PrintTo(const RateCase& tested, std::ostream* out) { *out << tested.baud << " bit/s"; }
class OpenLinuxRate : public testing::TestWithParam<RateCase> {};

}  // namespace

TEST_P(OpenLinuxRate, SetsTheSpeed) {
  const Pty pty;

  ASSERT_EQ(0, COMM_Com_OpenLinux(pty.path().c_str(), GetParam().baud));

  const termios settings = pty.Settings();
  EXPECT_EQ(GetParam().code, cfgetospeed(&settings));
}

INSTANTIATE_TEST_SUITE_P(Rates, OpenLinuxRate,
                         testing::Values(RateCase{300, B300}, RateCase{1200, B1200},
                                         RateCase{2400, B2400}, RateCase{4800, B4800},
                                         RateCase{9600, B9600}, RateCase{19200, B19200},
                                         RateCase{38400, B38400}, RateCase{57600, B57600},
                                         RateCase{115200, B115200}, RateCase{230400, B230400},
                                         // Not listed.
                                         RateCase{14400, B9600}, RateCase{0, B9600},
                                         RateCase{-1, B9600}, RateCase{600, B9600},
                                         RateCase{460800, B9600}, RateCase{9601, B9600}),
                         [](const auto& tested) {
                           const int baud = tested.param.baud;
                           return baud < 0 ? "Negative" : std::to_string(baud);
                         });

TEST(OpenLinux, SetsEveryFlag) {
  const Pty pty;
  pty.SetSettings(OddSettings(pty));
  const termios old = pty.Settings();
  termios expected = old;
  expected.c_iflag = 0;
  expected.c_oflag = 0;
  expected.c_cflag = B115200 | CS8 | CREAD | CLOCAL;
  expected.c_lflag = old.c_lflag & ~tcflag_t{0x8B};
  expected.c_cc[VMIN] = 0;
  expected.c_cc[VTIME] = 1;
  expected.c_cc[1] = 0x7F;

  ASSERT_EQ(0, COMM_Com_OpenLinux(pty.path().c_str(), 115200));

  EXPECT_EQ(Text(expected), Text(pty.Settings()));
  EXPECT_NE(0u, pty.Settings().c_lflag & (ECHOE | ECHOK | TOSTOP | IEXTEN));
}

// The settings are those of 16-bit fields: hardware flow control lies above them.
TEST(OpenLinux, KeepsTheUpperHalvesOfTheFlags) {
  const Pty pty;
  termios odd = pty.Settings();
  odd.c_cflag |= CRTSCTS;
  pty.SetSettings(odd);
  ASSERT_NE(0u, pty.Settings().c_cflag & CRTSCTS);

  ASSERT_EQ(0, COMM_Com_OpenLinux(pty.path().c_str(), 9600));

  EXPECT_NE(0u, pty.Settings().c_cflag & CRTSCTS);
  EXPECT_EQ(tcflag_t{B9600 | CS8 | CREAD | CLOCAL}, pty.Settings().c_cflag & kLowHalf);
}

TEST(OpenLinux, FlushesThenDrainsAndDiscardsWithTheSettings) {
  const Pty pty;
  system_calls::Watch(system_calls::kAny);

  ASSERT_EQ(0, COMM_Com_OpenLinux(pty.path().c_str(), 9600));

  const std::vector<std::string> expected = {"tcflush input", "tcflush output", "tcflush both",
                                             "tcsetattr flush"};
  EXPECT_EQ(expected, system_calls::Noted());
  EXPECT_NEAR(0.001, stand_in_clock::SecondsSlept(), 1e-9);
}

TEST(OpenLinux, SetsThemAgainAfterASignal) {
  const Pty pty;
  system_calls::Watch(system_calls::kAny);
  system_calls::InterruptSettings(100);

  ASSERT_EQ(0, COMM_Com_OpenLinux(pty.path().c_str(), 115200));

  EXPECT_EQ(tcflag_t{B115200 | CS8 | CREAD | CLOCAL}, pty.Settings().c_cflag & kLowHalf);
}

// The other end holds the flow control: the kernel would wait for ever.
TEST(SerialClose, DiscardsWhatAStuckLineDoesNotTake) {
  const Pty pty;
  ASSERT_EQ(0, COMM_Com_OpenLinux(pty.path().c_str(), 9600));
  system_calls::Watch(DescriptorsOn(pty.path()).at(0));
  system_calls::ScriptQueue({10});
  const double start = stand_in_clock::Seconds();

  EXPECT_EQ(0, COMM_Com_CloseLinux());

  EXPECT_LT(4.9, stand_in_clock::Seconds() - start);
  EXPECT_GT(7, stand_in_clock::Seconds() - start);
  const std::vector<std::string> expected = {"tcflush output", "tcsetattr flush", "close"};
  EXPECT_EQ(expected, system_calls::Noted());
}

// Drivers of USB serial adapters do: a change of the settings that waits would wait for ever.
TEST(SerialClose, DoesNotWaitForADriverThatKeepsWhatItWasToDiscard) {
  const Pty pty;
  const std::string found = Text(pty.Settings());
  ASSERT_EQ(0, COMM_Com_OpenLinux(pty.path().c_str(), 9600));
  system_calls::Watch(DescriptorsOn(pty.path()).at(0));
  system_calls::ScriptQueue({10}, system_calls::AtFlush::kKeeps);

  EXPECT_EQ(0, COMM_Com_CloseLinux());

  const std::vector<std::string> expected = {"tcflush output", "tcflush input", "tcsetattr now",
                                             "close"};
  EXPECT_EQ(expected, system_calls::Noted());
  EXPECT_EQ(found, Text(pty.Settings()));
}

TEST(SerialClose, DiscardsWhatALineTakesNowAndThen) {
  const Pty pty;
  ASSERT_EQ(0, COMM_Com_OpenLinux(pty.path().c_str(), 9600));
  std::deque<int> queue;
  for (int left = 20; left > 0; --left) queue.insert(queue.end(), 490, left);
  system_calls::Watch(DescriptorsOn(pty.path()).at(0));
  system_calls::ScriptQueue(queue);
  const double start = stand_in_clock::Seconds();

  EXPECT_EQ(0, COMM_Com_CloseLinux());

  EXPECT_GT(9, stand_in_clock::Seconds() - start);
  EXPECT_EQ("tcflush output", system_calls::Noted().at(0));
}

TEST(SerialClose, LetsASlowLineSendWhatItHas) {
  const Pty pty;
  ASSERT_EQ(0, COMM_Com_OpenLinux(pty.path().c_str(), 9600));
  std::deque<int> queue;
  for (int left = 300; left >= 0; --left) queue.insert(queue.end(), 3, left);
  system_calls::Watch(DescriptorsOn(pty.path()).at(0));
  system_calls::ScriptQueue(queue);
  const double start = stand_in_clock::Seconds();

  EXPECT_EQ(0, COMM_Com_CloseLinux());

  EXPECT_LT(8.9, stand_in_clock::Seconds() - start);
  const std::vector<std::string> expected = {"tcsetattr flush", "close"};
  EXPECT_EQ(expected, system_calls::Noted());
}

// A line that does not drain, in a process with a timer.
TEST(OpenLinux, FailsWhenSignalsNeverEnd) {
  const Pty pty;
  const termios before = pty.Settings();
  system_calls::Watch(system_calls::kAny);
  system_calls::InterruptSettings(1000000);

  EXPECT_EQ(-1, COMM_Com_OpenLinux(pty.path().c_str(), 115200));

  EXPECT_EQ("close", system_calls::Noted().back());
  EXPECT_FALSE(PortIsOpen());
  EXPECT_EQ(Text(before), Text(pty.Settings()));
}

TEST(OpenLinux, DiscardsWhatArrivedBefore) {
  const Pty pty;
  termios raw = pty.Settings();
  cfmakeraw(&raw);
  pty.SetSettings(raw);
  pty.Send("stale");

  ASSERT_EQ(0, COMM_Com_OpenLinux(pty.path().c_str(), 9600));
  pty.Send("new");

  unsigned char reply[3] = {};
  ASSERT_EQ(3, COMM_Com_ReadLinux(reply, 3, 5, nullptr));
  EXPECT_EQ(HexText("new", 3), HexText(reply));
}

TEST(OpenLinux, ClosesOnExecAndSetsNoOtherFlag) {
  const Pty pty;

  ASSERT_EQ(0, COMM_Com_OpenLinux(pty.path().c_str(), 9600));

  const std::vector<int> opened = DescriptorsOn(pty.path());
  ASSERT_EQ(1u, opened.size());
  EXPECT_EQ(FD_CLOEXEC, fcntl(opened[0], F_GETFD));
  EXPECT_EQ(O_RDWR, fcntl(opened[0], F_GETFL) & (O_ACCMODE | O_NONBLOCK | O_APPEND | O_SYNC));
}

TEST(OpenLinux, ClosesAnOpenPortFirst) {
  const Pty first, second;
  const std::string found = Text(first.Settings());
  ASSERT_EQ(0, COMM_Com_OpenLinux(first.path().c_str(), 9600));
  ASSERT_NE(found, Text(first.Settings()));
  const double slept = stand_in_clock::SecondsSlept();

  ASSERT_EQ(0, COMM_Com_OpenLinux(second.path().c_str(), 9600));

  EXPECT_EQ(found, Text(first.Settings()));
  EXPECT_TRUE(DescriptorsOn(first.path()).empty());
  EXPECT_EQ(1u, DescriptorsOn(second.path()).size());
  EXPECT_NEAR(0.00105, stand_in_clock::SecondsSlept() - slept, 1e-9);
}

namespace {

struct FailureCase {
  const char* name;
  int result;
};
void PrintTo(const FailureCase& tested, std::ostream* out) { *out << tested.name; }
class OpenLinuxFailure : public testing::TestWithParam<FailureCase> {
 protected:
  static std::string Path(const std::string& name) {
    std::string path = TemporaryFolder() + "/" + name;
    if (name == "fifo") {
      EXPECT_EQ(0, mkfifo(path.c_str(), 0600));
    }
    if (name == "file") WriteWholeFile(path, "text");
    return path;
  }
};

}  // namespace

TEST_P(OpenLinuxFailure, LeavesNoPortOpen) {
  const Pty pty;
  const std::string found = Text(pty.Settings());
  const std::string path = Path(GetParam().name);
  const std::ptrdiff_t descriptors = OpenDescriptors();
  ASSERT_EQ(0, COMM_Com_OpenLinux(pty.path().c_str(), 9600));
  ASSERT_TRUE(PortIsOpen());

  EXPECT_EQ(GetParam().result, COMM_Com_OpenLinux(path.c_str(), 9600));

  EXPECT_FALSE(PortIsOpen());
  EXPECT_EQ(descriptors, OpenDescriptors());
  EXPECT_EQ(found, Text(pty.Settings()));
}

// A FIFO opens for both ways without waiting for anyone; as a tty it fails.
INSTANTIATE_TEST_SUITE_P(Paths, OpenLinuxFailure,
                         testing::Values(FailureCase{"missing", RET_PUB_OPEN_ERROR},
                                         FailureCase{".", RET_PUB_OPEN_ERROR},
                                         FailureCase{"fifo", -1}, FailureCase{"file", -1}),
                         [](const auto& tested) {
                           return *tested.param.name == '.' ? "folder" : tested.param.name;
                         });

TEST(OpenLinux, RefusesANullPath) {
  EXPECT_EQ(RET_PUB_OPEN_ERROR, COMM_Com_OpenLinux(nullptr, 9600));
}

TEST(OpenLinux, LogsItsSteps) {
  NEEDS_PRIVATE_ROOT();
  const Pty pty;
  SwitchLogging(true);

  ASSERT_EQ(0, COMM_Com_OpenLinux(pty.path().c_str(), 57600));

  const std::vector<std::string> expected = {
      "  TIME  INFO:    CommDev:  [COMM_Com_OpenLinux ] Start ",
      "  TIME  INFO:    CommDev:   szTtyName = " + pty.path() + " nBaud = 57600  ",
      "  TIME  INFO:    CommDev:  open linux com success!",
      "",
  };
  EXPECT_EQ(expected, LogLines());
}

TEST(OpenLinux, LogsNoSuccessForAMissingDevice) {
  NEEDS_PRIVATE_ROOT();
  SwitchLogging(true);

  ASSERT_EQ(RET_PUB_OPEN_ERROR, COMM_Com_OpenLinux("/dev/no-such-tty", 9600));

  const std::vector<std::string> expected = {
      "  TIME  INFO:    CommDev:  [COMM_Com_OpenLinux ] Start ",
      "  TIME  INFO:    CommDev:   szTtyName = /dev/no-such-tty nBaud = 9600  ",
  };
  EXPECT_EQ(expected, LogLines());
}

TEST(CloseLinux, RestoresTheSettingsAfterDraining) {
  const Pty pty;
  pty.SetSettings(OddSettings(pty));
  const std::string found = Text(pty.Settings());
  ASSERT_EQ(0, COMM_Com_OpenLinux(pty.path().c_str(), 115200));
  system_calls::Watch(DescriptorsOn(pty.path()).at(0));

  EXPECT_EQ(0, COMM_Com_CloseLinux());

  const std::vector<std::string> expected = {"tcsetattr flush", "close"};
  EXPECT_EQ(expected, system_calls::Noted());
  EXPECT_EQ(found, Text(pty.Settings()));
  EXPECT_TRUE(DescriptorsOn(pty.path()).empty());
  EXPECT_FALSE(PortIsOpen());
}

TEST(CloseLinux, SucceedsWithoutAPort) {
  EXPECT_EQ(0, COMM_Com_CloseLinux());
  EXPECT_EQ(0, COMM_Com_CloseLinux());
}

TEST(CloseLinux, SucceedsAfterAHangUp) {
  Pty pty;
  const std::string path = pty.path();
  const std::ptrdiff_t descriptors = OpenDescriptors();
  ASSERT_EQ(0, COMM_Com_OpenLinux(path.c_str(), 9600));
  pty.HangUp();

  EXPECT_EQ(0, COMM_Com_CloseLinux());

  EXPECT_EQ(descriptors - 1, OpenDescriptors());
}

// What was written still leaves before the port closes.
TEST(CloseLinux, LosesNoByteWrittenBefore) {
  const Pty pty;
  ASSERT_EQ(0, COMM_Com_OpenLinux(pty.path().c_str(), 9600));
  ASSERT_EQ(4, COMM_Com_WriteLinux(reinterpret_cast<const unsigned char*>("\x1B%S1"), 4));

  ASSERT_EQ(0, COMM_Com_CloseLinux());

  EXPECT_EQ("1B 25 53 31", HexText(pty.Receive(4)));
}

TEST(ResetAux, RestoresTheSettingsOfTheOpenPort) {
  const Pty pty;
  pty.SetSettings(OddSettings(pty));
  const std::string found = Text(pty.Settings());
  ASSERT_EQ(0, COMM_Com_OpenLinux(pty.path().c_str(), 115200));

  EXPECT_EQ(0, ResetAux());

  EXPECT_EQ(found, Text(pty.Settings()));
  EXPECT_EQ(1u, DescriptorsOn(pty.path()).size());
}

TEST(ResetAux, DoesNothingWithoutAPort) { EXPECT_EQ(0, ResetAux()); }

TEST(SetAuxFd, MakesADescriptorTheOpenPort) {
  const Pty pty;
  const int fd = open(pty.path().c_str(), O_RDWR | O_NOCTTY);
  termios raw = pty.Settings();
  cfmakeraw(&raw);
  pty.SetSettings(raw);

  EXPECT_EQ(0, SetAuxFd(fd));

  EXPECT_EQ(2, COMM_Com_WriteLinux(reinterpret_cast<const unsigned char*>("ab"), 2));
  EXPECT_EQ("61 62", HexText(pty.Receive(2)));
}

// Settings that were never read are all zeros; speed 0 would hang up the line.
TEST(SetAuxFd, KeepsTheLineSettingsAtResetAndClose) {
  const Pty pty;
  const int fd = open(pty.path().c_str(), O_RDWR | O_NOCTTY);
  pty.SetSettings(OddSettings(pty));
  const std::string found = Text(pty.Settings());
  ASSERT_EQ(0, SetAuxFd(fd));

  EXPECT_EQ(0, ResetAux());
  EXPECT_EQ(found, Text(pty.Settings()));

  EXPECT_EQ(0, COMM_Com_CloseLinux());
  EXPECT_EQ(found, Text(pty.Settings()));
  EXPECT_EQ(-1, fcntl(fd, F_GETFD));
}

TEST(SetAuxFd, DoesNotGiveOneLineTheSettingsOfAnother) {
  const Pty opened, other;
  opened.SetSettings(OddSettings(opened));
  ASSERT_EQ(0, COMM_Com_OpenLinux(opened.path().c_str(), 9600));
  const int fd = open(other.path().c_str(), O_RDWR | O_NOCTTY);
  const std::string found = Text(other.Settings());
  ASSERT_EQ(0, SetAuxFd(fd));

  EXPECT_EQ(0, ResetAux());

  EXPECT_EQ(found, Text(other.Settings()));
}

// The system gives the number of a closed descriptor to the next one.
TEST(SetAuxFd, DoesNotGiveALineTheSettingsOfAClosedOne) {
  const Pty closed, other;
  closed.SetSettings(OddSettings(closed));
  ASSERT_EQ(0, COMM_Com_OpenLinux(closed.path().c_str(), 9600));
  const int number = DescriptorsOn(closed.path()).at(0);
  ASSERT_EQ(0, COMM_Com_CloseLinux());
  ASSERT_EQ(number, open(other.path().c_str(), O_RDWR | O_NOCTTY));
  const std::string found = Text(other.Settings());
  ASSERT_EQ(0, SetAuxFd(number));

  EXPECT_EQ(0, ResetAux());
  EXPECT_EQ(found, Text(other.Settings()));

  EXPECT_EQ(0, COMM_Com_CloseLinux());
  EXPECT_EQ(found, Text(other.Settings()));
}

TEST(ClearReceiveBuffer, DiscardsInput) {
  const Pty pty;
  ASSERT_EQ(0, COMM_Com_OpenLinux(pty.path().c_str(), 9600));
  system_calls::Watch(DescriptorsOn(pty.path()).at(0));

  ClearReceiveBuffer();

  EXPECT_EQ(std::vector<std::string>{"tcflush input"}, system_calls::Noted());
}

TEST(ClearReceiveBuffer, DoesNothingWithoutAPort) {
  system_calls::Watch(system_calls::kAny);

  ClearReceiveBuffer();

  EXPECT_TRUE(system_calls::Noted().empty());
}

TEST(SerialPort, SurvivesManyOpensAndCloses) {
  const Pty pty;
  const std::string found = Text(pty.Settings());
  const std::ptrdiff_t descriptors = OpenDescriptors();

  for (int i = 0; i < 1000; ++i) {
    ASSERT_EQ(0, COMM_Com_OpenLinux(pty.path().c_str(), 9600));
    if (i % 2) COMM_Com_CloseLinux();
  }
  COMM_Com_CloseLinux();

  EXPECT_EQ(descriptors, OpenDescriptors());
  EXPECT_EQ(found, Text(pty.Settings()));
}
