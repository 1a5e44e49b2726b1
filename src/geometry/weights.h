// Weights of the four neighbours of a bilinear sample, in single precision and in fixed point.
#pragma once

#include <algorithm>
#include <concepts>
#include <limits>

#include "simd/fixed_point.h"
#include "simd/simd.h"

namespace zvp::geometry {

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
  template <int N, bool fits, class D, class S>
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
  template <int N, bool fits, class D, class S>
  ZVP_INLINE Pack<D, N> at(const Row<N>& upper, const Row<N>& lower) const {
    if constexpr (N == 1) {
      using Sum = std::conditional_t<fits, uint32_t, int64_t>;
      const auto product = [](int32_t pixel, int32_t weight) {
        return static_cast<Sum>(pixel) * static_cast<Sum>(weight);
      };
      return scaled<D>(product(upper.left, w00_) + product(upper.right, w10_) + product(lower.left, w01_) +
                       product(lower.right, w11_));
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

  template <class D, class Sum>
  D scaled(Sum sum) const {
    using Value = std::make_signed_t<Sum>;
    const Value value = static_cast<Value>(sum + static_cast<Sum>(half_)) >> shift_;
    return static_cast<D>(std::clamp<Value>(value, 0, std::numeric_limits<D>::max()));
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

// What samples of type D from a source of type S are made with. What a row gives to the samples above it, it gives to
// those below it too. Rows are cut into registers of units where the weights fit packs; then `fits` is true.
template <class W, class S, class D>
concept BilinearWeights = requires(const W& weights, const S* p, S pixel) {
  typename W::Unit;
  { weights.fitPacks() } -> std::same_as<bool>;
  { weights.template at<1, true, D, S>(weights.template row<1>(p), weights.template row<1>(p)) } -> std::same_as<D>;
  { weights.template at<1, false, D, S>(weights.template row<1>(p), weights.template row<1>(p)) } -> std::same_as<D>;
  { weights.template atEdge<D>(pixel, pixel) } -> std::same_as<D>;
};

}  // namespace zvp::geometry
