// Tracks points on one level of two images.
#pragma once

#include <math.h>

#include "filter/scharr.h"
#include "geometry/window.h"
#include "pyramid/flow/state.h"
#include "pyramid/flow/sums.h"

namespace zvp::flow {

struct Position {
  double x, y;

  Position operator*(double factor) const { return {x * factor, y * factor}; }
  bool isFinite() const { return isfinite(x) && isfinite(y); }
};

struct Iteration {
  int most;
  double squaredThreshold;
};

// One level of both images.
template <class T>
struct Level {
  Rows<const T> previous, next;
  RoiSize size;
  double rate;
};

template <class T>
Level<T> levelOf(const Pyramid& previous, const Pyramid& next, int level) {
  const auto rows = [level](const Pyramid& p) {
    return Rows<const T>{reinterpret_cast<const T*>(p.images[level]), p.steps[level]};
  };
  return {rows(previous), rows(next), previous.roiSizes[level], previous.rates[level]};
}

// A window on a level.
struct WindowPlace {
  geometry::WindowAxis x, y;

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
  LevelTracker(const Level<T>& level, int winSize, const Windows& windows, const Derivatives& derivatives)
      : level_(level), windows_(windows), derivatives_(derivatives), winSize_(winSize) {
    const ptrdiff_t width = level.size.width;
    for (ptrdiff_t y = 0; y < level.size.height; ++y) {
      const auto row = [&](int64_t at) {
        return level.previous.row(modeCoordinate(at, level.size.height, BorderReplicate));
      };
      const filter::ThreeRows<T> rows{row(y - 1), row(y), row(y + 1)};
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
    const auto weights = place.isInside(winSize_, level_.size)
                             ? geometry::raisedWeights<S>(place.x.fraction, place.y.fraction)
                             : geometry::FloatWeights(place.x.fraction, place.y.fraction);
    geometry::sampleWindow(weights, src, level_.size, place.x, place.y, windows_.rowsOf(window), windowSize());
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
    geometry::sampleWindow(geometry::FloatWeights(place.x.fraction, place.y.fraction), level_.next, level_.size,
                           place.x, place.y, windows_.rowsOf(windows_.next), windowSize());
    return true;
  }

  const Level<T>& level_;
  const Windows& windows_;
  const Derivatives& derivatives_;
  int winSize_;
};

}  // namespace zvp::flow
