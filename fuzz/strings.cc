// The string, hex and BCD helpers, each against what its header says in plain arithmetic.
#include <climits>
#include <cstring>
#include <string>

#include "fuzz/check.h"
#include "fuzz/guarded.h"
#include "fuzz/input.h"
#include "quillonid/link.h"

namespace {

int Size(const Bytes& bytes) { return static_cast<int>(bytes.size()); }

std::string Hex(const Bytes& bytes, const char* digits) {
  std::string text;
  for (const std::uint8_t byte : bytes) {
    text += digits[byte / 16];
    text += digits[byte % 16];
  }
  return text;
}

// Value that any character has for the packing helpers, by the range of its code.
unsigned Value(std::uint8_t c) {
  if (c > 0x60) return c - 0x57U;
  if (c > 0x40) return c - 0x37U;
  if (c > 0x2F) return c - 0x30U;
  return c % 16U;
}

// Pairs of characters to bytes; a last one alone fills the high nibble.
Bytes Packed(const Bytes& text) {
  Bytes out;
  for (std::size_t i = 0; i < text.size(); i += 2) {
    const unsigned low = i + 1 < text.size() ? Value(text[i + 1]) : 0;
    out.push_back(static_cast<std::uint8_t>((Value(text[i]) * 16 | low) % 256));
  }
  return out;
}

int Digit(std::uint8_t c) {
  const std::string digits = "0123456789abcdef";
  const std::size_t at = digits.find(static_cast<char>(c >= 'A' && c <= 'F' ? c + ('a' - 'A') : c));
  return c == 0 || at == std::string::npos ? -1 : static_cast<int>(at);
}

// Pairs of digits to bytes; what is no digit counts as all ones.
Bytes Merged(const Bytes& text) {
  Bytes out;
  for (std::size_t i = 0; i + 1 < text.size(); i += 2) {
    const int high = Digit(text[i]), low = Digit(text[i + 1]);
    out.push_back(static_cast<std::uint8_t>(((high * 16) | low) & 0xFF));
  }
  return out;
}

void Nibbles(const Bytes& bytes) {
  const Exact<unsigned char> in(bytes);
  Guarded split(2 * bytes.size()), merged(bytes.size() / 2);
  Str_ZelModeSplitData(in.get(), Size(bytes), split.bytes());
  Str_ZelModeMergeData(in.get(), Size(bytes), merged.bytes());
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    unsigned char high = 0, low = 0, back = 0;
    FUZZ_CHECK(split.bytes()[2 * i] == bytes[i] / 16 + 0x30);
    FUZZ_CHECK(split.bytes()[2 * i + 1] == bytes[i] % 16 + 0x30);
    FUZZ_CHECK(Str_localSplitHex2Asc(bytes[i], &high, &low) == 0);
    FUZZ_CHECK(high == bytes[i] / 16 + 0x30 && low == bytes[i] % 16 + 0x30);
    FUZZ_CHECK(Str_localMergeAsc2Hex(&back, high, low) == 0 && back == bytes[i]);
  }
  if (bytes.size() % 2 != 0) FUZZ_CHECK(merged.UntouchedFrom(0));
  for (std::size_t i = 0; bytes.size() % 2 == 0 && i < merged.size(); ++i) {
    FUZZ_CHECK(merged.bytes()[i] == bytes[2 * i] % 16 * 16 + bytes[2 * i + 1] % 16);
  }
}

void CheckBytes(const Bytes& bytes, std::uint8_t byte) {
  const Exact<unsigned char> in(bytes);
  unsigned sum = 0;
  for (const std::uint8_t each : bytes) sum ^= each;
  FUZZ_CHECK(Str_CalcLrc(in.get(), Size(bytes)) == static_cast<int>(sum));
  FUZZ_CHECK(Str_GetDataLRC(in.get(), Size(bytes)) == sum);

  const auto found = std::find(bytes.begin(), bytes.end(), byte);
  const unsigned char* const sign = Str_localFindMsgSign(in.get(), Size(bytes), byte);
  FUZZ_CHECK(found == bytes.end() ? sign == nullptr : sign == in.get() + (found - bytes.begin()));
  std::size_t kept = bytes.size();
  while (kept > 0 && bytes[kept - 1] == byte) --kept;
  FUZZ_CHECK(Str_GetDataDeleteChar(in.get(), Size(bytes), byte) == static_cast<int>(kept));

  if (bytes.size() < 16) return;
  Guarded both(8);
  Str_localXor(in.get(), in.get() + 8, both.bytes());
  for (std::size_t i = 0; i < 8; ++i) FUZZ_CHECK(both.bytes()[i] == (bytes[i] ^ bytes[i + 8]));
}

void Numbers(Input& input) {
  const int value = static_cast<int>(input.Word());
  const int size = input.Between(-1, 9);
  Guarded bcd(4), one(1), big(static_cast<std::size_t>(std::max(size, 0)));
  int length = 55;
  const bool fits = value >= 0 && value <= 99999999;
  FUZZ_CHECK(Str_IntTo4Bcd(value, bcd.bytes(), &length) == (fits ? 0 : -1));
  FUZZ_CHECK(length == (fits ? 4 : 55));
  const int parts[] = {value / 1000000, value / 10000, value / 100, value % 100};
  for (std::size_t i = 0; i < 4; ++i) {
    const bool set = fits && parts[i] <= 99;
    FUZZ_CHECK(bcd.bytes()[i] == (set ? parts[i] / 10 * 16 + parts[i] % 10 : kUntouched));
  }
  const bool two_digits = value >= 0 && value <= 99;
  FUZZ_CHECK(Str_ByteToBcd(value, one.bytes()) == (two_digits ? 0 : -1));
  FUZZ_CHECK(one.bytes()[0] == (two_digits ? value / 10 * 16 + value % 10 : kUntouched));

  const auto number = static_cast<unsigned>(value);
  FUZZ_CHECK(Str_DesNumtoHex(number, big.bytes(), size) == 0);
  for (int i = 0; i < size; ++i) {
    const int shift = size - 1 - i;
    const unsigned expected = shift > 3 ? 0 : number >> 8 * shift & 0xFF;
    FUZZ_CHECK(big.bytes()[i] == expected);
  }
  if (size < 4) return;
  unsigned back = 0;
  Str_Char4ToInt(&back, big.bytes() + size - 4);
  FUZZ_CHECK(back == number);
}

void ToHex(const Bytes& bytes) {
  const Exact<unsigned char> in(bytes);
  const std::string upper = Hex(bytes, "0123456789ABCDEF"), lower = Hex(bytes, "0123456789abcdef");
  for (std::size_t count : {upper.size(), upper.size() - std::min<std::size_t>(upper.size(), 1)}) {
    Guarded out(count + 1);
    FUZZ_CHECK(Str_HexToAsc(in.get(), static_cast<int>(count), out.text()) == 0);
    FUZZ_CHECK(out.FirstAsText(count + 1) == upper.substr(0, count) + '\0');
  }
  Guarded split(upper.size()), local(lower.size() + 1);
  Str_SplitHexToBCD(in.get(), Size(bytes), split.text());
  FUZZ_CHECK(split.FirstAsText(upper.size()) == upper);
  FUZZ_CHECK(Str_localSplitHexToBCD(in.get(), Size(bytes), local.text()) == 0);
  if (!bytes.empty()) FUZZ_CHECK(local.Text() == lower);

  std::uint64_t value = 0;
  for (const std::uint64_t byte : bytes) value = value * 100 + byte / 16 * 10 + byte % 16;
  FUZZ_CHECK(Str_BcdtoUint64(in.get(), Size(bytes)) == value);
}

void FromHex(const Bytes& bytes, int n) {
  const Exact<char> text(bytes.data(), bytes.size());
  const Bytes packed = Packed(bytes), merged = Merged(bytes);
  Guarded hex((bytes.size() + 1) / 2), pairs(bytes.size() / 2), local(bytes.size() / 2);
  FUZZ_CHECK(Str_AscToHex(text.get(), Size(bytes), hex.bytes()) == 0);
  FUZZ_CHECK(hex.First(hex.size()) == packed);

  const bool even = bytes.size() % 2 == 0;
  FUZZ_CHECK(Str_MergeBcdToHex(text.get(), Size(bytes), pairs.bytes()) ==
             (even ? Size(bytes) / 2 : 0));
  FUZZ_CHECK(even ? pairs.First(pairs.size()) == merged : pairs.UntouchedFrom(0));
  FUZZ_CHECK(Str_localMergeBcdToHex(text.get(), Size(bytes), local.bytes()) ==
             (bytes.size() == 1 ? -1 : Size(bytes) / 2));
  if (bytes.size() != 1) FUZZ_CHECK(local.First(local.size()) == merged);
  for (const std::uint8_t byte : bytes) {
    FUZZ_CHECK(Str_localHexCharToNum(static_cast<char>(byte)) == Digit(byte));
  }

  const std::size_t digits = 2 * static_cast<std::size_t>(std::max(n, 0));
  Bytes right(digits - std::min(digits, bytes.size()), '0'), left = bytes;
  right.insert(right.end(), bytes.begin(), bytes.end());
  right.resize(digits);
  left.resize(digits, 'F');
  Guarded bcd(digits / 2), cn(digits / 2);
  FUZZ_CHECK(Str_AsciiToBcd(text.get(), Size(bytes), bcd.bytes(), n) == std::max(n, 0));
  FUZZ_CHECK(Str_AsciiToCn(text.get(), Size(bytes), cn.bytes(), n) == std::max(n, 0));
  FUZZ_CHECK(bcd.First(digits / 2) == Packed(right));
  FUZZ_CHECK(cn.First(digits / 2) == Packed(left));
}

void Texts(Input& input) {
  const std::string separator = input.Text(8);
  const std::string text = input.RestAsText();
  const Exact<char> text_block(text), separator_block(separator);
  std::string trimmed;
  for (const char c : text) {
    if (c != ' ' && c != '\t' && c != '\r' && c != '\n') trimmed += c;
  }
  Guarded work(text.size() + 1);
  std::memcpy(work.bytes(), text.c_str(), text.size() + 1);
  FUZZ_CHECK(Str_strsTrim(work.text()) == work.text() && work.Text() == trimmed);

  const std::size_t at = separator.empty() ? std::string::npos : text.find(separator);
  const std::size_t part = at == std::string::npos ? 0 : at;
  Guarded out(part);
  FUZZ_CHECK(Str_GetSplitData(text_block.get(), separator_block.get(), out.text()) ==
             (at == std::string::npos ? -2 : 0));
  FUZZ_CHECK(out.FirstAsText(part) == text.substr(0, part));
}

bool IsLetter(char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }

// Three digits at `at`, or -1.
int LengthAt(const std::string& text, std::size_t at) {
  int length = 0;
  for (std::size_t i = at; i < at + 3; ++i) {
    if (i >= text.size() || text[i] < '0' || text[i] > '9') return -1;
    length = length * 10 + (text[i] - '0');
  }
  return length;
}

std::size_t FindRecord(const std::string& tag, const std::string& text) {
  for (std::size_t at = 0; at < text.size();) {
    if (text.compare(at, tag.size(), tag) == 0) return at;
    if (!IsLetter(text[at])) {
      ++at;
      continue;
    }
    const int length = LengthAt(text, at + 1);
    if (length < 0 || length > 128) return std::string::npos;
    at += 4 + static_cast<std::size_t>(length);
    if (at > text.size()) return std::string::npos;
  }
  return std::string::npos;
}

void Tags(Input& input) {
  const std::string tag = input.Text(4);
  const std::string text = input.RestAsText();
  const Exact<char> tag_block(tag), text_block(text);
  const int tag_length = static_cast<int>(tag.size());
  const std::size_t at = tag.empty() ? std::string::npos : FindRecord(tag, text);
  const char* const found = Str_FindTagApp(tag_block.get(), tag_length, text_block.get());
  FUZZ_CHECK(at == std::string::npos ? found == nullptr : found == text_block.get() + at);

  std::string value;
  bool good = false;
  if (at != std::string::npos) {
    const int length = LengthAt(text, at + tag.size());
    good = length >= 0;
    if (length > 0) value = text.substr(at + tag.size() + 3, static_cast<std::size_t>(length));
  }
  Guarded out(999);
  int length = 77;
  FUZZ_CHECK(Str_GetTagValueApp(tag_block.get(), tag_length, text_block.get(), 0, out.text(),
                                &length) == (good ? 0 : -1));
  FUZZ_CHECK(length == static_cast<int>(value.size()));
  FUZZ_CHECK(out.FirstAsText(value.size()) == value && out.UntouchedFrom(value.size()));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input input(data, size);
  switch (input.Byte() % 7) {
    case 0:
      Nibbles(input.Rest());
      break;
    case 1: {
      const std::uint8_t byte = input.Byte();
      CheckBytes(input.Rest(), byte);
      break;
    }
    case 2:
      Numbers(input);
      break;
    case 3:
      ToHex(input.Rest());
      break;
    case 4: {
      const int n = input.Between(-1, 40);
      FromHex(input.Rest(), n);
      break;
    }
    case 5:
      Texts(input);
      break;
    default:
      Tags(input);
      break;
  }
  return 0;
}
