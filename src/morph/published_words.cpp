#include "morph/prepared_mask.h"

#include <algorithm>

#include "simd/registers.h"

namespace zvp::morph {
namespace {

// Non-members neither raise a maximum nor lower a minimum.
void fillSelectors(const Parts& parts, Flavour flavour, int count) {
  constexpr uint32_t kLargestFloat = 0x7f7fffff, kSmallestFloat = 0xff7fffff;
  const bool floats = flavour.type == DataType32f;
  const uint32_t high = floats ? kLargestFloat : UINT32_MAX, low = floats ? kSmallestFloat : 0;
  for (int i = 0; i < count; ++i) {
    const uint32_t dilate = parts.mask[i] != 0 ? high : low, erode = parts.mask[i] != 0 ? low : high;
    if (flavour.bits) {
      parts.dilate[i] = static_cast<uint8_t>(dilate);
      parts.erode[i] = static_cast<uint8_t>(erode);
    } else {
      simd::store(parts.dilate + ptrdiff_t{i} * kVectorBytes, simd::broadcast<uint32_t, 4>(dilate));
      simd::store(parts.erode + ptrdiff_t{i} * kVectorBytes, simd::broadcast<uint32_t, 4>(erode));
    }
  }
}

// The distinct run lengths, sorted; then for every member row its offset from the first one; then the index of its
// length. Returns the number of lengths.
int fillTables(int32_t* tables, const uint8_t* mask, RoiSize size, const MaskShape& shape) {
  int32_t *lengths = tables, *offsets = lengths + shape.memberRows, *indices = offsets + shape.memberRows;
  int n = 0;
  forEachRun(mask, size, [&](int row, int, int length) {
    offsets[n] = row - shape.firstRow;
    lengths[n] = indices[n] = length;
    ++n;
    return true;
  });
  std::sort(lengths, lengths + n);
  int32_t* end = std::unique(lengths, lengths + n);
  for (int i = 0; i < n; ++i) indices[i] = static_cast<int32_t>(std::lower_bound(lengths, end, indices[i]) - lengths);
  return static_cast<int>(end - lengths);
}

void fillDecomposition(void* object, Header& header, const Parts& parts, RoiSize size, const MaskShape& shape) {
  DecompositionRecord record = {
      shape.boundingWidth, shape.memberRows, header.anchorX - shape.firstColumn, header.anchorY - shape.firstRow, 0, 0};
  if (shape.mode == kRowSegments) {
    header.decomposition.set(object, parts.tables);
    record.lengths = fillTables(parts.tables, parts.mask, size, shape);
    record.memberRows = shape.memberRows;
  }
  header.decompositionRecord.set(object, parts.record);
  memcpy(parts.record, &record, sizeof record);
}

// Selectors, mask and rows with borders; only the low word is kept.
int64_t workBytes(Flavour flavour, int roiWidth, RoiSize size) {
  constexpr int kSlack = 96;
  const int64_t row = roundUp((int64_t{roiWidth} + size.width) * flavour.pixelBytes(), kVectorBytes);
  const int64_t rows = std::max(2 * row, int64_t{flavour.pixelBytes()}) * size.height;
  return (1 + 2 * kVectorBytes) * int64_t{maskBytes(size).value()} + rows + kSlack;
}

}  // namespace

void fillPublishedWords(void* object, Header& header, const Parts& parts, const Preparation& p,
                        const MaskShape& shape) {
  const Flavour flavour = p.flavour;
  const bool words = flavour.elementBytes == 2, runs = shape.mode == kRectangle || shape.mode == kRowSegments;
  header.dilateSelectors.set(object, parts.dilate);
  header.erodeSelectors.set(object, parts.erode);
  fillSelectors(parts, flavour, maskBytes(p.size).value());
  if (words && runs) fillDecomposition(object, header, parts, p.size, shape);

  // A row with borders in elements, or as it is filtered: words, or of masks without runs words of 32 bits.
  const Bytes elements = (Bytes(p.roiWidth) + p.size.width) * flavour.channels;
  header.rowBufferLength = roundToVector(elements * (words ? runs ? 2 : 4 : 1)).value();
  if (words) return;
  header.workSize = static_cast<int32_t>(workBytes(flavour, p.roiWidth, p.size));
}

}  // namespace zvp::morph
