// Card text converted the plain way, as the model of carddata/parse.cc.
#ifndef QUILLONID_FUZZ_CARD_TEXT_H
#define QUILLONID_FUZZ_CARD_TEXT_H

#include <cstdint>
#include <string>

#include "carddata/layout.h"
#include "fuzz/check.h"

namespace card_text {

inline void PutUtf8(unsigned unit, std::string* out) {
  const auto put = [out](unsigned byte) {
    out->push_back(static_cast<char>(static_cast<unsigned char>(byte & 0xFF)));
  };
  if (unit < 0x80) {
    put(unit);
  } else if (unit < 0x800) {
    put(0xC0 + unit / 64);
    put(0x80 + unit % 64);
  } else {
    put(0xE0 + unit / 4096);
    put(0x80 + unit / 64 % 64);
    put(0x80 + unit % 64);
  }
}

// What a field of `width` bytes holds, zeros behind the text included. A text that fills the field
// is cut and loses its trailing blanks.
inline std::string FieldOf(const unsigned char* ucs2, int size, std::size_t width) {
  std::string text;
  for (int i = 0; i < size; i += 2) PutUtf8(ucs2[i] + ucs2[i + 1] * 256U, &text);
  if (text.size() >= width - 1) {
    text.resize(width - 1);
    while (!text.empty() && text.back() == ' ') text.pop_back();
  }
  text.resize(width, '\0');
  return text;
}

template <std::size_t kCount>
void CheckFields(const TextField (&fields)[kCount], const unsigned char* text, const void* record) {
  for (const auto& [offset, size, field] : fields) {
    const std::string stored(field.In(record), field.width);
    FUZZ_CHECK(stored == FieldOf(text + offset, size, field.width));
  }
}

// Every field has its zero.
template <std::size_t kCount>
void CheckTerminated(const Field (&fields)[kCount], const void* record) {
  for (const Field& field : fields) {
    FUZZ_CHECK(strnlen(field.In(record), field.width) < field.width);
  }
}

}  // namespace card_text

#endif
