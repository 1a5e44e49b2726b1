// Sizes, initialisation and release of prepared masks.
#include "core/checks.h"
#include "core/memory.h"
#include "core/query.h"
#include "morph/prepared_mask.h"
#include "simd/loose.h"

namespace zvp::morph {
namespace {

Status positive(int roiWidth, RoiSize mask) {
  return check(roiWidth >= 1 && mask.width >= 1 && mask.height >= 1, ErrSize);
}

Status inside(Point anchor, RoiSize mask) {
  return check(anchor.x >= 0 && anchor.x < mask.width && anchor.y >= 0 && anchor.y < mask.height, ErrAnchor);
}

// Whether both sizes fit 31 bits.
bool fit(const Preparation& p) {
  return preparedBytes(p.flavour, p.roiWidth, p.size).fit() && bufferBytes(p.flavour, p.roiWidth, p.size).fit();
}

[[gnu::noinline]] Status borderSizes(Flavour flavour, int roiWidth, RoiSize mask, int* specSize, int* bufferSize) {
  return reportSizes(firstFailure(nonNull(specSize, bufferSize), positive(roiWidth, mask)),
                     SizeReport{preparedBytes(flavour, roiWidth, mask), specSize},
                     SizeReport{bufferBytes(flavour, roiWidth, mask), bufferSize});
}

[[gnu::noinline]] Status initBorderSpec(Flavour flavour, int roiWidth, const uint8_t* mask, RoiSize size,
                                        MorphBorderSpec* spec, const uint8_t* buffer) {
  const Preparation p = {flavour, roiWidth, mask, size, maskCentre(size)};
  if (Status s = firstFailure(nonNull(mask, spec, buffer), positive(roiWidth, size), check(fit(p), ErrSize))) return s;
  prepareMask(spec, p);
  return StatusOk;
}

[[gnu::noinline]] Status stateSize(Flavour flavour, int roiWidth, const uint8_t* mask, RoiSize maskSize, int* size) {
  return reportSize(firstFailure(nonNull(mask, size), positive(roiWidth, maskSize)),
                    preparedBytes(flavour, roiWidth, maskSize), size);
}

// What Init and InitAlloc check alike.
template <class State>
Status checkState(const Preparation& p, State* state) {
  return firstFailure(nonNull(p.mask, state), positive(p.roiWidth, p.size), inside(p.anchor, p.size));
}

[[gnu::noinline]] Status initState(const Preparation& p, MorphState* state) {
  if (Status s = firstFailure(checkState(p, state), check(fit(p), ErrSize))) return s;
  prepareMask(state, p);
  return StatusOk;
}

[[gnu::noinline]] Status allocState(const Preparation& p, MorphState** state) {
  if (Status s = checkState(p, state)) return s;
  void* block = allocate(preparedBytes(p.flavour, p.roiWidth, p.size));
  if (block == nullptr) return ErrNoMemory;
  prepareMask(block, p);
  simd::store(state, static_cast<MorphState*>(block));
  return StatusOk;
}

}  // namespace
}  // namespace zvp::morph

using namespace zvp::morph;

#define ZVP_BORDER_SIZE(name, ...)                                                \
  Status name(int roiWidth, RoiSize maskSize, int* pSpecSize, int* pBufferSize) { \
    return borderSizes(__VA_ARGS__, roiWidth, maskSize, pSpecSize, pBufferSize);  \
  }
#define ZVP_BORDER_INIT(name, ...)                                                                              \
  Status name(int roiWidth, const uint8_t* pMask, RoiSize maskSize, MorphBorderSpec* pSpec, uint8_t* pBuffer) { \
    return initBorderSpec(__VA_ARGS__, roiWidth, pMask, maskSize, pSpec, pBuffer);                              \
  }
#define ZVP_STATE_SIZE(name, ...)                                                 \
  Status name(int roiWidth, const uint8_t* pMask, RoiSize maskSize, int* pSize) { \
    return stateSize(__VA_ARGS__, roiWidth, pMask, maskSize, pSize);              \
  }
#define ZVP_STATE_INIT(name, ...)                                                                       \
  Status name(int roiWidth, const uint8_t* pMask, RoiSize maskSize, Point anchor, MorphState* pState) { \
    return initState({__VA_ARGS__, roiWidth, pMask, maskSize, anchor}, pState);                         \
  }
#define ZVP_STATE_ALLOC(name, ...)                                                                        \
  Status name(int roiWidth, const uint8_t* pMask, RoiSize maskSize, Point anchor, MorphState** ppState) { \
    return allocState({__VA_ARGS__, roiWidth, pMask, maskSize, anchor}, ppState);                         \
  }

ZVP_BORDER_SIZE(zvpiMorphologyBorderGetSize_1u_C1R, kBits)
ZVP_BORDER_SIZE(zvpiMorphologyBorderGetSize_8u_C1R, kFlavour<uint8_t, 1>)
ZVP_BORDER_SIZE(zvpiMorphologyBorderGetSize_8u_C3R, kFlavour<uint8_t, 3>)
ZVP_BORDER_SIZE(zvpiMorphologyBorderGetSize_8u_C4R, kFlavour<uint8_t, 4>)
ZVP_BORDER_SIZE(zvpiMorphologyBorderGetSize_16u_C1R, kFlavour<uint16_t, 1>)
ZVP_BORDER_SIZE(zvpiMorphologyBorderGetSize_16s_C1R, kFlavour<int16_t, 1>)
ZVP_BORDER_SIZE(zvpiMorphologyBorderGetSize_32f_C1R, kFlavour<float, 1>)
ZVP_BORDER_SIZE(zvpiMorphologyBorderGetSize_32f_C3R, kFlavour<float, 3>)
ZVP_BORDER_SIZE(zvpiMorphologyBorderGetSize_32f_C4R, kFlavour<float, 4>)

ZVP_BORDER_INIT(zvpiMorphologyBorderInit_1u_C1R, kBits)
ZVP_BORDER_INIT(zvpiMorphologyBorderInit_8u_C1R, kFlavour<uint8_t, 1>)
ZVP_BORDER_INIT(zvpiMorphologyBorderInit_8u_C3R, kFlavour<uint8_t, 3>)
ZVP_BORDER_INIT(zvpiMorphologyBorderInit_8u_C4R, kFlavour<uint8_t, 4>)
ZVP_BORDER_INIT(zvpiMorphologyBorderInit_16u_C1R, kFlavour<uint16_t, 1>)
ZVP_BORDER_INIT(zvpiMorphologyBorderInit_16s_C1R, kFlavour<int16_t, 1>)
ZVP_BORDER_INIT(zvpiMorphologyBorderInit_32f_C1R, kFlavour<float, 1>)
ZVP_BORDER_INIT(zvpiMorphologyBorderInit_32f_C3R, kFlavour<float, 3>)
ZVP_BORDER_INIT(zvpiMorphologyBorderInit_32f_C4R, kFlavour<float, 4>)

ZVP_STATE_SIZE(zvpiMorphologyGetSize_8u_C1R, kFlavour<uint8_t, 1>)
ZVP_STATE_SIZE(zvpiMorphologyGetSize_8u_C3R, kFlavour<uint8_t, 3>)
ZVP_STATE_SIZE(zvpiMorphologyGetSize_8u_C4R, kFlavour<uint8_t, 4>)
ZVP_STATE_SIZE(zvpiMorphologyGetSize_32f_C1R, kFlavour<float, 1>)
ZVP_STATE_SIZE(zvpiMorphologyGetSize_32f_C3R, kFlavour<float, 3>)
ZVP_STATE_SIZE(zvpiMorphologyGetSize_32f_C4R, kFlavour<float, 4>)

ZVP_STATE_INIT(zvpiMorphologyInit_8u_C1R, kFlavour<uint8_t, 1>)
ZVP_STATE_INIT(zvpiMorphologyInit_8u_C3R, kFlavour<uint8_t, 3>)
ZVP_STATE_INIT(zvpiMorphologyInit_8u_C4R, kFlavour<uint8_t, 4>)
ZVP_STATE_INIT(zvpiMorphologyInit_32f_C1R, kFlavour<float, 1>)
ZVP_STATE_INIT(zvpiMorphologyInit_32f_C3R, kFlavour<float, 3>)
ZVP_STATE_INIT(zvpiMorphologyInit_32f_C4R, kFlavour<float, 4>)

ZVP_STATE_ALLOC(zvpiMorphologyInitAlloc_8u_C1R, kFlavour<uint8_t, 1>)
ZVP_STATE_ALLOC(zvpiMorphologyInitAlloc_8u_C3R, kFlavour<uint8_t, 3>)
ZVP_STATE_ALLOC(zvpiMorphologyInitAlloc_8u_C4R, kFlavour<uint8_t, 4>)
ZVP_STATE_ALLOC(zvpiMorphologyInitAlloc_32f_C1R, kFlavour<float, 1>)
ZVP_STATE_ALLOC(zvpiMorphologyInitAlloc_32f_C3R, kFlavour<float, 3>)
ZVP_STATE_ALLOC(zvpiMorphologyInitAlloc_32f_C4R, kFlavour<float, 4>)

Status zvpiMorphologyFree(MorphState* pState) { return zvp::release(pState); }
