#include "morph/sizes.h"

#include <algorithm>

namespace zvp {
namespace {

// The buffer of the path for rectangles; three and four channels of bytes count as one.
int64_t rectangleBytes(Flavour flavour, int64_t w, int64_t h) {
  if (flavour.elementBytes == 2) return 2 * (4 * w + 80) * h + 64;
  const int64_t bytesPerPixel = flavour.elementBytes == 4 ? 8 * flavour.channels : 2;
  return (bytesPerPixel * w + 80) * h + 32;
}

}  // namespace

bool morphSizes(Flavour flavour, int roiWidth, RoiSize mask, MorphSizes* sizes) {
  const int64_t w = roiWidth, h = mask.height;
  // Each of these alone makes a size too large; below, no product wraps.
  if (int64_t{mask.width} * h > INT32_MAX || h * h > INT32_MAX || w * flavour.pixelBytes() > INT32_MAX) return false;
  const int64_t a = maskBytes(mask);
  const int64_t general = ringBytes(roiWidth, mask, flavour.pixelBytes()) + 20 * h + 36;
  sizes->buffer = std::max(rectangleBytes(flavour, w, h), general) + roundUp(24 * h, 16) + a + roundUp(16 * h + 48, 16);
  if (flavour.bits) {
    sizes->spec = 3 * a + 80;
  } else {
    sizes->spec = 33 * a + 16 * h + 128 + (flavour.elementBytes == 2 ? 0 : sizes->buffer);
  }
  return sizes->spec <= INT32_MAX && sizes->buffer <= INT32_MAX;
}

}  // namespace zvp
