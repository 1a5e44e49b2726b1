// Makes and releases the states of the layer operations.
#include "pyramid/layer_state.h"

#include <float.h>
#include <math.h>

#include "core/data_type.h"
#include "core/memory.h"
#include "pyramid/sizes.h"
#include "simd/loose.h"

namespace zvp::pyramid {
namespace {

constexpr int kInterpolationLinear = 2;

// Taps are floats for floats, else integers.
template <class T>
using Tap = std::conditional_t<std::is_same_v<T, float>, float, int16_t>;

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

float normalised(float tap, float sum) { return fabsf(sum) <= FLT_MIN ? tap : tap / sum; }

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

template <class K>
Status makeState(PyramidLayerState** result, PyramidLayerState settings, const Kernel<K>& kernel) {
  Carver measure = Carver::measuring();
  settings.place(measure);
  void* block = allocate(measure.size());
  if (block == nullptr) return ErrNoMemory;
  Carver memory(block, measure.size());
  PyramidLayerState* state = settings.place(memory);
  *state = settings;
  copyNormalised(kernel, state->taps);
  simd::store(result, state);
  return kernel.isSymmetric() ? StatusOk : WarnKernelNotSymmetric;
}

template <class T, int channels>
Status initAlloc(int widthAbove, PyramidLayerState** result, RoiSize base, float rate, Kernel<Tap<T>> kernel,
                 int mode) {
  if (Status s = firstFailure(nonNull(result, kernel.taps), nonEmpty(base), check(base.width > widthAbove, ErrSize),
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
}  // namespace zvp::pyramid

PyramidLayerState* PyramidLayerState::place(zvp::Carver& memory) {
  constexpr int kLine = 64, kLineFloats = 16;
  auto* state = memory.take<PyramidLayerState>(1, alignof(PyramidLayerState));
  const int64_t row = int64_t{base.width} * channels, pad = int64_t{reach()} * channels;
  stride = zvp::roundUp(row, kLineFloats);
  const auto floats = [&memory](zvp::Bytes n) { return memory.take<float>(n, kLine); };
  ring = floats(zvp::Bytes(stride) * ringRows());
  pair = floats(zvp::Bytes(stride) * 2);
  whole = floats(row);
  padded = floats(pad + row + pad);
  share = floats(row);
  from = memory.take<int32_t>(row, kLine);
  taps = floats(tapCount);
  inRow = memory.take<const float*>(tapCount, alignof(float*));
  inRows = memory.take<const float*>(tapCount, alignof(float*));
  return state;
}

// Images must be wider than WIDTH: those to reduce, than the kernel.
#define ZVP_LAYER_INIT(NAME, WIDTH, T, CHANNELS, TAP)                                                            \
  Status NAME(PyramidLayerState** ppState, RoiSize roi, float rate, const TAP* pKernel, int kerSize, int mode) { \
    return zvp::pyramid::initAlloc<T, CHANNELS>(WIDTH, ppState, roi, rate, {pKernel, kerSize}, mode);            \
  }

ZVP_LAYER_INIT(zvpiPyramidLayerDownInitAlloc_8u_C1R, kerSize, uint8_t, 1, int16_t)
ZVP_LAYER_INIT(zvpiPyramidLayerDownInitAlloc_8u_C3R, kerSize, uint8_t, 3, int16_t)
ZVP_LAYER_INIT(zvpiPyramidLayerDownInitAlloc_16u_C1R, kerSize, uint16_t, 1, int16_t)
ZVP_LAYER_INIT(zvpiPyramidLayerDownInitAlloc_16u_C3R, kerSize, uint16_t, 3, int16_t)
ZVP_LAYER_INIT(zvpiPyramidLayerDownInitAlloc_32f_C1R, kerSize, float, 1, float)
ZVP_LAYER_INIT(zvpiPyramidLayerDownInitAlloc_32f_C3R, kerSize, float, 3, float)

ZVP_LAYER_INIT(zvpiPyramidLayerUpInitAlloc_8u_C1R, 0, uint8_t, 1, int16_t)
ZVP_LAYER_INIT(zvpiPyramidLayerUpInitAlloc_8u_C3R, 0, uint8_t, 3, int16_t)
ZVP_LAYER_INIT(zvpiPyramidLayerUpInitAlloc_16u_C1R, 0, uint16_t, 1, int16_t)
ZVP_LAYER_INIT(zvpiPyramidLayerUpInitAlloc_16u_C3R, 0, uint16_t, 3, int16_t)
ZVP_LAYER_INIT(zvpiPyramidLayerUpInitAlloc_32f_C1R, 0, float, 1, float)
ZVP_LAYER_INIT(zvpiPyramidLayerUpInitAlloc_32f_C3R, 0, float, 3, float)

Status zvpiPyramidLayerDownFree_8u_C1R(PyramidLayerState* pState) { return zvp::release(pState); }
Status zvpiPyramidLayerDownFree_8u_C3R(PyramidLayerState* pState) { return zvp::release(pState); }
Status zvpiPyramidLayerDownFree_16u_C1R(PyramidLayerState* pState) { return zvp::release(pState); }
Status zvpiPyramidLayerDownFree_16u_C3R(PyramidLayerState* pState) { return zvp::release(pState); }
Status zvpiPyramidLayerDownFree_32f_C1R(PyramidLayerState* pState) { return zvp::release(pState); }
Status zvpiPyramidLayerDownFree_32f_C3R(PyramidLayerState* pState) { return zvp::release(pState); }
Status zvpiPyramidLayerUpFree_8u_C1R(PyramidLayerState* pState) { return zvp::release(pState); }
Status zvpiPyramidLayerUpFree_8u_C3R(PyramidLayerState* pState) { return zvp::release(pState); }
Status zvpiPyramidLayerUpFree_16u_C1R(PyramidLayerState* pState) { return zvp::release(pState); }
Status zvpiPyramidLayerUpFree_16u_C3R(PyramidLayerState* pState) { return zvp::release(pState); }
Status zvpiPyramidLayerUpFree_32f_C1R(PyramidLayerState* pState) { return zvp::release(pState); }
Status zvpiPyramidLayerUpFree_32f_C3R(PyramidLayerState* pState) { return zvp::release(pState); }
