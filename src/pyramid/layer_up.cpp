// Layer expansion: samples the source between its pixels, and filters what comes out; along rows, then across them.
#include "pyramid/layer.h"

namespace zvp::pyramid {
namespace {

template <int channels, class T>
class Expansion {
 public:
  static bool sizesAgree(RoiSize size, RoiSize result, const PyramidLayerState& state) {
    return fitsInto(result, state.base) && expandedRange(size.width, state.rate).contains(result.width) &&
           expandedRange(size.height, state.rate).contains(result.height);
  }

  Expansion(Rows<const T> src, RoiSize size, RoiSize result, PyramidLayerState& state)
      : src_(src),
        size_(size),
        result_(result),
        state_(state),
        sampleRow_(state, result.width, [this](int64_t x) { return place(x, size_.width); }),
        filtered_(state.pairRing()),
        columns_(state, result.height) {
    placeTaps<channels>(state);
  }

  void makeRow(int64_t y, T* out) {
    columns_.filter(y, elements(), out, [this](int64_t row, float* made) { blendFiltered(row, made); });
  }

 private:
  int64_t elements() const { return int64_t{result_.width} * channels; }

  Sample place(int64_t result, int64_t n) const { return sampleAt(static_cast<float>(result) / state_.rate, n); }

  void blendFiltered(int64_t row, float* out) {
    const Sample sample = place(row, size_.height);
    filtered_.provide(sample.from, sample.last(), [this](int64_t r, float* made) { filterSampled(r, made); });
    blendRows(sample, filtered_.row(sample.from), filtered_.row(sample.from + 1), elements(), out);
  }

  void filterSampled(int64_t row, float* out) {
    toFloats(src_.row(row), int64_t{size_.width} * channels, state_.whole);
    sampleRow_(state_.whole, state_.paddedRow());
    filterRow<channels>(state_, result_.width, out);
  }

  Rows<const T> src_;
  RoiSize size_, result_;
  PyramidLayerState& state_;
  RowSampler<channels> sampleRow_;
  FixedRing<float, 2> filtered_;
  ColumnFilter columns_;
};

}  // namespace
}  // namespace zvp::pyramid

ZVP_LAYER(zvpiPyramidLayerUp_8u_C1R, Expansion, uint8_t, 1)
ZVP_LAYER(zvpiPyramidLayerUp_8u_C3R, Expansion, uint8_t, 3)
ZVP_LAYER(zvpiPyramidLayerUp_16u_C1R, Expansion, uint16_t, 1)
ZVP_LAYER(zvpiPyramidLayerUp_16u_C3R, Expansion, uint16_t, 3)
ZVP_LAYER(zvpiPyramidLayerUp_32f_C1R, Expansion, float, 1)
ZVP_LAYER(zvpiPyramidLayerUp_32f_C3R, Expansion, float, 3)
