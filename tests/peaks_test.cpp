// Local peaks against the definition written out, and hand-computed rules.
#include <cmath>
#include <limits>

#include "support/image.h"
#include "zvpcv/features.h"

namespace zvp::test {
namespace {

using Peaks = std::vector<std::pair<int, int>>;  // (x, y)

template <class T>
using Find = Status (*)(const T*, int, RoiSize, T, Point*, int, int*, int, int, uint8_t*);

Find<int32_t> finder(int32_t) { return zvpiFindPeaks3x3_32s_C1R; }
Find<float> finder(float) { return zvpiFindPeaks3x3_32f_C1R; }

bool exceeds(int32_t v, int32_t threshold) { return v != INT32_MIN && (v < 0 ? -v : v) > threshold; }
bool exceeds(float v, float threshold) { return std::fabs(v) > threshold; }
bool isClose(int32_t v, int32_t extremum) { return v == extremum; }
bool isClose(float v, float extremum) { return std::fabs(v - extremum) <= std::numeric_limits<float>::min(); }

template <class T>
bool isPeak(const Image<T>& src, int x, int y, T threshold, int norm) {
  const T v = src.get(y, x);
  T extremum = v;
  for (int dy = -1; dy <= 1; ++dy)
    for (int dx = -1; dx <= 1; ++dx) {
      const T n = src.get(y + dy, x + dx);
      if ((norm == 0 || dx == 0 || dy == 0) && (v > 0 ? n > extremum : n < extremum)) extremum = n;
    }
  return exceeds(v, threshold) && isClose(v, extremum);
}

template <class T>
Peaks plainPeaks(const Image<T>& src, T threshold, int norm, int border) {
  Peaks peaks;
  for (int y = border; y < src.height() - border; ++y)
    for (int x = border; x < src.width() - border; ++x)
      if (isPeak(src, x, y, threshold, norm)) peaks.push_back({x, y});
  return peaks;
}

// The peaks that the library finds; room behind pPeak ends at an inaccessible page.
template <class T>
Peaks foundPeaks(const Image<T>& src, T threshold, int norm, int border, int capacity, Placement placement = {}) {
  int bytes = 0, count = -1;
  EXPECT_EQ(zvpiFindPeaks3x3GetBufferSize_32f_C1R(src.width(), &bytes), StatusOk);
  const GuardedBlock buffer(static_cast<size_t>(bytes), placement);
  const Image<Point> points(capacity, 1, 0, placement);
  const Point untouched = points.get(0, capacity - 1);
  EXPECT_EQ(finder(T{})(src.data(), src.step(), {src.width(), src.height()}, threshold, points.data(), capacity, &count,
                        norm, border, buffer.start()),
            StatusOk);
  Peaks peaks;
  for (int i = 0; i < count; ++i) peaks.push_back({points.get(0, i).x, points.get(0, i).y});
  const Point last = points.get(0, capacity - 1);
  EXPECT_TRUE(count == capacity || memcmp(&untouched, &last, sizeof last) == 0) << "entries beyond the count";
  return peaks;
}

template <class T>
void expectEqualsPlain(const Image<T>& src, Placement placement) {
  const int border = src.width() % 5 == 0 && src.width() > 5 ? 2 : 1;
  for (const int norm : {0, 1})
    for (const T threshold : {T(-1), T(0), T(5), T(1000)}) {
      Peaks expected = plainPeaks(src, threshold, norm, border);
      const size_t all = expected.size();
      ASSERT_EQ(foundPeaks(src, threshold, norm, border, static_cast<int>(all) + 3, placement), expected);
      if (all == 0) continue;
      expected.resize((all + 1) / 2);
      ASSERT_EQ(foundPeaks(src, threshold, norm, border, static_cast<int>(expected.size()), placement), expected);
    }
}

template <class T>
void expectEqualsPlainForAllSizes() {
  std::mt19937 engine(2);
  for (const Placement placement : kPlacements)
    for (int width = 2; width <= 40; ++width) {
      const Image<T> src(width, 5, 4 * (width % 2), placement);
      src.fill(Values<T>(static_cast<unsigned>(width)));
      ASSERT_NO_FATAL_FAILURE(expectEqualsPlain(src, placement)) << width;
      src.fill([&] { return static_cast<int>(engine() % 9) - 4; });  // plateaus
      ASSERT_NO_FATAL_FAILURE(expectEqualsPlain(src, placement)) << width;
    }
}

TEST(FindPeaks, EqualsThePlainLoop) {
  expectEqualsPlainForAllSizes<int32_t>();
  expectEqualsPlainForAllSizes<float>();
}

template <class T>
Peaks peaksOf(int width, const std::vector<T>& pixels, T threshold, int norm, int border = 1, int capacity = 99) {
  const Image<T> image(width, static_cast<int>(pixels.size()) / width);
  image.fill([next = pixels.begin()]() mutable { return *next++; });
  return foundPeaks(image, threshold, norm, border, capacity);
}

// Whether a pixel is a peak with this right neighbour in a field of zeros.
template <class T>
bool isFound(T v, T right, T threshold) {
  return !peaksOf<T>(3, {0, 0, 0, 0, v, right, 0, 0, 0}, threshold, 0).empty();
}

TEST(FindPeaks, PlateausReportEveryPixelUntilThePeaksRunOut) {
  const std::vector<float> plateau(20 * 6, 3.0f);
  EXPECT_EQ(peaksOf(20, plateau, -1.0f, 0, 2).size(), 32u) << "16 columns, 2 rows";
  EXPECT_EQ(peaksOf(20, plateau, 2.0f, 0, 1, 3), (Peaks{{1, 1}, {2, 1}, {3, 1}}));
  EXPECT_EQ(peaksOf(20, plateau, 3.0f, 0), Peaks{});
  EXPECT_EQ(peaksOf(20, plateau, -1.0f, 0, 3), Peaks{}) << "a border of half the height leaves nothing";
  EXPECT_EQ(peaksOf(2, plateau, -1.0f, 0), Peaks{});
}

TEST(FindPeaks, FloatsMayMissTheExtremumByTheSmallestNormalNumber) {
  constexpr float kTiny = std::numeric_limits<float>::min();
  EXPECT_TRUE(isFound(2 * kTiny, 3 * kTiny, 0.0f));
  EXPECT_FALSE(isFound(2 * kTiny, 3.5f * kTiny, 0.0f));
  EXPECT_TRUE(isFound(-2 * kTiny, -3 * kTiny, 0.0f));
  EXPECT_FALSE(isFound(1.0f, std::nextafter(1.0f, 2.0f), 0.0f));
}

TEST(FindPeaks, HalfTheSizeIsTakenInSinglePrecision) {
  constexpr RoiSize kHuge{1 << 25, 1 << 25};
  int count;
  uint8_t memory[8];
  EXPECT_EQ(zvpiFindPeaks3x3_32s_C1R(reinterpret_cast<int32_t*>(memory), 0, kHuge, 0, reinterpret_cast<Point*>(memory),
                                     1, &count, 1, (1 << 24) + 1, memory),
            ErrStep);
}

TEST(FindPeaks, BufferSizes) {
  for (const auto query : {zvpiFindPeaks3x3GetBufferSize_32s_C1R, zvpiFindPeaks3x3GetBufferSize_32f_C1R}) {
    int size = 77;
    for (const auto& [width, bytes] :
         {std::pair{1, 160}, {2, 160}, {3, 288}, {6, 288}, {7, 416}, {640, 20640}, {67108858, 2147483552}}) {
      EXPECT_EQ(query(width, &size), StatusOk);
      EXPECT_EQ(size, bytes) << width;
    }
  }
}

}  // namespace
}  // namespace zvp::test
