#include "sheet.h"

#include "common/error.h"

namespace examples {
namespace {

constexpr int kGap = 8;

ColourImage blankSheet(RoiSize tile, int tiles) {
  const int columns = Sheet::kColumns, rows = (tiles + columns - 1) / columns;
  const int64_t width = int64_t{columns} * (tile.width + kGap) - kGap;
  const int64_t height = int64_t{rows} * (tile.height + kGap) - kGap;
  if (width * height > kMaxPixels)
    throw Error("the picture, " + std::to_string(tile.width) + " x " + std::to_string(tile.height) +
                " pixels, is too large for a sheet of " + std::to_string(tiles));
  return ColourImage(static_cast<int>(width), static_cast<int>(height), 255);
}

}  // namespace

Sheet::Sheet(RoiSize tile, int tiles) : tile_(tile), picture_(blankSheet(tile, tiles)) {}

void Sheet::place(int number, const GrayImage& picture) {
  const int left = number % kColumns * (tile_.width + kGap), top = number / kColumns * (tile_.height + kGap);
  for (int y = 0; y < tile_.height; ++y) {
    const uint8_t* from = picture.row(y);
    uint8_t* to = picture_.at(left, top + y);
    for (int x = 0; x < tile_.width; ++x, to += 3) to[0] = to[1] = to[2] = from[x];
  }
}

}  // namespace examples
