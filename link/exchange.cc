// Reader exchange: a message out, framed or raw, and its answer in. Head and end bytes of (0, 0)
// mean raw.
#include "link/exchange.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

#include "quillonid/link.h"
#include "quillonid/results.h"
#include "support/log.h"

namespace {

// The reader opened last. Its kind is set by each successful open and never cleared; the status is
// that of the last framed response, cleared when an exchange or a read starts.
struct {
  std::uint32_t nKind;
  std::uint32_t gStatus;
} stZELPAD;

std::uint8_t gEndChar = 0x03;  // End byte that ChangeEndCondition looks for; set by each read.

constexpr int kNotWritten = -1;
constexpr int kLongestMessage = 1024;       // written at once, with its frame
constexpr int kLongestFramedPayload = 508;  // two characters a byte and 8 around
constexpr int kLongestRead = 4096;
constexpr int kSpareRoom = 1024;  // a USB transfer may bring that much more than was wanted

bool IsFramed(std::uint8_t head, std::uint8_t end) { return head != 0 || end != 0; }

void ResetStatus() {
  LOG_EXCHANGE("[%s]Start ", "COMM_Zel_ReSetStatus");
  stZELPAD.gStatus = 0;
}

int WriteFramed(std::uint8_t head, std::uint8_t end, const unsigned char* data, int len) {
  if (!data || len < 0 || len > kLongestFramedPayload) return kNotWritten;
  std::uint8_t frame[kLongestMessage] = {};
  const auto size =
      static_cast<int>(Str_ZEL_MakePacket(head, end, data, static_cast<std::uint32_t>(len), frame));
  return COMM_Dev_WriteDataToTransPort(frame, size) == size ? RET_PUB_SUCCESS : kNotWritten;
}

int WriteRaw(const unsigned char* data, int len) {
  if (!data || len < 0) return kNotWritten;
  const int size = std::min(len, kLongestMessage);
  // A longer message is cut, and so is never written whole.
  return COMM_Dev_WriteDataToTransPort(data, size) == len ? RET_PUB_SUCCESS : kNotWritten;
}

// Copies at most `max` of `count` bytes. Returns the number copied.
int Deliver(const std::uint8_t* bytes, int count, unsigned char* buffer, int max) {
  const int size = std::min(count, max);
  std::memcpy(buffer, bytes, static_cast<std::size_t>(size));
  return size;
}

int DeliverPayload(std::uint8_t head, std::uint8_t end, const std::uint8_t* packet, int size,
                   unsigned char* buffer, int max) {
  std::uint8_t payload[kLongestRead] = {};
  std::uint32_t length = 0;
  const int parsed =
      Str_ZEL_ParsePacket(head, end, packet, static_cast<std::uint32_t>(size), payload, &length);
  if (parsed != RET_PUB_SUCCESS) return RET_PUB_CHECK_ERROR;
  if (stZELPAD.nKind != QL_KIND_PCSC) LOG_EXCHANGE("Str_ZEL_ParsePacket Data Len = %u ", length);
  return Deliver(payload, static_cast<int>(length), buffer, max);
}

// First byte of the answer, result, line logged (GBK).
struct CardKind {
  std::uint8_t code;
  std::int8_t result;
  char logged[12];
};
constexpr CardKind kCardKinds[] = {
    {1, 0, "\xBD\xD3\xB4\xA5IC\xBF\xA8\n"}, // 接触IC卡
    {2, 1, "\xB7\xC7\xBD\xD3IC\xBF\xA8\n"}, // 非接IC卡
    {3, 2, "\xB4\xC5\xCC\xF5\xBF\xA8\n"  }, // 磁条卡
    {4, 0, "\xC9\xED\xB7\xDD\xD6\xA4\n"  }, // 身份证; on purpose the same result as 1
};
constexpr CardKind kUnknownCard = {0, -1, "\xCE\xB4\xD6\xAA\xD2\xEC\xB3\xA3\n"};  // 未知异常

}  // namespace

std::uint32_t ReaderKind() { return stZELPAD.nKind; }

QL_API int COMM_Zel_OpenReader(QL_TRANSPORT_DESCRIPTION* description) {
  LOG_EXCHANGE("[%s]Start ", __func__);
  const int nRet = COMM_Dev_OpenTransPort(description);
  if (nRet == RET_PUB_SUCCESS) stZELPAD.nKind = description->nKind;
  LOG_EXCHANGE_RESULT(nRet != RET_PUB_SUCCESS, "[%s]End nRet = %d  ", __func__, nRet);
  return nRet;
}

QL_API int COMM_Zel_CloseReader() { return COMM_Dev_CloseTransPort(); }

QL_API int COMM_Zel_WriteDataToReader(uint8_t head, uint8_t end, const unsigned char* data,
                                      int len) {
  LOG_EXCHANGE("nDataLen = %d", len);
  const bool framed = IsFramed(head, end) && stZELPAD.nKind != QL_KIND_PCSC;
  return framed ? WriteFramed(head, end, data, len) : WriteRaw(data, len);
}

QL_API int COMM_Zel_ReadDataFromReader(uint32_t use_end_byte, uint8_t head, uint8_t end,
                                       unsigned char* buffer, int max) {
  LOG_EXCHANGE("[ %s ] Start ", __func__);
  if (!buffer || max < 1) {
    LOG_EXCHANGE("Not Read Data ");
    return 0;
  }

  gEndChar = end;
  // On purpose: the test stays installed for later reads until another one replaces it.
  if (use_end_byte != 0 && end != 0) COMM_Dev_ChangeEndCondition(ChangeEndCondition);
  ResetStatus();

  std::uint8_t packet[kLongestRead + kSpareRoom] = {};
  const int nReadLen = COMM_Dev_ReadDataFromTransPort(packet, kLongestRead);
  LOG_EXCHANGE_RESULT(nReadLen <= 0, "==> nReadLen = %d ", nReadLen);
  if (nReadLen <= 0) return nReadLen;
  DPrintDataHexToFile("== ucPacket", packet, nReadLen);

  if (IsFramed(head, end)) return DeliverPayload(head, end, packet, nReadLen, buffer, max);
  const int nretval = Deliver(packet, nReadLen, buffer, max);
  LOG_EXCHANGE("nretval = %d ", nretval);
  return nretval;
}

QL_API int COMM_Zel_SendAndReciveData(uint32_t use_end_byte, uint8_t head, uint8_t end,
                                      const unsigned char* command, int len,
                                      unsigned char* response, int max) {
  LOG_EXCHANGE("[ %s ] Start ", __func__);
  LOG_EXCHANGE("nSendLen %d ", len);
  LOG_EXCHANGE("nMaxReciveBufLen %d ", max);
  ResetStatus();

  if (COMM_Zel_WriteDataToReader(head, end, command, len) != RET_PUB_SUCCESS || !command) {
    ResetStatus();
    return RET_PUB_WRITE_ERROR;
  }
  if (!response || max == 0) return RET_PUB_SUCCESS;
  return COMM_Zel_ReadDataFromReader(use_end_byte, head, end, response, max);
}

QL_API int COMM_Zel_ReaderCmd(const unsigned char* data, int len) {
  const int written = COMM_Dev_WriteDataToTransPort(data, len);
  // A negative length may equal the code that refuses it.
  return len >= 0 && written == len ? RET_PUB_SUCCESS : kNotWritten;
}

QL_API uint32_t COMM_Zel_GetRecStatus() {
  LOG_EXCHANGE("[%s] Start stZELPAD.gStatus = %02x", __func__, stZELPAD.gStatus);
  return stZELPAD.gStatus;
}

QL_API uint32_t COMM_Zel_SetRecStatus(uint32_t status) {
  LOG_EXCHANGE("[%s] Start ", __func__);
  LOG_EXCHANGE("status = %02x ", status);
  stZELPAD.gStatus = status;
  return status;
}

QL_API int COMM_Zel_SetHidClearZero(uint32_t flag) {
  LOG_EXCHANGE("[%s] Start!\n", __func__);
  COMM_Dev_SetHidClearZero(flag);
  LOG_EXCHANGE("[%s] end!\n", __func__);
  return RET_PUB_SUCCESS;
}

QL_API int COMM_Zel_SetEndCondition(QL_END_CONDITION end_condition) {
  LOG_EXCHANGE("[%s ] Start", __func__);
  return COMM_Dev_ChangeEndCondition(end_condition);
}

QL_API int COMM_Zel_ChageReadTimeOut(int seconds) {
  LOG_EXCHANGE("%s Start  nTimeOut = %d ", __func__, seconds);
  return COMM_Dev_ChangeReadTimeOut(seconds);
}

QL_API int COMM_Zel_Cancel() {
  LOG_EXCHANGE("[%s] Start ", __func__);
  return COMM_Dev_CancelRead();
}

QL_API int ChangeEndCondition(const unsigned char* buffer, int count) {
  // A pass that brought nothing asks too.
  if (!buffer || count < 1) return -1;
  return buffer[count - 1] == gEndChar ? 0 : -1;
}

QL_API int ICC_ZELPADCHECKCARD(int kind) {
  LOG_EXCHANGE("[%s] Start!\n", __func__);
  const std::uint8_t command[] = {'2', '0', static_cast<std::uint8_t>(kind >> 8 & 0xFF),
                                  static_cast<std::uint8_t>(kind & 0xFF)};
  // Cleared: an answer without payload names no card.
  std::uint8_t response[2048] = {};
  const int nRet =
      COMM_Zel_SendAndReciveData(1, 0x02, 0x03, command, sizeof command, response, sizeof response);
  if (nRet < 0) return nRet;

  const auto known = std::find_if(std::begin(kCardKinds), std::end(kCardKinds),
                                  [&](const CardKind& card) { return card.code == response[0]; });
  const CardKind& card = known != std::end(kCardKinds) ? *known : kUnknownCard;
  LOG_EXCHANGE("%s", card.logged);
  LOG_EXCHANGE("[%s] End!\n", __func__);
  return card.result;
}
