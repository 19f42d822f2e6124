// The look-up of one key in an INI file.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <string>

#include "quillonid/support.h"
#include "tests/testing/private_root.h"

namespace {

const char kDefault[] = "default";

std::string IniFile(const std::string& text) {
  std::string path = TemporaryFolder() + "/test.ini";
  std::filesystem::remove(path);
  WriteWholeFile(path, text);
  return path;
}

std::string Value(const std::string& text, const std::string& section, const std::string& key) {
  return GetIniKeyString(section.c_str(), key.c_str(), kDefault, IniFile(text).c_str());
}

struct Case {
  const char* name;
  const char* text;
  const char* expected;
};

void PrintTo(const Case& example, std::ostream* out) { *out << example.name; }

const Case kCases[] = {
    {"TakesTheValue",                     "[A]\nkey=1\n",               "1"      },
    {"TakesAnEmptyValue",                 "[A]\nkey=\n",                ""       },
    {"TakesTheFirstOfTwo",                "[A]\nkey=1\nkey=2\n",        "1"      },
    {"KeepsBlanksAroundEquals",           "[A]\nkey = 1 \n",            " 1 "    },
    {"KeepsACarriageReturn",              "[A]\r\nkey=1\r\n",           "1\r"    },
    {"SplitsAtTheFirstEquals",            "[A]\nkey=a=b\n",             "a=b"    },
    {"SkipsAnEmptyLine",                  "[A]\n\nkey=1\n",             "1"      },
    {"SkipsAHashComment",                 "[A]\n#key=1\nkey=2\n",       "2"      },
    {"SkipsASlashComment",                "[A]\n//key=1\nkey=2\n",      "2"      },
    {"TakesAnIndentedComment",            "[A]\n #key=1\nkey=2\n",      "1"      },
    {"TakesALineThatBeginsWithOneSlash",  "[A]\n/key=1\nkey=2\n",       "1"      },
    {"IgnoresAKeyWithoutEquals",          "[A]\nkey\nkey=2\n",          "2"      },
    {"IgnoresAKeyBeforeTheSection",       "key=1\n[A]\n",               "default"},
    {"IgnoresAKeyInAnEarlierSection",     "[B]\nkey=1\n[A]\nother=2\n", "default"},
    {"TakesAKeyOfALaterSection",          "[A]\nother=1\n[B]\nkey=2\n", "2"      },
    {"FindsTheKeyInsideALongerWord",      "[A]\nmonkeys=1\n",           "1"      },
    {"FindsTheKeyInTheValue",             "[A]\nother=a key\n",         "a key"  },
    {"MatchesTheKeyByCase",               "[A]\nKEY=1\n",               "default"},
    {"MatchesTheSectionByCase",           "[a]\nkey=1\n",               "default"},
    {"WantsTheBracketFirst",              " [A]\nkey=1\n",              "default"},
    {"WantsTheWholeSectionName",          "[AB]\nkey=1\n",              "default"},
    {"TakesASectionWithTextBehind",       "[A] text\nkey=1\n",          "1"      },
    {"TakesASectionLineWithEqualsBehind", "[A] x=1\nkey=2\n",           "2"      },
    {"IgnoresALastLineWithoutLineFeed",   "[A]\nkey=1",                 "default"},
    {"IgnoresASectionWithoutLineFeed",    "[A]",                        "default"},
    {"GivesTheDefaultForAnEmptyFile",     "",                           "default"},
    {"ReadsOnBehindAByteFF",              "[A]\n\xFF\nkey=1\n",         "1"      },
};

class GetIniKeyStringOf : public testing::TestWithParam<Case> {};

}  // namespace

TEST_P(GetIniKeyStringOf, AFile) {
  EXPECT_EQ(GetParam().expected, Value(GetParam().text, "A", "key"));
}

INSTANTIATE_TEST_SUITE_P(, GetIniKeyStringOf, testing::ValuesIn(kCases),
                         [](const auto& each) { return std::string(each.param.name); });

TEST(GetIniKeyString, ReturnsTheDefaultItself) {
  EXPECT_EQ(kDefault, GetIniKeyString("A", "key", kDefault, "/nonexistent/file.ini"));
  EXPECT_EQ(nullptr, GetIniKeyString("A", "key", nullptr, "/nonexistent/file.ini"));
}

TEST(GetIniKeyString, ReturnsOneBufferThatTheNextCallOverwrites) {
  const char* const first = GetIniKeyString("A", "key", kDefault, IniFile("[A]\nkey=1\n").c_str());
  const char* const second = GetIniKeyString("A", "key", kDefault, IniFile("[A]\nkey=2\n").c_str());

  EXPECT_EQ(first, second);
  EXPECT_STREQ("2", first);
}

TEST(GetIniKeyString, ReturnsTheDefaultForNullArguments) {
  const std::string path = IniFile("[A]\nkey=1\n");

  EXPECT_EQ(kDefault, GetIniKeyString(nullptr, "key", kDefault, path.c_str()));
  EXPECT_EQ(kDefault, GetIniKeyString("A", nullptr, kDefault, path.c_str()));
  EXPECT_EQ(kDefault, GetIniKeyString("A", "key", kDefault, nullptr));
}

TEST(GetIniKeyString, EndsALineAtAZeroByte) {
  const std::string zero(1, '\0');

  EXPECT_EQ("1", Value("[A]\nkey=1" + zero + "2\n", "A", "key"));
  EXPECT_EQ("default", Value("[A]\n" + zero + "key=1\n", "A", "key"));
}

TEST(GetIniKeyString, KeepsTheFirst1023CharactersOfALine) {
  for (const std::size_t length : {1018U, 1019U, 1020U, 5000U, 500000U}) {
    std::string text = "[A]\nkey=";
    text.append(length, 'v').append("\n");

    EXPECT_EQ(std::string(std::min<std::size_t>(length, 1019), 'v'), Value(text, "A", "key"));
  }
  EXPECT_EQ("default", Value("[A]\n" + std::string(1023, 'x') + "key=1\n", "A", "key"));
  EXPECT_EQ("1", Value("[A]\n" + std::string(5000, 'x') + "\nkey=1\n", "A", "key"));
}

TEST(GetIniKeyString, ReadsAsMuchAsOneMebibyte) {
  const std::size_t page = 4096, most = 1 << 20;
  const std::string head = "[A]\n", tail = "\nkey=1\n";
  for (const std::size_t size : {page - 1, page, page + 1, 3 * page, most}) {
    std::string text = head;
    text.append(size - head.size() - tail.size(), 'x').append(tail);

    EXPECT_EQ("1", Value(text, "A", "key")) << size;
  }
  const std::string fill(most + 1 - head.size() - tail.size(), 'x');
  EXPECT_EQ("default", Value(head + fill + tail, "A", "key"));
}

TEST(GetIniKeyString, ReadsALargeFileOfShortLines) {
  std::string text = "[A]\n";
  for (int i = 0; i < 100000; ++i) text += "other=0\n";

  EXPECT_EQ("1", Value(text + "key=1\n", "A", "key"));
}

TEST(GetIniKeyString, FindsAnEmptyKeyInAnyLineWithEquals) {
  EXPECT_EQ("2", Value("[A]\nno\nother=2\n", "A", ""));
}

TEST(GetIniKeyString, FindsAnEmptySection) { EXPECT_EQ("1", Value("[]\nkey=1\n", "", "key")); }

TEST(GetIniKeyString, ComparesALongSectionWithTheKeptPartOfTheLine) {
  const std::string fits(1021, 's');
  const std::string too_long(5000, 's');

  EXPECT_EQ("1", Value("[" + fits + "]\nkey=1\n", fits, "key"));
  EXPECT_EQ("default", Value("[" + too_long + "]\nkey=1\n", too_long, "key"));
}

TEST(GetIniKeyString, NeitherWaitsForAPipeNorEmptiesIt) {
  const std::string path = TemporaryFolder() + "/pipe.ini";
  ASSERT_EQ(0, mkfifo(path.c_str(), 0600));
  const int both_ends = open(path.c_str(), O_RDWR | O_CLOEXEC);
  ASSERT_GE(both_ends, 0);
  ASSERT_EQ(10, write(both_ends, "[A]\nkey=1\n", 10));

  EXPECT_EQ(kDefault, GetIniKeyString("A", "key", kDefault, path.c_str()));

  char left[16];
  EXPECT_EQ(10, read(both_ends, left, sizeof left));
  close(both_ends);
  EXPECT_EQ(kDefault, GetIniKeyString("A", "key", kDefault, path.c_str()));
}

TEST(GetIniKeyString, ReturnsTheDefaultForWhatIsNoFile) {
  EXPECT_EQ(kDefault, GetIniKeyString("A", "", kDefault, "/dev/zero"));
  EXPECT_EQ(kDefault, GetIniKeyString("A", "", kDefault, "/dev/null"));
  EXPECT_EQ(kDefault, GetIniKeyString("A", "", kDefault, "/tmp"));
  EXPECT_EQ(kDefault, GetIniKeyString("A", "", kDefault, ""));
}

TEST(GetIniKeyInt, ConvertsAsDecimal) {
  const struct {
    const char* value;
    long expected;
  } cases[] = {
      {"7",                   7                  },
      {" \t7",                7                  },
      {"-7",                  -7                 },
      {"+7",                  7                  },
      {"7 and text",          7                  },
      {"0x10",                0                  },
      {"010",                 10                 },
      {"",                    0                  },
      {"letters",             0                  },
      {"2147483648",          2147483648         },
      {"9223372036854775808", 9223372036854775807},
  };
  for (const auto& each : cases) {
    const std::string path = IniFile("[A]\nkey=" + std::string(each.value) + "\n5\n");

    EXPECT_EQ(each.expected, GetIniKeyInt("A", "key", "3", path.c_str())) << each.value;
  }
}

TEST(GetIniKeyInt, ConvertsTheDefault) {
  EXPECT_EQ(3, GetIniKeyInt("A", "key", "3", "/nonexistent/file.ini"));
  EXPECT_EQ(0, GetIniKeyInt("A", "key", "none", "/nonexistent/file.ini"));
  EXPECT_EQ(0, GetIniKeyInt("A", "key", nullptr, "/nonexistent/file.ini"));
}
