#include "simulator/specimen_decoder/portrait.h"

#include <cstddef>

namespace specimen_decoder {
namespace {

constexpr Colour kSkins[] = {Rgb(0xF6D7BD), Rgb(0xEBC09A), Rgb(0xCF9A6B), Rgb(0x9A6844)};
constexpr Colour kHairs[] = {Rgb(0x1E1B1D), Rgb(0x3B2A22), Rgb(0x6B3F26),
                             Rgb(0xC9A35C), Rgb(0x8B8B8E), Rgb(0xE4E2DD)};
constexpr Colour kCloth[] = {Rgb(0x25375C), Rgb(0x3C4046), Rgb(0x1F6F73),
                             Rgb(0x7A2B3A), Rgb(0x66693A), Rgb(0xC7AE86)};
constexpr Colour kBackdrops[] = {Rgb(0xF4F6F8), Rgb(0xC6CCD2), Rgb(0x7FB0DC)};

}  // namespace

Portrait::Portrait(const simulator::PortraitStyle& style, Canvas* canvas)
    : style_(style),
      canvas_(*canvas),
      child_(style.age == simulator::Age::kChild),
      skin_(kSkins[static_cast<std::size_t>(style.skin)]),
      hair_(kHairs[static_cast<std::size_t>(style.hair_colour)]),
      cloth_(kCloth[static_cast<std::size_t>(style.clothes_colour)]) {}

void Portrait::Draw() {
  DrawBackdrop();
  DrawHairBehind();
  DrawNeck();
  DrawClothes();
  DrawHead();
  DrawBeard();
  DrawMouth();
  DrawNose();
  for (const float side : {-1.0F, 1.0F}) DrawEye(side);
  if (style_.age == simulator::Age::kElder) DrawWrinkles();
  DrawHair();
  DrawGlasses();
  DrawLettering();
}

float Portrait::Face(Point p) const {
  const float skull = Ellipse(p, {kMiddle, 48}, 22.5F, 25);
  const float jaw = child_ ? Ellipse(p, {kMiddle, 60}, 20, 20) : Ellipse(p, {kMiddle, 61}, 18, 22);
  return Merged(skull, jaw, 6);
}

Colour Portrait::LitSkin(Point p) const {
  const float away = Step(-0.5F, 1.3F, (p.x - kMiddle) / 24 * 0.7F + (p.y - 52) / 34 * 0.4F);
  const float edge = Step(-8, 1, Face(p));
  return Mix(Lighter(skin_, 0.10F), Mix(skin_, Rgb(0x7A3E22), 0.45F), away * 0.6F + edge * 0.3F);
}

void Portrait::DrawBackdrop() {
  const Colour colour = kBackdrops[static_cast<std::size_t>(style_.backdrop)];
  canvas_.FillWith(
      Canvas::kAll, [](Point) { return -1.0F; },
      [colour](Point p) {
        const float far = Length({(p.x - 44) / 80, (p.y - 44) / 110});
        return Mix(Lighter(colour, 0.25F), Darker(colour, 0.18F), far);
      });
}

void Portrait::DrawNeck() {
  const float half = child_ ? 8.0F : 10.5F;
  canvas_.FillWith(
      {34, 70, 68, 118},
      [half](Point p) {
        return Box(p, {kMiddle, 92}, half, 24, 6);
      },
      [this](Point p) { return Darker(LitSkin(p), 0.10F); });
  // The chin's shadow.
  canvas_.Fill(
      {34, 70, 68, 100},
      [half](Point p) {
        return Both(Box(p, {kMiddle, 92}, half, 24, 6), Ellipse(p, {kMiddle + 2, 80}, 17, 12));
      },
      Rgb(0x5A2A18), 0.35F, 4);
}

// Says what it is, so that no picture is taken for a person's.
void Portrait::DrawLettering() {
  // S P E C I M E N, five columns of seven rows each, the lowest bit at the top.
  constexpr std::uint8_t kLetters[][5] = {
      {0x46, 0x49, 0x49, 0x49, 0x31},
      {0x7F, 0x09, 0x09, 0x09, 0x06},
      {0x7F, 0x49, 0x49, 0x49, 0x41},
      {0x3E, 0x41, 0x41, 0x41, 0x22},
      {0x00, 0x41, 0x7F, 0x41, 0x00},
      {0x7F, 0x02, 0x0C, 0x02, 0x7F},
      {0x7F, 0x49, 0x49, 0x49, 0x41},
      {0x7F, 0x04, 0x08, 0x10, 0x7F},
  };
  constexpr int kLeft = 28;
  constexpr int kTop = 116;
  for (int letter = 0; letter < 8; ++letter) {
    for (int column = 0; column < 5; ++column) {
      for (int row = 0; row < 7; ++row) {
        if ((kLetters[letter][column] >> row & 1) == 0) continue;
        const int x = kLeft + letter * 6 + column;
        const int y = kTop + row;
        canvas_.Fill(
            {x, y, x + 1, y + 1}, [](Point) { return -1.0F; }, kWhite, 0.8F);
      }
    }
  }
}

}  // namespace specimen_decoder
