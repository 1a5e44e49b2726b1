// A photograph at ever smaller sizes.
#ifndef ZVP_EXAMPLES_DETECT_LAYERS_H
#define ZVP_EXAMPLES_DETECT_LAYERS_H

#include <zvpcv/pyramid.h>

#include <memory>

#include "common/image.h"

namespace examples {

// Makes the layers of a pyramid: each from the one before, smaller by the rate (above 1, at most 10).
class LayerReducer {
 public:
  LayerReducer(RoiSize base, float rate);

  // The next smaller layer; a single pixel has none, and the result is empty.
  GrayImage next(const GrayImage& layer);

 private:
  struct Free {
    void operator()(PyramidLayerState* state) const { zvpiPyramidLayerDownFree_8u_C1R(state); }
  };

  float rate_;
  std::unique_ptr<PyramidLayerState, Free> state_;
};

}  // namespace examples

#endif
