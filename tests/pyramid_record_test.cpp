// Sizes of levels, and the record that holds them.
#include <array>
#include <cmath>

#include "support/pyramid.h"

namespace zvp::test {
namespace {

using Size = std::pair<int, int>;
Size pair(RoiSize size) { return {size.width, size.height}; }

Size down(RoiSize size, float rate) {
  RoiSize result{-1, -1};
  EXPECT_EQ(zvpiGetPyramidDownROI(size, &result, rate), StatusOk);
  return pair(result);
}

using Range = std::array<int, 4>;  // least width, most width, least height, most height

Range up(RoiSize size, float rate) {
  RoiSize least, most;
  EXPECT_EQ(zvpiGetPyramidUpROI(size, &least, &most, rate), StatusOk);
  return {least.width, most.width, least.height, most.height};
}

TEST(PyramidSizes, Examples) {
  EXPECT_EQ(down({1, 1}, 2), Size(1, 1));
  EXPECT_EQ(down({640, 5}, 2), Size(320, 3));
  EXPECT_EQ(down({2, 100}, 1.0001f), Size(1, 99)) << "always fewer";
  EXPECT_EQ(down({100, 11}, 10), Size(10, 2));
  EXPECT_EQ(up({1, 2}, 2), (Range{1, 2, 3, 4}));
  EXPECT_EQ(up({1, 2}, 1.1f), (Range{1, 2, 3, 3})) << "one more at least";
  EXPECT_EQ(up({10, 7}, 1.5f), (Range{14, 15, 10, 10}));
  EXPECT_EQ(up({INT32_MAX, INT32_MAX / 2}, 10), (Range{INT32_MAX, INT32_MAX, INT32_MAX, INT32_MAX}));
  EXPECT_EQ(down({INT32_MAX, 1}, 2), Size((1 << 30) - 32, 1)) << "products in single precision";
}

TEST(PyramidSizes, TheRangesFollowEachOtherWithoutGap) {
  for (float rate = 1.00001f; rate <= 10.0f; rate *= 1.07f) {
    int beyond = 1;
    for (int n = 1; n < 300; ++n) {
      const Range range = up({n, 1}, rate);
      ASSERT_EQ(range[0], beyond) << n << " at rate " << rate;
      ASSERT_GE(range[1], range[0]);
      beyond = range[1] + 1;
      ASSERT_EQ(down({range[0], range[1]}, rate), Size(n, n)) << "rate " << rate;
    }
    for (const int n : {1 << 24, 987654321, INT32_MAX}) {
      const int reduced = down({n, 1}, rate).first;
      const Range range = up({reduced, 1}, rate);
      EXPECT_TRUE(reduced < n && range[0] <= n && range[1] >= n) << n << " at rate " << rate;
    }
  }
}

TEST(PyramidRecord, HoldsTheLevels) {
  constexpr RoiSize kSizes[] = {{8, 5}, {4, 3}, {2, 2}, {1, 1}};
  for (const int level : {1, 2, 3, 4, 100}) {
    const RecordPtr p = makeRecord(level, kSizes[0], 2);
    ASSERT_EQ(p->level, std::min(level, 3));
    EXPECT_EQ(p->state, nullptr);
    for (int i = 0; i <= p->level; ++i) {
      EXPECT_EQ(p->images[i], nullptr);
      EXPECT_EQ(p->steps[i], 0);
      p->images[i] = reinterpret_cast<uint8_t*>(p.get());  // all arrays can be written to their ends
      p->steps[i] = INT32_MIN;
    }
    for (int i = 0; i <= p->level; ++i) {
      EXPECT_EQ(pair(p->roiSizes[i]), pair(kSizes[i]));
      EXPECT_EQ(p->rates[i], std::ldexp(1.0, -i));
    }
  }
  EXPECT_EQ(makeRecord(5, {1, 1}, 2)->level, 0);
}

TEST(PyramidRecord, RatesAreMultipliedInDoublePrecision) {
  const RecordPtr p = makeRecord(3, {100, 100}, 1.3f);
  const double inverse = 1.0 / double{1.3f};
  EXPECT_EQ(p->rates[1], inverse);
  EXPECT_EQ(p->rates[3], inverse * inverse * inverse);
}

TEST(PyramidRecord, EveryRateReachesOnePixel) {
  for (float rate = 1.0000002f; rate <= 10.0f; rate *= 1.13f)
    for (const RoiSize size : {RoiSize{1, 2}, {3, 17}, {640, 480}, {1000, 1}, {65537, 3}}) {
      const RecordPtr p = makeRecord(INT32_MAX, size, rate);
      EXPECT_EQ(pair(p->roiSizes[p->level]), Size(1, 1)) << rate;
      EXPECT_NE(pair(p->roiSizes[p->level - 1]), Size(1, 1)) << rate;
    }
  EXPECT_EQ(makeRecord(INT32_MAX, {300, 2000}, 1.0000002f)->level, 1999) << "one pixel fewer each time";
}

}  // namespace
}  // namespace zvp::test
