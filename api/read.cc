// Exported functions that read a card: the service of the same name, its result published.
#include "api/published.h"
#include "quillonid/quillonid.h"
#include "quillonid/reader.h"
#include "support/log.h"

int APP_ID_ReadIDCard(const char* szDevice, const char* szBpNo, long nBaud, long nTimeOut,
                      char* szHeadDir, PERSONINFO* record) {
  LOG_API("[%s] Start ", __func__);
  return PublishedCode(tFunc_ReadIDCard(szDevice, szBpNo, nBaud, nTimeOut, szHeadDir, record));
}

int APP_ID_ReadIDCard_FP(const char* szDevice, const char* szBpNo, long nBaud, long nTimeOut,
                         char* szHeadDir, PERSONINFO_FP* record) {
  LOG_API("[%s] Start ", __func__);
  return PublishedCode(tFunc_ReadIDCard_FP(szDevice, szBpNo, nBaud, nTimeOut, szHeadDir, record));
}

int APP_ID_ReadChinaIDCard(const char* szDevice, const char* szBpNo, long nBaud, long nTimeOut,
                           char* szHeadDir, PERSONINFO_CHA* record) {
  return PublishedCode(tFunc_ReadChinaIDCard(szDevice, szBpNo, nBaud, nTimeOut, szHeadDir, record));
}

int APP_ID_ReadChinaIDCard_FP(const char* szDevice, const char* szBpNo, long nBaud, long nTimeOut,
                              char* szHeadDir, PERSONINFO_CHA_FP* record) {
  return PublishedCode(
      tFunc_ReadChinaIDCard_FP(szDevice, szBpNo, nBaud, nTimeOut, szHeadDir, record));
}

int APP_ID_ReadForeignerIDCard(const char* szDevice, const char* szBpNo, long nBaud, long nTimeOut,
                               char* szHeadDir, PERSONINFO_FOR* record) {
  return PublishedCode(
      tFunc_ReadForeignerIDCard(szDevice, szBpNo, nBaud, nTimeOut, szHeadDir, record));
}

int APP_ID_ReadForeignerIDCard_FP(const char* szDevice, const char* szBpNo, long nBaud,
                                  long nTimeOut, char* szHeadDir, PERSONINFO_FOR_FP* record) {
  return PublishedCode(
      tFunc_ReadForeignerIDCard_FP(szDevice, szBpNo, nBaud, nTimeOut, szHeadDir, record));
}

int APP_ID_ReadIDCardForeigner(const char* szDevice, const char* szBpNo, long nBaud, long nTimeOut,
                               char* szHeadDir, PERSONINFO* record) {
  return PublishedCode(
      tFunc_ReadIDCardForeigner(szDevice, szBpNo, nBaud, nTimeOut, szHeadDir, record));
}

int APP_ID_ReadGATIDCard(const char* szDevice, const char* szBpNo, long nBaud, long nTimeOut,
                         char* szHeadDir, PERSONINFO_GAT* record) {
  return PublishedCode(tFunc_ReadGATIDCard(szDevice, szBpNo, nBaud, nTimeOut, szHeadDir, record));
}

int APP_ID_ReadGATIDCard_FP(const char* szDevice, const char* szBpNo, long nBaud, long nTimeOut,
                            char* szHeadDir, PERSONINFO_GAT_FP* record) {
  return PublishedCode(
      tFunc_ReadGATIDCard_FP(szDevice, szBpNo, nBaud, nTimeOut, szHeadDir, record));
}

int APP_ID_ReadCollectIDCard(const char* szDevice, const char* szBpNo, long nBaud, long nTimeOut,
                             char* szHeadDir, PERSONINFO_COLLECT* record) {
  return PublishedCode(
      tFunc_ReadCollectIDCard(szDevice, szBpNo, nBaud, nTimeOut, szHeadDir, record));
}

int APP_ID_ReadCollectIDCard_FP(const char* szDevice, const char* szBpNo, long nBaud, long nTimeOut,
                                char* szHeadDir, PERSONINFO_COLLECT_FP* record) {
  return PublishedCode(
      tFunc_ReadCollectIDCard_FP(szDevice, szBpNo, nBaud, nTimeOut, szHeadDir, record));
}

int APP_ID_ReadCollectIDCardInfo(const char* szDevice, const char* szBpNo, long nBaud,
                                 long nTimeOut, int bFinger, char* szHeadDir, char* szJson) {
  LOG_API("tFunc_ReadCollectIDCardInfo Start ");
  const int code = PublishedCode(
      tFunc_ReadCollectIDCardInfo(szDevice, szBpNo, nBaud, nTimeOut, bFinger, szHeadDir, szJson));
  LOG_API_RESULT(code < 0, "tFunc_ReadCollectIDCardInfo End %d", code);
  return code;
}

int APP_ID_CancelRead() {
  LOG_API("[%s] Start ", __func__);
  return PublishedCode(tFunc_CancelRead());
}

int APP_ID_GetIdNativeData(void* pBuf, int nSize) { return tFunc_GetIdNativeData(pBuf, nSize); }

char* APP_ID_IDGetErrCodeMessage(int nErrCode, char* pMsg) {
  return TY_IDGetErrMessage(nErrCode, pMsg);
}

int Linux_QL_ID_ReadCollectCardInfo(const char* szDevice, long nBaud, long nTimeOut, int bFinger,
                                    char* szHeadDir, char* szJson) {
  DPrintLogToFile("[%s] Start ", __func__);
  QL_APP_Id_RaiseBaundFlag(1);  // On purpose: the flag stays set.
  return APP_ID_ReadCollectIDCardInfo(szDevice, "", nBaud, nTimeOut, bFinger, szHeadDir, szJson);
}

int Linux_QL_ID_CancelRead() { return APP_ID_CancelRead(); }

int Linux_QL_ID_GetNativeData(void* pBuf, int nSize) { return APP_ID_GetIdNativeData(pBuf, nSize); }

char* Linux_QL_ID_GetErrCodeMessage(int nErrCode, char* pMsg) {
  return APP_ID_IDGetErrCodeMessage(nErrCode, pMsg);
}
