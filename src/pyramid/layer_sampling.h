// The sampling of the layers: linear between two pixels of a row, and between two rows.
#pragma once

#include "pyramid/layer_filter.h"
#include "simd/gather.h"

namespace zvp::pyramid {

// A result between two samples: share x [from + 1] + (1 - share) x [from]; or [from] itself.
struct Sample {
  int64_t from;
  float share;
  bool between;

  int64_t last() const { return between ? from + 1 : from; }
};

inline Sample sampleAt(float position, int64_t n) {
  const auto i = static_cast<int64_t>(position);
  if (i + 1 < n) return {i, position - static_cast<float>(i), true};
  return {n - 1, 0.0f, false};
}

template <class V>
ZVP_INLINE V blend(V first, V second, V share) {
  return V(share * second) + V(V(1.0f - share) * first);
}

// Samples rows at `results` columns, the first `between` of which lie between two pixels.
template <int channels>
class RowSampler {
 public:
  // place(x) is where the source has column x.
  template <class Place>
  RowSampler(const PyramidLayerState& state, int64_t results, Place place) : state_(state), results_(results) {
    for (int64_t x = 0; x < results; ++x) {
      const Sample sample = place(x);
      between_ += sample.between ? 1 : 0;
      for (int c = 0; c < channels; ++c) {
        state.from[x * channels + c] = static_cast<int32_t>(sample.from * channels + c);
        state.share[x * channels + c] = sample.share;
      }
    }
  }

  void operator()(const float* row, float* out) const {
    simd::coverRow<float>(static_cast<int>(between_ * channels), [&]<int N>(int i) {
      const auto first = simd::gather<N>(row, state_.from + i),
                 second = simd::gather<N>(row + channels, state_.from + i);
      simd::store(out + i, blend(first, second, simd::load<Pack<float, N>>(state_.share + i)));
    });
    for (int64_t i = between_ * channels; i < results_ * channels; ++i) out[i] = row[state_.from[i]];
  }

 private:
  const PyramidLayerState& state_;
  int64_t results_, between_ = 0;
};

// Two rows, or the first alone, become one of n elements.
template <class T>
void blendRows(const Sample& sample, const float* first, const float* second, int64_t n, T* out) {
  simd::coverRow<float>(static_cast<int>(n), [&]<int N>(int i) {
    using V = Pack<float, N>;
    const V a = simd::load<V>(first + i);
    const V value = sample.between ? blend(a, simd::load<V>(second + i), simd::broadcast<float, N>(sample.share)) : a;
    simd::store(out + i, fromFloats<T>(value));
  });
}

}  // namespace zvp::pyramid
