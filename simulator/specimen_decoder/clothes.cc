// Shoulders and what covers them.
#include "simulator/specimen_decoder/portrait.h"

namespace specimen_decoder {

using simulator::Clothes;

float Portrait::Shoulders(Point p) const {
  const float width = child_ ? 37 : 45;
  const float top = child_ ? 98 : 93;
  const float chest = Box(p, {kMiddle, top + 38}, width, 34, 20);
  const float slope = Ellipse(p, {kMiddle, top + 24}, width * 0.7F, 27);
  return Merged(chest, slope, 10);
}

Colour Portrait::LitCloth(Point p) const {
  const float away = Step(-0.8F, 1.4F, (p.x - kMiddle) / 46 + (p.y - 104) / 40);
  return Mix(Lighter(cloth_, 0.12F), Darker(cloth_, 0.35F), away);
}

void Portrait::DrawClothes() {
  const auto body = [this](Point p) { return Shoulders(p); };
  const auto paint = [this](Point p) { return LitCloth(p); };
  switch (style_.clothes) {
    case Clothes::kSuit:
      canvas_.FillWith(Canvas::kAll, body, paint);
      DrawShirtFront();
      break;
    case Clothes::kShirt:
      canvas_.FillWith(Canvas::kAll, body, paint);
      DrawShirtCollar(Lighter(cloth_, 0.30F));
      canvas_.Fill(
          {48, 104, 54, 126},
          [](Point p) {
            return Stroke(p, {kMiddle, 110}, {kMiddle, 130}, 0.5F, 0.5F);
          },
          Darker(cloth_, 0.45F));
      break;
    case Clothes::kRoundNeck: {
      const auto opening = [this](Point p) {
        return child_ ? Ellipse(p, {kMiddle, 96}, 8.8F, 7.5F)
                      : Ellipse(p, {kMiddle, 92}, 12.5F, 9.5F);
      };
      canvas_.FillWith(
          Canvas::kAll, [&](Point p) { return Without(Shoulders(p), opening(p)); }, paint);
      canvas_.Fill(
          {30, 84, 72, 116},
          [&](Point p) { return Both(Shoulders(p), std::abs(opening(p) - 1.6F) - 1.6F); },
          Darker(cloth_, 0.30F));
      break;
    }
    case Clothes::kTurtleneck:
      canvas_.FillWith(Canvas::kAll, body, paint);
      canvas_.FillWith(
          {34, 80, 68, 108},
          [](Point p) {
            return Box(p, {kMiddle, 92}, 13, 9, 4);
          },
          [this](Point p) { return Lighter(LitCloth(p), 0.08F); });
      canvas_.Fill(
          {34, 80, 68, 108},
          [](Point p) {
            return Curve(p, {39, 98}, {kMiddle, 103}, {63, 98}, 0.7F, 0.6F);
          },
          Darker(cloth_, 0.45F));
      break;
  }
}

// Shirt, tie and lapels between the halves of a jacket.
void Portrait::DrawShirtFront() {
  constexpr Point kOpening[] = {
      {37,      87 },
      {kMiddle, 128},
      {65,      87 }
  };
  canvas_.Fill(
      {30, 86, 72, 126}, [&](Point p) { return Polygon(p, kOpening); }, Rgb(0xF2F3F6));
  const Colour tie = Mix(Rgb(0x8E2433), cloth_, 0.15F);
  canvas_.Fill(
      {44, 94, 58, 126},
      [](Point p) {
        const float knot = Stroke(p, {kMiddle, 100}, {kMiddle, 104}, 3.6F, 2.2F);
        return Union(knot, Stroke(p, {kMiddle, 106}, {kMiddle, 130}, 1.8F, 4.4F));
      },
      tie);
  DrawShirtCollar(kWhite);
  for (const float side : {-1.0F, 1.0F}) {
    canvas_.Fill(
        Canvas::kAll,
        [side](Point p) {
          return Stroke(p, Mirrored(side, 14.5F, 88), Mirrored(side, 0, 128), 0.8F, 0.8F);
        },
        Darker(cloth_, 0.5F), 0.8F);
    canvas_.Fill(
        Canvas::kAll,
        [side](Point p) {
          const float notch =
              Stroke(p, Mirrored(side, 21, 105), Mirrored(side, 12, 107), 0.5F, 0.5F);
          return Union(notch,
                       Stroke(p, Mirrored(side, 17, 94), Mirrored(side, 21, 105), 0.5F, 0.5F));
        },
        Darker(cloth_, 0.5F), 0.7F);
  }
}

// Two wings that meet below the throat.
void Portrait::DrawShirtCollar(Colour colour) {
  for (const float side : {-1.0F, 1.0F}) {
    const auto wing = [side](Point p) {
      // Both wings are drawn as the right one.
      constexpr Point kWing[] = {
          {0,     99 },
          {8.5F,  105},
          {14.5F, 91 },
          {10.5F, 87 }
      };
      return Polygon({(p.x - kMiddle) * side, p.y}, kWing);
    };
    canvas_.Fill({30, 84, 72, 110}, wing, colour);
    canvas_.Fill(
        {30, 84, 72, 110}, [&](Point p) { return std::abs(wing(p)) - 0.35F; },
        Darker(colour, 0.55F), 0.5F);
  }
}

}  // namespace specimen_decoder
