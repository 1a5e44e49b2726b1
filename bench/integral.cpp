#include <zvpcv/integral.h>

#include "cases.h"
#include "plain_integral.h"

namespace bench::ZVP_LOOPS {
namespace {

using plain::Table;
using Pixels = Image<std::uint8_t>;

Pixels randomPixels(RoiSize size) { return randomImage<std::uint8_t>(size.width, size.height, 1); }

// The table of an image, with the columns and rows it has more than the image.
template <class S>
Table<S> tableOf(RoiSize size, int margin) {
  return {Image<S>(size.width + margin, size.height + margin), 0};
}

constexpr int kUpright = 1, kTilted = 2;

template <int margin, class S>
Work oneTable(Status (*function)(const std::uint8_t*, int, S*, int, RoiSize, S), RoiSize size) {
  const Pixels src = randomPixels(size);
  const S start = 0;
  return fills<S>(
      size.width + margin, size.height + margin, src.bytes(),
      [=](const auto& sums) { function(src.data(), src.step, sums.data(), sums.step, size, start); },
      [=](const auto& sums) {
        (margin == kUpright ? plain::integral<S> : plain::tiltedIntegral<S>)(src, Table<S>{sums, start});
      });
}

template <int margin, class S, class Q>
Work twoTables(Status (*function)(const std::uint8_t*, int, S*, int, Q*, int, RoiSize, S, Q), RoiSize size) {
  const Pixels src = randomPixels(size);
  const auto sums = tableOf<S>(size, margin), expected = tableOf<S>(size, margin);
  const auto squares = tableOf<Q>(size, margin), expectedSquares = tableOf<Q>(size, margin);
  const Image<S>& out = sums.entries;
  const Image<Q>& outSqr = squares.entries;
  const auto loop = margin == kUpright ? plain::sqrIntegral<S, Q> : plain::tiltedSqrIntegral<S, Q>;
  return {.library =
              [=] {
                function(src.data(), src.step, out.data(), out.step, outSqr.data(), outSqr.step, size, sums.start,
                         squares.start);
              },
          .plain = [=] { loop(src, expected, expectedSquares); },
          .bytes = src.bytes() + out.bytes() + outSqr.bytes(),
          .agree = [=] { return same(out, expected.entries) && same(outSqr, expectedSquares.entries); }};
}

Work floatTable(Status (*function)(const float*, int, float*, int, RoiSize), RoiSize size) {
  const auto src = randomImage<float>(size.width, size.height, 1);
  return fills<float>(
      size.width + kUpright, size.height + kUpright, src.bytes(),
      [=](const auto& sums) { function(src.data(), src.step, sums.data(), sums.step, size); },
      [=](const auto& sums) { plain::floatIntegral(src, sums); });
}

// Windows of 20 x 20 pixels at every position, one pixel left out on each side; a turned square of about that extent.
constexpr int kWindow = 20, kScaleFactor = 0;
constexpr Rect kUprightRect{1, 1, 18, 18}, kTiltedRect{0, 1, 9, 9};

template <int margin, class S, class Q, class T, class... ScaleFactor>
Work stdDev(Status (*function)(const S*, int, const Q*, int, T*, int, RoiSize, Rect, ScaleFactor...), RoiSize size) {
  const RoiSize frame{size.width + kWindow, size.height + kWindow};
  const auto sums = tableOf<S>(frame, margin);
  const auto squares = tableOf<Q>(frame, margin);
  const bool upright = margin == kUpright;
  (upright ? plain::sqrIntegral<S, Q> : plain::tiltedSqrIntegral<S, Q>)(randomPixels(frame), sums, squares);
  const Rect rect = upright ? kUprightRect : kTiltedRect;
  const auto corners = upright ? plain::uprightCorners(rect) : plain::tiltedCorners(rect);
  const Image<S>& s = sums.entries;
  const Image<Q>& q = squares.entries;
  return fills<T>(
      size.width, size.height, s.bytes() + q.bytes(),
      [=](const auto& dst) {
        function(s.data(), s.step, q.data(), q.step, dst.data(), dst.step, size, rect, ScaleFactor{kScaleFactor}...);
      },
      [=](const auto& dst) { plain::rectStdDev(s, q, dst, corners, kScaleFactor); });
}

}  // namespace

std::vector<Case> integralCases() {
  return {
      ZVP_CASE(oneTable<kUpright>, zvpiIntegral_8u32s_C1R),
      ZVP_CASE(oneTable<kUpright>, zvpiIntegral_8u32f_C1R),
      ZVP_CASE(floatTable, zvpiIntegral_32f_C1R),
      ZVP_CASE(twoTables<kUpright>, zvpiSqrIntegral_8u32s_C1R),
      ZVP_CASE(twoTables<kUpright>, zvpiSqrIntegral_8u32s64f_C1R),
      ZVP_CASE(twoTables<kUpright>, zvpiSqrIntegral_8u32f64f_C1R),
      ZVP_CASE(oneTable<kTilted>, zvpiTiltedIntegral_8u32s_C1R),
      ZVP_CASE(oneTable<kTilted>, zvpiTiltedIntegral_8u32f_C1R),
      ZVP_CASE(twoTables<kTilted>, zvpiTiltedSqrIntegral_8u32s_C1R),
      ZVP_CASE(twoTables<kTilted>, zvpiTiltedSqrIntegral_8u32s64f_C1R),
      ZVP_CASE(twoTables<kTilted>, zvpiTiltedSqrIntegral_8u32f64f_C1R),
      ZVP_CASE(stdDev<kUpright>, zvpiRectStdDev_32f_C1R),
      ZVP_CASE(stdDev<kUpright>, zvpiRectStdDev_32s32f_C1R),
      ZVP_CASE(stdDev<kUpright>, zvpiRectStdDev_32s_C1RSfs),
      ZVP_CASE(stdDev<kTilted>, zvpiTiltedRectStdDev_32f_C1R),
      ZVP_CASE(stdDev<kTilted>, zvpiTiltedRectStdDev_32s32f_C1R),
      ZVP_CASE(stdDev<kTilted>, zvpiTiltedRectStdDev_32s_C1RSfs),
  };
}

}  // namespace bench::ZVP_LOOPS
