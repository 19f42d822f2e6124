// Images by a number: 0 head photo, 1 front side, 2 back side, 3 whole card.
#include "image/card_kinds.h"
#include "quillonid/images.h"
#include "quillonid/results.h"
#include "support/log.h"

namespace {

enum ImageType { kHead = 0, kFront = 1, kBack = 2, kCard = 3 };

// The services of one kind; `Record` is a person record, or char for a JSON text.
template <typename Record>
struct Services {
  int (*head)(const Record* record, char* path);
  int (*front)(const Record* record, char* path, const char* pLogoMsg, int flag);
  int (*back)(const Record* record, char* path, const char* pLogoMsg, int flag);
  int (*card)(const Record* record, char* path, const char* pLogoMsg, int flag);

  int Save(int nImgType, const Record* record, char* path, const char* pLogoMsg, int flag) const {
    switch (nImgType) {
      case kHead:
        return head(record, path);
      case kFront:
        return front(record, path, pLogoMsg, flag);
      case kBack:
        return back(record, path, pLogoMsg, flag);
      case kCard:
        return card(record, path, pLogoMsg, flag);
      default:
        return RET_PUB_INVAL_PARAM;
    }
  }
};

constexpr Services<PERSONINFO> kCombined = {tFunc_SaveHeadImg, tFunc_SaveFrontImgEx,
                                            tFunc_SaveBackImgEx, tFunc_SaveCardImgEx};
constexpr Services<PERSONINFO_CHA> kChina = {tFunc_SaveChinaHeadImg, tFunc_SaveChinaFrontImgEx,
                                             tFunc_SaveChinaBackImgEx, tFunc_SaveChinaCardImgEx};
constexpr Services<PERSONINFO_FOR> kForeign = {
    tFunc_SaveForeignHeadImg, tFunc_SaveForeignFrontImgEx, tFunc_SaveForeignBackImgEx,
    tFunc_SaveForeignCardImgEx};
constexpr Services<PERSONINFO_GAT> kGat = {tFunc_SaveGATHeadImg, tFunc_SaveGatFrontImgEx,
                                           tFunc_SaveGatBackImgEx, tFunc_SaveGatCardImgEx};
constexpr Services<PERSONINFO_COLLECT> kCollect = {
    tFunc_SaveCollectHeadImg, tFunc_SaveCollectFrontImgEx, tFunc_SaveCollectBackImgEx,
    tFunc_SaveCollectCardImgEx};
constexpr Services<char> kCollectInfo = {
    tFunc_SaveCollectInfoHeadImg, tFunc_SaveCollectInfoFrontImgEx, tFunc_SaveCollectInfoBackImgEx,
    tFunc_SaveCollectInfoCardImgEx};

}  // namespace

int tFunc_SaveImg(int nImgType, int flag, const PERSONINFO* record, char* path) {
  LOG_API("[%s] Start ", __func__);
  LOG_API("nImgType = %d ", nImgType);
  switch (nImgType) {
    case kHead:
      return tFunc_SaveHeadImg(record, path);
    case kFront:
      return tFunc_SaveFrontImg(record, path);
    case kBack:
      return tFunc_SaveBackImg(record, path);
    case kCard:
      return tFunc_SaveCardImg(record, path, flag);
    default:
      return RET_PUB_INVAL_PARAM;
  }
}

int tFunc_SaveImg_FP(int nImgType, int flag, const PERSONINFO_FP* record, char* path) {
  return tFunc_SaveImg(nImgType, flag, WithoutTemplates<CombinedKind>(record), path);
}

int tFunc_SaveImgEx(int nImgType, const PERSONINFO* record, char* path, const char* pLogoMsg,
                    int flag) {
  return kCombined.Save(nImgType, record, path, pLogoMsg, flag);
}

int tFunc_SaveImgEx_FP(int nImgType, const PERSONINFO_FP* record, char* path, const char* pLogoMsg,
                       int flag) {
  return tFunc_SaveImgEx(nImgType, WithoutTemplates<CombinedKind>(record), path, pLogoMsg, flag);
}

int tFunc_SaveChinaImgEx(int nImgType, const PERSONINFO_CHA* record, char* path,
                         const char* pLogoMsg, int flag) {
  return kChina.Save(nImgType, record, path, pLogoMsg, flag);
}

int tFunc_SaveChinaImgEx_FP(int nImgType, const PERSONINFO_CHA_FP* record, char* path,
                            const char* pLogoMsg, int flag) {
  return tFunc_SaveChinaImgEx(nImgType, WithoutTemplates<ChinaKind>(record), path, pLogoMsg, flag);
}

int tFunc_SaveForeignImgEx(int nImgType, const PERSONINFO_FOR* record, char* path,
                           const char* pLogoMsg, int flag) {
  return kForeign.Save(nImgType, record, path, pLogoMsg, flag);
}

int tFunc_SaveForeignImgEx_FP(int nImgType, const PERSONINFO_FOR_FP* record, char* path,
                              const char* pLogoMsg, int flag) {
  return tFunc_SaveForeignImgEx(nImgType, WithoutTemplates<ForeignKind>(record), path, pLogoMsg,
                                flag);
}

int tFunc_SaveGatImgEx(int nImgType, const PERSONINFO_GAT* record, char* path, const char* pLogoMsg,
                       int flag) {
  return kGat.Save(nImgType, record, path, pLogoMsg, flag);
}

int tFunc_SaveGatImgEx_FP(int nImgType, const PERSONINFO_GAT_FP* record, char* path,
                          const char* pLogoMsg, int flag) {
  return tFunc_SaveGatImgEx(nImgType, WithoutTemplates<GatKind>(record), path, pLogoMsg, flag);
}

int tFunc_SaveCollectImg(int nImgType, const PERSONINFO_COLLECT* record, char* path,
                         const char* pLogoMsg, int flag) {
  return kCollect.Save(nImgType, record, path, pLogoMsg, flag);
}

int tFunc_SaveCollectImgEx(int nImgType, const PERSONINFO_COLLECT* record, char* path,
                           const char* pLogoMsg, int flag) {
  return tFunc_SaveCollectImg(nImgType, record, path, pLogoMsg, flag);
}

int tFunc_SaveCollectImgEx_FP(int nImgType, const PERSONINFO_COLLECT_FP* record, char* path,
                              const char* pLogoMsg, int flag) {
  LOG_API("[%s] Start ", __func__);
  PERSONINFO_COLLECT work = {};
  const int result = tFuncConvertCollectFp(record, &work);
  return result < 0 ? result : tFunc_SaveCollectImgEx(nImgType, &work, path, pLogoMsg, flag);
}

int tFunc_SaveCollectInfoImgEx(int nImgType, const char* json, char* path, const char* pLogoMsg,
                               int flag) {
  return kCollectInfo.Save(nImgType, json, path, pLogoMsg, flag);
}
