// A pass of the chamfer transform over integer images, row by row.
//
// Saturating sums associate, so that the chain of left neighbours in a row, d[x] = min(u[x], d[x-1] + a), is a prefix
// minimum: d[x] = min over k of u[x-k] + k a, in logarithmically many steps inside a register.
#pragma once

#include "distance/chamfer.h"

namespace zvp::distance {

template <Kernel kernel, Pass pass, class T>
class RowRelaxer {
 public:
  RowRelaxer(int width, Weights<T> weights) : width_(width), weights_(weights) {
    for (int i = 0; i < kLanes; ++i) ramp_[i] = times(pass == Pass::kForward ? i + 1 : kLanes - i);
  }

  // Lowers a row by its finished neighbours: the row above, and the one above that. Null: there is none.
  void relax(T* row, const T* above, const T* above2) const {
    Lines lines{row, above, above2, kFarthest<T>, 0};
    for (; lines.done < kReach && lines.done < width_; ++lines.done) relaxPixel(lines);
    relaxPacks<kLanes>(lines);
    for (; lines.done < width_; ++lines.done) relaxPixel(lines);
  }

 private:
  static constexpr int kReach = kernel == Kernel::k3x3 ? 1 : 2;
  static constexpr int kLanes = simd::lanes<T>, kFewestLanes = 16 / int{sizeof(T)};

  struct Lines {
    T* row;
    const T *above, *above2;
    T left;    // the last finished pixel
    int done;  // pixels, counted in the direction of the pass
  };

  T times(int steps) const { return static_cast<T>(simd::min<int64_t>(int64_t{weights_.a} * steps, kFarthest<T>)); }

  // The column of a pack, or of a pixel, that starts after `done` pixels.
  int column(int done, int n) const { return pass == Pass::kForward ? done : width_ - done - n; }

  T at(const T* row, int x) const {
    return row != nullptr && x >= 0 && x < width_ ? simd::load<T>(row + x) : kFarthest<T>;
  }

  void relaxPixel(Lines& lines) const {
    const int x = column(lines.done, 1);
    const auto least = [&](const T* row, int distance) {
      return simd::min(at(row, x - distance), at(row, x + distance));
    };
    T d = simd::min(at(lines.row, x), plus(lines.left, weights_.a));
    d = simd::min(d, plus(at(lines.above, x), weights_.a));
    d = simd::min(d, plus(least(lines.above, 1), weights_.b));
    if constexpr (kernel == Kernel::k5x5)
      d = simd::min(d, plus(simd::min(least(lines.above, 2), least(lines.above2, 1)), weights_.c));
    simd::store(lines.row + x, d);
    lines.left = d;
  }

  // All pixels but those whose neighbours may lie outside. The last pack overlaps the one before: to lower a finished
  // pixel again changes nothing. As a coverRow, which would test for every pack whether it follows the one before, this
  // takes 1.4 times as long.
  template <int N>
  void relaxPacks(Lines& lines) const {
    const int end = width_ - kReach;
    if (end < kReach + N) {
      if constexpr (N > kFewestLanes) relaxPacks<N / 2>(lines);
      return;
    }
    for (; lines.done <= end - N; lines.done += N) relaxPack<N>(lines);
    if (lines.done == end) return;
    lines.done = end - N;
    lines.left = simd::load<T>(lines.row + column(lines.done - 1, 1));
    relaxPack<N>(lines);
    lines.done = end;
  }

  template <int N>
  ZVP_INLINE void relaxPack(Lines& lines) const {
    using V = simd::Pack<T, N>;
    const int x = column(lines.done, N);
    V v = simd::load<V>(lines.row + x);
    if (lines.above != nullptr) v = simd::min(v, fromAbove<V>(lines.above + x));
    if constexpr (kernel == Kernel::k5x5)
      if (lines.above2 != nullptr) v = simd::min(v, plus(leastBeside<V, 1>(lines.above2 + x), weights_.c));
    v = alongRow<1>(v);
    const T last = v[pass == Pass::kForward ? N - 1 : 0];
    const V ramp = simd::load<V>(pass == Pass::kForward ? ramp_ : ramp_ + kLanes - N);
    v = simd::min(v, simd::addSaturated(simd::broadcast<T, N>(lines.left), ramp));
    lines.left = simd::min(last, plus(lines.left, times(N)));
    simd::store(lines.row + x, v);
  }

  template <class V, int distance>
  ZVP_INLINE static V leastBeside(const T* p) {
    return simd::min(simd::load<V>(p - distance), simd::load<V>(p + distance));
  }

  template <class V>
  ZVP_INLINE V fromAbove(const T* above) const {
    const V least = simd::min(plus(simd::load<V>(above), weights_.a), plus(leastBeside<V, 1>(above), weights_.b));
    if constexpr (kernel == Kernel::k3x3) return least;
    return simd::min(least, plus(leastBeside<V, 2>(above), weights_.c));
  }

  // Lowers each element by those up to `steps` before it, then up to twice as many, until the pack is done.
  template <int steps, class V>
  ZVP_INLINE V alongRow(V v) const {
    const V none = simd::broadcast<T, simd::laneCount<V>>(kFarthest<T>);
    V earlier;
    if constexpr (pass == Pass::kForward) {
      earlier = simd::slideUp<steps>(v, none);
    } else {
      earlier = simd::slideDown<steps>(v, none);
    }
    v = simd::min(v, plus(earlier, times(steps)));
    if constexpr (2 * steps < simd::laneCount<V>) v = alongRow<2 * steps>(v);
    return v;
  }

  template <class V>
  ZVP_INLINE static V plus(V v, T weight) {
    return simd::addSaturated(v, simd::broadcast<T, simd::laneCount<V>>(weight));
  }

  int width_;
  Weights<T> weights_;
  T ramp_[kLanes];  // a, 2 a, ... in the direction of the pass
};

template <Kernel kernel, Pass pass, class T>
void relaxRows(Rows<T> image, RoiSize roi, Weights<T> weights) {
  const PassRows<pass, T> rows{image, roi.height};
  const RowRelaxer<kernel, pass, T> relaxer(roi.width, weights);
  for (int y = 0; y < roi.height; ++y) relaxer.relax(rows.row(y), rows.row(y - 1), rows.row(y - 2));
}

}  // namespace zvp::distance
