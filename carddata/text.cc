#include "carddata/text.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "carddata/gbk_table.h"

namespace {

unsigned char* Bytes(void* memory) { return static_cast<unsigned char*>(memory); }
const unsigned char* Bytes(const void* memory) { return static_cast<const unsigned char*>(memory); }

// Units are put together from bytes, low one first: a caller's text may lie at an odd address.
unsigned UnitAt(const unsigned char* bytes) { return bytes[0] | unsigned{bytes[1]} << 8; }

void StoreUnit(unsigned unit, unsigned char* bytes) {
  bytes[0] = static_cast<unsigned char>(unit);
  bytes[1] = static_cast<unsigned char>(unit >> 8);
}

char Byte(unsigned value) { return static_cast<char>(value); }

char* PutWide(unsigned unit, char* out) {
  out[0] = Byte(0xE0 | unit >> 12);
  out[1] = Byte(0x80 | (unit >> 6 & 0x3F));
  out[2] = Byte(0x80 | (unit & 0x3F));
  return out + 3;
}

// Writes one unit as UTF-8 and returns the place behind it. On purpose: surrogates are written one
// by one.
char* PutUnit(unsigned unit, char* out) {
  if (unit >= 0x800) return PutWide(unit, out);
  if (unit < 0x80) {
    out[0] = Byte(unit);
    return out + 1;
  }
  out[0] = Byte(0xC0 | unit >> 6);
  out[1] = Byte(0x80 | (unit & 0x3F));
  return out + 2;
}

// Blocks: runs of blanks and Latin letters, and runs of Chinese characters, several units at a
// time. A block ends before `limit`, so that the rule for stopping, which is tested after each
// unit, cannot apply inside it.

// A place in a UCS-2 text and in the UTF-8 made of it.
struct Position {
  const unsigned char* source;
  char* out;
};

// Four units as lanes of a word, in the order of a little-endian machine.
constexpr bool kHasLanes = std::endian::native == std::endian::little;

std::uint64_t FourUnits(const unsigned char* source) {
  std::uint64_t units;
  std::memcpy(&units, source, sizeof units);
  return units;
}

bool AreFourAscii(std::uint64_t units) { return (units & 0xFF80'FF80'FF80'FF80) == 0; }

// True when each unit takes three bytes: when no lane is without one of its upper five bits.
bool AreFourWide(std::uint64_t units) {
  const std::uint64_t upper = units & 0xF800'F800'F800'F800;
  return ((upper - 0x0001'0001'0001'0001) & ~upper & 0x8000'8000'8000'8000) == 0;
}

// The compiler's vector types: one source for SSE2 and Advanced SIMD.
using Units8 = std::uint16_t __attribute__((vector_size(16)));
using Bytes8 = std::uint8_t __attribute__((vector_size(8)));
using Units4 = std::uint16_t __attribute__((vector_size(8)));
using Bytes4 = std::uint8_t __attribute__((vector_size(4)));

template <typename Units, typename Narrow>
Position PutAsciiBlock(Position at) {
  Units units;
  std::memcpy(&units, at.source, sizeof units);
  const auto bytes = __builtin_convertvector(units, Narrow);
  std::memcpy(at.out, &bytes, sizeof bytes);
  return {at.source + sizeof units, at.out + sizeof bytes};
}

Position PutAsciiBlocks(Position at, const unsigned char* end, const char* limit) {
  while (end - at.source >= 16 && limit - at.out > 8 &&
         AreFourAscii(FourUnits(at.source) | FourUnits(at.source + 8))) {
    at = PutAsciiBlock<Units8, Bytes8>(at);
  }
  if (end - at.source >= 8 && limit - at.out > 4 && AreFourAscii(FourUnits(at.source))) {
    at = PutAsciiBlock<Units4, Bytes4>(at);
  }
  return at;
}

Position PutWideBlocks(Position at, const unsigned char* end, const char* limit) {
  while (end - at.source >= 8 && limit - at.out > 12 && AreFourWide(FourUnits(at.source))) {
    for (int i = 0; i < 4; ++i, at.source += 2) at.out = PutWide(UnitAt(at.source), at.out);
  }
  return at;
}

// Converts the blocks that start with `unit`, the next one, if there are any.
Position PutBlocks(unsigned unit, Position at, const unsigned char* end, const char* limit) {
  if (!kHasLanes) return at;
  if (unit < 0x80) return PutAsciiBlocks(at, end, limit);
  if (unit >= 0x800) return PutWideBlocks(at, end, limit);
  return at;
}

// The units of a GBK text, one at a time.
class GbkReader {
 public:
  // On purpose: positions have eight bits, so that a longer text counts modulo 256.
  explicit GbkReader(const char* source)
      : at_(Bytes(source)), end_(at_ + static_cast<std::uint8_t>(std::strlen(source))) {}

  bool AtEnd() const { return at_ == end_; }

  unsigned Next() {
    const unsigned lead = *at_++;
    if (lead < 0x80) return lead;
    if (lead < kFirstLead || lead > kLastLead || AtEnd()) return '?';
    const unsigned trail = *at_++;
    return trail < kFirstTrail ? '?' : Ucs2OfGbk(lead, trail);
  }

  // On purpose: to counting, a byte 0xFF starts a pair; to Next() it is a character alone.
  void SkipOne() {
    const unsigned lead = *at_++;
    if (lead > 0x80 && !AtEnd()) ++at_;
  }

 private:
  const unsigned char* at_;
  const unsigned char* end_;
};

int CountGbk(const char* source) {
  int units = 0;
  for (GbkReader reader(source); !reader.AtEnd(); reader.SkipOne()) ++units;
  return units;
}

int CountGbkBytes(const unsigned char* source) {
  int bytes = 0;
  for (; UnitAt(source) != 0; source += 2) bytes += UnitAt(source) < 0x80 ? 1 : 2;
  return bytes;
}

}  // namespace

Converted Ucs2ToUtf8(const unsigned char* source, int sourceLen, char* dest, int destSize) {
  const unsigned char* const end = source + sourceLen;
  const char* const limit = dest + (destSize - 1);
  Position at = {source, dest};
  do {
    if (end - at.source == 1) {  // The missing high byte counts as zero.
      at.out = PutUnit(*at.source++, at.out);
      break;
    }
    const unsigned unit = UnitAt(at.source);
    const Position behind = PutBlocks(unit, at, end, limit);
    at = behind.source != at.source ? behind : Position{at.source + 2, PutUnit(unit, at.out)};
  } while (at.source != end && at.out < limit);
  *at.out = '\0';
  return {static_cast<int>((at.source - source + 1) / 2), static_cast<int>(at.out - dest)};
}

int UnicodeToUTF8(const unsigned char* source, int sourceLen, char* dest, int destSize) {
  if (source == nullptr || dest == nullptr) return 0;
  if (sourceLen <= 0 || destSize <= 1) {
    dest[0] = '\0';
    return 0;
  }
  return Ucs2ToUtf8(source, sourceLen, dest, destSize).units;
}

void GBKToUTF8(const char* source, char* dest, int destSize) {
  if (dest == nullptr) return;
  char* out = dest;
  if (source != nullptr && destSize > 1) {
    const char* const limit = dest + (destSize - 1);
    GbkReader reader(source);
    while (!reader.AtEnd() && out < limit) out = PutUnit(reader.Next(), out);
  }
  *out = '\0';
}

int GbkToUcs2(uint16_t* dest, const char* source, int max) {
  if (source == nullptr) return -1;
  if (dest == nullptr) return CountGbk(source);
  unsigned char* out = Bytes(dest);
  int units = 0;
  for (GbkReader reader(source); !reader.AtEnd() && units < max; ++units, out += 2) {
    StoreUnit(reader.Next(), out);
  }
  return units;
}

int Ucs2ToGbk(char* dest, const uint16_t* source, int destSize) {
  if (source == nullptr) return -1;
  const unsigned char* in = Bytes(source);
  if (dest == nullptr) return CountGbkBytes(in);
  if (destSize < 1) return 0;
  int bytes = 0;
  for (; UnitAt(in) != 0; in += 2) {
    const unsigned unit = UnitAt(in);
    const int needed = unit < 0x80 ? 1 : 2;
    if (destSize - bytes <= needed) {  // On purpose: only a text that is cut ends in a zero.
      dest[bytes] = '\0';
      break;
    }
    if (needed == 1) {
      dest[bytes] = Byte(unit);
    } else {
      StoreUnit(GbkOfUcs2(unit), Bytes(dest + bytes));
    }
    bytes += needed;
  }
  return bytes;
}

int Ucs2Len(const uint16_t* text) {
  if (text == nullptr) return 0;
  int units = 0;
  for (const unsigned char* at = Bytes(text); UnitAt(at) != 0; at += 2) ++units;
  return units;
}

// They convert nothing and stay for the applications that call them.
int UnicodeToAnsi(int value) { return value; }
int GbkToUnicode(int value) { return value; }
