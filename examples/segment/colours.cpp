#include "colours.h"

#include <algorithm>
#include <cmath>

#include "common/draw.h"
#include "common/error.h"

namespace examples {
namespace {

// A strong colour; hues 0 to 1 go once around, from red over green and blue.
Colour hueColour(double hue) {
  const auto channel = [hue](double shift) {
    const double distance = std::abs(std::remainder(hue - shift, 1.0)) * 6;  // from the channel's own hue, 0 to 3
    return uint8_t(std::lround(255 * std::clamp(2 - distance, 0.0, 1.0)));
  };
  return {channel(0), channel(1.0 / 3), channel(2.0 / 3)};
}

// Neighbours in number are far apart in hue.
Colour numberColour(int number) { return hueColour(number * 0.61803398875); }

void paint(uint8_t* pixel, Colour colour) {
  pixel[0] = colour.red;
  pixel[1] = colour.green;
  pixel[2] = colour.blue;
}

Colour shaded(Colour colour, uint8_t light) {
  const auto mix = [light](uint8_t c) { return uint8_t((c + light) / 2); };
  return {mix(colour.red), mix(colour.green), mix(colour.blue)};
}

void paintMap(ColourImage& picture, int left, const Disparities& map) {
  constexpr double kFarHue = 0.7;
  for (int y = 0; y < map.height(); ++y) {
    for (int x = 0; x < map.width(); ++x) {
      const int16_t d = *map.at(x, y);
      const double nearness = double(d) / kMaxDisparity;
      paint(picture.at(left + x, y), d == kUnknown ? Colour{0, 0, 0} : hueColour(kFarHue * (1 - nearness)));
    }
  }
}

}  // namespace

ColourImage paintCoins(const GrayImage& photo, const Coins& coins) {
  ColourImage picture(photo.width(), photo.height());
  for (int y = 0; y < photo.height(); ++y) {
    for (int x = 0; x < photo.width(); ++x) {
      const uint8_t light = *photo.at(x, y);
      const int number = *coins.numbers.at(x, y);
      paint(picture.at(x, y), number == 0 ? Colour{light, light, light} : shaded(numberColour(number), light));
    }
  }
  for (size_t i = 0; i < coins.found.size(); ++i) drawBox(picture, coins.found[i].box, 1, numberColour(int(i) + 1));
  return picture;
}

ColourImage paintDisparities(const Disparities& left, const Disparities& right) {
  constexpr int kGap = 8;
  if (2 * int64_t{left.width()} * left.height() > kMaxPixels)
    throw Error("the pictures are too large to lay two side by side");
  ColourImage picture(2 * left.width() + kGap, left.height(), 255);
  paintMap(picture, 0, left);
  paintMap(picture, left.width() + kGap, right);
  return picture;
}

}  // namespace examples
