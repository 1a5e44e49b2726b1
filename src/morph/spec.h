// The object that describes an erosion or dilation: MorphBorderSpec and MorphState alike. It may stand at any address
// (with 16-bit elements at multiples of 4), so its header is read and written as a whole.
#pragma once

#include <stdint.h>
#include <string.h>

#include "core/link.h"
#include "morph/mask.h"
#include "morph/sizes.h"
#include "zvpcv/morphology.h"

namespace zvp {

struct SpecHeader {
  Link<uint8_t> maskCopy, dilateSelectors, erodeSelectors;
  Link<int32_t> decomposition, decompositionRecord;
  int32_t maskWidth, maskHeight, anchorX, anchorY, rightExtent, bottomExtent;
  int32_t rowBufferLength, workSize;
  int32_t dataType, channels, maxRoiWidth;
  int32_t reserved;  // -1
  int32_t mode;      // a MaskMode
};
static_assert(sizeof(SpecHeader) == 72);

inline SpecHeader readHeader(const void* spec) {
  SpecHeader header;
  memcpy(&header, spec, sizeof header);
  return header;
}

// What a filter needs of a specification.
struct StructuringElement {
  const uint8_t* mask;
  RoiSize size;
  Point anchor;
  int maxRoiWidth, mode;

  explicit StructuringElement(const void* spec) {
    const SpecHeader h = readHeader(spec);
    mask = h.maskCopy.get(spec);
    size = {h.maskWidth, h.maskHeight};
    anchor = {h.anchorX, h.anchorY};
    maxRoiWidth = h.maxRoiWidth;
    mode = h.mode;
  }

  int rightExtent() const { return size.width - anchor.x - 1; }
  int bottomExtent() const { return size.height - anchor.y - 1; }
  bool hasKnownMode() const { return mode >= kGeneralMask && mode <= kEmptyMask; }
};

constexpr Point maskCentre(RoiSize mask) { return {(mask.width - 1) >> 1, (mask.height - 1) >> 1}; }

// Fills a specification; all arguments are valid and the object has the size that morphSizes gives.
void fillSpec(void* spec, Flavour flavour, int roiWidth, const uint8_t* mask, RoiSize size, Point anchor);

// The work memory inside a state of the older family: behind the selectors, as large as a work buffer.
uint8_t* stateWorkMemory(void* state);

// Checks of the border-aware members, in their order, as far as they concern the specification.
Status initBorderSpec(Flavour flavour, int roiWidth, const uint8_t* mask, RoiSize size, void* spec,
                      const uint8_t* buffer);
Status borderSizes(Flavour flavour, int roiWidth, RoiSize mask, int* specSize, int* bufferSize);

}  // namespace zvp
