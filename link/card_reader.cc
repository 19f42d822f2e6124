// The card reader of the device: open, close, the framed channel, and the baud commands.
#include <algorithm>
#include <cstdint>
#include <iterator>

#include "quillonid/link.h"
#include "quillonid/results.h"
#include "support/log.h"

namespace {

// The open card reader. Set by each successful open.
struct {
  std::uint32_t nSlot;  // anything but 0 is refused
  std::int32_t nTimeOut;
} stCardReader;

constexpr std::uint8_t kHead = 0x01;
constexpr std::uint8_t kEnd = 0x04;

// Rate in bit/s, 0 for the reader's own; command without its zero.
struct BaudCommand {
  int baud;
  std::uint8_t size;
  unsigned char bytes[5];
};
constexpr BaudCommand kBaudCommands[] = {
    {115200, 4, "\x1B%S1"},
    {38400,  4, "\x1B%S2"},
    {19200,  4, "\x1B%S3"},
    {9600,   4, "\x1B%S4"},
    {0,      3, "\x1B%B" },
};
constexpr BaudCommand kNoCommand = {};

bool IsRefused() { return stCardReader.nSlot != 0; }

}  // namespace

QL_API int COMM_Id_InitCardReaderParam(QL_TRANSPORT_DESCRIPTION* /*description*/) { return 0; }

QL_API int COMM_Id_OpenCardReader(QL_TRANSPORT_DESCRIPTION* description) {
  if (!description || description->nSlot != 0) return RET_PUB_DEVICE_ERROR;
  const int result = COMM_Zel_OpenReader(description);
  if (result == RET_PUB_SUCCESS) {
    stCardReader.nSlot = description->nSlot;
    stCardReader.nTimeOut = description->nTimeOut;
  }
  return result;
}

QL_API int COMM_Id_CloseCardReader() {
  return IsRefused() ? RET_PUB_DEVICE_ERROR : COMM_Zel_CloseReader();
}

QL_API int COMM_Id_WriteDataToCardReader(const unsigned char* data, int len) {
  return IsRefused() ? RET_PUB_DEVICE_ERROR : COMM_Zel_WriteDataToReader(kHead, kEnd, data, len);
}

QL_API int COMM_Id_ReadDataFromCardReader(unsigned char* buffer, int max) {
  return IsRefused() ? RET_PUB_DEVICE_ERROR
                     : COMM_Zel_ReadDataFromReader(1, kHead, kEnd, buffer, max);
}

QL_API int COMM_Id_CardReaderSynBps(QL_TRANSPORT_DESCRIPTION* description) {
  if (!IsRefused() && COMM_Zel_ReaderCmd(kNoCommand.bytes, 0) != RET_PUB_SUCCESS) return 1;
  COMM_Id_CloseCardReader();
  if (COMM_Id_OpenCardReader(description) == RET_PUB_SUCCESS) return 0;
  COMM_Id_CloseCardReader();
  return -1;
}

QL_API int COMM_Id_SetBaud(int baud) {
  const auto known =
      std::find_if(std::begin(kBaudCommands), std::end(kBaudCommands),
                   [baud](const BaudCommand& command) { return command.baud == baud; });
  const BaudCommand& command = known != std::end(kBaudCommands) ? *known : kNoCommand;
  return COMM_Dev_WriteDataToTransPort(command.bytes, command.size);
}

QL_API int COMM_Id_CardReaderResetSynBps() { return 0; }

QL_API uint32_t COMM_Id_CardReaderGetRecStatus() { return COMM_Zel_GetRecStatus(); }

QL_API int COMM_Id_CancelRead() {
  LOG_DEVICE("[%s] Start ", __func__);
  return COMM_Zel_Cancel();
}
