// Conversions inside the card data: as the exported ones, and they tell how many bytes they wrote,
// which a text with zero units in it cannot tell.
#ifndef QUILLONID_CARDDATA_TEXT_H
#define QUILLONID_CARDDATA_TEXT_H

#include "quillonid/carddata.h"

// The limit on UTF-8 is tested after each character: this many bytes may be written beyond it.
inline constexpr int kUtf8Overshoot = 2;

struct Converted {
  int units;  // UCS-2 units
  int bytes;  // UTF-8 bytes without the terminating zero
};

// `source` of `sourceLen` bytes, 1 or more, to `dest` of `destSize` + kUtf8Overshoot bytes,
// `destSize` 2 or more.
Converted Ucs2ToUtf8(const unsigned char* source, int sourceLen, char* dest, int destSize);

#endif
