// Rectangular standard deviations against their definition written out position by position.
#include <cmath>

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
  const float area = static_cast<float>(int64_t{r.width} * r.height);
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

float plainResult(double variance) { return std::sqrt(static_cast<float>(variance)); }

int32_t plainResult(double variance, int scaleFactor) {
  if (variance <= 0) return 0;
  const double scaled = std::nearbyint(std::ldexp(std::sqrt(variance), -std::max(scaleFactor, -1500)));
  return scaled >= 2147483647.0 ? INT32_MAX : static_cast<int32_t>(scaled);
}

// What follows the region: the rectangle and, for some members, the scale factor.
template <class S, class Q, class T, class... Factor>
using StdDev = Status (*)(const S*, int, const Q*, int, T*, int, RoiSize, Rect, Factor...);

// Columns of a table that a call asks for beyond the region's width.
int marginOf(Rect r, bool isTilted) { return isTilted ? r.width + r.x + r.y + r.height - 1 : r.x + r.width; }

// Tables large enough for the rectangle at every position; the row length is what the call asks for, or all it reads.
template <class S, class Q, class T, class... Factor>
void expectStdDev(StdDev<S, Q, T, Factor...> f, bool isTilted, bool plausible, Factor... factor) {
  constexpr int kHeight = 3, kWidest = 40;
  unsigned seed = 0;
  for (const Rect r : {Rect{0, 0, 1, 1}, {1, 2, 3, 4}, {3, 0, 5, 2}}) {
    const int columns = isTilted ? std::max(r.x + r.width + r.height, marginOf(r, true)) : marginOf(r, false);
    const int rows = kHeight + r.y + r.height + (isTilted ? r.width : 0);
    const Geometry g = isTilted ? tilted(r) : upright(r);
    for (int width = 1; width <= kWidest; ++width) {
      const Placement placement = somePlacement(width);
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
      const auto call = [=](auto... arguments) { return f(arguments..., r, factor...); };
      ASSERT_EQ(callOnImages(call, {width, kHeight}, src, sqr, dst), StatusOk);
      const auto expected = [&](int i, int j) { return plainResult(plainVariance(src, sqr, g, i, j), factor...); };
      ASSERT_TRUE(matches(dst, expected, true)) << "rectangle " << r.width << "x" << r.height;
    }
  }
}

template <class S, class Q, class T, class... Factor>
void expectMember(const char* name, StdDev<S, Q, T, Factor...> f, bool isTilted, Factor... factor) {
  SCOPED_TRACE(name);
  for (const bool plausible : {true, false}) expectStdDev(f, isTilted, plausible, factor...);
}

TEST(RectStdDev, EqualsTheDefinition) {
  expectMember("32f", zvpiRectStdDev_32f_C1R, false);
  expectMember("32s32f", zvpiRectStdDev_32s32f_C1R, false);
  expectMember("Tilted 32f", zvpiTiltedRectStdDev_32f_C1R, true);
  expectMember("Tilted 32s32f", zvpiTiltedRectStdDev_32s32f_C1R, true);
  for (const int scaleFactor : {0, 3, -5, -31, 40, 2000, -2000, INT32_MAX, INT32_MIN}) {
    expectMember("32s Sfs", zvpiRectStdDev_32s_C1RSfs, false, scaleFactor);
    expectMember("Tilted 32s Sfs", zvpiTiltedRectStdDev_32s_C1RSfs, true, scaleFactor);
  }
}

// Tables of which only the corners take memory, the same one for sums and squares: a mean of a quarter (an eighth).
TEST(RectStdDev, AreasBeyond24And31Bits) {
  if (sizeof(void*) == 4) GTEST_SKIP() << "tables of 8 and 32 GiB";
  constexpr Rect kRect{0, 0, 46341, 46341};  // not a single-precision number
  constexpr int kSide = kRect.width + 1, kScaleFactor = -31;
  for (const bool isTilted : {false, true}) {
    const Image<int32_t> table(isTilted ? 2 * kSide : kSide, isTilted ? 2 * kSide : kSide);
    const Geometry g = isTilted ? tilted(kRect) : upright(kRect);
    table.set(g.d.y, g.d.x, 1 << 29);
    int32_t deviation = 0;
    ASSERT_EQ((isTilted ? zvpiTiltedRectStdDev_32s_C1RSfs : zvpiRectStdDev_32s_C1RSfs)(
                  table.data(), table.step(), table.data(), table.step(), &deviation, 4, {1, 1}, kRect, kScaleFactor),
              StatusOk);
    EXPECT_EQ(deviation, plainResult(plainVariance(table, table, g, 0, 0), kScaleFactor));
  }
}

}  // namespace
}  // namespace zvp::test
