// The object of the composite operations: a mask and the same rotated by 180 degrees, each prepared.
#pragma once

#include "morph/prepared_mask.h"

struct MorphAdvSpec {
  zvp::Link<uint8_t> forwardSpec, reflectedSpec;
  zvp::Link<uint8_t> tempImage;  // in the work buffer given to Init, which need not live on: nothing uses it
  int32_t tempCapacity, bufferOffset;
};
static_assert(sizeof(MorphAdvSpec) == 20);

namespace zvp::morph {

// Row step of the intermediate image.
constexpr Bytes tempStep(Flavour flavour, int64_t width) {
  return roundUp(flavour.bits ? Bytes((width + 7) >> 3) : Bytes(width) * flavour.pixelBytes(), kHalfLine);
}

// What an operation needs of its object and work buffer.
struct CompositeMask {
  StructuringElement forward, reflected;
  int64_t capacity;             // of the intermediate image, bytes
  uint8_t *temp, *work, *rows;  // the intermediate image and two work buffers

  CompositeMask(Flavour flavour, const MorphAdvSpec* spec, uint8_t* buffer);
};

}  // namespace zvp::morph
