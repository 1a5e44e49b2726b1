// Where the pixels under the taps of a one-dimensional kernel are, and the taps.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "simd/simd.h"

namespace zvp::filter {

// Sources: source[i] + x is the address of the pixel that tap i meets for output x. Along a row:
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
    for (int i = 0; i < K; ++i) rows[i] = simd::load<const T*>(source + i);
  }
  ZVP_INLINE const T* operator[](ptrdiff_t i) const { return rows[i]; }

  const T* rows[K];
};
template <class T>
struct Across<T, 0> {
  explicit Across(const T* const* source) : rows(source) {}
  ZVP_INLINE const T* operator[](ptrdiff_t i) const { return simd::load<const T*>(rows + i); }

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
  ZVP_INLINE int32_t pair(ptrdiff_t i) const {
    return static_cast<int32_t>(static_cast<uint16_t>(values[i]) | static_cast<uint32_t>(values[i + 1]) << 16);
  }
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

}  // namespace zvp::filter
