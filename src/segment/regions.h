// Regions of runs of pixels: union-find (B. Galler, M. Fischer, 1964) on the runs' indices, in scan order.
#pragma once

#include "simd/simd.h"

namespace zvp::segment {

// Four bytes a run, in a block of any alignment: the index of an earlier run of the same region; or, of a region's first
// run, -size.
class Regions {
 public:
  static constexpr int kBytesPerRun = 4;

  explicit Regions(uint8_t* block) : block_(block) {}

  // A run that is a region of its own, so far.
  void open(int i, int size) const { setLink(i, -size); }
  int64_t size(int first) const { return -int64_t{link(first)}; }

  // Puts two runs and all that are united with them into one region.
  void unite(int a, int b) const {
    a = firstOf(a);
    b = firstOf(b);
    if (a == b) return;
    const int first = a < b ? a : b, other = a < b ? b : a;
    setLink(first, link(first) + link(other));
    setLink(other, first);
  }

  // The first run of a region, where this was asked for all runs before i.
  int flatten(int i) const {
    const int32_t to = link(i);
    if (to < 0) return i;
    const int32_t further = link(to);
    if (further < 0) return to;
    setLink(i, further);
    return further;
  }

 private:
  uint8_t* at(int i) const { return block_ + kBytesPerRun * static_cast<size_t>(i); }
  int32_t link(int i) const { return simd::load<int32_t>(at(i)); }
  void setLink(int i, int32_t value) const { simd::store(at(i), value); }

  // Halves the path on the way.
  int firstOf(int i) const {
    for (int32_t to = link(i); to >= 0; to = link(i)) {
      const int32_t further = link(to);
      if (further < 0) return to;
      setLink(i, further);
      i = further;
    }
    return i;
  }

  uint8_t* block_;
};

}  // namespace zvp::segment
