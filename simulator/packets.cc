#include "simulator/packets.h"

#include <algorithm>
#include <array>

namespace simulator {
namespace {

constexpr std::size_t kFrameHead = 7;      // preamble and length
constexpr std::size_t kLongestFrame = 64;  // a longer one is noise: commands take 10 bytes
constexpr std::size_t kLongestPacket = 2048;
constexpr std::uint8_t kEscape = 0x1B;

struct Command {
  std::uint8_t command, parameter;
  RequestKind kind;
  const char* meaning;
};
constexpr Command kCommands[] = {
    {0x11, 0xFF, RequestKind::kDeviceCheck,      "device check"          },
    {0x20, 0x01, RequestKind::kSearch,           "search card"           },
    {0x20, 0x02, RequestKind::kSelect,           "select card"           },
    {0x30, 0x01, RequestKind::kRead,             "read"                  },
    {0x30, 0x10, RequestKind::kReadFingerprints, "read with fingerprints"},
    {0x30, 0x20, RequestKind::kReadOneCommand,   "one-command read"      },
};

struct SpeedCommand {
  char digit;
  int speed;
};
constexpr SpeedCommand kSpeeds[] = {
    {'1', 115200},
    {'2', 38400 },
    {'3', 19200 },
    {'4', 9600  },
};

struct PacketForm {
  std::uint8_t head, end;
  const char* meaning;
};
constexpr PacketForm kPacketForms[] = {
    {0x02, 0x03, "card check"  },
    {0x01, 0x04, "channel data"},
};

Request Take(Bytes* received, std::size_t size, RequestKind kind, std::string meaning) {
  Request request;
  request.kind = kind;
  request.meaning = std::move(meaning);
  const auto end = received->begin() + static_cast<std::ptrdiff_t>(size);
  request.bytes.assign(received->begin(), end);
  received->erase(received->begin(), end);
  return request;
}

bool StartsRequest(std::uint8_t byte) {
  return byte == kPreamble[0] || byte == kEscape ||
         std::any_of(std::begin(kPacketForms), std::end(kPacketForms),
                     [&](const PacketForm& form) { return byte == form.head; });
}

// The bytes up to the next one that could start a request, at least one.
Request TakeNoise(Bytes* received) {
  const auto next = std::find_if(received->begin() + 1, received->end(), StartsRequest);
  return Take(received, static_cast<std::size_t>(next - received->begin()), RequestKind::kNoise,
              "noise");
}

std::optional<Request> TakeFrame(Bytes* received) {
  const std::size_t known = std::min(received->size(), kPreamble.size());
  if (!std::equal(kPreamble.begin(), kPreamble.begin() + static_cast<std::ptrdiff_t>(known),
                  received->begin())) {
    return TakeNoise(received);
  }
  if (received->size() < kFrameHead) return std::nullopt;
  const std::size_t size = kFrameHead + ((*received)[5] * 256U + (*received)[6]);
  if (size > kLongestFrame || size == kFrameHead) return TakeNoise(received);
  if (received->size() < size) return std::nullopt;

  const std::span<const std::uint8_t> frame(received->data(), size);
  if (Xor(frame.subspan(5)) != 0) {
    return Take(received, size, RequestKind::kOtherFrame, "frame with a wrong check byte");
  }
  for (const Command& known_command : kCommands) {
    if (size == 10 && frame[7] == known_command.command && frame[8] == known_command.parameter) {
      return Take(received, size, known_command.kind, known_command.meaning);
    }
  }
  return Take(received, size, RequestKind::kOtherFrame, "unknown command");
}

std::optional<Request> TakeEscape(Bytes* received) {
  if (received->size() < 2) return std::nullopt;
  if ((*received)[1] != '%') return TakeNoise(received);
  if (received->size() < 3) return std::nullopt;
  const char letter = static_cast<char>((*received)[2]);
  if (letter == 'B') return Take(received, 3, RequestKind::kSpeed, "back to the reader's speed");
  if (letter < 'A' || letter > 'Z') return TakeNoise(received);
  if (letter != 'S') {
    return Take(received, 3, RequestKind::kExtension, std::string("extension ") + letter);
  }
  if (received->size() < 4) return std::nullopt;
  for (const SpeedCommand& command : kSpeeds) {
    if ((*received)[3] != static_cast<std::uint8_t>(command.digit)) continue;
    Request request =
        Take(received, 4, RequestKind::kSpeed, "speed " + std::to_string(command.speed) + " bit/s");
    request.speed = command.speed;
    return request;
  }
  return TakeNoise(received);
}

// The payload of a packet's body (length, payload, XOR); none when it does not hold together.
std::optional<Bytes> PacketPayload(std::span<const std::uint8_t> body) {
  if (body.size() % 2 != 0 || body.size() < 6) return std::nullopt;
  Bytes merged;
  for (std::size_t i = 0; i < body.size(); i += 2) {
    if ((body[i] & 0xF0) != 0x30 || (body[i + 1] & 0xF0) != 0x30) return std::nullopt;
    merged.push_back(static_cast<std::uint8_t>((body[i] & 0x0F) << 4 | (body[i + 1] & 0x0F)));
  }
  Bytes payload(merged.begin() + 2, merged.end() - 1);
  if (merged[0] * 256U + merged[1] != payload.size()) return std::nullopt;
  if (Xor(payload) != merged.back()) return std::nullopt;
  return payload;
}

std::optional<Request> TakePacket(Bytes* received, const PacketForm& form) {
  const auto end = std::find(received->begin(), received->end(), form.end);
  if (end == received->end()) {
    if (received->size() > kLongestPacket) return TakeNoise(received);
    return std::nullopt;
  }
  const auto size = static_cast<std::size_t>(end - received->begin()) + 1;
  auto payload = PacketPayload({received->data() + 1, size - 2});
  if (!payload) {
    return Take(received, size, RequestKind::kOtherPacket, "packet that does not hold together");
  }
  Request request = Take(received, size, RequestKind::kPacket, form.meaning);
  request.content = std::move(*payload);
  return request;
}

}  // namespace

bool HasPreamble(std::span<const std::uint8_t> bytes) {
  return bytes.size() >= kPreamble.size() &&
         std::equal(kPreamble.begin(), kPreamble.end(), bytes.begin());
}

std::uint8_t Xor(std::span<const std::uint8_t> bytes) {
  std::uint8_t sum = 0;
  for (const std::uint8_t byte : bytes) sum = static_cast<std::uint8_t>(sum ^ byte);
  return sum;
}

Bytes ModuleFrame(std::span<const std::uint8_t> content) {
  Bytes frame(kPreamble.begin(), kPreamble.end());
  const std::size_t length = content.size() + 1;
  frame.push_back(static_cast<std::uint8_t>(length >> 8 & 0xFF));
  frame.push_back(static_cast<std::uint8_t>(length & 0xFF));
  frame.insert(frame.end(), content.begin(), content.end());
  frame.push_back(Xor(std::span(frame).subspan(kPreamble.size())));
  return frame;
}

Bytes PacketReply(std::uint8_t head, std::uint8_t end, unsigned status,
                  std::span<const std::uint8_t> payload) {
  Bytes checked = {static_cast<std::uint8_t>(status >> 8 & 0xFF),
                   static_cast<std::uint8_t>(status & 0xFF)};
  checked.insert(checked.end(), payload.begin(), payload.end());
  Bytes body = {static_cast<std::uint8_t>(checked.size() >> 8 & 0xFF),
                static_cast<std::uint8_t>(checked.size() & 0xFF)};
  body.insert(body.end(), checked.begin(), checked.end());
  body.push_back(Xor(checked));

  Bytes packet = {head};
  for (const std::uint8_t byte : body) {
    packet.push_back(static_cast<std::uint8_t>(0x30 | byte >> 4));
    packet.push_back(static_cast<std::uint8_t>(0x30 | (byte & 0x0F)));
  }
  packet.push_back(end);
  return packet;
}

std::optional<Request> TakeRequest(Bytes* received) {
  if (received->empty()) return std::nullopt;
  const std::uint8_t first = received->front();
  if (first == kPreamble[0]) return TakeFrame(received);
  if (first == kEscape) return TakeEscape(received);
  for (const PacketForm& form : kPacketForms) {
    if (first == form.head) return TakePacket(received, form);
  }
  return TakeNoise(received);
}

}  // namespace simulator
