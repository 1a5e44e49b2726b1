// The filter of the layers: separable, in single precision, mirrored at the ends; across rows by a ring of them.
#pragma once

#include "core/runs.h"
#include "filter/border.h"
#include "pyramid/layer_state.h"
#include "simd/gather.h"
#include "simd/walk.h"

namespace zvp::pyramid {

using simd::Pack;

template <class T>
void toFloats(const T* row, int64_t n, float* out) {
  if constexpr (std::is_same_v<T, float>) {
    simd::transformRow(
        static_cast<int>(n), [](auto v) { return v; }, out, row);
  } else {
    convertRun(row, out, static_cast<int>(n));
  }
}

template <class T, class V>
ZVP_INLINE auto fromFloats(V v) {
  if constexpr (std::is_same_v<T, float>) {
    return v;
  } else {
    return simd::nearestSaturated<T>(v);
  }
}

// Result i of n is the sum of the taps times element i behind the places where they begin, tap 0 first.
template <class T>
void sumTaps(const PyramidLayerState& state, const float* const* begins, int64_t n, T* out) {
  const auto sumAt = [=, taps = state.taps, count = state.tapCount]<int N>(int i) {
    using V = Pack<float, N>;
    V sum = simd::load<V>(begins[0] + i) * taps[0];
    for (int k = 1; k < count; ++k) sum = sum + V(simd::load<V>(begins[k] + i) * taps[k]);
    simd::store(out + i, fromFloats<T>(sum));
  };
  simd::coverRow<float>(static_cast<int>(n), sumAt);
}

// Continues the padded row on both sides by its mirror images.
template <int channels>
void mirrorEnds(const PyramidLayerState& state, int64_t width) {
  constexpr AxisBorder kMirrored{BorderReflect, false, false};
  float* row = state.paddedRow();
  const auto mirror = [=](int64_t x) {
    copyBorderPixel<channels, float>(row, x, width, kMirrored, nullptr, row + x * channels);
  };
  for (int64_t i = 1; i <= state.reach(); ++i) mirror(-i), mirror(width - 1 + i);
}

// Filters the padded row, after placeTaps.
template <int channels>
void filterRow(const PyramidLayerState& state, int64_t width, float* out) {
  mirrorEnds<channels>(state, width);
  sumTaps(state, state.inRow, width * channels, out);
}

template <int channels>
void placeTaps(const PyramidLayerState& state) {
  for (int64_t k = 0; k < state.tapCount; ++k) state.inRow[k] = state.padded + k * channels;
}

// Filters across rows, from the top down.
class ColumnFilter {
 public:
  ColumnFilter(const PyramidLayerState& state, int64_t height)
      : state_(state), ring_(state.tapRing()), height_(height) {}

  // The n results around row y. make(r, row) fills row r of what is filtered.
  template <class T, class Make>
  void filter(int64_t y, int64_t n, T* out, Make make) {
    const int64_t reach = state_.reach();
    ring_.provide(y - reach, std::min(y + reach, height_ - 1), make);
    for (int k = 0; k < state_.tapCount; ++k)
      state_.inRows[k] = ring_.row(modeCoordinate(y + k - reach, height_, BorderReflect));
    sumTaps(state_, state_.inRows, n, out);
  }

 private:
  const PyramidLayerState& state_;
  RowRing<float> ring_;
  int64_t height_;
};

}  // namespace zvp::pyramid
