// Where fingerprint templates lie, the plain way, as the model of tFuncGetFpTemplate().
#ifndef QUILLONID_FUZZ_TEMPLATES_MODEL_H
#define QUILLONID_FUZZ_TEMPLATES_MODEL_H

#include <algorithm>
#include <cstdint>
#include <string>

#include "fuzz/input.h"

namespace templates {

inline constexpr std::size_t kNativeSize = 4096;
inline constexpr std::size_t kTextSize = 1025;

inline std::size_t Length(const Bytes& native, std::size_t at) {
  return native[at] * 256U + native[at + 1];
}

inline std::string Hex(const Bytes& bytes, std::size_t at, std::size_t digits) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text;
  for (std::size_t i = 0; i < digits; ++i) {
    const unsigned byte = bytes[at + i / 2];
    text.push_back(kDigits[i % 2 == 0 ? byte / 16 : byte % 16]);
  }
  return text;
}

// `number` 0 or 1; empty when native data ends before the template does.
inline std::string TextOf(const Bytes& native, std::size_t number) {
  const std::size_t digits = Length(native, 14);
  const std::size_t at = 16 + Length(native, 10) + Length(native, 12) + number * (digits / 2);
  const std::size_t shown = std::min(digits, kTextSize - 1);
  return at + (shown + 1) / 2 <= kNativeSize ? Hex(native, at, shown) : "";
}

}  // namespace templates

#endif
