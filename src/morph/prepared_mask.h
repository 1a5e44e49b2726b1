// A prepared mask: the object that describes an erosion or dilation, MorphBorderSpec and MorphState alike. It may stand
// at any address, so its header is read and written as a whole.
#pragma once

#include <stdint.h>
#include <string.h>

#include "core/link.h"
#include "morph/mask.h"
#include "morph/sizes.h"
#include "zvpcv/morphology.h"

namespace zvp::morph {

struct Header {
  Link<uint8_t> maskCopy, dilateSelectors, erodeSelectors;
  Link<int32_t> decomposition;
  Link<uint8_t> decompositionRecord;
  int32_t maskWidth, maskHeight, anchorX, anchorY, rightExtent, bottomExtent;
  int32_t rowBufferLength, workSize;
  int32_t dataType, channels, maxRoiWidth;
  int32_t reserved;  // -1
  int32_t mode;      // a MaskMode
};
static_assert(sizeof(Header) == 72);

inline Header readHeader(const void* object) {
  Header header;
  memcpy(&header, object, sizeof header);
  return header;
}

// What a filter needs of a prepared mask.
struct StructuringElement {
  const uint8_t* mask;
  RoiSize size;
  Point anchor;
  int maxRoiWidth, mode;

  static StructuringElement of(const void* object) {
    const Header h = readHeader(object);
    return {h.maskCopy.get(object), {h.maskWidth, h.maskHeight}, {h.anchorX, h.anchorY}, h.maxRoiWidth, h.mode};
  }

  int rightExtent() const { return size.width - anchor.x - 1; }
  int bottomExtent() const { return size.height - anchor.y - 1; }
  bool hasKnownMode() const { return mode >= kGeneralMask && mode <= kEmptyMask; }
};

// What a mask is prepared for.
struct Preparation {
  Flavour flavour;
  int roiWidth;  // of the widest region
  const uint8_t* mask;
  RoiSize size;
  Point anchor;
};

// Of an even number of members the first of the two in the middle. Sizes may be such as the checks refuse.
constexpr Point maskCentre(RoiSize mask) {
  const auto middle = [](int n) { return n % 2 == 0 ? n / 2 - 1 : n / 2; };
  return {middle(mask.width), middle(mask.height)};
}

// Of a mask that is a rectangle or has one run in every row.
struct DecompositionRecord {
  int32_t width, rows, anchorX, anchorY;  // of the members
  int32_t lengths, memberRows;            // how long the tables are; 0 for a rectangle
};
static_assert(sizeof(DecompositionRecord) == 24);

// Where the parts of an object stand.
struct Parts {
  uint8_t* record;  // words only: a DecompositionRecord, of any alignment
  uint8_t *mask, *dilate, *erode;
  int32_t* tables;  // words only: room for three for every row of the mask

  Parts(void* object, const Preparation& p);
};

// Fills those words that are published but that no filter reads: selectors, the decomposition of masks for words, lengths
// of buffers with borders.
void fillPublishedWords(void* object, Header& header, const Parts& parts, const Preparation& p, const MaskShape& shape);

// Fills an object of preparedBytes; all arguments are valid.
void prepareMask(void* object, const Preparation& p);

// The work buffer inside a state, behind its other parts.
inline uint8_t* stateWork(const MorphState* state) {
  const Header h = readHeader(state);
  return h.erodeSelectors.get(state) + kVectorBytes * maskBytes({h.maskWidth, h.maskHeight}).value();
}

}  // namespace zvp::morph
