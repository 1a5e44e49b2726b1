// A pass of the chamfer transform over integer images, row by row.
//
// Saturating sums are associative, so that the chain of left neighbours in a row, d[x] = min(u[x], d[x-1] + a), is a
// prefix minimum: d[x] = min over k of u[x-k] + k a, in logarithmically many steps inside a register.
#pragma once

#include "distance/chamfer.h"

namespace zvp {

template <class V>
ZVP_INLINE V lesser(V a, V b) {
  return simd::min(a, b);
}

template <Kernel kernel, Pass pass, class T>
class RowRelaxer {
 public:
  RowRelaxer(int width, Weights<T> weights) : width_(width), weights_(weights) {}

  // Lowers a row by its finished neighbours: the row above, and the one above that. Null: there is none.
  void relax(T* row, const T* above, const T* above2) const {
    T left = kFarthest<T>;
    for (int i = 0; i < width_; ++i) {
      const int x = pass == Pass::kForward ? i : width_ - 1 - i;
      left = lesser(simd::load<T>(row + x), lesser(fromAbove(above, above2, x), plus(left, weights_.a)));
      simd::store(row + x, left);
    }
  }

 private:
  static T plus(T value, T weight) {
    if constexpr (std::is_same_v<T, float>) {
      return value + weight;
    } else {
      return static_cast<T>(lesser<uint32_t>(uint32_t{value} + weight, kFarthest<T>));
    }
  }

  T at(const T* row, int x) const {
    return row != nullptr && x >= 0 && x < width_ ? simd::load<T>(row + x) : kFarthest<T>;
  }

  T fromAbove(const T* above, const T* above2, int x) const {
    T least = lesser(plus(at(above, x), weights_.a), plus(lesser(at(above, x - 1), at(above, x + 1)), weights_.b));
    if constexpr (kernel == Kernel::k5x5) {
      const T near = lesser(at(above, x - 2), at(above, x + 2)), far = lesser(at(above2, x - 1), at(above2, x + 1));
      least = lesser(least, plus(lesser(near, far), weights_.c));
    }
    return least;
  }

  int width_;
  Weights<T> weights_;
};

template <Kernel kernel, Pass pass, class T>
void relaxRows(Rows<T> image, RoiSize roi, Weights<T> weights) {
  const PassRows<pass, T> rows{image, roi.height};
  const RowRelaxer<kernel, pass, T> relaxer(roi.width, weights);
  for (int y = 0; y < roi.height; ++y) relaxer.relax(rows.row(y), rows.row(y - 1), rows.row(y - 2));
}

}  // namespace zvp
