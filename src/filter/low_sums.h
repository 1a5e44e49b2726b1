// Weighted sums that keep 16 bits.
#pragma once

#include "filter/taps.h"
#include "simd/fixed_point.h"

namespace zvp::filter {

using simd::Pack;

// Sums that wrap in 16 bits, times a factor of 14 fractional bits.
template <int K>
struct LowSums {
  static constexpr int kTaps = K;

  static constexpr int kFractionBits = 14;
  static constexpr float kOne = 1 << kFractionBits;

  LowSums(Taps<int16_t, K> kernel, int divisor)
      : taps(kernel), factor(static_cast<int16_t>(kOne / static_cast<float>(divisor))), unscaled(divisor == 1) {}

  template <class Source>
  uint32_t sum(Source source, ptrdiff_t x) const {
    uint32_t s = 0;
    for (int i = 0; i < taps.size(); ++i) s += static_cast<uint32_t>(product(taps[i], source[i] + x));
    return s;
  }
  template <class Out, class Source>
  Out inner(Source source, ptrdiff_t x) const {
    const auto wrapped = static_cast<int16_t>(sum(source, x));
    if (unscaled) return wrapped;
    const int32_t scaled = (wrapped * factor) >> kFractionBits;
    return static_cast<Out>(scaled > INT16_MAX ? INT16_MAX : scaled);
  }
  template <int N, class Source>
  ZVP_INLINE Pack<uint16_t, N> term(Source source, ptrdiff_t x, int i) const {
    using Words = Pack<uint16_t, N>;
    return Words(simd::loadWords<N>(source[i] + x)) * Words(simd::broadcast<int16_t, N>(taps[i]));
  }
  template <int N, class Source>
  ZVP_INLINE Pack<int16_t, N> words(Source source, ptrdiff_t x) const {
    Pack<uint16_t, N> s = term<N>(source, x, 0);
    for (int i = 1; i < taps.size(); ++i) s = s + term<N>(source, x, i);
    const auto wrapped = Pack<int16_t, N>(s);
    if (unscaled) return wrapped;
    const simd::Halves<N> scaled = simd::products<N>(wrapped, simd::broadcast<int16_t, N>(factor));
    return simd::narrow<N>({scaled.low >> kFractionBits, scaled.high >> kFractionBits});
  }
  // The low 16 bits of the shifted product are those of the product modulo 2^32.
  template <class Out, class Source>
  Out end(Source source, ptrdiff_t x) const {
    return static_cast<Out>((sum(source, x) * static_cast<uint32_t>(int32_t{factor})) >> kFractionBits);
  }

  Taps<int16_t, K> taps;
  int16_t factor;
  bool unscaled;
};

}  // namespace zvp::filter
