// What the upright and the tilted integral images share: their tables and the checks of their arguments.
#pragma once

#include "core/checks.h"
#include "core/rows.h"
#include "simd/simd.h"

namespace zvp::stats {

// One summed-area table: where it is written and the value it starts with. The squared table sums squared pixels.
template <class S, bool kSquared>
struct Table {
  Rows<S> rows;
  S start;

  static constexpr bool squared = kSquared;
  using Entry = S;
};

template <class S>
Table<S, false> sumTable(S* data, int step, S start) {
  return {{data, step}, start};
}
template <class S>
Table<S, true> squareTable(S* data, int step, S start) {
  return {{data, step}, start};
}

// The table has `margin` columns more than the source.
template <class T, class... Tables>
Status checkTables(Rows<const T> src, RoiSize roi, int margin, const Tables&... tables) {
  return firstFailure(nonNull(src, tables.rows...), nonEmpty(roi), rowsFit(roi.width, src),
                      rowsFit(int64_t{roi.width} + margin, tables.rows...), wholeElements(src, tables.rows...));
}

// Integer tables wrap modulo 2^32: their entries are formed as unsigned numbers.
template <class S>
using Wrapping = std::conditional_t<std::is_same_v<S, int32_t>, uint32_t, S>;

// The pixels as they enter a table: squares fit 32 bits.
template <class Table, class V>
ZVP_INLINE V pixelTerm(V pixels) {
  if constexpr (Table::squared) {
    return pixels * pixels;
  } else {
    return pixels;
  }
}

}  // namespace zvp::stats

// A member that makes a table of sums of type S and one of squares of type Q.
#define ZVP_SQUARED_TABLE(name, routine, S, Q)                                                                      \
  Status name(const uint8_t* pSrc, int srcStep, S* pDst, int dstStep, Q* pSqr, int sqrStep, RoiSize roiSize, S val, \
              Q valSqr) {                                                                                           \
    return routine(Rows{pSrc, srcStep}, roiSize, sumTable(pDst, dstStep, val), squareTable(pSqr, sqrStep, valSqr)); \
  }
