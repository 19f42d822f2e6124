// Time stamps, ticks, sleeping and the small checks.
#include <gtest/gtest.h>
#include <sys/time.h>

#include <climits>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "quillonid/support.h"
#include "tests/testing/hex_text.h"
#include "tests/testing/private_root.h"
#include "tests/testing/stand_in_clock.h"

namespace {

using Lines = std::vector<std::string>;

const std::string kPublic = "  TIME  INFO:    Public:  ";
constexpr std::int64_t kSeconds = 981173106;  // 3 February 2001, 04:05:06 UTC

void HoldTime(std::int64_t milliseconds = kSeconds * 1000 + 7, const char* zone = "UTC0") {
  setenv("TZ", zone, 1);
  stand_in_clock::HoldWallClock(milliseconds / 1000, milliseconds % 1000 * 1'000'000 + 999'999);
}

std::string Random(int count) {
  std::string bytes(static_cast<std::size_t>(count), '\0');
  EXPECT_EQ(0, GetRandom(count, reinterpret_cast<unsigned char*>(bytes.data())));
  return HexText(bytes);
}

}  // namespace

TEST(TimeGetLocalTime, IsFifteenDigits) {
  HoldTime();
  EXPECT_STREQ("010203040506007", Time_GetLocalTime(nullptr));
  EXPECT_STREQ("010203040506007", Time_GetLocalTime(""));
}

TEST(TimeGetLocalTime, TakesASeparator) {
  HoldTime();
  EXPECT_STREQ("01-02-03-04-05-06-007", Time_GetLocalTime("-"));
  EXPECT_STREQ("01, 02, 03, 04, 05, 06, 007", Time_GetLocalTime(", "));
}

TEST(TimeGetLocalTime, CutsALongTextAt127Characters) {
  HoldTime();
  for (const std::size_t length : {18U, 19U, 40U, 5000U}) {
    const std::string sep(length, '-');
    std::string expected;
    for (const char* part : {"01", "02", "03", "04", "05", "06"}) expected += part + sep;

    EXPECT_EQ((expected + "007").substr(0, 127), Time_GetLocalTime(sep.c_str()));
  }
}

TEST(TimeGetLocalTime, FollowsTheTimeZone) {
  HoldTime(kSeconds * 1000, "CST-8");
  EXPECT_STREQ("010203120506000", Time_GetLocalTime(nullptr));
}

TEST(TimeGetLocalTime, FollowsATimeZoneThatIsSetWhileItRuns) {
  HoldTime();
  ASSERT_STREQ("010203040506007", Time_GetLocalTime(nullptr));

  setenv("TZ", "CST-8", 1);
  stand_in_clock::HoldWallClock(kSeconds + 1, 0);

  EXPECT_STREQ("010203120507000", Time_GetLocalTime(nullptr));
}

TEST(TimeGetLocalTime, ReturnsOneBuffer) {
  HoldTime();
  const char* const first = Time_GetLocalTime(nullptr);

  EXPECT_EQ(first, Time_GetLocalTime("/"));
  EXPECT_STREQ("01/02/03/04/05/06/007", first);
}

TEST(TimeGetLocalTime, LogsStartAndEnd) {
  NEEDS_PRIVATE_ROOT();
  HoldTime();
  SwitchLogging(true);

  Time_GetLocalTime("-");

  EXPECT_EQ((Lines{kPublic + "[Time_GetLocalTime] Start ",
                   kPublic + "[Time_GetLocalTime] End szTime = 01-02-03-04-05-06-007 "}),
            LogLines());
}

TEST(GetTransTime, CopiesHourMinuteAndSecond) {
  HoldTime();
  char text[] = "########";

  EXPECT_EQ(0, GetTransTime(text));

  EXPECT_STREQ("040506##", text);
  EXPECT_EQ(0, GetTransTime(nullptr));
}

TEST(GetTransDate, CopiesYearMonthAndDay) {
  HoldTime();
  char text[] = "########";

  EXPECT_EQ(0, GetTransDate(text));

  EXPECT_STREQ("010203##", text);
  EXPECT_EQ(0, GetTransDate(nullptr));
}

TEST(GeneralSleep, SleepsWholeSecondsOf200) {
  struct {
    int n;
    int calls;
    unsigned seconds;
  } const cases[] = {
      {200,     1, 1       },
      {399,     1, 1       },
      {400,     1, 2       },
      {INT_MAX, 1, 10737418},
      {199,     0, 0       },
      {100,     0, 0       },
      {0,       0, 0       },
      {-1,      0, 0       },
      {-200,    0, 0       },
      {INT_MIN, 0, 0       },
  };
  for (const auto& each : cases) {
    const int calls = stand_in_clock::SleepCalls();
    const double slept = stand_in_clock::SecondsSlept();

    EXPECT_EQ(0U, GeneralSleep(each.n));

    EXPECT_EQ(each.calls, stand_in_clock::SleepCalls() - calls) << each.n;
    EXPECT_EQ(each.seconds, stand_in_clock::SecondsSlept() - slept) << each.n;
  }
}

TEST(GeneralSleep, ReturnsWhatASignalLeft) {
  stand_in_clock::UseSystemClock();
  std::signal(SIGALRM, [](int) {});
  const itimerval soon = {
      {0, 50'000},
      {0, 50'000}
  };
  setitimer(ITIMER_REAL, &soon, nullptr);

  const unsigned left = GeneralSleep(200 * 60);

  const itimerval off = {};
  setitimer(ITIMER_REAL, &off, nullptr);
  EXPECT_GE(left, 1U);
  EXPECT_LE(left, 60U);
}

TEST(GetRandom, GivesTheNumbersOfTheStatedSeeds) {
  for (const std::int64_t seconds : {kSeconds, std::int64_t{0xFFFFFFF0}, std::int64_t{1} << 32}) {
    HoldTime(seconds * 1000);
    std::string expected;
    std::srand(static_cast<unsigned>(seconds));
    for (unsigned i = 0; i < 40; ++i) {
      const auto byte = static_cast<unsigned char>(std::rand());
      expected += static_cast<char>(byte);
      std::srand(static_cast<unsigned>(seconds) + i + byte);
    }

    EXPECT_EQ(HexText(expected), Random(40));
  }
}

TEST(GetRandom, LeavesTheApplicationsNumbersAlone) {
  std::srand(5);
  const int first = std::rand();
  const int second = std::rand();

  std::srand(5);
  EXPECT_EQ(first, std::rand());
  Random(10);
  EXPECT_EQ(second, std::rand());
}

TEST(GetRandom, WritesNothingForACountBelowOne) {
  unsigned char byte = 0x5A;

  EXPECT_EQ(0, GetRandom(0, &byte));
  EXPECT_EQ(0, GetRandom(-1, &byte));
  EXPECT_EQ(0, GetRandom(1, nullptr));

  EXPECT_EQ(0x5A, byte);
}

TEST(TimeValidYYMMDD, ChecksDigitsMonthAndDay) {
  struct {
    unsigned char date[3];
    int expected;
  } const cases[] = {
      {{0x00, 0x02, 0x29}, 0 }, // 2000: divisible by 400
      {{0x00, 0x02, 0x30}, -1},
      {{0x50, 0x02, 0x29}, -1}, // 1950
      {{0x52, 0x02, 0x29}, 0 }, // 1952
      {{0x49, 0x02, 0x29}, -1}, // 2049
      {{0x48, 0x02, 0x29}, 0 }, // 2048
      {{0x01, 0x02, 0x28}, 0 },
      {{0x01, 0x02, 0x29}, -1},
      {{0x99, 0x12, 0x31}, 0 },
      {{0x1A, 0x01, 0x01}, -1},
      {{0xA1, 0x01, 0x01}, -1},
      {{0x9A, 0x01, 0x01}, -1},
      {{0xFF, 0x01, 0x01}, -1},
      {{0x01, 0x0A, 0x01}, -1},
      {{0x01, 0xA0, 0x01}, -1},
      {{0x01, 0x01, 0x0A}, -1},
      {{0x01, 0x01, 0xA1}, -1},
      {{0x01, 0x00, 0x01}, -1},
      {{0x01, 0x13, 0x01}, -1},
      {{0x01, 0x01, 0x00}, -1},
      {{0x01, 0x01, 0x32}, -1},
  };
  for (const auto& each : cases) {
    EXPECT_EQ(each.expected, time_Valid_YYMMDD(each.date)) << HexText(each.date);
  }
  EXPECT_EQ(-1, time_Valid_YYMMDD(nullptr));
}

TEST(TimeValidYYMMDD, KnowsTheLengthOfEachMonth) {
  const unsigned char last[] = {0x31, 0x28, 0x31, 0x30, 0x31, 0x30,
                                0x31, 0x31, 0x30, 0x31, 0x30, 0x31};
  for (unsigned month = 1; month <= 12; ++month) {
    const auto bcd = static_cast<unsigned char>(month < 10 ? month : month + 6);
    const unsigned char day = last[month - 1];
    const unsigned char good[] = {0x21, bcd, day};
    const auto next = static_cast<unsigned char>(day + 1);
    const unsigned char bad[] = {0x21, bcd, next};

    EXPECT_EQ(0, time_Valid_YYMMDD(good)) << HexText(good);
    EXPECT_EQ(-1, time_Valid_YYMMDD(bad)) << HexText(bad);
  }
}

TEST(GetTickCount, IsMillisecondsCutTo32Bits) {
  HoldTime(1234);
  EXPECT_EQ(1234U, GetTickCount());
  HoldTime(0x1'0000'0000 + 5);
  EXPECT_EQ(5U, GetTickCount());
  HoldTime(kSeconds * 1000 + 7);
  EXPECT_EQ(static_cast<unsigned>(981173106007), GetTickCount());
}

TEST(GetTickCountTimeOut, IsZeroBeforeAnyOther) { EXPECT_EQ(0, GetTickCountTimeOut()); }

TEST(GetTickCountTimeOut, IsEndLessStart) {
  HoldTime(kSeconds * 1000 + 7);
  EXPECT_EQ(981173106007, GetTickCountStartTime());
  HoldTime(kSeconds * 1000 + 2500);
  EXPECT_EQ(981173108500, GetTickCountEndTime());
  EXPECT_EQ(2493, GetTickCountTimeOut());
  EXPECT_EQ(2493, GetTickCountTimeOut());

  EXPECT_EQ(981173108500, GetTickCountStartTime());
  HoldTime(kSeconds * 1000);  // The clock was set back.
  EXPECT_EQ(981173106000, GetTickCountEndTime());
  EXPECT_EQ(-2500, GetTickCountTimeOut());
}

TEST(GetTickCountTimeOut, IsWiderThan32Bits) {
  HoldTime(0);
  GetTickCountStartTime();
  HoldTime(5'000'000'000);
  GetTickCountEndTime();

  EXPECT_EQ(5'000'000'000, GetTickCountTimeOut());
}

// Both ends and the difference may be asked for at any moment: a wait in one thread, a report in
// another.
TEST(TickCounts, MayBeTakenByTwoThreads) {
  HoldTime();
  const auto take = [] {
    for (int round = 0; round < 1000; ++round) {
      EXPECT_EQ(kSeconds * 1000 + 7, GetTickCountStartTime());
      EXPECT_EQ(kSeconds * 1000 + 7, GetTickCountEndTime());
      EXPECT_EQ(0, GetTickCountTimeOut());
    }
  };

  std::thread other(take);
  take();
  other.join();
}

TEST(TickCounts, LogTheirValues) {
  NEEDS_PRIVATE_ROOT();
  SwitchLogging(true);

  HoldTime(1000);
  GetTickCountStartTime();
  HoldTime(3500);
  GetTickCountEndTime();
  GetTickCountTimeOut();

  EXPECT_EQ((Lines{kPublic + "==>[GetTickCountStartTime] Start ", kPublic + "g_stStartTime= 1000",
                   kPublic + "[GetTickCountEndTime] Start ", " TIME  g_stEndTime= 3500",
                   kPublic + "[GetTickCountTimeOut] Start ", kPublic + "2500 "}),
            LogLines());
}

TEST(Check, IsOneWhenTheExclusiveOrIsZero) {
  const unsigned char good[] = {0xAA, 0x96, 0x69, 0x55};
  const unsigned char bad[] = {0xAA, 0x96, 0x69, 0x54};

  EXPECT_EQ(1, Check(good, 4));
  EXPECT_EQ(0, Check(good, 3));
  EXPECT_EQ(0, Check(bad, 4));
  EXPECT_EQ(0, Check(nullptr, 4));
}

TEST(Check, LooksAtTheFirstByteForALengthBelowTwo) {
  const unsigned char zero[] = {0x00, 0x01};
  const unsigned char other[] = {0x80, 0x80};

  for (const int length : {1, 0, -1}) {
    EXPECT_EQ(1, Check(zero, length));
    EXPECT_EQ(0, Check(other, length));
  }
  EXPECT_EQ(0, Check(zero, 2));
  EXPECT_EQ(1, Check(other, 2));
}
