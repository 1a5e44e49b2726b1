// Integral images and rectangular standard deviations.
#include <zvpcv/integral.h>

#include "families.h"
#include "operands.h"

namespace fuzz {
namespace {

template <class S>
Operand tableOf(Bytes& in, RoiSize size, int margin) {
  if (size.width < 1 || size.height < 1) return writesImage<S>(in, 0, 0);
  return writesImage<S>(in, double(size.width) + margin, double(size.height) + margin);
}

template <int margin, class T, class S, class... Start>
void oneTable(Bytes& in, Status (*f)(const T*, int, S*, int, RoiSize, Start...)) {
  const RoiSize size = someSize(in);
  const auto src = readsImage<T>(in, size.width, size.height);
  const auto sums = tableOf<S>(in, size, margin);
  checkCall(f(src, src.step, sums, sums.step, size, static_cast<Start>(in.ConsumeIntegral<int>())...), src, sums);
}

template <int margin, class S, class Q>
void twoTables(Bytes& in, Status (*f)(const std::uint8_t*, int, S*, int, Q*, int, RoiSize, S, Q)) {
  const RoiSize size = someSize(in);
  const auto src = readsImage<std::uint8_t>(in, size.width, size.height);
  const auto sums = tableOf<S>(in, size, margin);
  const auto squares = tableOf<Q>(in, size, margin);
  const auto start = static_cast<S>(in.ConsumeIntegral<int>());
  const auto startSqr = static_cast<Q>(in.ConsumeIntegral<int>());
  checkCall(f(src, src.step, sums, sums.step, squares, squares.step, size, start, startSqr), src, sums, squares);
}

enum class Shape { kUpright, kTilted };

// The corners of a rectangle as positions relative to the one it is placed at; only for valid rectangles.
std::vector<Corner> corners(Rect r, Shape shape) {
  const double x = r.x, y = r.y, w = r.width, h = r.height;
  if (shape == Shape::kUpright) return {{x, y}, {x + w, y}, {x, y + h}, {x + w, y + h}};
  return {{x + h, y}, {x, y + h}, {x + w + h, y + w}, {x + w, y + w + h}};
}

template <Shape shape, class S, class Q, class T, class... ScaleFactor>
void stdDev(Bytes& in, Status (*f)(const S*, int, const Q*, int, T*, int, RoiSize, Rect, ScaleFactor...)) {
  const RoiSize size = someSize(in);
  const Rect r = someRect(in);
  Spans spans;
  if (r.x >= 0 && r.y >= 0 && r.width > 0 && r.height > 0)
    for (const Corner corner : corners(r, shape)) addRegion(spans, corner, size.width, size.height);
  double row = double(size.width) + r.x + r.width;
  if (shape == Shape::kTilted) row += double(r.y) + r.height - 1;
  const auto sums = reads<S>(in, spans, row);
  const auto squares = reads<Q>(in, spans, row);
  const auto dst = writesImage<T>(in, size.width, size.height);
  checkCall(f(sums, sums.step, squares, squares.step, dst, dst.step, size, r,
              static_cast<ScaleFactor>(number(in, -70, 70))...),
            sums, squares, dst);
}

constexpr Target kTargets[] = {
    ZVP_TARGET(oneTable<1>, zvpiIntegral_8u32s_C1R),
    ZVP_TARGET(oneTable<1>, zvpiIntegral_8u32f_C1R),
    ZVP_TARGET(oneTable<1>, zvpiIntegral_32f_C1R),
    ZVP_TARGET(twoTables<1>, zvpiSqrIntegral_8u32s_C1R),
    ZVP_TARGET(twoTables<1>, zvpiSqrIntegral_8u32s64f_C1R),
    ZVP_TARGET(twoTables<1>, zvpiSqrIntegral_8u32f64f_C1R),
    ZVP_TARGET(oneTable<2>, zvpiTiltedIntegral_8u32s_C1R),
    ZVP_TARGET(oneTable<2>, zvpiTiltedIntegral_8u32f_C1R),
    ZVP_TARGET(twoTables<2>, zvpiTiltedSqrIntegral_8u32s_C1R),
    ZVP_TARGET(twoTables<2>, zvpiTiltedSqrIntegral_8u32s64f_C1R),
    ZVP_TARGET(twoTables<2>, zvpiTiltedSqrIntegral_8u32f64f_C1R),
    ZVP_TARGET(stdDev<Shape::kUpright>, zvpiRectStdDev_32f_C1R),
    ZVP_TARGET(stdDev<Shape::kUpright>, zvpiRectStdDev_32s32f_C1R),
    ZVP_TARGET(stdDev<Shape::kUpright>, zvpiRectStdDev_32s_C1RSfs),
    ZVP_TARGET(stdDev<Shape::kTilted>, zvpiTiltedRectStdDev_32f_C1R),
    ZVP_TARGET(stdDev<Shape::kTilted>, zvpiTiltedRectStdDev_32s32f_C1R),
    ZVP_TARGET(stdDev<Shape::kTilted>, zvpiTiltedRectStdDev_32s_C1RSfs),
};

}  // namespace

Targets integralTargets() { return kTargets; }

}  // namespace fuzz
