// Running extrema of rows: minimum or maximum over a run of neighbouring pixels, and across rows.
//
// Of equal values (the two zeros) the last one in row-major order of the mask is the result: the operand that stands
// later is always the second one.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <algorithm>
#include <iterator>

#include "simd/walk.h"

namespace zvp {

using simd::coverRow, simd::load, simd::store, simd::Pack;

struct Minimum {
  template <class V>
  ZVP_INLINE V operator()(V a, V b) const {
    return simd::min(a, b);
  }
};

struct Maximum {
  template <class V>
  ZVP_INLINE V operator()(V a, V b) const {
    return simd::max(a, b);
  }
};

// Elements from p on to the next address that is a multiple of a register.
template <class T>
int elementsToAlignment(const T* p) {
  constexpr uintptr_t kBytes = simd::lanes<T> * sizeof(T);
  return static_cast<int>((0 - reinterpret_cast<uintptr_t>(p)) % kBytes / sizeof(T));
}

template <class Op, class V>
ZVP_INLINE V reduce(V a) {
  return a;
}
template <class Op, class V, class... W>
ZVP_INLINE V reduce(V a, V b, W... rest) {
  return reduce<Op, V>(Op{}(a, b), rest...);
}

// Columns of a row, or rows of an image, that exist.
struct Span {
  int64_t first, end;

  int64_t clamp(int64_t x) const { return std::clamp(x, first, end - 1); }
};

// A run of members of the mask; start is relative to the output pixel.
struct Run {
  int start, length;

  bool operator==(const Run&) const = default;
};

// out[i] = extremum of src[i + k * step] for k < taps; kAdd: and of out[i] before. out and src are apart.
template <class Op, bool kAdd, int kTaps, class T>
void shortWindow(const T* src, int step, int, T* out, int n) {
  const ptrdiff_t stride = step;
  coverRow<T>(
      n,
      [=]<int N>(int i) {
        using V = Pack<T, N>;
        V value = load<V>(src + i);
        if constexpr (kAdd) value = Op{}(load<V>(out + i), value);
        for (int k = 1; k < kTaps; ++k) value = Op{}(value, load<V>(src + i + k * stride));
        store(out + i, value);
      },
      elementsToAlignment(out));
}

// Longer windows, by fours: a window of 4 w from four windows of w, the last step with overlapping windows. Works on
// blocks that stay on the stack.
template <class Op, class T>
class LongWindow {
  static constexpr int kLanes = simd::lanes<T>;
  static constexpr int kBlock = 8192 / int{sizeof(T)};

 public:
  static constexpr int kLongestReach = kBlock / 2;  // (length - 1) * stride

  template <bool kAdd>
  static void apply(const T* src, int stride, int length, T* out, int n) {
    const int reach = (length - 1) * stride;
    for (int i = 0; i < n; i += kBlock - reach)
      block<kAdd>(src + i, stride, length, out + i, std::min(n - i, kBlock - reach));
  }

 private:
  template <bool kAdd>
  static void block(const T* src, int stride, int length, T* out, int n) {
    alignas(64) T level[kBlock + kLanes];
    int count = n + (length - 4) * stride;  // windows of 4 that the others need
    shortWindow<Op, false, 4>(src, stride, 4, level, count);
    int width = 4;
    for (; 4 * width < length; width *= 4) {
      count -= 3 * width * stride;
      widen(level, width * stride, count);
    }
    const ptrdiff_t step = width * stride, last = (length - width) * stride;
    if (length <= 2 * width) return combine<kAdd, 2>(level, step, last, out, n);
    if (length <= 3 * width) return combine<kAdd, 3>(level, step, last, out, n);
    combine<kAdd, 4>(level, step, last, out, n);
  }

  // In place, upwards; whole packs, so that values behind the last one are computed too and not used.
  static void widen(T* level, ptrdiff_t step, int count) {
    using V = Pack<T, kLanes>;
    for (int i = 0; i < count; i += kLanes) {
      const T* p = level + i;
      store(level + i, reduce<Op>(load<V>(p), load<V>(p + step), load<V>(p + 2 * step), load<V>(p + 3 * step)));
    }
  }

  template <bool kAdd, int kTaps>
  static void combine(const T* level, ptrdiff_t step, ptrdiff_t last, T* out, int n) {
    coverRow<T>(
        n,
        [=]<int N>(int i) {
          using V = Pack<T, N>;
          V value = load<V>(level + i);
          if constexpr (kAdd) value = Op{}(load<V>(out + i), value);
          for (int k = 1; k < kTaps - 1; ++k) value = Op{}(value, load<V>(level + i + k * step));
          store(out + i, Op{}(value, load<V>(level + i + last)));
        },
        elementsToAlignment(out));
  }
};

// out[i] = extremum of the `length` elements src[i], src[i + stride] ...
template <class T>
using WindowKernel = void (*)(const T* src, int stride, int length, T* out, int n);

// Windows of any length: those that do not fit a block are taken in parts.
template <class Op, bool kAdd, class T>
void anyWindow(const T* src, int stride, int length, T* out, int n) {
  const int part = LongWindow<Op, T>::kLongestReach / stride;
  if (length <= part) return LongWindow<Op, T>::template apply<kAdd>(src, stride, length, out, n);
  LongWindow<Op, T>::template apply<kAdd>(src, stride, part, out, n);
  for (int done = part; done < length; done += part) {
    const int first = std::min(done, length - part);  // whole parts, overlapping
    LongWindow<Op, T>::template apply<true>(src + ptrdiff_t{first} * stride, stride, part, out, n);
  }
}

template <class Op, bool kAdd, class T>
WindowKernel<T> windowKernel(int length) {
  constexpr WindowKernel<T> kShort[] = {shortWindow<Op, kAdd, 1, T>, shortWindow<Op, kAdd, 2, T>,
                                        shortWindow<Op, kAdd, 3, T>, shortWindow<Op, kAdd, 4, T>,
                                        shortWindow<Op, kAdd, 5, T>, shortWindow<Op, kAdd, 6, T>,
                                        shortWindow<Op, kAdd, 7, T>};
  return length <= int{std::size(kShort)} ? kShort[length - 1] : anyWindow<Op, kAdd, T>;
}

// Extrema over one run of the mask for the output columns x0 .. x1 - 1 of rows whose pixels outside `columns` repeat
// the nearest one.
template <class Op, bool kAdd, class T>
class RunFilter {
 public:
  RunFilter() = default;
  RunFilter(Span columns, int channels, Run run, int64_t x0, int64_t x1)
      : columns_(columns), x0_(x0), x1_(x1), run_(run), channels_(channels) {
    left_ = std::clamp(columns.first - run.start, x0, x1);
    right_ = std::clamp(columns.end - run.start - run.length + 1, left_, x1);
    kernel_ = windowKernel<Op, kAdd, T>(run.length);
    inside_ = static_cast<int>((right_ - left_) * channels);
  }

  // row points to column 0, out to the pixel of column x0.
  void operator()(const T* row, T* out) const {
    if (left_ > x0_) leftEdge(row, out);
    if (inside_ > 0)
      kernel_(row + (left_ + run_.start) * channels_, channels_, run_.length, out + (left_ - x0_) * channels_, inside_);
    if (x1_ > right_) rightEdge(row, out);
  }

 private:
  // Windows that begin left of the row: a growing prefix of it.
  void leftEdge(const T* row, T* out) const {
    for (int c = 0; c < channels_; ++c) {
      const T* next = row + columns_.first * channels_ + c;
      const T* const rowEnd = row + columns_.end * channels_ + c;
      const T* windowEnd = row + (x0_ + run_.start + run_.length) * channels_ + c;
      T value = load<T>(next);
      next += channels_;
      T* o = out + c;
      for (int64_t x = x0_; x < left_; ++x, o += channels_, windowEnd += channels_) {
        for (; next < windowEnd && next < rowEnd; next += channels_) value = Op{}(value, load<T>(next));
        put(o, value);
      }
    }
  }

  // Windows that end right of the row: a suffix of it that grows from right to left.
  void rightEdge(const T* row, T* out) const {
    for (int c = 0; c < channels_; ++c) {
      const T* first = row + (columns_.end - 1) * channels_ + c;
      const T* windowBegin = row + (x1_ - 1 + run_.start) * channels_ + c;
      T value = load<T>(first);
      T* o = out + (x1_ - 1 - x0_) * channels_ + c;
      for (int64_t x = x1_ - 1; x >= right_; --x, o -= channels_, windowBegin -= channels_) {
        while (first > windowBegin) value = Op{}(load<T>(first -= channels_), value);
        put(o, value);
      }
    }
  }

  static void put(T* out, T value) { store(out, kAdd ? Op{}(load<T>(out), value) : value); }

  Span columns_;
  int64_t x0_, x1_, left_, right_;  // windows of left_ .. right_ - 1 lie inside the row
  WindowKernel<T> kernel_;
  Run run_;
  int channels_, inside_;
};

// out = extremum of `count` rows; kAdd: and of out before.
template <class Op, bool kAdd, class T>
void combineRows(const T* const* rows, int count, T* out, int n) {
  coverRow<T>(n, [=]<int N>(int i) {
    using V = Pack<T, N>;
    V value = load<V>(rows[0] + i);
    if constexpr (kAdd) value = Op{}(load<V>(out + i), value);
    for (int k = 1; k < count; ++k) value = Op{}(value, load<V>(rows[k] + i));
    store(out + i, value);
  });
}

// kOutputs rows at once: output g is the extremum of the rows g .. g + height - 1. What all of them need is computed
// once, what stands above it as suffixes, what stands below it as prefixes. kHeight is the height where it is known.
template <class Op, int kOutputs, int kHeight, class T>
void shareRows(const T* const* rows, int height, T* const* outputs, int n) {
  const T *above[kOutputs], *below[kOutputs], *middle[kHeight > 0 ? kHeight : 1] = {};
  T* out[kOutputs];
  for (int g = 0; g < kOutputs; ++g) {
    above[g] = rows[g];
    below[g] = rows[height - 1 + g];
    out[g] = outputs[g];
  }
  for (int k = 0; k < kHeight; ++k) middle[k] = rows[k];
  coverRow<T>(n, [=]<int N>(int i) {
    using V = Pack<T, N>;
    V suffix[kOutputs];
    suffix[kOutputs - 1] = load<V>(above[kOutputs - 1] + i);
    if constexpr (kHeight > 0) {
      for (int k = kOutputs; k < kHeight; ++k)
        suffix[kOutputs - 1] = Op{}(suffix[kOutputs - 1], load<V>(middle[k] + i));
    } else {
      for (int k = kOutputs; k < height; ++k) suffix[kOutputs - 1] = Op{}(suffix[kOutputs - 1], load<V>(rows[k] + i));
    }
    for (int g = kOutputs - 2; g >= 0; --g) suffix[g] = Op{}(load<V>(above[g] + i), suffix[g + 1]);
    store(out[0] + i, suffix[0]);
    V prefix = suffix[0];
    for (int g = 1; g < kOutputs; ++g) {
      const V row = load<V>(below[g] + i);
      prefix = g == 1 ? row : Op{}(prefix, row);
      store(out[g] + i, Op{}(suffix[g], prefix));
    }
  });
}

}  // namespace zvp
