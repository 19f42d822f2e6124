#include <algorithm>
#include <chrono>

#include "tests/reader/engine_fixture.h"

using CardCancel = Engine;

namespace {

constexpr std::chrono::milliseconds kLook(5);

void Cancel() { CancelIdRead(); }

// When the library has begun to wait for the answer.
void CancelTheWait() {
  std::this_thread::sleep_for(std::chrono::milliseconds(300));
  CancelIdRead();
}

std::chrono::milliseconds TimeOf(const std::function<void()>& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() -
                                                               start);
}

std::size_t Count(const Lines& lines, const std::string& line) {
  return static_cast<std::size_t>(std::count(lines.begin(), lines.end(), line));
}

}  // namespace

TEST_F(CardCancel, EndsASearchWithinOnePass) {
  reader.On(kSearchCommand, kNoCardAnswer, Cancel);

  EXPECT_EQ(-57, SearchCard(60000));

  EXPECT_EQ(Lines{kSearchCommand}, reader.Commands());
  EXPECT_EQ(0, stand_in_clock::SleepCalls()) << "no pause behind it";
}

TEST_F(CardCancel, EndsASearchThatWaitsForAnAnswer) {
  stand_in_clock::UseSystemClock();
  reader.On(kSearchCommand, kSilence, CancelTheWait);

  const auto taken = TimeOf([] { EXPECT_EQ(-57, SearchCard(60000)); });

  EXPECT_LT(taken, std::chrono::milliseconds(2500));  // well below the three seconds of a search
}

TEST_F(CardCancel, EndsARead) {
  stand_in_clock::UseSystemClock();
  reader.On(kSearchCommand, kFoundAnswer);
  reader.On(kSelectCommand, kSelectedAnswer);
  reader.On(kReadCommand, kSilence, CancelTheWait);

  const auto taken = TimeOf([this] { EXPECT_EQ(-57, Get(60)); });

  EXPECT_GE(taken, std::chrono::milliseconds(900));   // the pause behind the select
  EXPECT_LT(taken, std::chrono::milliseconds(4800));  // below the five seconds of a read
  EXPECT_EQ(1, stand_in_clock::SleepCalls()) << "no pause behind the read";
}

// Against a cancel that comes when no wait runs yet, and makes those behind it do nothing.
TEST_F(CardCancel, AskedForAgainEndsAReadThatTheFirstOneMissed) {
  stand_in_clock::UseSystemClock();
  reader.On(kReadCommand, kSilence, CancelTheWait);
  CancelIdRead();

  const auto taken = TimeOf([this] { EXPECT_EQ(-57, ReadIDCard(0, data, &length)); });

  EXPECT_LT(taken, std::chrono::milliseconds(3500));  // well below the five seconds of a read
}

TEST_F(CardCancel, EndsASequenceThatWaitsForTheSelect) {
  reader.On(kSearchCommand, kFoundAnswer);
  reader.On(kSelectCommand, kSilence, CancelTheWait);

  EXPECT_EQ(-57, Get(60));

  EXPECT_EQ((Lines{kSearchCommand, kSelectCommand}), reader.Commands());
}

TEST_F(CardCancel, InThePauseBehindTheSelectLetsNoReadBegin) {
  stand_in_clock::UseSystemClock();
  reader.HoldCard(ReadReply(1295));
  std::thread person([this] {
    while (reader.Commands().size() < 2) std::this_thread::sleep_for(kLook);
    CancelTheWait();  // 0.3 s into the second of the pause
  });

  EXPECT_EQ(-57, Get(60));

  person.join();
  EXPECT_EQ((Lines{kSearchCommand, kSelectCommand}), reader.Commands());
}

TEST_F(CardCancel, EndsASequenceThatHasReadTheCard) {
  reader.On(kSearchCommand, kFoundAnswer);
  reader.On(kSelectCommand, kSelectedAnswer);
  reader.On(kReadCommand, ReadReply(1295), Cancel);

  EXPECT_EQ(-57, Get(60));
}

TEST_F(CardCancel, EndsOneCommandReads) {
  tFuncReadOneInstr(1);
  reader.On(kOneCommand, kReadFailedAnswer, Cancel);

  EXPECT_EQ(-57, Get(60));

  EXPECT_EQ(Lines{kOneCommand}, reader.Commands());
  EXPECT_EQ(0, stand_in_clock::SleepCalls()) << "no pause behind it";
}

TEST_F(CardCancel, DuringTheSelectLeavesNoPauseBehindIt) {
  reader.On(kSearchCommand, kFoundAnswer);
  reader.On(kSelectCommand, kSelectedAnswer, Cancel);

  EXPECT_EQ(-57, Get(60));

  EXPECT_EQ((Lines{kSearchCommand, kSelectCommand}), reader.Commands());
  EXPECT_EQ(0, stand_in_clock::SleepCalls());
}

// Search, select and the whole sequence clear the flag as they begin.
TEST_F(CardCancel, IsLostWhenItComesBeforeTheRead) {
  reader.HoldCard(ReadReply(1295));

  CancelIdRead();
  EXPECT_EQ(0, Get(10));
  CancelIdRead();
  EXPECT_EQ(0, SearchCard(10000));
  CancelIdRead();
  EXPECT_EQ(0, SelectIDCard());
}

TEST_F(CardCancel, IsNotClearedBySelectIDCardOneTime) {
  NEEDS_PRIVATE_ROOT();
  reader.On(kSelectCommand, kSelectedAnswer);
  CancelIdRead();
  SelectIDCardOneTime();
  SwitchLogging(true);

  CancelIdRead();

  EXPECT_TRUE(LogLines().empty());  // still set, so nothing is passed on to the link
}

TEST_F(CardCancel, LogsNothingMoreTheSecondTime) {
  NEEDS_PRIVATE_ROOT();
  SwitchLogging(true);

  EXPECT_EQ(0, CancelIdRead());
  const Lines first = LogLines();
  EXPECT_EQ(0, CancelIdRead());

  EXPECT_EQ(1U, Count(first, LineOpening(false, "CommDev:") + "[COMM_Id_CancelRead] Start "));
  EXPECT_EQ(first, LogLines());
}
