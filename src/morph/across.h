// Extrema across rows, which come as bytes; of equal values the last row's is the result.
#pragma once

#include "morph/window.h"

namespace zvp::morph {

// out = extremum of `count` rows, the first of which may be out.
template <class Op, class T>
void combineRows(const uint8_t* const* rows, int count, uint8_t* out, int n) {
  simd::coverRow<T>(n, [=]<int N>(int i) {
    using V = simd::Pack<T, N>;
    const ptrdiff_t offset = i * ptrdiff_t{sizeof(T)};
    auto value = simd::load<V>(rows[0] + offset);
    for (int k = 1; k < count; ++k) value = Op{}(value, simd::load<V>(rows[k] + offset));
    simd::store(out + offset, value);
  });
}

// kOutputs rows at once: output g is the extremum of the rows g .. g + height - 1. What all of them need is computed
// once, what stands above it as suffixes, what stands below it as prefixes. kHeight is the height where it is known,
// else 0.
template <class Op, class T, int kOutputs, int kHeight>
void shareRows(const uint8_t* const* rows, int height, uint8_t* const* outputs, int n) {
  // In registers, if they fit: stores of bytes could change what `rows` points to.
  const uint8_t *above[kOutputs], *below[kOutputs], *middle[kHeight > 0 ? kHeight : 1] = {};
  uint8_t* out[kOutputs];
  for (int g = 0; g < kOutputs; ++g) {
    above[g] = rows[g];
    below[g] = rows[height - 1 + g];
    out[g] = outputs[g];
  }
  for (int k = 0; k < kHeight; ++k) middle[k] = rows[k];
  simd::coverRow<T>(n, [=]<int N>(int i) {
    using V = simd::Pack<T, N>;
    const ptrdiff_t offset = i * ptrdiff_t{sizeof(T)};
    V suffix[kOutputs];
    auto& shared = suffix[kOutputs - 1];
    shared = simd::load<V>(above[kOutputs - 1] + offset);
    if constexpr (kHeight > 0) {
      for (int k = kOutputs; k < kHeight; ++k) shared = Op{}(shared, simd::load<V>(middle[k] + offset));
    } else {
      for (int k = kOutputs; k < height; ++k) shared = Op{}(shared, simd::load<V>(rows[k] + offset));
    }
    for (int g = kOutputs - 2; g >= 0; --g) suffix[g] = Op{}(simd::load<V>(above[g] + offset), suffix[g + 1]);
    simd::store(out[0] + offset, suffix[0]);
    V prefix = suffix[0];
    for (int g = 1; g < kOutputs; ++g) {
      const auto row = simd::load<V>(below[g] + offset);
      prefix = g == 1 ? row : Op{}(prefix, row);
      simd::store(out[g] + offset, Op{}(suffix[g], prefix));
    }
  });
}

// `count` outputs, which is 1, 2, 4 or 8 and at most the height; 2, 3 and 5 are known heights.
template <class Op, class T>
void shareAnyRows(const uint8_t* const* rows, int height, uint8_t* const* outputs, int count, int n) {
  if (count == 8) return shareRows<Op, T, 8, 0>(rows, height, outputs, n);
  if (count == 4 && height == 5) return shareRows<Op, T, 4, 5>(rows, height, outputs, n);
  if (count == 4) return shareRows<Op, T, 4, 0>(rows, height, outputs, n);
  if (count == 2 && height == 3) return shareRows<Op, T, 2, 3>(rows, height, outputs, n);
  if (count == 2) return shareRows<Op, T, 2, 2>(rows, height, outputs, n);
  combineRows<Op, T>(rows, height, outputs[0], n);
}

}  // namespace zvp::morph
