// How a row of the ring of a run is made.
#pragma once

#include "morph/kernels.h"
#include "morph/mask_plan.h"
#include "morph/ring.h"

namespace zvp::morph {

// Extrema over one run for the columns of a strip: from the rows that a shorter run of at least half the length gave,
// where there is one and its results reach, else from the source.
class RunStep {
 public:
  RunStep() = default;
  RunStep(const Kernels& kernels, Span columns, Flavour flavour, const MaskPlan& plan, int run, Strip strip,
          const Ring& ring)
      : kernels_(&kernels), ring_(ring.row(run, 0)), elements_(0) {
    const Run r = plan.run(run);
    const int base = plan.baseOf(run), pixelBytes = flavour.pixelBytes();
    Strip reached = {strip.x1, strip.x1};
    if (base != MaskPlan::kNone) {
      const Run b = plan.run(base);
      const int first = r.start - b.start, last = first + r.length - b.length;
      reached.x0 = std::clamp(strip.x0 - first, strip.x0, strip.x1);
      reached.x1 = std::clamp(strip.x1 - last, reached.x0, strip.x1);
      elements_ = static_cast<int>(reached.width() * flavour.channels);
      if (elements_ > 0) {  // then both are within the strip
        distance_ = (last - first) * flavour.channels;
        base_ = ring.row(base, 0) + (reached.x0 - strip.x0 + first) * pixelBytes;
      }
    }
    begin_ = static_cast<ptrdiff_t>((reached.x0 - strip.x0) * pixelBytes);
    end_ = static_cast<ptrdiff_t>((reached.x1 - strip.x0) * pixelBytes);
    const Strip before = {strip.x0, reached.x0}, after = {reached.x1, strip.x1};
    before_ = RunColumns::of(columns, flavour.channels, r, before);
    after_ = RunColumns::of(columns, flavour.channels, r, after);
    hasBefore_ = before.width() > 0;
    hasAfter_ = after.width() > 0;
  }

  // row points to column 0; the result stands `offset` bytes behind the first row of the ring.
  void operator()(const uint8_t* row, ptrdiff_t offset) const {
    uint8_t* out = ring_ + offset;
    if (hasBefore_) kernels_->run(before_, row, false, out);
    if (elements_ > 0) kernels_->pair(base_ + offset, distance_, out + begin_, elements_);
    if (hasAfter_) kernels_->run(after_, row, false, out + end_);
  }

 private:
  const Kernels* kernels_;
  RunColumns before_, after_;  // the outputs that the base's results do not reach
  uint8_t* ring_;
  const uint8_t* base_;      // the first of the two results that the first other output needs
  int distance_, elements_;  // the second one: elements from the first; how many other outputs
  ptrdiff_t begin_, end_;    // where they stand: bytes of the row
  bool hasBefore_, hasAfter_;
};

}  // namespace zvp::morph
