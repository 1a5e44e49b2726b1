/* Features of images: local peaks of a response map. */
#ifndef ZVPCV_FEATURES_H
#define ZVPCV_FEATURES_H

#include <zvpcv/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Bytes of the buffer of zvpiFindPeaks3x3: 128 x floor((roiWidth + 5) / 4) + 32, the same for both types.
 *
 * roiWidth      the width of the region, in pixels
 * pBufferSize   written
 *
 * Status, in the order of the checks:
 *   ErrNullPtr   pBufferSize is null
 *   ErrSize      roiWidth < 1, or the size does not fit 31 bits
 *   StatusOk */
ZVP_API Status zvpiFindPeaks3x3GetBufferSize_32s_C1R(int roiWidth, int* pBufferSize);
ZVP_API Status zvpiFindPeaks3x3GetBufferSize_32f_C1R(int roiWidth, int* pBufferSize);

/* Finds the local peaks of an image, row by row from the top, each row from the left.
 *
 * pSrc         read: roiSize.height rows of roiSize.width pixels, srcStep bytes apart
 * threshold    a peak's magnitude is greater than it; with a negative one also 0 can be a peak
 * pPeak        written: the peaks as (x, y) in the region, at most maxPeakCount; entries beyond the count stay
 * pPeakCount   written: how many there are. At maxPeakCount the search stops; nothing tells whether there were more
 * norm         0: the neighbourhood is the pixel and the eight around it; 1: the pixel and the four at its edges
 * border       pixels closer than this to an edge of the region are no peaks (their neighbours may be): the search
 *              goes over rows border .. height - border - 1 and columns border .. width - border - 1
 * pBuffer      work memory of the size that the query gives, at any address
 *
 * With v a pixel's value and the maximum and minimum taken over its neighbourhood, a pixel is a peak if
 *   32s: |v| > threshold and, for v >= 1, v = maximum, for v < 1, v = minimum. The most negative integer has no
 *        magnitude and is never a peak
 *   32f: |v| > threshold and, for v > 0, |v - maximum| <= FLT_MIN, for v <= 0, |v - minimum| <= FLT_MIN
 *        (1.1754943508222875e-38, the smallest normal number). Infinite pixels and NaNs are never peaks; a NaN among
 *        the neighbours is passed over
 * The comparison is not strict: every pixel of a plateau that is an extremum is a peak.
 *
 * Status, in the order of the checks:
 *   ErrNullPtr          pSrc, pPeak, pPeakCount or pBuffer is null
 *   ErrSize             width, height, maxPeakCount or border < 1, or border is greater than half the width or half the
 *                       height (compared in single precision). Exactly half is allowed: no row or column is searched
 *   ErrStep             srcStep / 4, rounded toward zero, < width
 *   ErrStepNotMultiple  srcStep is not a multiple of 4
 *   ErrBadArg           norm is not 0 or 1
 *   StatusOk */
ZVP_API Status zvpiFindPeaks3x3_32s_C1R(const int32_t* pSrc, int srcStep, RoiSize roiSize, int32_t threshold,
                                        Point* pPeak, int maxPeakCount, int* pPeakCount, int norm, int border,
                                        uint8_t* pBuffer);
ZVP_API Status zvpiFindPeaks3x3_32f_C1R(const float* pSrc, int srcStep, RoiSize roiSize, float threshold, Point* pPeak,
                                        int maxPeakCount, int* pPeakCount, int norm, int border, uint8_t* pBuffer);

#ifdef __cplusplus
}
#endif

#endif
