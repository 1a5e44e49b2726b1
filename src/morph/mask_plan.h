// The distinct runs of a mask, and which of them every row uses.
#pragma once

#include <algorithm>
#include <array>
#include <numeric>

#include "morph/region.h"

namespace zvp::morph {

struct MaskPlan {
  static constexpr int kMostRuns = 64, kMostUses = 512;
  struct Use {
    int row, run;
  };

  std::array<Run, kMostRuns> runs;
  std::array<Use, kMostUses> uses;  // in row-major order
  int runCount = 0, useCount = 0;
  bool fits = true;  // else the lists are not complete

  explicit MaskPlan(const StructuringElement& element) {
    // A ring row for every run and mask row is what the work buffer holds for certain.
    const int mostRuns = std::min(element.size.height, kMostRuns);
    forEachRun(element.mask, element.size, [&](int row, int first, int length) {
      const Run run = {first - element.anchor.x, length};
      const auto end = runs.begin() + runCount;
      const auto known = std::find(runs.begin(), end, run);
      fits = (known != end || runCount < mostRuns) && useCount < kMostUses;
      if (!fits) return false;
      if (known == end) runs[static_cast<size_t>(runCount++)] = run;
      uses[static_cast<size_t>(useCount++)] = {row, static_cast<int>(known - runs.begin())};
      return true;
    });
  }

  Run run(int k) const { return runs[static_cast<size_t>(k)]; }
  Use use(int k) const { return uses[static_cast<size_t>(k)]; }
  int firstRow() const { return use(0).row; }
  int lastRow() const { return use(useCount - 1).row; }
  int rows() const { return lastRow() - firstRow() + 1; }
  bool isEmpty() const { return fits && useCount == 0; }
  bool suitsRings() const { return fits && useCount > 1; }
  bool isRectangle() const { return runCount == 1 && rows() == useCount; }

  // The runs from the shortest to the longest.
  std::array<int, kMostRuns> order() const {
    std::array<int, kMostRuns> order;
    const auto end = order.begin() + runCount;
    std::iota(order.begin(), end, 0);
    std::sort(order.begin(), end, [this](int a, int b) { return run(a).length < run(b).length; });
    return order;
  }

  // The longest run that is shorter than a run and covers it twice, or kNone.
  static constexpr int kNone = -1;
  int baseOf(int k) const {
    constexpr int kShortest = 4;  // shorter runs are as cheap from the source
    const int length = run(k).length;
    int base = kNone, longest = std::max((length - 1) / 2, kShortest / 2 - 1);
    for (int other = 0; other < runCount && length >= kShortest; ++other) {
      const int shorter = run(other).length;
      if (shorter >= length || shorter <= longest) continue;
      base = other;
      longest = shorter;
    }
    return base;
  }
};

}  // namespace zvp::morph
