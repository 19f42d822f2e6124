#include "link/str.h"

#include <algorithm>
#include <cstring>

#include "quillonid/link.h"
#include "quillonid/results.h"
#include "support/hex_text.h"
#include "support/log.h"

namespace {

constexpr int kFailed = -1;

constexpr char kUpperDigits[] = "0123456789ABCDEF";
constexpr char kLowerDigits[] = "0123456789abcdef";

constexpr int kTagDigits = 3;  // decimal digits of a record's length
constexpr std::size_t kTagHead = 1 + kTagDigits;
constexpr std::size_t kLeastBehindLetter = 4;  // characters; fewer end the search
constexpr int kTagLengthLimit = 129;           // a record of this length or more ends the search

unsigned char ModeCharacter(unsigned nibble) { return static_cast<unsigned char>(nibble + 0x30); }

// The reader's classes of characters; what is no hex digit gives a value too, kept to 8 bits.
unsigned char AscNibble(unsigned char c) {
  if (c >= 0x61) return static_cast<unsigned char>(c - 0x57);
  if (c > 0x40) return static_cast<unsigned char>(c - 0x37);
  if (c > 0x2F) return static_cast<unsigned char>(c - 0x30);
  return c & 0x0F;
}

// Packs `count` characters, given one by one, two to a byte; an odd last one fills the high half.
template <typename CharacterAt>
void PackNibbles(int count, CharacterAt character_at, unsigned char* out) {
  for (int i = 0; i < count; i += 2) {
    const unsigned high = AscNibble(character_at(i));
    const unsigned low = i + 1 < count ? AscNibble(character_at(i + 1)) : 0;
    out[i / 2] = static_cast<unsigned char>(high << 4 | low);
  }
}

int HexDigitValue(unsigned char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

// Pairs of hex characters to bytes; a character that is none counts as all ones.
int MergePairs(const char* text, int len, unsigned char* out) {
  for (int i = 0; i + 1 < len; i += 2) {
    const auto high = static_cast<unsigned>(Str_localHexCharToNum(text[i]));
    const auto low = static_cast<unsigned>(Str_localHexCharToNum(text[i + 1]));
    out[i / 2] = static_cast<unsigned char>(high << 4 | low);
  }
  return len / 2;
}

void SplitPairs(const unsigned char* data, int len, const char (&digits)[17], char* out) {
  for (int i = 0; i < len; ++i) {
    *out++ = digits[data[i] >> 4];
    *out++ = digits[data[i] & 0x0F];
  }
}

bool IsLetter(unsigned char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }

unsigned char LowerCase(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte >= 'A' && byte <= 'Z' ? static_cast<unsigned char>(byte + 0x20) : byte;
}

// Value of the three decimal digits at `text`, or -1.
int RecordLength(const char* text) {
  int length = 0;
  for (int i = 0; i < kTagDigits; ++i) {
    if (text[i] < '0' || text[i] > '9') return -1;
    length = length * 10 + (text[i] - '0');
  }
  return length;
}

// A null text logs as such.
const char* Shown(const char* text) { return text ? text : "(null)"; }

}  // namespace

std::span<const unsigned char> PacketBody(std::uint8_t head, std::uint8_t end,
                                          std::span<const unsigned char> packet) {
  const auto first = std::find(packet.begin(), packet.end(), head);
  if (packet.end() - first < 3) return {};  // No head, or no room for a body and an end.
  const auto body = first + 1;
  const auto last = std::find(body, packet.end(), end);
  if (last == packet.end()) return {};
  return {body, last};
}

bool StartsIgnoringCase(const char* text, const char* word) {
  for (; *word; ++text, ++word) {
    if (LowerCase(*text) != LowerCase(*word)) return false;
  }
  return true;
}

bool EqualsIgnoringCase(const char* text, const char* word) {
  return std::strlen(text) == std::strlen(word) && StartsIgnoringCase(text, word);
}

void Str_ZelModeSplitData(const unsigned char* in, int len, unsigned char* out) {
  if (!in || !out) return;
  for (int i = 0; i < len; ++i) {
    *out++ = ModeCharacter(in[i] >> 4);
    *out++ = ModeCharacter(in[i] & 0x0F);
  }
}

void Str_ZelModeMergeData(const unsigned char* in, int len, unsigned char* out) {
  if (!in || !out || len < 1 || len % 2 != 0) return;
  for (int i = 0; i < len; i += 2)
    out[i / 2] = static_cast<unsigned char>(in[i] << 4 | (in[i + 1] & 0x0F));
}

unsigned char Str_GetDataLRC(const unsigned char* data, int len) {
  unsigned char check = 0;
  for (int i = 0; data && i < len; ++i) check ^= data[i];
  return check;
}

int Str_CalcLrc(const unsigned char* data, int len) { return Str_GetDataLRC(data, len); }

int Str_GetPacketBody(std::uint8_t head, std::uint8_t end, const unsigned char* buffer, int len,
                      unsigned char* out) {
  if (!buffer || !out || len < 1) return kFailed;
  const auto body = PacketBody(head, end, {buffer, static_cast<std::size_t>(len)});
  if (body.empty()) return kFailed;
  std::memcpy(out, body.data(), body.size());
  return static_cast<int>(body.size());
}

int Str_ByteToBcd(int value, unsigned char* out) {
  if (!out || value < 0 || value > 99) return kFailed;
  *out = static_cast<unsigned char>(value / 10 << 4 | value % 10);
  return 0;
}

int Str_IntTo4Bcd(int value, unsigned char* out, int* outLen) {
  if (!out || value < 0 || value > 99999999) return kFailed;
  // On purpose: the first three quotients are not reduced modulo 100, so a byte whose quotient
  // exceeds 99 stays as it was.
  Str_ByteToBcd(value / 1000000, out);
  Str_ByteToBcd(value / 10000, out + 1);
  Str_ByteToBcd(value / 100, out + 2);
  Str_ByteToBcd(value % 100, out + 3);
  if (outLen) *outLen = 4;
  return 0;
}

std::uint64_t Str_BcdtoUint64(const unsigned char* bcd, int len) {
  std::uint64_t value = 0;
  for (int i = 0; bcd && i < len; ++i) value = value * 100 + (bcd[i] >> 4) * 10U + (bcd[i] & 0x0F);
  return value;
}

int Str_AscToHex(const char* text, int len, unsigned char* out) {
  if (!text) return kFailed;
  if (!out) return 0;
  PackNibbles(
      len, [&](int i) { return static_cast<unsigned char>(text[i]); }, out);
  return 0;
}

int Str_AsciiToBcd(const char* text, int len, unsigned char* out, int n) {
  if (!text || !out || n < 1) return 0;
  const std::int64_t wanted = 2 * std::int64_t{n};
  const std::int64_t kept = std::clamp<std::int64_t>(len, 0, wanted);
  const std::int64_t padding = wanted - kept;
  for (std::int64_t byte = 0; byte < n; ++byte) {
    const auto nibble = [&](std::int64_t i) {
      return i < padding ? 0U : AscNibble(static_cast<unsigned char>(text[i - padding]));
    };
    out[byte] = static_cast<unsigned char>(nibble(2 * byte) << 4 | nibble(2 * byte + 1));
  }
  return n;
}

int Str_AsciiToCn(const char* text, int len, unsigned char* out, int n) {
  if (!text || !out || n < 1) return 0;
  for (std::int64_t byte = 0; byte < n; ++byte) {
    const auto nibble = [&](std::int64_t i) {
      return i < len ? AscNibble(static_cast<unsigned char>(text[i])) : 0x0FU;
    };
    out[byte] = static_cast<unsigned char>(nibble(2 * byte) << 4 | nibble(2 * byte + 1));
  }
  return n;
}

int Str_HexToAsc(const unsigned char* data, int count, char* out) {
  if (!data) return kFailed;
  if (!out) return 0;
  const int whole = count > 0 ? count / 2 : 0;
  WriteHexUpper(data, static_cast<std::size_t>(whole), out);
  if (count > 0 && count % 2 != 0) out[count - 1] = kUpperDigits[data[whole] >> 4];
  out[count > 0 ? count : 0] = '\0';
  return 0;
}

void Str_SplitHexToBCD(const unsigned char* data, int len, char* out) {
  if (data && out) SplitPairs(data, len, kUpperDigits, out);
}

int Str_MergeBcdToHex(const char* text, int len, unsigned char* out) {
  if (!text || !out || len < 1 || len % 2 != 0) return 0;
  return MergePairs(text, len, out);
}

int Str_localSplitHex2Asc(unsigned char byte, unsigned char* high, unsigned char* low) {
  if (high) *high = ModeCharacter(byte >> 4);
  if (low) *low = ModeCharacter(byte & 0x0F);
  return 0;
}

int Str_localMergeAsc2Hex(unsigned char* out, unsigned char high, unsigned char low) {
  if (out) *out = static_cast<unsigned char>(((high & 0x0F) << 4) + (low - 0x30));
  return 0;
}

int Str_localHexCharToNum(char c) { return HexDigitValue(static_cast<unsigned char>(c)); }

int Str_localSplitHexToBCD(const unsigned char* data, int len, char* out) {
  if (!data || !out) return kFailed;
  SplitPairs(data, len, kLowerDigits, out);
  out[len > 0 ? 2 * len : 0] = '\0';
  return 0;
}

int Str_localMergeBcdToHex(const char* text, int len, unsigned char* out) {
  if (!text || !out || len == 1) return kFailed;
  return len > 0 ? MergePairs(text, len, out) : 0;
}

void Str_localXor(const unsigned char* a, const unsigned char* b, unsigned char* out) {
  if (!a || !b || !out) return;
  for (int i = 0; i < 8; ++i) out[i] = a[i] ^ b[i];
}

unsigned char* Str_localFindMsgSign(const unsigned char* data, int len, unsigned char byte) {
  if (!data || len < 1) return nullptr;
  return static_cast<unsigned char*>(
      const_cast<void*>(std::memchr(data, byte, static_cast<std::size_t>(len))));
}

void Str_Char4ToInt(unsigned int* out, const unsigned char* bytes) {
  if (!out || !bytes) return;
  *out = std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 |
         std::uint32_t{bytes[2]} << 8 | bytes[3];
}

int Str_DesNumtoHex(unsigned int value, unsigned char* out, int n) {
  for (int i = 0; out && i < n; ++i) {
    const int above = n - 1 - i;  // bytes of less weight
    out[i] = above > 3 ? 0 : static_cast<unsigned char>(value >> (8 * above));
  }
  return 0;
}

int Str_GetDataDeleteChar(const unsigned char* data, int len, unsigned char byte) {
  if (!data || len < 1) return 0;
  while (len > 0 && data[len - 1] == byte) --len;
  return len;
}

char* Str_strsTrim(char* text) {
  if (!text) return nullptr;
  char* kept = text;
  for (const char* c = text; *c; ++c) {
    if (*c != ' ' && *c != '\r' && *c != '\t' && *c != '\n') *kept++ = *c;
  }
  *kept = '\0';
  return text;
}

int Str_GetSplitData(const char* text, const char* separator, char* out) {
  LOG_PUBLIC("[%s] Start szInPut = %s sPlit = %s ", __func__, Shown(text), Shown(separator));
  if (!text || !out || !separator || !*separator) return RET_PUB_INVAL_PARAM;
  const char* found = std::strstr(text, separator);
  if (!found) return RET_PUB_INVAL_PARAM;
  const std::size_t size = static_cast<std::size_t>(found - text);
  std::memcpy(out, text, size);
  const int length = static_cast<int>(size);
  LOG_PUBLIC("OutBuf = %.*s nLen = %d", length, out, length);
  return 0;
}

char* Str_FindTagApp(const char* tag, int tagLen, const char* text) {
  if (!tag || !text || tagLen < 1) return nullptr;
  const auto tag_size = static_cast<std::size_t>(tagLen);
  std::size_t left = std::strlen(text);
  while (left > 0) {
    if (left >= tag_size && std::memcmp(text, tag, tag_size) == 0) return const_cast<char*>(text);
    std::size_t step = 1;
    if (IsLetter(static_cast<unsigned char>(*text))) {
      if (left - 1 < kLeastBehindLetter) return nullptr;
      const int length = RecordLength(text + 1);
      if (length < 0 || length >= kTagLengthLimit ||
          static_cast<std::size_t>(length) > left - kTagHead)
        return nullptr;
      step = kTagHead + static_cast<std::size_t>(length);
    }
    text += step;
    left -= step;
  }
  return nullptr;
}

int Str_GetTagValueApp(const char* tag, int tagLen, const char* text, int /*ignored*/, char* out,
                       int* outLen) {
  LOG_PUBLIC("[%s] Start ", __func__);
  if (outLen) *outLen = 0;
  const char* record = text && out ? Str_FindTagApp(tag, tagLen, text) : nullptr;
  if (!record || std::strlen(record) < kTagHead) return kFailed;
  const char* digits = record + tagLen;
  const std::size_t left = std::strlen(digits);
  if (left < kTagDigits) return kFailed;
  const int stated = RecordLength(digits);
  if (stated < 0) return kFailed;
  const std::size_t size = std::min(static_cast<std::size_t>(stated), left - kTagDigits);
  std::memcpy(out, digits + kTagDigits, size);
  if (outLen) *outLen = static_cast<int>(size);
  LOG_PUBLIC("[%s] End   ", __func__);
  return 0;
}
