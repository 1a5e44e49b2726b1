#include <zvpcv/pyramid.h>

#include "cases.h"
#include "plain_pyramid.h"

namespace bench {
namespace {

template <class T>
constexpr DataType kType = std::is_same_v<T, float> ? DataType32f
                           : std::is_signed_v<T>    ? DataType8s
                                                    : DataType8u;

template <class T>
using Octave = Status (*)(const T*, int, T*, int, RoiSize, std::uint8_t*);

Image<std::uint8_t> workBuffer(Status (*query)(int, DataType, int, int*), int width, DataType type, int channels) {
  int bytes = 0;
  query(width, type, channels, &bytes);
  return {bytes, 1};
}

// `size` is that of the larger image.
template <int channels, class T>
Work octaveDown(Octave<T> function, RoiSize size) {
  const auto src = randomImage<T>(size.width * channels, size.height, 1);
  const Image<T> dst((size.width + 1) / 2 * channels, (size.height + 1) / 2), expected(dst.width, dst.height);
  const Image<plain::OctaveSum<T>> sums(dst.width, size.height);
  const auto buffer = workBuffer(zvpiPyrDownGetBufSize_Gauss5x5, size.width, kType<T>, channels);
  return {.library = [=] { function(src.data(), src.step, dst.data(), dst.step, size, buffer.data()); },
          .plain = [=] { plain::octaveDown<channels>(src, expected, sums); },
          .bytes = src.bytes() + dst.bytes(),
          .agree = [=] { return same(dst, expected); }};
}

template <int channels, class T>
Work octaveUp(Octave<T> function, RoiSize size) {
  const RoiSize half{size.width / 2, size.height / 2};
  const auto src = randomImage<T>(half.width * channels, half.height, 1);
  const Image<T> dst(2 * src.width, 2 * src.height), expected(dst.width, dst.height);
  const Image<plain::OctaveSum<T>> sums(dst.width, src.height);
  const auto buffer = workBuffer(zvpiPyrUpGetBufSize_Gauss5x5, half.width, kType<T>, channels);
  return {.library = [=] { function(src.data(), src.step, dst.data(), dst.step, half, buffer.data()); },
          .plain = [=] { plain::octaveUp<channels>(src, expected, sums); },
          .bytes = src.bytes() + dst.bytes(),
          .agree = [=] { return same(dst, expected); }};
}

template <class T>
using Tap = std::conditional_t<std::is_same_v<T, float>, float, std::int16_t>;

template <class T>
std::shared_ptr<PyramidLayerState> layerState(Status (*init)(PyramidLayerState**, RoiSize, float, const Tap<T>*, int,
                                                             int),
                                              RoiSize size, float rate) {
  constexpr int kLinear = 2;
  const Tap<T> taps[] = {1, 4, 6, 4, 1};
  PyramidLayerState* state = nullptr;
  init(&state, size, rate, taps, 5, kLinear);
  return {state, zvpiPyramidLayerDownFree_8u_C1R};
}

template <class T>
using Layer = Status (*)(const T*, int, RoiSize, T*, int, RoiSize, PyramidLayerState*);

template <int channels, class T, class Init>
Work layerDown(Init init, Layer<T> function, RoiSize size, float rate) {
  RoiSize result{};
  zvpiGetPyramidDownROI(size, &result, rate);
  const auto state = layerState<T>(init, size, rate);
  const auto src = randomImage<T>(size.width * channels, size.height, 1);
  const Image<T> dst(result.width * channels, result.height), expected(dst.width, dst.height);
  const Image<float> rows(src.width, src.height), whole(src.width, src.height), sampled(dst.width, src.height);
  const auto position = [rate](int i) { return rate * float(i); };
  return {.library = [=] { function(src.data(), src.step, size, dst.data(), dst.step, result, state.get()); },
          .plain =
              [=] {
                plain::filterRows<channels>(src, rows);
                plain::filterColumns(rows, whole);
                plain::sampleRows<channels>(whole, sampled, position);
                plain::sampleColumns(sampled, expected, position);
              },
          .bytes = src.bytes() + dst.bytes(),
          .agree = [=] { return same(dst, expected); }};
}

template <int channels, class T, class Init>
Work layerUp(Init init, Layer<T> function, RoiSize size, float rate) {
  RoiSize smaller{};
  zvpiGetPyramidDownROI(size, &smaller, rate);
  const auto state = layerState<T>(init, size, rate);
  const auto src = randomImage<T>(smaller.width * channels, smaller.height, 1);
  const Image<T> dst(size.width * channels, size.height), expected(dst.width, dst.height);
  const Image<float> wide(dst.width, src.height), rows(dst.width, src.height), tall(dst.width, dst.height);
  const auto position = [rate](int i) { return float(i) / rate; };
  return {.library = [=] { function(src.data(), src.step, smaller, dst.data(), dst.step, size, state.get()); },
          .plain =
              [=] {
                plain::sampleRows<channels>(src, wide, position);
                plain::filterRows<channels>(wide, rows);
                plain::sampleColumns(rows, tall, position);
                plain::filterColumns(tall, expected);
              },
          .bytes = src.bytes() + dst.bytes(),
          .agree = [=] { return same(dst, expected); }};
}

#define ZVP_OCTAVES(suffix, channels)                            \
  ZVP_CASE(octaveDown<channels>, zvpiPyrDown_Gauss5x5_##suffix), \
      ZVP_CASE(octaveUp<channels>, zvpiPyrUp_Gauss5x5_##suffix)
#define ZVP_LAYER(make, direction, suffix, channels, rate)                                                           \
  Case {                                                                                                             \
    "zvpiPyramidLayer" #direction "_" #suffix ", rate " #rate, [](RoiSize size) {                                    \
      return make<channels>(zvpiPyramidLayer##direction##InitAlloc_##suffix, zvpiPyramidLayer##direction##_##suffix, \
                            size, rate##f);                                                                          \
    }                                                                                                                \
  }
#define ZVP_LAYERS(suffix, channels)                                                                    \
  ZVP_LAYER(layerDown, Down, suffix, channels, 1.2), ZVP_LAYER(layerDown, Down, suffix, channels, 2.0), \
      ZVP_LAYER(layerUp, Up, suffix, channels, 1.2)

}  // namespace

std::vector<Case> pyramidCases() {
  return {
      ZVP_OCTAVES(8u_C1R, 1), ZVP_OCTAVES(8u_C3R, 3), ZVP_OCTAVES(32f_C1R, 1), ZVP_OCTAVES(32f_C3R, 3),
      ZVP_LAYERS(8u_C1R, 1),  ZVP_LAYERS(8u_C3R, 3),  ZVP_LAYERS(16u_C1R, 1),  ZVP_LAYERS(16u_C3R, 3),
      ZVP_LAYERS(32f_C1R, 1), ZVP_LAYERS(32f_C3R, 3),
  };
}

}  // namespace bench
