// Speckle marking against a model that grows regions with a stack of pixels, and hand-computed rules.
#include <algorithm>
#include <cmath>
#include <functional>
#include <tuple>

#include "support/image.h"
#include "zvpcv/segment.h"

namespace zvp::test {
namespace {

template <class T>
struct Member {
  Status (*mark)(T*, int, RoiSize, T, int, T, int, uint8_t*);
  DataType type;
};
constexpr std::tuple kMembers{
    Member<uint8_t>{zvpiMarkSpeckles_8u_C1IR, DataType8u}, Member<uint16_t>{zvpiMarkSpeckles_16u_C1IR, DataType16u},
    Member<int16_t>{zvpiMarkSpeckles_16s_C1IR, DataType16s}, Member<float>{zvpiMarkSpeckles_32f_C1IR, DataType32f}};
template <class T>
constexpr Member<T> kMember = std::get<Member<T>>(kMembers);

template <class F>
void forEachMember(F f) {
  std::apply([&](const auto&... members) { (f(members), ...); }, kMembers);
}

template <class T>
using Pixels = std::vector<std::vector<T>>;

template <class T>
struct Rule {
  T marker;
  int maxSize;
  T maxDifference;

  bool joins(T a, T b) const {
    using Wide = std::conditional_t<std::is_same_v<T, float>, float, int>;
    return b != marker && std::abs(Wide(a) - Wide(b)) <= maxDifference;
  }
};

template <class T>
Pixels<T> plainMarked(const Pixels<T>& before, Rule<T> rule) {
  const int height = static_cast<int>(before.size()), width = static_cast<int>(before[0].size());
  Pixels<T> result = before;
  Pixels<uint8_t> seen(before.size(), std::vector<uint8_t>(before[0].size()));
  using Position = std::pair<int, int>;
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) {
      if (seen[y][x] || before[y][x] == rule.marker) continue;
      std::vector<Position> region = {{x, y}};
      seen[y][x] = 1;
      for (size_t i = 0; i < region.size(); ++i) {
        const auto [px, py] = region[i];
        for (const auto& [nx, ny] : {Position{px, py - 1}, {px, py + 1}, {px + 1, py}, {px - 1, py}}) {
          if (nx < 0 || ny < 0 || nx >= width || ny >= height || seen[ny][nx]) continue;
          if (!rule.joins(before[py][px], before[ny][nx])) continue;
          seen[ny][nx] = 1;
          region.push_back({nx, ny});
        }
      }
      if (static_cast<int>(region.size()) > rule.maxSize) continue;
      for (const auto& [px, py] : region) result[py][px] = rule.marker;
    }
  return result;
}

// Marks pixels between inaccessible pages, rows from the bottom up where the step is negative.
template <class T>
::testing::AssertionResult marks(const Pixels<T>& pixels, Rule<T> rule, const Pixels<T>& expected,
                                 Placement placement = {}, int extra = 0, bool upward = false) {
  const int width = static_cast<int>(pixels[0].size()), height = static_cast<int>(pixels.size());
  const Image<T> image(width, height, extra, placement);
  const auto row = [&](int y) { return upward ? height - 1 - y : y; };
  image.draw([&](int y, int x) { return pixels[row(y)][x]; });
  int bytes = 0;
  EXPECT_EQ(zvpiMarkSpecklesGetBufferSize({width, height}, kMember<T>.type, 1, &bytes), StatusOk);
  EXPECT_EQ(bytes, 13 * width * height);
  const GuardedBlock buffer(static_cast<size_t>(bytes), placement);
  EXPECT_EQ(kMember<T>.mark(image.data(row(0)), upward ? -image.step() : image.step(), {width, height}, rule.marker,
                            rule.maxSize, rule.maxDifference, 1, buffer.start()),
            StatusOk);
  return matches(image, [&](int y, int x) { return expected[row(y)][x]; });
}

// --- Images of all kinds ---------------------------------------------------------------------------------------------

using Pattern = int (*)(int x, int y, unsigned random);

constexpr Pattern kPatterns[] = {
    [](int, int, unsigned random) { return int(random % 4); },
    [](int, int, unsigned random) { return random % 6 == 0 ? 1 : 5; },
    [](int x, int y, unsigned random) { return x / 3 + y / 2 + int(random % 2); },
    [](int x, int y, unsigned) { return 3 + 4 * ((x + y) % 2); },                       // checkerboard
    [](int x, int y, unsigned) { return y == 0 || x % 2 == 0 ? 9 : 1; },                // comb
    [](int x, int y, unsigned) { return y == 6 || x % 2 == 0 ? 9 : 1; },                // comb upside down
    [](int x, int y, unsigned) { return (x / 4 + y) % 5 == 0 || x % 7 == 3 ? 9 : 1; },  // teeth
    [](int, int y, unsigned) { return 5 * y; },
    [](int, int, unsigned) { return 2; },  // the marker
};

template <class T>
Pixels<T> drawn(Pattern pattern, int width, int height, unsigned seed) {
  std::mt19937 engine(seed);
  Pixels<T> pixels(static_cast<size_t>(height), std::vector<T>(static_cast<size_t>(width)));
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) pixels[y][x] = static_cast<T>(pattern(x, y, static_cast<unsigned>(engine())));
  return pixels;
}

TEST(MarkSpeckles, EqualsThePlainModel) {
  forEachMember([]<class T>(const Member<T>&) {
    unsigned seed = 0;
    for (int width : {1, 2, 3, 5, 8, 15, 16, 17, 31, 33, 47, 63, 64, 65, 66, 100, 128, 129, 130})
      for (const Pattern pattern : kPatterns) {
        const int height = ++seed % 4 == 0 ? 1 : 7;
        const auto pixels = drawn<T>(pattern, width, height, seed);
        const Rule<T> rule{T(2), static_cast<int>(seed % 13), T(seed % 3)};
        const Placement placement = kPlacements[seed % kPlacements.size()];
        ASSERT_TRUE(
            marks(pixels, rule, plainMarked(pixels, rule), placement, static_cast<int>(seed % 5), seed % 2 == 0))
            << "seed " << seed;
      }
  });
}

// Regions that wind through many rows: every order in which runs can be united.
TEST(MarkSpeckles, EqualsThePlainModelOnMazes) {
  const Pattern walls = [](int x, int y, unsigned random) { return x % 2 + y % 2 + int(random % 3) > 2 ? 0 : 9; };
  for (unsigned seed = 0; seed < 300; ++seed) {
    const auto pixels = drawn<uint8_t>(walls, 40 + static_cast<int>(seed % 60), 24, seed);
    const Rule<uint8_t> rule{0, static_cast<int>(seed), 0};
    ASSERT_TRUE(marks(pixels, rule, plainMarked(pixels, rule))) << seed;
  }
}

TEST(MarkSpeckles, ExtremeValuesAndTolerances) {
  forEachMember([]<class T>(const Member<T>&) {
    Values<T> values(3);
    for (int i = 0; i < 50; ++i) {
      Pixels<T> pixels(4, std::vector<T>(70));
      for (auto& row : pixels) std::generate(row.begin(), row.end(), std::ref(values));
      const Rule<T> rule{values(), 2, values()};
      ASSERT_TRUE(marks(pixels, rule, plainMarked(pixels, rule))) << +rule.maxDifference;
    }
  });
}

// --- Hand-computed rules ---------------------------------------------------------------------------------------------

template <class T>
void expectMarked(const std::vector<T>& row, Rule<T> rule, const std::vector<T>& expected) {
  EXPECT_TRUE(marks<T>({row}, rule, {expected})) << +row[0] << ", " << +row[1] << " ...";
}

TEST(MarkSpeckles, RulesByHand) {
  // 10, 12, 14 are one region of three; 20 is alone, 23 and 25 are two: all but the first at most two pixels.
  expectMarked<uint8_t>({10, 12, 14, 99, 20, 23, 25, 99}, {0, 2, 2}, {10, 12, 14, 0, 0, 0, 0, 0});
  for (const int size : {0, -1, INT32_MIN}) expectMarked<uint16_t>({1, 2, 3}, {9, size, 0}, {1, 2, 3});
  expectMarked<uint16_t>({1, 2, 3}, {9, INT32_MAX, 0}, {9, 9, 9});
  // Signed differences are exact, and negative tolerances connect nothing.
  expectMarked<int16_t>({-32768, 32767}, {0, 1, 32767}, {0, 0});
  expectMarked<int16_t>({-16384, 16383}, {0, 1, 32767}, {-16384, 16383});
  expectMarked<int16_t>({5, 5, 5}, {0, 1, -1}, {0, 0, 0});
  expectMarked<float>({5, 5, 5}, {0, 1, -0.5f}, {0, 0, 0});
  EXPECT_TRUE(marks<int16_t>({{7, -1, 7}, {-1, 7, -1}}, {-1, 1, 0}, {{-1, -1, -1}, {-1, -1, -1}})) << "diagonals";
}

TEST(MarkSpeckles, FloatsThatAreNoOrdinaryNumbers) {
  expectMarked<float>({-0.0f, 3, 0}, {0, 1, 1}, {-0.0f, 0, 0});  // -0 equals the marker
  expectMarked<float>({NAN, NAN, 3, 3}, {0, 1, 1}, {0, 0, 3, 3});
  expectMarked<float>({INFINITY, INFINITY, 3, 3}, {0, 1, 1}, {0, 0, 3, 3});
  expectMarked<float>({INFINITY, INFINITY}, {INFINITY, 1, 1}, {INFINITY, INFINITY});
  expectMarked<float>({4, 8, 8}, {NAN, 1, 1}, {NAN, 8, 8});
  expectMarked<float>({4, 4}, {0, 1, NAN}, {0, 0});
}

TEST(MarkSpeckles, BufferSize) {
  int size = 77;
  EXPECT_EQ(zvpiMarkSpecklesGetBufferSize({1, 165191050}, DataType16s, 1, &size), ErrSize);
  EXPECT_EQ(zvpiMarkSpecklesGetBufferSize({1, 165191049}, DataType8u, 1, &size), StatusOk);
  EXPECT_EQ(size, 2147483637);
}

}  // namespace
}  // namespace zvp::test
