// Layer expansion: samples the source between its pixels, and filters what comes out; along rows, then across them.
#include "pyramid/layer.h"

namespace zvp {
namespace {

template <int channels, class T>
class Expansion {
 public:
  Expansion(Rows<const T> src, RoiSize size, RoiSize result, PyramidLayerState& state)
      : src_(src),
        size_(size),
        result_(result),
        state_(state),
        ring_(state, result.height),
        sampleRow_(state, result.width, [this](int64_t x) { return place(x, size_.width); }) {}

  void makeRow(int64_t y, T* out) {
    ring_.filter(y, elements(), out, [this](int64_t row) { interpolate(row); });
  }

 private:
  int64_t elements() const { return int64_t{result_.width} * channels; }

  Sample place(int64_t result, int64_t n) const { return sampleAt(static_cast<float>(result) / state_.rate, n); }

  void interpolate(int64_t row) {
    const Sample sample = place(row, size_.height);
    for (int64_t r = sample.from; r <= sample.from + (sample.between ? 1 : 0); ++r) provide(r);
    blendRows(sample, state_.pair[sample.from % 2], state_.pair[(sample.from + 1) % 2], elements(),
              state_.ringRow(row));
  }

  // Samples and filters a row of the source into its place in state.pair.
  void provide(int64_t row) {
    if (row <= provided_) return;
    provided_ = row;
    toFloats(src_.row(row), int64_t{size_.width} * channels, state_.whole);
    sampleRow_(state_.whole, state_.paddedRow());
    filterRow<channels>(state_, result_.width, state_.pair[row % 2]);
  }

  Rows<const T> src_;
  RoiSize size_, result_;
  PyramidLayerState& state_;
  RowRing ring_;
  RowSampler<channels> sampleRow_;
  int64_t provided_ = -1;
};

bool isExpanded(RoiSize size, RoiSize result, float rate) {
  return expandedRange(size.width, rate).contains(result.width) &&
         expandedRange(size.height, rate).contains(result.height);
}

template <int channels, class T>
Status expand(Rows<const T> src, RoiSize srcRoi, Rows<T> dst, RoiSize dstRoi, PyramidLayerState* state) {
  if (Status s = checkLayers<channels>(src, srcRoi, dst, dstRoi, state)) return s;
  if (!fitsInto(dstRoi, state->base) || !isExpanded(srcRoi, dstRoi, state->rate)) return ErrSize;
  Expansion<channels, T> expansion(src, srcRoi, dstRoi, *state);
  for (int64_t y = 0; y < dstRoi.height; ++y) expansion.makeRow(y, dst.row(y));
  return StatusOk;
}

}  // namespace
}  // namespace zvp

#define ZVP_LAYER_UP(NAME, T, CHANNELS)                                                                              \
  Status zvpiPyramidLayerUp_##NAME(const T* pSrc, int srcStep, RoiSize srcRoi, T* pDst, int dstStep, RoiSize dstRoi, \
                                   PyramidLayerState* pState) {                                                      \
    return zvp::expand<CHANNELS>(zvp::Rows<const T>{pSrc, srcStep}, srcRoi, zvp::Rows<T>{pDst, dstStep}, dstRoi,     \
                                 pState);                                                                            \
  }

ZVP_LAYER_UP(8u_C1R, uint8_t, 1)
ZVP_LAYER_UP(8u_C3R, uint8_t, 3)
ZVP_LAYER_UP(16u_C1R, uint16_t, 1)
ZVP_LAYER_UP(16u_C3R, uint16_t, 3)
ZVP_LAYER_UP(32f_C1R, float, 1)
ZVP_LAYER_UP(32f_C3R, float, 3)
