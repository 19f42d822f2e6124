// GBK and UCS-2 both ways: every pair and every unit against the C library, and the rules for
// lengths, limits and bytes that are no GBK.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "quillonid/carddata.h"
#include "tests/carddata/iconv_text.h"
#include "tests/testing/hex_text.h"

namespace {

constexpr std::uint16_t kUntouched = 0x2323;

std::string Pair(unsigned lead, unsigned trail) {
  return {static_cast<char>(lead), static_cast<char>(trail)};
}

std::vector<std::uint16_t> ToUcs2(const std::string& gbk, int max = 255) {
  std::vector<std::uint16_t> units(gbk.size() + 1, kUntouched);
  const int count = GbkToUcs2(units.data(), gbk.c_str(), max);
  EXPECT_EQ(kUntouched, units.at(static_cast<std::size_t>(count)));  // no terminator
  units.resize(static_cast<std::size_t>(count));
  return units;
}

unsigned UnitOf(unsigned lead, unsigned trail) {
  const auto units = ToUcs2(Pair(lead, trail));
  EXPECT_EQ(1u, units.size());
  return units.at(0);
}

bool IsUserDefined(unsigned lead, unsigned trail) {
  const bool is_upper = trail >= 0xA1;
  return (is_upper && lead >= 0xAA && lead <= 0xAF) || (is_upper && lead >= 0xF8) ||
         (!is_upper && lead >= 0xA1 && lead <= 0xA7);
}

// All pairs in code order, the ones that are none left out.
std::vector<std::array<unsigned, 2>> ValidPairs() {
  std::vector<std::array<unsigned, 2>> pairs;
  for (unsigned lead = 0x81; lead <= 0xFE; ++lead) {
    for (unsigned trail = 0x40; trail <= 0xFE; ++trail) {
      if (trail != 0x7F) pairs.push_back({lead, trail});
    }
  }
  return pairs;
}

std::string ToGbk(std::vector<std::uint16_t> units, int size, std::size_t room = 16) {
  units.push_back(0);
  std::string out(room, '#');
  const int bytes = Ucs2ToGbk(out.data(), units.data(), size);
  return std::to_string(bytes) + ": " + HexText(out);
}

std::string ToUtf8(const std::string& gbk, int size) {
  std::string out(static_cast<std::size_t>(std::max(size, 1)) + 2, '#');
  GBKToUTF8(gbk.c_str(), out.data(), size);
  return out;
}

}  // namespace

TEST(GbkToUcs2, MapsTheAssignedPairsAsTheCLibraryDoes) {
  const Iconv ucs2("UCS-2LE", "GBK");
  int assigned = 0;
  for (const auto& [lead, trail] : ValidPairs()) {
    const auto expected = ucs2(Pair(lead, trail));
    if (!expected) continue;
    ++assigned;
    const auto unit = ToUcs2(Pair(lead, trail));
    ASSERT_EQ(HexText(*expected), HexText(unit)) << HexText(Pair(lead, trail));
  }
  EXPECT_EQ(21791, assigned);
}

TEST(GbkToUcs2, MapsTheOtherPairsToPrivateCharacters) {
  const Iconv ucs2("UCS-2LE", "GBK");
  unsigned unassigned = 0xE766;
  for (const auto& [lead, trail] : ValidPairs()) {
    if (IsUserDefined(lead, trail) || ucs2(Pair(lead, trail))) continue;
    ASSERT_EQ(unassigned, UnitOf(lead, trail));
    ++unassigned;
  }
  EXPECT_EQ(0xE864u + 1, unassigned);

  EXPECT_EQ(0xE000u, UnitOf(0xAA, 0xA1));
  EXPECT_EQ(0xE233u, UnitOf(0xAF, 0xFE));
  EXPECT_EQ(0xE234u, UnitOf(0xF8, 0xA1));
  EXPECT_EQ(0xE4C5u, UnitOf(0xFE, 0xFE));
  EXPECT_EQ(0xE4C6u, UnitOf(0xA1, 0x40));
  EXPECT_EQ(0xE765u, UnitOf(0xA7, 0xA0));
}

TEST(GbkToUcs2, MapsEveryPairOfTheUserDefinedAreasInOrder) {
  std::map<unsigned, unsigned> expected;  // the next private character of each area
  for (const auto& [lead, trail] : ValidPairs()) {
    if (!IsUserDefined(lead, trail)) continue;
    const unsigned start = lead >= 0xF8 ? 0xE234 : lead >= 0xAA ? 0xE000 : 0xE4C6;
    unsigned& next = expected.emplace(start, start).first->second;
    ASSERT_EQ(next++, UnitOf(lead, trail));
  }
  EXPECT_EQ(0xE234u, expected[0xE000]);
  EXPECT_EQ(0xE4C6u, expected[0xE234]);
  EXPECT_EQ(0xE766u, expected[0xE4C6]);
}

TEST(GbkToUcs2, GivesAQuestionMarkForThePairsThatAreNone) {
  int invalid = 0;
  for (unsigned lead = 0x81; lead <= 0xFE; ++lead) {
    for (const unsigned trail : {0x7Fu, 0xFFu}) {
      EXPECT_EQ(unsigned{'?'}, UnitOf(lead, trail));
      ++invalid;
    }
  }
  EXPECT_EQ(252, invalid);
}

TEST(GbkToUcs2, TakesBytesBelow80AsTheyAreAnd80AndFFAsQuestionMarks) {
  for (unsigned byte = 1; byte < 0x80; ++byte) {
    EXPECT_EQ(std::vector<std::uint16_t>{static_cast<std::uint16_t>(byte)},
              ToUcs2({static_cast<char>(byte)}));
  }
  EXPECT_EQ((std::vector<std::uint16_t>{'?', 'a'}), ToUcs2("\x80"
                                                           "a"));
  EXPECT_EQ((std::vector<std::uint16_t>{'?', 'a'}), ToUcs2("\xFF"
                                                           "a"));
}

// Against reading in front of the table.
TEST(GbkToUcs2, GivesAQuestionMarkForALeadByteWithoutATrailByte) {
  for (unsigned lead = 0x81; lead <= 0xFE; ++lead) {
    for (unsigned trail = 1; trail < 0x40; ++trail) {
      EXPECT_EQ((std::vector<std::uint16_t>{'?', 'a'}), ToUcs2(Pair(lead, trail) + "a"));
    }
  }
}

// Against swallowing the terminator and running on.
TEST(GbkToUcs2, StopsAtALeadByteThatIsTheLast) {
  const char source[] = "a\xC4\0\xC4\xD0";
  std::uint16_t units[] = {kUntouched, kUntouched, kUntouched};

  EXPECT_EQ(2, GbkToUcs2(units, source, 100));

  EXPECT_EQ("61 00 3F 00 23 23", HexText(units));
  EXPECT_EQ(2, GbkToUcs2(nullptr, source, 0));
}

TEST(GbkToUcs2, StopsAtTheMaximum) {
  EXPECT_EQ((std::vector<std::uint16_t>{0x7537, 'a'}), ToUcs2("\xC4\xD0"
                                                              "ab\xC4\xD0",
                                                              2));
  EXPECT_TRUE(ToUcs2("ab", 0).empty());
  EXPECT_TRUE(ToUcs2("ab", -1).empty());
  EXPECT_EQ(2u, ToUcs2("ab", 256).size());
  EXPECT_EQ(2u, ToUcs2("ab", INT32_MAX).size());
}

TEST(GbkToUcs2, CountsWithoutADestination) {
  EXPECT_EQ(0, GbkToUcs2(nullptr, "", 0));
  EXPECT_EQ(3, GbkToUcs2(nullptr, "a\xC4\xD0z", 0));
  EXPECT_EQ(2, GbkToUcs2(nullptr, "\x80z", 0));     // 80 is one character
  EXPECT_EQ(1, GbkToUcs2(nullptr, "\xFFz", 0));     // FF starts a pair when counting only
  EXPECT_EQ(1, GbkToUcs2(nullptr, "\x81\x20", 0));  // whatever follows
  EXPECT_EQ(2u, ToUcs2("\xFFz").size());
}

TEST(GbkToUcs2, RefusesANullSource) {
  std::uint16_t unit = 0;
  EXPECT_EQ(-1, GbkToUcs2(nullptr, nullptr, 1));
  EXPECT_EQ(-1, GbkToUcs2(&unit, nullptr, 1));
}

// Against a counter of eight bits that never reaches the end.
TEST(GbkToUcs2, CountsLengthsModulo256) {
  for (const std::size_t length : {255u, 256u, 257u, 300u, 511u, 512u, 1000u}) {
    const std::string source(length, 'x');
    EXPECT_EQ(length % 256, ToUcs2(source, 2000).size()) << length;
    EXPECT_EQ(length % 256, static_cast<std::size_t>(GbkToUcs2(nullptr, source.c_str(), 0)));
  }
  std::string cut = std::string(256, 'x') + "y";
  cut[0] = '\xC4';  // the one byte that remains
  EXPECT_EQ(std::vector<std::uint16_t>{'?'}, ToUcs2(cut, 2000));
}

TEST(Ucs2ToGbk, InvertsEveryUnit) {
  const Iconv gbk("GBK", "UCS-2LE");
  std::map<unsigned, std::string> inverse;
  for (const auto& [lead, trail] : ValidPairs()) inverse[UnitOf(lead, trail)] = Pair(lead, trail);
  ASSERT_EQ(23940u, inverse.size());

  for (unsigned unit = 0x80; unit < 0x10000; ++unit) {
    const std::uint16_t source[] = {static_cast<std::uint16_t>(unit), 0};
    const bool is_surrogate = unit >= 0xD800 && unit < 0xE000;
    const auto standard =
        is_surrogate ? std::nullopt : gbk({static_cast<char>(unit), static_cast<char>(unit >> 8)});
    const auto found = inverse.find(unit);
    const std::string expected = found != inverse.end() ? found->second : std::string("?\0", 2);
    char out[3] = {'#', '#', '#'};

    ASSERT_EQ(2, Ucs2ToGbk(out, source, sizeof out + 1));

    ASSERT_EQ(HexText(expected), HexText(out, 2)) << std::hex << unit;
    ASSERT_EQ('#', out[2]);
    if (standard && standard->size() == 2) {
      ASSERT_EQ(HexText(*standard), HexText(expected)) << std::hex << unit;
    }
  }
}

TEST(Ucs2ToGbk, GivesAQuestionMarkAndAZeroForCharactersWithoutAGbkForm) {
  EXPECT_EQ("5: 3F 00 3F 00 61 23 23 23", ToGbk({0x20AC, 0x01F9, 'a'}, 8, 8));
}

TEST(Ucs2ToGbk, CopiesUnitsBelow80) {
  for (std::uint16_t unit = 1; unit < 0x80; ++unit) {
    const std::uint16_t source[] = {unit, 0};
    char out[] = "##";
    ASSERT_EQ(1, Ucs2ToGbk(out, source, 3));
    ASSERT_EQ(static_cast<char>(unit), out[0]);
    ASSERT_EQ('#', out[1]);
  }
}

// Only a text that is cut ends in a zero.
TEST(Ucs2ToGbk, WritesAZeroOnlyWhenRoomRunsOut) {
  const std::vector<std::uint16_t> text = {'a', 0x7537, 'b'};  // four bytes

  EXPECT_EQ("4: 61 C4 D0 62 23 23", ToGbk(text, 6, 6));
  EXPECT_EQ("4: 61 C4 D0 62 23 23", ToGbk(text, 5, 6));
  EXPECT_EQ("3: 61 C4 D0 00 23 23", ToGbk(text, 4, 6));
  EXPECT_EQ("1: 61 00 23 23 23 23", ToGbk(text, 3, 6));
  EXPECT_EQ("1: 61 00 23 23 23 23", ToGbk(text, 2, 6));
  EXPECT_EQ("0: 00 23 23 23 23 23", ToGbk(text, 1, 6));
}

// Against a size that becomes huge when one is taken from it.
TEST(Ucs2ToGbk, WritesNothingWithoutRoom) {
  for (const int size : {0, -1, INT32_MIN}) EXPECT_EQ("0: 23 23", ToGbk({'a'}, size, 2));
}

TEST(Ucs2ToGbk, WritesNothingForAnEmptyText) {
  EXPECT_EQ("0: 23 23", ToGbk({}, 16, 2));
  EXPECT_EQ("0: 23 23", ToGbk({}, 1, 2));
}

TEST(Ucs2ToGbk, CountsWithoutADestination) {
  const std::uint16_t text[] = {'a', 0x7537, 0x80, 0x20AC, 0};
  EXPECT_EQ(7, Ucs2ToGbk(nullptr, text, 0));
  EXPECT_EQ(-1, Ucs2ToGbk(nullptr, nullptr, 0));
}

TEST(Ucs2Len, CountsUnitsBeforeTheZero) {
  const std::uint16_t text[] = {'a', 0x0100, 0x7537, 0, 'b', 0};
  EXPECT_EQ(3, Ucs2Len(text));
  EXPECT_EQ(0, Ucs2Len(text + 3));
  EXPECT_EQ(0, Ucs2Len(nullptr));
}

// Two-byte values are put together from bytes: an odd address does no harm.
TEST(Ucs2Len, TakesATextAtAnOddAddress) {
  alignas(2) char memory[] = "#a\0b\0\x37\x75\0\0";
  const void* const odd = memory + 1;
  const auto* const text = static_cast<const std::uint16_t*>(odd);
  char out[] = "######";

  EXPECT_EQ(3, Ucs2Len(text));
  EXPECT_EQ(4, Ucs2ToGbk(out, text, 6));
  EXPECT_EQ("61 62 C4 D0 23 23", HexText(out, 6));
}

TEST(GBKToUTF8, ConvertsTheSexWords) {
  EXPECT_EQ("E7 94 B7 00 23 23 23 23 23 23", HexText(ToUtf8("\xC4\xD0", 8)));
  EXPECT_EQ("E5 A5 B3 00 23 23 23 23 23 23", HexText(ToUtf8("\xC5\xAE", 8)));
}

TEST(GBKToUTF8, WritesAnEmptyTextForNothing) {
  EXPECT_EQ("00 23 23", HexText(ToUtf8("\xC4\xD0", 1)));
  EXPECT_EQ("00 23 23", HexText(ToUtf8("\xC4\xD0", 0)));
  EXPECT_EQ("00 23 23 23 23 23", HexText(ToUtf8("", 4)));
  char dest[] = "##";
  GBKToUTF8(nullptr, dest, 16);
  EXPECT_EQ("00 23 00", HexText(dest, 3));
  GBKToUTF8("a", nullptr, 16);
}

TEST(GBKToUTF8, PassesItsLimitByUpToTwoBytesToFinishACharacter) {
  EXPECT_EQ("E7 94 B7 00", HexText(ToUtf8("\xC4\xD0\xC5\xAE", 2)));
  EXPECT_EQ("E7 94 B7 E5 A5 B3 00", HexText(ToUtf8("\xC4\xD0\xC5\xAE", 5)));
}

// In one pass what the two conversions give one after the other.
TEST(GBKToUTF8, EqualsTheWayThroughUcs2) {
  std::mt19937 generator(20030405);
  for (int round = 0; round < 20000; ++round) {
    std::string gbk(generator() % 600, '\0');
    for (char& byte : gbk) byte = static_cast<char>(1 + generator() % 255);
    const int size = 2 + static_cast<int>(generator() % 900);
    std::vector<std::uint16_t> units(256);
    const int count = GbkToUcs2(units.data(), gbk.c_str(), static_cast<int>(gbk.size()));
    std::string expected(static_cast<std::size_t>(size) + 2, '#');
    UnicodeToUTF8(reinterpret_cast<const unsigned char*>(units.data()), 2 * count, expected.data(),
                  size);

    ASSERT_TRUE(expected == ToUtf8(gbk, size)) << HexText(gbk) << " in " << size;
  }
}

TEST(UnicodeToAnsi, ReturnsItsArgument) {
  for (const int value : {0, 1, -1, 0x7537, INT32_MIN}) {
    EXPECT_EQ(value, UnicodeToAnsi(value));
    EXPECT_EQ(value, GbkToUnicode(value));
  }
}
