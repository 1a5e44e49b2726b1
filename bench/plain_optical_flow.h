// Lucas-Kanade tracking of one point on one level, as a reader would write it first.
#pragma once

#include <zvpcv/types.h>

#include <cmath>
#include <vector>

#include "plain_geometry.h"

namespace bench::plain {

struct FlowSettings {
  int side, mostSteps;
  float threshold;
};

// Derivatives with the taps 3 10 3 and -1 0 1, the border repeated, divided by 32.
inline void scharr(const Image<std::uint8_t>& src, const Image<float>& dx, const Image<float>& dy) {
  for (int y = 0; y < src.height; ++y) {
    const std::uint8_t *a = src.row(std::max(y - 1, 0)), *b = src.row(y), *c = src.row(std::min(y + 1, src.height - 1));
    for (int x = 0; x < src.width; ++x) {
      const int l = std::max(x - 1, 0), r = std::min(x + 1, src.width - 1);
      dx.row(y)[x] = float(3 * (a[r] - a[l]) + 10 * (b[r] - b[l]) + 3 * (c[r] - c[l])) * 0.03125f;
      dy.row(y)[x] = float(3 * (c[l] - a[l]) + 10 * (c[x] - a[x]) + 3 * (c[r] - a[r])) * 0.03125f;
    }
  }
}

// False if the point is lost.
inline bool refine(const Image<std::uint8_t>& previous, const Image<std::uint8_t>& next, const Image<float>& dx,
                   const Image<float>& dy, Point32f point, Point32f& estimate, FlowSettings s) {
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

}  // namespace bench::plain
