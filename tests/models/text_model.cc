#include "tests/models/text_model.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "tests/carddata/expected_names.h"
#include "tests/carddata/iconv_text.h"

namespace model {
namespace {

constexpr unsigned kNoUnit = '?';

bool IsUserDefined(unsigned lead, unsigned trail) {
  if (trail >= 0xA1) return (lead >= 0xAA && lead <= 0xAF) || lead >= 0xF8;
  return lead >= 0xA1 && lead <= 0xA7;
}

struct Tables {
  std::array<std::array<unsigned, 256>, 256> unit = {};  // by lead and trail byte
  std::array<unsigned, 65536> pair;                      // by unit
};

// The private characters: the three areas for users first, in the order of the standard, then the
// pairs that no character was given to.
Tables MakeTables() {
  Tables tables;
  tables.pair.fill(kNoUnit);
  const Iconv ucs2("UCS-2LE", "GBK");
  unsigned upper = 0xE000;       // AAA1 to AFFE
  unsigned last_rows = 0xE234;   // F8A1 to FEFE
  unsigned lower = 0xE4C6;       // A140 to A7A0
  unsigned unassigned = 0xE766;  // all others
  for (unsigned lead = 0x81; lead <= 0xFE; ++lead) {
    for (unsigned trail = 0x40; trail <= 0xFF; ++trail) {
      unsigned& unit = tables.unit[lead][trail];
      unit = kNoUnit;
      if (trail == 0x7F || trail == 0xFF) continue;
      const auto known = ucs2({static_cast<char>(lead), static_cast<char>(trail)});
      if (IsUserDefined(lead, trail)) {
        unit = trail < 0xA1 ? lower++ : lead >= 0xF8 ? last_rows++ : upper++;
      } else if (known) {
        unit = static_cast<unsigned char>((*known)[0]) +
               256U * static_cast<unsigned char>((*known)[1]);
      } else {
        unit = unassigned++;
      }
      tables.pair[unit] = lead + 256 * trail;
    }
  }
  return tables;
}

const Tables& GbkTables() {
  static const Tables tables = MakeTables();
  return tables;
}

char CharOf(unsigned byte) { return static_cast<char>(static_cast<unsigned char>(byte)); }

}  // namespace

unsigned UnitOfPair(unsigned lead, unsigned trail) { return GbkTables().unit[lead][trail]; }
unsigned PairOfUnit(unsigned unit) { return GbkTables().pair[unit]; }

int UnicodeToUtf8(const unsigned char* source, int size, char* dest, int dest_size) {
  if (size <= 0 || dest_size <= 1) {
    dest[0] = '\0';
    return 0;
  }
  int used = 0;
  int written = 0;
  do {
    const unsigned unit = source[used] + 256U * source[used + 1];
    used += 2;
    if (unit < 0x80) {
      dest[written++] = CharOf(unit);
    } else if (unit < 0x800) {
      dest[written++] = CharOf(0xC0 | unit >> 6);
      dest[written++] = CharOf(0x80 | (unit & 0x3F));
    } else {
      dest[written++] = CharOf(0xE0 | unit >> 12);
      dest[written++] = CharOf(0x80 | (unit >> 6 & 0x3F));
      dest[written++] = CharOf(0x80 | (unit & 0x3F));
    }
  } while (used < size && written < dest_size - 1);
  dest[written] = '\0';
  return used / 2;
}

int GbkToUcs2(std::uint16_t* dest, const unsigned char* source, int max) {
  int units = 0;
  if (dest == nullptr) {
    for (int at = 0; source[at] != 0; ++units) at += source[at] > 0x80 ? 2 : 1;
    return units;
  }
  for (int at = 0; source[at] != 0 && units < max; ++units) {
    const unsigned lead = source[at++];
    unsigned unit = lead;
    if (lead == 0x80 || lead == 0xFF) unit = kNoUnit;
    if (lead > 0x80 && lead < 0xFF) unit = UnitOfPair(lead, source[at++]);
    dest[units] = static_cast<std::uint16_t>(unit);
  }
  return units;
}

int Ucs2ToGbk(char* dest, const std::uint16_t* source, int dest_size) {
  int bytes = 0;
  if (dest == nullptr) {
    for (; *source != 0; ++source) bytes += *source < 0x80 ? 1 : 2;
    return bytes;
  }
  if (*source == 0) return 0;
  for (; *source != 0; ++source) {
    const bool is_room = bytes < dest_size - 1 && (*source < 0x80 || dest_size - bytes >= 3);
    if (!is_room) {
      dest[bytes] = '\0';
      return bytes;
    }
    if (*source < 0x80) {
      dest[bytes++] = CharOf(*source);
    } else {
      dest[bytes++] = CharOf(PairOfUnit(*source) % 256);
      dest[bytes++] = CharOf(PairOfUnit(*source) / 256);
    }
  }
  return bytes;
}

void GbkToUtf8(const char* source, char* dest, int dest_size) {
  const std::size_t length = std::strlen(source);
  std::vector<std::uint16_t> units(length + 1);
  const int count = GbkToUcs2(units.data(), reinterpret_cast<const unsigned char*>(source),
                              static_cast<int>(length));
  std::vector<unsigned char> bytes;
  for (const unsigned unit : units) {
    bytes.push_back(static_cast<unsigned char>(unit % 256));
    bytes.push_back(static_cast<unsigned char>(unit / 256));
  }
  UnicodeToUtf8(bytes.data(), 2 * count, dest, dest_size);
}

void Nation(int code, char* dest) {
  static const std::vector<Name> names = NamesOf(kExpectedNations);
  std::string name;
  if (code >= 1 && code <= 56) name = names.at(static_cast<std::size_t>(code) - 1).text;
  if (code == 97) name = "其他";
  if (code == 98) name = "外国血统中国籍人士";
  std::memcpy(dest, name.c_str(), name.size() + 1);
}

void Country(const char* code, char* dest) {
  static const std::vector<Name> names = NamesOf(kExpectedCountries);
  for (const Name& name : names) {
    if (std::strncmp(code, name.code.c_str(), name.code.size()) != 0) continue;
    std::copy(name.text.begin(), name.text.end(), dest);  // without a zero
    return;
  }
}

}  // namespace model
