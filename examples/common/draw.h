// Marks on a picture.
#ifndef ZVP_EXAMPLES_COMMON_DRAW_H
#define ZVP_EXAMPLES_COMMON_DRAW_H

#include "common/image.h"

namespace examples {

struct Colour {
  uint8_t red, green, blue;
};

// Draws the outline of a box; its lines lie inside the box, and outside the picture nothing is drawn.
void drawBox(ColourImage& image, Rect box, int thickness, Colour colour);

}  // namespace examples

#endif
