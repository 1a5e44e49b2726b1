// Optical flow between two pyramids of any levels.
#include <zvpcv/pyramid.h>

#include <cmath>

#include "calls/calls.h"

namespace zvp::calls {
namespace {

void makeState(Call& c) {
  c.object("zvpiOpticalFlowPyrLKFree" + c.suffix());
  constexpr int kLast = kLater + 9;
  c.give(c.in.size(), kSize);
  c.rejects({RoiSize{20000, 20000}, RoiSize{46341, 46341}, RoiSize{INT_MAX, INT_MAX}}, ErrNoMemory, kLast);
  c.length(40);
  c.rejects({20000, 46341, INT_MAX - 5, INT_MAX}, ErrNoMemory, kLast);
  c.value();
}

void release(Call& c) {
  if (const Call* made = c.prepare("zvpiOpticalFlowPyrLKInitAlloc" + c.suffix())) {
    c.give(made->made());
    c.rejects({nullptr}, ErrNullPtr, kNull);
  }
}

Element elementOf(const Call& c) { return {c.is("_8u") ? 1u : c.is("_16u") ? 2u : 4u, c.is("_32f")}; }

Pyramid* newRecord(Call& c, RoiSize size, float rate) {
  Pyramid* record = nullptr;
  if (c.call("zvpiPyramidInitAlloc", {&record, 4, size, rate}) != StatusOk) return nullptr;
  c.releaseAtEnd("zvpiPyramidFree", record);
  return record;
}

// A record whose images and steps are operands of its levels.
Pyramid* giveRecord(Call& c, RoiSize size, float rate) {
  Pyramid* record = newRecord(c, size, rate);
  if (record == nullptr) return nullptr;
  const Element element = elementOf(c);
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

// Levels up to the highest one that is used must be there and have the sizes and steps of each other.
void refuseOtherRecords(Call& c, int argument, const Pyramid& record, float rate, int level) {
  const auto refuse = [&](Status status, int order, auto change) {
    Pyramid& other = *newRecord(c, record.roiSizes[0], rate);
    std::copy_n(record.images, record.level + 1, other.images);
    std::copy_n(record.steps, record.level + 1, other.steps);
    change(other);
    c.rejects({&other}, status, kLater + order, argument);
  };
  const int element = int(elementOf(c).size), row = record.roiSizes[level].width * element;
  if (level > 0) refuse(ErrBadArg, 10, [=](Pyramid& p) { p.level = level - 1; });
  refuse(ErrNullPtr, 31, [=](Pyramid& p) { p.images[level] = nullptr; });
  refuse(ErrSize, 32, [=](Pyramid& p) { --p.roiSizes[level].height; });
  refuse(ErrStep, 33, [=](Pyramid& p) { p.steps[level] = row - 1; });
  if (element > 1) refuse(ErrStepNotMultiple, 34, [=](Pyramid& p) { p.steps[level] = row + 1; });
}

void refuseSmallStates(Call& c, RoiSize size, int winSize) {
  for (const RoiSize smaller : {RoiSize{size.width - 1, size.height}, {size.width, size.height - 1}}) {
    OpticalFlowState* state = nullptr;
    const std::string type = c.suffix();
    if (c.call("zvpiOpticalFlowPyrLKInitAlloc" + type, {&state, smaller, winSize, 0}) != StatusOk) continue;
    c.releaseAtEnd("zvpiOpticalFlowPyrLKFree" + type, state);
    c.rejects({state}, ErrSize, kLater + 32);
  }
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
  Pyramid* const previous = giveRecord(c, size, rate);
  if (previous == nullptr) return;
  Pyramid* const next = giveRecord(c, size, rate);
  if (next == nullptr) return;
  givePoints(c, count);
  const Operand &found = givePoints(c, count), &status = c.array(count), &error = c.array(count);
  c.give(count);
  c.rejects({0, -1, INT_MIN}, ErrSize, kSize);
  c.give(winSize);
  c.rejects({0, -1, INT_MIN, winSize + 1}, ErrSize, kSize);
  const int maxLev = c.in.number(0, previous->level);
  c.give(maxLev);
  c.rejects({-1, 127, INT_MAX, INT_MIN, previous->level + 1}, ErrBadArg);
  for (int argument = 0; argument < 2 && !c.in.isWild(); ++argument) {
    const Pyramid* record = argument == 0 ? previous : next;
    refuseOtherRecords(c, argument, *record, rate, maxLev);
    for (int l = maxLev + 1; l <= record->level; ++l) record->images[l] = nullptr;  // not looked at
  }
  c.give(c.in.integer(c.in.isWild() ? 0 : 1, 12));
  c.rejects({0, -1, INT_MIN}, ErrBadArg);
  c.give(0.01f);
  c.rejects({-0.5f, NAN}, ErrBadArg);
  c.give(state->made());
  c.rejects({nullptr}, ErrNullPtr, kNull);
  if (!c.in.isWild()) refuseSmallStates(c, size, winSize);
  c.promise("lost points say where, and every point has a place", [=, &found, &status, &error] {
    for (std::size_t i = 0; i < std::size_t(count); ++i) {
      const auto s = status.get<std::int8_t>(i);
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
