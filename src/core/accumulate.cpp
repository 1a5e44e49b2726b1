// Accumulation into a single-precision image. Sums and products keep the order of their operands: it decides which of
// two NaNs is kept.
#include "core/checks.h"
#include "core/rows.h"
#include "simd/walk.h"
#include "zvpcv/arithmetic.h"

namespace zvp {
namespace {

using simd::addOrdered, simd::mulOrdered, simd::Pack;

// An operation updates d by a term of the sources; the masked form is given a weight in every element, that of the
// operation where the mask selects, else 0.
struct Sum {
  static constexpr float weight = 1;

  template <class V>
  ZVP_INLINE V operator()(V d, V s) const {
    return addOrdered(d, s);
  }
  template <class V>
  ZVP_INLINE V masked(V w, V d, V s) const {
    return addOrdered(mulOrdered(w, s), d);
  }
};

struct SumOfProducts {
  static constexpr float weight = 1;

  template <class V>
  ZVP_INLINE V operator()(V d, V s1, V s2) const {
    return addOrdered(mulOrdered(s1, s2), d);
  }
  template <class V>
  ZVP_INLINE V masked(V w, V d, V s1, V s2) const {
    return addOrdered(mulOrdered(mulOrdered(s1, s2), w), d);
  }
};

struct SumOfSquares {
  static constexpr float weight = 1;

  template <class V>
  ZVP_INLINE V operator()(V d, V s) const {
    return SumOfProducts{}(d, s, s);
  }
  template <class V>
  ZVP_INLINE V masked(V w, V d, V s) const {
    return SumOfProducts{}.masked(w, d, s, s);
  }
};

struct RunningAverage {
  float weight;  // alpha

  template <class V>
  ZVP_INLINE V operator()(V d, V s) const {
    return addOrdered(d, mulOrdered(simd::broadcast<float, simd::laneCount<V>>(weight), V(s - d)));
  }
  template <class V>
  ZVP_INLINE V masked(V w, V d, V s) const {
    return addOrdered(d, mulOrdered(V(s - d), w));
  }
};

// The weight where the mask byte is not zero, +0 elsewhere.
template <int N>
ZVP_INLINE Pack<float, N> maskedWeight(const uint8_t* mask, float weight) {
  using Bits = Pack<int32_t, N>;
  const Bits bits = std::bit_cast<Bits>(simd::broadcast<float, N>(weight));
  return std::bit_cast<Pack<float, N>>(Bits(simd::loadNonZero<N>(mask) & bits));
}

template <class Operation, class... S>
ZVP_INLINE void updateRow(int n, Operation operation, float* acc, const S*... src) {
  simd::forEachPack<simd::lanes<float>, sizeof(float)>(
      0, n, [=]<int N>(int i) __attribute__((always_inline)) {
        const auto d = simd::load<Pack<float, N>>(acc + i);
        simd::store(acc + i, operation(d, simd::loadAs<float, N>(src + i)...));
      });
}

template <class Operation, class... S>
ZVP_INLINE void updateMaskedRow(int n, Operation operation, const uint8_t* mask, float* acc, const S*... src) {
  simd::forEachPack<simd::lanes<float>, sizeof(float)>(
      0, n, [=]<int N>(int i) __attribute__((always_inline)) {
        const auto w = maskedWeight<N>(mask + i, operation.weight);
        const auto d = simd::load<Pack<float, N>>(acc + i);
        simd::store(acc + i, operation.masked(w, d, simd::loadAs<float, N>(src + i)...));
      });
}

// The checks of all forms. 16u sources are done with before the other operands' steps are looked at.
template <class... S>
Status failure(RoiSize roi, Status othersNonNull, Status othersFit, Rows<float> acc, Rows<const S>... src) {
  constexpr bool kSourcesFirst = (std::is_same_v<S, uint16_t> && ...);
  return firstFailure(nonNull(src...), othersNonNull, nonEmpty(roi), rowsFit(roi.width, src...),
                      kSourcesFirst ? wholeElements(src...) : Status{StatusOk}, othersFit, wholeElements(src...),
                      wholeElements(acc));
}

template <class Operation, class... S>
Status accumulate(Operation operation, RoiSize roi, Rows<float> acc, Rows<const S>... src) {
  if (Status s = failure(roi, nonNull(acc), rowsFit(roi.width, acc), acc, src...)) return s;
  forEachRow(
      roi.height, roi.width,
      [operation](float* accRow, const S*... srcRows, int n) { updateRow(n, operation, accRow, srcRows...); }, acc,
      src...);
  return StatusOk;
}

template <class Operation, class... S>
Status accumulateMasked(Operation operation, RoiSize roi, Rows<const uint8_t> mask, Rows<float> acc,
                        Rows<const S>... src) {
  if (Status s = failure(roi, firstFailure(nonNull(mask), nonNull(acc)),
                         firstFailure(rowsFit(roi.width, mask), rowsFit(roi.width, acc)), acc, src...))
    return s;
  forEachRow(
      roi.height, roi.width,
      [operation](const uint8_t* maskRow, float* accRow, const S*... srcRows, int n) {
        updateMaskedRow(n, operation, maskRow, accRow, srcRows...);
      },
      mask, acc, src...);
  return StatusOk;
}

Status average(Rows<const float> src1, Rows<const float> src2, Rows<float> dst, RoiSize roi, float alpha) {
  if (Status s = firstFailure(nonNull(src1, src2), nonNull(dst), nonEmpty(roi), rowsFit(roi.width, src1, src2, dst),
                              wholeElements(src1, src2, dst)))
    return s;
  src2.step = src1.step;  // documented: both sources have the rows of the first
  forEachRow(
      roi.height, roi.width,
      [alpha](const float* row1, const float* row2, float* out, int n) {
        simd::transformRow(n, RunningAverage{alpha}, out, row2, row1);
      },
      src1, src2, dst);
  return StatusOk;
}

}  // namespace
}  // namespace zvp

using zvp::accumulate, zvp::accumulateMasked, zvp::average, zvp::Rows, zvp::RunningAverage, zvp::Sum,
    zvp::SumOfProducts, zvp::SumOfSquares;

#define ZVP_IN_PLACE(name, T, operation)                                                     \
  Status name(const T* pSrc, int srcStep, float* pSrcDst, int srcDstStep, RoiSize roiSize) { \
    return accumulate(operation{}, roiSize, Rows{pSrcDst, srcDstStep}, Rows{pSrc, srcStep}); \
  }
#define ZVP_IN_PLACE_MASKED(name, T, operation)                                                               \
  Status name(const T* pSrc, int srcStep, const uint8_t* pMask, int maskStep, float* pSrcDst, int srcDstStep, \
              RoiSize roiSize) {                                                                              \
    return accumulateMasked(operation{}, roiSize, Rows{pMask, maskStep}, Rows{pSrcDst, srcDstStep},           \
                            Rows{pSrc, srcStep});                                                             \
  }
#define ZVP_PRODUCT(name, T)                                                                              \
  Status name(const T* pSrc1, int src1Step, const T* pSrc2, int src2Step, float* pSrcDst, int srcDstStep, \
              RoiSize roiSize) {                                                                          \
    return accumulate(SumOfProducts{}, roiSize, Rows{pSrcDst, srcDstStep}, Rows{pSrc1, src1Step},         \
                      Rows{pSrc2, src2Step});                                                             \
  }
#define ZVP_PRODUCT_MASKED(name, T)                                                                           \
  Status name(const T* pSrc1, int src1Step, const T* pSrc2, int src2Step, const uint8_t* pMask, int maskStep, \
              float* pSrcDst, int srcDstStep, RoiSize roiSize) {                                              \
    return accumulateMasked(SumOfProducts{}, roiSize, Rows{pMask, maskStep}, Rows{pSrcDst, srcDstStep},       \
                            Rows{pSrc1, src1Step}, Rows{pSrc2, src2Step});                                    \
  }
#define ZVP_WEIGHTED(name, T)                                                                             \
  Status name(const T* pSrc, int srcStep, float* pSrcDst, int srcDstStep, RoiSize roiSize, float alpha) { \
    return accumulate(RunningAverage{alpha}, roiSize, Rows{pSrcDst, srcDstStep}, Rows{pSrc, srcStep});    \
  }
#define ZVP_WEIGHTED_MASKED(name, T)                                                                          \
  Status name(const T* pSrc, int srcStep, const uint8_t* pMask, int maskStep, float* pSrcDst, int srcDstStep, \
              RoiSize roiSize, float alpha) {                                                                 \
    return accumulateMasked(RunningAverage{alpha}, roiSize, Rows{pMask, maskStep}, Rows{pSrcDst, srcDstStep}, \
                            Rows{pSrc, srcStep});                                                             \
  }

ZVP_IN_PLACE(zvpiAdd_8u32f_C1IR, uint8_t, Sum)
ZVP_IN_PLACE(zvpiAdd_8s32f_C1IR, int8_t, Sum)
ZVP_IN_PLACE(zvpiAdd_16u32f_C1IR, uint16_t, Sum)
ZVP_IN_PLACE_MASKED(zvpiAdd_8u32f_C1IMR, uint8_t, Sum)
ZVP_IN_PLACE_MASKED(zvpiAdd_8s32f_C1IMR, int8_t, Sum)
ZVP_IN_PLACE_MASKED(zvpiAdd_16u32f_C1IMR, uint16_t, Sum)
ZVP_IN_PLACE_MASKED(zvpiAdd_32f_C1IMR, float, Sum)

ZVP_IN_PLACE(zvpiAddSquare_8u32f_C1IR, uint8_t, SumOfSquares)
ZVP_IN_PLACE(zvpiAddSquare_8s32f_C1IR, int8_t, SumOfSquares)
ZVP_IN_PLACE(zvpiAddSquare_16u32f_C1IR, uint16_t, SumOfSquares)
ZVP_IN_PLACE(zvpiAddSquare_32f_C1IR, float, SumOfSquares)
ZVP_IN_PLACE_MASKED(zvpiAddSquare_8u32f_C1IMR, uint8_t, SumOfSquares)
ZVP_IN_PLACE_MASKED(zvpiAddSquare_8s32f_C1IMR, int8_t, SumOfSquares)
ZVP_IN_PLACE_MASKED(zvpiAddSquare_16u32f_C1IMR, uint16_t, SumOfSquares)
ZVP_IN_PLACE_MASKED(zvpiAddSquare_32f_C1IMR, float, SumOfSquares)

ZVP_PRODUCT(zvpiAddProduct_8u32f_C1IR, uint8_t)
ZVP_PRODUCT(zvpiAddProduct_8s32f_C1IR, int8_t)
ZVP_PRODUCT(zvpiAddProduct_16u32f_C1IR, uint16_t)
ZVP_PRODUCT(zvpiAddProduct_32f_C1IR, float)
ZVP_PRODUCT_MASKED(zvpiAddProduct_8u32f_C1IMR, uint8_t)
ZVP_PRODUCT_MASKED(zvpiAddProduct_8s32f_C1IMR, int8_t)
ZVP_PRODUCT_MASKED(zvpiAddProduct_16u32f_C1IMR, uint16_t)
ZVP_PRODUCT_MASKED(zvpiAddProduct_32f_C1IMR, float)

ZVP_WEIGHTED(zvpiAddWeighted_8u32f_C1IR, uint8_t)
ZVP_WEIGHTED(zvpiAddWeighted_8s32f_C1IR, int8_t)
ZVP_WEIGHTED(zvpiAddWeighted_16u32f_C1IR, uint16_t)
ZVP_WEIGHTED(zvpiAddWeighted_32f_C1IR, float)
ZVP_WEIGHTED_MASKED(zvpiAddWeighted_8u32f_C1IMR, uint8_t)
ZVP_WEIGHTED_MASKED(zvpiAddWeighted_8s32f_C1IMR, int8_t)
ZVP_WEIGHTED_MASKED(zvpiAddWeighted_16u32f_C1IMR, uint16_t)
ZVP_WEIGHTED_MASKED(zvpiAddWeighted_32f_C1IMR, float)

Status zvpiAddWeighted_32f_C1R(const float* pSrc1, int src1Step, const float* pSrc2, int src2Step, float* pDst,
                               int dstStep, RoiSize roiSize, float alpha) {
  return average(Rows{pSrc1, src1Step}, Rows{pSrc2, src2Step}, Rows{pDst, dstStep}, roiSize, alpha);
}
