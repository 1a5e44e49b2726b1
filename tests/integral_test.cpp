// Upright and tilted integral images against their recurrences written out pixel by pixel.
#include "zvpcv/integral.h"

#include "support/checks.h"
#include "support/image.h"

namespace zvp::test {
namespace {

template <class S>
using Wrapped = std::conditional_t<std::is_same_v<S, int32_t>, uint32_t, S>;

template <class S>
using Expected = std::vector<std::vector<S>>;

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

struct Model {
  template <class S>
  static Expected<S> table(bool tilted, const Image<uint8_t>& src, S start, bool squared) {
    return tilted ? plainTilted(src, start, squared) : plainIntegral(src, start, squared);
  }
};

template <class S>
::testing::AssertionResult equals(const Image<S>& table, const Expected<S>& expected) {
  return matches(table, [&](int y, int x) { return expected[y][x]; });
}

// Sources whose sums grow fast, among them pixels of 255 only.
void fillSource(const Image<uint8_t>& src, int round) {
  Values<uint8_t> values(static_cast<unsigned>(round));
  if (round % 3 == 0) {
    src.fill([] { return 255; });
  } else {
    src.fill(values);
  }
}

constexpr int kWidest = 70, kHeight = 5;  // rows go in pairs, so one is left over

template <class S>
using Sums = Status (*)(const uint8_t*, int, S*, int, RoiSize, S);

template <class S>
void expectSums(Sums<S> function, bool tilted, S start) {
  const int margin = tilted ? 2 : 1;
  for (int width = 1; width <= kWidest; ++width) {
    const Placement placement = kPlacements[static_cast<size_t>(width) % kPlacements.size()];
    const Image<uint8_t> src(width, kHeight, width % 5, placement);
    const Image<S> dst(width + margin, kHeight + margin, width % 3 * int{sizeof(S)}, placement);
    fillSource(src, width);
    ASSERT_EQ(function(src.data(), src.step(), dst.data(), dst.step(), {width, kHeight}, start), StatusOk);
    ASSERT_TRUE(equals(dst, Model::table(tilted, src, start, false)));
  }
}

template <class S, class Q>
using SumsAndSquares = Status (*)(const uint8_t*, int, S*, int, Q*, int, RoiSize, S, Q);

template <class S, class Q>
void expectSumsAndSquares(SumsAndSquares<S, Q> function, bool tilted, S start, Q startSquares) {
  const int margin = tilted ? 2 : 1;
  for (int width = 1; width <= kWidest; ++width) {
    const Placement placement = kPlacements[static_cast<size_t>(width) % kPlacements.size()];
    const Image<uint8_t> src(width, kHeight, width % 5, placement);
    const Image<S> dst(width + margin, kHeight + margin, width % 3 * int{sizeof(S)}, placement);
    const Image<Q> sqr(width + margin, kHeight + margin, width % 2 * int{sizeof(Q)}, placement);
    fillSource(src, width);
    ASSERT_EQ(function(src.data(), src.step(), dst.data(), dst.step(), sqr.data(), sqr.step(), {width, kHeight}, start,
                       startSquares),
              StatusOk);
    ASSERT_TRUE(equals(dst, Model::table(tilted, src, start, false)));
    ASSERT_TRUE(equals(sqr, Model::table(tilted, src, startSquares, true)));
  }
}

TEST(Integral, EqualsThePlainLoop) {
  for (const int32_t start : {0, 5, INT32_MAX - 1000}) expectSums<int32_t>(zvpiIntegral_8u32s_C1R, false, start);
  for (const float start : {0.0f, 0.3f, -16777215.0f}) expectSums<float>(zvpiIntegral_8u32f_C1R, false, start);
  expectSumsAndSquares<int32_t, int32_t>(zvpiSqrIntegral_8u32s_C1R, false, -3, INT32_MAX - 100000);
  expectSumsAndSquares<int32_t, double>(zvpiSqrIntegral_8u32s64f_C1R, false, INT32_MAX, 0.1);
  expectSumsAndSquares<float, double>(zvpiSqrIntegral_8u32f64f_C1R, false, 1e7f, -7.25);
}

TEST(TiltedIntegral, EqualsTheRecurrence) {
  for (const int32_t start : {0, 5, INT32_MAX - 1000}) expectSums<int32_t>(zvpiTiltedIntegral_8u32s_C1R, true, start);
  for (const float start : {0.0f, 0.3f, -16777215.0f}) expectSums<float>(zvpiTiltedIntegral_8u32f_C1R, true, start);
  expectSumsAndSquares<int32_t, int32_t>(zvpiTiltedSqrIntegral_8u32s_C1R, true, -3, INT32_MAX - 100000);
  expectSumsAndSquares<int32_t, double>(zvpiTiltedSqrIntegral_8u32s64f_C1R, true, INT32_MAX, 0.1);
  expectSumsAndSquares<float, double>(zvpiTiltedSqrIntegral_8u32f64f_C1R, true, 1e7f, -7.25);
}

TEST(Integral, FloatSourceAddsPixelByPixel) {
  Values<float> values(3);
  for (int width = 1; width <= kWidest; ++width) {
    for (const int height : {1, 7, 8, 9, 19}) {
      const Placement placement = kPlacements[static_cast<size_t>(width) % kPlacements.size()];
      const Image<float> src(width, height, 4, placement), dst(width + 1, height + 1, 8, placement);
      int count = 0;
      src.fill([&] { return ++count % 50 == 0 ? values() : static_cast<float>(count % 97) / 7.0f; });
      ASSERT_EQ(zvpiIntegral_32f_C1R(src.data(), src.step(), dst.data(), dst.step(), {width, height}), StatusOk);
      Expected<float> t(height + 1, std::vector<float>(width + 1, 0.0f));
      for (int y = 0; y < height; ++y) {
        float sum = 0.0f;
        for (int x = 0; x < width; ++x) {
          sum = sum + src.get(y, x);
          t[y + 1][x + 1] = sum + t[y][x + 1];
        }
      }
      ASSERT_TRUE(matches(
          dst, [&](int y, int x) { return t[y][x]; }, true));
    }
  }
}

TEST(Integral, SquaresOfALongRowStayExact) {  // more than 2^32 in one row
  constexpr int kWidth = 70000;
  const Image<uint8_t> src(kWidth, 1);
  src.fill([] { return 255; });
  const Image<int32_t> dst(kWidth + 1, 2);
  const Image<double> sqr(kWidth + 1, 2);
  ASSERT_EQ(zvpiSqrIntegral_8u32s64f_C1R(src.data(), src.step(), dst.data(), dst.step(), sqr.data(), sqr.step(),
                                         {kWidth, 1}, 0, 0.0),
            StatusOk);
  EXPECT_EQ(sqr.get(1, kWidth), 65025.0 * kWidth);
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

template <class S>
Call sumsCall(const char* name, Sums<S> function, const Image<uint8_t>& src, const Image<S>& dst) {
  return {name,
          {{src.data(), src.step(), 1}, {dst.data(), dst.step(), 4}},
          {},
          {src.width(), src.height()},
          [function](const auto& o, const auto&, RoiSize roi) {
            return function(static_cast<const uint8_t*>(o[0].data), o[0].step,
                            static_cast<S*>(const_cast<void*>(o[1].data)), o[1].step, roi, S(1));
          }};
}

template <class S>
void expectSumsChecks(const char* name, Sums<S> function, int margin) {
  const Image<uint8_t> src(5, 3);
  const Image<S> dst(5 + margin, 3 + margin);
  const auto before = dst.bytes();
  expectStandardChecks(sumsCall(name, function, src, dst));
  EXPECT_EQ(dst.bytes(), before);
}

template <class S, class Q>
void expectSquaresChecks(const char* name, SumsAndSquares<S, Q> function, int margin) {
  const Image<uint8_t> src(5, 3);
  const Image<S> dst(5 + margin, 3 + margin);
  const Image<Q> sqr(5 + margin, 3 + margin);
  const auto before = dst.bytes(), beforeSqr = sqr.bytes();
  expectStandardChecks(
      {name,
       {{src.data(), src.step(), 1}, {dst.data(), dst.step(), 4}, {sqr.data(), sqr.step(), int{sizeof(Q)}}},
       {},
       {5, 3},
       [function](const auto& o, const auto&, RoiSize roi) {
         return function(static_cast<const uint8_t*>(o[0].data), o[0].step,
                         static_cast<S*>(const_cast<void*>(o[1].data)), o[1].step,
                         static_cast<Q*>(const_cast<void*>(o[2].data)), o[2].step, roi, S(1), Q(1));
       }});
  EXPECT_EQ(dst.bytes(), before);
  EXPECT_EQ(sqr.bytes(), beforeSqr);
}

TEST(Integral, ChecksInOrderAndWritesNothing) {
  expectSumsChecks<int32_t>("Integral_8u32s", zvpiIntegral_8u32s_C1R, 1);
  expectSumsChecks<float>("Integral_8u32f", zvpiIntegral_8u32f_C1R, 1);
  expectSumsChecks<int32_t>("Tilted_8u32s", zvpiTiltedIntegral_8u32s_C1R, 2);
  expectSumsChecks<float>("Tilted_8u32f", zvpiTiltedIntegral_8u32f_C1R, 2);
  expectSquaresChecks<int32_t, int32_t>("Sqr_8u32s", zvpiSqrIntegral_8u32s_C1R, 1);
  expectSquaresChecks<int32_t, double>("Sqr_8u32s64f", zvpiSqrIntegral_8u32s64f_C1R, 1);
  expectSquaresChecks<float, double>("Sqr_8u32f64f", zvpiSqrIntegral_8u32f64f_C1R, 1);
  expectSquaresChecks<int32_t, int32_t>("TiltedSqr_8u32s", zvpiTiltedSqrIntegral_8u32s_C1R, 2);
  expectSquaresChecks<int32_t, double>("TiltedSqr_8u32s64f", zvpiTiltedSqrIntegral_8u32s64f_C1R, 2);
  expectSquaresChecks<float, double>("TiltedSqr_8u32f64f", zvpiTiltedSqrIntegral_8u32f64f_C1R, 2);

  const Image<float> src(5, 3), dst(6, 4);
  expectStandardChecks({"Integral_32f",
                        {{src.data(), src.step(), 4}, {dst.data(), dst.step(), 4}},
                        {},
                        {5, 3},
                        [](const auto& o, const auto&, RoiSize roi) {
                          return zvpiIntegral_32f_C1R(static_cast<const float*>(o[0].data), o[0].step,
                                                      static_cast<float*>(const_cast<void*>(o[1].data)), o[1].step,
                                                      roi);
                        }});
}

}  // namespace
}  // namespace zvp::test
