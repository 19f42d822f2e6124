// Hair: what falls behind the head, and the crown without the opening for the face.
#include "simulator/specimen_decoder/portrait.h"

namespace specimen_decoder {

using simulator::Hair;

Colour Portrait::LitHair(Point p) const {
  const float across = (p.x - kMiddle + 6) / 26;
  const float gloss = 1 - std::min(std::abs(p.y - 27 - 14 * across * across) / 7, 1.0F);
  const float turns = (p.x * 2.3F + p.y * 0.35F) / 6.3F;
  const float strand = std::abs(2 * (turns - std::floor(turns)) - 1);
  const Colour base = Mix(Darker(hair_, 0.14F), Lighter(hair_, 0.05F), strand);
  return Mix(base, Lighter(hair_, 0.35F), gloss * gloss * 0.7F);
}

void Portrait::DrawHairBehind() {
  const auto paint = [this](Point p) { return Darker(LitHair(p), 0.25F); };
  if (style_.hair == Hair::kLong) {
    canvas_.FillWith(
        Canvas::kAll,
        [](Point p) {
          const float crown = Ellipse(p, {kMiddle, 46}, 27, 31);
          const float fall = Box(p, {kMiddle, 84}, 29, 34, 14);
          return Merged(crown, fall, 12);
        },
        paint);
  } else if (style_.hair == Hair::kBob) {
    canvas_.FillWith(
        {18, 10, 84, 92},
        [](Point p) {
          const float crown = Ellipse(p, {kMiddle, 46}, 28, 31);
          const float fall = Box(p, {kMiddle, 68}, 30, 19, 9);
          return Merged(crown, fall, 10);
        },
        paint);
  } else if (style_.hair == Hair::kBun) {
    canvas_.FillWith(
        {36, 2, 66, 30},
        [](Point p) {
          return Ellipse(p, {kMiddle, 15}, 11, 9.5F);
        },
        paint);
  }
}

// Hair that lies over the head: the crown without the opening for the face.
void Portrait::DrawHair() {
  const auto paint = [this](Point p) { return LitHair(p); };
  const auto crown = [](Point p) { return Ellipse(p, {kMiddle, 46}, 25.5F, 29.5F); };
  switch (style_.hair) {
    case Hair::kCropped:
      canvas_.FillWith(
          {22, 12, 80, 62},
          [&](Point p) {
            const float face = Box(p, {kMiddle, 62}, 21.4F, 27, 14);
            return Without(Both(crown(p), p.y - 58), face);
          },
          paint, 1, 1.5F);
      break;
    case Hair::kParted:
      canvas_.FillWith(
          {22, 12, 80, 64},
          [&](Point p) {
            const float sweep = Ellipse(p, {45, 67}, 31, 37);
            const float parting = LeftOf(p, {41, 26}, {29, 50});
            const float face = Both(Both(sweep, parting), Box(p, {kMiddle, 66}, 21.5F, 40, 8));
            return Without(Both(crown(p), p.y - 60), face);
          },
          paint, 1, 1.2F);
      break;
    case Hair::kBob:
      canvas_.FillWith(
          {18, 10, 84, 90},
          [&](Point p) {
            const float cap = Merged(Ellipse(p, {kMiddle, 46}, 27.5F, 30.5F),
                                     Box(p, {kMiddle, 68}, 29.5F, 18, 9), 10);
            const float face = Box(p, {kMiddle, 74}, 20, 29, 9);
            return Without(cap, face);
          },
          paint, 1, 1.2F);
      break;
    case Hair::kLong:
      canvas_.FillWith(
          {18, 10, 84, 118},
          [&](Point p) {
            const float cap = Merged(Ellipse(p, {kMiddle, 46}, 26.5F, 30.5F),
                                     Box(p, {kMiddle, 82}, 28.5F, 32, 12), 12);
            // Two circles make the pointed opening of a parting in the middle.
            const float face = Both(Ellipse(p, {40, 74}, 32, 46), Ellipse(p, {62, 74}, 32, 46));
            const float below = Box(p, {kMiddle, 112}, 20, 40, 6);
            return Without(Without(cap, face), below);
          },
          paint, 1, 1.2F);
      break;
    case Hair::kBun:
      canvas_.FillWith(
          {22, 12, 80, 62},
          [&](Point p) {
            const float face = Ellipse(p, {kMiddle, 62}, 22.2F, 29);
            return Without(Both(crown(p), p.y - 60), face);
          },
          paint, 1, 1.2F);
      break;
    case Hair::kReceding:
      canvas_.FillWith(
          {22, 14, 80, 64},
          [&](Point p) {
            const float bays =
                Union(Ellipse(p, {42, 54}, 13.5F, 27), Ellipse(p, {60, 54}, 13.5F, 27));
            const float face = Union(Box(p, {kMiddle, 72}, 21.6F, 30, 8), bays);
            const float cap = Ellipse(p, {kMiddle, 47}, 25, 29);
            return Without(Both(cap, p.y - 60), face);
          },
          paint, 0.95F, 2);
      break;
    case Hair::kBald:
      break;
  }
}

}  // namespace specimen_decoder
