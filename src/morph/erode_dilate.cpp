// Erosion and dilation: checks, then the engine.
#include "morph/checks.h"

namespace zvp {
namespace {

template <class Op, int channels, class T>
Status borderFilter(Rows<const T> src, Rows<T> dst, RoiSize roi, BorderType border, const MorphBorderSpec* spec,
                    uint8_t* buffer) {
  if (Status s = firstFailure(nonNull(src.data, dst.data), nonNull(reinterpret_cast<const uint8_t*>(spec), buffer),
                              checkImages(src, dst, roi, channels), acceptedBorder(border)))
    return s;
  const StructuringElement element(spec);
  if (Status s = fitsWidth(roi, element)) return s;
  filterRegion<Op>(src, dst, roi, border, element, channels, buffer);
  return StatusOk;
}

template <class Op>
Status bitFilter(BitRows<const uint8_t> src, BitRows<uint8_t> dst, RoiSize roi, BorderType border,
                 const MorphBorderSpec* spec, uint8_t* buffer) {
  if (Status s = firstFailure(nonNull(src.data, dst.data), nonNull(reinterpret_cast<const uint8_t*>(spec), buffer),
                              checkImages(src, dst, roi), acceptedBorder(border),
                              check(src.data != dst.data, ErrInPlaceNotSupported)))
    return s;
  const StructuringElement element(spec);
  if (Status s = fitsWidth(roi, element)) return s;
  filterBits<Op>(src, dst, roi, border, element, buffer);
  return StatusOk;
}

// The older members: the work memory is inside the state.
template <class Op, int channels, class T>
Status replicateFilter(Rows<const T> src, Rows<T> dst, RoiSize roi, BorderType border, MorphState* state) {
  if (Status s = firstFailure(nonNull(src.data, dst.data), nonNull(reinterpret_cast<uint8_t*>(state)),
                              checkImages(src, dst, roi, channels), check(border == BorderReplicate, ErrBadArg)))
    return s;
  const StructuringElement element(state);
  if (Status s = fitsWidth(roi, element)) return s;
  filterRegion<Op>(src, dst, roi, border, element, channels, stateWorkMemory(state));
  return StatusOk;
}

}  // namespace
}  // namespace zvp

using zvp::Maximum, zvp::Minimum, zvp::Rows;

#define ZVP_BORDER_FILTER(OPERATION, EXTREMUM, NAME, T, CHANNELS, VALUE)                                               \
  Status zvpi##OPERATION##Border_##NAME(const T* pSrc, int srcStep, T* pDst, int dstStep, RoiSize roiSize,             \
                                        BorderType borderType, VALUE, const MorphBorderSpec* pSpec,                    \
                                        uint8_t* pBuffer) {                                                            \
    return zvp::borderFilter<EXTREMUM, CHANNELS>(Rows{pSrc, srcStep}, Rows{pDst, dstStep}, roiSize, borderType, pSpec, \
                                                 pBuffer);                                                             \
  }

#define ZVP_REPLICATE_FILTER(OPERATION, EXTREMUM, NAME, T, CHANNELS)                                                \
  Status zvpi##OPERATION##BorderReplicate_##NAME(const T* pSrc, int srcStep, T* pDst, int dstStep, RoiSize roiSize, \
                                                 BorderType borderType, MorphState* pState) {                       \
    return zvp::replicateFilter<EXTREMUM, CHANNELS>(Rows{pSrc, srcStep}, Rows{pDst, dstStep}, roiSize, borderType,  \
                                                    pState);                                                        \
  }

#define ZVP_OPERATION(OPERATION, EXTREMUM)                                                                             \
  Status zvpi##OPERATION##Border_1u_C1R(const uint8_t* pSrc, int srcStep, int srcBitOffset, uint8_t* pDst,             \
                                        int dstStep, int dstBitOffset, RoiSize roiSize, BorderType borderType,         \
                                        uint8_t, const MorphBorderSpec* pSpec, uint8_t* pBuffer) {                     \
    return zvp::bitFilter<EXTREMUM>({pSrc, srcStep, srcBitOffset}, {pDst, dstStep, dstBitOffset}, roiSize, borderType, \
                                    pSpec, pBuffer);                                                                   \
  }                                                                                                                    \
  ZVP_BORDER_FILTER(OPERATION, EXTREMUM, 8u_C1R, uint8_t, 1, uint8_t)                                                  \
  ZVP_BORDER_FILTER(OPERATION, EXTREMUM, 8u_C3R, uint8_t, 3, const uint8_t*)                                           \
  ZVP_BORDER_FILTER(OPERATION, EXTREMUM, 8u_C4R, uint8_t, 4, const uint8_t*)                                           \
  ZVP_BORDER_FILTER(OPERATION, EXTREMUM, 16u_C1R, uint16_t, 1, uint16_t)                                               \
  ZVP_BORDER_FILTER(OPERATION, EXTREMUM, 16s_C1R, int16_t, 1, int16_t)                                                 \
  ZVP_BORDER_FILTER(OPERATION, EXTREMUM, 32f_C1R, float, 1, float)                                                     \
  ZVP_BORDER_FILTER(OPERATION, EXTREMUM, 32f_C3R, float, 3, const float*)                                              \
  ZVP_BORDER_FILTER(OPERATION, EXTREMUM, 32f_C4R, float, 4, const float*)                                              \
  ZVP_REPLICATE_FILTER(OPERATION, EXTREMUM, 8u_C1R, uint8_t, 1)                                                        \
  ZVP_REPLICATE_FILTER(OPERATION, EXTREMUM, 8u_C3R, uint8_t, 3)                                                        \
  ZVP_REPLICATE_FILTER(OPERATION, EXTREMUM, 8u_C4R, uint8_t, 4)                                                        \
  ZVP_REPLICATE_FILTER(OPERATION, EXTREMUM, 32f_C1R, float, 1)                                                         \
  ZVP_REPLICATE_FILTER(OPERATION, EXTREMUM, 32f_C3R, float, 3)                                                         \
  ZVP_REPLICATE_FILTER(OPERATION, EXTREMUM, 32f_C4R, float, 4)

ZVP_OPERATION(Erode, Minimum)
ZVP_OPERATION(Dilate, Maximum)
