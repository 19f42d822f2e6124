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

/** Copies the photo block of native data to `photo`.
 *  @param bFinger  read mode: 1 when the data was read with fingerprints, else without
 *  @param native   native data in a zero-filled buffer of 4,096 bytes
 *  @param photo    receives #QL_PHOTO_BLOCK_SIZE bytes
 *  @return 1,024, or -2 with nothing copied when the data holds no block of that length */
QL_API int tFunc_GetPhotoData(int bFinger, const unsigned char* native, unsigned char* photo);

/** Decodes the photo of native data with "/libwlt.so" and writes it as a BMP file.
 *  @param bFinger  as tFunc_GetPhotoData()
 *  @param native   as tFunc_GetPhotoData()
 *  @param bmpPath  the file, not a directory; an existing one is replaced
 *  @return 0, -2008 (photo length), or -2000 (not decoded, or not written) */
QL_API int SavePhotoImage(int bFinger, const unsigned char* native, const char* bmpPath);

/** Decodes a photo block with the decoder "/" + `libraryName` and writes a BMP file of 102 x 126
 *  pixels, 38,862 bytes.
 *
 *  The decoder exports `int unpack(unsigned char* photo, unsigned char* pixels, int)`, which gives
 * 0 for a photo that it cannot decode. It is called with the block, room for 102 x 126 pixels of 3
 *  bytes (R, G, B; bottom row first) and 608. One that writes more is refused. It is loaded for
 *  each photo and runs inside the process: read in a helper process when it is not trusted.
 *  @param photo  #QL_PHOTO_BLOCK_SIZE bytes
 *  @return non-zero when done, else 0 */
QL_API int GetPhotoBmp(const char* libraryName, const unsigned char* photo, const char* bmpPath);

/** Writes `width` x `height` pixels of 3 bytes (R, G, B; bottom row first) as an uncompressed
 * 24-bit BMP file. Two bytes, 96 08, follow each row whatever its width, so that only widths such
 * as 102, whose rows need two bytes to fill up, give a file that others can read.
 *  @return 1, or 0 when the file cannot be written whole */
QL_API int SaveBmp(const char* path, const unsigned char* pixels, int width, int height);

/** Copies `width` x `height` pixels of 3 bytes, exchanging the first and third byte of each. */
QL_API void Convert2RGBData(const unsigned char* src, int width, int height, unsigned char* dst);

/** Makes an image file name in `dst`:
 *  - `path` a directory: `path` + "/" (unless there) + `name` + `suffix`
 *  - a last component "*.bmp", "*.jpg", "*.png" or "*.gif" in any letter case: its folder (at most
 *    259 bytes) + `name` + `suffix` + the extension
 *  - anything else: `path` as it stands, at most `len` bytes with its zero
 *
 *  A text that ends in "/" is a directory whether it exists or not. At most 259 bytes of `suffix`
 *  are used. `len` limits only the last case: for the others `dst` must hold the bytes of all parts
 *  and 2 more. Nothing is written for a null `path`. */
QL_API void GetImgPathEx(const char* path, const char* suffix, const char* name, char* dst,
                         int len);

/** Makes the head photo's file name as GetImgPathEx() does, with the suffix "-head.bmp", and writes
 *  it back. No file is written.
 *  @param szHeadName  name of the file without suffix: the card number. It is used as the card has
 *                     it: one with "/" or "../" makes a name outside the directory. Look at a name
 *                     before writing or deleting what it stands for
 *  @param szHeadImg   directory, pattern or file name in a buffer of #QL_IMAGE_PATH_SIZE bytes; a
 *                     longer name is cut. Null or empty: nothing happens
 *  @return 0 */
QL_API int tFuncSaveHeadImg(const char* szHeadName, char* szHeadImg);

/** Converts nothing and returns 1. */
QL_API int SaveBmpToImg(const char* bmpFile, const char* imgFile);

QL_END_DECLS

#endif
