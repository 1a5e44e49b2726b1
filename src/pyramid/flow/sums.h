// Sums over the samples of a window, in an order that no build changes: sample (x, y) enters the partial sum
// (x mod 8, y mod 2), row by row; then odd rows are added to even ones, and columns i + 4 to i, i + 2 to i, i + 1 to i.
#pragma once

#include <array>

#include "pyramid/flow/state.h"
#include "simd/simd.h"

namespace zvp::flow {

// terms(i) gives, for the samples from i on, one pack of each sum's terms.
template <int sums, class Terms>
ZVP_INLINE std::array<double, sums> sumOver(const Windows& windows, Terms terms) {
  constexpr int kColumns = Windows::kColumns, kLanes = simd::lanes<double>, kPacks = kColumns / kLanes;
  using V = simd::Pack<double, kLanes>;
  V partial[2][kPacks][sums] = {};
  for (int y = 0; y < windows.rows; y += 2) {
    const int row = y * windows.stride;
    for (int x = 0; x < windows.stride; x += kColumns) {
      for (int odd = 0; odd < 2; ++odd) {
        for (int p = 0; p < kPacks; ++p) {
          const std::array<V, sums> term = terms(row + odd * windows.stride + x + p * kLanes);
          for (int k = 0; k < sums; ++k) partial[odd][p][k] += term[static_cast<size_t>(k)];
        }
      }
    }
  }
  std::array<double, sums> result;
  for (int k = 0; k < sums; ++k) {
    double columns[kColumns];
    for (int p = 0; p < kPacks; ++p) simd::store(columns + p * kLanes, V(partial[0][p][k] + partial[1][p][k]));
    for (int n = kColumns / 2; n > 0; n /= 2)
      for (int i = 0; i < n; ++i) columns[i] += columns[i + n];
    result[static_cast<size_t>(k)] = columns[0];
  }
  return result;
}

struct GradientMatrix {
  double xx, xy, yy;

  double determinant() const { return xx * yy - xy * xy; }
};

// Converts the derivatives on the way.
inline GradientMatrix gradientMatrix(const Windows& windows) {
  using V = simd::Pack<double, simd::lanes<double>>;
  using F = simd::Pack<float, simd::lanes<double>>;
  const auto [xx, xy, yy] = sumOver<3>(windows, [&](int i) {
    const V dx = simd::convert<double>(simd::load<F>(windows.singleDx + i));
    const V dy = simd::convert<double>(simd::load<F>(windows.singleDy + i));
    simd::store(windows.dx + i, dx);
    simd::store(windows.dy + i, dy);
    return std::array<V, 3>{dx * dx, dx * dy, dy * dy};
  });
  return {xx, xy, yy};
}

// Previous minus next, the difference in single precision.
ZVP_INLINE auto differenceAt(const Windows& windows, int i) {
  using F = simd::Pack<float, simd::lanes<double>>;
  return simd::convert<double>(F(simd::load<F>(windows.previous + i) - simd::load<F>(windows.next + i)));
}

struct Mismatch {
  double x, y;
};

inline Mismatch mismatch(const Windows& windows) {
  using V = simd::Pack<double, simd::lanes<double>>;
  const auto [x, y] = sumOver<2>(windows, [&](int i) {
    const V d = differenceAt(windows, i);
    return std::array<V, 2>{d * simd::load<V>(windows.dx + i), d * simd::load<V>(windows.dy + i)};
  });
  return {x, y};
}

inline double squaredDifference(const Windows& windows) {
  using V = simd::Pack<double, simd::lanes<double>>;
  return sumOver<1>(windows, [&](int i) {
    const V d = differenceAt(windows, i);
    return std::array<V, 1>{d * d};
  })[0];
}

}  // namespace zvp::flow
