// Layer reduction: filters the rows, then across rows, and samples what comes out at every multiple of the rate. At rate
// 2 only the columns and rows that are sampled are filtered.
#include "pyramid/layer.h"

namespace zvp {
namespace {

template <int channels, class T>
class Reduction {
 public:
  Reduction(Rows<const T> src, RoiSize size, RoiSize result, PyramidLayerState& state)
      : src_(src),
        size_(size),
        state_(state),
        ring_(state, size.height),
        sampleRow_(state, result.width, [this](int64_t x) { return place(x, size_.width); }),
        result_(result.width),
        halves_(state.path != LayerPath::kAnyRate && 2 * int64_t{result.width} <= int64_t{size.width} + 1 &&
                int64_t{result.width} + state.reach() <= state.base.width) {}

  void makeRow(int64_t y, T* out) {
    const Sample sample = place(y, size_.height);
    if (halves_) return ring_.filter(sample.from, elements(), out, [this](int64_t r) { halveRow(r); });
    for (int64_t row = sample.from; row <= sample.from + (sample.between ? 1 : 0); ++row) provide(row);
    blendRows(sample, state_.pair[sample.from % 2], state_.pair[(sample.from + 1) % 2], elements(), out);
  }

 private:
  int64_t elements() const { return result_ * channels; }

  Sample place(int64_t result, int64_t n) const {
    if (state_.path != LayerPath::kAnyRate) return {std::min(2 * result, n - 1), 0.0f, false};
    return sampleAt(state_.rate * static_cast<float>(result), n);
  }

  // Filters a row of the source at its even columns: tap k of column 2 x meets one of every second pixel of the row, or
  // one of the pixels between them.
  void halveRow(int64_t row) {
    toFloats(src_.row(row), int64_t{size_.width} * channels, state_.paddedRow());
    mirrorEnds<channels>(state_, size_.width);
    float *even = state_.whole, *odd = state_.pair[0];
    splitPixels(state_.padded, result_ + state_.reach(), even, odd);
    sumTaps(state_, elements(), state_.ringRow(row),
            [even, odd](int k) { return (k % 2 == 0 ? even : odd) + ptrdiff_t{k / 2} * channels; });
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

  // Filters and samples a row into its place in state.pair.
  void provide(int64_t row) {
    if (row <= provided_) return;
    provided_ = row;
    ring_.filter(row, int64_t{size_.width} * channels, state_.whole, [this](int64_t r) {
      toFloats(src_.row(r), int64_t{size_.width} * channels, state_.paddedRow());
      filterRow<channels>(state_, size_.width, state_.ringRow(r));
    });
    sampleRow_(state_.whole, state_.pair[row % 2]);
  }

  Rows<const T> src_;
  RoiSize size_;
  PyramidLayerState& state_;
  RowRing ring_;
  RowSampler<channels> sampleRow_;
  int64_t result_, provided_ = -1;
  bool halves_;
};

template <int channels, class T>
Status reduce(Rows<const T> src, RoiSize srcRoi, Rows<T> dst, RoiSize dstRoi, PyramidLayerState* state) {
  if (Status s = checkLayers<channels>(src, srcRoi, dst, dstRoi, state)) return s;
  if (!fitsInto(srcRoi, state->base) || !sameSize(dstRoi, reducedSize(srcRoi, state->rate))) return ErrSize;
  Reduction<channels, T> reduction(src, srcRoi, dstRoi, *state);
  for (int64_t y = 0; y < dstRoi.height; ++y) reduction.makeRow(y, dst.row(y));
  return StatusOk;
}

}  // namespace
}  // namespace zvp

#define ZVP_LAYER_DOWN(NAME, T, CHANNELS)                                                                              \
  Status zvpiPyramidLayerDown_##NAME(const T* pSrc, int srcStep, RoiSize srcRoi, T* pDst, int dstStep, RoiSize dstRoi, \
                                     PyramidLayerState* pState) {                                                      \
    return zvp::reduce<CHANNELS>(zvp::Rows<const T>{pSrc, srcStep}, srcRoi, zvp::Rows<T>{pDst, dstStep}, dstRoi,       \
                                 pState);                                                                              \
  }

ZVP_LAYER_DOWN(8u_C1R, uint8_t, 1)
ZVP_LAYER_DOWN(8u_C3R, uint8_t, 3)
ZVP_LAYER_DOWN(16u_C1R, uint16_t, 1)
ZVP_LAYER_DOWN(16u_C3R, uint16_t, 3)
ZVP_LAYER_DOWN(32f_C1R, float, 1)
ZVP_LAYER_DOWN(32f_C3R, float, 3)
