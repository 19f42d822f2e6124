// What stands in a face, and what is worn on it.
#include "simulator/specimen_decoder/portrait.h"

namespace specimen_decoder {
namespace {

constexpr float kEyeLine = 56;
constexpr float kEyeApart = 9.5F;

constexpr Colour kLip = Rgb(0xB4504C);

}  // namespace

using simulator::Beard;
using simulator::Glasses;
using simulator::Hair;

void Portrait::DrawHead() {
  for (const float side : {-1.0F, 1.0F}) {
    const auto ear = [side](Point p) { return Ellipse(p, Mirrored(side, 22.5F, 58), 4, 6.5F); };
    canvas_.FillWith({22, 46, 80, 70}, ear, [this](Point p) { return Darker(LitSkin(p), 0.08F); });
    canvas_.Fill(
        {22, 46, 80, 70}, [side](Point p) { return Ellipse(p, Mirrored(side, 23, 58), 1.8F, 4); },
        Rgb(0x7A3E22), 0.35F, 2);
  }
  canvas_.FillWith(
      {24, 18, 78, 88}, [this](Point p) { return Face(p); },
      [this](Point p) { return LitSkin(p); });
  // Cheeks.
  for (const float side : {-1.0F, 1.0F}) {
    canvas_.Fill(
        {24, 56, 78, 78},
        [=, this](Point p) {
          return Both(Ellipse(p, Mirrored(side, 12.5F, 67), 6, 4.5F), 6 * Face(p));
        },
        Rgb(0xE0604E), child_ ? 0.28F : 0.15F, 6);
  }
}

void Portrait::DrawBeard() {
  const auto paint = [this](Point p) { return Mix(LitHair(p), skin_, 0.15F); };
  if (style_.beard == Beard::kFull) {
    canvas_.FillWith(
        {26, 54, 76, 90},
        [this](Point p) {
          const float cheeks = Ellipse(p, {kMiddle, 56}, 17.5F, 13.5F);
          const float lips = Ellipse(p, {kMiddle, 74.5F}, 6.5F, 3.2F);
          const float jaw = Both(Face(p) - 1, 58 - p.y);
          return Without(Without(jaw, cheeks), lips);
        },
        paint, 0.92F, 2);
  }
  if (style_.beard != Beard::kNone) {
    canvas_.FillWith(
        {38, 64, 64, 76},
        [](Point p) {
          return Union(Curve(p, {kMiddle, 70}, {46, 69}, {42.5F, 73}, 1.6F, 0.5F),
                       Curve(p, {kMiddle, 70}, {56, 69}, {59.5F, 73}, 1.6F, 0.5F));
        },
        paint, 0.95F);
  }
}

void Portrait::DrawMouth() {
  const Colour lip = Mix(
      kLip, skin_,
      style_.hair == Hair::kLong || style_.hair == Hair::kBob || style_.hair == Hair::kBun ? 0.10F
                                                                                           : 0.40F);
  const float half = child_ ? 5.0F : 6.5F;
  canvas_.Fill(
      {40, 70, 62, 82},
      [half](Point p) {
        return Ellipse(p, {kMiddle, 75.2F}, half - 1.2F, 1.9F);
      },
      lip, 0.9F);
  canvas_.Fill(
      {40, 68, 62, 80},
      [half](Point p) {
        return Union(
            Curve(p, {kMiddle - half, 74}, {kMiddle - 2, 71.8F}, {kMiddle, 73.3F}, 0.9F, 0.4F),
            Curve(p, {kMiddle + half, 74}, {kMiddle + 2, 71.8F}, {kMiddle, 73.3F}, 0.9F, 0.4F));
      },
      Darker(lip, 0.12F));
  canvas_.Fill(
      {40, 68, 62, 80},
      [half](Point p) {
        return Curve(p, {kMiddle - half - 0.6F, 73.6F}, {kMiddle, 75.2F},
                     {kMiddle + half + 0.6F, 73.6F}, 0.45F, 0.8F);
      },
      Darker(lip, 0.55F), 0.9F);
}

void Portrait::DrawNose() {
  const Colour shadow = Mix(skin_, Rgb(0x6A3018), 0.55F);
  const float wing = child_ ? 2.4F : 3.2F;
  canvas_.Fill(
      {40, 50, 62, 72},
      [](Point p) {
        return Curve(p, {54.0F, 55}, {53.4F, 61}, {55.2F, 65}, 0.9F, 0.4F);
      },
      shadow, child_ ? 0.25F : 0.5F, 2.5F);
  canvas_.Fill(
      {40, 58, 62, 72},
      [](Point p) {
        return Ellipse(p, {50.2F, 64}, 1.6F, 2.2F);
      },
      kWhite, 0.28F, 3);
  for (const float side : {-1.0F, 1.0F}) {
    canvas_.Fill(
        {42, 62, 60, 72},
        [=](Point p) {
          return Curve(p, Mirrored(side, wing + 0.6F, 65.4F), Mirrored(side, wing + 0.4F, 67.6F),
                       Mirrored(side, 1, 67.4F), 0.6F, 0.5F);
        },
        shadow, 0.85F);
  }
}

void Portrait::DrawEye(float side) {
  const Point eye = Mirrored(side, kEyeApart, kEyeLine);
  const float scale = child_ ? 1.2F : 1.0F;
  const Frame frame = {static_cast<int>(eye.x) - 9, 42, static_cast<int>(eye.x) + 10, 66};
  const auto opening = [=](Point p) {
    return Both(Ellipse(p, eye + Point{0, 1.7F * scale}, 5.2F * scale, 4.1F * scale),
                Ellipse(p, eye + Point{0, -1.7F * scale}, 5.2F * scale, 4.1F * scale));
  };
  const auto within = [&](Point centre, float radius) {
    return [=](Point p) { return Both(opening(p), Ellipse(p, centre, radius, radius)); };
  };
  // The socket, the white, iris and pupil, a reflection of the window.
  canvas_.Fill(
      frame,
      [=](Point p) {
        return Ellipse(p, eye + Point{0, -1.5F}, 6.5F, 3.6F);
      },
      Rgb(0x7A3E22), 0.22F, 4);
  canvas_.Fill(frame, opening, Rgb(0xFAF7F4));
  canvas_.Fill(frame, within(eye, 2.5F * scale), Rgb(0x4A2C1C));
  canvas_.Fill(frame, within(eye, 1.3F * scale), Rgb(0x120C0A));
  canvas_.Fill(frame, within(eye + Point{-0.8F, -0.9F}, 0.7F), kWhite, 0.95F);
  // Lids and brow, drawn from the nose outwards.
  const auto across = [&](float x, float y) { return eye + Point{side * x, y}; };
  canvas_.Fill(
      frame,
      [&](Point p) {
        return Curve(p, across(-5 * scale, 0.6F), across(-0.5F, -4.6F * scale),
                     across(5.6F * scale, 0.2F), 0.75F, 0.7F);
      },
      Rgb(0x1C1210), 0.95F);
  canvas_.Fill(
      frame,
      [&](Point p) {
        return Curve(p, across(-4, 1.6F), across(0, 4.2F * scale), across(4.6F, 1.2F), 0.3F, 1);
      },
      Rgb(0x6A3018), 0.45F);
  canvas_.Fill(
      frame,
      [&](Point p) {
        return Curve(p, across(-5.2F, -6.6F), across(1.5F, -10.2F), across(7, -6.2F),
                     child_ ? 0.7F : 1.1F, 0.45F);
      },
      Darker(Mix(hair_, Rgb(0x3B2A22), 0.35F), 0.1F), 0.9F);
}

void Portrait::DrawWrinkles() {
  const Colour shadow = Mix(skin_, Rgb(0x5A2A18), 0.6F);
  const auto line = [&](Point a, Point bend, Point b, float opacity) {
    canvas_.Fill(
        {26, 30, 76, 84}, [=](Point p) { return Curve(p, a, bend, b, 0.45F, 0.3F); }, shadow,
        opacity);
  };
  line({41, 41}, {kMiddle, 39}, {61, 41}, 0.45F);
  line({39, 37}, {kMiddle, 35}, {63, 37}, 0.35F);
  for (const float side : {-1.0F, 1.0F}) {
    line(Mirrored(side, 5, 66), Mirrored(side, 10, 70), Mirrored(side, 10, 76), 0.6F);
    line(Mirrored(side, 5, 60.5F), Mirrored(side, 10, 63.5F), Mirrored(side, 14.5F, 60), 0.45F);
    line(Mirrored(side, 16, 56), Mirrored(side, 18, 57), Mirrored(side, 20, 60), 0.45F);
    line(Mirrored(side, 16, 55), Mirrored(side, 18, 54.5F), Mirrored(side, 20.5F, 55), 0.4F);
  }
}

void Portrait::DrawGlasses() {
  if (style_.glasses == Glasses::kNone) return;
  const bool round = style_.glasses == Glasses::kRound;
  const Colour frame_colour = round ? Rgb(0x5A4632) : Rgb(0x16181C);
  const auto lens = [round](Point p, Point centre) {
    return round ? Ellipse(p, centre, 7.4F, 7.2F) : Box(p, centre, 8, 5.8F, 2.5F);
  };
  const Frame frame = {22, 44, 80, 68};
  for (const float side : {-1.0F, 1.0F}) {
    const Point centre = Mirrored(side, kEyeApart + 0.3F, kEyeLine + 0.6F);
    canvas_.Fill(
        frame, [=](Point p) { return lens(p, centre); }, Rgb(0xDDEBF5), 0.16F);
    canvas_.Fill(
        frame,
        [=](Point p) {
          const float rim = std::abs(lens(p, centre)) - 0.75F;
          const float temple =
              Stroke(p, Mirrored(side, 17.5F, 54.5F), Mirrored(side, 23.5F, 54), 0.7F, 0.7F);
          return Union(rim, temple);
        },
        frame_colour, 0.95F);
  }
  canvas_.Fill(
      frame,
      [](Point p) {
        return Curve(p, {48.6F, 55.5F}, {kMiddle, 53.5F}, {53.4F, 55.5F}, 0.7F, 1);
      },
      frame_colour, 0.95F);
}

}  // namespace specimen_decoder
