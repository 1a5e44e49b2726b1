// Upright integral images: sums grow along a row and are added to the table row above.
#include "zvpcv/integral.h"
#include "core/checks.h"
#include "core/rows.h"
#include "core/runs.h"
#include "simd/transform.h"
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

  ZVP_INLINE void append(int x, const uint8_t* pixels) {
    const auto prefix = prefixSum(pixels);
    const auto above = load<Pack<Wrapping<Entry>, N>>(row_.above + x);
    store(row_.out + x, Pack<Wrapping<Entry>, N>(toEntry(sum_ + toSum(prefix)) + above));
    sum_ += toSum(simd::broadcastLast(prefix));
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

template <int N, class... Tables>
ZVP_INLINE int appendPixels(int x, int width, const uint8_t* src, TableRow<Tables>&... rows) {
  [&](auto... appenders) {
    for (; x <= width - N; x += N) (appenders.append(x, src + x), ...);
    (appenders.finish(), ...);
  }(Appender<Tables, N>(rows)...);
  return x;
}

template <class... Tables>
void integralRow(const uint8_t* src, int width, TableRow<Tables>... rows) {
  constexpr bool kDoubles = (std::is_same_v<typename Tables::Entry, double> || ...);
  constexpr int N = kDoubles ? simd::lanes<double> : simd::lanes<int32_t>;
  const int x = appendPixels<N>(0, width, src, rows...);
  appendPixels<1>(x, width, src, rows...);
}

template <class... Tables>
Status integral(Rows<const uint8_t> src, RoiSize roi, Tables... tables) {
  if (Status s = checkTables(src, roi, 1, tables...)) return s;
  (fillRun(tables.rows.data, roi.width + 1, tables.start), ...);
  for (int y = 0; y < roi.height; ++y) integralRow(src.row(y), roi.width, TableRow<Tables>(tables, y)...);
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
