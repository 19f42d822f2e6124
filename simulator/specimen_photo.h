// Photo blocks of specimen cards. A real card stores its photo compressed for a decoder that is a
// product of its own; a specimen card stores how a portrait is to be drawn, and the specimen
// decoder (specimen_decoder/) draws it. The block has the size of a real one:
//
//   offset  size
//   0       8     magic "QSPHOTO1"
//   8       9     the members of PortraitStyle in their order, one byte each
//   17      1003  filler that depends on the bytes before it, so that no two people's blocks agree
//   1020    4     CRC-32 (ISO 3309) of the 1,020 bytes before it, big-endian
#ifndef QUILLONID_SIMULATOR_SPECIMEN_PHOTO_H
#define QUILLONID_SIMULATOR_SPECIMEN_PHOTO_H

#include <array>
#include <cstdint>

namespace simulator {

enum class Skin : std::uint8_t { kFair, kLight, kTan, kBrown };
enum class Hair : std::uint8_t { kCropped, kParted, kBob, kLong, kBun, kReceding, kBald };
enum class HairColour : std::uint8_t { kBlack, kDarkBrown, kChestnut, kBlond, kGrey, kWhite };
enum class Clothes : std::uint8_t { kSuit, kShirt, kRoundNeck, kTurtleneck };
enum class ClothesColour : std::uint8_t { kNavy, kCharcoal, kTeal, kMaroon, kOlive, kSand };
enum class Glasses : std::uint8_t { kNone, kRound, kSquare };
enum class Beard : std::uint8_t { kNone, kMoustache, kFull };
enum class Age : std::uint8_t { kChild, kAdult, kElder };
enum class Backdrop : std::uint8_t { kWhite, kGrey, kBlue };

// What a portrait looks like. Left alone, everything is the first choice but the age.
struct PortraitStyle {
  Skin skin = Skin::kFair;
  Hair hair = Hair::kCropped;
  HairColour hair_colour = HairColour::kBlack;
  Clothes clothes = Clothes::kSuit;
  ClothesColour clothes_colour = ClothesColour::kNavy;
  Glasses glasses = Glasses::kNone;
  Beard beard = Beard::kNone;
  Age age = Age::kAdult;
  Backdrop backdrop = Backdrop::kWhite;

  bool operator==(const PortraitStyle&) const = default;
};

using PhotoBlock = std::array<std::uint8_t, 1024>;

// The photo block of a person who looks like this.
PhotoBlock SpecimenPhotoBlock(const PortraitStyle& style);

// The reverse. False for 1,024 bytes that no specimen card carries.
bool ReadSpecimenPhotoBlock(const std::uint8_t* block, PortraitStyle* style);

}  // namespace simulator

#endif
