// Reader exchange over a pseudo-terminal: what the log says.
#include "tests/link/exchange_fixture.h"
#include "tests/link/log_text.h"
#include "tests/testing/private_root.h"

TEST_F(Exchange, LogsAFramedExchange) {
  NEEDS_PRIVATE_ROOT();
  unsigned char response[8] = {};
  tty_.Send(kFrame);
  SwitchLogging(true);

  COMM_Zel_SendAndReciveData(1, 0x02, 0x03, Octets("20"), 2, response, 8);

  EXPECT_EQ((Lines{
                "2: [ COMM_Zel_SendAndReciveData ] Start ",
                "2: nSendLen 2 ",
                "2: nMaxReciveBufLen 8 ",
                "2: [COMM_Zel_ReSetStatus]Start ",
                "2: nDataLen = 2",
                "3: [ICC_WriteDataToLinuxTransPort] Start ",
                "2: [ COMM_Zel_ReadDataFromReader ] Start ",
                "2: [COMM_Zel_ReSetStatus]Start ",
                "PACKGET READ: " + HexText(kFrame),
                "2: ==> nReadLen = 16 ",
                "== ucPacket: " + HexText(kFrame),
                "2: [Str_ZEL_ParsePacket] Start nPacketLen = 16 ",
                "2:  cHead = 02 cEnd = 03  ",
                "2: nBodyLen = 14 ",
                "ucBody: 00 04 90 00 41 42 93",
                "2: [COMM_Zel_SetRecStatus] Start ",
                "2: status = 9000 ",
                "2: Str_ZEL_ParsePacket Data Len = 2 ",
            }),
            Logged());
}

TEST_F(Exchange, LogsARawRead) {
  NEEDS_PRIVATE_ROOT();
  COMM_Zel_SetEndCondition(AtTenBytes);
  tty_.Send("0123456789");
  SwitchLogging(true);

  Read(0, 0, 0, 4);

  EXPECT_EQ((Lines{
                "[ COMM_Zel_ReadDataFromReader ] Start ",
                "[COMM_Zel_ReSetStatus]Start ",
                "==> nReadLen = 10 ",
                "nretval = 4 ",
            }),
            Logged("2"));
}

TEST_F(Exchange, LogsThatItReadNothing) {
  NEEDS_PRIVATE_ROOT();
  SwitchLogging(true);

  Read(1, 0x02, 0x03, 0);
  EXPECT_EQ((Lines{
                "2: [ COMM_Zel_ReadDataFromReader ] Start ",
                "2: Not Read Data ",
            }),
            Logged());

  COMM_Zel_CloseReader();
  SwitchLogging(true);
  Read(1, 0x02, 0x03, 8);
  EXPECT_EQ((Lines{
                "2: [ COMM_Zel_ReadDataFromReader ] Start ",
                "2: [COMM_Zel_ReSetStatus]Start ",
                "3: [RET_PUB_INVAL_PARAM]  ",
                " TIME  PACKGET READ  LEN=-2   HEX: ",
                "2!: ==> nReadLen = -2 ",
            }),
            Logged());
}

TEST_F(Exchange, LogsACommandThatWasNotSent) {
  NEEDS_PRIVATE_ROOT();
  unsigned char response[8] = {};
  SwitchLogging(true);

  COMM_Zel_SendAndReciveData(1, 0x02, 0x03, nullptr, 4, response, 8);

  EXPECT_EQ((Lines{
                "[ COMM_Zel_SendAndReciveData ] Start ",
                "nSendLen 4 ",
                "nMaxReciveBufLen 8 ",
                "[COMM_Zel_ReSetStatus]Start ",
                "nDataLen = 4",
                "[COMM_Zel_ReSetStatus]Start ",
            }),
            Logged("2"));
}

TEST_F(Exchange, LogsItsSettings) {
  NEEDS_PRIVATE_ROOT();
  SwitchLogging(true);

  COMM_Zel_SetRecStatus(0x9);
  COMM_Zel_GetRecStatus();
  EXPECT_EQ(0, COMM_Zel_SetHidClearZero(1));
  EXPECT_EQ(0, COMM_Zel_SetEndCondition(nullptr));
  EXPECT_EQ(0, COMM_Zel_ChageReadTimeOut(-3));
  COMM_Zel_Cancel();

  EXPECT_EQ((Lines{
                "2: [COMM_Zel_SetRecStatus] Start ",
                "2: status = 09 ",
                "2: [COMM_Zel_GetRecStatus] Start stZELPAD.gStatus = 09",
                "2: [COMM_Zel_SetHidClearZero] Start!\n",
                "3: [COMM_Dev_SetHidClearZero] Start ",
                "3: [COMM_Dev_SetHidClearZero] end ",
                "2: [COMM_Zel_SetHidClearZero] end!\n",
                "2: [COMM_Zel_SetEndCondition ] Start",
                "2: COMM_Zel_ChageReadTimeOut Start  nTimeOut = -3 ",
                "2: [COMM_Zel_Cancel] Start ",
            }),
            Logged());
}

TEST_F(Exchange, LogsOpening) {
  NEEDS_PRIVATE_ROOT();
  QL_TRANSPORT_DESCRIPTION description = SerialDescription(tty_.path(), 5);
  SwitchLogging(true);

  COMM_Zel_OpenReader(&description);
  EXPECT_EQ("2: [COMM_Zel_OpenReader]Start ", Logged().front());
  EXPECT_EQ("2: [COMM_Zel_OpenReader]End nRet = 0  ", Logged().back());

  description.nKind = QL_KIND_PCSC;
  COMM_Zel_OpenReader(&description);
  EXPECT_EQ("2!: [COMM_Zel_OpenReader]End nRet = -1  ", Logged().back());
}
