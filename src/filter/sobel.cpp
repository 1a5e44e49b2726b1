// Sobel derivatives with borders.
#include "core/query.h"
#include "filter/window_filter.h"
#include "zvpcv/filter.h"

namespace zvp::filter {
namespace {

// Sums of bytes under 5x5 taps stay within 16 bits.
using Sum = int16_t;

constexpr int kMask3x3 = 33, kMask5x5 = 55;

Status knownMask(int maskSize) { return check(maskSize == kMask3x3 || maskSize == kMask5x5, ErrMaskSize); }

template <int radius>
using Memory = WindowMemory<radius, uint8_t, Sum>;

Status reportSobelSize(RoiSize roi, int maskSize, int* size) {
  const Bytes bytes = maskSize == kMask3x3 ? Memory<1>::size(roi.width) : Memory<2>::size(roi.width);
  return reportSize(firstFailure(nonNull(size), nonEmpty(roi), knownMask(maskSize)), bytes, size);
}

template <template <int> class DownY, template <int> class AlongX>
Status sobel(Rows<const uint8_t> src, Rows<Sum> dst, RoiSize roi, int maskSize, BorderType type, uint8_t value,
             uint8_t* buffer) {
  if (Status s =
          firstFailure(nonNull(src, dst, buffer), nonEmpty(roi), rowsFit(roi.width, src), rowsFit(roi.width, dst),
                       wholeElements(src, dst), knownMask(maskSize), check(isFilterBorder(type), ErrBadArg),
                       check(static_cast<const void*>(src.data) != dst.data, ErrInPlaceNotSupported)))
    return s;
  if (maskSize == kMask3x3) {
    filterWindows<DownY<1>, AlongX<1>, 1>(src, dst, roi, type, value, buffer);
  } else {
    filterWindows<DownY<2>, AlongX<2>, 2>(src, dst, roi, type, value, buffer);
  }
  return StatusOk;
}

}  // namespace
}  // namespace zvp::filter

using namespace zvp::filter;
using zvp::Rows;

Status zvpiFilterSobelHorizBorder_8u16s_C1R(const uint8_t* pSrc, int srcStep, int16_t* pDst, int dstStep,
                                            RoiSize roiSize, int maskSize, BorderType borderType, uint8_t borderValue,
                                            uint8_t* pBuffer) {
  return sobel<Smooth, FirstDerivative>(Rows{pSrc, srcStep}, Rows{pDst, dstStep}, roiSize, maskSize, borderType,
                                        borderValue, pBuffer);
}

Status zvpiFilterSobelHorizBorderGetBufferSize_8u16s_C1R(RoiSize roiSize, int maskSize, int* pBufferSize) {
  return reportSobelSize(roiSize, maskSize, pBufferSize);
}
