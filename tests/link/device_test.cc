// Opening and closing a serial device, its baud rate, and the card reader's own channel.
#include <dlfcn.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <termios.h>

#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdarg>
#include <functional>
#include <ostream>
#include <string>
#include <thread>

#include "quillonid/link.h"
#include "quillonid/results.h"
#include "tests/link/log_text.h"
#include "tests/link/serial_reader.h"
#include "tests/testing/held.h"
#include "tests/testing/private_root.h"
#include "tests/testing/stand_in_clock.h"

namespace {

// Opens of a tty for reading and writing: how many more go through until one fails, and what is
// done before the second one.
int s_opens_left = INT_MAX;
int s_opens;
std::function<void()> s_before_second;

constexpr int kRaise = 1;

class Device : public SerialDevice {
 protected:
  // Opens with the flag set. The reader has to hear `command` before it is reached again; and
  // opening discards what the other end of a pseudo-terminal has not fetched yet.
  int OpenAndRaise(int baud, const std::string& command) {
    s_opens = 0;
    s_before_second = [=, this] {
      EXPECT_EQ(command, HexText(tty_.Receive(FromHex(command).size())));
    };
    const int result = Open(baud);
    EXPECT_EQ(2, s_opens);
    return result;
  }

  speed_t Speed() const {
    const termios settings = tty_.Settings();
    return cfgetospeed(&settings);
  }
};

}  // namespace

extern "C" int open(const char* path, int flags, ...) {
  using Open = int(const char*, int, ...);
  static const auto real = reinterpret_cast<Open*>(dlsym(RTLD_NEXT, "open"));
  va_list more;
  va_start(more, flags);
  const mode_t mode = flags & O_CREAT ? va_arg(more, mode_t) : 0;
  va_end(more);
  if (flags == O_RDWR) {
    if (++s_opens == 2 && s_before_second) s_before_second();
    if (s_opens_left-- <= 0) {
      errno = ENXIO;
      return -1;
    }
  }
  return real(path, flags, mode);
}

TEST_F(Device, OpensAPathAtTheGivenSpeed) {
  EXPECT_EQ(0, Open(115200));

  EXPECT_EQ(speed_t{B115200}, Speed());
  EXPECT_EQ("", Sent());
}

TEST_F(Device, ReturnsTheClosesResult) {
  EXPECT_EQ(-1, tFuncCloseDevice()) << "nothing was ever open";

  ASSERT_EQ(0, Open());

  EXPECT_EQ(0, tFuncCloseDevice());
  EXPECT_TRUE(DescriptorsOn(tty_.path()).empty());
}

TEST_F(Device, RaisesTheSpeedOnceItIsOpen) {
  Dev_Zel_Id_RaiseBaundFlag(kRaise);

  ASSERT_EQ(0, OpenAndRaise(115200, "1B 25 53 31"));
  EXPECT_EQ(speed_t{B115200}, Speed());

  EXPECT_EQ("1B 25 42", Sent()) << "back to the reader's own speed";
  EXPECT_EQ(0, stand_in_clock::SleepCalls());
}

TEST_F(Device, RaisesForAnyFlagButZero) {
  Dev_Zel_Id_RaiseBaundFlag(-7);
  ASSERT_EQ(0, OpenAndRaise(38400, "1B 25 53 32"));
  EXPECT_EQ("1B 25 42", Sent());

  Dev_Zel_Id_RaiseBaundFlag(0);
  ASSERT_EQ(0, Open(38400));
  EXPECT_EQ(speed_t{B38400}, Speed());
  EXPECT_EQ("", Sent());
}

TEST_F(Device, RaisesNothingAt9600) {
  Dev_Zel_Id_RaiseBaundFlag(kRaise);

  ASSERT_EQ(0, Open(9600));

  EXPECT_EQ(speed_t{B9600}, Speed());
  EXPECT_EQ("", Sent());
}

TEST_F(Device, SendsNothingForASpeedWithoutCommand) {
  Dev_Zel_Id_RaiseBaundFlag(kRaise);

  ASSERT_EQ(0, OpenAndRaise(57600, ""));

  EXPECT_EQ(speed_t{B57600}, Speed());
  EXPECT_EQ("1B 25 42", Sent());
}

TEST_F(Device, SendsNoResetWhenTheFlagIsOffAgain) {
  Dev_Zel_Id_RaiseBaundFlag(kRaise);
  ASSERT_EQ(0, OpenAndRaise(19200, "1B 25 53 33"));
  Dev_Zel_Id_RaiseBaundFlag(0);

  EXPECT_EQ("", Sent());
}

TEST_F(Device, LogsRaisingAndReset) {
  NEEDS_PRIVATE_ROOT();
  Dev_Zel_Id_RaiseBaundFlag(kRaise);
  SwitchLogging(true);

  ASSERT_EQ(0, OpenAndRaise(115200, "1B 25 53 31"));
  const Lines opening = {
      "3: ===>  [tFuncOpenDevice] Start ",
      "3: ***********************pszDevice = " + tty_.path(),
      "3:  USE DEV",
      "3: szTermPath ======= " + tty_.path() + " ",
      "2: [COMM_Zel_OpenReader]Start ",
      "3: ICC_OpenLinuxTransPort",
      "3: [COMM_Com_OpenLinux ] Start ",
      "3:  szTtyName = " + tty_.path() + " nBaud = 9600  ",
      "3: open linux com success!",
      "2: [COMM_Zel_OpenReader]End nRet = 0  ",
      "3: [ICC_WriteDataToLinuxTransPort] Start ",
      "3: [ICC_CloseLinuxTransPort] Start ",
      "2: [COMM_Zel_OpenReader]Start ",
      "3: ICC_OpenLinuxTransPort",
      "3: [COMM_Com_OpenLinux ] Start ",
      "3:  szTtyName = " + tty_.path() + " nBaud = 115200  ",
      "3: open linux com success!",
      "2: [COMM_Zel_OpenReader]End nRet = 0  ",
  };
  EXPECT_EQ(opening, WithoutEmptyLines(Logged()));

  SwitchLogging(true);
  tFuncCloseDevice();
  EXPECT_EQ((Lines{
                "3: baud reset ",
                "3: [ICC_WriteDataToLinuxTransPort] Start ",
                "3: ICC_CloseTransPort START",
                "3: [ICC_CloseLinuxTransPort] Start ",
            }),
            Logged());
}

TEST_F(Device, LogsAPlainClose) {
  NEEDS_PRIVATE_ROOT();
  ASSERT_EQ(0, Open(115200));
  SwitchLogging(true);

  tFuncCloseDevice();

  EXPECT_EQ((Lines{"3: ICC_CloseTransPort START", "3: [ICC_CloseLinuxTransPort] Start "}),
            Logged());
}

TEST_F(Device, FailsWhenItCannotBeOpenedAgain) {
  NEEDS_PRIVATE_ROOT();
  Dev_Zel_Id_RaiseBaundFlag(kRaise);
  SwitchLogging(true);
  s_opens_left = 1;

  EXPECT_EQ(RET_PUB_DEVICE_ERROR, Open(115200));

  EXPECT_EQ("3!: COMM_Id_OpenCardReader:-3, type = 1", Logged().back());
  EXPECT_TRUE(DescriptorsOn(tty_.path()).empty());
  s_opens_left = INT_MAX;
}

TEST_F(Device, GivesUpWhenItCannotBeOpened) {
  NEEDS_PRIVATE_ROOT();
  SwitchLogging(true);
  const std::ptrdiff_t before = OpenDescriptors();

  EXPECT_EQ(RET_PUB_DEVICE_ERROR, tFuncOpenDevice("/dev/no-such-tty", "", 9600, 0, 5));
  EXPECT_EQ("3!: COMM_Id_OpenCardReader:-3, type = 1", Logged().back());
  EXPECT_EQ(0u, CountLogged("3: [ICC_CloseLinuxTransPort] Start "));

  EXPECT_EQ(RET_PUB_DEVICE_ERROR, tFuncOpenDevice("/dev/null", "", 9600, 0, 5));
  EXPECT_EQ("3!: COMM_Id_OpenCardReader:-1, type = 1", Logged().back()) << "it is no tty";
  EXPECT_EQ(before, OpenDescriptors());
}

TEST_F(Device, NeverOpensAPathThatDoesNotFit) {
  NEEDS_PRIVATE_ROOT();
  SwitchLogging(true);

  for (std::size_t length = 250; length <= 300; ++length) {
    SwitchLogging(true);
    const std::string path = "/dev/" + std::string(length - 5, 'x');

    EXPECT_EQ(RET_PUB_DEVICE_ERROR, tFuncOpenDevice(path.c_str(), "", 9600, 0, 5));

    EXPECT_EQ(length <= 255 ? 1u : 0u, CountLogged("3: [COMM_Com_OpenLinux ] Start ")) << length;
    EXPECT_EQ(length <= 255 ? 1u : 0u, CountLogged("3:  szTtyName = " + path + " ")) << length;
  }
  ASSERT_EQ(0, Open()) << "the description is whole";
}

TEST_F(Device, StaysTheSerialPortAfterAnAuxiliaryPort) {
  EXPECT_EQ(RET_PUB_DEVICE_ERROR, tFuncOpenDevice("AUX1", "", 9600, 0, 5));

  ASSERT_EQ(0, Open());

  EXPECT_EQ(0, COMM_Zel_ReaderCmd(Octets("abc"), 3));
  EXPECT_EQ("61 62 63", Sent()) << "and nothing around it";
}

TEST_F(Device, SetsTheTimeOfReads) {
  stand_in_clock::SetSpeed(20);
  unsigned char reply[16] = {};
  ASSERT_EQ(0, tFuncOpenDevice(tty_.path().c_str(), "", 9600, 0, 120));
  std::thread reader([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(500));  // 10 s of the library's
    tty_.Send(Answer(3));
  });

  EXPECT_EQ(10, Dev_Zel_IdReciveData(reply, sizeof reply));

  reader.join();
  tFuncCloseDevice();
}

struct Baud {
  int baud;
  int result;
  const char* sent;
};

void PrintTo(const Baud& row, std::ostream* out) { *out << row.baud; }

class ComIdSetBaud : public Device, public testing::WithParamInterface<Baud> {};

TEST_P(ComIdSetBaud, SendsOneRawCommand) {
  ASSERT_EQ(0, Open());

  EXPECT_EQ(GetParam().result, COMM_Id_SetBaud(GetParam().baud));

  EXPECT_EQ(GetParam().sent, Sent());
}

INSTANTIATE_TEST_SUITE_P(Rates, ComIdSetBaud,
                         testing::Values(Baud{115200, 4, "1B 25 53 31"},
                                         Baud{38400, 4, "1B 25 53 32"},
                                         Baud{19200, 4, "1B 25 53 33"},
                                         Baud{9600, 4, "1B 25 53 34"}, Baud{0, 3, "1B 25 42"},
                                         Baud{57600, RET_PUB_INVAL_PARAM, ""},
                                         Baud{-1, RET_PUB_INVAL_PARAM, ""}));

TEST_F(Device, SelectsAPortOfAnExtensionBox) {
  ASSERT_EQ(0, Open());

  for (const char* letter : {"A", "B", "C", "K", "Apple"}) EXPECT_EQ(0, Set_ZelBp(letter));
  for (const char* letter : {"D", "a", "", " A", "\x1B"}) EXPECT_EQ(0, Set_ZelBp(letter));
  EXPECT_EQ(0, Set_ZelBp(nullptr));

  EXPECT_EQ("1B 25 41 1B 25 42 1B 25 43 1B 25 4B 1B 25 41", Sent());
}

TEST_F(Device, ReportsAPortSelectionThatWasNotSent) {
  EXPECT_EQ(RET_PUB_WRITE_ERROR, Set_ZelBp("A"));
  EXPECT_EQ(0, Set_ZelBp("Z"));
}

TEST_F(Device, LogsPortSelection) {
  NEEDS_PRIVATE_ROOT();
  SwitchLogging(true);

  Set_ZelBp(nullptr);

  EXPECT_EQ((Lines{"3: [Set_ZelBp] Start "}), Logged());
}

TEST(SetExtNo, AcceptsAnything) {
  EXPECT_EQ(0, SetExtNo("12"));
  EXPECT_EQ(0, SetExtNo(nullptr));
}

TEST(ComIdReader, HasPartsThatDoNothing) {
  EXPECT_EQ(0, COMM_Id_InitCardReaderParam(nullptr));
  EXPECT_EQ(0, COMM_Id_CardReaderResetSynBps());
}

TEST_F(Device, RefusesASlot) {
  QL_TRANSPORT_DESCRIPTION description = SerialDescription(tty_.path(), 5);
  description.nSlot = 1;

  EXPECT_EQ(RET_PUB_DEVICE_ERROR, COMM_Id_OpenCardReader(&description));
  EXPECT_EQ(RET_PUB_DEVICE_ERROR, COMM_Id_OpenCardReader(nullptr));

  EXPECT_TRUE(DescriptorsOn(tty_.path()).empty());
}

TEST_F(Device, ReturnsTheTransportsCodeForACardReader) {
  QL_TRANSPORT_DESCRIPTION description = SerialDescription("/dev/no-such-tty", 5);

  EXPECT_EQ(RET_PUB_OPEN_ERROR, COMM_Id_OpenCardReader(&description));
}

TEST_F(Device, FramesTheCardReaderChannel) {
  unsigned char reply[8] = {};
  ASSERT_EQ(0, Open());
  tty_.Send(
      "\x01"
      "000390004141"
      "\x04");
  tty_.Send(
      "\x01"
      "0003900041"
      "=1"
      "\x04");

  EXPECT_EQ(0, COMM_Id_WriteDataToCardReader(Octets("A"), 1));
  EXPECT_EQ(RET_PUB_CHECK_ERROR, COMM_Id_ReadDataFromCardReader(reply, 8)) << "both at once";
  tty_.Send(
      "\x01"
      "0003900041"
      "=1"
      "\x04");
  EXPECT_EQ(1, COMM_Id_ReadDataFromCardReader(reply, 8));

  EXPECT_EQ("41 00 00 00 00 00 00 00", HexText(reply));
  EXPECT_EQ(0x9000u, COMM_Id_CardReaderGetRecStatus());
  EXPECT_EQ("01 30 30 30 31 34 31 34 31 04", Sent());
}

TEST_F(Device, ProbesWithAWriteThatASerialPortRefuses) {
  QL_TRANSPORT_DESCRIPTION description = SerialDescription(tty_.path(), 5);
  ASSERT_EQ(0, Open());

  EXPECT_EQ(1, COMM_Id_CardReaderSynBps(&description));

  EXPECT_EQ("", Sent());
}
