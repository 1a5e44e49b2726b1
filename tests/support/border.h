// A plain model of borders.
#pragma once

#include <stdint.h>

#include "zvpcv/types.h"

namespace zvp::test {

inline constexpr int64_t kNoPixel = INT64_MIN;  // the constant stands for it

// The coordinate that stands for x, written as a walk: one step of the rule at a time until inside.
inline int64_t walkedInside(int64_t x, int64_t extent, BorderType mode) {
  while (x < 0 || x >= extent) {
    switch (mode) {
      case BorderReplicate:
        return x < 0 ? 0 : extent - 1;
      case BorderWrap:
        x += x < 0 ? extent : -extent;
        break;
      case BorderReflect:
        if (extent == 1) return 0;
        x = x < 0 ? -x : 2 * (extent - 1) - x;
        break;
      case BorderReflectEdge:
        x = x < 0 ? -1 - x : 2 * extent - 1 - x;
        break;
      default:
        return kNoPixel;
    }
  }
  return x;
}

inline bool isInMemory(BorderType type, BorderType side) { return (type & 15) == BorderInMemory || (type & side) != 0; }

// Both axes: calls pixel(x, y) with the coordinates that are read, or gives the constant.
template <class Pixel, class T>
T borderedPixel(int64_t x, int64_t y, RoiSize roi, BorderType type, T constant, Pixel pixel) {
  const auto resolved = [type](int64_t at, int64_t extent, BorderType before, BorderType behind) {
    const bool read = at < 0 ? isInMemory(type, before) : at < extent || isInMemory(type, behind);
    return read ? at : walkedInside(at, extent, type & 15);
  };
  const int64_t column = resolved(x, roi.width, BorderLeftInMemory, BorderRightInMemory);
  const int64_t row = resolved(y, roi.height, BorderTopInMemory, BorderBottomInMemory);
  return column == kNoPixel || row == kNoPixel ? constant : pixel(column, row);
}

}  // namespace zvp::test
