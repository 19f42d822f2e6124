// A small picture and the shapes that are painted on it. Coordinates are pixels, the origin at the
// top left. A shape is a signed distance, negative inside; edges are smoothed over one pixel.
#ifndef QUILLONID_SIMULATOR_SPECIMEN_DECODER_CANVAS_H
#define QUILLONID_SIMULATOR_SPECIMEN_DECODER_CANVAS_H

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace specimen_decoder {

struct Point {
  float x;
  float y;
};

constexpr Point operator+(Point a, Point b) { return {a.x + b.x, a.y + b.y}; }
constexpr Point operator-(Point a, Point b) { return {a.x - b.x, a.y - b.y}; }
constexpr Point operator*(Point a, float factor) { return {a.x * factor, a.y * factor}; }
inline float Length(Point p) { return std::sqrt(p.x * p.x + p.y * p.y); }

struct Colour {
  float red;
  float green;
  float blue;
};

// A colour written as in a style sheet, 0xRRGGBB.
constexpr Colour Rgb(std::uint32_t code) {
  const auto part = [code](int shift) { return static_cast<float>(code >> shift & 0xFF) / 255; };
  return {part(16), part(8), part(0)};
}

constexpr Colour Mix(Colour a, Colour b, float share) {
  const auto mix = [share](float from, float to) { return from + (to - from) * share; };
  return {mix(a.red, b.red), mix(a.green, b.green), mix(a.blue, b.blue)};
}

constexpr Colour Darker(Colour colour, float share) { return Mix(colour, {0, 0, 0}, share); }
constexpr Colour Lighter(Colour colour, float share) { return Mix(colour, {1, 1, 1}, share); }

// 0 below `from`, 1 above `to`, smooth between.
inline float Step(float from, float to, float value) {
  const float t = std::clamp((value - from) / (to - from), 0.0F, 1.0F);
  return t * t * (3 - 2 * t);
}

// Shapes.

inline float Ellipse(Point p, Point centre, float rx, float ry) {
  const Point from = p - centre;
  const float k = Length({from.x / rx, from.y / ry});
  const float slope = Length({from.x / (rx * rx), from.y / (ry * ry)});
  return slope > 0 ? k * (k - 1) / slope : -std::min(rx, ry);
}

inline float Box(Point p, Point centre, float half_width, float half_height, float corner) {
  const Point from = {std::abs(p.x - centre.x) - half_width + corner,
                      std::abs(p.y - centre.y) - half_height + corner};
  const float outside = Length({std::max(from.x, 0.0F), std::max(from.y, 0.0F)});
  return outside + std::min(std::max(from.x, from.y), 0.0F) - corner;
}

// A stroke from `a` to `b`; its half width goes from `ra` to `rb`.
inline float Stroke(Point p, Point a, Point b, float ra, float rb) {
  const Point ab = b - a;
  const Point ap = p - a;
  const float along =
      std::clamp((ap.x * ab.x + ap.y * ab.y) / (ab.x * ab.x + ab.y * ab.y), 0.0F, 1.0F);
  return Length(ap - ab * along) - (ra + (rb - ra) * along);
}

// A curved stroke from `a` to `b`, drawn towards `bend`; as wide as `half` in the middle and `ends`
// of that at its ends.
inline float Curve(Point p, Point a, Point bend, Point b, float half, float ends) {
  constexpr int kPieces = 8;
  const auto at = [&](float t) {
    return a * ((1 - t) * (1 - t)) + bend * (2 * t * (1 - t)) + b * (t * t);
  };
  const auto width = [&](float t) { return half * (ends + (1 - ends) * 4 * t * (1 - t)); };
  float nearest = 1e9F;
  for (int i = 0; i < kPieces; ++i) {
    const float from = static_cast<float>(i) / kPieces;
    const float to = static_cast<float>(i + 1) / kPieces;
    nearest = std::min(nearest, Stroke(p, at(from), at(to), width(from), width(to)));
  }
  return nearest;
}

// The half of the plane on the left for someone who walks from `a` to `b`.
inline float LeftOf(Point p, Point a, Point b) {
  const Point ab = b - a;
  return ((p.y - a.y) * ab.x - (p.x - a.x) * ab.y) / Length(ab);
}

// A convex polygon, its corners counter-clockwise.
template <std::size_t kCorners>
float Polygon(Point p, const Point (&corners)[kCorners]) {
  float farthest = LeftOf(p, corners[kCorners - 1], corners[0]);
  for (std::size_t i = 1; i < kCorners; ++i) {
    farthest = std::max(farthest, LeftOf(p, corners[i - 1], corners[i]));
  }
  return farthest;
}

inline float Union(float a, float b) { return std::min(a, b); }
inline float Both(float a, float b) { return std::max(a, b); }
inline float Without(float a, float b) { return std::max(a, -b); }

// A union whose inner corner is rounded by about `radius`.
inline float Merged(float a, float b, float radius) {
  const float share = std::clamp(0.5F + 0.5F * (b - a) / radius, 0.0F, 1.0F);
  return b + (a - b) * share - radius * share * (1 - share);
}

// Part of the picture, so that a small shape costs little.
struct Frame {
  int left;
  int top;
  int right;
  int bottom;
};

class Canvas {
 public:
  static constexpr int kWidth = 102;
  static constexpr int kHeight = 126;
  static constexpr Frame kAll = {0, 0, kWidth, kHeight};

  // Paints where `distance(point)` is negative, with `colour(point)` at `opacity`. `blur` widens
  // the smoothed edge.
  template <typename Distance, typename Paint>
  void FillWith(const Frame& frame, Distance distance, Paint colour, float opacity = 1,
                float blur = 1) {
    for (int y = std::max(frame.top, 0); y < std::min(frame.bottom, kHeight); ++y) {
      for (int x = std::max(frame.left, 0); x < std::min(frame.right, kWidth); ++x) {
        const Point p = {static_cast<float>(x) + 0.5F, static_cast<float>(y) + 0.5F};
        const float cover = std::clamp(0.5F - distance(p) / blur, 0.0F, 1.0F) * opacity;
        if (cover > 0) pixels_[y][x] = Mix(pixels_[y][x], colour(p), cover);
      }
    }
  }

  template <typename Distance>
  void Fill(const Frame& frame, Distance distance, Colour colour, float opacity = 1,
            float blur = 1) {
    FillWith(
        frame, distance, [colour](Point) { return colour; }, opacity, blur);
  }

  const Colour& At(int x, int y) const { return pixels_[y][x]; }

 private:
  Colour pixels_[kHeight][kWidth] = {};
};

}  // namespace specimen_decoder

#endif
