// A USB reader that goes silent: a read of it returns 0 and no bytes, which must not pass for a
// card that was read.
#include <gtest/gtest.h>

#include "quillonid/link.h"
#include "quillonid/reader.h"
#include "tests/reader/scripted_reader.h"
#include "tests/testing/hex_text.h"
#include "tests/usb/fake_libusb.h"

namespace {

using fake_libusb::Now;

constexpr int kTimeOut = -7;  // LIBUSB_ERROR_TIMEOUT

struct SilentUsbReader : testing::Test {
  void SetUp() override {
    Now().otherwise.result = kTimeOut;
    Now().otherwise.seconds = 1;
    ASSERT_EQ(0, tFuncOpenDevice("HID", "", 9600, 0, 10));
  }
  void TearDown() override { tFuncCloseDevice(); }

  // The host's next command is taken; nothing follows.
  static void TakeACommand() { Now().transfers.emplace_back(); }

  unsigned char data[4096] = {};
  int length = 1295;
};

}  // namespace

TEST_F(SilentUsbReader, MakesSingleCommandsReturnZero) {
  TakeACommand();
  EXPECT_EQ(0, SelectIDCard());
  TakeACommand();
  EXPECT_EQ(0, ReadIDCard(0, data, &length));
  EXPECT_EQ(0, length);
  length = 1295;
  TakeACommand();
  EXPECT_EQ(0, ReadIDCardOneCmd(data, &length));
  EXPECT_EQ(0, length);
  TakeACommand();
  EXPECT_EQ(0, CheckDevice());
}

TEST_F(SilentUsbReader, LetsTheSequenceTimeOut) {
  tFuncSearchIdDirect(1);
  for (int i = 0; i < 3; ++i) {
    TakeACommand();

    EXPECT_EQ(-56, GetIDCardInfo(1, 0, data, &length));

    EXPECT_EQ(0, length);
    tFuncReadOneInstr(i + 1);
  }
}

TEST_F(SilentUsbReader, IsTriedAgain) {
  const Bytes reply = ReadReply(1295);
  tFuncSearchIdDirect(1);
  TakeACommand();
  Now().transfers.push_back({.result = kTimeOut, .seconds = 6});  // the whole read time
  TakeACommand();
  Now().transfers.push_back({.bytes = Bytes(reply.begin(), reply.begin() + 1024)});
  Now().transfers.push_back({.bytes = Bytes(reply.begin() + 1024, reply.end())});

  EXPECT_EQ(0, GetIDCardInfo(60, 0, data, &length));

  EXPECT_EQ(1295, length);
  EXPECT_EQ(HexText(reply), HexText(data, 1295));
}

TEST_F(SilentUsbReader, LeavesTheCardBeforeKept) {
  Bytes kept = ReadReply(1295);
  ASSERT_EQ(0, tFunc_SetIdNativeData(kept.data(), 1295));
  tFuncSearchIdDirect(1);
  TakeACommand();

  EXPECT_EQ(-56, tFuncReadIdNativeData("HID", "", 9600, 1, 0, data, &length));

  Bytes copy(1295);
  EXPECT_EQ(1295, tFunc_GetIdNativeData(copy.data(), 1295));
  EXPECT_EQ(HexText(kept), HexText(copy));
}
