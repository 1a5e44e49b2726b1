// What octave reduction and expansion share: the type of their sums, their work memory, and the sweep along a row.
#pragma once

#include <stdint.h>

#include <type_traits>

#include "core/checks.h"
#include "simd/fixed_point.h"
#include "simd/interleave.h"
#include "simd/walk.h"

namespace zvp {

using simd::Pack;

// Sums of bytes, weighted by up to 256 in all, fit 16 bits.
template <class T>
using OctaveSum =
    std::conditional_t<std::is_same_v<T, float>, float, std::conditional_t<std::is_signed_v<T>, int16_t, uint16_t>>;

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

// The packs of a kernel that works on pixels of sums, and how many pixels a pack holds: those of bytes come from
// registers of channel pairs, filled to three quarters; those of floats are not regrouped in registers of eight.
template <class Sum, int channels>
struct OctavePacks {
  static constexpr bool wholePixels = std::is_same_v<Sum, float> && channels == 3;
  static constexpr int fewestLanes = 16 / int{sizeof(Sum)};
  static constexpr int mostLanes = wholePixels && simd::lanes<Sum> == 8 ? fewestLanes : simd::lanes<Sum>;

  template <int N>
  static constexpr int narrower = wholePixels ? fewestLanes : N / 2;
  template <int N>
  static constexpr int outputs = wholePixels     ? N / 3
                                 : channels == 3 ? N / 4
                                                 : N;
};

}  // namespace zvp
