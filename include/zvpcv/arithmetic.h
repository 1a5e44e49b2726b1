/* Element-wise arithmetic: absolute differences, accumulation into single-precision images. */
#ifndef ZVPCV_ARITHMETIC_H
#define ZVPCV_ARITHMETIC_H

#include <zvpcv/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* zvpiAbsDiff: absolute difference of two images, dst = |src1 - src2|.
 *
 * pSrc1, pSrc2   read: roiSize.height rows of roiSize.width pixels, src1Step and src2Step bytes apart
 * pDst           written: the same shape, dstStep bytes apart; may be one of the sources (same pointer, same step)
 *
 * 8u and 16u are exact. 32f is the single-precision difference with its sign bit cleared: a NaN stays a NaN (sign
 * cleared), inf - inf gives a NaN with a cleared sign, -0 becomes +0. C3R treats a row as 3 x width elements.
 *
 * Status, in the order of the checks:
 *   ErrNullPtr          a pointer is null
 *   ErrSize             width or height < 1
 *   ErrStep             a step < width x channels x element size
 *   ErrStepNotMultiple  16u: an odd step; 32f: a step that is not a multiple of 4
 *   StatusOk */
ZVP_API Status zvpiAbsDiff_8u_C1R(const uint8_t* pSrc1, int src1Step, const uint8_t* pSrc2, int src2Step, uint8_t* pDst,
                                  int dstStep, RoiSize roiSize);
ZVP_API Status zvpiAbsDiff_8u_C3R(const uint8_t* pSrc1, int src1Step, const uint8_t* pSrc2, int src2Step, uint8_t* pDst,
                                  int dstStep, RoiSize roiSize);
ZVP_API Status zvpiAbsDiff_16u_C1R(const uint16_t* pSrc1, int src1Step, const uint16_t* pSrc2, int src2Step,
                                   uint16_t* pDst, int dstStep, RoiSize roiSize);
ZVP_API Status zvpiAbsDiff_32f_C1R(const float* pSrc1, int src1Step, const float* pSrc2, int src2Step, float* pDst,
                                   int dstStep, RoiSize roiSize);

/* zvpiAbsDiffC: absolute difference of an image and a constant, dst = |src - value|.
 *
 * pSrc    read: roiSize.height rows of roiSize.width pixels, srcStep bytes apart
 * pDst    written: the same shape, dstStep bytes apart; may be the source (same pointer, same step)
 * value   8u: clamped to 0..255 first; 16u: clamped to 0..65535 first; 32f: any value, as in zvpiAbsDiff_32f_C1R
 *
 * Status: as zvpiAbsDiff. */
ZVP_API Status zvpiAbsDiffC_8u_C1R(const uint8_t* pSrc, int srcStep, uint8_t* pDst, int dstStep, RoiSize roiSize,
                                   int value);
ZVP_API Status zvpiAbsDiffC_16u_C1R(const uint16_t* pSrc, int srcStep, uint16_t* pDst, int dstStep, RoiSize roiSize,
                                    int value);
ZVP_API Status zvpiAbsDiffC_32f_C1R(const float* pSrc, int srcStep, float* pDst, int dstStep, RoiSize roiSize,
                                    float value);

/* Accumulation: d, the accumulator, is updated by a term of the source s or of the two sources s1 and s2.
 *
 *                     unmasked (C1IR)            masked (C1IMR)
 *   zvpiAdd           d = d + s                  d = (m x s) + d
 *   zvpiAddSquare     d = (s x s) + d            d = ((s x s) x m) + d
 *   zvpiAddProduct    d = (s1 x s2) + d          d = ((s1 x s2) x m) + d
 *   zvpiAddWeighted   d = d + alpha x (s - d)    d = d + (s - d) x a
 *
 * pSrc, pSrc1, pSrc2   read: roiSize.height rows of roiSize.width pixels, srcStep, src1Step and src2Step bytes apart
 * pMask                read: the same shape, maskStep bytes apart. A byte that is not 0 selects the pixel: m = 1 and
 *                      a = alpha; else m = a = 0
 * pSrcDst              read and written: the same shape, srcDstStep bytes apart; a source may be the accumulator
 *                      itself (same pointer, same step)
 * alpha                any value
 *
 * Integers are converted to single precision, exactly, before all else; every operation is rounded to single
 * precision, in the order written. The mask multiplies, it does not choose: every pixel is written. One that is not
 * selected keeps its value where its term is finite (-0 may become +0), and becomes NaN where the term is infinite or
 * NaN; in zvpiAddWeighted also where the accumulator is infinite.
 *
 * NaNs are defined to the bit: of two NaN operands the left one, as written above, is the result, made quiet; an
 * invalid operation (inf - inf, 0 x inf) gives the quiet NaN with the sign set and no payload (0xffc00000).
 *
 * Status, in the order of the checks:
 *   ErrNullPtr          a pointer is null
 *   ErrSize             width or height < 1
 *   ErrStep             16u sources: a source step < 2 x width
 *   ErrStepNotMultiple  16u sources: an odd source step
 *   ErrStep             a step < width x element size
 *   ErrStepNotMultiple  a step of the accumulator or of a 32f source that is not a multiple of 4
 *   StatusOk */
ZVP_API Status zvpiAdd_8u32f_C1IR(const uint8_t* pSrc, int srcStep, float* pSrcDst, int srcDstStep, RoiSize roiSize);
ZVP_API Status zvpiAdd_8s32f_C1IR(const int8_t* pSrc, int srcStep, float* pSrcDst, int srcDstStep, RoiSize roiSize);
ZVP_API Status zvpiAdd_16u32f_C1IR(const uint16_t* pSrc, int srcStep, float* pSrcDst, int srcDstStep, RoiSize roiSize);
ZVP_API Status zvpiAdd_8u32f_C1IMR(const uint8_t* pSrc, int srcStep, const uint8_t* pMask, int maskStep, float* pSrcDst,
                                   int srcDstStep, RoiSize roiSize);
ZVP_API Status zvpiAdd_8s32f_C1IMR(const int8_t* pSrc, int srcStep, const uint8_t* pMask, int maskStep, float* pSrcDst,
                                   int srcDstStep, RoiSize roiSize);
ZVP_API Status zvpiAdd_16u32f_C1IMR(const uint16_t* pSrc, int srcStep, const uint8_t* pMask, int maskStep,
                                    float* pSrcDst, int srcDstStep, RoiSize roiSize);
ZVP_API Status zvpiAdd_32f_C1IMR(const float* pSrc, int srcStep, const uint8_t* pMask, int maskStep, float* pSrcDst,
                                 int srcDstStep, RoiSize roiSize);
ZVP_API Status zvpiAddSquare_8u32f_C1IR(const uint8_t* pSrc, int srcStep, float* pSrcDst, int srcDstStep,
                                        RoiSize roiSize);
ZVP_API Status zvpiAddSquare_8s32f_C1IR(const int8_t* pSrc, int srcStep, float* pSrcDst, int srcDstStep,
                                        RoiSize roiSize);
ZVP_API Status zvpiAddSquare_16u32f_C1IR(const uint16_t* pSrc, int srcStep, float* pSrcDst, int srcDstStep,
                                         RoiSize roiSize);
ZVP_API Status zvpiAddSquare_32f_C1IR(const float* pSrc, int srcStep, float* pSrcDst, int srcDstStep, RoiSize roiSize);
ZVP_API Status zvpiAddSquare_8u32f_C1IMR(const uint8_t* pSrc, int srcStep, const uint8_t* pMask, int maskStep,
                                         float* pSrcDst, int srcDstStep, RoiSize roiSize);
ZVP_API Status zvpiAddSquare_8s32f_C1IMR(const int8_t* pSrc, int srcStep, const uint8_t* pMask, int maskStep,
                                         float* pSrcDst, int srcDstStep, RoiSize roiSize);
ZVP_API Status zvpiAddSquare_16u32f_C1IMR(const uint16_t* pSrc, int srcStep, const uint8_t* pMask, int maskStep,
                                          float* pSrcDst, int srcDstStep, RoiSize roiSize);
ZVP_API Status zvpiAddSquare_32f_C1IMR(const float* pSrc, int srcStep, const uint8_t* pMask, int maskStep,
                                       float* pSrcDst, int srcDstStep, RoiSize roiSize);
ZVP_API Status zvpiAddProduct_8u32f_C1IR(const uint8_t* pSrc1, int src1Step, const uint8_t* pSrc2, int src2Step,
                                         float* pSrcDst, int srcDstStep, RoiSize roiSize);
ZVP_API Status zvpiAddProduct_8s32f_C1IR(const int8_t* pSrc1, int src1Step, const int8_t* pSrc2, int src2Step,
                                         float* pSrcDst, int srcDstStep, RoiSize roiSize);
ZVP_API Status zvpiAddProduct_16u32f_C1IR(const uint16_t* pSrc1, int src1Step, const uint16_t* pSrc2, int src2Step,
                                          float* pSrcDst, int srcDstStep, RoiSize roiSize);
ZVP_API Status zvpiAddProduct_32f_C1IR(const float* pSrc1, int src1Step, const float* pSrc2, int src2Step,
                                       float* pSrcDst, int srcDstStep, RoiSize roiSize);
ZVP_API Status zvpiAddProduct_8u32f_C1IMR(const uint8_t* pSrc1, int src1Step, const uint8_t* pSrc2, int src2Step,
                                          const uint8_t* pMask, int maskStep, float* pSrcDst, int srcDstStep,
                                          RoiSize roiSize);
ZVP_API Status zvpiAddProduct_8s32f_C1IMR(const int8_t* pSrc1, int src1Step, const int8_t* pSrc2, int src2Step,
                                          const uint8_t* pMask, int maskStep, float* pSrcDst, int srcDstStep,
                                          RoiSize roiSize);
ZVP_API Status zvpiAddProduct_16u32f_C1IMR(const uint16_t* pSrc1, int src1Step, const uint16_t* pSrc2, int src2Step,
                                           const uint8_t* pMask, int maskStep, float* pSrcDst, int srcDstStep,
                                           RoiSize roiSize);
ZVP_API Status zvpiAddProduct_32f_C1IMR(const float* pSrc1, int src1Step, const float* pSrc2, int src2Step,
                                        const uint8_t* pMask, int maskStep, float* pSrcDst, int srcDstStep,
                                        RoiSize roiSize);
ZVP_API Status zvpiAddWeighted_8u32f_C1IR(const uint8_t* pSrc, int srcStep, float* pSrcDst, int srcDstStep,
                                          RoiSize roiSize, float alpha);
ZVP_API Status zvpiAddWeighted_8s32f_C1IR(const int8_t* pSrc, int srcStep, float* pSrcDst, int srcDstStep,
                                          RoiSize roiSize, float alpha);
ZVP_API Status zvpiAddWeighted_16u32f_C1IR(const uint16_t* pSrc, int srcStep, float* pSrcDst, int srcDstStep,
                                           RoiSize roiSize, float alpha);
ZVP_API Status zvpiAddWeighted_32f_C1IR(const float* pSrc, int srcStep, float* pSrcDst, int srcDstStep, RoiSize roiSize,
                                        float alpha);
ZVP_API Status zvpiAddWeighted_8u32f_C1IMR(const uint8_t* pSrc, int srcStep, const uint8_t* pMask, int maskStep,
                                           float* pSrcDst, int srcDstStep, RoiSize roiSize, float alpha);
ZVP_API Status zvpiAddWeighted_8s32f_C1IMR(const int8_t* pSrc, int srcStep, const uint8_t* pMask, int maskStep,
                                           float* pSrcDst, int srcDstStep, RoiSize roiSize, float alpha);
ZVP_API Status zvpiAddWeighted_16u32f_C1IMR(const uint16_t* pSrc, int srcStep, const uint8_t* pMask, int maskStep,
                                            float* pSrcDst, int srcDstStep, RoiSize roiSize, float alpha);
ZVP_API Status zvpiAddWeighted_32f_C1IMR(const float* pSrc, int srcStep, const uint8_t* pMask, int maskStep,
                                         float* pSrcDst, int srcDstStep, RoiSize roiSize, float alpha);

/* The running average of two images: dst = s2 + alpha x (s1 - s2), rounded and with NaNs as above.
 *
 * pSrc1     read: roiSize.height rows of roiSize.width pixels, src1Step bytes apart
 * pSrc2     read: the same shape, also src1Step bytes apart: src2Step is checked and otherwise ignored
 * pDst      written: the same shape, dstStep bytes apart; may be a source (same pointer, dstStep equal to src1Step)
 * alpha     any value
 *
 * Status, in the order of the checks:
 *   ErrNullPtr          a pointer is null
 *   ErrSize             width or height < 1
 *   ErrStep             a step < 4 x width
 *   ErrStepNotMultiple  a step that is not a multiple of 4
 *   StatusOk */
ZVP_API Status zvpiAddWeighted_32f_C1R(const float* pSrc1, int src1Step, const float* pSrc2, int src2Step, float* pDst,
                                       int dstStep, RoiSize roiSize, float alpha);

#ifdef __cplusplus
}
#endif

#endif
