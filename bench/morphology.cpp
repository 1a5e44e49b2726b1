#include <zvpcv/morphology.h>

#include "cases.h"
#include "plain_morphology.h"

namespace bench {
namespace {

using plain::Mask;
using Bytes = Image<std::uint8_t>;

Mask square(int side) { return {side, side, std::vector<std::uint8_t>(std::size_t(side * side), 1)}; }
Mask ellipse() { return {5, 5, {0, 0, 1, 0, 0, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 0, 0, 1, 0, 0}}; }

// A mask prepared for an operation, with its work buffer.
template <class Spec>
struct Prepared {
  Spec* get() const { return reinterpret_cast<Spec*>(spec.data()); }

  Bytes spec, buffer;
};

template <class Spec, class Extent>
Prepared<Spec> prepare(Status (*query)(Extent, RoiSize, int*, int*),
                       Status (*init)(Extent, const std::uint8_t*, RoiSize, Spec*, std::uint8_t*), Extent extent,
                       const Mask& mask) {
  const RoiSize maskSize{mask.width, mask.height};
  int specBytes = 0, bufferBytes = 0;
  query(extent, maskSize, &specBytes, &bufferBytes);
  const Prepared<Spec> prepared{{specBytes, 1}, {bufferBytes, 1}};
  init(extent, mask.members.data(), maskSize, prepared.get(), prepared.buffer.data());
  return prepared;
}

template <class Operation, int channels, class T, class Value, class Query, class Init>
Work border(Status (*function)(const T*, int, T*, int, RoiSize, BorderType, Value, const MorphBorderSpec*,
                               std::uint8_t*),
            Query query, Init init, RoiSize size, const Mask& mask) {
  const int width = size.width * channels;
  const auto src = randomImage<T>(width, size.height, 1);
  const Image<T> dst(width, size.height), expected(width, size.height);
  const auto prepared = prepare(query, init, size.width, mask);
  return {.library =
              [=] {
                function(src.data(), src.step, dst.data(), dst.step, size, BorderReplicate, Value{}, prepared.get(),
                         prepared.buffer.data());
              },
          .plain = [=] { plain::morphology<Operation, channels>(src, expected, mask); },
          .bytes = src.bytes() + dst.bytes(),
          .agree = [=] { return same(dst, expected); }};
}

// One bit per pixel.
template <class Operation, int channels, class Query, class Init>
Work border(Status (*function)(const std::uint8_t*, int, int, std::uint8_t*, int, int, RoiSize, BorderType,
                               std::uint8_t, const MorphBorderSpec*, std::uint8_t*),
            Query query, Init init, RoiSize size, const Mask& mask) {
  const auto src = randomImage<std::uint8_t>((size.width + 7) / 8, size.height, 1);
  const Bytes dst(src.width, size.height), expected(src.width, size.height);
  const Bytes pixels(size.width, size.height), result(size.width, size.height);
  const auto prepared = prepare(query, init, size.width, mask);
  return {.library =
              [=] {
                function(src.data(), src.step, 0, dst.data(), dst.step, 0, size, BorderReplicate, 0, prepared.get(),
                         prepared.buffer.data());
              },
          .plain = [=] { plain::bitMorphology<Operation>(src, expected, pixels, result, mask); },
          .bytes = src.bytes() + dst.bytes(),
          .agree = [=] { return same(dst, expected); }};
}

Work replicated(decltype(zvpiErodeBorderReplicate_8u_C1R)* function, RoiSize size) {
  const Mask mask = square(5);
  const RoiSize maskSize{mask.width, mask.height};
  const auto src = randomImage<std::uint8_t>(size.width, size.height, 1);
  const Bytes dst(size.width, size.height), expected(size.width, size.height);
  int bytes = 0;
  zvpiMorphologyGetSize_8u_C1R(size.width, mask.members.data(), maskSize, &bytes);
  const Bytes memory(bytes, 1);
  const auto state = [=] { return reinterpret_cast<MorphState*>(memory.data()); };
  zvpiMorphologyInit_8u_C1R(size.width, mask.members.data(), maskSize, {2, 2}, state());
  return {.library = [=] { function(src.data(), src.step, dst.data(), dst.step, size, BorderReplicate, state()); },
          .plain = [=] { plain::morphology<plain::Erode, 1>(src, expected, mask); },
          .bytes = src.bytes() + dst.bytes(),
          .agree = [=] { return same(dst, expected); }};
}

template <class Operation, class T, class Query, class Init>
Work composite(Status (*function)(const T*, int, T*, int, RoiSize, BorderType, T, const MorphAdvSpec*, std::uint8_t*),
               Query query, Init init, RoiSize size) {
  const Mask mask = square(5);
  const auto src = randomImage<T>(size.width, size.height, 1);
  const Image<T> dst(size.width, size.height), expected(size.width, size.height), between(size.width, size.height);
  const auto prepared = prepare(query, init, size, mask);
  return {.library =
              [=] {
                function(src.data(), src.step, dst.data(), dst.step, size, BorderReplicate, T{}, prepared.get(),
                         prepared.buffer.data());
              },
          .plain = [=] { Operation::run(src, expected, between, mask); },
          .bytes = src.bytes() + dst.bytes(),
          .agree = [=] { return same(dst, expected); }};
}

// The members come with a query and an initialisation of the same element type and channels.
#define ZVP_BORDER(operation, suffix, channels, maskName, mask)                                 \
  Case {                                                                                        \
    "zvpi" #operation "Border_" #suffix ", " maskName, [](RoiSize size) {                       \
      return border<plain::operation, channels>(zvpi##operation##Border_##suffix,               \
                                                zvpiMorphologyBorderGetSize_##suffix,           \
                                                zvpiMorphologyBorderInit_##suffix, size, mask); \
    }                                                                                           \
  }
#define ZVP_BORDERS(operation, suffix, channels)                 \
  ZVP_BORDER(operation, suffix, channels, "3x3", square(3)),     \
      ZVP_BORDER(operation, suffix, channels, "5x5", square(5)), \
      ZVP_BORDER(operation, suffix, channels, "5x5 ellipse", ellipse())
#define ZVP_COMPOSITE(operation, suffix)                                                                      \
  Case {                                                                                                      \
    "zvpiMorph" #operation "Border_" #suffix ", 5x5", [](RoiSize size) {                                      \
      return composite<plain::operation>(zvpiMorph##operation##Border_##suffix, zvpiMorphAdvGetSize_##suffix, \
                                         zvpiMorphAdvInit_##suffix, size);                                    \
    }                                                                                                         \
  }
#define ZVP_COMPOSITES(operation) \
  ZVP_COMPOSITE(operation, 8u_C1R), ZVP_COMPOSITE(operation, 16u_C1R), ZVP_COMPOSITE(operation, 32f_C1R)

}  // namespace

std::vector<Case> morphologyCases() {
  return {
      ZVP_BORDERS(Erode, 1u_C1R, 1),
      ZVP_BORDERS(Erode, 8u_C1R, 1),
      ZVP_BORDER(Erode, 8u_C1R, 1, "15x15", square(15)),
      ZVP_BORDERS(Erode, 8u_C3R, 3),
      ZVP_BORDERS(Erode, 8u_C4R, 4),
      ZVP_BORDERS(Erode, 16u_C1R, 1),
      ZVP_BORDERS(Erode, 16s_C1R, 1),
      ZVP_BORDERS(Erode, 32f_C1R, 1),
      ZVP_BORDERS(Erode, 32f_C3R, 3),
      ZVP_BORDERS(Erode, 32f_C4R, 4),
      ZVP_BORDERS(Dilate, 1u_C1R, 1),
      ZVP_BORDERS(Dilate, 8u_C1R, 1),
      ZVP_BORDER(Dilate, 8u_C1R, 1, "15x15", square(15)),
      ZVP_BORDERS(Dilate, 8u_C3R, 3),
      ZVP_BORDERS(Dilate, 8u_C4R, 4),
      ZVP_BORDERS(Dilate, 16u_C1R, 1),
      ZVP_BORDERS(Dilate, 16s_C1R, 1),
      ZVP_BORDERS(Dilate, 32f_C1R, 1),
      ZVP_BORDERS(Dilate, 32f_C3R, 3),
      ZVP_BORDERS(Dilate, 32f_C4R, 4),
      ZVP_CASE(replicated, zvpiErodeBorderReplicate_8u_C1R),
      ZVP_COMPOSITES(Open),
      ZVP_COMPOSITES(Close),
      ZVP_COMPOSITES(Tophat),
      ZVP_COMPOSITES(Blackhat),
      ZVP_COMPOSITES(Gradient),
  };
}

}  // namespace bench
