// Accumulation against a model on bit patterns, which says what every NaN becomes.
#include <bit>
#include <functional>

#include "support/image.h"
#include "zvpcv/arithmetic.h"

namespace zvp::test {
namespace {

using Bits = uint32_t;  // of a single-precision value: passing a float may change a signalling NaN

enum class Family { kAdd, kAddSquare, kAddProduct, kAddWeighted, kAverage };

struct Operand {
  void* data;
  int step;
};

template <class T>
Operand operandOf(const Image<T>& image) {
  return {image.address(), image.step()};
}

// A member with its operands in the order of its arguments: sources, mask if any, accumulator or result.
using Operands = std::vector<Operand>;
struct Member {
  std::string name;
  Family family;
  bool masked;
  std::function<Status(const Operands&, RoiSize, float alpha)> invoke;

  bool hasTwoSources() const { return family == Family::kAddProduct || family == Family::kAverage; }
};

template <class... A>
auto bind(Status (*f)(A...)) {
  return [f](const Operands& operands, RoiSize roi, float alpha) {
    auto o = operands.begin();
    const auto next = [&]<class T>(std::type_identity<T>) -> T {
      if constexpr (std::is_pointer_v<T>) {
        return static_cast<T>(o->data);
      } else if constexpr (std::is_same_v<T, int>) {
        return (o++)->step;
      } else {
        return std::get<T>(std::tuple(roi, alpha));
      }
    };
    return std::apply(f, std::tuple<A...>{next(std::type_identity<A>{})...});
  };
}

#define NAMED(function, family, types, form) \
  Member { #function "_" #types "_" #form, Family::k##family, #form[3] == 'M', bind(zvpi##function##_##types##_##form) }
#define MEMBER(family, types, form) NAMED(family, family, types, form)
#define MEMBERS(types)                                                                                     \
  MEMBER(Add, types, C1IMR), MEMBER(AddSquare, types, C1IR), MEMBER(AddSquare, types, C1IMR),              \
      MEMBER(AddProduct, types, C1IR), MEMBER(AddProduct, types, C1IMR), MEMBER(AddWeighted, types, C1IR), \
      MEMBER(AddWeighted, types, C1IMR)

template <class F>
void forEachMember(F f) {
  for (const Member& m : {MEMBER(Add, 8u32f, C1IR), MEMBERS(8u32f)}) f(uint8_t{}, m);
  for (const Member& m : {MEMBER(Add, 8s32f, C1IR), MEMBERS(8s32f)}) f(int8_t{}, m);
  for (const Member& m : {MEMBER(Add, 16u32f, C1IR), MEMBERS(16u32f)}) f(uint16_t{}, m);
  for (const Member& m : {NAMED(AddWeighted, Average, 32f, C1R), MEMBERS(32f)}) f(float{}, m);
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
Bits plus(Bits a, Bits b) { return operate(a, b, std::plus<float>{}); }
Bits minus(Bits a, Bits b) { return operate(a, b, std::minus<float>{}); }
Bits times(Bits a, Bits b) { return operate(a, b, std::multiplies<float>{}); }

Bits modelled(const Member& m, bool selected, Bits s1, Bits s2, Bits d, Bits alpha) {
  const Bits one = selected ? kOne : 0;
  if (m.family == Family::kAverage) return plus(s2, times(alpha, minus(s1, s2)));
  if (m.family == Family::kAddWeighted)
    return plus(d, m.masked ? times(minus(s1, d), selected ? alpha : 0) : times(alpha, minus(s1, d)));
  if (m.family == Family::kAdd) return m.masked ? plus(times(one, s1), d) : plus(d, s1);
  const Bits product = times(s1, m.hasTwoSources() ? s2 : s1);
  return plus(m.masked ? times(product, one) : product, d);
}

// --- Operands --------------------------------------------------------------------------------------------------------

// Floats as bit patterns: ordinary values, all patterns, and many NaNs whose payloads differ.
auto floatBits(unsigned seed) {
  return [engine = std::mt19937(seed), values = Values<float>(seed)]() mutable {
    const Bits bits = static_cast<Bits>(engine());
    return bits % 8 == 0 ? bits : bits % 8 == 1 ? bits | 0x7f800000 : std::bit_cast<Bits>(values());
  };
}

template <class T>
constexpr bool kIsFloat = std::is_same_v<T, float>;
template <class T>
using Stored = std::conditional_t<kIsFloat<T>, Bits, T>;

template <class T>
auto sourceValues(unsigned seed) {
  if constexpr (kIsFloat<T>) {
    return floatBits(seed);
  } else {
    return Values<T>(seed);
  }
}

template <class T>
Bits converted(Stored<T> v) {
  return kIsFloat<T> ? static_cast<Bits>(v) : std::bit_cast<Bits>(static_cast<float>(v));
}

template <class T>
struct Setting {
  const Member& member;
  Image<Stored<T>> s1, s2;
  Image<uint8_t> mask;
  Image<Bits> acc;

  Setting(const Member& m, int width, int height, Placement placement, unsigned seed)
      : member(m),
        s1(width, height, width % 2 * int{sizeof(T)}, placement),
        s2(width, height, width % (m.family == Family::kAverage ? 2 : 3) * int{sizeof(T)}, placement),
        mask(width, height, width % 5, placement),
        acc(width, height, width % 4 / 2 * 4, placement) {
    s1.fill(sourceValues<T>(seed));
    s2.fill(sourceValues<T>(seed + 2));
    mask.fill([engine = std::mt19937(seed)]() mutable { return engine() % 2 == 0 ? 0 : engine() % 255 + 1; });
    acc.fill(floatBits(seed + 1));
  }

  Operands operands() const {
    Operands list = {operandOf(s1)};
    if (member.hasTwoSources()) list.push_back(operandOf(s2));
    // The average steps through both sources with the first one's step.
    if (member.family == Family::kAverage) list[1].step = 8 * s2.width();
    if (member.masked) list.push_back(operandOf(mask));
    list.push_back(operandOf(acc));
    return list;
  }
};

TEST(Accumulate, EqualsTheModelBitByBit) {
  constexpr int kWidest = 37, kHeight = 3;  // more than two registers of the widest build
  const float kNan = std::bit_cast<float>(0x7fc12345), kAlphas[] = {0.25f, 1.0f, 0.0f, -1.5f, INFINITY, kNan};
  forEachMember([&]<class T>(T, const Member& m) {
    SCOPED_TRACE(m.name);
    for (const Placement placement : kPlacements) {
      for (int width = 1; width <= kWidest; ++width) {
        const auto seed = static_cast<unsigned>(width);
        const Setting<T> now(m, width, kHeight, placement, seed), before(m, width, kHeight, placement, seed);
        const float alpha = kAlphas[seed % std::size(kAlphas)];
        const Frozen frozen(now.s1, now.s2, now.mask);
        ASSERT_EQ(m.invoke(now.operands(), {width, kHeight}, alpha), StatusOk);
        const auto expected = [&](int y, int x) {
          return modelled(m, before.mask.get(y, x) != 0, converted<T>(before.s1.get(y, x)),
                          converted<T>(before.s2.get(y, x)), before.acc.get(y, x), std::bit_cast<Bits>(alpha));
        };
        ASSERT_TRUE(matches(now.acc, expected)) << "width " << width;
      }
    }
  });
}

TEST(Accumulate, TheAccumulatorMayBeItsOwnSource) {
  constexpr int kCount = 37, kStep = kCount * 4;
  std::vector<float> d(kCount, 3.0f);
  ASSERT_EQ(zvpiAddSquare_32f_C1IR(d.data(), kStep, d.data(), kStep, {kCount, 1}), StatusOk);
  EXPECT_EQ(d, std::vector<float>(kCount, 12.0f));
  ASSERT_EQ(zvpiAddWeighted_32f_C1R(d.data(), kStep, d.data(), kStep, d.data(), kStep, {kCount, 1}, 0.5f), StatusOk);
  EXPECT_EQ(d, std::vector<float>(kCount, 12.0f));
}

}  // namespace
}  // namespace zvp::test
