// Sparse optical flow: Lucas-Kanade refinement of points, from the coarsest level of two pyramids down.
#include <float.h>

#include <algorithm>

#include "core/checks.h"
#include "core/runs.h"
#include "pyramid/flow/tracker.h"
#include "pyramid/sizes.h"

namespace zvp::flow {
namespace {

constexpr int kHighestLevel = INT8_MAX - 1;  // a status holds a level + 1

Position loadPosition(const float* points, int64_t i) {
  return {simd::load<float>(points + 2 * i), simd::load<float>(points + 2 * i + 1)};
}

// The caller's arrays.
struct Points {
  const float* previous;
  float* next;
  int8_t* status;
  float* error;
  int count;

  // A coordinate of no value becomes that of the previous point, or 0.
  void storeNext(int64_t i, Position p) const {
    const Position before = loadPosition(previous, i);
    simd::store(next + 2 * i, number(p.x, before.x));
    simd::store(next + 2 * i + 1, number(p.y, before.y));
  }

 private:
  static float number(double value, double otherwise) {
    if (isnan(value)) value = isfinite(otherwise) ? otherwise : 0.0;
    return static_cast<float>(std::clamp<double>(value, -FLT_MAX, FLT_MAX));
  }
};

// Tracks the points that have come down to a level; returns how many go on. Their estimates arrive in units of the
// level before, times `scale` in those of this one.
template <class T>
int trackLevel(const LevelTracker<T>& tracker, const Points& points, int level, double rate, double scale,
               Iteration iteration) {
  int kept = 0;
  for (int64_t i = 0; i < points.count; ++i) {
    if (points.status[i] != level + 1) continue;
    Position estimate = loadPosition(points.next, i) * scale;
    float error = 0.0f;
    const bool found = tracker.refine(loadPosition(points.previous, i) * rate, estimate, iteration) &&
                       (level > 0 || tracker.error(estimate, error));
    points.storeNext(i, found ? estimate : estimate * (1.0 / rate));
    simd::store(points.error + i, error);
    if (!found) continue;
    points.status[i] = static_cast<int8_t>(level);
    ++kept;
  }
  return kept;
}

template <class T>
Status checkLevels(const Pyramid& a, const Pyramid& b, const OpticalFlowState& state, int maxLev) {
  bool present = true, sized = true, stepped = true, whole = true;
  for (int l = 0; l <= maxLev; ++l) {
    const RoiSize size = a.roiSizes[l];
    present = present && a.images[l] != nullptr && b.images[l] != nullptr;
    sized = sized && nonEmpty(size) == StatusOk && pyramid::sameSize(size, b.roiSizes[l]) &&
            pyramid::fitsInto(size, {state.width, state.height});
    const int64_t rowBytes = int64_t{size.width} * int64_t{sizeof(T)};
    stepped = stepped && a.steps[l] >= rowBytes && b.steps[l] >= rowBytes;
    whole = whole && a.steps[l] % int{sizeof(T)} == 0 && b.steps[l] % int{sizeof(T)} == 0;
  }
  return firstFailure(check(present, ErrNullPtr), check(sized, ErrSize), check(stepped, ErrStep),
                      check(whole, ErrStepNotMultiple));
}

template <class T>
Status opticalFlow(const Pyramid* previous, const Pyramid* next, const Points& points, int winSize, int maxLev,
                   int maxIter, float threshold, const OpticalFlowState* state) {
  if (Status s = nonNull(previous, next, state, points.previous, points.next, points.status, points.error)) return s;
  if (Status s =
          firstFailure(check(points.count >= 1 && winSize >= 1 && winSize == state->winSize, ErrSize),
                       check(maxLev >= 0 && maxLev <= kHighestLevel && maxIter >= 1 && threshold >= 0, ErrBadArg),
                       check(maxLev <= previous->level && maxLev <= next->level, ErrBadArg)))
    return s;
  if (Status s = checkLevels<T>(*previous, *next, *state, maxLev)) return s;

  const RoiSize largest{state->width, state->height};
  Carver memory(state->buffer, workingMemory(largest, winSize));
  const Windows windows(winSize, memory);
  for (float* window : {windows.previous, windows.next, windows.singleDx, windows.singleDy})
    zeroRun(window, windows.samples());
  const Derivatives derivatives(largest, memory);
  fillRun(reinterpret_cast<uint8_t*>(points.status), points.count, static_cast<uint8_t>(maxLev + 1));
  const Iteration iteration{maxIter, double(threshold) * threshold};
  int alive = points.count;
  for (int level = maxLev; level >= 0 && alive > 0; --level) {
    const Level<T> images = levelOf<T>(*previous, *next, level);
    const double scale = level == maxLev ? images.rate : images.rate / previous->rates[level + 1];
    const LevelTracker<T> tracker(images, winSize, windows, derivatives);
    alive = trackLevel(tracker, points, level, images.rate, scale, iteration);
  }
  return StatusOk;
}

}  // namespace
}  // namespace zvp::flow

#define ZVP_OPTICAL_FLOW(NAME, T)                                                                                      \
  Status NAME(const Pyramid* pPyr1, const Pyramid* pPyr2, const float* pPrev, float* pNext, int8_t* pStatus,           \
              float* pError, int numFeat, int winSize, int maxLev, int maxIter, float threshold,                       \
              OpticalFlowState* pState) {                                                                              \
    return zvp::flow::opticalFlow<T>(pPyr1, pPyr2, {pPrev, pNext, pStatus, pError, numFeat}, winSize, maxLev, maxIter, \
                                     threshold, pState);                                                               \
  }

ZVP_OPTICAL_FLOW(zvpiOpticalFlowPyrLK_8u_C1R, uint8_t)
ZVP_OPTICAL_FLOW(zvpiOpticalFlowPyrLK_16u_C1R, uint16_t)
ZVP_OPTICAL_FLOW(zvpiOpticalFlowPyrLK_32f_C1R, float)
