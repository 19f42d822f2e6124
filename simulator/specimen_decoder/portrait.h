// The portrait of a specimen person, painted from the back to the front.
#ifndef QUILLONID_SIMULATOR_SPECIMEN_DECODER_PORTRAIT_H
#define QUILLONID_SIMULATOR_SPECIMEN_DECODER_PORTRAIT_H

#include "simulator/specimen_decoder/canvas.h"
#include "simulator/specimen_photo.h"

namespace specimen_decoder {

constexpr float kMiddle = 51;  // the face is symmetrical about this column
constexpr Colour kWhite = Rgb(0xFFFFFF);

// A point `across` pixels from the middle line, on the left (-1) or the right (1) half.
constexpr Point Mirrored(float side, float across, float y) { return {kMiddle + side * across, y}; }

class Portrait {
 public:
  // Both must outlive the portrait.
  Portrait(const simulator::PortraitStyle& style, Canvas* canvas);

  void Draw();

 private:
  // Shapes and lighting that several parts share. Light falls in from the upper left.
  float Face(Point p) const;
  float Shoulders(Point p) const;
  Colour LitSkin(Point p) const;
  Colour LitHair(Point p) const;
  Colour LitCloth(Point p) const;

  void DrawBackdrop();
  void DrawHairBehind();
  void DrawNeck();
  void DrawClothes();
  void DrawShirtFront();
  void DrawShirtCollar(Colour colour);
  void DrawHead();
  void DrawBeard();
  void DrawMouth();
  void DrawNose();
  void DrawEye(float side);
  void DrawWrinkles();
  void DrawHair();
  void DrawGlasses();
  void DrawLettering();

  const simulator::PortraitStyle& style_;
  Canvas& canvas_;
  const bool child_;
  const Colour skin_;
  const Colour hair_;
  const Colour cloth_;
};

}  // namespace specimen_decoder

#endif
