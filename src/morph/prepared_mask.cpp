#include "morph/prepared_mask.h"

#include "core/carver.h"
#include "core/runs.h"

namespace zvp::morph {

Parts::Parts(void* object, const Preparation& p) {
  const Flavour flavour = p.flavour;
  const bool words = flavour.elementBytes == 2;
  // That of bits leaves no room for an alignment that depends on the address.
  const int headerBytes = flavour.bits ? kBitHeader : int{sizeof(Header)};
  const int a = maskBytes(p.size).value(), selectors = flavour.bits ? a : a * kVectorBytes;
  Carver parts(object, preparedBytes(flavour, p.roiWidth, p.size));
  parts.take<uint8_t>(headerBytes, 1);
  record = parts.take<uint8_t>(words ? int{sizeof(DecompositionRecord)} : 0, 1);
  mask = parts.take<uint8_t>(a, flavour.bits ? 1 : kVectorBytes);
  dilate = parts.take<uint8_t>(selectors, 1);
  erode = parts.take<uint8_t>(selectors, 1);
  tables = words ? parts.take<int32_t>(int64_t{3} * p.size.height, sizeof(int32_t)) : nullptr;
  if (!words && !flavour.bits) parts.take<uint8_t>(bufferBytes(flavour, p.roiWidth, p.size).value(), 1);
}

void prepareMask(void* object, const Preparation& p) {
  const Parts parts(object, p);
  const int members = p.size.width * p.size.height;
  copyRun(p.mask, parts.mask, members);
  zeroRun(parts.mask + members, maskBytes(p.size).value() - members);
  const MaskShape shape = analyseMask(parts.mask, p.size, p.anchor);

  Header h = {};
  h.maskCopy.set(object, parts.mask);
  h.maskWidth = p.size.width;
  h.maskHeight = p.size.height;
  h.anchorX = p.anchor.x;
  h.anchorY = p.anchor.y;
  h.rightExtent = p.size.width - p.anchor.x - 1;
  h.bottomExtent = p.size.height - p.anchor.y - 1;
  h.dataType = p.flavour.type;
  h.channels = p.flavour.channels;
  h.maxRoiWidth = p.roiWidth;
  h.reserved = -1;
  h.mode = p.flavour.elementBytes == 2 || shape.mode == kEmptyMask ? shape.mode : kGeneralMask;
  fillPublishedWords(object, h, parts, p, shape);
  memcpy(object, &h, sizeof h);
}

}  // namespace zvp::morph
