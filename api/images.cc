// Exported functions that make images and base64 text of a card: the service of the same name, its
// result published.
#include "quillonid/images.h"

#include "api/published.h"
#include "support/log.h"

int APP_ID_SaveHeadImg(const PERSONINFO* record, char* path) {
  return PublishedCode(tFunc_SaveHeadImg(record, path));
}

int APP_ID_SaveHeadImg_FP(const PERSONINFO_FP* record, char* path) {
  return PublishedCode(tFunc_SaveHeadImg_FP(record, path));
}

int APP_ID_SaveChinaHeadImg(const PERSONINFO_CHA* record, char* path) {
  return PublishedCode(tFunc_SaveChinaHeadImg(record, path));
}

int APP_ID_SaveChinaHeadImg_FP(const PERSONINFO_CHA_FP* record, char* path) {
  return PublishedCode(tFunc_SaveChinaHeadImg_FP(record, path));
}

int APP_ID_SaveForeignHeadImg(const PERSONINFO_FOR* record, char* path) {
  return PublishedCode(tFunc_SaveForeignHeadImg(record, path));
}

int APP_ID_SaveForeignHeadImg_FP(const PERSONINFO_FOR_FP* record, char* path) {
  return PublishedCode(tFunc_SaveForeignHeadImg_FP(record, path));
}

int APP_ID_SaveGATHeadImg(const PERSONINFO_GAT* record, char* path) {
  return PublishedCode(tFunc_SaveGATHeadImg(record, path));
}

int APP_ID_SaveGATHeadImg_FP(const PERSONINFO_GAT_FP* record, char* path) {
  return PublishedCode(tFunc_SaveGATHeadImg_FP(record, path));
}

int APP_ID_SaveCollectHeadImg(const PERSONINFO_COLLECT* record, char* path) {
  return PublishedCode(tFunc_SaveCollectHeadImg(record, path));
}

int APP_ID_SaveCollectHeadImg_FP(const PERSONINFO_COLLECT_FP* record, char* path) {
  return PublishedCode(tFunc_SaveCollectHeadImg_FP(record, path));
}

int APP_ID_SaveCollectInfoHeadImg(const char* json, char* path) {
  return PublishedCode(tFunc_SaveCollectInfoHeadImg(json, path));
}

int APP_ID_SaveFrontImg(const PERSONINFO* record, char* path) {
  return PublishedCode(tFunc_SaveFrontImg(record, path));
}

int APP_ID_SaveFrontImg_FP(const PERSONINFO_FP* record, char* path) {
  return PublishedCode(tFunc_SaveFrontImg_FP(record, path));
}

int APP_ID_SaveChinaFrontImg(const PERSONINFO_CHA* record, char* path) {
  return PublishedCode(tFunc_SaveChinaFrontImg(record, path));
}

int APP_ID_SaveChinaFrontImg_FP(const PERSONINFO_CHA_FP* record, char* path) {
  return PublishedCode(tFunc_SaveChinaFrontImg_FP(record, path));
}

int APP_ID_SaveGATFrontImg(const PERSONINFO_GAT* record, char* path) {
  return PublishedCode(tFunc_SaveGatFrontImgEx(record, path, nullptr, 0));
}

int APP_ID_SaveCollectFrontImg(const PERSONINFO_COLLECT* record, char* path) {
  return PublishedCode(tFunc_SaveCollectFrontImgEx(record, path, nullptr, 0));
}

int APP_ID_SaveFrontImgEx(const PERSONINFO* record, char* path, const char* pLogoMsg, int flag) {
  return PublishedCode(tFunc_SaveFrontImgEx(record, path, pLogoMsg, flag));
}

int APP_ID_SaveFrontImgEx_FP(const PERSONINFO_FP* record, char* path, const char* pLogoMsg,
                             int flag) {
  return PublishedCode(tFunc_SaveFrontImgEx_FP(record, path, pLogoMsg, flag));
}

int APP_ID_SaveChinaFrontImgEx(const PERSONINFO_CHA* record, char* path, const char* pLogoMsg,
                               int flag) {
  return PublishedCode(tFunc_SaveChinaFrontImgEx(record, path, pLogoMsg, flag));
}

int APP_ID_SaveChinaFrontImgEx_FP(const PERSONINFO_CHA_FP* record, char* path, const char* pLogoMsg,
                                  int flag) {
  return PublishedCode(tFunc_SaveChinaFrontImgEx_FP(record, path, pLogoMsg, flag));
}

int APP_ID_SaveForeignFrontImgEx(const PERSONINFO_FOR* record, char* path, const char* pLogoMsg,
                                 int flag) {
  return PublishedCode(tFunc_SaveForeignFrontImgEx(record, path, pLogoMsg, flag));
}

int APP_ID_SaveForeignFrontImgEx_FP(const PERSONINFO_FOR_FP* record, char* path,
                                    const char* pLogoMsg, int flag) {
  return PublishedCode(tFunc_SaveForeignFrontImgEx_FP(record, path, pLogoMsg, flag));
}

int APP_ID_SaveGatFrontImgEx(const PERSONINFO_GAT* record, char* path, const char* pLogoMsg,
                             int flag) {
  LOG_API("[%s] Start pLogoMsg = %s", __func__, PrintableText(pLogoMsg));
  return PublishedCode(tFunc_SaveGatFrontImgEx(record, path, pLogoMsg, flag));
}

int APP_ID_SaveGatFrontImgEx_FP(const PERSONINFO_GAT_FP* record, char* path, const char* pLogoMsg,
                                int flag) {
  return PublishedCode(tFunc_SaveGatFrontImgEx_FP(record, path, pLogoMsg, flag));
}

int APP_ID_SaveCollectFrontImgEx(const PERSONINFO_COLLECT* record, char* path, const char* pLogoMsg,
                                 int flag) {
  return PublishedCode(tFunc_SaveCollectFrontImgEx(record, path, pLogoMsg, flag));
}

int APP_ID_SaveCollectFrontImgEx_FP(const PERSONINFO_COLLECT_FP* record, char* path,
                                    const char* pLogoMsg, int flag) {
  return PublishedCode(tFunc_SaveCollectFrontImgEx_FP(record, path, pLogoMsg, flag));
}

int APP_ID_SaveCollectInfoFrontImgEx(const char* json, char* path, const char* pLogoMsg, int flag) {
  return PublishedCode(tFunc_SaveCollectInfoFrontImgEx(json, path, pLogoMsg, flag));
}

int APP_ID_SaveBackImg(const PERSONINFO* record, char* path) {
  return PublishedCode(tFunc_SaveBackImg(record, path));
}

int APP_ID_SaveBackImg_FP(const PERSONINFO_FP* record, char* path) {
  return PublishedCode(tFunc_SaveBackImg_FP(record, path));
}

int APP_ID_SaveCollectBackImg(const PERSONINFO_COLLECT* record, char* path) {
  return PublishedCode(tFunc_SaveCollectBackImgEx(record, path, nullptr, 0));
}

int APP_ID_SaveBackImgEx(const PERSONINFO* record, char* path, const char* pLogoMsg, int flag) {
  return PublishedCode(tFunc_SaveBackImgEx(record, path, pLogoMsg, flag));
}

int APP_ID_SaveBackImgEx_FP(const PERSONINFO_FP* record, char* path, const char* pLogoMsg,
                            int flag) {
  return PublishedCode(tFunc_SaveBackImgEx_FP(record, path, pLogoMsg, flag));
}

int APP_ID_SaveChinaBackImgEx(const PERSONINFO_CHA* record, char* path, const char* pLogoMsg,
                              int flag) {
  return PublishedCode(tFunc_SaveChinaBackImgEx(record, path, pLogoMsg, flag));
}

int APP_ID_SaveChinaBackImgEx_FP(const PERSONINFO_CHA_FP* record, char* path, const char* pLogoMsg,
                                 int flag) {
  return PublishedCode(tFunc_SaveChinaBackImgEx_FP(record, path, pLogoMsg, flag));
}

int APP_ID_SaveForeignBackImgEx(const PERSONINFO_FOR* record, char* path, const char* pLogoMsg,
                                int flag) {
  return PublishedCode(tFunc_SaveForeignBackImgEx(record, path, pLogoMsg, flag));
}

int APP_ID_SaveForeignBackImgEx_FP(const PERSONINFO_FOR_FP* record, char* path,
                                   const char* pLogoMsg, int flag) {
  return PublishedCode(tFunc_SaveForeignBackImgEx_FP(record, path, pLogoMsg, flag));
}

int APP_ID_SaveGatBackImgEx(const PERSONINFO_GAT* record, char* path, const char* pLogoMsg,
                            int flag) {
  return PublishedCode(tFunc_SaveGatBackImgEx(record, path, pLogoMsg, flag));
}

int APP_ID_SaveGatBackImgEx_FP(const PERSONINFO_GAT_FP* record, char* path, const char* pLogoMsg,
                               int flag) {
  return PublishedCode(tFunc_SaveGatBackImgEx_FP(record, path, pLogoMsg, flag));
}

int APP_ID_SaveCollectBackImgEx(const PERSONINFO_COLLECT* record, char* path, const char* pLogoMsg,
                                int flag) {
  return PublishedCode(tFunc_SaveCollectBackImgEx(record, path, pLogoMsg, flag));
}

int APP_ID_SaveCollectBackImgEx_FP(const PERSONINFO_COLLECT_FP* record, char* path,
                                   const char* pLogoMsg, int flag) {
  return PublishedCode(tFunc_SaveCollectBackImgEx_FP(record, path, pLogoMsg, flag));
}

int APP_ID_SaveCollectInfoBackImgEx(const char* json, char* path, const char* pLogoMsg, int flag) {
  return PublishedCode(tFunc_SaveCollectInfoBackImgEx(json, path, pLogoMsg, flag));
}

int APP_ID_SaveCardImg(const PERSONINFO* record, char* path, int flag) {
  return PublishedCode(tFunc_SaveCardImg(record, path, flag));
}

int APP_ID_SaveCardImg_FP(const PERSONINFO_FP* record, char* path, int flag) {
  return PublishedCode(tFunc_SaveCardImg_FP(record, path, flag));
}

int APP_ID_SaveCardImgEx(const PERSONINFO* record, char* path, const char* pLogoMsg, int flag) {
  return PublishedCode(tFunc_SaveCardImgEx(record, path, pLogoMsg, flag));
}

int APP_ID_SaveCardImgEx_FP(const PERSONINFO_FP* record, char* path, const char* pLogoMsg,
                            int flag) {
  return PublishedCode(tFunc_SaveCardImgEx_FP(record, path, pLogoMsg, flag));
}

int APP_ID_SaveChinaCardImgEx(const PERSONINFO_CHA* record, char* path, const char* pLogoMsg,
                              int flag) {
  LOG_API("[%s] Start pLogoMsg = %s", __func__, PrintableText(pLogoMsg));
  return PublishedCode(tFunc_SaveChinaCardImgEx(record, path, pLogoMsg, flag));
}

int APP_ID_SaveChinaCardImgEx_FP(const PERSONINFO_CHA_FP* record, char* path, const char* pLogoMsg,
                                 int flag) {
  LOG_API("[%s] Start pLogoMsg = %s", __func__, PrintableText(pLogoMsg));
  return PublishedCode(tFunc_SaveChinaCardImgEx_FP(record, path, pLogoMsg, flag));
}

int APP_ID_SaveForeignCardImgEx(const PERSONINFO_FOR* record, char* path, const char* pLogoMsg,
                                int flag) {
  LOG_API("[%s] Start pLogoMsg = %s", __func__, PrintableText(pLogoMsg));
  return PublishedCode(tFunc_SaveForeignCardImgEx(record, path, pLogoMsg, flag));
}

int APP_ID_SaveForeignCardImgEx_FP(const PERSONINFO_FOR_FP* record, char* path,
                                   const char* pLogoMsg, int flag) {
  LOG_API("[%s] Start pLogoMsg = %s", __func__, PrintableText(pLogoMsg));
  return PublishedCode(tFunc_SaveForeignCardImgEx_FP(record, path, pLogoMsg, flag));
}

int APP_ID_SaveGatCardImgEx(const PERSONINFO_GAT* record, char* path, const char* pLogoMsg,
                            int flag) {
  LOG_API("[%s] Start pLogoMsg = %s", __func__, PrintableText(pLogoMsg));
  return PublishedCode(tFunc_SaveGatCardImgEx(record, path, pLogoMsg, flag));
}

int APP_ID_SaveGatCardImgEx_FP(const PERSONINFO_GAT_FP* record, char* path, const char* pLogoMsg,
                               int flag) {
  LOG_API("[%s] Start pLogoMsg = %s", __func__, PrintableText(pLogoMsg));
  return PublishedCode(tFunc_SaveGatCardImgEx_FP(record, path, pLogoMsg, flag));
}

int APP_ID_SaveCollectCardImgEx(const PERSONINFO_COLLECT* record, char* path, const char* pLogoMsg,
                                int flag) {
  return PublishedCode(tFunc_SaveCollectCardImgEx(record, path, pLogoMsg, flag));
}

int APP_ID_SaveCollectCardImgEx_FP(const PERSONINFO_COLLECT_FP* record, char* path,
                                   const char* pLogoMsg, int flag) {
  return PublishedCode(tFunc_SaveCollectCardImgEx_FP(record, path, pLogoMsg, flag));
}

int APP_ID_SaveCollectInfoCardImgEx(const char* json, char* path, const char* pLogoMsg, int flag) {
  return PublishedCode(tFunc_SaveCollectInfoCardImgEx(json, path, pLogoMsg, flag));
}

int APP_ID_SaveImg(int nImgType, int flag, const PERSONINFO* record, char* path) {
  return PublishedCode(tFunc_SaveImg(nImgType, flag, record, path));
}

int APP_ID_SaveImg_FP(int nImgType, int flag, const PERSONINFO_FP* record, char* path) {
  return PublishedCode(tFunc_SaveImg_FP(nImgType, flag, record, path));
}

int APP_ID_SaveImgEx(int nImgType, const PERSONINFO* record, char* path, const char* pLogoMsg,
                     int flag) {
  return PublishedCode(tFunc_SaveImgEx(nImgType, record, path, pLogoMsg, flag));
}

int APP_ID_SaveImgEx_FP(int nImgType, const PERSONINFO_FP* record, char* path, const char* pLogoMsg,
                        int flag) {
  return PublishedCode(tFunc_SaveImgEx_FP(nImgType, record, path, pLogoMsg, flag));
}

int APP_ID_SaveChinaImgEx(int nImgType, const PERSONINFO_CHA* record, char* path,
                          const char* pLogoMsg, int flag) {
  return PublishedCode(tFunc_SaveChinaImgEx(nImgType, record, path, pLogoMsg, flag));
}

int APP_ID_SaveChinaImgEx_FP(int nImgType, const PERSONINFO_CHA_FP* record, char* path,
                             const char* pLogoMsg, int flag) {
  return PublishedCode(tFunc_SaveChinaImgEx_FP(nImgType, record, path, pLogoMsg, flag));
}

int APP_ID_SaveForeignImgEx(int nImgType, const PERSONINFO_FOR* record, char* path,
                            const char* pLogoMsg, int flag) {
  LOG_API("[%s] Start nImgType = %02x", __func__, static_cast<unsigned>(nImgType));
  return PublishedCode(tFunc_SaveForeignImgEx(nImgType, record, path, pLogoMsg, flag));
}

int APP_ID_SaveForeignImgEx_FP(int nImgType, const PERSONINFO_FOR_FP* record, char* path,
                               const char* pLogoMsg, int flag) {
  return PublishedCode(tFunc_SaveForeignImgEx_FP(nImgType, record, path, pLogoMsg, flag));
}

int APP_ID_SaveGatImgEx(int nImgType, const PERSONINFO_GAT* record, char* path,
                        const char* pLogoMsg, int flag) {
  return PublishedCode(tFunc_SaveGatImgEx(nImgType, record, path, pLogoMsg, flag));
}

int APP_ID_SaveGatImgEx_FP(int nImgType, const PERSONINFO_GAT_FP* record, char* path,
                           const char* pLogoMsg, int flag) {
  return PublishedCode(tFunc_SaveGatImgEx_FP(nImgType, record, path, pLogoMsg, flag));
}

int APP_ID_SaveCollectImg(int nImgType, const PERSONINFO_COLLECT* record, char* path,
                          const char* pLogoMsg, int flag) {
  return PublishedCode(tFunc_SaveCollectImgEx(nImgType, record, path, pLogoMsg, flag));
}

int APP_ID_SaveCollectImgEx(int nImgType, const PERSONINFO_COLLECT* record, char* path,
                            const char* pLogoMsg, int flag) {
  // Already published.
  return APP_ID_SaveCollectImg(nImgType, record, path, pLogoMsg, flag);
}

int APP_ID_SaveCollectImgEx_FP(int nImgType, const PERSONINFO_COLLECT_FP* record, char* path,
                               const char* pLogoMsg, int flag) {
  return PublishedCode(tFunc_SaveCollectImgEx_FP(nImgType, record, path, pLogoMsg, flag));
}

int APP_ID_SaveCollectInfoImgEx(int nImgType, const char* json, char* path, const char* pLogoMsg,
                                int flag) {
  return PublishedCode(tFunc_SaveCollectInfoImgEx(nImgType, json, path, pLogoMsg, flag));
}

int APP_ID_GetImgBase64(int nImgType, const PERSONINFO* record, char* out, int capacity) {
  LOG_API("[%s] Start nImgType = %d", __func__, nImgType);
  const int code = PublishedCode(tFunc_GetImgBase64(nImgType, record, out, capacity));
  LOG_API_RESULT(code < 0, "[%s] End nConvertRet = %d  ", __func__, code);
  return code;
}

int APP_ID_GetImgBase64_FP(int nImgType, const PERSONINFO_FP* record, char* out, int capacity) {
  return PublishedCode(tFunc_GetImgBase64_FP(nImgType, record, out, capacity));
}

int APP_ID_GetGATImgBase64(int nImgType, const PERSONINFO_GAT* record, char* out, int capacity) {
  return PublishedCode(tFunc_GetGATImgBase64(nImgType, record, out, capacity));
}

int APP_ID_GetImgCollectInfoBase64(int nImgType, const char* json, char* out, int capacity) {
  return PublishedCode(tFunc_GetImgCollectInfoBase64(nImgType, json, out, capacity));
}

int APP_ID_GetImgCollectBase64(int nImgType, const PERSONINFO_COLLECT* record, char* out,
                               int capacity) {
  LOG_API("[%s] Start ", __func__);
  return PublishedCode(tFunc_GetImgCollectBase64(nImgType, record, out, capacity));
}
