#include "core/checks.h"
#include "core/rows.h"
#include "simd/walk.h"
#include "zvpcv/arithmetic.h"

namespace zvp {
namespace {

struct Difference {
  template <class V>
  V operator()(V a, V b) const {
    if constexpr (std::is_floating_point_v<simd::Element<V>>) {
      return simd::absolute(V(a - b));
    } else {
      return V(simd::max(a, b) - simd::min(a, b));
    }
  }
};

template <int channels, class T>
Status absDiff(Rows<const T> a, Rows<const T> b, Rows<T> dst, RoiSize roi) {
  const int64_t elements = int64_t{roi.width} * channels;
  if (Status s =
          firstFailure(nonNull(a, b, dst), nonEmpty(roi), rowsFit(elements, a, b, dst), wholeElements(a, b, dst)))
    return s;
  forEachRow(
      roi.height, static_cast<int>(elements),
      [](const T* rowA, const T* rowB, T* out, int n) { simd::transformRow(n, Difference{}, out, rowA, rowB); }, a, b,
      dst);
  return StatusOk;
}

template <class T>
Status absDiffC(Rows<const T> src, Rows<T> dst, RoiSize roi, T value) {
  if (Status s = firstFailure(nonNull(src, dst), nonEmpty(roi), rowsFit(roi.width, src, dst), wholeElements(src, dst)))
    return s;
  const auto difference = [value]<class V>(V v) {
    return Difference{}(v, simd::broadcast<T, simd::laneCount<V>>(value));
  };
  forEachRow(
      roi.height, roi.width, [=](const T* row, T* out, int n) { simd::transformRow(n, difference, out, row); }, src,
      dst);
  return StatusOk;
}

template <class T>
T clampTo(int value) {
  constexpr int kMax = static_cast<T>(-1);
  return static_cast<T>(value <= 0 ? 0 : value >= kMax ? kMax : value);
}

}  // namespace
}  // namespace zvp

using zvp::absDiff, zvp::absDiffC, zvp::clampTo, zvp::Rows;

Status zvpiAbsDiff_8u_C1R(const uint8_t* pSrc1, int src1Step, const uint8_t* pSrc2, int src2Step, uint8_t* pDst,
                          int dstStep, RoiSize roiSize) {
  return absDiff<1>(Rows{pSrc1, src1Step}, Rows{pSrc2, src2Step}, Rows{pDst, dstStep}, roiSize);
}

Status zvpiAbsDiff_8u_C3R(const uint8_t* pSrc1, int src1Step, const uint8_t* pSrc2, int src2Step, uint8_t* pDst,
                          int dstStep, RoiSize roiSize) {
  return absDiff<3>(Rows{pSrc1, src1Step}, Rows{pSrc2, src2Step}, Rows{pDst, dstStep}, roiSize);
}

Status zvpiAbsDiff_16u_C1R(const uint16_t* pSrc1, int src1Step, const uint16_t* pSrc2, int src2Step, uint16_t* pDst,
                           int dstStep, RoiSize roiSize) {
  return absDiff<1>(Rows{pSrc1, src1Step}, Rows{pSrc2, src2Step}, Rows{pDst, dstStep}, roiSize);
}

Status zvpiAbsDiff_32f_C1R(const float* pSrc1, int src1Step, const float* pSrc2, int src2Step, float* pDst, int dstStep,
                           RoiSize roiSize) {
  return absDiff<1>(Rows{pSrc1, src1Step}, Rows{pSrc2, src2Step}, Rows{pDst, dstStep}, roiSize);
}

Status zvpiAbsDiffC_8u_C1R(const uint8_t* pSrc, int srcStep, uint8_t* pDst, int dstStep, RoiSize roiSize, int value) {
  return absDiffC(Rows{pSrc, srcStep}, Rows{pDst, dstStep}, roiSize, clampTo<uint8_t>(value));
}

Status zvpiAbsDiffC_16u_C1R(const uint16_t* pSrc, int srcStep, uint16_t* pDst, int dstStep, RoiSize roiSize,
                            int value) {
  return absDiffC(Rows{pSrc, srcStep}, Rows{pDst, dstStep}, roiSize, clampTo<uint16_t>(value));
}

Status zvpiAbsDiffC_32f_C1R(const float* pSrc, int srcStep, float* pDst, int dstStep, RoiSize roiSize, float value) {
  return absDiffC(Rows{pSrc, srcStep}, Rows{pDst, dstStep}, roiSize, value);
}
