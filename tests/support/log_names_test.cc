// Names and time stamp that applications set or ask for.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/support/still_log.h"

namespace {

namespace fs = std::filesystem;

const std::string kFolder = "/home/quillon/";

}  // namespace

TEST(GetLogTime, IsLocalTimeInThirteenDigits) {
  HoldStamp();
  EXPECT_STREQ(kStamp, GetLogTime());
}

TEST(GetLogTime, FollowsTheTimeZone) {
  HoldStamp("CST-8");
  EXPECT_STREQ("0203120506007", GetLogTime());
}

TEST(GetLogTime, FollowsATimeZoneThatIsSetWhileItRuns) {
  HoldStamp();
  ASSERT_STREQ(kStamp, GetLogTime());

  setenv("TZ", "CST-8", 1);
  stand_in_clock::HoldWallClock(kStampSecond + 1, 0);

  EXPECT_STREQ("0203120507000", GetLogTime());
}

TEST(GetLogTime, ReturnsOneBuffer) {
  HoldStamp();
  const char* const first = GetLogTime();
  stand_in_clock::HoldWallClock(981173106 + 25'920'000, 0);

  EXPECT_EQ(first, GetLogTime());
  EXPECT_STREQ("1130040506000", first);
}

TEST(GetLogFilePath, IsInTheFixedFolder) {
  EXPECT_STREQ("/home/quillon/Alg_debug.log", getLogFilePath());
}

TEST(SetLogPath, NamesTheLogFile) {
  NEEDS_PRIVATE_ROOT();
  StartLog();
  fs::create_directory(kFolder + "sub");

  EXPECT_STREQ("own.log", static_cast<char*>(SetLogPath("own.log")));
  EXPECT_STREQ("/home/quillon/own.log", getLogFilePath());
  DPrintLogToFile("one");
  SetLogPath("sub/own.log");
  DPrintLogToFile("two");
  SetLogPath("/tmp/own.log");
  EXPECT_STREQ("/home/quillon//tmp/own.log", getLogFilePath());
  SetLogPath("");
  DPrintLogToFile("three");
  SetLogPath("own.log");
  SetLogPath(nullptr);
  DPrintLogToFile("four");

  EXPECT_EQ(Line(" ", "one"), ReadWholeFile(kFolder + "own.log"));
  EXPECT_EQ(Line(" ", "two"), ReadWholeFile(kFolder + "sub/own.log"));
  EXPECT_EQ(Line(" ", "three") + Line(" ", "four"), Log());
}

TEST(SetLogPath, KeepsAtMost512Bytes) {
  for (const std::size_t length : {497U, 498U, 511U, 512U, 513U, 5000U}) {
    const std::string name(length, 'n');
    const std::string kept = name.substr(0, 512);

    EXPECT_EQ(kept, static_cast<char*>(SetLogPath(name.c_str())));
    EXPECT_EQ(kFolder + kept, getLogFilePath());
  }
}

TEST(SetLogPath, LeavesNothingOfALongerName) {
  SetLogPath("long-name.log");

  const void* const kept = SetLogPath("a");

  EXPECT_EQ(std::string("a") + std::string(12, '\0'),
            std::string(static_cast<const char*>(kept), 13));
}

TEST(QLDebugSetVersion, KeepsAtMost128Characters) {
  NEEDS_PRIVATE_ROOT();
  for (const std::size_t length : {127U, 128U, 129U, 4000U}) {
    StartLog();
    const std::string version(length, 'v');

    EXPECT_EQ(0, QL_DebugSetVersion(version.c_str()));
    DPrintLogToFile("text");

    EXPECT_EQ(version.substr(0, 128) + Line(" ", "text"), Log());
  }
}

TEST(QLDebugSetVersion, KeepsForNullAndClearsForEmpty) {
  NEEDS_PRIVATE_ROOT();
  StartLog();

  EXPECT_EQ(0, QL_DebugSetVersion("V1.2"));
  EXPECT_EQ(0, QL_DebugSetVersion(nullptr));
  DPrintLogToFile("one");
  EXPECT_EQ(0, QL_DebugSetVersion(""));
  DPrintLogToFile("two");

  EXPECT_EQ(Line("V1.2 ", "one") + Line(" ", "two"), Log());
}

TEST(QLDebugSetPath, ChangesNothing) {
  EXPECT_EQ(0, QL_DebugSetPath("/tmp"));
  EXPECT_STREQ("/home/quillon/Alg_debug.log", getLogFilePath());
}

TEST(DPritLogSetFileName, ChangesNoLineAndNoPath) {
  NEEDS_PRIVATE_ROOT();
  StartLog();

  DPritLogSetFileName(nullptr);
  DPritLogSetFileName("name.log");
  DPritLogSetFileName(std::string(1000, 'n').c_str());
  DPrintLogToFile("text");

  EXPECT_EQ(Line(" ", "text"), Log());
}

TEST(NoOperations, ReturnZero) {
  EXPECT_EQ(0, GetFullPath());
  EXPECT_EQ(0, GetTempFilePath());
}
