#include <zvpcv/distance.h>

#include "cases.h"
#include "plain_distance.h"

namespace bench::ZVP_LOOPS {
namespace {

// --- Distance transforms ---------------------------------------------------------------------------------------------

// Zero pixels at random, one in `every`.
template <unsigned every>
Image<std::uint8_t> sprinkled(RoiSize size) {
  const auto noise = randomImage<std::uint32_t>(size.width, size.height, 1);
  const Image<std::uint8_t> image(size.width, size.height);
  for (int y = 0; y < size.height; ++y)
    for (int x = 0; x < size.width; ++x) image.row(y)[x] = noise.row(y)[x] % every == 0 ? 0 : 1;
  return image;
}

// Discs, as a mask of coins has them.
Image<std::uint8_t> discs(RoiSize size) {
  constexpr int kPitch = 100, kRadius = 40;
  const Image<std::uint8_t> image(size.width, size.height);
  for (int y = 0; y < size.height; ++y)
    for (int x = 0; x < size.width; ++x) {
      const int dx = x % kPitch - kPitch / 2, dy = y % kPitch - kPitch / 2;
      image.row(y)[x] = dx * dx + dy * dy < kRadius * kRadius ? 255 : 0;
    }
  return image;
}

template <bool knights, class T, class M>
Work chamfer(Status (*function)(const std::uint8_t*, int, T*, int, RoiSize, const M*), RoiSize size) {
  constexpr M kWeights[] = {M(5), M(7), M(11)};
  constexpr M kFloats[] = {M(1.0f), M(1.4f), M(2.1969f)};
  const M* weights = std::is_same_v<M, float> ? kFloats : kWeights;
  const auto src = sprinkled<1000>(size);
  const std::vector<M> w(weights, weights + 3);
  return fills<T>(
      size.width, size.height, src.bytes(),
      [=](const auto& dst) { function(src.data(), src.step, dst.data(), dst.step, size, w.data()); },
      [=](const auto& dst) { plain::chamfer<knights>(src, dst, w.data()); });
}

template <bool knights, class Function>
Work inPlaceChamfer(Function function, RoiSize size) {
  const auto src = sprinkled<1000>(size);
  const std::vector<std::int32_t> w = {5, 7, 11};
  return fills<std::uint8_t>(
      size.width, size.height, src.bytes(),
      [=](const auto& dst) {
        copyPixels(src, dst);
        function(dst.data(), dst.step, size, w.data());
      },
      [=](const auto& dst) { plain::chamfer<knights>(src, dst, w.data()); });
}

template <Image<std::uint8_t> draw(RoiSize)>
Work trueDistance(decltype(zvpiTrueDistanceTransform_8u32f_C1R)* function, RoiSize size) {
  const auto src = draw(size);
  int bytes = 0;
  zvpiTrueDistanceTransformGetBufferSize_8u32f_C1R(size, &bytes);
  const Image<std::uint8_t> buffer(bytes, 1);
  return fills<float>(
      size.width, size.height, src.bytes(),
      [=](const auto& dst) { function(src.data(), src.step, dst.data(), dst.step, size, buffer.data()); },
      [=](const auto& dst) { plain::trueDistance(src, dst); });
}

#define ZVP_TRUE_DISTANCE(draw, description) \
  ZVP_CASE_OF(trueDistance<draw>, zvpiTrueDistanceTransform_8u32f_C1R, ", " description)
#define ZVP_CHAMFER(kernel, knights)                                               \
  ZVP_CASE(chamfer<knights>, zvpiDistanceTransform_##kernel##_8u_C1R),             \
      ZVP_CASE(inPlaceChamfer<knights>, zvpiDistanceTransform_##kernel##_8u_C1IR), \
      ZVP_CASE(chamfer<knights>, zvpiDistanceTransform_##kernel##_8u16u_C1R),      \
      ZVP_CASE(chamfer<knights>, zvpiDistanceTransform_##kernel##_8u32f_C1R)

// --- Flood fill ------------------------------------------------------------------------------------------------------

// Rows include restoring the image.
enum class Picture { kUniform, kTwoLevel, kNoise, kSlope };

template <class T>
Image<T> picture(Picture kind, int channels, RoiSize size) {
  const auto noise = randomImage<std::uint8_t>(size.width, size.height, 1);
  const Image<T> image(size.width * channels, size.height);
  for (int y = 0; y < size.height; ++y)
    for (int x = 0; x < size.width; ++x) {
      const bool hole = x % 16 < 3 && y % 16 < 3;
      const int value = kind == Picture::kUniform    ? 100
                        : kind == Picture::kTwoLevel ? (hole ? 200 : 100)
                        : kind == Picture::kNoise    ? 100 + noise.row(y)[x] % 8
                                                     : 20 + (x + y) * 150 / (size.width + size.height);
      for (int c = 0; c < channels; ++c) image.row(y)[x * channels + c] = T(value);
    }
  return image;
}

constexpr int kNewValue = 250, kDelta = 8;

// An argument that is one value, or a pointer to three of them.
template <class Argument, int value>
Argument argument() {
  using T = std::remove_const_t<std::remove_pointer_t<Argument>>;
  static constexpr T kValues[] = {value, value, value};
  if constexpr (std::is_pointer_v<Argument>) {
    return kValues;
  } else {
    return kValues[0];
  }
}

template <Picture kind, int connectivity, int channels, class T, class Call, class Links>
Work fill(Call call, Links links, RoiSize size) {
  const auto original = picture<T>(kind, channels, size);
  const Image<std::uint8_t> visited(size.width, size.height);
  int bytes = 0;
  zvpiFloodFillGetSize_Grad(size, &bytes);
  const Image<std::uint8_t> buffer(bytes, 1);
  const Point seed{size.width / 2 + 5, size.height / 2 + 5};
  return fills<T>(
      original.width, size.height, original.bytes(),
      [=](const auto& image) {
        copyPixels(original, image);
        ConnectedComponent region;
        call(image, seed, &region, buffer.data());
      },
      [=](const auto& image) {
        copyPixels(original, image);
        plain::floodFill<connectivity, channels>(image, visited, seed, T{kNewValue}, links);
      });
}

template <class Argument>
constexpr int kChannels = std::is_pointer_v<Argument> ? 3 : 1;

template <Picture kind, int connectivity, class T, class V>
Work equalFill(Status (*function)(T*, int, RoiSize, Point, V, ConnectedComponent*, std::uint8_t*), RoiSize size) {
  return fill<kind, connectivity, kChannels<V>, T>(
      [=](const Image<T>& image, Point seed, ConnectedComponent* region, std::uint8_t* buffer) {
        function(image.data(), image.step, size, seed, argument<V, kNewValue>(), region, buffer);
      },
      [](T p, T q) { return p == q; }, size);
}

template <Picture kind, int connectivity, class T, class V>
Work nearFill(Status (*function)(T*, int, RoiSize, Point, V, V, V, ConnectedComponent*, std::uint8_t*), RoiSize size) {
  return fill<kind, connectivity, kChannels<V>, T>(
      [=](const Image<T>& image, Point seed, ConnectedComponent* region, std::uint8_t* buffer) {
        const V delta = argument<V, kDelta>();
        function(image.data(), image.step, size, seed, argument<V, kNewValue>(), delta, delta, region, buffer);
      },
      [](T p, T q) { return p >= q - T{kDelta} && p <= q + T{kDelta}; }, size);
}

#define ZVP_FILL(make, kind, connectivity, function, description) \
  ZVP_CASE_OF((make<Picture::kind, connectivity>), function, ", " description)
#define ZVP_FILLS(suffix)                                                          \
  ZVP_FILL(equalFill, kUniform, 4, zvpiFloodFill_4Con_##suffix, "uniform"),        \
      ZVP_FILL(equalFill, kTwoLevel, 4, zvpiFloodFill_4Con_##suffix, "two-level"), \
      ZVP_FILL(equalFill, kTwoLevel, 8, zvpiFloodFill_8Con_##suffix, "two-level"), \
      ZVP_FILL(nearFill, kNoise, 4, zvpiFloodFill_Range4Con_##suffix, "noise"),    \
      ZVP_FILL(nearFill, kNoise, 8, zvpiFloodFill_Range8Con_##suffix, "noise"),    \
      ZVP_FILL(nearFill, kSlope, 4, zvpiFloodFill_Grad4Con_##suffix, "slope"),     \
      ZVP_FILL(nearFill, kSlope, 8, zvpiFloodFill_Grad8Con_##suffix, "slope"),     \
      ZVP_FILL(nearFill, kNoise, 4, zvpiFloodFill_Grad4Con_##suffix, "noise")

}  // namespace

std::vector<Case> distanceCases() {
  return {
      ZVP_CHAMFER(3x3, false),
      ZVP_CHAMFER(5x5, true),
      ZVP_TRUE_DISTANCE(discs, "discs"),
      ZVP_TRUE_DISTANCE(sprinkled<20>, "dense"),
      ZVP_TRUE_DISTANCE(sprinkled<300>, "medium"),
      ZVP_TRUE_DISTANCE(sprinkled<3000>, "sparse"),
      ZVP_FILLS(8u_C1IR),
      ZVP_FILLS(8u_C3IR),
      ZVP_FILLS(16u_C1IR),
      ZVP_FILLS(16u_C3IR),
      ZVP_FILLS(32f_C1IR),
      ZVP_FILLS(32f_C3IR),
  };
}

}  // namespace bench::ZVP_LOOPS
