#include <zvpcv/features.h>

#include "cases.h"
#include "plain_features.h"

namespace bench {
namespace {

constexpr int kSquare = 0, kCross = 1, kBorder = 1;

// A response like that of a corner detector: rounded hills of both signs, 24 pixels apart, on a little noise.
template <class T>
Image<T> hills(RoiSize size) {
  auto map = randomImage<float>(size.width, size.height, 1);
  Image<T> out(size.width, size.height);
  for (int y = 0; y < size.height; ++y) {
    for (int x = 0; x < size.width; ++x) {
      const double hill = std::sin(x * 0.26) * std::sin(y * 0.26);
      out.row(y)[x] = static_cast<T>(10000 * hill * hill * hill + double(map.row(y)[x]) * 0.5);
    }
  }
  return out;
}

// Noise: one pixel in nine or so is an extremum.
template <class T>
Image<T> noise(RoiSize size) {
  auto map = randomImage<float>(size.width, size.height, 1);
  Image<T> out(size.width, size.height);
  for (int y = 0; y < size.height; ++y)
    for (int x = 0; x < size.width; ++x) out.row(y)[x] = static_cast<T>(80 * map.row(y)[x] - 10000);
  return out;
}

template <class T>
Work peaks(Status (*function)(const T*, int, RoiSize, T, Point*, int, int*, int, int, std::uint8_t*),
           const Image<T>& src, T threshold, int norm, RoiSize size) {
  struct Lists {
    std::vector<Point> found, expected;
    std::vector<std::uint8_t> buffer;
    int count = 0;
  };
  const auto lists = std::make_shared<Lists>();
  lists->found.resize(std::size_t(size.width) * std::size_t(size.height));
  int bytes = 0;
  zvpiFindPeaks3x3GetBufferSize_32f_C1R(size.width, &bytes);
  lists->buffer.resize(std::size_t(bytes));
  const int capacity = static_cast<int>(lists->found.size());
  return {.library =
              [=] {
                function(src.data(), src.step, size, threshold, lists->found.data(), capacity, &lists->count, norm,
                         kBorder, lists->buffer.data());
              },
          .plain = [=] { plain::findPeaks(src, threshold, norm == kCross, kBorder, lists->expected); },
          .agree =
              [=] {
                const auto count = std::size_t(lists->count);
                return count > 0 && count == lists->expected.size() &&
                       std::memcmp(lists->found.data(), lists->expected.data(), count * sizeof(Point)) == 0;
              }};
}

#define ZVP_PEAKS(suffix, T, map, threshold, norm, description)                                                  \
  Case {                                                                                                         \
    "zvpiFindPeaks3x3_" #suffix ", " description,                                                                \
        [](RoiSize size) { return peaks<T>(zvpiFindPeaks3x3_##suffix, map<T>(size), T(threshold), norm, size); } \
  }
#define ZVP_ALL_PEAKS(suffix, T)                                     \
  ZVP_PEAKS(suffix, T, hills, 5000, kSquare, "few peaks"),           \
      ZVP_PEAKS(suffix, T, hills, 5000, kCross, "few peaks, cross"), \
      ZVP_PEAKS(suffix, T, noise, 0, kSquare, "noise without a threshold")

}  // namespace

std::vector<Case> featuresCases() { return {ZVP_ALL_PEAKS(32s_C1R, std::int32_t), ZVP_ALL_PEAKS(32f_C1R, float)}; }

}  // namespace bench
