#include <sys/time.h>

#include <chrono>
#include <csignal>

#include "tests/reader/engine_fixture.h"

using DeviceCheck = Engine;
using CardSearch = Engine;
using OneCardSearch = Engine;

namespace {

// Ends a read when so many bytes have come.
template <int kCount>
int EndsAt(const unsigned char*, int count) {
  return count >= kCount ? 0 : -1;
}

}  // namespace

TEST_F(DeviceCheck, SendsOneZeroByteBehindTheFrameAndCountsTheAnswer) {
  COMM_Zel_SetEndCondition(IdEndCondition);
  reader.On(kCheckCommand, kReadyAnswer);

  EXPECT_EQ(11, CheckDevice());

  EXPECT_EQ(kCheckCommand + " 00", HexText(reader.Received(11)));
}

// It installs no end condition of its own: without one a serial read waits until its time is over.
TEST_F(DeviceCheck, TimesOutWhenNoEndConditionIsInstalled) {
  stand_in_clock::SetSpeed(20);
  reader.On(kCheckCommand, kReadyAnswer);

  EXPECT_EQ(-56, CheckDevice());
}

TEST_F(DeviceCheck, TakesZeroBytesBehindTheAnswer) {
  COMM_Zel_SetEndCondition(EndsAt<128>);
  Bytes answer = FromHex(kReadyAnswer);
  answer.resize(128);
  reader.On(kCheckCommand, answer);

  EXPECT_EQ(128, CheckDevice());
}

TEST_F(DeviceCheck, RefusesAnyOtherAnswer) {
  COMM_Zel_SetEndCondition(EndsAt<11>);
  reader.On(kCheckCommand, "AA AA AA 96 69 00 04 00 00 90 95");

  EXPECT_EQ(-6, CheckDevice());
}

// The comparison goes over all that was received, which may be longer than the expected answer.
TEST_F(DeviceCheck, RefusesAnotherByteBehindTheAnswer) {
  COMM_Zel_SetEndCondition(EndsAt<128>);
  Bytes answer = FromHex(kReadyAnswer);
  answer.resize(128);
  answer.back() = 1;
  reader.On(kCheckCommand, answer);

  EXPECT_EQ(-6, CheckDevice());
}

TEST_F(DeviceCheck, ReturnsWhatTheExchangeSaysOfASilentReader) {
  stand_in_clock::SetSpeed(20);

  EXPECT_EQ(-56, CheckDevice());
}

TEST_F(DeviceCheck, LogsItsStart) {
  NEEDS_PRIVATE_ROOT();
  COMM_Zel_SetEndCondition(IdEndCondition);
  reader.On(kCheckCommand, kReadyAnswer);
  SwitchLogging(true);

  CheckDevice();

  EXPECT_EQ(Lines{"[CheckDevice] Start "}, LinesOf(kCardArea));
}

TEST_F(CardSearch, ReturnsAtOnceWhenACardIsFound) {
  reader.On(kSearchCommand, kFoundAnswer);

  EXPECT_EQ(0, SearchCard(1000));

  EXPECT_EQ(Lines{kSearchCommand}, reader.Commands());
  EXPECT_EQ(0, stand_in_clock::SleepCalls());
}

// 15 bytes are compared: another answer of any length is no card yet.
TEST_F(CardSearch, PausesOneSecondAfterEachOtherAnswer) {
  reader.On(kSearchCommand, kNoCardAnswer);
  reader.On(kSearchCommand, "AA AA AA 96 69 00 01 01");
  reader.On(kSearchCommand, "AA AA AA 96 69 00 08 00 00 9F 00 00 00 01 96");
  reader.On(kSearchCommand, "AA AA AA 96 69 00 07 00 00 9F 00 00 00 98");
  reader.On(kSearchCommand, kFoundAnswer);

  EXPECT_EQ(0, SearchCard(60000));

  EXPECT_EQ(Lines(5, kSearchCommand), reader.Commands());
  EXPECT_EQ(4, stand_in_clock::SleepCalls());
  EXPECT_EQ(1U, stand_in_clock::LastSleep());
}

TEST_F(CardSearch, PausesAWholeSecondInAProcessWithATimer) {
  stand_in_clock::UseSystemClock();
  reader.On(kSearchCommand, kNoCardAnswer);
  reader.On(kSearchCommand, kFoundAnswer);
  std::signal(SIGALRM, [](int) {});
  const itimerval often = {
      {0, 10'000},
      {0, 10'000}
  };
  setitimer(ITIMER_REAL, &often, nullptr);
  const auto start = std::chrono::steady_clock::now();

  EXPECT_EQ(0, SearchCard(60000));

  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(950));
  const itimerval never = {};
  setitimer(ITIMER_REAL, &never, nullptr);
}

TEST_F(CardSearch, TimesOutWhileAnswersSayNoCard) {
  reader.On(kSearchCommand, kNoCardAnswer);

  EXPECT_EQ(-56, SearchCard(3500));

  EXPECT_EQ(Lines(5, kSearchCommand), reader.Commands());  // at 0, 1, 2, 3 and 4 seconds
  EXPECT_EQ(4, stand_in_clock::SleepCalls());
}

TEST_F(CardSearch, TimesOutInRealTime) {
  stand_in_clock::UseSystemClock();
  reader.On(kSearchCommand, kNoCardAnswer);
  const auto start = std::chrono::steady_clock::now();

  EXPECT_EQ(-56, SearchCard(1500));

  const auto taken = std::chrono::steady_clock::now() - start;
  EXPECT_GE(taken, std::chrono::milliseconds(1900));  // two pauses
  EXPECT_LE(taken, std::chrono::seconds(15));
}

TEST_F(CardSearch, TimesOutWithoutPausesWhenNothingAnswers) {
  stand_in_clock::SetSpeed(20);

  EXPECT_EQ(-56, SearchCard(1000));

  EXPECT_EQ(Lines{kSearchCommand}, reader.Commands());  // an exchange outlasts the limit
  EXPECT_EQ(0, stand_in_clock::SleepCalls());
}

TEST_F(CardSearch, WaitsThreeSecondsForAnAnswer) {
  NEEDS_PRIVATE_ROOT();
  reader.On(kSearchCommand, kFoundAnswer);
  SwitchLogging(true);

  ASSERT_EQ(0, SearchCard(60000));

  EXPECT_EQ(Lines{"3"}, ReadTimesSet());
}

// A port that is gone fails every exchange at once, which must not keep a core busy.
TEST_F(CardSearch, NapsBetweenExchangesThatFailAtOnce) {
  NEEDS_PRIVATE_ROOT();
  reader.HangUp();
  SwitchLogging(true);

  EXPECT_EQ(-56, SearchCard(1000));

  std::size_t passes = 0;
  for (const std::string& line : LinesOf(kCardArea)) {
    if (line.find("COMM_Zel_SendAndReciveData nRet = ") != std::string::npos) ++passes;
  }
  EXPECT_GE(passes, 2U);
  EXPECT_LE(passes, 110U);
  EXPECT_EQ(0, stand_in_clock::SleepCalls());
}

// The limit is decided on the monotonic clock.
TEST_F(CardSearch, EndsInTimeWhenTheWallClockIsSetBack) {
  reader.On(kSearchCommand, kNoCardAnswer, [] { stand_in_clock::StepWallClock(-3600); });

  EXPECT_EQ(-56, SearchCard(1500));

  EXPECT_EQ(2, stand_in_clock::SleepCalls());
}

TEST_F(CardSearch, GoesOnWhenTheWallClockIsSetForward) {
  reader.On(kSearchCommand, kNoCardAnswer, [] { stand_in_clock::StepWallClock(3600); });
  reader.On(kSearchCommand, kFoundAnswer);

  EXPECT_EQ(0, SearchCard(60000));
}

TEST_F(CardSearch, AsksNothingWhenSearchIsDirect) {
  tFuncSearchIdDirect(1);

  EXPECT_EQ(0, SearchCard(1000));

  EXPECT_TRUE(reader.Commands().empty());
}

TEST_F(CardSearch, AsksWhenTheFlagIsNotOne) {
  tFuncSearchIdDirect(2);
  reader.On(kSearchCommand, kFoundAnswer);

  EXPECT_EQ(0, SearchCard(1000));

  EXPECT_EQ(Lines{kSearchCommand}, reader.Commands());
}

TEST_F(CardSearch, EndsWhenSearchBecomesDirectMeanwhile) {
  NEEDS_PRIVATE_ROOT();
  reader.On(kSearchCommand, kNoCardAnswer, [] { tFuncSearchIdDirect(1); });
  SwitchLogging(true);

  EXPECT_EQ(0, SearchCard(60000));

  EXPECT_EQ("auto cancel ?", LinesOf(kCardArea).back());
  EXPECT_EQ(0, stand_in_clock::SleepCalls());
}

TEST_F(CardSearch, LogsEachPass) {
  NEEDS_PRIVATE_ROOT();
  stand_in_clock::HoldWallClock(1, 500'000'000);
  reader.On(kSearchCommand, kNoCardAnswer);
  reader.On(kSearchCommand, kFoundAnswer);
  SwitchLogging(true);

  ASSERT_EQ(0, SearchCard(60000));

  const Lines expected = {
      "[SearchCard] Start nTimeOut = 60000 ", " **** sStartTime = 1500 ",
      "COMM_Zel_SendAndReciveData nRet = 11", " **** sEndTime = 1500 ",
      "****** sEndTime - sStartTime = 0 ",    "search time1",
      "COMM_Zel_SendAndReciveData nRet = 15", " **** sEndTime = 1500 ",
      "****** sEndTime - sStartTime = 0 ",
  };
  EXPECT_EQ(expected, LinesOf(kCardArea));
  EXPECT_TRUE(HasLine(" TIME  SearchCard : szRes=  LEN=11   HEX: AAAAAA9669000400008185"));
  EXPECT_TRUE(HasLine(" TIME  SearchCard : szRes=  LEN=15   HEX: AAAAAA9669000800009F0000000097"));
}

TEST_F(CardSearch, LogsATimeOut) {
  NEEDS_PRIVATE_ROOT();
  stand_in_clock::SetSpeed(20);
  stand_in_clock::HoldWallClock(2, 0);
  SwitchLogging(true);

  ASSERT_EQ(-56, SearchCard(1));

  const Lines expected = {
      "[SearchCard] Start nTimeOut = 1 ",
      " **** sStartTime = 2000 ",
      "! COMM_Zel_SendAndReciveData nRet = -56",
      " Search RET_PUB_TIMEOUT",
  };
  EXPECT_EQ(expected, LinesOf(kCardArea));
}

TEST_F(CardSearch, LogsThatItIsDirect) {
  NEEDS_PRIVATE_ROOT();
  stand_in_clock::HoldWallClock(2, 0);
  tFuncSearchIdDirect(1);
  SwitchLogging(true);

  SearchCard(7);

  const Lines expected = {
      "[SearchCard] Start nTimeOut = 7 ",
      " **** sStartTime = 2000 ",
      "s_bSearchCardD  True",
  };
  EXPECT_EQ(expected, LinesOf(kCardArea));
}

TEST_F(OneCardSearch, FindsACard) {
  reader.On(kSearchCommand, kFoundAnswer);

  EXPECT_EQ(0, SearchCardOneTime(2));

  EXPECT_EQ(Lines{kSearchCommand}, reader.Commands());
}

TEST_F(OneCardSearch, ReturnsTheLengthOfAnotherAnswer) {
  reader.On(kSearchCommand, kNoCardAnswer);

  EXPECT_EQ(11, SearchCardOneTime(2));

  EXPECT_EQ(0, stand_in_clock::SleepCalls());
}

TEST_F(OneCardSearch, WaitsAsManySecondsAsItIsTold) {
  NEEDS_PRIVATE_ROOT();
  reader.On(kSearchCommand, kFoundAnswer);
  SwitchLogging(true);

  ASSERT_EQ(0, SearchCardOneTime(8));

  EXPECT_EQ(Lines{"8"}, ReadTimesSet());
}

TEST_F(OneCardSearch, LogsTheCounts) {
  NEEDS_PRIVATE_ROOT();
  reader.On(kSearchCommand, kNoCardAnswer);
  SwitchLogging(true);

  ASSERT_EQ(11, SearchCardOneTime(2));

  const Lines expected = {
      "[SearchCardOneTime] Start nTimeOut = 2 ",
      "SearchCard : nRes=11, nCRes=15",
      "search time1",
  };
  EXPECT_EQ(expected, LinesOf(kCardArea));
  EXPECT_TRUE(HasLine(" TIME  SearchCard : szRes=  LEN=11   HEX: AAAAAA9669000400008185"));
}

TEST_F(OneCardSearch, LogsNoCountsOfASilentReader) {
  NEEDS_PRIVATE_ROOT();
  stand_in_clock::SetSpeed(20);
  SwitchLogging(true);

  ASSERT_EQ(-56, SearchCardOneTime(1));

  const Lines expected = {"[SearchCardOneTime] Start nTimeOut = 1 ", "search time1"};
  EXPECT_EQ(expected, LinesOf(kCardArea));
}
