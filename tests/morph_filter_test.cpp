// Erosion and dilation against the plain model: every mask, border, width, placement; in place; the older family.
#include "support/morphology.h"

namespace zvp::test {
namespace {

template <class T>
using Member = MorphMember<T, MorphBorderSpec, int>;

template <class T>
void expectModel(const Member<T>& member, const Mask& mask, RoiSize roi, BorderType border, unsigned seed,
                 int spareWidth = 0) {
  SCOPED_TRACE(testing::Message() << member.name << ", mask " << mask.width << "x" << mask.height << ", border 0x"
                                  << std::hex << border << ", seed " << std::dec << seed);
  const MorphWork work(member, roi.width + spareWidth, mask, somePlacement(static_cast<int>(seed)));
  const auto specBefore = work.specBytes();
  for (const bool erode : {true, false}) {
    const Source<T> src(roi, mask, mask.centre(), channelsOf(member.name), border, seed);
    const auto run = [&](const auto& dst) { return work.run(member.operations[erode ? 0 : 1], src, dst, roi, border); };
    const auto plain = [&](auto read) { return plainFilter<T>(mask, mask.centre(), erode, roi, border, read); };
    ASSERT_NO_FATAL_FAILURE(expectResults(src, seed, run, plain)) << (erode ? "erosion" : "dilation");
    ASSERT_EQ(work.specBytes(), specBefore);
  }
}

TEST(Morphology, EveryMaskEqualsThePlainModel) {
  forEachMorphMember([]<class T>(const Member<T>& member) {
    unsigned seed = 0;
    const auto borders = acceptedBorders();
    for (const Mask& mask : manyMasks())
      for (const RoiSize roi : {RoiSize{1, 1}, RoiSize{3, 40}, RoiSize{37, 3}, RoiSize{70, 21}}) {
        const BorderType border = ++seed % 2 == 0 ? BorderReplicate : borders[seed % borders.size()];
        ASSERT_NO_FATAL_FAILURE(expectModel(member, mask, roi, border, seed, static_cast<int>(seed % 2 * 9)));
      }
  });
}

TEST(Morphology, EveryWidthEqualsThePlainModel) {
  const std::vector<Mask> masks = {full(3, 3), ellipse(5, 5), full(9, 9), scattered(5, 3, 1), full(2, 1)};
  forEachMorphMember([&]<class T>(const Member<T>& member) {
    for (unsigned width = 1; width * channelsOf(member.name) <= 150; ++width)
      ASSERT_NO_FATAL_FAILURE(
          expectModel(member, masks[width % masks.size()], {static_cast<int>(width), 6}, BorderReplicate, width));
  });
}

TEST(Morphology, EveryBorderEqualsThePlainModel) {
  const std::vector<Mask> masks = {full(4, 4), drawn({"x..", "...", ".x."}), scattered(7, 5, 3), drawn({"xxxxxxxxx"})};
  forEachMorphMember([&]<class T>(const Member<T>& member) {
    unsigned seed = 0;
    for (const BorderType border : acceptedBorders())
      for (const Mask& mask : masks)
        for (const RoiSize roi : {RoiSize{2, 2}, RoiSize{20, 9}})
          ASSERT_NO_FATAL_FAILURE(expectModel(member, mask, roi, border, ++seed));
  });
}

TEST(Morphology, WideRowsAndMasksEqualThePlainModel) {  // also rings that are split into strips
  forEachMorphMember([]<class T>(const Member<T>& member) {
    for (const Mask& mask : {full(300, 1), full(1200, 1), scattered(500, 2, 4), full(20, 40), ellipse(70, 70)})
      for (const BorderType border : {BorderReplicate, BorderInMemory})
        for (const int width : {2, 1300})
          ASSERT_NO_FATAL_FAILURE(expectModel(member, mask, {width, mask.height > 2 ? 3 : 2}, border, 4));
  });
}

TEST(Morphology, UnknownModeWritesNothing) {
  forEachMorphMember([]<class T>(const Member<T>& member) {
    const MorphWork work(member, 8, full(3, 3));
    const Image<T> src(8 * channelsOf(member.name), 4), dst(8 * channelsOf(member.name), 4);
    const auto before = dst.bytes(), bufferBefore = work.bufferBytes();
    for (const int mode : {-1, 4, 1000}) {
      work.setWord(17, mode);
      for (const auto& filter : member.operations)
        ASSERT_EQ(work.run(filter, src, dst, {8, 4}, BorderReplicate), StatusOk);
      EXPECT_EQ(dst.bytes(), before);
      EXPECT_EQ(work.bufferBytes(), bufferBefore);
    }
  });
}

TEST(Morphology, EmptyMasksCheckTheWidthToo) {
  forEachMorphMember([]<class T>(const Member<T>& member) {
    const MorphWork empty(member, 8, drawn({"..."}));
    const Image<T> wide(9 * channelsOf(member.name), 1);
    EXPECT_EQ(empty.run(member.operations[0], wide, wide, {9, 1}, BorderReplicate), ErrSize);
  });
}

// The older family, with the anchor anywhere and the work memory inside the state.
template <class T>
struct StateMember {
  using Filter = Status (*)(const T*, int, T*, int, RoiSize, BorderType, MorphState*);

  std::string name;
  Status (*getSize)(int, const uint8_t*, RoiSize, int*);
  Status (*init)(int, const uint8_t*, RoiSize, Point, MorphState*);
  Status (*initAlloc)(int, const uint8_t*, RoiSize, Point, MorphState**);
  Filter erode, dilate;
};

template <class F>
void forEachStateMember(F f) {
#define ZVP_MEMBER(T, NAME)                                                                                        \
  f(StateMember<T>{#NAME, zvpiMorphologyGetSize_##NAME, zvpiMorphologyInit_##NAME, zvpiMorphologyInitAlloc_##NAME, \
                   zvpiErodeBorderReplicate_##NAME, zvpiDilateBorderReplicate_##NAME})
  ZVP_MEMBER(uint8_t, 8u_C1R);
  ZVP_MEMBER(uint8_t, 8u_C3R);
  ZVP_MEMBER(uint8_t, 8u_C4R);
  ZVP_MEMBER(float, 32f_C1R);
  ZVP_MEMBER(float, 32f_C3R);
  ZVP_MEMBER(float, 32f_C4R);
#undef ZVP_MEMBER
}

template <class T>
void expectStateModel(const StateMember<T>& member, const Mask& mask, Point anchor, unsigned seed) {
  SCOPED_TRACE(testing::Message() << member.name << " anchor " << anchor.x << ", " << anchor.y);
  constexpr RoiSize kRoi{20, 7};
  int size = 0;
  ASSERT_EQ(member.getSize(kRoi.width, mask.members.data(), mask.size(), &size), StatusOk);
  const GuardedBlock block(static_cast<size_t>(size), somePlacement(static_cast<int>(seed)));
  auto* own = reinterpret_cast<MorphState*>(block.start());
  ASSERT_EQ(member.init(kRoi.width, mask.members.data(), mask.size(), anchor, own), StatusOk);
  MorphState* allocated = nullptr;
  ASSERT_EQ(member.initAlloc(kRoi.width, mask.members.data(), mask.size(), anchor, &allocated), StatusOk);
  for (MorphState* state : {own, allocated}) {
    for (const bool erode : {true, false}) {
      const Source<T> src(kRoi, mask, anchor, channelsOf(member.name), BorderReplicate, seed);
      const auto filter = erode ? member.erode : member.dilate;
      const auto run = [&](const auto& dst) {
        return filter(src.data(), src.step(), dst.data(), dst.step(), kRoi, BorderReplicate, state);
      };
      const auto plain = [&](auto read) { return plainFilter<T>(mask, anchor, erode, kRoi, BorderReplicate, read); };
      ASSERT_NO_FATAL_FAILURE(expectResults(src, seed, run, plain));
    }
  }
  EXPECT_EQ(zvpiMorphologyFree(allocated), StatusOk);
}

TEST(MorphState, EveryAnchorEqualsThePlainModel) {
  forEachStateMember([]<class T>(const StateMember<T>& member) {
    unsigned seed = 0;
    for (const Mask& mask : {full(3, 4), scattered(4, 3, 2), full(1, 1), drawn({"..", ".."}), drawn({"xx.", "..x"})})
      for (int y = 0; y < mask.height; ++y)
        for (int x = 0; x < mask.width; ++x) ASSERT_NO_FATAL_FAILURE(expectStateModel(member, mask, {x, y}, ++seed));
  });
}

}  // namespace
}  // namespace zvp::test
