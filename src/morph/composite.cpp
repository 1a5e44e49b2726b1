// Opening, closing, top-hat, black-hat and gradient: two filters and an intermediate image.
#include "morph/checks.h"
#include "morph/composite_mask.h"

namespace zvp::morph {
namespace {

enum class Operation { kOpen, kClose, kTophat, kBlackhat, kGradient };

struct Call {
  Flavour flavour;
  Image<const uint8_t> src;
  Image<uint8_t> dst;
  RoiSize roi;
  BorderType border;
  CompositeMask mask;

  Filter filter(const StructuringElement& element, RoiSize size) const {
    return {flavour, element, size, border, mask.work};
  }
  Filter filter(const StructuringElement& element) const { return filter(element, roi); }
};

// The intermediate image of an opening or closing: the region, enlarged on the sides in memory.
struct Enlarged {
  int left, top;
  int64_t width, height;

  Enlarged(RoiSize roi, BorderType border, const StructuringElement& e) {
    const AxisBorder horizontal = horizontalBorder(border), vertical = verticalBorder(border);
    left = horizontal.beforeInMemory ? e.anchor.x : 0;
    top = vertical.beforeInMemory ? e.anchor.y : 0;
    width = int64_t{roi.width} + left + (horizontal.afterInMemory ? e.rightExtent() : 0);
    height = int64_t{roi.height} + top + (vertical.afterInMemory ? e.bottomExtent() : 0);
  }

  RoiSize size() const { return {static_cast<int32_t>(width), static_cast<int32_t>(height)}; }
};

Status checkTemp(const Call& c, int64_t width, int64_t height) {
  return firstFailure(check(height <= c.mask.capacity / tempStep(c.flavour, width).value(), ErrSize),
                      checkInPlace(c.flavour, c.src, c.dst));
}

Image<uint8_t> tempImage(const Call& c, int64_t width) { return {c.mask.temp, tempStep(c.flavour, width).value()}; }

// An opening starts with the minimum, a closing with the maximum.
Status twoSteps(const Call& c, Extremum first, Output::Kind kind) {
  const Enlarged enlarged(c.roi, c.border, c.mask.forward);
  if (Status s = checkTemp(c, enlarged.width, enlarged.height)) return s;
  const Image<uint8_t> temp = tempImage(c, enlarged.width);
  applyFilter(first, c.filter(c.mask.forward, enlarged.size()), c.src.at(c.flavour, -enlarged.left, -enlarged.top),
              {temp});
  applyFilter(first == kMinimum ? kMaximum : kMinimum, c.filter(c.mask.reflected),
              temp.at(c.flavour, enlarged.left, enlarged.top).readable(), {c.dst, kind, c.src}, c.mask.rows);
  return StatusOk;
}

// The erosion goes to the intermediate image first, so that the source may be overwritten.
Status gradient(const Call& c) {
  if (Status s = checkTemp(c, c.roi.width, c.roi.height)) return s;
  const Image<uint8_t> temp = tempImage(c, c.roi.width);
  applyFilter(kMinimum, c.filter(c.mask.forward), c.src, {temp});
  applyFilter(kMaximum, c.filter(c.mask.forward), c.src, {c.dst, Output::kResultMinusOther, temp.readable()},
              c.mask.rows);
  return StatusOk;
}

[[gnu::noinline]] Status composite(Operation operation, Flavour flavour, Image<const uint8_t> src, Image<uint8_t> dst,
                                   RoiSize roi, BorderType border, const MorphAdvSpec* spec, uint8_t* buffer) {
  if (Status s = firstFailure(checkCall(flavour, src, dst, roi, spec, buffer), acceptedBorder(border))) return s;
  const Call call = {flavour, src, dst, roi, border, CompositeMask(flavour, spec, buffer)};
  if (Status s = fitsWidth(roi, call.mask.forward)) return s;
  switch (operation) {
    case Operation::kOpen:
      return twoSteps(call, kMinimum, Output::kResult);
    case Operation::kClose:
      return twoSteps(call, kMaximum, Output::kResult);
    case Operation::kTophat:
      return twoSteps(call, kMinimum, Output::kOtherMinusResult);
    case Operation::kBlackhat:
      return twoSteps(call, kMaximum, Output::kResultMinusOther);
    default:
      return gradient(call);
  }
}

}  // namespace
}  // namespace zvp::morph

using namespace zvp::morph;

#define ZVP_BITS(name, operation)                                                                               \
  Status name(const uint8_t* pSrc, int srcStep, int srcBitOffset, uint8_t* pDst, int dstStep, int dstBitOffset, \
              RoiSize roiSize, BorderType borderType, uint8_t, const MorphAdvSpec* pSpec, uint8_t* pBuffer) {   \
    return composite(Operation::operation, kBits, {pSrc, srcStep, srcBitOffset}, {pDst, dstStep, dstBitOffset}, \
                     roiSize, borderType, pSpec, pBuffer);                                                      \
  }
#define ZVP_COMPOSITE(name, T, channels, Value, operation)                                                        \
  Status name(const T* pSrc, int srcStep, T* pDst, int dstStep, RoiSize roiSize, BorderType borderType, Value,    \
              const MorphAdvSpec* pSpec, uint8_t* pBuffer) {                                                      \
    return composite(Operation::operation, kFlavour<T, channels>, imageOf(pSrc, srcStep), imageOf(pDst, dstStep), \
                     roiSize, borderType, pSpec, pBuffer);                                                        \
  }

ZVP_BITS(zvpiMorphOpenBorder_1u_C1R, kOpen)
ZVP_COMPOSITE(zvpiMorphOpenBorder_8u_C1R, uint8_t, 1, uint8_t, kOpen)
ZVP_COMPOSITE(zvpiMorphOpenBorder_8u_C3R, uint8_t, 3, const uint8_t*, kOpen)
ZVP_COMPOSITE(zvpiMorphOpenBorder_8u_C4R, uint8_t, 4, const uint8_t*, kOpen)
ZVP_COMPOSITE(zvpiMorphOpenBorder_16u_C1R, uint16_t, 1, uint16_t, kOpen)
ZVP_COMPOSITE(zvpiMorphOpenBorder_16s_C1R, int16_t, 1, int16_t, kOpen)
ZVP_COMPOSITE(zvpiMorphOpenBorder_32f_C1R, float, 1, float, kOpen)
ZVP_COMPOSITE(zvpiMorphOpenBorder_32f_C3R, float, 3, const float*, kOpen)
ZVP_COMPOSITE(zvpiMorphOpenBorder_32f_C4R, float, 4, const float*, kOpen)

ZVP_BITS(zvpiMorphCloseBorder_1u_C1R, kClose)
ZVP_COMPOSITE(zvpiMorphCloseBorder_8u_C1R, uint8_t, 1, uint8_t, kClose)
ZVP_COMPOSITE(zvpiMorphCloseBorder_8u_C3R, uint8_t, 3, const uint8_t*, kClose)
ZVP_COMPOSITE(zvpiMorphCloseBorder_8u_C4R, uint8_t, 4, const uint8_t*, kClose)
ZVP_COMPOSITE(zvpiMorphCloseBorder_16u_C1R, uint16_t, 1, uint16_t, kClose)
ZVP_COMPOSITE(zvpiMorphCloseBorder_16s_C1R, int16_t, 1, int16_t, kClose)
ZVP_COMPOSITE(zvpiMorphCloseBorder_32f_C1R, float, 1, float, kClose)
ZVP_COMPOSITE(zvpiMorphCloseBorder_32f_C3R, float, 3, const float*, kClose)
ZVP_COMPOSITE(zvpiMorphCloseBorder_32f_C4R, float, 4, const float*, kClose)

ZVP_BITS(zvpiMorphTophatBorder_1u_C1R, kTophat)
ZVP_COMPOSITE(zvpiMorphTophatBorder_8u_C1R, uint8_t, 1, uint8_t, kTophat)
ZVP_COMPOSITE(zvpiMorphTophatBorder_8u_C3R, uint8_t, 3, const uint8_t*, kTophat)
ZVP_COMPOSITE(zvpiMorphTophatBorder_8u_C4R, uint8_t, 4, const uint8_t*, kTophat)
ZVP_COMPOSITE(zvpiMorphTophatBorder_16u_C1R, uint16_t, 1, uint16_t, kTophat)
ZVP_COMPOSITE(zvpiMorphTophatBorder_16s_C1R, int16_t, 1, int16_t, kTophat)
ZVP_COMPOSITE(zvpiMorphTophatBorder_32f_C1R, float, 1, float, kTophat)
ZVP_COMPOSITE(zvpiMorphTophatBorder_32f_C3R, float, 3, const float*, kTophat)
ZVP_COMPOSITE(zvpiMorphTophatBorder_32f_C4R, float, 4, const float*, kTophat)

ZVP_BITS(zvpiMorphBlackhatBorder_1u_C1R, kBlackhat)
ZVP_COMPOSITE(zvpiMorphBlackhatBorder_8u_C1R, uint8_t, 1, uint8_t, kBlackhat)
ZVP_COMPOSITE(zvpiMorphBlackhatBorder_8u_C3R, uint8_t, 3, const uint8_t*, kBlackhat)
ZVP_COMPOSITE(zvpiMorphBlackhatBorder_8u_C4R, uint8_t, 4, const uint8_t*, kBlackhat)
ZVP_COMPOSITE(zvpiMorphBlackhatBorder_16u_C1R, uint16_t, 1, uint16_t, kBlackhat)
ZVP_COMPOSITE(zvpiMorphBlackhatBorder_16s_C1R, int16_t, 1, int16_t, kBlackhat)
ZVP_COMPOSITE(zvpiMorphBlackhatBorder_32f_C1R, float, 1, float, kBlackhat)
ZVP_COMPOSITE(zvpiMorphBlackhatBorder_32f_C3R, float, 3, const float*, kBlackhat)
ZVP_COMPOSITE(zvpiMorphBlackhatBorder_32f_C4R, float, 4, const float*, kBlackhat)

ZVP_BITS(zvpiMorphGradientBorder_1u_C1R, kGradient)
ZVP_COMPOSITE(zvpiMorphGradientBorder_8u_C1R, uint8_t, 1, uint8_t, kGradient)
ZVP_COMPOSITE(zvpiMorphGradientBorder_8u_C3R, uint8_t, 3, const uint8_t*, kGradient)
ZVP_COMPOSITE(zvpiMorphGradientBorder_8u_C4R, uint8_t, 4, const uint8_t*, kGradient)
ZVP_COMPOSITE(zvpiMorphGradientBorder_16u_C1R, uint16_t, 1, uint16_t, kGradient)
ZVP_COMPOSITE(zvpiMorphGradientBorder_16s_C1R, int16_t, 1, int16_t, kGradient)
ZVP_COMPOSITE(zvpiMorphGradientBorder_32f_C1R, float, 1, float, kGradient)
ZVP_COMPOSITE(zvpiMorphGradientBorder_32f_C3R, float, 3, const float*, kGradient)
ZVP_COMPOSITE(zvpiMorphGradientBorder_32f_C4R, float, 4, const float*, kGradient)
