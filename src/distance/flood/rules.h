// Which pixels join a fill: tests along a row.
#pragma once

#include <limits>

#include "distance/flood/runs.h"

namespace zvp::flood {

// Equality and range: a pixel lies within bounds.
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

// Gradient: a pixel lies within bounds about a neighbour that has joined. Given a seed, within bounds about that instead:
// range.
template <class T, int channels>
class Near {
 public:
  using Chunk = ChunkOf<T, channels>;

  // `references` has a pixel for each of the candidates, or, with a stride of 0, one for all.
  struct Test {
    using Chunk = ChunkOf<T, channels>;
    const Near& rule;
    const T *candidates, *references;
    int64_t stride;

    ZVP_INLINE uint64_t chunk(int x) const {
      const auto p = simd::load<typename Chunk::Vector>(candidates + int64_t{x} * channels);
      const auto q = simd::load<typename Chunk::Vector>(references + x * stride);
      return Chunk::whole(near(p, q, rule.below_, rule.above_));
    }
    bool at(int x) const {
      bool holds = true;
      for (int c = 0; c < channels; ++c) {
        const T p = simd::load<T>(candidates + int64_t{x} * channels + c);
        const T q = simd::load<T>(references + x * stride + c);
        holds = holds && near(p, q, rule.minDelta_[c], rule.maxDelta_[c]);
      }
      return holds;
    }
  };

  Near(const T* minDelta, const T* maxDelta, const T* seed) : Near(minDelta, maxDelta) {
    aboutSeed_ = true;
    simd::store(seeds_, Chunk::repeat(seed));
  }
  Near(const T* minDelta, const T* maxDelta) {
    for (int c = 0; c < channels; ++c) {
      minDelta_[c] = simd::load<T>(minDelta + c);
      maxDelta_[c] = simd::load<T>(maxDelta + c);
    }
    below_ = Chunk::repeat(minDelta_);
    above_ = Chunk::repeat(maxDelta_);
  }

  Test test(const T* candidates, const T* joined) const {
    return {*this, candidates, aboutSeed_ ? seeds_ : joined, aboutSeed_ ? 0 : channels};
  }

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

  bool aboutSeed_ = false;
  T minDelta_[channels], maxDelta_[channels], seeds_[Chunk::kLanes];
  typename Chunk::Vector below_, above_;
};

}  // namespace zvp::flood
