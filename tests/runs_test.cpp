#include "core/runs.h"

#include "support/image.h"

namespace zvp::test {
namespace {

// Short runs, and ones beyond the size from which the caches are passed by.
const int kBytes[] = {1, 2, 15, 16, 17, 100, 2097152, 2097153, 2097152 + 61};

template <class T>
void expectFill(T value) {
  for (const Placement placement : kPlacements) {
    for (const int bytes : kBytes) {
      const int n = bytes / int{sizeof(T)};
      if (n < 1) continue;
      const Image<T> run(n, 1, 0, placement);
      ASSERT_EQ(fillRun(run.address(), n, value), StatusOk);
      ASSERT_TRUE(matches(run, [&](int, int) { return value; })) << n;
      ASSERT_EQ(zeroRun(run.address(), n), StatusOk);
      ASSERT_TRUE(matches(run, [&](int, int) { return T{0}; })) << n;
    }
  }
  T one = value;
  EXPECT_EQ(fillRun<T>(nullptr, 0, value), ErrNullPtr);
  EXPECT_EQ(fillRun(&one, 0, T{0}), ErrSize);
  EXPECT_EQ(fillRun(&one, -1, T{0}), ErrSize);
  EXPECT_EQ(one, value);
}

TEST(Runs, FillEveryElementAndNothingElse) {
  expectFill<uint8_t>(7);
  expectFill<uint16_t>(0x1234);
  expectFill<int32_t>(-0x12345678);
  expectFill<float>(0.1f);
  expectFill<double>(0.1);
}

TEST(Runs, CopyEveryByteAndNothingElse) {
  for (const Placement placement : kPlacements) {
    for (const int n : {1, 15, 16, 17, 100, 2097152 + 61, 40000001}) {  // the last beyond most caches
      const Image<uint8_t> src(n, 1, 0, {!placement.atEnd, 0}), dst(n, 1, 0, placement);
      uint32_t state = 1;
      src.fill([&] { return (state = state * 1664525u + 1013904223u) >> 24; });
      ASSERT_EQ(copyRun(src.data(), dst.data(), n), StatusOk);
      ASSERT_EQ(memcmp(src.data(), dst.data(), static_cast<size_t>(n)), 0);
    }
  }
  uint8_t byte = 3;
  EXPECT_EQ(copyRun(nullptr, &byte, 0), ErrNullPtr);
  EXPECT_EQ(copyRun(&byte, nullptr, 0), ErrNullPtr);
  EXPECT_EQ(copyRun(&byte, &byte, 0), ErrSize);
}

template <class S>
void expectConvert() {
  for (const Placement placement : kPlacements) {
    for (int n = 1; n < 70; ++n) {
      const Image<S> src(n, 1, 0, placement);
      const Image<float> dst(n, 1, 0, placement);
      src.fill(Values<S>(static_cast<unsigned>(n)));
      ASSERT_EQ(convertRun(src.address(), dst.address(), n), StatusOk);
      ASSERT_TRUE(matches(dst, [&](int y, int x) { return static_cast<float>(src.get(y, x)); }));
    }
  }
  S source = 1;
  float result = 2.0f;
  EXPECT_EQ(convertRun<S>(nullptr, &result, 0), ErrNullPtr);
  EXPECT_EQ(convertRun<S>(&source, nullptr, 0), ErrNullPtr);
  EXPECT_EQ(convertRun<S>(&source, &result, 0), ErrSize);
  EXPECT_EQ(result, 2.0f);
}

TEST(Runs, ConvertToFloat) {
  expectConvert<uint8_t>();
  expectConvert<int16_t>();
}

}  // namespace
}  // namespace zvp::test
