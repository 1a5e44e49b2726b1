// Standard deviation of the pixels inside a rectangle, at every position, from four corners of two integral images.
#include "core/checks.h"
#include "core/rows.h"
#include "simd/walk.h"
#include "stats/tables.h"
#include "zvpcv/integral.h"

namespace zvp::stats {
namespace {

using simd::convert, simd::Pack;

struct Corner {
  int64_t column, row;
};

// The corners enter a rectangle sum as (a - b) + (d - e); area is the number of pixels in the rectangle.
struct Shape {
  Corner a, b, d, e;
  double area;
  int64_t tableWidth;  // elements of a table row that the call asks for
};

Shape uprightShape(RoiSize roi, Rect r) {
  const int64_t x = r.x, y = r.y, right = x + r.width, bottom = y + r.height;
  const auto area = static_cast<float>(int64_t{r.width} * r.height);
  return {{x, y}, {right, y}, {right, bottom}, {x, bottom}, area, roi.width + right};
}

Shape tiltedShape(RoiSize roi, Rect r) {
  const int64_t x = r.x, y = r.y, w = r.width, h = r.height;
  const Corner top{x + h, y}, left{x, y + h}, right{x + w + h, y + w}, bottom{x + w, y + w + h};
  return {top, left, bottom, right, 2.0 * r.width * r.height, roi.width + w + x + y + h - 1};
}

// A corner's difference in the table's type: integers wrap.
template <class V>
ZVP_INLINE auto bracket(V a, V b, V d, V e) {
  return (a - b) + (d - e);
}

// meanSq - mean^2 in double precision, for a pack of positions.
template <int N, class S, class Q>
ZVP_INLINE Pack<double, N> variance(S sum, Q squares, double inverseArea) {
  const auto toDouble = [](auto v) {
    if constexpr (std::is_same_v<simd::Element<decltype(v)>, uint32_t>) {
      return convert<double>(Pack<int32_t, N>(v));
    } else {
      return convert<double>(v);
    }
  };
  const Pack<double, N> mean = toDouble(sum) * inverseArea, meanSq = toDouble(squares) * inverseArea;
  return meanSq - mean * mean;
}

// The result for single-precision output. A negative variance gives NaN.
struct ToFloat {
  template <class V>
  ZVP_INLINE auto operator()(V variance) const {
    return simd::squareRoot(convert<float>(variance));
  }
};

// The result for 32-bit integers: scaled, rounded to nearest even, saturated. A negative variance gives 0.
struct ToScaledInteger {
  explicit ToScaledInteger(int scaleFactor) {
    // Beyond 2^+-1000 every root that tables can give is 0 or saturates already.
    constexpr int kLimit = 1000, kBias = 1023, kMantissaBits = 52;
    const int exponent = scaleFactor > kLimit ? -kLimit : scaleFactor < -kLimit ? kLimit : -scaleFactor;
    scale = std::bit_cast<double>(static_cast<uint64_t>(kBias + exponent) << kMantissaBits);
  }

  template <class V>
  ZVP_INLINE auto operator()(V variance) const {
    constexpr int N = simd::laneCount<V>;
    const V zero = simd::broadcast<double, N>(0.0), highest = simd::broadcast<double, N>(INT32_MAX);
    const V root = simd::squareRoot(simd::max(variance, zero));
    return convert<int32_t>(simd::min(V(root * scale), highest));
  }

  double scale;
};

template <class S, class Q, class T, class Result>
Status rectStdDev(Rows<const S> src, Rows<const Q> sqr, Rows<T> dst, RoiSize roi, Rect rect, Shape shape,
                  Result result) {
  const bool rectIsValid = rect.x >= 0 && rect.y >= 0 && rect.width >= 1 && rect.height >= 1;
  if (Status s = firstFailure(nonNull(src, sqr, dst), nonEmpty(roi), rowsFit(shape.tableWidth, src, sqr),
                              rowsFit(roi.width, dst), wholeElements(src, sqr, dst), check(rectIsValid, ErrSize)))
    return s;
  constexpr int N = simd::lanes<double>;
  const double inverseArea = 1.0 / shape.area;
  const auto stdDev = [=](auto a, auto b, auto d, auto e, auto qa, auto qb, auto qd, auto qe) {
    return result(variance<simd::laneCount<decltype(a)>>(bracket(a, b, d, e), bracket(qa, qb, qd, qe), inverseArea));
  };
  for (int y = 0; y < roi.height; ++y) {
    const auto at = [y](const auto& table, Corner c) {
      using E = std::remove_cvref_t<decltype(*table.data)>;
      return reinterpret_cast<const Wrapping<E>*>(table.row(y + c.row) + c.column);
    };
    simd::transformRowBy<N>(roi.width, stdDev, dst.row(y), at(src, shape.a), at(src, shape.b), at(src, shape.d),
                            at(src, shape.e), at(sqr, shape.a), at(sqr, shape.b), at(sqr, shape.d), at(sqr, shape.e));
  }
  return StatusOk;
}

}  // namespace
}  // namespace zvp::stats

using namespace zvp::stats;
using zvp::Rows;

#define ZVP_RECT_STD_DEV(name, S, shape)                                                                              \
  Status name(const S* pSrc, int srcStep, const double* pSqr, int sqrStep, float* pDst, int dstStep, RoiSize roiSize, \
              Rect rect) {                                                                                            \
    return rectStdDev(Rows{pSrc, srcStep}, Rows{pSqr, sqrStep}, Rows{pDst, dstStep}, roiSize, rect,                   \
                      shape(roiSize, rect), ToFloat{});                                                               \
  }
ZVP_RECT_STD_DEV(zvpiRectStdDev_32f_C1R, float, uprightShape)
ZVP_RECT_STD_DEV(zvpiRectStdDev_32s32f_C1R, int32_t, uprightShape)
ZVP_RECT_STD_DEV(zvpiTiltedRectStdDev_32f_C1R, float, tiltedShape)
ZVP_RECT_STD_DEV(zvpiTiltedRectStdDev_32s32f_C1R, int32_t, tiltedShape)

#define ZVP_SCALED_RECT_STD_DEV(name, shape)                                                                  \
  Status name(const int32_t* pSrc, int srcStep, const int32_t* pSqr, int sqrStep, int32_t* pDst, int dstStep, \
              RoiSize roiSize, Rect rect, int scaleFactor) {                                                  \
    return rectStdDev(Rows{pSrc, srcStep}, Rows{pSqr, sqrStep}, Rows{pDst, dstStep}, roiSize, rect,           \
                      shape(roiSize, rect), ToScaledInteger(scaleFactor));                                    \
  }
ZVP_SCALED_RECT_STD_DEV(zvpiRectStdDev_32s_C1RSfs, uprightShape)
ZVP_SCALED_RECT_STD_DEV(zvpiTiltedRectStdDev_32s_C1RSfs, tiltedShape)
