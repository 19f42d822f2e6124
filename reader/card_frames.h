// Frames of the card module, command and reply alike: AA AA AA 96 69, length (2 bytes, big-endian,
// the bytes that follow), content, check byte (exclusive-or of the bytes from offset 5 on).
#ifndef QUILLONID_READER_CARD_FRAMES_H
#define QUILLONID_READER_CARD_FRAMES_H

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>

#include "support/hex.h"

inline constexpr std::size_t kFrameHead = 5;  // preamble; the check byte covers what follows it

constexpr bool IsFrame(std::span<const std::uint8_t> bytes) {
  constexpr auto kPreamble = Hex("AA AA AA 96 69");
  if (bytes.size() < 8 || !std::equal(kPreamble.begin(), kPreamble.end(), bytes.begin())) {
    return false;
  }
  if (std::size_t{bytes[5]} * 256 + bytes[6] != bytes.size() - 7) return false;
  std::uint8_t check = 0;
  for (const std::uint8_t byte : bytes.subspan(kFrameHead)) check ^= byte;
  return check == 0;
}

using CommandFrame = std::array<std::uint8_t, 10>;
inline constexpr CommandFrame kCheckDevice = Hex("AA AA AA 96 69 00 03 11 FF ED");
inline constexpr CommandFrame kSearch = Hex("AA AA AA 96 69 00 03 20 01 22");
inline constexpr CommandFrame kSelect = Hex("AA AA AA 96 69 00 03 20 02 21");
inline constexpr CommandFrame kRead = Hex("AA AA AA 96 69 00 03 30 01 32");
inline constexpr CommandFrame kReadWithFingers = Hex("AA AA AA 96 69 00 03 30 10 23");
inline constexpr CommandFrame kReadAtOnce = Hex("AA AA AA 96 69 00 03 30 20 13");
static_assert(IsFrame(kCheckDevice) && IsFrame(kSearch) && IsFrame(kSelect));
static_assert(IsFrame(kRead) && IsFrame(kReadWithFingers) && IsFrame(kReadAtOnce));

inline constexpr auto kReady = Hex("AA AA AA 96 69 00 04 00 00 90 94");
inline constexpr auto kFound = Hex("AA AA AA 96 69 00 08 00 00 9F 00 00 00 00 97");
inline constexpr auto kSelected = Hex("AA AA AA 96 69 00 0C 00 00 90 00 00 00 00 00 00 00 00 9C");
inline constexpr auto kNoCard = Hex("AA AA AA 96 69 00 04 00 00 81 85");
inline constexpr auto kIcPowerOn = Hex("AA AA AA 96 69 00 04 40 02 41 07");
inline constexpr auto kReadFailed = Hex("AA AA AA 96 69 00 04 00 00 41 45");
inline constexpr auto kUnsupported = Hex("AA AA AA 96 69 00 04 00 00 21 45 00");
static_assert(IsFrame(kReady) && IsFrame(kFound) && IsFrame(kSelected) && IsFrame(kNoCard));
static_assert(IsFrame(kIcPowerOn) && IsFrame(kReadFailed));
// On purpose: the check byte is 45 although the exclusive-or is 25, and a zero byte follows.
static_assert(!IsFrame(kUnsupported) && kUnsupported.size() == 12);

// Whether `bytes` begins with the whole of `start`.
constexpr bool StartsWith(std::span<const std::uint8_t> bytes,
                          std::span<const std::uint8_t> start) {
  return bytes.size() >= start.size() && std::equal(start.begin(), start.end(), bytes.begin());
}

#endif
