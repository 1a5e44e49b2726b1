// Motion as arrows.
#ifndef ZVP_EXAMPLES_TRACK_ARROWS_H
#define ZVP_EXAMPLES_TRACK_ARROWS_H

#include <zvpcv/types.h>

#include "common/draw.h"
#include "common/image.h"

namespace examples {

// From blue over green to red as the length goes from 0 to `longest` and beyond.
Colour motionColour(float length, float longest);

// A line with a head at its end; what lies outside the picture is not drawn.
void drawArrow(ColourImage& image, Point32f from, Point32f to, Colour colour);

}  // namespace examples

#endif
