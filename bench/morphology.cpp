#include <zvpcv/morphology.h>

#include "cases.h"
#include "plain_morphology.h"

namespace bench::ZVP_LOOPS {
namespace {

using plain::Mask;
using Bytes = Image<std::uint8_t>;

template <int side>
Mask square() {
  return {side, side, std::vector<std::uint8_t>(std::size_t(side * side), 1)};
}
Mask ellipse() { return {5, 5, {0, 0, 1, 0, 0, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 0, 0, 1, 0, 0}}; }

// What a filter is prepared for: erosion and dilation for a width, their compositions for a size.
void extentOf(RoiSize size, int& width) { width = size.width; }
void extentOf(RoiSize size, RoiSize& extent) { extent = size; }

// A mask prepared for a filter, with the filter's work buffer.
template <class Spec>
struct Prepared {
  template <class Extent>
  Prepared(Status (*query)(Extent, RoiSize, int*, int*),
           Status (*init)(Extent, const std::uint8_t*, RoiSize, Spec*, std::uint8_t*), RoiSize size, const Mask& mask) {
    const RoiSize maskSize{mask.width, mask.height};
    int specBytes = 0, bufferBytes = 0;
    Extent extent{};
    extentOf(size, extent);
    query(extent, maskSize, &specBytes, &bufferBytes);
    spec = Bytes(specBytes, 1);
    buffer = Bytes(bufferBytes, 1);
    init(extent, mask.members.data(), maskSize, get(), buffer.data());
  }

  Spec* get() const { return reinterpret_cast<Spec*>(spec.data()); }

  Bytes spec{1, 1}, buffer{1, 1};
};

template <class Operation, int channels, class T, class Value, class Spec, class Query, class Init>
Work filter(Status (*function)(const T*, int, T*, int, RoiSize, BorderType, Value, const Spec*, std::uint8_t*),
            Query query, Init init, RoiSize size, const Mask& mask) {
  const auto src = randomImage<T>(size.width * channels, size.height, 1);
  const Image<T> between(src.width, src.height);
  const Prepared<Spec> prepared(query, init, size, mask);
  return fills<T>(
      src.width, src.height, src.bytes(),
      [=](const auto& dst) {
        function(src.data(), src.step, dst.data(), dst.step, size, BorderReplicate, Value{}, prepared.get(),
                 prepared.buffer.data());
      },
      [=](const auto& dst) { Operation::template run<channels>(src, dst, between, mask); });
}

// One bit per pixel.
template <class Operation, int channels, class Spec, class Query, class Init>
Work filter(Status (*function)(const std::uint8_t*, int, int, std::uint8_t*, int, int, RoiSize, BorderType,
                               std::uint8_t, const Spec*, std::uint8_t*),
            Query query, Init init, RoiSize size, const Mask& mask) {
  const auto src = randomImage<std::uint8_t>((size.width + 7) / 8, size.height, 1);
  const Bytes pixels(size.width, size.height), result(size.width, size.height), between(size.width, size.height);
  const Prepared<Spec> prepared(query, init, size, mask);
  return fills<std::uint8_t>(
      src.width, src.height, src.bytes(),
      [=](const auto& dst) {
        function(src.data(), src.step, 0, dst.data(), dst.step, 0, size, BorderReplicate, 0, prepared.get(),
                 prepared.buffer.data());
      },
      [=](const auto& dst) {
        plain::unpackBits(src, pixels);
        Operation::template run<1>(pixels, result, between, mask);
        plain::packBits(result, dst);
      });
}

template <class Operation, int channels, class T, class Query, class Init>
Work replicated(Status (*function)(const T*, int, T*, int, RoiSize, BorderType, MorphState*), Query query, Init init,
                RoiSize size, const Mask& mask) {
  const RoiSize maskSize{mask.width, mask.height};
  const auto src = randomImage<T>(size.width * channels, size.height, 1);
  int bytes = 0;
  query(size.width, mask.members.data(), maskSize, &bytes);
  const Bytes memory(bytes, 1);
  const auto state = [=] { return reinterpret_cast<MorphState*>(memory.data()); };
  init(size.width, mask.members.data(), maskSize, {mask.width / 2, mask.height / 2}, state());
  return fills<T>(
      src.width, src.height, src.bytes(),
      [=](const auto& dst) { function(src.data(), src.step, dst.data(), dst.step, size, BorderReplicate, state()); },
      [=](const auto& dst) { Operation::template run<channels>(src, dst, src, mask); });
}

// The members come with a query and an initialisation of the same element type and channels.
#define ZVP_MORPH(make, operation, function, preparation, suffix, channels, maskName, mask)                   \
  Case {                                                                                                      \
#function "_" #suffix ", " maskName, [](RoiSize size) {                                                     \
      return make<plain::operation, channels>(function##_##suffix, preparation##GetSize_##suffix,               \
                                              preparation##Init_##suffix, size, mask);                          \
    } \
  }
#define ZVP_BORDER(operation, ...) \
  ZVP_MORPH(filter, operation, zvpi##operation##Border, zvpiMorphologyBorder, __VA_ARGS__)
#define ZVP_BORDER_MASKS(operation, suffix, channels)              \
  ZVP_BORDER(operation, suffix, channels, "3x3", square<3>()),     \
      ZVP_BORDER(operation, suffix, channels, "5x5", square<5>()), \
      ZVP_BORDER(operation, suffix, channels, "5x5 ellipse", ellipse())
#define ZVP_BORDERS(operation)                                                                         \
  ZVP_BORDER_MASKS(operation, 1u_C1R, 1), ZVP_BORDER_MASKS(operation, 8u_C1R, 1),                      \
      ZVP_BORDER(operation, 8u_C1R, 1, "15x15", square<15>()), ZVP_BORDER_MASKS(operation, 8u_C3R, 3), \
      ZVP_BORDER_MASKS(operation, 8u_C4R, 4), ZVP_BORDER_MASKS(operation, 16u_C1R, 1),                 \
      ZVP_BORDER_MASKS(operation, 16s_C1R, 1), ZVP_BORDER_MASKS(operation, 32f_C1R, 1),                \
      ZVP_BORDER_MASKS(operation, 32f_C3R, 3), ZVP_BORDER_MASKS(operation, 32f_C4R, 4)

#define ZVP_REPLICATED(operation, suffix, channels)                                                           \
  ZVP_MORPH(replicated, operation, zvpi##operation##BorderReplicate, zvpiMorphology, suffix, channels, "5x5", \
            square<5>())
#define ZVP_REPLICATES(operation)                                                                                   \
  ZVP_REPLICATED(operation, 8u_C1R, 1), ZVP_REPLICATED(operation, 8u_C3R, 3), ZVP_REPLICATED(operation, 8u_C4R, 4), \
      ZVP_REPLICATED(operation, 32f_C1R, 1), ZVP_REPLICATED(operation, 32f_C3R, 3),                                 \
      ZVP_REPLICATED(operation, 32f_C4R, 4)

#define ZVP_COMPOSITE(operation, suffix, channels) \
  ZVP_MORPH(filter, operation, zvpiMorph##operation##Border, zvpiMorphAdv, suffix, channels, "5x5", square<5>())
#define ZVP_COMPOSITES(operation)                                                                                      \
  ZVP_COMPOSITE(operation, 1u_C1R, 1), ZVP_COMPOSITE(operation, 8u_C1R, 1), ZVP_COMPOSITE(operation, 8u_C3R, 3),       \
      ZVP_COMPOSITE(operation, 8u_C4R, 4), ZVP_COMPOSITE(operation, 16u_C1R, 1), ZVP_COMPOSITE(operation, 16s_C1R, 1), \
      ZVP_COMPOSITE(operation, 32f_C1R, 1), ZVP_COMPOSITE(operation, 32f_C3R, 3), ZVP_COMPOSITE(operation, 32f_C4R, 4)

}  // namespace

std::vector<Case> morphologyCases() {
  return {
      ZVP_BORDERS(Erode),     ZVP_BORDERS(Dilate),      ZVP_REPLICATES(Erode),
      ZVP_REPLICATES(Dilate), ZVP_COMPOSITES(Open),     ZVP_COMPOSITES(Close),
      ZVP_COMPOSITES(Tophat), ZVP_COMPOSITES(Blackhat), ZVP_COMPOSITES(Gradient),
  };
}

}  // namespace bench::ZVP_LOOPS
