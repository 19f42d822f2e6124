// Bytes written as hexadecimal text, made an array at compile time:
//   constexpr auto kSelect = Hex("AA AA AA 96 69 00 03 20 02 21");
#ifndef QUILLONID_SUPPORT_HEX_H
#define QUILLONID_SUPPORT_HEX_H

#include <array>
#include <cstddef>
#include <cstdint>

// Has no definition: a call that is evaluated at compile time is an error that names the reason.
void HexTextIsNotUpperCasePairsSeparatedByOneBlank();

consteval std::uint8_t HexNibble(char c) {
  if (c >= '0' && c <= '9') return static_cast<std::uint8_t>(c - '0');
  if (c >= 'A' && c <= 'F') return static_cast<std::uint8_t>(c - 'A' + 10);
  HexTextIsNotUpperCasePairsSeparatedByOneBlank();
  return 0;
}

template <std::size_t kSize>
consteval auto Hex(const char (&text)[kSize]) {
  static_assert(kSize % 3 == 0, "pairs separated by one blank");
  std::array<std::uint8_t, kSize / 3> bytes{};
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    bytes[i] = static_cast<std::uint8_t>(HexNibble(text[3 * i]) << 4 | HexNibble(text[3 * i + 1]));
    if (i + 1 < bytes.size() && text[3 * i + 2] != ' ') {
      HexTextIsNotUpperCasePairsSeparatedByOneBlank();
    }
  }
  return bytes;
}

#endif
