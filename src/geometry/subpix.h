// Bilinear samples: weights of the four neighbours, and the rows and windows that are made with them.
#pragma once

#include <math.h>

#include <algorithm>
#include <limits>

#include "core/rows.h"
#include "simd/fixed_point.h"
#include "simd/walk.h"

namespace zvp {

using simd::Pack;

// In single precision, added in the order upper left, upper right, lower left, lower right.
class FloatWeights {
 public:
  using Unit = float;  // whose registers a row is cut into

  FloatWeights(float fx, float fy)
      : w00_((1.0f - fx) * (1.0f - fy)), w10_(fx * (1.0f - fy)), w01_((1.0f - fx) * fy), w11_(fx * fy) {}

  static constexpr bool fitPacks() { return true; }

  template <class V>
  ZVP_INLINE V sum(V s00, V s10, V s01, V s11) const {
    return s00 * w00_ + s10 * w10_ + s01 * w01_ + s11 * w11_;
  }
  // What a row gives to the samples above and below it.
  template <int N>
  struct Row {
    Pack<float, N> left, right;
  };
  template <int N, class S>
  ZVP_INLINE Row<N> row(const S* p) const {
    return {simd::loadAs<float, N>(p), simd::loadAs<float, N>(p + 1)};
  }
  template <int N, class D, class S>
  ZVP_INLINE Pack<D, N> at(const Row<N>& upper, const Row<N>& lower) const {
    return sum(upper.left, upper.right, lower.left, lower.right);
  }
  // Where both columns are the same.
  template <class D, class S>
  D atEdge(S upper, S lower) const {
    const auto u = static_cast<float>(upper), l = static_cast<float>(lower);
    return sum(u, u, l, l);
  }

 private:
  float w00_, w10_, w01_, w11_;
};

// The weights of the copies by a displacement, which raise the fractions; S is the type of the source.
template <class S>
FloatWeights raisedWeights(float fx, float fy) {
  constexpr float kLeastX = 1e-6f, kLeastY = std::is_same_v<S, float> ? kLeastX : 1e-9f;
  return {std::max(fx, kLeastX), std::max(fy, kLeastY)};
}

// With 14 fractional bits; they add up to one exactly. The result is the sum of products times 2^-scaleFactor, rounded
// half up and saturated. The rounded corners of windows wider than 2^24 have fractions as far from 0 .. 1 as 128.
class FixedWeights {
 public:
  using Unit = int16_t;

  FixedWeights(float fx, float fy, int scaleFactor = 0)
      : shift_(kFractionBits + std::min(scaleFactor, kVanishes)), half_(1 << (shift_ - 1)) {
    const int64_t ax = bits(fx), ay = bits(fy), bx = kOne - ax, by = kOne - ay;
    w00_ = weight(bx * by), w10_ = weight(ax * by), w01_ = weight(bx * ay), w11_ = weight(ax * ay);
    const int32_t excess = w00_ + w10_ + w01_ + w11_ - kOne;
    if (excess > 0) largest() -= excess;
  }

  // Whether all weights are 16-bit numbers.
  bool fitPacks() const {
    const auto [least, most] = std::minmax({w00_, w10_, w01_, w11_});
    return least >= INT16_MIN && most <= INT16_MAX;
  }

  struct Neighbours {
    int32_t left, right;
  };
  template <int N>
  using Row = std::conditional_t<N == 1, Neighbours, simd::Halves<N == 1 ? 8 : N>>;

  template <int N, class S>
  ZVP_INLINE Row<N> row(const S* p) const {
    if constexpr (N == 1) {
      return {simd::load<S>(p), simd::load<S>(p + 1)};
    } else {
      return simd::pairs<N>(words<N>(p), words<N>(p + 1));
    }
  }
  template <int N, class D, class S>
  ZVP_INLINE Pack<D, N> at(const Row<N>& upper, const Row<N>& lower) const {
    if constexpr (N == 1) {
      return scaled<D>(int64_t{upper.left} * w00_ + int64_t{upper.right} * w10_ + int64_t{lower.left} * w01_ +
                       int64_t{lower.right} * w11_);
    } else {
      const auto weighted = [](const Row<N>& row, int32_t left, int32_t right) {
        return simd::pairProducts<N>(row, simd::broadcast<int32_t, N / 2>(pair(left, right)));
      };
      const Row<N> above = weighted(upper, w00_, w10_), below = weighted(lower, w01_, w11_);
      return narrowed<N, D, S>(
          {(above.low + below.low + half_) >> shift_, (above.high + below.high + half_) >> shift_});
    }
  }
  template <class D, class S>
  D atEdge(S upper, S lower) const {
    return scaled<D>(int64_t{upper} * (w00_ + w10_) + int64_t{lower} * (w01_ + w11_));
  }

 private:
  static constexpr int kFractionBits = 14, kVanishes = 16;  // bytes shifted further are 0
  static constexpr int32_t kOne = 1 << kFractionBits;
  static constexpr int kBias = 1 << 15;  // brings unsigned words into the range of signed ones

  static int32_t bits(float fraction) { return static_cast<int32_t>(0.5f + static_cast<float>(kOne) * fraction); }
  static constexpr int32_t weight(int64_t product) { return static_cast<int32_t>((product + kOne) >> kFractionBits); }
  static constexpr int32_t pair(int32_t left, int32_t right) {
    return static_cast<int32_t>((static_cast<uint32_t>(left) & 0xffff) | static_cast<uint32_t>(right) << 16);
  }

  // The first that is not smaller than any other.
  int32_t& largest() {
    int32_t* largest = &w00_;
    for (int32_t* w : {&w01_, &w10_, &w11_})
      if (*w > *largest) largest = w;
    return *largest;
  }

  template <class D>
  D scaled(int64_t sum) const {
    return static_cast<D>(std::clamp<int64_t>((sum + half_) >> shift_, 0, std::numeric_limits<D>::max()));
  }

  // Words of 16-bit sources are biased; the weights add up to one, so that their sums are too.
  template <int N, class S>
  static ZVP_INLINE Pack<int16_t, N> words(const S* p) {
    if constexpr (sizeof(S) == 1) {
      return simd::loadWords<N>(p);
    } else {
      return biased<N>(simd::load<Pack<int16_t, N>>(p));
    }
  }
  template <int N>
  static ZVP_INLINE Pack<int16_t, N> biased(Pack<int16_t, N> v) {
    return v ^ simd::broadcast<int16_t, N>(INT16_MIN);
  }

  template <int N, class D, class S>
  static ZVP_INLINE Pack<D, N> narrowed(simd::Halves<N> v) {
    if constexpr (sizeof(D) == 1) {
      return simd::narrow<D, N>(simd::narrow<N>(v));
    } else if constexpr (sizeof(S) == 2) {
      return Pack<D, N>(biased<N>(simd::narrow<N>(v)));
    } else {
      return Pack<D, N>(biased<N>(simd::narrow<N>({v.low - kBias, v.high - kBias})));
    }
  }

  int shift_;
  int32_t half_;
  int32_t w00_, w10_, w01_, w11_;
};

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
      : p(src.row(std::clamp<int64_t>(first, 0, lastRow))), y(first), last(lastRow), step(src.step) {}

  ZVP_INLINE void next() {
    p = movedBy(p, static_cast<uint64_t>(y) < static_cast<uint64_t>(last) ? step : 0);
    ++y;
  }
};

// n samples in each row of dst; n + 1 elements of each row of the walk are read. Down first: what a source row gives to
// the samples above it, it gives to those below it too.
template <class Weights, class S, class D>
ZVP_INLINE void sampleColumns(const Weights weights, const RowWalk<S> src, D* dst, ptrdiff_t dstStep, int rows, int n) {
  const auto column = [=]<int N>(int x) __attribute__((always_inline)) {
    RowWalk<S> walk = src;
    D* out = dst + x;
    auto upper = weights.template row<N>(walk.p + x);
    for (int y = 0; y < rows; ++y, out = movedBy(out, dstStep)) {
      walk.next();
      const auto lower = weights.template row<N>(walk.p + x);
      simd::store(out, weights.template at<N, D, S>(upper, lower));
      upper = lower;
    }
  };
  if (weights.fitPacks()) {
    simd::coverRow<typename Weights::Unit>(n, column);
  } else {
    for (int x = 0; x < n; ++x) column.template operator()<1>(x);
  }
}

constexpr int kRowsTogether = 8;  // few enough for each to stay in one way of the nearest cache

// The same where both columns of the source are one, for at most kRowsTogether rows.
template <class Weights, class S, class D>
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

}  // namespace zvp
