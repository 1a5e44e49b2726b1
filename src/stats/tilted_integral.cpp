// Integral images tilted by 45 degrees: every row follows from the two rows above it by a recurrence without any
// dependency along the row.
//
// R. Lienhart, J. Maydt: An Extended Set of Haar-like Features for Rapid Object Detection, 2002.
#include "core/checks.h"
#include "core/rows.h"
#include "core/runs.h"
#include "simd/simd.h"
#include "stats/tables.h"
#include "zvpcv/integral.h"

namespace zvp {
namespace {

using simd::convert, simd::load, simd::Pack, simd::store;

// The entries that the recurrence reads for (r, j).
template <class S>
struct TiltedRow {
  template <class Table>
  TiltedRow(const Table& table, int64_t r)
      : above(table.rows.row(r - 1)), twoAbove(table.rows.row(r - 2)), out(table.rows.row(r)) {}

  const S* above;
  const S* twoAbove;
  S* out;
};

// Entries (r, j)..(r, j + N - 1) of the interior, from the pixels at j and at j - 1.
template <class Table, int N>
ZVP_INLINE void writeEntries(TiltedRow<typename Table::Entry> row, int j, Pack<int32_t, N> pixels,
                             Pack<int32_t, N> left) {
  using S = typename Table::Entry;
  using W = Wrapping<S>;
  const auto aboveLeft = load<Pack<W, N>>(row.above + j - 1), aboveRight = load<Pack<W, N>>(row.above + j + 1);
  const auto twoAbove = load<Pack<W, N>>(row.twoAbove + j);
  if constexpr (std::is_same_v<S, float>) {  // double precision, rounded once
    const auto around = (convert<double>(aboveLeft) - convert<double>(twoAbove)) + convert<double>(aboveRight);
    store(row.out + j, convert<float>(Pack<double, N>(around + convert<double>(left) + convert<double>(pixels))));
  } else {
    const Pack<int32_t, N> terms = pixelTerm<Table>(pixels) + pixelTerm<Table>(left);
    Pack<W, N> sum;
    if constexpr (std::is_same_v<S, double>) {
      sum = convert<double>(terms);
    } else {
      sum = Pack<W, N>(terms);
    }
    store(row.out + j, Pack<W, N>(sum + aboveLeft - (twoAbove - aboveRight)));
  }
}

// Column w, where there is no pixel at j: in the table's own type; and the outer columns.
template <class Table>
ZVP_INLINE void writeEdges(TiltedRow<typename Table::Entry> row, int width, int32_t lastPixel) {
  using W = Wrapping<typename Table::Entry>;
  const auto at = [](const auto* p) { return load<W>(p); };
  const auto term = static_cast<W>(pixelTerm<Table>(lastPixel));
  const W corner = at(row.twoAbove + width) - at(row.above + width + 1);
  store(row.out + width, static_cast<W>(term + at(row.above + width - 1) - corner));
  store(row.out, at(row.above + 1));
  store(row.out + width + 1, at(row.above + width));
}

template <int N, class... Tables>
ZVP_INLINE int writeInterior(int j, int width, const uint8_t* src, TiltedRow<typename Tables::Entry>... rows) {
  for (; j <= width - N; j += N) {
    const auto pixels = simd::loadAs<int32_t, N>(src + j), left = simd::loadAs<int32_t, N>(src + j - 1);
    (writeEntries<Tables, N>(rows, j, pixels, left), ...);
  }
  return j;
}

template <class... Tables>
Status tiltedIntegral(Rows<const uint8_t> src, RoiSize roi, Tables... tables) {
  if (Status s = checkTables(src, roi, 2, tables...)) return s;
  const auto fill = [&](const auto& table, int r) { fillRun(table.rows.row(r), roi.width + 2, table.start); };
  (fill(tables, 0), ...);
  (fill(tables, 1), ...);
  constexpr bool kDoubles = (!std::is_same_v<typename Tables::Entry, int32_t> || ...);
  constexpr int N = kDoubles ? simd::lanes<double> : simd::lanes<int32_t>;
  for (int y = 0; y < roi.height; ++y) {
    const uint8_t* row = src.row(y);
    const int64_t r = int64_t{y} + 2;
    const int j = writeInterior<N, Tables...>(1, roi.width, row, {tables, r}...);
    writeInterior<1, Tables...>(j, roi.width, row, {tables, r}...);
    (writeEdges<Tables>({tables, r}, roi.width, row[roi.width - 1]), ...);
  }
  return StatusOk;
}

}  // namespace
}  // namespace zvp

using zvp::Rows, zvp::squareTable, zvp::sumTable, zvp::tiltedIntegral;

Status zvpiTiltedIntegral_8u32s_C1R(const uint8_t* pSrc, int srcStep, int32_t* pDst, int dstStep, RoiSize roiSize,
                                    int32_t val) {
  return tiltedIntegral(Rows{pSrc, srcStep}, roiSize, sumTable(pDst, dstStep, val));
}

Status zvpiTiltedIntegral_8u32f_C1R(const uint8_t* pSrc, int srcStep, float* pDst, int dstStep, RoiSize roiSize,
                                    float val) {
  return tiltedIntegral(Rows{pSrc, srcStep}, roiSize, sumTable(pDst, dstStep, val));
}

Status zvpiTiltedSqrIntegral_8u32s_C1R(const uint8_t* pSrc, int srcStep, int32_t* pDst, int dstStep, int32_t* pSqr,
                                       int sqrStep, RoiSize roiSize, int32_t val, int32_t valSqr) {
  return tiltedIntegral(Rows{pSrc, srcStep}, roiSize, sumTable(pDst, dstStep, val), squareTable(pSqr, sqrStep, valSqr));
}

Status zvpiTiltedSqrIntegral_8u32s64f_C1R(const uint8_t* pSrc, int srcStep, int32_t* pDst, int dstStep, double* pSqr,
                                          int sqrStep, RoiSize roiSize, int32_t val, double valSqr) {
  return tiltedIntegral(Rows{pSrc, srcStep}, roiSize, sumTable(pDst, dstStep, val), squareTable(pSqr, sqrStep, valSqr));
}

Status zvpiTiltedSqrIntegral_8u32f64f_C1R(const uint8_t* pSrc, int srcStep, float* pDst, int dstStep, double* pSqr,
                                          int sqrStep, RoiSize roiSize, float val, double valSqr) {
  return tiltedIntegral(Rows{pSrc, srcStep}, roiSize, sumTable(pDst, dstStep, val), squareTable(pSqr, sqrStep, valSqr));
}
