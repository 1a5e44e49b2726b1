// The state of the layer operations, and what reduction and expansion share: a separable filter in single precision,
// its rows in a ring, and linear sampling between pixels.
#pragma once

#include <stdint.h>
#include <string.h>

#include <algorithm>

#include "core/data_type.h"
#include "core/rows.h"
#include "filter/border.h"
#include "pyramid/sizes.h"
#include "simd/gather.h"
#include "simd/walk.h"
#include "zvpcv/pyramid.h"

// How a level follows from the one before.
enum class LayerPath {
  kAnyRate = 0,
  kHalving = 1,          // the rate is 2: every second sample
  kHalvingBinomial = 11  // and the kernel is 1 4 6 4 1 of integers
};

struct PyramidLayerState {
  float* taps;  // normalised and symmetric; those of an integer kernel are multiples of 2^-13
  int32_t tapCount;
  DataType type;
  int32_t channels;
  RoiSize base;
  float rate;
  LayerPath path;

  // Rows of base.width pixels and more.
  float* padded;          // one more, with room for `reach` pixels before it and behind its end
  float* whole;           // one row on its way
  float* pair[2];         // two neighbouring rows
  float* ring;            // tapCount rows (or all, where there are fewer), `stride` apart
  int64_t stride;         // in elements
  const float** tapRows;  // the row that each tap meets
  int32_t* from;          // for every element of a result: the first of the two elements between which it lies,
  float* share;           // and how much of the second enters it

  int reach() const { return tapCount / 2; }
  float* paddedRow() const { return padded + int64_t{reach()} * channels; }
  int64_t ringRows() const { return std::min(tapCount, base.height); }
  float* ringRow(int64_t y) const { return ring + y % ringRows() * stride; }
};

namespace zvp {

using simd::Pack;

// What both operations check before the sizes.
template <int channels, class T>
Status checkLayers(Rows<const T> src, RoiSize srcRoi, Rows<T> dst, RoiSize dstRoi, const PyramidLayerState* state) {
  if (Status s = firstFailure(nonNull(src, dst), nonNull(state), nonEmpty(srcRoi),
                              rowsFit(int64_t{srcRoi.width} * channels, src),
                              rowsFit(int64_t{dstRoi.width} * channels, dst), wholeElements(src, dst)))
    return s;
  return firstFailure(validRate(state->rate),
                      check(state->type == kDataType<T> && state->channels == channels, ErrBadArg));
}

constexpr bool fitsInto(RoiSize size, RoiSize base) { return size.width <= base.width && size.height <= base.height; }

// A result between two samples: share x [from + 1] + (1 - share) x [from]; or [from] itself.
struct Sample {
  int64_t from;
  float share;
  bool between;
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

template <class T>
void toFloats(const T* row, int64_t n, float* out) {
  for (int64_t i = 0; i < n; ++i) out[i] = static_cast<float>(simd::load<T>(row + i));
}

template <class T, class V>
ZVP_INLINE auto fromFloats(V v) {
  if constexpr (std::is_same_v<T, float>) {
    return v;
  } else {
    return simd::nearestSaturated<T>(v);
  }
}

// Result i of n is the sum of the taps times element i of their sources, tap 0 first.
template <class T, class Source>
void sumTaps(const PyramidLayerState& state, int64_t n, T* out, Source source) {
  simd::coverRow<float>(static_cast<int>(n), [&]<int N>(int i) {
    using V = Pack<float, N>;
    V sum = simd::load<V>(source(0) + i) * state.taps[0];
    for (int k = 1; k < state.tapCount; ++k) sum = sum + V(simd::load<V>(source(k) + i) * state.taps[k]);
    simd::store(out + i, fromFloats<T>(sum));
  });
}

// Continues the padded row on both sides by its mirror images.
template <int channels>
void mirrorEnds(const PyramidLayerState& state, int64_t width) {
  const auto mirror = [row = state.paddedRow(), width](int64_t x) {
    const int64_t from = modeCoordinate(x, width, BorderReflect);
    for (int c = 0; c < channels; ++c) row[x * channels + c] = row[from * channels + c];
  };
  for (int64_t i = 1; i <= state.reach(); ++i) mirror(-i), mirror(width - 1 + i);
}

// Filters the padded row.
template <int channels>
void filterRow(const PyramidLayerState& state, int64_t width, float* out) {
  mirrorEnds<channels>(state, width);
  sumTaps(state, width * channels, out, [first = state.padded](int k) { return first + int64_t{k} * channels; });
}

// The rows of an image that a column of taps meets, made when they are first met.
class RowRing {
 public:
  RowRing(const PyramidLayerState& state, int64_t height) : state_(state), height_(height) {}

  // Filters across rows around row y, which must not lie above that of the last call. make(r) writes row r into
  // state.ringRow(r).
  template <class T, class Make>
  void filter(int64_t y, int64_t n, T* out, Make make) {
    const int64_t reach = state_.reach();
    made_ = std::max(made_, y - reach);
    for (; made_ <= std::min(y + reach, height_ - 1); ++made_) make(made_);
    for (int k = 0; k < state_.tapCount; ++k)
      state_.tapRows[k] = state_.ringRow(modeCoordinate(y + k - reach, height_, BorderReflect));
    sumTaps(state_, n, out, [rows = state_.tapRows](int k) { return rows[k]; });
  }

 private:
  const PyramidLayerState& state_;
  int64_t height_, made_ = 0;
};

// Samples rows at `results` columns, the first `between` of which lie between two pixels.
template <int channels>
class RowSampler {
 public:
  // sample(x) is column x's place in the source.
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

}  // namespace zvp
