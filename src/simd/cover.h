// Applies a function to the packs that cover a row: registers, the last one overlapping the one before it, so that no
// row of at least 16 bytes has a tail of single elements.
#pragma once

#include "simd/simd.h"

namespace zvp::simd {

template <class T, class F>
struct Cover {
  F f;
  int skew;

  template <int N>
  ZVP_INLINE void over(int n) const {
    if constexpr (N == 1) {
      for (int i = 0; i < n; ++i) f.template operator()<1>(i);
    } else if (n >= N) {
      if (skew > 0) f.template operator()<N>(0);
      int i = skew;
      for (; i <= n - N; i += N) f.template operator()<N>(i);
      if (i < n) f.template operator()<N>(n - N);
    } else {
      constexpr bool kStillARegister = N / 2 * int{sizeof(T)} >= 16;
      Cover{f, 0}.template over<kStillARegister ? N / 2 : 1>(n);
    }
  }
};

// Applies f to packs of elements that cover a row; where they overlap, f must not care about being applied twice. All
// packs but the first and the last start `skew` elements (less than a pack) behind a multiple of the pack.
template <class T, class F>
ZVP_INLINE void coverRow(int n, F f, int skew = 0) {
  Cover<T, F>{f, skew}.template over<simd::lanes<T>>(n);
}

}  // namespace zvp::simd
