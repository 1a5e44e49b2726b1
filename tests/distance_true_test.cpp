#include <float.h>

#include <algorithm>

#include "support/image.h"
#include "zvpcv/distance.h"

namespace zvp::test {
namespace {

// By comparing each pixel with each zero pixel.
std::vector<float> plainDistances(const Image<uint8_t>& src) {
  struct Place {
    int64_t x, y;
  };
  std::vector<Place> zeros;
  for (int y = 0; y < src.height(); ++y)
    for (int x = 0; x < src.width(); ++x)
      if (src.get(y, x) == 0) zeros.push_back({x, y});
  std::vector<float> distances;
  for (int64_t y = 0; y < src.height(); ++y)
    for (int64_t x = 0; x < src.width(); ++x) {
      int64_t least = INT64_MAX;
      for (const Place& z : zeros) least = std::min(least, (x - z.x) * (x - z.x) + (y - z.y) * (y - z.y));
      distances.push_back(zeros.empty() ? FLT_MAX : static_cast<float>(least));
    }
  return distances;
}

void expectEqualsPlain(const Image<uint8_t>& src, unsigned seed) {
  const RoiSize roi{src.width(), src.height()};
  const Image<float> dst(roi.width, roi.height, static_cast<int>(seed % 2) * 4, kPlacements[seed % kPlacements.size()]);
  int size = 0;
  ASSERT_EQ(zvpiTrueDistanceTransformGetBufferSize_8u32f_C1R(roi, &size), StatusOk);
  const int shift = static_cast<int>(seed % 32);
  const GuardedBlock buffer(static_cast<size_t>(size), {shift % 2 == 0, shift / 2});
  ASSERT_EQ(zvpiTrueDistanceTransform_8u32f_C1R(src.data(), src.step(), dst.data(), dst.step(), roi, buffer.start()),
            StatusOk);
  const auto expected = plainDistances(src);
  ASSERT_TRUE(matches(dst, [&](int y, int x) { return expected[static_cast<size_t>(y * roi.width + x)]; }))
      << "seed " << seed;
}

void expectRandomEqualsPlain(RoiSize roi, unsigned zeroEvery, unsigned seed) {
  const Image<uint8_t> src(roi.width, roi.height, static_cast<int>(seed % 3),
                           kPlacements[seed / 2 % kPlacements.size()]);
  std::mt19937 engine(seed);
  src.fill([&] { return engine() % zeroEvery == 0 ? 0u : 1 + engine() % 255; });
  expectEqualsPlain(src, seed);
}

TEST(TrueDistance, EqualsTheComparisonWithEveryZeroPixel) {
  unsigned seed = 0;
  for (int height = 1; height <= 12; ++height)
    for (int width = 1; width <= 12; ++width)
      for (const unsigned zeroEvery : {2u, 7u, 40u, 1000u})
        ASSERT_NO_FATAL_FAILURE(expectRandomEqualsPlain({width, height}, zeroEvery, ++seed));
  for (int width = 13; width <= 150; ++width)
    for (const unsigned zeroEvery : {3u, 30u, 400u})
      ASSERT_NO_FATAL_FAILURE(expectRandomEqualsPlain({width, 5 + width % 9}, zeroEvery, ++seed));
  for (const unsigned zeroEvery : {20u, 300u, 3000u, 10000u})
    ASSERT_NO_FATAL_FAILURE(expectRandomEqualsPlain({130, 110}, zeroEvery, ++seed));
}

// Zero pixels in the first rows, left of the middle: far intersections, squares beyond 24 and beyond 31 bits.
TEST(TrueDistance, IsCorrectlyRoundedOnLongImages) {
  for (const RoiSize roi : {RoiSize{9001, 2}, {2, 9001}, {60000, 2}, {2, 60000}}) {
    const Image<uint8_t> src(roi.width, roi.height);
    src.fill([] { return 1; });
    src.set(0, 0, 0);
    src.set(1, roi.width / 8, 0);
    ASSERT_NO_FATAL_FAILURE(expectEqualsPlain(src, static_cast<unsigned>(roi.width)));
  }
}

TEST(TrueDistance, SquaresOfSidesAddUpBeyond31Bits) {
  constexpr RoiSize kRoi{46340, 430};  // each square fits 31 bits
  constexpr int64_t kLastColumn = kRoi.width - 1, kLastRow = kRoi.height - 1;
  const Image<uint8_t> src(kRoi.width, kRoi.height);
  const Image<float> dst(kRoi.width, kRoi.height);
  std::vector<uint8_t> buffer(24 * kRoi.width + 56);
  memset(src.data(), 1, static_cast<size_t>(src.step()) * kRoi.height);
  src.set(0, 0, 0);
  src.set(kLastRow, kLastColumn, 0);
  ASSERT_EQ(zvpiTrueDistanceTransform_8u32f_C1R(src.data(), src.step(), dst.data(), dst.step(), kRoi, buffer.data()),
            StatusOk);
  for (int64_t x = 0; x < kRoi.width; ++x)
    ASSERT_EQ(dst.get(0, static_cast<int>(x)),
              static_cast<float>(std::min(x * x, (kLastColumn - x) * (kLastColumn - x) + kLastRow * kLastRow)));
}

TEST(TrueDistance, BufferSize) {
  struct Expected {
    RoiSize roi;
    int bytes;
  };
  int size = -1;
  for (const Expected& e :
       {Expected{{1, 1}, 152}, {{4, 4}, 152}, {{5, 3}, 248}, {{3, 640}, 15416}, {{641, 9}, 15512}}) {
    EXPECT_EQ(zvpiTrueDistanceTransformGetBufferSize_8u32f_C1R(e.roi, &size), StatusOk);
    EXPECT_EQ(size, e.bytes);
  }
}

}  // namespace
}  // namespace zvp::test
