// What the row and the column pipeline share: which arithmetic a kernel takes, and the outputs of one row.
#pragma once

#include <bit>
#include <concepts>

#include "filter/exact_sums.h"
#include "filter/low_sums.h"
#include "filter/single_sums.h"
#include "simd/walk.h"
#include "zvpcv/types.h"

namespace zvp::filter {

// What an arithmetic has: output x whose kernel meets no end of a row, in single elements and in packs of 16-bit words
// or of floats; and output x of the ends: a row filter's outputs next to the border, a column filter's tail.
template <class A, class Source>
concept IntegerSums = requires(const A& sums, Source source, ptrdiff_t x) {
  { sums.template inner<int16_t>(source, x) } -> std::same_as<int16_t>;
  { sums.template end<int16_t>(source, x) } -> std::same_as<int16_t>;
  { sums.template words<8>(source, x) } -> std::same_as<simd::Pack<int16_t, 8>>;
};
template <class A, class Source>
concept FloatSums = requires(const A& sums, Source source, ptrdiff_t x, float* out) {
  { sums.template inner<float>(source, x) } -> std::same_as<float>;
  { sums.template end<float>(source, x) } -> std::same_as<float>;
  sums.template storeFloats<4, 1>(source, x, out);
};

// Inner outputs 0 .. n - 1; 16-bit words are what integer outputs are computed in.
template <class Sums, class Source, class Out>
requires IntegerSums<Sums, Source> && std::is_integral_v<Out> ZVP_INLINE void innerOutputs(const Sums sums,
                                                                                           const Source source,
                                                                                           ptrdiff_t n, Out* out) {
  simd::coverRow<int16_t>(
      n, [=]<int N>(ptrdiff_t x) __attribute__((always_inline)) {
        if constexpr (N == 1) {
          simd::store(out + x, sums.template inner<Out>(source, x));
        } else {
          simd::store(out + x, simd::narrow<Out, N>(sums.template words<N>(source, x)));
        }
      });
}
template <class Sums, class Source>
requires FloatSums<Sums, Source> ZVP_INLINE void innerOutputs(const Sums& sums, const Source& source, ptrdiff_t n,
                                                              float* out) {
  constexpr int kPacksAtOnce = 4;
  simd::coverRow<float, kPacksAtOnce>(
      n, [=]<int N, int packs = 1>(ptrdiff_t x) __attribute__((always_inline)) {
        if constexpr (N == 1) {
          simd::store(out + x, sums.template inner<float>(source, x));
        } else {
          sums.template storeFloats<N, packs>(source, x, out);
        }
      });
}

template <class Sums, class Source, class Out>
[[gnu::noinline]] void endOutputs(const Sums& sums, Source source, ptrdiff_t begin, ptrdiff_t end, Out* out) {
  for (ptrdiff_t x = begin; x < end; ++x) simd::store(out + x, sums.template end<Out>(source, x));
}

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
  const float reciprocal = 1.0f / static_cast<float>(divisor);
  const int64_t absoluteTaps = absoluteSum(kernel, kernelSize);
  // Rare: one copy of the code is enough.
  if (absoluteTaps >= kExactBelow)
    return body(SingleSums<int16_t, 0>{Taps<int16_t, 0>(kernel, kernelSize), reciprocal});
  const ExactSums<K> exact{Taps<int16_t, K>(kernel, kernelSize), reciprocal};
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

// Calls body with the number of taps as a constant where that has a path of its own, else with 0.
template <class Body>
Status withKernelSize(int kernelSize, Body body) {
  switch (kernelSize) {
    case 3:
      return body.template operator()<3>();
    case 5:
      return body.template operator()<5>();
    default:
      return body.template operator()<0>();
  }
}

}  // namespace zvp::filter
