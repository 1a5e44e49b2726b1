// Column filters against a plain loop, their tails, and their checks.
#include <functional>
#include <memory>
#include <string>

#include "support/filter.h"
#include "zvpcv/filter.h"

namespace zvp::test {
namespace {

// Every member in one shape; the arguments of one call.
template <class T, class Out, class Tap>
struct ColumnArguments {
  const T** src;
  Out* dst;
  int dstStep;
  RoiSize roi;
  const Tap* kernel;
  int kernelSize, divisor;
  uint8_t* buffer;
};

template <class T, class Out, class Tap>
struct ColumnMember {
  std::string name;
  int channels;
  Kind kind;
  std::function<Status(const ColumnArguments<T, Out, Tap>&)> filter;
  Status (*bufferSize)(RoiSize, int, int*);
};

#define INTEGER_MEMBER(member, channels, kind, Out)                                                    \
  ColumnMember<int16_t, Out, int16_t> {                                                                \
#member, channels, kind,                                                                             \
        [](const ColumnArguments<int16_t, Out, int16_t>& a) {                                            \
          return zvpiFilterColumnPipeline_##member(a.src, a.dst, a.dstStep, a.roi, a.kernel, a.kernelSize, \
                                                   a.divisor, a.buffer);                                 \
        },                                                                                               \
        zvpiFilterColumnPipelineGetBufferSize_##member \
  }
#define FLOAT_MEMBER(member, channels)                                                                 \
  ColumnMember<float, float, float> {                                                                  \
#member, channels, Kind::kFloat,                                                                     \
        [](const ColumnArguments<float, float, float>& a) {                                              \
          return zvpiFilterColumnPipeline_##member(a.src, a.dst, a.dstStep, a.roi, a.kernel, a.kernelSize, \
                                                   a.buffer);                                            \
        },                                                                                               \
        zvpiFilterColumnPipelineGetBufferSize_##member \
  }

template <class Body>
void forEachMember(Body body) {
  body(INTEGER_MEMBER(16s_C1R, 1, Kind::kInteger, int16_t));
  body(INTEGER_MEMBER(16s_C3R, 3, Kind::kInteger, int16_t));
  body(INTEGER_MEMBER(16s8u_C1R, 1, Kind::kInteger, uint8_t));
  body(INTEGER_MEMBER(16s8u_C3R, 3, Kind::kInteger, uint8_t));
  body(INTEGER_MEMBER(16s8s_C1R, 1, Kind::kInteger, int8_t));
  body(INTEGER_MEMBER(16s8s_C3R, 3, Kind::kInteger, int8_t));
  body(INTEGER_MEMBER(Low_16s_C1R, 1, Kind::kLow, int16_t));
  body(INTEGER_MEMBER(Low_16s_C3R, 3, Kind::kLow, int16_t));
  body(FLOAT_MEMBER(32f_C1R, 1));
  body(FLOAT_MEMBER(32f_C3R, 3));
}

struct Settings {
  int width, height;
  int kernelSize;
  int divisor;
  Strength strength;
};

template <class T, class Out, class Tap>
Out plainOutput(const ColumnMember<T, Out, Tap>& member, const Settings& s, const std::vector<Tap>& taps,
                const std::vector<std::vector<T>>& rows, int y, int x) {
  const auto pixel = [&](int i) { return rows[static_cast<size_t>(y + i)][static_cast<size_t>(x)]; };
  const int elements = s.width * member.channels;
  if constexpr (std::is_same_v<Tap, float>) {
    return plainFloat(taps, pixel);
  } else if constexpr (std::is_same_v<Out, int16_t>) {
    if (member.kind == Kind::kLow) return plainLow(taps, s.divisor, false, pixel);
    return plainInteger<Out>(taps, s.divisor, x >= elements / 4 * 4, pixel);
  } else {
    return plainInteger<Out>(taps, s.divisor, x >= elements / 4 * 4, pixel);
  }
}

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
template <class T, class Out, class Tap>
void expectEqualsPlain(const ColumnMember<T, Out, Tap>& member, const Settings& s, unsigned seed) {
  const Placement placement = kPlacements[seed % kPlacements.size()];
  const int elements = s.width * member.channels, count = s.height + s.kernelSize - 1;
  std::mt19937 engine(seed);
  const Image<T> memory(elements, count, static_cast<int>(seed % 3), placement);
  memory.fill([&] { return pixelValue<T>(engine, seed % 2 == 0); });
  std::vector<const T*> pointers;
  std::vector<std::vector<T>> values;
  for (int y = 0; y < count; ++y) {
    const int row = static_cast<int>(engine() % static_cast<unsigned>(count));
    pointers.push_back(
        reinterpret_cast<const T*>(reinterpret_cast<const uint8_t*>(memory.data()) + ptrdiff_t{row} * memory.step()));
    values.emplace_back();
    for (int x = 0; x < elements; ++x) values.back().push_back(memory.get(row, x));
  }
  const Image<Out> dst(elements, s.height, static_cast<int>(seed % 2 * sizeof(Out)), placement);
  const std::vector<Tap> taps = tapsFor<Tap>(seed, s.kernelSize, s.strength);
  int size = 0;
  ASSERT_EQ(member.bufferSize({s.width, s.height}, s.kernelSize, &size), StatusOk);
  const GuardedBlock buffer(static_cast<size_t>(size), placement);
  ASSERT_EQ(member.filter({pointers.data(),
                           dst.data(),
                           dst.step(),
                           {s.width, s.height},
                           taps.data(),
                           s.kernelSize,
                           s.divisor,
                           buffer.start()}),
            StatusOk);
  ASSERT_TRUE(matches(dst, [&](int y, int x) { return plainOutput(member, s, taps, values, y, x); }))
      << member.name << ": " << s.kernelSize << " taps, divisor " << s.divisor;
}

TEST(FilterColumn, EqualsThePlainLoopAtEveryWidth) {
  forEachMember([](const auto& member) {
    unsigned seed = 0;
    for (int width = 1; width <= 140; ++width) {
      for (const int k : kKernelSizes) {
        ++seed;
        ASSERT_NO_FATAL_FAILURE(expectEqualsPlain(member,
                                                  {width, static_cast<int>(1 + seed % 3), k,
                                                   kDivisors[seed % std::size(kDivisors)], kStrengths[seed / 2 % 3]},
                                                  seed));
      }
    }
  });
}

TEST(FilterColumn, EqualsThePlainLoopForEveryDivisor) {
  forEachMember([](const auto& member) {
    unsigned seed = 0;
    for (const int divisor : {1, -1, 2, 4, 8, 16, 32, 64, 128, 256, 512, -2, 3, 5, 6, 9, 100, 16384, 16385, 1 << 30})
      for (const int k : {2, 3, 5, 8})
        for (const Strength strength : kStrengths)
          ASSERT_NO_FATAL_FAILURE(expectEqualsPlain(member, {90, 2, k, divisor, strength}, ++seed));
  });
}

// Rows that do not fit the caches together.
TEST(FilterColumn, EqualsThePlainLoopOnLongRows) {
  forEachMember([](const auto& member) {
    for (const int k : {3, 5, 9})
      ASSERT_NO_FATAL_FAILURE(expectEqualsPlain(member, {10007, 3, k, 16, Strength::kWeak}, static_cast<unsigned>(k)));
  });
}

// One row of a member of one tap.
template <class Out, class Member>
std::vector<Out> scaled(Member function, const std::vector<int16_t>& row, int width, int16_t tap, int divisor) {
  std::vector<Out> out(row.size());
  const int16_t* rows[] = {row.data()};
  std::vector<uint8_t> buffer(1000);
  EXPECT_EQ(function(rows, out.data(), static_cast<int>(row.size() * sizeof(Out)), RoiSize{width, 1}, &tap, 1, divisor,
                     buffer.data()),
            StatusOk);
  return out;
}

TEST(FilterColumn, BlocksOfFourRoundAndTheTailTruncates) {
  const std::vector<int16_t> row = {7, 7, 5, -7, 7, 7, -7};
  EXPECT_EQ(scaled<int16_t>(zvpiFilterColumnPipeline_16s_C1R, row, 7, 1, 2),
            (std::vector<int16_t>{4, 4, 2, -4, 3, 3, -3}));
  EXPECT_EQ(scaled<uint8_t>(zvpiFilterColumnPipeline_16s8u_C1R, row, 7, 1, 2),
            (std::vector<uint8_t>{4, 4, 2, 0, 3, 3, 0}));
  EXPECT_EQ(scaled<int8_t>(zvpiFilterColumnPipeline_16s8s_C1R, row, 7, 1, 2),
            (std::vector<int8_t>{4, 4, 2, -4, 3, 3, -3}));
  EXPECT_EQ(scaled<int16_t>(zvpiFilterColumnPipeline_Low_16s_C1R, row, 7, 1, 2),  // floor, in every column
            (std::vector<int16_t>{3, 3, 2, -4, 3, 3, -4}));
}

TEST(FilterColumn, ThreeChannelsAreOneRowOfTripleWidth) {
  // Three pixels, nine values: one value is the tail, not three pixels.
  EXPECT_EQ(scaled<int16_t>(zvpiFilterColumnPipeline_16s_C3R, std::vector<int16_t>(9, 7), 3, 1, 2),
            (std::vector<int16_t>{4, 4, 4, 4, 4, 4, 4, 4, 3}));
  EXPECT_EQ(scaled<uint8_t>(zvpiFilterColumnPipeline_16s8u_C3R, std::vector<int16_t>(12, 7), 4, 1, 2),
            std::vector<uint8_t>(12, 4));
}

TEST(FilterColumn, ResultsSaturate) {
  const std::vector<int16_t> row = {200, -200, 32767, -32768, 200, -200, 32767};
  EXPECT_EQ(scaled<uint8_t>(zvpiFilterColumnPipeline_16s8u_C1R, row, 7, 2, 1),
            (std::vector<uint8_t>{255, 0, 255, 0, 255, 0, 255}));
  EXPECT_EQ(scaled<int8_t>(zvpiFilterColumnPipeline_16s8s_C1R, row, 7, 2, 1),
            (std::vector<int8_t>{127, -128, 127, -128, 127, -128, 127}));
  EXPECT_EQ(scaled<int16_t>(zvpiFilterColumnPipeline_16s_C1R, row, 7, 2, -1),
            (std::vector<int16_t>{-400, 400, -32768, 32767, -400, 400, -32768}));
}

TEST(FilterColumnLow, SumsWrapAndScalesHaveFourteenBits) {
  const auto function = zvpiFilterColumnPipeline_Low_16s_C1R;
  EXPECT_EQ(scaled<int16_t>(function, {20000, 16384}, 2, 2, 1), (std::vector<int16_t>{-25536, -32768}));
  EXPECT_EQ(scaled<int16_t>(function, {20000, 300}, 2, 2, 2), (std::vector<int16_t>{-12768, 300}));
  EXPECT_EQ(scaled<int16_t>(function, {300, 300}, 2, 1, 3), (std::vector<int16_t>{99, 99}));
  EXPECT_EQ(scaled<int16_t>(function, {-32768, 5}, 2, 1, -1), (std::vector<int16_t>{32767, -5}));
}

// 513 x 32767 = 16809471 is no single-precision number: it becomes 16809472. Taps that add up to 65534 are summed
// exactly, those that add up to 65535 are not.
TEST(FilterColumn, StrongTapsAreSummedInSinglePrecision) {
  const std::vector<int16_t> values(5, 513), zeros(5, 0);
  const int16_t* rows[] = {values.data(), values.data(), zeros.data()};
  const auto filter = [&](const std::vector<int16_t>& taps, int divisor) {
    std::vector<int16_t> out(5);
    std::vector<uint8_t> buffer(1000);
    EXPECT_EQ(zvpiFilterColumnPipeline_16s_C1R(rows, out.data(), 10, {5, 1}, taps.data(), 3, divisor, buffer.data()),
              StatusOk);
    return out;
  };
  EXPECT_EQ(filter({32767, -32766, 1}, 1), (std::vector<int16_t>(5, 513)));
  EXPECT_EQ(filter({32767, -32766, 2}, 1), (std::vector<int16_t>(5, 514)));
  // 8404736 - 8404479 = 257, where 256.5 would become 256.
  EXPECT_EQ(filter({32767, -32766, 1}, 2), (std::vector<int16_t>(5, 256)));
  EXPECT_EQ(filter({32767, -32766, 2}, 2), (std::vector<int16_t>(5, 257)));
  EXPECT_EQ(filter({-32768, -32768, 0}, 1), (std::vector<int16_t>(5, -32768)));
  EXPECT_EQ(filter({-32768, -32768, 0}, -1), (std::vector<int16_t>(5, 32767)));
}

TEST(FilterColumn, ANullRowWritesNothing) {
  forEachMember([]<class T, class Out, class Tap>(const ColumnMember<T, Out, Tap>& member) {
    const std::vector<T> row(15, 1);
    const Image<Out> dst(15, 3);
    const auto before = dst.bytes();
    const Tap kernel[] = {Tap(1), Tap(1), Tap(1)};
    std::vector<uint8_t> buffer(1000, 3);
    const auto bufferBefore = buffer;
    for (size_t missing = 0; missing < 5; ++missing) {
      std::vector<const T*> rows(5, row.data());
      rows[missing] = nullptr;
      EXPECT_EQ(member.filter({rows.data(), dst.data(), dst.step(), {5, 3}, kernel, 3, 1, buffer.data()}), ErrNullPtr);
    }
    EXPECT_EQ(dst.bytes(), before);
    EXPECT_EQ(buffer, bufferBefore);
  });
}

// Every fault is planted together with all faults that later checks find.
template <class T, class Out, class Tap>
void expectColumnChecks(const ColumnMember<T, Out, Tap>& member) {
  SCOPED_TRACE(member.name);
  const bool isFloat = member.kind == Kind::kFloat;
  const bool isLax = member.name == "Low_16s_C3R";
  const int elements = 6 * member.channels;
  const std::vector<T> row(static_cast<size_t>(elements));
  const Image<Out> dst(elements, 2);
  const auto before = dst.bytes();
  const T* rows[] = {row.data(), nullptr, row.data(), row.data()};
  const Tap kernel[] = {1, 2, 1};
  const GuardedBlock buffer(1000, {});
  const auto bufferBefore = buffer.bytes();
  const int smallestStep = (isLax ? 6 : elements) * int{sizeof(Out)};

  const ColumnArguments<T, Out, Tap> badRow{rows, dst.data(), smallestStep, {6, 2}, kernel, 3, 1, buffer.start()};
  auto badDivisor = badRow;
  badDivisor.divisor = 0;
  auto badBuffer = badDivisor;
  badBuffer.buffer = nullptr;
  auto badMultiple = badBuffer;
  badMultiple.dstStep += sizeof(Out) > 1 ? 1 : 0;
  auto badStep = badMultiple;
  badStep.dstStep = smallestStep - 1;
  auto badKernelSize = badStep;
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
  EXPECT_EQ(member.filter(badSize), ErrSize);
  EXPECT_EQ(with(badStep, [](auto& a) { a.roi = {6, 0}; }), ErrSize);
  EXPECT_EQ(with(badStep, [](auto& a) { a.roi = {-1, 2}; }), ErrSize);
  EXPECT_EQ(member.filter(badKernelSize), ErrSize);
  EXPECT_EQ(member.filter(badStep), ErrStep);
  EXPECT_EQ(with(badMultiple, [](auto& a) { a.dstStep = -a.dstStep; }), ErrStep);
  EXPECT_EQ(with(badMultiple, [](auto& a) { a.roi.width = INT32_MAX; }), ErrStep);
  EXPECT_EQ(member.filter(badMultiple), sizeof(Out) > 1 ? ErrStepNotMultiple : ErrNullPtr);
  EXPECT_EQ(member.filter(badBuffer), ErrNullPtr);
  EXPECT_EQ(member.filter(badDivisor), isFloat ? ErrNullPtr : ErrBadArg);
  EXPECT_EQ(member.filter(badRow), ErrNullPtr);
  EXPECT_EQ(dst.bytes(), before);
  EXPECT_EQ(buffer.bytes(), bufferBefore);
}

TEST(FilterColumn, ChecksInOrderAndWritesNothing) {
  forEachMember([](const auto& member) { expectColumnChecks(member); });
}

// The step of Low_16s_C3R need not hold a row: rows then overwrite each other's ends from the top to the bottom.
TEST(FilterColumnLow, ThreeChannelRowsMayOverlap) {
  constexpr int kWidth = 7, kHeight = 4, kValues = 3 * kWidth;
  std::vector<std::vector<int16_t>> source(kHeight, std::vector<int16_t>(kValues));
  std::vector<const int16_t*> rows;
  std::vector<int16_t> expected(kValues + (kHeight - 1) * kWidth), out(expected.size());
  for (size_t y = 0; y < kHeight; ++y) {
    for (size_t x = 0; x < kValues; ++x) {
      source[y][x] = static_cast<int16_t>(100 * y + x);
      expected[y * kWidth + x] = source[y][x];
    }
    rows.push_back(source[y].data());
  }
  const int16_t one = 1;
  std::vector<uint8_t> buffer(1000);
  EXPECT_EQ(zvpiFilterColumnPipeline_Low_16s_C3R(rows.data(), out.data(), 2 * kWidth, {kWidth, kHeight}, &one, 1, 1,
                                                 buffer.data()),
            StatusOk);
  EXPECT_EQ(out, expected);
  EXPECT_EQ(zvpiFilterColumnPipeline_16s_C3R(rows.data(), out.data(), 6 * kWidth - 2, {kWidth, kHeight}, &one, 1, 1,
                                             buffer.data()),
            ErrStep);
}

TEST(FilterColumn, BufferSizesDependOnTheWidthOnly) {
  const auto rounded = [](int width, int block) { return (width + block - 1) / block * block; };
  forEachMember([&](const auto& member) {
    SCOPED_TRACE(member.name);
    for (const int width : {1, 3, 4, 5, 8, 9, 10, 1000, 1001})
      for (const int k : {1, 3, 31}) {
        int size = -1;
        EXPECT_EQ(member.bufferSize({width, 7}, k, &size), StatusOk);
        const int block = member.kind == Kind::kLow ? 8 : 4;
        EXPECT_EQ(size, member.kind == Kind::kFloat ? 32 : 12 * member.channels * rounded(width, block) + 64);
      }
    expectQueryChecks(member.bufferSize);
    int size = 77;
    if (member.kind != Kind::kFloat) {
      EXPECT_EQ(member.bufferSize({INT32_MAX, 1}, 1, &size), ErrSize);
    }
    EXPECT_EQ(size, 77);
  });
}

}  // namespace
}  // namespace zvp::test
