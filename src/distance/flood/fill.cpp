// Flood fill by equality, range and gradient.
#include "core/query.h"
#include "distance/flood/marked.h"
#include "distance/flood/painted.h"
#include "zvpcv/distance.h"

namespace zvp::flood {
namespace {

enum Rule { kEqual, kRange, kGradient };
enum Connectivity { k4, k8 };

// The arguments of a fill.
template <class T>
struct Fill {
  Rows<T> image;
  RoiSize roi;
  Point seed;
  const T *newVal, *minDelta, *maxDelta;
  uint8_t* buffer;
  bool diagonal;
};

template <int channels, class T>
bool equalPixels(const T* a, const T* b) {
  bool equal = true;
  for (int c = 0; c < channels; ++c) equal = equal && simd::load<T>(a + c) == simd::load<T>(b + c);
  return equal;
}

// Marks and stack share the buffer.
//
// Grad's has (w + 2)(h + 2) bytes before the stack's 6 w h. Range's has 6 w h + 32 bytes in all, which leaves the stack
// 5 w h + 32. There it suffices because the runs of a row are apart: with w >= 3 those of a row take at most
// 4 (w + 1) bytes (two pixels and the gap behind them take twelve), or 12 with w = 3, which is at most 5 w. With w < 3
// a row has one run, and two runs wait at most, the next one above and the next one below.
template <int channels, class T>
Extent fillMarked(const Fill<T>& fill, const Near<T, channels>& rule) {
  const MarkedRegion<T, channels> region(fill.image, fill.roi, rule, Marks(fill.buffer, fill.roi));
  RunStack stack(fill.buffer + Marks::bytes(fill.roi), fill.roi.width);
  const Extent extent = growMarked(region, stack, fill.seed, fill.diagonal);
  region.paint(extent, fill.newVal);
  return extent;
}

template <int channels, class T>
Extent fillPainted(const Fill<T>& fill, const Bounds<T, channels>& bounds, bool complete) {
  const PaintedRegion<T, channels> region(fill.image, fill.roi, bounds, fill.newVal);
  if (complete) {
    RunStack stack(fill.buffer, fill.roi.width);
    return growPainted(region, stack, fill.roi, fill.seed, fill.diagonal);
  }
  ForgetfulStack stack(fill.buffer, fill.roi.width, fill.roi.height);
  return growPainted(region, stack, fill.roi, fill.seed, fill.diagonal);
}

// Painted pixels leave the bounds, so that no run is found twice: a new value within the bounds needs marks.
template <int channels, class T>
Extent fillByRule(Rule rule, const Fill<T>& fill, const T* seed) {
  if (rule == kGradient) return fillMarked(fill, Near<T, channels>(fill.minDelta, fill.maxDelta));
  const Bounds<T, channels> bounds(seed, fill.minDelta, fill.maxDelta);
  if (rule == kRange && bounds.contain(fill.newVal))
    return fillMarked(fill, Near<T, channels>(fill.minDelta, fill.maxDelta, seed));
  return fillPainted(fill, bounds, rule == kEqual);
}

template <int channels, class T>
ConnectedComponent componentOf(const Extent& extent, const T* newVal) {
  ConnectedComponent component = {};
  component.area = static_cast<double>(extent.area);
  for (int c = 0; c < channels; ++c) component.value[c] = static_cast<double>(simd::load<T>(newVal + c));
  component.rect = {extent.left, extent.top, extent.right - extent.left + 1, extent.bottom - extent.top + 1};
  return component;
}

template <int channels, class T>
[[gnu::noinline]] Status floodFill(Rule rule, const Fill<T>& fill, ConnectedComponent* component) {
  const auto& [image, roi, seed, newVal, minDelta, maxDelta, buffer, diagonal] = fill;
  const bool seedInside = seed.x >= 0 && seed.x < roi.width && seed.y >= 0 && seed.y < roi.height;
  if (Status s = firstFailure(nonNull(image, newVal, minDelta, maxDelta, component, buffer), nonEmpty(roi),
                              rowsFit(int64_t{roi.width} * channels, image), wholeElements(image),
                              check(seedInside, ErrOutOfRange)))
    return s;
  const T* first = image.row(seed.y) + int64_t{seed.x} * channels;
  if (equalPixels<channels>(first, newVal)) return StatusOk;
  simd::store(component, componentOf<channels>(fillByRule<channels>(rule, fill, first), newVal));
  return StatusOk;
}

template <int channels, class T>
Status fillEqual(Rows<T> image, RoiSize roi, Point seed, const T* newVal, ConnectedComponent* component,
                 uint8_t* buffer, Connectivity connectivity) {
  constexpr T kNone[channels] = {};
  return floodFill<channels, T>(kEqual, {image, roi, seed, newVal, kNone, kNone, buffer, connectivity == k8},
                                component);
}

template <int channels, class T>
Status fillNear(Rows<T> image, RoiSize roi, Point seed, const T* newVal, const T* minDelta, const T* maxDelta,
                ConnectedComponent* component, uint8_t* buffer, Rule rule, Connectivity connectivity) {
  return floodFill<channels, T>(rule, {image, roi, seed, newVal, minDelta, maxDelta, buffer, connectivity == k8},
                                component);
}

// As documented: what the stack takes for each pixel, some to align it, and marks with a frame.
Status reportBytes(RoiSize roi, bool marks, int* size) {
  constexpr int kStackBytes = 6, kSlack = 32;
  const Bytes w = roi.width, h = roi.height, stack = w * h * kStackBytes + kSlack;
  return reportSize(firstFailure(nonNull(size), nonEmpty(roi)), marks ? (w + 2) * (h + 2) + stack : stack, size);
}

}  // namespace
}  // namespace zvp::flood

using namespace zvp::flood;
using zvp::Rows;

#define ZVP_FILL_EQUAL_C1(name, T, connectivity)                                                            \
  Status name(T* pImage, int imageStep, RoiSize roiSize, Point seed, T newVal, ConnectedComponent* pRegion, \
              uint8_t* pBuffer) {                                                                           \
    return fillEqual<1>(Rows{pImage, imageStep}, roiSize, seed, &newVal, pRegion, pBuffer, connectivity);   \
  }
#define ZVP_FILL_EQUAL_C3(name, T, connectivity)                                                                    \
  Status name(T* pImage, int imageStep, RoiSize roiSize, Point seed, const T* pNewVal, ConnectedComponent* pRegion, \
              uint8_t* pBuffer) {                                                                                   \
    return fillEqual<3>(Rows{pImage, imageStep}, roiSize, seed, pNewVal, pRegion, pBuffer, connectivity);           \
  }
#define ZVP_FILL_NEAR_C1(name, T, rule, connectivity)                                                                 \
  Status name(T* pImage, int imageStep, RoiSize roiSize, Point seed, T newVal, T minDelta, T maxDelta,                \
              ConnectedComponent* pRegion, uint8_t* pBuffer) {                                                        \
    return fillNear<1>(Rows{pImage, imageStep}, roiSize, seed, &newVal, &minDelta, &maxDelta, pRegion, pBuffer, rule, \
                       connectivity);                                                                                 \
  }
#define ZVP_FILL_NEAR_C3(name, T, rule, connectivity)                                                                 \
  Status name(T* pImage, int imageStep, RoiSize roiSize, Point seed, const T* pNewVal, const T* pMinDelta,            \
              const T* pMaxDelta, ConnectedComponent* pRegion, uint8_t* pBuffer) {                                    \
    return fillNear<3>(Rows{pImage, imageStep}, roiSize, seed, pNewVal, pMinDelta, pMaxDelta, pRegion, pBuffer, rule, \
                       connectivity);                                                                                 \
  }

ZVP_FILL_EQUAL_C1(zvpiFloodFill_4Con_8u_C1IR, uint8_t, k4)
ZVP_FILL_EQUAL_C3(zvpiFloodFill_4Con_8u_C3IR, uint8_t, k4)
ZVP_FILL_EQUAL_C1(zvpiFloodFill_8Con_8u_C1IR, uint8_t, k8)
ZVP_FILL_EQUAL_C3(zvpiFloodFill_8Con_8u_C3IR, uint8_t, k8)
ZVP_FILL_NEAR_C1(zvpiFloodFill_Range4Con_8u_C1IR, uint8_t, kRange, k4)
ZVP_FILL_NEAR_C3(zvpiFloodFill_Range4Con_8u_C3IR, uint8_t, kRange, k4)
ZVP_FILL_NEAR_C1(zvpiFloodFill_Range8Con_8u_C1IR, uint8_t, kRange, k8)
ZVP_FILL_NEAR_C3(zvpiFloodFill_Range8Con_8u_C3IR, uint8_t, kRange, k8)
ZVP_FILL_NEAR_C1(zvpiFloodFill_Grad4Con_8u_C1IR, uint8_t, kGradient, k4)
ZVP_FILL_NEAR_C3(zvpiFloodFill_Grad4Con_8u_C3IR, uint8_t, kGradient, k4)
ZVP_FILL_NEAR_C1(zvpiFloodFill_Grad8Con_8u_C1IR, uint8_t, kGradient, k8)
ZVP_FILL_NEAR_C3(zvpiFloodFill_Grad8Con_8u_C3IR, uint8_t, kGradient, k8)

ZVP_FILL_EQUAL_C1(zvpiFloodFill_4Con_16u_C1IR, uint16_t, k4)
ZVP_FILL_EQUAL_C3(zvpiFloodFill_4Con_16u_C3IR, uint16_t, k4)
ZVP_FILL_EQUAL_C1(zvpiFloodFill_8Con_16u_C1IR, uint16_t, k8)
ZVP_FILL_EQUAL_C3(zvpiFloodFill_8Con_16u_C3IR, uint16_t, k8)
ZVP_FILL_NEAR_C1(zvpiFloodFill_Range4Con_16u_C1IR, uint16_t, kRange, k4)
ZVP_FILL_NEAR_C3(zvpiFloodFill_Range4Con_16u_C3IR, uint16_t, kRange, k4)
ZVP_FILL_NEAR_C1(zvpiFloodFill_Range8Con_16u_C1IR, uint16_t, kRange, k8)
ZVP_FILL_NEAR_C3(zvpiFloodFill_Range8Con_16u_C3IR, uint16_t, kRange, k8)
ZVP_FILL_NEAR_C1(zvpiFloodFill_Grad4Con_16u_C1IR, uint16_t, kGradient, k4)
ZVP_FILL_NEAR_C3(zvpiFloodFill_Grad4Con_16u_C3IR, uint16_t, kGradient, k4)
ZVP_FILL_NEAR_C1(zvpiFloodFill_Grad8Con_16u_C1IR, uint16_t, kGradient, k8)
ZVP_FILL_NEAR_C3(zvpiFloodFill_Grad8Con_16u_C3IR, uint16_t, kGradient, k8)

ZVP_FILL_EQUAL_C1(zvpiFloodFill_4Con_32f_C1IR, float, k4)
ZVP_FILL_EQUAL_C3(zvpiFloodFill_4Con_32f_C3IR, float, k4)
ZVP_FILL_EQUAL_C1(zvpiFloodFill_8Con_32f_C1IR, float, k8)
ZVP_FILL_EQUAL_C3(zvpiFloodFill_8Con_32f_C3IR, float, k8)
ZVP_FILL_NEAR_C1(zvpiFloodFill_Range4Con_32f_C1IR, float, kRange, k4)
ZVP_FILL_NEAR_C3(zvpiFloodFill_Range4Con_32f_C3IR, float, kRange, k4)
ZVP_FILL_NEAR_C1(zvpiFloodFill_Range8Con_32f_C1IR, float, kRange, k8)
ZVP_FILL_NEAR_C3(zvpiFloodFill_Range8Con_32f_C3IR, float, kRange, k8)
ZVP_FILL_NEAR_C1(zvpiFloodFill_Grad4Con_32f_C1IR, float, kGradient, k4)
ZVP_FILL_NEAR_C3(zvpiFloodFill_Grad4Con_32f_C3IR, float, kGradient, k4)
ZVP_FILL_NEAR_C1(zvpiFloodFill_Grad8Con_32f_C1IR, float, kGradient, k8)
ZVP_FILL_NEAR_C3(zvpiFloodFill_Grad8Con_32f_C3IR, float, kGradient, k8)

Status zvpiFloodFillGetSize(RoiSize roiSize, int* pBufferSize) { return reportBytes(roiSize, false, pBufferSize); }

Status zvpiFloodFillGetSize_Grad(RoiSize roiSize, int* pBufferSize) { return reportBytes(roiSize, true, pBufferSize); }
