// Integral images and the standard deviation from them, written from their definitions. Integer sums wrap.
#pragma once

#include <cmath>
#include <type_traits>

#include "image.h"

namespace bench::ZVP_LOOPS::plain {

// Integer tables are summed as unsigned numbers.
template <class S>
using Wrapping = std::conditional_t<std::is_same_v<S, std::int32_t>, std::uint32_t, S>;

template <class S>
struct Table {
  Image<S> entries;
  S start;
};

inline std::uint32_t square(std::uint32_t v) { return v * v; }

template <class S>
void fillFirstRows(const Table<S>& table, int rows) {
  for (int r = 0; r < rows; ++r)
    for (int c = 0; c < table.entries.width; ++c) table.entries.row(r)[c] = table.start;
}

template <class S>
void integral(const Image<std::uint8_t>& src, const Table<S>& sums) {
  fillFirstRows(sums, 1);
  const int width = src.width;
  for (int y = 0; y < src.height; ++y) {
    const std::uint8_t* row = src.row(y);
    const S* above = sums.entries.row(y);
    S* out = sums.entries.row(y + 1);
    std::uint32_t sum = 0;
    out[0] = sums.start;
    for (int x = 0; x < width; ++x) {
      sum += row[x];
      out[x + 1] = S(Wrapping<S>(std::int32_t(sum)) + Wrapping<S>(above[x + 1]));
    }
  }
}

template <class S, class Q>
void sqrIntegral(const Image<std::uint8_t>& src, const Table<S>& sums, const Table<Q>& squares) {
  fillFirstRows(sums, 1);
  fillFirstRows(squares, 1);
  const int width = src.width;
  for (int y = 0; y < src.height; ++y) {
    const std::uint8_t* row = src.row(y);
    const S* above = sums.entries.row(y);
    const Q* aboveSqr = squares.entries.row(y);
    S* out = sums.entries.row(y + 1);
    Q* outSqr = squares.entries.row(y + 1);
    std::uint32_t sum = 0;
    Wrapping<Q> sumSqr = 0;
    out[0] = sums.start;
    outSqr[0] = squares.start;
    for (int x = 0; x < width; ++x) {
      sum += row[x];
      sumSqr += square(row[x]);
      out[x + 1] = S(Wrapping<S>(std::int32_t(sum)) + Wrapping<S>(above[x + 1]));
      outSqr[x + 1] = Q(sumSqr + Wrapping<Q>(aboveSqr[x + 1]));
    }
  }
}

inline void floatIntegral(const Image<float>& src, const Image<float>& sums) {
  fillFirstRows(Table<float>{sums, 0}, 1);
  const int width = src.width;
  for (int y = 0; y < src.height; ++y) {
    const float *row = src.row(y), *above = sums.row(y);
    float *out = sums.row(y + 1), sum = 0;
    out[0] = 0;
    for (int x = 0; x < width; ++x) {
      sum += row[x];
      out[x + 1] = sum + above[x + 1];
    }
  }
}

// Row r of a tilted table from the two rows above it; term(x) is what the pixel at column x contributes.
template <class S, class Term>
void tiltedRow(const Image<S>& table, int r, int width, Term term) {
  const S *above = table.row(r - 1), *twoAbove = table.row(r - 2);
  S* out = table.row(r);
  using W = Wrapping<S>;
  const auto entry = [&](int j, std::uint32_t terms) {
    return S(W(terms) + W(above[j - 1]) - (W(twoAbove[j]) - W(above[j + 1])));
  };
  out[0] = above[1];
  for (int j = 1; j < width; ++j) {
    if constexpr (std::is_same_v<S, float>) {
      out[j] = float((double(above[j - 1]) - twoAbove[j]) + above[j + 1] + term(j - 1) + term(j));
    } else {
      out[j] = entry(j, term(j) + term(j - 1));
    }
  }
  out[width] = entry(width, term(width - 1));
  out[width + 1] = above[width];
}

template <class S>
void tiltedIntegral(const Image<std::uint8_t>& src, const Table<S>& sums) {
  fillFirstRows(sums, 2);
  for (int y = 0; y < src.height; ++y) {
    const std::uint8_t* row = src.row(y);
    tiltedRow(sums.entries, y + 2, src.width, [row](int x) { return std::uint32_t{row[x]}; });
  }
}

template <class S, class Q>
void tiltedSqrIntegral(const Image<std::uint8_t>& src, const Table<S>& sums, const Table<Q>& squares) {
  fillFirstRows(sums, 2);
  fillFirstRows(squares, 2);
  for (int y = 0; y < src.height; ++y) {
    const std::uint8_t* row = src.row(y);
    tiltedRow(sums.entries, y + 2, src.width, [row](int x) { return std::uint32_t{row[x]}; });
    tiltedRow(squares.entries, y + 2, src.width, [row](int x) { return square(row[x]); });
  }
}

// The corners of a rectangle sum (a - b) + (d - e), as (column, row).
struct Corners {
  Point a, b, d, e;
  double area;
};

inline Corners uprightCorners(Rect r) {
  const int right = r.x + r.width, bottom = r.y + r.height;
  return {{r.x, r.y}, {right, r.y}, {right, bottom}, {r.x, bottom}, double(r.width) * r.height};
}

inline Corners tiltedCorners(Rect r) {
  const int w = r.width, h = r.height;
  return {{r.x + h, r.y}, {r.x, r.y + h}, {r.x + w, r.y + w + h}, {r.x + w + h, r.y + w}, 2.0 * w * h};
}

inline void storeDeviation(float& out, double variance, double) { out = std::sqrt(float(variance)); }
inline void storeDeviation(std::int32_t& out, double variance, double scale) {
  const double root = std::sqrt(variance > 0 ? variance : 0) * scale;
  out = root < INT32_MAX ? std::int32_t(std::lrint(root)) : INT32_MAX;
}

// A table's rows at the four corners, from the output's first column on.
template <class S>
struct CornerRows {
  CornerRows(const Image<S>& table, const Corners& c, int y)
      : a(table.row(y + c.a.y) + c.a.x),
        b(table.row(y + c.b.y) + c.b.x),
        d(table.row(y + c.d.y) + c.d.x),
        e(table.row(y + c.e.y) + c.e.x) {}

  S bracket(int x) const {
    using W = Wrapping<S>;
    return S((W(a[x]) - W(b[x])) + (W(d[x]) - W(e[x])));
  }

  const S *a, *b, *d, *e;
};

template <class S, class Q, class T>
void rectStdDev(const Image<S>& sums, const Image<Q>& squares, const Image<T>& dst, const Corners& c, int scaleFactor) {
  const double inverse = 1 / c.area, scale = std::ldexp(1, -scaleFactor);
  const int width = dst.width;
  for (int y = 0; y < dst.height; ++y) {
    const CornerRows<S> sumRows(sums, c, y);
    const CornerRows<Q> squareRows(squares, c, y);
    T* out = dst.row(y);
    for (int x = 0; x < width; ++x) {
      const double mean = sumRows.bracket(x) * inverse, meanSqr = squareRows.bracket(x) * inverse;
      storeDeviation(out[x], meanSqr - mean * mean, scale);
    }
  }
}

}  // namespace bench::ZVP_LOOPS::plain
