// Optical flow between two pyramids of any levels.
#include <zvpcv/pyramid.h>

#include "families.h"
#include "operands.h"

namespace fuzz {
namespace {

// A record whose images and steps are filled with operands of its levels.
template <class T>
class Levels {
 public:
  Levels(Bytes& in, RoiSize size, float rate) {
    zvpiPyramidInitAlloc(&record_, 4, size, rate);
    for (int l = 0; l <= record_->level; ++l) {
      images_.push_back(readsImage<T>(in, record_->roiSizes[l].width, record_->roiSizes[l].height));
      record_->images[l] = images_.back();
      record_->steps[l] = images_.back().step;
    }
    if (oneIn(32, in)) record_->rates[in.ConsumeIntegralInRange(0, record_->level)] = 0;
  }
  ~Levels() { zvpiPyramidFree(record_); }
  Levels(const Levels&) = delete;
  Levels& operator=(const Levels&) = delete;

  const Pyramid* record() const { return record_; }
  bool isIntact(bool failed) const {
    return std::all_of(images_.begin(), images_.end(), [=](const Operand& o) { return o.isIntact(failed); });
  }

 private:
  Pyramid* record_ = nullptr;
  std::vector<Operand> images_;
};

std::vector<float> somePoints(Bytes& in, int count) {
  std::vector<float> points;
  for (int i = 0; i < 2 * count; ++i) {
    const auto bits = in.ConsumeIntegral<std::uint32_t>();
    float value;
    std::memcpy(&value, &bits, sizeof value);
    points.push_back(oneIn(8, in) ? value : static_cast<float>(bits % 8192) / 64 - 16);
  }
  return points;
}

template <class T, class Init, class Flow>
void flow(Bytes& in, Init init, Flow f, Status (*release)(OpticalFlowState*)) {
  constexpr float kRates[] = {2.0f, 1.3f, 3.7f, 10.0f};
  const RoiSize size{in.ConsumeIntegralInRange(1, 60), in.ConsumeIntegralInRange(1, 60)};
  const float rate = in.PickValueInArray(kRates);
  const Levels<T> previous(in, size, rate), next(in, size, rate);
  const int winSize = in.ConsumeIntegralInRange(1, 40), count = in.ConsumeIntegralInRange(1, 6);
  OpticalFlowState* state = nullptr;
  require(init(&state, size, winSize, 0) == StatusOk, "a state of this size can be made");
  const std::vector<float> points = somePoints(in, count), guess = somePoints(in, count);
  std::vector<float> found = guess, error(std::size_t(count), -1);
  std::vector<std::int8_t> status(std::size_t(count), -1);
  const int maxLev = number(in, 0, previous.record()->level), maxIter = in.ConsumeIntegralInRange(0, 12);
  const Status result = f(previous.record(), next.record(), points.data(), found.data(), status.data(), error.data(),
                          count, winSize, maxLev, maxIter, 0.01f, state);
  require(previous.isIntact(true) && next.isIntact(true), "images are read only");
  if (result < 0) {
    require(std::memcmp(found.data(), guess.data(), found.size() * sizeof(float)) == 0 && status[0] == -1,
            "a failing call writes nothing");
  } else {
    for (std::size_t i = 0; i < status.size(); ++i) {
      require(status[i] >= 0 && status[i] <= maxLev + 1 && (status[i] == 0 || error[i] == 0), "lost points say where");
      require(std::isfinite(found[2 * i]) && std::isfinite(found[2 * i + 1]), "every point has a place");
    }
  }
  release(state);
}

#define ZVP_FLOW(type, T)                                                                      \
  [](Bytes& in) {                                                                              \
    flow<T>(in, zvpiOpticalFlowPyrLKInitAlloc_##type##_C1R, zvpiOpticalFlowPyrLK_##type##_C1R, \
            zvpiOpticalFlowPyrLKFree_##type##_C1R);                                            \
  }

constexpr Target kTargets[] = {ZVP_FLOW(8u, std::uint8_t), ZVP_FLOW(16u, std::uint16_t), ZVP_FLOW(32f, float)};

}  // namespace

Targets opticalFlowTargets() { return kTargets; }

}  // namespace fuzz
