// Makes and releases the states of the layer operations.
#include "core/carver.h"
#include "core/memory.h"
#include "pyramid/layer.h"

namespace zvp {
namespace {

constexpr int kInterpolationLinear = 2, kLineFloats = 16, kLine = 64;

template <class K>
struct Kernel {
  const K* taps;
  int32_t size;

  K operator[](int64_t i) const { return simd::load<K>(taps + i); }
  int64_t centre() const { return size / 2; }

  bool isSymmetric() const {
    for (int64_t i = 0; i < centre(); ++i)
      if ((*this)[i] != (*this)[size - 1 - i]) return false;
    return true;
  }

  // As if the right half mirrored the left.
  auto sum() const {
    using Sum = std::conditional_t<std::is_same_v<K, float>, float, int64_t>;
    Sum left = 0;
    for (int64_t i = 0; i < centre(); ++i) left = left + (*this)[i];
    return (*this)[centre()] + 2 * left;
  }

  bool isBinomial() const {
    return std::is_same_v<K, int16_t> && size == 5 && (*this)[0] == 1 && (*this)[1] == 4 && (*this)[2] == 6;
  }
};

float normalised(float tap, float sum) {
  constexpr float kSmallest = 1.1754944e-38f;
  return (sum < 0 ? -sum : sum) <= kSmallest ? tap : tap / sum;
}

// 13 fractional bits, in 16 bits.
float normalised(int16_t tap, int64_t sum) {
  constexpr int kOneMore = 1 << 14;
  constexpr float kUnit = 1.0f / (1 << 13);
  const int64_t fixed = sum == 0 ? tap : (int64_t{tap} * kOneMore / sum) >> 1;
  return static_cast<float>(std::clamp<int64_t>(fixed, INT16_MIN, INT16_MAX)) * kUnit;
}

template <class K>
void copyNormalised(const Kernel<K>& kernel, float* taps) {
  const auto sum = kernel.sum();
  for (int64_t i = 0; i <= kernel.centre(); ++i) taps[i] = taps[kernel.size - 1 - i] = normalised(kernel[i], sum);
}

template <class K>
LayerPath pathOf(const Kernel<K>& kernel, float rate) {
  constexpr float kBelowTwo = 1.99998f, kAboveTwo = 2.00002f;
  if (!(rate > kBelowTwo && rate < kAboveTwo)) return LayerPath::kAnyRate;
  return kernel.isBinomial() ? LayerPath::kHalvingBinomial : LayerPath::kHalving;
}

// Takes the places of a state and of its arrays, which are stored in `state`; returns its own.
PyramidLayerState* place(PyramidLayerState& state, Carver& memory) {
  auto* own = memory.take<PyramidLayerState>(1, alignof(PyramidLayerState));
  const int64_t row = int64_t{state.base.width} * state.channels, pad = int64_t{state.reach()} * state.channels;
  state.stride = roundUp(row, kLineFloats);
  const auto floats = [&memory](Bytes n) { return memory.take<float>(n, kLine); };
  state.ring = floats(Bytes(state.stride) * state.ringRows());
  state.whole = floats(row);
  for (float*& r : state.pair) r = floats(row);
  state.padded = floats(pad + row + pad);
  state.share = floats(row);
  state.from = memory.take<int32_t>(row, kLine);
  state.taps = floats(state.tapCount);
  state.tapRows = memory.take<const float*>(state.tapCount, sizeof(float*));
  return own;
}

template <class K>
Status makeState(PyramidLayerState** result, PyramidLayerState settings, const Kernel<K>& kernel) {
  Carver measure = Carver::measuring();
  place(settings, measure);
  void* block = allocate(measure.size());
  if (block == nullptr) return ErrNoMemory;
  Carver memory(block, measure.size());
  PyramidLayerState* state = place(settings, memory);
  *state = settings;
  copyNormalised(kernel, state->taps);
  *result = state;
  return kernel.isSymmetric() ? StatusOk : WarnKernelNotSymmetric;
}

enum class Direction { kDown, kUp };

template <class T, int channels, class K>
Status initAlloc(Direction direction, PyramidLayerState** result, RoiSize base, float rate, Kernel<K> kernel,
                 int mode) {
  const bool wideEnough = direction == Direction::kUp || base.width > kernel.size;
  if (Status s = firstFailure(nonNull(result), nonNull(kernel.taps), nonEmpty(base), check(wideEnough, ErrSize),
                              check(mode == kInterpolationLinear, ErrBadArg), validRate(rate),
                              check(kernel.size >= 3 && kernel.size % 2 == 1, ErrBadArg)))
    return s;
  PyramidLayerState settings = {};
  settings.tapCount = kernel.size;
  settings.type = kDataType<T>;
  settings.channels = channels;
  settings.base = base;
  settings.rate = rate;
  settings.path = pathOf(kernel, rate);
  return makeState(result, settings, kernel);
}

}  // namespace
}  // namespace zvp

#define ZVP_LAYER_STATE(DIRECTION, NAME, T, CHANNELS, K)                                                     \
  Status zvpiPyramidLayer##DIRECTION##InitAlloc_##NAME(PyramidLayerState** ppState, RoiSize roi, float rate, \
                                                       const K* pKernel, int kerSize, int mode) {            \
    return zvp::initAlloc<T, CHANNELS>(zvp::Direction::k##DIRECTION, ppState, roi, rate,                     \
                                       zvp::Kernel<K>{pKernel, kerSize}, mode);                              \
  }                                                                                                          \
  Status zvpiPyramidLayer##DIRECTION##Free_##NAME(PyramidLayerState* pState) { return zvp::release(pState); }

#define ZVP_LAYER_STATES(NAME, T, CHANNELS, K) \
  ZVP_LAYER_STATE(Down, NAME, T, CHANNELS, K)  \
  ZVP_LAYER_STATE(Up, NAME, T, CHANNELS, K)

ZVP_LAYER_STATES(8u_C1R, uint8_t, 1, int16_t)
ZVP_LAYER_STATES(8u_C3R, uint8_t, 3, int16_t)
ZVP_LAYER_STATES(16u_C1R, uint16_t, 1, int16_t)
ZVP_LAYER_STATES(16u_C3R, uint16_t, 3, int16_t)
ZVP_LAYER_STATES(32f_C1R, float, 1, float)
ZVP_LAYER_STATES(32f_C3R, float, 3, float)
