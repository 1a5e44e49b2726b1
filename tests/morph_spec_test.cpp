// Specifications word by word, sizes by hand, and the 1u members.
#include "support/morphology.h"

namespace zvp::test {
namespace {

enum Word {
  kMaskCopy,
  kDilateSelectors,
  kErodeSelectors,
  kDecomposition,
  kRecord,
  kMaskWidth,
  kMaskHeight,
  kAnchorX,
  kAnchorY,
  kRightExtent,
  kBottomExtent,
  kRowBufferLength,
  kWorkSize,
  kDataType,
  kChannels,
  kMaxRoiWidth,
  kReserved,
  kMode
};

TEST(MorphSizes, HandComputed) {
  // 10 wide, mask 5 x 3: A = 16, H = 3; round16(24 H) + A + round16(16 H + 48) = 80 + 16 + 96 = 192.
  const struct {
    Status (*getSize)(int, RoiSize, int*, int*);
    int spec, buffer;
  } expected[] = {
      {zvpiMorphologyBorderGetSize_1u_C1R, 128, 10 * 42 + 96 + 192},  // G = 420 + 60 + 36
      {zvpiMorphologyBorderGetSize_8u_C1R, 704 + 708, 708},
      {zvpiMorphologyBorderGetSize_8u_C3R, 704 + 908, 10 * 62 + 96 + 192},
      {zvpiMorphologyBorderGetSize_8u_C4R, 704 + 1008, 10 * 72 + 96 + 192},
      {zvpiMorphologyBorderGetSize_16u_C1R, 704, 2 * 120 * 3 + 64 + 192},  // R = 784 > G = 616
      {zvpiMorphologyBorderGetSize_16s_C1R, 704, 976},
      {zvpiMorphologyBorderGetSize_32f_C1R, 704 + 1008, 10 * 72 + 96 + 192},
      {zvpiMorphologyBorderGetSize_32f_C3R, 704 + 1808, 10 * 152 + 96 + 192},
      {zvpiMorphologyBorderGetSize_32f_C4R, 704 + 2208, 10 * 192 + 96 + 192},
  };
  for (const auto& e : expected) {
    int spec = 0, buffer = 0;
    ASSERT_EQ(e.getSize(10, {5, 3}, &spec, &buffer), StatusOk);
    EXPECT_EQ(spec, e.spec);
    EXPECT_EQ(buffer, e.buffer);
  }
  int spec = 0, buffer = 0;
  ASSERT_EQ(zvpiMorphologyBorderGetSize_32f_C4R(1000, {1, 1}, &spec, &buffer), StatusOk);
  EXPECT_EQ(buffer, 2 * 16032 + 56 + 32 + 16 + 64);
}

TEST(MorphSizes, ChecksInOrder) {
  const auto expectChecks = [](const auto& member) {
    int spec = -1, buffer = -1;
    EXPECT_EQ(member.getSize(0, {0, 0}, nullptr, &buffer), ErrNullPtr);
    EXPECT_EQ(member.getSize(0, {0, 0}, &spec, nullptr), ErrNullPtr);
    for (const auto& [width, mask] : {std::pair{0, RoiSize{1, 1}},
                                      {1, {0, 1}},
                                      {1, {1, 0}},
                                      {INT32_MAX, {1, 1}},
                                      {1, {INT32_MAX, INT32_MAX}},
                                      {1, {1, 50000}},
                                      {INT32_MAX, {INT32_MAX, INT32_MAX}},
                                      {1 << 28, {1, 3}},
                                      {1, {1 << 30, 1}}})
      EXPECT_EQ(member.getSize(width, mask, &spec, &buffer), ErrSize) << width << " " << mask.width;
    EXPECT_EQ(spec, -1);
    EXPECT_EQ(buffer, -1);

    uint8_t mask[4] = {}, object[4096] = {}, work[4096] = {};
    auto* target = reinterpret_cast<MorphBorderSpec*>(object);
    EXPECT_EQ(member.init(0, nullptr, {0, 0}, target, work), ErrNullPtr);
    EXPECT_EQ(member.init(0, mask, {0, 0}, nullptr, work), ErrNullPtr);
    EXPECT_EQ(member.init(0, mask, {0, 0}, target, nullptr), ErrNullPtr);
    EXPECT_EQ(member.init(0, mask, {2, 2}, target, work), ErrSize);
    EXPECT_EQ(member.init(5, mask, {2, 0}, target, work), ErrSize);
    EXPECT_EQ(member.init(5, mask, {0, 2}, target, work), ErrSize);
    EXPECT_EQ(member.init(INT32_MAX, mask, {2, 2}, target, work), ErrSize);
    EXPECT_EQ(std::count(object, object + sizeof object, 0), std::ptrdiff_t{sizeof object});
    EXPECT_EQ(std::count(work, work + sizeof work, 0), std::ptrdiff_t{sizeof work});
  };
  forEachMorphMember(expectChecks);
  expectChecks(
      MorphMember<uint8_t>{"1u", 1, zvpiMorphologyBorderGetSize_1u_C1R, zvpiMorphologyBorderInit_1u_C1R, {}, {}});
}

TEST(MorphSpec, HeaderWords) {
  const Mask mask = drawn({"..x.", "xx.x", "...."});
  forEachMorphMember([&]<class T>(const MorphMember<T>& member) {
    SCOPED_TRACE(member.name);
    for (const Placement placement : kPlacements) {
      const MorphWork work(member, 21, mask, placement);
      const int c = member.channels, e = sizeof(T);
      const int fixed[] = {4, 3, 1, 1, 2, 1};
      for (int i = 0; i < 6; ++i) EXPECT_EQ(work.word(kMaskWidth + i), fixed[i]) << i;
      const int row = e == 2 ? 112 : (25 * c + 15) / 16 * 16;
      EXPECT_EQ(work.word(kRowBufferLength), row);
      EXPECT_EQ(work.word(kWorkSize), e == 2 ? 0 : 33 * 16 + 2 * 3 * ((25 * c * e + 15) / 16 * 16) + 96);
      EXPECT_EQ(work.word(kDataType), e == 1 ? 1 : e == 4 ? 13 : std::is_signed_v<T> ? 7 : 5);
      EXPECT_EQ(work.word(kChannels), c);
      EXPECT_EQ(work.word(kMaxRoiWidth), 21);
      EXPECT_EQ(work.word(kReserved), -1);
      EXPECT_EQ(work.word(kMode), 0);
      EXPECT_EQ(work.word(kDecomposition), 0);
      EXPECT_EQ(work.word(kRecord), 0);
      EXPECT_EQ(reinterpret_cast<uintptr_t>(work.target(kMaskCopy)) % 16, 0u);
      EXPECT_TRUE(std::equal(mask.members.begin(), mask.members.end(), work.target(kMaskCopy)));
      for (int i = 0; i < 12; ++i) {
        const bool isMember = mask.members[static_cast<size_t>(i)] != 0;
        const uint32_t high = e == 4 ? 0x7f7fffff : 0xffffffff, low = e == 4 ? 0xff7fffff : 0;
        for (int k = 0; k < 4; ++k) {
          uint32_t dilate, erode;
          memcpy(&dilate, work.target(kDilateSelectors) + 16 * i + 4 * k, 4);
          memcpy(&erode, work.target(kErodeSelectors) + 16 * i + 4 * k, 4);
          EXPECT_EQ(dilate, isMember ? high : low);
          EXPECT_EQ(erode, isMember ? low : high);
        }
      }
    }
  });
}

struct Expected {
  Mask mask;
  int mode;
  std::vector<int32_t> record, tables;
};

TEST(MorphSpec, Modes) {
  const std::vector<Expected> cases = {
      {full(3, 3), 1, {3, 3, 1, 1, 0, 0}, {}},
      {drawn({"....", "....", "..xx", "..xx"}), 1, {2, 2, -1, -1, 0, 0}, {}},
      {drawn({".x."}), 1, {1, 1, 0, 0, 0, 0}, {}},
      {drawn({".x.", "xxx", ".x."}), 2, {3, 3, 1, 1, 2, 3}, {1, 3, 0, 0, 1, 2, 0, 1, 0}},
      {drawn({"xxx", "...", ".x."}), 2, {3, 2, 1, 1, 2, 2}, {1, 3, 0, 2, 1, 0}},
      {drawn({"x..", "xx.", "..."}), 0, {}, {}},         // a run beside the anchor column
      {drawn({"...", "...", ".x.", "xx."}), 0, {}, {}},  // the anchor row above all members
      {drawn({"x.x"}), 0, {}, {}},
      {drawn({"...", "..."}), 3, {}, {}},
  };
  forEachMorphMember([&]<class T>(const MorphMember<T>& member) {
    for (const Expected& e : cases) {
      const MorphWork work(member, 10, e.mask, {});
      if (sizeof(T) != 2) {
        EXPECT_EQ(work.word(kMode), e.mode == 3 ? 3 : 0);
        EXPECT_EQ(work.word(kRecord), 0);
        EXPECT_EQ(work.word(kDecomposition), 0);
        continue;
      }
      EXPECT_EQ(work.word(kMode), e.mode);
      const int factor = e.mode == 1 || e.mode == 2 ? 2 : 4;
      EXPECT_EQ(work.word(kRowBufferLength), (factor * (10 + e.mask.width) + 15) / 16 * 16);
      const auto words = [&](int word, size_t n) {
        std::vector<int32_t> values(n);
        if (n > 0) memcpy(values.data(), work.target(word), 4 * n);
        return values;
      };
      EXPECT_EQ(work.word(kRecord) != 0, !e.record.empty());
      EXPECT_EQ(words(kRecord, e.record.size()), e.record);
      EXPECT_EQ(work.word(kDecomposition) != 0, !e.tables.empty());
      if (e.tables.empty()) continue;
      // lengths (room for one a row), offsets, indices
      const auto rows = static_cast<size_t>(e.record[5]), lengths = static_cast<size_t>(e.record[4]);
      auto tables = words(kDecomposition, 3 * rows);
      tables.erase(tables.begin() + static_cast<std::ptrdiff_t>(lengths),
                   tables.begin() + static_cast<std::ptrdiff_t>(rows));
      const std::vector<int32_t> want(e.tables.begin(), e.tables.begin() + static_cast<std::ptrdiff_t>(lengths));
      EXPECT_EQ(std::vector<int32_t>(tables.begin(), tables.begin() + static_cast<std::ptrdiff_t>(lengths)), want);
    }
  });
}

// Images of bits with a margin, against an inaccessible page.
struct BitImage {
  int step, bits;
  GuardedBlock block;

  BitImage(int rowBits, int height, int extra, Placement placement)
      : step((rowBits + 7) / 8 + extra),
        bits(rowBits),
        block(static_cast<size_t>(step * (height - 1) + (rowBits + 7) / 8), placement) {}

  uint8_t* row(int y) const { return block.start() + ptrdiff_t{y} * step; }
  int get(int bit, int y) const { return row(y)[bit >> 3] >> (7 - (bit & 7)) & 1; }
};

void expectBits(const Mask& mask, RoiSize roi, BorderType border, int srcOffset, int dstOffset, Placement placement,
                unsigned seed) {
  SCOPED_TRACE(testing::Message() << "mask " << mask.width << "x" << mask.height << " roi " << roi.width << "x"
                                  << roi.height << " border " << border << " offsets " << srcOffset << " "
                                  << dstOffset);
  const MorphMember<uint8_t> member{"1u", 1, zvpiMorphologyBorderGetSize_1u_C1R, zvpiMorphologyBorderInit_1u_C1R,
                                    {},   {}};
  const MorphWork work(member, roi.width, mask, placement);
  const Point anchor = mask.centre();
  const int left = anchor.x, top = anchor.y;  // bits and rows that the region may have around it
  const BitImage src(left + srcOffset + roi.width + mask.width, top + roi.height + mask.height, 1, placement);
  std::mt19937 engine(seed);
  for (int y = 0; y < top + roi.height + mask.height; ++y)
    for (int i = 0; i < (src.bits + 7) / 8; ++i) src.row(y)[i] = static_cast<uint8_t>(engine() | engine());
  for (const bool erode : {true, false}) {
    const BitImage dst(dstOffset + roi.width, roi.height, 0, placement);
    ASSERT_EQ((erode ? zvpiErodeBorder_1u_C1R : zvpiDilateBorder_1u_C1R)(src.row(top), src.step, left + srcOffset,
                                                                         dst.row(0), dst.step, dstOffset, roi, border,
                                                                         1, work.spec(), work.buffer()),
              StatusOk);
    for (int y = 0; y < roi.height; ++y) {
      for (int bit = 0; bit < (dst.bits + 7) / 8 * 8; ++bit) {
        const int x = bit - dstOffset;
        int want = GuardedBlock::kCanary >> (7 - (bit & 7)) & 1;
        if (x >= 0 && x < roi.width) {
          want = plainExtremum<int>(mask, anchor, erode, x, y, [&](int column, int row) {
            const Point p = resolve(column, row, roi, border);
            return src.get(left + srcOffset + p.x, top + p.y);
          });
        }
        ASSERT_EQ(dst.get(bit, y), want) << "pixel " << x << ", " << y;
      }
    }
  }
}

TEST(MorphBits, EqualThePlainModel) {
  const auto borders = acceptedBorders();
  unsigned seed = 0;
  for (const Mask& mask : manyMasks()) {
    for (const RoiSize roi : {RoiSize{1, 1}, RoiSize{13, 20}, RoiSize{70, 3}, RoiSize{600, 4}}) {
      ++seed;
      expectBits(mask, roi, borders[seed % borders.size()], static_cast<int>(seed % 11), static_cast<int>(seed % 17),
                 kPlacements[seed % kPlacements.size()], seed);
      if (HasFatalFailure()) return;
    }
  }
  for (int width = 1; width <= 40; ++width) {
    for (int offset = 0; offset < 8; ++offset) {
      expectBits(full(3, 3), {width, 2}, BorderReplicate, offset, (offset * 3 + width) % 8, {}, ++seed);
      if (HasFatalFailure()) return;
    }
  }
}

TEST(MorphBits, NothingBehindTheRowIsRead) {
  const MorphMember<uint8_t> member{"1u", 1, zvpiMorphologyBorderGetSize_1u_C1R, zvpiMorphologyBorderInit_1u_C1R,
                                    {},   {}};
  const MorphWork work(member, 24, full(5, 3), {});
  for (int offset = 0; offset < 8; ++offset) {
    const int bytes = (offset + 24 + 7) / 8;
    const GuardedBlock src(static_cast<size_t>(bytes), {}), dst(static_cast<size_t>(bytes), {});
    EXPECT_EQ(zvpiErodeBorder_1u_C1R(src.start(), bytes, offset, dst.start(), bytes, offset, {24, 1}, BorderReplicate,
                                     0, work.spec(), work.buffer()),
              StatusOk);
  }
}

TEST(MorphBits, ChecksInOrderAndWritesNothing) {
  const MorphMember<uint8_t> member{"1u", 1, zvpiMorphologyBorderGetSize_1u_C1R, zvpiMorphologyBorderInit_1u_C1R,
                                    {},   {}};
  const MorphWork work(member, 17, full(3, 3), {});
  const uint8_t src[16] = {};
  uint8_t dst[16] = {};
  const auto* spec = work.spec();
  for (const auto filter : {zvpiErodeBorder_1u_C1R, zvpiDilateBorder_1u_C1R}) {
    const auto call = [&](const uint8_t* s, int srcStep, int srcBit, uint8_t* d, int dstStep, int dstBit, RoiSize roi,
                          BorderType border, const MorphBorderSpec* object, uint8_t* buffer) {
      return filter(s, srcStep, srcBit, d, dstStep, dstBit, roi, border, 0, object, buffer);
    };
    EXPECT_EQ(call(nullptr, 0, -1, dst, 0, -1, {0, 0}, 0, spec, work.buffer()), ErrNullPtr);
    EXPECT_EQ(call(src, 0, -1, nullptr, 0, -1, {0, 0}, 0, spec, work.buffer()), ErrNullPtr);
    EXPECT_EQ(call(src, 0, -1, dst, 0, -1, {0, 0}, 0, nullptr, work.buffer()), ErrNullPtr);
    EXPECT_EQ(call(src, 0, -1, dst, 0, -1, {0, 0}, 0, spec, nullptr), ErrNullPtr);
    EXPECT_EQ(call(src, 0, 0, dst, 0, 0, {0, 1}, 0, spec, work.buffer()), ErrSize);
    EXPECT_EQ(call(src, 0, 0, dst, 0, 0, {1, 0}, 0, spec, work.buffer()), ErrSize);
    EXPECT_EQ(call(src, 0, -1, dst, 0, 0, {18, 1}, 0, spec, work.buffer()), ErrSize);
    EXPECT_EQ(call(src, 0, 0, dst, 0, -1, {18, 1}, 0, spec, work.buffer()), ErrSize);
    EXPECT_EQ(call(src, 2, 0, dst, 3, 0, {18, 1}, 0, spec, work.buffer()), ErrStep);
    EXPECT_EQ(call(src, 3, 0, dst, 2, 0, {18, 1}, 0, spec, work.buffer()), ErrStep);
    EXPECT_EQ(call(dst, 3, 0, dst, 3, 0, {18, 1}, 0xf0, spec, work.buffer()), ErrBorderType);
    EXPECT_EQ(call(dst, 3, 0, dst, 3, 0, {18, 1}, 1, spec, work.buffer()), ErrInPlaceNotSupported);
    EXPECT_EQ(call(src, 3, 0, dst, 3, 0, {18, 1}, 1, spec, work.buffer()), ErrSize);
    work.setWord(kMode, 4);
    EXPECT_EQ(call(src, 3, 0, dst, 3, 0, {17, 1}, 1, spec, work.buffer()), StatusOk);
    work.setWord(kMode, 0);
    EXPECT_EQ(std::count(dst, dst + 16, 0), 16);
  }
}

}  // namespace
}  // namespace zvp::test
