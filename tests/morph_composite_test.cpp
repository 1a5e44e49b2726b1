// Opening, closing, top-hat, black-hat and gradient against two plain steps; sizes, prepared masks, checks.
#include "support/morphology.h"

namespace zvp::test {
namespace {

enum Operation { kOpen, kClose, kTophat, kBlackhat, kGradient };
constexpr Operation kOperations[] = {kOpen, kClose, kTophat, kBlackhat, kGradient};

template <class T>
using Member = MorphMember<T, MorphAdvSpec, RoiSize>;

#define ZVP_ADV_MEMBER(NAME)                                                                          \
  morphMember(#NAME, zvpiMorphAdvGetSize_##NAME, zvpiMorphAdvInit_##NAME,                             \
              {zvpiMorphOpenBorder_##NAME, zvpiMorphCloseBorder_##NAME, zvpiMorphTophatBorder_##NAME, \
               zvpiMorphBlackhatBorder_##NAME, zvpiMorphGradientBorder_##NAME})

template <class F>
void forEachAdvMember(F f) {
  f(ZVP_ADV_MEMBER(8u_C1R));
  f(ZVP_ADV_MEMBER(8u_C3R));
  f(ZVP_ADV_MEMBER(8u_C4R));
  f(ZVP_ADV_MEMBER(16u_C1R));
  f(ZVP_ADV_MEMBER(16s_C1R));
  f(ZVP_ADV_MEMBER(32f_C1R));
  f(ZVP_ADV_MEMBER(32f_C3R));
  f(ZVP_ADV_MEMBER(32f_C4R));
}

template <class T>
T minus(T a, T b) {
  if constexpr (std::is_floating_point_v<T>) {
    return a - b;
  } else {
    return static_cast<T>(
        std::clamp<int>(int{a} - int{b}, std::numeric_limits<T>::min(), std::numeric_limits<T>::max()));
  }
}

// src(x, y) reads memory. The first of two steps covers the region enlarged on the sides in memory.
template <class T, class Read>
std::vector<T> plainOperation(Operation operation, const Mask& mask, RoiSize roi, BorderType border, Read src) {
  const Point anchor = mask.centre();
  const Room room(border, mask, anchor, operation == kGradient ? 0 : 1);
  const RoiSize enlarged{roi.width + room.left + room.right, roi.height + room.top + room.bottom};
  const bool erodeFirst = operation == kOpen || operation == kTophat || operation == kGradient;
  const auto first = plainFilter<T>(mask, anchor, erodeFirst, enlarged, border,
                                    [&](int x, int y) { return src(x - room.left, y - room.top); });
  const auto second = operation == kGradient
                          ? plainFilter<T>(mask, anchor, false, roi, border, src)
                          : plainFilter<T>(mask.rotated(), anchor, !erodeFirst, roi, border, [&](int x, int y) {
                              return first[static_cast<size_t>((y + room.top) * enlarged.width + x + room.left)];
                            });
  std::vector<T> result;
  for (size_t i = 0; i < second.size(); ++i) {
    const T pixel = src(static_cast<int>(i) % roi.width, static_cast<int>(i) / roi.width);
    result.push_back(operation == kTophat     ? minus<T>(pixel, second[i])
                     : operation == kBlackhat ? minus<T>(second[i], pixel)
                     : operation == kGradient ? minus<T>(second[i], first[i])
                                              : second[i]);
  }
  return result;
}

template <class T>
void expectOperations(const Member<T>& member, const Mask& mask, RoiSize roi, BorderType border, unsigned seed,
                      int spareWidth = 0) {
  SCOPED_TRACE(testing::Message() << member.name << ", mask " << mask.width << "x" << mask.height << ", roi "
                                  << roi.width << "x" << roi.height << ", border " << border << ", seed " << seed);
  const MorphWork work(member, {roi.width + spareWidth, roi.height}, mask, somePlacement(static_cast<int>(seed)));
  const auto specBefore = work.specBytes();
  for (const Operation operation : kOperations) {
    const int reach = operation == kGradient ? 1 : 2;
    const Source<T> src(roi, mask, mask.centre(), channelsOf(member.name), border, seed, reach);
    const auto run = [&](const auto& dst) { return work.run(member.operations[operation], src, dst, roi, border); };
    const auto plain = [&](auto read) { return plainOperation<T>(operation, mask, roi, border, read); };
    ASSERT_NO_FATAL_FAILURE(expectResults(src, seed, run, plain)) << "operation " << operation;
    ASSERT_EQ(work.specBytes(), specBefore);
  }
}

TEST(MorphAdv, EveryMaskEqualsTwoPlainSteps) {
  forEachAdvMember([]<class T>(const Member<T>& member) {
    const auto borders = acceptedBorders();
    unsigned seed = 0;
    for (const Mask& mask : manyMasks())
      for (const RoiSize roi : {RoiSize{1, 1}, RoiSize{23, 7}}) {
        const BorderType border = borders[++seed % borders.size()];
        ASSERT_NO_FATAL_FAILURE(expectOperations(member, mask, roi, border, seed));
      }
  });
}

TEST(MorphAdv, EveryBorderAndNarrowRegions) {
  forEachAdvMember([]<class T>(const Member<T>& member) {
    unsigned seed = 0;
    for (const BorderType border : acceptedBorders())
      for (const Mask& mask : {drawn({"xx..", "....", "x...", "..x."}), full(4, 3), full(2, 5)}) {
        const int spareWidth = ++seed % 2 == 0 ? 0 : 13;
        ASSERT_NO_FATAL_FAILURE(expectOperations(member, mask, {20, 5}, border, seed, spareWidth));
      }
  });
}

TEST(MorphAdv, MaskMuchWiderThanTheRegion) {  // the enlarged region's rows do not fit the work area
  forEachAdvMember([]<class T>(const Member<T>& member) {
    for (const Mask& mask : {full(301, 1), scattered(101, 2, 3), full(90, 3)})
      for (const BorderType border : {BorderInMemory, BorderReplicate})
        ASSERT_NO_FATAL_FAILURE(expectOperations(member, mask, {2, 2}, border, 7));
  });
}

TEST(MorphAdv, HandComputedRows) {
  const auto member = ZVP_ADV_MEMBER(8u_C1R);
  const struct {
    Mask mask;
    Operation operation;
    std::vector<uint8_t> expected;
  } cases[] = {
      {full(3, 1), kOpen, {5, 5, 5, 5, 1, 1}},
      // The left neighbour, then the right neighbour of that: the last pixel sees its own left neighbour.
      {drawn({"x.."}), kOpen, {5, 9, 5, 5, 1, 1}},
      {drawn({"x.."}), kBlackhat, {0, 0, 0, 0, 0, 0}},  // 1 - 5 is clamped
  };
  for (const auto& [mask, operation, expected] : cases) {
    const MorphWork work(member, {6, 1}, mask);
    const uint8_t src[] = {5, 9, 5, 5, 1, 5};
    std::vector<uint8_t> dst(6);
    EXPECT_EQ(member.operations[operation](src, 6, dst.data(), 6, {6, 1}, BorderReplicate, work.spec(), work.buffer()),
              StatusOk);
    EXPECT_EQ(dst, expected);
  }
}

// What the object of a composite consists of, given the member of erosion with the same pixels.
template <class T, class Inner>
void expectObject(const Member<T>& member, const Inner& inner, RoiSize roi, const Mask& mask, int capacity) {
  SCOPED_TRACE(member.name);
  const MorphWork work(member, roi, mask);
  int specSize = 0, bufferSize = 0;
  ASSERT_EQ(inner.getSize(roi.width, mask.size(), &specSize, &bufferSize), StatusOk);
  EXPECT_EQ(work.specSize, 2 * specSize + 32);
  EXPECT_EQ(work.bufferSize, capacity + 2 * bufferSize);
  EXPECT_EQ(work.word(3), capacity);
  const auto untouched = std::find(work.firstBytes.begin(), work.firstBytes.end(), GuardedBlock::kPoison);
  EXPECT_EQ(std::count(work.firstBytes.begin(), untouched, 0), capacity) << "zeros for the intermediate image";
  for (int k = 0; k < 2; ++k) {
    const int start = 32 + k * specSize;
    EXPECT_EQ(work.target(k), reinterpret_cast<const uint8_t*>(work.spec()) + start);
    const Mask expected = k == 0 ? mask : mask.rotated();
    EXPECT_TRUE(std::equal(expected.members.begin(), expected.members.end(), work.target(0, start)));
    EXPECT_EQ(work.word(15, start), roi.width);
  }
}

const Member<uint8_t> kBitMember{"1u", zvpiMorphAdvGetSize_1u_C1R, zvpiMorphAdvInit_1u_C1R, {}};

TEST(MorphAdv, ObjectAndSizes) {
  const Mask mask = drawn({"x..", "xx.", ".x."});
  forEachAdvMember([&]<class T>(const Member<T>& member) {
    const int capacity = (22 * channelsOf(member.name) * int{sizeof(T)} + 31) / 32 * 32 * 8;
    forEachMorphMember([&](const auto& inner) {
      if (inner.name == member.name) expectObject(member, inner, {20, 6}, mask, capacity);
    });
  });
  const MorphMember<uint8_t, MorphBorderSpec, int> inner{
      "1u", zvpiMorphologyBorderGetSize_1u_C1R, zvpiMorphologyBorderInit_1u_C1R, {}};
  expectObject(kBitMember, inner, {250, 4}, full(9, 3), 64 * 6);  // 258 bits are 33 bytes
}

TEST(MorphAdv, AllocatedSpecifications) {
  const Mask mask = full(3, 3);
  MorphAdvSpec* spec = nullptr;
  ASSERT_EQ(zvpiMorphAdvInitAlloc_8u_C1R({5, 1}, mask.members.data(), {3, 1}, &spec), StatusOk);
  int specSize, bufferSize;
  ASSERT_EQ(zvpiMorphAdvGetSize_8u_C1R({5, 1}, {3, 1}, &specSize, &bufferSize), StatusOk);
  const GuardedBlock buffer(static_cast<size_t>(bufferSize), {});
  const uint8_t src[] = {1, 9, 1, 1, 1};
  uint8_t dst[5];
  EXPECT_EQ(zvpiMorphOpenBorder_8u_C1R(src, 5, dst, 5, {5, 1}, BorderReplicate, 0, spec, buffer.start()), StatusOk);
  EXPECT_EQ(std::count(dst, dst + 5, 1), 5);
  EXPECT_EQ(zvpiMorphAdvFree(spec), StatusOk);
}

TEST(MorphAdv, CapacityOfTheIntermediateImage) {
  // Room for 6 rows of 32 bytes: 4 + 3 - 1 rows of 30 + 3 - 1 pixels.
  const auto member = ZVP_ADV_MEMBER(8u_C1R);
  const MorphWork work(member, {30, 4}, full(3, 3));
  ASSERT_EQ(work.word(3), 6 * 32);
  const Image<uint8_t> image(40, 20), dst(30, 8);
  const auto status = [&](Operation operation, int height, BorderType border) {
    return member.operations[operation](image.data(5, 5), 40, dst.data(), 30, {30, height}, border, work.spec(),
                                        work.buffer());
  };
  for (const Operation operation : {kOpen, kClose, kTophat, kBlackhat}) {
    EXPECT_EQ(status(operation, 6, BorderReplicate), StatusOk);
    EXPECT_EQ(status(operation, 7, BorderReplicate), ErrSize);
    EXPECT_EQ(status(operation, 4, BorderInMemory), StatusOk);
    EXPECT_EQ(status(operation, 5, BorderInMemory), ErrSize);
    EXPECT_EQ(status(operation, 5, BorderReplicate | BorderTopInMemory | BorderLeftInMemory), StatusOk);
    EXPECT_EQ(status(operation, 6, BorderReplicate | BorderBottomInMemory), ErrSize);
  }
  EXPECT_EQ(status(kGradient, 6, BorderInMemory), StatusOk) << "the region's size on every border";
  EXPECT_EQ(status(kGradient, 7, BorderInMemory), ErrSize);
}

// One bit per pixel: the operations on images of 0 and 1, whose difference is a AND NOT b.
TEST(MorphAdvBits, EqualTwoPlainSteps) {
  constexpr decltype(&zvpiMorphOpenBorder_1u_C1R) kBitOperations[] = {
      zvpiMorphOpenBorder_1u_C1R, zvpiMorphCloseBorder_1u_C1R, zvpiMorphTophatBorder_1u_C1R,
      zvpiMorphBlackhatBorder_1u_C1R, zvpiMorphGradientBorder_1u_C1R};
  unsigned seed = 0;
  const auto borders = acceptedBorders();
  for (const Mask& mask : manyMasks()) {
    const RoiSize roi{1 + static_cast<int>(seed * 7 % 40), 1 + static_cast<int>(seed % 6)};
    const BorderType border = borders[++seed % borders.size()];
    const BitCase c{mask, roi, border, static_cast<int>(seed % 8), 3, seed};
    const MorphWork work(kBitMember, roi, mask, somePlacement(static_cast<int>(seed)));
    for (const Operation operation : kOperations) {
      const auto plain = [&](auto read) {
        return plainOperation<uint8_t>(operation, mask, roi, border,
                                       [&](int x, int y) { return static_cast<uint8_t>(read(x, y)); });
      };
      ASSERT_NO_FATAL_FAILURE(expectBits(c, operation == kGradient ? 1 : 2, kBitOperations[operation], work, plain))
          << "operation " << operation;
    }
  }
}

}  // namespace
}  // namespace zvp::test
