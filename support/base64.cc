// Base64 over the standard alphabet and over a writable copy of it. Both are the same two loops;
// runs of ordinary input take sixteen characters at a time in the compiler's vector type, one
// source for SSE2 and Advanced SIMD.
#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

#include "quillonid/support.h"

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
using Bytes16 = std::uint8_t __attribute__((vector_size(16)));
using Signed16 = std::int8_t __attribute__((vector_size(16)));
using Halves2 = std::uint64_t __attribute__((vector_size(16)));

Bytes16 Where(Signed16 mask, int value) {
  return reinterpret_cast<Bytes16>(mask) & static_cast<std::uint8_t>(value);
}

std::uint32_t Word(const unsigned char* bytes) {
  std::uint32_t word;
  std::memcpy(&word, bytes, sizeof word);
  return word;
}

// Encodes 12 bytes as 16 characters; reads one byte more.
void EncodeTwelve(const unsigned char* in, char* out) {
  // Each word holds three input bytes, the first one lowest; its four indexes go to the four bytes.
  const Words4 in_words = {Word(in), Word(in + 3), Word(in + 6), Word(in + 9)};
  const Words4 words =
      (in_words >> 2 & 0x3F) | ((in_words << 12 & 0x3000) | (in_words >> 4 & 0x0F00)) |
      ((in_words << 10 & 0x3C0000) | (in_words >> 6 & 0x030000)) | (in_words << 8 & 0x3F000000);
  const auto index = reinterpret_cast<Signed16>(words);
  // "A" to "Z" lie at 65, "a" to "z" 6 further; "0" to "9" 75 back from there, and so on.
  const Bytes16 text = reinterpret_cast<Bytes16>(index) + 'A' + Where(index > 25, 6) +
                       Where(index > 51, -75) + Where(index > 61, -15) + Where(index > 62, 3);
  std::memcpy(out, &text, sizeof text);
}

// Decodes 16 characters to 12 bytes. False, with nothing written, when one of them is "=" or a
// stranger.
bool DecodeSixteen(const char* in, unsigned char* out) {
  Bytes16 text;
  std::memcpy(&text, in, sizeof text);
  const Bytes16 upper = text - 'A', lower = text - 'a', digit = text - '0';
  const Signed16 is_upper = upper < 26, is_lower = lower < 26, is_digit = digit < 10;
  const Signed16 is_plus = text == '+', is_slash = text == '/';
  const auto known = reinterpret_cast<Halves2>(is_upper | is_lower | is_digit | is_plus | is_slash);
  if ((known[0] & known[1]) != ~std::uint64_t{0}) return false;

  const Bytes16 index = text + Where(is_upper, -65) + Where(is_lower, -71) + Where(is_digit, 4) +
                        Where(is_plus, 19) + Where(is_slash, 16);
  const auto in_words = reinterpret_cast<Words4>(index);
  const Words4 words = (in_words << 2 & 0xFC) | (in_words >> 12 & 0x03) | (in_words << 4 & 0xF000) |
                       (in_words >> 10 & 0x0F00) | (in_words << 6 & 0xC00000) |
                       (in_words >> 8 & 0x3F0000);
  // Each word holds three bytes: two of them make six, twice.
  const auto pairs = reinterpret_cast<Halves2>(words);
  const Halves2 sixes = (pairs & 0xFFFFFF) | (pairs >> 8 & 0xFFFFFF000000);
  const std::uint64_t first = sixes[0] | sixes[1] << 48;
  const auto last = static_cast<std::uint32_t>(sixes[1] >> 16);
  std::memcpy(out, &first, sizeof first);
  std::memcpy(out + sizeof first, &last, sizeof last);
  return true;
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
  if (IsStandard(alphabet)) {
    for (; left > 12; left -= 12, in += 12, out += 16) EncodeTwelve(in, out);
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
  for (int left = inLen; left > 3;) {
    if (standard && left >= 16 && outSize - count >= 12 && DecodeSixteen(in, out + count)) {
      in += 16;
      left -= 16;
      count += 12;
      continue;
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
