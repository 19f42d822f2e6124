// UCS-2 to UTF-8: the rule for stopping, odd lengths and addresses, and the blocks of units against
// a plain loop.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "quillonid/carddata.h"
#include "tests/carddata/iconv_text.h"
#include "tests/testing/hex_text.h"

namespace {

using Bytes = std::vector<unsigned char>;

constexpr char kUntouched = '#';

Bytes LittleEndian(const std::u16string& units) {
  Bytes bytes;
  for (const char16_t unit : units) {
    bytes.push_back(static_cast<unsigned char>(unit));
    bytes.push_back(static_cast<unsigned char>(unit >> 8));
  }
  return bytes;
}

struct Output {
  int result;
  std::string buffer;  // with the bytes that were not written
};

bool operator==(const Output& a, const Output& b) {
  return a.result == b.result && a.buffer == b.buffer;
}

void PrintTo(const Output& output, std::ostream* out) {
  *out << output.result << ": " << HexText(output.buffer);
}

// As the library converts, into a buffer of `room` bytes that says it is `size`.
Output Convert(const Bytes& source, int size, std::size_t room) {
  Output output = {0, std::string(room, kUntouched)};
  output.result =
      UnicodeToUTF8(source.data(), static_cast<int>(source.size()), output.buffer.data(), size);
  return output;
}

std::string Utf8(unsigned unit) {
  if (unit < 0x80) return {static_cast<char>(unit)};
  if (unit < 0x800) {
    return {static_cast<char>(0xC0 + unit / 64), static_cast<char>(0x80 + unit % 64)};
  }
  return {static_cast<char>(0xE0 + unit / 4096), static_cast<char>(0x80 + unit / 64 % 64),
          static_cast<char>(0x80 + unit % 64)};
}

// Unit by unit.
Output PlainConvert(const Bytes& source, int size, std::size_t room) {
  std::string text;
  int units = 0;
  for (std::size_t at = 0; at < source.size();) {
    const unsigned high = at + 1 < source.size() ? source[at + 1] : 0;
    text += Utf8(source[at] + 256 * high);
    ++units;
    at += 2;
    if (static_cast<int>(text.size()) >= size - 1) break;
  }
  text += '\0';
  text.resize(std::max(text.size(), room), kUntouched);
  return {units, text};
}

}  // namespace

TEST(UnicodeToUTF8, WritesOneTwoOrThreeBytesForAUnit) {
  const std::u16string units = u"\x7F\x80\u07FF\u0800\uFFFF";

  const Output output = Convert(LittleEndian(units), 64, 14);

  EXPECT_EQ(5, output.result);
  EXPECT_EQ("7F C2 80 DF BF E0 A0 80 EF BF BF 00 23 23", HexText(output.buffer));
}

TEST(UnicodeToUTF8, ConvertsEveryUnitAsTheCLibraryDoes) {
  const Iconv utf8("UTF-8", "UCS-2LE");
  for (unsigned unit = 0; unit < 0x10000; ++unit) {
    const bool is_surrogate = unit >= 0xD800 && unit < 0xE000;
    const Bytes source = LittleEndian({static_cast<char16_t>(unit)});
    const auto expected = is_surrogate ? Utf8(unit) : utf8({source.begin(), source.end()});

    const Output output = Convert(source, 16, 4);

    ASSERT_EQ(1, output.result);
    ASSERT_EQ(*expected, output.buffer.substr(0, expected->size())) << unit;
    ASSERT_EQ('\0', output.buffer[expected->size()]) << unit;
  }
}

TEST(UnicodeToUTF8, EncodesSurrogatesOneByOne) {
  const Output output = Convert({0x3D, 0xD8, 0x00, 0xDE}, 64, 8);

  EXPECT_EQ(2, output.result);
  EXPECT_EQ("ED A0 BD ED B8 80 00 23", HexText(output.buffer));
}

TEST(UnicodeToUTF8, CountsAZeroUnitLikeAnyOther) {
  const Output output = Convert(LittleEndian({u'a', 0, u'b'}), 64, 5);

  EXPECT_EQ(3, output.result);
  EXPECT_EQ("61 00 62 00 23", HexText(output.buffer));
}

TEST(UnicodeToUTF8, TurnsBlanksIntoAsManyBlanks) {
  for (std::size_t count = 1; count <= 128; ++count) {
    const Output output = Convert(LittleEndian(std::u16string(count, u' ')), 256, count + 2);

    EXPECT_EQ(static_cast<int>(count), output.result);
    EXPECT_EQ(std::string(count, ' ') + '\0' + kUntouched, output.buffer);
  }
}

TEST(UnicodeToUTF8, StopsWhenTheOutputReachesItsLimit) {
  const Output output = Convert(LittleEndian(u"abcdef"), 4, 8);

  EXPECT_EQ(3, output.result);
  EXPECT_EQ("61 62 63 00 23 23 23 23", HexText(output.buffer));
}

// The caller provides two bytes more than the size it says.
TEST(UnicodeToUTF8, PassesItsLimitByUpToTwoBytesToFinishACharacter) {
  const Bytes source = LittleEndian(u"张三");

  EXPECT_EQ("E5 BC A0 00 23 23", HexText(Convert(source, 2, 6).buffer));
  EXPECT_EQ("E5 BC A0 00 23 23", HexText(Convert(source, 4, 6).buffer));
  EXPECT_EQ("E5 BC A0 E4 B8 89 00 23", HexText(Convert(source, 5, 8).buffer));
}

TEST(UnicodeToUTF8, GivesZeroAndAnEmptyTextForNoSourceOrNoRoom) {
  for (const int size : {1, 0, -1, INT32_MIN}) {
    EXPECT_EQ((Output{0, std::string("\0#", 2)}), Convert(LittleEndian(u"ab"), size, 2)) << size;
  }
  for (const int length : {0, -1, INT32_MIN}) {
    char dest[] = "##";
    const unsigned char source[] = {'a', 0};
    EXPECT_EQ(0, UnicodeToUTF8(source, length, dest, 16)) << length;
    EXPECT_EQ("00 23 00", HexText(dest, sizeof dest)) << length;
  }
}

TEST(UnicodeToUTF8, GivesZeroForNullAndWritesNothing) {
  char dest[] = "##";
  const unsigned char source[] = {'a', 0};

  EXPECT_EQ(0, UnicodeToUTF8(nullptr, 2, dest, 16));
  EXPECT_EQ(0, UnicodeToUTF8(source, 2, nullptr, 16));
  EXPECT_EQ(0, UnicodeToUTF8(source, 0, nullptr, 0));
  EXPECT_STREQ("##", dest);
}

// Against reading past an odd number of bytes in search of its exact end.
TEST(UnicodeToUTF8, TakesAMissingHighByteAsZero) {
  EXPECT_EQ((Output{1, std::string("A\0#", 3)}), Convert({'A'}, 64, 3));
  EXPECT_EQ((Output{2, std::string("\xE5\xBC\xA0\x42\0#", 6)}), Convert({0x20, 0x5F, 'B'}, 64, 6));
}

// Runs of each width, of every length and with every limit, on even and odd addresses.
TEST(UnicodeToUTF8, EqualsThePlainLoopForRunsAtEveryLimit) {
  for (const std::u16string& pattern :
       {std::u16string(u" "), std::u16string(u"京"), std::u16string(u"é"),
        std::u16string(u"        张三"), std::u16string(u"北京市Z"),
        std::u16string(u"abcdé北北北北北"), std::u16string(u"\x7F\x7F\x7F\x7F\x80"),
        std::u16string(u"\u0800\u07FF\u0800\u0800\u0800"), std::u16string(4, u'\0') + u'\uFFFF',
        std::u16string(u"\xD800\xDFFF\xFF80\x0080")}) {
    std::u16string units;
    while (units.size() < 40) units += pattern;
    for (std::size_t first = 0; first < 2; ++first) {
      const Bytes bytes = LittleEndian(units);
      for (std::size_t length = 1; length <= 66; ++length) {
        const Bytes source(bytes.begin() + static_cast<std::ptrdiff_t>(first),
                           bytes.begin() + static_cast<std::ptrdiff_t>(first + length));
        for (int size = 2; size <= 3 * 34; ++size) {
          const auto room = static_cast<std::size_t>(size) + 2;
          ASSERT_EQ(PlainConvert(source, size, room), Convert(source, size, room));
        }
      }
    }
  }
}

TEST(UnicodeToUTF8, EqualsThePlainLoopForRandomTexts) {
  std::mt19937 generator(20020304);
  const unsigned widths[] = {0x80, 0x800, 0x10000};
  for (int round = 0; round < 20000; ++round) {
    Bytes bytes;
    while (bytes.size() < 256) {
      const unsigned limit = widths[generator() % 3];
      for (auto run = generator() % 20; run > 0; --run) {
        const auto unit = generator() % limit;
        bytes.push_back(static_cast<unsigned char>(unit));
        bytes.push_back(static_cast<unsigned char>(unit >> 8));
      }
    }
    bytes.resize(1 + generator() % 256);
    const int size = 2 + static_cast<int>(generator() % 400);
    const auto room = static_cast<std::size_t>(size) + 2;

    ASSERT_EQ(PlainConvert(bytes, size, room), Convert(bytes, size, room));
  }
}
