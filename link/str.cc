// Check bytes, trimming and searching. Bytes are unsigned, whatever plain char is.
#include "link/str.h"

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "quillonid/link.h"
#include "quillonid/results.h"
#include "support/log.h"

QL_API int Str_CalcLrc(const unsigned char* data, int len) {
  if (!data) return 0;
  unsigned char lrc = 0;
  for (int i = 0; i < len; ++i) lrc ^= data[i];
  return lrc;
}

QL_API unsigned char Str_GetDataLRC(const unsigned char* data, int len) {
  return static_cast<unsigned char>(Str_CalcLrc(data, len));
}

QL_API void Str_localXor(const unsigned char* a, const unsigned char* b, unsigned char* out) {
  if (!a || !b || !out) return;
  for (int i = 0; i < 8; ++i) out[i] = a[i] ^ b[i];
}

QL_API unsigned char* Str_localFindMsgSign(const unsigned char* data, int len, unsigned char byte) {
  if (!data || len <= 0) return nullptr;
  const void* found = std::memchr(data, byte, static_cast<std::size_t>(len));
  return static_cast<unsigned char*>(const_cast<void*>(found));
}

QL_API int Str_GetDataDeleteChar(const unsigned char* data, int len, unsigned char byte) {
  if (!data) return 0;
  while (len > 0 && data[len - 1] == byte) --len;
  return std::max(len, 0);
}

QL_API char* Str_strsTrim(char* text) {
  if (!text) return nullptr;
  char* kept = text;
  for (const char* c = text; *c != '\0'; ++c) {
    if (*c != ' ' && *c != '\r' && *c != '\t' && *c != '\n') *kept++ = *c;
  }
  *kept = '\0';
  return text;
}

QL_API int Str_GetSplitData(const char* text, const char* separator, char* out) {
  LOG_PUBLIC("[%s] Start szInPut = %s sPlit = %s ", __func__, PrintableText(text),
             PrintableText(separator));
  const bool usable = text && separator && *separator != '\0' && out;
  const char* found = usable ? std::strstr(text, separator) : nullptr;
  const std::ptrdiff_t size = found ? found - text : 0;
  const int copied = static_cast<int>(std::min<std::ptrdiff_t>(size, INT_MAX));
  if (copied > 0) std::memcpy(out, text, static_cast<std::size_t>(copied));
  // The output has no terminating zero: the log shows what was copied and no more.
  LOG_PUBLIC("OutBuf = %.*s nLen = %d", copied, out ? out : "", copied);
  return found ? RET_PUB_SUCCESS : RET_PUB_INVAL_PARAM;
}
