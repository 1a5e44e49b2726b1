// Running extrema of rows: minimum or maximum over a run of neighbouring pixels, and across rows.
//
// Of equal values (the two zeros) the last one in row-major order of the mask is the result: the operand that stands
// later is always the second one.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <algorithm>

#include "simd/simd.h"

namespace zvp {

using simd::load, simd::store, simd::Pack;

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

template <class T, class F>
struct Cover {
  F f;

  template <int N>
  ZVP_INLINE void over(int n) const {
    if constexpr (N == 1) {
      for (int i = 0; i < n; ++i) f.template operator()<1>(i);
    } else if (n >= N) {
      int i = 0;
      for (; i <= n - N; i += N) f.template operator()<N>(i);
      if (i < n) f.template operator()<N>(n - N);
    } else {
      constexpr bool kStillARegister = N / 2 * int{sizeof(T)} >= 16;
      over<kStillARegister ? N / 2 : 1>(n);
    }
  }
};

// Applies f to packs of elements that cover a row; where they overlap, f must not care about being applied twice.
template <class T, class F>
ZVP_INLINE void coverRow(int n, F f) {
  Cover<T, F>{f}.template over<simd::lanes<T>>(n);
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

// out[i] = extremum of src[i + k * stride] for k < taps; kAdd: and of out[i] before. out and src are apart.
template <class Op, bool kAdd, int kTaps, class T>
void shortWindow(const T* src, ptrdiff_t stride, T* out, int n) {
  coverRow<T>(n, [=]<int N>(int i) {
    using V = Pack<T, N>;
    V value = load<V>(src + i);
    if constexpr (kAdd) value = Op{}(load<V>(out + i), value);
    for (int k = 1; k < kTaps; ++k) value = Op{}(value, load<V>(src + i + k * stride));
    store(out + i, value);
  });
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
    shortWindow<Op, false, 4>(src, stride, level, count);
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
    coverRow<T>(n, [=]<int N>(int i) {
      using V = Pack<T, N>;
      V value = load<V>(level + i);
      if constexpr (kAdd) value = Op{}(load<V>(out + i), value);
      for (int k = 1; k < kTaps - 1; ++k) value = Op{}(value, load<V>(level + i + k * step));
      store(out + i, Op{}(value, load<V>(level + i + last)));
    });
  }
};

// out[i] = extremum of the `length` elements src[i], src[i + stride] ...
template <class Op, bool kAdd, class T>
void slideWindow(const T* src, int stride, int length, T* out, int n) {
  constexpr int kLongestReach = LongWindow<Op, T>::kLongestReach;
  if ((int64_t{length} - 1) * stride > kLongestReach) {
    const int part = kLongestReach / stride;
    slideWindow<Op, kAdd>(src, stride, part, out, n);
    return slideWindow<Op, true>(src + ptrdiff_t{part} * stride, stride, length - part, out, n);
  }
  switch (length) {
    case 1:
      return shortWindow<Op, kAdd, 1>(src, stride, out, n);
    case 2:
      return shortWindow<Op, kAdd, 2>(src, stride, out, n);
    case 3:
      return shortWindow<Op, kAdd, 3>(src, stride, out, n);
    case 4:
      return shortWindow<Op, kAdd, 4>(src, stride, out, n);
    case 5:
      return shortWindow<Op, kAdd, 5>(src, stride, out, n);
    case 6:
      return shortWindow<Op, kAdd, 6>(src, stride, out, n);
    case 7:
      return shortWindow<Op, kAdd, 7>(src, stride, out, n);
    default:
      return LongWindow<Op, T>::template apply<kAdd>(src, stride, length, out, n);
  }
}

// Extrema over one run of the mask for the output columns x0 .. x1 - 1 of a row whose pixels outside `columns` repeat
// the nearest one. row points to column 0, out to the pixel of column x0.
template <class Op, bool kAdd, class T>
class RunFilter {
 public:
  RunFilter(Span columns, int channels) : columns_(columns), channels_(channels) {}

  void operator()(const T* row, Run run, int64_t x0, int64_t x1, T* out) const {
    const int64_t left = std::clamp(columns_.first - run.start, x0, x1);
    const int64_t right = std::clamp(columns_.end - run.start - run.length + 1, left, x1);
    if (left > x0) leftEdge(row, run, x0, left, out);
    if (right > left) {
      slideWindow<Op, kAdd>(row + (left + run.start) * channels_, channels_, run.length, out + (left - x0) * channels_,
                            static_cast<int>((right - left) * channels_));
    }
    if (x1 > right) rightEdge(row, run, right, x1, out + (right - x0) * channels_);
  }

 private:
  // Windows that begin left of the row: a growing prefix of it.
  void leftEdge(const T* row, Run run, int64_t x0, int64_t x1, T* out) const {
    for (int c = 0; c < channels_; ++c) {
      int64_t next = columns_.first;
      T value = at(row, next++, c);
      for (int64_t x = x0; x < x1; ++x) {
        for (const int64_t end = std::min(x + run.start + run.length, columns_.end); next < end; ++next)
          value = Op{}(value, at(row, next, c));
        put(out + (x - x0) * channels_ + c, value);
      }
    }
  }

  // Windows that end right of the row: a suffix of it that grows from right to left.
  void rightEdge(const T* row, Run run, int64_t x0, int64_t x1, T* out) const {
    for (int c = 0; c < channels_; ++c) {
      int64_t first = columns_.end - 1;
      T value = at(row, first, c);
      for (int64_t x = x1 - 1; x >= x0; --x) {
        for (const int64_t begin = x + run.start; first > begin;) value = Op{}(at(row, --first, c), value);
        put(out + (x - x0) * channels_ + c, value);
      }
    }
  }

  T at(const T* row, int64_t x, int c) const { return load<T>(row + x * channels_ + c); }

  static void put(T* out, T value) { store(out, kAdd ? Op{}(load<T>(out), value) : value); }

  Span columns_;
  int channels_;
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
