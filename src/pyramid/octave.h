// What octave reduction and expansion share: the type of their sums, their work memory, and the sweep along a row.
#pragma once

#include <stdint.h>

#include <type_traits>

#include "core/checks.h"
#include "simd/cover.h"
#include "simd/fixed_point.h"
#include "simd/interleave.h"

namespace zvp {

using simd::Pack;

// Sums of bytes, weighted by up to 256 in all, fit 16 bits.
template <class T>
using OctaveSum =
    std::conditional_t<std::is_same_v<T, float>, float, std::conditional_t<std::is_signed_v<T>, int16_t, uint16_t>>;

// The narrowest pack of sums that is a register.
template <class Sum>
inline constexpr int kFewestLanes = 16 / int{sizeof(Sum)};

// The work memory of both: rows of 32-bit numbers, padded to 16 bytes, behind an address that is a multiple of 64.
inline constexpr int kOctaveAlignment = 64;

constexpr int64_t octaveRowBytes(int64_t elements) { return (elements * 4 + 15) / 16 * 16; }

// rows of elementsPerPixel sums for each pixel and channel.
inline Status octaveBufferSize(int width, DataType type, int channels, int elementsPerPixel, int rows, int* size) {
  const bool knownType = type == DataType8u || type == DataType8s || type == DataType32f;
  if (Status s = firstFailure(nonNull(size), check(width >= 1, ErrSize),
                              check(channels == 1 || channels == 3, ErrNumChannels), check(knownType, ErrDataType)))
    return s;
  const int64_t bytes = octaveRowBytes(int64_t{width} * channels * elementsPerPixel) * rows + kOctaveAlignment;
  if (bytes > INT32_MAX) return ErrSize;
  *size = static_cast<int>(bytes);
  return StatusOk;
}

// Runs a kernel from output `first` on as far as its registers reach into neither side, and returns the first output
// beyond. The kernel, for N lanes: it makes pixels<N> outputs a step and may spoil some that follow; the last step may
// start at last<N>(); run<N>(x) makes it. x is the first output not made yet; a last step may overlap those before.
template <int N, int kFewest, class Kernel>
ZVP_INLINE int64_t sweep(int64_t first, int64_t x, const Kernel& kernel) {
  constexpr int kPixels = Kernel::template pixels<N>;
  const int64_t last = kernel.template last<N>();
  for (; x <= last; x += kPixels) kernel.template run<N>(x);
  if (last >= first && x < last + kPixels) {
    kernel.template run<N>(last);
    x = last + kPixels;
  }
  if constexpr (N > kFewest) {
    return sweep<N / 2, kFewest>(first, x, kernel);
  } else {
    return x;
  }
}

}  // namespace zvp
