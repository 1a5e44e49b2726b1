// Filters with a small square window that are an operator along y followed by one along x: the first makes one row of
// work memory, with the columns beside the region that the second one reads, and the second makes a row of the result.
// Nothing is kept from row to row.
#pragma once

#include "core/carver.h"
#include "core/rows.h"
#include "core/runs.h"
#include "filter/border.h"
#include "simd/walk.h"

namespace zvp::filter {

// An operator is applied to what at(i) gives for the offsets i = -radius .. radius, packs or single elements alike.
template <int radius>
struct Smooth {
  template <class At>
  static ZVP_INLINE auto apply(At at) {
    using V = decltype(at(0));
    if constexpr (radius == 1) {
      return V(at(-1) + at(1) + at(0) + at(0));
    } else {
      return V(at(-2) + at(2) + V((at(-1) + at(1)) * 4) + V(at(0) * 6));
    }
  }
};

template <int radius>
struct FirstDerivative {
  template <class At>
  static ZVP_INLINE auto apply(At at) {
    using V = decltype(at(0));
    const V inner = V(at(1) - at(-1));
    if constexpr (radius == 1) {
      return inner;
    } else {
      return V(at(2) - at(-2) + inner + inner);
    }
  }
};

// The work memory for regions of that width: a row of the border constant, and the operator's results in a row of the
// type Sum, both with the columns beside the region.
template <int radius, class S, class Sum>
struct WindowMemory {
  WindowMemory(int width, Carver memory) : WindowMemory(int64_t{width} + 2 * radius, &memory) {
    constants += radius;  // not while measuring, when there is no memory to point into
    sums += radius;
  }

  static Bytes size(int width) {
    Carver measure = Carver::measuring();
    WindowMemory(int64_t{width} + 2 * radius, &measure);
    return measure.size();
  }

  S* constants;  // column 0 of the region
  Sum* sums;

 private:
  static constexpr size_t kLine = 64;

  WindowMemory(int64_t columns, Carver* memory)
      : constants(memory->take<S>(columns, sizeof(S))), sums(memory->take<Sum>(columns, kLine)) {}
};

// The rows that the operator along y meets.
template <int radius, class S>
struct WindowRows {
  const S* rows[2 * radius + 1];

  WindowRows(Rows<const S> src, int64_t height, int64_t y, AxisBorder border, const S* constants) {
    for (int i = -radius; i <= radius; ++i) {
      const int64_t from = sourceCoordinate(y + i, height, border);
      rows[i + radius] = from == kNoSource ? constants : src.row(from);
    }
  }
};

// Along y for all columns from x on that are memory, n of them.
template <class Along, int radius, class S, class Sum>
void sumColumns(const WindowRows<radius, S>& window, int64_t x, int64_t n, Sum* sums) {
  simd::coverRow<Sum>(
      n, [=]<int N>(int64_t i) __attribute__((always_inline)) {
        simd::store(sums + x + i,
                    Along::apply([&](int k) { return simd::loadAs<Sum, N>(window.rows[k + radius] + x + i); }));
      });
}

// DownY along y, then AlongX along x. The sums of both fit Sum, which is the type of the result too.
template <class DownY, class AlongX, int radius, class S, class Sum>
void filterWindows(Rows<const S> src, Rows<Sum> dst, RoiSize roi, BorderType type, S constant, uint8_t* buffer) {
  const WindowMemory<radius, S, Sum> memory(roi.width, Carver(buffer, WindowMemory<radius, S, Sum>::size(roi.width)));
  const AxisBorder across = horizontalBorder(type), down = verticalBorder(type);
  if (borderMode(type) == BorderConstant) fillRun(memory.constants - radius, roi.width + 2 * radius, constant);
  const int64_t first = across.beforeInMemory ? -radius : 0;
  const int64_t end = int64_t{roi.width} + (across.afterInMemory ? radius : 0);
  const Sum beside = DownY::apply([&](int) { return static_cast<Sum>(constant); });
  Sum* const sums = memory.sums;
  for (int y = 0; y < roi.height; ++y) {
    sumColumns<DownY>(WindowRows<radius, S>(src, roi.height, y, down, memory.constants), first, end - first, sums);
    for (int64_t x = -radius; x < first; ++x) copyBorderPixel<1>(sums, x, roi.width, across, &beside, sums + x);
    for (int64_t x = end; x < int64_t{roi.width} + radius; ++x)
      copyBorderPixel<1>(sums, x, roi.width, across, &beside, sums + x);
    Sum* const out = dst.row(y);
    simd::coverRow<Sum>(
        roi.width, [=]<int N>(int x) __attribute__((always_inline)) {
          simd::store(out + x, AlongX::apply([&](int k) { return simd::load<simd::Pack<Sum, N>>(sums + x + k); }));
        });
  }
}

}  // namespace zvp::filter
