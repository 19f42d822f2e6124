// Names of ethnic groups and countries: every row, codes that have none, and what is written.
#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <string>
#include <vector>

#include "quillonid/carddata.h"
#include "tests/carddata/expected_names.h"
#include "tests/testing/hex_text.h"
#include "tests/testing/private_root.h"

namespace {

std::string UpToZero(const std::string& text) { return text.substr(0, text.find('\0')); }

std::string Nation(int code, int limit = 50) {
  std::string dest(64, '#');
  GetNation(code, dest.data(), limit);
  return UpToZero(dest);
}

// What is written over the bytes of `before`.
std::string Country(const char* code, std::string before = std::string(64, '\0')) {
  GetCountry(code, before.data());
  return before;
}

std::string CountryText(const char* code) { return UpToZero(Country(code)); }

}  // namespace

TEST(GetNation, NamesEveryGroup) {
  const auto names = NamesOf(kExpectedNations);
  ASSERT_EQ(56u, names.size());
  for (const Name& name : names) EXPECT_EQ(name.text, Nation(std::stoi(name.code))) << name.code;
  EXPECT_EQ("基诺", Nation(56));
}

TEST(GetNation, NamesTheTwoCodesBesides) {
  EXPECT_EQ("其他", Nation(97));
  EXPECT_EQ("外国血统中国籍人士", Nation(98));
}

// Against an index taken from the code before it is looked at.
TEST(GetNation, GivesAnEmptyTextForOtherCodes) {
  std::vector<int> codes = {0, -1, -56, 99, 100, 256 + 1, 65536 + 1, INT_MIN, INT_MAX};
  for (int code = 57; code <= 96; ++code) codes.push_back(code);
  for (const int code : codes) {
    char dest[] = "##";
    GetNation(code, dest, 50);
    EXPECT_EQ("00 23 00", HexText(dest)) << code;
  }
}

TEST(GetNation, WritesAtMostItsLimitInWholeCharacters) {
  EXPECT_EQ("维吾尔", Nation(5, 10));
  EXPECT_EQ("维吾", Nation(5, 9));
  EXPECT_EQ("维吾", Nation(5, 7));
  EXPECT_EQ("维", Nation(5, 6));
  EXPECT_EQ("", Nation(5, 3));
  EXPECT_EQ("", Nation(5, 1));
  for (int limit = 1; limit <= 40; ++limit) {
    std::string dest(64, '#');
    GetNation(98, dest.data(), limit);
    const auto size = static_cast<std::size_t>(limit);
    ASSERT_LT(UpToZero(dest).size(), size);
    ASSERT_EQ(std::string(64 - size, '#'), dest.substr(size));
  }
}

TEST(GetNation, WritesNothingWithoutRoom) {
  for (const int limit : {0, -1, INT_MIN}) {
    char dest[] = "##";
    GetNation(1, dest, limit);
    GetNation(57, dest, limit);
    EXPECT_STREQ("##", dest);
  }
  GetNation(1, nullptr, 50);
}

TEST(GetCountry, NamesEveryCountry) {
  const auto names = NamesOf(kExpectedCountries);
  ASSERT_EQ(239u, names.size());
  for (const Name& name : names) EXPECT_EQ(name.text, CountryText(name.code.c_str())) << name.code;
  EXPECT_EQ("中华人民共和国", CountryText("CHN"));
  EXPECT_EQ("中国香港特别行政区", CountryText("HKG"));
  EXPECT_EQ("中国台湾", CountryText("TWN"));
}

TEST(GetCountry, LooksAtThreeLettersOnly) {
  EXPECT_EQ("美利坚合众国", CountryText("USA   "));
  EXPECT_EQ("美利坚合众国", CountryText("USAX"));
}

TEST(GetCountry, LeavesTheDestinationForACodeItDoesNotKnow) {
  for (const char* code : {"ZZZ", "", "U", "US", "usa", "USZ", "ZSA", " USA", "\xD5\xD3\xC1"}) {
    EXPECT_EQ("####", Country(code, "####")) << code;
  }
}

// Against reading behind a short code: this one ends where its memory ends.
TEST(GetCountry, ReadsNoFurtherThanTheCodesZero) {
  const std::vector<char> code = {'U', '\0'};
  EXPECT_EQ("####", Country(code.data(), "####"));
}

TEST(GetCountry, WritesNoTerminatingZero) {
  EXPECT_EQ("日本国###", Country("JPN", std::string(12, '#')));
}

// The field that it fills has 50 bytes.
TEST(GetCountry, WritesAtMost48Bytes) {
  std::size_t longest = 0;
  for (const Name& name : NamesOf(kExpectedCountries)) {
    const std::string written = Country(name.code.c_str(), std::string(128, '#'));
    longest = std::max(longest, written.find('#'));
  }
  EXPECT_EQ(48u, longest);
}

TEST(GetCountry, IgnoresNull) {
  char dest[] = "##";
  GetCountry(nullptr, dest);
  GetCountry("CHN", nullptr);
  EXPECT_STREQ("##", dest);
}

TEST(GetNation, LogsItsStart) {
  NEEDS_PRIVATE_ROOT();
  SwitchLogging(true);
  char dest[50];

  GetNation(1, dest, 50);

  const std::vector<std::string> expected = {"  TIME  INFO:    BusiId:  [GetNation] Start "};
  EXPECT_EQ(expected, LogLines());
}

TEST(GetCountry, LogsItsStartRowAndName) {
  NEEDS_PRIVATE_ROOT();
  SwitchLogging(true);
  char dest[50] = {};

  GetCountry("AFG", dest);
  GetCountry("ZWE", dest);
  GetCountry("ZZZ", dest);

  const std::vector<std::string> expected = {
      "  TIME  INFO:    BusiId:  [GetCountry] Start ",
      "  TIME  INFO:    BusiId:  nIndex = 0 szCountry = 阿富汗 ",
      "  TIME  INFO:    BusiId:  [GetCountry] Start ",
      "  TIME  INFO:    BusiId:  nIndex = 238 szCountry = 津巴布韦共和国 ",
      "  TIME  INFO:    BusiId:  [GetCountry] Start ",
  };
  EXPECT_EQ(expected, LogLines());
}
