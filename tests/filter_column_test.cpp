// Column filters against a plain loop, their tails, and their checks.
#include "support/filter.h"

namespace zvp::test {
namespace {

template <class T, class Out, class Tap>
struct ColumnArguments {
  const T** src;
  Out* dst;
  int dstStep;
  RoiSize roi;
  const Tap* kernel;
  int kernelSize;
  uint8_t* buffer;
  int divisor = 1;
};

template <class T, class Out, class Tap, class... Rest>
auto columnMember(const char* name, Status (*f)(const T**, Out*, int, RoiSize, const Tap*, int, Rest...),
                  Status (*bufferSize)(RoiSize, int, int*)) {
  using Arguments = ColumnArguments<T, Out, Tap>;
  const auto filter = [f](const Arguments& a) {
    if constexpr (std::is_same_v<Tap, float>) {
      return f(a.src, a.dst, a.dstStep, a.roi, a.kernel, a.kernelSize, a.buffer);
    } else {
      return f(a.src, a.dst, a.dstStep, a.roi, a.kernel, a.kernelSize, a.divisor, a.buffer);
    }
  };
  return FilterMember<T, Out, Tap, Arguments>{name, bufferSize, filter};
}

#define ZVP_COLUMN_MEMBER(name) \
  columnMember(#name, zvpiFilterColumnPipeline_##name, zvpiFilterColumnPipelineGetBufferSize_##name)

template <class Body>
void forEachMember(Body body) {
  body(ZVP_COLUMN_MEMBER(16s_C1R));
  body(ZVP_COLUMN_MEMBER(16s_C3R));
  body(ZVP_COLUMN_MEMBER(16s8u_C1R));
  body(ZVP_COLUMN_MEMBER(16s8u_C3R));
  body(ZVP_COLUMN_MEMBER(16s8s_C1R));
  body(ZVP_COLUMN_MEMBER(16s8s_C3R));
  body(ZVP_COLUMN_MEMBER(Low_16s_C1R));
  body(ZVP_COLUMN_MEMBER(Low_16s_C3R));
  body(ZVP_COLUMN_MEMBER(32f_C1R));
  body(ZVP_COLUMN_MEMBER(32f_C3R));
}

struct Settings {
  int width, height;
  int kernelSize;
  int divisor;
  Strength strength;
};

// Values of which many sums stay inside the output's range.
template <class T>
T pixelValue(std::mt19937& engine, bool small) {
  const auto bits = static_cast<int32_t>(engine());
  if constexpr (std::is_same_v<T, float>) {
    return static_cast<float>(bits) / 1e6f;
  } else {
    return static_cast<T>(small ? bits % 100 : bits);
  }
}

// The rows lie at odd distances, some of them stand twice in the array; work memory of exactly the reported size.
template <class Member>
void expectEqualsPlain(const Member& member, const Settings& s, unsigned seed) {
  using T = typename Member::T;
  using Out = typename Member::Out;
  const Placement placement = somePlacement(static_cast<int>(seed));
  const RoiSize roi{s.width, s.height};
  const int elements = s.width * member.channels(), count = s.height + s.kernelSize - 1;
  std::mt19937 engine(seed);
  const Image<T> memory(elements, count, static_cast<int>(seed % 3), placement);
  memory.fill([&] { return pixelValue<T>(engine, seed % 2 == 0); });
  std::vector<int> order;
  std::vector<const T*> rows;
  for (int y = 0; y < count; ++y) {
    order.push_back(static_cast<int>(engine() % static_cast<unsigned>(count)));
    rows.push_back(memory.address(order.back()));
  }
  const Image<Out> dst(elements, s.height, static_cast<int>(seed % 2 * sizeof(Out)), placement);
  const auto taps = tapsFor<typename Member::Tap>(seed, s.kernelSize, s.strength);
  const GuardedBlock buffer = member.work(roi, s.kernelSize, placement);
  const Frozen frozen(memory);
  ASSERT_EQ(
      member.filter({rows.data(), dst.data(), dst.step(), roi, taps.data(), s.kernelSize, buffer.start(), s.divisor}),
      StatusOk);
  ASSERT_TRUE(matches(dst,
                      [&](int y, int x) {
                        const bool isTail = !member.isLow() && x >= elements / 4 * 4;
                        const auto pixel = [&](int i) { return memory.get(order[static_cast<size_t>(y + i)], x); };
                        return plainOutput<Out>(taps, s.divisor, member.isLow(), isTail, pixel);
                      }))
      << member.name << ": " << s.kernelSize << " taps, divisor " << s.divisor;
}

TEST(FilterColumn, EqualsThePlainLoopAtEveryWidth) {
  forEachMember([](const auto& member) {
    unsigned seed = 0;
    for (int width = 1; width <= 140; ++width) {
      for (const int k : kKernelSizes) {
        const int height = static_cast<int>(1 + ++seed % 3), divisor = kDivisors[seed % std::size(kDivisors)];
        const Settings s{width, height, k, divisor, kStrengths[seed / 2 % 3]};
        ASSERT_NO_FATAL_FAILURE(expectEqualsPlain(member, s, seed));
      }
    }
    for (const int k : {3, 5, 9})  // rows that do not fit the caches together
      ASSERT_NO_FATAL_FAILURE(expectEqualsPlain(member, {10007, 3, k, 16, Strength::kWeak}, static_cast<unsigned>(k)));
  });
}

// One row of a member's outputs from rows of equal length.
template <class Member>
std::vector<int> filtered(const Member& member, const std::vector<std::vector<int16_t>>& source,
                          const std::vector<int16_t>& taps, int divisor) {
  std::vector<typename Member::Out> out(source[0].size());
  std::vector<const int16_t*> rows;
  for (const auto& row : source) rows.push_back(row.data());
  const int step = static_cast<int>(out.size() * sizeof out[0]), kernelSize = static_cast<int>(taps.size());
  const RoiSize roi{static_cast<int>(out.size()) / member.channels(), 1};
  const GuardedBlock buffer = member.work(roi, kernelSize, {});
  EXPECT_EQ(member.filter({rows.data(), out.data(), step, roi, taps.data(), kernelSize, buffer.start(), divisor}),
            StatusOk);
  return {out.begin(), out.end()};
}

using Values32 = std::vector<int>;

TEST(FilterColumn, HandComputedRows) {
  const auto c16 = ZVP_COLUMN_MEMBER(16s_C1R), low = ZVP_COLUMN_MEMBER(Low_16s_C1R);
  const auto c8u = ZVP_COLUMN_MEMBER(16s8u_C1R);
  const auto c8s = ZVP_COLUMN_MEMBER(16s8s_C1R);
  // Blocks of four round, the tail truncates.
  const std::vector<int16_t> row = {7, 7, 5, -7, 7, 7, -7};
  EXPECT_EQ(filtered(c16, {row}, {1}, 2), (Values32{4, 4, 2, -4, 3, 3, -3}));
  EXPECT_EQ(filtered(c8u, {row}, {1}, 2), (Values32{4, 4, 2, 0, 3, 3, 0}));
  EXPECT_EQ(filtered(c8s, {row}, {1}, 2), (Values32{4, 4, 2, -4, 3, 3, -3}));
  EXPECT_EQ(filtered(low, {row}, {1}, 2), (Values32{3, 3, 2, -4, 3, 3, -4})) << "floor, in every column";
  // Three pixels of three channels are nine values: one value is the tail, not three pixels.
  const std::vector<int16_t> nine(9, 7), twelve(12, 7);
  EXPECT_EQ(filtered(ZVP_COLUMN_MEMBER(16s_C3R), {nine}, {1}, 2), (Values32{4, 4, 4, 4, 4, 4, 4, 4, 3}));
  EXPECT_EQ(filtered(ZVP_COLUMN_MEMBER(16s8u_C3R), {twelve}, {1}, 2), Values32(12, 4));
}

// 513 x 32767 = 16809471 is no single-precision number: it becomes 16809472. Taps that add up to 65534 are summed
// exactly, those that add up to 65535 are not.
TEST(FilterColumn, StrongTapsAreSummedInSinglePrecision) {
  const std::vector<int16_t> values(5, 513), zeros(5, 0);
  const struct {
    std::vector<int16_t> taps;
    int divisor, expected;
  } cases[] = {
      {{32767, -32766, 1}, 1, 513},     {{32767, -32766, 2}, 1, 514},     {{32767, -32766, 1}, 2, 256},
      {{32767, -32766, 2}, 2, 257},  // 8404736 - 8404479 = 257, where 256.5 would become 256
      {{-32768, -32768, 0}, 1, -32768}, {{-32768, -32768, 0}, -1, 32767},
  };
  for (const auto& c : cases)
    EXPECT_EQ(filtered(ZVP_COLUMN_MEMBER(16s_C1R), {values, values, zeros}, c.taps, c.divisor),
              Values32(5, c.expected));
}

// The step of Low_16s_C3R need not hold a row: rows then overwrite each other's ends from the top to the bottom.
TEST(FilterColumnLow, ThreeChannelRowsMayOverlap) {
  constexpr int kWidth = 7, kHeight = 4, kValues = 3 * kWidth;
  int16_t source[kHeight][kValues];
  const int16_t *rows[kHeight], one = 1;
  std::vector<int16_t> expected(kValues + (kHeight - 1) * kWidth), out(expected.size());
  for (int y = 0; y < kHeight; ++y) {
    for (int x = 0; x < kValues; ++x)
      expected[static_cast<size_t>(y * kWidth + x)] = source[y][x] = static_cast<int16_t>(100 * y + x);
    rows[y] = source[y];
  }
  uint8_t buffer[1000];
  const RoiSize roi{kWidth, kHeight};
  EXPECT_EQ(zvpiFilterColumnPipeline_Low_16s_C3R(rows, out.data(), 2 * kWidth, roi, &one, 1, 1, buffer), StatusOk);
  EXPECT_EQ(out, expected);
}

TEST(FilterColumn, BufferSizesDependOnTheWidthOnly) {
  forEachMember([](const auto& member) {
    const int block = member.isLow() ? 8 : 4;
    const auto expected = [&](int width, int) {
      return member.kIsFloat ? 32 : 12 * member.channels() * ((width + block - 1) / block * block) + 64;
    };
    expectBufferSizes(member, expected);
  });
}

}  // namespace
}  // namespace zvp::test
