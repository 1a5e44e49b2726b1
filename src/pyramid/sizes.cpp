#include "pyramid/sizes.h"

#include <algorithm>

#include "core/memory.h"
#include "simd/loose.h"
#include "zvpcv/pyramid.h"

namespace zvp::pyramid {
namespace {

int64_t truncatedProduct(int64_t n, float rate) { return static_cast<int64_t>(static_cast<float>(n) * rate); }

constexpr int32_t saturated(int64_t n) { return static_cast<int32_t>(std::min<int64_t>(n, INT32_MAX)); }

Status expand(RoiSize src, RoiSize* smallest, RoiSize* largest, float rate) {
  if (Status s = firstFailure(nonNull(smallest, largest), nonEmpty(src), validRate(rate))) return s;
  const SizeRange height = expandedRange(src.height, rate), width = expandedRange(src.width, rate);
  simd::store(smallest, RoiSize{saturated(width.smallest), saturated(height.smallest)});
  simd::store(largest, RoiSize{saturated(width.largest), saturated(height.largest)});
  return StatusOk;
}

Status reduce(RoiSize src, RoiSize* dst, float rate) {
  if (Status s = firstFailure(nonNull(dst), nonEmpty(src), validRate(rate))) return s;
  simd::store(dst, reducedSize(src, rate));
  return StatusOk;
}

}  // namespace

SizeRange expandedRange(int64_t n, float rate) {
  const int64_t smallest = n == 1 ? 1 : std::max(truncatedProduct(n - 1, rate) + 1, n + 1);
  return {smallest, std::max(truncatedProduct(n, rate), n + 1)};
}

// The ranges partition the sizes, so that the walk ends at the one that contains n.
int64_t reducedSize(int64_t n, float rate) {
  auto reduced = std::max<int64_t>(static_cast<int64_t>(static_cast<float>(n) / rate + 0.5f), 1);
  while (n < expandedRange(reduced, rate).smallest) --reduced;
  while (n > expandedRange(reduced, rate).largest) ++reduced;
  return reduced;
}

RoiSize reducedSize(RoiSize size, float rate) {
  return {static_cast<int32_t>(reducedSize(int64_t{size.width}, rate)),
          static_cast<int32_t>(reducedSize(int64_t{size.height}, rate))};
}

SizeList::SizeList(RoiSize base, float rate) {
  constexpr int kWordsPerSize = 2;
  const Bytes words = Bytes(std::max(base.width, base.height)) * kWordsPerSize;
  sizes_ = static_cast<RoiSize*>(allocWords(words.value()));
  if (sizes_ == nullptr) return;
  sizes_[count_++] = base;
  for (RoiSize last = base; !sameSize(last, {1, 1}); sizes_[count_++] = last) last = reducedSize(last, rate);
}

SizeList::~SizeList() { releaseMemory(sizes_); }

}  // namespace zvp::pyramid

Status zvpiGetPyramidUpROI(RoiSize srcRoi, RoiSize* pDstRoiMin, RoiSize* pDstRoiMax, float rate) {
  return zvp::pyramid::expand(srcRoi, pDstRoiMin, pDstRoiMax, rate);
}

Status zvpiGetPyramidDownROI(RoiSize srcRoi, RoiSize* pDstRoi, float rate) {
  return zvp::pyramid::reduce(srcRoi, pDstRoi, rate);
}
