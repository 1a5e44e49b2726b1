// Bilinear samples in columns: down the rows of a source, each of which serves the samples above and below it.
#pragma once

#include "core/rows.h"
#include "filter/border.h"
#include "geometry/weights.h"
#include "simd/walk.h"

namespace zvp::geometry {

template <class T>
ZVP_INLINE T* movedBy(T* p, ptrdiff_t bytes) {
  return reinterpret_cast<T*>(reinterpret_cast<uintptr_t>(p) + static_cast<uintptr_t>(bytes));
}

// Rows of a source from top to bottom, the first and the last one being repeated beyond them.
template <class S>
struct RowWalk {
  const S* p;
  int64_t y, last;
  ptrdiff_t step;

  RowWalk(Rows<const S> src, int64_t first, int64_t lastRow)
      : p(src.row(modeCoordinate(first, lastRow + 1, BorderReplicate))), y(first), last(lastRow), step(src.step) {}

  ZVP_INLINE void next() {
    p = movedBy(p, static_cast<uint64_t>(y) < static_cast<uint64_t>(last) ? step : 0);
    ++y;
  }
};

// n samples in each row of dst, down first; n + 1 elements of each row of the walk are read.
template <class S, class D, BilinearWeights<S, D> Weights>
ZVP_INLINE void sampleColumns(const Weights weights, const RowWalk<S> src, D* dst, ptrdiff_t dstStep, int rows, int n) {
  const auto column = [=]<int N, bool fits = true>(int x) __attribute__((always_inline)) {
    RowWalk<S> walk = src;
    D* out = dst + x;
    auto upper = weights.template row<N>(walk.p + x);
    for (int y = 0; y < rows; ++y, out = movedBy(out, dstStep)) {
      walk.next();
      const auto lower = weights.template row<N>(walk.p + x);
      simd::store(out, weights.template at<N, fits, D, S>(upper, lower));
      upper = lower;
    }
  };
  if (weights.fitPacks()) {
    simd::coverRow<typename Weights::Unit>(n, column);
  } else {
    for (int x = 0; x < n; ++x) column.template operator()<1, false>(x);
  }
}

constexpr int kRowsTogether = 8;  // few enough for each to stay in one way of the nearest cache

// The same where both columns of the source are one, for at most kRowsTogether rows.
template <class S, class D, BilinearWeights<S, D> Weights>
void sampleEdge(const Weights& weights, RowWalk<S> walk, D* dst, ptrdiff_t dstStep, int rows, int n) {
  D values[kRowsTogether];
  for (int y = 0; y < rows; ++y) {
    const S upper = simd::load<S>(walk.p);
    walk.next();
    values[y] = weights.template atEdge<D>(upper, simd::load<S>(walk.p));
  }
  simd::coverRow<D>(n, [=, &values]<int N>(int x) {
    D* out = dst + x;
    for (int y = 0; y < rows; ++y, out = movedBy(out, dstStep)) simd::store(out, simd::broadcast<D, N>(values[y]));
  });
}

}  // namespace zvp::geometry
