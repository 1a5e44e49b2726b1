// Bilinear windows as a reader would write them first.
#pragma once

#include <algorithm>
#include <cmath>
#include <limits>

#include "image.h"

namespace bench::ZVP_LOOPS::plain {

// The fixed-point weights of the four neighbours: 00, 10, 01, 11.
struct FixedBlend {
  int w[4];

  FixedBlend(float fx, float fy) {
    const int ax = int(0.5f + 16384.0f * fx), ay = int(0.5f + 16384.0f * fy), bx = 16384 - ax, by = 16384 - ay;
    const int products[] = {bx * by, ax * by, bx * ay, ax * ay};
    int excess = -16384;
    for (int i = 0; i < 4; ++i) excess += w[i] = (products[i] + 16384) >> 14;
    int largest = 0;
    for (const int i : {2, 1, 3})
      if (w[i] > w[largest]) largest = i;
    if (excess > 0) w[largest] -= excess;
  }

  template <class D, class S>
  D at(S s00, S s10, S s01, S s11) const {
    const int value = (w[0] * int{s00} + w[1] * int{s10} + w[2] * int{s01} + w[3] * int{s11} + 8192) >> 14;
    return D(std::clamp(value, 0, int{std::numeric_limits<D>::max()}));
  }
};

struct FloatBlend {
  float w00, w10, w01, w11;

  FloatBlend(float fx, float fy) : w00((1 - fx) * (1 - fy)), w10(fx * (1 - fy)), w01((1 - fx) * fy), w11(fx * fy) {}

  template <class D, class S>
  D at(S s00, S s10, S s01, S s11) const {
    return w00 * float(s00) + w10 * float(s10) + w01 * float(s01) + w11 * float(s11);
  }
};

template <class D>
using Blend = std::conditional_t<std::is_same_v<D, float>, FloatBlend, FixedBlend>;

// dst is one column and one row smaller than src.
template <class S, class D>
void shift(const Image<S>& src, const Image<D>& dst, float fx, float fy) {
  const Blend<D> blend(fx, fy);
  for (int y = 0; y < dst.height; ++y) {
    const S *upper = src.row(y), *lower = src.row(y + 1);
    D* out = dst.row(y);
    for (int x = 0; x < dst.width; ++x) out[x] = blend.template at<D>(upper[x], upper[x + 1], lower[x], lower[x + 1]);
  }
}

// A window about a point, pixels outside being the nearest ones; dst holds its rows without gaps.
template <class S, class D>
void window(const Image<S>& src, Point32f centre, int side, D* dst) {
  const float left = centre.x - 0.5f * float(side - 1), top = centre.y - 0.5f * float(side - 1);
  const int i = int(std::floor(left)), j = int(std::floor(top));
  const Blend<D> blend(left - float(i), top - float(j));
  const bool inside = i >= 0 && j >= 0 && i + side < src.width && j + side < src.height;
  for (int y = 0; y < side; ++y) {
    const S* upper = src.row(std::clamp(j + y, 0, src.height - 1));
    const S* lower = src.row(std::clamp(j + y + 1, 0, src.height - 1));
    D* out = dst + y * side;
    if (inside) {
      for (int x = 0; x < side; ++x)
        out[x] = blend.template at<D>(upper[i + x], upper[i + x + 1], lower[i + x], lower[i + x + 1]);
    } else {
      for (int x = 0; x < side; ++x) {
        const int l = std::clamp(i + x, 0, src.width - 1), r = std::clamp(i + x + 1, 0, src.width - 1);
        out[x] = blend.template at<D>(upper[l], upper[r], lower[l], lower[r]);
      }
    }
  }
}

}  // namespace bench::ZVP_LOOPS::plain
