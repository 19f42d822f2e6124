#include "image/photo_block.h"

#include <cstring>

#include "quillonid/image.h"
#include "quillonid/results.h"
#include "support/log.h"

namespace {

constexpr int kNativeDataSize = 4096;

// Offsets in native data. A read with fingerprints has one length more before the text.
constexpr int kTextLengthAt = 10;
constexpr int kPhotoLengthAt = 12;
constexpr int kTextAt = 14;
constexpr int kTextAtWithFingerprints = 16;

int BigEndian16(const unsigned char* bytes) { return bytes[0] * 256 + bytes[1]; }

}  // namespace

static_assert(kPhotoBlockSize == QL_PHOTO_BLOCK_SIZE);

int tFunc_GetPhotoData(int bFinger, const unsigned char* native, unsigned char* photo) {
  if (native == nullptr || photo == nullptr) return RET_PUB_INVAL_PARAM;
  if (BigEndian16(native + kPhotoLengthAt) != kPhotoBlockSize) return RET_PUB_INVAL_PARAM;

  const int text_at = bFinger == 1 ? kTextAtWithFingerprints : kTextAt;
  const int photo_at = text_at + BigEndian16(native + kTextLengthAt);
  if (photo_at + kPhotoBlockSize > kNativeDataSize) return RET_PUB_INVAL_PARAM;

  std::memcpy(photo, native + photo_at, kPhotoBlockSize);
  DPrintDataHexToFile("pPhoto ", photo, kPhotoBlockSize);
  return kPhotoBlockSize;
}
