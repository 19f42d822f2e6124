// Text made of records: tag letter, three digits of length, value.
#include <gtest/gtest.h>

#include <climits>
#include <random>
#include <string>

#include "quillonid/link.h"
#include "tests/link/log_text.h"
#include "tests/testing/private_root.h"

namespace {

// Where the record was found, or -1.
std::ptrdiff_t Found(const std::string& tag, const std::string& text) {
  const char* record = Str_FindTagApp(tag.c_str(), static_cast<int>(tag.size()), text.c_str());
  return record != nullptr ? record - text.c_str() : -1;
}

struct Value {
  int result;
  std::string text;
  int length;
};

Value ValueOf(const std::string& tag, const std::string& text) {
  std::string out(1000, '#');
  int length = -7;
  const int result = Str_GetTagValueApp(tag.c_str(), static_cast<int>(tag.size()), text.c_str(), 0,
                                        out.data(), &length);
  return {result, out.substr(0, out.find('#')), length};
}

std::string Record(char tag, int length, char value) {
  const std::string digits = std::to_string(1000 + length).substr(1);
  return tag + digits + std::string(static_cast<std::size_t>(length), value);
}

}  // namespace

TEST(StrFindTagApp, FindsARecordAtTheStart) { EXPECT_EQ(0, Found("A", "A003xyz")); }

TEST(StrFindTagApp, SkipsRecordsWithTheirValues) {
  EXPECT_EQ(7, Found("B", "A003BBBB002xy"));
  EXPECT_EQ(11, Found("c", "A003xyzB000c001z"));
}

TEST(StrFindTagApp, StepsOverCharactersThatAreNoLetters) {
  EXPECT_EQ(3, Found("B", "9;-B001x"));
  EXPECT_EQ(6, Found("B",
                     "A000\xC4\xB0"
                     "B001x"));
}

TEST(StrFindTagApp, MatchesATagOfSeveralCharacters) {
  EXPECT_EQ(5, Found("B1", "A001xB1002xy"));
  EXPECT_EQ(-1, Found("B1", "A001xB2002xy"));
}

TEST(StrFindTagApp, FindsATagBeforeItLooksAtItsLength) {
  EXPECT_EQ(5, Found("B", "A001xB"));
  EXPECT_EQ(5, Found("B", "A001xB999"));
}

TEST(StrFindTagApp, EndsAtTheEndOfTheText) {
  EXPECT_EQ(-1, Found("B", ""));
  EXPECT_EQ(-1, Found("B", "123"));
  EXPECT_EQ(-1, Found("B", "A001x"));
}

TEST(StrFindTagApp, EndsWhenFewerThanFourCharactersFollowALetter) {
  EXPECT_EQ(-1, Found("B", "A"));
  EXPECT_EQ(-1, Found("B", "A00"));
  EXPECT_EQ(-1, Found("0", "A000"));
  EXPECT_EQ(4, Found("B", "A000B"));
}

TEST(StrFindTagApp, EndsAtALengthOf129OrMore) {
  EXPECT_EQ(132, Found("B", Record('A', 128, 'v') + "B001x"));
  EXPECT_EQ(-1, Found("B", Record('A', 129, 'v') + "B001x"));
  EXPECT_EQ(-1, Found("B", Record('A', 999, 'v') + "B001x"));
}

TEST(StrFindTagApp, EndsAtALengthBeyondTheText) {
  EXPECT_EQ(-1, Found("B", "A005xB01"));
  EXPECT_EQ(5, Found("B", "A001xB"));
  EXPECT_EQ(-1, Found("B", "A002xB"));
}

// Taken as a number, "-04" would lead back to the same letter for ever.
TEST(StrFindTagApp, EndsAtALengthThatIsNoNumber) {
  EXPECT_EQ(-1, Found("B", "A-04B001x"));
  EXPECT_EQ(-1, Found("B", "A+01xB001x"));
  EXPECT_EQ(-1, Found("B", "A 01xB001x"));
  EXPECT_EQ(-1, Found("B", "A0x1xB001x"));
}

TEST(StrFindTagApp, FindsNothingWithoutTagOrText) {
  EXPECT_EQ(nullptr, Str_FindTagApp("A", 0, "A001x"));
  EXPECT_EQ(nullptr, Str_FindTagApp("A", -1, "A001x"));
  EXPECT_EQ(nullptr, Str_FindTagApp(nullptr, 1, "A001x"));
  EXPECT_EQ(nullptr, Str_FindTagApp("A", 1, nullptr));
  EXPECT_EQ(nullptr, Str_FindTagApp("A001xyz", 7, "A001x"));
}

TEST(StrFindTagApp, FindsEveryRecordOfTextsMadeAtRandom) {
  std::mt19937 random(4);
  for (int round = 0; round < 2000; ++round) {
    std::string text;
    std::string tags;
    std::vector<std::size_t> starts;
    for (char tag = 'A'; tag <= 'F'; ++tag) {
      if (random() % 3 == 0) text += "(7)";
      tags += random() % 2 != 0 ? tag : static_cast<char>(tag + 0x20);
      starts.push_back(text.size());
      text += Record(tags.back(), static_cast<int>(random() % 129), 'z');
    }
    for (std::size_t i = 0; i < tags.size(); ++i) {
      ASSERT_EQ(static_cast<std::ptrdiff_t>(starts[i]), Found(tags.substr(i, 1), text)) << text;
    }
  }
}

TEST(StrGetTagValueApp, CopiesTheValue) {
  const Value value = ValueOf("B", "A003xyzB005helloC001z");

  EXPECT_EQ(0, value.result);
  EXPECT_EQ("hello", value.text);
  EXPECT_EQ(5, value.length);
}

TEST(StrGetTagValueApp, ReadsTheDigitsBehindALongTag) {
  const Value value = ValueOf("B1", "A001xB1002hello");

  EXPECT_EQ(0, value.result);
  EXPECT_EQ("he", value.text);
  EXPECT_EQ(2, value.length);
}

TEST(StrGetTagValueApp, TakesAnEmptyValue) {
  const Value value = ValueOf("A", "A000");

  EXPECT_EQ(0, value.result);
  EXPECT_EQ("", value.text);
  EXPECT_EQ(0, value.length);
}

TEST(StrGetTagValueApp, TakesLongValues) {
  const Value value = ValueOf("A", Record('A', 999, 'v'));

  EXPECT_EQ(0, value.result);
  EXPECT_EQ(std::string(999, 'v'), value.text);
  EXPECT_EQ(999, value.length);
}

TEST(StrGetTagValueApp, CopiesNoMoreThanTheTextHas) {
  const Value value = ValueOf("A", "A999hello");

  EXPECT_EQ(0, value.result);
  EXPECT_EQ("hello", value.text);
  EXPECT_EQ(5, value.length);
}

TEST(StrGetTagValueApp, FailsWithoutTheRecord) {
  for (const char* text : {"", "B001x", "A", "A00", "B003x", "A-01xyz", "A1x1xyz"}) {
    const Value value = ValueOf("A", text);

    EXPECT_EQ(-1, value.result) << text;
    EXPECT_EQ("", value.text) << text;
    EXPECT_EQ(0, value.length) << text;
  }
}

TEST(StrGetTagValueApp, FailsWithoutTagTextOrOutput) {
  char out[8] = {};
  int length = 0;

  EXPECT_EQ(-1, Str_GetTagValueApp(nullptr, 1, "A001x", 0, out, &length));
  EXPECT_EQ(-1, Str_GetTagValueApp("A", 0, "A001x", 0, out, &length));
  EXPECT_EQ(-1, Str_GetTagValueApp("A", INT_MIN, "A001x", 0, out, &length));
  EXPECT_EQ(-1, Str_GetTagValueApp("A", 1, nullptr, 0, out, &length));
  EXPECT_EQ(-1, Str_GetTagValueApp("A", 1, "A001x", 0, nullptr, &length));
  EXPECT_EQ(-1, Str_GetTagValueApp("A", 1, "A001x", 0, out, nullptr));
}

TEST(StrGetTagValueApp, LogsStartAndEnd) {
  NEEDS_PRIVATE_ROOT();
  SwitchLogging(true);

  ValueOf("A", "A001x");
  ValueOf("A", "");

  EXPECT_EQ((Lines{"[Str_GetTagValueApp] Start ", "[Str_GetTagValueApp] End   ",
                   "[Str_GetTagValueApp] Start ", "[Str_GetTagValueApp] End   "}),
            Logged("1"));
}
