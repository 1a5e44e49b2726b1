// The record that holds the levels of one image.
#include <algorithm>

#include "core/carver.h"
#include "core/memory.h"
#include "pyramid/sizes.h"
#include "zvpcv/pyramid.h"

namespace zvp::pyramid {
namespace {

// The gaps between the arrays are as wide as the block size, stated for 32-bit pointers, leaves them.
constexpr int kGap = 16, kHalfGap = 8;

constexpr int64_t blockBytes(int64_t level) { return level * 44 + 112; }

Pyramid* placeArrays(void* block, int level) {
  const size_t levels = static_cast<size_t>(level) + 1;
  auto* pyramid = static_cast<Pyramid*>(block);
  Carver carver(pyramid + 1);
  pyramid->roiSizes = carver.take<RoiSize>(levels, 8);
  carver.take<uint8_t>(kGap, 1);
  pyramid->images = carver.take<uint8_t*>(levels, sizeof(uint8_t*));
  carver.take<uint8_t>(kHalfGap, 1);
  pyramid->rates = carver.take<double>(levels, 8);
  carver.take<uint8_t>(sizeof(void*) == 4 ? kGap : kHalfGap, 1);
  pyramid->steps = carver.take<int32_t>(levels, 4);
  return pyramid;
}

Status makeRecord(Pyramid** result, int level, RoiSize roi, float rate) {
  if (Status s = firstFailure(nonNull(result), nonEmpty(roi), validRate(rate), check(level >= 1, ErrBadArg))) return s;
  const SizeList sizes(roi, rate);
  if (!sizes.isAllocated()) return ErrNoMemory;
  const int highest = std::min(level, sizes.count() - 1);
  if (blockBytes(highest) > INT32_MAX) return ErrNoMemory;
  void* block = allocBytes(static_cast<int32_t>(blockBytes(highest)));
  if (block == nullptr) return ErrNoMemory;
  Pyramid* pyramid = placeArrays(block, highest);
  pyramid->state = nullptr;
  pyramid->level = highest;
  double scale = 1.0;
  for (int i = 0; i <= highest; ++i, scale *= 1.0 / double{rate}) {
    pyramid->roiSizes[i] = sizes[i];
    pyramid->rates[i] = scale;
    pyramid->images[i] = nullptr;
    pyramid->steps[i] = 0;
  }
  *result = pyramid;
  return StatusOk;
}

}  // namespace
}  // namespace zvp::pyramid

Status zvpiPyramidInitAlloc(Pyramid** ppPyramid, int level, RoiSize roi, float rate) {
  return zvp::pyramid::makeRecord(ppPyramid, level, roi, rate);
}

Status zvpiPyramidFree(Pyramid* pPyramid) { return zvp::release(pPyramid); }
