// Text made of records: a tag letter, three decimal digits of length, the value.
#include <algorithm>
#include <cstddef>
#include <cstring>

#include "quillonid/link.h"
#include "support/log.h"

namespace {

constexpr std::size_t kDigits = 3;
constexpr std::size_t kRecordHead = 1 + kDigits;  // letter and digits
constexpr std::size_t kTooLong = 129;             // a value of this length ends the search

// By range, not by <cctype>: bytes of other alphabets are no letters in any locale.
bool IsLetter(char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// Reads three decimal digits; anything else, such as a sign, is none.
bool ReadLength(const char* digits, std::size_t* length) {
  std::size_t value = 0;
  for (std::size_t i = 0; i < kDigits; ++i) {
    if (!IsDigit(digits[i])) return false;
    value = value * 10 + static_cast<std::size_t>(digits[i] - '0');
  }
  *length = value;
  return true;
}

// Skips the record at the letter `text`, which `rest` characters are left of. Returns null where
// the walk ends.
const char* SkipRecord(const char* text, std::size_t rest) {
  std::size_t length = 0;
  if (rest - 1 < kRecordHead || !ReadLength(text + 1, &length)) return nullptr;
  if (length >= kTooLong || length > rest - kRecordHead) return nullptr;
  return text + kRecordHead + length;
}

}  // namespace

QL_API char* Str_FindTagApp(const char* tag, int tagLen, const char* text) {
  if (!tag || tagLen < 1 || !text) return nullptr;
  const char* const end = text + std::strlen(text);
  while (text && text != end) {
    if (std::strncmp(text, tag, static_cast<std::size_t>(tagLen)) == 0) {
      return const_cast<char*>(text);
    }
    text = IsLetter(*text) ? SkipRecord(text, static_cast<std::size_t>(end - text)) : text + 1;
  }
  return nullptr;
}

QL_API int Str_GetTagValueApp(const char* tag, int tagLen, const char* text, int /*ignored*/,
                              char* out, int* outLen) {
  LOG_PUBLIC("[%s] Start ", __func__);
  int result = -1;
  if (outLen) *outLen = 0;
  const char* record = out && outLen ? Str_FindTagApp(tag, tagLen, text) : nullptr;
  const std::size_t rest = record ? std::strlen(record) : 0;
  const std::size_t head = static_cast<std::size_t>(std::max(tagLen, 1)) + kDigits;
  std::size_t length = 0;
  if (rest >= head && ReadLength(record + head - kDigits, &length)) {
    // A length beyond the text brings what the text has.
    length = std::min(length, rest - head);
    std::memcpy(out, record + head, length);
    *outLen = static_cast<int>(length);
    result = 0;
  }
  LOG_PUBLIC("[%s] End   ", __func__);
  return result;
}
