// Accumulation as a reader would write it first.
#pragma once

#include "image.h"

namespace bench::ZVP_LOOPS::plain {

struct Add {
  static float update(float d, float s, float, float) { return d + s; }
  static float updateMasked(float d, float s, float, float m) { return m * s + d; }
};

struct AddSquare {
  static float update(float d, float s, float, float) { return s * s + d; }
  static float updateMasked(float d, float s, float, float m) { return s * s * m + d; }
};

struct AddProduct {
  static float update(float d, float s1, float s2, float) { return s1 * s2 + d; }
  static float updateMasked(float d, float s1, float s2, float m) { return s1 * s2 * m + d; }
};

struct AddWeighted {
  static float update(float d, float s, float, float alpha) { return d + alpha * (s - d); }
  static float updateMasked(float d, float s, float, float a) { return d + (s - d) * a; }
};

// The weight is 1, or alpha of a running average.
template <class Operation, class T>
void accumulate(const Image<T>& a, const Image<T>& b, const Image<float>& acc, float weight) {
  const int width = acc.width;  // the compiler cannot know that no pixel lies over it
  for (int y = 0; y < acc.height; ++y) {
    const T *rowA = a.row(y), *rowB = b.row(y);
    float* d = acc.row(y);
    for (int x = 0; x < width; ++x) d[x] = Operation::update(d[x], float(rowA[x]), float(rowB[x]), weight);
  }
}

// The running average of two images, apart from both.
inline void average(const Image<float>& a, const Image<float>& b, const Image<float>& dst, float alpha) {
  const int width = dst.width;
  for (int y = 0; y < dst.height; ++y) {
    const float *rowA = a.row(y), *rowB = b.row(y);
    float* out = dst.row(y);
    for (int x = 0; x < width; ++x) out[x] = AddWeighted::update(rowB[x], rowA[x], 0, alpha);
  }
}

template <class Operation, class T>
void accumulateMasked(const Image<T>& a, const Image<T>& b, const Image<std::uint8_t>& mask, const Image<float>& acc,
                      float weight) {
  const int width = acc.width;
  const float weights[] = {0.0f, weight};  // a branch on a random mask would measure only itself
  for (int y = 0; y < acc.height; ++y) {
    const T *rowA = a.row(y), *rowB = b.row(y);
    const std::uint8_t* selected = mask.row(y);
    float* d = acc.row(y);
    for (int x = 0; x < width; ++x) {
      d[x] = Operation::updateMasked(d[x], float(rowA[x]), float(rowB[x]), weights[selected[x] != 0]);
    }
  }
}

}  // namespace bench::ZVP_LOOPS::plain
