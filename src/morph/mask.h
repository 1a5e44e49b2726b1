// Structuring elements: their runs of members, and what shape they have.
#pragma once

#include <stdint.h>

#include "zvpcv/types.h"

namespace zvp::morph {

// Calls f(row, first column, length) for every run of members, in row-major order, until f returns false.
template <class F>
void forEachRun(const uint8_t* mask, RoiSize size, F f) {
  for (int y = 0; y < size.height; ++y, mask += size.width) {
    for (int x = 0; x < size.width; ++x) {
      if (mask[x] == 0) continue;
      const int first = x;
      while (x < size.width && mask[x] != 0) ++x;
      if (!f(y, first, x - first)) return;
    }
  }
}

enum MaskMode : int32_t { kGeneralMask = 0, kRectangle = 1, kRowSegments = 2, kEmptyMask = 3 };

struct MaskShape {
  MaskMode mode;
  int firstRow, memberRows;        // rows that hold a member
  int firstColumn, boundingWidth;  // of all members
};

MaskShape analyseMask(const uint8_t* mask, RoiSize size, Point anchor);

}  // namespace zvp::morph
