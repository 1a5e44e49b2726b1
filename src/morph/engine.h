// Erosion and dilation of a region: every output pixel is the extremum of the source pixels under the mask.
//
// The mask is a list of runs. Where there are few distinct ones, every source row is filtered once with each of them
// (a ring of such rows stays in the work buffer) and every output row combines rows of the ring; rows have no borders,
// so that they fit the buffer. Else every output row filters its source rows anew, run by run.
#pragma once

#include <array>

#include "core/carver.h"
#include "core/rows.h"
#include "filter/border.h"
#include "morph/filter.h"
#include "morph/spec.h"
#include "morph/window.h"

namespace zvp {

// Output rows that are computed at once, at most; no more than the mask has rows.
inline constexpr int kMostOutputs = 8;

// The distinct runs of a mask and which of them every row uses, in row-major order.
struct MaskPlan {
  static constexpr int kMostRuns = 64, kMostUses = 512;
  struct Use {
    int row, run;
  };

  std::array<Run, kMostRuns> runs;
  std::array<Use, kMostUses> uses;
  int runCount = 0, useCount = 0;
  bool fits = true;  // else the lists are not complete

  explicit MaskPlan(const StructuringElement& element) {
    // A ring row for every run and mask row is what the work buffer holds for certain.
    const int mostRuns = std::min(element.size.height, kMostRuns);
    forEachRun(element.mask, element.size, [&](int row, int first, int length) {
      const auto end = runs.begin() + runCount;
      const auto run = std::find(runs.begin(), end, Run{first - element.anchor.x, length});
      fits = (run != end || runCount < mostRuns) && useCount < kMostUses;
      if (!fits) return false;
      if (run == end) runs[static_cast<size_t>(runCount++)] = {first - element.anchor.x, length};
      uses[static_cast<size_t>(useCount++)] = {row, static_cast<int>(run - runs.begin())};
      return true;
    });
  }

  int firstRow() const { return uses[0].row; }
  int lastRow() const { return uses[static_cast<size_t>(useCount) - 1].row; }
  int rows() const { return lastRow() - firstRow() + 1; }
  bool isEmpty() const { return fits && useCount == 0; }
  bool suitsRings() const { return fits && useCount > 1; }
  bool isRectangle() const { return runCount == 1 && rows() == useCount; }
};

// Positions of image rows in a ring, for rows of ascending index; rows that do not exist are the nearest ones.
class RingCursor {
 public:
  RingCursor(Span rows, int depth, int64_t row) : rows_(rows), depth_(depth), row_(rows.clamp(row)) {
    position_ = static_cast<int>(static_cast<uint32_t>(row_ - rows.first) % static_cast<uint32_t>(depth));
  }

  int at(int64_t row) {
    const int64_t next = rows_.clamp(row);
    position_ += static_cast<int>(next - row_);
    if (position_ >= depth_) position_ -= depth_;
    row_ = next;
    return position_;
  }

 private:
  Span rows_;
  int depth_, position_;
  int64_t row_;
};

// Part of the columns; the whole height.
struct Strip {
  int64_t x0, x1;
};

// Extrema over one run for the columns of a strip: from the rows that a shorter run of at least half the length gave,
// where there is one and its results reach, else from the source.
template <class Op, class T>
class RunStep {
 public:
  static constexpr int kNoBase = -1;

  RunStep() = default;
  RunStep(Span columns, int channels, const MaskPlan& plan, int run, Strip strip)
      : run_(run), base_(baseOf(plan, run)) {
    const Run r = plan.runs[static_cast<size_t>(run)];
    int64_t from = strip.x1, to = strip.x1;
    if (base_ != kNoBase) {
      const Run b = plan.runs[static_cast<size_t>(base_)];
      const int first = r.start - b.start, last = first + r.length - b.length;
      from = std::clamp(strip.x0 - first, strip.x0, strip.x1);
      to = std::clamp(strip.x1 - last, from, strip.x1);
      first_ = ptrdiff_t{first} * channels;
      last_ = ptrdiff_t{last} * channels;
    }
    begin_ = static_cast<ptrdiff_t>((from - strip.x0) * channels);
    end_ = static_cast<ptrdiff_t>((to - strip.x0) * channels);
    before_ = RunFilter<Op, false, T>(columns, channels, r, strip.x0, from);
    after_ = RunFilter<Op, false, T>(columns, channels, r, to, strip.x1);
  }

  int run() const { return run_; }
  int base() const { return base_; }

  void operator()(const T* row, const T* base, T* out) const {
    before_(row, out);
    if (base_ == kNoBase) return;
    const ptrdiff_t first = first_, last = last_;
    const T* from = base + begin_;
    T* to = out + begin_;
    coverRow<T>(
        static_cast<int>(end_ - begin_),
        [=]<int N>(int i) {
          using V = Pack<T, N>;
          store(to + i, Op{}(load<V>(from + first + i), load<V>(from + last + i)));
        },
        elementsToAlignment(to));
    after_(row, out + end_);
  }

 private:
  // The longest run that is shorter and covers this one twice; short runs are as cheap from the source.
  static int baseOf(const MaskPlan& plan, int run) {
    constexpr int kShortest = 4;
    const int length = plan.runs[static_cast<size_t>(run)].length;
    int base = kNoBase, longest = std::max((length - 1) / 2, kShortest / 2 - 1);
    for (int k = 0; k < plan.runCount && length >= kShortest; ++k) {
      const int other = plan.runs[static_cast<size_t>(k)].length;
      if (other >= length || other <= longest) continue;
      base = k;
      longest = other;
    }
    return base;
  }

  RunFilter<Op, false, T> before_, after_;
  ptrdiff_t first_ = 0, last_ = 0;  // of the base's results: elements from the output
  ptrdiff_t begin_ = 0, end_ = 0;   // elements that come from the base
  int run_ = 0, base_ = kNoBase;
};

// The region that a call filters and the rows and columns that exist.
struct Region {
  RoiSize roi;
  Span rows, columns;

  Region(RoiSize size, BorderType border, const StructuringElement& e) : roi(size) {
    const AxisBorder vertical = verticalBorder(border), horizontal = horizontalBorder(border);
    rows = span(size.height, e.anchor.y, e.bottomExtent(), vertical);
    columns = span(size.width, e.anchor.x, e.rightExtent(), horizontal);
  }

 private:
  static Span span(int extent, int before, int after, AxisBorder border) {
    return {border.beforeInMemory ? -int64_t{before} : 0, int64_t{extent} + (border.afterInMemory ? after : 0)};
  }
};

// Source rows that are read where they are.
template <class T>
struct PlainSource {
  Rows<const T> image;

  static constexpr int kMostColumns = INT32_MAX;
  int64_t workBytes(int64_t, const StructuringElement&) const { return 0; }
  void begin(Strip, const Region&, const StructuringElement&, uint8_t*) {}
  const T* row(int64_t y) { return image.row(y); }
};

// Output rows that are written where they are.
template <class T>
struct PlainSink {
  Rows<T> image;
  int channels;

  void begin(Strip strip) { offset = strip.x0 * channels; }
  T* row(int64_t y) { return image.row(y) + offset; }
  void commit(int64_t) {}
  void finish() {}

  int64_t offset = 0;
};

// Output rows that a RowWriter takes from the work buffer, `delay` rows late: not before no later output row reads the
// source there.
template <class T>
struct BufferedSink {
  RowWriter<T> writer;
  int channels;
  int64_t width, height, delay;
  int slots;  // more than delay, and enough for the rows that are computed at once
  uint8_t* rows;

  void begin(Strip s) { strip = s; }
  T* row(int64_t y) {
    constexpr int kHalfLine = 32;
    return reinterpret_cast<T*>(rows + y % slots * roundUp(width * channels * int64_t{sizeof(T)}, kHalfLine));
  }
  void commit(int64_t y) {
    if (y >= delay) flush(y - delay);
  }
  void finish() {
    for (int64_t y = std::max<int64_t>(height - delay, 0); y < height; ++y) flush(y);
  }

  Strip strip = {};

 private:
  void flush(int64_t y) { writer(y, strip.x0 * channels, row(y), static_cast<int>((strip.x1 - strip.x0) * channels)); }
};

template <class T, class Op, class Source, class Sink>
class Engine {
 public:
  Engine(Source source, Sink sink, const Region& region, const StructuringElement& element, int channels, uint8_t* work)
      : source_(source), sink_(sink), region_(region), element_(element), channels_(channels), work_(work) {}

  // One output row after the other, run by run.
  void runDirect(int64_t widest) {
    widest = std::min<int64_t>(widest, Source::kMostColumns);
    for (int64_t x0 = 0; x0 < region_.roi.width; x0 += widest) {
      begin({x0, std::min<int64_t>(x0 + widest, region_.roi.width)}, work_);
      for (int64_t y = 0; y < region_.roi.height; ++y) directRow(y);
      sink_.finish();
    }
  }

  // With a ring of filtered rows for every distinct run.
  void runRings(const MaskPlan& plan, bool inPlace) {
    const int outputs = outputsAtOnce(plan);
    const bool rectangle = plan.isRectangle();
    // In place a row is filtered before it is overwritten, also where all members lie above it.
    ahead_ = std::max(plan.lastRow() - element_.anchor.y, inPlace ? 0 : INT32_MIN);
    depth_ = ahead_ + element_.anchor.y - plan.firstRow() + outputs;
    const int64_t ringRows = int64_t{depth_} * plan.runCount;
    const int64_t widest = inPlace ? region_.roi.width : stripWidth(ringRows);
    for (int64_t x0 = 0; x0 < region_.roi.width; x0 += widest) {
      const Strip strip = {x0, std::min(x0 + widest, region_.roi.width + int64_t{0})};
      placeRing(strip, ringRows, outputs, plan.rows());
      planSteps(plan);
      const int64_t top = plan.firstRow() - element_.anchor.y;
      int64_t next = region_.rows.clamp(top);
      RingCursor filtered(region_.rows, depth_, top), window = filtered;
      for (int64_t y = 0; y < region_.roi.height;) {
        const int count = region_.roi.height - y >= outputs ? outputs : 1;
        for (const int64_t last = region_.rows.clamp(y + count - 1 + ahead_); next <= last; ++next)
          filterRow(plan, next, filtered.at(next));
        window.at(y + top);
        if (rectangle) {
          rectangleRows(plan, y, count, window);
        } else {
          combinedRow(plan, y, window);
        }
        for (int g = 0; g < count; ++g) sink_.commit(y + g);
        y += count;
      }
      sink_.finish();
    }
  }

 private:
  // Larger rings are split into strips, so that they stay in the second-level cache; seams cost more than the first
  // level gains.
  static constexpr int64_t kCacheBytes = 192 * 1024;

  int outputsAtOnce(const MaskPlan& plan) const {
    const int rows = plan.isRectangle() ? plan.rows() : 1;
    return rows >= 8 ? 8 : rows >= 4 ? 4 : rows >= 2 ? 2 : 1;
  }

  int64_t pixelBytes() const { return channels_ * int64_t{sizeof(T)}; }

  int64_t stripWidth(int64_t ringRows) const {
    constexpr int64_t kLeastBytes = 512, kLine = 64;
    const int64_t cached = std::max(kCacheBytes / ringRows, kLeastBytes) / kLine * kLine / pixelBytes();
    const int64_t widest = std::min<int64_t>(std::min<int64_t>(element_.maxRoiWidth, Source::kMostColumns), cached);
    return std::max<int64_t>(std::min<int64_t>(widest, region_.roi.width), 1);
  }

  void begin(Strip strip, uint8_t* sourceWork) {
    strip_ = strip;
    source_.begin(strip, region_, element_, sourceWork);
    sink_.begin(strip);
  }

  void placeRing(Strip strip, int64_t ringRows, int outputs, int rows) {
    constexpr int kLine = 64, kHalfLine = 32;
    const int64_t width = strip.x1 - strip.x0, bytes = width * pixelBytes();
    Carver parts(work_);
    pointers_ = parts.take<const T*>(static_cast<size_t>(rows + outputs), sizeof(void*));
    begin(strip, parts.take<uint8_t>(static_cast<size_t>(source_.workBytes(width, element_)), 1));
    stride_ = roundUp(bytes, kLine);
    if (stride_ * ringRows > ringBytes(element_.maxRoiWidth, element_.size, static_cast<int>(pixelBytes())))
      stride_ = roundUp(bytes, kHalfLine);
    ring_ = parts.take<uint8_t>(0, kLine);
  }

  T* ringRow(int run, int position) const {
    return reinterpret_cast<T*>(ring_ + (int64_t{run} * depth_ + position) * stride_);
  }

  int elements() const { return static_cast<int>((strip_.x1 - strip_.x0) * channels_); }

  void filterRow(const MaskPlan& plan, int64_t y, int position) {
    const T* row = source_.row(y);
    for (int k = 0; k < plan.runCount; ++k) {
      const auto& step = steps_[static_cast<size_t>(k)];
      step(row, ringRow(step.base(), position), ringRow(step.run(), position));
    }
  }

  // Shorter runs first.
  void planSteps(const MaskPlan& plan) {
    const auto length = [&plan](int run) { return plan.runs[static_cast<size_t>(run)].length; };
    std::array<int, MaskPlan::kMostRuns> order;
    for (int k = 0; k < plan.runCount; ++k) order[static_cast<size_t>(k)] = k;
    std::sort(order.begin(), order.begin() + plan.runCount, [&](int a, int b) { return length(a) < length(b); });
    for (size_t k = 0; k < static_cast<size_t>(plan.runCount); ++k)
      steps_[k] = RunStep<Op, T>(region_.columns, channels_, plan, order[k], strip_);
  }

  // The cursor stands at the first row of the mask for output row y.
  void rectangleRows(const MaskPlan& plan, int64_t y, int count, RingCursor cursor) {
    const int64_t top = y + plan.firstRow() - element_.anchor.y;
    const int height = plan.rows();
    for (int k = 0; k < height + count - 1; ++k) pointers_[k] = ringRow(0, cursor.at(top + k));
    T* outputs[kMostOutputs];
    for (int g = 0; g < count; ++g) outputs[g] = sink_.row(y + g);
    const int n = elements();
    if (count == 8) {
      shareRows<Op, 8, 0>(pointers_, height, outputs, n);
    } else if (count == 4) {
      height == 5 ? shareRows<Op, 4, 5>(pointers_, height, outputs, n)
                  : shareRows<Op, 4, 0>(pointers_, height, outputs, n);
    } else if (count == 2) {
      height == 3 ? shareRows<Op, 2, 3>(pointers_, height, outputs, n)
                  : shareRows<Op, 2, 0>(pointers_, height, outputs, n);
    } else {
      combineRows<Op, false>(pointers_, height, outputs[0], n);
    }
  }

  void combinedRow(const MaskPlan& plan, int64_t y, RingCursor cursor) {
    constexpr int kMostRows = 64;
    const T* rows[kMostRows];
    T* out = sink_.row(y);
    const int64_t top = y - element_.anchor.y;
    int used = 0, done = 0;
    for (int k = 0; k < plan.useCount; ++k) {
      const MaskPlan::Use use = plan.uses[static_cast<size_t>(k)];
      rows[used++] = ringRow(use.run, cursor.at(top + use.row));
      if (used < kMostRows && k + 1 < plan.useCount) continue;
      done++ == 0 ? combineRows<Op, false>(rows, used, out, elements())
                  : combineRows<Op, true>(rows, used, out, elements());
      used = 0;
    }
  }

  void directRow(int64_t y) {
    T* out = sink_.row(y);
    bool first = true;
    forEachRun(element_.mask, element_.size, [&](int maskRow, int firstColumn, int length) {
      const T* row = source_.row(region_.rows.clamp(y + maskRow - element_.anchor.y));
      const Run run = {firstColumn - element_.anchor.x, length};
      first ? RunFilter<Op, false, T>(region_.columns, channels_, run, strip_.x0, strip_.x1)(row, out)
            : RunFilter<Op, true, T>(region_.columns, channels_, run, strip_.x0, strip_.x1)(row, out);
      first = false;
      return true;
    });
    sink_.commit(y);
  }

  Source source_;
  Sink sink_;
  const Region& region_;
  const StructuringElement& element_;
  int channels_;
  uint8_t* work_;
  Strip strip_ = {};
  const T** pointers_ = nullptr;
  uint8_t* ring_ = nullptr;
  int64_t stride_ = 0;
  int depth_ = 0, ahead_ = 0;
  std::array<RunStep<Op, T>, MaskPlan::kMostRuns> steps_;  // of the strip
};

}  // namespace zvp
