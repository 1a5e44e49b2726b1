// Erosion and dilation: checks, then the engine.
#include "morph/checks.h"

namespace zvp::morph {
namespace {

[[gnu::noinline]] Status borderFilter(Extremum extremum, Flavour flavour, Image<const uint8_t> src, Image<uint8_t> dst,
                                      RoiSize roi, BorderType border, const MorphBorderSpec* spec, uint8_t* buffer) {
  if (Status s = firstFailure(checkCall(flavour, src, dst, roi, spec, buffer), acceptedBorder(border),
                              checkInPlace(flavour, src, dst)))
    return s;
  const auto element = StructuringElement::of(spec);
  if (Status s = fitsWidth(roi, element)) return s;
  applyFilter(extremum, {flavour, element, roi, border, buffer}, src, {dst});
  return StatusOk;
}

// The older members: the work memory is inside the state.
[[gnu::noinline]] Status replicateFilter(Extremum extremum, Flavour flavour, Image<const uint8_t> src,
                                         Image<uint8_t> dst, RoiSize roi, BorderType border, MorphState* state) {
  if (Status s = firstFailure(checkCall(flavour, src, dst, roi, state), check(border == BorderReplicate, ErrBadArg)))
    return s;
  const auto element = StructuringElement::of(state);
  if (Status s = fitsWidth(roi, element)) return s;
  applyFilter(extremum, {flavour, element, roi, border, stateWork(state)}, src, {dst});
  return StatusOk;
}

}  // namespace
}  // namespace zvp::morph

using namespace zvp::morph;

#define ZVP_BITS(name, extremum)                                                                                 \
  Status name(const uint8_t* pSrc, int srcStep, int srcBitOffset, uint8_t* pDst, int dstStep, int dstBitOffset,  \
              RoiSize roiSize, BorderType borderType, uint8_t, const MorphBorderSpec* pSpec, uint8_t* pBuffer) { \
    return borderFilter(extremum, kBits, {pSrc, srcStep, srcBitOffset}, {pDst, dstStep, dstBitOffset}, roiSize,  \
                        borderType, pSpec, pBuffer);                                                             \
  }
#define ZVP_BORDER(name, T, channels, Value, extremum)                                                            \
  Status name(const T* pSrc, int srcStep, T* pDst, int dstStep, RoiSize roiSize, BorderType borderType, Value,    \
              const MorphBorderSpec* pSpec, uint8_t* pBuffer) {                                                   \
    return borderFilter(extremum, kFlavour<T, channels>, imageOf(pSrc, srcStep), imageOf(pDst, dstStep), roiSize, \
                        borderType, pSpec, pBuffer);                                                              \
  }
#define ZVP_REPLICATE(name, T, channels, extremum)                                                                   \
  Status name(const T* pSrc, int srcStep, T* pDst, int dstStep, RoiSize roiSize, BorderType borderType,              \
              MorphState* pState) {                                                                                  \
    return replicateFilter(extremum, kFlavour<T, channels>, imageOf(pSrc, srcStep), imageOf(pDst, dstStep), roiSize, \
                           borderType, pState);                                                                      \
  }

ZVP_BITS(zvpiErodeBorder_1u_C1R, kMinimum)
ZVP_BORDER(zvpiErodeBorder_8u_C1R, uint8_t, 1, uint8_t, kMinimum)
ZVP_BORDER(zvpiErodeBorder_8u_C3R, uint8_t, 3, const uint8_t*, kMinimum)
ZVP_BORDER(zvpiErodeBorder_8u_C4R, uint8_t, 4, const uint8_t*, kMinimum)
ZVP_BORDER(zvpiErodeBorder_16u_C1R, uint16_t, 1, uint16_t, kMinimum)
ZVP_BORDER(zvpiErodeBorder_16s_C1R, int16_t, 1, int16_t, kMinimum)
ZVP_BORDER(zvpiErodeBorder_32f_C1R, float, 1, float, kMinimum)
ZVP_BORDER(zvpiErodeBorder_32f_C3R, float, 3, const float*, kMinimum)
ZVP_BORDER(zvpiErodeBorder_32f_C4R, float, 4, const float*, kMinimum)
ZVP_REPLICATE(zvpiErodeBorderReplicate_8u_C1R, uint8_t, 1, kMinimum)
ZVP_REPLICATE(zvpiErodeBorderReplicate_8u_C3R, uint8_t, 3, kMinimum)
ZVP_REPLICATE(zvpiErodeBorderReplicate_8u_C4R, uint8_t, 4, kMinimum)
ZVP_REPLICATE(zvpiErodeBorderReplicate_32f_C1R, float, 1, kMinimum)
ZVP_REPLICATE(zvpiErodeBorderReplicate_32f_C3R, float, 3, kMinimum)
ZVP_REPLICATE(zvpiErodeBorderReplicate_32f_C4R, float, 4, kMinimum)

ZVP_BITS(zvpiDilateBorder_1u_C1R, kMaximum)
ZVP_BORDER(zvpiDilateBorder_8u_C1R, uint8_t, 1, uint8_t, kMaximum)
ZVP_BORDER(zvpiDilateBorder_8u_C3R, uint8_t, 3, const uint8_t*, kMaximum)
ZVP_BORDER(zvpiDilateBorder_8u_C4R, uint8_t, 4, const uint8_t*, kMaximum)
ZVP_BORDER(zvpiDilateBorder_16u_C1R, uint16_t, 1, uint16_t, kMaximum)
ZVP_BORDER(zvpiDilateBorder_16s_C1R, int16_t, 1, int16_t, kMaximum)
ZVP_BORDER(zvpiDilateBorder_32f_C1R, float, 1, float, kMaximum)
ZVP_BORDER(zvpiDilateBorder_32f_C3R, float, 3, const float*, kMaximum)
ZVP_BORDER(zvpiDilateBorder_32f_C4R, float, 4, const float*, kMaximum)
ZVP_REPLICATE(zvpiDilateBorderReplicate_8u_C1R, uint8_t, 1, kMaximum)
ZVP_REPLICATE(zvpiDilateBorderReplicate_8u_C3R, uint8_t, 3, kMaximum)
ZVP_REPLICATE(zvpiDilateBorderReplicate_8u_C4R, uint8_t, 4, kMaximum)
ZVP_REPLICATE(zvpiDilateBorderReplicate_32f_C1R, float, 1, kMaximum)
ZVP_REPLICATE(zvpiDilateBorderReplicate_32f_C3R, float, 3, kMaximum)
ZVP_REPLICATE(zvpiDilateBorderReplicate_32f_C4R, float, 4, kMaximum)
