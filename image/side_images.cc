// Front side, back side and whole card, for a record that was read. Nothing is drawn: the services
// look at the record, pack it for the composer and report how that went. The two members of a pair
// differ in the templates; most without them add empty ones and call the other.
#include "carddata/json.h"
#include "image/card_kinds.h"
#include "quillonid/images.h"
#include "quillonid/results.h"
#include "support/log.h"

namespace {

using Composer = int (*)(const char* json, const char* path, const char* pLogoMsg, int flag);

struct Side {
  Composer composer;
  // What is returned for a record that cannot be packed: -2004, or the packer's negative result.
  bool packing_result;
};

constexpr Side kFront = {tFuncSaveFontImg, false};
constexpr Side kBack = {tFuncSavaBackImage, false};
constexpr Side kCard = {tFuncSaveImg, true};

// `name` is the service that logs its start.
template <typename Kind>
int Compose(const char* name, const Side& side, const typename Kind::WithTemplates* record,
            const char* path, const char* pLogoMsg, int flag) {
  LOG_API("[%s] Start szFrontImg = %s  ", name, PrintableText(path));  // On purpose: for all sides.
  if (!IsOfKind<Kind>(record)) return RET_BUSI_ID_CARD_TYPE_ERR;
  JsonText json;
  if (const int packed = PackJson(*record, &json)) {
    return side.packing_result ? packed : RET_BUSI_ID_CARD_TYPE_ERR;
  }
  return side.composer(json.text.get(), path, pLogoMsg, flag);
}

// The same for a record without templates.
template <typename Kind>
int ComposePlain(const char* name, const Side& side, const typename Kind::Plain* record,
                 const char* path, const char* pLogoMsg, int flag) {
  typename Kind::WithTemplates work = {};
  const bool given = Kind::kAddTemplates(record, &work) == RET_PUB_SUCCESS;
  return Compose<Kind>(name, side, given ? &work : nullptr, path, pLogoMsg, flag);
}

template <typename Kind>
using Twin = int(const typename Kind::WithTemplates* record, char* path, const char* pLogoMsg,
                 int flag);

template <typename Kind>
int ComposeThroughTwin(Twin<Kind>* twin, const typename Kind::Plain* record, char* path,
                       const char* pLogoMsg, int flag) {
  typename Kind::WithTemplates work = {};
  if (Kind::kAddTemplates(record, &work) != RET_PUB_SUCCESS) return RET_BUSI_ID_CARD_TYPE_ERR;
  return twin(&work, path, pLogoMsg, flag);
}

}  // namespace

int tFuncSaveFontImg(const char* /*json*/, const char* /*path*/, const char* /*pLogoMsg*/,
                     int /*flag*/) {
  return RET_PUB_SUCCESS;
}

int tFuncSavaBackImage(const char* /*json*/, const char* /*path*/, const char* /*pLogoMsg*/,
                       int /*flag*/) {
  return RET_PUB_SUCCESS;
}

int tFuncSaveImg(const char* /*json*/, const char* /*path*/, const char* /*pLogoMsg*/,
                 int /*flag*/) {
  return RET_PUB_SUCCESS;
}

// Without a text for the image.

int tFunc_SaveFrontImg(const PERSONINFO* record, char* path) {
  return ComposePlain<CombinedKind>(__func__, kFront, record, path, nullptr, 0);
}

int tFunc_SaveFrontImg_FP(const PERSONINFO_FP* record, char* path) {
  if (!IsOfKind<CombinedKind>(record)) return RET_BUSI_ID_CARD_TYPE_ERR;
  PERSONINFO work = {};
  tFuncConvertPersonFp(record, &work);
  return tFunc_SaveFrontImg(&work, path);
}

int tFunc_SaveChinaFrontImg(const PERSONINFO_CHA* record, char* path) {
  return tFunc_SaveChinaFrontImgEx(record, path, nullptr, 0);
}

int tFunc_SaveChinaFrontImg_FP(const PERSONINFO_CHA_FP* record, char* path) {
  return tFunc_SaveChinaFrontImgEx_FP(record, path, nullptr, 0);
}

int tFunc_SaveGATFrontImg(const PERSONINFO_GAT* record, char* path) {
  LOG_API("[%s] Start szFrontImg = %s  ", __func__, PrintableText(path));
  if (!IsOfKind<GatKind>(record)) return RET_BUSI_ID_CARD_TYPE_ERR;
  PERSONINFO_GAT_FP work = {};
  tFuncConvertGat(record, &work);
  JsonText json;
  // On purpose: a record that can be packed is refused.
  if (PackJson(work, &json) == RET_PUB_SUCCESS) return RET_BUSI_ID_CARD_TYPE_ERR;
  return tFuncSaveFontImg("", path, nullptr, 0);
}

int tFunc_SaveCollectFrontImg(const PERSONINFO_COLLECT* record, char* path) {
  return ComposePlain<CollectKind>(__func__, kFront, record, path, nullptr, 0);
}

int tFunc_SaveBackImg(const PERSONINFO* record, char* path) {
  return ComposePlain<CombinedKind>(__func__, kBack, record, path, nullptr, 0);
}

int tFunc_SaveBackImg_FP(const PERSONINFO_FP* record, char* path) {
  return Compose<CombinedKind>(__func__, kBack, record, path, nullptr, 0);
}

int tFunc_SaveCollectBackImg(const PERSONINFO_COLLECT* record, char* path) {
  return ComposePlain<CollectKind>(__func__, kBack, record, path, nullptr, 0);
}

int tFunc_SaveCardImg(const PERSONINFO* record, char* path, int flag) {
  return ComposePlain<CombinedKind>(__func__, kCard, record, path, nullptr, flag);
}

int tFunc_SaveCardImg_FP(const PERSONINFO_FP* record, char* path, int flag) {
  return Compose<CombinedKind>(__func__, kCard, record, path, nullptr, flag);
}

// With a text and a flag.

int tFunc_SaveFrontImgEx(const PERSONINFO* record, char* path, const char* pLogoMsg, int flag) {
  return ComposeThroughTwin<CombinedKind>(tFunc_SaveFrontImgEx_FP, record, path, pLogoMsg, flag);
}

int tFunc_SaveFrontImgEx_FP(const PERSONINFO_FP* record, char* path, const char* pLogoMsg,
                            int flag) {
  return Compose<CombinedKind>(__func__, kFront, record, path, pLogoMsg, flag);
}

int tFunc_SaveChinaFrontImgEx(const PERSONINFO_CHA* record, char* path, const char* pLogoMsg,
                              int flag) {
  return ComposePlain<ChinaKind>(__func__, kFront, record, path, pLogoMsg, flag);
}

int tFunc_SaveChinaFrontImgEx_FP(const PERSONINFO_CHA_FP* record, char* path, const char* pLogoMsg,
                                 int flag) {
  return Compose<ChinaKind>(__func__, kFront, record, path, pLogoMsg, flag);
}

int tFunc_SaveForeignFrontImgEx(const PERSONINFO_FOR* record, char* path, const char* pLogoMsg,
                                int flag) {
  return ComposeThroughTwin<ForeignKind>(tFunc_SaveForeignFrontImgEx_FP, record, path, pLogoMsg,
                                         flag);
}

int tFunc_SaveForeignFrontImgEx_FP(const PERSONINFO_FOR_FP* record, char* path,
                                   const char* pLogoMsg, int flag) {
  return Compose<ForeignKind>(__func__, kFront, record, path, pLogoMsg, flag);
}

int tFunc_SaveGatFrontImgEx(const PERSONINFO_GAT* record, char* path, const char* pLogoMsg,
                            int flag) {
  LOG_API("[%s] Start ", __func__);
  return ComposeThroughTwin<GatKind>(tFunc_SaveGatFrontImgEx_FP, record, path, pLogoMsg, flag);
}

int tFunc_SaveGatFrontImgEx_FP(const PERSONINFO_GAT_FP* record, char* path, const char* pLogoMsg,
                               int flag) {
  return Compose<GatKind>(__func__, kFront, record, path, pLogoMsg, flag);
}

int tFunc_SaveCollectFrontImgEx(const PERSONINFO_COLLECT* record, char* path, const char* pLogoMsg,
                                int flag) {
  return ComposeThroughTwin<CollectKind>(tFunc_SaveCollectFrontImgEx_FP, record, path, pLogoMsg,
                                         flag);
}

int tFunc_SaveCollectFrontImgEx_FP(const PERSONINFO_COLLECT_FP* record, char* path,
                                   const char* pLogoMsg, int flag) {
  return Compose<CollectKind>(__func__, kFront, record, path, pLogoMsg, flag);
}

int tFunc_SaveBackImgEx(const PERSONINFO* record, char* path, const char* pLogoMsg, int flag) {
  return ComposeThroughTwin<CombinedKind>(tFunc_SaveBackImgEx_FP, record, path, pLogoMsg, flag);
}

int tFunc_SaveBackImgEx_FP(const PERSONINFO_FP* record, char* path, const char* pLogoMsg,
                           int flag) {
  return Compose<CombinedKind>(__func__, kBack, record, path, pLogoMsg, flag);
}

int tFunc_SaveChinaBackImgEx(const PERSONINFO_CHA* record, char* path, const char* pLogoMsg,
                             int flag) {
  return ComposeThroughTwin<ChinaKind>(tFunc_SaveChinaBackImgEx_FP, record, path, pLogoMsg, flag);
}

int tFunc_SaveChinaBackImgEx_FP(const PERSONINFO_CHA_FP* record, char* path, const char* pLogoMsg,
                                int flag) {
  return Compose<ChinaKind>(__func__, kBack, record, path, pLogoMsg, flag);
}

int tFunc_SaveForeignBackImgEx(const PERSONINFO_FOR* record, char* path, const char* pLogoMsg,
                               int flag) {
  return ComposeThroughTwin<ForeignKind>(tFunc_SaveForeignBackImgEx_FP, record, path, pLogoMsg,
                                         flag);
}

int tFunc_SaveForeignBackImgEx_FP(const PERSONINFO_FOR_FP* record, char* path, const char* pLogoMsg,
                                  int flag) {
  return Compose<ForeignKind>(__func__, kBack, record, path, pLogoMsg, flag);
}

int tFunc_SaveGatBackImgEx(const PERSONINFO_GAT* record, char* path, const char* pLogoMsg,
                           int flag) {
  return ComposeThroughTwin<GatKind>(tFunc_SaveGatBackImgEx_FP, record, path, pLogoMsg, flag);
}

int tFunc_SaveGatBackImgEx_FP(const PERSONINFO_GAT_FP* record, char* path, const char* pLogoMsg,
                              int flag) {
  return Compose<GatKind>(__func__, kBack, record, path, pLogoMsg, flag);
}

int tFunc_SaveCollectBackImgEx(const PERSONINFO_COLLECT* record, char* path, const char* pLogoMsg,
                               int flag) {
  return ComposeThroughTwin<CollectKind>(tFunc_SaveCollectBackImgEx_FP, record, path, pLogoMsg,
                                         flag);
}

int tFunc_SaveCollectBackImgEx_FP(const PERSONINFO_COLLECT_FP* record, char* path,
                                  const char* pLogoMsg, int flag) {
  return Compose<CollectKind>(__func__, kBack, record, path, pLogoMsg, flag);
}

int tFunc_SaveCardImgEx(const PERSONINFO* record, char* path, const char* pLogoMsg, int flag) {
  return ComposeThroughTwin<CombinedKind>(tFunc_SaveCardImgEx_FP, record, path, pLogoMsg, flag);
}

int tFunc_SaveCardImgEx_FP(const PERSONINFO_FP* record, char* path, const char* pLogoMsg,
                           int flag) {
  return Compose<CombinedKind>(__func__, kCard, record, path, pLogoMsg, flag);
}

int tFunc_SaveChinaCardImgEx(const PERSONINFO_CHA* record, char* path, const char* pLogoMsg,
                             int flag) {
  return ComposeThroughTwin<ChinaKind>(tFunc_SaveChinaCardImgEx_FP, record, path, pLogoMsg, flag);
}

int tFunc_SaveChinaCardImgEx_FP(const PERSONINFO_CHA_FP* record, char* path, const char* pLogoMsg,
                                int flag) {
  return Compose<ChinaKind>(__func__, kCard, record, path, pLogoMsg, flag);
}

int tFunc_SaveForeignCardImgEx(const PERSONINFO_FOR* record, char* path, const char* pLogoMsg,
                               int flag) {
  return ComposeThroughTwin<ForeignKind>(tFunc_SaveForeignCardImgEx_FP, record, path, pLogoMsg,
                                         flag);
}

int tFunc_SaveForeignCardImgEx_FP(const PERSONINFO_FOR_FP* record, char* path, const char* pLogoMsg,
                                  int flag) {
  return Compose<ForeignKind>(__func__, kCard, record, path, pLogoMsg, flag);
}

int tFunc_SaveGatCardImgEx(const PERSONINFO_GAT* record, char* path, const char* pLogoMsg,
                           int flag) {
  return ComposeThroughTwin<GatKind>(tFunc_SaveGatCardImgEx_FP, record, path, pLogoMsg, flag);
}

int tFunc_SaveGatCardImgEx_FP(const PERSONINFO_GAT_FP* record, char* path, const char* pLogoMsg,
                              int flag) {
  return Compose<GatKind>(__func__, kCard, record, path, pLogoMsg, flag);
}

int tFunc_SaveCollectCardImgEx(const PERSONINFO_COLLECT* record, char* path, const char* pLogoMsg,
                               int flag) {
  return ComposeThroughTwin<CollectKind>(tFunc_SaveCollectCardImgEx_FP, record, path, pLogoMsg,
                                         flag);
}

int tFunc_SaveCollectCardImgEx_FP(const PERSONINFO_COLLECT_FP* record, char* path,
                                  const char* pLogoMsg, int flag) {
  return Compose<CollectKind>(__func__, kCard, record, path, pLogoMsg, flag);
}

// Of a JSON text instead of a record.

int tFunc_SaveCollectInfoFrontImgEx(const char* json, char* path, const char* pLogoMsg, int flag) {
  return tFuncSaveFontImg(json, path, pLogoMsg, flag);
}

int tFunc_SaveCollectInfoBackImgEx(const char* json, char* path, const char* pLogoMsg, int flag) {
  return tFuncSavaBackImage(json, path, pLogoMsg, flag);
}

int tFunc_SaveCollectInfoCardImgEx(const char* json, char* path, const char* pLogoMsg, int flag) {
  return tFuncSaveImg(json, path, pLogoMsg, flag);
}
