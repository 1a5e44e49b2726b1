#include "tracker.h"

#include "common/error.h"

namespace examples {
namespace {

constexpr int kMostSteps = 30, kNoHint = 0;
constexpr float kShortestStep = 0.01f;

OpticalFlowState* makeState(RoiSize size) {
  OpticalFlowState* state = nullptr;
  require(zvpiOpticalFlowPyrLKInitAlloc_8u_C1R(&state, size, Tracker::kWindow, kNoHint),
          "zvpiOpticalFlowPyrLKInitAlloc_8u_C1R");
  return state;
}

}  // namespace

Tracker::Tracker(RoiSize size) : state_(makeState(size), zvpiOpticalFlowPyrLKFree_8u_C1R) {}

std::vector<Match> Tracker::track(const GrayPyramid& from, const GrayPyramid& to, const std::vector<Point32f>& points) {
  if (points.empty()) return {};
  std::vector<Point32f> places = points;  // no motion is the first estimate
  std::vector<int8_t> status(points.size());
  std::vector<float> error(points.size());
  require(zvpiOpticalFlowPyrLK_8u_C1R(from.record(), to.record(), &points[0].x, &places[0].x, status.data(),
                                      error.data(), int(points.size()), kWindow, from.record()->level, kMostSteps,
                                      kShortestStep, state_.get()),
          "zvpiOpticalFlowPyrLK_8u_C1R");
  std::vector<Match> matches;
  for (size_t i = 0; i < points.size(); ++i) matches.push_back({places[i], status[i] == 0});
  return matches;
}

}  // namespace examples
