// Octave reduction and expansion against plain sums, their borders by hand, work memory.
#include <array>

#include "support/border.h"
#include "support/filter.h"
#include "support/pyramid.h"

namespace zvp::test {
namespace {

template <class T>
using Octave = Status (*)(const T*, int, T*, int, RoiSize, uint8_t*);

template <class T>
struct Member {
  const char* name;
  int channels;
  DataType type;
  Octave<T> down, up;
};

template <class Body>
void forEachMember(Body body) {
#define MEMBER(NAME, T, CHANNELS, TYPE) \
  body(Member<T>{#NAME, CHANNELS, TYPE, zvpiPyrDown_Gauss5x5_##NAME, zvpiPyrUp_Gauss5x5_##NAME})
  MEMBER(8u_C1R, uint8_t, 1, DataType8u);
  MEMBER(8u_C3R, uint8_t, 3, DataType8u);
  MEMBER(8s_C1R, int8_t, 1, DataType8s);
  MEMBER(8s_C3R, int8_t, 3, DataType8s);
  MEMBER(32f_C1R, float, 1, DataType32f);
  MEMBER(32f_C3R, float, 3, DataType32f);
#undef MEMBER
}

// The sum for result i along an axis of n; at(j) is the source's value j.
struct PlainDown {
  static constexpr int divisor = 256;
  static constexpr auto bufferSize = zvpiPyrDownGetBufSize_Gauss5x5;
  static int resultSize(int n) { return (n + 1) / 2; }

  template <class At>
  static auto sum(int i, int n, At at) {
    if (n < 3) return (at(0) + at(n - 1)) * 8;
    const auto tap = [&](int k) { return at(int(walkedInside(2 * i + k - 2, n, BorderReflect))); };
    return (((tap(0) + 4 * tap(1)) + 6 * tap(2)) + 4 * tap(3)) + tap(4);
  }
};

struct PlainUp {
  static constexpr int divisor = 64;
  static constexpr auto bufferSize = zvpiPyrUpGetBufSize_Gauss5x5;
  static int resultSize(int n) { return 2 * n; }

  template <class At>
  static auto sum(int i, int n, At at) {
    const int j = i / 2, next = std::min(j + 1, n - 1);
    if (i % 2 == 1 || n == 1) return 4 * at(j) + 4 * at(next);
    return (at(std::abs(j - 1)) + 6 * at(j)) + at(next);
  }
};

template <class Plain, class T>
T plainResult(const Image<T>& src, int channels, int y, int element) {
  using Sum = std::conditional_t<std::is_same_v<T, float>, float, int>;
  const auto rowSum = [&](int row) {
    const auto pixel = [&](int x) { return static_cast<Sum>(src.get(row, x * channels + element % channels)); };
    return Plain::sum(element / channels, src.width() / channels, pixel);
  };
  const Sum sum = Plain::sum(y, src.height(), rowSum);
  if constexpr (std::is_same_v<T, float>) return sum * (1.0f / Plain::divisor);
  return static_cast<T>(floor((sum + Plain::divisor / 2) / double{Plain::divisor}));
}

template <class Plain, class T>
void expectEqualsPlain(const Member<T>& member, Octave<T> function, RoiSize size, unsigned seed) {
  const Placement placement = kPlacements[seed % kPlacements.size()];
  const int gap = static_cast<int>(seed % 3 * sizeof(T));
  const Image<T> src(size.width * member.channels, size.height, gap, placement);
  const Image<T> dst(Plain::resultSize(size.width) * member.channels, Plain::resultSize(size.height), gap, placement);
  src.fill(FiniteValues<T>(seed));
  int bytes = 0;
  ASSERT_EQ(Plain::bufferSize(size.width, member.type, member.channels, &bytes), StatusOk);
  const GuardedBlock buffer(static_cast<size_t>(bytes), {seed % 2 == 0, static_cast<int>(seed % 67)});
  ASSERT_EQ(function(src.data(), src.step(), dst.data(), dst.step(), size, buffer.start()), StatusOk);
  ASSERT_TRUE(matches(dst, [&](int y, int x) { return plainResult<Plain>(src, member.channels, y, x); }))
      << member.name;
}

TEST(PyramidOctave, EqualsThePlainSumsAtEverySize) {
  forEachMember([](const auto& member) {
    unsigned seed = 0;
    const auto expectBoth = [&](RoiSize size) {
      expectEqualsPlain<PlainDown>(member, member.down, size, ++seed);
      expectEqualsPlain<PlainUp>(member, member.up, size, seed);
    };
    for (int height = 1; height <= 7; ++height)
      for (int width = 1; width <= 21; ++width) ASSERT_NO_FATAL_FAILURE(expectBoth({width, height}));
    for (int width = 22; width <= 150; ++width)  // more than two registers of results in the widest build
      ASSERT_NO_FATAL_FAILURE(expectBoth({width, 3 + width % 3}));
    ASSERT_NO_FATAL_FAILURE(expectBoth({5, 40}));
  });
}

template <class T>
std::vector<T> run(Octave<T> function, const std::vector<T>& src, RoiSize size, RoiSize result) {
  std::vector<T> dst(static_cast<size_t>(result.width * result.height));
  std::vector<uint8_t> buffer(4096);
  const int pixel = sizeof(T);
  EXPECT_EQ(function(src.data(), size.width * pixel, dst.data(), result.width * pixel, size, buffer.data()), StatusOk);
  return dst;
}

using U8 = std::vector<uint8_t>;
using S8 = std::vector<int8_t>;
using F32 = std::vector<float>;

TEST(PyramidOctave, ReductionMirrorsOnAllSides) {
  const auto down = zvpiPyrDown_Gauss5x5_8u_C1R;
  // 6 10 + 8 20 + 2 30 = 280; 10 + 80 + 180 + 160 + 50 = 480; 6 50 + 8 40 + 2 30 = 680; each x 16 / 256
  EXPECT_EQ(run(down, U8{10, 20, 30, 40, 50}, {5, 1}, {3, 1}), (U8{18, 30, 43}));
  EXPECT_EQ(run(down, U8{10, 20, 30, 40, 50}, {1, 5}, {1, 3}), (U8{18, 30, 43}));
  EXPECT_EQ(run(down, U8{10, 21}, {2, 1}, {1, 1}), U8{16}) << "a half is rounded up";
}

TEST(PyramidOctave, ExpansionMirrorsBeforeAndRepeatsAfter) {
  const auto up = zvpiPyrUp_Gauss5x5_8u_C1R;
  EXPECT_EQ(run(up, U8{0, 255}, {2, 1}, {4, 2}), (U8{64, 128, 223, 255, 64, 128, 223, 255}));
  EXPECT_EQ(run(up, U8{0, 255}, {1, 2}, {2, 4}), (U8{64, 64, 128, 128, 223, 223, 255, 255}));
  // Between 8 and 64: (6 8 + 2 64) / 8, (8 + 64) / 2, (8 + 7 64) / 8, 64
  EXPECT_EQ(run(up, U8{8, 64}, {2, 1}, {4, 2}), (U8{22, 36, 57, 64, 22, 36, 57, 64}));
}

TEST(PyramidOctave, SignedResultsAreRoundedDown) {
  const auto down = zvpiPyrDown_Gauss5x5_8s_C1R, up = zvpiPyrUp_Gauss5x5_8s_C1R;
  EXPECT_EQ(run(down, S8{-1, -2}, {2, 1}, {1, 1}), S8{-1}) << "-1.5 + 0.5";
  EXPECT_EQ(run(down, S8{-2, -3, -3, -3}, {2, 2}, {1, 1}), S8{-3}) << "-2.75 + 0.5 = -2.25";
  EXPECT_EQ(run(down, S8{-128}, {1, 1}, {1, 1}), S8{-128});
  EXPECT_EQ(run(up, S8{-1, -2}, {2, 1}, {4, 2}), (S8{-1, -1, -2, -2, -1, -1, -2, -2})) << "-1.25, -1.5, -1.875, -2";
}

TEST(PyramidOctave, BufferSizes) {
  const auto down = PlainDown::bufferSize, up = PlainUp::bufferSize;
  for (const auto& [width, channels, downSize, upSize] :
       {std::array{1, 1, 160, 112}, {4, 1, 160, 160}, {5, 1, 256, 208}, {640, 3, 46144, 46144}})
    for (const DataType type : {DataType8u, DataType8s, DataType32f}) {
      int size = 0;
      EXPECT_EQ(down(width, type, channels, &size), StatusOk);
      EXPECT_EQ(size, downSize) << width;
      EXPECT_EQ(up(width, type, channels, &size), StatusOk);
      EXPECT_EQ(size, upSize) << width;
    }
}

}  // namespace
}  // namespace zvp::test
