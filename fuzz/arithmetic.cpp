// Element-wise arithmetic.
#include <zvpcv/arithmetic.h>

#include "families.h"
#include "operands.h"

namespace fuzz {
namespace {

template <int channels, class T>
void absDiff(Bytes& in, Status (*f)(const T*, int, const T*, int, T*, int, RoiSize)) {
  const RoiSize size = someSize(in);
  const double width = double(size.width) * channels;
  const auto a = readsImage<T>(in, width, size.height), b = readsImage<T>(in, width, size.height);
  auto dst = writesImage<T>(in, width, size.height);
  if (oneIn(8, in)) {
    dst.alias(a);
    checkCall(f(dst, dst.step, b, b.step, dst, dst.step, size), b, dst);
  } else {
    checkCall(f(a, a.step, b, b.step, dst, dst.step, size), a, b, dst);
  }
}

template <class T, class Value>
void absDiffC(Bytes& in, Status (*f)(const T*, int, T*, int, RoiSize, Value)) {
  const RoiSize size = someSize(in);
  const auto src = readsImage<T>(in, size.width, size.height);
  const auto dst = writesImage<T>(in, size.width, size.height);
  const auto value = static_cast<Value>(in.ConsumeIntegral<int>());
  checkCall(f(src, src.step, dst, dst.step, size, value), src, dst);
}

constexpr Target kTargets[] = {
    ZVP_TARGET(absDiff<1>, zvpiAbsDiff_8u_C1R),  ZVP_TARGET(absDiff<3>, zvpiAbsDiff_8u_C3R),
    ZVP_TARGET(absDiff<1>, zvpiAbsDiff_16u_C1R), ZVP_TARGET(absDiff<1>, zvpiAbsDiff_32f_C1R),
    ZVP_TARGET(absDiffC, zvpiAbsDiffC_8u_C1R),   ZVP_TARGET(absDiffC, zvpiAbsDiffC_16u_C1R),
    ZVP_TARGET(absDiffC, zvpiAbsDiffC_32f_C1R),
};

}  // namespace

Targets arithmeticTargets() { return kTargets; }

}  // namespace fuzz
