// Reader packets put together and taken apart the plain way, as the model of link/packet.cc.
#ifndef QUILLONID_FUZZ_FRAMES_H
#define QUILLONID_FUZZ_FRAMES_H

#include <algorithm>
#include <cstdint>

#include "fuzz/input.h"

namespace frames {

inline constexpr std::size_t kLongestBody = 1024;
inline constexpr std::size_t kLongestPayload = 1020;

inline std::uint8_t Xor(const Bytes& bytes, std::size_t from, std::size_t to) {
  unsigned sum = 0;
  for (std::size_t i = from; i < to; ++i) sum ^= bytes[i];
  return static_cast<std::uint8_t>(sum);
}

inline void PutSplit(unsigned byte, Bytes* out) {
  out->push_back(static_cast<std::uint8_t>((byte >> 4 & 0xF) + 0x30));
  out->push_back(static_cast<std::uint8_t>((byte & 0xF) + 0x30));
}

// head, length, content, exclusive-or of the content, end
inline Bytes Make(std::uint8_t head, std::uint8_t end, const Bytes& content) {
  Bytes frame = {head};
  PutSplit(static_cast<unsigned>(content.size() >> 8), &frame);
  PutSplit(static_cast<unsigned>(content.size() & 0xFF), &frame);
  for (const std::uint8_t byte : content) PutSplit(byte, &frame);
  PutSplit(Xor(content, 0, content.size()), &frame);
  frame.push_back(end);
  return frame;
}

// The bytes between the first head and the end behind it; nothing for none.
inline Bytes Body(std::uint8_t head, std::uint8_t end, const Bytes& packet) {
  const auto first = std::find(packet.begin(), packet.end(), head);
  if (packet.end() - first <= 2) return {};  // no body and end behind it
  const auto last = std::find(first + 1, packet.end(), end);
  return last == packet.end() ? Bytes() : Bytes(first + 1, last);
}

struct Parsed {
  bool good = false;
  unsigned status = 0;
  Bytes payload;
};

inline Parsed Parse(std::uint8_t head, std::uint8_t end, const Bytes& packet) {
  const auto first = std::find(packet.begin(), packet.end(), head);
  if (first == packet.end()) return {};
  const auto last = std::find(first + 1, packet.end(), end);
  if (last == packet.end()) return {};
  const Bytes body(first + 1, last);
  if (body.empty() || body.size() % 2 != 0 || body.size() > kLongestBody) return {};

  Bytes merged(kLongestBody);  // what did not come reads as zeros
  const std::size_t count = body.size() / 2;
  for (std::size_t i = 0; i < count; ++i) {
    merged[i] = static_cast<std::uint8_t>((body[2 * i] % 16) * 16 + body[2 * i + 1] % 16);
  }
  if (Xor(merged, 2, count - 1) != merged[count - 1]) return {};
  const std::size_t length = merged[0] * 256U + merged[1];
  if (length < 2) return {};
  const std::size_t payload = std::min(length - 2, kLongestPayload);
  return {true, merged[2] * 256U + merged[3],
          Bytes(merged.begin() + 4, merged.begin() + 4 + static_cast<std::ptrdiff_t>(payload))};
}

}  // namespace frames

#endif
