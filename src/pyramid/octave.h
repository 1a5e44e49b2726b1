// What octave reduction and expansion share: the type of their sums, the sweep along a row, work memory and the call.
#pragma once

#include <stdint.h>

#include <type_traits>

#include "core/carver.h"
#include "core/query.h"
#include "core/rows.h"
#include "filter/border.h"
#include "pyramid/row_ring.h"
#include "simd/fixed_point.h"
#include "simd/interleave.h"
#include "simd/walk.h"
#include "zvpcv/pyramid.h"

namespace zvp::pyramid {

using simd::Pack;

// Sums of bytes, weighted by up to 256 in all, fit 16 bits.
template <class T>
using OctaveSum =
    std::conditional_t<std::is_same_v<T, float>, float, std::conditional_t<std::is_signed_v<T>, int16_t, uint16_t>>;

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

// The work memory: rows of so many sums for each pixel and channel. A sum has room for 32 bits, a row for whole blocks of
// 16 bytes, and the first row is on a line of the cache.
template <int rows, int sumsPerPixel>
struct OctaveMemory {
  static constexpr int kLine = 64, kBlock = 16, kSumRoom = 4;

  // Of so many elements in a row of the source, in 64 bits or sticking.
  template <class N>
  static constexpr N rowBytes(N elements) {
    return roundUp(elements * (sumsPerPixel * kSumRoom), kBlock);
  }
  static constexpr Bytes bytes(Bytes elements) { return rowBytes(elements) * rows + kLine; }

  template <class Sum, int ringRows>
  static FixedRing<Sum, ringRows> ring(int64_t elements, uint8_t* buffer) {
    const int64_t stride = rowBytes(elements) / int64_t{sizeof(Sum)};
    return {Carver(buffer, bytes(elements)).take<Sum>(Bytes(stride) * rows, kLine), stride};
  }

  static Status reportBytes(int width, DataType type, int channels, int* size) {
    const bool knownType = type == DataType8u || type == DataType8s || type == DataType32f;
    return reportSize(
        firstFailure(nonNull(size), check(width >= 1, ErrSize), check(channels == 1 || channels == 3, ErrNumChannels),
                     check(knownType, ErrDataType)),
        bytes(Bytes(width) * channels), size);
  }
};

// Checks, and makes the result from the top down. Octave<channels, T> says how large it is, and makes a row.
template <template <int, class> class Octave, int channels, class T>
Status makeOctave(Rows<const T> src, Rows<T> dst, RoiSize roi, uint8_t* buffer) {
  const auto resultSize = Octave<channels, T>::resultSize;
  if (Status s = firstFailure(nonNull(src, dst, buffer), nonEmpty(roi), rowsFit(int64_t{roi.width} * channels, src),
                              rowsFit(resultSize(roi.width) * channels, dst), wholeElements(src, dst)))
    return s;
  Octave<channels, T> octave(src, roi, buffer);
  for (int64_t y = 0; y < resultSize(roi.height); ++y) octave.makeRow(y, dst.row(y));
  return StatusOk;
}

}  // namespace zvp::pyramid

#define ZVP_OCTAVE(NAME, OCTAVE, T, CHANNELS)                                                                   \
  Status NAME(const T* pSrc, int srcStep, T* pDst, int dstStep, RoiSize srcRoi, uint8_t* pBuffer) {             \
    return zvp::pyramid::makeOctave<zvp::pyramid::OCTAVE, CHANNELS>(zvp::Rows{pSrc, srcStep},                   \
                                                                    zvp::Rows{pDst, dstStep}, srcRoi, pBuffer); \
  }
