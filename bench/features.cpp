#include <zvpcv/features.h>

#include "cases.h"
#include "plain_features.h"

namespace bench::ZVP_LOOPS {
namespace {

constexpr int kSquare = 0, kCross = 1, kBorder = 1;

enum class Map { kHills, kNoise };

// Hills: a response like that of a corner detector, rounded, of both signs, 24 pixels apart, on a little noise.
// Noise: one pixel in nine or so is an extremum.
template <class T>
Image<T> draw(Map map, RoiSize size) {
  const auto noise = randomImage<float>(size.width, size.height, 1);
  const Image<T> out(size.width, size.height);
  for (int y = 0; y < size.height; ++y) {
    for (int x = 0; x < size.width; ++x) {
      const double hill = std::sin(x * 0.26) * std::sin(y * 0.26), grain = double(noise.row(y)[x]);
      out.row(y)[x] = T(map == Map::kHills ? 10000 * hill * hill * hill + grain * 0.5 : 80 * grain - 10000);
    }
  }
  return out;
}

template <Map map, int norm, class T>
Work peaks(Status (*function)(const T*, int, RoiSize, T, Point*, int, int*, int, int, std::uint8_t*), RoiSize size) {
  const auto src = draw<T>(map, size);
  const T threshold = map == Map::kHills ? 5000 : 0;
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

#define ZVP_PEAKS(function)                                                      \
  ZVP_CASE_OF((peaks<Map::kHills, kSquare>), function, ", few peaks"),           \
      ZVP_CASE_OF((peaks<Map::kHills, kCross>), function, ", few peaks, cross"), \
      ZVP_CASE_OF((peaks<Map::kNoise, kSquare>), function, ", noise without a threshold")

}  // namespace

std::vector<Case> featuresCases() { return {ZVP_PEAKS(zvpiFindPeaks3x3_32s_C1R), ZVP_PEAKS(zvpiFindPeaks3x3_32f_C1R)}; }

}  // namespace bench::ZVP_LOOPS
