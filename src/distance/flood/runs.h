// Searches along one row: where a test holds first or last. A test judges a chunk of pixels at once.
#pragma once

#include <bit>
#include <concepts>

#include "simd/simd.h"

namespace zvp::flood {

// Pixels left..right of row y.
struct Run {
  int y, left, right;
};

// A register of pixels from one on. The verdict on them is a word with one bit for each element: a pixel's bit is that
// of its first element.
template <class T, int channels>
struct ChunkOf {
  static constexpr int kLanes = simd::kIntegerBytes / int{sizeof(T)};
  static constexpr int kPixels = kLanes / channels;
  static constexpr int kPixelBits = channels;
  using Vector = simd::Pack<T, kLanes>;

  static constexpr uint64_t starts() {
    uint64_t bits = 0;
    for (int i = 0; i < kPixels; ++i) bits |= uint64_t{1} << (i * kPixelBits);
    return bits;
  }

  // The pixels all of whose elements a comparison found to hold.
  template <class Comparison>
  ZVP_INLINE static uint64_t whole(Comparison c) {
    uint64_t bits = simd::maskBits(c);
    if constexpr (channels == 3) bits &= (bits >> 1) & (bits >> 2);
    return bits & starts();
  }

  // A pixel again and again; what is left of the register is not looked at.
  static Vector repeat(const T* pixel) {
    T elements[kLanes];
    for (int i = 0; i < kLanes; ++i) elements[i] = simd::load<T>(pixel + i % channels);
    return simd::load<Vector>(elements);
  }
};

// chunk(x) is the verdict on kPixels pixels from x, which reads kLanes elements; at(x) that on a single one.
template <class Test>
concept TestOfPixels = requires(const Test test, int x) {
  Test::Chunk::kPixels;
  { test.chunk(x) } -> std::same_as<uint64_t>;
  { test.at(x) } -> std::same_as<bool>;
};

// The opposite test.
template <TestOfPixels Test>
struct Not {
  using Chunk = typename Test::Chunk;
  Test test;

  ZVP_INLINE uint64_t chunk(int x) const { return ~test.chunk(x) & Chunk::starts(); }
  ZVP_INLINE bool at(int x) const { return !test.at(x); }
};
template <class Test>
Not(Test) -> Not<Test>;

// Searches rows of `width` pixels, never reading beyond their ends.
template <class Chunk>
class RowSearch {
 public:
  explicit RowSearch(int width) {
    const int64_t spare = int64_t{width} * Chunk::kPixelBits - Chunk::kLanes;
    last_ = spare >= 0 ? static_cast<int>(spare / Chunk::kPixelBits) : -1;
  }

  // The first x in begin..end-1 where the test holds, or end.
  template <TestOfPixels Test>
  ZVP_INLINE int first(Test test, int begin, int end) const {
    int x = begin;
    for (const int stop = simd::min(end, last_ + 1); x < stop; x += Chunk::kPixels)
      if (const uint64_t bits = test.chunk(x); bits != 0) return simd::min(end, x + lowest(bits));
    if (x < end && last_ >= 0 && x < last_ + Chunk::kPixels) {
      if (const uint64_t bits = test.chunk(last_) >> ((x - last_) * Chunk::kPixelBits); bits != 0)
        return simd::min(end, x + lowest(bits));
      x = last_ + Chunk::kPixels;
    }
    while (x < end && !test.at(x)) ++x;
    return simd::min(x, end);
  }

  // The last x in begin..end-1 where the test holds, or begin - 1.
  template <TestOfPixels Test>
  ZVP_INLINE int last(Test test, int begin, int end) const {
    int x = end;
    while (x > begin) {
      const int from = x - Chunk::kPixels;
      if (from >= 0 && from <= last_) {
        if (const uint64_t bits = test.chunk(from); bits != 0) return simd::max(begin - 1, from + highest(bits));
        x = from;
      } else if (from < 0 && last_ >= 0) {
        const uint64_t bits = test.chunk(0) & ((uint64_t{1} << (x * Chunk::kPixelBits)) - 1);
        return simd::max(begin - 1, bits != 0 ? highest(bits) : -1);
      } else if (test.at(--x)) {
        return x;
      }
    }
    return begin - 1;
  }

 private:
  static int lowest(uint64_t bits) { return std::countr_zero(bits) / Chunk::kPixelBits; }
  static int highest(uint64_t bits) { return (63 - std::countl_zero(bits)) / Chunk::kPixelBits; }

  int last_;  // the last pixel at which a whole register can be read; -1: there is none
};

}  // namespace zvp::flood
