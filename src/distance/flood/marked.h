// How a fill grows whose pixels join by their neighbours' values: gradient, and range with a new value inside.
#pragma once

#include <string.h>

#include "distance/flood/painter.h"
#include "distance/flood/rules.h"
#include "distance/flood/stack.h"

namespace zvp::flood {

// A byte for each pixel of the region: whether it has joined.
class Marks {
 public:
  struct Test {
    using Chunk = ChunkOf<uint8_t, 1>;
    const uint8_t* row;

    ZVP_INLINE uint64_t chunk(int x) const {
      return Chunk::whole(simd::load<typename Chunk::Vector>(row + x) != typename Chunk::Vector{});
    }
    bool at(int x) const { return row[x] != 0; }
  };

  Marks(uint8_t* buffer, RoiSize roi) : bytes_(buffer), width_(static_cast<size_t>(roi.width)) {
    memset(buffer, 0, bytes(roi));
  }

  static size_t bytes(RoiSize roi) { return static_cast<size_t>(roi.width) * static_cast<size_t>(roi.height); }

  Test row(int y) const { return {bytes_ + static_cast<size_t>(y) * width_}; }
  void mark(Run run) const {
    memset(bytes_ + static_cast<size_t>(run.y) * width_ + run.left, 1, static_cast<size_t>(run.right - run.left) + 1);
  }

 private:
  uint8_t* bytes_;
  size_t width_;
};

// The region of pixels that a rule links with a neighbour that has joined. Its pixels are marked as they join and
// painted at the end: the rule sees the image as it was.
template <class T, int channels>
class MarkedRegion {
 public:
  MarkedRegion(Rows<T> image, RoiSize roi, const Near<T, channels>& rule, Marks marks)
      : image_(image),
        roi_(roi),
        rule_(rule),
        marks_(marks),
        search_(roi.width),
        pairs_(roi.width - 1),
        markSearch_(roi.width) {}

  // The run of the seed, which joins whatever its value is.
  Run start(Point seed) const { return joined(seed.y, seed.x); }

  // Calls found(run) for the runs of row y that the rule links with a pixel of `from`; the linked pixels lie `shift`
  // columns to the right of it.
  template <class Found>
  void join(Run from, int y, int shift, const Found& found) const {
    if (y < 0 || y >= roi_.height) return;
    const int end = simd::min(from.right + shift + 1, roi_.width);
    for (int x = simd::max(from.left + shift, 0); x < end;) {
      x = markSearch_.first(Not{marks_.row(y)}, x, end);
      if (x >= end) return;
      const int free = markSearch_.first(marks_.row(y), x + 1, x + simd::min(end - x, kWindow));
      x = firstLink(y, from.y, shift, x, free);
      if (x >= free) continue;
      const Run run = joined(y, x);
      found(run);
      x = run.right + 1;
    }
  }

  void paint(const Extent& extent, const T* newVal) const {
    const Painter<T, channels> painter(image_, newVal);
    const int end = extent.right + 1;
    for (int y = extent.top; y <= extent.bottom; ++y) {
      for (int x = extent.left; (x = markSearch_.first(marks_.row(y), x, end)) < end;) {
        const int past = markSearch_.first(Not{marks_.row(y)}, x, end);
        painter.paint({y, x, past - 1});
        x = past;
      }
    }
  }

 private:
  // Searches look this far at a time, so that none runs along pixels that have joined before.
  static constexpr int kWindow = 256;

  // The test of pixels of row y against those `shift` columns to their left in row fromY. Shifted rows have one pixel
  // less; position x of the test is then the pixel max(shift, 0) columns to the right.
  auto links(int y, int fromY, int shift) const {
    const T* candidates = image_.row(y) + (shift > 0 ? channels : 0);
    return rule_.test(candidates, image_.row(fromY) + (shift < 0 ? channels : 0));
  }

  int firstLink(int y, int fromY, int shift, int begin, int end) const {
    const auto& search = shift == 0 ? search_ : pairs_;
    const int offset = simd::max(shift, 0);
    return search.first(links(y, fromY, shift), begin - offset, end - offset) + offset;
  }

  ZVP_INLINE Run joined(int y, int x) const {
    const Run run{y, reachLeft(y, x), reachRight(y, x)};
    marks_.mark(run);
    return run;
  }

  int reachRight(int y, int x) const {
    for (;;) {
      const int end = simd::min(roi_.width, x + 1 + simd::min(kWindow, roi_.width - 1 - x));
      const int linked = pairs_.first(Not{links(y, y, 1)}, x, end - 1) + 1;
      const int past = markSearch_.first(marks_.row(y), x + 1, linked);
      if (past < end || end == roi_.width) return past - 1;
      x = past - 1;
    }
  }

  int reachLeft(int y, int x) const {
    for (;;) {
      const int begin = simd::max(0, x - kWindow);
      const int unlinked = pairs_.last(Not{links(y, y, -1)}, begin, x);
      const int before = markSearch_.last(marks_.row(y), unlinked + 1, x);
      if (before >= begin || begin == 0) return before + 1;
      x = begin;
    }
  }

  Rows<T> image_;
  RoiSize roi_;
  const Near<T, channels>& rule_;
  Marks marks_;
  RowSearch<ChunkOf<T, channels>> search_, pairs_;  // along rows, and along pairs of neighbours in one
  RowSearch<Marks::Test::Chunk> markSearch_;
};

// Each run that has joined lets runs of the rows above and below join.
template <class Region>
Extent growMarked(const Region& region, RunStack& stack, Point seed, bool diagonal) {
  Extent extent;
  const auto join = [&](Run run) {
    extent.count(run);
    extent.surround(run);
    stack.push(run);
  };
  constexpr int kShifts[] = {0, -1, 1};
  join(region.start(seed));
  for (Run run; stack.pop(run);)
    for (int y = run.y - 1; y <= run.y + 1; y += 2)
      for (int i = 0; i < (diagonal ? 3 : 1); ++i) region.join(run, y, kShifts[i], join);
  return extent;
}

}  // namespace zvp::flood
