#include "morph/engine.h"

#include <bit>

#include "core/carver.h"
#include "morph/ring.h"
#include "morph/run_step.h"

namespace zvp::morph {
namespace {

// The loop with rings, strip by strip.
class RingEngine {
 public:
  RingEngine(Job& job, const MaskPlan& plan, bool inPlace)
      : job_(job),
        plan_(plan),
        rectangle_(plan.isRectangle()),
        outputs_(rectangle_
                     ? static_cast<int>(std::bit_floor(static_cast<unsigned>(std::min(plan.rows(), kMostOutputs))))
                     : 1) {
    // In place a row is filtered before it is overwritten, also where all members lie above it.
    ahead_ = std::max(plan.lastRow() - anchorY(), inPlace ? 0 : INT32_MIN);
    ring_.depth = ahead_ + anchorY() - plan.firstRow() + outputs_;
    widest_ = inPlace ? job.region.roi.width : stripWidth();
  }

  void run() {
    for (int64_t x0 = 0; x0 < job_.region.roi.width; x0 += widest_) {
      strip_ = job_.stripFrom(x0, widest_);
      placeRing();
      planSteps();
      runStrip();
      job_.sink.finish(job_.region.roi.height);
    }
  }

 private:
  int anchorY() const { return job_.element.anchor.y; }
  int64_t ringRows() const { return int64_t{ring_.depth} * plan_.runCount; }
  int elements() const { return static_cast<int>(strip_.width() * job_.flavour.channels); }

  // Larger rings are split into strips, so that they stay in the second-level cache; seams cost more than the first
  // level gains.
  int64_t stripWidth() const {
    constexpr int64_t kCacheBytes = 192 * 1024, kLeastBytes = 512;
    const int64_t rowBytes = std::max(kCacheBytes / ringRows(), kLeastBytes) / kLine * kLine;
    return std::max<int64_t>(std::min(rowBytes / job_.flavour.pixelBytes(), job_.mostColumns()), 1);
  }

  void placeRing() {
    const StructuringElement& e = job_.element;
    Carver parts(job_.work, bufferBytes(job_.flavour, e.maxRoiWidth, e.size));
    pointers_ = parts.take<const uint8_t*>(plan_.rows() + outputs_, sizeof(void*));
    job_.begin(strip_, parts.take<uint8_t>(Source::workBytes(job_.flavour, strip_, e), 1));
    const int64_t rowBytes = strip_.width() * job_.flavour.pixelBytes();
    ring_.stride = roundUp(rowBytes, kLine);
    if (!(Bytes(ring_.stride) * ringRows() < ringBytes(job_.flavour, e.maxRoiWidth, e.size) + 1))
      ring_.stride = roundUp(rowBytes, kHalfLine);
    ring_.rows = parts.take<uint8_t>(ring_.stride * ringRows(), kLine);
  }

  void planSteps() {
    const auto order = plan_.order();
    for (size_t k = 0; k < static_cast<size_t>(plan_.runCount); ++k)
      steps_[k] = RunStep(job_.kernels, job_.region.columns, job_.flavour, plan_, order[k], strip_, ring_);
  }

  void runStrip() {
    const Span rows = job_.region.rows;
    const int height = job_.region.roi.height;
    const int64_t top = plan_.firstRow() - anchorY();
    int64_t next = rows.clamp(top);
    RingCursor filtered(rows, ring_.depth, top), window = filtered;
    for (int y = 0; y < height;) {
      const int count = height - y >= outputs_ ? outputs_ : 1;
      for (const int64_t last = rows.clamp(int64_t{y} + count - 1 + ahead_); next <= last; ++next)
        filterRow(next, filtered.at(next));
      window.at(y + top);
      rectangle_ ? rectangleRows(y, count, window) : combinedRow(y, window);
      job_.sink.commit(y, count);
      y += count;
    }
  }

  void filterRow(int64_t y, int position) const {
    const uint8_t* row = job_.source.row(y);
    const auto offset = static_cast<ptrdiff_t>(position * ring_.stride);
    for (int k = 0; k < plan_.runCount; ++k) steps_[static_cast<size_t>(k)](row, offset);
  }

  // The cursor stands at the first row of the mask for output row y.
  void rectangleRows(int y, int count, RingCursor cursor) const {
    const int64_t top = int64_t{y} + plan_.firstRow() - anchorY();
    const int height = plan_.rows();
    for (int k = 0; k < height + count - 1; ++k) pointers_[k] = ring_.row(0, cursor.at(top + k));
    uint8_t* outputs[kMostOutputs];
    for (int g = 0; g < count; ++g) outputs[g] = job_.sink.row(y + g);
    job_.kernels.share(pointers_, height, outputs, count, elements());
  }

  void combinedRow(int y, RingCursor cursor) const {
    constexpr int kMostRows = 64;
    const uint8_t* rows[kMostRows];
    uint8_t* out = job_.sink.row(y);
    const int64_t top = int64_t{y} - anchorY();
    int used = 0;
    for (int k = 0; k < plan_.useCount; ++k) {
      const MaskPlan::Use use = plan_.use(k);
      rows[used++] = ring_.row(use.run, cursor.at(top + use.row));
      if (used < kMostRows && k + 1 < plan_.useCount) continue;
      job_.kernels.combine(rows, used, out, elements());
      rows[0] = out;
      used = 1;
    }
  }

  Job& job_;
  const MaskPlan& plan_;
  bool rectangle_;
  int outputs_;  // output rows that are computed at once
  int ahead_;    // rows below the output row that are filtered before it is made
  int64_t widest_;
  Strip strip_ = {};
  Ring ring_;
  const uint8_t** pointers_ = nullptr;
  std::array<RunStep, MaskPlan::kMostRuns> steps_;  // of the strip
};

void directRow(Job& job, int y) {
  uint8_t* out = job.sink.row(y);
  bool add = false;
  forEachRun(job.element.mask, job.element.size, [&](int maskRow, int first, int length) {
    const uint8_t* row = job.source.row(job.region.rows.clamp(int64_t{y} + maskRow - job.element.anchor.y));
    const Run run = {first - job.element.anchor.x, length};
    job.kernels.run(RunColumns::of(job.region.columns, job.flavour.channels, run, job.sink.strip), row, add, out);
    add = true;
    return true;
  });
  job.sink.commit(y, 1);
}

}  // namespace

void runRings(Job& job, const MaskPlan& plan, bool inPlace) { RingEngine(job, plan, inPlace).run(); }

void runDirect(Job& job) {
  for (int64_t x0 = 0; x0 < job.region.roi.width; x0 += job.mostColumns()) {
    job.begin(job.stripFrom(x0, job.mostColumns()), job.work);
    for (int y = 0; y < job.region.roi.height; ++y) directRow(job, y);
    job.sink.finish(job.region.roi.height);
  }
}

}  // namespace zvp::morph
