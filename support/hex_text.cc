#include "support/hex_text.h"

#include <cstring>

namespace {

// Sixteen bytes at a time in the compiler's vector type: one source for SSE2 and Advanced SIMD.
using Bytes16 = std::uint8_t __attribute__((vector_size(16)));

Bytes16 Digits(Bytes16 nibbles) {
  const Bytes16 letter = reinterpret_cast<Bytes16>(nibbles > 9);
  return nibbles + '0' + (letter & ('A' - '0' - 10));
}

void WriteSixteen(const std::uint8_t* bytes, char* text) {
  Bytes16 in;
  std::memcpy(&in, bytes, sizeof in);
  const Bytes16 high = Digits(in >> 4);
  const Bytes16 low = Digits(in & 0x0F);
  const Bytes16 first =
      __builtin_shufflevector(high, low, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
  const Bytes16 second = __builtin_shufflevector(high, low, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28,
                                                 13, 29, 14, 30, 15, 31);
  std::memcpy(text, &first, sizeof first);
  std::memcpy(text + sizeof first, &second, sizeof second);
}

}  // namespace

void WriteHexUpper(const std::uint8_t* bytes, std::size_t size, char* text) {
  for (; size >= 16; size -= 16, bytes += 16, text += 32) WriteSixteen(bytes, text);
  for (; size > 0; --size, ++bytes, text += 2) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    text[0] = kDigits[*bytes >> 4];
    text[1] = kDigits[*bytes & 0x0F];
  }
}
