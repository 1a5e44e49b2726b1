// Scharr derivatives of an image, row by row.
#pragma once

#include "core/bytes.h"
#include "core/rows.h"
#include "filter/border.h"
#include "simd/walk.h"

namespace zvp::filter {

// The filters' work memory: a row of the border constant, columns -1 .. width.
constexpr Bytes scharrBufferSize(RoiSize roi) { return (Bytes(roi.width) + 2) * int64_t{sizeof(float)}; }

enum class Derivative { kAlongX, kAlongY };

// Three rows of pixels about an output row.
template <class S>
struct ThreeRows {
  const S *above, *middle, *below;
};

// The columns that stand for -1 and for the width; for kNoSource the constant does.
struct RowEnds {
  int64_t left, right;
  float constant;
};

// Smoothed across the derivative with 3, 10, 3, first to last.
template <class V>
ZVP_INLINE V scharrSum(V first, V second, V third) {
  return first * 3.0f + second * 10.0f + third * 3.0f;
}

// The derivative where the three columns of neighbours are left, x and right; pixel(row, column) reads one.
template <Derivative kind, class S, class Pixel>
ZVP_INLINE auto scharrAt(const ThreeRows<S>& rows, int64_t left, int64_t x, int64_t right, Pixel pixel) {
  if constexpr (kind == Derivative::kAlongX) {
    const auto difference = [&](const S* row) { return pixel(row, right) - pixel(row, left); };
    return scharrSum(difference(rows.above), difference(rows.middle), difference(rows.below));
  } else {
    const auto difference = [&](int64_t column) { return pixel(rows.below, column) - pixel(rows.above, column); };
    return scharrSum(difference(left), difference(x), difference(right));
  }
}

// One row, times `scale`.
template <Derivative kind, class S>
void scharrRow(const ThreeRows<S>& rows, const RowEnds& ends, int width, float scale, float* out) {
  const auto single = [&ends](const S* row, int64_t x) {
    return x == kNoSource ? ends.constant : static_cast<float>(simd::load<S>(row + x));
  };
  const auto atEnd = [&](int64_t before, int64_t x, int64_t behind) {
    simd::store(out + x, scharrAt<kind>(rows, before, x, behind, single) * scale);
  };
  const int64_t last = int64_t{width} - 1;
  atEnd(ends.left, 0, last == 0 ? ends.right : 1);
  if (last == 0) return;
  simd::coverRow<float>(width - 2, [=]<int N>(int i) {
    const auto pack = [](const S* row, int64_t x) { return simd::loadAs<float, N>(row + x); };
    simd::store(out + i + 1, scharrAt<kind>(rows, i, int64_t{i} + 1, int64_t{i} + 2, pack) * scale);
  });
  atEnd(last - 1, last, ends.right);
}

}  // namespace zvp::filter
