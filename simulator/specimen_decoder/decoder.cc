// The decoder's interface: one exported function.
#include <algorithm>

#include "simulator/specimen_decoder/canvas.h"
#include "simulator/specimen_decoder/portrait.h"
#include "simulator/specimen_photo.h"

namespace {

using specimen_decoder::Canvas;

unsigned char ToByte(float part) {
  return static_cast<unsigned char>(std::clamp(part, 0.0F, 1.0F) * 255.99F);
}

}  // namespace

// Turns a photo block of 1,024 bytes into 102 x 126 pixels of 3 bytes (R, G, B; bottom row first).
// Returns 1, or 0 for a block that no specimen card carries.
extern "C" __attribute__((visibility("default"))) int unpack(unsigned char* photo,
                                                             unsigned char* pixels, int /*mode*/) {
  simulator::PortraitStyle style;
  if (!simulator::ReadSpecimenPhotoBlock(photo, &style)) return 0;

  Canvas canvas;
  specimen_decoder::Portrait(style, &canvas).Draw();
  for (int y = Canvas::kHeight; y-- > 0;) {
    for (int x = 0; x < Canvas::kWidth; ++x) {
      const specimen_decoder::Colour& colour = canvas.At(x, y);
      *pixels++ = ToByte(colour.red);
      *pixels++ = ToByte(colour.green);
      *pixels++ = ToByte(colour.blue);
    }
  }
  return 1;
}
