#include <zvpcv/arithmetic.h>

#include "cases.h"
#include "plain_arithmetic.h"

namespace bench {
namespace {

template <int channels, class T>
Work absDiff(Status (*function)(const T*, int, const T*, int, T*, int, RoiSize), RoiSize size) {
  const int width = size.width * channels;
  const auto a = randomImage<T>(width, size.height, 1), b = randomImage<T>(width, size.height, 2);
  const Image<T> dst(width, size.height), expected(width, size.height);
  return {.library = [=] { function(a.data(), a.step, b.data(), b.step, dst.data(), dst.step, size); },
          .plain = [=] { plain::absDiff(a, b, expected); },
          .bytes = a.bytes() + b.bytes() + dst.bytes(),
          .agree = [=] { return same(dst, expected); }};
}

template <class T, class Value>
Work absDiffC(Status (*function)(const T*, int, T*, int, RoiSize, Value), RoiSize size) {
  constexpr T kValue = 100;
  const auto src = randomImage<T>(size.width, size.height, 1);
  const Image<T> dst(size.width, size.height), expected(size.width, size.height);
  return {.library = [=] { function(src.data(), src.step, dst.data(), dst.step, size, kValue); },
          .plain = [=] { plain::absDiffC(src, expected, kValue); },
          .bytes = src.bytes() + dst.bytes(),
          .agree = [=] { return same(dst, expected); }};
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

}  // namespace bench
