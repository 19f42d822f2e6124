#include "tests/testing/hex_text.h"

#include <cstdio>

std::string HexText(const void* data, std::size_t size) {
  std::string text;
  for (std::size_t i = 0; i < size; ++i) {
    char pair[4];
    std::snprintf(pair, sizeof pair, "%02X", static_cast<const unsigned char*>(data)[i]);
    if (i) text += ' ';
    text += pair;
  }
  return text;
}

std::vector<std::uint8_t> FromHex(const std::string& text) {
  std::vector<std::uint8_t> bytes;
  std::string digits;
  for (const char c : text) {
    if (c != ' ' && c != '\n') digits += c;
  }
  for (std::size_t i = 0; i + 1 < digits.size(); i += 2) {
    bytes.push_back(static_cast<std::uint8_t>(std::stoul(digits.substr(i, 2), nullptr, 16)));
  }
  return bytes;
}
