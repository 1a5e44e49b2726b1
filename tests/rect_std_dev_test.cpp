// Rectangular standard deviations against their definition written out position by position.
#include <cmath>

#include "support/checks.h"
#include "support/image.h"
#include "zvpcv/integral.h"

namespace zvp::test {
namespace {

// Corners (column, row) of the rectangle sum (a - b) + (d - e), and the area's reciprocal.
struct Geometry {
  Point a, b, d, e;
  double inverse;
};

Geometry upright(Rect r) {
  const float area = static_cast<float>(r.width * r.height);
  const int x = r.x, y = r.y, right = x + r.width, bottom = y + r.height;
  return {{x, y}, {right, y}, {right, bottom}, {x, bottom}, 1.0 / static_cast<double>(area)};
}

Geometry tilted(Rect r) {
  const int x = r.x, y = r.y, w = r.width, h = r.height;
  return {{x + h, y}, {x, y + h}, {x + w, y + w + h}, {x + w + h, y + w}, 1.0 / (2.0 * w * h)};
}

template <class S>
double bracket(const Image<S>& t, const Geometry& g, int i, int j) {
  const auto at = [&](Point p) { return t.get(i + p.y, j + p.x); };
  if constexpr (std::is_same_v<S, int32_t>) {
    return static_cast<int32_t>(static_cast<uint32_t>(at(g.a)) - static_cast<uint32_t>(at(g.b)) +
                                (static_cast<uint32_t>(at(g.d)) - static_cast<uint32_t>(at(g.e))));
  } else {
    const S left = at(g.a) - at(g.b), right = at(g.d) - at(g.e);
    const S sum = left + right;
    return sum;
  }
}

template <class S, class Q>
double plainVariance(const Image<S>& src, const Image<Q>& sqr, const Geometry& g, int i, int j) {
  const double mean = bracket(src, g, i, j) * g.inverse, meanSq = bracket(sqr, g, i, j) * g.inverse;
  const double square = mean * mean;
  return meanSq - square;
}

float floatResult(double variance) { return std::sqrt(static_cast<float>(variance)); }

int32_t scaledResult(double variance, int scaleFactor) {
  const double root = std::sqrt(variance < 0 ? 0.0 : variance);
  const double scaled = std::nearbyint(std::ldexp(root, -scaleFactor));
  return scaled >= 2147483647.0 ? INT32_MAX : static_cast<int32_t>(scaled);
}

constexpr int kHeight = 3, kWidest = 40;
const Rect kRects[] = {{0, 0, 1, 1}, {1, 2, 3, 4}, {3, 0, 5, 2}};

// Tables large enough for the rectangle at every position; the row length is what the call asks for, or all it reads.
template <class S, class Q, class T, class Function, class Result>
void expectStdDev(Function function, bool isTilted, Result result, bool plausible) {
  unsigned seed = 0;
  for (const Rect r : kRects) {
    const int columns =
        isTilted ? std::max(r.x + r.width + r.height, r.width + r.x + r.y + r.height - 1) : r.x + r.width;
    const int rows = kHeight + r.y + r.height + (isTilted ? r.width : 0);
    const Geometry g = isTilted ? tilted(r) : upright(r);
    for (int width = 1; width <= kWidest; ++width) {
      const Placement placement = kPlacements[static_cast<size_t>(width) % kPlacements.size()];
      const Image<S> src(width + columns, rows, 4 * (width % 2) * int{sizeof(S)}, placement);
      const Image<Q> sqr(width + columns, rows, width % 3 * int{sizeof(Q)}, placement);
      const Image<T> dst(width, kHeight, 4, placement);
      int step = 0;
      if (plausible) {  // squares large enough that most variances are positive
        src.fill([&] { return ++step % 11; });
        sqr.fill([&] { return ++step, step * 37 % 1009 * step % 100003; });
      } else {
        src.fill(Values<S>(++seed));
        sqr.fill(Values<Q>(++seed));
      }
      ASSERT_EQ(function(src.data(), src.step(), sqr.data(), sqr.step(), dst.data(), dst.step(), {width, kHeight}, r),
                StatusOk);
      const auto expected = [&](int i, int j) { return result(plainVariance(src, sqr, g, i, j)); };
      ASSERT_TRUE(matches(dst, expected, true)) << "rectangle " << r.width << "x" << r.height;
    }
  }
}

TEST(RectStdDev, EqualsTheDefinition) {
  for (const bool plausible : {true, false}) {
    expectStdDev<float, double, float>(zvpiRectStdDev_32f_C1R, false, floatResult, plausible);
    expectStdDev<int32_t, double, float>(zvpiRectStdDev_32s32f_C1R, false, floatResult, plausible);
    expectStdDev<float, double, float>(zvpiTiltedRectStdDev_32f_C1R, true, floatResult, plausible);
    expectStdDev<int32_t, double, float>(zvpiTiltedRectStdDev_32s32f_C1R, true, floatResult, plausible);
  }
}

TEST(RectStdDev, ScaledIntegerEqualsTheDefinition) {
  for (const int scaleFactor : {0, 3, -5, -31, 40, 2000, -2000, INT32_MAX, INT32_MIN}) {
    const auto result = [=](double variance) {
      const int factor = scaleFactor < -1500 ? -1500 : scaleFactor;
      return variance <= 0 ? 0 : scaledResult(variance, factor);
    };
    for (const bool isTilted : {false, true}) {
      const auto call = [=](auto... arguments) {
        return (isTilted ? zvpiTiltedRectStdDev_32s_C1RSfs : zvpiRectStdDev_32s_C1RSfs)(arguments..., scaleFactor);
      };
      const auto function = [=](const int32_t* src, int srcStep, const int32_t* sqr, int sqrStep, int32_t* dst,
                                int dstStep, RoiSize roi,
                                Rect r) { return call(src, srcStep, sqr, sqrStep, dst, dstStep, roi, r); };
      expectStdDev<int32_t, int32_t, int32_t>(function, isTilted, result, true);
      expectStdDev<int32_t, int32_t, int32_t>(function, isTilted, result, false);
    }
  }
}

TEST(RectStdDev, HandComputed) {
  // Pixels 1 and 4: mean 2.5, mean square 8.5, variance 2.25, deviation 1.5.
  const int32_t sums[] = {0, 0, 0, 0, 1, 5}, squares[] = {0, 0, 0, 0, 1, 17};
  const double doubles[] = {0, 0, 0, 0, 1, 17};
  float deviation;
  ASSERT_EQ(zvpiRectStdDev_32s32f_C1R(sums, 12, doubles, 24, &deviation, 4, {1, 1}, {0, 0, 2, 1}), StatusOk);
  EXPECT_EQ(deviation, 1.5f);
  int32_t scaled;
  for (const auto& [scaleFactor, expected] : {std::pair{0, 2}, {-1, 3}, {-4, 24}, {1, 1}, {-31, INT32_MAX}}) {
    ASSERT_EQ(zvpiRectStdDev_32s_C1RSfs(sums, 12, squares, 12, &scaled, 4, {1, 1}, {0, 0, 2, 1}, scaleFactor),
              StatusOk);
    EXPECT_EQ(scaled, expected) << "1.5 rounds to the even 2";
  }
  // A square table that is too small gives a negative variance: NaN as it is, 0 in integers.
  const double noSquares[6] = {};
  const int32_t noSquaresInt[6] = {};
  ASSERT_EQ(zvpiRectStdDev_32s32f_C1R(sums, 12, noSquares, 24, &deviation, 4, {1, 1}, {0, 0, 2, 1}), StatusOk);
  EXPECT_TRUE(std::isnan(deviation));
  ASSERT_EQ(zvpiRectStdDev_32s_C1RSfs(sums, 12, noSquaresInt, 12, &scaled, 4, {1, 1}, {0, 0, 2, 1}, 0), StatusOk);
  EXPECT_EQ(scaled, 0);
}

template <class S, class Q, class T, class Function>
void expectStdDevChecks(const char* name, Function function, bool isTilted) {
  constexpr Rect kRect = {1, 2, 3, 4};
  constexpr int kWidth = 5;
  const int columns = isTilted ? kWidth + 3 + 1 + 2 + 4 - 1 : kWidth + 1 + 3;
  const Image<S> src(columns, 12);
  const Image<Q> sqr(columns, 12);
  const Image<T> dst(kWidth, 2);
  const auto before = dst.bytes();
  const auto with = [=](const auto& o, RoiSize roi, Rect rect) {
    return function(static_cast<const S*>(o[0].data), o[0].step, static_cast<const Q*>(o[1].data), o[1].step,
                    static_cast<T*>(const_cast<void*>(o[2].data)), o[2].step, roi, rect);
  };
  const std::vector<Operand> operands = {
      {src.data(), src.step(), sizeof(S)}, {sqr.data(), sqr.step(), sizeof(Q)}, {dst.data(), dst.step(), sizeof(T)}};
  expectStandardChecks(
      {name, operands, {}, {kWidth, 2}, [&](const auto& o, const auto&, RoiSize roi) { return with(o, roi, kRect); }});
  for (const Rect bad : {Rect{-1, 0, 1, 1}, {0, -1, 1, 1}, {0, 0, 0, 1}, {0, 0, 1, 0}, {0, 0, -9, -9}}) {
    EXPECT_EQ(with(operands, {kWidth, 2}, bad), ErrSize) << name;
    std::vector<Operand> oddStep = operands;
    oddStep[2].step += 1;
    EXPECT_EQ(with(oddStep, {kWidth, 2}, bad), ErrStepNotMultiple) << name << ": the rectangle comes last";
  }
  EXPECT_EQ(with(operands, {1, 1}, {INT32_MAX, 0, INT32_MAX, 1}), ErrStep) << name;
  EXPECT_EQ(dst.bytes(), before);
}

TEST(RectStdDev, ChecksInOrderAndWritesNothing) {
  expectStdDevChecks<float, double, float>("32f", zvpiRectStdDev_32f_C1R, false);
  expectStdDevChecks<int32_t, double, float>("32s32f", zvpiRectStdDev_32s32f_C1R, false);
  expectStdDevChecks<float, double, float>("Tilted 32f", zvpiTiltedRectStdDev_32f_C1R, true);
  expectStdDevChecks<int32_t, double, float>("Tilted 32s32f", zvpiTiltedRectStdDev_32s32f_C1R, true);
  for (const bool isTilted : {false, true}) {
    const auto function = [=](const int32_t* src, int srcStep, const int32_t* sqr, int sqrStep, int32_t* dst,
                              int dstStep, RoiSize roi, Rect r) {
      const auto f = isTilted ? zvpiTiltedRectStdDev_32s_C1RSfs : zvpiRectStdDev_32s_C1RSfs;
      return f(src, srcStep, sqr, sqrStep, dst, dstStep, roi, r, 0);
    };
    expectStdDevChecks<int32_t, int32_t, int32_t>("32s Sfs", function, isTilted);
  }
}

}  // namespace
}  // namespace zvp::test
