// Upright and tilted integral images against their recurrences written out pixel by pixel.
#include "zvpcv/integral.h"

#include "support/image.h"

namespace zvp::test {
namespace {

template <class S>
using Wrapped = std::conditional_t<std::is_same_v<S, int32_t>, uint32_t, S>;

template <class S>
using Expected = std::vector<std::vector<S>>;

constexpr int kWidest = 70, kHeight = 5;  // rows go in pairs, so one is left over

int64_t term(int pixel, bool squared) { return squared ? pixel * pixel : pixel; }

template <class S>
Expected<S> plainIntegral(const Image<uint8_t>& src, S start, bool squared) {
  using W = Wrapped<S>;
  Expected<S> t(src.height() + 1, std::vector<S>(src.width() + 1, start));
  for (int y = 0; y < src.height(); ++y) {
    int64_t sum = 0;
    for (int x = 0; x < src.width(); ++x) {
      sum += term(src.get(y, x), squared);
      t[y + 1][x + 1] = static_cast<S>(static_cast<W>(static_cast<W>(sum) + static_cast<W>(t[y][x + 1])));
    }
  }
  return t;
}

template <class S>
Expected<S> plainTilted(const Image<uint8_t>& src, S start, bool squared) {
  using W = Wrapped<S>;
  const int w = src.width(), h = src.height();
  Expected<S> t(h + 2, std::vector<S>(w + 2, start));
  for (int r = 2; r < h + 2; ++r) {
    const auto pixel = [&](int x) { return x < w ? term(src.get(r - 2, x), squared) : 0; };
    const auto &above = t[r - 1], &twoAbove = t[r - 2];
    t[r][0] = above[1];
    t[r][w + 1] = above[w];
    for (int j = 1; j <= w; ++j) {
      if (std::is_same_v<S, float> && j < w) {
        double d = (static_cast<double>(above[j - 1]) - twoAbove[j]) + above[j + 1];
        d = d + static_cast<double>(pixel(j - 1));
        d = d + static_cast<double>(pixel(j));
        t[r][j] = static_cast<S>(d);
      } else {
        const W around = static_cast<W>(twoAbove[j]) - static_cast<W>(above[j + 1]);
        t[r][j] = static_cast<S>(static_cast<W>(pixel(j) + pixel(j - 1)) + static_cast<W>(above[j - 1]) - around);
      }
    }
  }
  return t;
}

template <class S>
::testing::AssertionResult equals(const Image<S>& table, const Expected<S>& expected, bool anyNan = false) {
  return matches(
      table, [&](int y, int x) { return expected[y][x]; }, anyNan);
}

// Tables of sums and, as the second one, of squares; sources whose sums grow fast, among them pixels of 255 only.
template <class F, class... S>
void expectTables(const char* name, F f, bool tilted, S... starts) {
  const int margin = tilted ? 2 : 1;
  const auto call = [=](auto... arguments) { return f(arguments..., starts...); };
  for (int width = 1; width <= kWidest; ++width) {
    const Image<uint8_t> src(width, kHeight, width % 5, somePlacement(width));
    Values<uint8_t> values(static_cast<unsigned>(width));
    src.fill([&] { return width % 3 == 0 ? 255 : values(); });
    const auto expectEach = [&](const Image<S>&... tables) {
      ASSERT_EQ(callOnImages(call, {width, kHeight}, src, tables...), StatusOk);
      bool squared = false;
      const auto expectOne = [&](const auto& table, auto start) {
        const auto expected = tilted ? plainTilted(src, start, squared) : plainIntegral(src, start, squared);
        EXPECT_TRUE(equals(table, expected)) << name << (squared ? ", squares" : ", sums");
        squared = true;
      };
      (expectOne(tables, starts), ...);
    };
    const int rows = kHeight + margin, step = width % 3;
    expectEach(Image<S>(width + margin, rows, step * int{sizeof(S)}, somePlacement(width))...);
    if (testing::Test::HasFailure()) return;
  }
}

TEST(Integral, EqualsThePlainLoop) {
  for (const int32_t start : {0, 5, INT32_MAX - 1000}) expectTables("8u32s", zvpiIntegral_8u32s_C1R, false, start);
  for (const float start : {0.0f, 0.3f, -16777215.0f}) expectTables("8u32f", zvpiIntegral_8u32f_C1R, false, start);
  expectTables("Sqr_8u32s", zvpiSqrIntegral_8u32s_C1R, false, -3, INT32_MAX - 100000);
  expectTables("Sqr_8u32s64f", zvpiSqrIntegral_8u32s64f_C1R, false, INT32_MAX, 0.1);
  expectTables("Sqr_8u32f64f", zvpiSqrIntegral_8u32f64f_C1R, false, 1e7f, -7.25);
}

TEST(TiltedIntegral, EqualsTheRecurrence) {
  for (const int32_t start : {0, 5, INT32_MAX - 1000}) expectTables("8u32s", zvpiTiltedIntegral_8u32s_C1R, true, start);
  for (const float start : {0.0f, 0.3f, -16777215.0f}) expectTables("8u32f", zvpiTiltedIntegral_8u32f_C1R, true, start);
  expectTables("Sqr_8u32s", zvpiTiltedSqrIntegral_8u32s_C1R, true, -3, INT32_MAX - 100000);
  expectTables("Sqr_8u32s64f", zvpiTiltedSqrIntegral_8u32s64f_C1R, true, INT32_MAX, 0.1);
  expectTables("Sqr_8u32f64f", zvpiTiltedSqrIntegral_8u32f64f_C1R, true, 1e7f, -7.25);
}

TEST(Integral, FloatSourceAddsPixelByPixel) {
  Values<float> values(3);
  for (int width = 1; width <= kWidest; ++width) {
    for (const int height : {1, 7, 8, 9, 19}) {
      const Placement placement = somePlacement(width);
      const Image<float> src(width, height, 4, placement), dst(width + 1, height + 1, 8, placement);
      int count = 0;
      src.fill([&] { return ++count % 50 == 0 ? values() : static_cast<float>(count % 97) / 7.0f; });
      ASSERT_EQ(callOnImages(zvpiIntegral_32f_C1R, {width, height}, src, dst), StatusOk);
      Expected<float> t(height + 1, std::vector<float>(width + 1, 0.0f));
      for (int y = 0; y < height; ++y) {
        float sum = 0.0f;
        for (int x = 0; x < width; ++x) {
          sum = sum + src.get(y, x);
          t[y + 1][x + 1] = sum + t[y][x + 1];
        }
      }
      ASSERT_TRUE(equals(dst, t, true));
    }
  }
}

TEST(Integral, SquaresOfALongRowStayExact) {  // more than 2^32 in one row
  constexpr int kWidth = 70000;
  const Image<uint8_t> src(kWidth, 1);
  src.fill([] { return 255; });
  const Image<int32_t> dst(kWidth + 1, 2);
  const Image<double> sqr(kWidth + 1, 2);
  const auto call = [](auto... arguments) { return zvpiSqrIntegral_8u32s64f_C1R(arguments..., 0, 0.0); };
  ASSERT_EQ(callOnImages(call, {kWidth, 1}, src, dst, sqr), StatusOk);
  EXPECT_EQ(sqr.get(1, kWidth), 65025.0 * kWidth);
}

// The 32-bit sum of a row wraps at pixel 8421505; squares do not.
TEST(Integral, FloatTablesOfLongRowsWrap) {
  constexpr int kWidth = 8421506;
  const Image<uint8_t> src(kWidth, 2);
  const Image<float> dst(kWidth + 1, 3), sums(kWidth + 1, 2);
  const Image<double> sqr(kWidth + 1, 2);
  memset(src.data(), 255, 2 * size_t{kWidth});
  const auto call = [](auto... arguments) { return zvpiIntegral_8u32f_C1R(arguments..., 0.0f); };
  ASSERT_EQ(callOnImages(call, {kWidth, 2}, src, dst), StatusOk);
  const auto callSqr = [](auto... arguments) { return zvpiSqrIntegral_8u32f64f_C1R(arguments..., 0.0f, 0.0); };
  ASSERT_EQ(callOnImages(callSqr, {kWidth, 1}, src, sums, sqr), StatusOk);
  for (const auto& [x, sum] : {std::pair{kWidth - 2, 2147483520.0f}, {kWidth - 1, -2147483520.0f}}) {
    EXPECT_EQ(dst.get(1, x), sum);
    EXPECT_EQ(dst.get(2, x), 2 * sum);
    EXPECT_EQ(sums.get(1, x), sum);
    EXPECT_EQ(sqr.get(1, x), 65025.0 * x);
  }
}

TEST(Integral, HandComputedTables) {
  const uint8_t pixel = 7;
  int32_t upright[4] = {}, tilted[9] = {};
  ASSERT_EQ(zvpiIntegral_8u32s_C1R(&pixel, 1, upright, 8, {1, 1}, 5), StatusOk);
  EXPECT_EQ(std::vector<int32_t>(upright, upright + 4), (std::vector<int32_t>{5, 5, 5, 12}));
  ASSERT_EQ(zvpiTiltedIntegral_8u32s_C1R(&pixel, 1, tilted, 12, {1, 1}, 5), StatusOk);
  EXPECT_EQ(std::vector<int32_t>(tilted, tilted + 9), (std::vector<int32_t>{5, 5, 5, 5, 5, 5, 5, 12, 5}));
  const uint8_t square[] = {1, 2, 3, 4};
  int32_t t[16] = {};
  ASSERT_EQ(zvpiTiltedIntegral_8u32s_C1R(square, 2, t, 16, {2, 2}, 0), StatusOk);
  EXPECT_EQ(std::vector<int32_t>(t + 8, t + 16), (std::vector<int32_t>{0, 3, 2, 0, 3, 9, 7, 2}));
}

}  // namespace
}  // namespace zvp::test
