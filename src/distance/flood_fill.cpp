// Flood fill by equality, range and gradient.
#include "core/checks.h"
#include "distance/flood_region.h"

namespace zvp {
namespace {

enum class Rule { kRange, kEqual, kGradient };
enum class Connectivity { k4, k8 };

template <int channels, class T>
bool equalPixels(const T* a, const T* b) {
  bool equal = true;
  for (int c = 0; c < channels; ++c) equal = equal && simd::load<T>(a + c) == simd::load<T>(b + c);
  return equal;
}

// What a fill needs beside its rule.
template <class T>
struct Fill {
  Rows<T> image;
  RoiSize roi;
  Point seed;
  const T* newVal;
  uint8_t* buffer;
  bool diagonal;
};

// Marks and stack share the buffer.
//
// Grad's has (w + 2)(h + 2) bytes before the stack's 6 w h. Range's has 6 w h + 32 bytes in all, which leaves the stack
// 5 w h + 32. There it suffices because the runs of a row are apart: with w >= 3 those of a row take at most
// 4 (w + 1) bytes (two pixels and the gap behind them take twelve), or 12 with w = 3, which is at most 5 w. With w < 3
// a row has one run, and two runs wait at most, the next one above and the next one below.
template <int channels, class T, class Rule>
Extent fillMarked(const Fill<T>& fill, const Rule& rule) {
  const MarkedRegion<T, channels, Rule> region(fill.image, fill.roi, rule, Marks(fill.buffer, fill.roi));
  RunStack stack(fill.buffer + Marks::bytes(fill.roi), fill.roi.width);
  const Extent extent = growMarked(region, stack, fill.seed, fill.diagonal);
  region.paint(extent, fill.newVal);
  return extent;
}

// Painted pixels leave the bounds, so that no run is found twice: a new value within the bounds needs marks.
template <int channels, class T>
Extent fillWithin(const Fill<T>& fill, const Bounds<T, channels>& bounds, bool complete) {
  if (!complete && bounds.contain(fill.newVal)) return fillMarked<channels>(fill, bounds);
  const PaintedRegion<T, channels> region(fill.image, fill.roi, bounds, fill.newVal);
  if (complete) {
    RunStack stack(fill.buffer, fill.roi.width);
    return growPainted(region, stack, fill.roi, fill.seed, fill.diagonal);
  }
  ForgetfulStack stack(fill.buffer, fill.roi.width, fill.roi.height);
  return growPainted(region, stack, fill.roi, fill.seed, fill.diagonal);
}

template <int channels, class T>
void report(const Extent& extent, const T* newVal, ConnectedComponent* component) {
  component->area = static_cast<double>(extent.area);
  for (int c = 0; c < 3; ++c) component->value[c] = c < channels ? static_cast<double>(simd::load<T>(newVal + c)) : 0;
  component->rect = {extent.left, extent.top, extent.right - extent.left + 1, extent.bottom - extent.top + 1};
}

template <int channels, Rule rule, Connectivity connectivity, class T>
Status floodFill(Rows<T> image, RoiSize roi, Point seed, const T* newVal, const T* minDelta, const T* maxDelta,
                 ConnectedComponent* component, uint8_t* buffer) {
  const bool seedInside = seed.x >= 0 && seed.x < roi.width && seed.y >= 0 && seed.y < roi.height;
  if (Status s = firstFailure(nonNull(image), nonNull(newVal, minDelta, maxDelta), nonNull(component), nonNull(buffer),
                              nonEmpty(roi), rowsFit(int64_t{roi.width} * channels, image), wholeElements(image),
                              check(seedInside, ErrOutOfRange)))
    return s;
  const T* first = image.row(seed.y) + int64_t{seed.x} * channels;
  if (equalPixels<channels>(first, newVal)) return StatusOk;
  const Fill<T> fill{image, roi, seed, newVal, buffer, connectivity == Connectivity::k8};
  Extent extent;
  if constexpr (rule == Rule::kGradient) {
    extent = fillMarked<channels>(fill, Gradient<T, channels>(minDelta, maxDelta));
  } else {
    extent = fillWithin<channels>(fill, Bounds<T, channels>(first, minDelta, maxDelta), rule == Rule::kEqual);
  }
  report<channels>(extent, newVal, component);
  return StatusOk;
}

template <int channels, Connectivity connectivity, class T>
Status fillEqual(Rows<T> image, RoiSize roi, Point seed, const T* newVal, ConnectedComponent* component,
                 uint8_t* buffer) {
  constexpr T kNone[channels] = {};
  return floodFill<channels, Rule::kEqual, connectivity>(image, roi, seed, newVal, kNone, kNone, component, buffer);
}

// The stack's size in bytes for each pixel, and what it takes to align it.
constexpr int kStackBytes = 6, kSlack = 32;

Status reportSize(RoiSize roi, int64_t markBytes, int* size) {
  const int64_t pixels = int64_t{roi.width} * roi.height;
  if (pixels > INT32_MAX || kStackBytes * pixels + kSlack + markBytes > INT32_MAX) return ErrSize;
  *size = static_cast<int>(kStackBytes * pixels + kSlack + markBytes);
  return StatusOk;
}

}  // namespace
}  // namespace zvp

using namespace zvp;

// The members of a rule for one element type: 4- and 8-connected, one and three channels.
#define ZVP_FILL_EQUAL(connectivity, suffix, T)                                                                       \
  Status zvpiFloodFill_##connectivity##Con_##suffix##_C1IR(T* pImage, int imageStep, RoiSize roiSize, Point seed,     \
                                                           T newVal, ConnectedComponent* pRegion, uint8_t* pBuffer) { \
    return fillEqual<1, Connectivity::k##connectivity>(Rows{pImage, imageStep}, roiSize, seed, &newVal, pRegion,      \
                                                       pBuffer);                                                      \
  }                                                                                                                   \
  Status zvpiFloodFill_##connectivity##Con_##suffix##_C3IR(T* pImage, int imageStep, RoiSize roiSize, Point seed,     \
                                                           const T* pNewVal, ConnectedComponent* pRegion,             \
                                                           uint8_t* pBuffer) {                                        \
    return fillEqual<3, Connectivity::k##connectivity>(Rows{pImage, imageStep}, roiSize, seed, pNewVal, pRegion,      \
                                                       pBuffer);                                                      \
  }

#define ZVP_FILL_NEAR(name, rule, connectivity, suffix, T)                                                             \
  Status zvpiFloodFill_##name##connectivity##Con_##suffix##_C1IR(T* pImage, int imageStep, RoiSize roiSize,            \
                                                                 Point seed, T newVal, T minDelta, T maxDelta,         \
                                                                 ConnectedComponent* pRegion, uint8_t* pBuffer) {      \
    return floodFill<1, rule, Connectivity::k##connectivity>(Rows{pImage, imageStep}, roiSize, seed, &newVal,          \
                                                             &minDelta, &maxDelta, pRegion, pBuffer);                  \
  }                                                                                                                    \
  Status zvpiFloodFill_##name##connectivity##Con_##suffix##_C3IR(                                                      \
      T* pImage, int imageStep, RoiSize roiSize, Point seed, const T* pNewVal, const T* pMinDelta, const T* pMaxDelta, \
      ConnectedComponent* pRegion, uint8_t* pBuffer) {                                                                 \
    return floodFill<3, rule, Connectivity::k##connectivity>(Rows{pImage, imageStep}, roiSize, seed, pNewVal,          \
                                                             pMinDelta, pMaxDelta, pRegion, pBuffer);                  \
  }

#define ZVP_FILLS(suffix, T)                         \
  ZVP_FILL_EQUAL(4, suffix, T)                       \
  ZVP_FILL_EQUAL(8, suffix, T)                       \
  ZVP_FILL_NEAR(Range, Rule::kRange, 4, suffix, T)   \
  ZVP_FILL_NEAR(Range, Rule::kRange, 8, suffix, T)   \
  ZVP_FILL_NEAR(Grad, Rule::kGradient, 4, suffix, T) \
  ZVP_FILL_NEAR(Grad, Rule::kGradient, 8, suffix, T)

ZVP_FILLS(8u, uint8_t)
ZVP_FILLS(16u, uint16_t)
ZVP_FILLS(32f, float)

Status zvpiFloodFillGetSize(RoiSize roiSize, int* pBufferSize) {
  if (Status s = firstFailure(nonNull(pBufferSize), nonEmpty(roiSize))) return s;
  return reportSize(roiSize, 0, pBufferSize);
}

Status zvpiFloodFillGetSize_Grad(RoiSize roiSize, int* pBufferSize) {
  if (Status s = firstFailure(nonNull(pBufferSize), nonEmpty(roiSize))) return s;
  return reportSize(roiSize, (int64_t{roiSize.width} + 2) * (int64_t{roiSize.height} + 2), pBufferSize);
}
