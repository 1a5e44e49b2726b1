// Which pixels join a fill: tests along a row, for the searches of flood_runs.h.
#pragma once

#include <limits>

#include "distance/flood_runs.h"

namespace zvp {

// Equality and range: a pixel lies within bounds, the same ones for every pixel.
template <class T, int channels>
class Bounds {
 public:
  using Chunk = ChunkOf<T, channels>;

  struct Test {
    using Chunk = ChunkOf<T, channels>;
    const Bounds& bounds;
    const T* row;

    ZVP_INLINE uint64_t chunk(int x) const {
      const auto v = simd::load<typename Chunk::Vector>(row + int64_t{x} * channels);
      return Chunk::whole((v >= bounds.lowest_) & (v <= bounds.highest_));
    }
    bool at(int x) const { return bounds.contain(row + int64_t{x} * channels); }
  };

  Bounds(const T* seed, const T* minDelta, const T* maxDelta) {
    for (int c = 0; c < channels; ++c) {
      const T s = simd::load<T>(seed + c);
      low_[c] = less(s, simd::load<T>(minDelta + c));
      high_[c] = more(s, simd::load<T>(maxDelta + c));
    }
    lowest_ = Chunk::repeat(low_);
    highest_ = Chunk::repeat(high_);
  }

  bool contain(const T* pixel) const {
    bool within = true;
    for (int c = 0; c < channels; ++c) {
      const T p = simd::load<T>(pixel + c);
      within = within && p >= low_[c] && p <= high_[c];
    }
    return within;
  }

  Test test(const T* row) const { return {*this, row}; }

  // As a rule between neighbours: the one that has joined does not matter.
  Test link(const T* candidates, const T*) const { return {*this, candidates}; }

 private:
  static T less(T value, T delta) {
    if constexpr (std::is_same_v<T, float>) {
      return value - delta;
    } else {
      return static_cast<T>(value > delta ? value - delta : 0);
    }
  }
  static T more(T value, T delta) {
    if constexpr (std::is_same_v<T, float>) {
      return value + delta;
    } else {
      return static_cast<T>(simd::min<int>(value + delta, std::numeric_limits<T>::max()));
    }
  }

  T low_[channels], high_[channels];
  typename Chunk::Vector lowest_, highest_;
};

// Gradient: a pixel lies within bounds about a neighbour that has joined.
template <class T, int channels>
class Gradient {
 public:
  using Chunk = ChunkOf<T, channels>;

  struct Test {
    using Chunk = ChunkOf<T, channels>;
    const Gradient& rule;
    const T *candidates, *joined;

    ZVP_INLINE uint64_t chunk(int x) const {
      const auto p = simd::load<typename Chunk::Vector>(candidates + int64_t{x} * channels);
      const auto q = simd::load<typename Chunk::Vector>(joined + int64_t{x} * channels);
      return Chunk::whole(near(p, q, rule.below_, rule.above_));
    }
    bool at(int x) const {
      bool holds = true;
      for (int c = 0; c < channels; ++c) {
        const int64_t i = int64_t{x} * channels + c;
        holds = holds &&
                near(simd::load<T>(candidates + i), simd::load<T>(joined + i), rule.minDelta_[c], rule.maxDelta_[c]);
      }
      return holds;
    }
  };

  Gradient(const T* minDelta, const T* maxDelta) {
    for (int c = 0; c < channels; ++c) {
      minDelta_[c] = simd::load<T>(minDelta + c);
      maxDelta_[c] = simd::load<T>(maxDelta + c);
    }
    below_ = Chunk::repeat(minDelta_);
    above_ = Chunk::repeat(maxDelta_);
  }

  Test link(const T* candidates, const T* joined) const { return {*this, candidates, joined}; }

 private:
  template <class V>
  ZVP_INLINE static auto near(V p, V q, V minDelta, V maxDelta) {
    if constexpr (std::is_same_v<T, float>) {
      const auto notBelow = p >= q - minDelta, notAbove = p <= q + maxDelta;
      return notBelow & notAbove;
    } else {
      const V below = V(simd::max(q, p) - p), above = V(simd::max(p, q) - q);
      const auto notBelow = below <= minDelta, notAbove = above <= maxDelta;
      return notBelow & notAbove;
    }
  }

  T minDelta_[channels], maxDelta_[channels];
  typename Chunk::Vector below_, above_;
};

}  // namespace zvp
