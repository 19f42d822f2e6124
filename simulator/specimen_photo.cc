#include "simulator/specimen_photo.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace simulator {
namespace {

constexpr char kMagic[] = {'Q', 'S', 'P', 'H', 'O', 'T', 'O', '1'};
constexpr std::size_t kStyleAt = sizeof kMagic;
constexpr std::size_t kChecksumAt = std::tuple_size_v<PhotoBlock> - 4;

// How many choices each byte of a style has, in the order of the members.
constexpr std::array<std::uint8_t, 9> kChoices = {
    static_cast<std::uint8_t>(Skin::kBrown) + 1,
    static_cast<std::uint8_t>(Hair::kBald) + 1,
    static_cast<std::uint8_t>(HairColour::kWhite) + 1,
    static_cast<std::uint8_t>(Clothes::kTurtleneck) + 1,
    static_cast<std::uint8_t>(ClothesColour::kSand) + 1,
    static_cast<std::uint8_t>(Glasses::kSquare) + 1,
    static_cast<std::uint8_t>(Beard::kFull) + 1,
    static_cast<std::uint8_t>(Age::kElder) + 1,
    static_cast<std::uint8_t>(Backdrop::kBlue) + 1,
};
static_assert(sizeof(PortraitStyle) == kChoices.size(), "one byte for each member");

constexpr std::size_t kFillerAt = kStyleAt + kChoices.size();

std::uint32_t Crc32(const std::uint8_t* bytes, std::size_t size) {
  std::uint32_t crc = 0xFFFFFFFFU;
  for (std::size_t i = 0; i < size; ++i) {
    crc ^= bytes[i];
    for (int bit = 0; bit < 8; ++bit) crc = crc >> 1 ^ (0xEDB88320U & (0U - (crc & 1U)));
  }
  return ~crc;
}

}  // namespace

PhotoBlock SpecimenPhotoBlock(const PortraitStyle& style) {
  PhotoBlock block{};
  std::memcpy(block.data(), kMagic, sizeof kMagic);
  std::memcpy(block.data() + kStyleAt, &style, sizeof style);

  std::uint32_t state = Crc32(block.data(), kFillerAt);
  for (std::size_t i = kFillerAt; i < kChecksumAt; ++i) {
    state = state * 1664525U + 1013904223U;
    block[i] = static_cast<std::uint8_t>(state >> 24);
  }
  const std::uint32_t checksum = Crc32(block.data(), kChecksumAt);
  for (std::size_t i = 0; i < 4; ++i) {
    block[kChecksumAt + i] = static_cast<std::uint8_t>(checksum >> (24 - 8 * i));
  }
  return block;
}

bool ReadSpecimenPhotoBlock(const std::uint8_t* block, PortraitStyle* style) {
  if (std::memcmp(block, kMagic, sizeof kMagic) != 0) return false;
  for (std::size_t i = 0; i < kChoices.size(); ++i) {
    if (block[kStyleAt + i] >= kChoices[i]) return false;
  }
  PortraitStyle read;
  std::memcpy(&read, block + kStyleAt, sizeof read);
  const PhotoBlock whole = SpecimenPhotoBlock(read);
  if (!std::equal(whole.begin(), whole.end(), block)) return false;
  *style = read;
  return true;
}

}  // namespace simulator
