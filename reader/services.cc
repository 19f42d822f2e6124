// Read services: the kind reader for the record that the caller wants, and the conversion of what
// it read. The record is cleared before the read, here or by the kind reader.
#include "quillonid/carddata.h"
#include "quillonid/reader.h"
#include "quillonid/results.h"
#include "support/log.h"

namespace {

// An application that uses one record for many cards must never find the last holder's text in it:
// conversions copy without clearing.
template <typename Record>
void Clear(Record* record) {
  if (record != nullptr) *record = {};
}

int NegativeOrSuccess(int result) { return result < 0 ? result : RET_PUB_SUCCESS; }

// Ends a read into a work record: a good one goes to the caller's record, a null one of which is
// -2004; a failed one leaves it empty.
template <typename Work, typename Plain>
int Converted(int result, const Work& work, int (*convert)(const Work*, Plain*), Plain* record) {
  if (result != RET_PUB_SUCCESS) return result;
  return NegativeOrSuccess(convert(&work, record));
}

}  // namespace

int tFunc_ReadIDCard(const char* szDevice, const char* szBpNo, long nBaud, long nTimeOut,
                     char* szHeadDir, PERSONINFO* record) {
  LOG_CARD("[%s]Start ", __func__);
  Clear(record);
  PERSONINFO_FP work = {};
  const int result = tFuncReadIdInfo(szDevice, szBpNo, nBaud, nTimeOut, 0, szHeadDir, &work);
  LOG_CARD_RESULT(result < 0, "tFuncReadIdInfo = %d ", result);
  return Converted(result, work, tFuncConvertPersonFp, record);
}

int tFunc_ReadIDCard_FP(const char* szDevice, const char* szBpNo, long nBaud, long nTimeOut,
                        char* szHeadDir, PERSONINFO_FP* record) {
  LOG_CARD("[%s] Start ", __func__);
  return NegativeOrSuccess(
      tFuncReadIdInfo(szDevice, szBpNo, nBaud, nTimeOut, 1, szHeadDir, record));
}

int tFunc_ReadChinaIDCard(const char* szDevice, const char* szBpNo, long nBaud, long nTimeOut,
                          char* szHeadDir, PERSONINFO_CHA* record) {
  LOG_CARD("[%s] Start ", __func__);
  Clear(record);
  PERSONINFO_CHA_FP work = {};
  const int result = tFuncReadChinaIDCard(szDevice, szBpNo, nBaud, nTimeOut, 0, szHeadDir, &work);
  return Converted(result, work, tFuncConvertChinaFp, record);
}

int tFunc_ReadChinaIDCard_FP(const char* szDevice, const char* szBpNo, long nBaud, long nTimeOut,
                             char* szHeadDir, PERSONINFO_CHA_FP* record) {
  LOG_CARD("[%s] Start ", __func__);
  return tFuncReadChinaIDCard(szDevice, szBpNo, nBaud, nTimeOut, 1, szHeadDir, record);
}

int tFunc_ReadForeignerIDCard(const char* szDevice, const char* szBpNo, long nBaud, long nTimeOut,
                              char* szHeadDir, PERSONINFO_FOR* record) {
  LOG_CARD("[%s] Start ", __func__);
  Clear(record);
  PERSONINFO_FOR_FP work = {};
  const int result =
      tFuncReadForeignerIDCard(szDevice, szBpNo, nBaud, nTimeOut, 0, szHeadDir, &work);
  return Converted(result, work, tFuncConvertForeignFp, record);
}

int tFunc_ReadForeignerIDCard_FP(const char* szDevice, const char* szBpNo, long nBaud,
                                 long nTimeOut, char* szHeadDir, PERSONINFO_FOR_FP* record) {
  LOG_CARD("[%s] Start ", __func__);
  return tFuncReadForeignerIDCard(szDevice, szBpNo, nBaud, nTimeOut, 1, szHeadDir, record);
}

int tFunc_ReadIDCardForeigner(const char* szDevice, const char* szBpNo, long nBaud, long nTimeOut,
                              char* szHeadDir, PERSONINFO* record) {
  LOG_CARD("[%s] Start ", __func__);
  Clear(record);
  PERSONINFO_FOR_FP foreign = {};
  int result = tFuncReadForeignerIDCard(szDevice, szBpNo, nBaud, nTimeOut, 0, szHeadDir, &foreign);
  if (result != RET_PUB_SUCCESS) return result;

  PERSONINFO_FP work = {};  // On purpose: personType stays 0, which nothing sets on this way.
  result = NegativeOrSuccess(ConverStruct(nullptr, &foreign, &work));
  return Converted(result, work, tFuncConvertPersonFp, record);
}

int tFunc_ReadGATIDCard(const char* szDevice, const char* szBpNo, long nBaud, long nTimeOut,
                        char* szHeadDir, PERSONINFO_GAT* record) {
  Clear(record);
  PERSONINFO_GAT_FP work = {};
  const int result = tFuncReadGatIDCard(szDevice, szBpNo, nBaud, nTimeOut, 0, szHeadDir, &work);
  return Converted(result, work, tFuncConvertGatFp, record);
}

int tFunc_ReadGATIDCard_FP(const char* szDevice, const char* szBpNo, long nBaud, long nTimeOut,
                           char* szHeadDir, PERSONINFO_GAT_FP* record) {
  return tFuncReadGatIDCard(szDevice, szBpNo, nBaud, nTimeOut, 1, szHeadDir, record);
}

int tFunc_ReadCollectIDCard(const char* szDevice, const char* szBpNo, long nBaud, long nTimeOut,
                            char* szHeadDir, PERSONINFO_COLLECT* record) {
  Clear(record);
  PERSONINFO_COLLECT_FP work = {};
  const int result = tFuncReadCollectIDCard(szDevice, szBpNo, nBaud, nTimeOut, 0, szHeadDir, &work);
  LOG_CARD_RESULT(result < 0, "[%s] Read nRet = %d ", __func__, result);
  return Converted(result, work, tFuncConvertCollectFp, record);
}

int tFunc_ReadCollectIDCard_FP(const char* szDevice, const char* szBpNo, long nBaud, long nTimeOut,
                               char* szHeadDir, PERSONINFO_COLLECT_FP* record) {
  return tFuncReadCollectIDCard(szDevice, szBpNo, nBaud, nTimeOut, 1, szHeadDir, record);
}

int tFunc_ReadCollectIDCardInfo(const char* szDevice, const char* szBpNo, long nBaud, long nTimeOut,
                                int bFinger, char* szHeadDir, char* szJson) {
  LOG_CARD("[%s] Start ", __func__);
  if (szJson == nullptr) return RET_PUB_INVAL_PARAM;
  PERSONINFO_COLLECT_FP work = {};
  const int result =
      tFuncReadCollectIDCard(szDevice, szBpNo, nBaud, nTimeOut, bFinger, szHeadDir, &work);
  LOG_CARD_RESULT(result < 0, "[%s] end  nRet  %d  ", "tFuncReadCollectIDCard", result);
  if (result != RET_PUB_SUCCESS) return result;
  return tFuncConvertIdInfoStruct(nullptr, nullptr, nullptr, nullptr, &work, szJson);
}

int tFunc_CancelRead() {
  LOG_CARD("[%s] Start ", __func__);
  return CancelIdRead();
}
