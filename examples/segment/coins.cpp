#include "coins.h"

#include <zvpcv/distance.h>
#include <zvpcv/features.h>

#include <algorithm>

#include "common/blur.h"
#include "common/error.h"
#include "threshold.h"

namespace examples {
namespace {

constexpr int kGroundExtent = 71;  // pixels, more than a coin has
constexpr int kLeastRadius = 8;    // pixels
constexpr uint16_t kUnnumbered = UINT16_MAX;

Image<float> squaredDistances(const GrayImage& mask) {
  int bytes = 0;
  require(zvpiTrueDistanceTransformGetBufferSize_8u32f_C1R(mask.size(), &bytes),
          "zvpiTrueDistanceTransformGetBufferSize_8u32f_C1R");
  std::vector<uint8_t> buffer(bytes);
  Image<float> squares(mask.width(), mask.height());
  require(zvpiTrueDistanceTransform_8u32f_C1R(mask.data(), mask.step(), squares.data(), squares.step(), mask.size(),
                                              buffer.data()),
          "zvpiTrueDistanceTransform_8u32f_C1R");
  return squares;
}

// Where the ground is nowhere near, the farthest places first: the middles of coins.
std::vector<Point> middles(const Image<float>& squares) {
  constexpr int kSquareOfEight = 0, kBorder = 1;
  if (std::min(squares.width(), squares.height()) < 2 * kBorder) return {};
  int bytes = 0, count = 0;
  require(zvpiFindPeaks3x3GetBufferSize_32f_C1R(squares.width(), &bytes), "zvpiFindPeaks3x3GetBufferSize_32f_C1R");
  std::vector<uint8_t> buffer(bytes);
  std::vector<Point> peaks(size_t(squares.width()) * squares.height());
  require(zvpiFindPeaks3x3_32f_C1R(squares.data(), squares.step(), squares.size(), kLeastRadius * kLeastRadius,
                                   peaks.data(), int(peaks.size()), &count, kSquareOfEight, kBorder, buffer.data()),
          "zvpiFindPeaks3x3_32f_C1R");
  peaks.resize(count);
  return peaks;
}

Image<uint16_t> unnumbered(const GrayImage& mask) {
  Image<uint16_t> numbers(mask.width(), mask.height());
  for (int y = 0; y < mask.height(); ++y)
    for (int x = 0; x < mask.width(); ++x) *numbers.at(x, y) = *mask.at(x, y) != 0 ? kUnnumbered : 0;
  return numbers;
}

// Fills the regions about the middles with numbers 1, 2 and so on. A region with several middles is one coin.
std::vector<Coin> number(Image<uint16_t>& numbers, const std::vector<Point>& middles) {
  int bytes = 0;
  require(zvpiFloodFillGetSize(numbers.size(), &bytes), "zvpiFloodFillGetSize");
  std::vector<uint8_t> buffer(bytes);
  std::vector<Coin> coins;
  for (const Point middle : middles) {
    if (*numbers.at(middle.x, middle.y) != kUnnumbered) continue;
    if (coins.size() + 1 == kUnnumbered) throw Error("more than 65534 coins");
    ConnectedComponent component;
    require(zvpiFloodFill_4Con_16u_C1IR(numbers.data(), numbers.step(), numbers.size(), middle,
                                        uint16_t(coins.size() + 1), &component, buffer.data()),
            "zvpiFloodFill_4Con_16u_C1IR");
    coins.push_back({int(component.area), component.rect});
  }
  return coins;
}

// What is too small for a coin.
void clearUnnumbered(Image<uint16_t>& numbers) {
  for (int y = 0; y < numbers.height(); ++y)
    std::replace(numbers.row(y), numbers.row(y) + numbers.width(), kUnnumbered, uint16_t{0});
}

}  // namespace

Coins findCoins(const GrayImage& photo) {
  const GrayImage flat = flatten(blur(photo), kGroundExtent);
  const GrayImage mask = above(flat, otsuThreshold(flat));
  Coins coins{{}, unnumbered(mask)};
  coins.found = number(coins.numbers, middles(squaredDistances(mask)));
  clearUnnumbered(coins.numbers);
  return coins;
}

}  // namespace examples
