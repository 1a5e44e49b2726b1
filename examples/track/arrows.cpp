#include "arrows.h"

#include <algorithm>
#include <cmath>

namespace examples {
namespace {

// Every half pixel a dot of 2 x 2 pixels.
void drawLine(ColourImage& image, Point32f from, Point32f to, Colour colour) {
  constexpr int kDot = 2;
  const float dx = to.x - from.x, dy = to.y - from.y;
  const int dots = int(2 * std::hypot(dx, dy)) + 1;
  for (int i = 0; i <= dots; ++i) {
    const float t = float(i) / float(dots);
    const int x = int(std::lround(from.x + t * dx)), y = int(std::lround(from.y + t * dy));
    drawBox(image, {x, y, kDot, kDot}, kDot, colour);
  }
}

uint8_t brightness(float v) { return uint8_t(std::clamp(v, 0.0f, 1.0f) * 255); }

}  // namespace

Colour motionColour(float length, float longest) {
  const float t = longest > 0 ? std::min(length / longest, 1.0f) : 0.0f;
  return {brightness(2 * t - 0.5f), brightness(1.5f - std::fabs(3 * t - 1.5f)), brightness(1.5f - 3 * t)};
}

void drawArrow(ColourImage& image, Point32f from, Point32f to, Colour colour) {
  constexpr float kLongestHead = 6, kHalfAngle = 0.5f;
  drawLine(image, from, to, colour);
  const float dx = to.x - from.x, dy = to.y - from.y, back = std::atan2(-dy, -dx);
  const float head = std::min(std::hypot(dx, dy) / 2, kLongestHead);
  for (const float angle : {back - kHalfAngle, back + kHalfAngle})
    drawLine(image, to, {to.x + head * std::cos(angle), to.y + head * std::sin(angle)}, colour);
}

}  // namespace examples
