// Copies of windows at sub-pixel positions.
#include <math.h>

#include <algorithm>
#include <array>

#include "support/image.h"
#include "zvpcv/geometry.h"

namespace zvp::test {
namespace {

// Scale is int where the member has a scale factor, else nothing.
template <class S, class D, class... Scale>
struct Member {
  const char* name;
  Status (*copy)(const S*, int, D*, int, RoiSize, float, float, Scale...);
  Status (*intersect)(const S*, int, RoiSize, D*, int, RoiSize, Point32f, Point*, Point*, Scale...);
};

template <class F>
void forEachMember(F f) {
#define MEMBER(name, ...) f(Member<__VA_ARGS__>{#name, zvpiCopySubpix_##name, zvpiCopySubpixIntersect_##name})
  MEMBER(8u_C1R, uint8_t, uint8_t);
  MEMBER(16u_C1R, uint16_t, uint16_t);
  MEMBER(8u16u_C1R_Sfs, uint8_t, uint16_t, int);
  MEMBER(16u32f_C1R, uint16_t, float);
  MEMBER(8u32f_C1R, uint8_t, float);
  MEMBER(32f_C1R, float, float);
#undef MEMBER
}

// --- The plain model -------------------------------------------------------------------------------------------------

// s(y, x) gives a source pixel.
struct FloatRule {
  float w00, w10, w01, w11;

  FloatRule(float fx, float fy) : w00((1 - fx) * (1 - fy)), w10(fx * (1 - fy)), w01((1 - fx) * fy), w11(fx * fy) {}

  template <class D, class Source>
  D at(int y, int x, Source s, int) const {
    const auto f = [&](int dy, int dx) { return static_cast<float>(s(y + dy, x + dx)); };
    const float a = w00 * f(0, 0), b = w10 * f(0, 1), c = w01 * f(1, 0), d = w11 * f(1, 1);
    return ((a + b) + c) + d;
  }
};

struct FixedRule {
  int64_t w[4];  // 00, 01, 10, 11

  FixedRule(float fx, float fy) {
    const auto ax = static_cast<int64_t>(0.5f + 16384.0f * fx), ay = static_cast<int64_t>(0.5f + 16384.0f * fy);
    const int64_t products[] = {(16384 - ax) * (16384 - ay), (16384 - ax) * ay, ax * (16384 - ay), ax * ay};
    int64_t sum = 0;
    for (int i = 0; i < 4; ++i) sum += w[i] = (products[i] + 16384) >> 14;
    if (sum > 16384) *std::max_element(w, w + 4) += 16384 - sum;  // the first of the largest
  }

  template <class D, class Source>
  D at(int y, int x, Source s, int scale) const {
    const int64_t sum = w[0] * s(y, x) + w[1] * s(y + 1, x) + w[2] * s(y, x + 1) + w[3] * s(y + 1, x + 1);
    const int64_t value = (sum + (int64_t{1} << (scale + 13))) >> (scale + 14);
    return static_cast<D>(std::clamp<int64_t>(value, 0, std::numeric_limits<D>::max()));
  }
};

template <class D>
using RuleOf = std::conditional_t<std::is_same_v<D, float>, FloatRule, FixedRule>;

template <class S, class D>
RuleOf<D> copyRule(float dx, float dy) {
  const auto fraction = [](float d, float least) {
    const float f = d - truncf(d);
    return fmaxf(f < 0 ? f + 1 : f, std::is_same_v<D, float> ? least : 0);
  };
  return {fraction(dx, 1e-6f), fraction(dy, std::is_same_v<S, float> ? 1e-6f : 1e-9f)};
}

// One axis of a window, and of the part of it that lies inside.
struct Axis {
  int first, min, max;
  float fraction;

  Axis(float centre, int n, int extent) {
    const float corner = centre - 0.5f * static_cast<float>(n - 1);
    first = static_cast<int>(truncf(corner + static_cast<float>(n))) - n;
    fraction = corner - static_cast<float>(first);
    min = first >= extent ? 0 : std::clamp(-first, 0, n);
    max = first >= extent ? -1 : std::min(n - 1, extent - 2 - first);
  }
};

using Inside = std::array<int, 4>;
Inside inside(Point min, Point max) { return {min.x, max.x, min.y, max.y}; }

constexpr Point kUnwritten{-77, -77};
constexpr int kScales[] = {0, -13, -8, 1, 7, 17, 18, 31, 32, INT32_MAX};

// --- Plain copies ----------------------------------------------------------------------------------------------------

TEST(CopySubpix, EqualsThePlainLoopAtEveryWidth) {
  constexpr float kShifts[] = {0.0f,      0.5f,   0.25f,   -0.25f, 3.3f,     -7.9f,    1e-7f,
                               0.999999f, 1e-10f, -1e-10f, NAN,    INFINITY, -INFINITY};
  forEachMember([&]<class S, class D, class... Scale>(const Member<S, D, Scale...>& member) {
    unsigned seed = 0;
    for (int width = 1; width <= 140; ++width) {
      const int height = 1 + width % 4, extra = static_cast<int>(++seed % 3);
      const Placement placement = kPlacements[seed % kPlacements.size()];
      const Image<S> src(width + 1, height + 1, extra * int{sizeof(S)}, placement);
      const Image<D> dst(width, height, extra * int{sizeof(D)}, placement);
      src.fill(Values<S>(seed));
      const float dx = kShifts[seed % std::size(kShifts)], dy = kShifts[seed / 3 % std::size(kShifts)];
      const int scale = sizeof...(Scale) > 0 ? kScales[seed % std::size(kScales)] : 0;
      ASSERT_EQ(member.copy(src.data(), src.step(), dst.data(), dst.step(), {width, height}, dx, dy, Scale{scale}...),
                StatusOk);
      const auto source = [&](int y, int x) { return src.get(y, x); };
      const auto expected = [&, rule = copyRule<S, D>(dx, dy)](int y, int x) {
        return rule.template at<D>(y, x, source, std::min(scale, 20));
      };
      ASSERT_TRUE(matches(dst, expected, true)) << member.name << " by " << dx << ", " << dy;
    }
  });
}

template <class S, class D, class... Scale>
D copied(Status (*f)(const S*, int, D*, int, RoiSize, float, float, Scale...), const std::array<S, 4>& s, float dx,
         float dy, Scale... scale) {
  D value{};
  EXPECT_EQ(f(s.data(), 2 * int{sizeof(S)}, &value, int{sizeof(D)}, {1, 1}, dx, dy, scale...), StatusOk);
  return value;
}

TEST(CopySubpix, FixedWeightsAreOneTooLargeBeforeTheyAreCorrected) {
  using Four = std::array<uint16_t, 4>;
  const auto weights = [](float dx, float dy) {  // of 65535: here, right, below, below right
    Four result{};
    for (size_t i = 0; i < 4; ++i) {
      Four source{};
      source[i] = 65535;
      result[i] = copied(zvpiCopySubpix_16u_C1R, source, dx, dy);
    }
    return result;
  };
  // Four times 4097: the first becomes 4093. 4093 x 65535 / 16384 = 16371.8, 4097 x 65535 / 16384 = 16387.8.
  EXPECT_EQ(weights(0.5f, 0.5f), (Four{16372, 16388, 16388, 16388}));
  EXPECT_EQ(weights(0, 0), (Four{65523, 4, 4, 4})) << "16385 - 4, 1, 1, 1";
  EXPECT_EQ(weights(0, 0.5f), (Four{32756, 4, 32771, 4})) << "8193, 1, 8193, 1: the first is corrected";
  EXPECT_EQ(weights(0.75f, 0.5f), (Four{8196, 24564, 8196, 24580})) << "2049, 6145, 2049, 6145";
  EXPECT_EQ(weights(0.5f, 0.75f), (Four{8196, 8196, 24564, 24580}));
}

// --- Windows ---------------------------------------------------------------------------------------------------------

template <class S, class D, class... Scale>
void expectIntersectEqualsPlain(const Member<S, D, Scale...>& member, RoiSize source, RoiSize size, Point32f centre,
                                unsigned seed) {
  const Placement placement = kPlacements[seed % kPlacements.size()];
  const int extra = static_cast<int>(seed % 3), scale = sizeof...(Scale) > 0 ? kScales[seed % 4] : 0;
  const Image<S> src(source.width, source.height, extra * int{sizeof(S)}, placement);
  const Image<D> dst(size.width, size.height, extra * int{sizeof(D)}, placement);
  src.fill([values = Values<S>(seed)]() mutable {
    const S v = values();
    return std::is_same_v<S, float> && !isfinite(static_cast<float>(v)) ? S(3) : v;
  });
  Point min = kUnwritten, max = kUnwritten;
  ASSERT_EQ(member.intersect(src.data(), src.step(), source, dst.data(), dst.step(), size, centre, &min, &max,
                             Scale{scale}...),
            StatusOk);
  const Axis columns(centre.x, size.width, source.width), rows(centre.y, size.height, source.height);
  const auto pixel = [&](int y, int x) {
    return src.get(std::clamp(y, 0, source.height - 1), std::clamp(x, 0, source.width - 1));
  };
  const auto expected = [&, rule = RuleOf<D>(columns.fraction, rows.fraction)](int y, int x) {
    return rule.template at<D>(rows.first + y, columns.first + x, pixel, scale);
  };
  ASSERT_TRUE(matches(dst, expected)) << member.name << " at " << centre.x << ", " << centre.y;
  ASSERT_EQ(inside(min, max), (Inside{columns.min, columns.max, rows.min, rows.max}));
}

TEST(CopySubpixIntersect, EqualsThePlainModelEverywhere) {
  forEachMember([](const auto& member) {
    unsigned seed = 0;
    const auto within = [](unsigned n, int extent, int window) {  // as far outside as the window is wide
      return static_cast<float>(n % 1009) / 1009 * static_cast<float>(extent + 2 * window) - static_cast<float>(window);
    };
    for (const RoiSize source : {RoiSize{1, 1}, RoiSize{2, 3}, RoiSize{40, 30}, RoiSize{90, 3}})
      for (const int width : {1, 2, 7, 8, 15, 16, 17, 37, 70})
        for (int k = 0; k < 16; ++k) {
          const int height = 1 + static_cast<int>(++seed % 9);
          const Point32f centre{within(seed * 389, source.width, width), within(seed * 211, source.height, height)};
          ASSERT_NO_FATAL_FAILURE(expectIntersectEqualsPlain(member, source, {width, height}, centre, seed));
        }
    for (const float x : {-60.3f, -15.0f, -14.75f, 7.0f, 7.5f, 511.99997f})  // the last one's fraction is negative
      ASSERT_NO_FATAL_FAILURE(expectIntersectEqualsPlain(member, {700, 4}, {15, 3}, {x + 7, x / 200}, ++seed));
  });
}

TEST(CopySubpixIntersect, PointsFarAwayTakeTheEdge) {
  const float src[4] = {1, 2, 3, 4};
  const auto expectEdge = [&](float x, float edge, int first, int last) {
    std::array<float, 3> out{};
    Point min = kUnwritten, max = kUnwritten;
    EXPECT_EQ(zvpiCopySubpixIntersect_32f_C1R(src, 8, {2, 2}, out.data(), 12, {3, 1}, {x, x}, &min, &max), StatusOk);
    EXPECT_EQ(out, (std::array{edge, edge, edge})) << x;
    EXPECT_EQ(std::pair(min.x, max.x), std::pair(first, last)) << x;
  };
  for (const float x : {1e30f, NAN, INFINITY, 2.2e9f, 2e9f, 5.0f}) expectEdge(x, 4, 0, -1);
  for (const float x : {-1e30f, -INFINITY, -2.2e9f, -2147483000.0f, -9.0f}) expectEdge(x, 1, 3, 2);
}

// The first column is -135109352, the corner in single precision 16 before it: the fraction is -16, and a result
// 17 x one pixel - 16 x the next one.
TEST(CopySubpixIntersect, FractionsOfWindowsWiderThanSinglePrecision) {
  constexpr int kWidth = 135109368, kBefore = 135109352;
  const uint8_t src[8] = {100, 101, 102, 103, 104, 105, 106, 107};
  const std::unique_ptr<uint8_t[]> dst(new uint8_t[kWidth]);
  Point min = kUnwritten, max = kUnwritten;
  EXPECT_EQ(
      zvpiCopySubpixIntersect_8u_C1R(src, 8, {8, 1}, dst.get(), kWidth, {kWidth, 1}, {-67554680, 0.3f}, &min, &max),
      StatusOk);
  const uint8_t* first = dst.get() + kBefore;
  EXPECT_EQ(std::vector<uint8_t>(first - 2, first + 9),
            (std::vector<uint8_t>{100, 100, 84, 85, 86, 87, 88, 89, 90, 107, 107}));
  EXPECT_EQ(inside(min, max), (Inside{kBefore, kBefore + 6, 0, -1}));
}

}  // namespace
}  // namespace zvp::test
