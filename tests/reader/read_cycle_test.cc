#include <climits>

#include "quillonid/link.h"
#include "quillonid/reader.h"
#include "reader/native_data.h"
#include "tests/reader/engine_fixture.h"

namespace {

struct Cycle : testing::Test {
  int Read(const char* device, int finger = 0, long baud = 9600, long seconds = 10) {
    return tFuncReadIdNativeData(device, "", baud, seconds, finger, data, &length);
  }
  int Read(int finger = 0) { return Read(reader.Path().c_str(), finger); }

  ScriptedReader reader;
  unsigned char data[4096] = {};
  int length = -1;
};

std::string Kept() {
  Bytes kept(4096);
  kept.resize(static_cast<std::size_t>(tFunc_GetIdNativeData(kept.data(), 4096)));
  return HexText(kept);
}

}  // namespace

using ReadCycle = Cycle;
using NativeDataRead = Cycle;

TEST_F(ReadCycle, ReadsWithoutFingerprints) {
  const Bytes reply = ReadReply(1295);
  reader.HoldCard(reply);

  EXPECT_EQ(0, ReadIDCardInfo(reader.Path().c_str(), "", 9600, 0, 10, data, &length));

  EXPECT_EQ(HexText(reply), HexText(data, 1295));
  EXPECT_EQ(1295, length);
  EXPECT_EQ(kReadCommand, reader.Commands().back());
}

TEST_F(ReadCycle, ReadsWithFingerprints) {
  reader.HoldCard(ReadReply(2321));

  EXPECT_EQ(0, ReadIDCardInfo_FP(reader.Path().c_str(), "", 9600, 0, 10, data, &length));

  EXPECT_EQ(2321, length);
  EXPECT_EQ(kFingerCommand, reader.Commands().back());
}

TEST_F(ReadCycle, ClosesTheDeviceAfterTheRead) {
  reader.HoldCard(ReadReply(1295));
  ASSERT_EQ(0, ReadIDCardInfo(reader.Path().c_str(), "", 9600, 0, 10, data, &length));

  EXPECT_EQ(-54, SelectIDCard());  // nothing is open to write to
  EXPECT_EQ(-2, ReadIDCardInfo(reader.Path().c_str(), "", 9600, 0, 0, data, &length));
  EXPECT_EQ(-54, SelectIDCard());

  EXPECT_EQ(3U, reader.Commands().size());
}

TEST_F(ReadCycle, ReturnsTheCodeOfAFailedOpen) {
  NEEDS_PRIVATE_ROOT();
  stand_in_clock::HoldWallClock(4, 0);
  SwitchLogging(true);
  length = 1295;

  EXPECT_EQ(-50, ReadIDCardInfo("/dev/no-such-reader", "", 9600, 0, 10, data, &length));
  EXPECT_EQ(0, length);
  EXPECT_EQ(-2, ReadIDCardInfo_FP("COM1", "x", 57600, 0, 10, data, &length));

  const Lines expected = {
      "ReadIDCardInfo : szDevice:/dev/no-such-reader, bpno:, nbaud:9600, timeout:10",
      "OpenDevice failed!",
      "ReadIDCardInfo : szDevice:COM1, bpno:x, nbaud:57600, timeout:10",
      "OpenDevice failed!",
  };
  EXPECT_EQ(expected, LinesOf(kCardArea));
}

TEST_F(ReadCycle, LogsTheTimeThatTheReadTook) {
  NEEDS_PRIVATE_ROOT();
  stand_in_clock::HoldWallClock(4, 0);
  reader.HoldCard(ReadReply(1295));
  reader.On(kReadCommand, ReadReply(1295), [] { stand_in_clock::HoldWallClock(6, 250'000'000); });
  SwitchLogging(true);

  ASSERT_EQ(0, ReadIDCardInfo(reader.Path().c_str(), "", 9600, 0, 10, data, &length));
  const Lines first = LinesOf(kCardArea);
  ASSERT_EQ(0, ReadIDCardInfo_FP(reader.Path().c_str(), "", 9600, 0, 10, data, &length));
  const Lines second = LinesOf(kCardArea);

  const std::string opening =
      "ReadIDCardInfo : szDevice:" + reader.Path() + ", bpno:, nbaud:9600, timeout:10";
  EXPECT_EQ(opening, first.front());
  EXPECT_EQ("ReadIDCard over\xA3\xAC\xBA\xC4\xCA\xB1=0 ms", first.end()[-2]);
  EXPECT_EQ("GetIDCardInfo nRet = 0 ", first.back());
  EXPECT_EQ(opening, second[first.size()]);
  EXPECT_EQ("ReadIDCard over\xA3\xAC\xBA\xC4\xCA\xB1=0 ms", second.end()[-2]);
  EXPECT_EQ("GetIDCardInfo_FP  nRet = 0 ", second.back());
}

TEST_F(ReadCycle, LogsAFailedRead) {
  NEEDS_PRIVATE_ROOT();
  reader.On(kSearchCommand, kFoundAnswer);
  reader.On(kSelectCommand, kNoCardAnswer);
  SwitchLogging(true);

  ASSERT_EQ(-2003, ReadIDCardInfo(reader.Path().c_str(), "", 9600, 0, 10, data, &length));
  EXPECT_EQ("! GetIDCardInfo nRet = -2003 ", LinesOf(kCardArea).back());

  ASSERT_EQ(-2003, ReadIDCardInfo_FP(reader.Path().c_str(), "", 9600, 0, 10, data, &length));
  EXPECT_EQ("! GetIDCardInfo_FP  nRet = -2003 ", LinesOf(kCardArea).back());
}

// The start tick is taken after the opening line, with fingerprints before it.
TEST_F(ReadCycle, TakesTheStartTickAroundItsFirstLine) {
  NEEDS_PRIVATE_ROOT();
  const std::string tick = LineOpening(false, "Public:") + "==>[GetTickCountStartTime] Start ";
  const std::string line = LineOpening(false, kCardArea) +
                           "ReadIDCardInfo : szDevice:(null), bpno:(null), nbaud:1, timeout:2";
  SwitchLogging(true);
  ReadIDCardInfo(nullptr, nullptr, 1, 0, 2, data, &length);
  const Lines plain = LogLines();
  ASSERT_LE(2U, plain.size());
  EXPECT_EQ(line, plain[0]);
  EXPECT_EQ(tick, plain[1]);

  SwitchLogging(true);
  ReadIDCardInfo_FP(nullptr, nullptr, 1, 0, 2, data, &length);
  EXPECT_EQ(tick, LogLines().front());
}

TEST_F(NativeDataRead, KeepsWhatItRead) {
  const Bytes reply = ReadReply(1295);
  reader.HoldCard(reply);

  EXPECT_EQ(0, Read());

  EXPECT_EQ(HexText(reply), HexText(data, 1295));
  EXPECT_EQ(HexText(reply), Kept());
  EXPECT_EQ(kReadCommand, reader.Commands().back());
}

TEST_F(NativeDataRead, KeepsTheLastOfTwoReads) {
  reader.On(kSearchCommand, kFoundAnswer);
  reader.On(kSelectCommand, kSelectedAnswer);
  reader.On(kFingerCommand, ReadReply(2321, 1));
  reader.On(kReadCommand, ReadReply(1295, 2));

  ASSERT_EQ(0, Read(1));
  ASSERT_EQ(0, Read(0));

  EXPECT_EQ(HexText(ReadReply(1295, 2)), Kept());
}

TEST_F(NativeDataRead, AcceptsTheReplyOfTheOtherMode) {
  reader.HoldCard(ReadReply(2321));
  EXPECT_EQ(0, Read(0));
  EXPECT_EQ(2321, length);

  ScriptedReader other;
  other.HoldCard(ReadReply(1295));
  EXPECT_EQ(0, Read(other.Path().c_str(), 1));
  EXPECT_EQ(1295, length);
}

TEST_F(NativeDataRead, KeepsTheCardBeforeWhenItFails) {
  const Bytes reply = ReadReply(1297);
  reader.On(kSearchCommand, kFoundAnswer);
  reader.On(kSelectCommand, kSelectedAnswer);
  reader.On(kSelectCommand, kNoCardAnswer);
  reader.On(kFingerCommand, reply);
  ASSERT_EQ(0, Read(1));

  EXPECT_EQ(-2003, Read(1));
  EXPECT_EQ(-50, Read("/dev/no-such-reader"));
  EXPECT_EQ(-2, Read(reader.Path().c_str(), 0, 9600, 0));

  EXPECT_EQ(HexText(reply), Kept());
}

TEST_F(NativeDataRead, ReadsFingerprintsForAnyFlagButZero) {
  reader.HoldCard(ReadReply(1297));

  EXPECT_EQ(0, Read(2));

  EXPECT_EQ(kFingerCommand, reader.Commands().back());
}

// Numbers that no int holds must not shrink to one that is accepted, here 5 seconds.
TEST_F(NativeDataRead, RefusesATimeLimitThatNoIntHolds) {
  if (sizeof(long) == sizeof(int)) GTEST_SKIP() << "long and int are one";
  NEEDS_PRIVATE_ROOT();
  SwitchLogging(true);

  EXPECT_EQ(-2, Read(reader.Path().c_str(), 0, 4294967296L + 9600, 4294967296L + 5));
  EXPECT_EQ(-2, Read(reader.Path().c_str(), 0, -4294967296L, -4294967296L + 5));

  EXPECT_TRUE(reader.Commands().empty());
  const Lines lines = LinesOf(kCardArea);
  for (const char* line : {"nBaud: 2147483647", "nTimeOut: 2147483647", "nBaud: -2147483648",
                           "nTimeOut: -2147483648"}) {
    EXPECT_NE(lines.end(), std::find(lines.begin(), lines.end(), line)) << line;
  }
}

TEST_F(NativeDataRead, LogsItsArguments) {
  NEEDS_PRIVATE_ROOT();
  SwitchLogging(true);

  Read("/dev/no-such-reader", 1, 115200, 7);

  const Lines expected = {
      "[tFuncReadIdNativeData]Start ",
      "pszDevice: /dev/no-such-reader",
      "szBpNo: ",
      "nBaud: 115200",
      "nTimeOut: 7",
      "ReadIDCardInfo : szDevice:/dev/no-such-reader, bpno:, nbaud:115200, timeout:7",
      "OpenDevice failed!",
  };
  EXPECT_EQ(expected, LinesOf(kCardArea));
}

TEST_F(NativeDataRead, ShowsNullTextsAsSuch) {
  NEEDS_PRIVATE_ROOT();
  SwitchLogging(true);

  EXPECT_EQ(-50, tFuncReadIdNativeData(nullptr, nullptr, 1, 2, 0, data, &length));

  const Lines lines = LinesOf(kCardArea);
  EXPECT_EQ("pszDevice: (null)", lines[1]);
  EXPECT_EQ("szBpNo: (null)", lines[2]);
}

// The card's bytes do not go into the log a second time: a dump of the information type is none.
TEST_F(NativeDataRead, WritesNoDumpOfTheKeptData) {
  NEEDS_PRIVATE_ROOT();
  reader.HoldCard(ReadReply(1295));
  SwitchLogging(true);

  ASSERT_EQ(0, Read());

  EXPECT_EQ(std::string::npos, ReadWholeFile(kLogFile).find("ReadIDCardInfo szData"));
}

TEST_F(NativeDataRead, RefusesNullBuffers) {
  reader.HoldCard(ReadReply(1295));
  const char* device = reader.Path().c_str();

  EXPECT_EQ(-2, tFuncReadIdNativeData(device, "", 9600, 10, 0, nullptr, &length));
  EXPECT_EQ(-2, tFuncReadIdNativeData(device, "", 9600, 10, 0, data, nullptr));
}
