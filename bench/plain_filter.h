// The two halves of a separable filter as a reader would write them first.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "image.h"

namespace bench::ZVP_LOOPS::plain {

// The three arithmetics: what becomes of a sum of products, away from the ends of a row and at them.
template <class S, class D>
struct Scaled {
  using Src = S;
  using Dst = D;
  using Tap = std::int16_t;
  using Sum = std::int32_t;
  static constexpr bool truncatesColumns = true;

  explicit Scaled(int divisor) : scale(1.0f / float(divisor)) {}
  D inside(Sum sum) const { return D(std::lrint(clamped(float(sum) * scale))); }
  D atEnd(Sum sum) const { return D(clamped(float(sum) * scale)); }

  static float clamped(float v) {
    return std::clamp(v, float(std::numeric_limits<D>::min()), float(std::numeric_limits<D>::max()));
  }
  float scale;
};

struct Low {
  using Src = std::int16_t;
  using Dst = std::int16_t;
  using Tap = std::int16_t;
  using Sum = std::int32_t;
  static constexpr bool truncatesColumns = false;

  explicit Low(int divisor) : reciprocal(int(16384.0f / float(divisor))) {}
  Dst inside(Sum sum) const {
    return Dst(std::clamp((std::int16_t(sum) * reciprocal) >> 14, int{INT16_MIN}, int{INT16_MAX}));
  }
  Dst atEnd(Sum sum) const { return Dst((sum * reciprocal) >> 14); }

  int reciprocal;
};

struct Float {
  using Src = float;
  using Dst = float;
  using Tap = float;
  using Sum = float;
  static constexpr bool truncatesColumns = false;

  explicit Float(int) {}
  float inside(float sum) const { return sum; }
  float atEnd(float sum) const { return sum; }
};

// The border repeats the first and the last pixel of a row; the anchor is the middle tap.
template <class Rule, int channels, std::size_t k>
void filterRows(const Image<typename Rule::Src>& src, const Image<typename Rule::Dst>& dst,
                const std::array<typename Rule::Tap, k>& taps, Rule rule) {
  using Sum = typename Rule::Sum;
  constexpr int kReach = int(k) / 2;
  const int width = src.width, pixels = width / channels;
  for (int y = 0; y < src.height; ++y) {
    const auto* row = src.row(y);
    auto* out = dst.row(y);
    const auto end = [&](int n) {
      Sum sum = 0;
      for (int i = 0; i < int(k); ++i) {
        const int x = std::clamp(n / channels + i - kReach, 0, pixels - 1);
        sum += Sum(taps[std::size_t(i)]) * Sum(row[x * channels + n % channels]);
      }
      out[n] = rule.atEnd(sum);
    };
    for (int n = 0; n < kReach * channels; ++n) end(n);
    for (int n = kReach * channels; n < width - kReach * channels; ++n) {
      const auto* in = row + n - kReach * channels;
      Sum sum = 0;
      for (std::size_t i = 0; i < k; ++i) sum += Sum(taps[i]) * Sum(in[i * channels]);
      out[n] = rule.inside(sum);
    }
    for (int n = width - kReach * channels; n < width; ++n) end(n);
  }
}

template <class Rule, std::size_t k>
void filterColumns(const Image<typename Rule::Src>& src, const Image<typename Rule::Dst>& dst,
                   const std::array<typename Rule::Tap, k>& taps, Rule rule) {
  using Sum = typename Rule::Sum;
  const int width = dst.width, rounded = Rule::truncatesColumns ? width - width % 4 : width;
  const std::ptrdiff_t next = src.row(1) - src.row(0);
  for (int y = 0; y < dst.height; ++y) {
    const auto* rows = src.row(y);
    auto* out = dst.row(y);
    const auto sumAt = [&](int n) {
      Sum sum = 0;
      for (std::size_t i = 0; i < k; ++i) sum += Sum(taps[i]) * Sum(rows[std::ptrdiff_t(i) * next + n]);
      return sum;
    };
    for (int n = 0; n < rounded; ++n) out[n] = rule.inside(sumAt(n));
    for (int n = rounded; n < width; ++n) out[n] = rule.atEnd(sumAt(n));
  }
}

}  // namespace bench::ZVP_LOOPS::plain
