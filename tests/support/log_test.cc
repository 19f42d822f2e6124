// Lines and dumps of the log, byte for byte.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <climits>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/still_log.h"
#include "tests/testing/hex_text.h"

namespace {

namespace fs = std::filesystem;

const std::string kFolder = "/home/quillon/";

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
  DPrintDataHexToFile("T", &byte, INT_MIN);

  EXPECT_EQ(Line(" ", "T  LEN=5   HEX: ") + Line(" ", "T  LEN=-5   HEX: ") +
                Line(" ", "T  LEN=-2147483648   HEX: "),
            Log());
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

TEST(Test, LogsItsStart) {
  NEEDS_PRIVATE_ROOT();
  StartLog();

  EXPECT_EQ(0, test());

  EXPECT_EQ(Line(" ", "[test] Start "), Log());
}
