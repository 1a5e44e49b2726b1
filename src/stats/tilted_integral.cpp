// Integral images tilted by 45 degrees: every row follows from the two rows above it by a recurrence without any
// dependency along the row.
//
// R. Lienhart, J. Maydt: An Extended Set of Haar-like Features for Rapid Object Detection, 2002.
#include "core/checks.h"
#include "core/rows.h"
#include "core/runs.h"
#include "simd/walk.h"
#include "stats/tables.h"
#include "zvpcv/integral.h"

namespace zvp::stats {
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

// Columns 1 .. width - 1 of a row of each table.
template <class... Tables>
void writeInterior(int width, const uint8_t* src, TiltedRow<typename Tables::Entry>... rows) {
  constexpr bool kDoubles = (!std::is_same_v<typename Tables::Entry, int32_t> || ...);
  constexpr int kPack = kDoubles ? simd::lanes<double> : simd::lanes<int32_t>;
  simd::forEachPack<kPack, sizeof(int32_t)>(
      1, width, [=]<int N>(int j) __attribute__((always_inline)) {
        const auto pixels = simd::loadAs<int32_t, N>(src + j), left = simd::loadAs<int32_t, N>(src + j - 1);
        (writeEntries<Tables, N>(rows, j, pixels, left), ...);
      });
}

template <class... Tables>
Status tiltedIntegral(Rows<const uint8_t> src, RoiSize roi, Tables... tables) {
  constexpr int kMargin = 2;  // rows and columns more than the source's
  if (Status s = checkTables(src, roi, kMargin, tables...)) return s;
  for (int r = 0; r < kMargin; ++r) (fillRun(tables.rows.row(r), roi.width + kMargin, tables.start), ...);
  for (int y = 0; y < roi.height; ++y) {
    const uint8_t* row = src.row(y);
    const int64_t r = int64_t{y} + kMargin;
    writeInterior<Tables...>(roi.width, row, {tables, r}...);
    (writeEdges<Tables>({tables, r}, roi.width, row[roi.width - 1]), ...);
  }
  return StatusOk;
}

}  // namespace
}  // namespace zvp::stats

using namespace zvp::stats;
using zvp::Rows;

Status zvpiTiltedIntegral_8u32s_C1R(const uint8_t* pSrc, int srcStep, int32_t* pDst, int dstStep, RoiSize roiSize,
                                    int32_t val) {
  return tiltedIntegral(Rows{pSrc, srcStep}, roiSize, sumTable(pDst, dstStep, val));
}

Status zvpiTiltedIntegral_8u32f_C1R(const uint8_t* pSrc, int srcStep, float* pDst, int dstStep, RoiSize roiSize,
                                    float val) {
  return tiltedIntegral(Rows{pSrc, srcStep}, roiSize, sumTable(pDst, dstStep, val));
}

ZVP_SQUARED_TABLE(zvpiTiltedSqrIntegral_8u32s_C1R, tiltedIntegral, int32_t, int32_t)
ZVP_SQUARED_TABLE(zvpiTiltedSqrIntegral_8u32s64f_C1R, tiltedIntegral, int32_t, double)
ZVP_SQUARED_TABLE(zvpiTiltedSqrIntegral_8u32f64f_C1R, tiltedIntegral, float, double)
