// Pictures of what has been found.
#ifndef ZVP_EXAMPLES_SEGMENT_COLOURS_H
#define ZVP_EXAMPLES_SEGMENT_COLOURS_H

#include "coins.h"
#include "common/image.h"
#include "disparity.h"

namespace examples {

// The photograph with every coin in a colour of its own and its box.
ColourImage paintCoins(const GrayImage& photo, const Coins& coins);

// Two maps side by side: far is blue, near is red, unknown is black.
ColourImage paintDisparities(const Disparities& left, const Disparities& right);

}  // namespace examples

#endif
