// Sizes of prepared masks and of work buffers. The formulas are published; the names say what each term is room for,
// which is more than the engine needs.
#pragma once

#include <algorithm>

#include "core/bytes.h"
#include "morph/flavour.h"

namespace zvp::morph {

inline constexpr int kVectorBytes = 16;
inline constexpr int kLine = 64, kHalfLine = kLine / 2;  // of the cache

constexpr Bytes roundToVector(Bytes n) { return roundUp(n, kVectorBytes); }

constexpr Bytes maskBytes(RoiSize mask) { return roundToVector(Bytes(mask.width) * mask.height); }

// The part of the work buffer that holds rows: enough for mask.height x mask.height + 1 rows without borders.
constexpr Bytes ringBytes(Flavour flavour, int roiWidth, RoiSize mask) {
  const Bytes row = Bytes(roiWidth) * flavour.pixelBytes() + kHalfLine;
  return (Bytes(mask.height) * mask.height + 1) * row;
}

// For every row of the mask a row of a rectangle's extrema. Bytes keep two images of it, and their channels count as
// one; words keep two of 32 bits in each of two directions, floats two of every channel.
constexpr Bytes rectangleBytes(Flavour flavour, int roiWidth, RoiSize mask) {
  constexpr int kRowSlack = 80, kSlack = 32;
  const int directions = flavour.elementBytes == 2 ? 2 : 1;
  const int pixel = flavour.elementBytes == 1 ? 2 : flavour.elementBytes == 2 ? 4 : 2 * flavour.pixelBytes();
  return ((Bytes(roiWidth) * pixel + kRowSlack) * mask.height + kSlack) * directions;
}

constexpr Bytes bufferBytes(Flavour flavour, int roiWidth, RoiSize mask) {
  constexpr int kListEntry = 20, kListSlack = 36;     // of a list with an entry for every row of the mask
  constexpr int kPointers = 3 * 8;                    // for every row of the mask
  constexpr int kAnalysis = 16, kAnalysisSlack = 48;  // four words for every row of the mask, and twelve
  const Bytes h = mask.height;
  const Bytes general = ringBytes(flavour, roiWidth, mask) + h * kListEntry + kListSlack;
  const Bytes rectangle = rectangleBytes(flavour, roiWidth, mask);
  return std::max(rectangle, general) + roundToVector(h * kPointers) + maskBytes(mask) +
         roundToVector(h * kAnalysis + kAnalysisSlack);
}

// A prepared mask: header, mask, the selectors of both operations. Bits have selectors of a byte, the others of a
// vector, and tables with up to four words for every row. Work memory of its own stands behind them, but for words.
inline constexpr int kBitHeader = 80;
constexpr Bytes preparedBytes(Flavour flavour, int roiWidth, RoiSize mask) {
  constexpr int kHeader = 128, kTableRow = 16;
  if (flavour.bits) return maskBytes(mask) * 3 + kBitHeader;
  const Bytes parts = maskBytes(mask) * (1 + 2 * kVectorBytes) + Bytes(mask.height) * kTableRow + kHeader;
  return flavour.elementBytes == 2 ? parts : parts + bufferBytes(flavour, roiWidth, mask);
}

}  // namespace zvp::morph
