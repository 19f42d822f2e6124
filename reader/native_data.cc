#include "reader/native_data.h"

#include <cstring>

#include "quillonid/reader.h"
#include "quillonid/results.h"

namespace {

// The last read. Written by the reading thread alone; no lock, one read runs at a time.
unsigned char g_IDCardData[4096];  // native data. Set by tFunc_SetIdNativeData.
int g_nIdDataLen;                  // its length; 0: nothing kept. Set with it.
int s_nCardFingerVersion;          // fingerprint flag. Set when a read begins, kept if it fails.

}  // namespace

int LastReadMode() { return s_nCardFingerVersion; }

void SetLastReadMode(int bFinger) { s_nCardFingerVersion = bFinger; }

int tFunc_SetIdNativeData(unsigned char* pData, int nLen) {
  std::memset(g_IDCardData, 0, sizeof g_IDCardData);
  g_nIdDataLen = 0;

  if (pData == nullptr || !IsReadReplyLength(nLen)) return RET_PUB_SUCCESS;
  std::memcpy(g_IDCardData, pData, static_cast<std::size_t>(nLen));
  g_nIdDataLen = nLen;
  return RET_PUB_SUCCESS;
}

int tFunc_GetIdNativeData(void* pBuf, int nSize) {
  if (pBuf == nullptr || g_nIdDataLen == 0 || nSize < g_nIdDataLen) return 0;
  std::memcpy(pBuf, g_IDCardData, static_cast<std::size_t>(g_nIdDataLen));
  return g_nIdDataLen;
}
