// A cascade applied at every position of a photograph, at a range of scales.
#ifndef ZVP_EXAMPLES_DETECT_SCAN_H
#define ZVP_EXAMPLES_DETECT_SCAN_H

#include <cstdint>
#include <functional>
#include <vector>

#include "cascade.h"
#include "common/image.h"
#include "groups.h"

namespace examples {

struct ScanResult {
  std::vector<Square> hits;
  int64_t windows = 0;  // how many were judged
  int scales = 0;
};

// Called before each scale with the share of the windows that are done, 0 to 1.
using Progress = std::function<void(double)>;

// Judges the windows of the image, then of the layers of its pyramid, each smaller by scaleStep (above 1, at most 10),
// as long as the window fits. Throws Error where the cascade accepts so many windows that it tells nothing.
ScanResult scan(const GrayImage& image, const Cascade& cascade, double scaleStep, const Progress& progress);

}  // namespace examples

#endif
