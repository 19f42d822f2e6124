// Device opening: from the caller's device string to an open reader, and back.
#include <cstdint>
#include <iterator>

#include "link/device_text.h"
#include "link/usb_ids.h"
#include "quillonid/link.h"
#include "quillonid/results.h"
#include "quillonid/support.h"
#include "support/log.h"

namespace {

struct AddedUsbId {
  std::uint64_t product;
  std::uint64_t vendor;
};
constexpr std::uint32_t kAddedIdRoom = 10;
constexpr auto kKnownIds = static_cast<std::uint32_t>(std::size(kKnownReaders));

QL_TRANSPORT_DESCRIPTION g_IdParam;  // What was opened last. Set by tFuncOpenDevice; kept.
std::uint32_t g_ConnnectType;        // 0 USB, 2 PCSC, 3 SDT. Set by their keywords; kept.

// USB ids that the caller added. Set by Dev_Zel_Id_AddHid; kept.
AddedUsbId g_IdHid[kAddedIdRoom];
std::uint32_t g_nIdHidNum;  // how many are tried
int g_bIdSetHidFlag;        // 1 once any was added

// Non-zero: reach serial readers at kFirstBaud, then raise. Set by Dev_Zel_Id_RaiseBaundFlag; kept.
int g_bIdBaundFlag;

constexpr int kFirstBaud = 9600;  // of every reader after power-on
constexpr int kPause = 100;       // On purpose: GeneralSleep divides by 200, so this is no pause.

// Serial lines have a baud rate and may stand behind an extension box.
bool IsSerialLine() { return g_IdParam.nKind == QL_KIND_SERIAL || g_IdParam.nKind == QL_KIND_AUX; }

void TakeUsbId(std::uint32_t attempt) {
  if (attempt < kKnownIds) {
    g_IdParam.nPid = kKnownReaders[attempt].product;
    g_IdParam.nVid = kKnownReaders[attempt].vendor;
    LOG_DEVICE("USE default Hid");
  } else {
    g_IdParam.nPid = static_cast<std::uint32_t>(g_IdHid[attempt - kKnownIds].product);
    g_IdParam.nVid = static_cast<std::uint32_t>(g_IdHid[attempt - kKnownIds].vendor);
    LOG_DEVICE("USE Set HId ");
  }
}

int OpenUsb(std::uint32_t attempts) {
  for (std::uint32_t i = 0;; ++i) {
    LOG_DEVICE(" i = %u ", i);
    TakeUsbId(i);
    const int nRet = COMM_Id_OpenCardReader(&g_IdParam);
    LOG_DEVICE_RESULT(nRet != 0, "ICC_OpenTransPort: PID=%x,VID=%x, nRet=%d", g_IdParam.nPid,
                      g_IdParam.nVid, nRet);
    if (nRet == RET_PUB_SUCCESS) return nRet;
    if (i + 1 == attempts) return RET_PUB_DEVICE_ERROR;
    COMM_Id_CloseCardReader();
  }
}

int OpenOnce() {
  const int result = COMM_Id_OpenCardReader(&g_IdParam);
  if (result == RET_PUB_SUCCESS) return result;
  LOG_DEVICE_RESULT(true, "COMM_Id_OpenCardReader:%d, type = %u", result, g_IdParam.nKind);
  return RET_PUB_DEVICE_ERROR;
}

// Tells the reader its new rate and follows it there. The close drains the line, so that the
// command leaves before it.
int RaiseBaud(int baud) {
  COMM_Id_SetBaud(baud);
  GeneralSleep(kPause);
  COMM_Id_CloseCardReader();
  g_IdParam.nBaud = static_cast<std::uint32_t>(baud);
  return OpenOnce();
}

int OpenLine(int baud) {
  const int result = OpenOnce();
  const bool raise = g_bIdBaundFlag != 0 && baud != kFirstBaud && IsSerialLine();
  return result == RET_PUB_SUCCESS && raise ? RaiseBaud(baud) : result;
}

}  // namespace

QL_API int tFuncOpenDevice(const char* device, const char* ext_no, int baud, int aux_param,
                           int timeout_s) {
  LOG_DEVICE("===>  [%s] Start ", __func__);
  if (!device || *device == '\0') return RET_PUB_DEVICE_ERROR;
  const std::uint32_t attempts = kKnownIds + (g_bIdSetHidFlag == 1 ? g_nIdHidNum : 0);
  LOG_DEVICE("***********************pszDevice = %s", device);
  g_IdParam.nTimeOut = timeout_s;

  const DeviceText text = {device, baud, g_bIdBaundFlag != 0 ? kFirstBaud : baud, aux_param};
  int result = ReadDeviceText(text, &g_IdParam, &g_ConnnectType);
  if (result != RET_PUB_SUCCESS) return result;

  result = g_IdParam.nKind == QL_KIND_USB ? OpenUsb(attempts) : OpenLine(baud);
  if (result != RET_PUB_SUCCESS) return result;

  if (IsSerialLine() && SetExtNo(ext_no) != RET_PUB_SUCCESS) {
    // SetExtNo() takes every number as yet. GCOVR_EXCL_START
    COMM_Id_CloseCardReader();
    return RET_PUB_DEVICE_ERROR;
    // GCOVR_EXCL_STOP
  }
  return RET_PUB_SUCCESS;
}

QL_API int tFuncCloseDevice() {
  if (g_IdParam.nBaud != kFirstBaud && g_bIdBaundFlag != 0 && IsSerialLine()) {
    LOG_DEVICE("baud reset ");
    COMM_Id_SetBaud(0);
    GeneralSleep(kPause);
  }
  LOG_DEVICE("ICC_CloseTransPort START");
  return COMM_Id_CloseCardReader();
}

QL_API uint32_t Dev_Zel_IdCard_GetConnectType() { return g_ConnnectType; }

QL_API int Dev_Zel_Id_AddHid(uint32_t index, uint64_t product_id, uint64_t vendor_id) {
  LOG_DEVICE("[%s] Start nIndex = %d", __func__, static_cast<int>(index));
  const bool fits = index < kAddedIdRoom;
  if (fits) {
    g_IdHid[index] = {product_id, vendor_id};
    g_bIdSetHidFlag = 1;
    g_nIdHidNum = index + 1;  // On purpose: not one more than before.
  }
  LOG_DEVICE("[%s] End g_nHidNum = %u  ", __func__, g_nIdHidNum);
  return fits ? RET_PUB_SUCCESS : RET_PUB_INVAL_PARAM;
}

QL_API int Dev_Zel_Id_RaiseBaundFlag(int flag) {
  g_bIdBaundFlag = flag;
  return RET_PUB_SUCCESS;
}

QL_API int SetExtNo(const char* /*ext_no*/) { return 0; }

QL_API int Set_ZelBp(const char* letter) {
  LOG_DEVICE("[%s] Start ", __func__);
  const char port = letter ? *letter : '\0';
  if (port != 'A' && port != 'B' && port != 'C' && port != 'K') return 0;
  const std::uint8_t command[] = {0x1B, '%', static_cast<std::uint8_t>(port)};
  return COMM_Zel_SendAndReciveData(0, 0, 0, command, sizeof command, nullptr, 0);
}
