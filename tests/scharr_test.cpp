// Scharr derivatives.
#include "support/filter.h"
#include "zvpcv/filter.h"

namespace zvp::test {
namespace {

struct Member {
  const char* name;
  bool alongX;
  Status (*filter)(const float*, int, float*, int, RoiSize, BorderType, float, uint8_t*);
  Status (*bufferSize)(RoiSize, int*);
};
#define MEMBER(name, alongX) \
  { #name, alongX, zvpiFilterScharr##name##Border_32f_C1R, zvpiFilterScharr##name##BorderGetBufferSize_32f_C1R }
constexpr Member kMembers[] = {MEMBER(Horiz, true), MEMBER(Vert, false)};

// The coordinate that stands for one just outside 0 .. n - 1; -2 for the constant.
int outside(int x, int n, BorderType type, bool beforeInMemory, bool behindInMemory) {
  if ((x >= 0 && x < n) || (x < 0 ? beforeInMemory : behindInMemory)) return x;
  const int mode = type & 15;
  if (mode == BorderReplicate || mode == BorderReflectEdge) return x < 0 ? 0 : n - 1;
  if (mode == BorderWrap) return x < 0 ? n - 1 : 0;
  return mode == BorderReflect ? (n == 1 ? 0 : x < 0 ? 1 : n - 2) : -2;
}

// The region lies inside a larger image, or against inaccessible pages where no side is in memory.
void expectEqualsPlain(const Member& member, RoiSize roi, BorderType type, unsigned seed) {
  const auto inMemory = [type](int flag) { return (type & 15) == BorderInMemory || (type & flag); };
  const bool top = inMemory(0x10), bottom = inMemory(0x20), left = inMemory(0x40), right = inMemory(0x80);
  const Placement placement = kPlacements[seed % kPlacements.size()];
  const Image<float> src(roi.width + left + right, roi.height + top + bottom, static_cast<int>(seed % 3 * 4),
                         placement);
  const Image<float> dst(roi.width, roi.height, static_cast<int>(seed % 2 * 4), placement);
  src.fill(FiniteValues<float>(seed));
  int size = 0;
  ASSERT_EQ(member.bufferSize(roi, &size), StatusOk);
  ASSERT_EQ(size, 4 * (roi.width + 2));
  const GuardedBlock buffer(static_cast<size_t>(size), placement);
  constexpr float kConstant = 1.7f;
  ASSERT_EQ(member.filter(src.data(top ? 1 : 0, left), src.step(), dst.data(), dst.step(), roi, type, kConstant,
                          buffer.start()),
            StatusOk);
  const auto pixel = [&](int y, int x) {
    const int row = outside(y, roi.height, type, top, bottom), column = outside(x, roi.width, type, left, right);
    return row == -2 || column == -2 ? kConstant : src.get(row + top, column + left);
  };
  const auto expected = [&](int y, int x) {
    const auto difference = [&](int k) {
      return member.alongX ? pixel(y + k, x + 1) - pixel(y + k, x - 1) : pixel(y + 1, x + k) - pixel(y - 1, x + k);
    };
    const float a = 3 * difference(-1), b = 10 * difference(0), c = 3 * difference(1);
    return (a + b) + c;
  };
  ASSERT_TRUE(matches(dst, expected)) << member.name << ", border " << type;
}

TEST(FilterScharr, EqualsThePlainModelAtEveryWidthAndBorder) {
  for (const Member& member : kMembers) {
    unsigned seed = 0;
    for (int width = 1; width <= 70; ++width)
      for (const BorderType type : {0, 1, 2, 3, 4, 6, 0xf0, 0x10, 0x21, 0x42, 0x83, 0xc4, 0x31, 0x96}) {
        const int height = 1 + static_cast<int>(++seed % 4);
        ASSERT_NO_FATAL_FAILURE(expectEqualsPlain(member, {width, height}, type, seed));
      }
  }
}

TEST(FilterScharr, ARampThatRisesByOneHasTheDerivative32) {
  const Image<float> src(5, 5), dst(5, 5);
  std::vector<uint8_t> buffer(100);
  src.draw([](int y, int x) { return x + 10 * y; });
  const auto derivative = [&](const Member& member, int y, int x) {
    member.filter(src.data(), src.step(), dst.data(), dst.step(), {5, 5}, BorderReplicate, 0, buffer.data());
    return dst.get(y, x);
  };
  EXPECT_EQ(derivative(kMembers[0], 2, 2), 32);
  EXPECT_EQ(derivative(kMembers[0], 2, 0), 16) << "the first pixel stands for the one before it";
  EXPECT_EQ(derivative(kMembers[1], 2, 2), 320);
  EXPECT_EQ(derivative(kMembers[1], 4, 2), 160);
}

TEST(FilterScharr, BufferSizesBeyond31Bits) {
  for (const Member& member : kMembers) {
    int size = 77;
    for (const int width : {INT32_MAX, INT32_MAX / 4}) EXPECT_EQ(member.bufferSize({width, 1}, &size), ErrSize);
    EXPECT_EQ(size, 77);
  }
}

}  // namespace
}  // namespace zvp::test
