#include <climits>

#include "tests/reader/engine_fixture.h"

using CardSequence = Engine;

namespace {

const Lines kWholeRead = {kSearchCommand, kSelectCommand, kReadCommand};

// Pauses are whole seconds, as limits are: a fraction keeps a test away from the very end.
void AdvanceAFraction() { stand_in_clock::Advance(0.25); }

Bytes WrongCheckByte(Bytes reply) {
  reply.back() ^= 1;
  return reply;
}

}  // namespace

TEST_F(CardSequence, SearchesSelectsAndReads) {
  const Bytes reply = ReadReply(1295);
  reader.HoldCard(reply);

  EXPECT_EQ(0, Get(10));

  EXPECT_EQ(HexText(reply), Data());
  EXPECT_EQ(kWholeRead, reader.Commands());
  EXPECT_EQ(1, stand_in_clock::SleepCalls());  // behind the select
}

TEST_F(CardSequence, ReadsFingerprintsWhenAsked) {
  const Bytes reply = ReadReply(2321);
  reader.HoldCard(reply);

  EXPECT_EQ(0, Get(10, 1));

  EXPECT_EQ(HexText(reply), Data());
  EXPECT_EQ((Lines{kSearchCommand, kSelectCommand, kFingerCommand}), reader.Commands());
}

// The limit in milliseconds is computed in 64 bits, before the test of the range.
TEST_F(CardSequence, RefusesALimitOutsideOneToOneHundredAndTwenty) {
  reader.HoldCard(ReadReply(1295));

  for (const int seconds : {0, 121, -1, INT_MAX, INT_MIN}) EXPECT_EQ(-2, Get(seconds)) << seconds;

  EXPECT_TRUE(reader.Commands().empty());
}

TEST_F(CardSequence, AcceptsTheEndsOfTheRange) {
  reader.HoldCard(ReadReply(1295));

  EXPECT_EQ(0, Get(1));
  EXPECT_EQ(0, Get(120));
}

TEST_F(CardSequence, TimesOutWithoutPausesWhenNothingAnswers) {
  stand_in_clock::SetSpeed(20);

  EXPECT_EQ(-56, Get(1));

  EXPECT_EQ(Lines{kSearchCommand}, reader.Commands());
  EXPECT_EQ(0, stand_in_clock::SleepCalls());
}

TEST_F(CardSequence, LeavesNoLengthWithoutACard) {
  reader.On(kSearchCommand, kFoundAnswer);
  reader.On(kSelectCommand, kNoCardAnswer);
  length = 1295;
  ASSERT_EQ(-2003, Get(10));
  EXPECT_EQ(0, length);

  length = 1295;
  ASSERT_EQ(-2, Get(0));
  EXPECT_EQ(0, length);
}

TEST_F(CardSequence, LeavesWithTheResultOfAFailedSelect) {
  const std::pair<std::string, int> answers[] = {
      {kNoCardAnswer,     -2003},
      {kIcPowerOnAnswer,  -2007},
      {kReadFailedAnswer, -55  }
  };
  reader.On(kSearchCommand, kFoundAnswer);
  for (const auto& answer : answers) reader.On(kSelectCommand, answer.first);

  for (const auto& answer : answers) EXPECT_EQ(answer.second, Get(10));

  EXPECT_EQ((Lines{kSearchCommand, kSelectCommand, kSearchCommand, kSelectCommand, kSearchCommand,
                   kSelectCommand}),
            reader.Commands());
}

TEST_F(CardSequence, BeginsAgainAfterABadReadReply) {
  const Bytes reply = ReadReply(1297);
  reader.On(kSearchCommand, kFoundAnswer);
  reader.On(kSelectCommand, kSelectedAnswer);
  reader.On(kReadCommand, WrongCheckByte(reply));
  reader.On(kReadCommand, ReadReply(1296));
  reader.On(kReadCommand, kReadFailedAnswer);
  reader.On(kReadCommand, reply);

  EXPECT_EQ(0, Get(60));

  EXPECT_EQ(HexText(reply), Data());
  EXPECT_EQ(12U, reader.Commands().size());
  EXPECT_EQ(4 + 3, stand_in_clock::SleepCalls());  // behind each select and each failed read
}

// Only the unsupported reply ends the read at once; a bad one is tried again until the limit.
TEST_F(CardSequence, TimesOutOnReadRepliesThatStayBad) {
  NEEDS_PRIVATE_ROOT();
  reader.On(kSearchCommand, kFoundAnswer, AdvanceAFraction);
  reader.On(kSelectCommand, kSelectedAnswer);
  reader.On(kReadCommand, WrongCheckByte(ReadReply(1295)));
  SwitchLogging(true);

  EXPECT_EQ(-56, Get(3));

  EXPECT_EQ(" Read RET_PUB_TIMEOUT", LinesOf(kCardArea).back());
  EXPECT_EQ(0, length);
  EXPECT_EQ(6U, reader.Commands().size());  // reads at 1.25 and 3.5 seconds
}

TEST_F(CardSequence, ReturnsAnUnsupportedReplyAtOnce) {
  Bytes reply = FromHex(kUnsupportedAnswer);
  reply.resize(1295);
  tFuncSearchIdDirect(1);
  reader.SendAhead(WithCheckByte(reply));

  EXPECT_EQ(-2002, Get(60));

  EXPECT_EQ(0, stand_in_clock::SleepCalls());
}

// Each search is given the whole limit, so a read that fails late may take it twice.
TEST_F(CardSequence, GivesEverySearchTheWholeLimit) {
  NEEDS_PRIVATE_ROOT();
  reader.On(kSearchCommand, kFoundAnswer);
  reader.On(kSearchCommand, kNoCardAnswer, AdvanceAFraction);
  reader.On(kSelectCommand, kSelectedAnswer);
  reader.On(kReadCommand, kReadFailedAnswer);
  SwitchLogging(true);

  EXPECT_EQ(-56, Get(3));

  Lines starts;
  for (const std::string& line : LinesOf(kCardArea)) {
    if (line.rfind("[SearchCard]", 0) == 0) starts.push_back(line);
  }
  EXPECT_EQ(Lines(2, "[SearchCard] Start nTimeOut = 3000 "), starts);
  // Behind the select, behind the read, and behind three answers of the second search.
  EXPECT_EQ(5, stand_in_clock::SleepCalls());
}

TEST_F(CardSequence, ReadsAtOnceWhenSearchIsDirect) {
  reader.HoldCard(ReadReply(1295));
  tFuncSearchIdDirect(1);

  EXPECT_EQ(0, Get(10));

  EXPECT_EQ(Lines{kReadCommand}, reader.Commands());
  EXPECT_EQ(0, stand_in_clock::SleepCalls());
}

TEST_F(CardSequence, KeepsSearchDirectFromReadToRead) {
  reader.HoldCard(ReadReply(1295));
  tFuncSearchIdDirect(1);

  EXPECT_EQ(0, Get(10));
  EXPECT_EQ(0, Get(10));
  tFuncSearchIdDirect(0);
  EXPECT_EQ(0, Get(10));

  EXPECT_EQ((Lines{kReadCommand, kReadCommand, kSearchCommand, kSelectCommand, kReadCommand}),
            reader.Commands());
}

TEST_F(CardSequence, SearchesWhenTheDirectFlagIsNotOne) {
  reader.HoldCard(ReadReply(1295));
  tFuncSearchIdDirect(2);

  EXPECT_EQ(0, Get(10));

  EXPECT_EQ(kWholeRead, reader.Commands());
}

TEST_F(CardSequence, ReadsWithOneCommandForAnyFlagButZero) {
  const Bytes reply = ReadReply(1297);
  reader.HoldCard(reply);

  for (const int flag : {1, 2, -1}) {
    tFuncReadOneInstr(flag);
    EXPECT_EQ(0, Get(10, flag));
  }

  EXPECT_EQ(HexText(reply), Data());
  EXPECT_EQ(Lines(3, kOneCommand), reader.Commands());
  EXPECT_EQ(0, stand_in_clock::SleepCalls());
}

TEST_F(CardSequence, TriesTheOneCommandAgain) {
  reader.On(kOneCommand, kNoCardAnswer);
  reader.On(kOneCommand, kReadFailedAnswer);
  reader.On(kOneCommand, ReadReply(2321));
  tFuncReadOneInstr(1);

  EXPECT_EQ(0, Get(10));

  EXPECT_EQ(Lines(3, kOneCommand), reader.Commands());
  EXPECT_EQ(2, stand_in_clock::SleepCalls());
}

TEST_F(CardSequence, TimesOutOnOneCommandRepliesThatStayBad) {
  NEEDS_PRIVATE_ROOT();
  stand_in_clock::HoldWallClock(9, 0);
  reader.On(kOneCommand, kReadFailedAnswer, AdvanceAFraction);
  tFuncReadOneInstr(1);
  SwitchLogging(true);

  EXPECT_EQ(-56, Get(1));

  const Lines expected = {
      "[GetIDCardInfo] Start ",
      "[ReadIDCardOneCmd] Start",
      "Read Len err",
      " **** sEndTime = 9000 ",
      "****** sEndTime - sStartTime = 0 ",
      "[ReadIDCardOneCmd] Start",
      "Read Len err",
      " **** sEndTime = 9000 ",
      "****** sEndTime - sStartTime = 0 ",
      " Search RET_PUB_TIMEOUT",
  };
  EXPECT_EQ(expected, LinesOf(kCardArea));
  EXPECT_EQ(0, length);
}

TEST_F(CardSequence, EndsWithTheLastResultWhenOneCommandModeIsSwitchedOff) {
  tFuncReadOneInstr(1);
  reader.On(kOneCommand, kReadFailedAnswer, [] { tFuncReadOneInstr(0); });

  EXPECT_EQ(-55, Get(10));

  EXPECT_EQ(Lines{kOneCommand}, reader.Commands());
}

TEST_F(CardSequence, GoesOnWithOneCommandWhenThatIsSwitchedOn) {
  const Bytes reply = ReadReply(1295);
  reader.On(kSearchCommand, kFoundAnswer);
  reader.On(kSelectCommand, kSelectedAnswer);
  reader.On(kReadCommand, kReadFailedAnswer, [] { tFuncReadOneInstr(1); });
  reader.On(kOneCommand, reply);

  EXPECT_EQ(0, Get(10));

  EXPECT_EQ(HexText(reply), Data());
  EXPECT_EQ((Lines{kSearchCommand, kSelectCommand, kReadCommand, kOneCommand}), reader.Commands());
}

TEST_F(CardSequence, ReadsAgainWithOneCommandWhenThatIsSwitchedOnDuringAGoodRead) {
  reader.On(kSearchCommand, kFoundAnswer);
  reader.On(kSelectCommand, kSelectedAnswer);
  reader.On(kReadCommand, ReadReply(1295, 1), [] { tFuncReadOneInstr(1); });
  reader.On(kOneCommand, ReadReply(1297, 2));

  EXPECT_EQ(0, Get(10));

  EXPECT_EQ(1297, length);
}

TEST_F(CardSequence, LogsAWholeRead) {
  NEEDS_PRIVATE_ROOT();
  stand_in_clock::HoldWallClock(3, 0);
  Bytes reply = ReadReply(1295);
  reply[100] = static_cast<std::uint8_t>(reply[100] ^ reply.back() ^ 0x5C);
  reply = WithCheckByte(reply);
  reader.On(kSearchCommand, kFoundAnswer);
  reader.On(kSelectCommand, kSelectedAnswer);
  reader.On(kReadCommand, kReadFailedAnswer);
  reader.On(kReadCommand, reply);
  SwitchLogging(true);

  ASSERT_EQ(0, Get(60));

  const Lines search_and_select = {
      "[SearchCard] Start nTimeOut = 60000 ",
      " **** sStartTime = 3000 ",
      "COMM_Zel_SendAndReciveData nRet = 15",
      " **** sEndTime = 3000 ",
      "****** sEndTime - sStartTime = 0 ",
      "searchcard exit 0",
      "[SelectIDCard] Start ",
      "COMM_Zel_SendAndReciveData nRet = 19",
      "***[have Id Card] ",
      "[ReadIDCard] Start",
  };
  Lines expected = {"[GetIDCardInfo] Start "};
  expected.insert(expected.end(), search_and_select.begin(), search_and_select.end());
  for (const char* line : {"nRet 11", "Read Len err", "! ReadIDCard nRet = -55 ",
                           "****** sEndTime - sStartTime = 0 "}) {
    expected.emplace_back(line);
  }
  expected.insert(expected.end(), search_and_select.begin(), search_and_select.end());
  for (const char* line : {"nRet 1295", " Read Check Value = 5c", "ReadIDCard nRet = 0 "}) {
    expected.emplace_back(line);
  }
  EXPECT_EQ(expected, LinesOf(kCardArea));
}

TEST_F(CardSequence, LogsAFailedSearch) {
  NEEDS_PRIVATE_ROOT();
  stand_in_clock::SetSpeed(20);
  stand_in_clock::HoldWallClock(3, 0);
  SwitchLogging(true);

  ASSERT_EQ(-56, Get(1));

  EXPECT_EQ("! searchcard exit -56", LinesOf(kCardArea).back());
}

TEST(EngineFlags, AreLoggedAsTheyAreSet) {
  NEEDS_PRIVATE_ROOT();
  SwitchLogging(true);

  EXPECT_EQ(0, tFuncSearchIdDirect(1));
  EXPECT_EQ(0, tFuncReadOneInstr(-1));

  const Lines expected = {
      "[tFuncSearchIdDirect] Start ",
      "[ s_bSearchCardD = 01]  ",
      "[tFuncReadOneInstr] Start ",
      "[ s_bReadOneInstr = ffffffff]  ",
  };
  EXPECT_EQ(expected, LinesOf(kCardArea));
}

// After an open that asked for an SDT reader the engine treats every reader as one: the type stays.
class SdtRead : public Engine {
 protected:
  void SetUp() override {
    ASSERT_EQ(-50, tFuncOpenDevice("SDT", "", 9600, 0, 10));
    ASSERT_EQ(3U, Dev_Zel_IdCard_GetConnectType());
    Engine::SetUp();
    ASSERT_EQ(3U, Dev_Zel_IdCard_GetConnectType());
  }
};

TEST_F(SdtRead, GoesOnAfterAFailedSearchAndSelect) {
  reader.On(kSearchCommand, kNoCardAnswer);
  reader.On(kSelectCommand, kNoCardAnswer);
  reader.On(kReadCommand, ReadReply(1295));

  EXPECT_EQ(0, Get(1));

  EXPECT_EQ(kSelectCommand, reader.Commands().end()[-2]);
  EXPECT_EQ(kReadCommand, reader.Commands().back());
}

TEST_F(SdtRead, EndsAtAFailedSearchOnceAfterACancel) {
  reader.On(kSearchCommand, kNoCardAnswer);
  reader.On(kSelectCommand, kNoCardAnswer);
  reader.On(kReadCommand, ReadReply(1295));
  CancelIdRead();

  EXPECT_EQ(-56, Get(1));
  EXPECT_EQ(kSearchCommand, reader.Commands().back());

  EXPECT_EQ(0, Get(1));
}
