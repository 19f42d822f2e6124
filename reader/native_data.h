// Native data of the last good read, kept for the process, and the mode it was read in. The state
// stands at the top of native_data.cc. A leaf header: carddata/json.cc takes the photo from here.
#ifndef QUILLONID_READER_NATIVE_DATA_H
#define QUILLONID_READER_NATIVE_DATA_H

#include "quillonid/export.h"

// Copies the kept native data to `pBuf` of `nSize` bytes. Returns its length (1,295, 1,297 or
// 2,321), or 0 when nothing is kept or it does not fit.
extern "C" QL_API int tFunc_GetIdNativeData(void* pBuf, int nSize);

// Fingerprint flag of the last read, good or failed: 0 without fingerprints, 1 with, or whatever
// other value the caller gave.
int LastReadMode();
void SetLastReadMode(int bFinger);

// Lengths of a whole read reply: text and photo, with room for fingerprints, with fingerprints.
constexpr bool IsReadReplyLength(int length) {
  return length == 1295 || length == 1297 || length == 2321;
}

#endif
