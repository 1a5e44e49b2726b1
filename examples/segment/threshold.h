// Bright things on a dark ground.
#ifndef ZVP_EXAMPLES_SEGMENT_THRESHOLD_H
#define ZVP_EXAMPLES_SEGMENT_THRESHOLD_H

#include "common/image.h"

namespace examples {

// The image without what is brighter over more than `extent` pixels both ways: uneven light goes, smaller things stay.
GrayImage flatten(const GrayImage& image, int extent);

// The grey level at which pixels up to it and pixels above it differ most: the greatest variance between the two
// classes (N. Otsu, A Threshold Selection Method from Gray-Level Histograms, 1979).
int otsuThreshold(const GrayImage& image);

// 255 above the threshold, else 0.
GrayImage above(const GrayImage& image, int threshold);

}  // namespace examples

#endif
