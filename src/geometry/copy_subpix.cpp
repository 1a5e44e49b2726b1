// Copies of windows at sub-pixel positions.
#include "core/checks.h"
#include "geometry/window.h"
#include "zvpcv/geometry.h"

namespace zvp::geometry {
namespace {

constexpr int kLeastScaleFactor = -13;

// In 0 .. 1; a displacement that is no finite number counts as 0.
float fractionOf(float displacement) {
  float fraction = displacement - truncf(displacement);
  if (fraction < 0.0f) fraction += 1.0f;
  return fraction >= 0.0f ? fraction : 0.0f;
}

constexpr Status scaleFactorFits(int scaleFactor) { return check(scaleFactor >= kLeastScaleFactor, ErrBadArg); }

template <class S, class D>
Status checkCopy(Rows<const S> src, Rows<D> dst, RoiSize roi) {
  return firstFailure(nonNull(src, dst), nonEmpty(roi), rowsFit(roi.width, src, dst), wholeElements(src, dst));
}

template <class S>
Status copyFloat(Rows<const S> src, Rows<float> dst, RoiSize roi, float dx, float dy) {
  if (Status s = checkCopy(src, dst, roi)) return s;
  sampleInside(raisedWeights<S>(fractionOf(dx), fractionOf(dy)), src, dst, roi);
  return StatusOk;
}

template <class S, class D>
Status copyFixed(Rows<const S> src, Rows<D> dst, RoiSize roi, float dx, float dy, int scaleFactor) {
  if (Status s = firstFailure(checkCopy(src, dst, roi), scaleFactorFits(scaleFactor))) return s;
  sampleInside(FixedWeights(fractionOf(dx), fractionOf(dy), scaleFactor), src, dst, roi);
  return StatusOk;
}

template <class Weights, class S, class D, class... ScaleFactor>
Status copyIntersect(Rows<const S> src, RoiSize srcRoi, Rows<D> dst, RoiSize dstRoi, Point32f point, Point* min,
                     Point* max, ScaleFactor... scaleFactor) {
  if (Status s =
          firstFailure(nonNull(src, dst, min, max), nonEmpty(srcRoi), nonEmpty(dstRoi), rowsFit(srcRoi.width, src),
                       rowsFit(dstRoi.width, dst), wholeElements(src, dst), scaleFactorFits(scaleFactor)...))
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
}  // namespace zvp::geometry

#define ZVP_COPY_SUBPIX_FLOAT(NAME, S)                                                                     \
  Status NAME(const S* pSrc, int srcStep, float* pDst, int dstStep, RoiSize roiSize, float dx, float dy) { \
    return zvp::geometry::copyFloat(zvp::Rows{pSrc, srcStep}, zvp::Rows{pDst, dstStep}, roiSize, dx, dy);  \
  }

ZVP_COPY_SUBPIX_FLOAT(zvpiCopySubpix_16u32f_C1R, uint16_t)
ZVP_COPY_SUBPIX_FLOAT(zvpiCopySubpix_8u32f_C1R, uint8_t)
ZVP_COPY_SUBPIX_FLOAT(zvpiCopySubpix_32f_C1R, float)

#define ZVP_COPY_SUBPIX_FIXED(NAME, T)                                                                       \
  Status NAME(const T* pSrc, int srcStep, T* pDst, int dstStep, RoiSize roiSize, float dx, float dy) {       \
    return zvp::geometry::copyFixed(zvp::Rows{pSrc, srcStep}, zvp::Rows{pDst, dstStep}, roiSize, dx, dy, 0); \
  }

ZVP_COPY_SUBPIX_FIXED(zvpiCopySubpix_8u_C1R, uint8_t)
ZVP_COPY_SUBPIX_FIXED(zvpiCopySubpix_16u_C1R, uint16_t)

Status zvpiCopySubpix_8u16u_C1R_Sfs(const uint8_t* pSrc, int srcStep, uint16_t* pDst, int dstStep, RoiSize roiSize,
                                    float dx, float dy, int scaleFactor) {
  return zvp::geometry::copyFixed(zvp::Rows{pSrc, srcStep}, zvp::Rows{pDst, dstStep}, roiSize, dx, dy, scaleFactor);
}

#define ZVP_COPY_INTERSECT(NAME, S, D, WEIGHTS)                                                         \
  Status NAME(const S* pSrc, int srcStep, RoiSize srcRoiSize, D* pDst, int dstStep, RoiSize dstRoiSize, \
              Point32f point, Point* pMin, Point* pMax) {                                               \
    return zvp::geometry::copyIntersect<zvp::geometry::WEIGHTS>(                                        \
        zvp::Rows{pSrc, srcStep}, srcRoiSize, zvp::Rows{pDst, dstStep}, dstRoiSize, point, pMin, pMax); \
  }

ZVP_COPY_INTERSECT(zvpiCopySubpixIntersect_8u_C1R, uint8_t, uint8_t, FixedWeights)
ZVP_COPY_INTERSECT(zvpiCopySubpixIntersect_16u_C1R, uint16_t, uint16_t, FixedWeights)
ZVP_COPY_INTERSECT(zvpiCopySubpixIntersect_16u32f_C1R, uint16_t, float, FloatWeights)
ZVP_COPY_INTERSECT(zvpiCopySubpixIntersect_8u32f_C1R, uint8_t, float, FloatWeights)
ZVP_COPY_INTERSECT(zvpiCopySubpixIntersect_32f_C1R, float, float, FloatWeights)

Status zvpiCopySubpixIntersect_8u16u_C1R_Sfs(const uint8_t* pSrc, int srcStep, RoiSize srcRoiSize, uint16_t* pDst,
                                             int dstStep, RoiSize dstRoiSize, Point32f point, Point* pMin, Point* pMax,
                                             int scaleFactor) {
  return zvp::geometry::copyIntersect<zvp::geometry::FixedWeights>(
      zvp::Rows{pSrc, srcStep}, srcRoiSize, zvp::Rows{pDst, dstStep}, dstRoiSize, point, pMin, pMax, scaleFactor);
}
