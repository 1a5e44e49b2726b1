// How a fill grows, run by run: each run that has joined lets runs of the rows above and below join.
#pragma once

#include <string.h>

#include "core/rows.h"
#include "distance/flood_rules.h"
#include "distance/flood_stack.h"
#include "zvpcv/distance.h"

namespace zvp {

// Area and bounding box of the runs seen so far.
struct Extent {
  int64_t area = 0;
  int left = INT32_MAX, right = -1, top = INT32_MAX, bottom = -1;

  void count(Run run) { area += run.right - run.left + 1; }
  void surround(Run run) {
    left = simd::min(left, run.left);
    right = simd::max(right, run.right);
    top = simd::min(top, run.y);
    bottom = simd::max(bottom, run.y);
  }
};

template <class T, int channels>
class Painter {
 public:
  using Chunk = ChunkOf<T, channels>;

  Painter(Rows<T> image, const T* value) : image_(image), pattern_(Chunk::repeat(value)) {}

  void paint(Run run) const {
    T* p = image_.row(run.y) + int64_t{run.left} * channels;
    int left = run.right - run.left + 1;
    left = paintChunks<Chunk::kLanes>(p, left);
    if constexpr (Chunk::kLanes > kFew) left = paintChunks<kFew>(p, left);
    const auto pixel = simd::load<Pixel>(&pattern_);
    for (; left > 0; --left, p += channels) simd::store(p, pixel);
  }

 private:
  struct Pixel {
    T elements[channels];
  };
  static constexpr int kFew = 16 / int{sizeof(T)};

  // A store may reach into the next pixel of the run, never beyond the run.
  template <int lanes>
  ZVP_INLINE int paintChunks(T*& p, int left) const {
    constexpr int kPixels = lanes / channels, kNeeded = (lanes + channels - 1) / channels;
    const auto part = simd::load<simd::Pack<T, lanes>>(&pattern_);
    for (; left >= kNeeded; left -= kPixels, p += kPixels * channels) simd::store(p, part);
    return left;
  }

  Rows<T> image_;
  typename Chunk::Vector pattern_;
};

// The region of pixels within bounds. Its pixels are painted as they join, which takes them out of the bounds.
template <class T, int channels>
class PaintedRegion {
 public:
  using Chunk = ChunkOf<T, channels>;

  PaintedRegion(Rows<T> image, RoiSize roi, const Bounds<T, channels>& bounds, const T* newVal)
      : image_(image), roi_(roi), bounds_(bounds), search_(roi.width), painter_(image, newVal) {}

  // The run of the seed, which joins whatever its value is.
  Run start(Point seed) const { return joined(seed.y, seed.x); }

  // Calls found(run) for the runs of row y that reach into columns first..last, from left to right.
  template <class Found>
  void join(int y, int first, int last, Found found) const {
    if (y < 0 || y >= roi_.height) return;
    const auto test = bounds_.test(image_.row(y));
    for (int x = first; (x = search_.first(test, x, last + 1)) <= last;) {
      const Run run = joined(y, x);
      found(run);
      if (run.right + 1 >= last) return;
      x = run.right + 2;
    }
  }

 private:
  Run joined(int y, int x) const {
    const auto outside = Not{bounds_.test(image_.row(y))};
    const Run run{y, search_.last(outside, 0, x) + 1, search_.first(outside, x + 1, roi_.width) - 1};
    painter_.paint(run);
    return run;
  }

  Rows<T> image_;
  RoiSize roi_;
  const Bounds<T, channels>& bounds_;
  RowSearch<Chunk> search_;
  Painter<T, channels> painter_;
};

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
    const auto scan = [&](int side, int from, int to) {
      region.join(run.y + side, from, to, [&](Run found) {
        extent.count(found);
        stack.push({found, run.left, run.right, -side});
      });
    };
    scan(-step.direction, first, last);
    scan(step.direction, first, simd::min(step.parentLeft - 1, last));
    scan(step.direction, simd::max(step.parentRight + 1, first), last);
  }
  return extent;
}

// A byte for each pixel of the region: whether it has joined.
class Marks {
 public:
  using Chunk = ChunkOf<uint8_t, 1>;

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
template <class T, int channels, class Rule>
class MarkedRegion {
 public:
  using Chunk = ChunkOf<T, channels>;

  MarkedRegion(Rows<T> image, RoiSize roi, const Rule& rule, Marks marks)
      : image_(image),
        roi_(roi),
        rule_(rule),
        marks_(marks),
        search_(roi.width),
        pairs_(roi.width - 1),
        markSearch_(roi.width) {}

  Run start(Point seed) const { return joined(seed.y, seed.x); }

  // Calls found(run) for the runs of row y that the rule links with a pixel of `from`; the linked pixels lie `shift`
  // columns to the right of it.
  template <class Found>
  void join(Run from, int y, int shift, Found found) const {
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
    return rule_.link(candidates, image_.row(fromY) + (shift < 0 ? channels : 0));
  }

  int firstLink(int y, int fromY, int shift, int begin, int end) const {
    if (shift == 0) return search_.first(links(y, fromY, 0), begin, end);
    const int offset = simd::max(shift, 0);
    return pairs_.first(links(y, fromY, shift), begin - offset, end - offset) + offset;
  }

  Run joined(int y, int x) const {
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
  const Rule& rule_;
  Marks marks_;
  RowSearch<Chunk> search_, pairs_;
  RowSearch<Marks::Chunk> markSearch_;
};

template <class Region>
Extent growMarked(const Region& region, RunStack& stack, Point seed, bool diagonal) {
  Extent extent;
  const auto join = [&](Run run) {
    extent.count(run);
    extent.surround(run);
    stack.push(run);
  };
  join(region.start(seed));
  for (Run run; stack.pop(run);) {
    for (int y = run.y - 1; y <= run.y + 1; y += 2) {
      region.join(run, y, 0, join);
      if (!diagonal) continue;
      region.join(run, y, -1, join);
      region.join(run, y, 1, join);
    }
  }
  return extent;
}

}  // namespace zvp
