// Copies of windows at sub-pixel positions.
#include "core/checks.h"
#include "geometry/subpix.h"
#include "zvpcv/geometry.h"

namespace zvp {
namespace {

constexpr int kLeastScaleFactor = -13;

// In 0 .. 1; a displacement that is no finite number counts as 0.
float fractionOf(float displacement) {
  float fraction = displacement - truncf(displacement);
  if (fraction < 0.0f) fraction += 1.0f;
  return fraction >= 0.0f ? fraction : 0.0f;
}

constexpr Status scaleFactorFits(int scaleFactor) { return check(scaleFactor >= kLeastScaleFactor, ErrBadArg); }

template <class S, class D, class MakeWeights>
Status copySubpix(Rows<const S> src, Rows<D> dst, RoiSize roi, MakeWeights makeWeights, int scaleFactor = 0) {
  if (Status s = firstFailure(nonNull(src), nonNull(dst), nonEmpty(roi), rowsFit(roi.width, src),
                              rowsFit(roi.width, dst), wholeElements(src, dst), scaleFactorFits(scaleFactor)))
    return s;
  sampleInside(makeWeights(), src, dst, roi);
  return StatusOk;
}

template <class Weights, class S, class D, class... ScaleFactor>
Status copyIntersect(Rows<const S> src, RoiSize srcRoi, Rows<D> dst, RoiSize dstRoi, Point32f point, Point* min,
                     Point* max, ScaleFactor... scaleFactor) {
  if (Status s = firstFailure(nonNull(src), nonNull(dst), nonNull(min, max), nonEmpty(srcRoi), nonEmpty(dstRoi),
                              rowsFit(srcRoi.width, src), rowsFit(dstRoi.width, dst), wholeElements(src, dst),
                              scaleFactorFits(scaleFactor)...))
    return s;
  const WindowAxis x(point.x, dstRoi.width, srcRoi.width), y(point.y, dstRoi.height, srcRoi.height);
  const Weights weights(x.fraction, y.fraction, scaleFactor...);
  sampleWindow(weights, src, srcRoi, x, y, dst, dstRoi);
  const SampledRange columns = sampledRange(x, dstRoi.width, srcRoi.width);
  const SampledRange rows = sampledRange(y, dstRoi.height, srcRoi.height);
  simd::store(min, Point{columns.first, rows.first});
  simd::store(max, Point{columns.last, rows.last});
  return StatusOk;
}

}  // namespace
}  // namespace zvp

using zvp::FixedWeights, zvp::FloatWeights, zvp::Rows;

#define COPY_SUBPIX_FLOAT(name, S)                                                                              \
  Status zvpiCopySubpix_##name(const S* pSrc, int srcStep, float* pDst, int dstStep, RoiSize roiSize, float dx, \
                               float dy) {                                                                      \
    return zvp::copySubpix(Rows{pSrc, srcStep}, Rows{pDst, dstStep}, roiSize,                                   \
                           [=] { return zvp::raisedWeights<S>(zvp::fractionOf(dx), zvp::fractionOf(dy)); });    \
  }
COPY_SUBPIX_FLOAT(16u32f_C1R, uint16_t)
COPY_SUBPIX_FLOAT(8u32f_C1R, uint8_t)
COPY_SUBPIX_FLOAT(32f_C1R, float)

#define COPY_SUBPIX_FIXED(name, T)                                                                          \
  Status zvpiCopySubpix_##name(const T* pSrc, int srcStep, T* pDst, int dstStep, RoiSize roiSize, float dx, \
                               float dy) {                                                                  \
    return zvp::copySubpix(Rows{pSrc, srcStep}, Rows{pDst, dstStep}, roiSize,                               \
                           [=] { return FixedWeights(zvp::fractionOf(dx), zvp::fractionOf(dy)); });         \
  }
COPY_SUBPIX_FIXED(8u_C1R, uint8_t)
COPY_SUBPIX_FIXED(16u_C1R, uint16_t)

Status zvpiCopySubpix_8u16u_C1R_Sfs(const uint8_t* pSrc, int srcStep, uint16_t* pDst, int dstStep, RoiSize roiSize,
                                    float dx, float dy, int scaleFactor) {
  return zvp::copySubpix(
      Rows{pSrc, srcStep}, Rows{pDst, dstStep}, roiSize,
      [=] { return FixedWeights(zvp::fractionOf(dx), zvp::fractionOf(dy), scaleFactor); }, scaleFactor);
}

#define COPY_INTERSECT(name, S, D, Weights)                                                                           \
  Status zvpiCopySubpixIntersect_##name(const S* pSrc, int srcStep, RoiSize srcRoiSize, D* pDst, int dstStep,         \
                                        RoiSize dstRoiSize, Point32f point, Point* pMin, Point* pMax) {               \
    return zvp::copyIntersect<Weights>(Rows{pSrc, srcStep}, srcRoiSize, Rows{pDst, dstStep}, dstRoiSize, point, pMin, \
                                       pMax);                                                                         \
  }
COPY_INTERSECT(8u_C1R, uint8_t, uint8_t, FixedWeights)
COPY_INTERSECT(16u_C1R, uint16_t, uint16_t, FixedWeights)
COPY_INTERSECT(16u32f_C1R, uint16_t, float, FloatWeights)
COPY_INTERSECT(8u32f_C1R, uint8_t, float, FloatWeights)
COPY_INTERSECT(32f_C1R, float, float, FloatWeights)

Status zvpiCopySubpixIntersect_8u16u_C1R_Sfs(const uint8_t* pSrc, int srcStep, RoiSize srcRoiSize, uint16_t* pDst,
                                             int dstStep, RoiSize dstRoiSize, Point32f point, Point* pMin, Point* pMax,
                                             int scaleFactor) {
  return zvp::copyIntersect<FixedWeights>(Rows{pSrc, srcStep}, srcRoiSize, Rows{pDst, dstStep}, dstRoiSize, point, pMin,
                                          pMax, scaleFactor);
}
