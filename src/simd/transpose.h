// Exchanges rows and columns of a square of N packs of N elements.
#pragma once

#include "simd/shuffle.h"

namespace zvp::simd {

// The blocks off the diagonal change places in every square of 2 x 2 blocks of `size`, then of twice that.
template <int size = 1, class V, int N>
ZVP_INLINE void transpose(V (&rows)[N]) {
  static_assert(laneCount<V> == N);
#pragma GCC unroll 16
  for (int i = 0; i < N; ++i) {
    if (i & size) continue;
    const V upper = rows[i], lower = rows[i + size];
    rows[i] = shuffle(upper, lower, [](int lane) { return lane & size ? N + lane - size : lane; });
    rows[i + size] = shuffle(upper, lower, [](int lane) { return lane & size ? N + lane : lane + size; });
  }
  if constexpr (2 * size < N) transpose<2 * size>(rows);
}

}  // namespace zvp::simd
