// Reader exchange: a message goes out, framed or raw, and its answer comes back.
#include "link/exchange.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "link/packet.h"
#include "quillonid/link.h"
#include "quillonid/results.h"
#include "support/log.h"

namespace {

// The open reader and its last answer.
struct {
  std::uint32_t nKind;  // connection kind. Set by each successful open; never cleared.
  std::uint32_t
      gStatus;  // status word of the last framed response. Cleared by every read and exchange.
} stZELPAD;
std::uint8_t gEndChar = 0x03;  // end byte that ChangeEndCondition looks for. Set by every read.

constexpr int kIncomplete = -1;
constexpr int kNotWritten = -1;
constexpr std::size_t kRawRoom = 1024;    // longest raw message
constexpr std::size_t kReadRoom = 4096;   // most bytes of one read
constexpr std::size_t kSpareRoom = 1024;  // of one further USB transfer

bool IsFramed(std::uint8_t head, std::uint8_t end) { return head != 0 || end != 0; }

void ResetStatus() { stZELPAD.gStatus = 0; }

// A negative length is never written, whatever code the transport gives for it.
int Written(int result, int len) { return result == len && len >= 0 ? 0 : kNotWritten; }

int WriteFramed(std::uint8_t head, std::uint8_t end, const unsigned char* data, int len) {
  if (len < 0 || static_cast<std::size_t>(len) > kLargestRequest || !data) return kNotWritten;
  unsigned char frame[kPacketArea] = {};
  const auto size =
      static_cast<int>(Str_ZEL_MakePacket(head, end, data, static_cast<std::uint32_t>(len), frame));
  return Written(COMM_Dev_WriteDataToTransPort(frame, size), size);
}

int WriteRaw(const unsigned char* data, int len) {
  if (!data) return kNotWritten;
  unsigned char bytes[kRawRoom] = {};
  const int kept = std::clamp<int>(len, 0, kRawRoom);
  std::memcpy(bytes, data, static_cast<std::size_t>(kept));
  return Written(COMM_Dev_WriteDataToTransPort(bytes, kept), len);
}

int CopyOut(const unsigned char* bytes, int count, unsigned char* buffer, int max) {
  const int kept = std::min(count, max);
  if (buffer) std::memcpy(buffer, bytes, static_cast<std::size_t>(kept));
  return kept;
}

// The payload of a framed answer. Returns its length, 0, or -4.
int TakeFramed(std::uint8_t head, std::uint8_t end, const unsigned char* packet, int len,
               unsigned char* buffer, int max) {
  unsigned char payload[kReadRoom] = {};
  std::uint32_t size = 0;
  const int parsed =
      Str_ZEL_ParsePacket(head, end, packet, static_cast<std::uint32_t>(len), payload, &size);
  const int length = parsed == RET_PUB_SUCCESS ? static_cast<int>(size) : RET_PUB_CHECK_ERROR;
  if (stZELPAD.nKind != QL_KIND_PCSC && parsed == RET_PUB_SUCCESS) {
    LOG_EXCHANGE("Str_ZEL_ParsePacket Data Len = %d ", length);
  }
  return length > 0 ? CopyOut(payload, length, buffer, max) : length;
}

// What the reader says the card is. Log texts are GBK.
struct CardCheck {
  std::uint8_t answer;
  int result;
  char logged[12];
};
constexpr CardCheck kCardChecks[] = {
    {1, 0, "\xBD\xD3\xB4\xA5IC\xBF\xA8\n"}, // 接触IC卡
    {2, 1, "\xB7\xC7\xBD\xD3IC\xBF\xA8\n"}, // 非接IC卡
    {3, 2, "\xB4\xC5\xCC\xF5\xBF\xA8\n"  }, // 磁条卡
    {4, 0, "\xC9\xED\xB7\xDD\xD6\xA4\n"  }, // 身份证
};
constexpr CardCheck kUnknownCard = {0, -1, "\xCE\xB4\xD6\xAA\xD2\xEC\xB3\xA3\n"};  // 未知异常

const CardCheck& FindCardCheck(std::uint8_t answer) {
  for (const CardCheck& row : kCardChecks) {
    if (row.answer == answer) return row;
  }
  return kUnknownCard;
}

}  // namespace

std::uint32_t ReaderKind() { return stZELPAD.nKind; }

int COMM_Zel_OpenReader(QL_TRANSPORT_DESCRIPTION* description) {
  LOG_EXCHANGE("[%s]Start ", __func__);
  const int result = COMM_Dev_OpenTransPort(description);
  if (result == RET_PUB_SUCCESS && description) stZELPAD.nKind = description->nKind;
  LOG_EXCHANGE_RESULT(result < 0, "[%s]End nRet = %d  ", __func__, result);
  return result;
}

int COMM_Zel_CloseReader() { return COMM_Dev_CloseTransPort(); }

int COMM_Zel_WriteDataToReader(std::uint8_t head, std::uint8_t end, const unsigned char* data,
                               int len) {
  LOG_EXCHANGE("nDataLen = %d", len);
  if (IsFramed(head, end) && stZELPAD.nKind != QL_KIND_PCSC)
    return WriteFramed(head, end, data, len);
  return WriteRaw(data, len);
}

int COMM_Zel_ReadDataFromReader(std::uint32_t use_end_byte, std::uint8_t head, std::uint8_t end,
                                unsigned char* buffer, int max) {
  LOG_EXCHANGE("[ %s ] Start ", __func__);
  if (max < 1) {
    LOG_EXCHANGE("Not Read Data ");
    return 0;
  }
  gEndChar = end;
  if (use_end_byte != 0 && end != 0) COMM_Dev_ChangeEndCondition(ChangeEndCondition);
  LOG_EXCHANGE("[%s]Start ", "COMM_Zel_ReSetStatus");
  ResetStatus();

  unsigned char packet[kReadRoom + kSpareRoom] = {};
  const int got = COMM_Dev_ReadDataFromTransPort(packet, kReadRoom);
  LOG_EXCHANGE_RESULT(got < 0, "==> nReadLen = %d ", got);
  if (got <= 0) return got;
  DPrintDataHexToFile("== ucPacket", packet, got);
  if (IsFramed(head, end)) return TakeFramed(head, end, packet, got, buffer, max);

  const int copied = CopyOut(packet, got, buffer, max);
  LOG_EXCHANGE("nretval = %d ", copied);
  return copied;
}

int COMM_Zel_SendAndReciveData(std::uint32_t use_end_byte, std::uint8_t head, std::uint8_t end,
                               const unsigned char* command, int len, unsigned char* response,
                               int max) {
  LOG_EXCHANGE("[ %s ] Start ", __func__);
  LOG_EXCHANGE("nSendLen %d ", len);
  LOG_EXCHANGE("nMaxReciveBufLen %d ", max);
  ResetStatus();
  const int written = COMM_Zel_WriteDataToReader(head, end, command, len);
  if (written != 0 || !command) {
    ResetStatus();
    return RET_PUB_WRITE_ERROR;
  }
  if (!response || max == 0) return RET_PUB_SUCCESS;
  return COMM_Zel_ReadDataFromReader(use_end_byte, head, end, response, max);
}

int COMM_Zel_ReaderCmd(const unsigned char* data, int len) {
  return Written(COMM_Dev_WriteDataToTransPort(data, len), len);
}

std::uint32_t COMM_Zel_GetRecStatus() {
  LOG_EXCHANGE("[%s] Start stZELPAD.gStatus = %02x", __func__, stZELPAD.gStatus);
  return stZELPAD.gStatus;
}

std::uint32_t COMM_Zel_SetRecStatus(std::uint32_t status) {
  LOG_EXCHANGE("[%s] Start ", __func__);
  LOG_EXCHANGE("status = %02x ", status);
  stZELPAD.gStatus = status;
  return status;
}

int COMM_Zel_SetHidClearZero(std::uint32_t flag) {
  LOG_EXCHANGE("[%s] Start!\n", __func__);
  COMM_Dev_SetHidClearZero(flag);
  LOG_EXCHANGE("[%s] end!\n", __func__);
  return RET_PUB_SUCCESS;
}

int COMM_Zel_SetEndCondition(QL_END_CONDITION end_condition) {
  LOG_EXCHANGE("[%s ] Start", __func__);
  return COMM_Dev_ChangeEndCondition(end_condition);
}

int COMM_Zel_ChageReadTimeOut(int seconds) {
  LOG_EXCHANGE("%s Start  nTimeOut = %d ", __func__, seconds);
  return COMM_Dev_ChangeReadTimeOut(seconds);
}

int COMM_Zel_Cancel() {
  LOG_EXCHANGE("[%s] Start ", __func__);
  return COMM_Dev_CancelRead();
}

int ChangeEndCondition(const unsigned char* buffer, int count) {
  if (!buffer || count < 1) return kIncomplete;  // A pass that brought nothing asks too.
  return buffer[count - 1] == gEndChar ? 0 : kIncomplete;
}

int ICC_ZELPADCHECKCARD(int kind) {
  LOG_EXCHANGE("[%s] Start!\n", __func__);
  const auto number = static_cast<unsigned>(kind);
  const unsigned char payload[] = {'2', '0', static_cast<unsigned char>(number >> 8),
                                   static_cast<unsigned char>(number)};
  unsigned char response[2048] = {};
  const int got =
      COMM_Zel_SendAndReciveData(1, 0x02, 0x03, payload, sizeof payload, response, sizeof response);
  if (got < 0) return got;

  const CardCheck& check = FindCardCheck(response[0]);
  LOG_EXCHANGE("%s", check.logged);
  LOG_EXCHANGE("[%s] End!\n", __func__);
  return check.result;  // On purpose: 0 for a contact card and for an identity card.
}
