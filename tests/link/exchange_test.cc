// Reader exchange over a pseudo-terminal: what goes out and what comes back.
#include <algorithm>
#include <chrono>
#include <climits>
#include <ostream>
#include <thread>

#include "tests/link/exchange_fixture.h"
#include "tests/link/log_text.h"
#include "tests/testing/private_root.h"
#include "tests/testing/stand_in_clock.h"

TEST_F(Exchange, WritesAFrame) {
  EXPECT_EQ(0, Write(0x02, 0x03, std::string_view("20\x00\x01", 4)));

  EXPECT_EQ("02 30 30 30 34 33 32 33 30 30 30 30 31 30 33 03", Sent());
}

TEST_F(Exchange, WritesAFrameForOneNonZeroOfHeadAndEnd) {
  EXPECT_EQ(0, Write(0x02, 0x00, ""));
  EXPECT_EQ(0, Write(0x00, 0x03, ""));

  EXPECT_EQ("02 30 30 30 30 30 30 00 00 30 30 30 30 30 30 03", Sent());
}

TEST_F(Exchange, WritesRawBytesAsTheyAre) {
  EXPECT_EQ(0, Write(0x00, 0x00, "\x1B%S1"));

  EXPECT_EQ("1B 25 53 31", Sent());
}

TEST_F(Exchange, WritesTheLargestFrame) {
  EXPECT_EQ(0, Write(0x02, 0x03, std::string(508, '\x5A')));

  const std::string sent = tty_.Receive(1024);
  EXPECT_EQ(
      "\x02"
      "01?<",
      sent.substr(0, 5));
  EXPECT_EQ("00\x03", sent.substr(1021));
}

TEST_F(Exchange, SendsNothingOfAFrameThatDoesNotFit) {
  const Bytes data(600);

  EXPECT_EQ(-1, COMM_Zel_WriteDataToReader(0x02, 0x03, data.data(), 509));
  EXPECT_EQ(-1, COMM_Zel_WriteDataToReader(0x02, 0x03, data.data(), INT_MAX));
  EXPECT_EQ(-1, COMM_Zel_WriteDataToReader(0x02, 0x03, data.data(), -1));
  EXPECT_EQ(-1, COMM_Zel_WriteDataToReader(0x02, 0x03, nullptr, 0));
  EXPECT_EQ(-1, COMM_Zel_WriteDataToReader(0x02, 0x03, nullptr, 4));

  EXPECT_EQ("", Sent());
}

TEST_F(Exchange, CutsARawMessageAt1024Bytes) {
  const Bytes data(2000, 0x41);

  EXPECT_EQ(0, COMM_Zel_WriteDataToReader(0, 0, data.data(), 1024));
  EXPECT_EQ(std::string(1024, 'A'), tty_.Receive(1024));

  EXPECT_EQ(-1, COMM_Zel_WriteDataToReader(0, 0, data.data(), 2000));
  EXPECT_EQ(HexText(std::string(1024, 'A')), Sent());
}

TEST_F(Exchange, SendsNothingRawOfNothing) {
  const unsigned char byte = 1;

  EXPECT_EQ(-1, COMM_Zel_WriteDataToReader(0, 0, nullptr, 1));
  EXPECT_EQ(-1, COMM_Zel_WriteDataToReader(0, 0, &byte, -1));
  EXPECT_EQ(-1, COMM_Zel_WriteDataToReader(0, 0, &byte, 0));

  EXPECT_EQ("", Sent());
}

TEST_F(Exchange, FailsToWriteWhenClosed) {
  COMM_Zel_CloseReader();

  EXPECT_EQ(-1, Write(0x02, 0x03, "20"));
  EXPECT_EQ(-1, Write(0x00, 0x00, "20"));
  EXPECT_EQ(-1, COMM_Zel_ReaderCmd(Octets("20"), 2));
}

TEST_F(Exchange, SendsAReaderCommandRaw) {
  EXPECT_EQ(0, COMM_Zel_ReaderCmd(Octets("\x1B%B"), 3));
  EXPECT_EQ(-1, COMM_Zel_ReaderCmd(Octets(""), 0));
  EXPECT_EQ(-1, COMM_Zel_ReaderCmd(nullptr, 3));
  // The serial port's own refusals are -2 and -1: a length of that value is refused all the same.
  EXPECT_EQ(-1, COMM_Zel_ReaderCmd(Octets("20"), -2));
  EXPECT_EQ(-1, COMM_Zel_ReaderCmd(Octets("20"), -1));

  EXPECT_EQ("1B 25 42", Sent());
}

TEST_F(Exchange, ReadsThePayloadOfAFrame) {
  tty_.Send("garbage" + kFrame);

  EXPECT_EQ(2, Read(1, 0x02, 0x03));

  EXPECT_EQ("41 42", HexText(bytes_));
  EXPECT_EQ(0x9000u, COMM_Zel_GetRecStatus());
}

TEST_F(Exchange, CutsThePayloadToTheBuffer) {
  tty_.Send(kFrame);

  EXPECT_EQ(1, Read(1, 0x02, 0x03, 1));

  EXPECT_EQ("41", HexText(bytes_));
}

TEST_F(Exchange, ReturnsZeroForAnEmptyPayload) {
  tty_.Send(kEmptyFrame);

  EXPECT_EQ(0, Read(1, 0x02, 0x03));

  EXPECT_EQ(0x9000u, COMM_Zel_GetRecStatus());
}

TEST_F(Exchange, RefusesAMalformedFrame) {
  COMM_Zel_SetRecStatus(0x1234);
  tty_.Send(kBadFrame);

  EXPECT_EQ(RET_PUB_CHECK_ERROR, Read(1, 0x02, 0x03));

  EXPECT_EQ(0u, COMM_Zel_GetRecStatus());
}

TEST_F(Exchange, RefusesABodyLargerThanTheProtocolAllows) {
  std::thread reader([&] { tty_.Send("\x02" + std::string(4094, '0') + "\x03"); });

  EXPECT_EQ(RET_PUB_CHECK_ERROR, Read(1, 0x02, 0x03, 4096));

  reader.join();
}

TEST_F(Exchange, ReadsFourOfTenRawBytes) {
  COMM_Zel_SetEndCondition(AtTenBytes);
  tty_.Send("0123456789");

  EXPECT_EQ(4, Read(0, 0, 0, 4));

  EXPECT_EQ("30 31 32 33", HexText(bytes_));
}

TEST_F(Exchange, ReadsUpTo4096RawBytes) {
  std::thread reader([&] { tty_.Send(std::string(4096, 'x') + "more"); });

  EXPECT_EQ(4096, Read(0, 0, 0, 5000));

  COMM_Zel_CloseReader();
  reader.join();
  EXPECT_EQ(4096, std::count(bytes_.begin(), bytes_.end(), 'x'));
}

TEST_F(Exchange, ReadsNothingIntoNoBuffer) {
  unsigned char byte = 0;
  tty_.Send(kFrame);

  EXPECT_EQ(0, COMM_Zel_ReadDataFromReader(1, 0x02, 0x03, &byte, 0));
  EXPECT_EQ(0, COMM_Zel_ReadDataFromReader(1, 0x02, 0x03, &byte, -1));
  EXPECT_EQ(0, COMM_Zel_ReadDataFromReader(1, 0x02, 0x03, &byte, INT_MIN));
  EXPECT_EQ(0, COMM_Zel_ReadDataFromReader(1, 0x02, 0x03, nullptr, 256));

  EXPECT_EQ(2, Read(1, 0x02, 0x03)) << "the frame is still there";
}

TEST_F(Exchange, ReturnsTheTransportsCode) {
  stand_in_clock::SetSpeed(20);
  COMM_Zel_SetRecStatus(0x1234);

  EXPECT_EQ(RET_PUB_TIMEOUT, Read(1, 0x02, 0x03));
  EXPECT_EQ(0u, COMM_Zel_GetRecStatus());

  COMM_Zel_CloseReader();
  EXPECT_EQ(RET_PUB_INVAL_PARAM, Read(1, 0x02, 0x03));
}

// An end byte cannot be inside a frame, and so one that ends a chunk ends the read.
TEST_F(Exchange, EndsAReadAtTheEndByteAnywhere) {
  tty_.Send("noise\x03");

  EXPECT_EQ(RET_PUB_CHECK_ERROR, Read(1, 0x02, 0x03));
}

TEST_F(Exchange, NeedsTheEndByteToBeAskedFor) {
  stand_in_clock::SetSpeed(20);
  tty_.Send(kFrame);

  EXPECT_EQ(RET_PUB_TIMEOUT, Read(0, 0x02, 0x03));
}

TEST_F(Exchange, InstallsNoTestForAnEndByteOfZero) {
  stand_in_clock::SetSpeed(20);
  tty_.Send(std::string_view("ab\0", 3));

  EXPECT_EQ(RET_PUB_TIMEOUT, Read(1, 0x00, 0x00));
}

TEST_F(Exchange, KeepsTheEndByteTestForLaterReads) {
  tty_.Send(kFrame);
  EXPECT_EQ(2, Read(1, 0x02, 0x03));
  tty_.Send(std::string_view("ab\0", 3));

  EXPECT_EQ(3, Read(0, 0x00, 0x00));

  EXPECT_EQ("61 62 00", HexText(bytes_));
}

TEST_F(Exchange, TakesAnotherEndConditionInItsPlace) {
  tty_.Send(kFrame);
  EXPECT_EQ(2, Read(1, 0x02, 0x03));
  COMM_Zel_SetEndCondition(AtTenBytes);
  tty_.Send(std::string_view("0123456789", 10));

  EXPECT_EQ(10, Read(0, 0x00, 0x00));
}

TEST_F(Exchange, FindsEndBytesAbove7F) {
  std::string frame = kFrame;
  frame.back() = '\xF3';
  tty_.Send(frame);

  EXPECT_EQ(2, Read(1, 0x02, 0xF3));
}

TEST(ChangeEndCondition, LooksForTheLastByte) {
  const unsigned char bytes[] = {0x03, 0x41, 0x03};

  EXPECT_EQ(0, ChangeEndCondition(bytes, 1));
  EXPECT_EQ(-1, ChangeEndCondition(bytes, 2));
  EXPECT_EQ(0, ChangeEndCondition(bytes, 3));
}

TEST(ChangeEndCondition, IsNotMetByNothing) {
  const unsigned char bytes[] = {0x03, 0x03};

  EXPECT_EQ(-1, ChangeEndCondition(bytes + 1, 0));
  EXPECT_EQ(-1, ChangeEndCondition(bytes + 1, -1));
  EXPECT_EQ(-1, ChangeEndCondition(nullptr, 1));
}

TEST_F(Exchange, SendsAndReceives) {
  unsigned char response[8] = {};
  tty_.Send(kFrame);

  EXPECT_EQ(2, COMM_Zel_SendAndReciveData(1, 0x02, 0x03, Octets("20"), 2, response, 8));

  EXPECT_EQ("41 42 00 00 00 00 00 00", HexText(response));
  EXPECT_EQ(0x9000u, COMM_Zel_GetRecStatus());
  EXPECT_EQ("02 30 30 30 32 33 32 33 30 30 32 03", Sent());
}

TEST_F(Exchange, AsksForNoAnswerWithoutRoomForIt) {
  unsigned char response[8] = {};
  COMM_Zel_SetRecStatus(0x1234);

  EXPECT_EQ(0, COMM_Zel_SendAndReciveData(1, 0, 0, Octets("a"), 1, response, 0));
  EXPECT_EQ(0, COMM_Zel_SendAndReciveData(1, 0, 0, Octets("b"), 1, nullptr, 8));

  EXPECT_EQ(0u, COMM_Zel_GetRecStatus());
  EXPECT_EQ("61 62", Sent());
}

TEST_F(Exchange, ReportsACommandThatWasNotSent) {
  unsigned char response[8] = {};

  for (const int len : {0, 4, -1}) {
    COMM_Zel_SetRecStatus(0x1234);
    EXPECT_EQ(RET_PUB_WRITE_ERROR, COMM_Zel_SendAndReciveData(1, 0, 0, nullptr, len, response, 8));
    EXPECT_EQ(0u, COMM_Zel_GetRecStatus());
  }
  EXPECT_EQ(RET_PUB_WRITE_ERROR,
            COMM_Zel_SendAndReciveData(1, 0x02, 0x03, Octets("20"), 509, response, 8));
  COMM_Zel_CloseReader();
  EXPECT_EQ(RET_PUB_WRITE_ERROR,
            COMM_Zel_SendAndReciveData(1, 0x02, 0x03, Octets("20"), 2, response, 8));
}

TEST_F(Exchange, SetsTheTimeOfReads) {
  stand_in_clock::SetSpeed(20);
  std::string_view end = "late\x03";
  COMM_Zel_ChageReadTimeOut(200);
  std::thread reader([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(800));  // 16 s of the library's
    tty_.Send(end);
  });

  EXPECT_EQ(RET_PUB_CHECK_ERROR, Read(1, 0x02, 0x03)) << "the bytes came in time";

  reader.join();
}

TEST_F(Exchange, IsCancelledFromAnotherThread) {
  std::thread cancel([] {
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    EXPECT_EQ(0, COMM_Zel_Cancel());
  });

  EXPECT_EQ(RET_PUB_CANCEL, Read(1, 0x02, 0x03));

  cancel.join();
}

TEST(ComZelOpenReader, ReturnsTheTransportsResult) {
  QL_TRANSPORT_DESCRIPTION description = SerialDescription("/dev/no-such-tty", 5);

  EXPECT_EQ(RET_PUB_OPEN_ERROR, COMM_Zel_OpenReader(&description));
  description.nKind = QL_KIND_SDT;
  EXPECT_EQ(-1, COMM_Zel_OpenReader(&description));
  EXPECT_EQ(RET_PUB_INVAL_PARAM, COMM_Zel_OpenReader(nullptr));
}

TEST(ComZelRecStatus, IsSetAndReadBack) {
  EXPECT_EQ(0u, COMM_Zel_GetRecStatus());

  EXPECT_EQ(0xFFFFFFFFu, COMM_Zel_SetRecStatus(0xFFFFFFFF));

  EXPECT_EQ(0xFFFFFFFFu, COMM_Zel_GetRecStatus());
}

struct CardAnswer {
  const char* payload;  // as it travels, with length, status and check byte
  int result;
  const char* logged;  // GBK
};

void PrintTo(const CardAnswer& answer, std::ostream* out) { *out << answer.payload; }

class IccZelPadCheckCard : public Exchange, public testing::WithParamInterface<CardAnswer> {};

TEST_P(IccZelPadCheckCard, KnowsTheCardByTheFirstByte) {
  NEEDS_PRIVATE_ROOT();
  tty_.Send("\x02" + std::string(GetParam().payload) + "\x03");
  SwitchLogging(true);

  EXPECT_EQ(GetParam().result, ICC_ZELPADCHECKCARD(0x1234));

  const Lines lines = Logged("2");
  ASSERT_LE(3u, lines.size());
  EXPECT_EQ("[ICC_ZELPADCHECKCARD] Start!\n", lines.front());
  EXPECT_EQ(HexText(std::string(GetParam().logged)), HexText(lines[lines.size() - 2]));
  EXPECT_EQ("[ICC_ZELPADCHECKCARD] End!\n", lines.back());
  EXPECT_EQ("02 30 30 30 34 33 32 33 30 31 32 33 34 32 34 03", Sent());
}

INSTANTIATE_TEST_SUITE_P(
    Answers, IccZelPadCheckCard,
    testing::Values(CardAnswer{"000300000101", 0,
                               "\xBD\xD3\xB4\xA5"
                               "IC\xBF\xA8\n"},  // contact
                    CardAnswer{"000300000202", 1,
                               "\xB7\xC7\xBD\xD3"
                               "IC\xBF\xA8\n"},                                   // contactless
                    CardAnswer{"000300000303", 2, "\xB4\xC5\xCC\xF5\xBF\xA8\n"},  // magnetic stripe
                    CardAnswer{"000300000404", 0, "\xC9\xED\xB7\xDD\xD6\xA4\n"},  // identity card
                    CardAnswer{"000300000505", -1, "\xCE\xB4\xD6\xAA\xD2\xEC\xB3\xA3\n"},
                    CardAnswer{"000300000000", -1, "\xCE\xB4\xD6\xAA\xD2\xEC\xB3\xA3\n"},
                    CardAnswer{"00030000????", -1, "\xCE\xB4\xD6\xAA\xD2\xEC\xB3\xA3\n"},
                    CardAnswer{"0002900090", -1, "\xCE\xB4\xD6\xAA\xD2\xEC\xB3\xA3\n"}));

TEST_F(Exchange, ReturnsTheExchangesCodeForACardCheck) {
  NEEDS_PRIVATE_ROOT();
  tty_.Send(kBadFrame);
  SwitchLogging(true);

  EXPECT_EQ(RET_PUB_CHECK_ERROR, ICC_ZELPADCHECKCARD(0));

  EXPECT_NE("[ICC_ZELPADCHECKCARD] End!\n", Logged("2").back());
}

TEST_F(Exchange, EndsACardCheckThatNobodyAnswers) {
  stand_in_clock::SetSpeed(20);

  EXPECT_EQ(RET_PUB_TIMEOUT, ICC_ZELPADCHECKCARD(-1));

  EXPECT_EQ("02 30 30 30 34 33 32 33 30 3F 3F 3F 3F 30 32 03", Sent());
}
