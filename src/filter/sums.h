// Weighted sums of the pixels under a one-dimensional kernel, and their way to the output type.
//
// Sources say where the pixels under tap i are: Along a row, or Across rows. An arithmetic has
//   inner<Out>(source, x)   the output x whose kernel meets no end of a row
//   end<Out>(source, x)     the output x of the ends: a row filter's outputs next to the border, a column filter's tail
//   words<N>(source, x)     integer kernels: the inner outputs x .. x + N - 1, saturated to 16 bits
//   storeFloats<N, packs>(source, x, out)
//                           float kernels: stores the outputs x .. x + packs x N - 1
#pragma once

#include <limits>
#include <type_traits>

#include "simd/fixed_point.h"
#include "simd/simd.h"

namespace zvp {

using simd::Pack;

template <class T>
struct Along {
  const T* first;  // tap 0 of output 0
  ptrdiff_t stride;

  ZVP_INLINE const T* operator[](ptrdiff_t i) const { return first + i * stride; }
};

// K rows, or any number of them for K = 0.
template <class T, int K>
struct Across {
  explicit Across(const T* const* source) {
    for (int i = 0; i < K; ++i) rows[i] = source[i];
  }
  ZVP_INLINE const T* operator[](ptrdiff_t i) const { return rows[i]; }

  const T* rows[K];
};
template <class T>
struct Across<T, 0> {
  explicit Across(const T* const* source) : rows(source) {}
  ZVP_INLINE const T* operator[](ptrdiff_t i) const { return rows[i]; }

  const T* const* rows;
};

// K taps as a value that stays in registers, or any number of them for K = 0. A pair is the 16-bit taps i and i + 1 as
// one number, for the instruction that adds two products.
template <class T, int K>
struct Taps {
  Taps(const T* kernel, int) {
    for (int i = 0; i < K; ++i) values[i] = simd::load<T>(kernel + i);
  }
  ZVP_INLINE T operator[](ptrdiff_t i) const { return values[i]; }
  ZVP_INLINE int32_t pair(ptrdiff_t i) const { return simd::load<int32_t>(values + i); }
  static constexpr int size() { return K; }

  T values[K];
};
template <class T>
struct Taps<T, 0> {
  Taps(const T* kernel, int kernelSize) : values(kernel), count(kernelSize) {}
  ZVP_INLINE T operator[](ptrdiff_t i) const { return simd::load<T>(values + i); }
  ZVP_INLINE int32_t pair(ptrdiff_t i) const { return simd::load<int32_t>(values + i); }
  int size() const { return count; }

  const T* values;
  int count;
};

template <class T>
ZVP_INLINE int32_t product(int16_t tap, const T* pixel) {
  return tap * int32_t{simd::load<T>(pixel)};
}

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

// Exact 32-bit sums, times the reciprocal of the divisor. Absolute taps that add up to less than 65535 keep the sum of
// 16-bit pixels in 32 bits.
template <int K>
struct ExactSums {
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

// Single-precision sums in the order of the taps, every tap times `scale`.
template <class Tap, int K>
struct SingleSums {
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

// Sums that wrap in 16 bits, times a factor of 14 fractional bits.
template <int K>
struct LowSums {
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

inline int64_t absoluteSum(const int16_t* kernel, int kernelSize) {
  int64_t sum = 0;
  for (int i = 0; i < kernelSize; ++i) {
    const int tap = simd::load<int16_t>(kernel + i);
    sum += tap < 0 ? -tap : tap;
  }
  return sum;
}

// Whether sums of bytes and what rounding adds to them fit 16 bits, and the divisor is a power of two.
inline bool sumsAreShort(int64_t absoluteTaps, int divisor) {
  const bool powerOfTwo = divisor > 0 && std::has_single_bit(static_cast<uint32_t>(divisor));
  return powerOfTwo && absoluteTaps * UINT8_MAX + divisor / 2 <= INT16_MAX;
}

// Calls body with the arithmetic of an integer kernel of K taps, or of any number for K = 0, on pixels of type T.
template <class T, int K, class Body>
Status withIntegerSums(const int16_t* kernel, int kernelSize, int divisor, Body body) {
  constexpr int64_t kExactBelow = 65535;
  const Taps<int16_t, K> taps(kernel, kernelSize);
  const float reciprocal = 1.0f / static_cast<float>(divisor);
  const int64_t absoluteTaps = absoluteSum(kernel, kernelSize);
  if (absoluteTaps >= kExactBelow) return body(SingleSums<int16_t, K>{taps, reciprocal});
  const ExactSums<K> exact{taps, reciprocal};
  if constexpr (std::is_same_v<T, uint8_t>) {
    if (sumsAreShort(absoluteTaps, divisor))
      return body(ShortSums<K>{exact, std::countr_zero(static_cast<uint32_t>(divisor))});
  }
  return body(exact);
}
template <int K, class Body>
Status withLowSums(const int16_t* kernel, int kernelSize, int divisor, Body body) {
  return body(LowSums<K>(Taps<int16_t, K>(kernel, kernelSize), divisor));
}
template <int K, class Body>
Status withFloatSums(const float* kernel, int kernelSize, Body body) {
  return body(SingleSums<float, K>{Taps<float, K>(kernel, kernelSize), 1.0f});
}

// The inner outputs x .. x + packs x N - 1.
template <int N, int packs, class Arithmetic, class Source, class Out>
ZVP_INLINE void storeInner(const Arithmetic& arithmetic, const Source& source, ptrdiff_t x, Out* out) {
  if constexpr (std::is_same_v<Out, float>) {
    arithmetic.template storeFloats<N, packs>(source, x, out);
  } else {
    static_assert(packs == 1);
    simd::store(out + x, simd::narrow<Out, N>(arithmetic.template words<N>(source, x)));
  }
}

// Inner outputs begin .. end - 1, in packs of N or, if they are fewer, in smaller ones; the last pack overlaps the one
// before it.
template <int N, class Arithmetic, class Source, class Out>
ZVP_INLINE void innerOutputsBy(Arithmetic arithmetic, Source source, ptrdiff_t begin, ptrdiff_t end, Out* out) {
  constexpr bool kFloats = std::is_same_v<Out, float>;
  constexpr int kSmallest = kFloats ? 4 : 8, kPacks = kFloats ? 4 : 1;
  if (end - begin >= N) {
    ptrdiff_t x = begin;
    for (; x <= end - kPacks * N; x += kPacks * N) storeInner<N, kPacks>(arithmetic, source, x, out);
    for (; x <= end - N; x += N) storeInner<N, 1>(arithmetic, source, x, out);
    if (x < end) storeInner<N, 1>(arithmetic, source, end - N, out);
  } else if constexpr (N > kSmallest) {
    innerOutputsBy<kSmallest>(arithmetic, source, begin, end, out);
  } else {
    for (ptrdiff_t x = begin; x < end; ++x) simd::store(out + x, arithmetic.template inner<Out>(source, x));
  }
}

template <class Arithmetic, class Source, class Out>
ZVP_INLINE void innerOutputs(const Arithmetic& arithmetic, Source source, ptrdiff_t begin, ptrdiff_t end, Out* out) {
  constexpr int N = std::is_same_v<Out, float> ? simd::lanes<float> : simd::lanes<int16_t>;
  innerOutputsBy<N>(arithmetic, source, begin, end, out);
}

template <class Arithmetic, class Source, class Out>
[[gnu::noinline]] void endOutputs(const Arithmetic& arithmetic, Source source, ptrdiff_t begin, ptrdiff_t end,
                                  Out* out) {
  for (ptrdiff_t x = begin; x < end; ++x) simd::store(out + x, arithmetic.template end<Out>(source, x));
}

// Calls body with the number of taps as a constant where that has a path of its own, else with 0.
template <class Body>
Status withKernelSize(int kernelSize, Body body) {
  switch (kernelSize) {
    case 3:
      return body(std::integral_constant<int, 3>{});
    case 5:
      return body(std::integral_constant<int, 5>{});
    default:
      return body(std::integral_constant<int, 0>{});
  }
}

}  // namespace zvp
