// How a fill grows whose pixels tell by themselves whether they join: equality, and range with a new value outside.
#pragma once

#include "distance/flood/painter.h"
#include "distance/flood/rules.h"
#include "distance/flood/stack.h"

namespace zvp::flood {

// The region of pixels within bounds. Its pixels are painted as they join, which takes them out of the bounds.
template <class T, int channels>
class PaintedRegion {
 public:
  PaintedRegion(Rows<T> image, RoiSize roi, const Bounds<T, channels>& bounds, const T* newVal)
      : image_(image), roi_(roi), bounds_(bounds), search_(roi.width), painter_(image, newVal) {}

  // The run of the seed, which joins whatever its value is.
  [[gnu::noinline]] Run start(Point seed) const { return joined(seed.y, seed.x); }

  // Calls found(run) for the runs of row y that reach into columns first..last, from left to right.
  template <class Found>
  ZVP_INLINE void join(int y, int first, int last, const Found& found) const {
    if (first > last || y < 0 || y >= roi_.height) return;
    const auto test = bounds_.test(image_.row(y));
    for (int x = first; (x = search_.first(test, x, last + 1)) <= last;) {
      const Run run = joined(y, x);
      found(run);
      if (run.right + 1 >= last) return;
      x = run.right + 2;
    }
  }

 private:
  ZVP_INLINE Run joined(int y, int x) const {
    const auto outside = Not{bounds_.test(image_.row(y))};
    const Run run{y, search_.last(outside, 0, x) + 1, search_.first(outside, x + 1, roi_.width) - 1};
    painter_.paint(run);
    return run;
  }

  Rows<T> image_;
  RoiSize roi_;
  const Bounds<T, channels>& bounds_;
  RowSearch<ChunkOf<T, channels>> search_;
  Painter<T, channels> painter_;
};

// Each run that has joined lets runs of the next row join, then those of the row behind it on both sides of the part
// that is known. One loop, so that the search is compiled once.
template <class Region, class Stack>
Extent growPainted(const Region& region, Stack& stack, RoiSize roi, Point seed, bool diagonal) {
  Extent extent;
  const Run start = region.start(seed);
  extent.count(start);
  extent.surround(start);
  if (roi.height == 1) return extent;
  stack.push({start, start.right + 1, start.right, seed.y == roi.height - 1 ? -1 : 1});
  for (Step step; stack.pop(step);) {
    const Run run = step.run;
    extent.surround(run);
    const int first = diagonal ? simd::max(run.left - 1, 0) : run.left;
    const int last = diagonal ? simd::min(run.right + 1, roi.width - 1) : run.right;
    for (int scan = 0; scan < 3; ++scan) {
      const int side = scan == 0 ? -step.direction : step.direction;
      const int from = scan == 2 ? simd::max(step.parentRight + 1, first) : first;
      const int to = scan == 1 ? simd::min(step.parentLeft - 1, last) : last;
      region.join(run.y + side, from, to, [&](Run found) {
        extent.count(found);
        stack.push({found, run.left, run.right, -side});
      });
    }
  }
  return extent;
}

}  // namespace zvp::flood
