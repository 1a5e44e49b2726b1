// Walks along a row: in registers, then in half registers, then element by element.
#pragma once

#include "simd/simd.h"

namespace zvp::simd {

// Calls step(i, width) for the elements first .. n - 1 in consecutive blocks. The width is a constant: N as long as
// that fits, then halves of it down to 16 bytes, then 1.
template <int N, int elementSize, class Step>
ZVP_INLINE void forEachBlock(int first, int n, Step step) {
  int i = first;
  for (; i <= n - N; i += N) step(i, std::integral_constant<int, N>{});
  if constexpr (N > 1) {
    constexpr bool kStillARegister = N / 2 * elementSize >= 16;
    forEachBlock<kStillARegister ? N / 2 : 1, elementSize>(i, n, step);
  }
}

// dst[i] = f(src[i]...) for i < n, with f callable on packs and on single elements. dst may be one of the sources.
// N, the widest pack, is for expressions whose widest type is not that of dst.
template <int N, class T, class F, class... S>
ZVP_INLINE void transformRowBy(int n, F f, T* dst, const S*... src) {
  forEachBlock<N, sizeof(T)>(
      0, n, [=]<class W>(int i, W) __attribute__((always_inline)) {
        store(dst + i, Pack<T, W::value>(f(load<Pack<S, W::value>>(src + i)...)));
      });
}

template <class T, class F, class... S>
ZVP_INLINE void transformRow(int n, F f, T* dst, const S*... src) {
  transformRowBy<lanes<T>>(n, f, dst, src...);
}

}  // namespace zvp::simd
