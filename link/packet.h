// Reader packets with every size checked; the exported functions stand on these.
#ifndef QUILLONID_LINK_PACKET_H
#define QUILLONID_LINK_PACKET_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

inline constexpr std::size_t kPacketArea = 1024;  // of a frame, and of a body
inline constexpr std::size_t kLargestRequest =
    (kPacketArea - 8) / 2;  // payload bytes that a frame area holds
inline constexpr std::size_t kLargestResponse =
    kPacketArea - 4;  // payload bytes that a response reports

// What a well-formed response holds.
struct Response {
  std::array<unsigned char, kLargestResponse> payload{};
  std::size_t size = 0;
  std::uint32_t status = 0;
};

// Takes a response frame apart. False when it is malformed.
bool ParseResponse(std::uint8_t head, std::uint8_t end, std::span<const unsigned char> packet,
                   Response* response);

#endif
