#include "morph/composite_mask.h"

#include <algorithm>

#include "core/checks.h"
#include "core/memory.h"
#include "core/query.h"
#include "core/runs.h"
#include "simd/loose.h"

namespace zvp::morph {
namespace {

constexpr int kFirstMask = 32;  // where it stands in the object

// What an object is made for.
struct Extent {
  Flavour flavour;
  RoiSize roi, mask;

  Status check() const { return firstFailure(nonEmpty(roi), nonEmpty(mask)); }
  Bytes temp() const {
    const int64_t width = int64_t{roi.width} + mask.width - 1, height = int64_t{roi.height} + mask.height - 1;
    return tempStep(flavour, width) * height;
  }
  Bytes spec() const { return preparedBytes(flavour, roi.width, mask) * 2 + kFirstMask; }
  Bytes buffer() const { return temp() + bufferBytes(flavour, roi.width, mask) * 2; }
  bool fits() const { return spec().fit() && buffer().fit(); }
};

[[gnu::noinline]] Status getSize(const Extent& e, int* specSize, int* bufferSize) {
  return reportSizes(firstFailure(nonNull(specSize, bufferSize), e.check()), SizeReport{e.spec(), specSize},
                     SizeReport{e.buffer(), bufferSize});
}

// The rotated mask is the first one's copy, reversed for a moment.
void fill(void* object, const Extent& e, const uint8_t* mask, uint8_t* buffer) {
  auto* start = static_cast<uint8_t*>(object);
  uint8_t* forward = start + kFirstMask;
  uint8_t* reflected = forward + preparedBytes(e.flavour, e.roi.width, e.mask).value();
  zeroRun(start, kFirstMask);
  prepareMask(forward, {e.flavour, e.roi.width, mask, e.mask, maskCentre(e.mask)});
  uint8_t* copy = readHeader(forward).maskCopy.get(forward);
  uint8_t* end = copy + int64_t{e.mask.width} * e.mask.height;
  std::reverse(copy, end);
  prepareMask(reflected, {e.flavour, e.roi.width, copy, e.mask, maskCentre(e.mask)});
  std::reverse(copy, end);

  MorphAdvSpec header = {};
  header.forwardSpec.set(object, forward);
  header.reflectedSpec.set(object, reflected);
  if (buffer != nullptr) header.tempImage.set(object, buffer);
  header.tempCapacity = e.temp().value();
  memcpy(object, &header, sizeof header);
}

[[gnu::noinline]] Status init(const Extent& e, const uint8_t* mask, MorphAdvSpec* spec, uint8_t* buffer) {
  if (Status s = firstFailure(nonNull(mask, spec, buffer), e.check(), check(e.fits(), ErrSize))) return s;
  fill(spec, e, mask, buffer);
  return zeroRun(buffer, e.temp().value());
}

[[gnu::noinline]] Status initAlloc(const Extent& e, const uint8_t* mask, MorphAdvSpec** spec) {
  if (Status s = firstFailure(nonNull(mask, spec), e.check())) return s;
  void* block = e.fits() ? allocate(e.spec()) : nullptr;
  if (block == nullptr) return ErrNoMemory;
  fill(block, e, mask, nullptr);
  simd::store(spec, static_cast<MorphAdvSpec*>(block));
  return StatusOk;
}

}  // namespace

CompositeMask::CompositeMask(Flavour flavour, const MorphAdvSpec* spec, uint8_t* buffer) {
  MorphAdvSpec header;
  memcpy(&header, static_cast<const void*>(spec), sizeof header);
  forward = StructuringElement::of(header.forwardSpec.get(spec));
  reflected = StructuringElement::of(header.reflectedSpec.get(spec));
  capacity = header.tempCapacity;
  temp = buffer + header.bufferOffset;
  work = temp + capacity;
  rows = work + bufferBytes(flavour, forward.maxRoiWidth, forward.size).value();
}

}  // namespace zvp::morph

using namespace zvp::morph;

#define ZVP_SIZE(name, ...)                                                          \
  Status name(RoiSize roiSize, RoiSize maskSize, int* pSpecSize, int* pBufferSize) { \
    return getSize({__VA_ARGS__, roiSize, maskSize}, pSpecSize, pBufferSize);        \
  }
#define ZVP_INIT(name, ...)                                                                                     \
  Status name(RoiSize roiSize, const uint8_t* pMask, RoiSize maskSize, MorphAdvSpec* pSpec, uint8_t* pBuffer) { \
    return init({__VA_ARGS__, roiSize, maskSize}, pMask, pSpec, pBuffer);                                       \
  }
#define ZVP_ALLOC(name, ...)                                                                    \
  Status name(RoiSize roiSize, const uint8_t* pMask, RoiSize maskSize, MorphAdvSpec** ppSpec) { \
    return initAlloc({__VA_ARGS__, roiSize, maskSize}, pMask, ppSpec);                          \
  }

ZVP_SIZE(zvpiMorphAdvGetSize_1u_C1R, kBits)
ZVP_SIZE(zvpiMorphAdvGetSize_8u_C1R, kFlavour<uint8_t, 1>)
ZVP_SIZE(zvpiMorphAdvGetSize_8u_C3R, kFlavour<uint8_t, 3>)
ZVP_SIZE(zvpiMorphAdvGetSize_8u_C4R, kFlavour<uint8_t, 4>)
ZVP_SIZE(zvpiMorphAdvGetSize_16u_C1R, kFlavour<uint16_t, 1>)
ZVP_SIZE(zvpiMorphAdvGetSize_16s_C1R, kFlavour<int16_t, 1>)
ZVP_SIZE(zvpiMorphAdvGetSize_32f_C1R, kFlavour<float, 1>)
ZVP_SIZE(zvpiMorphAdvGetSize_32f_C3R, kFlavour<float, 3>)
ZVP_SIZE(zvpiMorphAdvGetSize_32f_C4R, kFlavour<float, 4>)

ZVP_INIT(zvpiMorphAdvInit_1u_C1R, kBits)
ZVP_INIT(zvpiMorphAdvInit_8u_C1R, kFlavour<uint8_t, 1>)
ZVP_INIT(zvpiMorphAdvInit_8u_C3R, kFlavour<uint8_t, 3>)
ZVP_INIT(zvpiMorphAdvInit_8u_C4R, kFlavour<uint8_t, 4>)
ZVP_INIT(zvpiMorphAdvInit_16u_C1R, kFlavour<uint16_t, 1>)
ZVP_INIT(zvpiMorphAdvInit_16s_C1R, kFlavour<int16_t, 1>)
ZVP_INIT(zvpiMorphAdvInit_32f_C1R, kFlavour<float, 1>)
ZVP_INIT(zvpiMorphAdvInit_32f_C3R, kFlavour<float, 3>)
ZVP_INIT(zvpiMorphAdvInit_32f_C4R, kFlavour<float, 4>)

ZVP_ALLOC(zvpiMorphAdvInitAlloc_8u_C1R, kFlavour<uint8_t, 1>)
ZVP_ALLOC(zvpiMorphAdvInitAlloc_8u_C3R, kFlavour<uint8_t, 3>)
ZVP_ALLOC(zvpiMorphAdvInitAlloc_8u_C4R, kFlavour<uint8_t, 4>)
ZVP_ALLOC(zvpiMorphAdvInitAlloc_32f_C1R, kFlavour<float, 1>)
ZVP_ALLOC(zvpiMorphAdvInitAlloc_32f_C3R, kFlavour<float, 3>)
ZVP_ALLOC(zvpiMorphAdvInitAlloc_32f_C4R, kFlavour<float, 4>)

Status zvpiMorphAdvFree(MorphAdvSpec* pSpec) { return zvp::release(pSpec); }
