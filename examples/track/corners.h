// Points that can be tracked.
#ifndef ZVP_EXAMPLES_TRACK_CORNERS_H
#define ZVP_EXAMPLES_TRACK_CORNERS_H

#include <zvpcv/types.h>

#include <vector>

#include "common/image.h"

namespace examples {

// The pixels whose surroundings change most in the direction in which they change least (J. Shi, C. Tomasi, Good
// Features to Track, 1994): at most `most`, the best first, at least `spacing` pixels from each other.
std::vector<Point32f> findCorners(const GrayImage& image, int most, int spacing);

}  // namespace examples

#endif
