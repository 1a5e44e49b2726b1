// Weighted sums in single precision.
#pragma once

#include "filter/rounding.h"
#include "filter/taps.h"
#include "simd/fixed_point.h"

namespace zvp::filter {

using simd::Pack;

// Single-precision sums in the order of the taps, every tap times `scale`.
template <class Tap, int K>
struct SingleSums {
  static constexpr int kTaps = K;

  Taps<Tap, K> taps;
  float scale;

  ZVP_INLINE float tap(ptrdiff_t i) const {
    if constexpr (std::is_same_v<Tap, float>) {
      return taps[i];
    } else {
      return static_cast<float>(taps[i]) * scale;
    }
  }
  template <class Source>
  ZVP_INLINE float term(Source source, ptrdiff_t x, int i) const {
    using T = std::remove_cvref_t<decltype(*source[0])>;
    return tap(i) * static_cast<float>(simd::load<T>(source[i] + x));
  }
  template <class Source>
  ZVP_INLINE float sum(Source source, ptrdiff_t x) const {
    float s = term(source, x, 0);
    for (int i = 1; i < taps.size(); ++i) s = s + term(source, x, i);
    return s;
  }
  // Stores several packs, so that a loop over the taps serves all of them.
  template <int N, int packs, class Source>
  ZVP_INLINE void storeFloats(Source source, ptrdiff_t x, float* out) const {
    Pack<float, N> sums[packs];
    for (int p = 0; p < packs; ++p) sums[p] = simd::load<Pack<float, N>>(source[0] + x + p * N) * tap(0);
    for (int i = 1; i < taps.size(); ++i) {
      const float* pixels = source[i] + x;
      for (int p = 0; p < packs; ++p) sums[p] = sums[p] + simd::load<Pack<float, N>>(pixels + p * N) * tap(i);
    }
    for (int p = 0; p < packs; ++p) simd::store(out + x + p * N, sums[p]);
  }
  template <int N, class Source>
  ZVP_INLINE Pack<int16_t, N> words(Source source, ptrdiff_t x) const {
    using Half = Pack<float, N / 2>;
    // A sum that starts at -0 is the first product itself.
    Half low = simd::broadcast<float, N / 2>(-0.0f), high = low;
    for (int i = 0; i < taps.size(); ++i) {
      const simd::Halves<N> pixels = simd::widen<N>(simd::loadWords<N>(source[i] + x));
      low = low + simd::convert<float>(pixels.low) * tap(i);
      high = high + simd::convert<float>(pixels.high) * tap(i);
    }
    return simd::narrow<N>({clampedNearest(low), clampedNearest(high)});
  }
  template <class V>
  static ZVP_INLINE auto clampedNearest(V v) {
    constexpr int N = simd::laneCount<V>;
    const V lowest = simd::broadcast<float, N>(INT16_MIN), highest = simd::broadcast<float, N>(INT16_MAX);
    return simd::nearest(simd::min(simd::max(v, lowest), highest));
  }
  template <class Out, class Source>
  Out inner(Source source, ptrdiff_t x) const {
    if constexpr (std::is_same_v<Out, float>) {
      return sum(source, x);
    } else {
      return roundTo<Out>(sum(source, x));
    }
  }
  template <class Out, class Source>
  Out end(Source source, ptrdiff_t x) const {
    if constexpr (std::is_same_v<Out, float>) {
      return sum(source, x);
    } else {
      return truncateTo<Out>(sum(source, x));
    }
  }
};

}  // namespace zvp::filter
