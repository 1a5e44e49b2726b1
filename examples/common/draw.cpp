#include "common/draw.h"

#include <algorithm>

namespace examples {
namespace {

void fillBox(ColourImage& image, Rect box, Colour colour) {
  const int left = std::max(box.x, 0), right = std::min(box.x + box.width, image.width());
  const int top = std::max(box.y, 0), bottom = std::min(box.y + box.height, image.height());
  for (int y = top; y < bottom; ++y)
    for (int x = left; x < right; ++x) {
      uint8_t* pixel = image.at(x, y);
      pixel[0] = colour.red, pixel[1] = colour.green, pixel[2] = colour.blue;
    }
}

}  // namespace

void drawBox(ColourImage& image, Rect box, int thickness, Colour colour) {
  const int t = std::min({thickness, box.width, box.height});
  fillBox(image, {box.x, box.y, box.width, t}, colour);
  fillBox(image, {box.x, box.y + box.height - t, box.width, t}, colour);
  fillBox(image, {box.x, box.y, t, box.height}, colour);
  fillBox(image, {box.x + box.width - t, box.y, t, box.height}, colour);
}

}  // namespace examples
