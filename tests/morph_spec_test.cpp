// Prepared masks word by word, sizes by hand, and the 1u members.
#include "support/morphology.h"

namespace zvp::test {
namespace {

enum Word { kMaskCopy, kDilateSelectors, kErodeSelectors, kDecomposition, kRecord, kRowBufferLength = 11, kMode = 17 };

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

const MorphMember<uint8_t, MorphBorderSpec, int> kBitMember{
    "1u", zvpiMorphologyBorderGetSize_1u_C1R, zvpiMorphologyBorderInit_1u_C1R, {}};

TEST(MorphSpec, HeaderWords) {
  const Mask mask = drawn({"..x.", "xx.x", "....", "x..."});
  forEachMorphMember([&]<class T>(const MorphMember<T, MorphBorderSpec, int>& member) {
    SCOPED_TRACE(member.name);
    for (const Placement placement : kPlacements) {
      const MorphWork work(member, 21, mask, placement);
      const int c = channelsOf(member.name), e = sizeof(T);
      const int rowLength = e == 2 ? 112 : (25 * c + 15) / 16 * 16;
      const int workSize = e == 2 ? 0 : 33 * 16 + 2 * 4 * ((25 * c * e + 15) / 16 * 16) + 96;
      const int type = e == 1 ? 1 : e == 4 ? 13 : std::is_signed_v<T> ? 7 : 5;
      // The mask's width and height, the anchor, what lies right of it and below, ..., the width, -1, the mode.
      const int fromDecomposition[] = {0, 0, 4, 4, 1, 1, 2, 2, rowLength, workSize, type, c, 21, -1, 0};
      int word = kDecomposition;
      for (const int expected : fromDecomposition) EXPECT_EQ(work.word(word++), expected) << word - 1;
      EXPECT_EQ(reinterpret_cast<uintptr_t>(work.target(kMaskCopy)) % 16, 0u);
      EXPECT_TRUE(std::equal(mask.members.begin(), mask.members.end(), work.target(kMaskCopy)));
      const uint32_t high = e == 4 ? 0x7f7fffff : 0xffffffff, low = e == 4 ? 0xff7fffff : 0;
      for (int i = 0; i < 4 * 16; ++i) {
        uint32_t dilate, erode;
        memcpy(&dilate, work.target(kDilateSelectors) + 4 * i, 4);
        memcpy(&erode, work.target(kErodeSelectors) + 4 * i, 4);
        const bool isMember = mask.members[static_cast<size_t>(i / 4)] != 0;
        EXPECT_EQ(std::pair(dilate, erode), isMember ? std::pair(high, low) : std::pair(low, high)) << i;
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
      {drawn({".x.", "xxx", ".x."}), 2, {3, 3, 1, 1, 2, 3}, {1, 3, 0, 1, 2, 0, 1, 0}},
      {drawn({"xxx", "...", ".x."}), 2, {3, 2, 1, 1, 2, 2}, {1, 3, 0, 2, 1, 0}},
      {drawn({"x..", "xx.", "..."}), 0, {}, {}},         // a run beside the anchor column
      {drawn({"...", "...", ".x.", "xx."}), 0, {}, {}},  // the anchor row above all members
      {drawn({"x.x"}), 0, {}, {}},
      {drawn({"...", "..."}), 3, {}, {}},
  };
  forEachMorphMember([&]<class T>(const MorphMember<T, MorphBorderSpec, int>& member) {
    for (const Expected& e : cases) {
      const MorphWork work(member, 10, e.mask);
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
      // Lengths (room for one a row), offsets, indices.
      const std::ptrdiff_t lengths = e.record[4], rows = e.record[5];
      auto tables = words(kDecomposition, static_cast<size_t>(3 * rows));
      tables.erase(tables.begin() + lengths, tables.begin() + rows);
      EXPECT_EQ(tables, e.tables);
    }
  });
}

// Erosion and dilation of one case.
void expectBitCase(const BitCase& c) {
  const MorphWork work(kBitMember, c.roi.width, c.mask, somePlacement(static_cast<int>(c.seed)));
  for (const bool erode : {true, false}) {
    const auto plain = [&](auto read) {
      return plainFilter<int>(c.mask, c.mask.centre(), erode, c.roi, c.border, read);
    };
    expectBits(c, 1, erode ? zvpiErodeBorder_1u_C1R : zvpiDilateBorder_1u_C1R, work, plain);
  }
}

TEST(MorphBits, EqualThePlainModel) {
  const auto borders = acceptedBorders();
  unsigned seed = 0;
  for (const Mask& mask : manyMasks())
    for (const RoiSize roi : {RoiSize{1, 1}, RoiSize{13, 20}, RoiSize{70, 3}, RoiSize{600, 4}}) {
      const BorderType border = borders[++seed % borders.size()];
      const int srcOffset = static_cast<int>(seed % 11), dstOffset = static_cast<int>(seed % 17);
      ASSERT_NO_FATAL_FAILURE(expectBitCase({mask, roi, border, srcOffset, dstOffset, seed}));
    }
  for (int width = 1; width <= 40; ++width)  // nothing behind the row is read
    for (int offset = 0; offset < 8; ++offset)
      ASSERT_NO_FATAL_FAILURE(
          expectBitCase({full(3, 3), {width, 2}, BorderReplicate, offset, (offset * 3 + width) % 8, ++seed}));
}

TEST(MorphBits, UnknownModeWritesNothing) {
  const MorphWork work(kBitMember, 17, full(3, 3));
  for (const auto filter : {zvpiErodeBorder_1u_C1R, zvpiDilateBorder_1u_C1R}) {
    work.setWord(kMode, 4);
    const uint8_t src[3] = {};
    uint8_t dst[3] = {};
    EXPECT_EQ(filter(src, 3, 0, dst, 3, 0, {17, 1}, 1, 0, work.spec(), work.buffer()), StatusOk);
    EXPECT_EQ(std::count(dst, dst + 3, 0), 3) << "an unknown mode writes nothing";
    work.setWord(kMode, 0);
  }
}

}  // namespace
}  // namespace zvp::test
