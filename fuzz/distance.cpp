// Distance transforms and flood fill.
#include <zvpcv/distance.h>

#include <tuple>

#include "families.h"
#include "operands.h"

namespace fuzz {
namespace {

Operand workMemory(Bytes& in, Status (*query)(RoiSize, int*), RoiSize size) {
  int bytes = 0;
  if (query(size, &bytes) != StatusOk || bytes > 10 * kMostBytes) bytes = 0;  // no image is that large
  return block(in, bytes);
}

template <class M>
void chooseWeights(Bytes& in, M (&weights)[3]) {
  for (M& w : weights) w = static_cast<M>(number(in, oneIn(16, in) ? 0 : 1, 300)) / (std::is_same_v<M, float> ? 7 : 1);
}

template <class T, class M>
void chamfer(Bytes& in, Status (*f)(const std::uint8_t*, int, T*, int, RoiSize, const M*)) {
  const RoiSize size = someSize(in);
  const auto src = readsImage<std::uint8_t>(in, size.width, size.height);
  const auto dst = writesImage<T>(in, size.width, size.height);
  M weights[3];
  chooseWeights(in, weights);
  checkCall(f(src, src.step, dst, dst.step, size, oneIn(64, in) ? nullptr : weights), src, dst);
}

void inPlaceChamfer(Bytes& in, Status (*f)(std::uint8_t*, int, RoiSize, const std::int32_t*)) {
  const RoiSize size = someSize(in);
  const auto image = writesImage<std::uint8_t>(in, size.width, size.height);
  std::int32_t weights[3];
  chooseWeights(in, weights);
  checkCall(f(image, image.step, size, weights), image);
}

void trueDistance(Bytes& in, Status (*f)(const std::uint8_t*, int, float*, int, RoiSize, std::uint8_t*)) {
  const RoiSize size = someSize(in);
  const auto src = readsImage<std::uint8_t>(in, size.width, size.height);
  const auto dst = writesImage<float>(in, size.width, size.height);
  const auto buffer = workMemory(in, zvpiTrueDistanceTransformGetBufferSize_8u32f_C1R, size);
  checkCall(f(src, src.step, dst, dst.step, size, buffer), src, dst, buffer);
}

template <class M>
void mask(Bytes& in, Status (*f)(int, int, M*)) {
  M weights[3] = {};
  const int size = number(in, 2, 6);
  const Status status = f(size, number(in, -1, 3), oneIn(64, in) ? nullptr : weights);
  require(status == StatusOk || weights[0] == 0, "a failing call writes nothing");
}

// A value for each channel; Value is one of them or a pointer to all.
template <class T, class Value>
Value values(Bytes& in, T (&v)[3]) {
  for (T& e : v) e = static_cast<T>(in.ConsumeIntegral<std::uint16_t>());
  if constexpr (std::is_pointer_v<Value>) {
    return oneIn(64, in) ? nullptr : v;
  } else {
    return v[0];
  }
}

// Value... are the new value and the deltas.
template <class T, class... Value>
void fill(Bytes& in, Status (*f)(T*, int, RoiSize, Point, Value..., ConnectedComponent*, std::uint8_t*), int channels,
          Status (*query)(RoiSize, int*)) {
  const RoiSize size = someSize(in);
  const auto image = writesImage<T>(in, double(size.width) * channels, size.height);
  const auto buffer = workMemory(in, query, size);
  const int x = number(in, 0, std::max(size.width, 1) - 1);
  const Point seed{x, number(in, 0, std::max(size.height, 1) - 1)};
  ConnectedComponent region{-1, {}, {}};
  T v[sizeof...(Value)][3];
  int i = 0;
  const std::tuple<Value...> drawn{values<T, Value>(in, v[i++])...};
  const Status status =
      std::apply([&](Value... each) { return f(image, image.step, size, seed, each..., &region, buffer); }, drawn);
  checkCall(status, image, buffer);
  require(status >= 0 || region.area == -1, "a failing call writes nothing");
}

#define ZVP_FILL(name, channels, query, ...) \
  [](Bytes& in) { fill<__VA_ARGS__>(in, zvpiFloodFill_##name##_C##channels##IR, channels, query); }
#define ZVP_FILLS(suffix, T)                                                                                      \
  ZVP_FILL(4Con_##suffix, 1, zvpiFloodFillGetSize, T, T), ZVP_FILL(8Con_##suffix, 1, zvpiFloodFillGetSize, T, T), \
      ZVP_FILL(4Con_##suffix, 3, zvpiFloodFillGetSize, T, const T*),                                              \
      ZVP_FILL(8Con_##suffix, 3, zvpiFloodFillGetSize, T, const T*),                                              \
      ZVP_NEAR_FILLS(Range, suffix, zvpiFloodFillGetSize, T),                                                     \
      ZVP_NEAR_FILLS(Grad, suffix, zvpiFloodFillGetSize_Grad, T)
#define ZVP_NEAR_FILLS(rule, suffix, query, T)                                                              \
  ZVP_FILL(rule##4Con_##suffix, 1, query, T, T, T, T), ZVP_FILL(rule##8Con_##suffix, 1, query, T, T, T, T), \
      ZVP_FILL(rule##4Con_##suffix, 3, query, T, const T*, const T*, const T*),                             \
      ZVP_FILL(rule##8Con_##suffix, 3, query, T, const T*, const T*, const T*)

constexpr Target kTargets[] = {
    ZVP_TARGET(chamfer, zvpiDistanceTransform_3x3_8u_C1R),
    ZVP_TARGET(chamfer, zvpiDistanceTransform_5x5_8u_C1R),
    ZVP_TARGET(chamfer, zvpiDistanceTransform_3x3_8u16u_C1R),
    ZVP_TARGET(chamfer, zvpiDistanceTransform_5x5_8u16u_C1R),
    ZVP_TARGET(chamfer, zvpiDistanceTransform_3x3_8u32f_C1R),
    ZVP_TARGET(chamfer, zvpiDistanceTransform_5x5_8u32f_C1R),
    ZVP_TARGET(inPlaceChamfer, zvpiDistanceTransform_3x3_8u_C1IR),
    ZVP_TARGET(inPlaceChamfer, zvpiDistanceTransform_5x5_8u_C1IR),
    ZVP_TARGET(trueDistance, zvpiTrueDistanceTransform_8u32f_C1R),
    ZVP_TARGET(mask, zvpiGetDistanceTransformMask_32s),
    ZVP_TARGET(mask, zvpiGetDistanceTransformMask_32f),
    ZVP_FILLS(8u, std::uint8_t),
    ZVP_FILLS(16u, std::uint16_t),
    ZVP_FILLS(32f, float),
};

}  // namespace

Targets distanceTargets() { return kTargets; }

}  // namespace fuzz
