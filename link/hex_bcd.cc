// Bytes, hex characters, packed decimal digits (BCD) and the characters of the reader's line, which
// are nibble + 0x30. Bytes are unsigned, whatever plain char is.
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "link/str.h"
#include "quillonid/link.h"
#include "support/hex_text.h"

namespace {

constexpr int kFailed = -1;

unsigned char LineCharacter(int nibble) { return static_cast<unsigned char>(nibble + 0x30); }

// Value of a hex character. Every other byte has one too, by the class that its code falls into;
// from 0x71 on it is more than a nibble.
unsigned HexValue(unsigned char c) {
  if (c >= 0x61) return c - 0x57U;
  if (c > 0x40) return c - 0x37U;
  if (c > 0x2F) return c - 0x30U;
  return c & 0x0FU;
}

// Packs `count` characters two to a byte; an odd count leaves the last low nibble zero.
// `character(i)` is the i-th one.
template <typename Character>
void PackHex(std::int64_t count, unsigned char* out, Character character) {
  for (std::int64_t i = 0; i < count; ++i) {
    const unsigned value = HexValue(static_cast<unsigned char>(character(i)));
    unsigned char& byte = out[i / 2];
    byte = static_cast<unsigned char>(i % 2 == 0 ? value << 4 : byte | value);
  }
}

// Whole pairs of hex characters to bytes; a character that is none counts as all ones. Returns the
// bytes written.
int MergePairs(const char* text, int len, unsigned char* out) {
  for (int i = 0; i + 1 < len; i += 2) {
    const auto high = static_cast<unsigned>(Str_localHexCharToNum(text[i]));
    const auto low = static_cast<unsigned>(Str_localHexCharToNum(text[i + 1]));
    *out++ = static_cast<unsigned char>(high << 4 | low);
  }
  return len / 2;
}

}  // namespace

QL_API void Str_ZelModeSplitData(const unsigned char* in, int len, unsigned char* out) {
  if (!in || !out) return;
  for (int i = 0; i < len; ++i) {
    *out++ = LineCharacter(in[i] >> 4);
    *out++ = LineCharacter(in[i] & 0x0F);
  }
}

QL_API void Str_ZelModeMergeData(const unsigned char* in, int len, unsigned char* out) {
  if (!in || !out || len % 2 != 0) return;
  for (int i = 0; i < len; i += 2) {
    *out++ = static_cast<unsigned char>(in[i] << 4 | (in[i + 1] & 0x0F));
  }
}

QL_API int Str_localSplitHex2Asc(unsigned char byte, unsigned char* high, unsigned char* low) {
  if (!high || !low) return 0;
  *high = LineCharacter(byte >> 4);
  *low = LineCharacter(byte & 0x0F);
  return 0;
}

QL_API int Str_localMergeAsc2Hex(unsigned char* out, unsigned char high, unsigned char low) {
  if (out) *out = static_cast<unsigned char>((high & 0x0F) * 16 + (low - 0x30));
  return 0;
}

QL_API int Str_ByteToBcd(int value, unsigned char* out) {
  if (value < 0 || value > 99 || !out) return kFailed;
  *out = static_cast<unsigned char>(value / 10 << 4 | value % 10);
  return 0;
}

QL_API int Str_IntTo4Bcd(int value, unsigned char* out, int* outLen) {
  if (value < 0 || value > 99999999 || !out || !outLen) return kFailed;
  // On purpose: the middle quotients are not taken modulo 100, and one above 99 leaves its byte.
  Str_ByteToBcd(value / 1000000, out);
  Str_ByteToBcd(value / 10000, out + 1);
  Str_ByteToBcd(value / 100, out + 2);
  Str_ByteToBcd(value % 100, out + 3);
  *outLen = 4;
  return 0;
}

QL_API uint64_t Str_BcdtoUint64(const unsigned char* bcd, int len) {
  if (!bcd) return 0;
  std::uint64_t value = 0;
  for (int i = 0; i < len; ++i) {
    value = value * 10 + (bcd[i] >> 4U);
    value = value * 10 + (bcd[i] & 0x0FU);
  }
  return value;
}

QL_API int Str_AscToHex(const char* text, int len, unsigned char* out) {
  if (!text || !out || len < 0) return kFailed;
  PackHex(len, out, [text](std::int64_t i) { return text[i]; });
  return 0;
}

QL_API int Str_AsciiToBcd(const char* text, int len, unsigned char* out, int n) {
  if (!text || !out || len < 0 || n < 1) return 0;
  const std::int64_t count = std::int64_t{2} * n;
  const std::int64_t padding = std::max<std::int64_t>(count - len, 0);
  PackHex(count, out, [=](std::int64_t i) { return i < padding ? '0' : text[i - padding]; });
  return n;
}

QL_API int Str_AsciiToCn(const char* text, int len, unsigned char* out, int n) {
  if (!text || !out || len < 0 || n < 1) return 0;
  PackHex(std::int64_t{2} * n, out, [=](std::int64_t i) { return i < len ? text[i] : 'F'; });
  return n;
}

QL_API int Str_HexToAsc(const unsigned char* data, int count, char* out) {
  if (!data || !out) return kFailed;
  const auto digits = static_cast<std::size_t>(std::max(count, 0));
  WriteHexUpper(data, digits / 2, out);
  if (digits % 2 != 0) {
    char last[2];
    WriteHexUpper(data + digits / 2, 1, last);
    out[digits - 1] = last[0];
  }
  out[digits] = '\0';
  return 0;
}

QL_API void Str_SplitHexToBCD(const unsigned char* data, int len, char* out) {
  if (data && out && len > 0) WriteHexUpper(data, static_cast<std::size_t>(len), out);
}

QL_API int Str_MergeBcdToHex(const char* text, int len, unsigned char* out) {
  if (!text || !out || len <= 0 || len % 2 != 0) return 0;
  return MergePairs(text, len, out);
}

QL_API int Str_localHexCharToNum(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

QL_API int Str_localSplitHexToBCD(const unsigned char* data, int len, char* out) {
  if (!data || !out || len < 0) return kFailed;
  constexpr char kDigits[] = "0123456789abcdef";
  for (int i = 0; i < len; ++i) {
    *out++ = kDigits[data[i] >> 4];
    *out++ = kDigits[data[i] & 0x0F];
    *out = '\0';
  }
  return 0;
}

QL_API int Str_localMergeBcdToHex(const char* text, int len, unsigned char* out) {
  if (!text || !out || len < 0 || len == 1) return kFailed;
  return MergePairs(text, len, out);
}

QL_API void Str_Char4ToInt(unsigned int* out, const unsigned char* bytes) {
  if (!out || !bytes) return;
  *out = std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 |
         std::uint32_t{bytes[2]} << 8 | bytes[3];
}

QL_API int Str_DesNumtoHex(unsigned int value, unsigned char* out, int n) {
  if (!out) return 0;
  for (int i = n - 1; i >= 0; --i) {
    out[i] = static_cast<unsigned char>(value & 0xFFU);
    value >>= 8;  // Bytes above the fourth are 0.
  }
  return 0;
}
