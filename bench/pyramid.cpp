#include <zvpcv/pyramid.h>

#include "cases.h"
#include "plain_pyramid.h"

namespace bench::ZVP_LOOPS {
namespace {

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
  const int width = (size.width + 1) / 2 * channels, height = (size.height + 1) / 2;
  const Image<plain::OctaveSum<T>> sums(width, size.height);
  const auto buffer = workBuffer(zvpiPyrDownGetBufSize_Gauss5x5, size.width, kDataType<T>, channels);
  return fills<T>(
      width, height, src.bytes(),
      [=](const auto& dst) { function(src.data(), src.step, dst.data(), dst.step, size, buffer.data()); },
      [=](const auto& dst) { plain::octaveDown<channels>(src, dst, sums); });
}

template <int channels, class T>
Work octaveUp(Octave<T> function, RoiSize size) {
  const RoiSize half{size.width / 2, size.height / 2};
  const auto src = randomImage<T>(half.width * channels, half.height, 1);
  const Image<plain::OctaveSum<T>> sums(2 * src.width, src.height);
  const auto buffer = workBuffer(zvpiPyrUpGetBufSize_Gauss5x5, half.width, kDataType<T>, channels);
  return fills<T>(
      2 * src.width, 2 * src.height, src.bytes(),
      [=](const auto& dst) { function(src.data(), src.step, dst.data(), dst.step, half, buffer.data()); },
      [=](const auto& dst) { plain::octaveUp<channels>(src, dst, sums); });
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

RoiSize sizeBelow(RoiSize size, float rate) {
  RoiSize smaller{};
  zvpiGetPyramidDownROI(size, &smaller, rate);
  return smaller;
}

template <int channels, class T, class Init>
Work layerDown(Init init, Layer<T> function, RoiSize size, float rate) {
  const RoiSize smaller = sizeBelow(size, rate);
  const auto state = layerState<T>(init, size, rate);
  const auto src = randomImage<T>(size.width * channels, size.height, 1);
  const Image<float> rows(src.width, src.height), whole(src.width, src.height);
  const Image<float> narrow(smaller.width * channels, src.height);
  const auto position = [rate](int i) { return rate * float(i); };
  return fills<T>(
      narrow.width, smaller.height, src.bytes(),
      [=](const auto& dst) { function(src.data(), src.step, size, dst.data(), dst.step, smaller, state.get()); },
      [=](const auto& dst) {
        plain::filterRows<channels>(src, rows);
        plain::filterColumns(rows, whole);
        plain::sampleRows<channels>(whole, narrow, position);
        plain::sampleColumns(narrow, dst, position);
      });
}

template <int channels, class T, class Init>
Work layerUp(Init init, Layer<T> function, RoiSize size, float rate) {
  const RoiSize smaller = sizeBelow(size, rate);
  const auto state = layerState<T>(init, size, rate);
  const auto src = randomImage<T>(smaller.width * channels, smaller.height, 1);
  const Image<float> wide(size.width * channels, src.height), rows(wide.width, src.height);
  const Image<float> tall(wide.width, size.height);
  const auto position = [rate](int i) { return float(i) / rate; };
  return fills<T>(
      wide.width, size.height, src.bytes(),
      [=](const auto& dst) { function(src.data(), src.step, smaller, dst.data(), dst.step, size, state.get()); },
      [=](const auto& dst) {
        plain::sampleRows<channels>(src, wide, position);
        plain::filterRows<channels>(wide, rows);
        plain::sampleColumns(rows, tall, position);
        plain::filterColumns(tall, dst);
      });
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
      ZVP_OCTAVES(8u_C1R, 1),  ZVP_OCTAVES(8u_C3R, 3),  ZVP_OCTAVES(8s_C1R, 1), ZVP_OCTAVES(8s_C3R, 3),
      ZVP_OCTAVES(32f_C1R, 1), ZVP_OCTAVES(32f_C3R, 3), ZVP_LAYERS(8u_C1R, 1),  ZVP_LAYERS(8u_C3R, 3),
      ZVP_LAYERS(16u_C1R, 1),  ZVP_LAYERS(16u_C3R, 3),  ZVP_LAYERS(32f_C1R, 1), ZVP_LAYERS(32f_C3R, 3),
  };
}

}  // namespace bench::ZVP_LOOPS
