#include "core/runs.h"

#include "core/rows.h"
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

// Memory that is the same few pages again and again, so that much can be written to it, then a page of its own.
class RepeatedPages {
 public:
  static constexpr size_t kPeriod = 1 << 25, kPage = 4096;

  explicit RepeatedPages(size_t periods) : size_(periods * kPeriod + kPage) {
    const int file = memfd_create("pages", 0);
    EXPECT_EQ(ftruncate(file, kPeriod + kPage), 0);
    map_ = static_cast<uint8_t*>(mmap(nullptr, size_ + kPage, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    const auto place = [&](size_t at, size_t bytes, off_t from) {
      EXPECT_NE(mmap(map_ + at, bytes, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_FIXED, file, from), MAP_FAILED);
    };
    for (size_t i = 0; i < periods; ++i) place(i * kPeriod, kPeriod, 0);
    place(periods * kPeriod, kPage, kPeriod);
    close(file);
  }
  RepeatedPages(const RepeatedPages&) = delete;
  RepeatedPages& operator=(const RepeatedPages&) = delete;
  ~RepeatedPages() { munmap(map_, size_ + kPage); }

  uint8_t* start() const { return map_; }
  uint8_t* lastPage() const { return map_ + size_ - kPage; }

 private:
  uint8_t* map_;
  size_t size_;
};

TEST(Runs, FillMoreBytesThan31BitsCount) {
  if (sizeof(void*) == 4) GTEST_SKIP() << "no array is that large";
  const RepeatedPages memory((size_t{1} << 31) / RepeatedPages::kPeriod);
  const auto* last = reinterpret_cast<const double*>(memory.lastPage());
  ASSERT_EQ(fillRun(reinterpret_cast<double*>(memory.start()), (1 << 28) + 2, 0.1), StatusOk);
  EXPECT_EQ(std::vector<double>(last, last + 3), (std::vector<double>{0.1, 0.1, 0}));
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

// No row is touched.
TEST(Rows, OffsetsAndElementsOfAllRowsTakeMoreThan31Bits) {
  const Rows<uint16_t> rows{nullptr, -0x7ffffff0};
  EXPECT_EQ(reinterpret_cast<uintptr_t>(rows.row(0x7fffffff)), static_cast<uintptr_t>(-0x7ffffff0LL * 0x7fffffff));
  const auto calls = [](int height, int n, int gap) {
    const Rows<uint8_t> gapless{nullptr, n};
    const Rows<uint16_t> other{nullptr, 2 * n + gap};
    std::pair<int, int64_t> rowsAndElements;
    forEachRow(
        height, n,
        [&](const uint8_t* a, const uint16_t* b, int count) {
          EXPECT_EQ(a, gapless.row(rowsAndElements.first));
          EXPECT_EQ(b, other.row(rowsAndElements.first));
          ++rowsAndElements.first, rowsAndElements.second += count;
        },
        gapless, other);
    return rowsAndElements;
  };
  EXPECT_EQ(calls(10, 7, 0), std::pair(1, int64_t{70}));
  EXPECT_EQ(calls(10, 7, 2), std::pair(10, int64_t{70}));
  for (const auto& [height, n, rowCount] : {std::tuple{46340, 46340, 1}, {46341, 46341, 46341}, {65536, 65536, 65536}})
    EXPECT_EQ(calls(height, n, 0), std::pair(rowCount, int64_t{height} * n));
}

}  // namespace
}  // namespace zvp::test
