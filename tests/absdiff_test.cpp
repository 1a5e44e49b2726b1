#include <cmath>
#include <limits>

#include "support/checks.h"
#include "support/image.h"
#include "zvpcv/arithmetic.h"

namespace zvp::test {
namespace {

template <class T>
T plainAbsDiff(T a, T b) {
  if constexpr (std::is_same_v<T, float>) {
    return std::copysign(a - b, 1.0f);
  } else {
    return static_cast<T>(a > b ? a - b : b - a);
  }
}

constexpr int kWidest = 150;  // more than two registers of bytes in the widest build
constexpr int kHeight = 3;

template <class T>
using AbsDiff = Status (*)(const T*, int, const T*, int, T*, int, RoiSize);

template <class T>
void expectAbsDiff(AbsDiff<T> function, int channels) {
  Values<T> values(1);
  for (const Placement placement : kPlacements) {
    for (int width = 1; width * channels <= kWidest; ++width) {
      const int n = width * channels, gap = width % 2 * int{sizeof(T)};  // rows with and without gaps
      const Image<T> a(n, kHeight, 0, placement), b(n, kHeight, 3 * gap, placement), dst(n, kHeight, gap, placement);
      a.fill(values);
      b.fill(values);
      const RoiSize roi{width, kHeight};
      ASSERT_EQ(function(a.data(), a.step(), b.data(), b.step(), dst.data(), dst.step(), roi), StatusOk);
      ASSERT_TRUE(matches(dst, [&](int y, int x) { return plainAbsDiff(a.get(y, x), b.get(y, x)); }));
      ASSERT_EQ(function(b.data(), b.step(), a.data(), a.step(), b.data(), b.step(), roi), StatusOk);
      ASSERT_TRUE(matches(b, [&](int y, int x) { return dst.get(y, x); })) << "in place";
    }
  }
}

template <class T, class Constant>
using AbsDiffC = Status (*)(const T*, int, T*, int, RoiSize, Constant);

template <class T, class Constant>
void expectAbsDiffC(AbsDiffC<T, Constant> function, Constant value, T clamped) {
  Values<T> values(2);
  for (const Placement placement : kPlacements) {
    for (int width = 1; width <= kWidest; ++width) {
      const int gap = width % 2 * int{sizeof(T)};
      const Image<T> src(width, kHeight, gap, placement), dst(width, kHeight, 0, placement);
      src.fill(values);
      const RoiSize roi{width, kHeight};
      ASSERT_EQ(function(src.data(), src.step(), dst.data(), dst.step(), roi, value), StatusOk);
      ASSERT_TRUE(matches(dst, [&](int y, int x) { return plainAbsDiff(src.get(y, x), clamped); }));
      ASSERT_EQ(function(src.data(), src.step(), src.data(), src.step(), roi, value), StatusOk);
      ASSERT_TRUE(matches(src, [&](int y, int x) { return dst.get(y, x); })) << "in place";
    }
  }
}

TEST(AbsDiff, EqualsThePlainLoop) {
  expectAbsDiff<uint8_t>(zvpiAbsDiff_8u_C1R, 1);
  expectAbsDiff<uint8_t>(zvpiAbsDiff_8u_C3R, 3);
  expectAbsDiff<uint16_t>(zvpiAbsDiff_16u_C1R, 1);
  expectAbsDiff<float>(zvpiAbsDiff_32f_C1R, 1);
}

TEST(AbsDiffC, EqualsThePlainLoopAfterClamping) {
  for (const int value : {INT32_MIN, -5, 0}) {
    expectAbsDiffC<uint8_t, int>(zvpiAbsDiffC_8u_C1R, value, 0);
    expectAbsDiffC<uint16_t, int>(zvpiAbsDiffC_16u_C1R, value, 0);
  }
  expectAbsDiffC<uint8_t, int>(zvpiAbsDiffC_8u_C1R, 117, 117);
  expectAbsDiffC<uint16_t, int>(zvpiAbsDiffC_16u_C1R, 40000, 40000);
  for (const int value : {65535, 65536, INT32_MAX}) {
    expectAbsDiffC<uint8_t, int>(zvpiAbsDiffC_8u_C1R, value, 255);
    expectAbsDiffC<uint16_t, int>(zvpiAbsDiffC_16u_C1R, value, 65535);
  }
  expectAbsDiffC<uint8_t, int>(zvpiAbsDiffC_8u_C1R, 256, 255);
  constexpr float kInf = std::numeric_limits<float>::infinity();
  for (const float value : {0.0f, -0.0f, 1.5f, kInf, -kInf, std::nanf("")})
    expectAbsDiffC<float, float>(zvpiAbsDiffC_32f_C1R, value, value);
}

TEST(AbsDiff, FloatSignsAreCleared) {
  constexpr float kInf = std::numeric_limits<float>::infinity();
  const float a[] = {-0.0f, kInf, -kInf, -kInf, std::copysign(std::nanf(""), -1.0f), 1.0f};
  const float b[] = {0.0f, kInf, -kInf, kInf, 1.0f, 3.0f};
  float dst[6];
  ASSERT_EQ(zvpiAbsDiff_32f_C1R(a, sizeof a, b, sizeof b, dst, sizeof dst, {6, 1}), StatusOk);
  for (const float value : dst) EXPECT_FALSE(std::signbit(value));
  EXPECT_EQ(dst[0], 0.0f);
  EXPECT_TRUE(std::isnan(dst[1]) && std::isnan(dst[2]) && std::isnan(dst[4]));
  EXPECT_EQ(dst[3], kInf);
  EXPECT_EQ(dst[5], 2.0f);
}

template <class T>
Call absDiffCall(const char* name, AbsDiff<T> function, int channels, const Image<T>& a, const Image<T>& b,
                 const Image<T>& dst) {
  constexpr int kSize = sizeof(T);
  return {name,
          {{a.data(), a.step(), kSize}, {b.data(), b.step(), kSize}, {dst.data(), dst.step(), kSize}},
          {},
          {a.width() / channels, a.height()},
          [function](const auto& o, const auto&, RoiSize roi) {
            return function(static_cast<const T*>(o[0].data), o[0].step, static_cast<const T*>(o[1].data), o[1].step,
                            static_cast<T*>(const_cast<void*>(o[2].data)), o[2].step, roi);
          }};
}

template <class T>
void expectAbsDiffChecks(const char* name, AbsDiff<T> function, int channels) {
  const Image<T> a(6, 2), b(6, 2), dst(6, 2);
  const auto before = dst.bytes();
  expectStandardChecks(absDiffCall(name, function, channels, a, b, dst));
  EXPECT_EQ(dst.bytes(), before);
}

template <class T, class Constant>
void expectAbsDiffCChecks(const char* name, AbsDiffC<T, Constant> function) {
  const Image<T> src(6, 2), dst(6, 2);
  const auto before = dst.bytes();
  constexpr int kSize = sizeof(T);
  expectStandardChecks({name,
                        {{src.data(), src.step(), kSize}, {dst.data(), dst.step(), kSize}},
                        {},
                        {6, 2},
                        [function](const auto& o, const auto&, RoiSize roi) {
                          return function(static_cast<const T*>(o[0].data), o[0].step,
                                          static_cast<T*>(const_cast<void*>(o[1].data)), o[1].step, roi, Constant(1));
                        }});
  EXPECT_EQ(dst.bytes(), before);
}

TEST(AbsDiff, ChecksInOrderAndWritesNothing) {
  expectAbsDiffChecks<uint8_t>("8u_C1R", zvpiAbsDiff_8u_C1R, 1);
  expectAbsDiffChecks<uint8_t>("8u_C3R", zvpiAbsDiff_8u_C3R, 3);
  expectAbsDiffChecks<uint16_t>("16u_C1R", zvpiAbsDiff_16u_C1R, 1);
  expectAbsDiffChecks<float>("32f_C1R", zvpiAbsDiff_32f_C1R, 1);
  expectAbsDiffCChecks<uint8_t, int>("C_8u_C1R", zvpiAbsDiffC_8u_C1R);
  expectAbsDiffCChecks<uint16_t, int>("C_16u_C1R", zvpiAbsDiffC_16u_C1R);
  expectAbsDiffCChecks<float, float>("C_32f_C1R", zvpiAbsDiffC_32f_C1R);
}

}  // namespace
}  // namespace zvp::test
