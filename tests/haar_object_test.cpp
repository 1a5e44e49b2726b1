// Classifier objects: layout, construction, extent, tilting, release.
#include <array>

#include "support/haar.h"

namespace zvp::test {
namespace {

using Words = std::vector<int32_t>;

Words words(const HaarClassifier* object, int first, int n) {
  const auto* start = reinterpret_cast<const int32_t*>(object) + first;
  return {start, start + n};
}

int32_t bits(float value) {
  int32_t b;
  memcpy(&b, &value, sizeof b);
  return b;
}

// A word described as a pointer: the pointer itself in 32 bits, else an offset from the object.
int32_t link(const HaarClassifier* object, int offset) {
  return static_cast<int32_t>(sizeof(void*) == 4 ? reinterpret_cast<uintptr_t>(object) + offset : uintptr_t(offset));
}

constexpr int kHeaderWords = 12, kRecordWords = 6, kFeatureWords = 9;

StageArrays<float> oneToThree() {
  StageArrays<float> s;
  s.add(1, 2, 3, {{{0, 0, 9, 9}, 1}});
  s.add(4, 5, 6, {{{1, 2, 3, 4}, -1}, {{0, 1, 2, 2}, 2}, {{5, 0, 1, 1}, 3}});
  s.add(7, 8, 9, {{{2, 3, 4, 5}, 1.5f}, {{3, 3, 1, 2}, -2}});
  return s;
}

TEST(HaarObject, LayoutAndOrder) {
  const auto object = build(oneToThree());
  const auto* o = object.get();
  EXPECT_EQ(words(o, 0, kHeaderWords), (Words{3, 6, link(o, 48), 0, 0, 9, 9, 0, 1, 0, 0, words(o, 11, 1)[0]}));
  const int features = 48 + 3 * 24;
  // Two rectangles first, then three, then all others; the tag keeps the place in the caller's arrays.
  EXPECT_EQ(words(o, kHeaderWords, 3 * kRecordWords),
            (Words{2, link(o, features), bits(7), bits(8), bits(9), 2 << 8,           //
                   3, link(o, features + 2 * 36), bits(4), bits(5), bits(6), 1 << 8,  //
                   1, link(o, features + 5 * 36), bits(1), bits(2), bits(3), 0 << 8}));
  EXPECT_EQ(words(o, features / 4, kFeatureWords), (Words{6, 8, 2, 8, 6, 3, 2, 3, bits(1.5f)}));
}

TEST(HaarObject, TiltedConstruction) {
  StageArrays<int32_t> s;
  s.add(-7, 8, 9, {{{10, 3, 4, 5}, 3}, {{20, 3, 1, 2}, -2}});
  const auto object = build(s, true);
  const auto* o = object.get();
  EXPECT_EQ(words(o, 7, 1), Words{1}) << "tilted";
  EXPECT_EQ(words(o, kHeaderWords + 2, 4), (Words{-7, 8, 9, 1})) << "position 0, tilted";
  EXPECT_EQ(words(o, kHeaderWords + kRecordWords, kFeatureWords), (Words{9, 12, 5, 8, 14, 7, 10, 3, 3}));
  const uint8_t mask[] = {1};
  EXPECT_EQ(zvpiTiltHaarFeatures_32s(mask, 0, object.get()), ErrBadArg);
}

TEST(HaarObject, Extent) {
  StageArrays<float> one;
  one.add(0, 0, 0, {{{2, 3, 4, 5}, 1}});
  StageArrays<float> farthest;
  farthest.add(0, 0, 0, {{{0, INT32_MAX - 5, 1, 5}, 1}});
  for (const auto extent : {zvpiGetHaarClassifierSize_32f, zvpiGetHaarClassifierSize_32s}) {
    const auto extentOf = [&](const StageArrays<float>& stage, bool tilted) {
      RoiSize size = {-1, -1};
      EXPECT_EQ(extent(build(stage, tilted).get(), &size), StatusOk);
      return std::pair(size.width, size.height);
    };
    EXPECT_EQ(extentOf(one, false), std::pair(6, 8));
    EXPECT_EQ(extentOf(oneToThree(), false), std::pair(9, 9));
    EXPECT_EQ(extentOf(one, true), std::pair(6, 12));
    EXPECT_EQ(extentOf({}, false), std::pair(0, 0));
    EXPECT_EQ(extentOf(farthest, false), std::pair(1, INT32_MAX));
  }
}

TEST(HaarObject, TiltsChosenClassifiersOnce) {
  for (const int flag : {0, 1, -3}) {
    const auto object = build(oneToThree());
    const auto* o = object.get();
    const std::array<uint8_t, 3> none = {0, 0, 0}, some = {0, 0, 9};
    EXPECT_EQ(zvpiTiltHaarFeatures_32f(none.data(), flag, object.get()), StatusOk);
    EXPECT_EQ(words(o, 7, 1), Words{0}) << "an empty mask tilts nothing and may be followed by another";
    const Words others = words(o, kHeaderWords + kRecordWords, 2 * kRecordWords);
    EXPECT_EQ(zvpiTiltHaarFeatures_32f(some.data(), flag, object.get()), StatusOk);
    EXPECT_EQ(words(o, 7, 1), Words{1});
    EXPECT_EQ(words(o, kHeaderWords + 5, 1), Words{1}) << "the position is not kept";
    EXPECT_EQ(words(o, kHeaderWords + kRecordWords, 2 * kRecordWords), others);
    const int feature = kHeaderWords + 3 * kRecordWords;  // was x 2, y 3, width 4, height 5
    const Words expected =
        flag == 0 ? Words{2, 8, -3, 3, 6, 4, 1, -1, bits(1.5f)} : Words{1, 12, -3, 8, 6, 7, 2, 3, bits(1.5f)};
    EXPECT_EQ(words(o, feature, kFeatureWords), expected);
    EXPECT_EQ(words(o, feature + 2 * kFeatureWords, kFeatureWords), (Words{4, 6, 1, 6, 4, 2, 1, 2, bits(-1)}));
    EXPECT_EQ(zvpiTiltHaarFeatures_32s(some.data(), flag, object.get()), ErrBadArg);
  }
}

TEST(HaarObject, NothingIsReleasedToo) {
  EXPECT_EQ(zvpiHaarClassifierFree_32f(nullptr), StatusOk);
  EXPECT_EQ(zvpiHaarClassifierFree_32s(nullptr), StatusOk);
}

}  // namespace
}  // namespace zvp::test
