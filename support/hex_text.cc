#include "support/hex_text.h"

#include "support/byte_shuffle.h"

namespace {

constexpr char kDigits[] = "0123456789ABCDEF";

QL_BYTE_SHUFFLE inline void WriteSixteen(const std::uint8_t* bytes, char* text) {
  const Bytes16 in = Load16(bytes);
  const Bytes16 high = LookUp(Load16(kDigits), in >> 4);
  const Bytes16 low = LookUp(Load16(kDigits), in & 0x0F);
  const Bytes16 first =
      __builtin_shufflevector(high, low, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
  const Bytes16 second = __builtin_shufflevector(high, low, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28,
                                                 13, 29, 14, 30, 15, 31);
  Store16(first, text);
  Store16(second, text + 16);
}

// The sixteens that can be taken whole. Returns the bytes taken.
QL_BYTE_SHUFFLE std::size_t WriteSixteens(const std::uint8_t* bytes, std::size_t size, char* text) {
  std::size_t taken = 0;
  for (; size - taken >= 16; taken += 16) WriteSixteen(bytes + taken, text + 2 * taken);
  return taken;
}

}  // namespace

void WriteHexUpper(const std::uint8_t* bytes, std::size_t size, char* text) {
  for (std::size_t i = HasByteShuffle() ? WriteSixteens(bytes, size, text) : 0; i < size; ++i) {
    text[2 * i] = kDigits[bytes[i] >> 4];
    text[2 * i + 1] = kDigits[bytes[i] & 0x0F];
  }
}
