// Exchanges rows and columns of a square of N packs of N elements.
#pragma once

#include <utility>

#include "simd/simd.h"

namespace zvp::simd {

// Exchanges the blocks off the diagonal in every square of 2 x 2 blocks of `size`.
template <int size, class V, std::size_t... lane>
ZVP_INLINE void exchangeBlocks(V& upper, V& lower, std::index_sequence<lane...>) {
  constexpr std::size_t N = sizeof...(lane), b = size;
  const V first = __builtin_shufflevector(upper, lower, (lane & b ? N + lane - b : lane)...);
  const V second = __builtin_shufflevector(upper, lower, (lane & b ? N + lane : lane + b)...);
  upper = first;
  lower = second;
}

template <int size = 1, class V, int N>
ZVP_INLINE void transpose(V (&rows)[N]) {
  static_assert(laneCount<V> == N);
#pragma GCC unroll 16
  for (int i = 0; i < N; ++i)
    if ((i & size) == 0) exchangeBlocks<size>(rows[i], rows[i + size], std::make_index_sequence<N>());
  if constexpr (2 * size < N) transpose<2 * size>(rows);
}

}  // namespace zvp::simd
