// Where points of one image are in another.
#ifndef ZVP_EXAMPLES_TRACK_TRACKER_H
#define ZVP_EXAMPLES_TRACK_TRACKER_H

#include <zvpcv/pyramid.h>

#include <memory>
#include <vector>

#include "pyramid.h"

namespace examples {

struct Match {
  Point32f place;
  bool found;
};

// Prepared once for images of one size.
class Tracker {
 public:
  static constexpr int kWindow = 21;

  explicit Tracker(RoiSize size);

  // One match for each point.
  std::vector<Match> track(const GrayPyramid& from, const GrayPyramid& to, const std::vector<Point32f>& points);

 private:
  std::unique_ptr<OpticalFlowState, Status (*)(OpticalFlowState*)> state_;
};

}  // namespace examples

#endif
