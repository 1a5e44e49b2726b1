#include <float.h>
#include <math.h>

#include <algorithm>

#include "support/image.h"
#include "zvpcv/distance.h"

namespace zvp::test {
namespace {

template <class T, class M>
struct Chamfer {
  const char* name;
  bool knights;
  Status (*transform)(const uint8_t*, int, T*, int, RoiSize, const M*);
};
constexpr Chamfer<uint8_t, int32_t> k3x3To8u{"3x3_8u", false, zvpiDistanceTransform_3x3_8u_C1R};
constexpr Chamfer<uint8_t, int32_t> k5x5To8u{"5x5_8u", true, zvpiDistanceTransform_5x5_8u_C1R};
constexpr Chamfer<uint16_t, int32_t> k3x3To16u{"3x3_8u16u", false, zvpiDistanceTransform_3x3_8u16u_C1R};
constexpr Chamfer<uint16_t, int32_t> k5x5To16u{"5x5_8u16u", true, zvpiDistanceTransform_5x5_8u16u_C1R};
constexpr Chamfer<float, float> k3x3To32f{"3x3_8u32f", false, zvpiDistanceTransform_3x3_8u32f_C1R};
constexpr Chamfer<float, float> k5x5To32f{"5x5_8u32f", true, zvpiDistanceTransform_5x5_8u32f_C1R};

template <class F>
void forEachChamfer(F f) {
  f(k3x3To8u), f(k5x5To8u), f(k3x3To16u), f(k5x5To16u), f(k3x3To32f), f(k5x5To32f);
}

template <class T>
T plainSum(T value, std::conditional_t<std::is_same_v<T, float>, float, int32_t> weight) {
  if constexpr (std::is_same_v<T, float>) {
    return fminf(value + weight, FLT_MAX);
  } else {
    return static_cast<T>(std::min<int64_t>(int64_t{value} + weight, std::numeric_limits<T>::max()));
  }
}

// The two passes, pixel by pixel.
template <class T, class M>
std::vector<T> plainTransform(const Image<uint8_t>& src, bool knights, const M* weights) {
  struct Move {
    int dx, dy, weight;
  };
  const Move moves[] = {{-1, 0, 0},  {0, -1, 0}, {-1, -1, 1}, {1, -1, 1},
                        {-2, -1, 2}, {2, -1, 2}, {-1, -2, 2}, {1, -2, 2}};
  const int w = src.width(), h = src.height();
  std::vector<T> d(static_cast<size_t>(w) * static_cast<size_t>(h), std::numeric_limits<T>::max());
  const auto at = [&](int x, int y) -> T& {
    return d[static_cast<size_t>(y) * static_cast<size_t>(w) + static_cast<size_t>(x)];
  };
  for (const int sign : {1, -1}) {
    for (int i = 0; i < w * h; ++i) {
      const int n = sign == 1 ? i : w * h - 1 - i, x = n % w, y = n / w;
      if (src.get(y, x) == 0) {
        at(x, y) = 0;
        continue;
      }
      for (const Move& m : moves) {
        const int fromX = x + sign * m.dx, fromY = y + sign * m.dy;
        if ((m.weight == 2 && !knights) || fromX < 0 || fromX >= w || fromY < 0 || fromY >= h) continue;
        at(x, y) = std::min(at(x, y), plainSum<T>(at(fromX, fromY), weights[m.weight]));
      }
    }
  }
  return d;
}

template <class T, class M>
void expectEqualsPlain(const Chamfer<T, M>& member, RoiSize roi, const M* weights, unsigned zeroEvery, unsigned seed) {
  const Placement placement = kPlacements[seed % kPlacements.size()];
  const int gap = static_cast<int>(seed % 3);
  const Image<uint8_t> src(roi.width, roi.height, gap, placement);
  std::mt19937 engine(seed);
  src.fill([&] { return engine() % zeroEvery == 0 ? 0u : 1 + engine() % 255; });
  const auto expected = plainTransform<T>(src, member.knights, weights);
  const auto want = [&](int y, int x) { return expected[static_cast<size_t>(y * roi.width + x)]; };
  const Image<T> dst(roi.width, roi.height, gap * int{sizeof(T)}, placement);
  ASSERT_EQ(member.transform(src.data(), src.step(), dst.data(), dst.step(), roi, weights), StatusOk);
  ASSERT_TRUE(matches(dst, want)) << member.name << ", seed " << seed;
  if constexpr (std::is_same_v<T, uint8_t>) {
    const auto inPlace = member.knights ? zvpiDistanceTransform_5x5_8u_C1IR : zvpiDistanceTransform_3x3_8u_C1IR;
    ASSERT_EQ(inPlace(src.data(), src.step(), roi, weights), StatusOk);
    ASSERT_TRUE(matches(src, want)) << member.name << " in place, seed " << seed;
  }
}

// Ordinary weights, weights out of order (a costs more than b or c), and such that saturate at once.
const std::vector<std::vector<int32_t>> kIntegers = {{1, 1, 2},     {5, 7, 11},         {2, 3, 5},        {9, 1, 1},
                                                     {7, 20, 2},    {254, 1, 3},        {1, 255, 255},    {60000, 3, 1},
                                                     {1, 65535, 4}, {INT32_MAX, 2, 50}, {256, 65536, 255}};
const std::vector<std::vector<float>> kFloats = {{1, 1, 2},           {0.955f, 1.3693f, 2.1f}, {1, 1.4f, 2.1969f},
                                                 {3.3f, 0.1f, 0.7f},  {0.1f, 3.3f, 0.05f},     {1e-40f, 2e-40f, 3e-45f},
                                                 {1e38f, 2e38f, 1.f}, {FLT_MAX, INFINITY, 2}};

template <class M>
const auto& weightSets() {
  if constexpr (std::is_same_v<M, float>) {
    return kFloats;
  } else {
    return kIntegers;
  }
}

TEST(Chamfer, EqualsThePlainPassesOnEverySmallSize) {
  forEachChamfer([]<class T, class M>(const Chamfer<T, M>& member) {
    unsigned seed = 0;
    for (int height = 1; height <= 7; ++height)
      for (int width = 1; width <= 9; ++width)
        for (const auto& weights : weightSets<M>()) {
          ++seed;
          ASSERT_NO_FATAL_FAILURE(expectEqualsPlain(member, {width, height}, weights.data(), 2 + seed % 30, seed));
        }
  });
}

TEST(Chamfer, EqualsThePlainPassesAtEveryWidthAndHeight) {
  forEachChamfer([]<class T, class M>(const Chamfer<T, M>& member) {
    const auto& sets = weightSets<M>();
    unsigned seed = 0;
    const auto expectAt = [&](RoiSize roi) {
      ++seed;
      expectEqualsPlain(member, roi, sets[seed % sets.size()].data(), 3 + seed % 300, seed);
    };
    for (int width = 1; width <= 150; ++width)
      for (const int height : {1, 3, 8, 17}) ASSERT_NO_FATAL_FAILURE(expectAt({width, height}));
    for (int height = 9; height <= 70; ++height) ASSERT_NO_FATAL_FAILURE(expectAt({45, height}));
    expectEqualsPlain(member, {70, 40}, sets[0].data(), UINT32_MAX, ++seed);  // no zero pixel
  });
}

TEST(Chamfer, MaskTable) {
  const int32_t integers[2][3][3] = {{{1, 1}, {1, 2}, {2, 3}}, {{1, 1, 2}, {1, 2, 3}, {5, 7, 11}}};
  const uint32_t one = 0x3f800000, two = 0x40000000, three = 0x40400000;
  const uint32_t floats[2][3][3] = {{{one, one}, {one, two}, {0x3F747AE1, 0x3FAF4539}},
                                    {{one, one, two}, {one, two, three}, {one, 0x3FB33333, 0x400C9A02}}};
  for (const int size : {3, 5})
    for (int norm = 0; norm < 3; ++norm) {
      int32_t w[3] = {};
      uint32_t f[3] = {}, byType[3] = {};
      EXPECT_EQ(zvpiGetDistanceTransformMask_32s(size, norm, w), StatusOk);
      EXPECT_EQ(zvpiGetDistanceTransformMask_32f(size, norm, reinterpret_cast<float*>(f)), StatusOk);
      EXPECT_EQ(zvpiGetDistanceTransformMask(10 * size + norm, reinterpret_cast<float*>(byType)), StatusOk);
      for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(w[i], integers[size / 4][norm][i]);  // the third weight of 3x3 is not written
        EXPECT_EQ(f[i], floats[size / 4][norm][i]);
        EXPECT_EQ(byType[i], f[i]);
      }
    }
}

}  // namespace
}  // namespace zvp::test
