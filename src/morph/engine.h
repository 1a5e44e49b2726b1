// Erosion and dilation of a region: every output pixel is the extremum of the source pixels under the mask.
//
// The mask is a list of runs. Where there are few distinct ones, every source row is filtered once with each of them
// (a ring of such rows stays in the work buffer) and every output row combines rows of the ring; rows have no borders,
// so that they fit the buffer. Else every output row filters its source rows anew, run by run.
#pragma once

#include "morph/mask_plan.h"
#include "morph/sink.h"
#include "morph/source.h"

namespace zvp::morph {

// Output rows that are computed at once, at most; no more than the mask has rows.
inline constexpr int kMostOutputs = 8;

struct Job {
  const Kernels& kernels;
  Flavour flavour;
  const StructuringElement& element;
  Region region;
  Source source;
  Sink sink;
  uint8_t* work;  // a work buffer

  // What the work buffer has room for.
  int64_t mostColumns() const { return flavour.bits ? std::min(kMostBits, element.maxRoiWidth) : element.maxRoiWidth; }
  Strip stripFrom(int64_t x0, int64_t widest) const { return {x0, std::min<int64_t>(x0 + widest, region.roi.width)}; }
  void begin(Strip strip, uint8_t* sourceWork) {
    source.begin(strip, region, element, sourceWork);
    sink.strip = strip;
  }
};

// In place: the source is the destination; the sink of runDirect must delay its rows then.
void runRings(Job& job, const MaskPlan& plan, bool inPlace);
void runDirect(Job& job);

}  // namespace zvp::morph
