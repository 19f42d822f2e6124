#include "tests/reader/engine_fixture.h"

using CardRead = Engine;

class ReadReplyLength : public Engine, public testing::WithParamInterface<int> {};

namespace {

// A reply of 1,295 bytes with a right check byte that begins as a short status reply does.
Bytes LongReplyThatBeginsWith(const std::string& start) {
  Bytes reply = FromHex(start);
  reply.resize(1295, 0x5A);
  return WithCheckByte(reply);
}

}  // namespace

TEST_P(ReadReplyLength, IsAcceptedByBothReads) {
  const Bytes reply = ReadReply(static_cast<std::size_t>(GetParam()));
  reader.HoldCard(reply);

  EXPECT_EQ(0, ReadIDCard(0, data, &length));
  EXPECT_EQ(HexText(reply), Data());
  EXPECT_EQ(0, ReadIDCard(1, data, &length));
  EXPECT_EQ(HexText(reply), Data());
  EXPECT_EQ(0, ReadIDCardOneCmd(data, &length));
  EXPECT_EQ(HexText(reply), Data());

  EXPECT_EQ((Lines{kReadCommand, kFingerCommand, kOneCommand}), reader.Commands());
  EXPECT_EQ(0, stand_in_clock::SleepCalls());
}
INSTANTIATE_TEST_SUITE_P(All, ReadReplyLength, testing::Values(1295, 1297, 2321));

class OtherReadReplyLength : public Engine, public testing::WithParamInterface<int> {};

TEST_P(OtherReadReplyLength, IsRefusedByBothReads) {
  NEEDS_PRIVATE_ROOT();
  reader.HoldCard(ReadReply(static_cast<std::size_t>(GetParam())));
  SwitchLogging(true);

  EXPECT_EQ(-55, ReadIDCard(0, data, &length));
  EXPECT_EQ(0, length);
  EXPECT_EQ(-55, ReadIDCardOneCmd(data, &length));
  EXPECT_EQ(0, length);

  const Lines expected = {
      "[ReadIDCard] Start", "nRet " + std::to_string(GetParam()),
      "Read Len err",       "[ReadIDCardOneCmd] Start",
      "Read Len err",
  };
  EXPECT_EQ(expected, LinesOf(kCardArea));
}
INSTANTIATE_TEST_SUITE_P(All, OtherReadReplyLength,
                         testing::Values(11, 12, 1294, 1296, 1298, 2320, 2322, 4086));

TEST_F(CardRead, ReadsFingerprintsForAnyFlagButZero) {
  reader.HoldCard(ReadReply(2321));

  for (const int finger : {2, -1}) EXPECT_EQ(0, ReadIDCard(finger, data, &length));

  EXPECT_EQ((Lines{kFingerCommand, kFingerCommand}), reader.Commands());
}

TEST_F(CardRead, RefusesFewerThanElevenBytes) {
  NEEDS_PRIVATE_ROOT();
  reader.HoldCard(FromHex("AA AA AA 96 69 00 03 00 00 41"));
  SwitchLogging(true);

  EXPECT_EQ(-55, ReadIDCard(0, data, &length));
  EXPECT_EQ(-55, ReadIDCardOneCmd(data, &length));

  const Lines expected = {
      "[ReadIDCard] Start",  "nRet 10", " Read Len too Short", "[ReadIDCardOneCmd] Start",
      " Read Len too Short",
  };
  EXPECT_EQ(expected, LinesOf(kCardArea));
}

TEST_F(CardRead, LogsTheCheckByteOfAGoodReply) {
  NEEDS_PRIVATE_ROOT();
  Bytes reply = ReadReply(1295);
  reply[100] = static_cast<std::uint8_t>(reply[100] ^ reply.back() ^ 0xC4);
  reader.HoldCard(WithCheckByte(reply));
  SwitchLogging(true);

  ASSERT_EQ(0, ReadIDCard(0, data, &length));
  ASSERT_EQ(0, ReadIDCardOneCmd(data, &length));

  const Lines expected = {
      "[ReadIDCard] Start",
      "nRet 1295",
      " Read Check Value = c4",
      "[ReadIDCardOneCmd] Start",
  };
  EXPECT_EQ(expected, LinesOf(kCardArea));
}

TEST_F(CardRead, RefusesAWrongCheckByte) {
  NEEDS_PRIVATE_ROOT();
  Bytes reply = ReadReply(1295);
  reply[100] = static_cast<std::uint8_t>(reply[100] ^ reply.back() ^ 0x07);
  reply = WithCheckByte(reply);
  reply.back() = 0x06;
  reader.HoldCard(reply);
  SwitchLogging(true);

  EXPECT_EQ(-55, ReadIDCard(0, data, &length));
  EXPECT_EQ(0, length);
  EXPECT_EQ(-55, ReadIDCardOneCmd(data, &length));
  EXPECT_EQ(0, length);

  const Lines expected = {
      "[ReadIDCard] Start",       "nRet 1295", " Read Check Value = 06", "CRC Check Error",
      "[ReadIDCardOneCmd] Start",
  };
  EXPECT_EQ(expected, LinesOf(kCardArea));
}

// The check covers what stands from the length field to the byte before the last; the preamble is
// not looked at.
TEST_F(CardRead, ChecksFromTheLengthFieldOn) {
  for (const std::size_t position : {7U, 700U, 1293U, 0U}) {
    Bytes changed = ReadReply(1295);
    changed[position] ^= 0x80;
    reader.On(kReadCommand, changed);
  }

  EXPECT_EQ(-55, ReadIDCard(0, data, &length));
  EXPECT_EQ(-55, ReadIDCard(0, data, &length));
  EXPECT_EQ(-55, ReadIDCard(0, data, &length));
  EXPECT_EQ(0, ReadIDCard(0, data, &length));
}

TEST_F(CardRead, RefusesALongReplyThatSaysReadFailed) {
  NEEDS_PRIVATE_ROOT();
  const Bytes reply = LongReplyThatBeginsWith(kReadFailedAnswer);
  SwitchLogging(true);

  reader.SendAhead(reply);
  EXPECT_EQ(-55, ReadIDCard(0, data, &length));
  EXPECT_EQ("Read Card return read Fail data", LinesOf(kCardArea).back());
  reader.SendAhead(reply);
  EXPECT_EQ(-55, ReadIDCardOneCmd(data, &length));
  EXPECT_EQ("Read Card return read Fail data", LinesOf(kCardArea).back());
}

TEST_F(CardRead, RefusesALongReplyThatSaysUnsupported) {
  NEEDS_PRIVATE_ROOT();
  const Bytes reply = LongReplyThatBeginsWith(kUnsupportedAnswer);
  SwitchLogging(true);

  reader.SendAhead(reply);
  EXPECT_EQ(-2002, ReadIDCard(0, data, &length));
  EXPECT_EQ(" Read Card return unsupport data", LinesOf(kCardArea).back());
  reader.SendAhead(reply);
  EXPECT_EQ(-2002, ReadIDCardOneCmd(data, &length));
  EXPECT_EQ(" Read Card return unsupport data", LinesOf(kCardArea).back());
}

// Twelve bytes are compared, the last of them zero.
TEST_F(CardRead, AcceptsALongReplyThatIsUnsupportedOverElevenBytesOnly) {
  Bytes reply = LongReplyThatBeginsWith(kUnsupportedAnswer);
  reply[11] = 1;
  reader.SendAhead(WithCheckByte(reply));

  EXPECT_EQ(0, ReadIDCard(0, data, &length));
}

TEST_F(CardRead, ReturnsWhatTheExchangeSaysOfASilentReader) {
  NEEDS_PRIVATE_ROOT();
  stand_in_clock::SetSpeed(20);
  SwitchLogging(true);
  length = 1295;

  EXPECT_EQ(-56, ReadIDCard(0, data, &length));

  EXPECT_EQ(0, length);
  const Lines expected = {"[ReadIDCard] Start", "! nRet -56"};
  EXPECT_EQ(expected, LinesOf(kCardArea));
}

TEST_F(CardRead, WaitsFiveSecondsForAnAnswer) {
  NEEDS_PRIVATE_ROOT();
  reader.HoldCard(ReadReply(1295));
  SwitchLogging(true);

  ASSERT_EQ(0, ReadIDCard(0, data, &length));
  ASSERT_EQ(0, ReadIDCardOneCmd(data, &length));

  EXPECT_EQ((Lines{"5", "5"}), ReadTimesSet());
}

TEST_F(CardRead, RefusesNullBuffersWithoutACommand) {
  EXPECT_EQ(-2, ReadIDCard(0, nullptr, &length));
  EXPECT_EQ(0, length);
  EXPECT_EQ(-2, ReadIDCard(0, data, nullptr));
  EXPECT_EQ(-2, ReadIDCardOneCmd(nullptr, &length));
  EXPECT_EQ(-2, ReadIDCardOneCmd(data, nullptr));
  EXPECT_EQ(-2, GetIDCardInfo(10, 0, nullptr, &length));
  EXPECT_EQ(-2, GetIDCardInfo(10, 0, data, nullptr));

  EXPECT_TRUE(reader.Commands().empty());
}

// An answer after the time-out is taken for the next command's; nothing worse follows.
TEST_F(CardRead, TakesALateAnswerForTheNextCommand) {
  stand_in_clock::SetSpeed(20);
  const Bytes late = ReadReply(1295, 7);
  reader.On(kReadCommand, Bytes{});

  EXPECT_EQ(-56, ReadIDCard(0, data, &length));
  reader.SendAhead(late);
  EXPECT_EQ(0, ReadIDCard(1, data, &length));

  EXPECT_EQ(HexText(late), Data());
}
