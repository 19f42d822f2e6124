// What travels between host and reader: card-module frames, reader packets, speed commands.
#ifndef QUILLONID_SIMULATOR_PACKETS_H
#define QUILLONID_SIMULATOR_PACKETS_H

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "simulator/card.h"

namespace simulator {

// What every card-module frame begins with.
inline constexpr std::array<std::uint8_t, 5> kPreamble = {0xAA, 0xAA, 0xAA, 0x96, 0x69};
bool HasPreamble(std::span<const std::uint8_t> bytes);

std::uint8_t Xor(std::span<const std::uint8_t> bytes);

// Preamble, length (2 bytes, big-endian, of what follows), content, XOR of the bytes from offset 5
// on.
Bytes ModuleFrame(std::span<const std::uint8_t> content);

// Head, pairs of characters 30..3F for length, status, payload and XOR of the two, end. The length
// counts status and payload.
Bytes PacketReply(std::uint8_t head, std::uint8_t end, unsigned status,
                  std::span<const std::uint8_t> payload);

enum class RequestKind {
  kDeviceCheck,
  kSearch,
  kSelect,
  kRead,
  kReadFingerprints,
  kReadOneCommand,
  kOtherFrame,   // a frame of no known command, or with a wrong check byte
  kPacket,       // content: its payload
  kOtherPacket,  // a packet that does not hold together
  kSpeed,        // speed: bit/s, 0 for the reader's own
  kExtension,    // ESC % letter
  kNoise,        // bytes of no request
};

struct Request {
  RequestKind kind = RequestKind::kNoise;
  std::string meaning;  // in words, for traces
  Bytes bytes;          // as they came
  Bytes content;
  int speed = 0;
};

// Takes the first whole request from the front of `received`; none while more bytes are needed.
std::optional<Request> TakeRequest(Bytes* received);

}  // namespace simulator

#endif
