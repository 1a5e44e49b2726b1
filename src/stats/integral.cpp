// Upright integral images: sums grow along a row and are added to the table row above.
#include "zvpcv/integral.h"
#include "core/checks.h"
#include "core/rows.h"
#include "core/runs.h"
#include "simd/walk.h"
#include "stats/tables.h"

namespace zvp {
namespace {

using simd::load, simd::Pack, simd::store;

// One row of a table being written. `sum` is the exact sum of the row's pixels so far: an integer that wraps, or a
// double whose integers stay far below 2^53.
template <class Table>
struct TableRow {
  using Entry = typename Table::Entry;
  using Sum = std::conditional_t<std::is_same_v<Entry, double>, double, uint32_t>;

  TableRow(const Table& table, int y) : above(table.rows.row(y) + 1), out(table.rows.row(int64_t{y} + 1) + 1) {
    store(out - 1, table.start);
  }

  const Entry* above;
  Entry* out;
  Sum sum = 0;
};

// Appends N pixels at a time to one row; the running sum stands in every lane.
template <class Table, int N>
class Appender {
  using Row = TableRow<Table>;
  using Sum = typename Row::Sum;
  using Entry = typename Row::Entry;

 public:
  ZVP_INLINE explicit Appender(Row& row) : row_(row), sum_(simd::broadcast<Sum, N>(row.sum)) {}

  using Entries = Pack<Wrapping<Entry>, N>;

  ZVP_INLINE Entries above(int x) const { return load<Entries>(row_.above + x); }

  // Returns the entries written, which are those above the next row's.
  ZVP_INLINE Entries append(int x, const uint8_t* pixels, Entries entriesAbove) {
    const auto prefix = prefixSum(pixels);
    const Entries entries = toEntry(sum_ + toSum(prefix)) + entriesAbove;
    store(row_.out + x, entries);
    sum_ += toSum(simd::broadcastLast(prefix));
    return entries;
  }

  ZVP_INLINE void finish() {
    if constexpr (N == 1) {
      row_.sum = sum_;
    } else {
      row_.sum = sum_[0];
    }
  }

 private:
  static ZVP_INLINE Pack<int32_t, N> prefixSum(const uint8_t* pixels) {
    if constexpr (Table::squared) {
      return simd::prefixSum(pixelTerm<Table>(simd::loadAs<int32_t, N>(pixels)));
    } else {
      return simd::prefixSumOfBytes<N>(pixels);
    }
  }
  static ZVP_INLINE Pack<Sum, N> toSum(Pack<int32_t, N> v) {
    if constexpr (std::is_same_v<Sum, double>) {
      return simd::convert<double>(v);
    } else {
      return Pack<Sum, N>(v);
    }
  }
  static ZVP_INLINE Pack<Wrapping<Entry>, N> toEntry(Pack<Sum, N> v) {
    if constexpr (std::is_same_v<Entry, float>) {
      return simd::convert<float>(Pack<int32_t, N>(v));
    } else {
      return v;
    }
  }

  Row& row_;
  Pack<Sum, N> sum_;
};

template <class Table>
struct RowPair {
  TableRow<Table> rows[2];
};

// kRows rows of each table, side by side: all but the first find the entries above them in registers.
template <int N, int kRows, class Table>
class RowsAppender {
 public:
  ZVP_INLINE explicit RowsAppender(TableRow<Table>* rows) : first_(rows[0]), second_(rows[kRows - 1]) {}
  ZVP_INLINE void append(int x, const uint8_t* const* src) {
    const auto entries = first_.append(x, src[0] + x, first_.above(x));
    if constexpr (kRows == 2) second_.append(x, src[1] + x, entries);
  }
  ZVP_INLINE void finish() {
    first_.finish();
    if constexpr (kRows == 2) second_.finish();
  }

 private:
  Appender<Table, N> first_, second_;
};

template <int N, int kRows, class... Tables>
ZVP_INLINE int appendPixels(int x, int width, const uint8_t* const* src, TableRow<Tables>*... rows) {
  [&](auto... appenders) {
    for (; x <= width - N; x += N) (appenders.append(x, src), ...);
    (appenders.finish(), ...);
  }(RowsAppender<N, kRows, Tables>(rows)...);
  return x;
}

template <int kRows, class... Tables>
void integralRows(Rows<const uint8_t> src, int y, int width, const Tables&... tables) {
  constexpr bool kDoubles = (std::is_same_v<typename Tables::Entry, double> || ...);
  constexpr int N = kDoubles ? simd::lanes<double> : simd::lanes<int32_t>;
  const uint8_t* in[2] = {src.row(y), src.row(y + kRows - 1)};
  [&](auto... out) {
    const int x = appendPixels<N, kRows, Tables...>(0, width, in, out.rows...);
    appendPixels<1, kRows, Tables...>(x, width, in, out.rows...);
  }(RowPair<Tables>{{TableRow<Tables>(tables, y), TableRow<Tables>(tables, y + kRows - 1)}}...);
}

template <class... Tables>
Status integral(Rows<const uint8_t> src, RoiSize roi, Tables... tables) {
  if (Status s = checkTables(src, roi, 1, tables...)) return s;
  (fillRun(tables.rows.data, roi.width + 1, tables.start), ...);
  constexpr int kRows = sizeof...(Tables) == 1 ? 2 : 1;  // more streams of output would get in each other's way
  int y = 0;
  for (; y + kRows <= roi.height; y += kRows) integralRows<kRows>(src, y, roi.width, tables...);
  for (; y < roi.height; ++y) integralRows<1>(src, y, roi.width, tables...);
  return StatusOk;
}

// Single-precision sums must be formed pixel by pixel, so the row sums of several rows run side by side, each waiting
// for its own last addition only; the rows above are added afterwards.
template <int kRows>
ZVP_INLINE void floatRowSums(Rows<const float> src, Rows<float> dst, int y, int width) {
  const float* in[kRows];
  float* out[kRows];
  float sum[kRows] = {};
  for (int k = 0; k < kRows; ++k) {
    in[k] = src.row(y + k);
    out[k] = dst.row(int64_t{y} + k + 1);
    store(out[k], 0.0f);
  }
  for (int x = 0; x < width; ++x) {
    for (int k = 0; k < kRows; ++k) {
      sum[k] = sum[k] + load<float>(in[k] + x);
      store(out[k] + x + 1, sum[k]);
    }
  }
}

Status floatIntegral(Rows<const float> src, Rows<float> dst, RoiSize roi) {
  if (Status s = checkTables(src, roi, 1, sumTable(dst.data, dst.step, 0.0f))) return s;
  zeroRun(dst.data, roi.width + 1);
  constexpr int kRows = 8;
  for (int y = 0; y < roi.height;) {
    const int rows = roi.height - y >= kRows ? kRows : 1;
    if (rows == kRows) {
      floatRowSums<kRows>(src, dst, y, roi.width);
    } else {
      floatRowSums<1>(src, dst, y, roi.width);
    }
    for (const int end = y + rows; y < end; ++y) {
      const auto add = [](auto sum, auto above) { return sum + above; };
      float* row = dst.row(int64_t{y} + 1) + 1;
      simd::transformRow(roi.width, add, row, row, dst.row(y) + 1);
    }
  }
  return StatusOk;
}

}  // namespace
}  // namespace zvp

using zvp::floatIntegral, zvp::integral, zvp::Rows, zvp::squareTable, zvp::sumTable;

Status zvpiIntegral_8u32s_C1R(const uint8_t* pSrc, int srcStep, int32_t* pDst, int dstStep, RoiSize roiSize,
                              int32_t val) {
  return integral(Rows{pSrc, srcStep}, roiSize, sumTable(pDst, dstStep, val));
}

Status zvpiIntegral_8u32f_C1R(const uint8_t* pSrc, int srcStep, float* pDst, int dstStep, RoiSize roiSize, float val) {
  return integral(Rows{pSrc, srcStep}, roiSize, sumTable(pDst, dstStep, val));
}

Status zvpiIntegral_32f_C1R(const float* pSrc, int srcStep, float* pDst, int dstStep, RoiSize roiSize) {
  return floatIntegral(Rows{pSrc, srcStep}, Rows{pDst, dstStep}, roiSize);
}

Status zvpiSqrIntegral_8u32s_C1R(const uint8_t* pSrc, int srcStep, int32_t* pDst, int dstStep, int32_t* pSqr,
                                 int sqrStep, RoiSize roiSize, int32_t val, int32_t valSqr) {
  return integral(Rows{pSrc, srcStep}, roiSize, sumTable(pDst, dstStep, val), squareTable(pSqr, sqrStep, valSqr));
}

Status zvpiSqrIntegral_8u32s64f_C1R(const uint8_t* pSrc, int srcStep, int32_t* pDst, int dstStep, double* pSqr,
                                    int sqrStep, RoiSize roiSize, int32_t val, double valSqr) {
  return integral(Rows{pSrc, srcStep}, roiSize, sumTable(pDst, dstStep, val), squareTable(pSqr, sqrStep, valSqr));
}

Status zvpiSqrIntegral_8u32f64f_C1R(const uint8_t* pSrc, int srcStep, float* pDst, int dstStep, double* pSqr,
                                    int sqrStep, RoiSize roiSize, float val, double valSqr) {
  return integral(Rows{pSrc, srcStep}, roiSize, sumTable(pDst, dstStep, val), squareTable(pSqr, sqrStep, valSqr));
}
