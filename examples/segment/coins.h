// Finds the coins in a photograph: bright discs that do not touch, on a dark ground.
#ifndef ZVP_EXAMPLES_SEGMENT_COINS_H
#define ZVP_EXAMPLES_SEGMENT_COINS_H

#include <vector>

#include "common/image.h"

namespace examples {

struct Coin {
  int area;  // pixels
  Rect box;
};

struct Coins {
  std::vector<Coin> found;  // in the order of their numbers, 1 and up
  Image<uint16_t> numbers;  // for each pixel the number of its coin, or 0
};

Coins findCoins(const GrayImage& photo);

}  // namespace examples

#endif
