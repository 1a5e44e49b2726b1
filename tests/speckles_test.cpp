// Speckle marking against a model that grows regions with a stack of pixels, hand-computed rules, and the checks.
#include <cmath>
#include <functional>
#include <limits>
#include <string>

#include "support/image.h"
#include "zvpcv/segment.h"

namespace zvp::test {
namespace {

template <class T>
using Mark = Status (*)(T*, int, RoiSize, T, int, T, int, uint8_t*);

Mark<uint8_t> marker(uint8_t) { return zvpiMarkSpeckles_8u_C1IR; }
Mark<uint16_t> marker(uint16_t) { return zvpiMarkSpeckles_16u_C1IR; }
Mark<int16_t> marker(int16_t) { return zvpiMarkSpeckles_16s_C1IR; }
Mark<float> marker(float) { return zvpiMarkSpeckles_32f_C1IR; }

template <class F>
void forEachType(F f) {
  f(uint8_t{});
  f(uint16_t{});
  f(int16_t{});
  f(float{});
}

template <class T>
using Pixels = std::vector<std::vector<T>>;

template <class T>
struct Rule {
  T marker;
  int maxSize;
  T maxDifference;
};

template <class T>
bool isClose(T a, T b, T maxDifference) {
  if constexpr (std::is_same_v<T, float>) {
    return std::fabs(a - b) <= maxDifference;
  } else {
    return abs(a - b) <= maxDifference;
  }
}

template <class T>
void plainMark(Pixels<T>& image, Rule<T> rule) {
  const int height = static_cast<int>(image.size()), width = static_cast<int>(image[0].size());
  const Pixels<T> before = image;
  Pixels<uint8_t> seen(image.size(), std::vector<uint8_t>(image[0].size()));
  using Position = std::pair<int, int>;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      if (seen[y][x] || before[y][x] == rule.marker) continue;
      std::vector<Position> region = {{x, y}};
      seen[y][x] = 1;
      for (size_t i = 0; i < region.size(); ++i) {
        const auto [px, py] = region[i];
        for (const auto& [nx, ny] : {Position{px, py - 1}, {px, py + 1}, {px + 1, py}, {px - 1, py}}) {
          if (nx < 0 || ny < 0 || nx >= width || ny >= height || seen[ny][nx]) continue;
          const T n = before[ny][nx];
          if (n == rule.marker || !isClose(n, before[py][px], rule.maxDifference)) continue;
          seen[ny][nx] = 1;
          region.push_back({nx, ny});
        }
      }
      if (static_cast<int>(region.size()) > rule.maxSize) continue;
      for (const auto& [px, py] : region) image[py][px] = rule.marker;
    }
  }
}

template <class T>
int bufferBytes(int width, int height) {
  int bytes = 0;
  constexpr DataType kType = std::is_same_v<T, uint8_t>    ? DataType8u
                             : std::is_same_v<T, uint16_t> ? DataType16u
                             : std::is_same_v<T, int16_t>  ? DataType16s
                                                           : DataType32f;
  EXPECT_EQ(zvpiMarkSpecklesGetBufferSize({width, height}, kType, 1, &bytes), StatusOk);
  EXPECT_EQ(bytes, 13 * width * height);
  return bytes;
}

// Marks a copy between inaccessible pages, rows from the bottom up where the step is negative.
template <class T>
Pixels<T> marked(const Pixels<T>& pixels, Rule<T> rule, Placement placement = {}, int extra = 0, bool upward = false) {
  const int width = static_cast<int>(pixels[0].size()), height = static_cast<int>(pixels.size());
  const Image<T> image(width, height, extra, placement);
  const auto row = [&](int y) { return upward ? height - 1 - y : y; };
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) image.set(row(y), x, pixels[y][x]);
  const GuardedBlock buffer(static_cast<size_t>(bufferBytes<T>(width, height)), placement);
  auto* first = reinterpret_cast<uint8_t*>(image.data()) + (upward ? ptrdiff_t{height - 1} * image.step() : 0);
  EXPECT_EQ(marker(T{})(reinterpret_cast<T*>(first), upward ? -image.step() : image.step(), {width, height},
                        rule.marker, rule.maxSize, rule.maxDifference, 1, buffer.start()),
            StatusOk);
  EXPECT_TRUE(image.onlyRowsWritten());
  Pixels<T> result = pixels;
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) result[y][x] = image.get(row(y), x);
  return result;
}

template <class T>
bool same(const Pixels<T>& a, const Pixels<T>& b) {
  for (size_t y = 0; y < a.size(); ++y)
    if (memcmp(a[y].data(), b[y].data(), a[y].size() * sizeof(T)) != 0) return false;
  return true;
}

// --- Images of all kinds ---------------------------------------------------------------------------------------------

struct Pattern {
  std::string name;
  std::function<int(int x, int y, unsigned random)> value;
};

const std::vector<Pattern> kPatterns = {
    {"noise", [](int, int, unsigned random) { return int(random % 4); }},
    {"sparse", [](int, int, unsigned random) { return random % 6 == 0 ? 1 : 5; }},
    {"smooth", [](int x, int y, unsigned random) { return x / 3 + y / 2 + int(random % 2); }},
    {"checkerboard", [](int x, int y, unsigned) { return 3 + 4 * ((x + y) % 2); }},
    {"comb", [](int x, int y, unsigned) { return y == 0 || x % 2 == 0 ? 9 : 1; }},
    {"comb upside down", [](int x, int y, unsigned) { return y == 6 || x % 2 == 0 ? 9 : 1; }},
    {"teeth", [](int x, int y, unsigned) { return (x / 4 + y) % 5 == 0 || x % 7 == 3 ? 9 : 1; }},
    {"rows", [](int, int y, unsigned) { return 5 * y; }},
    {"marker", [](int, int, unsigned) { return 2; }},
};

template <class T>
Pixels<T> drawn(const Pattern& pattern, int width, int height, unsigned seed) {
  std::mt19937 engine(seed);
  Pixels<T> pixels(static_cast<size_t>(height), std::vector<T>(static_cast<size_t>(width)));
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) pixels[y][x] = static_cast<T>(pattern.value(x, y, static_cast<unsigned>(engine())));
  return pixels;
}

TEST(MarkSpeckles, EqualsThePlainModel) {
  constexpr int kHeight = 7;
  forEachType([]<class T>(T) {
    unsigned seed = 0;
    for (int width : {1, 2, 3, 5, 8, 15, 16, 17, 31, 33, 47, 63, 64, 65, 66, 100, 128, 129, 130}) {
      for (const Pattern& pattern : kPatterns) {
        ++seed;
        const int height = seed % 4 == 0 ? 1 : kHeight;
        const Pixels<T> pixels = drawn<T>(pattern, width, height, seed);
        const Rule<T> rule{T(2), static_cast<int>(seed % 13), T(seed % 3)};
        Pixels<T> expected = pixels;
        plainMark(expected, rule);
        const Placement placement = kPlacements[seed % kPlacements.size()];
        ASSERT_TRUE(same(marked(pixels, rule, placement, static_cast<int>(seed % 5), seed % 2 == 0), expected))
            << pattern.name << ", " << width << "x" << height << ", size " << rule.maxSize << ", type of " << sizeof(T);
      }
    }
  });
}

// Regions that wind through many rows: every order in which runs can be united.
TEST(MarkSpeckles, EqualsThePlainModelOnMazes) {
  for (unsigned seed = 0; seed < 300; ++seed) {
    const Pattern walls{"", [](int x, int y, unsigned random) { return x % 2 + y % 2 + int(random % 3) > 2 ? 0 : 9; }};
    const auto pixels = drawn<uint8_t>(walls, 40 + static_cast<int>(seed % 60), 24, seed);
    const Rule<uint8_t> rule{0, static_cast<int>(seed), 0};
    auto expected = pixels;
    plainMark(expected, rule);
    ASSERT_TRUE(same(marked(pixels, rule), expected)) << seed;
  }
}

template <class T>
void expectExtremesEqualThePlainModel() {
  Values<T> values(3);
  for (int i = 0; i < 50; ++i) {
    Pixels<T> pixels(4, std::vector<T>(70));
    for (auto& row : pixels)
      for (T& v : row) v = values();
    const Rule<T> rule{values(), 2, values()};
    Pixels<T> expected = pixels;
    plainMark(expected, rule);
    ASSERT_TRUE(same(marked(pixels, rule), expected)) << +rule.maxDifference;
  }
}

TEST(MarkSpeckles, ExtremeValuesAndTolerances) {
  forEachType([]<class T>(T) { expectExtremesEqualThePlainModel<T>(); });
}

// --- Hand-computed rules ---------------------------------------------------------------------------------------------

TEST(MarkSpeckles, SizesAndDifferencesUpToTheLimitCount) {
  // 10, 12, 14 are one region of three; 20 is alone, 23 and 25 are two: all but the first at most two pixels.
  EXPECT_EQ(marked<uint8_t>({{10, 12, 14, 99, 20, 23, 25, 99}}, {0, 2, 2}),
            (Pixels<uint8_t>{{10, 12, 14, 0, 0, 0, 0, 0}}));
}

TEST(MarkSpeckles, DiagonalsDoNotConnect) {
  const Pixels<int16_t> pixels = {{7, -1, 7}, {-1, 7, -1}};
  EXPECT_EQ(marked<int16_t>(pixels, {-1, 1, 0}), Pixels<int16_t>(2, {-1, -1, -1}));
}

TEST(MarkSpeckles, NothingIsMarkedBelowSizeOne) {
  const Pixels<uint16_t> pixels = {{1, 2, 3}};
  for (const int size : {0, -1, INT32_MIN}) EXPECT_EQ(marked<uint16_t>(pixels, {9, size, 0}), pixels);
  EXPECT_EQ(marked<uint16_t>(pixels, {9, INT32_MAX, 0}), (Pixels<uint16_t>{{9, 9, 9}}));
}

TEST(MarkSpeckles, SignedDifferencesAreExactAndNegativeTolerancesConnectNothing) {
  EXPECT_EQ(marked<int16_t>({{-32768, 32767}}, {0, 1, 32767}), (Pixels<int16_t>{{0, 0}}));
  EXPECT_EQ(marked<int16_t>({{-16384, 16383}}, {0, 1, 32767}), (Pixels<int16_t>{{-16384, 16383}}));
  EXPECT_EQ(marked<int16_t>({{5, 5, 5}}, {0, 1, -1}), (Pixels<int16_t>{{0, 0, 0}}));
  EXPECT_EQ(marked<float>({{5, 5, 5}}, {0, 1, -0.5f}), (Pixels<float>{{0, 0, 0}}));
}

TEST(MarkSpeckles, FloatsThatAreNoOrdinaryNumbers) {
  constexpr float kInf = std::numeric_limits<float>::infinity(), kNan = std::numeric_limits<float>::quiet_NaN();
  EXPECT_TRUE(same(marked<float>({{-0.0f, 0.0f, 3}}, {0, 1, 1}), {{-0.0f, 0.0f, 0}})) << "-0 equals the marker";
  EXPECT_TRUE(same(marked<float>({{kNan, kNan, 3, 3}}, {0, 1, 1}), {{0, 0, 3, 3}}));
  EXPECT_TRUE(same(marked<float>({{kInf, kInf, 3, 3}}, {0, 1, 1}), {{0, 0, 3, 3}}));
  EXPECT_TRUE(same(marked<float>({{kInf, kInf}}, {kInf, 1, 1}), {{kInf, kInf}}));
  EXPECT_TRUE(same(marked<float>({{4, 8, 8}}, {kNan, 1, 1}), {{kNan, 8, 8}}));
  EXPECT_TRUE(same(marked<float>({{4, 4}}, {0, 1, kNan}), {{0, 0}}));
}

// --- Buffer and checks -----------------------------------------------------------------------------------------------

TEST(MarkSpeckles, ChecksInOrderAndWritesNothing) {
  forEachType([]<class T>(T) {
    const Image<T> image(6, 2);
    const GuardedBlock buffer(13 * 12, {true, 1});
    const auto before = image.bytes(), bufferBefore = buffer.bytes();
    const Mark<T> mark = marker(T{});
    EXPECT_EQ(mark(nullptr, 0, {0, 0}, 1, 5, 1, 0, buffer.start()), ErrNullPtr);
    EXPECT_EQ(mark(image.data(), 0, {0, 0}, 1, 5, 1, 0, nullptr), ErrNullPtr);
    EXPECT_EQ(mark(image.data(), 0, {0, 2}, 1, 5, 1, 0, buffer.start()), ErrSize);
    EXPECT_EQ(mark(image.data(), 0, {6, -1}, 1, 5, 1, 0, buffer.start()), ErrSize);
    for (const int norm : {0, 2, -1, INT32_MAX})
      EXPECT_EQ(mark(image.data(), image.step(), {6, 2}, 1, 5, 1, norm, buffer.start()), -229);
    EXPECT_EQ(image.bytes(), before);
    EXPECT_EQ(buffer.bytes(), bufferBefore);
  });
}

TEST(MarkSpeckles, BufferSizes) {
  int size = 77;
  EXPECT_EQ(zvpiMarkSpecklesGetBufferSize({0, 0}, 0, 3, nullptr), ErrNullPtr);
  EXPECT_EQ(zvpiMarkSpecklesGetBufferSize({0, 1}, 0, 3, &size), ErrSize);
  EXPECT_EQ(zvpiMarkSpecklesGetBufferSize({1, -1}, 0, 3, &size), ErrSize);
  for (const DataType type : {0, 2, 3, 6, 9, 11, 14, -1})
    EXPECT_EQ(zvpiMarkSpecklesGetBufferSize({1, 1}, type, 3, &size), ErrDataType) << type;
  for (const int channels : {0, 2, 3, -1})
    EXPECT_EQ(zvpiMarkSpecklesGetBufferSize({50000, 50000}, DataType16s, channels, &size), ErrNumChannels);
  EXPECT_EQ(zvpiMarkSpecklesGetBufferSize({50000, 50000}, DataType16s, 1, &size), ErrSize);
  EXPECT_EQ(zvpiMarkSpecklesGetBufferSize({INT32_MAX, INT32_MAX}, DataType8u, 1, &size), ErrSize);
  EXPECT_EQ(zvpiMarkSpecklesGetBufferSize({165191050, 1}, DataType8u, 1, &size), ErrSize);
  EXPECT_EQ(size, 77);
  EXPECT_EQ(zvpiMarkSpecklesGetBufferSize({1, 165191049}, DataType8u, 1, &size), StatusOk);
  EXPECT_EQ(size, 2147483637);
}

}  // namespace
}  // namespace zvp::test
