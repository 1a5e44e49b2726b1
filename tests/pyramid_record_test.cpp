// Sizes of levels, and the record that holds them.
#include <gtest/gtest.h>

#include <array>
#include <cmath>

#include "support/allocator.h"
#include "zvpcv/pyramid.h"

namespace zvp::test {
namespace {

RoiSize down(RoiSize size, float rate) {
  RoiSize result{-1, -1};
  EXPECT_EQ(zvpiGetPyramidDownROI(size, &result, rate), StatusOk);
  return result;
}

using Range = std::array<int, 4>;  // least width, most width, least height, most height

Range up(RoiSize size, float rate) {
  RoiSize least, most;
  EXPECT_EQ(zvpiGetPyramidUpROI(size, &least, &most, rate), StatusOk);
  return {least.width, most.width, least.height, most.height};
}

std::pair<int, int> pair(RoiSize size) { return {size.width, size.height}; }

TEST(PyramidSizes, Examples) {
  EXPECT_EQ(pair(down({1, 1}, 2)), std::pair(1, 1));
  EXPECT_EQ(pair(down({640, 480}, 2)), std::pair(320, 240));
  EXPECT_EQ(pair(down({5, 5}, 2)), std::pair(3, 3));
  EXPECT_EQ(pair(down({2, 100}, 1.0001f)), std::pair(1, 99)) << "always fewer";
  EXPECT_EQ(pair(down({100, 11}, 10)), std::pair(10, 2));
  EXPECT_EQ(up({1, 2}, 2), (Range{1, 2, 3, 4}));
  EXPECT_EQ(up({1, 2}, 1.1f), (Range{1, 2, 3, 3})) << "one more at least";
  EXPECT_EQ(up({10, 7}, 1.5f), (Range{14, 15, 10, 10}));
  EXPECT_EQ(up({INT32_MAX, INT32_MAX / 2}, 10), (Range{INT32_MAX, INT32_MAX, INT32_MAX, INT32_MAX}));
  EXPECT_EQ(pair(down({INT32_MAX, INT32_MAX}, 2)), std::pair((1 << 30) - 32, (1 << 30) - 32))
      << "products in single precision";
}

TEST(PyramidSizes, TheRangesFollowEachOtherWithoutGap) {
  for (float rate = 1.00001f; rate <= 10.0f; rate *= 1.07f) {
    int beyond = 1;
    for (int n = 1; n < 300; ++n) {
      const Range range = up({n, 1}, rate);
      ASSERT_EQ(range[0], beyond) << n << " at rate " << rate;
      ASSERT_GE(range[1], range[0]);
      beyond = range[1] + 1;
      ASSERT_EQ(pair(down({range[0], range[1]}, rate)), std::pair(n, n)) << "rate " << rate;
    }
    for (const int n : {1 << 24, 987654321, INT32_MAX}) {
      const int reduced = down({n, 1}, rate).width;
      const Range range = up({reduced, 1}, rate);
      EXPECT_TRUE(reduced < n && range[0] <= n && range[1] >= n) << n << " at rate " << rate;
    }
  }
}

TEST(PyramidSizes, ChecksInOrder) {
  RoiSize a{-7, -7}, b = a;
  EXPECT_EQ(zvpiGetPyramidDownROI({0, 0}, nullptr, 0), ErrNullPtr);
  EXPECT_EQ(zvpiGetPyramidUpROI({0, 0}, nullptr, &b, 0), ErrNullPtr);
  EXPECT_EQ(zvpiGetPyramidUpROI({0, 0}, &a, nullptr, 0), ErrNullPtr);
  for (const RoiSize bad : {RoiSize{0, 1}, {1, 0}, {-1, 1}}) {
    EXPECT_EQ(zvpiGetPyramidDownROI(bad, &a, 0), ErrSize);
    EXPECT_EQ(zvpiGetPyramidUpROI(bad, &a, &b, 0), ErrSize);
  }
  for (const float rate : {1.0f, 10.0001f, 0.0f, -2.0f, NAN, INFINITY}) {
    EXPECT_EQ(zvpiGetPyramidDownROI({9, 9}, &a, rate), ErrBadArg);
    EXPECT_EQ(zvpiGetPyramidUpROI({9, 9}, &a, &b, rate), ErrBadArg);
  }
  EXPECT_EQ(pair(a), pair(b));
  EXPECT_EQ(pair(a), std::pair(-7, -7));
}

TEST(PyramidRecord, HoldsTheLevels) {
  for (const int level : {1, 2, 3, 4, 100}) {
    Pyramid* p = nullptr;
    ASSERT_EQ(zvpiPyramidInitAlloc(&p, level, {8, 5}, 2), StatusOk);
    ASSERT_EQ(p->level, std::min(level, 3)) << "8, 4, 2, 1";
    const RoiSize sizes[] = {{8, 5}, {4, 3}, {2, 2}, {1, 1}};
    for (int i = 0; i <= p->level; ++i) {
      EXPECT_EQ(pair(p->roiSizes[i]), pair(sizes[i]));
      EXPECT_EQ(p->rates[i], std::ldexp(1.0, -i));
      EXPECT_EQ(p->images[i], nullptr);
      EXPECT_EQ(p->steps[i], 0);
      p->images[i] = reinterpret_cast<uint8_t*>(p);  // all arrays can be written to their ends
      p->steps[i] = INT32_MIN;
    }
    EXPECT_EQ(p->state, nullptr);
    EXPECT_EQ(pair(p->roiSizes[p->level]), pair(sizes[p->level]));
    EXPECT_EQ(p->rates[p->level], std::ldexp(1.0, -p->level));
    EXPECT_EQ(zvpiPyramidFree(p), StatusOk);
  }
  EXPECT_EQ(zvpiPyramidFree(nullptr), ErrNullPtr);
  EXPECT_EQ(liveAllocations(), 0);
}

TEST(PyramidRecord, RatesAreMultipliedInDoublePrecision) {
  Pyramid* p = nullptr;
  ASSERT_EQ(zvpiPyramidInitAlloc(&p, 3, {100, 100}, 1.3f), StatusOk);
  const double inverse = 1.0 / double{1.3f};
  EXPECT_EQ(p->rates[1], inverse);
  EXPECT_EQ(p->rates[3], inverse * inverse * inverse);
  EXPECT_EQ(zvpiPyramidFree(p), StatusOk);
}

TEST(PyramidRecord, OnePixelAndLongPyramids) {
  Pyramid* p = nullptr;
  ASSERT_EQ(zvpiPyramidInitAlloc(&p, 5, {1, 1}, 2), StatusOk);
  EXPECT_EQ(p->level, 0);
  p->steps[0] = 7;
  EXPECT_EQ(p->rates[0], 1.0);
  EXPECT_EQ(zvpiPyramidFree(p), StatusOk);
  ASSERT_EQ(zvpiPyramidInitAlloc(&p, INT32_MAX, {300, 2000}, 1.0000002f), StatusOk);
  EXPECT_EQ(p->level, 1999) << "one pixel fewer each time";
  EXPECT_EQ(pair(p->roiSizes[1998]), std::pair(1, 2));
  EXPECT_EQ(zvpiPyramidFree(p), StatusOk);
}

TEST(PyramidRecord, EveryRateReachesOnePixel) {
  for (float rate = 1.0000002f; rate <= 10.0f; rate *= 1.13f)
    for (const RoiSize size : {RoiSize{1, 2}, {3, 17}, {640, 480}, {1000, 1}, {65537, 3}}) {
      Pyramid* p = nullptr;
      ASSERT_EQ(zvpiPyramidInitAlloc(&p, INT32_MAX, size, rate), StatusOk);
      EXPECT_EQ(pair(p->roiSizes[p->level]), std::pair(1, 1)) << rate;
      EXPECT_EQ(zvpiPyramidFree(p), StatusOk);
    }
}

TEST(PyramidRecord, ChecksInOrderAndReleasesAll) {
  auto* const untouched = reinterpret_cast<Pyramid*>(&failAllocation);
  Pyramid* p = untouched;
  EXPECT_EQ(zvpiPyramidInitAlloc(nullptr, 0, {0, 0}, 0), ErrNullPtr);
  EXPECT_EQ(zvpiPyramidInitAlloc(&p, 0, {0, 1}, 0), ErrSize);
  EXPECT_EQ(zvpiPyramidInitAlloc(&p, 0, {1, 0}, 0), ErrSize);
  for (const float rate : {1.0f, 10.1f, NAN}) EXPECT_EQ(zvpiPyramidInitAlloc(&p, 1, {9, 9}, rate), ErrBadArg);
  EXPECT_EQ(zvpiPyramidInitAlloc(&p, 0, {9, 9}, 2), ErrBadArg);
  EXPECT_EQ(zvpiPyramidInitAlloc(&p, 1, {INT32_MAX, 1}, 2), ErrNoMemory) << "the list of sizes is too long";
  for (const int site : {1, 2}) {
    failAllocation(site);
    EXPECT_EQ(zvpiPyramidInitAlloc(&p, 3, {9, 9}, 2), ErrNoMemory);
    EXPECT_EQ(liveAllocations(), 0);
  }
  failAllocation(0);
  EXPECT_EQ(p, untouched);
}

}  // namespace
}  // namespace zvp::test
