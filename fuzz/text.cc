// Text conversions against the C library's converter and models of the limits.
#include <cstring>

#include "fuzz/card_text.h"
#include "fuzz/check.h"
#include "fuzz/guarded.h"
#include "fuzz/input.h"
#include "quillonid/carddata.h"
#include "tests/carddata/iconv_text.h"

namespace {

using Units = std::vector<std::uint16_t>;

bool IsSurrogate(unsigned unit) { return unit >= 0xD800 && unit < 0xE000; }
// Pairs without a character map here.
bool IsPrivate(unsigned unit) { return unit >= 0xE000 && unit <= 0xE864; }

Units UnitsOf(const Bytes& bytes) {
  Units units;
  for (std::size_t i = 0; i < bytes.size(); i += 2) {
    const unsigned high = i + 1 < bytes.size() ? bytes[i + 1] : 0;
    units.push_back(static_cast<std::uint16_t>(bytes[i] | high << 8));
  }
  return units;
}

// All units at once against iconv, which knows no lone surrogates.
void CheckAgainstIconv(const Bytes& source) {
  static const Iconv utf8("UTF-8", "UCS-2LE");
  Bytes plain;
  for (const std::uint16_t unit : UnitsOf(source)) {
    if (IsSurrogate(unit)) continue;
    plain.push_back(static_cast<std::uint8_t>(unit & 0xFF));
    plain.push_back(static_cast<std::uint8_t>(unit >> 8));
  }
  if (plain.empty()) return;
  const Exact<unsigned char> block(plain);
  Guarded out(plain.size() * 2 + 4);
  const int units = UnicodeToUTF8(block.get(), static_cast<int>(plain.size()), out.text(),
                                  static_cast<int>(out.size() - 2));
  FUZZ_CHECK(static_cast<std::size_t>(units) == plain.size() / 2);
  const auto expected = utf8({plain.begin(), plain.end()});
  FUZZ_CHECK(expected.has_value());
  FUZZ_CHECK(out.FirstAsText(expected->size() + 1) == *expected + '\0');
}

void Ucs2ToUtf8Limits(const Bytes& source, int room) {
  const Exact<unsigned char> block(source);
  Guarded out(static_cast<std::size_t>(room) + 2);

  const int units = UnicodeToUTF8(block.get(), static_cast<int>(source.size()), out.text(), room);

  std::string expected;
  int count = 0;
  if (room > 1) {
    for (const std::uint16_t unit : UnitsOf(source)) {
      if (expected.size() >= static_cast<std::size_t>(room) - 1) break;
      card_text::PutUtf8(unit, &expected);
      ++count;
    }
  }
  FUZZ_CHECK(units == count);
  FUZZ_CHECK(out.FirstAsText(expected.size()) == expected);
  FUZZ_CHECK(out.text()[expected.size()] == '\0');
}

// The unit of a pair, or 0 for one of the private area: which one, the way back tells.
unsigned UnitOfPair(unsigned lead, unsigned trail) {
  static const Iconv ucs2("UCS-2LE", "GBK");
  if (trail < 0x40 || trail == 0x7F || trail == 0xFF) return '?';
  const std::string pair = {static_cast<char>(static_cast<unsigned char>(lead)),
                            static_cast<char>(static_cast<unsigned char>(trail))};
  const auto found = ucs2(pair);
  if (!found) return 0;
  return static_cast<unsigned char>((*found)[0]) |
         static_cast<unsigned>(static_cast<unsigned char>((*found)[1])) << 8;
}

// The character at `*at`; moves it on.
unsigned NextOfGbk(const std::string& text, std::size_t* at) {
  const unsigned lead = static_cast<unsigned char>(text[(*at)++]);
  if (lead < 0x80) return lead;
  if (lead == 0x80 || lead == 0xFF || *at == text.size()) return '?';
  return UnitOfPair(lead, static_cast<unsigned char>(text[(*at)++]));
}

void FromGbk(std::string text, int max) {
  const Exact<char> source(text);
  text.resize(text.size() % 256);  // positions have eight bits
  const auto room = static_cast<std::size_t>(std::max(max, 0));
  Guarded out(2 * room);
  auto* const units = reinterpret_cast<std::uint16_t*>(out.bytes());

  const int count = GbkToUcs2(units, source.get(), max);

  std::size_t at = 0;
  int expected = 0;
  while (at < text.size() && expected < max) {
    const std::size_t start = at;
    const unsigned unit = NextOfGbk(text, &at);
    const std::uint16_t got = units[expected++];
    if (unit != 0) {
      FUZZ_CHECK(got == unit);
      continue;
    }
    FUZZ_CHECK(IsPrivate(got));
    const std::uint16_t back[] = {got, 0};
    char pair[4] = {};
    FUZZ_CHECK(Ucs2ToGbk(pair, back, sizeof pair) == 2);
    FUZZ_CHECK(text.substr(start, 2) == pair);
  }
  FUZZ_CHECK(count == expected);
  FUZZ_CHECK(out.UntouchedFrom(2 * static_cast<std::size_t>(expected)));
}

// GBK to UTF-8 is the two other conversions, one behind the other.
void GbkToUtf8(const std::string& text, int room) {
  const Exact<char> source(text);
  constexpr int kMost = 255;
  Guarded ucs2(std::size_t{2} * kMost);
  auto* const units = reinterpret_cast<std::uint16_t*>(ucs2.bytes());
  const int count = GbkToUcs2(units, source.get(), kMost);
  Guarded out(static_cast<std::size_t>(std::max(room, 0)) + 2 + 1);

  GBKToUTF8(source.get(), out.text(), room);

  std::string expected;
  for (int i = 0; i < count && room > 1; ++i) {
    if (expected.size() >= static_cast<std::size_t>(room) - 1) break;
    card_text::PutUtf8(units[i], &expected);
  }
  FUZZ_CHECK(out.FirstAsText(expected.size()) == expected);
  FUZZ_CHECK(out.text()[expected.size()] == '\0');
}

// What one unit becomes is checked by the way back, and against iconv where nothing comes out.
void CheckGbkOf(std::uint16_t unit, const std::string& bytes) {
  static const Iconv gbk("GBK", "UCS-2LE");
  if (unit < 0x80) {
    FUZZ_CHECK(bytes == std::string(1, static_cast<char>(unit)));
    return;
  }
  if (bytes == std::string("?\0", 2)) {
    const std::string source = {static_cast<char>(static_cast<unsigned char>(unit & 0xFF)),
                                static_cast<char>(static_cast<unsigned char>(unit >> 8))};
    const auto pair = gbk(source);  // the C library also has single bytes above 7F
    FUZZ_CHECK(!(pair && pair->size() == 2) && !IsPrivate(unit));
    return;
  }
  Guarded back(4);
  auto* const units = reinterpret_cast<std::uint16_t*>(back.bytes());
  FUZZ_CHECK(GbkToUcs2(units, bytes.c_str(), 2) == 1 && units[0] == unit);
  FUZZ_CHECK(back.UntouchedFrom(2));
}

void ToGbk(const Bytes& bytes, int room) {
  Units units = UnitsOf(bytes);
  units.erase(std::find(units.begin(), units.end(), 0), units.end());
  units.push_back(0);
  const std::vector<std::uint16_t> exact(units);
  Guarded out(static_cast<std::size_t>(std::max(room, 0)));

  const int count = Ucs2ToGbk(out.text(), exact.data(), room);

  std::size_t at = 0;
  for (const std::uint16_t unit : units) {
    if (unit == 0) break;
    const std::size_t size = unit < 0x80 ? 1 : 2;
    if (at + size >= out.size()) {  // a text that is cut ends in a zero
      FUZZ_CHECK(room < 1 || out.text()[at] == '\0');
      at += room < 1 ? 0 : 1;
      break;
    }
    CheckGbkOf(unit, {out.text() + at, size});
    at += size;
  }
  FUZZ_CHECK(count >= 0 && static_cast<std::size_t>(count) <= at);
  FUZZ_CHECK(out.UntouchedFrom(at));
  FUZZ_CHECK(static_cast<std::size_t>(Ucs2Len(exact.data())) == units.size() - 1);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input input(data, size);
  const int operation = input.Between(0, 3);
  const int room = input.Between(operation == 0 ? 1 : -1, 200);
  if (operation == 0) {
    const Bytes source = input.Rest();
    if (source.empty()) return 0;
    CheckAgainstIconv(source);
    Ucs2ToUtf8Limits(source, room);
  } else if (operation == 1) {
    FromGbk(input.RestAsText(), room);
  } else if (operation == 2) {
    GbkToUtf8(input.RestAsText(), room);
  } else {
    ToGbk(input.Rest(), room);
  }
  return 0;
}
