// Reader packets. Between head and end byte every byte travels as two characters, nibble + 0x30, so
// that neither can occur inside:
//   request:  head, length (2 bytes), payload, exclusive-or of the payload, end
//   response: head, length (2), status (2), payload, exclusive-or of status and payload, end
// The length of a response counts status and payload.
#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstring>
#include <span>

#include "quillonid/link.h"
#include "quillonid/results.h"
#include "support/log.h"

namespace {

constexpr std::uint32_t kFrameCharacters = 8;  // head, length, check byte, end
constexpr std::size_t kLongestBody = 1024;     // characters
constexpr std::size_t kStatusAt = 2;
constexpr std::size_t kPayloadAt = 4;
constexpr std::uint32_t kStatusSize = 2;

// The first `byte` before `end`, or null.
const std::uint8_t* Find(const std::uint8_t* begin, const std::uint8_t* end, std::uint8_t byte) {
  if (begin == end) return nullptr;
  const void* found = std::memchr(begin, byte, static_cast<std::size_t>(end - begin));
  return static_cast<const std::uint8_t*>(found);
}

// The bytes strictly between the first head byte and the first end byte behind it; empty when there
// are none.
std::span<const std::uint8_t> PacketBody(std::uint8_t head, std::uint8_t end,
                                         std::span<const std::uint8_t> packet) {
  const std::uint8_t* const limit = packet.data() + packet.size();
  const std::uint8_t* const first = Find(packet.data(), limit, head);
  if (!first) return {};
  const std::uint8_t* const last = Find(first + 1, limit, end);
  if (!last) return {};
  return {first + 1, last};
}

std::uint8_t ExclusiveOr(std::span<const std::uint8_t> bytes) {
  return Str_GetDataLRC(bytes.data(), static_cast<int>(bytes.size()));
}

std::uint32_t Word(const std::uint8_t* bytes) { return bytes[0] * 256U + bytes[1]; }

}  // namespace

QL_API int Str_GetPacketBody(uint8_t head, uint8_t end, const unsigned char* buffer, int len,
                             unsigned char* out) {
  if (!buffer || !out || len < 1) return -1;
  const auto body = PacketBody(head, end, {buffer, static_cast<std::size_t>(len)});
  if (body.empty()) return -1;
  std::copy(body.begin(), body.end(), out);
  return static_cast<int>(body.size());
}

QL_API uint32_t Str_ZEL_MakePacket(uint8_t head, uint8_t end, const unsigned char* data, uint32_t n,
                                   unsigned char* out) {
  if (!out || (!data && n > 0) || n > INT_MAX / 2 - kFrameCharacters) return 0;
  const auto size = static_cast<int>(n);
  const std::uint8_t length[] = {static_cast<std::uint8_t>(n >> 8 & 0xFF),
                                 static_cast<std::uint8_t>(n & 0xFF)};
  const std::uint8_t lrc = Str_GetDataLRC(data, size);

  unsigned char* const after_payload = out + 5 + 2 * std::size_t{n};
  out[0] = head;
  Str_ZelModeSplitData(length, sizeof length, out + 1);
  Str_ZelModeSplitData(data, size, out + 5);
  Str_ZelModeSplitData(&lrc, sizeof lrc, after_payload);
  after_payload[2] = end;
  return 2 * n + kFrameCharacters;
}

QL_API int Str_ZEL_ParsePacket(uint8_t head, uint8_t end, const unsigned char* packet, uint32_t len,
                               unsigned char* out, uint32_t* out_len) {
  LOG_EXCHANGE("[%s] Start nPacketLen = %d ", __func__, static_cast<int>(len));
  LOG_EXCHANGE(" cHead = %02x cEnd = %02x  ", head, end);
  if (!packet || len == 0 || !out || !out_len) return RET_PUB_CHECK_ERROR;

  const auto body = PacketBody(head, end, {packet, len});
  LOG_EXCHANGE("nBodyLen = %d ", body.empty() ? -1 : static_cast<int>(body.size()));
  if (body.empty() || body.size() % 2 != 0 || body.size() > kLongestBody) {
    return RET_PUB_CHECK_ERROR;
  }

  // Larger than any body: what the frame announces and does not bring reads as zeros.
  std::uint8_t merged[kLongestBody] = {};
  const std::size_t count = body.size() / 2;
  Str_ZelModeMergeData(body.data(), static_cast<int>(body.size()), merged);
  DPrintDataHexToFile("ucBody", merged, static_cast<int>(count));

  const std::size_t covered = count > kStatusAt + 1 ? count - kStatusAt - 1 : 0;
  if (ExclusiveOr({merged + kStatusAt, covered}) != merged[count - 1]) return RET_PUB_CHECK_ERROR;

  // On purpose: the length is taken as sent and not compared with what came.
  const std::uint32_t length = Word(merged);
  if (length < kStatusSize) return RET_PUB_CHECK_ERROR;
  const std::size_t payload =
      std::min<std::size_t>(length - kStatusSize, sizeof merged - kPayloadAt);
  std::memcpy(out, merged + kPayloadAt, payload);
  *out_len = static_cast<std::uint32_t>(payload);
  COMM_Zel_SetRecStatus(Word(merged + kStatusAt));
  return RET_PUB_SUCCESS;
}
