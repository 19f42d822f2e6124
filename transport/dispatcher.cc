// Dispatcher: routes open, write, read, cancel and close to the transport of the saved connection
// kind. The outer functions (COMM_Dev_) log and keep their names for the reader layer; the inner
// ones (COMM_Dev_Linux_) route.
#include <algorithm>
#include <atomic>
#include <climits>
#include <cstdint>
#include <cstring>

#include "quillonid/results.h"
#include "quillonid/transport.h"
#include "support/clock.h"
#include "support/log.h"

namespace {

// What the open transport is read with. Set by each successful open, by COMM_Dev_ChangeTermParam
// and SetBackUpParam; the first two fields also by their own functions. A close keeps all of it:
// the transports themselves say that they are not open.
constinit struct {
  int nTimeOut;  // seconds left for reads, a budget for the whole exchange; may go below 0
  QL_END_CONDITION pEnd;
  std::atomic<std::uint32_t> nKind;  // read by a cancel from another thread
  std::uint32_t nAuxCloseFlag;
  int nAuxSelector;  // 1 or more: auxiliary port
} stBackUpParam = {};

// Kind of the transport that the dispatcher holds open, or 0. Set by a successful open; cleared by
// close and by a failed open, which leaves none.
std::uint32_t s_nOpenKind;

constexpr int kNoTransport = -1;

bool IsAuxPort() { return stBackUpParam.nAuxSelector >= 1; }

void KeepReadSettings(const QL_TRANSPORT_DESCRIPTION& description) {
  stBackUpParam.nTimeOut = description.nTimeOut;
  stBackUpParam.pEnd = description.pEnd;
  stBackUpParam.nKind = description.nKind;
  stBackUpParam.nAuxCloseFlag = description.nAuxCloseFlag;
}

int OpenSerial(const QL_TRANSPORT_DESCRIPTION& description) {
  if (static_cast<int>(description.nAuxNumber) >= 1) {
    return COMM_Com_OpenLinuxAux(description.nAuxParam, description.nAuxNumber, description.nBaud,
                                 description.nAuxCloseFlag);
  }
  char path[sizeof description.szPath + 1] = {};  // ends in a zero whatever the caller left there
  std::memcpy(path, description.szPath, sizeof description.szPath);
  return COMM_Com_OpenLinux(path, static_cast<int>(description.nBaud));
}

int OpenUsb(const QL_TRANSPORT_DESCRIPTION& description) {
  LOG_DEVICE("TYPE_USBLIB_HID\r\n");
  return COMM_Hid_OpenLinuxUsbLibHid(description.nVid, description.nPid);
}

int Close(std::uint32_t kind) {
  switch (kind) {
    case QL_KIND_SERIAL:
      return IsAuxPort() ? COMM_Com_CloseLinuxAux(stBackUpParam.nAuxCloseFlag)
                         : COMM_Com_CloseLinux();
    case QL_KIND_USB:
      return COMM_Hid_CloseLinuxUsbLibHid();
    default:
      return kNoTransport;
  }
}

int ReadSerial(unsigned char* buffer, int max) {
  const auto read = IsAuxPort() ? COMM_Com_ReadLinuxAux : COMM_Com_ReadLinux;
  const int got =
      read(buffer, static_cast<std::uint32_t>(max), stBackUpParam.nTimeOut, stBackUpParam.pEnd);
  DPrintDataHexToFile("PACKGET READ", buffer, got);
  return got;
}

int ReadUsb(unsigned char* buffer, int max) {
  LOG_DEVICE("TYPE_USBLIB_HID\n");
  return COMM_Hid_ReadLinuxUsbLibHid(
      buffer, max, static_cast<std::uint32_t>(stBackUpParam.nTimeOut), stBackUpParam.pEnd);
}

}  // namespace

QL_API int COMM_Dev_Linux_OpenTransPort(QL_TRANSPORT_DESCRIPTION* description) {
  if (!description) return RET_PUB_INVAL_PARAM;
  const std::uint32_t kind = description->nKind;
  if (kind != QL_KIND_SERIAL && kind != QL_KIND_USB) return kNoTransport;

  // One link at a time: a transport of the other kind would keep its descriptor or handle.
  if (s_nOpenKind != 0 && s_nOpenKind != kind) Close(s_nOpenKind);
  const int result = kind == QL_KIND_SERIAL ? OpenSerial(*description) : OpenUsb(*description);
  s_nOpenKind = result == RET_PUB_SUCCESS ? kind : 0;
  if (result == RET_PUB_SUCCESS) {
    KeepReadSettings(*description);
    stBackUpParam.nAuxSelector = static_cast<int>(description->nAuxNumber);
  }
  return result;
}

QL_API int COMM_Dev_Linux_WriteDataToTransPort(const unsigned char* data, int len) {
  switch (stBackUpParam.nKind) {
    case QL_KIND_SERIAL:
      return IsAuxPort() ? COMM_Com_WriteLinuxAux(data, len) : COMM_Com_WriteLinux(data, len);
    case QL_KIND_USB:
      return COMM_Hid_WriteLinuxUsbLibHid(data, static_cast<std::uint32_t>(len));
    default:
      return kNoTransport;
  }
}

QL_API int COMM_Dev_Linux_ReadDataFromTransPort(unsigned char* buffer, int max) {
  const std::int64_t start = MonotonicSeconds();
  int result = kNoTransport;
  switch (stBackUpParam.nKind) {
    case QL_KIND_SERIAL:
      result = ReadSerial(buffer, max);
      break;
    case QL_KIND_USB:
      result = ReadUsb(buffer, max);
      break;
    default:
      return kNoTransport;
  }
  const std::int64_t left = stBackUpParam.nTimeOut - (MonotonicSeconds() - start);
  stBackUpParam.nTimeOut = static_cast<int>(std::max<std::int64_t>(left, INT_MIN));
  return result;
}

QL_API int COMM_Dev_Linux_CloseTransPort() {
  const std::uint32_t kind = stBackUpParam.nKind;
  if (s_nOpenKind == kind) s_nOpenKind = 0;
  return Close(kind);
}

QL_API int COMM_Dev_Linux_CancelLinuxRead() {
  switch (stBackUpParam.nKind) {
    case QL_KIND_SERIAL:
      return COMM_Com_CancelLinuxRead();
    case QL_KIND_USB:
      return COMM_Hid_CancelLinuxUsbLibHid();
    default:
      return kNoTransport;
  }
}

QL_API int COMM_Dev_Linux_ChangeReadTime(int seconds) {
  stBackUpParam.nTimeOut = seconds;
  return RET_PUB_SUCCESS;
}

QL_API int COMM_Dev_Linux_ChangeEndCondition(QL_END_CONDITION end_condition) {
  stBackUpParam.pEnd = end_condition;
  return RET_PUB_SUCCESS;
}

QL_API int COMM_Dev_Linux_SetLinuxHidClearZero(std::uint32_t flag) {
  COMM_Hid_SetLinuxHidClearZero(flag);
  return RET_PUB_SUCCESS;
}

QL_API int COMM_Dev_Linux_ChangeTermParam(QL_TRANSPORT_DESCRIPTION* description) {
  if (!description) return RET_PUB_INVAL_PARAM;
  KeepReadSettings(*description);
  return RET_PUB_SUCCESS;
}

QL_API int SetBackUpParam(const QL_SAVED_PARAMETERS* parameters) {
  if (!parameters) return RET_PUB_INVAL_PARAM;
  stBackUpParam.nTimeOut = parameters->nTimeOut;
  stBackUpParam.pEnd = parameters->pEnd;
  stBackUpParam.nKind = parameters->nKind;
  stBackUpParam.nAuxCloseFlag = parameters->nAuxCloseFlag;
  stBackUpParam.nAuxSelector = parameters->nAuxSelector;
  return RET_PUB_SUCCESS;
}

QL_API int COMM_Dev_OpenTransPort(QL_TRANSPORT_DESCRIPTION* description) {
  LOG_DEVICE("ICC_OpenLinuxTransPort\r\n");
  return COMM_Dev_Linux_OpenTransPort(description);
}

QL_API int COMM_Dev_WriteDataToTransPort(const unsigned char* data, int len) {
  LOG_DEVICE("[ICC_WriteDataToLinuxTransPort] Start ");
  return COMM_Dev_Linux_WriteDataToTransPort(data, len);
}

QL_API int COMM_Dev_ReadDataFromTransPort(unsigned char* buffer, int max) {
  return COMM_Dev_Linux_ReadDataFromTransPort(buffer, max);
}

QL_API int COMM_Dev_CloseTransPort() {
  LOG_DEVICE("[ICC_CloseLinuxTransPort] Start ");
  return COMM_Dev_Linux_CloseTransPort();
}

QL_API int COMM_Dev_CancelRead() { return COMM_Dev_Linux_CancelLinuxRead(); }

QL_API int COMM_Dev_ChangeReadTimeOut(int seconds) {
  return COMM_Dev_Linux_ChangeReadTime(seconds);
}

QL_API int COMM_Dev_ChangeEndCondition(QL_END_CONDITION end_condition) {
  return COMM_Dev_Linux_ChangeEndCondition(end_condition);
}

QL_API int COMM_Dev_SetHidClearZero(std::uint32_t flag) {
  LOG_DEVICE("[%s] Start ", __func__);
  COMM_Dev_Linux_SetLinuxHidClearZero(flag);
  LOG_DEVICE("[%s] end ", __func__);
  return RET_PUB_SUCCESS;
}

QL_API int COMM_Dev_ChangeTermParam(QL_TRANSPORT_DESCRIPTION* description) {
  return COMM_Dev_Linux_ChangeTermParam(description);
}

QL_API int COMM_Dev_UseComm(int x) { return x; }
