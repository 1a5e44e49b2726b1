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

// All forms: sources, then a mask, then the accumulator (or the destination, which is written like one).
template <class S, class... Alpha>
void accumulate(Bytes& in, Status (*f)(const S*, int, float*, int, RoiSize, Alpha...)) {
  const RoiSize size = someSize(in);
  const auto src = readsImage<S>(in, size.width, size.height);
  const auto acc = writesImage<float>(in, size.width, size.height);
  checkCall(f(src, src.step, acc, acc.step, size, Alpha{in.ConsumeFloatingPoint<float>()}...), src, acc);
}

template <class S, class M, class... Alpha>
void accumulateTwo(Bytes& in, Status (*f)(const S*, int, const M*, int, float*, int, RoiSize, Alpha...)) {
  const RoiSize size = someSize(in);
  const auto src = readsImage<S>(in, size.width, size.height), other = readsImage<M>(in, size.width, size.height);
  const auto acc = writesImage<float>(in, size.width, size.height);
  checkCall(f(src, src.step, other, other.step, acc, acc.step, size, Alpha{in.ConsumeFloatingPoint<float>()}...), src,
            other, acc);
}

template <class S>
void accumulateThree(Bytes& in,
                     Status (*f)(const S*, int, const S*, int, const std::uint8_t*, int, float*, int, RoiSize)) {
  const RoiSize size = someSize(in);
  const auto a = readsImage<S>(in, size.width, size.height), b = readsImage<S>(in, size.width, size.height);
  const auto mask = readsImage<std::uint8_t>(in, size.width, size.height);
  const auto acc = writesImage<float>(in, size.width, size.height);
  checkCall(f(a, a.step, b, b.step, mask, mask.step, acc, acc.step, size), a, b, mask, acc);
}

// Rows of the second source lie where the first one's do, whatever its own step says.
void average(Bytes& in, decltype(zvpiAddWeighted_32f_C1R)* f) {
  const RoiSize size = someSize(in);
  auto a = readsImage<float>(in, size.width, size.height), b = readsImage<float>(in, size.width, size.height);
  const auto dst = writesImage<float>(in, size.width, size.height);
  const int step2 = b.step;
  b.alias(a);
  checkCall(f(a, a.step, b, step2, dst, dst.step, size, in.ConsumeFloatingPoint<float>()), a, dst);
}

#define ZVP_IN_PLACE(operation, types) \
  ZVP_TARGET(accumulate, zvpi##operation##_##types##_C1IR), ZVP_TARGET(accumulateTwo, zvpi##operation##_##types##_C1IMR)
#define ZVP_ACCUMULATORS(types)                                     \
  ZVP_IN_PLACE(AddSquare, types), ZVP_IN_PLACE(AddWeighted, types), \
      ZVP_TARGET(accumulateTwo, zvpiAddProduct_##types##_C1IR),     \
      ZVP_TARGET(accumulateThree, zvpiAddProduct_##types##_C1IMR)

constexpr Target kTargets[] = {
    ZVP_TARGET(absDiff<1>, zvpiAbsDiff_8u_C1R),
    ZVP_TARGET(absDiff<3>, zvpiAbsDiff_8u_C3R),
    ZVP_TARGET(absDiff<1>, zvpiAbsDiff_16u_C1R),
    ZVP_TARGET(absDiff<1>, zvpiAbsDiff_32f_C1R),
    ZVP_TARGET(absDiffC, zvpiAbsDiffC_8u_C1R),
    ZVP_TARGET(absDiffC, zvpiAbsDiffC_16u_C1R),
    ZVP_TARGET(absDiffC, zvpiAbsDiffC_32f_C1R),
    ZVP_IN_PLACE(Add, 8u32f),
    ZVP_IN_PLACE(Add, 8s32f),
    ZVP_IN_PLACE(Add, 16u32f),
    ZVP_TARGET(accumulateTwo, zvpiAdd_32f_C1IMR),
    ZVP_ACCUMULATORS(8u32f),
    ZVP_ACCUMULATORS(8s32f),
    ZVP_ACCUMULATORS(16u32f),
    ZVP_ACCUMULATORS(32f),
    ZVP_TARGET(average, zvpiAddWeighted_32f_C1R),
};

}  // namespace

Targets arithmeticTargets() { return kTargets; }

}  // namespace fuzz
