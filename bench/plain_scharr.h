// Scharr derivatives as a reader would write them first, the border repeated.
#pragma once

#include <algorithm>

#include "image.h"

namespace bench::ZVP_LOOPS::plain {

enum Axis { kAlongX, kAlongY };

template <Axis axis, class T>
void scharr(const Image<T>& src, const Image<float>& dst, float scale) {
  const int width = src.width;
  for (int y = 0; y < src.height; ++y) {
    const T *a = src.row(std::max(y - 1, 0)), *b = src.row(y), *c = src.row(std::min(y + 1, src.height - 1));
    float* out = dst.row(y);
    const auto at = [=](int l, int x, int r) {
      if constexpr (axis == kAlongX) {
        return float(3 * (a[r] - a[l]) + 10 * (b[r] - b[l]) + 3 * (c[r] - c[l])) * scale;
      } else {
        return float(3 * (c[l] - a[l]) + 10 * (c[x] - a[x]) + 3 * (c[r] - a[r])) * scale;
      }
    };
    out[0] = at(0, 0, std::min(1, width - 1));
    for (int x = 1; x < width - 1; ++x) out[x] = at(x - 1, x, x + 1);
    out[width - 1] = at(std::max(width - 2, 0), width - 1, width - 1);
  }
}

}  // namespace bench::ZVP_LOOPS::plain
