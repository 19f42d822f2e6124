// The exchange of identity-card commands: raw frames whose length stands in the reply itself.
#include <climits>
#include <cstdint>
#include <cstring>

#include "link/exchange.h"
#include "quillonid/link.h"
#include "quillonid/results.h"
#include "support/log.h"

namespace {

// Size of the whole reply that IdEndCondition found last, or 0. Cleared when an exchange starts.
int s_nWholeReply;

constexpr int kReplyHead = 7;  // five preamble bytes, length (2 bytes, big-endian)

int AsInt(std::uint32_t value) { return value > INT_MAX ? INT_MAX : static_cast<int>(value); }

// A USB read drops the zeros at the end of what came, those of the reply with the padding. They are
// put back as far as the reply announced and brought them: else a card whose check byte is 0 could
// never be read.
int RestoreZeros(int got, unsigned char* response, int max) {
  const bool cut = got >= kReplyHead && got < s_nWholeReply && s_nWholeReply <= max;
  if (!cut || ReaderKind() != QL_KIND_USB) return got;
  std::memset(response + got, 0, static_cast<std::size_t>(s_nWholeReply - got));
  return s_nWholeReply;
}

}  // namespace

QL_API int IdEndCondition(const unsigned char* buffer, int count) {
  if (!buffer || count < kReplyHead) return -1;
  const int announced = buffer[5] * 256 + buffer[6];
  if (announced > count - kReplyHead) return -1;
  s_nWholeReply = kReplyHead + announced;
  return 0;
}

QL_API int Dev_Zel_IdSendAndReciveData(uint32_t mode, const unsigned char* command, uint32_t len,
                                       unsigned char* response, uint32_t max) {
  LOG_DEVICE("Dev_Zel_IdSendAndReciveData START");
  LOG_DEVICE("1111");
  COMM_Zel_SetHidClearZero(0);
  LOG_DEVICE("1112");
  if (mode != 1) {
    LOG_DEVICE("222");
    COMM_Zel_SetEndCondition(IdEndCondition);
    LOG_DEVICE("333");
  }
  s_nWholeReply = 0;
  const int result = COMM_Zel_SendAndReciveData(mode != 1 ? 1 : 0, 0, 0, command, AsInt(len),
                                                response, AsInt(max));
  COMM_Zel_SetHidClearZero(1);
  return RestoreZeros(result, response, AsInt(max));
}

QL_API int Dev_Zel_IdReciveData(unsigned char* buffer, int max) {
  COMM_Zel_SetEndCondition(IdEndCondition);
  return COMM_Zel_ReadDataFromReader(1, 0, 0, buffer, max);
}

QL_API int Dev_Zel_IdCardCancel() {
  COMM_Id_CancelRead();
  return COMM_Zel_Cancel();
}
