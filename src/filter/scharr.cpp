// Scharr derivatives with borders.
#include "filter/scharr.h"

#include "core/query.h"
#include "core/runs.h"
#include "zvpcv/filter.h"

namespace zvp::filter {
namespace {

constexpr float kUnscaled = 1.0f;

template <Derivative kind>
Status scharr(Rows<const float> src, Rows<float> dst, RoiSize roi, BorderType type, float value, uint8_t* buffer) {
  if (Status s = firstFailure(nonNull(src, dst, buffer), nonEmpty(roi), rowsFit(roi.width, src, dst),
                              wholeElements(src, dst), check(isFilterBorder(type), ErrBadArg)))
    return s;
  const AxisBorder across = horizontalBorder(type), down = verticalBorder(type);
  auto* constant = reinterpret_cast<float*>(buffer);
  if (borderMode(type) == BorderConstant) fillRun(constant, roi.width + 2, value);
  const auto rowAt = [&](int64_t y) -> const float* {
    const int64_t from = sourceCoordinate(y, roi.height, down);
    return from == kNoSource ? constant + 1 : src.row(from);
  };
  const RowEnds ends{sourceCoordinate(-1, roi.width, across), sourceCoordinate(roi.width, roi.width, across), value};
  for (int y = 0; y < roi.height; ++y) {
    const ThreeRows<float> rows{rowAt(int64_t{y} - 1), src.row(y), rowAt(int64_t{y} + 1)};
    scharrRow<kind>(rows, ends, roi.width, kUnscaled, dst.row(y));
  }
  return StatusOk;
}

Status reportScharrSize(RoiSize roi, int* size) {
  return reportSize(firstFailure(nonNull(size), nonEmpty(roi)), scharrBufferSize(roi), size);
}

}  // namespace
}  // namespace zvp::filter

using namespace zvp::filter;
using zvp::Rows;

Status zvpiFilterScharrHorizBorder_32f_C1R(const float* pSrc, int srcStep, float* pDst, int dstStep, RoiSize roiSize,
                                           BorderType borderType, float borderValue, uint8_t* pBuffer) {
  return scharr<Derivative::kAlongX>(Rows{pSrc, srcStep}, Rows{pDst, dstStep}, roiSize, borderType, borderValue,
                                     pBuffer);
}

Status zvpiFilterScharrVertBorder_32f_C1R(const float* pSrc, int srcStep, float* pDst, int dstStep, RoiSize roiSize,
                                          BorderType borderType, float borderValue, uint8_t* pBuffer) {
  return scharr<Derivative::kAlongY>(Rows{pSrc, srcStep}, Rows{pDst, dstStep}, roiSize, borderType, borderValue,
                                     pBuffer);
}

Status zvpiFilterScharrHorizBorderGetBufferSize_32f_C1R(RoiSize roiSize, int* pBufferSize) {
  return reportScharrSize(roiSize, pBufferSize);
}

Status zvpiFilterScharrVertBorderGetBufferSize_32f_C1R(RoiSize roiSize, int* pBufferSize) {
  return reportScharrSize(roiSize, pBufferSize);
}
