// Absolute differences against a plain loop, and their checks.
#include <cmath>
#include <limits>

#include "support/image.h"
#include "zvpcv/arithmetic.h"

namespace zvp::test {
namespace {

constexpr int kWidest = 150;  // more than two registers of bytes in the widest build
constexpr int kHeight = 3;
constexpr float kInf = std::numeric_limits<float>::infinity();

template <class T>
T plainAbsDiff(T a, T b) {
  if constexpr (std::is_same_v<T, float>) {
    return std::copysign(a - b, 1.0f);
  } else {
    return static_cast<T>(a > b ? a - b : b - a);
  }
}

// call(a, b, dst, roi) writes |a - b|, also into a. `subtrahends` gives the values of b.
template <class T, class Call, class Subtrahends>
void expectDifferences(int channels, Call call, Subtrahends subtrahends) {
  Values<T> values(1);
  for (const Placement placement : kPlacements) {
    for (int width = 1; width * channels <= kWidest; ++width) {
      const int n = width * channels, gap = width % 2 * int{sizeof(T)};  // rows with and without gaps
      const Image<T> a(n, kHeight, gap, placement), b(n, kHeight, 3 * gap, placement), dst(n, kHeight, 0, placement);
      a.fill(values);
      b.fill(subtrahends);
      ASSERT_EQ(call(a, b, dst, RoiSize{width, kHeight}), StatusOk);
      ASSERT_TRUE(matches(dst, [&](int y, int x) { return plainAbsDiff(a.get(y, x), b.get(y, x)); }));
      ASSERT_EQ(call(a, b, a, RoiSize{width, kHeight}), StatusOk);
      ASSERT_TRUE(matches(a, [&](int y, int x) { return dst.get(y, x); })) << "in place";
    }
  }
}

template <class T>
void expectAbsDiff(const char* name, Status (*f)(const T*, int, const T*, int, T*, int, RoiSize), int channels = 1) {
  SCOPED_TRACE(name);
  const auto call = [f](const auto& a, const auto& b, const auto& dst, RoiSize roi) {
    return callOnImages(f, roi, a, b, dst);
  };
  expectDifferences<T>(channels, call, Values<T>(2));
}

TEST(AbsDiff, EqualsThePlainLoop) {
  expectAbsDiff("8u_C1R", zvpiAbsDiff_8u_C1R);
  expectAbsDiff("8u_C3R", zvpiAbsDiff_8u_C3R, 3);
  expectAbsDiff("16u_C1R", zvpiAbsDiff_16u_C1R);
  expectAbsDiff("32f_C1R", zvpiAbsDiff_32f_C1R);
}

// `constants`: the values to call with, and what each is clamped to.
template <class T, class Constant>
void expectAbsDiffC(const char* name, Status (*f)(const T*, int, T*, int, RoiSize, Constant),
                    const std::vector<std::pair<Constant, T>>& constants) {
  SCOPED_TRACE(name);
  for (const auto& [constant, clamped] : constants) {
    const auto withConstant = [f, c = constant](auto... arguments) { return f(arguments..., c); };
    const auto call = [&](const auto& src, const auto&, const auto& dst, RoiSize roi) {
      return callOnImages(withConstant, roi, src, dst);
    };
    expectDifferences<T>(1, call, [value = clamped] { return value; });
  }
}

TEST(AbsDiffC, EqualsThePlainLoopAfterClamping) {
  expectAbsDiffC<uint8_t, int>(
      "8u_C1R", zvpiAbsDiffC_8u_C1R,
      {{INT32_MIN, 0}, {-5, 0}, {0, 0}, {117, 117}, {256, 255}, {65535, 255}, {65536, 255}, {INT32_MAX, 255}});
  expectAbsDiffC<uint16_t, int>(
      "16u_C1R", zvpiAbsDiffC_16u_C1R,
      {{INT32_MIN, 0}, {-5, 0}, {0, 0}, {40000, 40000}, {65535, 65535}, {65536, 65535}, {INT32_MAX, 65535}});
  expectAbsDiffC<float, float>("32f_C1R", zvpiAbsDiffC_32f_C1R,
                               {{0.0f, 0.0f}, {-0.0f, -0.0f}, {1.5f, 1.5f}, {kInf, kInf}, {-kInf, -kInf}, {NAN, NAN}});
}

}  // namespace
}  // namespace zvp::test
