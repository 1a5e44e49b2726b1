#include "morph/filter.h"

#include "core/carver.h"
#include "morph/engine.h"

namespace zvp::morph {
namespace {

// Without members the mask copies: it is the anchor alone.
StructuringElement anchorAlone(int maxRoiWidth) {
  static constexpr uint8_t kMember = 1;
  StructuringElement element = {};
  element.mask = &kMember;
  element.size = {1, 1};
  element.maxRoiWidth = maxRoiWidth;
  return element;
}

void run(Job& job, const MaskPlan& plan, bool inPlace) {
  plan.suitsRings() ? runRings(job, plan, inPlace) : runDirect(job);
}

void filterBits(Job& job, const MaskPlan& plan) {
  alignas(kLine) uint8_t rows[kMostOutputs * (kMostBits + kBitsAtOnce)];
  job.sink.slots = kMostOutputs;
  job.sink.stride = kMostBits + kBitsAtOnce;
  job.sink.rows = rows;
  run(job, plan, false);
}

// Rows that cannot be computed where they belong, or are not results yet.
void bufferRows(Sink& sink, const Filter& f, int delay, uint8_t* rows) {
  sink.delay = delay;
  sink.slots = std::max(delay + 1, std::min(f.element.size.height, kMostOutputs));
  sink.stride = roundUp(int64_t{f.roi.width} * f.flavour.pixelBytes(), kHalfLine);
  sink.rows = alignedTo<uint8_t>(kLine, rows);
}

}  // namespace

void applyFilter(Extremum extremum, const Filter& f, Image<const uint8_t> src, const Output& output, uint8_t* rows) {
  if (!f.element.hasKnownMode()) return;
  const MaskPlan plan(f.element);
  if (f.element.mode == kEmptyMask || plan.isEmpty()) {
    const Filter copy = {f.flavour, anchorAlone(f.element.maxRoiWidth), f.roi, f.border, f.work};
    return applyFilter(extremum, copy, src, output, rows);
  }
  const Kernels& kernels = kernelsOf(extremum, f.flavour.type);
  Job job = {kernels,
             f.flavour,
             f.element,
             Region(f.roi, f.border, f.element),
             Source(src, f.flavour),
             Sink{output, f.flavour, kernels},
             f.work};
  if (f.flavour.bits) return filterBits(job, plan);
  const bool inPlace = src.data == output.dst.data, delayed = inPlace && !plan.suitsRings();
  // A filter that needs no ring has the work buffer for its rows.
  if (delayed || output.kind != Output::kResult)
    bufferRows(job.sink, f, delayed ? f.element.anchor.y : 0, output.kind == Output::kResult ? f.work : rows);
  run(job, plan, inPlace);
}

}  // namespace zvp::morph
