// Scharr and Sobel derivatives.
#include "support/border.h"
#include "support/filter.h"

namespace zvp::test {
namespace {

// A source with neighbours on the sides in memory, and inaccessible pages beyond them.
template <class T>
struct Source {
  RoiSize roi;
  BorderType type;
  T constant;
  int left, top;
  Image<T> image;

  Source(RoiSize size, BorderType border, int reach, T value, unsigned seed)
      : roi(size),
        type(border),
        constant(value),
        left(isInMemory(type, BorderLeftInMemory) * reach),
        top(isInMemory(type, BorderTopInMemory) * reach),
        image(left + roi.width + isInMemory(type, BorderRightInMemory) * reach,
              top + roi.height + isInMemory(type, BorderBottomInMemory) * reach, static_cast<int>(seed % 3 * sizeof(T)),
              somePlacement(static_cast<int>(seed))) {
    image.fill(FiniteValues<T>(seed));
  }
  Data<T> data() const { return image.data(top, left); }
  T pixel(int y, int x) const {
    return borderedPixel(x, y, roi, type, constant, [&](int64_t column, int64_t row) {
      return image.get(static_cast<int>(row) + top, static_cast<int>(column) + left);
    });
  }
};

constexpr BorderType kModes[] = {BorderConstant, BorderReplicate, BorderWrap, BorderReflect, BorderReflectEdge};

// expect(size, border, seed)
template <class F>
void forEachSizeAndBorder(F expect) {
  unsigned seed = 1;
  for (const int width : {1, 2, 3, 4, 5, 7, 8, 9, 15, 16, 17, 18, 31, 33, 34, 47, 64, 71, 130})
    for (const int height : {1, 2, 5}) {
      for (const BorderType mode : kModes) {
        expect(RoiSize{width, height}, mode, seed++);
        expect(RoiSize{width, height}, mode | static_cast<int>(seed % 15 + 1) << 4, seed);
      }
      expect(RoiSize{width, height}, BorderInMemory, seed++);
    }
}

// --- Scharr ----------------------------------------------------------------------------------------------------------

struct Scharr {
  const char* name;
  bool alongX;
  Status (*filter)(const float*, int, float*, int, RoiSize, BorderType, float, uint8_t*);
  Status (*bufferSize)(RoiSize, int*);
};
#define SCHARR(name, alongX) \
  { #name, alongX, zvpiFilterScharr##name##Border_32f_C1R, zvpiFilterScharr##name##BorderGetBufferSize_32f_C1R }
constexpr Scharr kScharr[] = {SCHARR(Horiz, true), SCHARR(Vert, false)};

float plainScharr(const Source<float>& src, bool alongX, int y, int x) {
  const auto difference = [&](int k) {
    return alongX ? src.pixel(y + k, x + 1) - src.pixel(y + k, x - 1)
                  : src.pixel(y + 1, x + k) - src.pixel(y - 1, x + k);
  };
  const float a = 3 * difference(-1), b = 10 * difference(0), c = 3 * difference(1);
  return (a + b) + c;
}

TEST(FilterScharr, EqualsThePlainSumsUnderEveryBorder) {
  for (const Scharr& member : kScharr)
    forEachSizeAndBorder([&](RoiSize roi, BorderType type, unsigned seed) {
      const Source<float> src(roi, type, 1, 1.7f, seed);
      const Image<float> dst(roi.width, roi.height, static_cast<int>(seed % 2 * 4));
      int size = 0;
      ASSERT_EQ(member.bufferSize(roi, &size), StatusOk);
      ASSERT_EQ(size, 4 * (roi.width + 2));
      const GuardedBlock buffer(static_cast<size_t>(size), somePlacement(static_cast<int>(seed)));
      ASSERT_EQ(
          member.filter(src.data(), src.image.step(), dst.data(), dst.step(), roi, type, src.constant, buffer.start()),
          StatusOk);
      EXPECT_TRUE(matches(dst, [&](int y, int x) { return plainScharr(src, member.alongX, y, x); }))
          << member.name << ", border " << type;
    });
}

// --- Sobel -----------------------------------------------------------------------------------------------------------

// A member's call with work memory of exactly the reported size.
Status sobel(const uint8_t* src, int srcStep, const Image<int16_t>& dst, int maskSize, BorderType type,
             uint8_t constant, Placement placement = {}) {
  const RoiSize roi{dst.width(), dst.height()};
  int size = 0;
  EXPECT_EQ(zvpiFilterSobelHorizBorderGetBufferSize_8u16s_C1R(roi, maskSize, &size), StatusOk);
  EXPECT_LE(size, 32 * (roi.width + 64));
  const GuardedBlock buffer(static_cast<size_t>(size), placement);
  return zvpiFilterSobelHorizBorder_8u16s_C1R(src, srcStep, dst.data(), dst.step(), roi, maskSize, type, constant,
                                              buffer.start());
}

struct Kernel {
  int maskSize;
  std::vector<int> down, along;
};
const Kernel kKernels[] = {{33, {1, 2, 1}, {-1, 0, 1}}, {55, {1, 4, 6, 4, 1}, {-1, -2, 0, 2, 1}}};

int16_t plainSobel(const Source<uint8_t>& src, const Kernel& k, int y, int x) {
  const int taps = k.maskSize / 11, reach = taps / 2;
  int sum = 0;
  for (int i = 0; i < taps * taps; ++i)
    sum += k.down[size_t(i / taps)] * k.along[size_t(i % taps)] * src.pixel(y + i / taps - reach, x + i % taps - reach);
  return static_cast<int16_t>(sum);
}

TEST(Sobel, EqualsTheWholeKernelUnderEveryBorder) {
  for (const Kernel& kernel : kKernels)
    forEachSizeAndBorder([&](RoiSize roi, BorderType type, unsigned seed) {
      const Source<uint8_t> src(roi, type, kernel.maskSize / 22, 77, seed);
      const Image<int16_t> dst(roi.width, roi.height, static_cast<int>(seed % 2 * 2));
      ASSERT_EQ(sobel(src.data(), src.image.step(), dst, kernel.maskSize, type, src.constant,
                      somePlacement(static_cast<int>(seed))),
                StatusOk);
      EXPECT_TRUE(matches(dst, [&](int y, int x) { return plainSobel(src, kernel, y, x); }))
          << roi.width << "x" << roi.height << " mask " << kernel.maskSize << " border " << type;
    });
}

TEST(Sobel, HandComputed) {
  const Image<uint8_t> counted(3, 3), ramp(9, 1);
  counted.draw([](int y, int x) { return 3 * y + x + 1; });
  ramp.draw([](int, int x) { return x; });
  const Image<int16_t> dst(3, 3), row(9, 1);
  ASSERT_EQ(sobel(counted.data(), 3, dst, 33, BorderReplicate, 0), StatusOk);
  EXPECT_EQ(dst.get(1, 1), 8);
  EXPECT_EQ(dst.get(0, 0), 4);
  ASSERT_EQ(sobel(counted.data(), 3, dst, 33, BorderConstant, 0), StatusOk);
  EXPECT_EQ(dst.get(0, 0), 2 * 2 + 5) << "2 2 + 5 of the column to the right, nothing to the left";
  ASSERT_EQ(sobel(ramp.data(), 9, row, 55, BorderReplicate, 0), StatusOk);
  EXPECT_EQ(row.get(0, 4), 128);
}

}  // namespace
}  // namespace zvp::test
