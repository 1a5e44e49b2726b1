// Which pixels connect, and which of a row belong together: as bits, up to 64 pixels a time.
#pragma once

#include <type_traits>

#include "simd/walk.h"

namespace zvp::segment {

inline constexpr int kWordBits = 64;

template <class T>
struct Rule {
  T marker, tolerance;

  // Neither is the marker, and the difference is within the tolerance.
  template <class V>
  ZVP_INLINE auto connects(V a, V b) const {
    return (a != marker) & (b != marker) & areClose(a, b);
  }

  // Nothing in a run needs telling apart: connected pixels, or markers.
  template <class V>
  ZVP_INLINE auto belongTogether(V a, V b) const {
    return connects(a, b) | ((a == marker) & (b == marker));
  }

 private:
  template <class V>
  ZVP_INLINE auto areClose(V a, V b) const {
    if constexpr (std::is_same_v<T, float>) {
      return simd::absolute(V(a - b)) <= tolerance;
    } else {
      using Unsigned = std::make_unsigned_t<T>;  // a difference of signed numbers takes one more bit
      using U = simd::Pack<Unsigned, simd::laneCount<V>>;
      const U difference = U(U(simd::max(a, b)) - U(simd::min(a, b)));
      const auto close = difference <= static_cast<Unsigned>(tolerance);
      if constexpr (std::is_signed_v<T>) {
        return close & (V(V{} + tolerance) >= T{0});
      } else {
        return close;
      }
    }
  }
};

// Bit i: relation(a[i], b[i]), for i < n <= 64.
template <class T, class Relation>
ZVP_INLINE uint64_t relationBits(const T* a, const T* b, int n, Relation relation) {
  uint64_t bits = 0;
  simd::forEachPack<simd::lanes<T>, sizeof(T)>(
      0, n, [&]<int N>(int i) __attribute__((always_inline)) {
        using V = simd::Pack<T, N>;
        bits |= simd::maskBits(relation(simd::load<V>(a + i), simd::load<V>(b + i))) << i;
      });
  return bits;
}

// The same for at most a word.
template <class T, class Relation>
ZVP_INLINE uint64_t wordOfBits(const T* a, const T* b, int64_t n, Relation relation) {
  return relationBits(a, b, n < kWordBits ? static_cast<int>(n) : kWordBits, relation);
}

}  // namespace zvp::segment
