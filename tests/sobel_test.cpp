// Sobel derivatives.
#include <vector>

#include "support/border.h"
#include "support/image.h"
#include "zvpcv/filter.h"

namespace zvp::test {
namespace {

constexpr int kMaskSizes[] = {33, 55};
constexpr BorderType kModes[] = {BorderConstant, BorderReplicate, BorderWrap, BorderReflect, BorderReflectEdge};

// Columns of taps.
std::vector<int> smoothing(int maskSize) { return maskSize == 33 ? std::vector{1, 2, 1} : std::vector{1, 4, 6, 4, 1}; }
std::vector<int> derivative(int maskSize) {
  return maskSize == 33 ? std::vector{-1, 0, 1} : std::vector{-1, -2, 0, 2, 1};
}

// A member's call with work memory of exactly the reported size.
Status filter(const uint8_t* src, int srcStep, const Image<int16_t>& dst, RoiSize roi, int maskSize, BorderType type,
              uint8_t constant, Placement placement) {
  int size = 0;
  EXPECT_EQ(zvpiFilterSobelHorizBorderGetBufferSize_8u16s_C1R(roi, maskSize, &size), StatusOk);
  EXPECT_LE(size, 32 * (roi.width + 64));
  const GuardedBlock buffer(static_cast<size_t>(size), placement);
  return zvpiFilterSobelHorizBorder_8u16s_C1R(src, srcStep, dst.data(), dst.step(), roi, maskSize, type, constant,
                                              buffer.start());
}

// The source has neighbours on the sides in memory, and inaccessible pages beyond them.
void expectEqualsPlain(RoiSize roi, int maskSize, BorderType type, unsigned seed) {
  const int reach = maskSize / 22;
  const auto room = [=](BorderType side) { return isInMemory(type, side) ? reach : 0; };
  const int left = room(BorderLeftInMemory), top = room(BorderTopInMemory);
  const Placement placement = somePlacement(static_cast<int>(seed));
  const Image<uint8_t> src(left + roi.width + room(BorderRightInMemory), top + roi.height + room(BorderBottomInMemory),
                           static_cast<int>(seed % 3), placement);
  const Image<int16_t> dst(roi.width, roi.height, static_cast<int>(seed % 2 * 2), placement);
  src.fill(Values<uint8_t>(seed));
  constexpr uint8_t kConstant = 77;
  ASSERT_EQ(filter(src.data(top, left), src.step(), dst, roi, maskSize, type, kConstant, placement), StatusOk);
  const std::vector<int> down = smoothing(maskSize), along = derivative(maskSize);
  EXPECT_TRUE(matches(
      dst,
      [&](int y, int x) {
        int sum = 0;
        for (int i = 0; i < static_cast<int>(down.size()); ++i)
          for (int k = 0; k < static_cast<int>(along.size()); ++k)
            sum += down[static_cast<size_t>(i)] * along[static_cast<size_t>(k)] *
                   borderedPixel(x + k - reach, y + i - reach, roi, type, +kConstant, [&](int64_t column, int64_t row) {
                     return +src.get(static_cast<int>(row) + top, static_cast<int>(column) + left);
                   });
        return static_cast<int16_t>(sum);
      }))
      << roi.width << "x" << roi.height << " mask " << maskSize << " border " << type;
}

TEST(Sobel, EqualsTheWholeKernelUnderEveryBorder) {
  unsigned seed = 1;
  for (const int maskSize : kMaskSizes)
    for (const int width : {1, 2, 3, 4, 5, 8, 15, 16, 17, 31, 33, 64, 71, 130})
      for (const int height : {1, 2, 5}) {
        for (const BorderType mode : kModes) {
          expectEqualsPlain({width, height}, maskSize, mode, seed++);
          expectEqualsPlain({width, height}, maskSize, mode | static_cast<int>(seed % 15 + 1) << 4, seed);
        }
        expectEqualsPlain({width, height}, maskSize, BorderInMemory, seed++);
      }
}

TEST(Sobel, HandComputed) {
  const Image<uint8_t> counted(3, 3), ramp(9, 1);
  counted.draw([](int y, int x) { return 3 * y + x + 1; });
  ramp.draw([](int, int x) { return x; });
  const Image<int16_t> dst(3, 3), row(9, 1);
  ASSERT_EQ(filter(counted.data(), 3, dst, {3, 3}, 33, BorderReplicate, 0, {}), StatusOk);
  EXPECT_EQ(dst.get(1, 1), 8);
  EXPECT_EQ(dst.get(0, 0), 4);
  ASSERT_EQ(filter(counted.data(), 3, dst, {3, 3}, 33, BorderConstant, 0, {}), StatusOk);
  EXPECT_EQ(dst.get(0, 0), 2 * 2 + 5) << "2 2 + 5 of the column to the right, nothing to the left";
  ASSERT_EQ(filter(ramp.data(), 9, row, {9, 1}, 55, BorderReplicate, 0, {}), StatusOk);
  EXPECT_EQ(row.get(0, 4), 128);
}

TEST(Sobel, SizesBeyondThirtyOneBits) {
  int size = -1;
  EXPECT_EQ(zvpiFilterSobelHorizBorderGetBufferSize_8u16s_C1R({INT32_MAX, 1}, 0, &size), ErrMaskSize);
  EXPECT_EQ(zvpiFilterSobelHorizBorderGetBufferSize_8u16s_C1R({INT32_MAX, 1}, 55, &size), ErrSize);
  EXPECT_EQ(size, -1);
}

}  // namespace
}  // namespace zvp::test
