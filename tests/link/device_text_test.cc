// Device strings: which keyword each one is, and what opening it says.
#include <gtest/gtest.h>

#include <cctype>
#include <clocale>
#include <ostream>
#include <string>

#include "quillonid/link.h"
#include "quillonid/results.h"
#include "tests/link/log_text.h"
#include "tests/testing/own_locale.h"
#include "tests/testing/private_root.h"
#include "tests/usb/fake_libusb.h"

namespace {

constexpr std::uint32_t kBefore = 3;  // connection type that an "SDT" device left

// What opening `device` logs between its start and its transport.
Lines Classified(const char* device, int baud = 9600) {
  SwitchLogging(true);
  tFuncOpenDevice(device, "", baud, 0, 5);
  Lines lines = Logged("3");
  EXPECT_EQ("===>  [tFuncOpenDevice] Start ", lines.at(0));
  EXPECT_EQ("***********************pszDevice = " + std::string(device), lines.at(1));
  lines.erase(lines.begin(), lines.begin() + 2);
  for (std::size_t i = 0; i < lines.size(); ++i) {
    if (lines[i] == " i = 0 " || lines[i] == "ICC_OpenLinuxTransPort") lines.resize(i);
  }
  return lines;
}

struct Text {
  const char* device;
  Lines logged;
  int kind;  // that the open fails with, or kUsb; 0: not understood
  std::uint32_t connect_type = kBefore;
};
constexpr int kUsb = 7;

void PrintTo(const Text& row, std::ostream* out) { *out << '"' << row.device << '"'; }

class DeviceText : public testing::TestWithParam<Text> {};

}  // namespace

TEST_P(DeviceText, IsRecognised) {
  NEEDS_PRIVATE_ROOT();
  const Text& row = GetParam();
  fake_libusb::Now().devices.clear();
  tFuncOpenDevice("SDT", "", 9600, 0, 5);
  SwitchLogging(true);

  const int result = tFuncOpenDevice(row.device, "", 9600, 0, 5);

  EXPECT_EQ(row.kind == 0 ? RET_PUB_INVAL_PARAM : RET_PUB_DEVICE_ERROR, result);
  EXPECT_EQ(row.kind == kUsb ? 6u : 0u, CountLogged("3!: ICC_OpenTransPort: "));
  const std::string type = ", type = " + std::to_string(row.kind);
  EXPECT_EQ(row.kind != kUsb && row.kind != 0, Logged().back().ends_with(type)) << Logged().back();
  EXPECT_EQ(row.connect_type, Dev_Zel_IdCard_GetConnectType());
  EXPECT_EQ(row.logged, Classified(row.device));
}

INSTANTIATE_TEST_SUITE_P(
    Rows, DeviceText,
    testing::Values(
        Text{
            "HID", {"USE HID"},
             kUsb, 0
},
        Text{"hid", {"USE HID"}, kUsb, 0}, Text{"HiD", {"USE HID"}, kUsb, 0},
        Text{"1001", {"USE HID"}, kUsb, 0}, Text{"SDT", {"USE SDT"}, 3, 3},
        Text{"sdt", {"USE SDT"}, 3, 3}, Text{"PCSC", {"USE PCSC"}, 2, 2},
        Text{"pcSC", {"USE PCSC"}, 2, 2}, Text{"AUX1", {"USE AUX"}, 4}, Text{"aux", {"USE AUX"}, 4},
        Text{"AuxiliaryPort", {"USE AUX"}, 4}, Text{"AUX-99999999999999999999", {"USE AUX"}, 4},
        Text{"BLUETOOTH:00:11:22:33:44:55", {" USE BLUETOOTH"}, 6},
        Text{"bluetooth 00-11-22-33-44-55", {" USE BLUETOOTH"}, 6},
        Text{"/dev/no-such-tty", {" USE DEV", "szTermPath ======= /dev/no-such-tty "}, 1},
        Text{"/device", {" USE DEV", "szTermPath ======= /device "}, 1},
        Text{"/dev", {" USE DEV", "szTermPath ======= /dev "}, 1},
        Text{"COM1", {"szTermPath =    **  ***  "}, 1},
        Text{"COM", {"szTermPath =    **  ***  "}, 1},
        Text{"COMMON", {"szTermPath =    **  ***  "}, 1}));

INSTANTIATE_TEST_SUITE_P(
    NotUnderstood, DeviceText,
    testing::Values(Text{"H", {}, 0}, Text{"HI", {}, 0}, Text{"HIDX", {}, 0}, Text{"HID ", {}, 0},
                    Text{"1", {}, 0}, Text{"10010", {}, 0}, Text{"SDTX", {}, 0}, Text{"PCS", {}, 0},
                    Text{"PCSC1", {}, 0}, Text{"AU", {}, 0}, Text{"BLUETOOTH", {}, 0},
                    Text{"BLUETOOTH:00:11:22:33:44:5", {}, 0},
                    Text{"BLUETOOTH:00:11:22:33:44:556", {}, 0}, Text{"/de", {}, 0},
                    Text{"/DEV/ttyS0", {}, 0}, Text{"dev/ttyS0", {}, 0}, Text{"C", {}, 0},
                    Text{"CO", {}, 0}, Text{"com1", {}, 0}, Text{"ttyS0", {}, 0},
                    Text{"读卡器", {}, 0}, Text{" ", {}, 0}));

// In a Turkish locale the lower case of "I" is a letter of its own.
TEST(DeviceTextCase, IsTheSameInEveryLocale) {
  fake_libusb::Now().devices.clear();
  ASSERT_TRUE(MakeOwnLocale("tr_TR", "ISO-8859-9"));
  for (const char* locale : {"C", "C.UTF-8", "tr_TR.ISO-8859-9"}) {
    ASSERT_NE(nullptr, std::setlocale(LC_ALL, locale));
    EXPECT_EQ(RET_PUB_DEVICE_ERROR, tFuncOpenDevice("hid", "", 9600, 0, 5));
    EXPECT_EQ(RET_PUB_INVAL_PARAM, tFuncOpenDevice("h\xC4\xB1"
                                                   "d",
                                                   "", 9600, 0, 5));
  }
  EXPECT_NE('i', std::tolower('I')) << "the Turkish locale is not in use";
}

TEST(DeviceTextEmpty, OpensNothing) {
  NEEDS_PRIVATE_ROOT();
  SwitchLogging(true);

  EXPECT_EQ(RET_PUB_DEVICE_ERROR, tFuncOpenDevice(nullptr, "", 9600, 0, 5));
  EXPECT_EQ(RET_PUB_DEVICE_ERROR, tFuncOpenDevice("", "", 9600, 0, 5));

  EXPECT_EQ((Lines{"3: ===>  [tFuncOpenDevice] Start ", "3: ===>  [tFuncOpenDevice] Start "}),
            Logged());
}

TEST(DeviceTextCom, TakesTwoSpeedsAlone) {
  NEEDS_PRIVATE_ROOT();
  for (const int baud : {57600, 19200, 0, -1, 9601}) {
    EXPECT_EQ(Lines{}, Classified("COM1", baud)) << baud;
    EXPECT_EQ(RET_PUB_INVAL_PARAM, tFuncOpenDevice("COM1", "", baud, 0, 5)) << baud;
    EXPECT_EQ(0u, CountLogged("3: ICC_OpenLinuxTransPort")) << baud;
  }
  for (const int baud : {9600, 115200}) {
    EXPECT_EQ(RET_PUB_DEVICE_ERROR, tFuncOpenDevice("COM1", "", baud, 0, 5)) << baud;
  }
}

// On purpose: with the raise-baud flag too, the caller's speed decides.
TEST(DeviceTextCom, TakesTheCallersSpeedWithTheFlagSet) {
  NEEDS_PRIVATE_ROOT();
  Dev_Zel_Id_RaiseBaundFlag(1);
  SwitchLogging(true);

  EXPECT_EQ(RET_PUB_INVAL_PARAM, tFuncOpenDevice("COM1", "", 57600, 0, 5));
  EXPECT_EQ(RET_PUB_DEVICE_ERROR, tFuncOpenDevice("COM1", "", 115200, 0, 5));

  EXPECT_EQ(1u, CountLogged("3:  szTtyName =  nBaud = 9600  "));
}

TEST(DeviceTextCom, ForgetsAnEarlierPath) {
  NEEDS_PRIVATE_ROOT();
  tFuncOpenDevice("/dev/no-such-tty", "", 9600, 0, 5);
  SwitchLogging(true);

  EXPECT_EQ(RET_PUB_DEVICE_ERROR, tFuncOpenDevice("COM1", "", 9600, 0, 5));

  EXPECT_EQ(1u, CountLogged("3:  szTtyName =  nBaud = 9600  "));
  EXPECT_EQ("3!: COMM_Id_OpenCardReader:-3, type = 1", Logged().back());
}

TEST(DeviceTextPath, ReplacesALongerOne) {
  NEEDS_PRIVATE_ROOT();
  tFuncOpenDevice("/dev/no-such-tty-with-a-long-name", "", 9600, 0, 5);

  EXPECT_EQ((Lines{" USE DEV", "szTermPath ======= /dev/no "}), Classified("/dev/no"));
}

TEST(ConnectType, StaysZeroUntilAKeywordSetsIt) {
  fake_libusb::Now().devices.clear();
  EXPECT_EQ(0u, Dev_Zel_IdCard_GetConnectType());

  tFuncOpenDevice("/dev/no-such-tty", "", 9600, 0, 5);
  EXPECT_EQ(0u, Dev_Zel_IdCard_GetConnectType());
  tFuncOpenDevice("PCSC", "", 9600, 0, 5);
  EXPECT_EQ(2u, Dev_Zel_IdCard_GetConnectType());
  tFuncOpenDevice("nonsense", "", 9600, 0, 5);
  EXPECT_EQ(2u, Dev_Zel_IdCard_GetConnectType());
  tFuncOpenDevice("HID", "", 9600, 0, 5);
  EXPECT_EQ(0u, Dev_Zel_IdCard_GetConnectType());
}
