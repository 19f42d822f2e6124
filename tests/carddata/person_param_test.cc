// One field: padding, trimming, cutting, and sizes that are none.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "quillonid/carddata.h"
#include "tests/testing/hex_text.h"

namespace {

using Bytes = std::vector<unsigned char>;

Bytes LittleEndian(const std::u16string& units) {
  Bytes bytes;
  for (const char16_t unit : units) {
    bytes.push_back(static_cast<unsigned char>(unit));
    bytes.push_back(static_cast<unsigned char>(unit >> 8));
  }
  return bytes;
}

// The result and the field, whose neighbours must stay as they are.
struct Param {
  int result;
  std::string field;
};

bool operator==(const Param& a, const Param& b) {
  return a.result == b.result && a.field == b.field;
}

void PrintTo(const Param& param, std::ostream* out) {
  *out << param.result << ": " << HexText(param.field);
}

Param Get(const Bytes& source, int width, int length, bool raw = false) {
  const auto size = static_cast<std::size_t>(std::max(width, 0));
  std::string memory(size + 64, '#');
  const int result = GetPersonParam(source.data(), memory.data(), width, length, raw ? 1 : 0);
  EXPECT_EQ(std::string(64, '#'), memory.substr(size));
  return {result, memory.substr(0, size)};
}

Param Get(const std::u16string& text, int width, bool raw = false) {
  return Get(LittleEndian(text), width, static_cast<int>(2 * text.size()), raw);
}

std::string Padded(std::string text, std::size_t width) {
  text.resize(width);
  return text;
}

// Step by step, with work areas that nothing can overrun.
Param PlainGet(const Bytes& source, int width, int length, bool raw) {
  const auto size = static_cast<std::size_t>(width);
  Bytes work(4096);
  std::copy_n(source.begin(), std::min(length, 256), work.begin());
  std::string text(8192, '\0');
  const int units = UnicodeToUTF8(work.data(), length, text.data(), 256);
  text.replace(255, std::string::npos, 8192 - 255, '\0');
  if (units < 1) return {-1, std::string(size, '\0')};
  if (raw) return {length, text.substr(0, size)};

  std::size_t kept = size - 1;
  if (text[kept - 1] == ' ') {
    while (kept > 0 && text[kept - 1] == ' ') --kept;
  }
  return {length, Padded(text.substr(0, kept), size)};
}

}  // namespace

TEST(GetPersonParam, KeepsTheBlanksOfATextThatDoesNotFillItsField) {
  EXPECT_EQ((Param{30, Padded("张三             ", 80)}), Get(u"张三             ", 80));
  EXPECT_EQ((Param{10, Padded("ab   ", 7)}), Get(u"ab   ", 7));
}

TEST(GetPersonParam, TrimsATextThatFillsItsField) {
  EXPECT_EQ((Param{10, Padded("ab", 6)}), Get(u"ab   ", 6));
  EXPECT_EQ((Param{10, Padded("ab", 5)}), Get(u"ab   ", 5));
  EXPECT_EQ((Param{10, Padded("  a", 6)}), Get(u"  a  ", 6));
  EXPECT_EQ((Param{10, Padded("ab  c", 6)}), Get(u"ab  c", 6));
  EXPECT_EQ((Param{10, Padded("ab", 4)}), Get(u"ab  c", 4));
}

TEST(GetPersonParam, EmptiesAFieldFullOfBlanks) {
  EXPECT_EQ((Param{10, Padded("", 6)}), Get(u"     ", 6));
  EXPECT_EQ((Param{10, Padded("", 3)}), Get(u"     ", 3));
}

// Against clearing as many bytes as were consumed, which may be more than the field has.
TEST(GetPersonParam, ClearsNothingBehindANarrowFieldFullOfBlanks) {
  EXPECT_EQ((Param{200, std::string(4, '\0')}), Get(std::u16string(100, u' '), 4));
}

TEST(GetPersonParam, CutsAtTheWidthEvenInsideACharacter) {
  EXPECT_EQ((Param{4, Padded("张\xE4", 5)}), Get(u"张三", 5));
  EXPECT_EQ((Param{4, Padded("张\xE4\xB8", 6)}), Get(u"张三", 6));
  EXPECT_EQ((Param{4, Padded("张三", 7)}), Get(u"张三", 7));
}

TEST(GetPersonParam, CopiesTheWholeWidthWhenRaw) {
  EXPECT_EQ((Param{10, "ab   "}), Get(u"ab   ", 5, true));
  EXPECT_EQ((Param{10, "ab"}), Get(u"ab   ", 2, true));
  EXPECT_EQ((Param{10, Padded("ab   ", 10)}), Get(u"ab   ", 10, true));
  EXPECT_EQ((Param{4, "\xE5"}), Get(u"张三", 1, true));
}

TEST(GetPersonParam, KeepsWhatFollowsAZeroUnit) {
  EXPECT_EQ((Param{6, std::string("a\0b\0\0", 5)}), Get(std::u16string(u"a\0b", 3), 5));
}

TEST(GetPersonParam, TakesAnOddLength) {
  EXPECT_EQ((Param{3, Padded("ab", 5)}), Get({'a', 0, 'b'}, 5, 3));
  EXPECT_EQ((Param{1, Padded("a", 5)}), Get({'a'}, 5, 1));
}

TEST(GetPersonParam, StoresAtMost255BytesOfText) {
  std::string expected = "a";
  while (expected.size() < 255) expected += "京";
  expected.resize(255);  // inside a character
  expected.resize(300);

  EXPECT_EQ((Param{256, expected}), Get(u"a" + std::u16string(127, u'京'), 300));
  EXPECT_EQ((Param{256, expected}), Get(u"a" + std::u16string(127, u'京'), 300, true));
}

// Against reading and writing behind work areas of 256 bytes.
TEST(GetPersonParam, ConvertsAtMost256BytesAndReportsAllAsTaken) {
  EXPECT_EQ((Param{512, Padded(std::string(128, 'x'), 1025)}),
            Get(std::u16string(256, u'x'), 1025));
  EXPECT_EQ((Param{512, Padded(std::string(128, ' '), 1025)}),
            Get(std::u16string(256, u' '), 1025));
  EXPECT_EQ((Param{512, Padded(std::string(128, ' '), 1025)}),
            Get(std::u16string(256, u' '), 1025, true));
  EXPECT_EQ((Param{INT_MAX, Padded(std::string(128, 'x'), 200)}),
            Get(LittleEndian(std::u16string(128, u'x')), 200, INT_MAX));
}

TEST(GetPersonParam, ClearsTheFieldAndFailsWithoutASource) {
  for (const int length : {0, -1, INT_MIN}) {
    EXPECT_EQ((Param{-1, std::string(5, '\0')}), Get({'a', 0}, 5, length)) << length;
  }
  std::string field(5, '#');
  EXPECT_EQ(-1, GetPersonParam(nullptr, field.data(), 5, 2, 0));
  EXPECT_EQ(std::string(5, '\0'), field);
}

// Against an index in front of the field.
TEST(GetPersonParam, WritesNothingIntoAFieldWithoutWidth) {
  for (const int width : {0, -1, INT_MIN}) {
    EXPECT_EQ((Param{-1, ""}), Get({'a', 0}, width, 2)) << width;
    EXPECT_EQ((Param{-1, ""}), Get({'a', 0}, width, 0)) << width;
    EXPECT_EQ((Param{-1, ""}), Get({'a', 0}, width, 2, true)) << width;
  }
  EXPECT_EQ(-1, GetPersonParam(nullptr, nullptr, 10, 2, 0));
}

TEST(GetPersonParam, EmptiesAFieldOfOneByte) {
  EXPECT_EQ((Param{2, std::string(1, '\0')}), Get(u"a", 1));
  EXPECT_EQ((Param{2, std::string(1, '\0')}), Get(u" ", 1));
}

TEST(GetPersonParam, EqualsItsStepsForRandomFields) {
  std::mt19937 generator(20040506);
  const char16_t alphabet[] = {u' ', u' ', u' ', u'a', u'é', u'京', u'\0', u'\xD83D'};
  for (int round = 0; round < 50000; ++round) {
    std::u16string text(128, u' ');
    const std::size_t inked = generator() % 129;
    for (std::size_t i = 0; i < inked; ++i) text[i] = alphabet[generator() % std::size(alphabet)];
    const int width = 2 + static_cast<int>(generator() % (round % 2 ? 30 : 400));
    const int length = 1 + static_cast<int>(generator() % (round % 2 ? 30 : 256));
    const bool raw = generator() % 4 == 0;
    const Bytes source = LittleEndian(text);

    ASSERT_EQ(PlainGet(source, width, length, raw), Get(source, width, length, raw))
        << width << ' ' << length << ' ' << raw;
  }
}

TEST(GetPersonParam, EqualsItsStepsAroundTheWidthThatHoldsEveryText) {
  for (int length = 1; length <= 180; ++length) {
    const int units = (length + 1) / 2;
    for (const char16_t last : {u'京', u'a', u' '}) {
      std::u16string text(static_cast<std::size_t>(units), u'京');
      text.back() = last;
      const Bytes source = LittleEndian(text);
      for (int width = std::max(2, 3 * units - 2); width <= 3 * units + 4; ++width) {
        for (const bool raw : {false, true}) {
          ASSERT_EQ(PlainGet(source, width, length, raw), Get(source, width, length, raw))
              << width << ' ' << length << ' ' << raw;
        }
      }
    }
  }
}
