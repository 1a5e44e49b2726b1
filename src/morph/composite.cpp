// Opening, closing, top-hat, black-hat and gradient: two filters of the engine and an intermediate image.
#include <algorithm>

#include "core/memory.h"
#include "morph/checks.h"

struct MorphAdvSpec {
  zvp::Link<uint8_t> forwardSpec, reflectedSpec;
  zvp::Link<uint8_t> tempImage;  // in the work buffer given to Init, which need not live on: nothing uses it
  int32_t tempCapacity, bufferOffset;
};
static_assert(sizeof(MorphAdvSpec) == 20);

namespace zvp {
namespace {

constexpr int kFirstSpecOffset = 32;

// Row step of the intermediate image.
int64_t tempStep(Flavour flavour, int64_t width) {
  constexpr int kAlignment = 32;
  return roundUp(flavour.bits ? (width + 7) >> 3 : width * flavour.pixelBytes(), kAlignment);
}

struct CompositeSizes {
  MorphSizes inner;
  int64_t temp, spec, buffer;
};

// False when a size does not fit 31 bits. Widths and heights are positive.
bool compositeSizes(Flavour flavour, RoiSize roi, RoiSize mask, CompositeSizes* sizes) {
  if (!morphSizes(flavour, roi.width, mask, &sizes->inner)) return false;
  const int64_t step = tempStep(flavour, int64_t{roi.width} + mask.width - 1);
  const int64_t rows = int64_t{roi.height} + mask.height - 1;
  if (step > INT32_MAX || rows > INT32_MAX) return false;
  sizes->temp = step * rows;
  sizes->spec = 2 * sizes->inner.spec + kFirstSpecOffset;
  sizes->buffer = sizes->temp + 2 * sizes->inner.buffer;
  return sizes->spec <= INT32_MAX && sizes->buffer <= INT32_MAX;
}

Status positive(RoiSize roi, RoiSize mask) { return firstFailure(nonEmpty(roi), nonEmpty(mask)); }

Status getSize(Flavour flavour, RoiSize roi, RoiSize mask, int* specSize, int* bufferSize) {
  if (Status s = firstFailure(nonNull(specSize, bufferSize), positive(roi, mask))) return s;
  CompositeSizes sizes;
  if (!compositeSizes(flavour, roi, mask, &sizes)) return ErrSize;
  *specSize = static_cast<int>(sizes.spec);
  *bufferSize = static_cast<int>(sizes.buffer);
  return StatusOk;
}

// The rotated mask is the first specification's copy, reversed for a moment.
void fill(void* object, Flavour flavour, RoiSize roi, const uint8_t* mask, RoiSize size, const CompositeSizes& sizes,
          uint8_t* buffer) {
  auto* start = static_cast<uint8_t*>(object);
  uint8_t* forward = start + kFirstSpecOffset;
  uint8_t* reflected = forward + sizes.inner.spec;
  memset(start, 0, kFirstSpecOffset);
  fillSpec(forward, flavour, roi.width, mask, size, maskCentre(size));
  uint8_t* copy = readHeader(forward).maskCopy.get(forward);
  uint8_t* end = copy + int64_t{size.width} * size.height;
  std::reverse(copy, end);
  fillSpec(reflected, flavour, roi.width, copy, size, maskCentre(size));
  std::reverse(copy, end);

  MorphAdvSpec header = {};
  header.forwardSpec.set(object, forward);
  header.reflectedSpec.set(object, reflected);
  if (buffer != nullptr) header.tempImage.set(object, buffer);
  header.tempCapacity = static_cast<int32_t>(sizes.temp);
  memcpy(object, &header, sizeof header);
}

Status init(Flavour flavour, RoiSize roi, const uint8_t* mask, RoiSize size, MorphAdvSpec* spec, uint8_t* buffer) {
  if (Status s =
          firstFailure(nonNull(mask, buffer), nonNull(reinterpret_cast<const uint8_t*>(spec)), positive(roi, size)))
    return s;
  CompositeSizes sizes;
  if (!compositeSizes(flavour, roi, size, &sizes)) return ErrSize;
  fill(spec, flavour, roi, mask, size, sizes, buffer);
  memset(buffer, 0, static_cast<size_t>(sizes.temp));
  return StatusOk;
}

Status initAlloc(Flavour flavour, RoiSize roi, const uint8_t* mask, RoiSize size, MorphAdvSpec** spec) {
  if (Status s = firstFailure(nonNull(mask), check(spec != nullptr, ErrNullPtr), positive(roi, size))) return s;
  CompositeSizes sizes;
  if (!compositeSizes(flavour, roi, size, &sizes)) return ErrNoMemory;
  void* block = allocBytes(static_cast<int32_t>(sizes.spec));
  if (block == nullptr) return ErrNoMemory;
  fill(block, flavour, roi, mask, size, sizes, nullptr);
  *spec = static_cast<MorphAdvSpec*>(block);
  return StatusOk;
}

// What an operation needs of its specification and buffer.
struct Composite {
  StructuringElement forward, reflected;
  int64_t capacity;
  uint8_t *temp, *work, *rows;

  Composite(Flavour flavour, const void* object, const MorphAdvSpec& h, uint8_t* buffer)
      : forward(h.forwardSpec.get(object)), reflected(h.reflectedSpec.get(object)), capacity(h.tempCapacity) {
    MorphSizes sizes = {};
    morphSizes(flavour, forward.maxRoiWidth, forward.size, &sizes);
    temp = buffer + h.bufferOffset;
    work = temp + capacity;
    rows = work + sizes.buffer;
  }

  static Composite read(Flavour flavour, const MorphAdvSpec* spec, uint8_t* buffer) {
    MorphAdvSpec header;
    memcpy(&header, static_cast<const void*>(spec), sizeof header);
    return {flavour, spec, header, buffer};
  }
};

// The intermediate image of an opening or closing: the region, enlarged on the sides in memory.
struct Enlarged {
  int left, top;
  int64_t width, height;

  Enlarged(RoiSize roi, BorderType border, const StructuringElement& e) {
    const AxisBorder horizontal = horizontalBorder(border), vertical = verticalBorder(border);
    left = horizontal.beforeInMemory ? e.anchor.x : 0;
    top = vertical.beforeInMemory ? e.anchor.y : 0;
    width = int64_t{roi.width} + left + (horizontal.afterInMemory ? e.rightExtent() : 0);
    height = int64_t{roi.height} + top + (vertical.afterInMemory ? e.bottomExtent() : 0);
  }

  RoiSize size() const { return {static_cast<int32_t>(width), static_cast<int32_t>(height)}; }
};

Status fitsCapacity(Flavour flavour, int64_t width, int64_t height, const Composite& composite) {
  return check(height <= composite.capacity / tempStep(flavour, width), ErrSize);
}

enum class Operation { kOpen, kClose, kTophat, kBlackhat, kGradient };

// Images of whole elements.
template <class T, int channels>
struct ElementImages {
  using In = Rows<const T>;
  using Out = Rows<T>;
  using Writer = RowWriter<T>;
  static constexpr Flavour kMember = kFlavour<T, channels>;

  static Status check(In src, Out dst, RoiSize roi) { return checkImages(src, dst, roi, channels); }
  static Status canWorkOn(In, Out) { return StatusOk; }
  static In at(In image, int x, int y) { return {image.row(y) + ptrdiff_t{x} * channels, image.step}; }
  static In readable(Out image) { return {image.data, image.step}; }
  static Out temp(const Composite& c, int64_t width) {
    return {reinterpret_cast<T*>(c.temp), static_cast<int>(tempStep(kMember, width))};
  }

  template <class Op>
  static void filter(In src, Out dst, RoiSize roi, BorderType border, const StructuringElement& e, const Composite& c) {
    filterRegion<Op>(src, dst, roi, border, e, channels, c.work);
  }

  // dst = other - result, or result - other.
  template <class Op>
  static void filterAndSubtract(In src, In other, bool fromOther, Out dst, RoiSize roi, BorderType border,
                                const StructuringElement& e, const Composite& c) {
    const Writer writer{dst, fromOther ? Writer::kOtherMinusRow : Writer::kRowMinusOther, other};
    filterThrough<Op>(src, writer, roi, border, e, channels, c.work, c.rows);
  }
};

struct BitImages {
  using In = BitRows<const uint8_t>;
  using Out = BitRows<uint8_t>;
  static constexpr Flavour kMember = kBits;

  static Status check(In src, Out dst, RoiSize roi) { return checkImages(src, dst, roi); }
  static Status canWorkOn(In src, Out dst) { return zvp::check(src.data != dst.data, ErrInPlaceNotSupported); }
  static In at(In image, int x, int y) { return image.at(x, y); }
  static In readable(Out image) { return {image.data, image.step, image.bit}; }
  static Out temp(const Composite& c, int64_t width) { return {c.temp, static_cast<int>(tempStep(kMember, width)), 0}; }

  template <class Op>
  static void filter(In src, Out dst, RoiSize roi, BorderType border, const StructuringElement& e, const Composite& c) {
    filterBits<Op>(src, dst, roi, border, e, c.work);
  }

  template <class Op>
  static void filterAndSubtract(In src, In other, bool fromOther, Out dst, RoiSize roi, BorderType border,
                                const StructuringElement& e, const Composite& c) {
    filterBits<Op>(src, dst, roi, border, e, c.work);
    if (!e.hasKnownMode()) return;
    combineBits(other, dst, roi, [fromOther](uint8_t o, uint8_t result) {
      return static_cast<uint8_t>(fromOther ? o & ~result : result & ~o);
    });
  }
};

// Erosion then dilation (opening, top-hat) or dilation then erosion (closing, black-hat).
template <class First, class Second, class Images>
Status twoSteps(Operation operation, typename Images::In src, typename Images::Out dst, RoiSize roi, BorderType border,
                const Composite& c) {
  const Enlarged enlarged(roi, border, c.forward);
  if (Status s =
          firstFailure(fitsCapacity(Images::kMember, enlarged.width, enlarged.height, c), Images::canWorkOn(src, dst)))
    return s;
  const auto temp = Images::temp(c, enlarged.width);
  Images::template filter<First>(Images::at(src, -enlarged.left, -enlarged.top), temp, enlarged.size(), border,
                                 c.forward, c);
  const auto inner = Images::at(Images::readable(temp), enlarged.left, enlarged.top);
  if (operation == Operation::kOpen || operation == Operation::kClose) {
    Images::template filter<Second>(inner, dst, roi, border, c.reflected, c);
  } else {
    Images::template filterAndSubtract<Second>(inner, src, operation == Operation::kTophat, dst, roi, border,
                                               c.reflected, c);
  }
  return StatusOk;
}

// The erosion goes to the intermediate image first, so that the source may be overwritten.
template <class Images>
Status gradient(typename Images::In src, typename Images::Out dst, RoiSize roi, BorderType border, const Composite& c) {
  if (Status s = firstFailure(fitsCapacity(Images::kMember, roi.width, roi.height, c), Images::canWorkOn(src, dst)))
    return s;
  const auto temp = Images::temp(c, roi.width);
  Images::template filter<Minimum>(src, temp, roi, border, c.forward, c);
  Images::template filterAndSubtract<Maximum>(src, Images::readable(temp), false, dst, roi, border, c.forward, c);
  return StatusOk;
}

template <Operation operation, class Images>
Status composite(typename Images::In src, typename Images::Out dst, RoiSize roi, BorderType border,
                 const MorphAdvSpec* spec, uint8_t* buffer) {
  if (Status s = firstFailure(nonNull(src.data, dst.data), nonNull(reinterpret_cast<const uint8_t*>(spec), buffer),
                              Images::check(src, dst, roi), acceptedBorder(border)))
    return s;
  const Composite c = Composite::read(Images::kMember, spec, buffer);
  if (Status s = fitsWidth(roi, c.forward)) return s;
  if constexpr (operation == Operation::kGradient) {
    return gradient<Images>(src, dst, roi, border, c);
  } else if constexpr (operation == Operation::kOpen || operation == Operation::kTophat) {
    return twoSteps<Minimum, Maximum, Images>(operation, src, dst, roi, border, c);
  } else {
    return twoSteps<Maximum, Minimum, Images>(operation, src, dst, roi, border, c);
  }
}

}  // namespace
}  // namespace zvp

using zvp::BitImages, zvp::ElementImages, zvp::kBits, zvp::kFlavour, zvp::Operation;

#define ZVP_COMPOSITE(OPERATION, NAME, T, CHANNELS, VALUE)                                                           \
  Status zvpiMorph##OPERATION##Border_##NAME(const T* pSrc, int srcStep, T* pDst, int dstStep, RoiSize roiSize,      \
                                             BorderType borderType, VALUE, const MorphAdvSpec* pSpec,                \
                                             uint8_t* pBuffer) {                                                     \
    return zvp::composite<Operation::k##OPERATION, ElementImages<T, CHANNELS>>({pSrc, srcStep}, {pDst, dstStep},     \
                                                                               roiSize, borderType, pSpec, pBuffer); \
  }

#define ZVP_COMPOSITE_BITS(OPERATION)                                                                               \
  Status zvpiMorph##OPERATION##Border_1u_C1R(const uint8_t* pSrc, int srcStep, int srcBitOffset, uint8_t* pDst,     \
                                             int dstStep, int dstBitOffset, RoiSize roiSize, BorderType borderType, \
                                             uint8_t, const MorphAdvSpec* pSpec, uint8_t* pBuffer) {                \
    return zvp::composite<Operation::k##OPERATION, BitImages>(                                                      \
        {pSrc, srcStep, srcBitOffset}, {pDst, dstStep, dstBitOffset}, roiSize, borderType, pSpec, pBuffer);         \
  }

#define ZVP_SPEC(NAME, FLAVOUR)                                                                                \
  Status zvpiMorphAdvGetSize_##NAME(RoiSize roiSize, RoiSize maskSize, int* pSpecSize, int* pBufferSize) {     \
    return zvp::getSize(FLAVOUR, roiSize, maskSize, pSpecSize, pBufferSize);                                   \
  }                                                                                                            \
  Status zvpiMorphAdvInit_##NAME(RoiSize roiSize, const uint8_t* pMask, RoiSize maskSize, MorphAdvSpec* pSpec, \
                                 uint8_t* pBuffer) {                                                           \
    return zvp::init(FLAVOUR, roiSize, pMask, maskSize, pSpec, pBuffer);                                       \
  }

#define ZVP_INIT_ALLOC(NAME, FLAVOUR)                                                          \
  Status zvpiMorphAdvInitAlloc_##NAME(RoiSize roiSize, const uint8_t* pMask, RoiSize maskSize, \
                                      MorphAdvSpec** ppSpec) {                                 \
    return zvp::initAlloc(FLAVOUR, roiSize, pMask, maskSize, ppSpec);                          \
  }

#define ZVP_MEMBER(NAME, T, CHANNELS, VALUE)        \
  ZVP_SPEC(NAME, (kFlavour<T, CHANNELS>))           \
  ZVP_COMPOSITE(Open, NAME, T, CHANNELS, VALUE)     \
  ZVP_COMPOSITE(Close, NAME, T, CHANNELS, VALUE)    \
  ZVP_COMPOSITE(Tophat, NAME, T, CHANNELS, VALUE)   \
  ZVP_COMPOSITE(Blackhat, NAME, T, CHANNELS, VALUE) \
  ZVP_COMPOSITE(Gradient, NAME, T, CHANNELS, VALUE)

ZVP_SPEC(1u_C1R, kBits)
ZVP_COMPOSITE_BITS(Open)
ZVP_COMPOSITE_BITS(Close)
ZVP_COMPOSITE_BITS(Tophat)
ZVP_COMPOSITE_BITS(Blackhat)
ZVP_COMPOSITE_BITS(Gradient)

ZVP_MEMBER(8u_C1R, uint8_t, 1, uint8_t)
ZVP_MEMBER(8u_C3R, uint8_t, 3, const uint8_t*)
ZVP_MEMBER(8u_C4R, uint8_t, 4, const uint8_t*)
ZVP_MEMBER(16u_C1R, uint16_t, 1, uint16_t)
ZVP_MEMBER(16s_C1R, int16_t, 1, int16_t)
ZVP_MEMBER(32f_C1R, float, 1, float)
ZVP_MEMBER(32f_C3R, float, 3, const float*)
ZVP_MEMBER(32f_C4R, float, 4, const float*)

ZVP_INIT_ALLOC(8u_C1R, (kFlavour<uint8_t, 1>))
ZVP_INIT_ALLOC(8u_C3R, (kFlavour<uint8_t, 3>))
ZVP_INIT_ALLOC(8u_C4R, (kFlavour<uint8_t, 4>))
ZVP_INIT_ALLOC(32f_C1R, (kFlavour<float, 1>))
ZVP_INIT_ALLOC(32f_C3R, (kFlavour<float, 3>))
ZVP_INIT_ALLOC(32f_C4R, (kFlavour<float, 4>))

Status zvpiMorphAdvFree(MorphAdvSpec* pSpec) { return zvp::release(pSpec); }
