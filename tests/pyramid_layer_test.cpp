// Layers: states, reduction and expansion against plain filters, hand-computed examples.
#include <sys/mman.h>

#include "support/border.h"
#include "support/filter.h"
#include "support/pyramid.h"

namespace zvp::test {
namespace {

constexpr int kLinear = 2;

template <class T>
using TapOf = std::conditional_t<std::is_same_v<T, float>, float, int16_t>;
template <class T>
using Taps = std::vector<TapOf<T>>;

template <class T>
struct Direction {
  Status (*init)(PyramidLayerState**, RoiSize, float, const TapOf<T>*, int, int);
  Status (*run)(const T*, int, RoiSize, T*, int, RoiSize, PyramidLayerState*);
  Status (*free)(PyramidLayerState*);
  bool isDown;
};
#define DIRECTION(DOWN_OR_UP, NAME, isDown)                                                \
  {                                                                                        \
    zvpiPyramidLayer##DOWN_OR_UP##InitAlloc_##NAME, zvpiPyramidLayer##DOWN_OR_UP##_##NAME, \
        zvpiPyramidLayer##DOWN_OR_UP##Free_##NAME, isDown                                  \
  }
constexpr Direction<uint8_t> kDown8u = DIRECTION(Down, 8u_C1R, true), kUp8u = DIRECTION(Up, 8u_C1R, false);
constexpr Direction<float> kDown32f = DIRECTION(Down, 32f_C1R, true);

template <class T>
struct Member {
  const char* name;
  int channels;
  Direction<T> down, up;
};

template <class Body>
void forEachMember(Body body) {
#define MEMBER(NAME, T, CHANNELS) \
  body(Member<T>{#NAME, CHANNELS, DIRECTION(Down, NAME, true), DIRECTION(Up, NAME, false)})
  MEMBER(8u_C1R, uint8_t, 1);
  MEMBER(8u_C3R, uint8_t, 3);
  MEMBER(16u_C1R, uint16_t, 1);
  MEMBER(16u_C3R, uint16_t, 3);
  MEMBER(32f_C1R, float, 1);
  MEMBER(32f_C3R, float, 3);
#undef MEMBER
}

using StatePtr = std::unique_ptr<PyramidLayerState, Status (*)(PyramidLayerState*)>;

template <class T>
StatePtr make(const Direction<T>& d, RoiSize base, float rate, const Taps<T>& taps, Status expected = StatusOk) {
  PyramidLayerState* state = nullptr;
  EXPECT_EQ(d.init(&state, base, rate, taps.data(), static_cast<int>(taps.size()), kLinear), expected);
  return {state, d.free};
}

// --- The plain model -------------------------------------------------------------------------------------------------

float normalised(float tap, float sum) { return fabsf(sum) <= 1.1754944e-38f ? tap : tap / sum; }
float normalised(int16_t tap, int sum) {
  const int fixed = sum == 0 ? tap : static_cast<int>(floor(trunc(tap * 16384.0 / sum) / 2));
  return static_cast<float>(std::clamp(fixed, -32768, 32767)) / 8192.0f;
}

template <class Tap>
std::vector<float> normalised(const std::vector<Tap>& taps) {
  const size_t c = taps.size() / 2;
  decltype(Tap{} + 0) left = 0;
  for (size_t i = 0; i < c; ++i) left += taps[i];
  std::vector<float> result(taps.size());
  for (size_t i = 0; i <= c; ++i) result[i] = result[taps.size() - 1 - i] = normalised(taps[i], taps[c] + 2 * left);
  return result;
}

// One channel as rows of floats.
struct Plane {
  int width, height;
  std::vector<float> v;

  template <class Pixel>
  Plane(int w, int h, Pixel pixel) : width(w), height(h) {
    for (int y = 0; y < h; ++y)
      for (int x = 0; x < w; ++x) v.push_back(pixel(x, y));
  }
  float at(int x, int y) const { return v[static_cast<size_t>(y * width + x)]; }
};

Plane turned(const Plane& p) {
  return Plane(p.height, p.width, [&](int x, int y) { return p.at(y, x); });
}

template <class Step>
Plane rowsThenColumns(const Plane& p, RoiSize size, Step step) {
  return turned(step(turned(step(p, size.width)), size.height));
}

Plane filtered(const Plane& p, const std::vector<float>& taps) {
  const int reach = static_cast<int>(taps.size()) / 2;
  return Plane(p.width, p.height, [&](int x, int y) {
    return plainFloat(taps, [&](int k) { return p.at(int(walkedInside(x + k - reach, p.width, BorderReflect)), y); });
  });
}

template <class Position>
Plane sampled(const Plane& p, int width, Position position, bool blends) {
  return Plane(width, p.height, [&](int x, int y) {
    const float at = position(static_cast<float>(x));
    const int i = static_cast<int>(at);
    if (!blends || i + 1 >= p.width) return p.at(std::min(i, p.width - 1), y);
    const float t = at - static_cast<float>(i), second = t * p.at(i + 1, y), first = (1 - t) * p.at(i, y);
    return second + first;
  });
}

Plane plainLayer(const Plane& src, RoiSize result, float rate, const std::vector<float>& taps, bool isDown) {
  const bool halves = isDown && rate > 1.99998f && rate < 2.00002f;
  const auto position = [&](float x) { return halves ? 2 * x : isDown ? rate * x : x / rate; };
  const auto sample = [&](const Plane& p, int n) { return sampled(p, n, position, !halves); };
  const auto filter = [&](const Plane& p, int) { return filtered(p, taps); };
  if (isDown) return rowsThenColumns(rowsThenColumns(src, result, filter), result, sample);
  return rowsThenColumns(src, result, [&](const Plane& p, int n) { return filtered(sample(p, n), taps); });
}

template <class T>
T rounded(float value) {
  if constexpr (std::is_same_v<T, float>) return value;
  return static_cast<T>(nearbyintf(fminf(fmaxf(value, 0.0f), std::numeric_limits<T>::max())));
}

template <class T>
void expectEqualsPlain(const Member<T>& member, const Direction<T>& direction, const StatePtr& state,
                       const Taps<T>& taps, RoiSize size, RoiSize result, float rate, unsigned seed) {
  const Placement placement = kPlacements[seed % kPlacements.size()];
  const int gap = static_cast<int>(seed % 3 * sizeof(T)), channels = member.channels;
  const Image<T> src(size.width * channels, size.height, gap, placement);
  const Image<T> dst(result.width * channels, result.height, gap, placement);
  src.fill(FiniteValues<T>(seed));
  ASSERT_EQ(direction.run(src.data(), src.step(), size, dst.data(), dst.step(), result, state.get()), StatusOk);
  std::vector<Plane> expected;
  for (int c = 0; c < channels; ++c) {
    const auto pixel = [&](int x, int y) { return static_cast<float>(src.get(y, x * channels + c)); };
    expected.push_back(plainLayer({size.width, size.height, pixel}, result, rate, normalised(taps), direction.isDown));
  }
  const auto want = [&](int y, int x) {
    return rounded<T>(expected[static_cast<size_t>(x % channels)].at(x / channels, y));
  };
  ASSERT_TRUE(matches(dst, want)) << member.name << (direction.isDown ? " down" : " up") << " from " << size.width
                                  << "x" << size.height << " at rate " << rate;
}

template <class T>
Taps<T> tapsFor(unsigned seed) {
  if (seed % 4 == 0) return {1, 4, 6, 4, 1};
  const int size = seed % 4 == 1 ? 3 : seed % 4 == 2 ? 7 : 5;
  Taps<T> taps(static_cast<size_t>(size));
  for (size_t i = 0; i <= taps.size() / 2; ++i)
    taps[i] = taps[taps.size() - 1 - i] =
        static_cast<TapOf<T>>(seed * (i + 3) % 23 + 1) * (i == 1 && seed % 3 == 0 ? TapOf<T>(-1) : TapOf<T>(1));
  return taps;
}

// Down from the base to a single pixel, and back up to sizes at both ends of each range, with one state for each
// direction.
template <class T>
void expectPyramidEqualsPlain(const Member<T>& member, RoiSize base, float rate, unsigned seed) {
  const Taps<T> taps = tapsFor<T>(seed);
  const StatePtr down = make(member.down, base, rate, taps), up = make(member.up, base, rate, taps);
  for (RoiSize size = base, next; size.width > 1 || size.height > 1; size = next) {
    ASSERT_EQ(zvpiGetPyramidDownROI(size, &next, rate), StatusOk);
    RoiSize least, most;
    ASSERT_EQ(zvpiGetPyramidUpROI(next, &least, &most, rate), StatusOk);
    ASSERT_NO_FATAL_FAILURE(expectEqualsPlain(member, member.down, down, taps, size, next, rate, ++seed));
    ASSERT_NO_FATAL_FAILURE(expectEqualsPlain(member, member.up, up, taps, next, size, rate, ++seed));
    ASSERT_NO_FATAL_FAILURE(expectEqualsPlain(member, member.up, down, taps, next, least, rate, ++seed))
        << "the other direction's state";
  }
}

TEST(PyramidLayer, EqualsThePlainFiltersOnEveryLevel) {
  forEachMember([](const auto& member) {
    unsigned seed = 0;
    const float halving[] = {nextafterf(1.99998f, 2), nextafterf(2.00002f, 2)};  // the last rates on either side
    for (const float rate : {1.05f, 1.3f, 1.5f, 1.99998f, halving[0], 2.0f, halving[1], 2.00002f, 2.5f, 5.0f, 10.0f})
      for (const RoiSize base : {RoiSize{8, 1}, {9, 23}, {40, 12}, {67, 5}})
        ASSERT_NO_FATAL_FAILURE(expectPyramidEqualsPlain(member, base, rate, ++seed));
    for (int width = 8; width <= 75; ++width)
      ASSERT_NO_FATAL_FAILURE(expectPyramidEqualsPlain(member, {width, 3}, width % 3 == 0 ? 3.7f : 2.0f, ++seed));
  });
}

// --- Numbers by hand -------------------------------------------------------------------------------------------------

template <class T>
std::vector<T> runRow(const Direction<T>& d, const std::vector<T>& src, int width, float rate, const Taps<T>& taps,
                      Status made = StatusOk) {
  const int size = static_cast<int>(src.size()), element = sizeof(T);
  const StatePtr state = make(d, {std::max({size, width, 12}), 1}, rate, taps, made);
  std::vector<T> dst(static_cast<size_t>(width));
  EXPECT_EQ(d.run(src.data(), size * element, {size, 1}, dst.data(), width * element, {width, 1}, state.get()),
            StatusOk);
  return dst;
}

using U8 = std::vector<uint8_t>;

TEST(PyramidLayer, OnlyTheLeftHalfOfAKernelCounts) {
  const U8 src = {0, 90, 18, 200, 255, 3, 77, 31, 9};
  for (const auto& [rate, width] : {std::pair{1.5f, 6}, {2.0f, 5}})
    EXPECT_EQ(runRow(kDown8u, src, width, rate, {1, 2, 3, 4, 5}, WarnKernelNotSymmetric),
              runRow(kDown8u, src, width, rate, {1, 2, 3, 2, 1}));
}

TEST(PyramidLayer, KernelsByHand) {
  const Taps<uint8_t> itself = {0, 1, 0};
  // Samples at 0, 1.5, 3: the mean of 20 and 31 is 25.5, of 21 and 30 25.5: ties go to the even number.
  EXPECT_EQ(runRow(kDown8u, {10, 20, 31, 40}, 3, 1.5f, itself), (U8{10, 26, 40}));
  EXPECT_EQ(runRow(kDown8u, {10, 20, 29, 40}, 3, 1.5f, itself), (U8{10, 24, 40}));
  EXPECT_EQ(runRow(kDown8u, {10, 20, 31, 40, 50}, 3, 2.0f, itself), (U8{10, 31, 50}));
  // Samples at 0, 2/3, 4/3, 2: the source ends there.
  EXPECT_EQ(runRow(kUp8u, {30, 60, 90}, 4, 1.5f, itself), (U8{30, 50, 70, 90}));
  EXPECT_EQ(runRow(kUp8u, {2, 5, 9}, 5, 2.0f, itself), (U8{2, 4, 5, 7, 9}))
      << "3.5 and 7.0: ties go to the even number";
  EXPECT_EQ(runRow(kUp8u, {2, 5}, 4, 2.0f, {0, 1, 0}), (U8{2, 4, 5, 5})) << "beyond the last pixel";
  // Mirrored ends: (20 + 2 10 + 20) / 4, (30 + 2 40 + 30) / 4
  EXPECT_EQ(runRow(kDown8u, {10, 20, 30, 40}, 3, 1.5f, {1, 2, 1}), (U8{15, 25, 35}));
  // 1 / 3 of 2^14 is 5461, halved 2730: 3 x 2730 / 8192 of 240 is 239.94, twice over.
  EXPECT_EQ(runRow(kDown8u, {240, 240, 240, 240}, 3, 1.5f, {1, 1, 1}), (U8{240, 240, 240}));
  // A sum of 0: 8192 is 1. The row filter gives 255 - 2 x 0 + 255 and so on, the single row's column filter 0.
  EXPECT_EQ(runRow(kDown8u, {0, 255, 0, 255}, 3, 1.5f, {-8192, 16384, -8192}), (U8{0, 0, 0}));
  // Beyond 16 bits: 5 / 1 of 2^13 becomes 32767, 3.9999 of 60 in the row and again across.
  EXPECT_EQ(runRow(kDown8u, {0, 0, 60, 0, 0}, 3, 2.0f, {-2, 5, -2}), (U8{0, 0, 0}));
  EXPECT_EQ(runRow(kDown32f, {1, 2, 4, 8, 16}, 3, 2.0f, {-1, 2, -1}), (std::vector<float>{0, 0, 0}))
      << "without a sum floats are kept: -1 + 2 - 1 of one row";
  // A sum of at most the smallest normal number is none.
  for (const float sign : {1.0f, -1.0f}) {
    const float quarter = sign * 0x1p-128f, half = sign * 0x1p-127f, more = nextafterf(half, sign);
    const std::vector<float> src(5, 0x1p127f);
    EXPECT_EQ(runRow(kDown32f, src, 3, 2.0f, {quarter, half, quarter}), std::vector<float>(3, 0x1p-125f));
    EXPECT_GT(runRow(kDown32f, src, 3, 2.0f, {quarter, more, quarter})[1], 0x1p126f);
  }
}

// --- Checks ----------------------------------------------------------------------------------------------------------

TEST(PyramidLayer, KernelsOfReductionsAreNarrowerThanTheImage) {
  forEachMember([]<class T>(const Member<T>& member) {
    EXPECT_EQ(make(member.down, {3, 9}, 2.0f, {1, 2, 1}, ErrSize), nullptr) << member.name;
    EXPECT_NE(make(member.down, {4, 9}, 2.0f, {1, 2, 1}), nullptr) << member.name;
  });
}

// Four times the product of the elements in a row and the rows that such a kernel meets is beyond 63 bits.
TEST(PyramidLayer, SizesOfHugeStatesDoNotWrap) {
  if (sizeof(void*) == 4) GTEST_SKIP() << "no room for the kernel";
  constexpr int kTaps = 395590001;
  const size_t bytes = sizeof(int16_t) * kTaps;
  void* taps = mmap(nullptr, bytes, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  ASSERT_NE(taps, MAP_FAILED);
  PyramidLayerState* state = nullptr;
  EXPECT_EQ(zvpiPyramidLayerUpInitAlloc_16u_C3R(&state, {INT32_MAX, INT32_MAX}, 2.0f, static_cast<const int16_t*>(taps),
                                                kTaps, kLinear),
            ErrNoMemory);
  munmap(taps, bytes);
}

TEST(PyramidLayer, WidthsMustFitEachOther) {
  const std::vector<uint8_t> src(400);
  std::vector<uint8_t> dst(400);
  const StatePtr state = make(kDown8u, {12, 10}, 2.0f, {1, 2, 1});
  const auto run = [&](const Direction<uint8_t>& d, RoiSize from, RoiSize to) {
    return d.run(src.data(), 20, from, dst.data(), 20, to, state.get());
  };
  EXPECT_EQ(run(kDown8u, {9, 7}, {5, 4}), StatusOk);
  for (const int width : {4, 6}) EXPECT_EQ(run(kDown8u, {9, 7}, {width, 4}), ErrSize);
  for (const int width : {10, 13}) EXPECT_EQ(run(kUp8u, {6, 5}, {width, 9}), ErrSize);
}

}  // namespace
}  // namespace zvp::test
