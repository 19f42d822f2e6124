// Names of head photo files, for a record that was read.
#include <cstring>

#include "carddata/json.h"
#include "image/card_kinds.h"
#include "quillonid/image.h"
#include "quillonid/images.h"
#include "quillonid/results.h"
#include "support/log.h"

namespace {

// The file is named after the card number.
template <typename Kind, typename Record>
int NameHeadImage(const Record* record, char* path) {
  if (!IsOfKind<Kind>(record)) return RET_BUSI_ID_CARD_TYPE_ERR;
  char card_id[sizeof record->cardId + 1] = {};  // the field may lack its zero
  std::memcpy(card_id, record->cardId, sizeof record->cardId);
  return tFuncSaveHeadImg(card_id, path);
}

}  // namespace

int tFunc_SaveHeadImg(const PERSONINFO* record, char* path) {
  return NameHeadImage<CombinedKind>(record, path);
}

int tFunc_SaveHeadImg_FP(const PERSONINFO_FP* record, char* path) {
  LOG_API("[%s] Start", __func__);
  const int result = NameHeadImage<CombinedKind>(record, path);
  if (result == RET_BUSI_ID_CARD_TYPE_ERR) LOG_API(" Card Type Err ");
  return result;
}

int tFunc_SaveChinaHeadImg(const PERSONINFO_CHA* record, char* path) {
  return NameHeadImage<ChinaKind>(record, path);
}

int tFunc_SaveChinaHeadImg_FP(const PERSONINFO_CHA_FP* record, char* path) {
  return NameHeadImage<ChinaKind>(record, path);
}

int tFunc_SaveForeignHeadImg(const PERSONINFO_FOR* record, char* path) {
  return NameHeadImage<ForeignKind>(record, path);
}

int tFunc_SaveForeignHeadImg_FP(const PERSONINFO_FOR_FP* record, char* path) {
  return NameHeadImage<ForeignKind>(record, path);
}

int tFunc_SaveGATHeadImg(const PERSONINFO_GAT* record, char* path) {
  return NameHeadImage<GatKind>(record, path);
}

int tFunc_SaveGATHeadImg_FP(const PERSONINFO_GAT_FP* record, char* path) {
  return NameHeadImage<GatKind>(record, path);
}

int tFunc_SaveCollectHeadImg(const PERSONINFO_COLLECT* record, char* path) {
  LOG_API("[%s] Start", __func__);
  return NameHeadImage<CollectKind>(record, path);
}

int tFunc_SaveCollectHeadImg_FP(const PERSONINFO_COLLECT_FP* record, char* path) {
  return NameHeadImage<CollectKind>(record, path);
}

int tFunc_SaveCollectInfoHeadImg(const char* json, char* path) {
  char card_id[QL_IMAGE_PATH_SIZE];  // a longer number would not fit the name either
  const int result = GetJsonString(json, "IDNumber", card_id, sizeof card_id);
  return result < 0 ? result : tFuncSaveHeadImg(card_id, path);
}
