// Exported settings. They hold for the process; the layers below keep them.
#include <array>
#include <cstring>

#include "quillonid/carddata.h"
#include "quillonid/link.h"
#include "quillonid/quillonid.h"
#include "quillonid/reader.h"
#include "support/log.h"

namespace {

constexpr std::size_t kUsbIdDigits = 4;
using UsbIdBytes = std::array<unsigned char, kUsbIdDigits / 2>;

bool IsUsbIdText(const char* text) { return text != nullptr && std::strlen(text) == kUsbIdDigits; }

UsbIdBytes ParseUsbId(const char* text) {
  UsbIdBytes bytes{};
  Str_AscToHex(text, kUsbIdDigits, bytes.data());
  return bytes;
}

int UsbIdValue(const UsbIdBytes& bytes) { return bytes[0] * 256 + bytes[1]; }

}  // namespace

int APP_ID_SetSearchDirect(int bFlag) {
  LOG_API("[%s] Start ", __func__);
  return tFuncSearchIdDirect(bFlag);
}

int APP_ID_SetOneInstrReadInfo(int bFlag) {
  LOG_API("[%s] Start ", __func__);
  return tFuncReadOneInstr(bFlag);
}

int APP_ID_AddHID(int nIndex, int nPid, int nVid) {
  const auto index = static_cast<unsigned>(nIndex);
  const auto pid = static_cast<unsigned>(nPid);
  const auto vid = static_cast<unsigned>(nVid);
  LOG_API("[%s] Start nPid = %02x nVid = %02x ", __func__, pid, vid);
  return Dev_Zel_Id_AddHid(index, pid, vid);
}

int QL_APP_Id_RaiseBaundFlag(int bFlag) {
  LOG_API("[%s] Start bFlag = %02x", __func__, static_cast<unsigned>(bFlag));
  return Dev_Zel_Id_RaiseBaundFlag(bFlag);
}

int APP_ID_IDCardAddPhotoDataToJsonFlag(int bFlag) {
  return tFunc_SetAddPhotoDataToJsonFlag(bFlag);
}

int APP_ID_IDCardAddNativeDataToJsonFlag() { return tFunc_SetAddNativeDataToJsonFlag(); }

int Linux_QL_ID_RaiseBaundFlag(int bFlag) { return QL_APP_Id_RaiseBaundFlag(bFlag); }

int Linux_QL_ID_SetOrgData() { return APP_ID_IDCardAddNativeDataToJsonFlag(); }

int Linux_QL_ID_AddPhotoDataToJsonFlag(int bFlag) {
  return APP_ID_IDCardAddPhotoDataToJsonFlag(bFlag);
}

int Linux_QL_ID_AddHID(int nIndex, const char* szPid, const char* szVid) {
  LOG_API("[%s] Start ", __func__);
  if (static_cast<unsigned>(nIndex) > 9) return RET_PUB_INVAL_PARAM;
  if (!IsUsbIdText(szPid) || !IsUsbIdText(szVid)) return RET_PUB_INVAL_PARAM;
  LOG_API("szPid = %s szVid = %s ", szPid, szVid);

  const UsbIdBytes pid = ParseUsbId(szPid);
  const UsbIdBytes vid = ParseUsbId(szVid);
  DPrintDataHexToFile("szPidHex", pid.data(), pid.size());
  DPrintDataHexToFile("szVidHex", vid.data(), vid.size());
  return APP_ID_AddHID(nIndex, UsbIdValue(pid), UsbIdValue(vid));
}

int Linux_QL_ID_SetSearchDirect(int bFlag) {
  LOG_API("[%s] Start ", __func__);
  return APP_ID_SetSearchDirect(bFlag);
}

int Linux_QL_ID_SetOneInstrReadInfo() {
  LOG_API("[%s] Start ", __func__);
  return RET_PUB_SUCCESS;  // On purpose: the mode stays as it is.
}
