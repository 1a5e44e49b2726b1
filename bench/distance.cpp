#include <zvpcv/distance.h>

#include "cases.h"
#include "plain_distance.h"

namespace bench {
namespace {

// --- Distance transforms ---------------------------------------------------------------------------------------------

// Zero pixels at random, one in `every`.
Image<std::uint8_t> sprinkled(RoiSize size, unsigned every) {
  const auto noise = randomImage<std::uint32_t>(size.width, size.height, 1);
  const Image<std::uint8_t> image(size.width, size.height);
  for (int y = 0; y < size.height; ++y)
    for (int x = 0; x < size.width; ++x) image.row(y)[x] = noise.row(y)[x] % every == 0 ? 0 : 1;
  return image;
}

constexpr unsigned kEvery = 1000;

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
  const auto src = sprinkled(size, kEvery);
  const Image<T> dst(size.width, size.height), expected(size.width, size.height);
  const std::vector<M> w(weights, weights + 3);
  return {.library = [=] { function(src.data(), src.step, dst.data(), dst.step, size, w.data()); },
          .plain = [=] { plain::chamfer<knights>(src, expected, w.data()); },
          .bytes = src.bytes() + dst.bytes(),
          .agree = [=] { return same(dst, expected); }};
}

template <bool knights, class Function>
Work inPlaceChamfer(Function function, RoiSize size) {
  const auto src = sprinkled(size, kEvery);
  const Image<std::uint8_t> dst(size.width, size.height), expected(size.width, size.height);
  const std::vector<std::int32_t> w = {5, 7, 11};
  return {.library =
              [=] {
                std::memcpy(dst.data(), src.data(), std::size_t(src.step) * std::size_t(src.height));
                function(dst.data(), dst.step, size, w.data());
              },
          .plain = [=] { plain::chamfer<knights>(src, expected, w.data()); },
          .bytes = src.bytes() + dst.bytes(),
          .agree = [=] { return same(dst, expected); }};
}

Work trueDistance(const Image<std::uint8_t>& src, RoiSize size) {
  const Image<float> dst(size.width, size.height), expected(size.width, size.height);
  int bytes = 0;
  zvpiTrueDistanceTransformGetBufferSize_8u32f_C1R(size, &bytes);
  const Image<std::uint8_t> buffer(bytes, 1);
  return {
      .library =
          [=] { zvpiTrueDistanceTransform_8u32f_C1R(src.data(), src.step, dst.data(), dst.step, size, buffer.data()); },
      .plain = [=] { plain::trueDistance(src, expected); },
      .bytes = src.bytes() + dst.bytes(),
      .agree = [=] { return same(dst, expected); }};
}

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

template <Picture kind, int connectivity, int channels, class T, class Call, class Links>
Work fill(Call call, Links links, RoiSize size) {
  const auto original = picture<T>(kind, channels, size);
  const Image<T> image(original.width, size.height), expected(size.width, size.height);
  const Image<std::uint8_t> visited(size.width, size.height);
  int bytes = 0;
  zvpiFloodFillGetSize_Grad(size, &bytes);
  const Image<std::uint8_t> buffer(bytes, 1);
  const auto restore = [=](const Image<T>& to) {
    std::memcpy(to.data(), original.data(), std::size_t(original.step) * std::size_t(original.height));
  };
  const Point seed{size.width / 2 + 5, size.height / 2 + 5};
  Work work{.library =
                [=] {
                  restore(image);
                  ConnectedComponent region;
                  call(image, size, seed, &region, buffer.data());
                },
            .plain = {},
            .bytes = original.bytes() * 2};
  if constexpr (channels == 1) {
    work.plain = [=] {
      restore(expected);
      plain::floodFill<connectivity>(expected, visited, seed.x, seed.y, T(250), links);
    };
    work.agree = [=] { return same(image, expected); };
  }
  return work;
}

// The values of one call: single ones, or three of each.
template <int channels, class T>
struct Values {
  T v[3];
  constexpr explicit Values(int value) : v{T(value), T(value), T(value)} {}
  auto argument() const {
    if constexpr (channels == 1) return v[0];
    if constexpr (channels == 3) return &v[0];
  }
};

template <Picture kind, int connectivity, int channels, class T, class Function>
Work equalFill(Function function, RoiSize size) {
  static constexpr Values<channels, T> kNew(250);
  return fill<kind, connectivity, channels, T>(
      [=](const Image<T>& image, RoiSize roi, Point seed, ConnectedComponent* region, std::uint8_t* buffer) {
        function(image.data(), image.step, roi, seed, kNew.argument(), region, buffer);
      },
      [](T p, T q) { return p == q; }, size);
}

constexpr int kDelta = 8;

template <Picture kind, int connectivity, int channels, class T, class Function>
Work nearFill(Function function, RoiSize size) {
  static constexpr Values<channels, T> kNew(250), kDeltas(kDelta);
  return fill<kind, connectivity, channels, T>(
      [=](const Image<T>& image, RoiSize roi, Point seed, ConnectedComponent* region, std::uint8_t* buffer) {
        function(image.data(), image.step, roi, seed, kNew.argument(), kDeltas.argument(), kDeltas.argument(), region,
                 buffer);
      },
      [](T p, T q) { return p >= q - T(kDelta) && p <= q + T(kDelta); }, size);
}

#define ZVP_FILL(make, kind, con, channels, T, name, label)                                            \
  Case {                                                                                               \
    "zvpiFloodFill_" #name ", " label,                                                                 \
        [](RoiSize size) { return make<Picture::kind, con, channels, T>(zvpiFloodFill_##name, size); } \
  }
#define ZVP_FILLS(suffix, channels, T)                                            \
  ZVP_FILL(equalFill, kUniform, 4, channels, T, 4Con_##suffix, "uniform"),        \
      ZVP_FILL(equalFill, kTwoLevel, 4, channels, T, 4Con_##suffix, "two-level"), \
      ZVP_FILL(equalFill, kTwoLevel, 8, channels, T, 8Con_##suffix, "two-level"), \
      ZVP_FILL(nearFill, kNoise, 4, channels, T, Range4Con_##suffix, "noise"),    \
      ZVP_FILL(nearFill, kNoise, 8, channels, T, Range8Con_##suffix, "noise"),    \
      ZVP_FILL(nearFill, kSlope, 4, channels, T, Grad4Con_##suffix, "slope"),     \
      ZVP_FILL(nearFill, kSlope, 8, channels, T, Grad8Con_##suffix, "slope"),     \
      ZVP_FILL(nearFill, kNoise, 4, channels, T, Grad4Con_##suffix, "noise")

}  // namespace

std::vector<Case> distanceCases() {
  return {
      ZVP_CHAMFER(3x3, false),
      ZVP_CHAMFER(5x5, true),
      Case{"zvpiTrueDistanceTransform_8u32f_C1R, discs", [](RoiSize size) { return trueDistance(discs(size), size); }},
      Case{"zvpiTrueDistanceTransform_8u32f_C1R, dense",
           [](RoiSize size) { return trueDistance(sprinkled(size, 20), size); }},
      Case{"zvpiTrueDistanceTransform_8u32f_C1R, medium",
           [](RoiSize size) { return trueDistance(sprinkled(size, 300), size); }},
      Case{"zvpiTrueDistanceTransform_8u32f_C1R, sparse",
           [](RoiSize size) { return trueDistance(sprinkled(size, 3000), size); }},
      ZVP_FILLS(8u_C1IR, 1, std::uint8_t),
      ZVP_FILLS(8u_C3IR, 3, std::uint8_t),
      ZVP_FILLS(16u_C1IR, 1, std::uint16_t),
      ZVP_FILLS(16u_C3IR, 3, std::uint16_t),
      ZVP_FILLS(32f_C1IR, 1, float),
      ZVP_FILLS(32f_C3IR, 3, float),
  };
}

}  // namespace bench
