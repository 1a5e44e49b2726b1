// Which pixel stands in for one outside the region.
#include "filter/border.h"

#include <gtest/gtest.h>

#include <vector>

#include "support/border.h"

namespace zvp::test {
namespace {

TEST(Border, EveryModeEqualsItsRuleStepByStep) {
  for (const BorderType mode : {BorderConstant, BorderReplicate, BorderWrap, BorderReflect, BorderReflectEdge})
    for (int64_t extent = 1; extent <= 7; ++extent)
      for (int64_t x = -40; x <= 40; ++x)
        ASSERT_EQ(modeCoordinate(x, extent, mode), walkedInside(x, extent, mode))
            << mode << ": " << x << " of " << extent;
  EXPECT_EQ(modeCoordinate(INT64_C(-4000000001), 4, BorderWrap), 3);
}

TEST(Border, FlaggedSidesAreRead) {
  constexpr int64_t kExtent = 4;
  const auto expected = [](int64_t x, bool isInMemory) { return isInMemory ? x : x < 0 ? 0 : kExtent - 1; };
  for (BorderType sides = 0; sides <= 0xf0; sides += 0x10)
    for (const BorderType type : {+BorderReplicate | sides, +BorderInMemory | sides})
      for (const int64_t x : {-3, 6}) {
        const auto read = [&](BorderType before, BorderType behind) {
          return isInMemory(type, x < 0 ? before : behind);
        };
        EXPECT_EQ(sourceCoordinate(x, kExtent, horizontalBorder(type)),
                  expected(x, read(BorderLeftInMemory, BorderRightInMemory)));
        EXPECT_EQ(sourceCoordinate(x, kExtent, verticalBorder(type)),
                  expected(x, read(BorderTopInMemory, BorderBottomInMemory)));
      }
}

// Every stretch of a row of every border, also stretches that lie wholly outside.
template <int channels>
void expectRows(BorderType type) {
  constexpr int64_t kWidth = 4, kMargin = 12;
  std::vector<int> memory;
  for (int i = 0; i < (kWidth + 2 * kMargin) * channels; ++i) memory.push_back(i + 1000);
  const int* row = memory.data() + kMargin * channels;
  const int constant[] = {1, 2, 3};
  const AxisBorder border = horizontalBorder(type);
  for (int64_t first = -kMargin; first < kWidth + kMargin; ++first) {
    for (int64_t count = 0; count <= kWidth + kMargin - first; ++count) {
      std::vector<int> got(static_cast<size_t>(count * channels) + 1, -7);
      extendRow<channels>(row, kWidth, border, constant, first, count, got.data());
      ASSERT_EQ(got.back(), -7);
      for (int64_t i = 0; i < count * channels; ++i) {
        const int64_t from = sourceCoordinate(first + i / channels, kWidth, border), c = i % channels;
        ASSERT_EQ(got[static_cast<size_t>(i)], from == kNoSource ? constant[c] : row[from * channels + c])
            << "border " << type << ", first " << first << ", element " << i;
      }
    }
  }
}

TEST(Border, RowsReachPastTheirEnds) {
  for (const BorderType mode : {BorderConstant, BorderReplicate, BorderWrap, BorderReflect, BorderReflectEdge})
    for (const BorderType sides : {0, +BorderLeftInMemory, +BorderRightInMemory, 0xf0}) {
      expectRows<1>(mode | sides);
      expectRows<3>(mode | sides);
    }
  expectRows<1>(BorderInMemory);
}

}  // namespace
}  // namespace zvp::test
