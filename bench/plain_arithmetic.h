// The arithmetic as a reader would write it first.
#pragma once

#include <cmath>
#include <cstdlib>

#include "image.h"

namespace bench::ZVP_LOOPS::plain {

inline float absoluteDifference(float a, float b) { return std::fabs(a - b); }
inline std::uint8_t absoluteDifference(std::uint8_t a, std::uint8_t b) { return std::uint8_t(std::abs(a - b)); }
inline std::uint16_t absoluteDifference(std::uint16_t a, std::uint16_t b) { return std::uint16_t(std::abs(a - b)); }

template <class T>
void absDiff(const Image<T>& a, const Image<T>& b, const Image<T>& dst) {
  const int width = dst.width;  // the compiler cannot know that no pixel lies over it
  for (int y = 0; y < dst.height; ++y) {
    const T *rowA = a.row(y), *rowB = b.row(y);
    T* out = dst.row(y);
    for (int x = 0; x < width; ++x) out[x] = absoluteDifference(rowA[x], rowB[x]);
  }
}

template <class T>
void absDiffC(const Image<T>& src, const Image<T>& dst, T value) {
  const int width = dst.width;  // the compiler cannot know that no pixel lies over it
  for (int y = 0; y < dst.height; ++y) {
    const T* row = src.row(y);
    T* out = dst.row(y);
    for (int x = 0; x < width; ++x) out[x] = absoluteDifference(row[x], value);
  }
}

}  // namespace bench::ZVP_LOOPS::plain
