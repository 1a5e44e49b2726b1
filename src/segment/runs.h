// Rows as runs of pixels that belong together, and the regions that runs of neighbouring rows make.
#pragma once

#include <string.h>

#include <bit>

#include "segment/regions.h"
#include "segment/rule.h"

namespace zvp::segment {

// One bit a pixel of a row, the word of the pixels from x on. No byte beyond the row's bits is touched.
inline uint64_t loadWord(const uint8_t* bits, int64_t x, int width) {
  if (width - x >= kWordBits) return simd::load<uint64_t>(bits + x / 8);
  uint64_t word = 0;
  memcpy(&word, bits + x / 8, static_cast<size_t>(width - x + 7) / 8);
  return word;
}

inline void storeWord(uint8_t* bits, int64_t x, int width, uint64_t word) {
  memcpy(bits + x / 8, &word, width - x >= kWordBits ? sizeof word : static_cast<size_t>(width - x + 7) / 8);
}

// The runs of an image in scan order, in a block of any alignment: their first columns, then their regions.
struct Runs {
  static constexpr int kBytesPerRun = 4 + Regions::kBytesPerRun;

  Runs(uint8_t* block, size_t most) : starts(block), regions(block + 4 * most) {}

  int start(int i) const { return simd::load<int32_t>(starts + 4 * static_cast<size_t>(i)); }
  void setStart(int i, int x) const { simd::store(starts + 4 * static_cast<size_t>(i), int32_t{x}); }

  uint8_t* starts;
  Regions regions;
};

// Cuts a row into runs, the first of index `run`, and returns the index behind the last. Each bit of `together` tells
// whether a pixel belongs to the same run as the one before.
template <class T>
int cutRow(const T* row, int width, Rule<T> rule, Runs runs, int run, uint8_t* together) {
  const auto relation = [rule](auto a, auto b) __attribute__((always_inline)) { return rule.belongTogether(a, b); };
  int start = 0;
  runs.setStart(run, 0);
  for (int64_t x = 0; x < width; x += kWordBits) {
    const uint64_t word = x == 0 ? wordOfBits(row + 1, row, width - 1, relation) << 1
                                 : wordOfBits(row + x, row + x - 1, width - x, relation);
    storeWord(together, x, width, word);
    uint64_t starts = ~word;
    if (x == 0) starts &= ~uint64_t{1};
    if (width - x < kWordBits) starts &= (uint64_t{1} << (width - x)) - 1;
    for (; starts != 0; starts &= starts - 1) {
      const int next = static_cast<int>(x) + std::countr_zero(starts);
      runs.regions.open(run, next - start);
      runs.setStart(++run, next);
      start = next;
    }
  }
  runs.regions.open(run, width - start);
  return run + 1;
}

// A row above or below another: its runs from index `run` on, and which of its pixels belong together.
struct CutRow {
  int run;
  const uint8_t* together;
};

// Unites the runs of two rows that connect anywhere. Where both runs go on, one connection is enough.
template <class T>
void uniteRows(const T* above, const T* row, int width, Rule<T> rule, Regions regions, CutRow upper, CutRow lower) {
  const auto relation = [rule](auto a, auto b) __attribute__((always_inline)) { return rule.connects(a, b); };
  uint64_t carry = 0;
  for (int64_t x = 0; x < width; x += kWordBits) {
    const uint64_t up = loadWord(upper.together, x, width), low = loadWord(lower.together, x, width);
    const uint64_t connected = wordOfBits(above + x, row + x, width - x, relation);
    uint64_t fresh = connected & ~((connected << 1 | carry) & up & low);
    for (; fresh != 0; fresh &= fresh - 1) {
      const uint64_t upToHere = fresh ^ (fresh - 1);
      regions.unite(upper.run + std::popcount(~up & upToHere) - 1, lower.run + std::popcount(~low & upToHere) - 1);
    }
    upper.run += std::popcount(~up);
    lower.run += std::popcount(~low);
    carry = connected >> (kWordBits - 1);
  }
}

}  // namespace zvp::segment
