#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <set>

#include "quillonid/image.h"
#include "simulator/specimen_photo.h"
#include "tests/image/photo_data.h"
#include "tests/testing/hex_text.h"
#include "tests/testing/private_root.h"

namespace {

using namespace simulator;

// Every choice of every feature once.
std::vector<PortraitStyle> Styles() {
  std::vector<PortraitStyle> styles;
  const auto add = [&styles](auto member, auto last) {
    for (int value = 0; value <= static_cast<int>(last); ++value) {
      PortraitStyle style;
      style.*member = static_cast<decltype(last)>(value);
      styles.push_back(style);
    }
  };
  add(&PortraitStyle::skin, Skin::kBrown);
  add(&PortraitStyle::hair, Hair::kBald);
  add(&PortraitStyle::hair_colour, HairColour::kWhite);
  add(&PortraitStyle::clothes, Clothes::kTurtleneck);
  add(&PortraitStyle::clothes_colour, ClothesColour::kSand);
  add(&PortraitStyle::glasses, Glasses::kSquare);
  add(&PortraitStyle::beard, Beard::kFull);
  add(&PortraitStyle::age, Age::kElder);
  add(&PortraitStyle::backdrop, Backdrop::kBlue);
  return styles;
}

// The picture through the library: its BMP file, or nothing.
std::string Decode(const PhotoBlock& block) {
  const std::string path = TemporaryFolder() + "/specimen.bmp";
  std::filesystem::remove(path);
  const Bytes native = OrdinaryNativeData(Bytes(block.begin(), block.end()));
  return SavePhotoImage(0, native.data(), path.c_str()) == 0 ? ReadWholeFile(path) : "";
}

struct Pixel {
  int red;
  int green;
  int blue;
};

// A pixel of the file, (0, 0) at the top left: the file begins with the bottom row.
Pixel At(const std::string& file, std::size_t x, std::size_t y) {
  const std::size_t at = 54 + (125 - y) * (102 * 3 + 2) + x * 3;
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(file[at + i]); };
  return {byte(2), byte(1), byte(0)};
}

void InstallSpecimenDecoder() { std::filesystem::copy_file(QL_SPECIMEN_DECODER, kDecoderFile); }

}  // namespace

TEST(SpecimenPhotoBlock, CarriesEveryStyle) {
  for (const PortraitStyle& style : Styles()) {
    const PhotoBlock block = SpecimenPhotoBlock(style);
    PortraitStyle read;

    ASSERT_TRUE(ReadSpecimenPhotoBlock(block.data(), &read));

    EXPECT_TRUE(style == read);
  }
}

TEST(SpecimenPhotoBlock, IsLaidOutAsTheHeaderSays) {
  PortraitStyle style;
  style.hair = Hair::kBun;
  style.backdrop = Backdrop::kBlue;

  const PhotoBlock block = SpecimenPhotoBlock(style);

  EXPECT_EQ("51 53 50 48 4F 54 4F 31 00 04 00 00 00 00 00 01 02", HexText(block.data(), 17));
}

TEST(SpecimenPhotoBlock, RefusesEveryOtherBlock) {
  const PhotoBlock good = SpecimenPhotoBlock({});
  PortraitStyle style;
  for (std::size_t i = 0; i < good.size(); ++i) {
    for (const int bit : {0, 3, 7}) {
      PhotoBlock block = good;
      block[i] = static_cast<std::uint8_t>(block[i] ^ 1 << bit);
      ASSERT_FALSE(ReadSpecimenPhotoBlock(block.data(), &style)) << "byte " << i << " bit " << bit;
    }
  }
}

TEST(SpecimenDecoder, DrawsADifferentPictureForEveryFeature) {
  NEEDS_PRIVATE_ROOT();
  InstallSpecimenDecoder();
  std::set<std::string> pictures;
  for (const PortraitStyle& style : Styles()) {
    const std::string picture = Decode(SpecimenPhotoBlock(style));
    ASSERT_EQ(38862U, picture.size());
    pictures.insert(picture);
  }
  // Each of the nine features is listed once with its default: one picture that comes nine times.
  EXPECT_EQ(Styles().size() - 8, pictures.size());
}

TEST(SpecimenDecoder, DrawsAHeadTheRightWayUpInTheRightColours) {
  NEEDS_PRIVATE_ROOT();
  InstallSpecimenDecoder();
  PortraitStyle style;
  style.clothes = Clothes::kTurtleneck;
  style.clothes_colour = ClothesColour::kMaroon;
  style.backdrop = Backdrop::kBlue;

  const std::string picture = Decode(SpecimenPhotoBlock(style));
  ASSERT_EQ(38862U, picture.size());

  const Pixel corner = At(picture, 2, 2);
  EXPECT_GT(corner.blue, corner.red + 40);  // backdrop
  const Pixel crown = At(picture, 51, 22);
  EXPECT_LT(crown.red + crown.green + crown.blue, 240);  // black hair
  const Pixel cheek = At(picture, 40, 68);
  EXPECT_GT(cheek.red, 200);
  EXPECT_GT(cheek.red, cheek.blue + 30);  // skin
  const Pixel chest = At(picture, 20, 120);
  EXPECT_GT(chest.red, chest.green + 30);  // maroon
}

TEST(SpecimenDecoder, RefusesThePhotoOfARealCard) {
  NEEDS_PRIVATE_ROOT();
  InstallSpecimenDecoder();

  EXPECT_EQ("", Decode(PhotoBlock{}));
}
