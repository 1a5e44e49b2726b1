#include <zvpcv/pyramid.h>

#include <array>
#include <cmath>
#include <vector>

#include "cases.h"
#include "plain_optical_flow.h"

namespace bench {
namespace {

using Pixels = Image<std::uint8_t>;

constexpr int kPoints = 500, kLevels = 4, kMostSteps = 30;
constexpr float kThreshold = 0.01f, kMotionX = 3.3f, kMotionY = -2.1f;

// A photograph's statistics, roughly: waves of all lengths, the longer the stronger.
Pixels texture(RoiSize size, float dx, float dy) {
  const Pixels image(size.width, size.height);
  for (int y = 0; y < size.height; ++y) {
    for (int x = 0; x < size.width; ++x) {
      float sum = 0;
      for (int k = 0; k < 8; ++k) {
        const float frequency = 0.04f * std::pow(1.45f, float(k)), angle = 2.4f * float(k);
        const float along = (float(x) - dx) * std::cos(angle) + (float(y) - dy) * std::sin(angle);
        sum += std::sin(along * frequency + float(k * k)) / (1 + 0.4f * float(k));
      }
      image.row(y)[x] = std::uint8_t(128 + 28 * sum);
    }
  }
  return image;
}

// The levels of an image, level 0 being the image itself, and what builds them.
class Levels {
 public:
  explicit Levels(const Pixels& image) : buffer_(bufferBytes(image.width), 1) {
    images_.push_back(image);
    for (int l = 1; l < kLevels; ++l)
      images_.emplace_back((images_.back().width + 1) / 2, (images_.back().height + 1) / 2);
    Pyramid* record = nullptr;
    zvpiPyramidInitAlloc(&record, kLevels - 1, {image.width, image.height}, 2.0f);
    record_ = {record, zvpiPyramidFree};
    for (int l = 0; l < kLevels; ++l) {
      record->images[l] = images_[std::size_t(l)].data();
      record->steps[l] = images_[std::size_t(l)].step;
    }
  }

  void build() const {
    for (std::size_t l = 0; l + 1 < images_.size(); ++l) {
      const Pixels &from = images_[l], &to = images_[l + 1];
      zvpiPyrDown_Gauss5x5_8u_C1R(from.data(), from.step, to.data(), to.step, {from.width, from.height},
                                  buffer_.data());
    }
  }

  const Pixels& operator[](int level) const { return images_[std::size_t(level)]; }
  const Pyramid* record() const { return record_.get(); }

 private:
  static int bufferBytes(int width) {
    int bytes = 0;
    zvpiPyrDownGetBufSize_Gauss5x5(width, DataType8u, 1, &bytes);
    return bytes;
  }

  std::vector<Pixels> images_;
  Pixels buffer_;
  std::shared_ptr<Pyramid> record_;
};

std::vector<Point32f> somePoints(RoiSize size) {
  std::mt19937 generator(1);
  const auto along = [&](int n) { return std::uniform_real_distribution<float>(0.1f, 0.9f)(generator) * float(n); };
  std::vector<Point32f> points(kPoints);
  for (Point32f& p : points) p = {along(size.width), along(size.height)};
  return points;
}

// Found points; lost ones are at the origin.
using Found = std::array<Point32f, kPoints>;

void plainFlow(const Levels& previous, const Levels& next, const std::vector<Point32f>& points, int side,
               Found& found) {
  std::vector<bool> lost(kPoints);
  const float top = 1 << (kLevels - 1);
  for (std::size_t i = 0; i < kPoints; ++i) found[i] = {points[i].x / top, points[i].y / top};
  for (int level = kLevels - 1; level >= 0; --level) {
    const float scale = 1.0f / float(1 << level);
    const Pixels& image = previous[level];
    const Image<float> dx(image.width, image.height), dy(image.width, image.height);
    plain::scharr(image, dx, dy);
    for (std::size_t i = 0; i < kPoints; ++i) {
      if (lost[i]) continue;
      if (level < kLevels - 1) found[i] = {found[i].x * 2, found[i].y * 2};
      lost[i] = !plain::refine(image, next[level], dx, dy, {points[i].x * scale, points[i].y * scale}, found[i],
                               {side, kMostSteps, kThreshold});
      if (lost[i]) found[i] = {0, 0};
    }
  }
}

bool close(const Found& a, const Found& b) {
  int apart = 0;
  for (std::size_t i = 0; i < kPoints; ++i) apart += std::hypot(a[i].x - b[i].x, a[i].y - b[i].y) > 0.01f;
  return apart <= kPoints / 50;  // the plain loop follows its points out of the image
}

// Both pyramids built and 500 points tracked.
template <int side>
Work track(RoiSize size) {
  const Levels previous(texture(size, 0, 0)), next(texture(size, kMotionX, kMotionY));
  const auto points = somePoints(size);
  OpticalFlowState* made = nullptr;
  zvpiOpticalFlowPyrLKInitAlloc_8u_C1R(&made, size, side, 0);
  const std::shared_ptr<OpticalFlowState> state(made, zvpiOpticalFlowPyrLKFree_8u_C1R);
  const auto found = std::make_shared<Found>(), expected = std::make_shared<Found>();
  const auto status = std::make_shared<std::array<std::int8_t, kPoints>>();
  const auto error = std::make_shared<std::array<float, kPoints>>();
  return {.library =
              [=] {
                previous.build();
                next.build();
                std::copy(points.begin(), points.end(), found->begin());
                zvpiOpticalFlowPyrLK_8u_C1R(previous.record(), next.record(), &points[0].x, &(*found)[0].x,
                                            status->data(), error->data(), kPoints, side, kLevels - 1, kMostSteps,
                                            kThreshold, state.get());
                for (std::size_t i = 0; i < kPoints; ++i)
                  if ((*status)[i] != 0) (*found)[i] = {0, 0};
              },
          .plain = [=] { plainFlow(previous, next, points, side, *expected); },
          .agree = [=] { return close(*found, *expected); }};
}

#define ZVP_TRACK(side)                                                                             \
  Case {                                                                                            \
    "zvpiOpticalFlowPyrLK_8u_C1R, " #side "x" #side, [](RoiSize size) { return track<side>(size); } \
  }

}  // namespace

std::vector<Case> opticalFlowCases() { return {ZVP_TRACK(15), ZVP_TRACK(21)}; }

}  // namespace bench
