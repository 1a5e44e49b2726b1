// Layers: states, reduction and expansion against plain filters, hand-computed examples, checks, failed allocations.
#include <memory>

#include "support/allocator.h"
#include "support/checks.h"
#include "support/filter.h"
#include "zvpcv/pyramid.h"

namespace zvp::test {
namespace {

constexpr int kLinear = 2;

template <class T>
using TapOf = std::conditional_t<std::is_same_v<T, float>, float, int16_t>;
template <class T>
using InitAlloc = Status (*)(PyramidLayerState**, RoiSize, float, const TapOf<T>*, int, int);
template <class T>
using Layer = Status (*)(const T*, int, RoiSize, T*, int, RoiSize, PyramidLayerState*);
using Free = Status (*)(PyramidLayerState*);

template <class T>
struct Direction {
  InitAlloc<T> init;
  Layer<T> run;
  Free free;
  bool isDown;
};

template <class T>
struct Member {
  const char* name;
  int channels;
  Direction<T> down, up;
};

template <class Body>
void forEachMember(Body body) {
#define DIRECTION(DOWN_OR_UP, NAME, isDown)                                               \
  {zvpiPyramidLayer##DOWN_OR_UP##InitAlloc_##NAME, zvpiPyramidLayer##DOWN_OR_UP##_##NAME, \
   zvpiPyramidLayer##DOWN_OR_UP##Free_##NAME, isDown}
#define MEMBER(NAME, T, CHANNELS) \
  body(Member<T>{#NAME, CHANNELS, DIRECTION(Down, NAME, true), DIRECTION(Up, NAME, false)})
  MEMBER(8u_C1R, uint8_t, 1);
  MEMBER(8u_C3R, uint8_t, 3);
  MEMBER(16u_C1R, uint16_t, 1);
  MEMBER(16u_C3R, uint16_t, 3);
  MEMBER(32f_C1R, float, 1);
  MEMBER(32f_C3R, float, 3);
#undef MEMBER
#undef DIRECTION
}

template <class T>
using Taps = std::vector<TapOf<T>>;
using StatePtr = std::unique_ptr<PyramidLayerState, Free>;

template <class T>
StatePtr make(const Direction<T>& d, RoiSize base, float rate, const Taps<T>& taps, Status expected = StatusOk) {
  PyramidLayerState* state = nullptr;
  EXPECT_EQ(d.init(&state, base, rate, taps.data(), static_cast<int>(taps.size()), kLinear), expected);
  return {state, d.free};
}

std::vector<float> normalised(const std::vector<float>& taps) {
  const size_t c = taps.size() / 2;
  float left = 0;
  for (size_t i = 0; i < c; ++i) left += taps[i];
  const float sum = taps[c] + 2 * left;
  std::vector<float> result(taps.size());
  for (size_t i = 0; i <= c; ++i)
    result[i] = result[taps.size() - 1 - i] = fabsf(sum) <= 1.1754944e-38f ? taps[i] : taps[i] / sum;
  return result;
}

std::vector<float> normalised(const std::vector<int16_t>& taps) {
  const size_t c = taps.size() / 2;
  int sum = taps[c];
  for (size_t i = 0; i < c; ++i) sum += 2 * taps[i];
  std::vector<float> result(taps.size());
  for (size_t i = 0; i <= c; ++i) {
    const int fixed = sum == 0 ? taps[i] : static_cast<int>(floor(trunc(taps[i] * 16384.0 / sum) / 2));
    result[i] = result[taps.size() - 1 - i] = static_cast<float>(std::clamp(fixed, -32768, 32767)) / 8192.0f;
  }
  return result;
}

int mirrored(int i, int n) {
  if (n == 1) return 0;
  while (i < 0 || i >= n) i = i < 0 ? -i : 2 * (n - 1) - i;
  return i;
}

// One channel as rows of floats.
struct Plane {
  int width, height;
  std::vector<float> v;

  Plane(int w, int h) : width(w), height(h), v(static_cast<size_t>(w * h)) {}
  float& at(int x, int y) { return v[static_cast<size_t>(y * width + x)]; }
  float at(int x, int y) const { return v[static_cast<size_t>(y * width + x)]; }

  Plane transposed() const {
    Plane t(height, width);
    for (int y = 0; y < height; ++y)
      for (int x = 0; x < width; ++x) t.at(y, x) = at(x, y);
    return t;
  }
};

Plane filterRows(const Plane& p, const std::vector<float>& taps) {
  Plane out(p.width, p.height);
  const int size = static_cast<int>(taps.size());
  for (int y = 0; y < p.height; ++y)
    for (int x = 0; x < p.width; ++x)
      out.at(x, y) = plainFloat(taps, [&](int k) { return p.at(mirrored(x + k - size / 2, p.width), y); });
  return out;
}

template <class Position>
Plane sampleRows(const Plane& p, int width, Position position) {
  Plane out(width, p.height);
  for (int x = 0; x < width; ++x) {
    const float at = position(x);
    const int i = static_cast<int>(at);
    const float t = at - static_cast<float>(i);
    for (int y = 0; y < p.height; ++y) {
      const float second = i + 1 < p.width ? t * p.at(i + 1, y) : 0.0f,
                  first = (1 - t) * p.at(std::min(i, p.width - 1), y);
      out.at(x, y) = i + 1 < p.width ? second + first : p.at(p.width - 1, y);
    }
  }
  return out;
}

Plane plainLayer(const Plane& src, RoiSize result, float rate, const std::vector<float>& taps, bool isDown) {
  const auto multiple = [rate](int x) { return rate * static_cast<float>(x); };
  const auto fraction = [rate](int x) { return static_cast<float>(x) / rate; };
  if (!isDown) {
    const Plane rows = filterRows(sampleRows(src, result.width, fraction), taps).transposed();
    return filterRows(sampleRows(rows, result.height, fraction), taps).transposed();
  }
  const Plane filtered = filterRows(filterRows(src, taps).transposed(), taps).transposed();
  if (rate > 1.99998f && rate < 2.00002f) {
    Plane out(result.width, result.height);
    for (int y = 0; y < result.height; ++y)
      for (int x = 0; x < result.width; ++x)
        out.at(x, y) = filtered.at(std::min(2 * x, src.width - 1), std::min(2 * y, src.height - 1));
    return out;
  }
  return sampleRows(sampleRows(filtered, result.width, multiple).transposed(), result.height, multiple).transposed();
}

template <class T>
T rounded(float value) {
  if constexpr (std::is_same_v<T, float>) {
    return value;
  } else {
    return static_cast<T>(nearbyintf(fminf(fmaxf(value, 0.0f), std::numeric_limits<T>::max())));
  }
}

template <class T>
void expectEqualsPlain(const Member<T>& member, const Direction<T>& direction, PyramidLayerState* state,
                       const Taps<T>& taps, RoiSize size, RoiSize result, float rate, unsigned seed) {
  const Placement placement = kPlacements[seed % kPlacements.size()];
  const int gap = static_cast<int>(seed % 3 * sizeof(T));
  const Image<T> src(size.width * member.channels, size.height, gap, placement);
  const Image<T> dst(result.width * member.channels, result.height, gap, placement);
  src.fill(FiniteValues<T>(seed));
  ASSERT_EQ(direction.run(src.data(), src.step(), size, dst.data(), dst.step(), result, state), StatusOk);
  std::vector<Plane> expected;
  for (int c = 0; c < member.channels; ++c) {
    Plane plane(size.width, size.height);
    for (int y = 0; y < size.height; ++y)
      for (int x = 0; x < size.width; ++x) plane.at(x, y) = static_cast<float>(src.get(y, x * member.channels + c));
    expected.push_back(plainLayer(plane, result, rate, normalised(taps), direction.isDown));
  }
  ASSERT_TRUE(matches(dst,
                      [&](int y, int x) {
                        return rounded<T>(
                            expected[static_cast<size_t>(x % member.channels)].at(x / member.channels, y));
                      }))
      << member.name << " " << (direction.isDown ? "down" : "up") << " from " << size.width << "x" << size.height
      << " at rate " << rate;
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
    ASSERT_NO_FATAL_FAILURE(expectEqualsPlain(member, member.down, down.get(), taps, size, next, rate, ++seed));
    ASSERT_NO_FATAL_FAILURE(expectEqualsPlain(member, member.up, up.get(), taps, next, size, rate, ++seed));
    ASSERT_NO_FATAL_FAILURE(expectEqualsPlain(member, member.up, down.get(), taps, next, least, rate, ++seed))
        << "the other direction's state";
  }
}

TEST(PyramidLayer, EqualsThePlainFiltersOnEveryLevel) {
  forEachMember([](const auto& member) {
    unsigned seed = 0;
    for (const float rate : {1.05f, 1.3f, 1.5f, 1.99997f, 2.0f, 2.5f, 5.0f, 10.0f})
      for (const RoiSize base : {RoiSize{8, 1}, {9, 23}, {40, 12}, {67, 5}})
        ASSERT_NO_FATAL_FAILURE(expectPyramidEqualsPlain(member, base, rate, ++seed));
    for (int width = 8; width <= 75; ++width)
      ASSERT_NO_FATAL_FAILURE(expectPyramidEqualsPlain(member, {width, 3}, width % 2 == 0 ? 2.0f : 3.7f, ++seed));
  });
}

using U8 = std::vector<uint8_t>;
using Taps16 = std::vector<int16_t>;

const Direction<uint8_t> kDown8u = {zvpiPyramidLayerDownInitAlloc_8u_C1R, zvpiPyramidLayerDown_8u_C1R,
                                    zvpiPyramidLayerDownFree_8u_C1R, true};
const Direction<uint8_t> kUp8u = {zvpiPyramidLayerUpInitAlloc_8u_C1R, zvpiPyramidLayerUp_8u_C1R,
                                  zvpiPyramidLayerUpFree_8u_C1R, false};

U8 runRow(const Direction<uint8_t>& d, const U8& src, int width, float rate, const Taps16& taps,
          Status made = StatusOk) {
  const int size = static_cast<int>(src.size());
  const StatePtr state = make(d, {std::max({size, width, 12}), 1}, rate, taps, made);
  U8 dst(static_cast<size_t>(width));
  EXPECT_EQ(d.run(src.data(), size, {size, 1}, dst.data(), width, {width, 1}, state.get()), StatusOk);
  return dst;
}

TEST(PyramidLayer, OnlyTheLeftHalfOfAKernelCounts) {
  const U8 src = {0, 90, 18, 200, 255, 3, 77, 31, 9};
  for (const float rate : {1.5f, 2.0f}) {
    const U8 symmetric = runRow(kDown8u, src, rate == 2.0f ? 5 : 6, rate, {1, 2, 3, 2, 1});
    EXPECT_EQ(runRow(kDown8u, src, rate == 2.0f ? 5 : 6, rate, {1, 2, 3, 4, 5}, WarnKernelNotSymmetric), symmetric);
  }
}

TEST(PyramidLayer, KernelsByHand) {
  const Taps16 itself = {0, 1, 0};
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
}

TEST(PyramidLayer, FloatKernelsWithoutASumAreKept) {
  const float taps[] = {-1, 2, -1}, src[] = {1, 2, 4, 8, 16};
  PyramidLayerState* state = nullptr;
  ASSERT_EQ(zvpiPyramidLayerDownInitAlloc_32f_C1R(&state, {5, 3}, 2.0f, taps, 3, kLinear), StatusOk);
  float dst[3];
  ASSERT_EQ(zvpiPyramidLayerDown_32f_C1R(src, 20, {5, 1}, dst, 12, {3, 1}, state), StatusOk);
  for (const float v : dst) EXPECT_EQ(v, 0.0f) << "-1 + 2 - 1 of one row";
  EXPECT_EQ(zvpiPyramidLayerDownFree_32f_C1R(state), StatusOk);
}

template <class T>
void expectInitChecks(const Direction<T>& d) {
  const Taps<T> taps = {1, 2, 1};
  auto* const untouched = reinterpret_cast<PyramidLayerState*>(&failAllocation);
  PyramidLayerState* state = untouched;
  const auto init = [&](RoiSize roi, float rate, int size, int mode) {
    return d.init(&state, roi, rate, taps.data(), size, mode);
  };
  EXPECT_EQ(d.init(nullptr, {0, 0}, 0, taps.data(), 0, 0), ErrNullPtr);
  EXPECT_EQ(d.init(&state, {0, 0}, 0, nullptr, 0, 0), ErrNullPtr);
  EXPECT_EQ(init({0, 9}, 0, 0, 0), ErrSize);
  EXPECT_EQ(init({9, 0}, 0, 0, 0), ErrSize);
  EXPECT_EQ(init({3, 9}, 0, 3, 0), d.isDown ? ErrSize : ErrBadArg) << "the kernel is as wide as the image";
  EXPECT_EQ(init({9, 9}, 2, 3, 1), ErrBadArg);
  for (const float rate : {1.0f, 10.1f, -2.0f, nanf("")}) EXPECT_EQ(init({9, 9}, rate, 3, kLinear), ErrBadArg);
  for (const int size : {1, 0, -3, 2}) EXPECT_EQ(init({9, 9}, 2, size, kLinear), ErrBadArg);
  EXPECT_EQ(init({INT32_MAX, INT32_MAX}, 2, 3, kLinear), ErrNoMemory);
  EXPECT_EQ(init({1, 1}, 2, INT32_MAX, kLinear), d.isDown ? ErrSize : ErrNoMemory);
  failAllocation(1);
  EXPECT_EQ(init({9, 9}, 2, 3, kLinear), ErrNoMemory);
  failAllocation(0);
  EXPECT_EQ(state, untouched);
  EXPECT_EQ(liveAllocations(), 0);
  EXPECT_EQ(init({4, 1}, 10, 3, kLinear), StatusOk);
  EXPECT_EQ(liveAllocations(), 1);
  EXPECT_EQ(d.free(state), StatusOk);
  EXPECT_EQ(liveAllocations(), 0);
  EXPECT_EQ(d.free(nullptr), ErrNullPtr);
}

template <class T>
void expectLayerChecks(const Member<T>& member, const Direction<T>& d, RoiSize size, RoiSize result) {
  const RoiSize base{std::max(size.width, result.width), std::max(size.height, result.height)};
  const StatePtr state = make(d, base, 2.0f, {1, 2, 1});
  const Image<T> src(size.width * member.channels, size.height), dst(result.width * member.channels, result.height);
  const auto before = dst.bytes();
  const int element = sizeof(T);
  expectStandardChecks({member.name,
                        {{src.data(), src.step(), element}, {dst.data(), dst.step(), element}},
                        {state.get()},
                        size,
                        [&](const auto& o, const auto& others, RoiSize s) {
                          return d.run(static_cast<const T*>(o[0].data), o[0].step, s,
                                       static_cast<T*>(const_cast<void*>(o[1].data)), o[1].step, result,
                                       static_cast<PyramidLayerState*>(const_cast<void*>(others[0])));
                        }});
  const auto run = [&](RoiSize from, RoiSize to) {
    return d.run(src.data(), src.step(), from, dst.data(), dst.step(), to, state.get());
  };
  for (const RoiSize other :
       {RoiSize{result.width - 1, result.height}, {result.width, result.height - 1}, {0, 0}, {-1, -1}})
    EXPECT_EQ(run(size, d.isDown ? other : RoiSize{other.width - 1, other.height - 1}), ErrSize);
  EXPECT_EQ(run({size.width, size.height + 2}, result), ErrSize) << "no image of that size, or larger than the state";
  EXPECT_EQ(dst.bytes(), before);

  PyramidLayerState* other = nullptr;
  const float taps[] = {1, 2, 1};
  ASSERT_EQ(member.channels == 1 ? zvpiPyramidLayerDownInitAlloc_32f_C3R(&other, base, 2, taps, 3, kLinear)
                                 : zvpiPyramidLayerDownInitAlloc_32f_C1R(&other, base, 2, taps, 3, kLinear),
            StatusOk);
  EXPECT_EQ(d.run(src.data(), src.step(), size, dst.data(), dst.step(), {0, 0}, other), ErrBadArg);
  EXPECT_EQ(d.free(other), StatusOk);
}

TEST(PyramidLayer, ChecksInOrderAndWritesNothing) {
  forEachMember([](const auto& member) {
    SCOPED_TRACE(member.name);
    expectInitChecks(member.down);
    expectInitChecks(member.up);
    expectLayerChecks(member, member.down, {6, 6}, {3, 3});
    expectLayerChecks(member, member.up, {3, 3}, {6, 6});
  });
}

TEST(PyramidLayer, SizesMustFitTheState) {
  const U8 src(400), taps8(1);
  U8 dst(400);
  const StatePtr state = make(kDown8u, {12, 10}, 2.0f, {1, 2, 1});
  EXPECT_EQ(zvpiPyramidLayerDown_8u_C1R(src.data(), 20, {12, 10}, dst.data(), 20, {6, 5}, state.get()), StatusOk);
  EXPECT_EQ(zvpiPyramidLayerDown_8u_C1R(src.data(), 20, {14, 10}, dst.data(), 20, {7, 5}, state.get()), ErrSize);
  EXPECT_EQ(zvpiPyramidLayerDown_8u_C1R(src.data(), 20, {12, 12}, dst.data(), 20, {6, 6}, state.get()), ErrSize);
  EXPECT_EQ(zvpiPyramidLayerDown_8u_C1R(src.data(), 20, {9, 7}, dst.data(), 20, {5, 4}, state.get()), StatusOk)
      << "a size that is not one of the pyramid's own";
  EXPECT_EQ(zvpiPyramidLayerDown_8u_C1R(src.data(), 20, {1, 1}, dst.data(), 20, {1, 1}, state.get()), StatusOk);
  EXPECT_EQ(zvpiPyramidLayerUp_8u_C1R(src.data(), 20, {6, 5}, dst.data(), 20, {11, 9}, state.get()), StatusOk);
  EXPECT_EQ(zvpiPyramidLayerUp_8u_C1R(src.data(), 20, {6, 5}, dst.data(), 20, {10, 9}, state.get()), ErrSize);
  EXPECT_EQ(zvpiPyramidLayerUp_8u_C1R(src.data(), 20, {6, 5}, dst.data(), 20, {13, 10}, state.get()), ErrSize);
  EXPECT_EQ(zvpiPyramidLayerUp_8u_C1R(src.data(), 20, {7, 5}, dst.data(), 20, {14, 10}, state.get()), ErrSize)
      << "larger than the state";
}

}  // namespace
}  // namespace zvp::test
