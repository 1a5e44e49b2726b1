// How far things have moved from the left to the right picture of a stereo camera: the nearer, the farther.
#ifndef ZVP_EXAMPLES_SEGMENT_DISPARITY_H
#define ZVP_EXAMPLES_SEGMENT_DISPARITY_H

#include "common/image.h"

namespace examples {

using Disparities = Image<int16_t>;  // in pixels; kUnknown where nothing is known

constexpr int16_t kUnknown = -1;
constexpr int kMaxDisparity = 79;

// Compares a small block about every pixel of the left picture with the blocks to the left of the same place in the
// right one, and takes the most similar: noisy where the picture is smooth or covered in the other.
Disparities matchBlocks(const GrayImage& left, const GrayImage& right);

// Makes small regions of the map unknown: at most maxSize pixels that differ from their neighbours by more than
// maxDifference.
void removeSpeckles(Disparities& map, int maxSize, int maxDifference);

int countKnown(const Disparities& map);

}  // namespace examples

#endif
