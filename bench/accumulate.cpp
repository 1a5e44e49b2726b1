#include <zvpcv/arithmetic.h>

#include "cases.h"
#include "plain_accumulate.h"

namespace bench::ZVP_LOOPS {
namespace {

template <class T>
struct Operands {
  explicit Operands(RoiSize size)
      : a(randomImage<T>(size.width, size.height, 1)),
        b(randomImage<T>(size.width, size.height, 2)),
        mask(randomImage<std::uint8_t>(size.width, size.height, 3)) {
    for (int y = 0; y < size.height; ++y)
      for (int x = 0; x < size.width; ++x) mask.row(y)[x] &= 1;
  }

  Image<T> a, b;
  Image<std::uint8_t> mask;
};

// The accumulator is read, too.
template <class Library, class Plain>
Work accumulates(RoiSize size, std::size_t sourceBytes, Library library, Plain plain) {
  const std::size_t accumulatorBytes = std::size_t(size.width) * std::size_t(size.height) * sizeof(float);
  return fills<float>(size.width, size.height, sourceBytes + accumulatorBytes, library, plain);
}

constexpr float kAlpha = 0.25f;
template <class... Alpha>
constexpr float kWeight = sizeof...(Alpha) > 0 ? kAlpha : 1.0f;

template <class Operation, class T, class... Alpha>
Work inPlace(Status (*function)(const T*, int, float*, int, RoiSize, Alpha...), RoiSize size) {
  const Operands<T> o(size);
  return accumulates(
      size, o.a.bytes(),
      [=](const auto& acc) { function(o.a.data(), o.a.step, acc.data(), acc.step, size, Alpha{kAlpha}...); },
      [=](const auto& acc) { plain::accumulate<Operation>(o.a, o.b, acc, kWeight<Alpha...>); });
}

template <class Operation, class T, class... Alpha>
Work masked(Status (*function)(const T*, int, const std::uint8_t*, int, float*, int, RoiSize, Alpha...), RoiSize size) {
  const Operands<T> o(size);
  return accumulates(
      size, o.a.bytes() + o.mask.bytes(),
      [=](const auto& acc) {
        function(o.a.data(), o.a.step, o.mask.data(), o.mask.step, acc.data(), acc.step, size, Alpha{kAlpha}...);
      },
      [=](const auto& acc) { plain::accumulateMasked<Operation>(o.a, o.b, o.mask, acc, kWeight<Alpha...>); });
}

template <class T>
Work product(Status (*function)(const T*, int, const T*, int, float*, int, RoiSize), RoiSize size) {
  const Operands<T> o(size);
  return accumulates(
      size, 2 * o.a.bytes(),
      [=](const auto& acc) { function(o.a.data(), o.a.step, o.b.data(), o.b.step, acc.data(), acc.step, size); },
      [=](const auto& acc) { plain::accumulate<plain::AddProduct>(o.a, o.b, acc, 1.0f); });
}

template <class T>
Work maskedProduct(Status (*function)(const T*, int, const T*, int, const std::uint8_t*, int, float*, int, RoiSize),
                   RoiSize size) {
  const Operands<T> o(size);
  return accumulates(
      size, 2 * o.a.bytes() + o.mask.bytes(),
      [=](const auto& acc) {
        function(o.a.data(), o.a.step, o.b.data(), o.b.step, o.mask.data(), o.mask.step, acc.data(), acc.step, size);
      },
      [=](const auto& acc) { plain::accumulateMasked<plain::AddProduct>(o.a, o.b, o.mask, acc, 1.0f); });
}

Work averageOfTwo(decltype(zvpiAddWeighted_32f_C1R)* function, RoiSize size) {
  const Operands<float> o(size);
  return fills<float>(
      size.width, size.height, 2 * o.a.bytes(),
      [=](const auto& dst) {
        function(o.a.data(), o.a.step, o.b.data(), o.b.step, dst.data(), dst.step, size, kAlpha);
      },
      [=](const auto& dst) { plain::average(o.a, o.b, dst, kAlpha); });
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

}  // namespace bench::ZVP_LOOPS
