// Copies of windows at sub-pixel positions.
#include <math.h>

#include <algorithm>

#include "support/checks.h"
#include "zvpcv/geometry.h"

namespace zvp::test {
namespace {

constexpr Point kUnwritten{-77, -77};

// --- The members -----------------------------------------------------------------------------------------------------

// Scale is int where the member has a scale factor, else nothing.
template <class S, class D, class... Scale>
struct Member {
  using Copy = Status(const S*, int, D*, int, RoiSize, float, float, Scale...);
  using Intersect = Status(const S*, int, RoiSize, D*, int, RoiSize, Point32f, Point*, Point*, Scale...);

  const char* name;
  Copy* copy;
  Intersect* intersect;
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

struct FloatRule {
  float w00, w10, w01, w11;

  FloatRule(float fx, float fy) : w00((1 - fx) * (1 - fy)), w10(fx * (1 - fy)), w01((1 - fx) * fy), w11(fx * fy) {}

  template <class D, class S>
  D at(S s00, S s10, S s01, S s11, int) const {
    const float a = w00 * static_cast<float>(s00), b = w10 * static_cast<float>(s10);
    const float c = w01 * static_cast<float>(s01), d = w11 * static_cast<float>(s11);
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

  template <class D, class S>
  D at(S s00, S s10, S s01, S s11, int scale) const {
    const int64_t sum = w[0] * s00 + w[1] * s01 + w[2] * s10 + w[3] * s11;
    const int64_t value = (sum + (int64_t{1} << (scale + 13))) >> (scale + 14);
    return static_cast<D>(std::clamp<int64_t>(value, 0, std::numeric_limits<D>::max()));
  }
};

template <class D>
using RuleOf = std::conditional_t<std::is_same_v<D, float>, FloatRule, FixedRule>;

float fraction(float d) {
  const float f = d - truncf(d);
  return f < 0 ? f + 1 : f;
}

template <class S, class D>
RuleOf<D> copyRule(float dx, float dy) {
  float fx = fraction(dx), fy = fraction(dy);
  if (std::is_same_v<D, float>) {
    fx = fmaxf(fx, 1e-6f);
    fy = fmaxf(fy, std::is_same_v<S, float> ? 1e-6f : 1e-9f);
  }
  return {fx, fy};
}

int firstColumn(float centre, int n) {
  return static_cast<int>(truncf(centre - 0.5f * static_cast<float>(n - 1) + static_cast<float>(n))) - n;
}

constexpr int kScales[] = {0, -13, -8, 1, 7, 40};

// --- Plain copies ----------------------------------------------------------------------------------------------------

TEST(CopySubpix, EqualsThePlainLoopAtEveryWidth) {
  constexpr float kShifts[] = {0.0f, 0.5f, 0.25f, -0.25f, 3.3f, -7.9f, 1e-7f, 0.999999f, 1e-10f, -1e-10f};
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
      const auto rule = copyRule<S, D>(dx, dy);
      const auto expected = [&](int y, int x) {
        return rule.template at<D>(src.get(y, x), src.get(y, x + 1), src.get(y + 1, x), src.get(y + 1, x + 1),
                                   std::min(scale, 20));
      };
      ASSERT_TRUE(matches(dst, expected, true)) << member.name << " by " << dx << ", " << dy;
    }
  });
}

template <class S, class D, class Function, class... Scale>
D copied(Function f, const S (&s)[4], float dx, float dy, Scale... scale) {
  D value{};
  EXPECT_EQ(f(s, 2 * int{sizeof(S)}, &value, int{sizeof(D)}, {1, 1}, dx, dy, scale...), StatusOk);
  return value;
}

TEST(CopySubpix, FixedWeightsAreOneTooLargeBeforeTheyAreCorrected) {
  const auto of = [](const uint16_t(&s)[4], float dx, float dy) {
    return copied<uint16_t, uint16_t>(zvpiCopySubpix_16u_C1R, s, dx, dy);
  };
  // Four times 4097: the first becomes 4093. 4093 x 65535 / 16384 = 16371.8, 4097 x 65535 / 16384 = 16387.8.
  EXPECT_EQ(of({65535, 0, 0, 0}, 0.5f, 0.5f), 16372);
  EXPECT_EQ(of({0, 65535, 0, 0}, 0.5f, 0.5f), 16388);
  EXPECT_EQ(of({0, 0, 65535, 0}, 0.5f, 0.5f), 16388);
  // At fraction 0 the weights are 16385 - 4, 1, 1, 1.
  EXPECT_EQ(of({65535, 0, 0, 0}, 0, 0), 65523);
  EXPECT_EQ(of({0, 0, 0, 65535}, 0, 0), 4);
  // fx 0, fy 0.5: 8193, 1, 8193, 1; w00 stands before w01.
  EXPECT_EQ(of({65535, 0, 0, 0}, 0, 0.5f), 32756);
  EXPECT_EQ(of({0, 0, 65535, 0}, 0, 0.5f), 32771);
  // fx 0.75, fy 0.5: 2049, 6145, 2049, 6145; w10 is corrected, w11 is not.
  EXPECT_EQ(of({0, 65535, 0, 0}, 0.75f, 0.5f), 24564);
  EXPECT_EQ(of({0, 0, 0, 65535}, 0.75f, 0.5f), 24580);
  // fx 0.5, fy 0.75: w01 and w11 are the largest.
  EXPECT_EQ(of({0, 0, 65535, 0}, 0.5f, 0.75f), 24564);
  EXPECT_EQ(of({0, 0, 0, 65535}, 0.5f, 0.75f), 24580);
}

TEST(CopySubpix, FractionsOfNegativeAndOfNoDisplacements) {
  const float s[4] = {0, 100, 200, 300};
  const auto of = [&](float dx, float dy) { return copied<float, float>(zvpiCopySubpix_32f_C1R, s, dx, dy); };
  EXPECT_EQ(of(-0.25f, 0.5f), of(0.75f, 0.5f));
  EXPECT_NEAR(of(0.75f, 0.5f), 175, 1e-4);
  EXPECT_EQ(of(17.5f, -3.5f), of(0.5f, 0.5f));
  EXPECT_EQ(of(NAN, INFINITY), of(0, 0));
  const uint8_t bytes[4] = {10, 20, 30, 40};
  EXPECT_EQ((copied<uint8_t, uint8_t>(zvpiCopySubpix_8u_C1R, bytes, NAN, -INFINITY)), 10);
}

// At fraction 0 the fractions are raised: to 1e-6 along x, and along y to 1e-6 for 32f but to 1e-9 for the others.
TEST(CopySubpix, LeastFractions) {
  const float belowOnly[4] = {0, 0, 1e9f, 0}, rightOnly[4] = {0, 1e9f, 0, 0};
  EXPECT_NEAR((copied<float, float>(zvpiCopySubpix_32f_C1R, belowOnly, 0, 0)), 1000, 0.1);
  EXPECT_NEAR((copied<float, float>(zvpiCopySubpix_32f_C1R, rightOnly, 0, 0)), 1000, 0.1);
  EXPECT_NEAR((copied<uint8_t, float>(zvpiCopySubpix_8u32f_C1R, {0, 0, 100, 0}, 0, 0)), 1e-7, 1e-12);
  EXPECT_NEAR((copied<uint8_t, float>(zvpiCopySubpix_8u32f_C1R, {0, 100, 0, 0}, 0, 0)), 1e-4, 1e-9);
  EXPECT_NEAR((copied<uint16_t, float>(zvpiCopySubpix_16u32f_C1R, {0, 0, 50000, 0}, 0, 0)), 5e-5, 1e-9);
}

TEST(CopySubpix, ScaleFactors) {
  const uint8_t s[4] = {200, 200, 200, 200};
  const auto of = [&](int scale) {
    return copied<uint8_t, uint16_t>(zvpiCopySubpix_8u16u_C1R_Sfs, s, 0.5f, 0.5f, scale);
  };
  EXPECT_EQ(of(0), 200);
  EXPECT_EQ(of(-8), 51200);
  EXPECT_EQ(of(-9), 65535);  // 102400
  EXPECT_EQ(of(-13), 65535);
  EXPECT_EQ(of(4), 13);  // 12.5 rounds up
  EXPECT_EQ(of(8), 1);
  EXPECT_EQ(of(9), 0);
  for (const int scale : {17, 18, 31, 32, INT32_MAX}) EXPECT_EQ(of(scale), 0);
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
  const int i = firstColumn(centre.x, size.width), j = firstColumn(centre.y, size.height);
  const float cornerX = centre.x - 0.5f * static_cast<float>(size.width - 1);
  const float cornerY = centre.y - 0.5f * static_cast<float>(size.height - 1);
  const RuleOf<D> rule(cornerX - static_cast<float>(i), cornerY - static_cast<float>(j));
  const auto pixel = [&](int y, int x) {
    return src.get(std::clamp(y, 0, source.height - 1), std::clamp(x, 0, source.width - 1));
  };
  const auto expected = [&](int y, int x) {
    return rule.template at<D>(pixel(j + y, i + x), pixel(j + y, i + x + 1), pixel(j + y + 1, i + x),
                               pixel(j + y + 1, i + x + 1), scale);
  };
  SCOPED_TRACE(member.name);
  ASSERT_TRUE(matches(dst, expected)) << "at " << centre.x << ", " << centre.y;
  const auto lowest = [](int first, int n, int extent) { return first >= extent ? 0 : std::clamp(-first, 0, n); };
  const auto highest = [](int first, int n, int extent) {
    return first >= extent ? -1 : std::min(n - 1, extent - 2 - first);
  };
  ASSERT_EQ(min.x, lowest(i, size.width, source.width));
  ASSERT_EQ(min.y, lowest(j, size.height, source.height));
  ASSERT_EQ(max.x, highest(i, size.width, source.width));
  ASSERT_EQ(max.y, highest(j, size.height, source.height));
}

TEST(CopySubpixIntersect, EqualsThePlainModelEverywhere) {
  forEachMember([](const auto& member) {
    unsigned seed = 0;
    for (const RoiSize source : {RoiSize{1, 1}, RoiSize{2, 3}, RoiSize{40, 30}, RoiSize{90, 3}})
      for (const int width : {1, 2, 7, 8, 15, 16, 17, 37, 70})
        for (int k = 0; k < 16; ++k) {
          ++seed;
          const int height = 1 + static_cast<int>(seed % 9);
          const float reachX = static_cast<float>(source.width + 2 * width);
          const float reachY = static_cast<float>(source.height + 2 * height);
          const auto part = [](unsigned n) { return static_cast<float>(n % 1009) / 1009; };
          const Point32f centre{part(seed * 389) * reachX - static_cast<float>(width),
                                part(seed * 211) * reachY - static_cast<float>(height)};
          ASSERT_NO_FATAL_FAILURE(expectIntersectEqualsPlain(member, source, {width, height}, centre, seed));
        }
    for (const float x : {-60.3f, -15.0f, -14.75f, 7.0f, 7.5f, 511.99997f})  // the last one's fraction is negative
      ASSERT_NO_FATAL_FAILURE(expectIntersectEqualsPlain(member, {700, 4}, {15, 3}, {x + 7, x / 200}, ++seed));
  });
}

// A row 0 10 20 30 and windows of 3 that start at -1.5 and at 1.5: numbers by hand.
TEST(CopySubpixIntersect, EdgesAreRepeatedAndReported) {
  const float src[4] = {0, 10, 20, 30};
  const auto window = [&](float corner, Point& min, Point& max) {
    std::vector<float> out(3);
    EXPECT_EQ(zvpiCopySubpixIntersect_32f_C1R(src, 16, {4, 1}, out.data(), 12, {3, 1}, {corner + 1, 0}, &min, &max),
              StatusOk);
    return out;
  };
  Point min = kUnwritten, max = kUnwritten;
  EXPECT_EQ(window(-1.5f, min, max), (std::vector<float>{0, 0, 5}));
  EXPECT_EQ(min.x, 2);
  EXPECT_EQ(max.x, 2);
  EXPECT_EQ(min.y, 0);
  EXPECT_EQ(max.y, -1);  // no row below the only one
  EXPECT_EQ(window(1.5f, min, max), (std::vector<float>{15, 25, 30}));
  EXPECT_EQ(min.x, 0);
  EXPECT_EQ(max.x, 1);
  EXPECT_EQ(window(0.0f, min, max), (std::vector<float>{0, 10, 20}));  // no fraction is raised
}

TEST(CopySubpixIntersect, PointsFarAwayTakeTheEdge) {
  struct Far {
    float x, expected;
    int min, max;
  };
  const float src[4] = {1, 2, 3, 4};
  const Far cases[] = {{1e30f, 4, 0, -1},         {-1e30f, 1, 3, 2},  {NAN, 4, 0, -1},    {INFINITY, 4, 0, -1},
                       {-INFINITY, 1, 3, 2},      {2.2e9f, 4, 0, -1}, {-2.2e9f, 1, 3, 2}, {2e9f, 4, 0, -1},
                       {-2147483000.0f, 1, 3, 2}, {5, 4, 0, -1},      {-9, 1, 3, 2}};
  for (const Far& c : cases) {
    SCOPED_TRACE(c.x);
    float out[3] = {};
    Point min = kUnwritten, max = kUnwritten;
    EXPECT_EQ(zvpiCopySubpixIntersect_32f_C1R(src, 8, {2, 2}, out, 12, {3, 1}, {c.x, c.x}, &min, &max), StatusOk);
    for (const float value : out) EXPECT_EQ(value, c.expected);
    EXPECT_EQ(min.x, c.min);
    EXPECT_EQ(max.x, c.max);
  }
}

// --- Checks ----------------------------------------------------------------------------------------------------------

TEST(CopySubpix, ChecksInOrderAndWritesNothing) {
  forEachMember([]<class S, class D, class... Scale>(const Member<S, D, Scale...>& member) {
    const Image<S> src(6, 4);
    const Image<D> dst(5, 3);
    const auto before = dst.bytes();
    const int badScale = sizeof...(Scale) > 0 ? -14 : 0;
    // The tight step of the source is shorter than its rows, which the checks do not see.
    const Operand source{src.data(), 5 * int{sizeof(S)}, sizeof(S)}, target{dst.data(), dst.step(), sizeof(D)};
    expectStandardChecks({member.name, {source, target}, {}, {5, 3}, [&](const auto& o, const auto&, RoiSize roi) {
                            return member.copy(static_cast<const S*>(o[0].data), o[0].step,
                                               static_cast<D*>(const_cast<void*>(o[1].data)), o[1].step, roi, 0.5f,
                                               0.5f, Scale{badScale}...);
                          }});
    if (sizeof...(Scale) > 0) {
      EXPECT_EQ(member.copy(src.data(), src.step(), dst.data(), dst.step(), {5, 3}, 0, 0, Scale{-14}...), ErrBadArg);
      EXPECT_EQ(member.copy(src.data(), src.step(), dst.data(), dst.step(), {5, 3}, 0, 0, Scale{INT32_MIN}...),
                ErrBadArg);
    }
    EXPECT_EQ(dst.bytes(), before);
  });
}

TEST(CopySubpixIntersect, ChecksInOrderAndWritesNothing) {
  forEachMember([]<class S, class D, class... Scale>(const Member<S, D, Scale...>& member) {
    const Image<S> src(5, 3);
    const Image<D> dst(5, 3);
    const auto before = dst.bytes();
    Point min = kUnwritten, max = kUnwritten;
    const int badScale = sizeof...(Scale) > 0 ? -14 : 0;
    const auto point = [](const void* p) { return static_cast<Point*>(const_cast<void*>(p)); };
    const auto invoke = [&](RoiSize srcRoi, const std::vector<Operand>& o, const std::vector<const void*>& p,
                            RoiSize roi) {
      return member.intersect(static_cast<const S*>(o[0].data), o[0].step, srcRoi,
                              static_cast<D*>(const_cast<void*>(o[1].data)), o[1].step, roi, {2, 1}, point(p[0]),
                              point(p[1]), Scale{badScale}...);
    };
    const std::vector<Operand> operands = {{src.data(), src.step(), sizeof(S)}, {dst.data(), dst.step(), sizeof(D)}};
    expectStandardChecks({member.name, operands, {&min, &max}, {5, 3}, [&](const auto& o, const auto& p, RoiSize roi) {
                            return invoke(roi, o, p, roi);
                          }});
    for (const RoiSize empty : {RoiSize{0, 3}, RoiSize{5, 0}, RoiSize{-1, INT32_MIN}})
      EXPECT_EQ(invoke(empty, operands, {&min, &max}, {5, 3}), ErrSize);
    EXPECT_EQ(invoke({6, 3}, operands, {&min, &max}, {5, 3}), ErrStep);
    EXPECT_EQ(invoke({5, 3}, operands, {&min, &max}, {6, 3}), ErrStep);
    if (sizeof...(Scale) > 0) {
      EXPECT_EQ(invoke({5, 3}, operands, {&min, &max}, {5, 3}), ErrBadArg);
    }
    EXPECT_EQ(dst.bytes(), before);
    EXPECT_EQ(min.x, kUnwritten.x);
    EXPECT_EQ(max.y, kUnwritten.y);
  });
}

}  // namespace
}  // namespace zvp::test
