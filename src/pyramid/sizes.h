// The sizes of a pyramid's levels.
#pragma once

#include <stdint.h>

#include "core/checks.h"

namespace zvp::pyramid {

constexpr Status validRate(float rate) { return check(rate > 1.0f && rate <= 10.0f, ErrBadArg); }

struct SizeRange {
  int64_t smallest, largest;

  constexpr bool contains(int64_t n) const { return n >= smallest && n <= largest; }
};

// What n pixels along one axis may be expanded to.
SizeRange expandedRange(int64_t n, float rate);

// What n pixels along one axis are reduced to.
int64_t reducedSize(int64_t n, float rate);
RoiSize reducedSize(RoiSize size, float rate);

constexpr bool sameSize(RoiSize a, RoiSize b) { return a.width == b.width && a.height == b.height; }
constexpr bool fitsInto(RoiSize size, RoiSize largest) {
  return size.width <= largest.width && size.height <= largest.height;
}

// All sizes of a pyramid from a base size down to 1x1, in memory of their own.
class SizeList {
 public:
  SizeList(RoiSize base, float rate);
  SizeList(const SizeList&) = delete;
  SizeList& operator=(const SizeList&) = delete;
  ~SizeList();

  bool isAllocated() const { return sizes_ != nullptr; }
  int count() const { return count_; }
  const RoiSize& operator[](int i) const { return sizes_[i]; }
  const RoiSize* begin() const { return sizes_; }

 private:
  RoiSize* sizes_;
  int count_ = 0;
};

}  // namespace zvp::pyramid
