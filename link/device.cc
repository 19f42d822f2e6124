// Device opening: the reader that the caller's text names, its speed, and the exchange of
// identity-card commands.
#include <cstdint>
#include <cstring>
#include <iterator>
#include <span>

#include "link/device_text.h"
#include "link/exchange.h"
#include "link/str.h"
#include "link/usb_ids.h"
#include "quillonid/link.h"
#include "quillonid/results.h"
#include "support/hex.h"
#include "support/log.h"

namespace {

// Transport description of the reader. Filled by tFuncOpenDevice; its fields stay until the next
// text changes them.
QL_TRANSPORT_DESCRIPTION g_IdParam;

// USB ids of the caller. Set by Dev_Zel_Id_AddHid; never cleared.
struct AddedUsbId {
  std::uint64_t product;
  std::uint64_t vendor;
};
constexpr std::uint32_t kUsbSlots = 10;
AddedUsbId g_IdHid[kUsbSlots];
std::uint32_t g_nIdHidNum;  // slots in use: the last index given, plus 1
int g_bIdSetHidFlag;        // 1 once an id was added

int g_bIdBaundFlag;  // not 0: reach serial readers at 9600, then raise. Set by
                     // Dev_Zel_Id_RaiseBaundFlag.
std::uint32_t
    g_ConnnectType;  // reported upward. Set by "HID", "SDT" and "PCSC" texts; kept by all others.

// The open card reader. Set by each successful COMM_Id_OpenCardReader.
struct {
  std::uint32_t nSlot;  // other than 0: refused
  int nTimeOut;         // seconds
} stCardReader;

constexpr int kDefaultBaud = 9600;
constexpr int kReadersDefaultBaud = 0;  // for COMM_Id_SetBaud: back to the reader's own speed
constexpr int kNoPause = 100;           // GeneralSleep divides by 200
constexpr std::size_t kDefaultIds = std::size(kKnownReaders);

constexpr std::uint8_t kHead = 0x01;  // of the card-reader channel
constexpr std::uint8_t kEnd = 0x04;

constexpr int kAnswerHead = 7;  // preamble and length of an identity-card answer
constexpr int kIncomplete = -1;

struct BaudCommand {
  int baud;
  std::array<std::uint8_t, 4> bytes;
  int size;
};
constexpr BaudCommand kBaudCommands[] = {
    {115200,              Hex("1B 25 53 31"), 4},
    {38400,               Hex("1B 25 53 32"), 4},
    {19200,               Hex("1B 25 53 33"), 4},
    {9600,                Hex("1B 25 53 34"), 4},
    {kReadersDefaultBaud, Hex("1B 25 42 00"), 3},
};

bool IsPort(std::uint32_t kind) { return kind == QL_KIND_SERIAL || kind == QL_KIND_AUX; }

bool RaisesBaud() { return g_bIdBaundFlag != 0; }

// The USB id of each try: the known ones, then the caller's.
class UsbTries {
 public:
  std::size_t count() const { return kDefaultIds + (g_bIdSetHidFlag == 1 ? g_nIdHidNum : 0); }

  void Take(std::size_t i, QL_TRANSPORT_DESCRIPTION* description) {
    LOG_DEVICE(" i = %d ", static_cast<int>(i));
    if (i < kDefaultIds) {
      Set(kKnownReaders[i].product, kKnownReaders[i].vendor, description);
      LOG_DEVICE("USE default Hid");
    } else if (added_ < g_nIdHidNum) {
      Set(g_IdHid[added_].product, g_IdHid[added_].vendor, description);
      ++added_;
      LOG_DEVICE("USE Set HId ");
    }
  }

 private:
  static void Set(std::uint64_t product, std::uint64_t vendor,
                  QL_TRANSPORT_DESCRIPTION* description) {
    description->nPid = static_cast<std::uint32_t>(product);
    description->nVid = static_cast<std::uint32_t>(vendor);
  }

  std::size_t added_ = 0;  // of the caller's ids taken so far
};

int OpenUsb() {
  UsbTries tries;
  for (std::size_t i = 0; i < tries.count(); ++i) {
    tries.Take(i, &g_IdParam);
    const int opened = COMM_Id_OpenCardReader(&g_IdParam);
    LOG_DEVICE_RESULT(opened < 0, "ICC_OpenTransPort: PID=%x,VID=%x, nRet=%d", g_IdParam.nPid,
                      g_IdParam.nVid, opened);
    if (opened == RET_PUB_SUCCESS) return RET_PUB_SUCCESS;
    if (i + 1 < tries.count()) COMM_Id_CloseCardReader();
  }
  return RET_PUB_DEVICE_ERROR;
}

int OpenOnce() {
  const int opened = COMM_Id_OpenCardReader(&g_IdParam);
  if (opened == RET_PUB_SUCCESS) return RET_PUB_SUCCESS;
  LOG_DEVICE_RESULT(opened < 0, "COMM_Id_OpenCardReader:%d, type = %d", opened,
                    static_cast<int>(g_IdParam.nKind));
  return RET_PUB_DEVICE_ERROR;
}

// The reader was reached at its own speed: tells it `baud` and reaches it again there. The close
// drains the line, so the command leaves before it.
int RaiseBaud(int baud) {
  COMM_Id_SetBaud(baud);
  GeneralSleep(kNoPause);
  COMM_Id_CloseCardReader();
  g_IdParam.nBaud = static_cast<std::uint32_t>(baud);
  return OpenOnce();
}

int OpenPort(int baud) {
  const int opened = OpenOnce();
  if (opened != RET_PUB_SUCCESS) return opened;
  if (baud == kDefaultBaud || !RaisesBaud() || !IsPort(g_IdParam.nKind)) return RET_PUB_SUCCESS;
  return RaiseBaud(baud);
}

// Bytes of a whole identity-card answer by its head, or 0 while the head is not there.
int AnnouncedSize(const unsigned char* buffer, int count) {
  return count < kAnswerHead ? 0 : kAnswerHead + buffer[5] * 256 + buffer[6];
}

// The USB transport takes trailing zero bytes away, also those that belong to the answer: one card
// in 256 has the check byte 00. The answer's own length says how many to put back.
int WithTrailingZeros(unsigned char* response, int got, std::uint32_t max) {
  const int announced = AnnouncedSize(response, got);
  if (announced < got || static_cast<std::uint32_t>(announced) > max) return got;
  std::memset(response + got, 0, static_cast<std::size_t>(announced - got));
  return announced;
}

}  // namespace

int tFuncOpenDevice(const char* device, const char* ext_no, int baud, int aux_param,
                    int timeout_s) {
  LOG_DEVICE("===>  [%s] Start ", __func__);
  if (!device || !*device) return RET_PUB_DEVICE_ERROR;
  LOG_DEVICE("***********************pszDevice = %s", device);
  g_IdParam.nTimeOut = timeout_s;

  const int first_baud = RaisesBaud() ? kDefaultBaud : baud;
  const DeviceText text = ParseDeviceText(device, baud, first_baud, aux_param, &g_IdParam);
  if (text.result != RET_PUB_SUCCESS) return text.result;
  if (text.connect_type != kKeepConnectType)
    g_ConnnectType = static_cast<std::uint32_t>(text.connect_type);

  const int opened = g_IdParam.nKind == QL_KIND_USB ? OpenUsb() : OpenPort(baud);
  if (opened != RET_PUB_SUCCESS) return opened;
  if (IsPort(g_IdParam.nKind) && SetExtNo(ext_no) != RET_PUB_SUCCESS) {
    COMM_Id_CloseCardReader();
    return RET_PUB_DEVICE_ERROR;
  }
  return RET_PUB_SUCCESS;
}

int tFuncCloseDevice() {
  if (g_IdParam.nBaud != kDefaultBaud && RaisesBaud() && IsPort(g_IdParam.nKind)) {
    LOG_DEVICE("baud reset ");
    COMM_Id_SetBaud(kReadersDefaultBaud);
    GeneralSleep(kNoPause);
  }
  LOG_DEVICE("ICC_CloseTransPort START");
  return COMM_Id_CloseCardReader();
}

int Dev_Zel_IdSendAndReciveData(std::uint32_t mode, const unsigned char* command, std::uint32_t len,
                                unsigned char* response, std::uint32_t max) {
  LOG_DEVICE("Dev_Zel_IdSendAndReciveData START");
  LOG_DEVICE("1111");
  COMM_Zel_SetHidClearZero(0);
  LOG_DEVICE("1112");
  if (mode != 1) {
    LOG_DEVICE("222");
    COMM_Zel_SetEndCondition(IdEndCondition);
    LOG_DEVICE("333");
  }
  int got = COMM_Zel_SendAndReciveData(mode != 1 ? 1 : 0, 0, 0, command, static_cast<int>(len),
                                       response, static_cast<int>(max));
  if (got > 0 && mode != 1 && ReaderKind() == QL_KIND_USB)
    got = WithTrailingZeros(response, got, max);
  COMM_Zel_SetHidClearZero(1);
  return got;
}

int Dev_Zel_IdReciveData(unsigned char* buffer, int max) {
  COMM_Zel_SetEndCondition(IdEndCondition);
  return COMM_Zel_ReadDataFromReader(1, 0, 0, buffer, max);
}

int IdEndCondition(const unsigned char* buffer, int count) {
  if (!buffer || count < kAnswerHead) return kIncomplete;
  return AnnouncedSize(buffer, count) <= count ? 0 : kIncomplete;
}

int Dev_Zel_IdCardCancel() {
  COMM_Id_CancelRead();
  return COMM_Zel_Cancel();
}

std::uint32_t Dev_Zel_IdCard_GetConnectType() { return g_ConnnectType; }

int Dev_Zel_Id_AddHid(std::uint32_t index, std::uint64_t product_id, std::uint64_t vendor_id) {
  LOG_DEVICE("[%s] Start nIndex = %d", __func__, static_cast<int>(index));
  if (index >= kUsbSlots) return RET_PUB_INVAL_PARAM;
  g_IdHid[index] = {product_id, vendor_id};
  g_bIdSetHidFlag = 1;
  g_nIdHidNum = index + 1;  // On purpose: the slots below count as well, whatever they hold.
  LOG_DEVICE("[%s] End g_nHidNum = %d  ", __func__, static_cast<int>(g_nIdHidNum));
  return RET_PUB_SUCCESS;
}

int Dev_Zel_Id_RaiseBaundFlag(int flag) {
  g_bIdBaundFlag = flag;
  return RET_PUB_SUCCESS;
}

int SetExtNo(const char* /*ext_no*/) { return RET_PUB_SUCCESS; }

int Set_ZelBp(const char* letter) {
  LOG_DEVICE("[%s] Start ", __func__);
  if (!letter || !*letter || !std::strchr("ABCK", *letter)) return RET_PUB_SUCCESS;
  const unsigned char command[] = {0x1B, '%', static_cast<unsigned char>(*letter)};
  return COMM_Zel_SendAndReciveData(0, 0, 0, command, sizeof command, nullptr, 0);
}

int COMM_Id_InitCardReaderParam(QL_TRANSPORT_DESCRIPTION* /*description*/) {
  return RET_PUB_SUCCESS;
}

int COMM_Id_OpenCardReader(QL_TRANSPORT_DESCRIPTION* description) {
  if (!description || description->nSlot != 0) return RET_PUB_DEVICE_ERROR;
  const int result = COMM_Zel_OpenReader(description);
  if (result == RET_PUB_SUCCESS) {
    stCardReader.nSlot = description->nSlot;
    stCardReader.nTimeOut = description->nTimeOut;
  }
  return result;
}

int COMM_Id_CloseCardReader() {
  return stCardReader.nSlot != 0 ? RET_PUB_DEVICE_ERROR : COMM_Zel_CloseReader();
}

int COMM_Id_WriteDataToCardReader(const unsigned char* data, int len) {
  if (stCardReader.nSlot != 0) return RET_PUB_DEVICE_ERROR;
  return COMM_Zel_WriteDataToReader(kHead, kEnd, data, len);
}

int COMM_Id_ReadDataFromCardReader(unsigned char* buffer, int max) {
  if (stCardReader.nSlot != 0) return RET_PUB_DEVICE_ERROR;
  return COMM_Zel_ReadDataFromReader(1, kHead, kEnd, buffer, max);
}

int COMM_Id_CardReaderSynBps(QL_TRANSPORT_DESCRIPTION* description) {
  const unsigned char none = 0;
  if (stCardReader.nSlot == 0 && COMM_Zel_ReaderCmd(&none, 0) != 0) return 1;
  COMM_Id_CloseCardReader();
  if (COMM_Id_OpenCardReader(description) == RET_PUB_SUCCESS) return 0;
  COMM_Id_CloseCardReader();
  return -1;
}

int COMM_Id_SetBaud(int baud) {
  for (const BaudCommand& command : kBaudCommands) {
    if (command.baud == baud)
      return COMM_Dev_WriteDataToTransPort(command.bytes.data(), command.size);
  }
  const unsigned char none = 0;
  return COMM_Dev_WriteDataToTransPort(
      &none, 0);  // Nothing for any other speed: the transport refuses it.
}

int COMM_Id_CardReaderResetSynBps() { return RET_PUB_SUCCESS; }

std::uint32_t COMM_Id_CardReaderGetRecStatus() { return COMM_Zel_GetRecStatus(); }

int COMM_Id_CancelRead() {
  LOG_DEVICE("[%s] Start ", __func__);
  return COMM_Zel_Cancel();
}
