// The runs whose neighbours a fill has still to look at.
#pragma once

#include "distance/flood/runs.h"

namespace zvp::flood {

// A run, the part of the row behind it that need not be looked at again, and the way: the next row is y - direction.
struct Step {
  Run run;
  int parentLeft, parentRight, direction;
};

// A stack of runs that never holds a pixel twice; it cannot overflow.
//
// A pixel, or a run's first pixel and length, are words of six bytes, so that a run takes at most six bytes for each
// of its pixels. Runs enter when all their pixels become taken, and no pixel does twice: 6 w h bytes hold all that can
// ever wait, and the last word is written with two bytes more.
class RunStack {
 public:
  RunStack(uint8_t* buffer, int width) : bottom_(buffer), top_(buffer), width_(static_cast<uint64_t>(width)) {}

  ZVP_INLINE void push(Run run) {
    const auto first = static_cast<uint64_t>(run.y) * width_ + static_cast<uint64_t>(run.left);
    const bool single = run.left == run.right;
    if (!single) put(static_cast<uint64_t>(run.right - run.left));
    put(single ? first | kSingle : first);
  }
  ZVP_INLINE void push(Step step) { push(step.run); }

  ZVP_INLINE bool pop(Run& run) {
    if (top_ == bottom_) return false;
    const uint64_t word = take(), first = word & ~kSingle;
    const int more = (word & kSingle) != 0 ? 0 : static_cast<int>(take());
    run.y = static_cast<int>(first / width_);
    run.left = static_cast<int>(first % width_);
    run.right = run.left + more;
    return true;
  }

  // Nothing is known of the row behind the run.
  ZVP_INLINE bool pop(Step& step) {
    const int width = static_cast<int>(width_);
    step.parentLeft = width, step.parentRight = width - 1, step.direction = 1;
    return pop(step.run);
  }

 private:
  static constexpr int kWordBytes = 6;
  static constexpr uint64_t kSingle = uint64_t{1} << 47, kWord = (uint64_t{1} << 48) - 1;

  void put(uint64_t word) {
    simd::store(top_, word);
    top_ += kWordBytes;
  }
  uint64_t take() {
    top_ -= kWordBytes;
    return simd::load<uint64_t>(top_) & kWord;
  }

  uint8_t *bottom_, *top_;
  uint64_t width_;
};

// A stack of max(1, w h / 4) steps. One more, and it is empty.
class ForgetfulStack {
 public:
  ForgetfulStack(uint8_t* buffer, int width, int height)
      : bottom_(buffer),
        top_(buffer),
        end_(buffer + static_cast<size_t>(simd::max<int64_t>(1, int64_t{width} * height / 4)) * sizeof(Step)) {}

  ZVP_INLINE void push(Step step) {
    if (top_ == end_) {
      top_ = bottom_;
      return;
    }
    const auto& [run, parentLeft, parentRight, direction] = step;
    const int32_t words[] = {run.y, run.left, run.right, parentLeft, parentRight, direction};
    for (int32_t word : words) {
      simd::store(top_, word);
      top_ += sizeof word;
    }
  }
  ZVP_INLINE bool pop(Step& step) {
    if (top_ == bottom_) return false;
    top_ -= sizeof step;
    const auto word = [this](int i) { return simd::load<int32_t>(top_ + 4 * i); };
    step = {{word(0), word(1), word(2)}, word(3), word(4), word(5)};
    return true;
  }

 private:
  uint8_t *bottom_, *top_, *end_;
};

}  // namespace zvp::flood
