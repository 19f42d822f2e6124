// One read: open the device, run the card sequence, close the device, keep the reply.
#include <algorithm>
#include <limits>

#include "quillonid/link.h"
#include "quillonid/reader.h"
#include "quillonid/results.h"
#include "reader/native_data.h"
#include "support/log.h"

namespace {

struct Device {
  const char* szDevice;
  const char* szBpNo;
  int nBaud;
  int nParam;  // passed on to the opening
  int nTimeOut;
};

void LogCycle(const Device& device) {
  LOG_CARD("ReadIDCardInfo : szDevice:%s, bpno:%s, nbaud:%d, timeout:%d",
           PrintableText(device.szDevice), PrintableText(device.szBpNo), device.nBaud,
           device.nTimeOut);
}

int OpenReadClose(const Device& device, int bFinger, unsigned char* pData, int* pLen) {
  if (pLen != nullptr) *pLen = 0;
  const int opened =
      tFuncOpenDevice(device.szDevice, device.szBpNo, device.nBaud, device.nParam, device.nTimeOut);
  if (opened != RET_PUB_SUCCESS) {
    LOG_CARD("OpenDevice failed!");
    return opened;
  }
  const int result = GetIDCardInfo(device.nTimeOut, bFinger, pData, pLen);
  // The search takes a start tick of its own, so this is the time since the last search began.
  GetTickCountEndTime();
  LOG_CARD("ReadIDCard over\xA3\xAC\xBA\xC4\xCA\xB1=%ld ms",  // ，耗时 ("took"), GBK
           GetTickCountTimeOut());
  if (bFinger != 0) {
    LOG_CARD_RESULT(result < 0, "GetIDCardInfo_FP  nRet = %d ", result);
  } else {
    LOG_CARD_RESULT(result < 0, "GetIDCardInfo nRet = %d ", result);
  }
  tFuncCloseDevice();
  return result;
}

int Saturated(long value) {
  return static_cast<int>(
      std::clamp<long>(value, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

}  // namespace

int ReadIDCardInfo(const char* szDevice, const char* szBpNo, int nBaud, int nParam, int nTimeOut,
                   unsigned char* pData, int* pLen) {
  const Device device = {szDevice, szBpNo, nBaud, nParam, nTimeOut};
  LogCycle(device);
  GetTickCountStartTime();
  return OpenReadClose(device, 0, pData, pLen);
}

int ReadIDCardInfo_FP(const char* szDevice, const char* szBpNo, int nBaud, int nParam, int nTimeOut,
                      unsigned char* pData, int* pLen) {
  const Device device = {szDevice, szBpNo, nBaud, nParam, nTimeOut};
  GetTickCountStartTime();
  LogCycle(device);
  return OpenReadClose(device, 1, pData, pLen);
}

int tFuncReadIdNativeData(const char* szDevice, const char* szBpNo, long nBaud, long nTimeOut,
                          int bFinger, unsigned char* pData, int* pLen) {
  // A number that no int holds must not become a small one that is accepted.
  const int baud = Saturated(nBaud);
  const int time_out = Saturated(nTimeOut);
  LOG_CARD("[%s]Start ", __func__);
  LOG_CARD("pszDevice: %s", PrintableText(szDevice));
  LOG_CARD("szBpNo: %s", PrintableText(szBpNo));
  LOG_CARD("nBaud: %d", baud);
  LOG_CARD("nTimeOut: %d", time_out);
  SetLastReadMode(bFinger);

  const int result = bFinger != 0
                         ? ReadIDCardInfo_FP(szDevice, szBpNo, baud, 0, time_out, pData, pLen)
                         : ReadIDCardInfo(szDevice, szBpNo, baud, 0, time_out, pData, pLen);
  if (result < 0) return result;  // The card read before stays kept.

  tFunc_SetIdNativeData(pData, *pLen);
  // On purpose: a dump of type 0 is never written, which keeps the card's bytes out of the log.
  DPrintDataHexToFileAddType(0, kLogCard, "ReadIDCardInfo szData", pData, *pLen);
  return RET_PUB_SUCCESS;
}
