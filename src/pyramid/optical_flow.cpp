// Sparse optical flow: Lucas-Kanade refinement of points, from the coarsest level of two pyramids down.
#include <float.h>
#include <math.h>
#include <string.h>

#include <algorithm>

#include "core/checks.h"
#include "filter/scharr.h"
#include "geometry/subpix.h"
#include "pyramid/optical_flow_state.h"
#include "pyramid/optical_flow_sums.h"
#include "pyramid/sizes.h"

namespace zvp {
namespace {

constexpr int kHighestLevel = INT8_MAX - 1;  // a status holds a level + 1

struct Position {
  double x, y;

  Position operator*(double factor) const { return {x * factor, y * factor}; }
  bool isFinite() const { return isfinite(x) && isfinite(y); }
};

Position loadPosition(const float* points, int64_t i) {
  return {simd::load<float>(points + 2 * i), simd::load<float>(points + 2 * i + 1)};
}

struct Iteration {
  int most;
  double squaredThreshold;
};

// One level of both images.
template <class T>
struct FlowLevel {
  Rows<const T> previous, next;
  RoiSize size;
  double rate;
};

template <class T>
FlowLevel<T> flowLevel(const Pyramid& previous, const Pyramid& next, int level) {
  const auto rows = [level](const Pyramid& p) {
    return Rows<const T>{reinterpret_cast<const T*>(p.images[level]), p.steps[level]};
  };
  return {rows(previous), rows(next), previous.roiSizes[level], previous.rates[level]};
}

// --- Windows ---------------------------------------------------------------------------------------------------------

struct WindowPlace {
  WindowAxis x, y;

  WindowPlace(Position centre, int winSize, RoiSize size)
      : x(static_cast<float>(centre.x), winSize, size.width), y(static_cast<float>(centre.y), winSize, size.height) {}

  bool overlaps(int winSize, RoiSize size) const {
    return x.overlaps(winSize, size.width) && y.overlaps(winSize, size.height);
  }
  bool isInside(int winSize, RoiSize size) const {
    return x.isInside(winSize, size.width) && y.isInside(winSize, size.height);
  }
};

// Tracks points on one level.
template <class T>
class LevelTracker {
 public:
  LevelTracker(const FlowLevel<T>& level, int winSize, const FlowWindows& windows, const FlowDerivatives& derivatives)
      : level_(level), windows_(windows), derivatives_(derivatives), winSize_(winSize) {
    const auto width = static_cast<ptrdiff_t>(level.size.width);
    for (int y = 0; y < level.size.height; ++y) {
      const filter::ThreeRows<T> rows{level.previous.row(std::max(y - 1, 0)), level.previous.row(y),
                                      level.previous.row(std::min(y + 1, level.size.height - 1))};
      const filter::RowEnds ends{0, width - 1, 0.0f};
      filter::scharrRow<filter::Derivative::kAlongX>(rows, ends, level.size.width, kDerivativeScale,
                                                     derivatives.dx + y * width);
      filter::scharrRow<filter::Derivative::kAlongY>(rows, ends, level.size.width, kDerivativeScale,
                                                     derivatives.dy + y * width);
    }
  }

  // Moves the estimate towards the match of a point; false if the point is lost, with the last estimate.
  bool refine(Position point, Position& estimate, Iteration iteration) const {
    if (!takePrevious(point)) return false;
    constexpr double kLeastDeterminant = 2.220446049250313e-16, kOscillation = 0.0003452669770922512;
    const GradientMatrix g = gradientMatrix(windows_);
    const double determinant = g.determinant();
    if (!(determinant >= kLeastDeterminant)) return false;
    Position last{};
    for (int i = 0; i < iteration.most; ++i) {
      if (!takeNext(estimate)) return false;
      const Mismatch b = mismatch(windows_);
      const Position step{(b.x * g.yy - g.xy * b.y) / determinant, (b.y * g.xx - g.xy * b.x) / determinant};
      if (!step.isFinite()) return false;
      estimate = {estimate.x + step.x, estimate.y + step.y};
      if (step.x * step.x + step.y * step.y < iteration.squaredThreshold) break;
      if (i > 0 && fabs(step.x + last.x) < kOscillation && fabs(step.y + last.y) < kOscillation) {
        estimate = {estimate.x - 0.5 * step.x, estimate.y - 0.5 * step.y};
        break;
      }
      last = step;
    }
    return true;
  }

  // The root mean square of the difference at a place; false if that is outside the next image. Follows refine.
  bool error(Position place, float& error) const {
    if (!takeNext(place)) return false;
    const double squares = squaredDifference(windows_);
    error = squares > 0 ? static_cast<float>(sqrt(squares / (double(winSize_) * winSize_))) : 0.0f;
    return true;
  }

 private:
  static constexpr float kDerivativeScale = 0.03125f;  // a ramp that rises by one has the derivative one

  RoiSize windowSize() const { return {winSize_, winSize_}; }

  template <class S>
  void sample(Rows<const S> src, const WindowPlace& place, float* window) const {
    const auto weights = place.isInside(winSize_, level_.size) ? raisedWeights<S>(place.x.fraction, place.y.fraction)
                                                               : FloatWeights(place.x.fraction, place.y.fraction);
    sampleWindow(weights, src, level_.size, place.x, place.y, windows_.rowsOf(window), windowSize());
  }

  Rows<const float> levelRows(const float* derivative) const {
    return {derivative, level_.size.width * int{sizeof(float)}};
  }

  bool takePrevious(Position point) const {
    const WindowPlace place(point, winSize_, level_.size);
    if (!place.overlaps(winSize_, level_.size)) return false;
    sample(level_.previous, place, windows_.previous);
    sample(levelRows(derivatives_.dx), place, windows_.singleDx);
    sample(levelRows(derivatives_.dy), place, windows_.singleDy);
    return true;
  }

  bool takeNext(Position centre) const {
    const WindowPlace place(centre, winSize_, level_.size);
    if (!place.overlaps(winSize_, level_.size)) return false;
    sampleWindow(FloatWeights(place.x.fraction, place.y.fraction), level_.next, level_.size, place.x, place.y,
                 windows_.rowsOf(windows_.next), windowSize());
    return true;
  }

  const FlowLevel<T>& level_;
  const FlowWindows& windows_;
  const FlowDerivatives& derivatives_;
  int winSize_;
};

// --- Points ----------------------------------------------------------------------------------------------------------

// The caller's arrays.
struct FlowPoints {
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
int trackLevel(const LevelTracker<T>& tracker, const FlowPoints& points, int level, double rate, double scale,
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

// --- The call --------------------------------------------------------------------------------------------------------

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
Status opticalFlow(const Pyramid* previous, const Pyramid* next, const FlowPoints& points, int winSize, int maxLev,
                   int maxIter, float threshold, const OpticalFlowState* state) {
  if (Status s = firstFailure(nonNull(previous, next), nonNull(state), nonNull(points.previous, points.next),
                              nonNull(points.status), nonNull(points.error)))
    return s;
  if (Status s =
          firstFailure(check(points.count >= 1 && winSize >= 1 && winSize == state->winSize, ErrSize),
                       check(maxLev >= 0 && maxLev <= kHighestLevel && maxIter >= 1 && threshold >= 0, ErrBadArg),
                       check(maxLev <= previous->level && maxLev <= next->level, ErrBadArg)))
    return s;
  if (Status s = checkLevels<T>(*previous, *next, *state, maxLev)) return s;

  Carver memory(state->buffer);
  const FlowWindows windows(winSize, memory);
  for (float* window : {windows.previous, windows.next, windows.singleDx, windows.singleDy})
    memset(window, 0, windows.samples() * sizeof(float));
  const FlowDerivatives derivatives({state->width, state->height}, memory);
  memset(points.status, maxLev + 1, static_cast<size_t>(points.count));
  const Iteration iteration{maxIter, double(threshold) * threshold};
  int alive = points.count;
  for (int level = maxLev; level >= 0 && alive > 0; --level) {
    const FlowLevel<T> images = flowLevel<T>(*previous, *next, level);
    const double scale = level == maxLev ? images.rate : images.rate / previous->rates[level + 1];
    const LevelTracker<T> tracker(images, winSize, windows, derivatives);
    alive = trackLevel(tracker, points, level, images.rate, scale, iteration);
  }
  return StatusOk;
}

}  // namespace
}  // namespace zvp

#define OPTICAL_FLOW(name, T)                                                                                      \
  Status zvpiOpticalFlowPyrLK_##name(const Pyramid* pPyr1, const Pyramid* pPyr2, const float* pPrev, float* pNext, \
                                     int8_t* pStatus, float* pError, int numFeat, int winSize, int maxLev,         \
                                     int maxIter, float threshold, OpticalFlowState* pState) {                     \
    return zvp::opticalFlow<T>(pPyr1, pPyr2, {pPrev, pNext, pStatus, pError, numFeat}, winSize, maxLev, maxIter,   \
                               threshold, pState);                                                                 \
  }
OPTICAL_FLOW(8u_C1R, uint8_t)
OPTICAL_FLOW(16u_C1R, uint16_t)
OPTICAL_FLOW(32f_C1R, float)
