// The record that holds the levels of one image.
#include <algorithm>

#include "core/carver.h"
#include "core/memory.h"
#include "pyramid/sizes.h"
#include "simd/loose.h"
#include "zvpcv/pyramid.h"

namespace zvp::pyramid {
namespace {

// The block size, stated for 32-bit pointers: the arrays of a level, and those of level 0 with the record and the gaps.
Bytes blockBytes(int level) { return Bytes(level) * 44 + 112; }

// The gaps between the arrays are as wide as the block size leaves them.
Pyramid* placeArrays(Carver memory, int level) {
  constexpr int kGap = 16, kHalfGap = 8, kBeforeSteps = sizeof(void*) == 4 ? kGap : kHalfGap;
  const int levels = level + 1;
  auto* pyramid = memory.take<Pyramid>(1, alignof(Pyramid));
  pyramid->roiSizes = memory.take<RoiSize>(levels, sizeof(RoiSize));
  memory.take<uint8_t>(kGap, 1);
  pyramid->images = memory.take<uint8_t*>(levels, alignof(uint8_t*));
  memory.take<uint8_t>(kHalfGap, 1);
  pyramid->rates = memory.take<double>(levels, sizeof(double));
  memory.take<uint8_t>(kBeforeSteps, 1);
  pyramid->steps = memory.take<int32_t>(levels, alignof(int32_t));
  return pyramid;
}

Status makeRecord(Pyramid** result, int level, RoiSize roi, float rate) {
  if (Status s = firstFailure(nonNull(result), nonEmpty(roi), validRate(rate), check(level >= 1, ErrBadArg))) return s;
  const SizeList sizes(roi, rate);
  if (!sizes.isAllocated()) return ErrNoMemory;
  const int highest = std::min(level, sizes.count() - 1);
  void* block = allocate(blockBytes(highest));
  if (block == nullptr) return ErrNoMemory;
  Pyramid* pyramid = placeArrays(Carver(block, blockBytes(highest)), highest);
  pyramid->state = nullptr;
  pyramid->level = highest;
  double scale = 1.0;
  for (int i = 0; i <= highest; ++i, scale *= 1.0 / double{rate}) {
    pyramid->roiSizes[i] = sizes[i];
    pyramid->rates[i] = scale;
    pyramid->images[i] = nullptr;
    pyramid->steps[i] = 0;
  }
  simd::store(result, pyramid);
  return StatusOk;
}

}  // namespace
}  // namespace zvp::pyramid

Status zvpiPyramidInitAlloc(Pyramid** ppPyramid, int level, RoiSize roi, float rate) {
  return zvp::pyramid::makeRecord(ppPyramid, level, roi, rate);
}

Status zvpiPyramidFree(Pyramid* pPyramid) { return zvp::release(pPyramid); }
