// Checks that erosion, dilation and the composite operations share.
#pragma once

#include "core/checks.h"
#include "filter/border.h"
#include "morph/filter.h"

namespace zvp {

constexpr Status acceptedBorder(BorderType type) {
  return check(borderMode(type) == BorderReplicate || borderMode(type) == BorderInMemory, ErrBorderType);
}

template <class T>
Status checkImages(Rows<const T> src, Rows<T> dst, RoiSize roi, int channels) {
  return firstFailure(nonEmpty(roi), rowsFit(int64_t{roi.width} * channels, src, dst), wholeElements(src, dst));
}

inline Status checkImages(BitRows<const uint8_t> src, BitRows<uint8_t> dst, RoiSize roi) {
  const int64_t rowBytes = (int64_t{roi.width} + 7) >> 3;
  return firstFailure(check(roi.width >= 1 && roi.height >= 1 && src.bit >= 0 && dst.bit >= 0, ErrSize),
                      check(src.step >= rowBytes && dst.step >= rowBytes, ErrStep));
}

inline Status fitsWidth(RoiSize roi, const StructuringElement& element) {
  return check(roi.width <= element.maxRoiWidth, ErrSize);
}

}  // namespace zvp
