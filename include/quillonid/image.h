/* SPDX-License-Identifier: MIT */
/** @file
 *  The photo: out of the native data, through the decoder library, to a BMP file; naming of image
 *  files. */
#ifndef QUILLONID_IMAGE_H
#define QUILLONID_IMAGE_H

#include "quillonid/records.h"

QL_BEGIN_DECLS

/** Size of the photo block on the card in bytes. */
#define QL_PHOTO_BLOCK_SIZE 1024
/** Size of an image path that is written back, in bytes. */
#define QL_IMAGE_PATH_SIZE 1024

/** Copies the photo block of native data (a zero-filled buffer of 4,096 bytes) to `photo` (1,024
 *  bytes). Returns 1,024, or -2 when the data holds no block of that length. */
QL_API int tFunc_GetPhotoData(int bFinger, const unsigned char* native, unsigned char* photo);

/** Decodes the photo and writes the BMP file `bmpPath`. Returns 0, -2008 (photo length) or -2000
 *  (not decoded or not written). */
QL_API int SavePhotoImage(int bFinger, const unsigned char* native, const char* bmpPath);

/** Decodes a photo block with the decoder "/" + `libraryName` and writes the BMP file. Returns
 *  non-zero when done, else 0. */
QL_API int GetPhotoBmp(const char* libraryName, const unsigned char* photo, const char* bmpPath);

/** Writes `width` x `height` pixels of 3 bytes (R, G, B; bottom row first) as a 24-bit BMP file.
 *  Returns 1, or 0 when it cannot be written. */
QL_API int SaveBmp(const char* path, const unsigned char* pixels, int width, int height);

/** Copies pixels, exchanging the first and third byte of each. */
QL_API void Convert2RGBData(const unsigned char* src, int width, int height, unsigned char* dst);

/** Makes an image file name from a directory, a pattern such as "/tmp/" "*.bmp" or a file name.
 *  `len` limits only a plain file name; the others write as many bytes as their parts have. */
QL_API void GetImgPathEx(const char* path, const char* suffix, const char* name, char* dst,
                         int len);

/** Makes the head photo's file name and writes it back to `szHeadImg`. Returns 0. */
QL_API int tFuncSaveHeadImg(const char* szHeadName, char* szHeadImg);

/** Converts nothing and returns 1. */
QL_API int SaveBmpToImg(const char* bmpFile, const char* imgFile);

QL_END_DECLS

#endif
