// Dispatcher: routing by connection kind, the saved parameters, and the read budget.
#include <gtest/gtest.h>

#include <climits>
#include <cstring>

#include "quillonid/results.h"
#include "quillonid/transport.h"
#include "tests/testing/hex_text.h"
#include "tests/testing/private_root.h"
#include "tests/testing/pty.h"
#include "tests/testing/stand_in_clock.h"
#include "tests/transport/terminal_child.h"

#define ESC "\x1B"

namespace {

QL_TRANSPORT_DESCRIPTION SerialPort(const std::string& path, int timeout = 5) {
  QL_TRANSPORT_DESCRIPTION description = {};
  description.nKind = QL_KIND_SERIAL;
  description.nBaud = 9600;
  description.nTimeOut = timeout;
  std::strncpy(description.szPath, path.c_str(), sizeof description.szPath - 1);
  return description;
}

// A USB device that no machine has.
QL_TRANSPORT_DESCRIPTION MissingUsbReader() {
  QL_TRANSPORT_DESCRIPTION description = {};
  description.nKind = QL_KIND_USB;
  description.nVid = 0xFFFF;
  description.nPid = 0xFFFF;
  return description;
}

int Write(std::string_view text) {
  return COMM_Dev_WriteDataToTransPort(reinterpret_cast<const unsigned char*>(text.data()),
                                       static_cast<int>(text.size()));
}

// Seconds of the library's clock: what it slept and what really went by.
double LibrarySeconds() {
  const std::chrono::duration<double> real = std::chrono::steady_clock::now().time_since_epoch();
  return stand_in_clock::SecondsSlept() + real.count();
}

// Time that a read takes until it gives up.
double SecondsUntilTimeout() {
  unsigned char reply[8] = {};
  const double before = LibrarySeconds();
  EXPECT_EQ(RET_PUB_TIMEOUT, COMM_Dev_ReadDataFromTransPort(reply, 8));
  return LibrarySeconds() - before;
}

int Complete(const unsigned char*, int) { return 0; }
int CompleteAtThree(const unsigned char*, int count) { return count == 3 ? 0 : 1; }

}  // namespace

// The outer functions and the inner ones, which behave alike.
namespace {

struct Layer {
  const char* name;
  int (*open)(QL_TRANSPORT_DESCRIPTION*);
  int (*write)(const unsigned char*, int);
  int (*read)(unsigned char*, int);
  int (*close)();
  int (*cancel)();
  int (*set_time)(int);
  int (*set_end)(QL_END_CONDITION);
  int (*set_clear_zero)(std::uint32_t);
  int (*change)(QL_TRANSPORT_DESCRIPTION*);
};
void PrintTo(const Layer& tested, std::ostream* out) { *out << tested.name; }
class Dispatcher : public testing::TestWithParam<Layer> {
 protected:
  const Layer& dev_ = GetParam();
  const unsigned char* Bytes(const char* text) {
    return reinterpret_cast<const unsigned char*>(text);
  }
};

}  // namespace

INSTANTIATE_TEST_SUITE_P(
    Layers, Dispatcher,
    testing::Values(Layer{"Outer", COMM_Dev_OpenTransPort, COMM_Dev_WriteDataToTransPort,
                          COMM_Dev_ReadDataFromTransPort, COMM_Dev_CloseTransPort,
                          COMM_Dev_CancelRead, COMM_Dev_ChangeReadTimeOut,
                          COMM_Dev_ChangeEndCondition, COMM_Dev_SetHidClearZero,
                          COMM_Dev_ChangeTermParam},
                    Layer{"Inner", COMM_Dev_Linux_OpenTransPort,
                          COMM_Dev_Linux_WriteDataToTransPort, COMM_Dev_Linux_ReadDataFromTransPort,
                          COMM_Dev_Linux_CloseTransPort, COMM_Dev_Linux_CancelLinuxRead,
                          COMM_Dev_Linux_ChangeReadTime, COMM_Dev_Linux_ChangeEndCondition,
                          COMM_Dev_Linux_SetLinuxHidClearZero, COMM_Dev_Linux_ChangeTermParam}));

TEST_P(Dispatcher, RoutesASerialSession) {
  const Pty pty;
  const termios found = pty.Settings();
  QL_TRANSPORT_DESCRIPTION description = SerialPort(pty.path());
  description.nBaud = 115200;
  description.pEnd = CompleteAtThree;
  unsigned char reply[8] = {};

  ASSERT_EQ(0, dev_.open(&description));
  const termios during = pty.Settings();
  EXPECT_EQ(speed_t{B115200}, cfgetospeed(&during));
  EXPECT_EQ(5, dev_.write(Bytes("hello"), 5));
  EXPECT_EQ("hello", pty.Receive(5));
  pty.Send("abc");
  EXPECT_EQ(3, dev_.read(reply, 8));
  EXPECT_EQ("61 62 63 00 00 00 00 00", HexText(reply));
  EXPECT_EQ(0, dev_.cancel());
  EXPECT_EQ(0, dev_.close());

  const termios left = pty.Settings();
  EXPECT_EQ(HexText(&found, sizeof found), HexText(&left, sizeof left));
}

TEST_P(Dispatcher, SaysOfAClosedPortThatItIsNotOpen) {
  const Pty pty;
  QL_TRANSPORT_DESCRIPTION description = SerialPort(pty.path());
  unsigned char reply[8] = {};
  ASSERT_EQ(0, dev_.open(&description));
  ASSERT_EQ(0, dev_.close());

  EXPECT_EQ(RET_PUB_INVAL_PARAM, dev_.write(Bytes("x"), 1));
  EXPECT_EQ(RET_PUB_INVAL_PARAM, dev_.read(reply, 8));
  EXPECT_EQ(0, dev_.cancel());
  EXPECT_EQ(0, dev_.close());
}

TEST_P(Dispatcher, RefusesEverythingBeforeAnyOpen) {
  unsigned char reply[8] = {};

  EXPECT_EQ(-1, dev_.write(Bytes("x"), 1));
  EXPECT_EQ(-1, dev_.read(reply, 8));
  EXPECT_EQ(-1, dev_.cancel());
  EXPECT_EQ(-1, dev_.close());
}

TEST_P(Dispatcher, RefusesKindsWithoutATransport) {
  const Pty pty;
  const termios found = pty.Settings();
  unsigned char reply[8] = {};
  for (const std::uint32_t kind : {0u, 2u, 3u, 4u, 5u, 6u, 8u, 0xFFFFFFFFu}) {
    QL_TRANSPORT_DESCRIPTION description = SerialPort(pty.path());
    description.nKind = kind;

    EXPECT_EQ(-1, dev_.open(&description)) << kind;

    EXPECT_EQ(0, dev_.change(&description));
    EXPECT_EQ(-1, dev_.write(Bytes("x"), 1)) << kind;
    EXPECT_EQ(-1, dev_.read(reply, 8)) << kind;
    EXPECT_EQ(-1, dev_.cancel()) << kind;
    EXPECT_EQ(-1, dev_.close()) << kind;
  }
  const termios left = pty.Settings();
  EXPECT_EQ(HexText(&found, sizeof found), HexText(&left, sizeof left));
}

TEST_P(Dispatcher, KeepsAnOpenPortWhenAKindIsRefused) {
  const Pty pty;
  QL_TRANSPORT_DESCRIPTION description = SerialPort(pty.path());
  ASSERT_EQ(0, dev_.open(&description));
  QL_TRANSPORT_DESCRIPTION sdt = {};
  sdt.nKind = QL_KIND_SDT;

  ASSERT_EQ(-1, dev_.open(&sdt));

  EXPECT_EQ(1, dev_.write(Bytes("x"), 1));
}

TEST_P(Dispatcher, PassesTheOpenResultOn) {
  QL_TRANSPORT_DESCRIPTION missing = SerialPort("/dev/no-such-tty");
  QL_TRANSPORT_DESCRIPTION no_tty = SerialPort("/dev/null");

  EXPECT_EQ(RET_PUB_OPEN_ERROR, dev_.open(&missing));
  EXPECT_EQ(-1, dev_.open(&no_tty));
  EXPECT_EQ(RET_PUB_INVAL_PARAM, dev_.open(nullptr));
  EXPECT_EQ(RET_PUB_INVAL_PARAM, dev_.change(nullptr));
}

TEST_P(Dispatcher, OpensAPathThatFillsItsFieldWithoutAZero) {
  const Pty pty;
  QL_TRANSPORT_DESCRIPTION description = SerialPort("");
  const std::string path =
      std::string(sizeof description.szPath - pty.path().size(), '/') + pty.path();
  std::memcpy(description.szPath, path.data(), sizeof description.szPath);
  description.szBluetooth[0] = 'x';  // behind it

  EXPECT_EQ(0, dev_.open(&description));

  EXPECT_EQ(1U, DescriptorsOn(pty.path()).size());
}

TEST_P(Dispatcher, KeepsTheReadSettingsOnlyOfASuccessfulOpen) {
  Pty pty;
  QL_TRANSPORT_DESCRIPTION description = SerialPort(pty.path(), 3);
  QL_TRANSPORT_DESCRIPTION missing = SerialPort("/dev/no-such-tty", 50);
  missing.pEnd = Complete;
  ASSERT_EQ(0, dev_.open(&description));
  ASSERT_EQ(RET_PUB_OPEN_ERROR, dev_.open(&missing));
  ASSERT_EQ(0, COMM_Com_OpenLinux(pty.path().c_str(), 9600));
  pty.HangUp();

  const double taken = SecondsUntilTimeout();

  EXPECT_LT(2.9, taken);
  EXPECT_GT(4.2, taken);
}

TEST_P(Dispatcher, GivesTheSecondReadWhatTheFirstLeft) {
  Pty pty;
  QL_TRANSPORT_DESCRIPTION description = SerialPort(pty.path(), 5);
  description.pEnd = [](const unsigned char*, int) {
    stand_in_clock::Advance(3);
    return 0;
  };
  unsigned char reply[8] = {};
  ASSERT_EQ(0, dev_.open(&description));
  ASSERT_EQ(0, dev_.read(reply, 8));
  ASSERT_EQ(0, dev_.set_end(nullptr));
  pty.HangUp();

  const double taken = SecondsUntilTimeout();

  EXPECT_LT(0.9, taken);  // Three seconds may have touched four on the clock.
  EXPECT_GT(3.2, taken);
}

// A step of an hour either way neither spends nor fills the budget.
TEST_P(Dispatcher, KeepsTheBudgetWhenTheWallClockIsStepped) {
  static double s_step;
  for (const double step : {-3600.0, 3600.0}) {
    Pty pty;
    QL_TRANSPORT_DESCRIPTION description = SerialPort(pty.path(), 5);
    description.pEnd = [](const unsigned char*, int) {
      stand_in_clock::StepWallClock(s_step);
      return 0;
    };
    unsigned char reply[8] = {};
    s_step = step;
    ASSERT_EQ(0, dev_.open(&description));
    ASSERT_EQ(0, dev_.read(reply, 8));
    ASSERT_EQ(0, dev_.set_end(nullptr));
    pty.HangUp();

    const double taken = SecondsUntilTimeout();

    EXPECT_LT(3.9, taken);  // The first read may have touched two seconds on the clock.
    EXPECT_GT(6.2, taken);
  }
}

TEST_P(Dispatcher, AllowsAboutASecondWhenTheBudgetIsSpent) {
  Pty pty;
  QL_TRANSPORT_DESCRIPTION description = SerialPort(pty.path(), 2);
  ASSERT_EQ(0, dev_.open(&description));
  pty.HangUp();
  EXPECT_LT(1.9, SecondsUntilTimeout());

  for (int i = 0; i < 3; ++i) EXPECT_GT(2.2, SecondsUntilTimeout());
}

TEST_P(Dispatcher, TakesANewBudgetAndEndCondition) {
  Pty pty;
  QL_TRANSPORT_DESCRIPTION description = SerialPort(pty.path(), 1);
  unsigned char reply[8] = {};
  ASSERT_EQ(0, dev_.open(&description));
  pty.HangUp();

  EXPECT_EQ(0, dev_.set_time(30));
  const double taken = SecondsUntilTimeout();
  EXPECT_LT(29.9, taken);
  EXPECT_GT(31.2, taken);

  EXPECT_EQ(0, dev_.set_end(Complete));
  EXPECT_EQ(0, dev_.read(reply, 8));
}

TEST_P(Dispatcher, KeepsCountingBelowTheSmallestBudget) {
  Pty pty;
  QL_TRANSPORT_DESCRIPTION description = SerialPort(pty.path());
  ASSERT_EQ(0, dev_.open(&description));
  pty.HangUp();
  ASSERT_EQ(0, dev_.set_time(INT_MIN));

  EXPECT_GT(2.2, SecondsUntilTimeout());
  EXPECT_GT(2.2, SecondsUntilTimeout());
}

TEST_P(Dispatcher, ChangesTheReadSettingsWithoutOpening) {
  Pty pty;
  QL_TRANSPORT_DESCRIPTION description = SerialPort(pty.path(), 1);
  QL_TRANSPORT_DESCRIPTION change = SerialPort("/dev/no-such-tty", 20);
  unsigned char reply[8] = {};
  ASSERT_EQ(0, dev_.open(&description));
  pty.HangUp();

  EXPECT_EQ(0, dev_.change(&change));
  EXPECT_LT(19.9, SecondsUntilTimeout());

  change.pEnd = Complete;
  EXPECT_EQ(0, dev_.change(&change));
  EXPECT_EQ(0, dev_.read(reply, 8));
}

TEST_P(Dispatcher, DoesNotTouchTheSelectorWhenTheReadSettingsChange) {
  const Pty pty;
  QL_TRANSPORT_DESCRIPTION description = SerialPort(pty.path());
  ASSERT_EQ(0, dev_.open(&description));
  ASSERT_EQ(0, COMM_Com_OpenAuxPort(3, 1, 9600, 0));
  const std::string opening = ESC "[/1;1;8;3;1;0M";
  ASSERT_EQ(opening, pty.Receive(opening.size()));
  description.nAuxNumber = 1;

  EXPECT_EQ(0, dev_.change(&description));

  EXPECT_EQ(3, dev_.write(Bytes("abc"), 3));
  EXPECT_EQ(0, dev_.close());
  EXPECT_EQ("abc", pty.ReceiveRest());
}

TEST_P(Dispatcher, RoutesToTheAuxiliaryPortByTheSelector) {
  const Pty pty;
  ASSERT_EQ(0, COMM_Com_OpenLinux(pty.path().c_str(), 9600));
  ASSERT_EQ(0, COMM_Com_OpenAuxPort(3, 1, 9600, 0));
  const std::string opening = ESC "[/1;1;8;3;1;0M";
  ASSERT_EQ(opening, pty.Receive(opening.size()));
  const QL_SAVED_PARAMETERS saved = {5, CompleteAtThree, QL_KIND_SERIAL, 1, 1};
  unsigned char reply[8] = {};

  EXPECT_EQ(0, SetBackUpParam(&saved));

  EXPECT_EQ(3, dev_.write(Bytes("abc"), 3));
  pty.Send("xyz");
  EXPECT_EQ(3, dev_.read(reply, 8));
  EXPECT_EQ(0, dev_.close());
  EXPECT_EQ(HexText(std::string(ESC "[/|abc|" ESC "[/M" ESC "[2l")), HexText(pty.ReceiveRest()));
}

TEST_P(Dispatcher, RoutesPastTheAuxiliaryPortBelowSelectorOne) {
  for (const int selector : {0, -1, INT_MIN}) {
    const Pty pty;
    ASSERT_EQ(0, COMM_Com_OpenLinux(pty.path().c_str(), 9600));
    ASSERT_EQ(0, COMM_Com_OpenAuxPort(2, 1, 9600, 0));
    const QL_SAVED_PARAMETERS saved = {5, nullptr, QL_KIND_SERIAL, 1, selector};
    ASSERT_EQ(0, SetBackUpParam(&saved));

    EXPECT_EQ(3, dev_.write(Bytes("abc"), 3));
    EXPECT_EQ(0, dev_.close());

    EXPECT_EQ(HexText(std::string(ESC "[0>abc")), HexText(pty.ReceiveRest()));
  }
}

TEST_P(Dispatcher, RoutesASessionThroughTheAuxiliaryPort) {
  const Pty terminal;
  const termios found = terminal.Settings();
  QL_TRANSPORT_DESCRIPTION description = SerialPort("/dev/no-such-tty");
  description.nAuxNumber = 2;
  description.nAuxParam = 3;
  description.nAuxCloseFlag = 1;
  description.nBaud = 19200;

  Child program = ChildOn(terminal, [&] {
    unsigned char reply[3] = {};
    std::string results = std::to_string(dev_.open(&description));
    results += " " + std::to_string(dev_.write(Bytes("abc"), 3));
    results += " " + std::to_string(dev_.read(reply, 3));
    results += " " + std::to_string(dev_.close());
    return results + " " + HexText(reply);
  });

  const std::string opening = ESC "[2h" ESC "[/2;1;9;3;1;0M" ESC "[/|abc|";
  EXPECT_EQ(HexText(opening), HexText(terminal.Receive(opening.size())));
  terminal.Send("xyz");
  EXPECT_EQ(HexText(std::string(ESC "[/M" ESC "[2l")), HexText(terminal.ReceiveRest()));
  EXPECT_EQ("0 3 3 0 78 79 7A", program.Output());
  const termios left = terminal.Settings();
  EXPECT_EQ(HexText(&found, sizeof found), HexText(&left, sizeof left));
}

// A selector that an earlier session left would wrap the writes of a plain port.
TEST_P(Dispatcher, SetsTheSelectorAtOpen) {
  const Pty pty;
  const QL_SAVED_PARAMETERS stale = {5, nullptr, QL_KIND_SERIAL, 1, 1};
  ASSERT_EQ(0, SetBackUpParam(&stale));
  ASSERT_EQ(0, COMM_Com_OpenAuxPort(3, 1, 9600, 0));
  QL_TRANSPORT_DESCRIPTION description = SerialPort(pty.path());

  ASSERT_EQ(0, dev_.open(&description));

  EXPECT_EQ(3, dev_.write(Bytes("abc"), 3));
  EXPECT_EQ(0, dev_.close());
  EXPECT_EQ("abc", pty.ReceiveRest());
}

TEST_P(Dispatcher, ReportsAMissingUsbReaderAndClosesThePortFirst) {
  const Pty pty;
  const termios found = pty.Settings();
  QL_TRANSPORT_DESCRIPTION serial = SerialPort(pty.path());
  QL_TRANSPORT_DESCRIPTION usb = MissingUsbReader();
  ASSERT_EQ(0, dev_.open(&serial));

  EXPECT_EQ(RET_PUB_DEVICE_ERROR, dev_.open(&usb));

  EXPECT_TRUE(DescriptorsOn(pty.path()).empty());
  const termios left = pty.Settings();
  EXPECT_EQ(HexText(&found, sizeof found), HexText(&left, sizeof left));
}

TEST_P(Dispatcher, RoutesToUsbByTheSavedKind) {
  QL_TRANSPORT_DESCRIPTION usb = MissingUsbReader();
  unsigned char reply[2048] = {};
  ASSERT_EQ(0, dev_.change(&usb));

  EXPECT_EQ(RET_PUB_DEVICE_ERROR, dev_.write(Bytes("x"), 1));
  EXPECT_EQ(RET_PUB_DEVICE_ERROR, dev_.read(reply, 8));
  EXPECT_EQ(RET_PUB_CANCEL, dev_.cancel());
  EXPECT_EQ(0, dev_.close());
}

TEST_P(Dispatcher, SetsTheTrailingZeroFlag) {
  EXPECT_EQ(0, dev_.set_clear_zero(0));
  EXPECT_EQ(0, dev_.set_clear_zero(1));
}

TEST_P(Dispatcher, RefusesANegativeReadLength) {
  const Pty pty;
  QL_TRANSPORT_DESCRIPTION description = SerialPort(pty.path());
  unsigned char reply[8] = {};
  ASSERT_EQ(0, dev_.open(&description));
  pty.Send("abc");

  EXPECT_EQ(RET_PUB_INVAL_PARAM, dev_.read(reply, -1));
}

TEST(DevOpenTransPort, ClosesThePortBeforeItOpensAnother) {
  const Pty first, second;
  QL_TRANSPORT_DESCRIPTION description = SerialPort(first.path());
  ASSERT_EQ(0, COMM_Dev_OpenTransPort(&description));
  description = SerialPort(second.path());

  ASSERT_EQ(0, COMM_Dev_OpenTransPort(&description));

  EXPECT_TRUE(DescriptorsOn(first.path()).empty());
}

TEST(DevOpenTransPort, LeavesAUsbTransportThatIsNotOpenAlone) {
  NEEDS_PRIVATE_ROOT();
  const Pty pty;
  QL_TRANSPORT_DESCRIPTION usb = MissingUsbReader();
  QL_TRANSPORT_DESCRIPTION serial = SerialPort(pty.path());
  ASSERT_EQ(RET_PUB_DEVICE_ERROR, COMM_Dev_OpenTransPort(&usb));
  SwitchLogging(true);

  ASSERT_EQ(0, COMM_Dev_OpenTransPort(&serial));

  for (const std::string& line : LogLines()) EXPECT_EQ(std::string::npos, line.find("hid"));
}

// All 256 characters of the path and nothing of the field behind it.
TEST(DevOpenTransPort, EndsAPathWithoutAZero) {
  NEEDS_PRIVATE_ROOT();
  QL_TRANSPORT_DESCRIPTION description = SerialPort("");
  std::memset(description.szPath, 'p', sizeof description.szPath);
  std::memset(description.szBluetooth, 'b', sizeof description.szBluetooth);
  SwitchLogging(true);

  EXPECT_EQ(RET_PUB_OPEN_ERROR, COMM_Dev_OpenTransPort(&description));

  EXPECT_EQ("  TIME  INFO:    CommDev:   szTtyName = " + std::string(256, 'p') + " nBaud = 9600  ",
            LogLines().back());
}

TEST(DevLogLines, NameTheStepsOfASerialSession) {
  NEEDS_PRIVATE_ROOT();
  const Pty pty;
  QL_TRANSPORT_DESCRIPTION description = SerialPort(pty.path());
  unsigned char reply[3] = {};
  SwitchLogging(true);

  ASSERT_EQ(0, COMM_Dev_OpenTransPort(&description));
  ASSERT_EQ(2, Write("ab"));
  pty.Send("\x01\xAB\xFF");
  ASSERT_EQ(3, COMM_Dev_ReadDataFromTransPort(reply, 3));
  ASSERT_EQ(0, COMM_Dev_ChangeReadTimeOut(1));
  ASSERT_EQ(0, COMM_Dev_ChangeEndCondition(nullptr));
  ASSERT_EQ(0, COMM_Dev_CancelRead());
  ASSERT_EQ(0, COMM_Dev_SetHidClearZero(1));
  ASSERT_EQ(0, COMM_Dev_CloseTransPort());
  ASSERT_EQ(RET_PUB_INVAL_PARAM, COMM_Dev_ReadDataFromTransPort(reply, 3));

  const std::string start = "  TIME  INFO:    CommDev:  ";
  const std::vector<std::string> expected = {
      start + "ICC_OpenLinuxTransPort",
      "",
      start + "[COMM_Com_OpenLinux ] Start ",
      start + " szTtyName = " + pty.path() + " nBaud = 9600  ",
      start + "open linux com success!",
      "",
      start + "[ICC_WriteDataToLinuxTransPort] Start ",
      " TIME  PACKGET READ  LEN=3   HEX: 01ABFF",
      start + "[COMM_Dev_SetHidClearZero] Start ",
      start + "[COMM_Dev_SetHidClearZero] end ",
      start + "[ICC_CloseLinuxTransPort] Start ",
      start + "[RET_PUB_INVAL_PARAM]  ",
      " TIME  PACKGET READ  LEN=-2   HEX: ",
  };
  EXPECT_EQ(expected, LogLines());
}

TEST(DevLogLines, NameTheUsbTransport) {
  NEEDS_PRIVATE_ROOT();
  QL_TRANSPORT_DESCRIPTION usb = MissingUsbReader();
  unsigned char reply[2048] = {};
  SwitchLogging(true);

  ASSERT_EQ(RET_PUB_DEVICE_ERROR, COMM_Dev_OpenTransPort(&usb));

  const std::vector<std::string> opened = LogLines();
  ASSERT_LT(4u, opened.size());
  EXPECT_EQ("  TIME  INFO:    CommDev:  ICC_OpenLinuxTransPort", opened[0]);
  EXPECT_EQ("  TIME  INFO:    CommDev:  TYPE_USBLIB_HID", opened[2]);

  ASSERT_EQ(0, COMM_Dev_ChangeTermParam(&usb));
  SwitchLogging(true);
  ASSERT_EQ(RET_PUB_DEVICE_ERROR, COMM_Dev_ReadDataFromTransPort(reply, 8));
  EXPECT_EQ("  TIME  INFO:    CommDev:  TYPE_USBLIB_HID\n", LogLines().at(0));
}

TEST(SetBackUpParam, RefusesNull) { EXPECT_EQ(RET_PUB_INVAL_PARAM, SetBackUpParam(nullptr)); }

TEST(DevUseComm, ReturnsItsArgument) {
  for (const int x : {5, 0, -1, INT_MAX, INT_MIN}) EXPECT_EQ(x, COMM_Dev_UseComm(x));
}
