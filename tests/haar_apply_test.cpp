// Stages applied to images, against the evaluation rule written out position by position.
#include <cmath>

#include "support/haar.h"

namespace zvp::test {
namespace {

// The order in which an object keeps its classifiers.
template <class T>
std::vector<int> evaluationOrder(const StageArrays<T>& s) {
  std::vector<int> order;
  for (const int group : {2, 3, 0})
    for (int k = 0; k < s.length(); ++k)
      if (group == 0 ? s.counts[k] != 2 && s.counts[k] != 3 : s.counts[k] == group) order.push_back(k);
  return order;
}

// Corners of the rectangle sum c0 - c1 - c2 + c3.
std::array<Point, 4> corners(Rect r, bool tilted) {
  const int x = r.x, y = r.y, w = r.width, h = r.height;
  if (tilted) return {{{x + w - h, y + h + w}, {x - h, y + h}, {x + w, y + w}, {x, y}}};
  return {{{x + w, y + h}, {x, y + h}, {x + w, y}, {x, y}}};
}

// Integers wrap.
template <class T>
using Wrapping = typename std::conditional_t<std::is_integral_v<T>, std::make_unsigned<T>, std::type_identity<T>>::type;

template <class T>
T rectSum(const std::array<T, 4>& c) {
  using W = Wrapping<T>;
  const W a = W(c[0]) - W(c[1]), b = a - W(c[2]);
  return static_cast<T>(b + W(c[3]));
}

// floor(v x 2^-scaleFactor)
int64_t floorScale(int64_t v, int scaleFactor) {
  if (scaleFactor <= -64) return 0;
  if (scaleFactor < 0) return static_cast<int64_t>(static_cast<uint64_t>(v) << -scaleFactor);
  return scaleFactor >= 64 ? (v < 0 ? -1 : 0) : v >> scaleFactor;
}

// Everything one call works on. E: entries of the integral images, V: numbers of the stage, the norm and the threshold.
template <class E, class V>
struct Scene {
  static constexpr int kMargin = 24;  // columns and rows that features reach beyond the positions, on every side

  StageArrays<V> stage;
  bool tiltedObject = false;
  int scaleFactor = 0;
  Image<E> upright, tilted;
  Image<V> norm;
  Image<uint8_t> mask;

  Scene(unsigned seed, StageArrays<V> s, int width, int height, Placement placement)
      : stage(std::move(s)),
        upright(width + 2 * kMargin, height + 3 * kMargin, 4, placement),
        tilted(width + 2 * kMargin, height + 3 * kMargin, 0, placement),
        norm(width, height, 8, placement),
        mask(width, height, 3, placement) {
    std::mt19937 engine(seed);
    const auto number = [&] { return static_cast<int>(engine() % 2001) - 1000; };
    upright.fill(number);
    tilted.fill(number);
    norm.fill([&] { return engine() % 300; });
  }

  E entry(bool fromTilted, int i, int j, Point p) const {
    return fromTilted ? tilted.get(kMargin + i + 1 + p.y, kMargin + j + 1 + p.x)
                      : upright.get(kMargin + i + p.y, kMargin + j + p.x);
  }

  auto stageSum(int i, int j, bool mixed) const {
    using Sum = std::conditional_t<std::is_same_v<V, float>, float, int64_t>;
    Sum sum = 0;
    std::vector<int> firstRect(stage.counts.size(), 0);
    for (size_t k = 1; k < firstRect.size(); ++k) firstRect[k] = firstRect[k - 1] + stage.counts[k - 1];
    for (const int k : evaluationOrder(stage)) {
      Sum t = 0;
      for (int r = firstRect[k]; r < firstRect[k] + stage.counts[k]; ++r) {
        std::array<E, 4> c;
        for (int n = 0; n < 4; ++n) c[n] = entry(mixed && tiltedObject, i, j, corners(stage.rects[r], tiltedObject)[n]);
        const Sum product = static_cast<Sum>(rectSum(c)) * static_cast<Sum>(stage.weights[r]);
        t = static_cast<Sum>(Wrapping<Sum>(t) + Wrapping<Sum>(product));
      }
      Sum limit = static_cast<Sum>(norm.get(i, j)) * static_cast<Sum>(stage.thresholds[k]);
      if constexpr (std::is_same_v<V, int32_t>) limit = floorScale(limit, scaleFactor);
      sum = sum + static_cast<Sum>(limit > t ? stage.val1[k] : stage.val2[k]);
    }
    return sum;
  }

  Data<E> uprightOrigin() const { return upright.data(kMargin, kMargin); }
  Data<E> tiltedOrigin() const { return tilted.data(kMargin, kMargin); }
  RoiSize roi() const { return {mask.width(), mask.height()}; }
};

// Calls body with the plain and the mixed function of a family, and with what follows their other arguments.
template <class E, class V, class Body>
auto withFunctions(int scaleFactor, Body body) {
  if constexpr (std::is_same_v<V, int32_t>) {
    return body(zvpiApplyHaarClassifier_32s_C1RSfs, zvpiApplyMixedHaarClassifier_32s_C1RSfs, scaleFactor);
  } else if constexpr (std::is_same_v<E, int32_t>) {
    return body(zvpiApplyHaarClassifier_32s32f_C1R, zvpiApplyMixedHaarClassifier_32s32f_C1R);
  } else {
    return body(zvpiApplyHaarClassifier_32f_C1R, zvpiApplyMixedHaarClassifier_32f_C1R);
  }
}

template <class E, class V>
Status apply(const Scene<E, V>& s, bool mixed, HaarClassifier* object, V threshold, int* positive) {
  return withFunctions<E, V>(s.scaleFactor, [&](auto plainForm, auto mixedForm, auto... last) {
    const auto rest = [&](auto f, auto... tables) {
      return f(tables..., s.norm.data(), s.norm.step(), s.mask.data(), s.mask.step(), s.roi(), positive, threshold,
               object, last...);
    };
    return mixed ? rest(mixedForm, s.uprightOrigin(), s.upright.step(), s.tiltedOrigin(), s.tilted.step())
                 : rest(plainForm, s.uprightOrigin(), s.upright.step());
  });
}

// Masks from full to nearly empty, with values other than 1.
void fillMask(const Image<uint8_t>& mask, unsigned seed) {
  std::mt19937 engine(seed);
  const unsigned sparsity = 1u << (2 * (seed % 4));
  mask.fill([&] { return engine() % sparsity == 0 ? 1 + engine() % 255 : 0; });
}

template <class E, class V>
void expectApplied(const Scene<E, V>& s, bool mixed, V threshold) {
  const auto object = build(s.stage, s.tiltedObject);
  const Image<uint8_t> expected(s.mask.width(), s.mask.height());
  int remaining = 0;
  expected.fill([&, n = 0]() mutable {
    const int i = n / s.mask.width(), j = n++ % s.mask.width();
    const bool keep = s.mask.get(i, j) != 0 && !(threshold > s.stageSum(i, j, mixed));
    remaining += keep;
    return keep ? s.mask.get(i, j) : 0;
  });
  int positive = -1;
  ASSERT_EQ(apply(s, mixed, object.get(), threshold, &positive), StatusOk);
  EXPECT_EQ(positive, remaining);
  ASSERT_TRUE(matches(s.mask, [&](int y, int x) { return expected.get(y, x); })) << "width " << s.mask.width();
}

template <class E, class V>
void expectFamily(int scaleFactor) {
  for (int k = 4; k < 4 * 51; ++k) {
    const int width = k / 4;
    const auto seed = static_cast<unsigned>(width);
    Scene<E, V> s(seed, randomStage<V>(seed, 7, 9), width, 3, somePlacement(width));
    s.tiltedObject = k % 2 != 0;
    s.scaleFactor = scaleFactor;
    fillMask(s.mask, seed);
    ASSERT_NO_FATAL_FAILURE(expectApplied(s, k % 4 >= 2, static_cast<V>(width % 5 - 2)));
  }
}

TEST(HaarApply, FollowsTheRule) {
  expectFamily<float, float>(0);
  expectFamily<int32_t, float>(0);
  for (const int scaleFactor : {0, 2, -3, 63, 64, 1000, INT32_MAX, -63, -64, INT32_MIN})
    expectFamily<int32_t, int32_t>(scaleFactor);
}

TEST(HaarApply, WrapsAndPropagatesWithoutTrapping) {
  for (int width = 1; width < 40; ++width) {
    const auto seed = static_cast<unsigned>(width);
    Scene<int32_t, int32_t> ints(seed, randomStage<int32_t>(seed, 3, 9), width, 2, {});
    ints.upright.fill(Values<int32_t>(seed));
    ints.norm.fill(Values<int32_t>(seed + 1));
    for (auto* numbers : {&ints.stage.weights, &ints.stage.thresholds, &ints.stage.val1, &ints.stage.val2})
      for (int32_t& v : *numbers) v = Values<int32_t>(static_cast<unsigned>(v) + seed)();
    fillMask(ints.mask, 0);
    ASSERT_NO_FATAL_FAILURE(expectApplied(ints, false, 0));
    Scene<float, float> floats(seed, randomStage<float>(seed, 3, 9), width, 2, {});
    floats.upright.fill(Values<float>(seed));
    floats.norm.fill(Values<float>(seed + 1));
    fillMask(floats.mask, 0);
    ASSERT_NO_FATAL_FAILURE(expectApplied(floats, false, 0.0f));
  }
}

// The tables end where the last selected position's features end: positions whose mask byte is 0 are not read for.
TEST(HaarApply, ReadsNothingForUnselectedPositions) {
  constexpr int kWidth = 64, kWindow = 20;
  StageArrays<float> stage;
  stage.add(0, 1, -1, {{{0, 0, kWindow, kWindow}, 1}, {{3, 3, 5, 5}, -2}});
  const auto object = build(stage);
  for (const bool atEnd : {true, false}) {
    for (int first = 0; first < 40; ++first) {
      const int last = kWidth - kWindow;
      const Image<float> table(kWidth + 1, kWindow + 1, 0, {atEnd, 0}), norm(kWidth, 1);
      table.fill([] { return 1; });
      norm.fill([] { return 1; });
      const Image<uint8_t> mask(kWidth, 1);
      mask.fill([] { return 0; });
      mask.set(0, first, 1);
      mask.set(0, last, 1);
      // Before the first selected position there is no table at all.
      const float* origin = table.address() - (atEnd ? 0 : first);
      if (!atEnd) mask.set(0, last, 0);
      int positive = -1;
      ASSERT_EQ(zvpiApplyHaarClassifier_32f_C1R(origin, table.step(), norm.data(), norm.step(), mask.data(),
                                                mask.step(), {kWidth, 1}, &positive, 0.0f, object.get()),
                StatusOk);
      EXPECT_EQ(positive, 0) << "0 > 0 is false, so the classifier adds -1";
    }
  }
}

TEST(HaarApply, MixedObjectReadsBothTables) {
  StageArrays<float> stage;
  stage.add(0, 0, 1, {{{0, 0, 1, 1}, 1}});  // not tilted below
  stage.add(0, 0, 1, {{{2, 0, 1, 1}, 1}});  // tilted below
  const auto object = build(stage);
  const uint8_t tilt[] = {0, 1};
  ASSERT_EQ(zvpiTiltHaarFeatures_32f(tilt, 1, object.get()), StatusOk);
  float upright[16] = {}, tilted[36] = {};
  const float norm[1] = {1};
  const auto apply = [&](float threshold) {
    uint8_t mask[1] = {1};
    int positive = -1;
    EXPECT_EQ(zvpiApplyMixedHaarClassifier_32f_C1R(upright, 16, tilted, 24, norm, 4, mask, 1, {1, 1}, &positive,
                                                   threshold, object.get()),
              StatusOk);
    return positive;
  };
  EXPECT_EQ(apply(2), 1) << "a sum equal to the threshold passes";
  upright[0 * 4 + 0] = -1;  // c3 of the first rectangle
  EXPECT_EQ(apply(2), 0);
  EXPECT_EQ(apply(1), 1);
  tilted[(2 + 1) * 6 + 2 + 1] = -1;  // c0 of the turned one is (2, 2), one row below and one column to the right
  EXPECT_EQ(apply(1), 0);
}

TEST(HaarApply, ObjectWithoutClassifiers) {
  for (const bool mixed : {true, false}) {
    for (const float threshold : {1.0f, 0.0f, -1.0f}) {
      Scene<float, float> s(1, {}, 33, 2, {});
      fillMask(s.mask, 0);
      const auto object = build(s.stage);
      const auto before = s.mask.bytes();
      int positive = -1;
      const Status status = apply(s, mixed, object.get(), threshold, &positive);
      if (mixed) {
        EXPECT_EQ(status, StatusOk);
        EXPECT_EQ(positive, threshold > 0 ? 0 : 66);
      } else {
        EXPECT_EQ(status, ErrNoMemory) << "there is no table of zero entries";
        EXPECT_EQ(positive, -1);
        EXPECT_EQ(s.mask.bytes(), before);
      }
    }
  }
}

}  // namespace
}  // namespace zvp::test
