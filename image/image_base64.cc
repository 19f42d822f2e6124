// Images as base64 text. No image file is ever named here, so these services end in a failure; what
// they report on the way is kept for the applications that look at it.
#include <algorithm>
#include <cstring>

#include "image/card_kinds.h"
#include "quillonid/image.h"
#include "quillonid/images.h"
#include "quillonid/results.h"
#include "quillonid/support.h"
#include "support/handles.h"
#include "support/log.h"

namespace {

// Saves the image with `save(path)` and copies what the file's base64 query gives. On purpose: that
// query never encodes, so a success would leave zeros in `out`. `name` is the service.
template <typename Save>
int GetBase64(const char* name, Save save, char* out) {
  LOG_API("[%s] Start ", name);
  char path[QL_IMAGE_PATH_SIZE] = {};
  if (const int saved = save(path)) return saved;

  int size = 0;
  if (GetBase64FromFile(path, nullptr, &size) != -2) return RET_BUSI_ID_OTHER_ERR;
  LOG_API("nBase = %d ", size);
  const HeapBytes text = ZeroedHeap(static_cast<std::size_t>(std::max(size, 0)) + 1);
  int result = RET_BUSI_ID_OTHER_ERR;
  if (text != nullptr) {
    const int got = GetBase64FromFile(path, reinterpret_cast<char*>(text.get()), &size);
    LOG_API_RESULT(got < 0, "GetBase64FromFile nRet = %d  nLen = %d ", got, size);
    if (got == 0) {  // Not before a service names a file that it wrote. GCOVR_EXCL_START
      if (out != nullptr) std::memcpy(out, text.get(), static_cast<std::size_t>(size));
      result = RET_PUB_SUCCESS;
    }  // GCOVR_EXCL_STOP
  }
  LOG_API_RESULT(result < 0, "[%s] End nRet = %d  ", name, result);
  return result;
}

}  // namespace

int tFunc_GetImgBase64(int nImgType, const PERSONINFO* record, char* out, int /*capacity*/) {
  const auto save = [=](char* path) { return tFunc_SaveImg(nImgType, 0, record, path); };
  return GetBase64(__func__, save, out);
}

int tFunc_GetImgBase64_FP(int nImgType, const PERSONINFO_FP* record, char* out, int /*capacity*/) {
  const auto save = [=](char* path) { return tFunc_SaveImg_FP(nImgType, 0, record, path); };
  return GetBase64(__func__, save, out);
}

int tFunc_GetGATImgBase64(int nImgType, const PERSONINFO_GAT* record, char* out, int /*capacity*/) {
  const auto save = [=](char* path) {
    return tFunc_SaveGatImgEx(nImgType, record, path, nullptr, 0);
  };
  return GetBase64(__func__, save, out);
}

int tFunc_GetImgCollectInfoBase64(int nImgType, const char* json, char* out, int /*capacity*/) {
  const auto save = [=](char* path) {
    PERSONINFO_COLLECT_FP work = {};
    PERSONINFO_COLLECT record = {};
    tFuncConvertJsontoCollectStruct(json, &work);
    tFuncConvertCollectFp(&work, &record);
    return tFunc_SaveCollectImg(nImgType, &record, path, nullptr, 0);
  };
  return GetBase64(__func__, save, out);
}

int tFunc_GetImgCollectBase64(int nImgType, const PERSONINFO_COLLECT* record, char* out,
                              int /*capacity*/) {
  LOG_API("[%s] Start ", __func__);
  if (record != nullptr) {
    LOG_API("[cardId = %.*s ]", static_cast<int>(sizeof record->cardId), record->cardId);
    LOG_API("[cardType = %.*s ]", static_cast<int>(sizeof record->cardType), record->cardType);
  }
  if (!IsOfKind<CollectKind>(record)) {
    LOG_API("[%s] Card Type Err ", __func__);
    return RET_BUSI_ID_CARD_TYPE_ERR;
  }

  // Only what both collect records have is looked at: callers may pass either.
  char path[QL_IMAGE_PATH_SIZE] = {};
  const auto* const work = reinterpret_cast<const PERSONINFO_COLLECT_FP*>(record);
  const int saved = tFunc_SaveCollectImgEx_FP(nImgType, work, path, "", 0);
  if (saved == RET_BUSI_ID_SAVE_IMAGE_ERR) return saved;
  if (saved != RET_PUB_SUCCESS) return RET_BUSI_ID_CARD_TYPE_ERR;

  if (GetBase64DataEx(path, out) != 0) return RET_BUSI_ID_OTHER_ERR;
  // Not before a service names a file that it wrote. GCOVR_EXCL_START
  LOG_API("[szBase64 = %s ]", out);
  return RET_PUB_SUCCESS;
  // GCOVR_EXCL_STOP
}
