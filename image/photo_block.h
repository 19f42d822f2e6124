// Photo block: the compressed photo inside native data. A leaf header: carddata/json.cc puts the
// block into its texts.
#ifndef QUILLONID_IMAGE_PHOTO_BLOCK_H
#define QUILLONID_IMAGE_PHOTO_BLOCK_H

#include "quillonid/export.h"

constexpr int kPhotoBlockSize = 1024;

// Copies the photo block of native data, a buffer of 4,096 bytes read with `bFinger`, to `photo` of
// 1,024 bytes. Returns 1,024, or -2 when there is no block of that length.
extern "C" QL_API int tFunc_GetPhotoData(int bFinger, const unsigned char* native,
                                         unsigned char* photo);

#endif
