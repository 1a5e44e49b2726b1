// Local peaks against the definition written out, hand-computed rules, and the checks.
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
  for (int dy = -1; dy <= 1; ++dy) {
    for (int dx = -1; dx <= 1; ++dx) {
      if (norm == 1 && dx != 0 && dy != 0) continue;
      const T n = src.get(y + dy, x + dx);
      if (v > 0 ? n > extremum : n < extremum) extremum = n;
    }
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
  const auto untouched = points.get(0, capacity - 1);
  EXPECT_EQ(finder(T{})(src.data(), src.step(), {src.width(), src.height()}, threshold, points.data(), capacity, &count,
                        norm, border, buffer.start()),
            StatusOk);
  Peaks peaks;
  for (int i = 0; i < count; ++i) peaks.push_back({points.get(0, i).x, points.get(0, i).y});
  if (count < capacity) {
    EXPECT_EQ(memcmp(&untouched, points.data() + capacity - 1, sizeof untouched), 0) << "entries beyond the count";
  }
  return peaks;
}

template <class T>
void expectEqualsPlain(const Image<T>& src, Placement placement) {
  const int border = src.width() % 5 == 0 && src.width() > 5 ? 2 : 1;
  for (const int norm : {0, 1}) {
    for (const T threshold : {T(-1), T(0), T(5), T(1000)}) {
      const Peaks expected = plainPeaks(src, threshold, norm, border);
      const int all = static_cast<int>(expected.size());
      ASSERT_EQ(foundPeaks(src, threshold, norm, border, all + 3, placement), expected) << src.width();
      if (all == 0) continue;
      const int few = (all + 1) / 2;
      ASSERT_EQ(foundPeaks(src, threshold, norm, border, few, placement),
                Peaks(expected.begin(), expected.begin() + few));
    }
  }
}

template <class T>
void expectEqualsPlainForAllSizes() {
  Values<T> extremes(1);
  std::mt19937 engine(2);
  for (const Placement placement : kPlacements) {
    for (int width = 2; width <= 40; ++width) {
      const Image<T> src(width, 5, 4 * (width % 2), placement);
      src.fill(extremes);
      ASSERT_NO_FATAL_FAILURE(expectEqualsPlain(src, placement));
      src.fill([&] { return static_cast<T>(static_cast<int>(engine() % 9) - 4); });  // plateaus
      ASSERT_NO_FATAL_FAILURE(expectEqualsPlain(src, placement));
    }
  }
}

TEST(FindPeaks, EqualsThePlainLoop) {
  expectEqualsPlainForAllSizes<int32_t>();
  expectEqualsPlainForAllSizes<float>();
}

template <class T>
using Pixels = std::vector<std::vector<T>>;

template <class T>
Peaks peaksOf(const Pixels<T>& rows, T threshold, int norm, int capacity = 9) {
  const Image<T> image(static_cast<int>(rows[0].size()), static_cast<int>(rows.size()));
  for (int y = 0; y < image.height(); ++y)
    for (int x = 0; x < image.width(); ++x) image.set(y, x, rows[static_cast<size_t>(y)][static_cast<size_t>(x)]);
  return foundPeaks(image, threshold, norm, 1, capacity);
}

// One pixel and its right neighbour in a field of zeros.
template <class T>
Pixels<T> field(T v, T right = 0) {
  return {{0, 0, 0}, {0, v, right}, {0, 0, 0}};
}

constexpr float kInf = std::numeric_limits<float>::infinity(), kTiny = std::numeric_limits<float>::min();

TEST(FindPeaks, MaximaAndMinimaAndTheNeighbourhood) {
  const Pixels<int32_t> src = {{0, 0, 9, 0, 0, 0}, {0, 8, 0, 0, -5, 0}, {0, 0, 0, 0, 0, 0}};
  EXPECT_EQ(peaksOf(src, 4, 0), (Peaks{{4, 1}}));          // 9 is a corner neighbour of 8
  EXPECT_EQ(peaksOf(src, 4, 1), (Peaks{{1, 1}, {4, 1}}));  // not of its cross
  EXPECT_EQ(peaksOf(src, 5, 1), (Peaks{{1, 1}}));          // strictly greater
}

TEST(FindPeaks, ZeroIsTestedAgainstTheMinimum) {
  EXPECT_EQ(peaksOf(field(0, 7), -1, 0), (Peaks{{1, 1}}));
  EXPECT_EQ(peaksOf(field(0, 7), 0, 0), Peaks{});
  EXPECT_EQ(peaksOf(field(0, -7), -1, 0), Peaks{});
}

TEST(FindPeaks, PlateausReportEveryPixelUntilThePeaksRunOut) {
  const Image<float> src(20, 6);
  src.fill([] { return 3.0f; });
  EXPECT_EQ(foundPeaks(src, -1.0f, 0, 2, 99).size(), 32u);  // 16 columns, 2 rows
  EXPECT_EQ(foundPeaks(src, 2.0f, 0, 1, 3), (Peaks{{1, 1}, {2, 1}, {3, 1}}));
  EXPECT_EQ(foundPeaks(src, 3.0f, 0, 1, 3), Peaks{});
}

TEST(FindPeaks, TheMostNegativeIntegerIsNeverAPeak) {
  for (const int32_t threshold : {INT32_MIN, -1, 0, INT32_MAX})
    EXPECT_EQ(peaksOf(field(INT32_MIN), threshold, 0), Peaks{}) << threshold;
  EXPECT_EQ(peaksOf(field(INT32_MIN + 1), INT32_MAX - 1, 0), (Peaks{{1, 1}}));
}

TEST(FindPeaks, FloatsMayMissTheExtremumByTheSmallestNormalNumber) {
  EXPECT_EQ(peaksOf(field(2 * kTiny, 3 * kTiny), 0.0f, 0), (Peaks{{1, 1}}));
  EXPECT_EQ(peaksOf(field(2 * kTiny, 3.5f * kTiny), 0.0f, 0), Peaks{});
  EXPECT_EQ(peaksOf(field(-2 * kTiny, -3 * kTiny), 0.0f, 0), (Peaks{{1, 1}}));
  EXPECT_EQ(peaksOf(field(1.0f, std::nextafter(1.0f, 2.0f)), 0.0f, 0), Peaks{});
}

TEST(FindPeaks, InfinitePixelsAndNansAreNever) {
  constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
  for (const float v : {kInf, -kInf, kNan}) EXPECT_EQ(peaksOf(field(v), -1.0f, 0), Peaks{}) << v;
  for (const float right : {kNan, -kInf}) EXPECT_EQ(peaksOf(field(2.0f, right), 1.0f, 0), (Peaks{{1, 1}})) << right;
  EXPECT_EQ(peaksOf(field(2.0f, kInf), 1.0f, 0), Peaks{});
}

TEST(FindPeaks, ABorderOfHalfTheHeightLeavesNothing) {
  const Image<float> src(20, 6);
  src.fill([] { return 3.0f; });
  EXPECT_EQ(foundPeaks(src, -1.0f, 0, 3, 9), Peaks{});
  const Image<float> narrow(2, 6);
  narrow.fill([] { return 3.0f; });
  EXPECT_EQ(foundPeaks(narrow, -1.0f, 0, 1, 9), Peaks{});
}

// Every fault is planted together with all faults that later checks find.
template <class T>
void expectChecks() {
  constexpr int kWidth = 6, kHeight = 4;
  const Image<T> src(kWidth, kHeight);
  const Image<Point> points(4, 1);
  const GuardedBlock buffer(1000, {});
  src.fill([] { return 1; });
  const auto pointsBefore = points.bytes(), bufferBefore = buffer.bytes();
  int count = 77;
  const auto call = [&](RoiSize roi, int step, int capacity, int border, int norm) {
    return finder(T{})(src.data(), step, roi, T(0), points.data(), capacity, &count, norm, border, buffer.start());
  };
  const Find<T> f = finder(T{});
  EXPECT_EQ(f(nullptr, 0, {0, 0}, 0, points.data(), 0, &count, 2, 0, buffer.start()), ErrNullPtr);
  EXPECT_EQ(f(src.data(), 0, {0, 0}, 0, nullptr, 0, &count, 2, 0, buffer.start()), ErrNullPtr);
  EXPECT_EQ(f(src.data(), 0, {0, 0}, 0, points.data(), 0, nullptr, 2, 0, buffer.start()), ErrNullPtr);
  EXPECT_EQ(f(src.data(), 0, {0, 0}, 0, points.data(), 0, &count, 2, 0, nullptr), ErrNullPtr);
  constexpr RoiSize kRoi{kWidth, kHeight};
  EXPECT_EQ(call({0, kHeight}, 0, 4, 1, 2), ErrSize);
  EXPECT_EQ(call({kWidth, -1}, 0, 4, 1, 2), ErrSize);
  EXPECT_EQ(call(kRoi, 0, 0, 1, 2), ErrSize);
  EXPECT_EQ(call(kRoi, 0, 4, 0, 2), ErrSize);
  EXPECT_EQ(call(kRoi, 0, 4, 3, 2), ErrSize);          // more than half the height
  EXPECT_EQ(call({3, kHeight}, 0, 4, 2, 2), ErrSize);  // more than half the width
  EXPECT_EQ(call({kWidth, 1}, 0, 4, 1, 2), ErrSize);
  EXPECT_EQ(call(kRoi, 4 * kWidth - 1, 4, 1, 2), ErrStep);
  EXPECT_EQ(call(kRoi, -4 * kWidth, 4, 1, 2), ErrStep);
  EXPECT_EQ(call({INT32_MAX, kHeight}, INT32_MAX, 4, 1, 2), ErrStep);
  // 2^24 + 1 is 2^24 in single precision: not more than half.
  EXPECT_EQ(call({1 << 25, 1 << 25}, 4, 4, (1 << 24) + 1, 2), ErrStep);
  EXPECT_EQ(call(kRoi, 4 * kWidth + 3, 4, 1, 2), ErrStepNotMultiple);
  EXPECT_EQ(call(kRoi, 4 * kWidth, 4, 1, 2), ErrBadArg);
  EXPECT_EQ(call(kRoi, 4 * kWidth, 4, 1, -1), ErrBadArg);
  EXPECT_EQ(count, 77);
  EXPECT_EQ(points.bytes(), pointsBefore);
  EXPECT_EQ(buffer.bytes(), bufferBefore);
  EXPECT_EQ(call(kRoi, 4 * kWidth, 4, 2, 1), StatusOk);  // half the height
  EXPECT_EQ(count, 0);
}

TEST(FindPeaks, ChecksInOrderAndWritesNothing) {
  expectChecks<int32_t>();
  expectChecks<float>();
}

TEST(FindPeaks, BufferSizes) {
  for (const auto query : {zvpiFindPeaks3x3GetBufferSize_32s_C1R, zvpiFindPeaks3x3GetBufferSize_32f_C1R}) {
    int size = 77;
    EXPECT_EQ(query(0, nullptr), ErrNullPtr);
    EXPECT_EQ(query(0, &size), ErrSize);
    EXPECT_EQ(query(INT32_MAX, &size), ErrSize);
    EXPECT_EQ(query(67108859, &size), ErrSize);
    EXPECT_EQ(size, 77);
    const std::pair<int, int> expected[] = {
        {1, 160}, {2, 160}, {3, 288}, {6, 288}, {7, 416}, {640, 20640}, {67108858, 2147483552}};
    for (const auto& [width, bytes] : expected) {
      EXPECT_EQ(query(width, &size), StatusOk);
      EXPECT_EQ(size, bytes) << width;
    }
  }
}

}  // namespace
}  // namespace zvp::test
