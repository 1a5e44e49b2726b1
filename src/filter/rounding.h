// From single precision to integers.
#pragma once

#include <limits>

#include "simd/simd.h"

namespace zvp::filter {

template <class Out>
ZVP_INLINE float clampTo(float value) {
  constexpr float kLowest = std::numeric_limits<Out>::min(), kHighest = std::numeric_limits<Out>::max();
  return value < kLowest ? kLowest : value > kHighest ? kHighest : value;
}

// Clamped before it is rounded, which changes no result and keeps it in 32 bits.
template <class Out>
ZVP_INLINE Out roundTo(float value) {
  return static_cast<Out>(simd::convert<int32_t>(double{clampTo<Out>(value)}));
}

template <class Out>
ZVP_INLINE Out truncateTo(float value) {
  return static_cast<Out>(clampTo<Out>(value));
}

}  // namespace zvp::filter
