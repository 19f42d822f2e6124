// Base64 over the standard alphabet and over a writable copy of it. Both are the same two loops;
// runs of ordinary input take sixteen characters at a time where the processor shuffles bytes.
#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

#include "quillonid/support.h"
#include "support/byte_shuffle.h"

namespace {

using Alphabet = std::array<char, 64>;  // no zero behind

constexpr Alphabet kStandard = [] {
  constexpr char kText[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  Alphabet alphabet{};
  std::copy_n(kText, alphabet.size(), alphabet.begin());
  return alphabet;
}();

// The alphabet of EncryptBase64() and DecryptBase64(). Applications may write to it through the
// result of IniBase64Table(), which sets it back.
Alphabet m_TabBase64 = kStandard;

// Position of each character: 0 for "=", -1 for strangers.
using Indexes = std::array<std::int16_t, 256>;

constexpr Indexes IndexesOf(const Alphabet& alphabet) {
  Indexes indexes{};
  indexes.fill(-1);
  for (std::size_t i = alphabet.size(); i-- > 0;) {
    indexes[static_cast<unsigned char>(alphabet[i])] = static_cast<std::int16_t>(i);
  }
  indexes['='] = 0;
  return indexes;
}

constexpr Indexes kStandardIndexes = IndexesOf(kStandard);

static_assert(std::endian::native == std::endian::little, "the words below are put together so");

using Words4 = std::uint32_t __attribute__((vector_size(16)));
using Halves8 = std::uint16_t __attribute__((vector_size(16)));
using Signed16 = std::int8_t __attribute__((vector_size(16)));

// What the fast paths look up: tables of sixteen, made from the alphabet.
struct Tables16 {
  Table16 shift;            // from a position to its character, by range of positions
  Table16 back;             // from a character to its position, by upper half; "/" stands at 1
  Table16 by_low, by_high;  // a common bit: the character with these halves is a stranger
};

// Range of a position: small letters, each character behind them, capitals.
constexpr int RangeOf(int position) {
  return position < 26 ? 13 : position < 52 ? 0 : position - 51;
}

consteval Tables16 MakeTables() {
  Tables16 tables = {};
  std::uint16_t known_lows[16] = {};  // by upper half: the lower halves that the alphabet has
  for (int position = 0; position < 64; ++position) {
    const int character = static_cast<unsigned char>(kStandard[static_cast<std::size_t>(position)]);
    const int high = character >> 4;
    tables.shift[RangeOf(position)] = static_cast<std::uint8_t>(character - position);
    tables.back[character == '/' ? 1 : high] = static_cast<std::uint8_t>(position - character);
    known_lows[high] |= static_cast<std::uint16_t>(1 << (character & 15));
  }
  // Upper halves with the same strangers share a bit: there are five such groups.
  int bits = 0;
  for (int high = 0; high < 16; ++high) {
    const auto* const like = std::find(known_lows, known_lows + high, known_lows[high]);
    tables.by_high[high] =
        like != known_lows + high ? tables.by_high[like - known_lows] : std::uint8_t(1 << bits++);
    for (int low = 0; low < 16; ++low) {
      if ((known_lows[high] >> low & 1) == 0) tables.by_low[low] |= tables.by_high[high];
    }
  }
  return tables;
}
constexpr Tables16 kTables = MakeTables();

// Encodes 12 bytes as 16 characters; reads 16.
QL_BYTE_SHUFFLE inline void EncodeTwelve(const unsigned char* in, char* out) {
  // Each word takes three bytes, the first one highest, and its four positions go to four bytes.
  constexpr Table16 kSpread = {2, 1, 0, 0x80, 5, 4, 3, 0x80, 8, 7, 6, 0x80, 11, 10, 9, 0x80};
  const auto words = reinterpret_cast<Words4>(LookUp(Load16(in), Load16(kSpread)));
  const auto position =
      reinterpret_cast<Signed16>((words >> 18 & 0x3F) | (words >> 4 & 0x3F00) |
                                 (words << 10 & 0x3F0000) | (words << 24 & 0x3F000000));
  const Signed16 range = ((position > 51) & (position - 51)) | ((position < 26) & 13);
  const Bytes16 shift = LookUp(Load16(kTables.shift), reinterpret_cast<Bytes16>(range));
  Store16(reinterpret_cast<Bytes16>(position) + shift, out);
}

// Decodes 16 characters to 12 bytes. False, with nothing written, when one of them is "=" or a
// stranger.
QL_BYTE_SHUFFLE inline bool DecodeSixteen(const char* in, unsigned char* out) {
  const Bytes16 text = Load16(in);
  const Bytes16 high = text >> 4;
  if (!IsZero(LookUp(Load16(kTables.by_low), text & 0x0F) &
              LookUp(Load16(kTables.by_high), high))) {
    return false;
  }
  const Bytes16 slash = reinterpret_cast<Bytes16>(text == '/');  // minus one
  const Bytes16 position = text + LookUp(Load16(kTables.back), high + slash);
  // Two positions make twelve bits, two of those the three bytes of a word, the first one highest.
  const auto ones = reinterpret_cast<Halves8>(position);
  const auto twos = reinterpret_cast<Words4>((ones << 6 | ones >> 8) & 0x0FFF);
  const Words4 fours = twos << 12 | twos >> 16;
  constexpr Table16 kGather = {2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, 0x80, 0x80, 0x80, 0x80};
  const Bytes16 bytes = LookUp(reinterpret_cast<Bytes16>(fours), Load16(kGather));
  std::memcpy(out, &bytes, 12);
  return true;
}

// The blocks of an input that can be taken whole. Returns the input taken.
QL_BYTE_SHUFFLE std::size_t EncodeBlocks(const unsigned char* in, std::size_t size, char* out) {
  std::size_t taken = 0;
  for (; size - taken >= 16; taken += 12, out += 16) EncodeTwelve(in + taken, out);
  return taken;
}

// The same up to the first block with a "=" or a stranger, for at most `room` bytes.
QL_BYTE_SHUFFLE int DecodeBlocks(const char* in, int size, unsigned char* out, int room) {
  int taken = 0;
  for (; size - taken >= 16 && room >= 12; taken += 16, out += 12, room -= 12) {
    if (!DecodeSixteen(in + taken, out)) break;
  }
  return taken;
}

// What the fast paths cannot take: the last bytes, and every alphabet but the standard one.
void EncodeGroup(const char* alphabet, const unsigned char* in, std::size_t count, char* out) {
  const unsigned second = count > 1 ? in[1] : 0;
  const unsigned third = count > 2 ? in[2] : 0;
  out[0] = alphabet[in[0] >> 2];
  out[1] = alphabet[(in[0] & 0x03U) << 4 | second >> 4];
  out[2] = count > 1 ? alphabet[(second & 0x0FU) << 2 | third >> 6] : '=';
  out[3] = count > 2 ? alphabet[third & 0x3FU] : '=';
}

bool IsStandard(const Alphabet& alphabet) {
  return std::memcmp(alphabet.data(), kStandard.data(), kStandard.size()) == 0;
}

int Encode(const Alphabet& alphabet, const unsigned char* in, int inLen, char* out, int outSize) {
  if (outSize < (std::int64_t{inLen} + 2) / 3 * 4) return -1;
  if (inLen < 1 || in == nullptr || out == nullptr) return 0;

  const char* const start = out;
  auto left = static_cast<std::size_t>(inLen);
  if (IsStandard(alphabet) && HasByteShuffle()) {
    const std::size_t taken = EncodeBlocks(in, left, out);
    in += taken;
    left -= taken;
    out += taken / 3 * 4;
  }
  while (left > 0) {
    const std::size_t count = std::min<std::size_t>(left, 3);
    EncodeGroup(alphabet.data(), in, count, out);
    left -= count;
    in += count;
    out += 4;
  }
  return static_cast<int>(out - start);
}

int Decode(const Indexes& indexes, bool standard, const char* in, int inLen, unsigned char* out,
           int outSize) {
  if (inLen < 4 || in == nullptr || out == nullptr) return 0;

  int count = 0;
  const bool in_blocks = standard && HasByteShuffle();
  for (int left = inLen; left > 3;) {
    if (in_blocks && left >= 16) {
      const int taken = DecodeBlocks(in, left, out + count, outSize - count);
      in += taken;
      left -= taken;
      count += taken / 4 * 3;
      if (left < 4) break;
    }
    for (int j = 0; j < 3; ++j) {
      if (in[j] == '=' || in[j + 1] == '=') return count;
      if (count > outSize) return -1;  // On purpose: one byte more than `outSize` may be written.
      // A stranger's -1 keeps its sign: all ones from the right shift, and from the left one all
      // ones above the zeros that came in.
      const int high = indexes[static_cast<unsigned char>(in[j])];
      const int low = indexes[static_cast<unsigned char>(in[j + 1])];
      const unsigned byte =
          static_cast<unsigned>(high) << (2 * j + 2) | static_cast<unsigned>(low >> (4 - 2 * j));
      out[count++] = static_cast<unsigned char>(byte);
    }
    in += 4;
    left -= 4;
  }
  return count;
}

}  // namespace

int Base64_EncData(const unsigned char* in, int inLen, char* out, int outSize) {
  return Encode(kStandard, in, inLen, out, outSize);
}

int Base64_DecData(const char* in, int inLen, unsigned char* out, int outSize) {
  return Decode(kStandardIndexes, true, in, inLen, out, outSize);
}

int EncryptBase64(const unsigned char* in, int inLen, char* out, int outSize) {
  return Encode(m_TabBase64, in, inLen, out, outSize);
}

int DecryptBase64(const char* in, int inLen, unsigned char* out, int outSize) {
  if (IsStandard(m_TabBase64)) return Base64_DecData(in, inLen, out, outSize);
  return Decode(IndexesOf(m_TabBase64), false, in, inLen, out, outSize);
}

int GetIndexFromTable(unsigned char c) { return kStandardIndexes[c]; }

int GetIndexFromBase64Table(unsigned char c) {
  if (c == '=') return 0;
  const auto* found = std::find(m_TabBase64.begin(), m_TabBase64.end(), static_cast<char>(c));
  return found == m_TabBase64.end() ? -1 : static_cast<int>(found - m_TabBase64.begin());
}

char* IniBase64Table() {
  m_TabBase64 = kStandard;
  return m_TabBase64.data();
}
