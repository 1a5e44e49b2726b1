// Row filters against a plain loop, their border outputs, and their checks.
#include "support/filter.h"

#include "support/border.h"

namespace zvp::test {
namespace {

template <class T, class Out, class Tap>
struct RowArguments {
  const T* src;
  int srcStep;
  Out** dst;
  RoiSize roi;
  const Tap* kernel;
  int kernelSize, xAnchor;
  BorderType borderType;
  const T* borderValue;
  uint8_t* buffer;
  int divisor = 1;
};

template <class T, class Out, class Tap, class Value, class... Rest>
auto rowMember(const char* name,
               Status (*f)(const T*, int, Out**, RoiSize, const Tap*, int, int, BorderType, Value, Rest...),
               Status (*bufferSize)(RoiSize, int, int*)) {
  using Arguments = RowArguments<T, Out, Tap>;
  const auto filter = [f](const Arguments& a) {
    const auto with = [&](Value value) {
      const auto last = [&](auto... rest) {
        return f(a.src, a.srcStep, a.dst, a.roi, a.kernel, a.kernelSize, a.xAnchor, a.borderType, value, rest...);
      };
      if constexpr (std::is_same_v<Tap, float>) {
        return last(a.buffer);
      } else {
        return last(a.divisor, a.buffer);
      }
    };
    if constexpr (std::is_pointer_v<Value>) {
      return with(a.borderValue);
    } else {
      return with(*a.borderValue);
    }
  };
  return FilterMember<T, Out, Tap, Arguments>{name, bufferSize, filter};
}

#define ZVP_ROW_MEMBER(name) \
  rowMember(#name, zvpiFilterRowBorderPipeline_##name, zvpiFilterRowBorderPipelineGetBufferSize_##name)

template <class Body>
void forEachMember(Body body) {
  body(ZVP_ROW_MEMBER(16s_C1R));
  body(ZVP_ROW_MEMBER(16s_C3R));
  body(ZVP_ROW_MEMBER(Low_16s_C1R));
  body(ZVP_ROW_MEMBER(Low_16s_C3R));
  body(ZVP_ROW_MEMBER(8u16s_C1R));
  body(ZVP_ROW_MEMBER(8u16s_C3R));
  body(ZVP_ROW_MEMBER(32f_C1R));
  body(ZVP_ROW_MEMBER(32f_C3R));
}

struct Settings {
  int width;
  int kernelSize, xAnchor;
  BorderType borderType;
  int divisor;
  Strength strength;
};

// Rows of the destination in an order of their own, work memory of exactly the reported size.
template <class Member>
void expectEqualsPlain(const Member& member, const Settings& s, unsigned seed) {
  using T = typename Member::T;
  using Out = typename Member::Out;
  const Placement placement = somePlacement(static_cast<int>(seed));
  const RoiSize roi{s.width, 2};
  const int channels = member.channels(), elements = s.width * channels;
  const Image<T> src(elements, roi.height, static_cast<int>(seed % 3 * sizeof(T)), placement);
  const Image<Out> dst(elements, roi.height, static_cast<int>(seed % 5), placement);
  src.fill(FiniteValues<T>(seed));
  const auto taps = tapsFor<typename Member::Tap>(seed, s.kernelSize, s.strength);
  const T borderValue[] = {T(7), T(201), T(-90)};
  Out* rows[] = {dst.address(1), dst.address(0)};
  const GuardedBlock buffer = member.work(roi, s.kernelSize, placement);
  const typename Member::Arguments arguments{src.data(),  src.step(),     rows,      roi,
                                             taps.data(), s.kernelSize,   s.xAnchor, s.borderType,
                                             borderValue, buffer.start(), s.divisor};
  const Frozen frozen(src);
  ASSERT_EQ(member.filter(arguments), StatusOk);
  ASSERT_TRUE(matches(dst,
                      [&](int y, int element) {
                        const int x = element / channels, c = element % channels, first = x - s.xAnchor;
                        const auto pixel = [&](int i) {
                          const int64_t from = walkedInside(first + i, s.width, s.borderType);
                          if (from == kNoPixel) return borderValue[c];
                          return src.get(roi.height - 1 - y, static_cast<int>(from) * channels + c);
                        };
                        const bool meetsBorder = first < 0 || first + s.kernelSize > s.width;
                        return plainOutput<Out>(taps, s.divisor, member.isLow(), meetsBorder, pixel);
                      }))
      << member.name << ": " << s.kernelSize << " taps, anchor " << s.xAnchor << ", border " << s.borderType
      << ", divisor " << s.divisor;
}

constexpr BorderType kModes[] = {BorderConstant, BorderReplicate, BorderWrap, BorderReflect, BorderReflectEdge};

TEST(FilterRow, EqualsThePlainLoopAtEveryWidth) {
  forEachMember([](const auto& member) {
    unsigned seed = 0;
    for (int width = 1; width <= 140; ++width) {
      for (const int k : kKernelSizes) {
        ++seed;
        const int anchor = static_cast<int>(seed * 7 % static_cast<unsigned>(k));
        const int divisor = kDivisors[seed / 2 % std::size(kDivisors)];
        const Settings s{width, k, anchor, kModes[seed % std::size(kModes)], divisor, kStrengths[seed / 3 % 3]};
        ASSERT_NO_FATAL_FAILURE(expectEqualsPlain(member, s, seed));
      }
    }
  });
}

TEST(FilterRow, EqualsThePlainLoopForEveryAnchorAndBorder) {
  forEachMember([](const auto& member) {
    unsigned seed = 0;
    for (const int width : {1, 2, 3, 10, 43})
      for (const int k : kKernelSizes)
        for (int anchor = 0; anchor < k; ++anchor)
          for (const BorderType mode : kModes) {
            const int divisor = kDivisors[++seed % std::size(kDivisors)];
            const Settings s{width, k, anchor, mode, divisor, kStrengths[seed % 3]};
            ASSERT_NO_FATAL_FAILURE(expectEqualsPlain(member, s, seed));
          }
  });
}

using Row = std::vector<int16_t>;

// One row of a 16s C1R member.
template <class Member>
Row filtered(const Member& member, const Row& row, const Row& taps, int anchor, BorderType mode, int16_t value,
             int divisor) {
  Row out(row.size());
  int16_t* rows[] = {out.data()};
  const RoiSize roi{static_cast<int>(row.size()), 1};
  const int kernelSize = static_cast<int>(taps.size());
  const GuardedBlock buffer = member.work(roi, kernelSize, {});
  EXPECT_EQ(member.filter({row.data(), 2 * roi.width, rows, roi, taps.data(), kernelSize, anchor, mode, &value,
                           buffer.start(), divisor}),
            StatusOk);
  return out;
}

TEST(FilterRow, InnerOutputsRoundAndBorderOutputsTruncate) {
  const struct {
    int16_t pixel;
    Row taps;
    int anchor, divisor;
    Row expected;
  } cases[] = {
      {7, {0, 1, 0}, 1, 2, {3, 4, 3}},
      {-7, {0, 1, 0}, 1, 2, {-3, -4, -3}},
      {5, {0, 1, 0}, 1, 2, {2, 2, 2}},  // 2.5 to even
      {7, {1, 0, 0}, 0, 2, {4, 3, 3}},  // anchor 0: no left border
      {7, {0, 0, 1}, 2, 2, {3, 3, 4}},  // last anchor: no right one
      {7, {0, 1, 0}, 1, 2, {3, 3}},     // nothing but borders
      {30000, {1, 1, 1}, 1, 2, {32767, 32767, 32767}},
      {30000, {1, 1, 1}, 1, -2, {-32768, -32768, -32768}},
  };
  for (const auto& c : cases) {
    const Row row(c.expected.size(), c.pixel);
    EXPECT_EQ(filtered(ZVP_ROW_MEMBER(16s_C1R), row, c.taps, c.anchor, BorderReplicate, 0, c.divisor), c.expected);
  }
}

// 255 x 129 is the first sum of bytes under positive taps that 16 bits do not hold.
TEST(FilterRow, SumsOfBytesJustBeyondSixteenBits) {
  const std::vector<uint8_t> row(40, UINT8_MAX);
  const Row taps(3, 43);
  Row out(row.size());
  int16_t* rows[] = {out.data()};
  const RoiSize roi{static_cast<int>(row.size()), 1};
  uint8_t buffer[36 * 3 + 144];
  ASSERT_EQ(zvpiFilterRowBorderPipeline_8u16s_C1R(row.data(), roi.width, rows, roi, taps.data(), 3, 1, BorderReplicate,
                                                  0, 2, buffer),
            StatusOk);
  Row expected(row.size(), 16448);  // 16447.5 to even
  expected.front() = expected.back() = 16447;
  EXPECT_EQ(out, expected);
}

TEST(FilterRow, StopsAtANullRow) {
  forEachMember([]<class T, class Out, class Tap, class A>(const FilterMember<T, Out, Tap, A>& member) {
    SCOPED_TRACE(member.name);
    constexpr int kHeight = 4, kNullRow = 2;
    const int elements = 6 * member.channels();
    const Image<T> src(elements, kHeight);
    const Image<Out> dst(elements, kHeight);
    src.fill([] { return 1; });
    dst.fill([] { return 77; });
    std::vector<Out*> rows;
    for (int y = 0; y < kHeight; ++y) rows.push_back(y == kNullRow ? nullptr : dst.address(y));
    const Tap kernel[] = {1, 1, 1};
    const T value[] = {1, 2, 3};
    const GuardedBlock buffer = member.work({6, kHeight}, 3, {});
    A call{src.data(), src.step(), rows.data(), {6, kHeight}, kernel, 3, 1, BorderReplicate, value, buffer.start()};
    if (member.channels() == 3) call.borderValue = nullptr;
    EXPECT_EQ(member.filter(call), ErrNullPtr);
    EXPECT_TRUE(matches(dst, [](int y, int) { return y < kNullRow ? Out(3) : Out(77); }));
  });
}

TEST(FilterRow, BufferSizesDependOnTheKernelOnly) {
  const std::pair<int, int> perTapAndFixed[] = {{48, 112}, {40, 96},  {24, 96}, {208, 96},
                                                {36, 144}, {60, 144}, {64, 96}, {192, 64}};
  size_t i = 0;
  forEachMember([&](const auto& member) {
    const auto& [perTap, fixed] = perTapAndFixed[i++];
    expectBufferSizes(member, [a = perTap, b = fixed](int, int k) { return a * k + b; });
  });
}

}  // namespace
}  // namespace zvp::test
