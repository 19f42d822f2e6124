// The log: its switch, its lines byte for byte, and what must not hurt the process.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "quillonid/support.h"
#include "tests/testing/hex_text.h"
#include "tests/testing/private_root.h"
#include "tests/testing/stand_in_clock.h"

namespace {

namespace fs = std::filesystem;

const std::string kStamp = "0203040506007";  // 3 February, 04:05:06.007
const std::string kFolder = "/home/quillon/";

// The library's clock stands at kStamp of 2001, in UTC or in the zone given.
void HoldStamp(const char* zone = "UTC0") {
  setenv("TZ", zone, 1);
  stand_in_clock::HoldWallClock(981173106, 7'999'999);
}

void StartLog() {
  HoldStamp();
  SwitchLogging(true);
}

void Configure(const std::string& text) { WriteWholeFile(kConfigurationFile, text); }

// A whole line: what stands before the time stamp and what follows it.
std::string Line(const std::string& before, const std::string& after) {
  return before + kStamp + "  " + after + "\r\n";
}

std::string Log() { return ReadWholeFile(kLogFile); }

std::size_t OpenDescriptors() {
  std::size_t count = 0;
  for ([[maybe_unused]] const auto& entry : fs::directory_iterator("/proc/self/fd")) ++count;
  return count;
}

// One line by every call.
void LogEverything() {
  const unsigned char bytes[] = {0xAB, 0x01};
  DPrintLogToFile("text %d", 7);
  DPrintLogToFileAddType(0, 6, "text %d", 7);
  DPrintDataHexToFile("title", bytes, 2);
  DPrintDataHexToFileAddType(1, 6, "title", bytes, 2);
}

}  // namespace

TEST(DPrintLogToFile, WritesVersionTimeAndMessage) {
  NEEDS_PRIVATE_ROOT();
  StartLog();

  DPrintLogToFile("%s %d", "text", 7);
  QL_DebugSetVersion("V1.2");
  DPrintLogToFile("more");

  EXPECT_EQ(Line(" ", "text 7") + Line("V1.2 ", "more"), Log());
}

TEST(DPrintLogToFile, KeepsTheLineFeedOfAMessage) {
  NEEDS_PRIVATE_ROOT();
  StartLog();

  DPrintLogToFile("text\n");

  EXPECT_EQ(Line(" ", "text\n"), Log());
}

TEST(DPrintLogToFile, CutsAMessageAt4095Characters) {
  NEEDS_PRIVATE_ROOT();
  for (const std::size_t length : {4094U, 4095U, 4096U, 100000U}) {
    StartLog();

    DPrintLogToFile("%s", std::string(length, 'x').c_str());
    DPrintLogToFileAddType(0, 6, "%s", std::string(length, 'y').c_str());

    const std::size_t kept = length < 4095 ? length : 4095;
    EXPECT_EQ(Line(" ", std::string(kept, 'x')) +
                  Line("  ", "INFO:    BusiId:  " + std::string(kept, 'y')),
              Log());
  }
}

TEST(DPrintLogToFile, EndsAMessageAtAZeroCharacter) {
  NEEDS_PRIVATE_ROOT();
  StartLog();

  DPrintLogToFile("a%cb", 0);

  EXPECT_EQ(Line(" ", "a"), Log());
}

TEST(DPrintLogToFile, WritesNothingForANullFormat) {
  NEEDS_PRIVATE_ROOT();
  StartLog();
  const char* const no_format = nullptr;

  DPrintLogToFile(no_format);
  DPrintLogToFileAddType(0, 6, no_format);

  EXPECT_EQ("", Log());
}

TEST(DPrintLogToFile, AppendsToAFileThatOthersMayNotRead) {
  NEEDS_PRIVATE_ROOT();
  StartLog();
  umask(0);

  DPrintLogToFile("one");
  DPrintLogToFile("two");

  EXPECT_EQ(Line(" ", "one") + Line(" ", "two"), Log());
  struct stat status = {};
  ASSERT_EQ(0, stat(kLogFile, &status));
  EXPECT_EQ(0600U, status.st_mode & 07777);
}

TEST(DPrintLogToFile, FollowsAMovedFile) {
  NEEDS_PRIVATE_ROOT();
  StartLog();
  DPrintLogToFile("one");

  fs::rename(kLogFile, kFolder + "old.log");
  DPrintLogToFile("two");

  EXPECT_EQ(Line(" ", "two"), Log());
  EXPECT_EQ(Line(" ", "one"), ReadWholeFile(kFolder + "old.log"));
}

TEST(DPrintLogToFileAddType, OverlaysTypeAndArea) {
  NEEDS_PRIVATE_ROOT();
  struct {
    int type, level;
    const char* marks;
  } const cases[] = {
      {0,  1,  "INFO:    Public:  "        },
      {0,  2,  "INFO:    Comm:    "        },
      {0,  3,  "INFO:    CommDev:  "       },
      {0,  4,  "INFO:    Instr:   "        },
      {0,  5,  "INFO:    Loginc   "        },
      {0,  6,  "INFO:    BusiId:  "        },
      {0,  7,  "INFO:    BusiIc:  "        },
      {0,  8,  "INFO:    BusiMsg:  "       },
      {0,  9,  "INFO:    AppId:   "        },
      {0,  10, "INFO:    AppIc    "        },
      {0,  11, "INFO:    AppMsg   "        },
      {1,  1,  "!!ERROR:     Public::     "},
      {1,  2,  "!!ERROR:     Comm:OR:     "},
      {1,  3,  "!!ERROR:     CommDev:     "},
      {1,  4,  "!!ERROR:     Instr:R:     "},
      {1,  5,  "!!ERROR:     LogincR:     "},
      {1,  6,  "!!ERROR:     BusiId::     "},
      {1,  7,  "!!ERROR:     BusiIc::     "},
      {1,  8,  "!!ERROR:     BusiMsg:     "},
      {1,  9,  "!!ERROR:     AppId:R:     "},
      {1,  10, "!!ERROR:     AppIcOR:     "},
      {1,  11, "!!ERROR:     AppMsgR:     "},
      {0,  0,  "INFO:    INFO:    "        },
      {0,  12, "INFO:    INFO:    "        },
      {1,  -1, "!!ERROR:     !!ERROR:     "},
      {2,  6,  "  BusiId:  "               },
      {-1, 3,  "  CommDev:  "              },
      {2,  0,  "    "                      },
  };
  const unsigned char byte = 0xFF;
  for (const auto& each : cases) {
    StartLog();
    const std::string marks = each.marks;

    DPrintLogToFileAddType(each.type, each.level, "text %d", 7);
    DPrintDataHexToFileAddType(each.type, each.level, "T", &byte, 1);

    const std::string line = Line("  ", marks + "text 7");
    const std::string dump = Line(" ", marks + "T  LEN=1   HEX: FF");
    EXPECT_EQ(each.type == 0 ? line : line + dump, Log());
  }
}

TEST(DPrintLogToFileAddType, BeginsWithABlankBeforeTheVersion) {
  NEEDS_PRIVATE_ROOT();
  StartLog();
  QL_DebugSetVersion("V1.2");

  LogEverything();

  EXPECT_EQ(Line("V1.2 ", "text 7") + Line(" V1.2 ", "INFO:    BusiId:  text 7") +
                Line("V1.2 ", "title  LEN=2   HEX: AB01") +
                Line("V1.2 ", "!!ERROR:     BusiId::     title  LEN=2   HEX: AB01"),
            Log());
}

TEST(DPrintDataHexToFile, WritesTitleLengthAndBytes) {
  NEEDS_PRIVATE_ROOT();
  StartLog();
  const unsigned char bytes[] = {0x00, 0x0F, 0x7F, 0x80, 0xAB, 0xFF};

  DPrintDataHexToFile("Search card ", bytes, 6);
  DPrintDataHexToFile("", bytes, 1);
  DPrintDataHexToFile(nullptr, bytes, 2);
  DPrintDataHexToFile(nullptr, bytes, 0);

  EXPECT_EQ(Line(" ", "Search card   LEN=6   HEX: 000F7F80ABFF") +  //
                Line(" ", "  LEN=1   HEX: 00") +                    //
                Line(" ", "LEN=2   HEX: 000F") +                    //
                Line(" ", "LEN=0   HEX: "),
            Log());
}

TEST(DPrintDataHexToFile, WritesNoBytesForNullDataOrANegativeLength) {
  NEEDS_PRIVATE_ROOT();
  StartLog();
  const unsigned char byte = 1;

  DPrintDataHexToFile("T", nullptr, 5);
  DPrintDataHexToFile("T", &byte, -5);

  EXPECT_EQ(Line(" ", "T  LEN=5   HEX: ") + Line(" ", "T  LEN=-5   HEX: "), Log());
}

TEST(DPrintDataHexToFile, WritesAnyLengthWithoutWrapping) {
  NEEDS_PRIVATE_ROOT();
  for (const int length : {1295, 2321, 3900, 3950, 3968, 3969, 3970, 4096, 50000}) {
    StartLog();
    std::vector<unsigned char> bytes(static_cast<std::size_t>(length));
    std::string digits;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
      bytes[i] = static_cast<unsigned char>(i * 31);
      digits += HexText(&bytes[i], 1);
    }

    DPrintDataHexToFile("T", bytes.data(), length);

    EXPECT_EQ(Line(" ", "T  LEN=" + std::to_string(length) + "   HEX: " + digits), Log());
  }
}

TEST(DPrintDataHexToFile, TakesALongTitle) {
  NEEDS_PRIVATE_ROOT();
  StartLog();
  const std::string title(20000, 't');
  const unsigned char byte = 0xA5;

  DPrintDataHexToFile(title.c_str(), &byte, 1);

  EXPECT_EQ(Line(" ", title + "  LEN=1   HEX: A5"), Log());
}

TEST(DPrintDataHexToFileAddType, WritesNothingForInformation) {
  NEEDS_PRIVATE_ROOT();
  StartLog();
  const unsigned char byte = 1;

  DPrintDataHexToFileAddType(0, 6, "T", &byte, 1);

  EXPECT_FALSE(FileExists(kLogFile));
}

TEST(DPrintTlvToFileAddType, DoesNothingAndReturnsItsFirstArgument) {
  NEEDS_PRIVATE_ROOT();
  StartLog();

  EXPECT_EQ(-3, DPrintTlvToFileAddType(-3, 6, "T"));

  EXPECT_FALSE(FileExists(kLogFile));
}

TEST(MapDebugInfoType, WritesTheTypeTextWithItsBlanks) {
  char text[16];

  std::memset(text, '#', sizeof text);
  MapDebugInfoType(0, text);
  EXPECT_EQ(std::string("INFO:  \0########", 16), std::string(text, 16));

  std::memset(text, '#', sizeof text);
  MapDebugInfoType(1, text);
  EXPECT_EQ(std::string("!!ERROR:   \0####", 16), std::string(text, 16));

  std::memset(text, '#', sizeof text);
  MapDebugInfoType(2, text);
  MapDebugInfoType(-1, text);
  EXPECT_EQ(std::string(16, '#'), std::string(text, 16));
}

TEST(MapDebugLevelType, WritesTheNameWithoutAZero) {
  const char* const names[] = {
      "",        "Public:",  "Comm:",  "CommDev:", "Instr:", "Loginc", "BusiId:",
      "BusiIc:", "BusiMsg:", "AppId:", "AppIc",    "AppMsg", ""};
  for (int level = 0; level < 13; ++level) {
    char text[32];
    std::memset(text, '#', sizeof text);

    MapDebugLevelType(level, text);

    const std::string name = names[level];
    EXPECT_EQ(name + std::string(sizeof text - name.size(), '#'), std::string(text, sizeof text));
  }
}

TEST(GetLogTime, IsLocalTimeInThirteenDigits) {
  HoldStamp();
  EXPECT_EQ(kStamp, GetLogTime());
}

TEST(GetLogTime, FollowsTheTimeZone) {
  HoldStamp("CST-8");
  EXPECT_STREQ("0203120506007", GetLogTime());
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

TEST(Test, LogsItsStart) {
  NEEDS_PRIVATE_ROOT();
  StartLog();

  EXPECT_EQ(0, test());

  EXPECT_EQ(Line(" ", "[test] Start "), Log());
}

TEST(IsWriteLog, FollowsTheConfiguration) {
  NEEDS_PRIVATE_ROOT();
  struct {
    const char* text;
    int expected;
  } const cases[] = {
      {"[QuillonLog]\nLogFlag=1\n",                          1 },
      {"[QuillonLog]\nLogFlag=2\n",                          2 },
      {"[QuillonLog]\nLogFlag=-1\n",                         -1},
      {"[QuillonLog]\nLogFlag = 1\n",                        1 },
      {"[QuillonLog]\r\nLogFlag=1\r\n",                      1 },
      {"[QuillonLog]\nLogFlag=4294967296\n",                 1 },
      {"[QuillonLog]\nLogFlag=0\n",                          0 },
      {"[QuillonLog]\nLogFlag=on\n",                         0 },
      {"[QuillonLog]\nLogFlag=\n",                           0 },
      {"[QuillonLog]\nLogFlag=\n1\n",                        0 },
      {"[QuillonLog]\nLogFlag=1",                            0 },
      {"LogFlag=1\n[QuillonLog]\n",                          0 },
      {"[Other]\nLogFlag=1\n[QuillonLog]\n",                 0 },
      {"[QuillonLog]\n[Other]\nLogFlag=1\n",                 1 },
      {"[QuillonLog]\n#LogFlag=1\n",                         0 },
      {"[QuillonLog]\n//LogFlag=1\n",                        0 },
      {"[QuillonLog]\n#LogFlag=0\n//LogFlag=0\nLogFlag=1\n", 1 },
      {"[QuillonLog]\nMyLogFlags=1\n",                       1 },
      {"[quillonlog]\nLogFlag=1\n",                          0 },
      {"",                                                   0 },
  };
  for (const auto& each : cases) {
    StartLog();
    Configure(each.text);

    EXPECT_EQ(each.expected, isWriteLog()) << each.text;
    LogEverything();
    EXPECT_EQ(each.expected != 0, FileExists(kLogFile)) << each.text;
  }
}

TEST(IsWriteLog, LooksOnEveryCall) {
  NEEDS_PRIVATE_ROOT();
  HoldStamp();
  for (int round = 0; round < 3; ++round) {
    SwitchLogging(false);
    EXPECT_EQ(0, isWriteLog());
    EXPECT_EQ(0, isWriteLog());
    Configure("[QuillonLog]\nLogFlag=1\n");
    EXPECT_EQ(1, isWriteLog());
    EXPECT_EQ(1, isWriteLog());
    Configure("[QuillonLog]\nLogFlag=0\n");
    EXPECT_EQ(0, isWriteLog());
    Configure("[QuillonLog]\nLogFlag=3\n");
    EXPECT_EQ(3, isWriteLog());
  }
}

TEST(IsWriteLog, IsOffWithoutTheFolderAndNeverMakesIt) {
  NEEDS_PRIVATE_ROOT();
  StartLog();
  fs::remove_all("/home/quillon");

  EXPECT_EQ(0, isWriteLog());
  LogEverything();
  EXPECT_EQ(0, isWriteLog());

  EXPECT_FALSE(FileExists("/home/quillon"));
}

TEST(IsWriteLog, IsOffForWhatIsNoFile) {
  NEEDS_PRIVATE_ROOT();
  StartLog();
  fs::remove(kConfigurationFile);
  ASSERT_EQ(0, mkfifo(kConfigurationFile, 0600));
  EXPECT_EQ(0, isWriteLog());

  for (const char* target :
       {"/dev/zero", "/dev/null", "/tmp", kConfigurationFile, "/nonexistent"}) {
    fs::remove(kConfigurationFile);
    fs::create_symlink(target, kConfigurationFile);

    EXPECT_EQ(0, isWriteLog()) << target;
    EXPECT_EQ(0, isWriteLog()) << target;
  }
}

TEST(Logging, SkipsAPipeOfTheLogFilesName) {
  NEEDS_PRIVATE_ROOT();
  StartLog();
  ASSERT_EQ(0, mkfifo(kLogFile, 0600));
  LogEverything();  // Nobody reads it: must not block.

  const int reader = open(kLogFile, O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  ASSERT_GE(reader, 0);
  LogEverything();

  char byte = 0;
  EXPECT_EQ(0, read(reader, &byte, 1));
  close(reader);
}

TEST(Logging, IsSilentWhereItCannotWrite) {
  NEEDS_PRIVATE_ROOT();
  StartLog();

  SetLogPath("absent/own.log");
  LogEverything();
  EXPECT_FALSE(FileExists(kFolder + "absent"));

  fs::create_directory(kFolder + "folder.log");
  SetLogPath("folder.log");
  LogEverything();

  SetLogPath("../../dev/full");
  LogEverything();
  EXPECT_FALSE(FileExists(kLogFile));
}

TEST(Logging, StaysWithinTheFileSizeLimit) {
  NEEDS_PRIVATE_ROOT();
  StartLog();
  DPrintLogToFile("one");
  const std::string before = Log();
  const rlimit limit = {before.size() + 5, RLIM_INFINITY};
  ASSERT_EQ(0, setrlimit(RLIMIT_FSIZE, &limit));

  LogEverything();  // A signal would end the test here.

  EXPECT_EQ(before, Log());
  const rlimit more = {before.size() * 2, RLIM_INFINITY};
  ASSERT_EQ(0, setrlimit(RLIMIT_FSIZE, &more));
  DPrintLogToFile("two");
  EXPECT_EQ(before + Line(" ", "two"), Log());
}

TEST(Logging, LeavesErrnoAlone) {
  NEEDS_PRIVATE_ROOT();
  StartLog();
  for (const char* name : {"", "absent/own.log"}) {
    SetLogPath(name);
    errno = E2BIG;
    LogEverything();
    EXPECT_EQ(E2BIG, errno);
  }

  SwitchLogging(false);
  errno = E2BIG;
  LogEverything();
  EXPECT_EQ(E2BIG, errno);
  EXPECT_EQ(0, isWriteLog());
  EXPECT_EQ(E2BIG, errno);
}

TEST(Logging, LeavesNoDescriptorOpen) {
  NEEDS_PRIVATE_ROOT();
  StartLog();
  const std::size_t before = OpenDescriptors();

  for (const char* target : {"/tmp", "/dev/zero", "/nonexistent"}) {
    LogEverything();
    SetLogPath("absent/own.log");
    LogEverything();
    fs::remove(kConfigurationFile);
    fs::create_symlink(target, kConfigurationFile);
    LogEverything();
    fs::remove(kConfigurationFile);
    StartLog();
  }

  EXPECT_EQ(before, OpenDescriptors());
}

TEST(Logging, KeepsLinesOfSeveralThreadsWhole) {
  NEEDS_PRIVATE_ROOT();
  StartLog();
  constexpr int kThreads = 4;
  constexpr int kRounds = 50;
  const std::string text(3000, 'x');
  const std::string versions[] = {std::string(100, 'a'), std::string(90, 'b')};
  QL_DebugSetVersion(versions[0].c_str());

  std::vector<std::thread> threads;
  threads.reserve(kThreads);
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&, i] {
      for (int round = 0; round < kRounds; ++round) {
        DPrintLogToFileAddType(0, 6, "%s", text.c_str());
        QL_DebugSetVersion(versions[(i + round) % 2].c_str());
        SetLogPath("");
        DPritLogSetFileName("name");
      }
    });
  }
  for (std::thread& thread : threads) thread.join();

  const std::string rest = " " + kStamp + "  INFO:    BusiId:  " + text;
  int lines = 0;
  for (const std::string& line : LogLines()) {
    EXPECT_TRUE(line == " " + versions[0] + rest || line == " " + versions[1] + rest) << line;
    ++lines;
  }
  EXPECT_EQ(kThreads * kRounds, lines);
}
