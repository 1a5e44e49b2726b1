#include <zvpcv/arithmetic.h>

#include "cases.h"
#include "plain_arithmetic.h"

namespace bench::ZVP_LOOPS {
namespace {

template <int channels, class T>
Work absDiff(Status (*function)(const T*, int, const T*, int, T*, int, RoiSize), RoiSize size) {
  const int width = size.width * channels;
  const auto a = randomImage<T>(width, size.height, 1), b = randomImage<T>(width, size.height, 2);
  return fills<T>(
      width, size.height, a.bytes() + b.bytes(),
      [=](const auto& dst) { function(a.data(), a.step, b.data(), b.step, dst.data(), dst.step, size); },
      [=](const auto& dst) { plain::absDiff(a, b, dst); });
}

template <class T, class Value>
Work absDiffC(Status (*function)(const T*, int, T*, int, RoiSize, Value), RoiSize size) {
  constexpr T kValue = 100;
  const auto src = randomImage<T>(size.width, size.height, 1);
  return fills<T>(
      size.width, size.height, src.bytes(),
      [=](const auto& dst) { function(src.data(), src.step, dst.data(), dst.step, size, kValue); },
      [=](const auto& dst) { plain::absDiffC(src, dst, kValue); });
}

}  // namespace

std::vector<Case> arithmeticCases() {
  return {
      ZVP_CASE(absDiff<1>, zvpiAbsDiff_8u_C1R),  ZVP_CASE(absDiff<3>, zvpiAbsDiff_8u_C3R),
      ZVP_CASE(absDiff<1>, zvpiAbsDiff_16u_C1R), ZVP_CASE(absDiff<1>, zvpiAbsDiff_32f_C1R),
      ZVP_CASE(absDiffC, zvpiAbsDiffC_8u_C1R),   ZVP_CASE(absDiffC, zvpiAbsDiffC_16u_C1R),
      ZVP_CASE(absDiffC, zvpiAbsDiffC_32f_C1R),
  };
}

}  // namespace bench::ZVP_LOOPS
