// Gaussian blur.
#ifndef ZVP_EXAMPLES_COMMON_BLUR_H
#define ZVP_EXAMPLES_COMMON_BLUR_H

#include "common/image.h"

namespace examples {

// A Gaussian of 9 x 9 taps, sigma 2; beyond its edges the image goes on with its edge pixels.
GrayImage blur(const GrayImage& image);

}  // namespace examples

#endif
