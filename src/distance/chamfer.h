// What both passes of a chamfer transform share. A pass visits each pixel after its upper and left neighbours; the
// backward pass is the same on the image turned by 180 degrees.
#pragma once

#include <limits>

#include "core/rows.h"
#include "simd/simd.h"

namespace zvp::distance {

enum class Kernel { k3x3, k5x5 };
enum class Pass { kForward, kBackward };

template <class T>
inline constexpr T kFarthest = std::numeric_limits<T>::max();

template <class T>
struct Weights {
  T a, b, c;  // along an axis, diagonal, knight's move
};

// The image as a pass sees it: rows from first to last visited, null outside the region.
template <Pass pass, class T>
struct PassRows {
  Rows<T> rows;
  int height;

  T* row(int64_t y) const {
    if (y < 0 || y >= height) return nullptr;
    return rows.row(pass == Pass::kForward ? y : height - 1 - y);
  }
};

}  // namespace zvp::distance
