// Erosion and dilation against the plain model: every mask, border, width, placement; in place; the older family.
#include "support/allocator.h"
#include "support/checks.h"
#include "support/morphology.h"

namespace zvp::test {
namespace {

constexpr int kWidest = 150;

template <class T>
struct Case {
  const MorphMember<T>& member;
  Mask mask;
  RoiSize roi;
  BorderType border;
  Placement placement;
  int maxWidth;
  unsigned seed;
};

template <class T>
void expectModel(const Case<T>& c) {
  SCOPED_TRACE(testing::Message() << c.member.name << ", mask " << c.mask.width << "x" << c.mask.height << ", border 0x"
                                  << std::hex << c.border << ", seed " << std::dec << c.seed);
  const int channels = c.member.channels, extra = static_cast<int>(c.seed % 3 * sizeof(T));
  const Point anchor = c.mask.centre();
  const MorphWork work(c.member, c.maxWidth, c.mask, c.placement);
  for (const bool erode : {true, false}) {
    const auto& filter = erode ? c.member.erode : c.member.dilate;
    const Source<T> src(c.roi, c.mask, anchor, channels, c.border, extra, c.placement, c.seed);
    const Image<T> dst(c.roi.width * channels, c.roi.height, extra, c.placement);
    const auto specBefore = work.specBytes(), srcBefore = src.image().bytes();
    ASSERT_EQ(filter(src.data(), src.step(), dst.data(), dst.step(), c.roi, c.border, work.spec(), work.buffer()),
              StatusOk);
    ASSERT_TRUE(matches(dst, [&](int y, int i) {
      return plainExtremum<T>(c.mask, anchor, erode, i / channels, y,
                              [&](int x, int row) { return src.pixel(x, row, i % channels); });
    })) << (erode ? "erosion" : "dilation");
    ASSERT_EQ(work.specBytes(), specBefore);
    ASSERT_EQ(src.image().bytes(), srcBefore);
    ASSERT_EQ(filter(src.data(), src.step(), src.data(), src.step(), c.roi, c.border, work.spec(), work.buffer()),
              StatusOk);
    for (int y = 0; y < c.roi.height; ++y)
      for (int i = 0; i < c.roi.width * channels; ++i)
        ASSERT_TRUE(sameBits(src.memory(i / channels, y, i % channels), dst.get(y, i))) << "in place " << y << " " << i;
  }
}

TEST(Morphology, EveryMaskEqualsThePlainModel) {
  forEachMorphMember([]<class T>(const MorphMember<T>& member) {
    unsigned seed = 0;
    const auto borders = acceptedBorders();
    for (const Mask& mask : manyMasks()) {
      for (const RoiSize roi : {RoiSize{1, 1}, RoiSize{3, 40}, RoiSize{37, 3}, RoiSize{70, 21}}) {
        ++seed;
        expectModel<T>({member, mask, roi, seed % 2 == 0 ? BorderReplicate : borders[seed % borders.size()],
                        kPlacements[seed % kPlacements.size()], roi.width + static_cast<int>(seed % 2 * 9), seed});
        if (testing::Test::HasFatalFailure()) return;
      }
    }
  });
}

TEST(Morphology, EveryWidthEqualsThePlainModel) {
  const std::vector<Mask> masks = {full(3, 3), ellipse(5, 5), full(9, 9), scattered(5, 3, 1), full(2, 1)};
  forEachMorphMember([&]<class T>(const MorphMember<T>& member) {
    for (int width = 1; width * member.channels <= kWidest; ++width) {
      const auto seed = static_cast<unsigned>(width);
      expectModel<T>({member,
                      masks[seed % masks.size()],
                      {width, 6},
                      BorderReplicate,
                      kPlacements[seed % kPlacements.size()],
                      width,
                      seed});
      if (testing::Test::HasFatalFailure()) return;
    }
  });
}

TEST(Morphology, EveryBorderEqualsThePlainModel) {
  const std::vector<Mask> masks = {full(4, 4), drawn({"x..", "...", ".x."}), scattered(7, 5, 3), drawn({"xxxxxxxxx"})};
  forEachMorphMember([&]<class T>(const MorphMember<T>& member) {
    unsigned seed = 0;
    for (const BorderType border : acceptedBorders()) {
      for (const Mask& mask : masks) {
        for (const RoiSize roi : {RoiSize{2, 2}, RoiSize{20, 9}}) {
          expectModel<T>({member, mask, roi, border, kPlacements[++seed % kPlacements.size()], roi.width, seed});
          if (testing::Test::HasFatalFailure()) return;
        }
      }
    }
  });
}

TEST(Morphology, WideRowsAndMasksEqualThePlainModel) {  // also rings that are split into strips
  forEachMorphMember([]<class T>(const MorphMember<T>& member) {
    for (const Mask& mask : {full(300, 1), full(1200, 1), scattered(500, 2, 4), full(20, 40), ellipse(70, 70)}) {
      for (const BorderType border : {BorderReplicate, BorderInMemory}) {
        for (const int width : {2, 1300}) {
          expectModel<T>(
              {member, mask, {width, mask.height > 2 ? 3 : 2}, border, {}, width, static_cast<unsigned>(width)});
          if (testing::Test::HasFatalFailure()) return;
        }
      }
    }
  });
}

TEST(Morphology, HandComputedRow) {
  const uint8_t src[] = {5, 1, 9, 9, 4};
  uint8_t dst[5];
  const auto run = [&](const Mask& mask, bool erode) {
    int specSize, bufferSize;
    EXPECT_EQ(zvpiMorphologyBorderGetSize_8u_C1R(5, mask.size(), &specSize, &bufferSize), StatusOk);
    std::vector<uint8_t> spec(static_cast<size_t>(specSize)), buffer(static_cast<size_t>(bufferSize));
    auto* object = reinterpret_cast<MorphBorderSpec*>(spec.data());
    EXPECT_EQ(zvpiMorphologyBorderInit_8u_C1R(5, mask.members.data(), mask.size(), object, buffer.data()), StatusOk);
    EXPECT_EQ((erode ? zvpiErodeBorder_8u_C1R : zvpiDilateBorder_8u_C1R)(src, 5, dst, 5, {5, 1}, BorderReplicate, 200,
                                                                         object, buffer.data()),
              StatusOk);
    return std::vector<uint8_t>(dst, dst + 5);
  };
  EXPECT_EQ(run(full(3, 1), true), (std::vector<uint8_t>{1, 1, 1, 4, 4}));
  EXPECT_EQ(run(full(3, 1), false), (std::vector<uint8_t>{5, 9, 9, 9, 9}));
  EXPECT_EQ(run(full(4, 4), true), (std::vector<uint8_t>{1, 1, 1, 4, 4})) << "anchor (1, 1), border value unused";
  EXPECT_EQ(run(full(2, 1), true), (std::vector<uint8_t>{1, 1, 9, 4, 4})) << "anchor (0, 0)";
  EXPECT_EQ(run(drawn({"x.."}), true), (std::vector<uint8_t>{5, 5, 1, 9, 9})) << "the left neighbour alone";
  EXPECT_EQ(run(drawn({"..."}), false), (std::vector<uint8_t>{5, 1, 9, 9, 4})) << "no member: a copy";
}

TEST(Morphology, UnknownModeWritesNothing) {
  forEachMorphMember([]<class T>(const MorphMember<T>& member) {
    const MorphWork work(member, 8, full(3, 3), {});
    const Image<T> src(8 * member.channels, 4), dst(8 * member.channels, 4);
    const auto before = dst.bytes(), bufferBefore = work.bufferBytes();
    for (const int mode : {-1, 4, 1000}) {
      work.setWord(17, mode);
      ASSERT_EQ(member.erode(src.data(), src.step(), dst.data(), dst.step(), {8, 4}, BorderReplicate, work.spec(),
                             work.buffer()),
                StatusOk);
      EXPECT_EQ(member.dilate(src.data(), src.step(), dst.data(), dst.step(), {9, 4}, BorderReplicate, work.spec(),
                              work.buffer()),
                member.channels * int{sizeof(T)} > 0 && src.step() < 9 * member.channels * int{sizeof(T)} ? ErrStep
                                                                                                          : ErrSize);
      EXPECT_EQ(dst.bytes(), before);
      EXPECT_EQ(work.bufferBytes(), bufferBefore);
    }
  });
}

template <class T>
Call filterCall(const MorphMember<T>& member, const typename MorphMember<T>::Filter& filter, const MorphWork& work,
                const Image<T>& src, const Image<T>& dst) {
  return {member.name,
          {{src.data(), src.step(), int{sizeof(T)}}, {dst.data(), dst.step(), int{sizeof(T)}}},
          {work.spec(), work.buffer()},
          {src.width() / member.channels, src.height()},
          [filter](const auto& o, const auto& p, RoiSize roi) {
            const bool planted = roi.width < 1 || roi.height < 1 || o[0].step < 1;
            return filter(static_cast<const T*>(o[0].data), o[0].step, static_cast<T*>(const_cast<void*>(o[1].data)),
                          o[1].step, roi, planted ? BorderWrap : BorderReplicate,
                          static_cast<const MorphBorderSpec*>(p[0]), static_cast<uint8_t*>(const_cast<void*>(p[1])));
          }};
}

TEST(Morphology, ChecksInOrderAndWritesNothing) {
  forEachMorphMember([]<class T>(const MorphMember<T>& member) {
    SCOPED_TRACE(member.name);
    const MorphWork work(member, 8, full(3, 3), {});
    const Image<T> src(8 * member.channels, 4), dst(8 * member.channels, 4), wide(9 * member.channels, 4);
    const auto before = dst.bytes(), bufferBefore = work.bufferBytes();
    for (const auto& filter : {member.erode, member.dilate}) {
      expectStandardChecks(filterCall(member, filter, work, src, dst));
      const auto with = [&](BorderType border, RoiSize roi, const Image<T>& image) {
        return filter(image.data(), image.step(), image.data(), image.step(), roi, border, work.spec(), work.buffer());
      };
      for (const BorderType border : {0, 2, 3, 4, 5, 7, 15, 0xf0, 0x10, -1})
        EXPECT_EQ(with(border, {9, 4}, wide), ErrBorderType) << border;
      EXPECT_EQ(with(BorderReplicate, {9, 4}, wide), ErrSize);
    }
    EXPECT_EQ(dst.bytes(), before);
    EXPECT_EQ(work.bufferBytes(), bufferBefore);
  });
}

TEST(Morphology, EmptyMaskStillChecks) {
  forEachMorphMember([]<class T>(const MorphMember<T>& member) {
    const MorphWork work(member, 8, drawn({"..."}), {});
    const Image<T> wide(9 * member.channels, 1);
    EXPECT_EQ(member.erode(wide.data(), wide.step(), wide.data(), wide.step(), {9, 1}, BorderReplicate, work.spec(),
                           work.buffer()),
              ErrSize);
  });
}

// The older family, with the anchor anywhere and the work memory inside the state.
template <class T>
struct StateMember {
  const char* name;
  int channels;
  Status (*getSize)(int, const uint8_t*, RoiSize, int*);
  Status (*init)(int, const uint8_t*, RoiSize, Point, MorphState*);
  Status (*initAlloc)(int, const uint8_t*, RoiSize, Point, MorphState**);
  Status (*erode)(const T*, int, T*, int, RoiSize, BorderType, MorphState*);
  Status (*dilate)(const T*, int, T*, int, RoiSize, BorderType, MorphState*);
};

#define ZVP_STATE_MEMBER(T, CHANNELS, NAME)                                                                   \
  StateMember<T> {                                                                                            \
#NAME, CHANNELS, zvpiMorphologyGetSize_##NAME, zvpiMorphologyInit_##NAME, zvpiMorphologyInitAlloc_##NAME, \
        zvpiErodeBorderReplicate_##NAME, zvpiDilateBorderReplicate_##NAME                                     \
  }

template <class F>
void forEachStateMember(F f) {
  f(ZVP_STATE_MEMBER(uint8_t, 1, 8u_C1R));
  f(ZVP_STATE_MEMBER(uint8_t, 3, 8u_C3R));
  f(ZVP_STATE_MEMBER(uint8_t, 4, 8u_C4R));
  f(ZVP_STATE_MEMBER(float, 1, 32f_C1R));
  f(ZVP_STATE_MEMBER(float, 3, 32f_C3R));
  f(ZVP_STATE_MEMBER(float, 4, 32f_C4R));
}

template <class T>
void expectStateModel(const StateMember<T>& member, const Mask& mask, Point anchor, RoiSize roi, Placement placement) {
  const int channels = member.channels;
  int size = 0;
  ASSERT_EQ(member.getSize(roi.width, mask.members.data(), mask.size(), &size), StatusOk);
  const GuardedBlock block(static_cast<size_t>(size), placement);
  auto* own = reinterpret_cast<MorphState*>(block.start());
  ASSERT_EQ(member.init(roi.width, mask.members.data(), mask.size(), anchor, own), StatusOk);
  MorphState* allocated = nullptr;
  ASSERT_EQ(member.initAlloc(roi.width, mask.members.data(), mask.size(), anchor, &allocated), StatusOk);
  const Source<T> src(roi, mask, anchor, channels, BorderReplicate, 0, placement, 5);
  const Image<T> dst(roi.width * channels, roi.height, 0, placement);
  for (MorphState* state : {own, allocated}) {
    for (const bool erode : {true, false}) {
      ASSERT_EQ((erode ? member.erode : member.dilate)(src.data(), src.step(), dst.data(), dst.step(), roi,
                                                       BorderReplicate, state),
                StatusOk);
      ASSERT_TRUE(matches(dst, [&](int y, int i) {
        return plainExtremum<T>(mask, anchor, erode, i / channels, y,
                                [&](int x, int row) { return src.pixel(x, row, i % channels); });
      }));
    }
  }
  ASSERT_EQ(member.erode(src.data(), src.step(), dst.data(), dst.step(), roi, BorderReplicate, own), StatusOk);
  ASSERT_EQ(member.erode(src.data(), src.step(), src.data(), src.step(), roi, BorderReplicate, own), StatusOk);
  ASSERT_TRUE(matches(dst, [&](int y, int i) { return src.memory(i / channels, y, i % channels); })) << "in place";
  EXPECT_EQ(zvpiMorphologyFree(allocated), StatusOk);
}

TEST(MorphState, EveryAnchorEqualsThePlainModel) {
  forEachStateMember([]<class T>(const StateMember<T>& member) {
    size_t k = 0;
    for (const Mask& mask : {full(3, 4), scattered(4, 3, 2), full(1, 1), drawn({"..", ".."}), drawn({"xx.", "..x"})}) {
      for (int y = 0; y < mask.height; ++y) {
        for (int x = 0; x < mask.width; ++x) {
          SCOPED_TRACE(testing::Message() << member.name << " anchor " << x << ", " << y);
          expectStateModel<T>(member, mask, {x, y}, {20, 7}, kPlacements[++k % kPlacements.size()]);
          if (testing::Test::HasFatalFailure()) return;
        }
      }
    }
  });
}

TEST(MorphState, ChecksInOrderAndWritesNothing) {
  forEachStateMember([]<class T>(const StateMember<T>& member) {
    SCOPED_TRACE(member.name);
    const uint8_t mask[6] = {1, 1, 1, 1, 1, 1};
    int size = -1;
    EXPECT_EQ(member.getSize(0, nullptr, {0, 0}, &size), ErrNullPtr);
    EXPECT_EQ(member.getSize(0, mask, {0, 0}, nullptr), ErrNullPtr);
    for (const auto& [width, maskSize] : {std::pair{0, RoiSize{1, 1}}, {1, {0, 1}}, {1, {1, -1}}})
      EXPECT_EQ(member.getSize(width, mask, maskSize, &size), ErrSize);
    EXPECT_EQ(member.getSize(INT32_MAX, mask, {1, 1}, &size), ErrSize);
    EXPECT_EQ(member.getSize(1, mask, {1 << 20, 1 << 20}, &size), ErrSize);
    EXPECT_EQ(size, -1);

    MorphState* state = nullptr;
    EXPECT_EQ(member.init(0, nullptr, {0, 0}, {9, 9}, nullptr), ErrNullPtr);
    EXPECT_EQ(member.init(0, mask, {0, 0}, {9, 9}, nullptr), ErrNullPtr);
    EXPECT_EQ(member.initAlloc(0, nullptr, {0, 0}, {9, 9}, &state), ErrNullPtr);
    EXPECT_EQ(member.initAlloc(0, mask, {0, 0}, {9, 9}, nullptr), ErrNullPtr);
    EXPECT_EQ(member.initAlloc(0, mask, {2, 3}, {9, 9}, &state), ErrSize);
    EXPECT_EQ(member.initAlloc(4, mask, {2, 0}, {9, 9}, &state), ErrSize);
    for (const Point anchor : {Point{-1, 0}, Point{2, 0}, Point{0, -1}, Point{0, 3}})
      EXPECT_EQ(member.initAlloc(4, mask, {2, 3}, anchor, &state), ErrAnchor);
    EXPECT_EQ(member.initAlloc(INT32_MAX, mask, {2, 3}, {0, 0}, &state), ErrNoMemory);
    failAllocation(1);
    EXPECT_EQ(member.initAlloc(4, mask, {2, 3}, {0, 0}, &state), ErrNoMemory);
    failAllocation(0);
    EXPECT_EQ(state, nullptr);
    EXPECT_EQ(zvpiMorphologyFree(nullptr), ErrNullPtr);

    const int live = liveAllocations();
    ASSERT_EQ(member.initAlloc(8, mask, {2, 3}, {0, 0}, &state), StatusOk);
    EXPECT_EQ(liveAllocations(), live + 1);
    EXPECT_EQ(member.init(INT32_MAX, mask, {2, 3}, {0, 0}, state), ErrSize);
    const Image<T> src(8 * member.channels, 4), dst(8 * member.channels, 4), wide(9 * member.channels, 4);
    const auto before = dst.bytes();
    for (const auto filter : {member.erode, member.dilate}) {
      expectStandardChecks({member.name,
                            {{src.data(), src.step(), int{sizeof(T)}}, {dst.data(), dst.step(), int{sizeof(T)}}},
                            {state},
                            {8, 4},
                            [filter](const auto& o, const auto& p, RoiSize roi) {
                              return filter(static_cast<const T*>(o[0].data), o[0].step,
                                            static_cast<T*>(const_cast<void*>(o[1].data)), o[1].step, roi,
                                            roi.width < 1 ? BorderWrap : BorderReplicate,
                                            static_cast<MorphState*>(const_cast<void*>(p[0])));
                            }});
      for (const BorderType border : {0, 2, 6, 0x11, 0x101, 0xf1})
        EXPECT_EQ(filter(wide.data(), wide.step(), wide.data(), wide.step(), {9, 4}, border, state), ErrBadArg);
      EXPECT_EQ(filter(wide.data(), wide.step(), wide.data(), wide.step(), {9, 4}, BorderReplicate, state), ErrSize);
    }
    EXPECT_EQ(dst.bytes(), before);
    EXPECT_EQ(zvpiMorphologyFree(state), StatusOk);
    EXPECT_EQ(liveAllocations(), live);
  });
}

}  // namespace
}  // namespace zvp::test
