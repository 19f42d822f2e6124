// Every UCS-2 unit and every two bytes of GBK, both ways.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "quillonid/carddata.h"
#include "tests/models/text_model.h"
#include "tests/testing/hex_text.h"

namespace {

using model::PairOfUnit;
using model::UnitOfPair;

// What two bytes are: ASCII by itself, a pair, or "?" for what is no GBK. A lead byte takes any
// byte behind it along, but not the zero that ends the text.
std::vector<unsigned> UnitsOf(const std::string& gbk) {
  std::vector<unsigned> units;
  for (std::size_t i = 0; i < gbk.size(); ++i) {
    const unsigned lead = static_cast<unsigned char>(gbk[i]);
    if (lead < 0x80) {
      units.push_back(lead);
    } else if (lead == 0x80 || lead == 0xFF || i + 1 == gbk.size()) {
      units.push_back('?');
    } else {
      const unsigned trail = static_cast<unsigned char>(gbk[++i]);
      units.push_back(trail < 0x40 ? unsigned{'?'} : UnitOfPair(lead, trail));
    }
  }
  return units;
}

std::string Utf8Of(const std::vector<unsigned>& units) {
  std::string bytes;
  for (const unsigned unit : units) {
    bytes += {static_cast<char>(unit % 256), static_cast<char>(unit / 256)};
  }
  char utf8[16] = {};
  const auto* source = reinterpret_cast<const unsigned char*>(bytes.data());
  model::UnicodeToUtf8(source, static_cast<int>(bytes.size()), utf8, sizeof utf8);
  return utf8;
}

}  // namespace

TEST(EveryTwoBytes, OfGbkBecomeTheirUnits) {
  for (unsigned pair = 0; pair <= 0xFFFF; ++pair) {
    const char bytes[] = {static_cast<char>(pair / 256), static_cast<char>(pair % 256), '\0'};
    const std::string gbk = bytes;  // up to the first zero
    const std::vector<unsigned> expected = UnitsOf(gbk);
    std::uint16_t units[4] = {};
    char utf8[16] = {};

    const int count = GbkToUcs2(units, gbk.c_str(), 4);
    GBKToUTF8(gbk.c_str(), utf8, sizeof utf8);

    ASSERT_EQ(expected, std::vector<unsigned>(units, units + count)) << HexText(gbk);
    ASSERT_EQ(HexText(Utf8Of(expected)), HexText(std::string(utf8))) << HexText(gbk);
  }
}

TEST(EveryUnit, BecomesItsPairOfGbk) {
  for (unsigned unit = 1; unit <= 0xFFFF; ++unit) {
    const std::uint16_t text[] = {static_cast<std::uint16_t>(unit), 0};
    const unsigned pair = unit < 0x80 ? unit : PairOfUnit(unit);
    const char expected[] = {static_cast<char>(pair % 256), static_cast<char>(pair / 256), 0, 0};
    char gbk[4] = {};

    ASSERT_EQ(unit < 0x80 ? 1 : 2, Ucs2ToGbk(gbk, text, sizeof gbk)) << unit;

    ASSERT_EQ(HexText(expected), HexText(gbk)) << unit;
  }
}

TEST(EveryUnit, BecomesItsBytesOfUtf8) {
  for (unsigned unit = 0; unit <= 0xFFFF; ++unit) {
    const unsigned char text[] = {static_cast<unsigned char>(unit % 256),
                                  static_cast<unsigned char>(unit / 256)};
    char expected[8] = {};
    char utf8[8] = {};
    model::UnicodeToUtf8(text, sizeof text, expected, sizeof expected);

    ASSERT_EQ(1, UnicodeToUTF8(text, sizeof text, utf8, sizeof utf8)) << unit;

    ASSERT_EQ(HexText(expected), HexText(utf8)) << unit;
  }
}
