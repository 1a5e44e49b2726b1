// Running extrema along a row. Rows may have any alignment; inputs and outputs are apart.
//
//   window<Op>(src, stride, length, add, out, n)
//       out[i] = extremum of the `length` elements src[i], src[i + stride] ... for i < n; add: and of out[i] before.
//       The work for an element grows with the logarithm of the length.
//   taps<Op, kTaps>(first, rest, step, last, out, n)
//       out[i] = extremum of kTaps elements: first[i], rest[i], rest[i + step] ... and, as the last one, rest[i + last].
//
// Op is Minimum or Maximum. Of equal values (the two zeros) the last one is the result: the operand that stands later
// is always the second one.
#pragma once

#include <stddef.h>

#include <algorithm>

#include "simd/walk.h"

namespace zvp::morph {

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

// `first` may be `out`.
template <class Op, int kTaps, class T>
void taps(const T* first, const T* rest, ptrdiff_t step, ptrdiff_t last, T* out, int n) {
  simd::coverRow<T>(
      n,
      [=]<int N>(int i) {
        using V = simd::Pack<T, N>;
        auto value = simd::load<V>(first + i);
        for (int k = 0; k < kTaps - 2; ++k) value = Op{}(value, simd::load<V>(rest + i + k * step));
        if constexpr (kTaps > 1) value = Op{}(value, simd::load<V>(rest + i + last));
        simd::store(out + i, value);
      },
      elementsToAlignment(out));
}

// The same over up to kFewTaps elements: src[i], src[i + step] ... and, as the last one, src[i + last]; add: and out[i]
// before.
inline constexpr int kFewTaps = 7;
template <class Op, class T>
ZVP_INLINE void fewTaps(const T* src, ptrdiff_t step, ptrdiff_t last, int count, bool add, T* out, int n) {
  using Taps = void (*)(const T*, const T*, ptrdiff_t, ptrdiff_t, T*, int);
  static constexpr Taps kTaps[] = {taps<Op, 1>, taps<Op, 2>, taps<Op, 3>, taps<Op, 4>,
                                   taps<Op, 5>, taps<Op, 6>, taps<Op, 7>, taps<Op, 8>};
  add ? kTaps[count](out, src, step, last, out, n) : kTaps[count - 1](src, src + step, step, last - step, out, n);
}

// Longer windows, by fours: a window of 4 w from four windows of w, the last step with overlapping windows. Works on
// blocks that stay on the stack.
template <class Op, class T>
class LongWindow {
  static constexpr int kLanes = simd::lanes<T>;
  static constexpr int kBlock = 8192 / int{sizeof(T)};  // a quarter of a first-level cache

 public:
  static constexpr int kLongestReach = kBlock / 2;  // (length - 1) * stride

  static void apply(const T* src, int stride, int length, bool add, T* out, int n) {
    const int reach = (length - 1) * stride;
    for (; n > 0; n -= kBlock - reach, src += kBlock - reach, out += kBlock - reach)
      block(src, stride, length, add, out, std::min(n, kBlock - reach));
  }

 private:
  static void block(const T* src, int stride, int length, bool add, T* out, int n) {
    alignas(64) T level[kBlock + kLanes];
    int width = 4, count = n + (length - width) * stride;  // windows that the others need
    taps<Op, 4>(src, src + stride, stride, ptrdiff_t{2} * stride, level, count);
    for (; 4 * width < length; width *= 4) {
      count -= 3 * width * stride;
      widen(level, ptrdiff_t{width} * stride, count);
    }
    const int windows = (length + width - 1) / width;  // 2 to 4
    fewTaps<Op>(level, ptrdiff_t{width} * stride, ptrdiff_t{length - width} * stride, windows, add, out, n);
  }

  // In place, upwards; whole packs, so that values behind the last one are computed too and not used.
  static void widen(T* level, ptrdiff_t step, int count) {
    simd::padRow<kLanes>(count, [=]<int N>(int i) {
      using V = simd::Pack<T, N>;
      auto value = simd::load<V>(level + i);
      for (int k = 1; k < 4; ++k) value = Op{}(value, simd::load<V>(level + i + k * step));
      simd::store(level + i, value);
    });
  }
};

// Windows that do not fit a block are taken in parts.
template <class Op, class T>
[[gnu::noinline]] void longWindow(const T* src, int stride, int length, bool add, T* out, int n) {
  const int part = std::min(length, LongWindow<Op, T>::kLongestReach / stride);
  LongWindow<Op, T>::apply(src, stride, part, add, out, n);
  for (int done = part; done < length; done += part) {
    const int first = std::min(done, length - part);  // whole parts, overlapping
    LongWindow<Op, T>::apply(src + ptrdiff_t{first} * stride, stride, part, true, out, n);
  }
}

template <class Op, class T>
ZVP_INLINE void window(const T* src, int stride, int length, bool add, T* out, int n) {
  if (length > kFewTaps) return longWindow<Op>(src, stride, length, add, out, n);
  fewTaps<Op>(src, stride, ptrdiff_t{length - 1} * stride, length, add, out, n);
}

}  // namespace zvp::morph
