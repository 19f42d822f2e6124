// Bytes as hexadecimal text, "AA 96 69", so that a failed comparison shows both sides.
#ifndef QUILLONID_TESTS_TESTING_HEX_TEXT_H
#define QUILLONID_TESTS_TESTING_HEX_TEXT_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

std::string HexText(const void* data, std::size_t size);

template <typename Bytes>
std::string HexText(const Bytes& bytes) {
  return HexText(std::data(bytes), std::size(bytes) * sizeof(*std::data(bytes)));
}

// The reverse; blanks are skipped.
std::vector<std::uint8_t> FromHex(const std::string& text);

#endif
