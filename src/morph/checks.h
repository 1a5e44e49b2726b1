// Checks that erosion, dilation and the composite operations share.
#pragma once

#include "core/checks.h"
#include "morph/filter.h"

namespace zvp::morph {

constexpr Status acceptedBorder(BorderType type) {
  return check(borderMode(type) == BorderReplicate || borderMode(type) == BorderInMemory, ErrBorderType);
}

// Null pointers, then images.
template <class... Pointer>
Status checkCall(Flavour flavour, Image<const uint8_t> src, Image<uint8_t> dst, RoiSize roi, Pointer*... pointers) {
  const int64_t rowBytes = flavour.bits ? (int64_t{roi.width} + 7) >> 3 : int64_t{roi.width} * flavour.pixelBytes();
  return firstFailure(
      nonNull(src, dst, pointers...), nonEmpty(roi), check(src.bit >= 0 && dst.bit >= 0, ErrSize),
      check(src.step >= rowBytes && dst.step >= rowBytes, ErrStep),
      check(src.step % flavour.elementBytes == 0 && dst.step % flavour.elementBytes == 0, ErrStepNotMultiple));
}

// Bits are not filtered in place.
inline Status checkInPlace(Flavour flavour, Image<const uint8_t> src, Image<uint8_t> dst) {
  return check(!flavour.bits || src.data != dst.data, ErrInPlaceNotSupported);
}

inline Status fitsWidth(RoiSize roi, const StructuringElement& element) {
  return check(roi.width <= element.maxRoiWidth, ErrSize);
}

}  // namespace zvp::morph
