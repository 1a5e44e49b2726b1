// Weighted sums of integer pixels that are exact before they are divided and rounded.
#pragma once

#include <bit>

#include "filter/rounding.h"
#include "filter/taps.h"
#include "simd/fixed_point.h"

namespace zvp::filter {

using simd::Pack;

// Exact 32-bit sums, times the reciprocal of the divisor. Absolute taps that add up to less than 65535 keep the sum of
// 16-bit pixels in 32 bits.
template <int K>
struct ExactSums {
  static constexpr int kTaps = K;

  Taps<int16_t, K> taps;
  float reciprocal;

  template <class Source>
  ZVP_INLINE float scaled(Source source, ptrdiff_t x) const {
    int32_t sum = 0;
    for (int i = 0; i < taps.size(); ++i) sum += product(taps[i], source[i] + x);
    return static_cast<float>(sum) * reciprocal;
  }
  template <int N, class Source>
  ZVP_INLINE simd::Halves<N> sums(Source source, ptrdiff_t x) const {
    const int pairedTaps = taps.size() / 2 * 2;
    simd::Halves<N> sum{};
    for (int i = 0; i < pairedTaps; i += 2)
      addPair<N>(sum, pixels<N>(source, x, i), pixels<N>(source, x, i + 1), taps.pair(i));
    if (pairedTaps < taps.size())
      addPair<N>(sum, pixels<N>(source, x, pairedTaps), Pack<int16_t, N>{}, static_cast<uint16_t>(taps[pairedTaps]));
    return sum;
  }
  template <int N, class Source>
  static ZVP_INLINE Pack<int16_t, N> pixels(Source source, ptrdiff_t x, int i) {
    return simd::loadWords<N>(source[i] + x);
  }
  template <int N>
  static ZVP_INLINE void addPair(simd::Halves<N>& sum, Pack<int16_t, N> a, Pack<int16_t, N> b, int32_t tapPair) {
    const simd::Halves<N> term = simd::pairProducts<N>(a, b, simd::broadcast<int32_t, N / 2>(tapPair));
    sum = {sum.low + term.low, sum.high + term.high};
  }
  template <int N, class Source>
  ZVP_INLINE Pack<int16_t, N> words(Source source, ptrdiff_t x) const {
    const simd::Halves<N> sum = sums<N>(source, x);
    if (reciprocal == 1.0f) return simd::narrow<N>(sum);
    return simd::narrow<N>({simd::nearest(simd::convert<float>(sum.low) * reciprocal),
                            simd::nearest(simd::convert<float>(sum.high) * reciprocal)});
  }
  template <class Out, class Source>
  Out inner(Source source, ptrdiff_t x) const {
    return roundTo<Out>(scaled(source, x));
  }
  template <class Out, class Source>
  Out end(Source source, ptrdiff_t x) const {
    return truncateTo<Out>(scaled(source, x));
  }
};

// Exact sums that fit 16 bits, as those of bytes under small taps do, divided by a power of two.
template <int K>
struct ShortSums {
  static constexpr int kTaps = K;

  ExactSums<K> exact;
  int shift;

  template <int N, class Source>
  ZVP_INLINE Pack<int16_t, N> term(Source source, ptrdiff_t x, int i) const {
    return simd::loadWords<N>(source[i] + x) * simd::broadcast<int16_t, N>(exact.taps[i]);
  }
  template <int N, class Source>
  ZVP_INLINE Pack<int16_t, N> words(Source source, ptrdiff_t x) const {
    Pack<int16_t, N> sum = term<N>(source, x, 0);
    for (int i = 1; i < exact.taps.size(); ++i) sum = sum + term<N>(source, x, i);
    if (shift == 0) return sum;
    // To nearest, ties to even: just less than a half is added, and the rest of it if the quotient is odd.
    const auto odd = simd::shiftRight(sum, shift) & simd::broadcast<int16_t, N>(1);
    const auto half = static_cast<int16_t>((1 << shift >> 1) - 1);
    return simd::shiftRight(Pack<int16_t, N>(sum + odd + simd::broadcast<int16_t, N>(half)), shift);
  }
  template <class Out, class Source>
  Out inner(Source source, ptrdiff_t x) const {
    return exact.template inner<Out>(source, x);
  }
  template <class Out, class Source>
  Out end(Source source, ptrdiff_t x) const {
    return exact.template end<Out>(source, x);
  }
};

}  // namespace zvp::filter
