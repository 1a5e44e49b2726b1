// What reduction and expansion of layers share of a call.
#pragma once

#include "core/checks.h"
#include "core/data_type.h"
#include "pyramid/layer_sampling.h"
#include "pyramid/sizes.h"

namespace zvp::pyramid {

// Checks, and makes a level from the top down. Layer<channels, T> says whether the sizes of the levels agree with each
// other and with the state, and makes a row.
template <template <int, class> class Layer, int channels, class T>
Status makeLayer(Rows<const T> src, RoiSize srcRoi, Rows<T> dst, RoiSize dstRoi, PyramidLayerState* state) {
  if (Status s =
          firstFailure(nonNull(src, dst, state), nonEmpty(srcRoi), rowsFit(int64_t{srcRoi.width} * channels, src),
                       rowsFit(int64_t{dstRoi.width} * channels, dst), wholeElements(src, dst)))
    return s;
  if (Status s = firstFailure(validRate(state->rate),
                              check(state->type == kDataType<T> && state->channels == channels, ErrBadArg)))
    return s;
  if (!Layer<channels, T>::sizesAgree(srcRoi, dstRoi, *state)) return ErrSize;
  Layer<channels, T> layer(src, srcRoi, dstRoi, *state);
  for (int64_t y = 0; y < dstRoi.height; ++y) layer.makeRow(y, dst.row(y));
  return StatusOk;
}

}  // namespace zvp::pyramid

#define ZVP_LAYER(NAME, LAYER, T, CHANNELS)                                                                  \
  Status NAME(const T* pSrc, int srcStep, RoiSize srcRoi, T* pDst, int dstStep, RoiSize dstRoi,              \
              PyramidLayerState* pState) {                                                                   \
    return zvp::pyramid::makeLayer<zvp::pyramid::LAYER, CHANNELS>(zvp::Rows{pSrc, srcStep}, srcRoi,          \
                                                                  zvp::Rows{pDst, dstStep}, dstRoi, pState); \
  }
