// Flood fills against plain models of their rules, images that make a fill hard, and pictures by hand.
#include <math.h>

#include <deque>
#include <functional>
#include <string>

#include "support/image.h"
#include "zvpcv/distance.h"

namespace zvp::test {
namespace {

enum class FillRule { kEqual, kRange, kGradient };

template <class T>
struct FillMember {
  std::string name;
  FillRule rule;
  bool diagonal;
  int channels;
  // Values are three elements each.
  std::function<Status(T*, int, RoiSize, Point, const T* newVal, const T* minDelta, const T* maxDelta,
                       ConnectedComponent*, uint8_t*)>
      fill;
};

// A value as a member takes it: a number, or three.
template <class T>
struct Value {
  const T* elements;
  operator T() const { return *elements; }
  operator const T*() const { return elements; }
};

template <class T, class F>
FillMember<T> fillMember(const std::string& name, F f) {
  const auto fill = [f](T* p, int step, RoiSize roi, Point at, const T* v, const T* lo, const T* hi, auto... last) {
    if constexpr (requires { f(p, step, roi, at, Value<T>{v}, last...); }) {
      return f(p, step, roi, at, Value<T>{v}, last...);
    } else {
      return f(p, step, roi, at, Value<T>{v}, Value<T>{lo}, Value<T>{hi}, last...);
    }
  };
  const FillRule rule = name[0] == 'R' ? FillRule::kRange : name[0] == 'G' ? FillRule::kGradient : FillRule::kEqual;
  return {name, rule, name.find("8Con") != std::string::npos, name.ends_with("C3IR") ? 3 : 1, fill};
}

template <class F>
void forEachFill(F f) {
#define FILLS(rule, type, T)                                                       \
  f(fillMember<T>(#rule "_" #type "_C1IR", zvpiFloodFill_##rule##_##type##_C1IR)); \
  f(fillMember<T>(#rule "_" #type "_C3IR", zvpiFloodFill_##rule##_##type##_C3IR))
#define TYPES(rule)           \
  FILLS(rule, 8u, uint8_t);   \
  FILLS(rule, 16u, uint16_t); \
  FILLS(rule, 32f, float)
  TYPES(4Con);
  TYPES(8Con);
  TYPES(Range4Con);
  TYPES(Range8Con);
  TYPES(Grad4Con);
  TYPES(Grad8Con);
#undef TYPES
#undef FILLS
}

// --- The models ------------------------------------------------------------------------------------------------------

// What a fill makes of an image.
template <class T>
struct Filled {
  std::vector<bool> joined;
  ConnectedComponent component;
};

// A call as the models see it.
template <class T>
struct FillCase {
  const FillMember<T>& member;
  const Image<T>& image;
  RoiSize roi;
  Point seed;
  T newVal[3], minDelta[3], maxDelta[3];

  T pixel(Point p, int c) const { return image.get(p.y, p.x * member.channels + c); }

  // Whether a value of channel k lies within the deltas about that of a pixel.
  bool near(T value, Point about, int k) const {
    using Wide = std::conditional_t<std::is_same_v<T, float>, float, int>;
    const bool exact = member.rule == FillRule::kEqual;
    const Wide base = pixel(about, k), low = base - (exact ? T(0) : minDelta[k]),
               high = base + (exact ? T(0) : maxDelta[k]);
    return value >= low && value <= high;
  }
  // Whether p joins from its neighbour q.
  bool joins(Point p, Point q) const {
    bool all = true;
    for (int k = 0; k < member.channels; ++k)
      all = all && near(pixel(p, k), member.rule == FillRule::kGradient ? q : seed, k);
    return all;
  }
  bool newValJoins() const {
    bool all = true;
    for (int k = 0; k < member.channels; ++k) all = all && near(newVal[k], seed, k);
    return all;
  }
};

// Collects pixels.
template <class T>
class Collected {
 public:
  explicit Collected(const FillCase<T>& c)
      : case_(c), joined_(static_cast<size_t>(c.roi.width) * static_cast<size_t>(c.roi.height)) {}

  std::vector<bool>::reference at(Point p) {
    return joined_[static_cast<size_t>(p.y) * static_cast<size_t>(case_.roi.width) + static_cast<size_t>(p.x)];
  }
  bool inside(Point p) const { return p.x >= 0 && p.y >= 0 && p.x < case_.roi.width && p.y < case_.roi.height; }
  void surround(Point p) {
    left_ = std::min(left_, p.x), right_ = std::max(right_, p.x);
    top_ = std::min(top_, p.y), bottom_ = std::max(bottom_, p.y);
  }
  Filled<T> result() const {
    Filled<T> filled{joined_, {}};
    for (const bool joined : joined_) filled.component.area += joined;
    for (int c = 0; c < case_.member.channels; ++c) filled.component.value[c] = case_.newVal[c];
    filled.component.rect = {left_, top_, right_ - left_ + 1, bottom_ - top_ + 1};
    return filled;
  }

 private:
  const FillCase<T>& case_;
  std::vector<bool> joined_;
  int left_ = INT32_MAX, right_ = -1, top_ = INT32_MAX, bottom_ = -1;
};

template <class T>
Filled<T> breadthFirst(const FillCase<T>& c) {
  Collected<T> pixels(c);
  std::deque<Point> queue = {c.seed};
  pixels.at(c.seed) = true;
  while (!queue.empty()) {
    const Point q = queue.front();
    queue.pop_front();
    pixels.surround(q);
    for (int dy = -1; dy <= 1; ++dy)
      for (int dx = -1; dx <= 1; ++dx) {
        const Point p{q.x + dx, q.y + dy};
        if ((!c.member.diagonal && dx != 0 && dy != 0) || !pixels.inside(p) || pixels.at(p) || !c.joins(p, q)) continue;
        pixels.at(p) = true;
        queue.push_back(p);
      }
  }
  return pixels.result();
}

// The range rule's walk over runs, record by record, with the stack that forgets.
template <class T>
Filled<T> depthFirstRuns(const FillCase<T>& c, bool& forgot) {
  struct Record {
    int y, l, r, pl, pr, d;
  };
  Collected<T> pixels(c);
  std::vector<Record> stack;
  const auto capacity = std::max<size_t>(1, static_cast<size_t>(c.roi.width) * static_cast<size_t>(c.roi.height) / 4);
  const auto open = [&](Point p) { return pixels.inside(p) && !pixels.at(p) && c.joins(p, c.seed); };
  const auto run = [&](int x, int y) {
    int l = x, r = x;
    pixels.at({x, y}) = true;
    while (open({l - 1, y})) pixels.at({--l, y}) = true;
    while (open({r + 1, y})) pixels.at({++r, y}) = true;
    return std::pair{l, r};
  };
  const auto see = [&](int y, int l, int r) { pixels.surround({l, y}), pixels.surround({r, y}); };
  const auto [seedLeft, seedRight] = run(c.seed.x, c.seed.y);
  see(c.seed.y, seedLeft, seedRight);
  forgot = false;
  if (c.roi.height > 1)
    stack.push_back({c.seed.y, seedLeft, seedRight, seedRight + 1, seedRight, c.seed.y == c.roi.height - 1 ? -1 : 1});
  while (!stack.empty()) {
    const Record p = stack.back();
    stack.pop_back();
    see(p.y, p.l, p.r);
    const auto scan = [&](int y, int from, int to, int d) {
      for (int x = from; x <= to; ++x) {
        if (!open({x, y})) continue;
        const auto [l, r] = run(x, y);
        if (stack.size() == capacity) {
          stack.clear();
          forgot = true;
        } else {
          stack.push_back({y, l, r, p.l, p.r, d});
        }
        x = r + 1;
      }
    };
    const int wider = c.member.diagonal ? 1 : 0;
    scan(p.y - p.d, p.l - wider, p.r + wider, p.d);
    scan(p.y + p.d, p.l - wider, p.pl - 1, -p.d);
    scan(p.y + p.d, p.pr + 1, p.r + wider, -p.d);
  }
  return pixels.result();
}

// --- The images ------------------------------------------------------------------------------------------------------

constexpr int kFigures = 7;

// Whether a pixel belongs to the figure: a winding path, noise, a checkerboard, a comb, all.
bool isInFigure(int kind, int x, int y, RoiSize roi, std::mt19937& engine) {
  switch (kind) {
    case 0:
      return y % 2 == 0 || x == (y % 4 == 1 ? roi.width - 1 : 0);
    case 1:
      return x % 2 == 0 || y == (x % 4 == 1 ? roi.height - 1 : 0);
    case 2:
      return engine() % 3 != 0;
    case 3:
      return (x + y) % 2 == 0;
    case 4:
      return x % 2 == 0 || y == roi.height / 2;
    case 5:
      return y % 2 == 0 || x == roi.width / 2;
    default:
      return true;
  }
}

int bufferSize(FillRule rule, RoiSize roi) {
  int size = 0;
  EXPECT_EQ((rule == FillRule::kGradient ? zvpiFloodFillGetSize_Grad : zvpiFloodFillGetSize)(roi, &size), StatusOk);
  return size;
}

template <class T>
FillCase<T> caseOf(const FillMember<T>& member, const Image<T>& image, RoiSize roi, Point seed) {
  return {member, image, roi, seed, {}, {}, {}};
}

// The filled image and the region record are those of the model; the buffer is exactly as large as reported.
template <class T>
void expectFills(const FillCase<T>& c, const Filled<T>& expected, int shift) {
  const int channels = c.member.channels;
  std::vector<T> before;
  for (int y = 0; y < c.roi.height; ++y)
    for (int x = 0; x < c.image.width(); ++x) before.push_back(c.image.get(y, x));
  const GuardedBlock buffer(static_cast<size_t>(bufferSize(c.member.rule, c.roi)), {shift % 2 == 0, shift / 2});
  ConnectedComponent region{};
  ASSERT_EQ(c.member.fill(c.image.data(), c.image.step(), c.roi, c.seed, c.newVal, c.minDelta, c.maxDelta, &region,
                          buffer.start()),
            StatusOk);
  ASSERT_TRUE(matches(c.image, [&](int y, int x) {
    const size_t i = static_cast<size_t>(y) * static_cast<size_t>(c.image.width()) + static_cast<size_t>(x);
    return expected.joined[i / static_cast<size_t>(channels)] ? c.newVal[x % channels] : before[i];
  }));
  const ConnectedComponent& want = expected.component;
  ASSERT_EQ(region.area, want.area);
  for (int i = 0; i < 3; ++i) ASSERT_EQ(region.value[i], want.value[i]);
  ASSERT_EQ(region.rect.x, want.rect.x);
  ASSERT_EQ(region.rect.y, want.rect.y);
  ASSERT_EQ(region.rect.width, want.rect.width);
  ASSERT_EQ(region.rect.height, want.rect.height);
}

// Pixels of the figure are near 40, the others near 100 or equal to the new value.
template <class T>
void expectFillsFigure(const FillMember<T>& member, RoiSize roi, int kind, unsigned seed) {
  std::mt19937 engine(seed);
  const auto upTo = [&](unsigned n) { return static_cast<int>(engine() % n); };
  const int channels = member.channels;
  const Image<T> image(roi.width * channels, roi.height, upTo(2) * int{sizeof(T)}, kPlacements[seed % 4]);
  const Point at{upTo(static_cast<unsigned>(roi.width)), upTo(static_cast<unsigned>(roi.height))};
  FillCase<T> c = caseOf(member, image, roi, at);
  const bool exact = member.rule == FillRule::kEqual, withinBounds = upTo(4) == 0;
  for (int i = 0; i < 3; ++i) {
    c.newVal[i] = static_cast<T>(withinBounds ? 41 : 200 + i);
    c.minDelta[i] = static_cast<T>(upTo(3));
    c.maxDelta[i] = static_cast<T>(upTo(4));
  }
  const unsigned spread = exact ? 1 : 1 + static_cast<unsigned>(upTo(5));
  for (int y = 0; y < roi.height; ++y)
    for (int x = 0; x < roi.width; ++x) {
      const bool inside = isInFigure(kind, x, y, roi, engine);
      for (int k = 0; k < channels; ++k) {
        const T outside = upTo(4) == 0 ? c.newVal[k] : static_cast<T>(100 + k);
        const bool odd = channels == 3 && !inside && k != upTo(3);  // one channel differs
        image.set(y, x * channels + k, inside || odd ? static_cast<T>(40 + upTo(spread)) : outside);
      }
    }
  bool equalsNewVal = true;
  for (int k = 0; k < channels; ++k) equalsNewVal = equalsNewVal && c.pixel(at, k) == c.newVal[k];
  if (equalsNewVal) return;
  Filled<T> expected = breadthFirst(c);
  if (member.rule == FillRule::kRange && !c.newValJoins()) {
    bool forgot;
    const Filled<T> runs = depthFirstRuns(c, forgot);
    if (!forgot) {
      ASSERT_EQ(runs.joined, expected.joined);
    }
    expected = runs;
  }
  ASSERT_NO_FATAL_FAILURE(expectFills(c, expected, static_cast<int>(seed % 16)))
      << member.name << ", figure " << kind << ", " << roi.width << "x" << roi.height << ", seed " << seed;
}

TEST(FloodFill, EqualsTheModelsOnEverySmallImage) {
  unsigned seed = 0;
  forEachFill([&](const auto& member) {
    for (int height = 1; height <= 8; ++height)
      for (int width = 1; width <= 9; ++width)
        for (int kind = 0; kind < kFigures; ++kind)
          ASSERT_NO_FATAL_FAILURE(expectFillsFigure(member, {width, height}, kind, ++seed));
  });
}

TEST(FloodFill, EqualsTheModelsOnWideImages) {
  unsigned seed = 0;
  forEachFill([&](const auto& member) {
    for (int width = 10; width <= 300; width += 1 + width / 16)
      for (int kind = 0; kind < kFigures; ++kind)
        ASSERT_NO_FATAL_FAILURE(expectFillsFigure(member, {width, 1 + width % 7}, kind, ++seed));
  });
}

// One channel of bytes, written as text: a digit is a pixel.
struct Picture {
  explicit Picture(std::vector<std::string> text) : rows(std::move(text)), image(width(), height()) {
    for (int y = 0; y < height(); ++y)
      for (int x = 0; x < width(); ++x) image.set(y, x, static_cast<uint8_t>(rows[size_t(y)][size_t(x)] - '0'));
  }
  int width() const { return static_cast<int>(rows[0].size()); }
  int height() const { return static_cast<int>(rows.size()); }

  // Deltas: none for equality, else two.
  template <class Fill, class... Deltas>
  std::vector<std::string> filled(Fill fill, Point seed, int newVal, Deltas... deltas) {
    std::vector<uint8_t> buffer(10000);
    EXPECT_EQ(fill(image.data(), image.step(), {width(), height()}, seed, static_cast<uint8_t>(newVal),
                   static_cast<uint8_t>(deltas)..., &region, buffer.data()),
              StatusOk);
    auto text = rows;
    for (int y = 0; y < height(); ++y)
      for (int x = 0; x < width(); ++x) text[size_t(y)][size_t(x)] = static_cast<char>('0' + image.get(y, x));
    return text;
  }

  std::vector<std::string> rows;
  Image<uint8_t> image;
  ConnectedComponent region{-1, {-1, -1, -1}, {-1, -1, -1, -1}};
};
using Text = std::vector<std::string>;

TEST(FloodFill, ASeedThatEqualsTheNewValueLeavesEverythingUntouched) {
  Picture equal({"55", "55"}), range({"55", "55"}), gradient({"55", "55"});
  EXPECT_EQ(equal.filled(zvpiFloodFill_4Con_8u_C1IR, {0, 0}, 5), equal.rows);
  EXPECT_EQ(range.filled(zvpiFloodFill_Range4Con_8u_C1IR, {0, 0}, 5, 1, 1), range.rows);
  EXPECT_EQ(gradient.filled(zvpiFloodFill_Grad8Con_8u_C1IR, {0, 0}, 5, 1, 1), gradient.rows);
  for (const Picture* p : {&equal, &range, &gradient}) {
    EXPECT_EQ(p->region.area, -1);
    EXPECT_EQ(p->region.rect.height, -1);
  }
}

TEST(FloodFill, RangesIncludeTheirBoundsAndSaturate) {
  EXPECT_EQ(Picture({"34567"}).filled(zvpiFloodFill_Range4Con_8u_C1IR, {2, 0}, 9, 1, 1), (Text{"39997"}));
  EXPECT_EQ(Picture({"34567"}).filled(zvpiFloodFill_Range4Con_8u_C1IR, {2, 0}, 9, 255, 0), (Text{"99967"}));
  EXPECT_EQ(Picture({"34567"}).filled(zvpiFloodFill_Range4Con_8u_C1IR, {2, 0}, 9, 0, 0), (Text{"34967"}));
  uint16_t row[] = {0, 60000, 65535, 100};
  ConnectedComponent region;
  std::vector<uint8_t> buffer(200);
  EXPECT_EQ(zvpiFloodFill_Range4Con_16u_C1IR(row, 8, {4, 1}, {1, 0}, 1, 500, 65535, &region, buffer.data()), StatusOk);
  EXPECT_EQ(row[2], 1);
  EXPECT_EQ(region.area, 2);
}

// Six teeth above: the stack of 12 x 2 / 4 = 6 records takes them all. Seven above a row of 14 fit 7, eight with a row
// of 14 (at both ends) do not exist; below and above there are fourteen for a stack of 14 x 3 / 4 = 10 records.
TEST(FloodFill, ARangeFillForgetsWhatTheStackCannotHold) {
  const std::string teeth = "10101010101010", full = "11111111111111";
  Picture above({teeth, full});
  above.filled(zvpiFloodFill_Range4Con_8u_C1IR, {0, 1}, 9, 0, 0);
  EXPECT_EQ(above.region.area, 21);
  // Up first: seven teeth are painted and wait. Of those below, three more wait, the next one empties the stack, and
  // the last three wait again. Rows 0 and 2 are painted all the same; the rectangle holds what was looked at.
  Picture both({teeth, full, teeth});
  EXPECT_EQ(both.filled(zvpiFloodFill_Range4Con_8u_C1IR, {0, 1}, 9, 0, 0),
            (Text{"90909090909090", "99999999999999", "90909090909090"}));
  EXPECT_EQ(both.region.area, 28);
  EXPECT_EQ(both.region.rect.y, 1);
  EXPECT_EQ(both.region.rect.height, 2);
  // The same with longer teeth: those forgotten do not grow. Equality fills them all.
  Picture longer({teeth, teeth, full, teeth, teeth});
  EXPECT_EQ(longer.filled(zvpiFloodFill_4Con_8u_C1IR, {0, 2}, 9)[0], "90909090909090");
  EXPECT_EQ(longer.region.area, 42);
}

TEST(FloodFill, GradientsFollowSlopes) {
  EXPECT_EQ(Picture({"01234568"}).filled(zvpiFloodFill_Grad4Con_8u_C1IR, {3, 0}, 9, 1, 1), (Text{"99999998"}));
  EXPECT_EQ(Picture({"01234568"}).filled(zvpiFloodFill_Grad4Con_8u_C1IR, {3, 0}, 9, 0, 2), (Text{"01299999"}));
  EXPECT_EQ(Picture({"3323"}).filled(zvpiFloodFill_Grad4Con_8u_C1IR, {0, 0}, 9, 0, 5), (Text{"9923"}));  // never darker
  // Each column joins from above although its neighbour in the row does not let it join.
  EXPECT_EQ(Picture({"1234", "1471"}).filled(zvpiFloodFill_Grad4Con_8u_C1IR, {0, 0}, 9, 0, 3), (Text{"9999", "9991"}));
}

TEST(FloodFill, FloatsCompareAsNumbers) {
  const float nan = nanf("");
  float zeros[] = {0.0f, -0.0f, 1.0f}, nans[] = {nan, nan, nan};
  ConnectedComponent region{};
  std::vector<uint8_t> buffer(200);
  EXPECT_EQ(zvpiFloodFill_4Con_32f_C1IR(zeros, 12, {3, 1}, {1, 0}, 5, &region, buffer.data()), StatusOk);
  EXPECT_EQ(region.area, 2);
  EXPECT_EQ(zeros[0], 5.0f);
  EXPECT_EQ(zvpiFloodFill_4Con_32f_C1IR(nans, 12, {3, 1}, {1, 0}, nan, &region, buffer.data()), StatusOk);
  EXPECT_EQ(region.area, 1);
  // 16777216 + 1 is 16777216 in single precision: the next number does not join.
  float large[] = {16777216.0f, 16777218.0f};
  EXPECT_EQ(zvpiFloodFill_Grad8Con_32f_C1IR(large, 8, {2, 1}, {0, 0}, 0, 1, 1, &region, buffer.data()), StatusOk);
  EXPECT_EQ(region.area, 1);
  // The bound is rounded, not the distance: 1 - 0.75 x 2^-24 is the number below 1; 1 + 2^-30, rounded, is 1.
  const auto joined = [&](float p, float delta) {
    std::vector<float> row(20, p);
    row[0] = 1;
    EXPECT_EQ(zvpiFloodFill_Grad4Con_32f_C1IR(row.data(), 80, {20, 1}, {0, 0}, 5, delta, 0, &region, buffer.data()),
              StatusOk);
    return region.area;
  };
  EXPECT_EQ(joined(1 - 0x1p-24f, 0.75f * 0x1p-24f), 20);
  EXPECT_EQ(joined(-0x1p-30f, 1), 1);
}

TEST(FloodFill, BufferSizes) {
  int size = -1;
  EXPECT_EQ(zvpiFloodFillGetSize({7, 5}, &size), StatusOk);
  EXPECT_EQ(size, 6 * 35 + 32);
  EXPECT_EQ(zvpiFloodFillGetSize_Grad({7, 5}, &size), StatusOk);
  EXPECT_EQ(size, 9 * 7 + 6 * 35 + 32);
  EXPECT_EQ(zvpiFloodFillGetSize({357913935, 1}, &size), StatusOk);
  EXPECT_EQ(size, 2147483642);
  EXPECT_EQ(zvpiFloodFillGetSize({357913936, 1}, &size), ErrSize);
}

}  // namespace
}  // namespace zvp::test
