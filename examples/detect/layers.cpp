#include "layers.h"

#include <algorithm>

#include "common/error.h"

namespace examples {
namespace {

// Sampling between pixels smooths already, and every layer is smoothed again by those that follow: a strong kernel
// would blur what the cascade looks for.
constexpr int16_t kKernel[] = {1, 30, 1};
constexpr int kKernelSize = 3, kLinear = 2;

}  // namespace

LayerReducer::LayerReducer(RoiSize base, float rate) : rate_(rate) {
  const RoiSize room{std::max(base.width, kKernelSize + 1), base.height};
  PyramidLayerState* state = nullptr;
  require(zvpiPyramidLayerDownInitAlloc_8u_C1R(&state, room, rate, kKernel, kKernelSize, kLinear),
          "zvpiPyramidLayerDownInitAlloc_8u_C1R");
  state_.reset(state);
}

GrayImage LayerReducer::next(const GrayImage& layer) {
  RoiSize size{};
  require(zvpiGetPyramidDownROI(layer.size(), &size, rate_), "zvpiGetPyramidDownROI");
  if (size.width == layer.width() && size.height == layer.height()) return {0, 0};
  GrayImage result(size.width, size.height);
  require(zvpiPyramidLayerDown_8u_C1R(layer.data(), layer.step(), layer.size(), result.data(), result.step(), size,
                                      state_.get()),
          "zvpiPyramidLayerDown_8u_C1R");
  return result;
}

}  // namespace examples
