// The exchange of identity-card commands over an open device, its end condition and its cancel.
#include <gtest/gtest.h>

#include <chrono>
#include <climits>
#include <string>
#include <thread>

#include "quillonid/link.h"
#include "quillonid/results.h"
#include "tests/link/log_text.h"
#include "tests/link/serial_reader.h"
#include "tests/testing/private_root.h"
#include "tests/testing/stand_in_clock.h"

namespace {

using IdExchange = SerialDevice;

}  // namespace

TEST(IdEndCondition, WaitsForTheAnnouncedBytes) {
  std::string whole = Answer(1416);
  ASSERT_EQ(1423u, whole.size());

  for (int count = -1; count < 1423; ++count) {
    ASSERT_EQ(-1, IdEndCondition(Octets(whole), count)) << count;
  }
  EXPECT_EQ(0, IdEndCondition(Octets(whole), 1423));
  EXPECT_EQ(0, IdEndCondition(Octets(whole), 4096));
  EXPECT_EQ(-1, IdEndCondition(nullptr, 7));
}

TEST(IdEndCondition, ReadsTheLengthUnsigned) {
  const std::string head = Answer(0x90FF).substr(0, 7);

  EXPECT_EQ(-1, IdEndCondition(Octets(head), 4096));
  EXPECT_EQ(-1, IdEndCondition(Octets(head), 7 + 0x90FE));
  EXPECT_EQ(0, IdEndCondition(Octets(head), 7 + 0x90FF));
}

TEST(IdEndCondition, IsMetByAHeadThatAnnouncesNothing) {
  EXPECT_EQ(0, IdEndCondition(Octets(Answer(0)), 7));
}

TEST_F(IdExchange, ExchangesAnIdentityCardCommand) {
  unsigned char reply[32] = {};
  ASSERT_EQ(0, Open());
  tty_.Send(Answer(4));

  EXPECT_EQ(11, Dev_Zel_IdSendAndReciveData(0, Octets("command"), 7, reply, 32));

  EXPECT_EQ(HexText(Answer(4)), HexText(reply, 11));
  EXPECT_EQ("63 6F 6D 6D 61 6E 64", Sent());
}

TEST_F(IdExchange, KeepsTheEndConditionInModeOne) {
  unsigned char reply[32] = {};
  ASSERT_EQ(0, Open());
  COMM_Zel_SetEndCondition([](const unsigned char*, int count) { return count >= 2 ? 0 : -1; });
  tty_.Send("ok");

  EXPECT_EQ(2, Dev_Zel_IdSendAndReciveData(1, Octets("command"), 7, reply, 32));

  tty_.Send(Answer(4));
  EXPECT_EQ(11, Dev_Zel_IdSendAndReciveData(2, Octets("command"), 7, reply, 32));
}

TEST_F(IdExchange, CutsAnAnswerToTheBuffer) {
  unsigned char reply[32] = {};
  ASSERT_EQ(0, Open());
  tty_.Send(Answer(20));

  EXPECT_EQ(8, Dev_Zel_IdSendAndReciveData(0, Octets("command"), 7, reply, 8));

  EXPECT_EQ(HexText(Answer(20).substr(0, 8)), HexText(reply, 8));
  EXPECT_EQ(0, reply[8]);
}

TEST_F(IdExchange, SendsNoCommandOfSenselessLength) {
  unsigned char reply[32] = {};
  const std::string command(2000, 'x');
  ASSERT_EQ(0, Open());

  EXPECT_EQ(RET_PUB_WRITE_ERROR, Dev_Zel_IdSendAndReciveData(0, nullptr, 7, reply, 32));
  EXPECT_EQ(RET_PUB_WRITE_ERROR, Dev_Zel_IdSendAndReciveData(0, Octets(command), 0, reply, 32));
  EXPECT_EQ("", Sent());
}

TEST_F(IdExchange, TakesRoomsBeyondTheRangeOfInt) {
  unsigned char reply[4096] = {};
  ASSERT_EQ(0, Open());
  tty_.Send(Answer(4));

  EXPECT_EQ(11, Dev_Zel_IdSendAndReciveData(0, Octets("command"), 7, reply, UINT_MAX));
}

TEST_F(IdExchange, ReadsOneMoreAnswer) {
  unsigned char reply[32] = {};
  ASSERT_EQ(0, Open());
  tty_.Send(Answer(4));

  EXPECT_EQ(11, Dev_Zel_IdReciveData(reply, 32));
  EXPECT_EQ(0, Dev_Zel_IdReciveData(reply, 0));

  EXPECT_EQ(HexText(Answer(4)), HexText(reply, 11));
}

TEST_F(IdExchange, LogsAnIdentityCardExchange) {
  NEEDS_PRIVATE_ROOT();
  unsigned char reply[32] = {};
  ASSERT_EQ(0, Open());
  tty_.Send(Answer(1, '!'));
  SwitchLogging(true);

  Dev_Zel_IdSendAndReciveData(0, Octets("c"), 1, reply, 32);

  EXPECT_EQ((Lines{
                "3: Dev_Zel_IdSendAndReciveData START",
                "3: 1111",
                "2: [COMM_Zel_SetHidClearZero] Start!\n",
                "3: [COMM_Dev_SetHidClearZero] Start ",
                "3: [COMM_Dev_SetHidClearZero] end ",
                "2: [COMM_Zel_SetHidClearZero] end!\n",
                "3: 1112",
                "3: 222",
                "2: [COMM_Zel_SetEndCondition ] Start",
                "3: 333",
                "2: [ COMM_Zel_SendAndReciveData ] Start ",
                "2: nSendLen 1 ",
                "2: nMaxReciveBufLen 32 ",
                "2: [COMM_Zel_ReSetStatus]Start ",
                "2: nDataLen = 1",
                "3: [ICC_WriteDataToLinuxTransPort] Start ",
                "2: [ COMM_Zel_ReadDataFromReader ] Start ",
                "2: [COMM_Zel_ReSetStatus]Start ",
                "PACKGET READ: AA AA AA 96 69 00 01 21",
                "2: ==> nReadLen = 8 ",
                "== ucPacket: AA AA AA 96 69 00 01 21",
                "2: nretval = 8 ",
                "2: [COMM_Zel_SetHidClearZero] Start!\n",
                "3: [COMM_Dev_SetHidClearZero] Start ",
                "3: [COMM_Dev_SetHidClearZero] end ",
                "2: [COMM_Zel_SetHidClearZero] end!\n",
            }),
            Logged());
}

TEST_F(IdExchange, LogsNoEndConditionInModeOne) {
  NEEDS_PRIVATE_ROOT();
  SwitchLogging(true);

  Dev_Zel_IdSendAndReciveData(1, Octets("c"), 1, nullptr, 0);

  EXPECT_EQ(0u, CountLogged("3: 222"));
  EXPECT_EQ(0u, CountLogged("3: 333"));
  EXPECT_EQ(0u, CountLogged("2: [COMM_Zel_SetEndCondition ] Start"));
}

TEST_F(IdExchange, IsCancelledFromAnotherThread) {
  unsigned char reply[32] = {};
  ASSERT_EQ(0, Open());
  std::thread cancel([] {
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    EXPECT_EQ(0, Dev_Zel_IdCardCancel());
  });

  EXPECT_EQ(RET_PUB_CANCEL, Dev_Zel_IdReciveData(reply, 32));

  cancel.join();
  tFuncCloseDevice();
}

TEST_F(IdExchange, LogsACancel) {
  NEEDS_PRIVATE_ROOT();
  SwitchLogging(true);

  EXPECT_EQ(-1, Dev_Zel_IdCardCancel()) << "nothing was ever open";

  EXPECT_EQ((Lines{"3: [COMM_Id_CancelRead] Start ", "2: [COMM_Zel_Cancel] Start ",
                   "2: [COMM_Zel_Cancel] Start "}),
            Logged());
}
