#include <zvpcv/geometry.h>

#include <vector>

#include "cases.h"
#include "plain_geometry.h"

namespace bench::ZVP_LOOPS {
namespace {

constexpr float kFractionX = 0.3f, kFractionY = 0.6f;

template <class S, class D, class... Scale>
Work copyShifted(Status (*function)(const S*, int, D*, int, RoiSize, float, float, Scale...), RoiSize size) {
  const auto src = randomImage<S>(size.width + 1, size.height + 1, 1);
  return fills<D>(
      size.width, size.height, src.bytes(),
      [=](const auto& dst) {
        function(src.data(), src.step, dst.data(), dst.step, size, kFractionX, kFractionY, Scale{}...);
      },
      [=](const auto& dst) { plain::shift(src, dst, kFractionX, kFractionY); });
}

// As many windows as have the image's pixels, all over it and a little beyond.
std::vector<Point32f> centres(RoiSize size, int side) {
  std::mt19937 generator(1);
  const auto along = [&](int n) { return std::uniform_real_distribution<float>(0, float(n))(generator); };
  std::vector<Point32f> points(std::size_t(size.width) * std::size_t(size.height) / std::size_t(side * side) + 1);
  for (Point32f& p : points) p = {along(size.width), along(size.height)};
  return points;
}

constexpr int kKept = 16;  // windows, to compare: a caller uses each before it takes the next

template <int side, class S, class D, class... Scale>
Work windows(Status (*function)(const S*, int, RoiSize, D*, int, RoiSize, Point32f, Point*, Point*, Scale...),
             RoiSize size) {
  const auto src = randomImage<S>(size.width, size.height, 1);
  const auto points = centres(size, side);
  const Image<D> dst(side * side, kKept), expected(side * side, kKept);
  const auto place = [](const Image<D>& kept, std::size_t i) { return kept.row(int(i % kKept)); };
  return {.library =
              [=] {
                Point min, max;
                for (std::size_t i = 0; i < points.size(); ++i)
                  function(src.data(), src.step, size, place(dst, i), side * int{sizeof(D)}, {side, side}, points[i],
                           &min, &max, Scale{}...);
              },
          .plain =
              [=] {
                for (std::size_t i = 0; i < points.size(); ++i) plain::window(src, points[i], side, place(expected, i));
              },
          .bytes = src.bytes() / sizeof(S) * (sizeof(S) + sizeof(D)),
          .agree = [=] { return same(dst, expected); }};
}

#define ZVP_WINDOWS(function) \
  ZVP_CASE_OF(windows<15>, function, ", 15x15"), ZVP_CASE_OF(windows<63>, function, ", 63x63")

}  // namespace

std::vector<Case> geometryCases() {
  return {
      ZVP_CASE(copyShifted, zvpiCopySubpix_8u_C1R),        ZVP_CASE(copyShifted, zvpiCopySubpix_16u_C1R),
      ZVP_CASE(copyShifted, zvpiCopySubpix_8u16u_C1R_Sfs), ZVP_CASE(copyShifted, zvpiCopySubpix_8u32f_C1R),
      ZVP_CASE(copyShifted, zvpiCopySubpix_16u32f_C1R),    ZVP_CASE(copyShifted, zvpiCopySubpix_32f_C1R),
      ZVP_WINDOWS(zvpiCopySubpixIntersect_8u_C1R),         ZVP_WINDOWS(zvpiCopySubpixIntersect_16u_C1R),
      ZVP_WINDOWS(zvpiCopySubpixIntersect_8u16u_C1R_Sfs),  ZVP_WINDOWS(zvpiCopySubpixIntersect_8u32f_C1R),
      ZVP_WINDOWS(zvpiCopySubpixIntersect_16u32f_C1R),     ZVP_WINDOWS(zvpiCopySubpixIntersect_32f_C1R),
  };
}

}  // namespace bench::ZVP_LOOPS
