// Sparse optical flow over two pyramids.
#include <math.h>

#include <algorithm>
#include <utility>

#include "support/pyramid.h"
#include "zvpcv/filter.h"
#include "zvpcv/geometry.h"

namespace zvp::test {
namespace {

// --- The members -----------------------------------------------------------------------------------------------------

template <class T>
struct Member {
  const char* name;
  DataType type;
  Status (*initAlloc)(OpticalFlowState**, RoiSize, int, int);
  Status (*flow)(const Pyramid*, const Pyramid*, const float*, float*, int8_t*, float*, int, int, int, int, float,
                 OpticalFlowState*);
  Status (*release)(OpticalFlowState*);
  Status (*copy)(const T*, int, float*, int, RoiSize, float, float);
  Status (*intersect)(const T*, int, RoiSize, float*, int, RoiSize, Point32f, Point*, Point*);
};

#define MEMBER(type, T, copies)                                                                                      \
  constexpr Member<T> k##type {                                                                                      \
#type, DataType##type, zvpiOpticalFlowPyrLKInitAlloc_##type##_C1R, zvpiOpticalFlowPyrLK_##type##_C1R,            \
        zvpiOpticalFlowPyrLKFree_##type##_C1R, zvpiCopySubpix_##copies##_C1R, zvpiCopySubpixIntersect_##copies##_C1R \
  }
MEMBER(8u, uint8_t, 8u32f);
MEMBER(16u, uint16_t, 16u32f);
MEMBER(32f, float, 32f);
#undef MEMBER

template <class F>
void forEachMember(F f) {
  f(k8u);
  f(k16u);
  f(k32f);
}

struct Settings {
  int winSize = 15, maxLev = 0, maxIter = 20;
  float threshold = 0.001f;
};

struct Found {
  std::vector<float> next;
  std::vector<int8_t> status;
  std::vector<float> error;
};

// Tracks points from the places `guess`.
template <class T>
Found track(const Member<T>& member, const Pyramid* a, const Pyramid* b, const std::vector<float>& points,
            const std::vector<float>& guess, Settings s, Status expected = StatusOk) {
  OpticalFlowState* state = nullptr;
  EXPECT_EQ(member.initAlloc(&state, a->roiSizes[0], s.winSize, 0), StatusOk);
  const size_t n = points.size() / 2;
  Found found{guess, std::vector<int8_t>(n, 77), std::vector<float>(n, 77)};
  EXPECT_EQ(member.flow(a, b, points.data(), found.next.data(), found.status.data(), found.error.data(),
                        static_cast<int>(n), s.winSize, s.maxLev, s.maxIter, s.threshold, state),
            expected);
  EXPECT_EQ(member.release(state), StatusOk);
  return found;
}

// --- Accuracy --------------------------------------------------------------------------------------------------------

constexpr int kWaves = 7, kMostLevels = 4;

struct Wave {
  double fx, fy, phase, amplitude[kMostLevels];

  explicit Wave(int k) : phase(k * k) {
    const double frequency = 2 * M_PI / 14 * pow(0.1, k / (kWaves - 1.0)), angle = 2.4 * k;
    fx = frequency * cos(angle), fy = frequency * sin(angle);
    for (int l = 0; l < kMostLevels; ++l)
      amplitude[l] = 105.0 / kWaves * exp(-frequency * frequency * ((1 << 2 * l) - 1) / 6.0);
  }
};

// A level of a picture that has moved: waves of 14 to 140 pixels, of which each octave's smoothing leaves what a Gaussian
// of the same variance does.
template <class T>
struct Texture {
  double dx = 0, dy = 0;

  T operator()(int level, int y, int x) const {
    static const std::vector<Wave> kTable = {Wave(0), Wave(1), Wave(2), Wave(3), Wave(4), Wave(5), Wave(6)};
    double sum = 125;
    for (const Wave& w : kTable)
      sum += w.amplitude[level] * sin(((x << level) - dx) * w.fx + ((y << level) - dy) * w.fy + w.phase);
    const double value = sum * (sizeof(T) == 2 ? 256 : 1);
    return static_cast<T>(std::is_same_v<T, float> ? value : floor(value + 0.5));
  }
};

constexpr RoiSize kSize{320, 240};
constexpr int kMaxLev = 3, kMargin = 40;
constexpr double kMotions[][2] = {{0.3, -0.45}, {-2.6, 1.37}, {7.07, 7.07}, {-9.9, 0.8}, {0.123, 10}};

TEST(OpticalFlow, FindsKnownMotions) {
  forEachMember([]<class T>(const Member<T>& member) {
    const ImagePyramid<T> previous(kSize, kMaxLev, 2.0f, Texture<T>{});
    for (const auto& [dx, dy] : kMotions) {
      SCOPED_TRACE(std::string(member.name) + " by " + std::to_string(dx) + ", " + std::to_string(dy));
      const ImagePyramid<T> next(kSize, kMaxLev, 2.0f, Texture<T>{dx, dy});
      std::vector<float> points;
      for (int y = kMargin; y < kSize.height - kMargin; y += 12)
        for (int x = kMargin; x < kSize.width - kMargin; x += 12)
          points.insert(points.end(), {static_cast<float>(x) + 0.37f, static_cast<float>(y) + 0.11f});
      const Found found = track(member, previous.record(), next.record(), points, points, {15, kMaxLev});
      std::vector<double> distances;
      for (size_t i = 0; i < found.status.size(); ++i) {
        const double ex = found.next[2 * i] - points[2 * i] - dx, ey = found.next[2 * i + 1] - points[2 * i + 1] - dy;
        distances.push_back(found.status[i] == 0 ? hypot(ex, ey) : INFINITY);
      }
      std::sort(distances.begin(), distances.end());
      EXPECT_LT(distances[distances.size() / 2], 0.02);
      EXPECT_LT(distances[distances.size() * 95 / 100], 0.1);
    }
  });
}

// --- The plain model -------------------------------------------------------------------------------------------------

struct Sums {
  double partial[2][8] = {};

  void add(int x, int y, double term) { partial[y % 2][x % 8] += term; }
  double total() const {
    double s[8];
    for (int i = 0; i < 8; ++i) s[i] = partial[0][i] + partial[1][i];
    return ((s[0] + s[4]) + (s[2] + s[6])) + ((s[1] + s[5]) + (s[3] + s[7]));
  }
};

enum class End { kSteps, kShort, kOscillation, kLost };

// One level of the plain tracker, made from the exported copies and derivatives.
template <class T>
struct PlainLevel {
  const Member<T>& member;
  const Image<T>& previous;
  const Image<T>& next;
  int win;
  Image<float> dx{previous.width(), previous.height()}, dy{previous.width(), previous.height()};
  std::vector<float> i{}, ix{}, iy{}, j{};  // windows

  RoiSize size() const { return {previous.width(), previous.height()}; }

  void derive() {
    const Image<float> source(size().width, size().height);
    source.draw([&](int y, int x) { return previous.get(y, x); });
    std::vector<uint8_t> buffer(static_cast<size_t>(4 * size().width + 8));
    const auto call = [&](auto filter, const Image<float>& dst) {
      filter(source.data(), source.step(), dst.data(), dst.step(), size(), BorderReplicate, 0, buffer.data());
      dst.draw([&](int y, int x) { return dst.get(y, x) * 0.03125f; });
    };
    call(zvpiFilterScharrHorizBorder_32f_C1R, dx);
    call(zvpiFilterScharrVertBorder_32f_C1R, dy);
  }

  // The first column (row) of a window; far away where it has none.
  int first(double centre) const {
    const float shifted = static_cast<float>(centre) - 0.5f * static_cast<float>(win - 1) + static_cast<float>(win);
    return fabsf(shifted) < 1e6f ? static_cast<int>(shifted) - win : 1 << 30;
  }
  bool overlaps(double x, double y) const {
    return first(x) + win > 0 && first(x) < size().width && first(y) + win > 0 && first(y) < size().height;
  }
  bool isInside(double x, double y) const {
    return first(x) >= 0 && first(x) + win < size().width && first(y) >= 0 && first(y) + win < size().height;
  }

  // A window; with the raised fractions of a plain copy if wanted and if it lies inside.
  template <class S>
  std::vector<float> cut(const Member<S>& m, const Image<S>& image, double x, double y, bool raised) const {
    std::vector<float> out(static_cast<size_t>(win * win));
    const Point32f centre{static_cast<float>(x), static_cast<float>(y)};
    const float half = 0.5f * static_cast<float>(win - 1);
    Point min, max;
    if (raised && isInside(x, y)) {
      m.copy(image.data(first(y), first(x)), image.step(), out.data(), win * 4, {win, win}, centre.x - half,
             centre.y - half);
    } else {
      m.intersect(image.data(), image.step(), size(), out.data(), win * 4, {win, win}, centre, &min, &max);
    }
    return out;
  }

  template <class Term>
  double sum(Term term) const {
    Sums sums;
    for (int y = 0; y < win; ++y)
      for (int x = 0; x < win; ++x) sums.add(x, y, term(static_cast<size_t>(y * win + x)));
    return sums.total();
  }
  double d(size_t k) const { return i[k] - j[k]; }

  End refine(double px, double py, double& x, double& y, Settings s) {
    if (!overlaps(px, py)) return End::kLost;
    i = cut(member, previous, px, py, true), ix = cut(k32f, dx, px, py, true), iy = cut(k32f, dy, px, py, true);
    const double xx = sum([&](size_t k) { return double{ix[k]} * ix[k]; });
    const double xy = sum([&](size_t k) { return double{ix[k]} * iy[k]; });
    const double yy = sum([&](size_t k) { return double{iy[k]} * iy[k]; });
    const double det = xx * yy - xy * xy;
    if (det < 2.220446049250313e-16) return End::kLost;
    double lastX = 1e9, lastY = 1e9;
    for (int n = 0; n < s.maxIter; ++n) {
      if (!overlaps(x, y)) return End::kLost;
      j = cut(member, next, x, y, false);
      const double bx = sum([&](size_t k) { return d(k) * ix[k]; }), by = sum([&](size_t k) { return d(k) * iy[k]; });
      const double stepX = (bx * yy - xy * by) / det, stepY = (by * xx - xy * bx) / det;
      x += stepX, y += stepY;
      if (stepX * stepX + stepY * stepY < double(s.threshold) * s.threshold) return End::kShort;
      if (fabs(stepX + lastX) < 0.0003452669770922512 && fabs(stepY + lastY) < 0.0003452669770922512) {
        x -= 0.5 * stepX, y -= 0.5 * stepY;
        return End::kOscillation;
      }
      lastX = stepX, lastY = stepY;
    }
    return End::kSteps;
  }

  // Negative if the place is outside.
  double error(double x, double y) {
    if (!overlaps(x, y)) return -1;
    j = cut(member, next, x, y, false);
    return sqrt(sum([&](size_t k) { return d(k) * d(k); }) / (double(win) * win));
  }
};

template <class T>
void expectEqualsPlain(const Member<T>& member, RoiSize size, float rate, Settings s, unsigned seed, int (&ends)[4]) {
  SCOPED_TRACE(member.name);
  std::mt19937 engine(seed);
  const auto noise = [&](int l, int y, int x) {
    const double wave = 90 + 60 * sin((x << l) / 7.0) * cos((y << l) / 5.0);
    return static_cast<T>(wave + engine() % 30);
  };
  const Placement placement = kPlacements[seed % kPlacements.size()];
  const ImagePyramid<T> a(size, s.maxLev + 1, rate, noise, static_cast<int>(seed % 3 * sizeof(T)), placement);
  const ImagePyramid<T> b(size, s.maxLev + 1, rate, noise, static_cast<int>(seed % 2 * sizeof(T)), placement);
  s.maxLev = std::min(s.maxLev, a.record()->level);
  const auto upTo = [&](int n) { return static_cast<float>(engine() % static_cast<unsigned>(16 * n)) / 16; };
  std::vector<float> points, guess;
  for (int k = 0; k < 60; ++k)
    for (const int n : {size.width, size.height}) {
      points.push_back(upTo(n + 8) - 4);
      guess.push_back(points.back() + upTo(2) - 1);
    }
  const Found found = track(member, a.record(), b.record(), points, guess, s);

  std::vector<float> next = guess, error(60);
  std::vector<int> status(60, s.maxLev + 1);
  for (int l = s.maxLev; l >= 0; --l) {
    const double rateHere = a.record()->rates[l];
    const double scale = l == s.maxLev ? rateHere : rateHere / a.record()->rates[l + 1];
    PlainLevel<T> level{member, a[l], b[l], s.winSize};
    level.derive();
    for (size_t k = 0; k < 60; ++k) {
      if (status[k] != l + 1) continue;
      double x = next[2 * k] * scale, y = next[2 * k + 1] * scale;
      const End end = level.refine(points[2 * k] * rateHere, points[2 * k + 1] * rateHere, x, y, s);
      ++ends[static_cast<int>(end)];
      const double difference = end != End::kLost && l == 0 ? level.error(x, y) : 0;
      const bool isFound = end != End::kLost && difference >= 0;
      const double unit = isFound ? 1 : 1 / rateHere;
      next[2 * k] = static_cast<float>(x * unit), next[2 * k + 1] = static_cast<float>(y * unit);
      error[k] = isFound ? static_cast<float>(difference) : 0.0f;
      status[k] -= isFound;
    }
  }
  for (size_t k = 0; k < 60; ++k) {
    SCOPED_TRACE("point " + std::to_string(points[2 * k]) + ", " + std::to_string(points[2 * k + 1]));
    ASSERT_EQ(found.status[k], status[k]);
    for (const auto& [got, want] : {std::pair{found.next[2 * k], next[2 * k]},
                                    {found.next[2 * k + 1], next[2 * k + 1]},
                                    {found.error[k], error[k]}})
      ASSERT_TRUE(sameBits(got, want)) << got << " instead of " << want;
  }
}

TEST(OpticalFlow, EqualsThePlainModel) {
  int ends[4] = {};
  forEachMember([&](const auto& member) {
    unsigned seed = 0;
    for (int winSize = 1; winSize <= 34; winSize += winSize < 18 ? 1 : 5) {
      const float rate = seed % 3 == 0 ? 1.7f : 2.0f;
      const Settings s{winSize, static_cast<int>(seed % 4), 1 + static_cast<int>(seed * 5 % 17),
                       seed % 5 == 0 ? 0.0f : 0.02f};
      ASSERT_NO_FATAL_FAILURE(expectEqualsPlain(member, {50, 41}, rate, s, ++seed, ends)) << "window " << winSize;
    }
    ASSERT_NO_FATAL_FAILURE(expectEqualsPlain(member, {6, 5}, 2.0f, {9, 2, 5}, ++seed, ends));
    ASSERT_NO_FATAL_FAILURE(expectEqualsPlain(member, {2, 9}, 1.2f, {3, 5, 60, 0}, ++seed, ends));
    ASSERT_NO_FATAL_FAILURE(expectEqualsPlain(member, {60, 60}, 2.0f, {7, 1, 200, 0}, ++seed, ends));
  });
  for (const int count : ends) EXPECT_GT(count, 0);
}

// --- Numbers by hand -------------------------------------------------------------------------------------------------

// I = x^2 + y^2 about the point; a window of 3 has dx = -2, 0, 2 and gxx = gyy = 24, gxy = 0. J = y^2 + 4, 0, -2, 5, 5
// from column -1 on: the first step is 3 x (2 x 3 + 2 x 3) / 24 = 1.5, the second one
// 3 x (-2 x (1 + 1) + 2 x (1 - 5)) / 24 = -1.5.
TEST(OpticalFlow, StepsByHand) {
  constexpr int kCentre = 6;
  const auto parabola = [](int x) { return static_cast<float>((x - kCentre) * (x - kCentre)); };
  const auto steps = [](int x) {
    constexpr float kValues[] = {4, 0, -2, 5, 5};
    return x < kCentre - 1 || x > kCentre + 3 ? 0 : kValues[x - kCentre + 1];
  };
  const ImagePyramid<float> previous({13, 13}, 1, 2.0f, [&](int, int y, int x) { return parabola(x) + parabola(y); });
  const ImagePyramid<float> next({13, 13}, 1, 2.0f, [&](int, int y, int x) { return steps(x) + parabola(y); });
  // Leaves a step of a half of that.
  constexpr float kNudge = 0x1p-12f;
  const ImagePyramid<float> nudged({13, 13}, 1, 2.0f, [&](int, int y, int x) {
    return parabola(x) + parabola(y) - kNudge * static_cast<float>(x - kCentre);
  });
  const auto resultOn = [&](const ImagePyramid<float>& image, int maxIter, float threshold) {
    return track(k32f, previous.record(), image.record(), {kCentre, kCentre}, {kCentre, kCentre},
                 {3, 0, maxIter, threshold});
  };
  const auto result = [&](int maxIter, float threshold) { return resultOn(next, maxIter, threshold); };
  const Found one = result(1, 0);
  EXPECT_EQ(one.status[0], 0);
  EXPECT_NEAR(one.next[0], kCentre + 1.5, 1e-4);
  EXPECT_NEAR(one.next[1], kCentre, 1e-4);
  EXPECT_NEAR(one.error[0], sqrt((4 + 2.25 + 16) / 3), 1e-3) << "I - J in every row: 1 + 1, 0 - 1.5, 1 - 5";
  EXPECT_NEAR(result(10, 1.6f).next[0], kCentre + 1.5, 1e-4) << "a short step is the last one";
  EXPECT_NEAR(result(10, 0).next[0], kCentre + 0.75, 1e-4) << "an oscillation ends half way back";
  EXPECT_NEAR(resultOn(nudged, 1, 0).next[0], kCentre + kNudge / 2, 1e-5) << "one step, however short, is none";
  // The determinant of fainter parabolas: 576 x 2^-60 and 576 x 2^-64.
  for (const float scale : {0x1p-15f, 0x1p-16f}) {
    const ImagePyramid<float> faint({13, 13}, 1, 2.0f,
                                    [&](int, int y, int x) { return scale * (parabola(x) + parabola(y)); });
    const Found found = track(k32f, faint.record(), faint.record(), {kCentre, kCentre}, {kCentre, kCentre}, {3, 0});
    EXPECT_EQ(found.status[0], scale < 0x1p-15f ? 1 : 0);
  }
}

// --- Lost points -----------------------------------------------------------------------------------------------------

TEST(OpticalFlow, LostPointsKeepTheirLevelAndTheirLastEstimate) {
  const auto flat = [](int, int, int) { return uint8_t{9}; };
  const ImagePyramid<uint8_t> textured(kSize, 2, 2.0f, Texture<uint8_t>{}), uniform(kSize, 2, 2.0f, flat);
  // Textured on levels 2 and 1, uniform on level 0.
  const ImagePyramid<uint8_t> coarse(
      kSize, 2, 2.0f, [](int l, int y, int x) { return l == 0 ? uint8_t{9} : Texture<uint8_t>{}(l, y, x); });
  struct Case {
    const char* what;
    const ImagePyramid<uint8_t>& image;
    float x, y, guessX, guessY;
    int status;
    float lastX, lastY;
  };
  constexpr float kInf = INFINITY;
  const Case cases[] = {{"uniform", uniform, 30, 30, 31, 29, 3, 31, 29},
                        {"uniform on level 0", coarse, 30, 30, 30, 30, 1, 30, 30},
                        {"previous outside", textured, -500, 30, 12, 13, 3, 12, 13},
                        {"next outside", textured, 30, 30, 30, 700, 3, 30, 700},
                        {"previous NaN", textured, NAN, 30, 12, 13, 3, 12, 13},
                        {"guess NaN", textured, 30, 20, NAN, 13, 3, 30, 13},
                        {"both NaN", textured, NAN, 30, NAN, 13, 3, 0, 13},
                        {"infinite", textured, kInf, 30, -kInf, 13, 3, -std::numeric_limits<float>::max(), 13}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    // A point that is found goes with the lost one.
    const Found found =
        track(k8u, c.image.record(), c.image.record(), {c.x, c.y, 32, 32}, {c.guessX, c.guessY, 32, 32}, {7, 2});
    EXPECT_EQ(found.status[0], c.status);
    EXPECT_EQ(found.error[0], 0);
    EXPECT_NEAR(found.next[0], c.lastX, 1e-3);
    EXPECT_NEAR(found.next[1], c.lastY, 1e-3);
    if (&c.image == &textured) {
      EXPECT_EQ(found.status[1], 0);
      EXPECT_NEAR(found.next[2], 32, 1e-3);
    }
  }
}

TEST(OpticalFlow, PixelsThatAreNoNumbersLoseThePoint) {
  const ImagePyramid<float> a({40, 40}, 1, 2.0f, Texture<float>{});
  const ImagePyramid<float> b({40, 40}, 1, 2.0f, [](int l, int y, int x) {
    return x < 20 ? Texture<float>{}(l, y, x) : x % 2 ? NAN : INFINITY;
  });
  const std::vector<float> points = {9, 20, 30, 20};
  const Found found = track(k32f, a.record(), b.record(), points, points, {7, 0});
  EXPECT_EQ(found.status, (std::vector<int8_t>{0, 1}));
  EXPECT_EQ(found.next[2], 30);
  const Found back = track(k32f, b.record(), a.record(), points, points, {7, 0});
  EXPECT_EQ(back.status, (std::vector<int8_t>{0, 1}));
}

// A status holds a level + 1 in seven bits.
TEST(OpticalFlow, TheHighestLevelIs126) {
  const ImagePyramid<float> image({130, 130}, 127, 1.001f,
                                  [](int, int y, int x) { return static_cast<float>(x * x + y * y); });
  const auto result = [&](int maxLev, Status expected) {
    return track(k32f, image.record(), image.record(), {2, 2, -500, 2}, {2, 2, 2, 2}, {3, maxLev}, expected).status;
  };
  EXPECT_EQ(result(126, StatusOk), (std::vector<int8_t>{0, 127}));
  EXPECT_EQ(result(127, ErrBadArg), (std::vector<int8_t>{77, 77}));
}

// --- States ----------------------------------------------------------------------------------------------------------

TEST(OpticalFlow, StatesHoldTheirArguments) {
  forEachMember([]<class T>(const Member<T>& member) {
    OpticalFlowState* state = nullptr;
    ASSERT_EQ(member.initAlloc(&state, {12, 34}, 56, 78), StatusOk);
    int32_t words[7];
    memcpy(words, state, sizeof words);
    for (const auto& [i, value] : {std::pair{0, 12}, {1, 34}, {2, 1}, {3, int{member.type}}, {5, 78}, {6, 56}})
      EXPECT_EQ(words[i], value) << member.name << ", " << i;
    EXPECT_EQ(member.release(state), StatusOk);
  });
}

}  // namespace
}  // namespace zvp::test
