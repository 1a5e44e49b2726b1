// Optical flow between two pyramids of any levels.
#include <zvpcv/pyramid.h>

#include <cmath>

#include "calls/calls.h"

namespace zvp::calls {
namespace {

void makeState(Call& c) {
  c.object("zvpiOpticalFlowPyrLKFree" + c.suffix());
  c.give(c.in.size(), kSize);
  c.length(40);
  c.value();
}

void release(Call& c) {
  if (const Call* made = c.prepare("zvpiOpticalFlowPyrLKInitAlloc" + c.suffix())) {
    c.give(made->made());
    c.rejects({nullptr}, ErrNullPtr, kNull);
  }
}

// A record whose images and steps are operands of its levels.
const Pyramid* giveRecord(Call& c, RoiSize size, float rate) {
  Pyramid* record = nullptr;
  if (c.call("zvpiPyramidInitAlloc", {&record, 4, size, rate}) != StatusOk) return nullptr;
  c.releaseAtEnd("zvpiPyramidFree", record);
  const Element element{c.is("_8u") ? 1u : c.is("_16u") ? 2u : 4u, c.is("_32f")};
  for (int l = 0; l <= record->level; ++l) {
    const RoiSize level = record->roiSizes[l];
    const Operand& image = c.add(c.laidOut(Access::kRead, element, region(level.width, level.height), level.width));
    record->images[l] = c.in.wildly(64) ? nullptr : image.start();
    record->steps[l] = image.step();
  }
  if (c.in.wildly(32)) record->rates[c.in.integer(0, record->level)] = 0;
  c.share(Operand(Access::kRead, record, sizeof *record), Access::kRead);
  return record;
}

const Operand& givePoints(Call& c, int count) {
  const Operand& points = c.array(2.0 * count);
  for (std::size_t i = 0; i < std::size_t(2) * std::size_t(count); ++i)
    points.put(i, c.in.oneIn(8) ? c.in.real() : static_cast<float>(c.in.integer(0, 8191)) / 64 - 16);
  return points;
}

void flow(Call& c) {
  const Call* state = c.prepare("zvpiOpticalFlowPyrLKInitAlloc" + c.suffix());
  if (state == nullptr) return;
  const RoiSize size = state->argument(1).as<RoiSize>();
  const int winSize = state->argument(2).as<int>(), count = int(c.in.integer(1, 6));
  const float rate = c.in.pick({2.0f, 1.3f, 3.7f, 10.0f});
  c.isFinite = true;
  const Pyramid* previous = giveRecord(c, size, rate);
  if (previous == nullptr || giveRecord(c, size, rate) == nullptr) return;
  givePoints(c, count);
  const Operand &found = givePoints(c, count), &status = c.array(count), &error = c.array(count);
  c.give(count);
  c.rejects({0, -1, INT_MIN}, ErrSize, kSize);
  c.give(winSize);
  c.rejects({0, -1, INT_MIN, winSize + 1}, ErrSize, kSize);
  const int maxLev = c.in.number(0, previous->level);
  c.give(maxLev);
  c.rejects({-1, 127, INT_MAX, INT_MIN, previous->level + 1}, ErrBadArg);
  c.give(c.in.integer(c.in.isWild() ? 0 : 1, 12));
  c.rejects({0, -1, INT_MIN}, ErrBadArg);
  c.give(0.01f);
  c.rejects({-0.5f, NAN}, ErrBadArg);
  c.give(state->made());
  c.rejects({nullptr}, ErrNullPtr, kNull);
  c.promise("lost points say where, and every point has a place", [=, &found, &status, &error] {
    for (std::size_t i = 0; i < std::size_t(count); ++i) {
      const int s = status.get<std::int8_t>(i);
      if (s < 0 || s > maxLev + 1 || (s != 0 && error.get<float>(i) != 0)) return false;
      if (!std::isfinite(found.get<float>(2 * i)) || !std::isfinite(found.get<float>(2 * i + 1))) return false;
    }
    return true;
  });
}

const Export kExports[] = {
    ZVP_EXPORT(release, zvpiOpticalFlowPyrLKFree_16u_C1R),
    ZVP_EXPORT(release, zvpiOpticalFlowPyrLKFree_32f_C1R),
    ZVP_EXPORT(release, zvpiOpticalFlowPyrLKFree_8u_C1R),
    ZVP_EXPORT(makeState, zvpiOpticalFlowPyrLKInitAlloc_16u_C1R),
    ZVP_EXPORT(makeState, zvpiOpticalFlowPyrLKInitAlloc_32f_C1R),
    ZVP_EXPORT(makeState, zvpiOpticalFlowPyrLKInitAlloc_8u_C1R),
    ZVP_EXPORT(flow, zvpiOpticalFlowPyrLK_16u_C1R),
    ZVP_EXPORT(flow, zvpiOpticalFlowPyrLK_32f_C1R),
    ZVP_EXPORT(flow, zvpiOpticalFlowPyrLK_8u_C1R),
};

}  // namespace

Exports opticalFlowExports() { return kExports; }

}  // namespace zvp::calls
