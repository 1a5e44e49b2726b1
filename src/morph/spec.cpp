// Builds the specifications of erosion and dilation.
#include "morph/spec.h"

#include <algorithm>

#include "core/carver.h"
#include "core/checks.h"
#include "core/memory.h"

namespace zvp {
namespace {

struct Record {
  int32_t width, rows, anchorX, anchorY;
  int32_t lengths, memberRows;  // of the tables; 0 for a rectangle
};
static_assert(sizeof(Record) == 24);

// Where the parts of an object stand.
struct Parts {
  Record* record;  // 16-bit elements only
  uint8_t *mask, *dilate, *erode;
  int32_t* tables;

  Parts(void* spec, Flavour flavour, RoiSize size) {
    constexpr int kBitsOffset = 80;  // the size leaves no room for an alignment that depends on the address
    const auto a = static_cast<size_t>(maskBytes(size));
    const size_t selectors = flavour.bits ? a : 16 * a;
    Carver parts(static_cast<uint8_t*>(spec) + (flavour.bits ? kBitsOffset : int{sizeof(SpecHeader)}));
    record = flavour.elementBytes == 2 ? parts.take<Record>(1, 1) : nullptr;
    mask = parts.take<uint8_t>(a, flavour.bits ? 1 : 16);
    dilate = parts.take<uint8_t>(selectors, 1);
    erode = parts.take<uint8_t>(selectors, 1);
    tables = parts.take<int32_t>(0, 1);
  }
};

// Non-members neither raise a maximum nor lower a minimum.
void fillSelectors(const Parts& parts, Flavour flavour, const uint8_t* mask, int64_t elements) {
  const bool floats = flavour.type == DataType32f;
  const uint32_t high = floats ? 0x7f7fffff : 0xffffffff, low = floats ? 0xff7fffff : 0;
  for (int64_t i = 0; i < elements; ++i) {
    const uint32_t dilate = mask[i] != 0 ? high : low, erode = mask[i] != 0 ? low : high;
    if (flavour.bits) {
      parts.dilate[i] = static_cast<uint8_t>(dilate);
      parts.erode[i] = static_cast<uint8_t>(erode);
      continue;
    }
    for (int k = 0; k < 4; ++k) {
      memcpy(parts.dilate + 16 * i + 4 * k, &dilate, sizeof dilate);
      memcpy(parts.erode + 16 * i + 4 * k, &erode, sizeof erode);
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

void fillDecomposition(void* spec, SpecHeader& header, const Parts& parts, const MaskShape& shape, RoiSize size) {
  if (shape.mode != kRectangle && shape.mode != kRowSegments) return;
  header.decompositionRecord.set(spec, reinterpret_cast<int32_t*>(parts.record));
  *parts.record = {
      shape.boundingWidth, shape.memberRows, header.anchorX - shape.firstColumn, header.anchorY - shape.firstRow, 0, 0};
  if (shape.mode == kRectangle) return;
  header.decomposition.set(spec, parts.tables);
  parts.record->lengths = fillTables(parts.tables, parts.mask, size, shape);
  parts.record->memberRows = shape.memberRows;
}

// The lengths that the header states; they describe buffers with borders, which the filters do without.
int64_t rowBufferLength(Flavour flavour, int roiWidth, RoiSize size, int mode) {
  const int64_t elements = (int64_t{roiWidth} + size.width) * flavour.channels;
  const bool runs = mode == kRectangle || mode == kRowSegments;
  return roundUp(flavour.elementBytes == 2 ? elements * (runs ? 2 : 4) : elements, 16);
}

int64_t workSize(Flavour flavour, int roiWidth, RoiSize size) {
  if (flavour.elementBytes == 2) return 0;
  const int64_t row = roundUp((int64_t{roiWidth} + size.width) * flavour.pixelBytes(), 16);
  return 33 * maskBytes(size) + std::max(2 * size.height * row, int64_t{flavour.pixelBytes()} * size.height) + 96;
}

Status positive(int roiWidth, RoiSize mask) {
  return check(roiWidth >= 1 && mask.width >= 1 && mask.height >= 1, ErrSize);
}

}  // namespace

void fillSpec(void* spec, Flavour flavour, int roiWidth, const uint8_t* mask, RoiSize size, Point anchor) {
  const Parts parts(spec, flavour, size);
  const int64_t elements = int64_t{size.width} * size.height, padding = maskBytes(size) - elements;
  memcpy(parts.mask, mask, static_cast<size_t>(elements));
  memset(parts.mask + elements, 0, static_cast<size_t>(padding));
  fillSelectors(parts, flavour, parts.mask, maskBytes(size));
  const MaskShape shape = analyseMask(parts.mask, size, anchor);

  SpecHeader h = {};
  h.maskCopy.set(spec, parts.mask);
  h.dilateSelectors.set(spec, parts.dilate);
  h.erodeSelectors.set(spec, parts.erode);
  h.maskWidth = size.width;
  h.maskHeight = size.height;
  h.anchorX = anchor.x;
  h.anchorY = anchor.y;
  h.rightExtent = size.width - anchor.x - 1;
  h.bottomExtent = size.height - anchor.y - 1;
  h.dataType = flavour.type;
  h.channels = flavour.channels;
  h.maxRoiWidth = roiWidth;
  h.reserved = -1;
  if (flavour.elementBytes == 2) {
    h.mode = shape.mode;
    fillDecomposition(spec, h, parts, shape, size);
  } else {
    h.mode = shape.mode == kEmptyMask ? kEmptyMask : kGeneralMask;
  }
  h.rowBufferLength = static_cast<int32_t>(rowBufferLength(flavour, roiWidth, size, h.mode));
  h.workSize = static_cast<int32_t>(workSize(flavour, roiWidth, size));
  memcpy(spec, &h, sizeof h);
}

uint8_t* stateWorkMemory(void* state) {
  const SpecHeader h = readHeader(state);
  return h.erodeSelectors.get(state) + 16 * maskBytes({h.maskWidth, h.maskHeight});
}

Status initBorderSpec(Flavour flavour, int roiWidth, const uint8_t* mask, RoiSize size, void* spec,
                      const uint8_t* buffer) {
  if (Status s = firstFailure(nonNull(mask, buffer), nonNull(static_cast<uint8_t*>(spec)), positive(roiWidth, size)))
    return s;
  MorphSizes sizes;
  if (!morphSizes(flavour, roiWidth, size, &sizes)) return ErrSize;
  fillSpec(spec, flavour, roiWidth, mask, size, maskCentre(size));
  return StatusOk;
}

Status borderSizes(Flavour flavour, int roiWidth, RoiSize mask, int* specSize, int* bufferSize) {
  if (Status s = firstFailure(nonNull(specSize, bufferSize), positive(roiWidth, mask))) return s;
  MorphSizes sizes;
  if (!morphSizes(flavour, roiWidth, mask, &sizes)) return ErrSize;
  *specSize = static_cast<int>(sizes.spec);
  *bufferSize = static_cast<int>(sizes.buffer);
  return StatusOk;
}

namespace {

Status stateSize(Flavour flavour, int roiWidth, const uint8_t* mask, RoiSize maskSize, int* size) {
  int bufferSize;
  if (Status s = nonNull(mask)) return s;
  return borderSizes(flavour, roiWidth, maskSize, size, size == nullptr ? nullptr : &bufferSize);
}

// What Init and InitAlloc check alike.
Status checkState(const uint8_t* mask, const void* state, int roiWidth, RoiSize size, Point anchor) {
  const bool inside = anchor.x >= 0 && anchor.x < size.width && anchor.y >= 0 && anchor.y < size.height;
  return firstFailure(nonNull(mask, static_cast<const uint8_t*>(state)), positive(roiWidth, size),
                      check(inside, ErrAnchor));
}

Status initState(Flavour flavour, int roiWidth, const uint8_t* mask, RoiSize size, Point anchor, MorphState* state) {
  if (Status s = checkState(mask, state, roiWidth, size, anchor)) return s;
  MorphSizes sizes;
  if (!morphSizes(flavour, roiWidth, size, &sizes)) return ErrSize;
  fillSpec(state, flavour, roiWidth, mask, size, anchor);
  return StatusOk;
}

Status allocState(Flavour flavour, int roiWidth, const uint8_t* mask, RoiSize size, Point anchor, MorphState** state) {
  if (Status s = checkState(mask, state, roiWidth, size, anchor)) return s;
  MorphSizes sizes;
  if (!morphSizes(flavour, roiWidth, size, &sizes)) return ErrNoMemory;
  void* block = allocBytes(static_cast<int32_t>(sizes.spec));
  if (block == nullptr) return ErrNoMemory;
  fillSpec(block, flavour, roiWidth, mask, size, anchor);
  *state = static_cast<MorphState*>(block);
  return StatusOk;
}

}  // namespace
}  // namespace zvp

using zvp::Flavour, zvp::kBits, zvp::kFlavour;

#define ZVP_BORDER_MEMBER(NAME, FLAVOUR)                                                                               \
  Status zvpiMorphologyBorderGetSize_##NAME(int roiWidth, RoiSize maskSize, int* pSpecSize, int* pBufferSize) {        \
    return zvp::borderSizes(FLAVOUR, roiWidth, maskSize, pSpecSize, pBufferSize);                                      \
  }                                                                                                                    \
  Status zvpiMorphologyBorderInit_##NAME(int roiWidth, const uint8_t* pMask, RoiSize maskSize, MorphBorderSpec* pSpec, \
                                         uint8_t* pBuffer) {                                                           \
    return zvp::initBorderSpec(FLAVOUR, roiWidth, pMask, maskSize, pSpec, pBuffer);                                    \
  }

#define ZVP_STATE_MEMBER(NAME, FLAVOUR)                                                                     \
  Status zvpiMorphologyGetSize_##NAME(int roiWidth, const uint8_t* pMask, RoiSize maskSize, int* pSize) {   \
    return zvp::stateSize(FLAVOUR, roiWidth, pMask, maskSize, pSize);                                       \
  }                                                                                                         \
  Status zvpiMorphologyInit_##NAME(int roiWidth, const uint8_t* pMask, RoiSize maskSize, Point anchor,      \
                                   MorphState* pState) {                                                    \
    return zvp::initState(FLAVOUR, roiWidth, pMask, maskSize, anchor, pState);                              \
  }                                                                                                         \
  Status zvpiMorphologyInitAlloc_##NAME(int roiWidth, const uint8_t* pMask, RoiSize maskSize, Point anchor, \
                                        MorphState** ppState) {                                             \
    return zvp::allocState(FLAVOUR, roiWidth, pMask, maskSize, anchor, ppState);                            \
  }

ZVP_BORDER_MEMBER(1u_C1R, kBits)
ZVP_BORDER_MEMBER(8u_C1R, (kFlavour<uint8_t, 1>))
ZVP_BORDER_MEMBER(8u_C3R, (kFlavour<uint8_t, 3>))
ZVP_BORDER_MEMBER(8u_C4R, (kFlavour<uint8_t, 4>))
ZVP_BORDER_MEMBER(16u_C1R, (kFlavour<uint16_t, 1>))
ZVP_BORDER_MEMBER(16s_C1R, (kFlavour<int16_t, 1>))
ZVP_BORDER_MEMBER(32f_C1R, (kFlavour<float, 1>))
ZVP_BORDER_MEMBER(32f_C3R, (kFlavour<float, 3>))
ZVP_BORDER_MEMBER(32f_C4R, (kFlavour<float, 4>))

ZVP_STATE_MEMBER(8u_C1R, (kFlavour<uint8_t, 1>))
ZVP_STATE_MEMBER(8u_C3R, (kFlavour<uint8_t, 3>))
ZVP_STATE_MEMBER(8u_C4R, (kFlavour<uint8_t, 4>))
ZVP_STATE_MEMBER(32f_C1R, (kFlavour<float, 1>))
ZVP_STATE_MEMBER(32f_C3R, (kFlavour<float, 3>))
ZVP_STATE_MEMBER(32f_C4R, (kFlavour<float, 4>))

Status zvpiMorphologyFree(MorphState* pState) { return zvp::release(pState); }
