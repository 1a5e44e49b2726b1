// Pyramids: octaves, sizes and records, and layers with states made for sizes of their own.
#include <zvpcv/pyramid.h>

#include "families.h"
#include "operands.h"

namespace fuzz {
namespace {

float someRate(Bytes& in) {
  constexpr float kEdges[] = {1.0f, 1.0000001f, 2.0f, 1.99999f, 2.00001f, 10.0f, 10.000001f, -2.0f, NAN, INFINITY};
  return oneIn(4, in) ? in.PickValueInArray(kEdges) : in.ConsumeFloatingPointInRange(1.0f, 10.0f);
}

template <class T>
constexpr DataType kType = std::is_same_v<T, float> ? DataType32f
                           : std::is_signed_v<T>    ? DataType8s
                                                    : DataType8u;

template <class T>
using Octave = Status(const T*, int, T*, int, RoiSize, std::uint8_t*);

template <int channels, class T>
void octave(Bytes& in, Octave<T>* f, Status (*query)(int, DataType, int, int*), auto resultSize) {
  const RoiSize size = someSize(in);
  const auto src = readsImage<T>(in, double(size.width) * channels, size.height);
  const auto dst = writesImage<T>(in, resultSize(size.width) * channels, resultSize(size.height));
  int bytes = 0;
  query(size.width, kType<T>, channels, &bytes);
  const auto buffer = Operand::flat(in, Access::kWrite, bytes);
  checkCall(f(src, src.step, dst, dst.step, size, buffer), src, dst, buffer);
}
template <int channels, class T>
void octaveDown(Bytes& in, Octave<T>* f) {
  octave<channels>(in, f, zvpiPyrDownGetBufSize_Gauss5x5, [](int n) { return std::floor((double(n) + 1) / 2); });
}
template <int channels, class T>
void octaveUp(Bytes& in, Octave<T>* f) {
  octave<channels>(in, f, zvpiPyrUpGetBufSize_Gauss5x5, [](int n) { return 2.0 * n; });
}

void record(Bytes& in, decltype(zvpiPyramidInitAlloc)* init) {
  const RoiSize size = someSize(in);
  const float rate = someRate(in);
  Pyramid* pyramid = nullptr;
  const Status status = init(oneIn(64, in) ? nullptr : &pyramid, number(in, 1, 100), size, rate);
  require((status == StatusOk) == (pyramid != nullptr), "a failing InitAlloc leaves the pointer");
  if (pyramid == nullptr) return;
  for (int i = 0; i < pyramid->level; ++i) {
    RoiSize next, least, most;
    require(zvpiGetPyramidDownROI(pyramid->roiSizes[i], &next, rate) == StatusOk, "every level has a successor");
    require(std::memcmp(&next, pyramid->roiSizes + i + 1, sizeof next) == 0, "the next level is the successor");
    require(zvpiGetPyramidUpROI(next, &least, &most, rate) == StatusOk, "every level can be expanded");
    require(least.width <= pyramid->roiSizes[i].width && pyramid->roiSizes[i].height <= most.height,
            "a level is in the range of its successor");
  }
  zvpiPyramidFree(pyramid);
}

template <class T>
using Layer = Status(const T*, int, RoiSize, T*, int, RoiSize, PyramidLayerState*);
template <class K>
using LayerInit = Status(PyramidLayerState**, RoiSize, float, const K*, int, int);

// The sizes of source and result mostly belong together.
template <int channels, class T, class K>
void layer(Bytes& in, Layer<T>* f, LayerInit<K>* init, bool isDown) {
  const RoiSize base = someSize(in);
  const float rate = someRate(in);
  RoiSize smaller = someSize(in), larger = base;
  if (oneIn(4, in)) larger = someSize(in);
  if (!oneIn(8, in)) zvpiGetPyramidDownROI(larger, &smaller, rate);
  const int taps = oneIn(16, in) ? number(in, -1, 40) : 3 + 2 * in.ConsumeIntegralInRange(0, 4);
  const auto kernel = Operand::flat(in, Access::kRead, double(taps) * sizeof(K), sizeof(K));
  PyramidLayerState* state = nullptr;
  if (taps < 100) init(&state, base, rate, kernel, taps, oneIn(64, in) ? 1 : 2);
  const RoiSize from = isDown ? larger : smaller, to = isDown ? smaller : larger;
  const auto src = readsImage<T>(in, double(from.width) * channels, from.height);
  const auto dst = writesImage<T>(in, double(to.width) * channels, to.height);
  checkCall(f(src, src.step, from, dst, dst.step, to, state), src, dst);
  require((zvpiPyramidLayerDownFree_8u_C1R(state) == StatusOk) == (state != nullptr), "states can be released");
}

#define ZVP_OCTAVES(suffix, channels)                              \
  ZVP_TARGET(octaveDown<channels>, zvpiPyrDown_Gauss5x5_##suffix), \
      ZVP_TARGET(octaveUp<channels>, zvpiPyrUp_Gauss5x5_##suffix)
#define ZVP_LAYER(direction, suffix, channels, isDown)                                                           \
  [](Bytes& in) {                                                                                                \
    layer<channels>(in, zvpiPyramidLayer##direction##_##suffix, zvpiPyramidLayer##direction##InitAlloc_##suffix, \
                    isDown);                                                                                     \
  }
#define ZVP_LAYERS(suffix, channels) ZVP_LAYER(Down, suffix, channels, true), ZVP_LAYER(Up, suffix, channels, false)

constexpr Target kTargets[] = {
    ZVP_OCTAVES(8u_C1R, 1),
    ZVP_OCTAVES(8u_C3R, 3),
    ZVP_OCTAVES(8s_C1R, 1),
    ZVP_OCTAVES(8s_C3R, 3),
    ZVP_OCTAVES(32f_C1R, 1),
    ZVP_OCTAVES(32f_C3R, 3),
    ZVP_LAYERS(8u_C1R, 1),
    ZVP_LAYERS(8u_C3R, 3),
    ZVP_LAYERS(16u_C1R, 1),
    ZVP_LAYERS(16u_C3R, 3),
    ZVP_LAYERS(32f_C1R, 1),
    ZVP_LAYERS(32f_C3R, 3),
    ZVP_TARGET(record, zvpiPyramidInitAlloc),
};

}  // namespace

Targets pyramidTargets() { return kTargets; }

}  // namespace fuzz
