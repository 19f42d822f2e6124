// GBK (code page 936) to UCS-2 and back, for text.cc and for texts that are made GBK at compile
// time. Every valid pair has a character of its own, so that the way back loses nothing.
#ifndef QUILLONID_CARDDATA_GBK_TABLE_H
#define QUILLONID_CARDDATA_GBK_TABLE_H

#include <cstddef>
#include <cstdint>

inline constexpr unsigned kFirstLead = 0x81;
inline constexpr unsigned kLastLead = 0xFE;
inline constexpr unsigned kFirstTrail = 0x40;
inline constexpr std::size_t kGbkRows = kLastLead - kFirstLead + 1;
inline constexpr std::size_t kGbkColumns = 0x100 - kFirstTrail;

// UCS-2 unit of each lead and trail byte; '?' for the pairs that are none. The last column is the
// end of the literals.
inline constexpr char16_t kGbkToUcs2[kGbkRows][kGbkColumns + 1] = {
#include "carddata/gbk_rows.inc"
};

// `lead` is 0x81 to 0xFE, `trail` 0x40 to 0xFF.
constexpr char16_t Ucs2OfGbk(unsigned lead, unsigned trail) {
  return kGbkToUcs2[lead - kFirstLead][trail - kFirstTrail];
}

// The reverse in pages of 256 units. Page 0 is shared by all units that have no GBK form.
template <std::size_t kPages>
struct Ucs2ToGbkTable {
  std::uint8_t page_of[256];
  std::uint16_t pages[kPages][256];
};

consteval std::size_t CountUcs2Pages() {
  bool used[256] = {};
  for (const auto& row : kGbkToUcs2) {
    for (std::size_t column = 0; column < kGbkColumns; ++column) used[row[column] >> 8] = true;
  }
  std::size_t pages = 1;
  for (const bool page : used) pages += page ? 1 : 0;
  return pages;
}

template <std::size_t kPages>
consteval Ucs2ToGbkTable<kPages> InvertGbkToUcs2() {
  Ucs2ToGbkTable<kPages> table = {};
  for (auto& page : table.pages) {
    for (std::uint16_t& pair : page) pair = '?';
  }
  std::uint8_t last = 0;
  for (unsigned row = 0; row < kGbkRows; ++row) {
    for (unsigned column = 0; column < kGbkColumns; ++column) {
      const char16_t unit = kGbkToUcs2[row][column];
      if (unit < 0x80) continue;  // '?', which stands for a pair that is none
      std::uint8_t& page = table.page_of[unit >> 8];
      if (page == 0) page = ++last;
      const unsigned pair = (kFirstLead + row) | (kFirstTrail + column) << 8;
      table.pages[page][unit & 0xFF] = static_cast<std::uint16_t>(pair);
    }
  }
  return table;
}

inline constexpr auto kUcs2ToGbk = InvertGbkToUcs2<CountUcs2Pages()>();

// Has no definition: a call that is evaluated at compile time is an error that names the reason.
void TextHasNoGbkFormOrDoesNotFit();

// GBK of a unit from 0x80 on, the lead byte in the low half. A unit without a GBK form gives '?'
// there and a zero in the high half.
constexpr std::uint16_t GbkOfUcs2(unsigned unit) {
  return kUcs2ToGbk.pages[kUcs2ToGbk.page_of[unit >> 8]][unit & 0xFF];
}

// A zero-padded GBK text, made by the compiler from a literal such as u"男".
template <std::size_t kWidth>
struct GbkText {
  char bytes[kWidth] = {};

  constexpr GbkText(const char16_t* text) {
    std::size_t size = 0;
    for (; *text != 0; ++text) {
      const unsigned pair = *text < 0x80 ? *text : GbkOfUcs2(*text);
      if (pair == '?' || size + 2 >= kWidth) TextHasNoGbkFormOrDoesNotFit();
      bytes[size++] = static_cast<char>(pair & 0xFF);
      if (pair > 0xFF) bytes[size++] = static_cast<char>(pair >> 8);
    }
  }
};

#endif
