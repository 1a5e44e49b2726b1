// The kernels of one extremum and element type; included only by the sources that make them.
#pragma once

#include <limits>

#include "morph/across.h"
#include "morph/kernels.h"

namespace zvp::morph {

// One channel of the outputs at an end of the row; `inwards` is the distance of pixels, negative at the right end.
template <class Op, bool kRight, class T>
ZVP_INLINE void filterEdge(const RunColumns::Edge& edge, int64_t pixels, const T* row, ptrdiff_t inwards, bool add,
                           T* out) {
  const T* last = row + edge.end;
  T value = simd::load<T>(last);
  int64_t covered = edge.covered, taken = 1;
  const auto takeOne = [&] {
    last += inwards;
    ++taken;
    value = kRight ? Op{}(simd::load<T>(last), value) : Op{}(value, simd::load<T>(last));
  };
  while (taken < std::min(covered, pixels)) takeOne();
  out += edge.to;
  for (int64_t k = edge.outputs; k > 0; --k, out += inwards) {
    simd::store(out, add ? Op{}(simd::load<T>(out), value) : value);
    if (++covered > taken && taken < pixels) takeOne();
  }
}

template <class Op, class T>
void filterRun(const RunColumns& c, const uint8_t* rowBytes, bool add, uint8_t* outBytes) {
  const T* row = reinterpret_cast<const T*>(rowBytes);
  T* out = reinterpret_cast<T*>(outBytes);
  const int channels = c.channels;
  if (c.left.outputs > 0)
    for (int k = 0; k < channels; ++k) filterEdge<Op, false>(c.left, c.pixels, row + k, channels, add, out + k);
  if (c.elements > 0) window<Op>(row + c.from, channels, c.run.length, add, out + c.to, c.elements);
  if (c.right.outputs > 0)
    for (int k = 0; k < channels; ++k) filterEdge<Op, true>(c.right, c.pixels, row + k, -channels, add, out + k);
}

// a - b, saturated.
struct Subtract {
  template <class V>
  ZVP_INLINE V operator()(V a, V b) const {
    using T = simd::Element<V>;
    if constexpr (std::is_floating_point_v<T>) {
      return a - b;
    } else if constexpr (std::is_unsigned_v<T>) {
      return V(simd::max(a, b) - b);
    } else {
      // The sign of a where the difference wraps: a and b differ in it, and so do a and the difference.
      using U = simd::Pack<std::make_unsigned_t<T>, simd::laneCount<V>>;
      constexpr int kSign = 8 * sizeof(T) - 1;
      const V difference = V(U(a) - U(b));
      const V wraps = V(((a ^ b) & (a ^ difference)) >> kSign);
      const V end = V((a >> kSign) ^ std::numeric_limits<T>::max());
      return V((difference & ~wraps) | (end & wraps));
    }
  }
};

template <class T>
void subtractRows(const uint8_t* a, const uint8_t* b, uint8_t* out, int n) {
  simd::transformRow(n, Subtract{}, reinterpret_cast<T*>(out), reinterpret_cast<const T*>(a),
                     reinterpret_cast<const T*>(b));
}

template <class Op, class T>
void filterPair(const uint8_t* bytes, int distance, uint8_t* out, int n) {
  const T* row = reinterpret_cast<const T*>(bytes);
  taps<Op, 2>(row, row + distance, 0, 0, reinterpret_cast<T*>(out), n);
}

template <class Op, class T>
inline constexpr Kernels kKernels = {filterRun<Op, T>, filterPair<Op, T>, combineRows<Op, T>, shareAnyRows<Op, T>,
                                     subtractRows<T>};

}  // namespace zvp::morph
