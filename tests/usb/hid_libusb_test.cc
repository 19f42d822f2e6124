// How the transport calls libusb, and what it makes of results that no device brings about at will.

#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <vector>

#include "quillonid/transport.h"
#include "tests/testing/hex_text.h"
#include "tests/testing/private_root.h"
#include "tests/testing/stand_in_clock.h"
#include "tests/usb/fake_libusb.h"
#include "tests/usb/log_text.h"

namespace {

using fake_libusb::Now;
using fake_libusb::Transfer;
using Bytes = std::vector<unsigned char>;
using Lines = std::vector<std::string>;

constexpr unsigned char kUntouched = 0xEE;

int Open() { return COMM_Hid_OpenLinuxUsbLibHid(0x0403, 0xBCD5); }

// The state of an open reader, from here on counting calls anew.
void OpenAndForgetCalls() {
  ASSERT_EQ(0, Open());
  Now().calls.clear();
}

void ExpectNothingHeld() {
  EXPECT_EQ(0, Now().contexts);
  EXPECT_EQ(0, Now().lists);
  EXPECT_EQ(0, Now().handles);
}

int Never(const unsigned char*, int) { return -1; }

// Opening and closing ---------------------------------------------------------------------------

TEST(HidLibusb, OpensInOneOrderAndClosesInTheOther) {
  EXPECT_EQ(0, Open());
  EXPECT_EQ((Lines{"init", "list", "open 1", "reset", "driver", "claim"}), Now().calls);
  Now().calls.clear();

  EXPECT_EQ(0, COMM_Hid_CloseLinuxUsbLibHid());

  EXPECT_EQ((Lines{"release", "close", "free 1", "exit"}), Now().calls);
  ExpectNothingHeld();
}

struct Driver {
  const char* name;
  int active;
  bool detached;
};

void PrintTo(const Driver& driver, std::ostream* out) { *out << driver.name; }

class HidLibusbDriver : public testing::TestWithParam<Driver> {};

TEST_P(HidLibusbDriver, IsDetachedWhenItIsActive) {
  Now().driver_active = GetParam().active;

  EXPECT_EQ(0, Open());

  Lines calls = {"init", "list", "open 1", "reset", "driver"};
  if (GetParam().detached) calls.emplace_back("detach");
  calls.emplace_back("claim");
  EXPECT_EQ(calls, Now().calls);
}

INSTANTIATE_TEST_SUITE_P(, HidLibusbDriver,
                         testing::Values(Driver{"None", 0, false}, Driver{"Bound", 1, true},
                                         Driver{"Unsupported", -12, false},
                                         Driver{"Unknown", 2, false}),
                         [](const auto& test) { return test.param.name; });

TEST(HidLibusb, ClaimsWhateverResetAndDetachSay) {
  Now().reset_result = -5;
  Now().driver_active = 1;
  Now().detach_result = -5;

  EXPECT_EQ(0, Open());

  EXPECT_EQ((Lines{"init", "list", "open 1", "reset", "driver", "detach", "claim"}), Now().calls);
}

TEST(HidLibusb, OpensTheFirstDeviceWhoseIdsBothMatch) {
  NEEDS_PRIVATE_ROOT();
  Now().devices = {
      {0x0403, 0xBCD7},
      {0x2B46, 0xBCD5},
      {0x0403, 0xBCD5},
      {0x0403, 0xBCD5}
  };
  SwitchLogging(true);

  EXPECT_EQ(0, Open());

  EXPECT_EQ("open 3", Now().calls.at(2));
  EXPECT_EQ(
      (Lines{Info("openHid:0403,bcd5\n"), Info("vid=0403 pid=BCD7\n"), Info("vid=2B46 pid=BCD5\n"),
             Info("vid=0403 pid=BCD5\n"), Info("find target device\n"),
             Info("libusb_reset_device\n"), Info("open hiddev success!\n")}),
      LogLines());
}

TEST(HidLibusb, PassesOverADeviceWithoutDescriptor) {
  NEEDS_PRIVATE_ROOT();
  Now().devices = {
      {0x0403, 0xBCD5, -1},
      {0x0403,      0xBCD5      }
  };
  SwitchLogging(true);

  EXPECT_EQ(0, Open());

  EXPECT_EQ("open 2", Now().calls.at(2));
  EXPECT_EQ(Info("vid=0403 pid=BCD5\n"), LogLines().at(1));
  EXPECT_EQ(Info("find target device\n"), LogLines().at(2));
}

TEST(HidLibusb, TakesNoDeviceWithoutDescriptorForIdsOfZero) {
  Now().devices = {
      {0x0403, 0xBCD5, -1}
  };

  EXPECT_EQ(-50, COMM_Hid_OpenLinuxUsbLibHid(0, 0));
}

struct FailedOpen {
  const char* name;
  void (*prepare)();
  int result;
  Lines calls;
};

void PrintTo(const FailedOpen& row, std::ostream* out) { *out << row.name; }

class HidLibusbFailedOpen : public testing::TestWithParam<FailedOpen> {};

TEST_P(HidLibusbFailedOpen, GivesEverythingBackAndMayBeTriedAgain) {
  GetParam().prepare();

  EXPECT_EQ(GetParam().result, Open());

  EXPECT_EQ(GetParam().calls, Now().calls);
  ExpectNothingHeld();
  EXPECT_EQ(-50, COMM_Hid_WriteLinuxUsbLibHid(nullptr, 0));
  EXPECT_EQ(0, COMM_Hid_CloseLinuxUsbLibHid());
  EXPECT_EQ(GetParam().calls, Now().calls);

  Now() = {};
  EXPECT_EQ(0, Open());
  EXPECT_EQ(0, COMM_Hid_CloseLinuxUsbLibHid());
  ExpectNothingHeld();
}

INSTANTIATE_TEST_SUITE_P(
    , HidLibusbFailedOpen,
    testing::Values(
        FailedOpen{
            "NoLibusb", [] { Now().init_result = -99;     },
              -50, {"init"}
},
        FailedOpen{"NoList", [] { Now().list_result = -11; }, -50, {"init", "list", "exit"}},
        FailedOpen{
            "EmptyList", [] { Now().devices.clear(); }, -50, {"init", "list", "free 1", "exit"}},
        FailedOpen{"NoDevice",
                   [] {
                     Now().devices = {
                         {0x0403, 0xBCD7}
                     };
                   },
                   -50,
                   {"init", "list", "free 1", "exit"}},
        FailedOpen{"OpenRefused",
                   [] { Now().open_result = -3; },
                   -3,
                   {"init", "list", "open 1", "free 1", "exit"}},
        FailedOpen{
            "ClaimRefused",
            [] { Now().claim_result = -6; },
            -3,
            {"init", "list", "open 1", "reset", "driver", "claim", "close", "free 1", "exit"}}),
    [](const auto& test) { return test.param.name; });

TEST(HidLibusb, LogsAListThatCannotBeHad) {
  NEEDS_PRIVATE_ROOT();
  Now().init_result = -99;
  SwitchLogging(true);

  EXPECT_EQ(-50, Open());

  EXPECT_EQ((Lines{Info("openHid:0403,bcd5\n"), Info("get hiddev err!\n")}), LogLines());
}

// Writing ---------------------------------------------------------------------------------------

constexpr unsigned char kData[] = {1, 2, 3, 4, 5, 6, 7, 8};

int WriteData() { return COMM_Hid_WriteLinuxUsbLibHid(kData, sizeof kData); }

TEST(HidLibusbWrite, GoesToEndpointOneWithinASecond) {
  OpenAndForgetCalls();

  EXPECT_EQ(8, WriteData());

  EXPECT_EQ(Lines{"transfer 01 8 1000"}, Now().calls);
}

TEST(HidLibusbWrite, SendsTheRemainderOnly) {
  OpenAndForgetCalls();
  Now().transfers = {{.count = 3}, {.count = 0}, {.count = 4}};

  EXPECT_EQ(8, WriteData());

  EXPECT_EQ((Lines{"transfer 01 8 1000", "transfer 01 5 1000", "transfer 01 5 1000",
                   "transfer 01 1 1000"}),
            Now().calls);
  EXPECT_EQ("04 05 06 07 08", HexText(Now().written.at(1)));
  EXPECT_EQ("08", HexText(Now().written.at(3)));
}

TEST(HidLibusbWrite, CountsNoMoreThanWasSent) {
  OpenAndForgetCalls();
  Now().transfers = {{.count = 3}, {.count = 1000}};

  EXPECT_EQ(8, WriteData());

  EXPECT_EQ((Lines{"transfer 01 8 1000", "transfer 01 5 1000"}), Now().calls);
}

TEST(HidLibusbWrite, CountsNothingForANegativeOrMissingCount) {
  OpenAndForgetCalls();
  Now().transfers = {{.count = -5}, {.leaves_count = true}, {}};

  EXPECT_EQ(8, WriteData());

  EXPECT_EQ(Lines(3, "transfer 01 8 1000"), Now().calls);
}

TEST(HidLibusbWrite, LogsAttemptCountResultAndErrno) {
  NEEDS_PRIVATE_ROOT();
  OpenAndForgetCalls();
  Now().transfers = {
      {.count = 3                          },
      { .result = -4, .count = 2, .meanwhile = [] { errno = ENODEV; }}
  };
  SwitchLogging(true);

  EXPECT_EQ(-54, WriteData());

  EXPECT_EQ((Lines{Dump("hid write", Bytes(kData, kData + 8)),
                   Error("nTimes:2 sendlen2 ret:-4 No such device\n")}),
            LogLines());
}

// Reading ---------------------------------------------------------------------------------------

TEST(HidLibusbRead, AsksEndpoint81ForA1024BytesWithin200Milliseconds) {
  OpenAndForgetCalls();
  Now().transfers = {{.bytes = {1, 2, 3}}};
  Bytes buffer(3);

  EXPECT_EQ(3, COMM_Hid_ReadLinuxUsbLibHid(buffer.data(), 3, 5, nullptr));

  EXPECT_EQ(Lines{"transfer 81 1024 200"}, Now().calls);
}

TEST(HidLibusbRead, TakesNothingFromATransferThatLeavesTheCount) {
  OpenAndForgetCalls();
  COMM_Hid_SetLinuxHidClearZero(0);
  Now().transfers = {
      {.bytes = Bytes(8,      0x44)},
      {.result = -1,                     .leaves_count = true},
      {.bytes = {7}}
  };
  Bytes buffer(9, kUntouched);

  EXPECT_EQ(9, COMM_Hid_ReadLinuxUsbLibHid(buffer.data(), 9, 5, nullptr));

  EXPECT_EQ("44 44 44 44 44 44 44 44 07", HexText(buffer));
}

TEST(HidLibusbRead, BelievesNoCountThatCannotBe) {
  OpenAndForgetCalls();
  COMM_Hid_SetLinuxHidClearZero(0);
  Now().transfers = {
      {.bytes = {7}, .count = -1},
      {.bytes = Bytes(1024,            0x44), .count = 1 << 30},
      {.bytes = {9}}
  };
  Bytes buffer(1025, kUntouched);

  EXPECT_EQ(1025, COMM_Hid_ReadLinuxUsbLibHid(buffer.data(), 1025, 5, nullptr));

  EXPECT_EQ(HexText(Bytes(1024, 0x44)) + " 09", HexText(buffer));
}

TEST(HidLibusbRead, ClearsTheTransferBufferEachTime) {
  OpenAndForgetCalls();
  COMM_Hid_SetLinuxHidClearZero(0);
  Now().transfers = {
      {.bytes = Bytes(8, 0x44)},
      {.bytes = {9},                .count = 4},
      {.bytes = {1}}
  };
  Bytes buffer(13, kUntouched);

  EXPECT_EQ(13, COMM_Hid_ReadLinuxUsbLibHid(buffer.data(), 13, 5, nullptr));

  EXPECT_EQ("44 44 44 44 44 44 44 44 09 00 00 00 01", HexText(buffer));
}

// A silent reader, whose transfers run into their limit; virtual time.
int SilentPasses(std::uint32_t timeout_s, const Transfer& pass) {
  OpenAndForgetCalls();
  Now().otherwise = pass;
  unsigned char buffer[64] = {};
  EXPECT_EQ(0, COMM_Hid_ReadLinuxUsbLibHid(buffer, sizeof buffer, timeout_s, Never));
  return static_cast<int>(Now().calls.size());
}

const Transfer kTimedOut = {.result = -7, .seconds = 0.2};

// The limit is exceeded by the fourth change of the second: between 3 and 4 s.
TEST(HidLibusbRead, ComparesWholeSeconds) {
  const int passes = SilentPasses(3, kTimedOut);

  EXPECT_GE(passes, 15);
  EXPECT_LE(passes, 21);
}

TEST(HidLibusbRead, OfNoTimeLastsUntilTheNextSecond) {
  const int passes = SilentPasses(0, kTimedOut);

  EXPECT_GE(passes, 1);
  EXPECT_LE(passes, 6);
}

class HidLibusbBudget : public testing::TestWithParam<int> {};

TEST_P(HidLibusbBudget, BelowZeroAllowsOnePass) {
  EXPECT_EQ(1, SilentPasses(static_cast<std::uint32_t>(GetParam()), kTimedOut));
}

INSTANTIATE_TEST_SUITE_P(, HidLibusbBudget, testing::Values(-1, -2, -1000, INT32_MIN));

TEST(HidLibusbRead, IsNotStretchedByAStepOfTheWallClock) {
  Transfer pass = kTimedOut;
  pass.meanwhile = [] { stand_in_clock::StepWallClock(-3600); };

  EXPECT_LE(SilentPasses(3, pass), 21);
}

TEST(HidLibusbRead, IsNotCutShortByAStepOfTheWallClock) {
  Transfer pass = kTimedOut;
  pass.meanwhile = [] { stand_in_clock::StepWallClock(3600); };

  EXPECT_GE(SilentPasses(3, pass), 15);
}

TEST(HidLibusbRead, NapsTheRestOfAPassThatFailsAtOnce) {
  const int passes = SilentPasses(3, {.result = -4});

  EXPECT_GE(passes, 15);
  EXPECT_LE(passes, 21);
  EXPECT_NEAR(0.2 * passes, stand_in_clock::SecondsSlept(), 0.02 * passes);
}

TEST(HidLibusbRead, DoesNotNapAfterAPassThatFailsLater) {
  const int passes = SilentPasses(3, {.result = -1, .seconds = 0.06});

  EXPECT_GE(passes, 50);
  EXPECT_LE(passes, 68);
  EXPECT_EQ(0, stand_in_clock::SecondsSlept());
}

TEST(HidLibusbRead, NapsBrieflyAfterAPassThatBringsOnlyZerosAtOnce) {
  const int passes = SilentPasses(0, {.bytes = Bytes(64)});

  EXPECT_LE(passes, 130);
  EXPECT_GT(stand_in_clock::SecondsSlept(), 0);
}

TEST(HidLibusbRead, DoesNotNapWhileBytesCome) {
  OpenAndForgetCalls();
  Now().otherwise = {.bytes = Bytes(64, 0x44)};
  Bytes buffer(4096);

  EXPECT_EQ(4096, COMM_Hid_ReadLinuxUsbLibHid(buffer.data(), 4096, 5, Never));

  EXPECT_EQ(64u, Now().calls.size());
  EXPECT_EQ(0, stand_in_clock::SecondsSlept());
}

}  // namespace
