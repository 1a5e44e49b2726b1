// Sizes that stick instead of wrapping, how they are reported, and blocks that are measured and placed by the same lines.
#include <gtest/gtest.h>

#include "core/carver.h"
#include "core/memory.h"
#include "core/query.h"

namespace zvp {
namespace {

TEST(Bytes, StickAtWhatThirtyOneBitsDoNotHold) {
  constexpr int64_t kLargest = INT32_MAX;
  EXPECT_TRUE(Bytes(kLargest).fit());
  EXPECT_EQ(Bytes(kLargest).value(), INT32_MAX);
  EXPECT_FALSE(Bytes(kLargest + 1).fit());
  EXPECT_FALSE((Bytes(kLargest) + 1).fit());
  EXPECT_FALSE((Bytes(kLargest) * kLargest * kLargest * 4 + 1).fit()) << "would wrap in 64 bits";
  EXPECT_FALSE(roundUp(Bytes(kLargest), 16).fit());
  EXPECT_EQ((Bytes(-5) * kLargest * kLargest + 7).value(), 7) << "arguments that no check has seen yet";
  EXPECT_EQ(roundUp(Bytes(33), 16).value(), 48);
}

TEST(Bytes, AreReportedAllOrNone) {
  char block[2 * sizeof(int) + 1];
  int* sizes = reinterpret_cast<int*>(block + 1);
  const auto stored = [&](int i) { return simd::load<int>(sizes + i); };
  EXPECT_EQ(reportSizes(StatusOk, SizeReport{5, sizes}, SizeReport{6, sizes + 1}), StatusOk);
  EXPECT_EQ(std::pair(stored(0), stored(1)), std::pair(5, 6));
  EXPECT_EQ(reportSizes(StatusOk, SizeReport{7, sizes}, SizeReport{int64_t{1} << 31, sizes + 1}), ErrSize);
  EXPECT_EQ(reportSize(ErrNullPtr, int64_t{1} << 31, nullptr), ErrNullPtr) << "the checks come first";
  EXPECT_EQ(std::pair(stored(0), stored(1)), std::pair(5, 6));
}

struct Parts {
  explicit Parts(Carver& carver)
      : bytes(carver.take<uint8_t>(3, 1)), wide(carver.take<double>(5, 64)), words(carver.take<int32_t>(1, 4)) {}

  uint8_t* bytes;
  double* wide;
  int32_t* words;
};

TEST(Carver, MeasuresWhatItTakesWhereverABlockStarts) {
  Carver measure = Carver::measuring();
  Parts{measure};
  ASSERT_TRUE(measure.size().fit());
  const int size = measure.size().value();
  EXPECT_EQ(size, 64 + 5 * 8 + 4 + 63);
  alignas(64) uint8_t memory[512];
  for (int shift = 0; shift < 128; ++shift) {
    Carver carver(memory + shift, size);
    const Parts parts(carver);
    EXPECT_EQ(parts.bytes, memory + shift);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(parts.wide) % 64, 0u);
    EXPECT_GE(reinterpret_cast<uint8_t*>(parts.wide), parts.bytes + 3);
    EXPECT_EQ(reinterpret_cast<uint8_t*>(parts.words), reinterpret_cast<uint8_t*>(parts.wide + 5));
    EXPECT_LE(carver.end(), memory + shift + size);
  }
}

TEST(Carver, MeasuresPartsThatNoBlockHolds) {
  Carver measure = Carver::measuring();
  for (int i = 0; i < 8; ++i) measure.take<double>(int64_t{1} << 61, 64);
  EXPECT_FALSE(measure.size().fit());
  EXPECT_EQ(allocate(measure.size()), nullptr);
}

TEST(Release, RefusesNull) { EXPECT_EQ(release(nullptr), ErrNullPtr); }

}  // namespace
}  // namespace zvp
