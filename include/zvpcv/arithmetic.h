/* Element-wise arithmetic: absolute differences. */
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

#ifdef __cplusplus
}
#endif

#endif
