// Accumulation against a model on bit patterns, which says what every NaN becomes; hand-computed edges; the checks.
#include <bit>
#include <functional>
#include <limits>
#include <string>

#include "support/checks.h"
#include "support/image.h"
#include "zvpcv/arithmetic.h"

namespace zvp::test {
namespace {

using Bits = uint32_t;  // of a single-precision value: passing a float may change a signalling NaN

enum class Family { kAdd, kAddSquare, kAddProduct, kAddWeighted };

// A member with its operands in the order of its arguments: sources, mask if any, accumulator.
using Operands = std::vector<Operand>;
struct Member {
  std::string name;
  Family family;
  bool masked;
  std::function<Status(const Operands&, RoiSize, float alpha)> invoke;
};

template <class T>
T* at(const Operand& o) {
  return static_cast<T*>(const_cast<void*>(o.data));
}
template <class S, class... Alpha>
auto bind(Status (*f)(S*, int, float*, int, RoiSize, Alpha...)) {
  return [f](const Operands& o, RoiSize roi, [[maybe_unused]] float alpha) {
    return f(at<S>(o[0]), o[0].step, at<float>(o[1]), o[1].step, roi, Alpha{alpha}...);
  };
}
template <class S, class M, class... Alpha>
auto bind(Status (*f)(S*, int, M*, int, float*, int, RoiSize, Alpha...)) {
  return [f](const Operands& o, RoiSize roi, [[maybe_unused]] float alpha) {
    return f(at<S>(o[0]), o[0].step, at<M>(o[1]), o[1].step, at<float>(o[2]), o[2].step, roi, Alpha{alpha}...);
  };
}
template <class S, class M>
auto bind(Status (*f)(S*, int, S*, int, M*, int, float*, int, RoiSize)) {
  return [f](const Operands& o, RoiSize roi, float) {
    return f(at<S>(o[0]), o[0].step, at<S>(o[1]), o[1].step, at<M>(o[2]), o[2].step, at<float>(o[3]), o[3].step, roi);
  };
}

#define MEMBER(family, types, form) \
  Member { #family "_" #types "_" #form, Family::k##family, #form[3] == 'M', bind(zvpi##family##_##types##_##form) }
#define MEMBERS(types)                                                                                     \
  MEMBER(Add, types, C1IMR), MEMBER(AddSquare, types, C1IR), MEMBER(AddSquare, types, C1IMR),              \
      MEMBER(AddProduct, types, C1IR), MEMBER(AddProduct, types, C1IMR), MEMBER(AddWeighted, types, C1IR), \
      MEMBER(AddWeighted, types, C1IMR)

template <class F>
void forEachMember(F f) {
  for (const Member& m : {MEMBER(Add, 8u32f, C1IR), MEMBERS(8u32f)}) f(uint8_t{}, m);
  for (const Member& m : {MEMBER(Add, 8s32f, C1IR), MEMBERS(8s32f)}) f(int8_t{}, m);
  for (const Member& m : {MEMBER(Add, 16u32f, C1IR), MEMBERS(16u32f)}) f(uint16_t{}, m);
  for (const Member& m : {MEMBERS(32f)}) f(float{}, m);
}

// --- The model -------------------------------------------------------------------------------------------------------

constexpr Bits kOne = 0x3f800000, kQuietBit = 0x400000, kInvalid = 0xffc00000;

bool isNan(Bits v) { return (v & 0x7fffffff) > 0x7f800000; }

template <class F>
Bits operate(Bits a, Bits b, F f) {
  if (isNan(a)) return a | kQuietBit;
  if (isNan(b)) return b | kQuietBit;
  const Bits result = std::bit_cast<Bits>(f(std::bit_cast<float>(a), std::bit_cast<float>(b)));
  return isNan(result) ? kInvalid : result;
}
Bits plus(Bits a, Bits b) {
  return operate(a, b, [](float x, float y) { return x + y; });
}
Bits minus(Bits a, Bits b) {
  return operate(a, b, [](float x, float y) { return x - y; });
}
Bits times(Bits a, Bits b) {
  return operate(a, b, [](float x, float y) { return x * y; });
}

Bits modelled(Family family, bool masked, bool selected, Bits s1, Bits s2, Bits d, Bits alpha) {
  const Bits m = selected ? kOne : 0, a = selected ? alpha : 0;
  switch (family) {
    case Family::kAdd:
      return masked ? plus(times(m, s1), d) : plus(d, s1);
    case Family::kAddSquare:
      return plus(masked ? times(times(s1, s1), m) : times(s1, s1), d);
    case Family::kAddProduct:
      return plus(masked ? times(times(s1, s2), m) : times(s1, s2), d);
    default:
      return plus(d, masked ? times(minus(s1, d), a) : times(alpha, minus(s1, d)));
  }
}

// --- Operands --------------------------------------------------------------------------------------------------------

// Floats as bit patterns: ordinary values, all patterns, and many NaNs whose payloads differ.
class FloatBits {
 public:
  explicit FloatBits(unsigned seed) : engine_(seed), values_(seed) {}

  Bits operator()() {
    const Bits bits = static_cast<Bits>(engine_());
    switch (bits % 8) {
      case 0:
        return bits;
      case 1:
        return bits | 0x7f800000;
      default:
        return std::bit_cast<Bits>(values_());
    }
  }

 private:
  std::mt19937 engine_;
  Values<float> values_;
};

template <class T>
constexpr bool kIsFloat = std::is_same_v<T, float>;
template <class T>
using Stored = std::conditional_t<kIsFloat<T>, Bits, T>;
template <class T>
using Source = std::conditional_t<kIsFloat<T>, FloatBits, Values<T>>;

template <class T>
Bits converted(Stored<T> v) {
  if constexpr (kIsFloat<T>) {
    return v;
  } else {
    return std::bit_cast<Bits>(static_cast<float>(v));
  }
}

template <class T>
Operand operand(const Image<T>& image) {
  return {image.data(), image.step(), sizeof(T)};
}

template <class T>
struct Setting {
  Image<Stored<T>> s1, s2;
  Image<uint8_t> mask;
  Image<Bits> acc;

  Setting(int width, int height, Placement placement, unsigned seed)
      : s1(width, height, width % 2 * int{sizeof(T)}, placement),
        s2(width, height, width % 3 * int{sizeof(T)}, placement),
        mask(width, height, width % 5, placement),
        acc(width, height, width % 2 * 4, placement) {
    Source<T> values(seed);
    s1.fill(values);
    s2.fill(values);
    std::mt19937 engine(seed);
    mask.fill([&] { return engine() % 2 == 0 ? 0 : engine() % 255 + 1; });
    acc.fill(FloatBits(seed + 1));
  }

  Operands operands(const Member& m) const {
    Operands list = {operand(s1)};
    if (m.family == Family::kAddProduct) list.push_back(operand(s2));
    if (m.masked) list.push_back(operand(mask));
    list.push_back(operand(acc));
    return list;
  }
};

constexpr int kWidest = 37, kHeight = 3;  // more than two registers of the widest build

TEST(Accumulate, EqualsTheModelBitByBit) {
  const float alphas[] = {
      0.25f, 1.0f, 0.0f, -1.5f, std::numeric_limits<float>::infinity(), std::bit_cast<float>(0x7fc12345)};
  forEachMember([&]<class T>(T, const Member& m) {
    SCOPED_TRACE(m.name);
    for (const Placement placement : kPlacements) {
      for (int width = 1; width <= kWidest; ++width) {
        const Setting<T> setting(width, kHeight, placement, static_cast<unsigned>(width)),
            before(width, kHeight, placement, static_cast<unsigned>(width));
        const float alpha = alphas[width % std::size(alphas)];
        ASSERT_EQ(m.invoke(setting.operands(m), {width, kHeight}, alpha), StatusOk);
        ASSERT_TRUE(matches(setting.acc,
                            [&](int y, int x) {
                              return modelled(m.family, m.masked, before.mask.get(y, x) != 0,
                                              converted<T>(before.s1.get(y, x)), converted<T>(before.s2.get(y, x)),
                                              before.acc.get(y, x), std::bit_cast<Bits>(alpha));
                            }))
            << "width " << width;
      }
    }
  });
}

TEST(Accumulate, TheRunningAverageOfTwoImagesStepsThroughBothWithTheFirstStep) {
  for (const Placement placement : kPlacements) {
    for (int width = 1; width <= kWidest; ++width) {
      const Image<Bits> s1(width, kHeight, 4 * (width % 2), placement), s2(width, kHeight, 4 * (width % 2), placement);
      const Image<Bits> dst(width, kHeight, 4 * (width % 3), placement);
      s1.fill(FloatBits(1));
      s2.fill(FloatBits(2));
      const auto f = bind(zvpiAddWeighted_32f_C1R);
      const Operand second = {s2.data(), 8 * width, 4};  // more than the rows of the image have
      ASSERT_EQ(f({operand(s1), second, operand(dst)}, {width, kHeight}, 0.75f), StatusOk);
      ASSERT_TRUE(matches(dst, [&](int y, int x) {
        const Bits b = s2.get(y, x);
        return plus(b, times(std::bit_cast<Bits>(0.75f), minus(s1.get(y, x), b)));
      }));
    }
  }
}

TEST(Accumulate, TheAccumulatorMayBeItsOwnSource) {
  std::vector<float> d(kWidest, 3.0f);
  const int step = kWidest * 4;
  ASSERT_EQ(zvpiAddSquare_32f_C1IR(d.data(), step, d.data(), step, {kWidest, 1}), StatusOk);
  EXPECT_EQ(d, std::vector<float>(kWidest, 12.0f));
  ASSERT_EQ(zvpiAddWeighted_32f_C1R(d.data(), step, d.data(), step, d.data(), step, {kWidest, 1}, 0.5f), StatusOk);
  EXPECT_EQ(d, std::vector<float>(kWidest, 12.0f));
}

// --- Hand-computed edges ---------------------------------------------------------------------------------------------

constexpr float kInf = std::numeric_limits<float>::infinity();

TEST(Accumulate, TheMaskMultiplies) {
  const uint8_t none[4] = {}, bytes[4] = {};
  float d[4] = {kInf, -kInf, 5.0f, -0.0f};
  ASSERT_EQ(zvpiAddWeighted_8u32f_C1IMR(bytes, 4, none, 4, d, 16, {4, 1}, 0.5f), StatusOk);
  EXPECT_EQ(std::bit_cast<Bits>(d[0]), kInvalid);
  EXPECT_EQ(std::bit_cast<Bits>(d[1]), kInvalid);
  EXPECT_EQ(d[2], 5.0f);
  EXPECT_EQ(std::bit_cast<Bits>(d[3]), 0u);  // -0 + (0 - -0) x 0 = +0

  const float s1[4] = {kInf, kInf, 1e30f, -7.0f}, s2[4] = {0.0f, 1.0f, 1e30f, 9.0f};
  float p[4] = {1.0f, 2.0f, 3.0f, 0.1f};
  ASSERT_EQ(zvpiAddProduct_32f_C1IMR(s1, 16, s2, 16, none, 4, p, 16, {4, 1}), StatusOk);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(std::bit_cast<Bits>(p[i]), kInvalid) << i;  // 1e30 x 1e30 is infinite too
  EXPECT_EQ(p[3], 0.1f);
}

TEST(Accumulate, IntegersAreConvertedBeforeTheyAreMultiplied) {
  const uint16_t s[1] = {65535};
  float d[1] = {0.0f};
  ASSERT_EQ(zvpiAddSquare_16u32f_C1IR(s, 2, d, 4, {1, 1}), StatusOk);
  EXPECT_EQ(d[0], 4294836224.0f);  // 4294836225 has 32 significant bits
  const int8_t low[1] = {-128};
  d[0] = 1.0f;
  ASSERT_EQ(zvpiAddWeighted_8s32f_C1IR(low, 1, d, 4, {1, 1}, 1.0f), StatusOk);
  EXPECT_EQ(d[0], -128.0f);
}

TEST(Accumulate, WeightsOneAndZero) {
  const uint8_t s[3] = {0, 7, 255};
  float d[3] = {1.5f, 0.1f, 3.0f};
  ASSERT_EQ(zvpiAddWeighted_8u32f_C1IR(s, 3, d, 12, {3, 1}, 0.0f), StatusOk);
  EXPECT_EQ(d[1], 0.1f);
  ASSERT_EQ(zvpiAddWeighted_8u32f_C1IR(s, 3, d, 12, {3, 1}, 1.0f), StatusOk);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(d[i], s[i]);
  // d + 0.1 x (s - d), not 0.9 x d + 0.1 x s: an infinite source does not meet an infinite accumulator half-way.
  const float source[1] = {kInf};
  float infinite[1] = {kInf};
  ASSERT_EQ(zvpiAddWeighted_32f_C1IR(source, 4, infinite, 4, {1, 1}, 0.1f), StatusOk);
  EXPECT_EQ(std::bit_cast<Bits>(infinite[0]), kInvalid);
}

// --- Checks ----------------------------------------------------------------------------------------------------------

// The steps of 16u sources come before those of the other operands.
void expectWordChecks(const Member& m, const Operands& valid, RoiSize roi) {
  const size_t last = valid.size() - 1;
  const auto with = [&](std::function<void(Operands&)> change) {
    Operands o = valid;
    change(o);
    return m.invoke(o, roi, 0.5f);
  };
  const auto spoilOthers = [&](Operands& o, int accStep) {
    if (m.masked) o[last - 1].step = roi.width - 1;
    o[last].step = accStep;
  };
  const int sources = m.family == Family::kAddProduct ? 2 : 1;
  for (size_t i = 0; i <= last; ++i) {
    Operands o = valid;
    o[i].data = nullptr;
    EXPECT_EQ(m.invoke(o, {0, 0}, 0.5f), ErrNullPtr);
    EXPECT_EQ(m.invoke(valid, {i % 2 == 0 ? 0 : 1, i % 2 == 0 ? 1 : -1}, 0.5f), ErrSize);
  }
  for (int i = 0; i < sources; ++i) {
    EXPECT_EQ(with([&](Operands& o) {
                for (int k = 0; k < sources; ++k) ++o[size_t(k)].step;
                spoilOthers(o, 0);
                o[size_t(i)].step = roi.width * 2 - 1;
              }),
              ErrStep);
    EXPECT_EQ(with([&](Operands& o) {
                spoilOthers(o, roi.width * 4 - 1);
                ++o[size_t(i)].step;
              }),
              ErrStepNotMultiple);
  }
  EXPECT_EQ(with([&](Operands& o) { o[last].step = roi.width * 4 - 1; }), ErrStep);
  EXPECT_EQ(with([&](Operands& o) { spoilOthers(o, m.masked ? roi.width * 4 + 1 : 0); }), ErrStep);
  EXPECT_EQ(with([&](Operands& o) { o[last].step += 2; }), ErrStepNotMultiple);
  EXPECT_EQ(m.invoke(valid, {INT32_MAX, 1}, 0.5f), ErrStep);
}

constexpr RoiSize kRoi{6, 2};

TEST(Accumulate, ChecksInOrderAndWritesNothing) {
  forEachMember([&]<class T>(T, const Member& m) {
    SCOPED_TRACE(m.name);
    Setting<T> setting(kRoi.width, kRoi.height, {}, 1);
    const auto before = setting.acc.bytes();
    Operands valid = setting.operands(m);
    for (Operand& o : valid) o.step = kRoi.width * o.elementSize;
    if constexpr (std::is_same_v<T, uint16_t>) {
      expectWordChecks(m, valid, kRoi);
    } else {
      expectStandardChecks(
          {m.name, valid, {}, kRoi, [&](const auto& o, const auto&, RoiSize roi) { return m.invoke(o, roi, 0.5f); }});
    }
    EXPECT_EQ(setting.acc.bytes(), before);
    EXPECT_EQ(m.invoke(valid, kRoi, 0.5f), StatusOk);
  });
  const Image<float> a(6, 2), b(6, 2), dst(6, 2);
  const auto f = bind(zvpiAddWeighted_32f_C1R);
  expectStandardChecks({"AddWeighted_32f_C1R",
                        {operand(a), operand(b), operand(dst)},
                        {},
                        kRoi,
                        [&](const auto& o, const auto&, RoiSize roi) { return f(o, roi, 0.5f); }});
}

}  // namespace
}  // namespace zvp::test
