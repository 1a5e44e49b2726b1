#include <zvpcv/arithmetic.h>

#include "cases.h"
#include "plain_accumulate.h"

namespace bench {
namespace {

// The accumulator is read and written: it counts twice.
template <class T>
struct Operands {
  explicit Operands(RoiSize size)
      : a(randomImage<T>(size.width, size.height, 1)),
        b(randomImage<T>(size.width, size.height, 2)),
        mask(randomImage<std::uint8_t>(size.width, size.height, 3)),
        acc(size.width, size.height),
        expected(size.width, size.height) {
    for (int y = 0; y < size.height; ++y)
      for (int x = 0; x < size.width; ++x) mask.row(y)[x] &= 1;
  }
  bool agree() const { return same(acc, expected); }

  Image<T> a, b;
  Image<std::uint8_t> mask;
  Image<float> acc, expected;
};

constexpr float kAlpha = 0.25f;
template <class... Alpha>
constexpr float kWeight = sizeof...(Alpha) > 0 ? kAlpha : 1.0f;

template <class Operation, class T, class... Alpha>
Work inPlace(Status (*function)(const T*, int, float*, int, RoiSize, Alpha...), RoiSize size) {
  const Operands<T> o(size);
  return {.library = [=] { function(o.a.data(), o.a.step, o.acc.data(), o.acc.step, size, Alpha{kAlpha}...); },
          .plain = [=] { plain::accumulate<Operation>(o.a, o.b, o.expected, kWeight<Alpha...>); },
          .bytes = o.a.bytes() + 2 * o.acc.bytes(),
          .agree = [=] { return o.agree(); }};
}

template <class Operation, class T, class... Alpha>
Work masked(Status (*function)(const T*, int, const std::uint8_t*, int, float*, int, RoiSize, Alpha...), RoiSize size) {
  const Operands<T> o(size);
  return {.library =
              [=] {
                function(o.a.data(), o.a.step, o.mask.data(), o.mask.step, o.acc.data(), o.acc.step, size,
                         Alpha{kAlpha}...);
              },
          .plain = [=] { plain::accumulateMasked<Operation>(o.a, o.b, o.mask, o.expected, kWeight<Alpha...>); },
          .bytes = o.a.bytes() + o.mask.bytes() + 2 * o.acc.bytes(),
          .agree = [=] { return o.agree(); }};
}

template <class T>
Work product(Status (*function)(const T*, int, const T*, int, float*, int, RoiSize), RoiSize size) {
  const Operands<T> o(size);
  return {.library = [=] { function(o.a.data(), o.a.step, o.b.data(), o.b.step, o.acc.data(), o.acc.step, size); },
          .plain = [=] { plain::accumulate<plain::AddProduct>(o.a, o.b, o.expected, 1.0f); },
          .bytes = 2 * o.a.bytes() + 2 * o.acc.bytes(),
          .agree = [=] { return o.agree(); }};
}

template <class T>
Work maskedProduct(Status (*function)(const T*, int, const T*, int, const std::uint8_t*, int, float*, int, RoiSize),
                   RoiSize size) {
  const Operands<T> o(size);
  return {.library =
              [=] {
                function(o.a.data(), o.a.step, o.b.data(), o.b.step, o.mask.data(), o.mask.step, o.acc.data(),
                         o.acc.step, size);
              },
          .plain = [=] { plain::accumulateMasked<plain::AddProduct>(o.a, o.b, o.mask, o.expected, 1.0f); },
          .bytes = 2 * o.a.bytes() + o.mask.bytes() + 2 * o.acc.bytes(),
          .agree = [=] { return o.agree(); }};
}

Work averageOfTwo(decltype(zvpiAddWeighted_32f_C1R)* function, RoiSize size) {
  const Operands<float> o(size);
  return {
      .library = [=] { function(o.a.data(), o.a.step, o.b.data(), o.b.step, o.acc.data(), o.acc.step, size, kAlpha); },
      .plain =
          [=] {
            for (int y = 0; y < size.height; ++y)
              for (int x = 0; x < size.width; ++x)
                o.expected.row(y)[x] = plain::AddWeighted::update(o.b.row(y)[x], o.a.row(y)[x], 0, kAlpha);
          },
      .bytes = 3 * o.acc.bytes(),
      .agree = [=] { return o.agree(); }};
}

#define ZVP_ONE_SOURCE(operation, types)                                 \
  ZVP_CASE(inPlace<plain::operation>, zvpi##operation##_##types##_C1IR), \
      ZVP_CASE(masked<plain::operation>, zvpi##operation##_##types##_C1IMR)
#define ZVP_PRODUCTS(types) \
  ZVP_CASE(product, zvpiAddProduct_##types##_C1IR), ZVP_CASE(maskedProduct, zvpiAddProduct_##types##_C1IMR)

}  // namespace

std::vector<Case> accumulateCases() {
  return {
      ZVP_ONE_SOURCE(Add, 8u32f),
      ZVP_ONE_SOURCE(Add, 8s32f),
      ZVP_ONE_SOURCE(Add, 16u32f),
      ZVP_CASE(masked<plain::Add>, zvpiAdd_32f_C1IMR),
      ZVP_ONE_SOURCE(AddSquare, 8u32f),
      ZVP_ONE_SOURCE(AddSquare, 8s32f),
      ZVP_ONE_SOURCE(AddSquare, 16u32f),
      ZVP_ONE_SOURCE(AddSquare, 32f),
      ZVP_PRODUCTS(8u32f),
      ZVP_PRODUCTS(8s32f),
      ZVP_PRODUCTS(16u32f),
      ZVP_PRODUCTS(32f),
      ZVP_ONE_SOURCE(AddWeighted, 8u32f),
      ZVP_ONE_SOURCE(AddWeighted, 8s32f),
      ZVP_ONE_SOURCE(AddWeighted, 16u32f),
      ZVP_ONE_SOURCE(AddWeighted, 32f),
      ZVP_CASE(averageOfTwo, zvpiAddWeighted_32f_C1R),
  };
}

}  // namespace bench
