// Row filters against a plain loop, their border outputs, and their checks.
#include <functional>
#include <memory>
#include <string>

#include "support/filter.h"
#include "zvpcv/filter.h"

namespace zvp::test {
namespace {

// Every member in one shape; the arguments of one call.
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
  int divisor;
  uint8_t* buffer;
};

template <class T, class Out, class Tap>
struct RowMember {
  std::string name;
  int channels;
  Kind kind;
  std::function<Status(const RowArguments<T, Out, Tap>&)> filter;
  Status (*bufferSize)(RoiSize, int, int*);
};

template <class T, class Value>
Value valueOf(const T* borderValue) {
  if constexpr (std::is_pointer_v<Value>) {
    return borderValue;
  } else {
    return *borderValue;
  }
}

#define INTEGER_MEMBER(member, channels, kind, T, Value)                                                         \
  RowMember<T, int16_t, int16_t> {                                                                               \
#member, channels, kind,                                                                                       \
        [](const RowArguments<T, int16_t, int16_t>& a) {                                                           \
          return zvpiFilterRowBorderPipeline_##member(a.src, a.srcStep, a.dst, a.roi, a.kernel, a.kernelSize,      \
                                                      a.xAnchor, a.borderType, valueOf<T, Value>(a.borderValue),   \
                                                      a.divisor, a.buffer);                                        \
        },                                                                                                         \
        zvpiFilterRowBorderPipelineGetBufferSize_##member \
  }
#define FLOAT_MEMBER(member, channels, Value)                                                                      \
  RowMember<float, float, float> {                                                                                 \
#member, channels, Kind::kFloat,                                                                                 \
        [](const RowArguments<float, float, float>& a) {                                                             \
          return zvpiFilterRowBorderPipeline_##member(a.src, a.srcStep, a.dst, a.roi, a.kernel, a.kernelSize,        \
                                                      a.xAnchor, a.borderType, valueOf<float, Value>(a.borderValue), \
                                                      a.buffer);                                                     \
        },                                                                                                           \
        zvpiFilterRowBorderPipelineGetBufferSize_##member \
  }

template <class Body>
void forEachMember(Body body) {
  body(INTEGER_MEMBER(16s_C1R, 1, Kind::kInteger, int16_t, int16_t));
  body(INTEGER_MEMBER(16s_C3R, 3, Kind::kInteger, int16_t, const int16_t*));
  body(INTEGER_MEMBER(Low_16s_C1R, 1, Kind::kLow, int16_t, int16_t));
  body(INTEGER_MEMBER(Low_16s_C3R, 3, Kind::kLow, int16_t, const int16_t*));
  body(INTEGER_MEMBER(8u16s_C1R, 1, Kind::kInteger, uint8_t, uint8_t));
  body(INTEGER_MEMBER(8u16s_C3R, 3, Kind::kInteger, uint8_t, const uint8_t*));
  body(FLOAT_MEMBER(32f_C1R, 1, float));
  body(FLOAT_MEMBER(32f_C3R, 3, const float*));
}

// The column that x reads, one step of the rule at a time; -1: the constant.
int borderColumn(int x, int width, BorderType mode) {
  while (x < 0 || x >= width) {
    const int last = width - 1;
    if (mode == BorderConstant) return -1;
    if (mode == BorderReplicate || width == 1) return x < 0 ? 0 : last;
    if (mode == BorderWrap) x += x < 0 ? width : -width;
    if (mode == BorderReflect) x = x < 0 ? -x : 2 * last - x;
    if (mode == BorderReflectEdge) x = x < 0 ? -1 - x : 2 * last + 1 - x;
  }
  return x;
}

struct Settings {
  int width;
  int kernelSize, xAnchor;
  BorderType borderType;
  int divisor;
  Strength strength;
};

template <class T, class Out, class Tap>
Out plainOutput(const RowMember<T, Out, Tap>& member, const Settings& s, const std::vector<Tap>& taps,
                const Image<T>& src, const T* borderValue, int y, int element) {
  const int channels = member.channels, x = element / channels, c = element % channels;
  const auto pixel = [&](int i) {
    const int from = borderColumn(x + i - s.xAnchor, s.width, s.borderType);
    return from < 0 ? borderValue[c] : src.get(y, from * channels + c);
  };
  const bool meetsBorder = x < s.xAnchor || x + s.kernelSize - 1 - s.xAnchor >= s.width;
  if constexpr (std::is_same_v<Tap, float>) {
    return plainFloat(taps, pixel);
  } else {
    return member.kind == Kind::kLow ? plainLow(taps, s.divisor, meetsBorder, pixel)
                                     : plainInteger<Out>(taps, s.divisor, meetsBorder, pixel);
  }
}

// Rows of the destination in an order of their own, work memory of exactly the reported size.
template <class T, class Out, class Tap>
void expectEqualsPlain(const RowMember<T, Out, Tap>& member, const Settings& s, unsigned seed) {
  constexpr int kHeight = 2;
  const Placement placement = kPlacements[seed % kPlacements.size()];
  const int elements = s.width * member.channels;
  const Image<T> src(elements, kHeight, static_cast<int>(seed % 3 * sizeof(T)), placement);
  const Image<Out> dst(elements, kHeight, static_cast<int>(seed % 5), placement);
  src.fill(FiniteValues<T>(seed));
  const std::vector<Tap> taps = tapsFor<Tap>(seed, s.kernelSize, s.strength);
  const T borderValue[] = {T(7), T(201), T(-90)};
  auto* lowest = reinterpret_cast<uint8_t*>(dst.data());
  Out* rows[] = {reinterpret_cast<Out*>(lowest + dst.step()), dst.data()};
  int size = 0;
  ASSERT_EQ(member.bufferSize({s.width, kHeight}, s.kernelSize, &size), StatusOk);
  const GuardedBlock buffer(static_cast<size_t>(size), placement);
  ASSERT_EQ(member.filter({src.data(),
                           src.step(),
                           rows,
                           {s.width, kHeight},
                           taps.data(),
                           s.kernelSize,
                           s.xAnchor,
                           s.borderType,
                           borderValue,
                           s.divisor,
                           buffer.start()}),
            StatusOk);
  ASSERT_TRUE(
      matches(dst, [&](int y, int x) { return plainOutput(member, s, taps, src, borderValue, kHeight - 1 - y, x); }))
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
        const Settings s{width,
                         k,
                         static_cast<int>(seed * 7 % static_cast<unsigned>(k)),
                         kModes[seed % std::size(kModes)],
                         kDivisors[seed / 2 % std::size(kDivisors)],
                         kStrengths[seed / 3 % std::size(kStrengths)]};
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
            ++seed;
            const Strength strength = kStrengths[seed % 3];
            ASSERT_NO_FATAL_FAILURE(expectEqualsPlain(
                member, {width, k, anchor, mode, kDivisors[seed % std::size(kDivisors)], strength}, seed));
          }
  });
}

TEST(FilterRow, EqualsThePlainLoopForEveryDivisor) {
  forEachMember([](const auto& member) {
    unsigned seed = 0;
    for (const int divisor : {1, -1, 2, 4, 8, 16, 32, 64, 128, 256, 512, -2, 3, 5, 6, 9, 100, 16384, 16385, 1 << 30})
      for (const int k : {2, 3, 5, 8})
        for (const Strength strength : kStrengths)
          ASSERT_NO_FATAL_FAILURE(expectEqualsPlain(member, {90, k, k / 2, BorderReflect, divisor, strength}, ++seed));
  });
}

// One row of the 16s C1R member.
std::vector<int16_t> filtered(const std::vector<int16_t>& row, const std::vector<int16_t>& taps, int anchor,
                              BorderType mode, int16_t value, int divisor) {
  std::vector<int16_t> out(row.size());
  int16_t* rows[] = {out.data()};
  std::vector<uint8_t> buffer(48 * taps.size() + 112);
  EXPECT_EQ(zvpiFilterRowBorderPipeline_16s_C1R(
                row.data(), static_cast<int>(row.size() * 2), rows, {static_cast<int>(row.size()), 1}, taps.data(),
                static_cast<int>(taps.size()), anchor, mode, value, divisor, buffer.data()),
            StatusOk);
  return out;
}

std::vector<int16_t> filteredLow(const std::vector<int16_t>& row, const std::vector<int16_t>& taps, int divisor) {
  std::vector<int16_t> out(row.size());
  int16_t* rows[] = {out.data()};
  std::vector<uint8_t> buffer(24 * taps.size() + 96);
  EXPECT_EQ(zvpiFilterRowBorderPipeline_Low_16s_C1R(row.data(), static_cast<int>(row.size() * 2), rows,
                                                    {static_cast<int>(row.size()), 1}, taps.data(),
                                                    static_cast<int>(taps.size()), static_cast<int>(taps.size()) - 1,
                                                    BorderConstant, 0, divisor, buffer.data()),
            StatusOk);
  return out;
}

using Row = std::vector<int16_t>;

TEST(FilterRow, ConstantBorderEntersTheSum) {
  EXPECT_EQ(filtered({10, 20, 30}, {1, 1, 1}, 1, BorderConstant, 7, 1), (Row{37, 60, 57}));
}

TEST(FilterRow, InnerOutputsRoundAndBorderOutputsTruncate) {
  EXPECT_EQ(filtered({7, 7, 7}, {0, 1, 0}, 1, BorderReplicate, 0, 2), (Row{3, 4, 3}));
  EXPECT_EQ(filtered({-7, -7, -7}, {0, 1, 0}, 1, BorderReplicate, 0, 2), (Row{-3, -4, -3}));
  EXPECT_EQ(filtered({5, 5, 5}, {0, 1, 0}, 1, BorderReplicate, 0, 2), (Row{2, 2, 2}));  // 2.5 to even
  EXPECT_EQ(filtered({7, 7, 7}, {1, 0, 0}, 0, BorderReplicate, 0, 2), (Row{4, 3, 3}));  // anchor 0: no left border
  EXPECT_EQ(filtered({7, 7, 7}, {0, 0, 1}, 2, BorderReplicate, 0, 2), (Row{3, 3, 4}));  // last anchor: no right one
  EXPECT_EQ(filtered({7, 7}, {0, 1, 0}, 1, BorderReplicate, 0, 2), (Row{3, 3}));        // nothing but borders
  EXPECT_EQ(filtered({30000, 30000, 30000}, {1, 1, 1}, 1, BorderReplicate, 0, 2), (Row{32767, 32767, 32767}));
  EXPECT_EQ(filtered({30000, 30000, 30000}, {1, 1, 1}, 1, BorderReplicate, 0, -2), (Row{-32768, -32768, -32768}));
}

TEST(FilterRow, ReflectionOfOnePixelRepeatsIt) {
  for (const BorderType mode : {BorderReplicate, BorderWrap, BorderReflect, BorderReflectEdge})
    EXPECT_EQ(filtered({9}, {1, 2, 3}, 1, mode, 0, 1), (Row{54}));
}

// 513 x 32767 = 16809471 is no single-precision number: it becomes 16809472. Taps that add up to 65534 are summed
// exactly, those that add up to 65535 are not.
TEST(FilterRow, StrongTapsAreSummedInSinglePrecision) {
  const Row row = {513, 513, 0, 513, 513, 0};  // outputs 0 and 3 are inner ones, output 5 meets the border
  EXPECT_EQ(filtered(row, {32767, -32766, 1}, 0, BorderWrap, 0, 1)[3], 513);
  EXPECT_EQ(filtered(row, {32767, -32766, 2}, 0, BorderWrap, 0, 1)[3], 514);
  EXPECT_EQ(filtered(row, {1, 32767, -32766}, 0, BorderWrap, 0, 1)[5], 513);
  EXPECT_EQ(filtered(row, {2, 32767, -32766}, 0, BorderWrap, 0, 1)[5], 514);
  // Far beyond 32 bits both ends saturate.
  const Row high(6, 32767);
  EXPECT_EQ(filtered(high, {32767, 32767, 32767, 32767}, 1, BorderReplicate, 0, 1), high);
  EXPECT_EQ(filtered(high, {32767, 32767, 32767, 32767}, 1, BorderReplicate, 0, -1), Row(6, -32768));
}

TEST(FilterRowLow, SumsWrapAndScalesHaveFourteenBits) {
  // Outputs: border (unsaturated), then inner (wrapped).
  EXPECT_EQ(filteredLow({20000, 20000, 20000}, {1, 1}, 1), (Row{20000, -25536, -25536}));
  // r = 5461: (300 x 5461) >> 14 = 99, not 100.
  EXPECT_EQ(filteredLow({300, 0, 300}, {0, 1}, 3), (Row{99, 0, 99}));
  // r = 8192. Inner: 40000 wraps to -25536, halved -12768. Border: 20000 x 2 / 2 keeps its 32 bits.
  EXPECT_EQ(filteredLow({20000, 20000}, {0, 2}, 2), (Row{20000, -12768}));
  // r = -16384. Inner: -32768 negated saturates. Border: it wraps.
  EXPECT_EQ(filteredLow({-32768, -32768}, {0, 1}, -1), (Row{-32768, 32767}));
  // Arithmetic shift: floor(-1 x 8192 / 16384) = -1.
  EXPECT_EQ(filteredLow({-1, -1}, {0, 1}, 2), (Row{-1, -1}));
}

TEST(FilterRow, ANullRowStopsAfterTheRowsBefore) {
  forEachMember([]<class T, class Out, class Tap>(const RowMember<T, Out, Tap>& member) {
    constexpr int kWidth = 5, kHeight = 4, kNullRow = 2;
    const Image<T> src(kWidth * member.channels, kHeight);
    src.fill([] { return 1; });
    const Image<Out> dst(kWidth * member.channels, kHeight);
    dst.fill([] { return 77; });
    std::vector<Out*> rows;
    for (int y = 0; y < kHeight; ++y) rows.push_back(dst.data() + y * kWidth * member.channels);
    rows[kNullRow] = nullptr;
    const Tap kernel[] = {Tap(1), Tap(1), Tap(1)};
    const T value[] = {1, 1, 1};
    std::vector<uint8_t> buffer(1000);
    EXPECT_EQ(member.filter({src.data(),
                             src.step(),
                             rows.data(),
                             {kWidth, kHeight},
                             kernel,
                             3,
                             1,
                             BorderReplicate,
                             value,
                             1,
                             buffer.data()}),
              ErrNullPtr);
    EXPECT_TRUE(matches(dst, [](int y, int) { return y < kNullRow ? Out(3) : Out(77); })) << member.name;
  });
}

// Every fault is planted together with all faults that later checks find.
template <class T, class Out, class Tap>
void expectRowChecks(const RowMember<T, Out, Tap>& member) {
  SCOPED_TRACE(member.name);
  const bool isFloat = member.kind == Kind::kFloat;
  const int elements = 6 * member.channels;
  const Image<T> src(elements, 2);
  const Image<Out> dst(elements, 2);
  Out* rows[] = {dst.data(), dst.data() + elements};
  const Tap kernel[] = {1, 2, 1};
  const T value[] = {1, 2, 3};
  const GuardedBlock buffer(1000, {});
  const auto before = dst.bytes(), bufferBefore = buffer.bytes();
  const RowArguments<T, Out, Tap> valid{src.data(), src.step(),      rows,  {6, 2},          kernel,        3,
                                        1,          BorderReplicate, value, isFloat ? 1 : 0, buffer.start()};

  auto badType = valid;  // the divisor is 0 already
  badType.borderType = 5;
  auto badMultiple = badType;
  badMultiple.srcStep += sizeof(T) > 1 ? 1 : 0;
  auto badStep = badMultiple;
  badStep.srcStep = src.step() - 1;
  auto badAnchor = badStep;
  badAnchor.xAnchor = 3;
  auto badKernelSize = badAnchor;
  badKernelSize.kernelSize = 0;
  auto badSize = badKernelSize;
  badSize.roi = {0, 0};

  const auto with = [&](auto arguments, auto change) {
    change(arguments);
    return member.filter(arguments);
  };
  EXPECT_EQ(with(badSize, [](auto& a) { a.src = nullptr; }), ErrNullPtr);
  EXPECT_EQ(with(badSize, [](auto& a) { a.dst = nullptr; }), ErrNullPtr);
  EXPECT_EQ(with(badSize, [](auto& a) { a.kernel = nullptr; }), ErrNullPtr);
  EXPECT_EQ(with(badSize, [](auto& a) { a.buffer = nullptr; }), ErrNullPtr);
  EXPECT_EQ(member.filter(badSize), ErrSize);
  EXPECT_EQ(with(badAnchor, [](auto& a) { a.roi = {6, 0}; }), ErrSize);
  EXPECT_EQ(with(badAnchor, [](auto& a) { a.roi = {-1, 2}; }), ErrSize);
  EXPECT_EQ(member.filter(badKernelSize), ErrSize);
  EXPECT_EQ(member.filter(badAnchor), ErrAnchor);
  EXPECT_EQ(with(badStep, [](auto& a) { a.xAnchor = -1; }), ErrAnchor);
  EXPECT_EQ(member.filter(badStep), ErrStep);
  EXPECT_EQ(with(badMultiple, [](auto& a) { a.srcStep = -a.srcStep; }), ErrStep);
  EXPECT_EQ(with(badMultiple, [](auto& a) { a.roi.width = INT32_MAX; }), ErrStep);
  EXPECT_EQ(member.filter(badMultiple), sizeof(T) > 1 ? ErrStepNotMultiple : ErrBadArg);
  for (const BorderType type : {5, 6, 7, -1, 15, 0x11, 0x41, 0xf0, 0x101})
    EXPECT_EQ(with(valid, [type](auto& a) { a.borderType = type; }), ErrBadArg) << type;
  if (member.channels == 3) {
    const auto noValue = [](auto& a) { a.borderValue = nullptr; };
    EXPECT_EQ(with(badType, noValue), ErrBadArg);
    auto constant = valid;
    constant.borderType = BorderConstant;
    EXPECT_EQ(with(constant, noValue), ErrNullPtr);
  }
  if (!isFloat) {
    EXPECT_EQ(member.filter(valid), ErrBadArg);
  }
  EXPECT_EQ(dst.bytes(), before);
  EXPECT_EQ(buffer.bytes(), bufferBefore);

  auto noValue = valid;
  noValue.divisor = 1;
  if (member.channels == 3) noValue.borderValue = nullptr;
  EXPECT_EQ(member.filter(noValue), StatusOk);
}

TEST(FilterRow, ChecksInOrderAndWritesNothing) {
  forEachMember([](const auto& member) { expectRowChecks(member); });
}

TEST(FilterRow, BufferSizesDependOnTheKernelOnly) {
  struct Expected {
    const char* name;
    int perTap, fixed;
  };
  const Expected expected[] = {{"16s_C1R", 48, 112},     {"16s_C3R", 40, 96},    {"Low_16s_C1R", 24, 96},
                               {"Low_16s_C3R", 208, 96}, {"8u16s_C1R", 36, 144}, {"8u16s_C3R", 60, 144},
                               {"32f_C1R", 64, 96},      {"32f_C3R", 192, 64}};
  size_t i = 0;
  forEachMember([&](const auto& member) {
    SCOPED_TRACE(member.name);
    const Expected& e = expected[i++];
    ASSERT_EQ(member.name, e.name);
    for (const int k : {1, 2, 3, 31, 100000})
      for (const int width : {1, 10, 10000}) {
        int size = -1;
        EXPECT_EQ(member.bufferSize({width, 7}, k, &size), StatusOk);
        EXPECT_EQ(size, e.perTap * k + e.fixed);
      }
    expectQueryChecks(member.bufferSize);
    int size = 77;
    EXPECT_EQ(member.bufferSize({1, 1}, INT32_MAX, &size), ErrSize);
    EXPECT_EQ(size, 77);
  });
}

}  // namespace
}  // namespace zvp::test
