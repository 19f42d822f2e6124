#include <gtest/gtest.h>

#include <cerrno>
#include <ostream>
#include <string>
#include <vector>

#include "quillonid/transport.h"
#include "simulator/usb/emulated_reader.h"
#include "tests/testing/private_root.h"
#include "tests/usb/log_text.h"

namespace {

using simulator::EmulatedUsbReader;
using Names = std::vector<std::string>;

constexpr std::uint32_t kVendor = 0x0403;
constexpr std::uint32_t kProduct = 0xBCD5;

int Open() { return COMM_Hid_OpenLinuxUsbLibHid(kVendor, kProduct); }

TEST(HidOpen, TakesInterfaceZeroAfterAReset) {
  EmulatedUsbReader reader;

  ASSERT_EQ(0, Open());

  EXPECT_TRUE(reader.Claimed());
  EXPECT_EQ((Names{"RESET", "GETDRIVER", "CLAIM"}), reader.Trace());
  COMM_Hid_CloseLinuxUsbLibHid();
}

TEST(HidOpen, DetachesTheKernelsDriverAfterTheReset) {
  EmulatedUsbReader reader({.driver = "usbhid"});

  ASSERT_EQ(0, Open());

  EXPECT_TRUE(reader.Claimed());
  EXPECT_EQ((Names{"RESET", "GETDRIVER", "GETDRIVER", "DISCONNECT", "CLAIM"}), reader.Trace());
  COMM_Hid_CloseLinuxUsbLibHid();
}

TEST(HidOpen, LogsItsSteps) {
  NEEDS_PRIVATE_ROOT();
  EmulatedUsbReader reader;
  SwitchLogging(true);

  ASSERT_EQ(0, Open());

  // The later device comes first in libusb's list.
  EXPECT_EQ(
      (Names{Info("openHid:0403,bcd5\n"), Info("vid=0403 pid=BCD5\n"), Info("find target device\n"),
             Info("libusb_reset_device\n"), Info("open hiddev success!\n")}),
      LogLines());
  COMM_Hid_CloseLinuxUsbLibHid();
}

struct OtherIds {
  std::uint32_t vendor, product;
  const char* logged;
};

void PrintTo(const OtherIds& ids, std::ostream* out) { *out << ids.logged; }

class HidOpenOtherIds : public testing::TestWithParam<OtherIds> {};

TEST_P(HidOpenOtherIds, FindsNoDevice) {
  NEEDS_PRIVATE_ROOT();
  EmulatedUsbReader reader;
  SwitchLogging(true);

  EXPECT_EQ(-50, COMM_Hid_OpenLinuxUsbLibHid(GetParam().vendor, GetParam().product));

  EXPECT_EQ((Names{Info(std::string(GetParam().logged) + "\n"), Info("vid=0403 pid=BCD5\n"),
                   Info("vid=1D6B pid=0002\n"), Info("get hiddev err!\n")}),
            LogLines());
  EXPECT_EQ(Names{}, reader.Trace());
}

INSTANTIATE_TEST_SUITE_P(, HidOpenOtherIds,
                         testing::Values(OtherIds{0x0403, 0xBCD7, "openHid:0403,bcd7"},
                                         OtherIds{0x2B46, 0xBCD5, "openHid:2b46,bcd5"},
                                         OtherIds{0xBCD5, 0x0403, "openHid:bcd5,0403"},
                                         OtherIds{0x10403, 0xBCD5, "openHid:10403,bcd5"},
                                         OtherIds{0, 0, "openHid:0000,0000"}));

TEST(HidOpen, KeepsTheOpenDeviceWhateverTheIds) {
  NEEDS_PRIVATE_ROOT();
  EmulatedUsbReader reader;
  ASSERT_EQ(0, Open());
  const Names steps = reader.Trace();
  SwitchLogging(true);

  EXPECT_EQ(0, COMM_Hid_OpenLinuxUsbLibHid(0x2B46, 0xBE11));

  EXPECT_EQ(steps, reader.Trace());
  EXPECT_EQ(Names{Info("openHid:2b46,be11\n")}, LogLines());
  COMM_Hid_CloseLinuxUsbLibHid();
}

TEST(HidOpen, FailsWhenTheNodeCannotBeOpened) {
  NEEDS_PRIVATE_ROOT();
  EmulatedUsbReader reader;
  reader.RemoveNode();
  SwitchLogging(true);

  EXPECT_EQ(-3, Open());

  EXPECT_EQ((Names{Info("openHid:0403,bcd5\n"), Info("vid=0403 pid=BCD5\n"),
                   Info("find target device\n"), Info("libusb open failed\n")}),
            LogLines());
  EXPECT_EQ(-50, COMM_Hid_WriteLinuxUsbLibHid(nullptr, 0));
}

TEST(HidOpen, FailsWhenTheClaimIsRefused) {
  NEEDS_PRIVATE_ROOT();
  EmulatedUsbReader reader({.claim_errno = EBUSY});
  SwitchLogging(true);

  EXPECT_EQ(-3, Open());

  EXPECT_EQ(
      (Names{Info("openHid:0403,bcd5\n"), Info("vid=0403 pid=BCD5\n"), Info("find target device\n"),
             Info("libusb_reset_device\n"), Error("Cannot Claim Interface:-6\n")}),
      LogLines());
  EXPECT_TRUE(reader.WaitClosed());
  EXPECT_EQ((Names{"RESET", "GETDRIVER", "CLAIM", "CLOSE"}), reader.Trace());
  EXPECT_EQ(-50, COMM_Hid_WriteLinuxUsbLibHid(nullptr, 0));
}

TEST(HidClose, ReleasesTheInterfaceAndClosesTheDevice) {
  NEEDS_PRIVATE_ROOT();
  EmulatedUsbReader reader;
  ASSERT_EQ(0, Open());
  SwitchLogging(true);

  EXPECT_EQ(0, COMM_Hid_CloseLinuxUsbLibHid());

  EXPECT_EQ((Names{Info("Close hid!\n"), Info("free interface!\n"), Info("exit libusb!\n")}),
            LogLines());
  EXPECT_TRUE(reader.WaitClosed());
  EXPECT_EQ((Names{"RESET", "GETDRIVER", "CLAIM", "RELEASE", "CLOSE"}), reader.Trace());
}

TEST(HidClose, WithoutADeviceOnlyLogs) {
  NEEDS_PRIVATE_ROOT();
  EmulatedUsbReader reader;
  SwitchLogging(true);

  EXPECT_EQ(0, COMM_Hid_CloseLinuxUsbLibHid());

  EXPECT_EQ(Names{Info("Close hid!\n")}, LogLines());
  EXPECT_EQ(Names{}, reader.Trace());
}

TEST(HidClose, LetsTheNextOpenTakeAnotherDevice) {
  EmulatedUsbReader reader;
  ASSERT_EQ(0, Open());
  COMM_Hid_CloseLinuxUsbLibHid();

  EXPECT_EQ(-50, COMM_Hid_OpenLinuxUsbLibHid(0x2B46, 0xBE11));
  EXPECT_EQ(0, Open());

  EXPECT_TRUE(reader.Claimed());
  COMM_Hid_CloseLinuxUsbLibHid();
}

TEST(HidCancel, SaysCancelledAndDoesNothing) {
  EmulatedUsbReader reader;
  EXPECT_EQ(-57, COMM_Hid_CancelLinuxUsbLibHid());
  ASSERT_EQ(0, Open());
  const Names steps = reader.Trace();

  EXPECT_EQ(-57, COMM_Hid_CancelLinuxUsbLibHid());

  EXPECT_EQ(steps, reader.Trace());
  EXPECT_EQ(1, COMM_Hid_WriteLinuxUsbLibHid(reinterpret_cast<const unsigned char*>("x"), 1));
  COMM_Hid_CloseLinuxUsbLibHid();
}

}  // namespace
