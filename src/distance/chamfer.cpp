// Chamfer distance transforms: pixels start at 0 or at the type's maximum, then two passes lower them.
#include "distance/chamfer.h"

#include "core/checks.h"
#include "distance/chamfer_rows.h"
#include "distance/chamfer_wave.h"
#include "zvpcv/distance.h"

namespace zvp {
namespace {

template <Kernel kernel>
inline constexpr int kWeightCount = kernel == Kernel::k3x3 ? 2 : 3;

// Integers are at least 1; floats greater than 0, which a NaN is not.
template <Kernel kernel, class M>
Status weightsArePositive(const M* metrics) {
  bool positive = true;
  for (int i = 0; i < kWeightCount<kernel>; ++i) positive = positive && simd::load<M>(metrics + i) > 0;
  return check(positive, ErrMetric);
}

// A weight beyond the type's maximum saturates every sum, as the maximum itself does.
template <Kernel kernel, class T, class M>
Weights<T> weightsFrom(const M* metrics) {
  T w[3] = {};
  for (int i = 0; i < kWeightCount<kernel>; ++i)
    w[i] = static_cast<T>(simd::min<M>(simd::load<M>(metrics + i), kFarthest<T>));
  return {w[0], w[1], w[2]};
}

template <class T>
void markFeatures(const uint8_t* src, T* dst, int n) {
  for (int x = 0; x < n; ++x) simd::store(dst + x, src[x] != 0 ? kFarthest<T> : T{0});
}

template <Kernel kernel, Pass pass, class T>
void relax(Rows<T> image, RoiSize roi, Weights<T> weights) {
  if constexpr (std::is_same_v<T, float>) {
    relaxWaves<kernel, pass>(image, roi, weights);
  } else {
    relaxRows<kernel, pass>(image, roi, weights);
  }
}

template <Kernel kernel, class T, class M>
Status distanceTransform(Rows<const uint8_t> src, Rows<T> dst, RoiSize roi, const M* metrics) {
  if (Status s = firstFailure(nonNull(src), nonNull(dst), nonNull(metrics), nonEmpty(roi), rowsFit(roi.width, src),
                              rowsFit(roi.width, dst), wholeElements(dst)))
    return s;
  if (Status s = weightsArePositive<kernel>(metrics)) return s;
  const auto weights = weightsFrom<kernel, T>(metrics);
  for (int y = 0; y < roi.height; ++y) markFeatures(src.row(y), dst.row(y), roi.width);
  relax<kernel, Pass::kForward>(dst, roi, weights);
  relax<kernel, Pass::kBackward>(dst, roi, weights);
  return StatusOk;
}

}  // namespace
}  // namespace zvp

using zvp::distanceTransform, zvp::Kernel, zvp::Rows;

Status zvpiDistanceTransform_3x3_8u_C1R(const uint8_t* pSrc, int srcStep, uint8_t* pDst, int dstStep, RoiSize roiSize,
                                        const int32_t* pMetrics) {
  return distanceTransform<Kernel::k3x3>(Rows{pSrc, srcStep}, Rows{pDst, dstStep}, roiSize, pMetrics);
}

Status zvpiDistanceTransform_3x3_8u_C1IR(uint8_t* pSrcDst, int srcDstStep, RoiSize roiSize, const int32_t* pMetrics) {
  return zvpiDistanceTransform_3x3_8u_C1R(pSrcDst, srcDstStep, pSrcDst, srcDstStep, roiSize, pMetrics);
}

Status zvpiDistanceTransform_3x3_8u16u_C1R(const uint8_t* pSrc, int srcStep, uint16_t* pDst, int dstStep,
                                           RoiSize roiSize, const int32_t* pMetrics) {
  return distanceTransform<Kernel::k3x3>(Rows{pSrc, srcStep}, Rows{pDst, dstStep}, roiSize, pMetrics);
}

Status zvpiDistanceTransform_3x3_8u32f_C1R(const uint8_t* pSrc, int srcStep, float* pDst, int dstStep, RoiSize roiSize,
                                           const float* pMetrics) {
  return distanceTransform<Kernel::k3x3>(Rows{pSrc, srcStep}, Rows{pDst, dstStep}, roiSize, pMetrics);
}

Status zvpiDistanceTransform_5x5_8u_C1R(const uint8_t* pSrc, int srcStep, uint8_t* pDst, int dstStep, RoiSize roiSize,
                                        const int32_t* pMetrics) {
  return distanceTransform<Kernel::k5x5>(Rows{pSrc, srcStep}, Rows{pDst, dstStep}, roiSize, pMetrics);
}

Status zvpiDistanceTransform_5x5_8u_C1IR(uint8_t* pSrcDst, int srcDstStep, RoiSize roiSize, const int32_t* pMetrics) {
  return zvpiDistanceTransform_5x5_8u_C1R(pSrcDst, srcDstStep, pSrcDst, srcDstStep, roiSize, pMetrics);
}

Status zvpiDistanceTransform_5x5_8u16u_C1R(const uint8_t* pSrc, int srcStep, uint16_t* pDst, int dstStep,
                                           RoiSize roiSize, const int32_t* pMetrics) {
  return distanceTransform<Kernel::k5x5>(Rows{pSrc, srcStep}, Rows{pDst, dstStep}, roiSize, pMetrics);
}

Status zvpiDistanceTransform_5x5_8u32f_C1R(const uint8_t* pSrc, int srcStep, float* pDst, int dstStep, RoiSize roiSize,
                                           const float* pMetrics) {
  return distanceTransform<Kernel::k5x5>(Rows{pSrc, srcStep}, Rows{pDst, dstStep}, roiSize, pMetrics);
}
