// Chamfer distance transforms: pixels start at 0 or at the type's maximum, then two passes lower them.
#include "distance/chamfer.h"

#include "core/checks.h"
#include "distance/chamfer_rows.h"
#include "distance/chamfer_wave.h"
#include "zvpcv/distance.h"

namespace zvp::distance {
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
  if (Status s = firstFailure(nonNull(src, dst, metrics), nonEmpty(roi), rowsFit(roi.width, src),
                              rowsFit(roi.width, dst), wholeElements(dst)))
    return s;
  if (Status s = weightsArePositive<kernel>(metrics)) return s;
  const auto weights = weightsFrom<kernel, T>(metrics);
  forEachRow(roi.height, roi.width, markFeatures<T>, src, dst);
  relax<kernel, Pass::kForward>(dst, roi, weights);
  relax<kernel, Pass::kBackward>(dst, roi, weights);
  return StatusOk;
}

}  // namespace
}  // namespace zvp::distance

using zvp::Rows;
using namespace zvp::distance;

#define ZVP_CHAMFER(name, kernel, T, M)                                                                     \
  Status name(const uint8_t* pSrc, int srcStep, T* pDst, int dstStep, RoiSize roiSize, const M* pMetrics) { \
    return distanceTransform<kernel>(Rows{pSrc, srcStep}, Rows{pDst, dstStep}, roiSize, pMetrics);          \
  }
#define ZVP_CHAMFER_IN_PLACE(name, kernel)                                                                         \
  Status name(uint8_t* pSrcDst, int srcDstStep, RoiSize roiSize, const int32_t* pMetrics) {                        \
    return distanceTransform<kernel>(Rows<const uint8_t>{pSrcDst, srcDstStep}, Rows{pSrcDst, srcDstStep}, roiSize, \
                                     pMetrics);                                                                    \
  }

ZVP_CHAMFER(zvpiDistanceTransform_3x3_8u_C1R, Kernel::k3x3, uint8_t, int32_t)
ZVP_CHAMFER(zvpiDistanceTransform_3x3_8u16u_C1R, Kernel::k3x3, uint16_t, int32_t)
ZVP_CHAMFER(zvpiDistanceTransform_3x3_8u32f_C1R, Kernel::k3x3, float, float)
ZVP_CHAMFER(zvpiDistanceTransform_5x5_8u_C1R, Kernel::k5x5, uint8_t, int32_t)
ZVP_CHAMFER(zvpiDistanceTransform_5x5_8u16u_C1R, Kernel::k5x5, uint16_t, int32_t)
ZVP_CHAMFER(zvpiDistanceTransform_5x5_8u32f_C1R, Kernel::k5x5, float, float)
ZVP_CHAMFER_IN_PLACE(zvpiDistanceTransform_3x3_8u_C1IR, Kernel::k3x3)
ZVP_CHAMFER_IN_PLACE(zvpiDistanceTransform_5x5_8u_C1IR, Kernel::k5x5)
