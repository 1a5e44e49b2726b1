// Weighted sums of the pixels under a one-dimensional kernel, and their way to the output type.
//
// Sources say where the pixels under tap i are: Along a row, or Across rows. An arithmetic has
//   inner<Out>(source, x)   the output x whose kernel meets no end of a row
//   end<Out>(source, x)     the output x of the ends: a row filter's outputs next to the border, a column filter's tail
#pragma once

#include <limits>
#include <type_traits>

#include "simd/simd.h"

namespace zvp {

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

// K taps as a value that stays in registers, or any number of them for K = 0.
template <class T, int K>
struct Taps {
  Taps(const T* kernel, int) {
    for (int i = 0; i < K; ++i) values[i] = simd::load<T>(kernel + i);
  }
  ZVP_INLINE T operator[](ptrdiff_t i) const { return values[i]; }
  static constexpr int size() { return K; }

  T values[K];
};
template <class T>
struct Taps<T, 0> {
  Taps(const T* kernel, int kernelSize) : values(kernel), count(kernelSize) {}
  ZVP_INLINE T operator[](ptrdiff_t i) const { return simd::load<T>(values + i); }
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
  float scaled(Source source, ptrdiff_t x) const {
    int32_t sum = 0;
    for (int i = 0; i < taps.size(); ++i) sum += product(taps[i], source[i] + x);
    return static_cast<float>(sum) * reciprocal;
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
  float sum(Source source, ptrdiff_t x) const {
    using T = std::remove_cvref_t<decltype(*source[0])>;
    const auto term = [&](int i) { return tap(i) * static_cast<float>(simd::load<T>(source[i] + x)); };
    float s = term(0);
    for (int i = 1; i < taps.size(); ++i) s = s + term(i);
    return s;
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
  // The low 16 bits of the shifted product are those of the product modulo 2^32.
  template <class Out, class Source>
  Out end(Source source, ptrdiff_t x) const {
    return static_cast<Out>((sum(source, x) * static_cast<uint32_t>(int32_t{factor})) >> kFractionBits);
  }

  Taps<int16_t, K> taps;
  int16_t factor;
  bool unscaled;
};

// Whether the exact sums apply to a kernel.
inline bool sumsAreExact(const int16_t* kernel, int kernelSize) {
  constexpr int64_t kLimit = 65535;
  int64_t sum = 0;
  for (int i = 0; i < kernelSize; ++i) {
    const int tap = simd::load<int16_t>(kernel + i);
    sum += tap < 0 ? -tap : tap;
  }
  return sum < kLimit;
}

// Calls body with the arithmetic of an integer kernel of K taps, or of any number for K = 0.
template <int K, class Body>
Status withIntegerSums(const int16_t* kernel, int kernelSize, int divisor, Body body) {
  const Taps<int16_t, K> taps(kernel, kernelSize);
  const float reciprocal = 1.0f / static_cast<float>(divisor);
  return sumsAreExact(kernel, kernelSize) ? body(ExactSums<K>{taps, reciprocal})
                                          : body(SingleSums<int16_t, K>{taps, reciprocal});
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
      return body(std::integral_constant<int, 3>{});
    case 5:
      return body(std::integral_constant<int, 5>{});
    default:
      return body(std::integral_constant<int, 0>{});
  }
}

}  // namespace zvp
