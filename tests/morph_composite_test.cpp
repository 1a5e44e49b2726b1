// Opening, closing, top-hat, black-hat and gradient against two plain steps; sizes, specifications, checks.
#include <map>

#include "support/allocator.h"
#include "support/checks.h"
#include "support/morphology.h"

namespace zvp::test {
namespace {

enum Operation { kOpen, kClose, kTophat, kBlackhat, kGradient };

template <class T>
struct AdvMember {
  using Filter = Status (*)(const T*, int, T*, int, RoiSize, BorderType, const MorphAdvSpec*, uint8_t*);

  const char* name;
  int channels;
  Status (*getSize)(RoiSize, RoiSize, int*, int*);
  Status (*init)(RoiSize, const uint8_t*, RoiSize, MorphAdvSpec*, uint8_t*);
  Filter operations[5];
};

#define ZVP_ADV_OPERATION(T, OPERATION, NAME, VALUE)                                                           \
  [](const T* src, int srcStep, T* dst, int dstStep, RoiSize roi, BorderType border, const MorphAdvSpec* spec, \
     uint8_t* buffer) {                                                                                        \
    return zvpiMorph##OPERATION##Border_##NAME(src, srcStep, dst, dstStep, roi, border, VALUE, spec, buffer);  \
  }

#define ZVP_ADV_MEMBER(T, CHANNELS, NAME, VALUE)                                                  \
  AdvMember<T> {                                                                                  \
#NAME, CHANNELS, zvpiMorphAdvGetSize_##NAME, zvpiMorphAdvInit_##NAME, {                       \
      ZVP_ADV_OPERATION(T, Open, NAME, VALUE), ZVP_ADV_OPERATION(T, Close, NAME, VALUE),          \
          ZVP_ADV_OPERATION(T, Tophat, NAME, VALUE), ZVP_ADV_OPERATION(T, Blackhat, NAME, VALUE), \
          ZVP_ADV_OPERATION(T, Gradient, NAME, VALUE)                                             \
    }                                                                                             \
  }

template <class F>
void forEachAdvMember(F f) {
  f(ZVP_ADV_MEMBER(uint8_t, 1, 8u_C1R, 9));
  f(ZVP_ADV_MEMBER(uint8_t, 3, 8u_C3R, nullptr));
  f(ZVP_ADV_MEMBER(uint8_t, 4, 8u_C4R, nullptr));
  f(ZVP_ADV_MEMBER(uint16_t, 1, 16u_C1R, 9));
  f(ZVP_ADV_MEMBER(int16_t, 1, 16s_C1R, 9));
  f(ZVP_ADV_MEMBER(float, 1, 32f_C1R, 9.0f));
  f(ZVP_ADV_MEMBER(float, 3, 32f_C3R, nullptr));
  f(ZVP_ADV_MEMBER(float, 4, 32f_C4R, nullptr));
}

// A specification and a work buffer of exactly the reported size; the buffer that Init saw is gone.
class AdvWork {
 public:
  template <class T>
  AdvWork(const AdvMember<T>& member, RoiSize roi, const Mask& mask, Placement placement) {
    EXPECT_EQ(member.getSize(roi, mask.size(), &specSize_, &bufferSize_), StatusOk);
    if (sizeof(T) == 2) placement.shift *= 4;
    spec_ = std::make_unique<GuardedBlock>(static_cast<size_t>(specSize_), placement);
    buffer_ = std::make_unique<GuardedBlock>(static_cast<size_t>(bufferSize_), placement);
    const GuardedBlock first(static_cast<size_t>(bufferSize_), {});
    EXPECT_EQ(member.init(roi, mask.members.data(), mask.size(), spec(), first.start()), StatusOk);
    const auto capacity = static_cast<size_t>(word(3));
    EXPECT_EQ(std::count(first.start(), first.start() + capacity, 0), static_cast<std::ptrdiff_t>(capacity));
    EXPECT_EQ(first.start()[capacity], GuardedBlock::kCanary);
  }

  MorphAdvSpec* spec() const { return reinterpret_cast<MorphAdvSpec*>(spec_->start()); }
  uint8_t* buffer() const { return buffer_->start(); }
  int specSize() const { return specSize_; }
  int bufferSize() const { return bufferSize_; }
  int32_t word(int i, int offset = 0) const {
    int32_t value;
    memcpy(&value, spec_->start() + offset + 4 * i, sizeof value);
    return value;
  }
  const uint8_t* target(int i, int offset = 0) const {
    const auto value = static_cast<uint32_t>(word(i, offset));
    return sizeof(void*) == 4 ? reinterpret_cast<const uint8_t*>(uintptr_t{value}) : spec_->start() + offset + value;
  }
  std::vector<uint8_t> bytes() const { return spec_->bytes(); }
  std::vector<uint8_t> bufferBytes() const { return buffer_->bytes(); }

 private:
  int specSize_ = 0, bufferSize_ = 0;
  std::unique_ptr<GuardedBlock> spec_, buffer_;
};

template <class T>
T minus(T a, T b) {
  if constexpr (std::is_floating_point_v<T>) {
    return a - b;
  } else {
    return static_cast<T>(
        std::clamp<int>(int{a} - int{b}, std::numeric_limits<T>::min(), std::numeric_limits<T>::max()));
  }
}

// Two plain steps; src(x, y) reads memory. The first step covers the region enlarged on the sides in memory.
template <class T, class Read>
class TwoSteps {
 public:
  TwoSteps(const Mask& mask, RoiSize roi, BorderType border, bool erodeFirst, Read src)
      : mask_(mask), roi_(roi), border_(border), erodeFirst_(erodeFirst), src_(src) {
    const auto inMemory = [border](BorderType flag) { return (border & 15) == BorderInMemory || (border & flag) != 0; };
    const Point anchor = mask.centre();
    left_ = inMemory(BorderLeftInMemory) ? anchor.x : 0;
    top_ = inMemory(BorderTopInMemory) ? anchor.y : 0;
    enlarged_ = {roi.width + left_ + (inMemory(BorderRightInMemory) ? mask.width - anchor.x - 1 : 0),
                 roi.height + top_ + (inMemory(BorderBottomInMemory) ? mask.height - anchor.y - 1 : 0)};
  }

  T operator()(int x, int y) {
    return plainExtremum<T>(mask_.rotated(), mask_.centre(), !erodeFirst_, x, y, [&](int column, int row) {
      const Point p = resolve(column, row, roi_, border_);
      return first(p.x, p.y);
    });
  }

 private:
  T first(int x, int y) {
    const auto [known, isNew] = cache_.try_emplace({x, y});
    if (isNew) {
      known->second = plainExtremum<T>(mask_, mask_.centre(), erodeFirst_, x, y, [&](int column, int row) {
        const Point p = resolve(column + left_, row + top_, enlarged_, border_);
        return src_(p.x - left_, p.y - top_);
      });
    }
    return known->second;
  }

  const Mask mask_;
  RoiSize roi_, enlarged_;
  BorderType border_;
  bool erodeFirst_;
  Read src_;
  int left_, top_;
  std::map<std::pair<int, int>, T> cache_;
};

template <class T, class Read>
std::vector<T> plainOperation(Operation operation, const Mask& mask, RoiSize roi, BorderType border, Read src) {
  std::vector<T> result;
  TwoSteps<T, Read> steps(mask, roi, border, operation == kOpen || operation == kTophat, src);
  for (int y = 0; y < roi.height; ++y) {
    for (int x = 0; x < roi.width; ++x) {
      const auto once = [&](bool erode) {
        return plainExtremum<T>(mask, mask.centre(), erode, x, y, [&](int column, int row) {
          const Point p = resolve(column, row, roi, border);
          return src(p.x, p.y);
        });
      };
      result.push_back(operation == kOpen || operation == kClose ? steps(x, y)
                       : operation == kTophat                    ? minus<T>(src(x, y), steps(x, y))
                       : operation == kBlackhat                  ? minus<T>(steps(x, y), src(x, y))
                                                                 : minus<T>(once(false), once(true)));
    }
  }
  return result;
}

template <class T>
void expectOperations(const AdvMember<T>& member, const Mask& mask, RoiSize roi, BorderType border, RoiSize largest,
                      Placement placement, unsigned seed) {
  SCOPED_TRACE(testing::Message() << member.name << ", mask " << mask.width << "x" << mask.height << ", roi "
                                  << roi.width << "x" << roi.height << ", border " << border << ", seed " << seed);
  const int channels = member.channels;
  const AdvWork work(member, largest, mask, placement);
  const auto specBefore = work.bytes();
  for (const Operation operation : {kOpen, kClose, kTophat, kBlackhat, kGradient}) {
    const Source<T> src(roi, mask, mask.centre(), channels, border, 0, placement, seed, operation == kGradient ? 1 : 2);
    const Image<T> dst(roi.width * channels, roi.height, sizeof(T), placement);
    ASSERT_EQ(member.operations[operation](src.data(), src.step(), dst.data(), dst.step(), roi, border, work.spec(),
                                           work.buffer()),
              StatusOk);
    for (int c = 0; c < channels; ++c) {
      const auto want =
          plainOperation<T>(operation, mask, roi, border, [&](int x, int y) { return src.memory(x, y, c); });
      for (int y = 0; y < roi.height; ++y)
        for (int x = 0; x < roi.width; ++x)
          ASSERT_TRUE(sameBits(dst.get(y, x * channels + c), want[static_cast<size_t>(y * roi.width + x)]))
              << "operation " << operation << ", pixel " << x << ", " << y;
    }
    ASSERT_TRUE(dst.onlyRowsWritten());
    ASSERT_EQ(work.bytes(), specBefore);
    ASSERT_EQ(member.operations[operation](src.data(), src.step(), src.data(), src.step(), roi, border, work.spec(),
                                           work.buffer()),
              StatusOk);
    for (int y = 0; y < roi.height; ++y)
      for (int i = 0; i < roi.width * channels; ++i)
        ASSERT_TRUE(sameBits(src.memory(i / channels, y, i % channels), dst.get(y, i)))
            << "in place, operation " << operation << ", " << i << ", " << y;
  }
}

TEST(MorphAdv, EveryMaskEqualsTwoPlainSteps) {
  forEachAdvMember([]<class T>(const AdvMember<T>& member) {
    const auto borders = acceptedBorders();
    unsigned seed = 0;
    for (const Mask& mask : manyMasks()) {
      for (const RoiSize roi : {RoiSize{1, 1}, RoiSize{23, 7}}) {
        ++seed;
        expectOperations<T>(member, mask, roi, borders[seed % borders.size()], roi,
                            kPlacements[seed % kPlacements.size()], seed);
        if (testing::Test::HasFatalFailure()) return;
      }
    }
  });
}

TEST(MorphAdv, EveryBorderAndNarrowRegions) {
  forEachAdvMember([]<class T>(const AdvMember<T>& member) {
    unsigned seed = 0;
    for (const BorderType border : acceptedBorders()) {
      for (const Mask& mask : {drawn({"xx..", "....", "x...", "..x."}), full(4, 3), full(2, 5)}) {
        const RoiSize roi{20, 5};
        ++seed;
        expectOperations<T>(member, mask, roi, border, {seed % 2 == 0 ? 20 : 33, 5},
                            kPlacements[seed % kPlacements.size()], seed);
        if (testing::Test::HasFatalFailure()) return;
      }
    }
  });
}

TEST(MorphAdv, MaskMuchWiderThanTheRegion) {  // the enlarged region's rows do not fit the work area
  forEachAdvMember([]<class T>(const AdvMember<T>& member) {
    for (const Mask& mask : {full(301, 1), scattered(101, 2, 3), full(90, 3)})
      for (const BorderType border : {BorderType{BorderInMemory}, BorderType{BorderReplicate}})
        expectOperations<T>(member, mask, {2, 2}, border, {2, 2}, {}, 7);
  });
}

TEST(MorphAdv, OpeningAndClosingAreIdempotent) {  // as the second step uses the rotated mask
  for (const Mask& mask : {drawn({"x.."}), scattered(5, 5, 6), full(3, 3)}) {
    const auto member = ZVP_ADV_MEMBER(uint8_t, 1, 8u_C1R, 0);
    const RoiSize large{40, 40}, inner{20, 20};
    const AdvWork work(member, large, mask, {});
    const Image<uint8_t> src(40, 40), once(40, 40), twice(40, 40);
    Values<uint8_t> values(4);
    src.fill(values);
    for (const Operation operation : {kOpen, kClose}) {
      const auto filter = member.operations[operation];
      ASSERT_EQ(filter(src.data(), 40, once.data(), 40, large, BorderReplicate, work.spec(), work.buffer()), StatusOk);
      ASSERT_EQ(filter(once.data(), 40, twice.data(), 40, large, BorderReplicate, work.spec(), work.buffer()),
                StatusOk);
      for (int y = 10; y < 10 + inner.height; ++y)
        for (int x = 10; x < 10 + inner.width; ++x) ASSERT_EQ(twice.get(y, x), once.get(y, x));
    }
  }
}

TEST(MorphAdv, HandComputedRows) {
  const auto member = ZVP_ADV_MEMBER(uint8_t, 1, 8u_C1R, 0);
  const AdvWork work(member, {6, 1}, full(3, 1), {}), left(member, {6, 1}, drawn({"x.."}), {});
  const uint8_t src[] = {5, 9, 5, 5, 1, 5};
  uint8_t dst[6];
  const auto run = [&](const AdvWork& w, Operation operation) {
    EXPECT_EQ(member.operations[operation](src, 6, dst, 6, {6, 1}, BorderReplicate, w.spec(), w.buffer()), StatusOk);
    return std::vector<uint8_t>(dst, dst + 6);
  };
  EXPECT_EQ(run(work, kOpen), (std::vector<uint8_t>{5, 5, 5, 5, 1, 1}));
  EXPECT_EQ(run(work, kClose), (std::vector<uint8_t>{9, 9, 5, 5, 5, 5}));
  EXPECT_EQ(run(work, kTophat), (std::vector<uint8_t>{0, 4, 0, 0, 0, 4}));
  EXPECT_EQ(run(work, kBlackhat), (std::vector<uint8_t>{4, 0, 0, 0, 4, 0}));
  EXPECT_EQ(run(work, kGradient), (std::vector<uint8_t>{4, 4, 4, 4, 4, 4}));
  // The left neighbour, then the right neighbour of that: the last pixel sees its own left neighbour.
  EXPECT_EQ(run(left, kOpen), (std::vector<uint8_t>{5, 9, 5, 5, 1, 1}));
  EXPECT_EQ(run(left, kBlackhat), (std::vector<uint8_t>{0, 0, 0, 0, 0, 0})) << "1 - 5 is clamped";
}

TEST(MorphAdv, ObjectAndSizes) {
  const Mask mask = drawn({"x..", "xx.", ".x."});
  forEachAdvMember([&]<class T>(const AdvMember<T>& member) {
    SCOPED_TRACE(member.name);
    const AdvWork work(member, {20, 6}, mask, {});
    int specSize = 0, bufferSize = 0;
    const auto expectInner = [&](const MorphMember<T>& inner) {
      if (strcmp(inner.name, member.name) != 0) return;
      ASSERT_EQ(inner.getSize(20, mask.size(), &specSize, &bufferSize), StatusOk);
    };
    forEachMorphMember([&]<class U>(const MorphMember<U>& inner) {
      if constexpr (std::is_same_v<U, T>) expectInner(inner);
    });
    const int capacity = (22 * member.channels * int{sizeof(T)} + 31) / 32 * 32 * 8;
    EXPECT_EQ(work.specSize(), 2 * specSize + 32);
    EXPECT_EQ(work.bufferSize(), capacity + 2 * bufferSize);
    EXPECT_EQ(work.word(3), capacity);
    const auto* start = reinterpret_cast<const uint8_t*>(work.spec());
    EXPECT_EQ(work.target(0), start + 32);
    EXPECT_EQ(work.target(1), start + 32 + specSize);
    const Mask turned = mask.rotated();
    EXPECT_TRUE(std::equal(mask.members.begin(), mask.members.end(), work.target(0, 32)));
    EXPECT_TRUE(std::equal(turned.members.begin(), turned.members.end(), work.target(0, 32 + specSize)));
    EXPECT_EQ(work.word(15, 32), 20);
  });
  int specSize = 0, bufferSize = 0;
  ASSERT_EQ(zvpiMorphAdvGetSize_1u_C1R({250, 4}, {9, 3}, &specSize, &bufferSize), StatusOk);
  int innerSpec = 0, innerBuffer = 0;
  ASSERT_EQ(zvpiMorphologyBorderGetSize_1u_C1R(250, {9, 3}, &innerSpec, &innerBuffer), StatusOk);
  EXPECT_EQ(specSize, 2 * innerSpec + 32);
  EXPECT_EQ(bufferSize, 64 * 6 + 2 * innerBuffer) << "258 bits are 33 bytes";
}

TEST(MorphAdv, SizeAndInitChecks) {
  forEachAdvMember([]<class T>(const AdvMember<T>& member) {
    int spec = -1, buffer = -1;
    EXPECT_EQ(member.getSize({0, 0}, {0, 0}, nullptr, &buffer), ErrNullPtr);
    EXPECT_EQ(member.getSize({0, 0}, {0, 0}, &spec, nullptr), ErrNullPtr);
    const std::pair<RoiSize, RoiSize> bad[] = {{{0, 1}, {1, 1}},
                                               {{1, 0}, {1, 1}},
                                               {{1, 1}, {0, 1}},
                                               {{1, 1}, {1, 0}},
                                               {{1, INT32_MAX}, {1, 1}},
                                               {{INT32_MAX, 1}, {1, 1}},
                                               {{1, INT32_MAX}, {1, INT32_MAX}},
                                               {{60000, 60000}, {3, 3}}};
    uint8_t mask[1] = {1}, object[64] = {};
    auto* target = reinterpret_cast<MorphAdvSpec*>(object);
    for (const auto& [roi, maskSize] : bad) {
      EXPECT_EQ(member.getSize(roi, maskSize, &spec, &buffer), ErrSize);
      EXPECT_EQ(member.init(roi, mask, maskSize, target, object), ErrSize);
    }
    EXPECT_EQ(spec, -1);
    EXPECT_EQ(buffer, -1);
    EXPECT_EQ(member.init({0, 0}, nullptr, {0, 0}, target, object), ErrNullPtr);
    EXPECT_EQ(member.init({0, 0}, mask, {0, 0}, nullptr, object), ErrNullPtr);
    EXPECT_EQ(member.init({0, 0}, mask, {0, 0}, target, nullptr), ErrNullPtr);
    EXPECT_EQ(std::count(object, object + sizeof object, 0), std::ptrdiff_t{sizeof object});
  });
}

TEST(MorphAdv, AllocatedSpecifications) {
  const Mask mask = full(3, 3);
  for (const auto initAlloc :
       {zvpiMorphAdvInitAlloc_8u_C1R, zvpiMorphAdvInitAlloc_8u_C3R, zvpiMorphAdvInitAlloc_8u_C4R,
        zvpiMorphAdvInitAlloc_32f_C1R, zvpiMorphAdvInitAlloc_32f_C3R, zvpiMorphAdvInitAlloc_32f_C4R}) {
    MorphAdvSpec* spec = nullptr;
    EXPECT_EQ(initAlloc({0, 0}, nullptr, {0, 0}, &spec), ErrNullPtr);
    EXPECT_EQ(initAlloc({0, 0}, mask.members.data(), {0, 0}, nullptr), ErrNullPtr);
    EXPECT_EQ(initAlloc({0, 5}, mask.members.data(), {3, 3}, &spec), ErrSize);
    EXPECT_EQ(initAlloc({60000, 60000}, mask.members.data(), {3, 3}, &spec), ErrNoMemory);
    failAllocation(1);
    EXPECT_EQ(initAlloc({5, 5}, mask.members.data(), {3, 3}, &spec), ErrNoMemory);
    failAllocation(0);
    EXPECT_EQ(spec, nullptr);
    const int live = liveAllocations();
    ASSERT_EQ(initAlloc({5, 5}, mask.members.data(), {3, 3}, &spec), StatusOk);
    EXPECT_EQ(liveAllocations(), live + 1);
    EXPECT_EQ(zvpiMorphAdvFree(spec), StatusOk);
    EXPECT_EQ(liveAllocations(), live);
  }
  EXPECT_EQ(zvpiMorphAdvFree(nullptr), ErrNullPtr);

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

TEST(MorphAdv, ChecksInOrderAndWritesNothing) {
  forEachAdvMember([]<class T>(const AdvMember<T>& member) {
    SCOPED_TRACE(member.name);
    const AdvWork work(member, {8, 4}, full(3, 3), {});
    const int c = member.channels;
    const Image<T> src(8 * c, 4), dst(8 * c, 4), wide(9 * c, 40);
    const auto before = dst.bytes(), wideBefore = wide.bytes(), bufferBefore = work.bufferBytes();
    for (const auto filter : member.operations) {
      expectStandardChecks(
          {member.name,
           {{src.data(), src.step(), int{sizeof(T)}}, {dst.data(), dst.step(), int{sizeof(T)}}},
           {work.spec(), work.buffer()},
           {8, 4},
           [filter](const auto& o, const auto& p, RoiSize roi) {
             return filter(static_cast<const T*>(o[0].data), o[0].step, static_cast<T*>(const_cast<void*>(o[1].data)),
                           o[1].step, roi, roi.width < 1 ? BorderWrap : BorderReplicate,
                           static_cast<const MorphAdvSpec*>(p[0]), static_cast<uint8_t*>(const_cast<void*>(p[1])));
           }});
      const auto with = [&](RoiSize roi, BorderType border) {
        return filter(wide.data(), wide.step(), wide.data(), wide.step(), roi, border, work.spec(), work.buffer());
      };
      for (const BorderType border : {0, 2, 5, 7, 0xf0}) EXPECT_EQ(with({9, 40}, border), ErrBorderType);
      EXPECT_EQ(with({9, 1}, BorderReplicate), ErrSize) << "wider than at initialisation";
      EXPECT_EQ(with({8, 40}, BorderReplicate), ErrSize) << "higher than the intermediate image";
    }
    EXPECT_EQ(dst.bytes(), before);
    EXPECT_EQ(wide.bytes(), wideBefore);
    EXPECT_EQ(work.bufferBytes(), bufferBefore);
  });
}

TEST(MorphAdv, CapacityOfTheIntermediateImage) {
  // Room for 6 rows of 32 bytes: 4 + 3 - 1 rows of 30 + 3 - 1 pixels.
  const auto member = ZVP_ADV_MEMBER(uint8_t, 1, 8u_C1R, 0);
  const AdvWork work(member, {30, 4}, full(3, 3), {});
  ASSERT_EQ(work.word(3), 6 * 32);
  const Image<uint8_t> image(40, 20), dst(30, 8);
  const auto status = [&](Operation operation, int height, BorderType border) {
    return member.operations[operation](image.data() + 5 * 40 + 5, 40, dst.data(), 30, {30, height}, border,
                                        work.spec(), work.buffer());
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
  constexpr decltype(&zvpiMorphOpenBorder_1u_C1R) kOperations[] = {
      zvpiMorphOpenBorder_1u_C1R, zvpiMorphCloseBorder_1u_C1R, zvpiMorphTophatBorder_1u_C1R,
      zvpiMorphBlackhatBorder_1u_C1R, zvpiMorphGradientBorder_1u_C1R};
  const AdvMember<uint8_t> member{"1u", 1, zvpiMorphAdvGetSize_1u_C1R, zvpiMorphAdvInit_1u_C1R, {}};
  unsigned seed = 0;
  const auto borders = acceptedBorders();
  for (const Mask& mask : manyMasks()) {
    const RoiSize roi{1 + static_cast<int>(seed * 7 % 40), 1 + static_cast<int>(seed % 6)};
    const BorderType border = borders[++seed % borders.size()];
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    const AdvWork work(member, roi, mask, kPlacements[seed % kPlacements.size()]);
    const int left = 2 * mask.width, top = 2 * mask.height, step = (2 * left + roi.width + 14) / 8;
    std::vector<uint8_t> bits(static_cast<size_t>(step * (2 * top + roi.height)));
    std::mt19937 engine(seed);
    for (uint8_t& byte : bits) byte = static_cast<uint8_t>(seed % 2 == 0 ? engine() | engine() : engine() & engine());
    const auto read = [&](int x, int y) {
      const int bit = left + x + static_cast<int>(seed % 8);
      return static_cast<uint8_t>(bits[static_cast<size_t>((y + top) * step + bit / 8)] >> (7 - bit % 8) & 1);
    };
    for (const Operation operation : {kOpen, kClose, kTophat, kBlackhat, kGradient}) {
      const int dstStep = (roi.width + 3 + 7) / 8;
      const GuardedBlock dst(static_cast<size_t>(dstStep * roi.height), {});
      ASSERT_EQ(kOperations[operation](bits.data() + top * step, step, left + static_cast<int>(seed % 8), dst.start(),
                                       dstStep, 3, roi, border, 0, work.spec(), work.buffer()),
                StatusOk);
      const auto want = plainOperation<uint8_t>(operation, mask, roi, border, read);
      for (int y = 0; y < roi.height; ++y) {
        for (int bit = 0; bit < 8 * dstStep; ++bit) {
          const int x = bit - 3, got = dst.start()[y * dstStep + bit / 8] >> (7 - bit % 8) & 1;
          const bool inside = x >= 0 && x < roi.width;
          ASSERT_EQ(got,
                    inside ? want[static_cast<size_t>(y * roi.width + x)] : GuardedBlock::kCanary >> (7 - bit % 8) & 1)
              << "operation " << operation << ", pixel " << x << ", " << y;
        }
      }
    }
    for (const auto operation : kOperations) {
      EXPECT_EQ(
          operation(bits.data(), step, 0, bits.data(), step, 0, roi, BorderReplicate, 0, work.spec(), work.buffer()),
          ErrInPlaceNotSupported);
      EXPECT_EQ(operation(bits.data(), step, -1, bits.data(), step, 0, roi, 0, 0, work.spec(), work.buffer()), ErrSize);
      EXPECT_EQ(operation(bits.data(), 0, 0, bits.data(), step, 0, roi, 0, 0, work.spec(), work.buffer()), ErrStep);
    }
  }
}

}  // namespace
}  // namespace zvp::test
