#include <zvpcv/pyramid.h>

#include <array>
#include <cmath>
#include <vector>

#include "cases.h"
#include "plain_optical_flow.h"
#include "plain_pyramid.h"

namespace bench::ZVP_LOOPS {
namespace {

constexpr int kPoints = 500, kLevels = 4, kMostSteps = 30;
constexpr float kThreshold = 0.01f, kMotionX = 3.3f, kMotionY = -2.1f;

// A photograph's statistics, roughly: waves of all lengths, the longer the stronger.
template <class T>
Image<T> texture(RoiSize size, float dx, float dy) {
  const Image<T> image(size.width, size.height);
  for (int y = 0; y < size.height; ++y) {
    for (int x = 0; x < size.width; ++x) {
      float sum = 0;
      for (int k = 0; k < 8; ++k) {
        const float frequency = 0.04f * std::pow(1.45f, float(k)), angle = 2.4f * float(k);
        const float along = (float(x) - dx) * std::cos(angle) + (float(y) - dy) * std::sin(angle);
        sum += std::sin(along * frequency + float(k * k)) / (1 + 0.4f * float(k));
      }
      image.row(y)[x] = T(128 + 28 * sum);
    }
  }
  return image;
}

// The levels of an image, level 0 being the image itself.
template <class T>
class Levels {
 public:
  explicit Levels(const Image<T>& image) : images_{image} {
    while (images_.size() < kLevels) {
      const Image<T> below = images_.back(), level((below.width + 1) / 2, (below.height + 1) / 2);
      plain::octaveDown<1>(below, level, Image<plain::OctaveSum<T>>(level.width, below.height));
      images_.push_back(level);
    }
    Pyramid* record = nullptr;
    zvpiPyramidInitAlloc(&record, kLevels - 1, {image.width, image.height}, 2.0f);
    record_ = {record, zvpiPyramidFree};
    for (int l = 0; l < kLevels; ++l) {
      record->images[l] = reinterpret_cast<std::uint8_t*>((*this)[l].data());
      record->steps[l] = (*this)[l].step;
    }
  }

  const Image<T>& operator[](int level) const { return images_[std::size_t(level)]; }
  const Pyramid* record() const { return record_.get(); }

 private:
  std::vector<Image<T>> images_;
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

template <class T>
void plainFlow(const Levels<T>& previous, const Levels<T>& next, const std::vector<Point32f>& points, int side,
               Found& found) {
  std::vector<bool> lost(kPoints);
  const float top = 1 << (kLevels - 1);
  for (std::size_t i = 0; i < kPoints; ++i) found[i] = {points[i].x / top, points[i].y / top};
  for (int level = kLevels - 1; level >= 0; --level) {
    const float scale = 1.0f / float(1 << level);
    const Image<T>& image = previous[level];
    const Image<float> dx(image.width, image.height), dy(image.width, image.height);
    plain::scharr<plain::kAlongX>(image, dx, 0.03125f);
    plain::scharr<plain::kAlongY>(image, dy, 0.03125f);
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

using Track = decltype(zvpiOpticalFlowPyrLK_8u_C1R);
using InitAlloc = decltype(zvpiOpticalFlowPyrLKInitAlloc_8u_C1R);

template <int side, class T>
Work track(Track* function, InitAlloc* initAlloc, RoiSize size) {
  const Levels<T> previous(texture<T>(size, 0, 0)), next(texture<T>(size, kMotionX, kMotionY));
  const auto points = somePoints(size);
  OpticalFlowState* made = nullptr;
  initAlloc(&made, size, side, 0);
  const std::shared_ptr<OpticalFlowState> state(made, zvpiOpticalFlowPyrLKFree_8u_C1R);
  const auto found = std::make_shared<Found>(), expected = std::make_shared<Found>();
  const auto status = std::make_shared<std::array<std::int8_t, kPoints>>();
  const auto error = std::make_shared<std::array<float, kPoints>>();
  return {.library =
              [=] {
                std::copy(points.begin(), points.end(), found->begin());
                function(previous.record(), next.record(), &points[0].x, &(*found)[0].x, status->data(), error->data(),
                         kPoints, side, kLevels - 1, kMostSteps, kThreshold, state.get());
                for (std::size_t i = 0; i < kPoints; ++i)
                  if ((*status)[i] != 0) (*found)[i] = {0, 0};
              },
          .plain = [=] { plainFlow(previous, next, points, side, *expected); },
          .agree = [=] { return close(*found, *expected); }};
}

#define ZVP_TRACK(suffix, T, side)                                                                        \
  Case {                                                                                                  \
    "zvpiOpticalFlowPyrLK_" #suffix ", " #side "x" #side, [](RoiSize size) {                              \
      return track<side, T>(zvpiOpticalFlowPyrLK_##suffix, zvpiOpticalFlowPyrLKInitAlloc_##suffix, size); \
    }                                                                                                     \
  }
#define ZVP_TRACKS(suffix, T) ZVP_TRACK(suffix, T, 15), ZVP_TRACK(suffix, T, 21)

}  // namespace

std::vector<Case> opticalFlowCases() {
  return {ZVP_TRACKS(8u_C1R, std::uint8_t), ZVP_TRACKS(16u_C1R, std::uint16_t), ZVP_TRACKS(32f_C1R, float)};
}

}  // namespace bench::ZVP_LOOPS
