// Windows of bilinear samples: where they lie, and how they are made from the source and its edges.
#pragma once

#include <math.h>

#include "geometry/row_walk.h"

namespace zvp::geometry {

// The columns and rows of a source that exist: 0 to these.
struct LastPixel {
  int64_t column, row;
};

// A window from a column and row on that may lie anywhere; columns and rows outside the source are its nearest ones.
template <class Weights, class S, class D>
void sampleFrom(int64_t column, int64_t row, const Weights& weights, Rows<const S> src, LastPixel last, Rows<D> dst,
                RoiSize size) {
  const auto before = static_cast<int>(std::clamp<int64_t>(-column, 0, size.width));
  const auto behind = static_cast<int>(std::clamp<int64_t>(last.column - column, before, size.width));
  for (int64_t y = 0; y < size.height; y += kRowsTogether) {
    const auto rows = static_cast<int>(std::min<int64_t>(kRowsTogether, size.height - y));
    const auto walkFrom = [&](int64_t x) {
      RowWalk<S> walk(src, row + y, last.row);
      walk.p += x;
      return walk;
    };
    D* out = dst.row(y);
    if (before > 0) sampleEdge(weights, walkFrom(0), out, dst.step, rows, before);
    if (before < behind)
      sampleColumns(weights, walkFrom(column + before), out + before, dst.step, rows, behind - before);
    if (behind < size.width)
      sampleEdge(weights, walkFrom(last.column), out + behind, dst.step, rows, size.width - behind);
  }
}

// A window that reads size.width + 1 columns and size.height + 1 rows from src on.
template <class Weights, class S, class D>
void sampleInside(const Weights& weights, Rows<const S> src, Rows<D> dst, RoiSize size) {
  sampleFrom(0, 0, weights, src, {size.width, size.height}, dst, size);
}

// The place of a window along one axis: the sample index of its first element and the distance behind it.
struct WindowAxis {
  int64_t first;
  float fraction;

  // A window of `length` samples about a centre. Windows too far away for 32-bit numbers, and those about no number,
  // lie wholly before the first sample or, the latter too, behind the last one.
  WindowAxis(float centre, int length, int extent) {
    constexpr float kIndexLimit = 0x1p31f, kAllWhole = 0x1p24f;
    const auto n = static_cast<float>(length);
    const float corner = centre - 0.5f * static_cast<float>(length - 1), shifted = corner + n;
    if (!(fabsf(shifted) < kIndexLimit)) {
      first = shifted < 0.0f ? -int64_t{length} : extent;
      fraction = 0.0f;
      return;
    }
    first = static_cast<int64_t>(shifted) - length;
    fraction = fabsf(shifted) < kAllWhole ? corner - static_cast<float>(first) : 0.0f;
  }

  bool isInside(int length, int extent) const { return first >= 0 && first + length < extent; }
  bool overlaps(int length, int extent) const { return first + length > 0 && first < extent; }
};

struct SampledRange {
  int first, last;
};

// The destination columns (rows) behind the source's first one and with both neighbours inside the source.
inline SampledRange sampledRange(const WindowAxis& axis, int length, int extent) {
  if (axis.first >= extent) return {0, -1};
  return {static_cast<int>(std::clamp<int64_t>(-axis.first, 0, length)),
          static_cast<int>(std::min<int64_t>(length - 1, extent - 2 - axis.first))};
}

// A window anywhere: samples outside the source are its nearest pixels.
template <class Weights, class S, class D>
void sampleWindow(const Weights& weights, Rows<const S> src, RoiSize srcSize, const WindowAxis& x, const WindowAxis& y,
                  Rows<D> dst, RoiSize size) {
  sampleFrom(x.first, y.first, weights, src, {int64_t{srcSize.width} - 1, int64_t{srcSize.height} - 1}, dst, size);
}

}  // namespace zvp::geometry
