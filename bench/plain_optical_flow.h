// Lucas-Kanade tracking of one point on one level, as a reader would write it first.
#pragma once

#include <zvpcv/types.h>

#include <cmath>
#include <vector>

#include "plain_geometry.h"
#include "plain_scharr.h"

namespace bench::ZVP_LOOPS::plain {

struct FlowSettings {
  int side, mostSteps;
  float threshold;
};

// False if the point is lost.
template <class T>
bool refine(const Image<T>& previous, const Image<T>& next, const Image<float>& dx, const Image<float>& dy,
            Point32f point, Point32f& estimate, FlowSettings s) {
  const std::size_t n = std::size_t(s.side) * std::size_t(s.side);
  std::vector<float> i(n), j(n), ix(n), iy(n);
  window(previous, point, s.side, i.data());
  window(dx, point, s.side, ix.data());
  window(dy, point, s.side, iy.data());
  double xx = 0, xy = 0, yy = 0;
  for (std::size_t k = 0; k < n; ++k) {
    xx += double(ix[k]) * ix[k];
    xy += double(ix[k]) * iy[k];
    yy += double(iy[k]) * iy[k];
  }
  const double det = xx * yy - xy * xy;
  if (det < 1e-15) return false;
  for (int step = 0; step < s.mostSteps; ++step) {
    window(next, estimate, s.side, j.data());
    double bx = 0, by = 0;
    for (std::size_t k = 0; k < n; ++k) {
      const double d = i[k] - j[k];
      bx += d * ix[k];
      by += d * iy[k];
    }
    const double moveX = (bx * yy - xy * by) / det, moveY = (by * xx - xy * bx) / det;
    estimate = {float(estimate.x + moveX), float(estimate.y + moveY)};
    if (moveX * moveX + moveY * moveY < double(s.threshold) * s.threshold) break;
  }
  return true;
}

}  // namespace bench::ZVP_LOOPS::plain
