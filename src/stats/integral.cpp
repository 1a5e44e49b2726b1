// Upright integral images: sums grow along a row and are added to the table row above.
#include <algorithm>

#include "core/checks.h"
#include "core/rows.h"
#include "core/runs.h"
#include "simd/walk.h"
#include "stats/tables.h"
#include "zvpcv/integral.h"

namespace zvp::stats {
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

// Pixels that are appended at once.
template <class Table>
inline constexpr int kPack = std::is_same_v<typename Table::Entry, double> ? simd::lanes<double> : simd::lanes<int32_t>;

// The first row and column of a table hold its start value.
constexpr int kMargin = 1;

template <class Table>
void startTable(const Table& table, int width) {
  fillRun(table.rows.data, width + kMargin, table.start);
}

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

// One row of one table.
template <class Table>
void appendRow(const uint8_t* pixels, int width, TableRow<Table> row) {
  simd::forEachStretch<kPack<Table>>(
      0, width, [&]<int N>(int x, int end) __attribute__((always_inline)) {
        Appender<Table, N> entries(row);
        for (; x < end; x += N) entries.append(x, pixels + x, entries.above(x));
        entries.finish();
      });
}

// Two rows of one table, side by side: the lower one finds the entries above it in registers.
template <class Table>
void appendTwoRows(const uint8_t* upperPixels, const uint8_t* lowerPixels, int width, TableRow<Table> upper,
                   TableRow<Table> lower) {
  simd::forEachStretch<kPack<Table>>(
      0, width, [&]<int N>(int x, int end) __attribute__((always_inline)) {
        Appender<Table, N> first(upper), second(lower);
        for (; x < end; x += N) second.append(x, lowerPixels + x, first.append(x, upperPixels + x, first.above(x)));
        first.finish();
        second.finish();
      });
}

// One row of both tables; two rows of each would be more streams of output than go side by side.
template <class Sums, class Squares>
void appendBoth(const uint8_t* pixels, int width, TableRow<Sums> sums, TableRow<Squares> squares) {
  simd::forEachStretch<std::min(kPack<Sums>, kPack<Squares>)>(
      0, width, [&]<int N>(int x, int end) __attribute__((always_inline)) {
        Appender<Sums, N> sum(sums);
        Appender<Squares, N> square(squares);
        for (; x < end; x += N) {
          sum.append(x, pixels + x, sum.above(x));
          square.append(x, pixels + x, square.above(x));
        }
        sum.finish();
        square.finish();
      });
}

template <class Table>
Status integral(Rows<const uint8_t> src, RoiSize roi, Table table) {
  if (Status s = checkTables(src, roi, kMargin, table)) return s;
  startTable(table, roi.width);
  int y = 0;
  for (; roi.height - y >= 2; y += 2)
    appendTwoRows<Table>(src.row(y), src.row(y + 1), roi.width, {table, y}, {table, y + 1});
  if (y < roi.height) appendRow<Table>(src.row(y), roi.width, {table, y});
  return StatusOk;
}

template <class Sums, class Squares>
Status integral(Rows<const uint8_t> src, RoiSize roi, Sums sums, Squares squares) {
  if (Status s = checkTables(src, roi, kMargin, sums, squares)) return s;
  startTable(sums, roi.width);
  startTable(squares, roi.width);
  for (int y = 0; y < roi.height; ++y) appendBoth<Sums, Squares>(src.row(y), roi.width, {sums, y}, {squares, y});
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
  if (Status s = checkTables(src, roi, kMargin, sumTable(dst.data, dst.step, 0.0f))) return s;
  zeroRun(dst.data, roi.width + kMargin);
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
}  // namespace zvp::stats

using namespace zvp::stats;
using zvp::Rows;

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

ZVP_SQUARED_TABLE(zvpiSqrIntegral_8u32s_C1R, integral, int32_t, int32_t)
ZVP_SQUARED_TABLE(zvpiSqrIntegral_8u32s64f_C1R, integral, int32_t, double)
ZVP_SQUARED_TABLE(zvpiSqrIntegral_8u32f64f_C1R, integral, float, double)
