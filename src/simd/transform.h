// Applies one expression to every element of a row: in registers, then in half registers, then one by one.
#pragma once

#include "simd/simd.h"

namespace zvp::simd {

template <int N, class T, class F, class... S>
ZVP_INLINE void transformFrom(int i, int n, F f, T* dst, const S*... src) {
  for (; i <= n - N; i += N) store(dst + i, Pack<T, N>(f(load<Pack<S, N>>(src + i)...)));
  if constexpr (N > 1) {
    constexpr bool kStillARegister = N / 2 * int{sizeof(T)} >= 16;
    transformFrom<kStillARegister ? N / 2 : 1>(i, n, f, dst, src...);
  }
}

// dst[i] = f(src[i]...) for i < n, with f callable on packs and on single elements. dst may be one of the sources.
// N, the widest pack, is for expressions whose widest type is not that of dst.
template <int N, class T, class F, class... S>
ZVP_INLINE void transformRowBy(int n, F f, T* dst, const S*... src) {
  transformFrom<N>(0, n, f, dst, src...);
}

template <class T, class F, class... S>
ZVP_INLINE void transformRow(int n, F f, T* dst, const S*... src) {
  transformRowBy<lanes<T>>(n, f, dst, src...);
}

}  // namespace zvp::simd
