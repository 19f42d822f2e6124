// The photo: decoded by a library that is loaded for each photo, written as a BMP file.
#include <dlfcn.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstring>

#include "image/photo_block.h"
#include "quillonid/image.h"
#include "quillonid/results.h"
#include "support/handles.h"
#include "support/log.h"

namespace {

constexpr int kWidth = 102;
constexpr int kHeight = 126;
constexpr std::size_t kPixelsSize = std::size_t{kWidth} * kHeight * 3;

// The decoder gets no size. Behind the pixels lies a guard that shows whether it wrote too much.
constexpr std::size_t kGuardSize = 0x10000;
constexpr unsigned char kGuardByte = 0xA5;

constexpr int kDecoderMode = 608;  // the decoder's third argument; it takes no other
using Unpack = int (*)(const unsigned char* photo, unsigned char* pixels, int mode);

HeapBytes GuardedPixels() {
  HeapBytes pixels = ZeroedHeap(kPixelsSize + kGuardSize);
  if (pixels != nullptr) std::memset(pixels.get() + kPixelsSize, kGuardByte, kGuardSize);
  return pixels;
}

bool GuardIsWhole(const HeapBytes& pixels) {
  const unsigned char* guard = pixels.get() + kPixelsSize;
  return std::all_of(guard, guard + kGuardSize, [](unsigned char b) { return b == kGuardByte; });
}

int DecodeTo(const char* bmpPath, Unpack unpack, const unsigned char* photo) {
  const HeapBytes pixels = GuardedPixels();
  if (pixels == nullptr) return 0;

  const int unpacked = unpack(photo, pixels.get(), kDecoderMode);
  LOG_API_RESULT(unpacked == 0, "unpack: nRet is %d", unpacked);
  if (unpacked == 0) return 0;
  if (!GuardIsWhole(pixels)) {
    LOG_API_RESULT(true, "unpack: more than %zu bytes written", kPixelsSize);
    return 0;
  }

  const int saved = SaveBmp(bmpPath, pixels.get(), kWidth, kHeight);
  LOG_API_RESULT(saved == 0, "SaveBmp: nRet is %d", saved);
  return saved;
}

// Loads the decoder for this one photo; it is closed on every path.
int LoadAndDecodeTo(const char* bmpPath, const char* library_path, const unsigned char* photo) {
  const Library library(dlopen(library_path, RTLD_NOW));
  if (library == nullptr) return 0;
  auto* const unpack = reinterpret_cast<Unpack>(dlsym(library.get(), "unpack"));
  if (unpack == nullptr) return 0;

  const int result = DecodeTo(bmpPath, unpack, photo);
  LOG_API("unpack != NULL");
  return result;
}

}  // namespace

int GetPhotoBmp(const char* libraryName, const unsigned char* photo, const char* bmpPath) {
  char path[4096];
  const int length = std::snprintf(path, sizeof path, "/%s", libraryName ? libraryName : "");
  if (photo == nullptr || length < 0 || static_cast<std::size_t>(length) >= sizeof path) return 0;
  LOG_API("native  %s\n", "");  // On purpose: the decoder lies in the root, no folder is searched.
  LOG_API(" %s\n", path);
  LOG_API(" After %s\n", path);

  const int result = LoadAndDecodeTo(bmpPath, path, photo);
  LOG_API("hInstLibrary != NULL");  // On purpose: whatever happened.
  LOG_API_RESULT(result == 0, "GetPhotoBmp : the nRet is %d", result);
  return result;
}

int SavePhotoImage(int bFinger, const unsigned char* native, const char* bmpPath) {
  unsigned char photo[2 * kPhotoBlockSize] = {};  // room for a decoder that reads ahead
  LOG_API("[%s] Start ", __func__);
  if (tFunc_GetPhotoData(bFinger, native, photo) < 0) {
    LOG_API("[%s] Start ", "RET_BUSI_ID_PHOTO_LEN_ERR");
    return RET_BUSI_ID_PHOTO_LEN_ERR;
  }
  DPrintDataHexToFile("GetPhotoData szPhoto = ", photo, kPhotoBlockSize);

  const int done = GetPhotoBmp("libwlt.so", photo, bmpPath);
  return done != 0 ? RET_PUB_SUCCESS : RET_BUSI_ID_PHOTO_DECODE_ERR;
}
