// Layer reduction: filters the rows, then across rows, and samples what comes out at every multiple of the rate. At rate
// 2 only the columns and rows that are sampled are filtered.
#include "pyramid/layer.h"

namespace zvp::pyramid {
namespace {

template <int channels, class T>
class Reduction {
 public:
  static bool sizesAgree(RoiSize size, RoiSize result, const PyramidLayerState& state) {
    return fitsInto(size, state.base) && sameSize(result, reducedSize(size, state.rate));
  }

  Reduction(Rows<const T> src, RoiSize size, RoiSize result, PyramidLayerState& state)
      : src_(src),
        size_(size),
        state_(state),
        columns_(state, size.height),
        sampleRow_(state, result.width, [this](int64_t x) { return place(x, size_.width); }),
        sampled_(state.pairRing()),
        result_(result.width),
        halves_(state.path != LayerPath::kAnyRate && 2 * int64_t{result.width} <= int64_t{size.width} + 1 &&
                int64_t{result.width} + state.reach() <= state.base.width) {
    halves_ ? placeTapsInHalves() : placeTaps<channels>(state);
  }

  void makeRow(int64_t y, T* out) {
    const Sample sample = place(y, size_.height);
    if (halves_) {
      columns_.filter(sample.from, elements(), out, [this](int64_t row, float* made) { halveRow(row, made); });
    } else {
      sampled_.provide(sample.from, sample.last(), [this](int64_t row, float* made) { sampleFiltered(row, made); });
      blendRows(sample, sampled_.row(sample.from), sampled_.row(sample.from + 1), elements(), out);
    }
  }

 private:
  int64_t elements() const { return result_ * channels; }

  Sample place(int64_t result, int64_t n) const {
    if (state_.path != LayerPath::kAnyRate) return {std::min(2 * result, n - 1), 0.0f, false};
    return sampleAt(state_.rate * static_cast<float>(result), n);
  }

  void loadRow(int64_t row) { toFloats(src_.row(row), int64_t{size_.width} * channels, state_.paddedRow()); }

  // Pixels of the padded row are parted into every second one and those between. Tap k of column 2 x meets one kind.
  float* even() const { return state_.whole; }
  float* odd() const { return state_.pair; }

  void placeTapsInHalves() {
    for (int64_t k = 0; k < state_.tapCount; ++k) state_.inRow[k] = (k % 2 == 0 ? even() : odd()) + k / 2 * channels;
  }

  // Filters a row of the source at its even columns.
  void halveRow(int64_t row, float* out) {
    loadRow(row);
    mirrorEnds<channels>(state_, size_.width);
    splitPixels(state_.padded, result_ + state_.reach(), even(), odd());
    sumTaps(state_, state_.inRow, elements(), out);
  }

  // n pixels from every second one on, and the n - 1 between them.
  static void splitPixels(const float* from, int64_t n, float* even, float* odd) {
    for (int64_t x = 0; x < n - 1; ++x)
      for (int c = 0; c < channels; ++c) {
        even[x * channels + c] = from[2 * x * channels + c];
        odd[x * channels + c] = from[(2 * x + 1) * channels + c];
      }
    for (int c = 0; c < channels; ++c) even[(n - 1) * channels + c] = from[2 * (n - 1) * channels + c];
  }

  // Samples a row that has been filtered both ways.
  void sampleFiltered(int64_t row, float* out) {
    columns_.filter(row, int64_t{size_.width} * channels, state_.whole, [this](int64_t r, float* made) {
      loadRow(r);
      filterRow<channels>(state_, size_.width, made);
    });
    sampleRow_(state_.whole, out);
  }

  Rows<const T> src_;
  RoiSize size_;
  PyramidLayerState& state_;
  ColumnFilter columns_;
  RowSampler<channels> sampleRow_;
  FixedRing<float, 2> sampled_;
  int64_t result_;
  bool halves_;
};

}  // namespace
}  // namespace zvp::pyramid

ZVP_LAYER(zvpiPyramidLayerDown_8u_C1R, Reduction, uint8_t, 1)
ZVP_LAYER(zvpiPyramidLayerDown_8u_C3R, Reduction, uint8_t, 3)
ZVP_LAYER(zvpiPyramidLayerDown_16u_C1R, Reduction, uint16_t, 1)
ZVP_LAYER(zvpiPyramidLayerDown_16u_C3R, Reduction, uint16_t, 3)
ZVP_LAYER(zvpiPyramidLayerDown_32f_C1R, Reduction, float, 1)
ZVP_LAYER(zvpiPyramidLayerDown_32f_C3R, Reduction, float, 3)
