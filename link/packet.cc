// Reader packets: head byte, split length, split payload, split check, end byte.
#include "link/packet.h"

#include <algorithm>
#include <cstring>

#include "link/str.h"
#include "quillonid/link.h"
#include "quillonid/results.h"
#include "support/log.h"

namespace {

// Positions in the merged body of a response.
constexpr std::size_t kStatus = 2;
constexpr std::size_t kPayload = 4;

unsigned char* Split(const unsigned char* bytes, int count, unsigned char* out) {
  Str_ZelModeSplitData(bytes, count, out);
  return out + 2 * std::ptrdiff_t{count};
}

std::uint32_t BigEndian16(const unsigned char* bytes) { return bytes[0] * 256U + bytes[1]; }

}  // namespace

bool ParseResponse(std::uint8_t head, std::uint8_t end, std::span<const unsigned char> packet,
                   Response* response) {
  const auto body = PacketBody(head, end, packet);
  LOG_EXCHANGE("nBodyLen = %d ", body.empty() ? -1 : static_cast<int>(body.size()));
  if (body.size() < 2 || body.size() % 2 != 0 || body.size() > kPacketArea) return false;

  unsigned char merged[kPacketArea] =
      {};  // The zeros behind the bytes serve short bodies and long lengths.
  const std::size_t size = body.size() / 2;
  Str_ZelModeMergeData(body.data(), static_cast<int>(body.size()), merged);
  DPrintDataHexToFile("ucBody", merged, static_cast<int>(size));

  const int covered = static_cast<int>(size) - 3;
  if (Str_GetDataLRC(merged + kStatus, covered) != merged[size - 1]) return false;
  // On purpose: the length is taken as sent and not compared with the size of the body.
  const std::uint32_t length = BigEndian16(merged);
  if (length < 2) return false;
  response->size = std::min<std::size_t>(length - 2, kLargestResponse);
  std::memcpy(response->payload.data(), merged + kPayload, response->size);
  response->status = BigEndian16(merged + kStatus);
  return true;
}

std::uint32_t Str_ZEL_MakePacket(std::uint8_t head, std::uint8_t end, const unsigned char* data,
                                 std::uint32_t n, unsigned char* out) {
  if (!out || (!data && n > 0)) return 0;
  const unsigned char length[] = {static_cast<unsigned char>(n >> 8),
                                  static_cast<unsigned char>(n)};
  const unsigned char check = Str_GetDataLRC(data, static_cast<int>(n));
  *out++ = head;
  out = Split(length, sizeof length, out);
  out = Split(data, static_cast<int>(n), out);
  out = Split(&check, 1, out);
  *out = end;
  return 2 * n + 8;
}

int Str_ZEL_ParsePacket(std::uint8_t head, std::uint8_t end, const unsigned char* packet,
                        std::uint32_t len, unsigned char* out, std::uint32_t* out_len) {
  LOG_EXCHANGE("[%s] Start nPacketLen = %d ", __func__, static_cast<int>(len));
  LOG_EXCHANGE(" cHead = %02x cEnd = %02x  ", head, end);
  if (len == 0 || !packet || !out || !out_len) return RET_PUB_CHECK_ERROR;

  Response response;
  if (!ParseResponse(head, end, {packet, len}, &response)) return RET_PUB_CHECK_ERROR;
  std::memcpy(out, response.payload.data(), response.size);
  *out_len = static_cast<std::uint32_t>(response.size);
  COMM_Zel_SetRecStatus(response.status);
  return RET_PUB_SUCCESS;
}
