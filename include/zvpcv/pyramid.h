/* Image pyramids: one octave down and up with the 5 x 5 Gaussian kernel, the sizes of the levels at any rate, one
 * level from the next at any rate, and the record that holds the levels of one image.
 *
 * Levels shrink by a rate between 1 and 10. A level of n pixels along one axis may be expanded to any size of a range;
 * it is the successor of every size in that range, and the ranges of all n follow each other without gap or overlap.
 *
 * P. Burt, E. Adelson, The Laplacian Pyramid as a Compact Image Code, 1983. */
#ifndef ZVPCV_PYRAMID_H
#define ZVPCV_PYRAMID_H

#include <zvpcv/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* One octave down: an image of w = srcRoi.width by h = srcRoi.height pixels becomes one of (w + 1) / 2 by (h + 1) / 2,
 * rounded down. Pixel (x, y) is the mean of the 5 x 5 pixels around source pixel (2 x, 2 y) under the weights
 * 1 4 6 4 1 along either axis, 256 in all. Pixels outside are mirrored about the edge pixel: column -1 is column 1,
 * column w is column w - 2. Channels are independent.
 *
 * pSrc      read: h rows of w pixels, srcStep bytes apart
 * pDst      written: (h + 1) / 2 rows of (w + 1) / 2 pixels, dstStep bytes apart; apart from the source
 * pBuffer   written: work memory of the size that zvpiPyrDownGetBufSize_Gauss5x5 gives for the width w, the element
 *           type and the channels; its contents mean nothing
 *
 * 8u, 8s: floor((sum + 128) / 256) of the exact sum. 32f, in single precision: first the sums of the rows
 * (((p0 + 4 p1) + 6 p2) + 4 p3) + p4, p0 being the leftmost pixel; then the same of five such sums r0 to r4, r0 being
 * the uppermost, x 0.00390625. A row of at most two pixels has the sum (p0 + p1) x 8, and a column of at most two
 * (r0 + r1) x 0.03125, where the one pixel stands for both.
 *
 * Status, in the order of the checks:
 *   ErrNullPtr          pSrc, pDst or pBuffer is null
 *   ErrSize             width or height < 1
 *   ErrStep             srcStep < w x channels x element size, dstStep < (w + 1) / 2 x channels x element size
 *   ErrStepNotMultiple  32f: a step that is not a multiple of 4
 *   StatusOk */
ZVP_API Status zvpiPyrDown_Gauss5x5_8u_C1R(const uint8_t* pSrc, int srcStep, uint8_t* pDst, int dstStep, RoiSize srcRoi,
                                           uint8_t* pBuffer);
ZVP_API Status zvpiPyrDown_Gauss5x5_8u_C3R(const uint8_t* pSrc, int srcStep, uint8_t* pDst, int dstStep, RoiSize srcRoi,
                                           uint8_t* pBuffer);
ZVP_API Status zvpiPyrDown_Gauss5x5_8s_C1R(const int8_t* pSrc, int srcStep, int8_t* pDst, int dstStep, RoiSize srcRoi,
                                           uint8_t* pBuffer);
ZVP_API Status zvpiPyrDown_Gauss5x5_8s_C3R(const int8_t* pSrc, int srcStep, int8_t* pDst, int dstStep, RoiSize srcRoi,
                                           uint8_t* pBuffer);
ZVP_API Status zvpiPyrDown_Gauss5x5_32f_C1R(const float* pSrc, int srcStep, float* pDst, int dstStep, RoiSize srcRoi,
                                            uint8_t* pBuffer);
ZVP_API Status zvpiPyrDown_Gauss5x5_32f_C3R(const float* pSrc, int srcStep, float* pDst, int dstStep, RoiSize srcRoi,
                                            uint8_t* pBuffer);

/* One octave up: an image of w = srcRoi.width by h = srcRoi.height pixels becomes one of 2 w by 2 h. Along either axis
 * result 2 i is made from the source's i - 1, i, i + 1 under the weights 1 6 1, result 2 i + 1 from i, i + 1 under 4 4;
 * 64 in all. The borders differ: before the first pixel the source is mirrored (index -1 reads 1, or 0 where there is
 * but one), after the last it is repeated. Channels are independent.
 *
 * pSrc      read: h rows of w pixels, srcStep bytes apart
 * pDst      written: 2 h rows of 2 w pixels, dstStep bytes apart; apart from the source
 * pBuffer   written: work memory of the size that zvpiPyrUpGetBufSize_Gauss5x5 gives for the width w, the element type
 *           and the channels; its contents mean nothing
 *
 * 8u, 8s: floor((sum + 32) / 64) of the exact sum. 32f, in single precision: first the sums of the rows, (p0 + 6 p1)
 * + p2 and 4 p1 + 4 p2 from left to right; then the same of such sums from top to bottom, x 0.015625. Along an axis of
 * one pixel both results use 4 p + 4 p.
 *
 * Status, in the order of the checks:
 *   ErrNullPtr          pSrc, pDst or pBuffer is null
 *   ErrSize             width or height < 1
 *   ErrStep             srcStep < w x channels x element size, dstStep < 2 w x channels x element size
 *   ErrStepNotMultiple  32f: a step that is not a multiple of 4
 *   StatusOk */
ZVP_API Status zvpiPyrUp_Gauss5x5_8u_C1R(const uint8_t* pSrc, int srcStep, uint8_t* pDst, int dstStep, RoiSize srcRoi,
                                         uint8_t* pBuffer);
ZVP_API Status zvpiPyrUp_Gauss5x5_8u_C3R(const uint8_t* pSrc, int srcStep, uint8_t* pDst, int dstStep, RoiSize srcRoi,
                                         uint8_t* pBuffer);
ZVP_API Status zvpiPyrUp_Gauss5x5_8s_C1R(const int8_t* pSrc, int srcStep, int8_t* pDst, int dstStep, RoiSize srcRoi,
                                         uint8_t* pBuffer);
ZVP_API Status zvpiPyrUp_Gauss5x5_8s_C3R(const int8_t* pSrc, int srcStep, int8_t* pDst, int dstStep, RoiSize srcRoi,
                                         uint8_t* pBuffer);
ZVP_API Status zvpiPyrUp_Gauss5x5_32f_C1R(const float* pSrc, int srcStep, float* pDst, int dstStep, RoiSize srcRoi,
                                          uint8_t* pBuffer);
ZVP_API Status zvpiPyrUp_Gauss5x5_32f_C3R(const float* pSrc, int srcStep, float* pDst, int dstStep, RoiSize srcRoi,
                                          uint8_t* pBuffer);

/* Bytes of work memory of the octave functions for sources of roiWidth pixels; it may start at any address.
 *   reduction  6 x (4 x roiWidth x channels, rounded up to a multiple of 16) + 64
 *   expansion  3 x (8 x roiWidth x channels, rounded up to a multiple of 16) + 64
 *
 * dataType    DataType8u, DataType8s or DataType32f; the size does not depend on it
 * channels    1 or 3
 * pBufSize    written: the number of bytes
 *
 * Status, in the order of the checks:
 *   ErrNullPtr      pBufSize is null
 *   ErrSize         roiWidth < 1
 *   ErrNumChannels  channels is neither 1 nor 3
 *   ErrDataType     dataType is none of the above
 *   ErrSize         the size does not fit 31 bits
 *   StatusOk */
ZVP_API Status zvpiPyrDownGetBufSize_Gauss5x5(int roiWidth, DataType dataType, int channels, int* pBufSize);
ZVP_API Status zvpiPyrUpGetBufSize_Gauss5x5(int roiWidth, DataType dataType, int channels, int* pBufSize);

/* The sizes that a level of srcRoi pixels may be expanded to at a rate. Along each axis, for n pixels and with products
 * in single precision:
 *   smallest  1 for n = 1, else the larger of trunc((n - 1) x rate) + 1 and n + 1
 *   largest   the larger of trunc(n x rate) and n + 1
 * A size beyond 2^31 - 1 becomes 2^31 - 1.
 *
 * pDstRoiMin    written: the smallest width and height
 * pDstRoiMax    written: the largest
 *
 * Status, in the order of the checks:
 *   ErrNullPtr  pDstRoiMin or pDstRoiMax is null
 *   ErrSize     width or height < 1
 *   ErrBadArg   rate is not in (1, 10]
 *   StatusOk */
ZVP_API Status zvpiGetPyramidUpROI(RoiSize srcRoi, RoiSize* pDstRoiMin, RoiSize* pDstRoiMax, float rate);

/* The size of the level that follows a level of srcRoi pixels: along each axis the one n whose range, as above,
 * contains the pixels of srcRoi. For rate 2 that is half, rounded up. One pixel stays one; more become fewer.
 *
 * pDstRoi       written: the size
 *
 * Status, in the order of the checks:
 *   ErrNullPtr  pDstRoi is null
 *   ErrSize     width or height < 1
 *   ErrBadArg   rate is not in (1, 10]
 *   StatusOk */
ZVP_API Status zvpiGetPyramidDownROI(RoiSize srcRoi, RoiSize* pDstRoi, float rate);

/* Working state of the layer operations. */
typedef struct PyramidLayerState PyramidLayerState;

/* Makes the state of the layer operations for one element type, channel count, rate and kernel, and for images of up to
 * srcRoi (reduction: the base image) or dstRoi (expansion: the largest result) pixels. It serves every level of such a
 * pyramid, in both directions, but one call at a time: it holds the working rows.
 *
 * ppState       written: the state; left alone by an error
 * rate          the ratio of the sizes of two levels, in (1, 10]
 * pKernel       read: kerSize taps, k[0] first. Only the left half and the centre c = kerSize / 2 count: the right half
 *               is the left one mirrored. With sum = k[c] + 2 x (k[0] + ... + k[c - 1]), added from the left,
 *                 32f      a tap is k / sum in single precision, or k as it is if |sum| <= 1.1754944e-38
 *                 8u, 16u  a tap has 13 fractional bits in a 16-bit number: trunc(k x 2^14 / sum) >> 1, or k as it is
 *                          if sum is 0; saturated
 * kerSize       odd, at least 3; reduction: less than srcRoi.width
 * mode          2, linear interpolation
 *
 * Status, in the order of the checks:
 *   ErrNullPtr              ppState or pKernel is null
 *   ErrSize                 width or height < 1; then, reduction: width <= kerSize
 *   ErrBadArg               mode is not 2, or rate is not in (1, 10]; then kerSize < 3 or even
 *   ErrNoMemory             the allocation failed, or would exceed 2^31 - 1 bytes
 *   WarnKernelNotSymmetric  a tap differs from the one mirrored; the state is made and usable
 *   StatusOk */
ZVP_API Status zvpiPyramidLayerDownInitAlloc_8u_C1R(PyramidLayerState** ppState, RoiSize srcRoi, float rate,
                                                    const int16_t* pKernel, int kerSize, int mode);
ZVP_API Status zvpiPyramidLayerDownInitAlloc_8u_C3R(PyramidLayerState** ppState, RoiSize srcRoi, float rate,
                                                    const int16_t* pKernel, int kerSize, int mode);
ZVP_API Status zvpiPyramidLayerDownInitAlloc_16u_C1R(PyramidLayerState** ppState, RoiSize srcRoi, float rate,
                                                     const int16_t* pKernel, int kerSize, int mode);
ZVP_API Status zvpiPyramidLayerDownInitAlloc_16u_C3R(PyramidLayerState** ppState, RoiSize srcRoi, float rate,
                                                     const int16_t* pKernel, int kerSize, int mode);
ZVP_API Status zvpiPyramidLayerDownInitAlloc_32f_C1R(PyramidLayerState** ppState, RoiSize srcRoi, float rate,
                                                     const float* pKernel, int kerSize, int mode);
ZVP_API Status zvpiPyramidLayerDownInitAlloc_32f_C3R(PyramidLayerState** ppState, RoiSize srcRoi, float rate,
                                                     const float* pKernel, int kerSize, int mode);
ZVP_API Status zvpiPyramidLayerUpInitAlloc_8u_C1R(PyramidLayerState** ppState, RoiSize dstRoi, float rate,
                                                  const int16_t* pKernel, int kerSize, int mode);
ZVP_API Status zvpiPyramidLayerUpInitAlloc_8u_C3R(PyramidLayerState** ppState, RoiSize dstRoi, float rate,
                                                  const int16_t* pKernel, int kerSize, int mode);
ZVP_API Status zvpiPyramidLayerUpInitAlloc_16u_C1R(PyramidLayerState** ppState, RoiSize dstRoi, float rate,
                                                   const int16_t* pKernel, int kerSize, int mode);
ZVP_API Status zvpiPyramidLayerUpInitAlloc_16u_C3R(PyramidLayerState** ppState, RoiSize dstRoi, float rate,
                                                   const int16_t* pKernel, int kerSize, int mode);
ZVP_API Status zvpiPyramidLayerUpInitAlloc_32f_C1R(PyramidLayerState** ppState, RoiSize dstRoi, float rate,
                                                   const float* pKernel, int kerSize, int mode);
ZVP_API Status zvpiPyramidLayerUpInitAlloc_32f_C3R(PyramidLayerState** ppState, RoiSize dstRoi, float rate,
                                                   const float* pKernel, int kerSize, int mode);

/* Reduces a level to the next one: filters all of it with the kernel along rows, then across rows, and samples the
 * result F at every multiple of the rate. Channels are independent.
 *
 * pSrc      read: srcRoi.height rows of srcRoi.width pixels, srcStep bytes apart
 * pDst      written: dstRoi.height rows of dstRoi.width pixels, dstStep bytes apart; apart from the source
 * dstRoi    the successor of srcRoi: what zvpiGetPyramidDownROI gives at the state's rate
 * pState    of this element type and channel count, made by either InitAlloc; its working rows are written
 *
 * All arithmetic is in single precision, without fused operations. A filter sums tap x pixel from the leftmost
 * (uppermost) tap on, and mirrors pixels outside about the edge pixel, again and again where the image is shorter than
 * the kernel. Column x of the result lies at p = rate x x: with i = trunc(p) and t = p - i it is
 * t x F[i + 1] + (1 - t) x F[i], or F[i] where the source ends with i. Rows are sampled along x, then across y by the
 * same rule. If 1.99998 < rate < 2.00002, column x is F[2 x] and row y is F[2 y] instead, or the last one beyond the
 * end. 8u, 16u: rounded to nearest, ties to even, and saturated.
 *
 * Status, in the order of the checks:
 *   ErrNullPtr          pSrc, pDst or pState is null
 *   ErrSize             srcRoi.width or srcRoi.height < 1
 *   ErrStep             srcStep or dstStep < width x channels x element size, of its own image
 *   ErrStepNotMultiple  16u, 32f: a step that is not a multiple of the element size
 *   ErrBadArg           the state's rate is not in (1, 10], or the state is of another element type or channel count
 *   ErrSize             srcRoi exceeds the state's size, or dstRoi is not the successor of srcRoi
 *   StatusOk */
ZVP_API Status zvpiPyramidLayerDown_8u_C1R(const uint8_t* pSrc, int srcStep, RoiSize srcRoi, uint8_t* pDst, int dstStep,
                                           RoiSize dstRoi, PyramidLayerState* pState);
ZVP_API Status zvpiPyramidLayerDown_8u_C3R(const uint8_t* pSrc, int srcStep, RoiSize srcRoi, uint8_t* pDst, int dstStep,
                                           RoiSize dstRoi, PyramidLayerState* pState);
ZVP_API Status zvpiPyramidLayerDown_16u_C1R(const uint16_t* pSrc, int srcStep, RoiSize srcRoi, uint16_t* pDst,
                                            int dstStep, RoiSize dstRoi, PyramidLayerState* pState);
ZVP_API Status zvpiPyramidLayerDown_16u_C3R(const uint16_t* pSrc, int srcStep, RoiSize srcRoi, uint16_t* pDst,
                                            int dstStep, RoiSize dstRoi, PyramidLayerState* pState);
ZVP_API Status zvpiPyramidLayerDown_32f_C1R(const float* pSrc, int srcStep, RoiSize srcRoi, float* pDst, int dstStep,
                                            RoiSize dstRoi, PyramidLayerState* pState);
ZVP_API Status zvpiPyramidLayerDown_32f_C3R(const float* pSrc, int srcStep, RoiSize srcRoi, float* pDst, int dstStep,
                                            RoiSize dstRoi, PyramidLayerState* pState);

/* Expands a level: interpolates linearly to the size of the result, then filters that with the kernel. Channels are
 * independent.
 *
 * pSrc      read: srcRoi.height rows of srcRoi.width pixels, srcStep bytes apart
 * pDst      written: dstRoi.height rows of dstRoi.width pixels, dstStep bytes apart; apart from the source
 * dstRoi    within the range that zvpiGetPyramidUpROI gives for srcRoi at the state's rate, and not larger than the
 *           size the state was made for
 * pState    of this element type and channel count, made by either InitAlloc; its working rows are written
 *
 * Arithmetic and filters are those of the reduction, in this order: every row is interpolated, then filtered; then the
 * rows are interpolated, then filtered across. Column x of an interpolated row lies at p = x / rate: with i = trunc(p)
 * and t = p - i it is t x S[i + 1] + (1 - t) x S[i], or the last pixel where i + 1 is beyond it; rows alike. 8u, 16u:
 * rounded to nearest, ties to even, and saturated.
 *
 * Status, in the order of the checks: as the reduction, the last one being
 *   ErrSize             dstRoi exceeds the state's size, or is outside the range of srcRoi */
ZVP_API Status zvpiPyramidLayerUp_8u_C1R(const uint8_t* pSrc, int srcStep, RoiSize srcRoi, uint8_t* pDst, int dstStep,
                                         RoiSize dstRoi, PyramidLayerState* pState);
ZVP_API Status zvpiPyramidLayerUp_8u_C3R(const uint8_t* pSrc, int srcStep, RoiSize srcRoi, uint8_t* pDst, int dstStep,
                                         RoiSize dstRoi, PyramidLayerState* pState);
ZVP_API Status zvpiPyramidLayerUp_16u_C1R(const uint16_t* pSrc, int srcStep, RoiSize srcRoi, uint16_t* pDst,
                                          int dstStep, RoiSize dstRoi, PyramidLayerState* pState);
ZVP_API Status zvpiPyramidLayerUp_16u_C3R(const uint16_t* pSrc, int srcStep, RoiSize srcRoi, uint16_t* pDst,
                                          int dstStep, RoiSize dstRoi, PyramidLayerState* pState);
ZVP_API Status zvpiPyramidLayerUp_32f_C1R(const float* pSrc, int srcStep, RoiSize srcRoi, float* pDst, int dstStep,
                                          RoiSize dstRoi, PyramidLayerState* pState);
ZVP_API Status zvpiPyramidLayerUp_32f_C3R(const float* pSrc, int srcStep, RoiSize srcRoi, float* pDst, int dstStep,
                                          RoiSize dstRoi, PyramidLayerState* pState);

/* Releases a state. All twelve are one function.
 *
 * Status: ErrNullPtr when pState is null, else StatusOk */
ZVP_API Status zvpiPyramidLayerDownFree_8u_C1R(PyramidLayerState* pState);
ZVP_API Status zvpiPyramidLayerDownFree_8u_C3R(PyramidLayerState* pState);
ZVP_API Status zvpiPyramidLayerDownFree_16u_C1R(PyramidLayerState* pState);
ZVP_API Status zvpiPyramidLayerDownFree_16u_C3R(PyramidLayerState* pState);
ZVP_API Status zvpiPyramidLayerDownFree_32f_C1R(PyramidLayerState* pState);
ZVP_API Status zvpiPyramidLayerDownFree_32f_C3R(PyramidLayerState* pState);
ZVP_API Status zvpiPyramidLayerUpFree_8u_C1R(PyramidLayerState* pState);
ZVP_API Status zvpiPyramidLayerUpFree_8u_C3R(PyramidLayerState* pState);
ZVP_API Status zvpiPyramidLayerUpFree_16u_C1R(PyramidLayerState* pState);
ZVP_API Status zvpiPyramidLayerUpFree_16u_C3R(PyramidLayerState* pState);
ZVP_API Status zvpiPyramidLayerUpFree_32f_C1R(PyramidLayerState* pState);
ZVP_API Status zvpiPyramidLayerUpFree_32f_C3R(PyramidLayerState* pState);

/* The levels of one image. Entry 0 of each array is the image itself, entry i + 1 the successor of entry i. The caller
 * fills images and steps and keeps the images alive; the library changes nothing after the construction. */
typedef struct Pyramid {
  uint8_t** images;         /* level + 1 first pixels, of any element type; null after construction */
  RoiSize* roiSizes;        /* level + 1 sizes */
  double* rates;            /* level + 1 scales relative to level 0: (1 / rate)^i */
  int32_t* steps;           /* level + 1 row steps in bytes; 0 after construction */
  PyramidLayerState* state; /* for the caller: null after construction, neither read nor released by the library */
  int32_t level;            /* index of the highest level */
} Pyramid;

/* Makes the record of an image of roi pixels: level + 1 levels, or fewer where a level of 1x1 is reached before, which
 * is then the last (a record of 1x1 has level 0). The record and its arrays are one block of 44 x levels + 112 bytes
 * with levels = the level stored; sizes are found in a list of max(width, height) entries that is allocated and
 * released within the call. rates[i] is formed in double precision by i multiplications of 1.0 with 1.0 / rate.
 *
 * ppPyramid     written: the record; left alone by a failing call
 *
 * Status, in the order of the checks:
 *   ErrNullPtr   ppPyramid is null
 *   ErrSize      width or height < 1
 *   ErrBadArg    rate is not in (1, 10], or level < 1
 *   ErrNoMemory  an allocation failed, or would exceed 2^31 - 1 bytes; everything has been released
 *   StatusOk */
ZVP_API Status zvpiPyramidInitAlloc(Pyramid** ppPyramid, int level, RoiSize roi, float rate);

/* Releases a record and its arrays, but neither the images nor the state in it.
 *
 * Status: ErrNullPtr when pPyramid is null, else StatusOk */
ZVP_API Status zvpiPyramidFree(Pyramid* pPyramid);

/* Sparse optical flow: where points of one image are in the next one, by Lucas-Kanade refinement from the coarsest
 * level of two pyramids down to the images (B. Lucas, T. Kanade, An Iterative Image Registration Technique with an
 * Application to Stereo Vision, 1981; J.-Y. Bouguet, Pyramidal Implementation of the Lucas Kanade Feature Tracker,
 * 2000).
 *
 * A state serves any number of calls, one at a time, with its window and levels up to its size. */
typedef struct OpticalFlowState OpticalFlowState;

/* Makes a state: a record whose first seven 32-bit words are width, height, 1, the DataType, a reserved one, hint and
 * winSize, followed by a pointer to working memory of
 *   4 x ((12 winSize + 36) x (winSize + 3) + S + 2 x (width + 5) x (height + 5)) + 36 bytes,
 * S being what zvpiFilterScharrHorizBorderGetBufferSize_32f_C1R reports for (width + 5) x (height + 5) pixels.
 *
 * ppState       written: the state; left alone by a failing call
 * roiSize       the size of the largest level, in pixels
 * winSize       the side of the square window, in pixels
 * hint          any number; stored and not used
 *
 * Status, in the order of the checks:
 *   ErrNullPtr   ppState is null
 *   ErrSize      winSize, width or height < 1
 *   ErrNoMemory  an allocation failed, or would exceed 2^31 - 1 bytes; everything has been released
 *   StatusOk */
ZVP_API Status zvpiOpticalFlowPyrLKInitAlloc_8u_C1R(OpticalFlowState** ppState, RoiSize roiSize, int winSize, int hint);
ZVP_API Status zvpiOpticalFlowPyrLKInitAlloc_16u_C1R(OpticalFlowState** ppState, RoiSize roiSize, int winSize,
                                                     int hint);
ZVP_API Status zvpiOpticalFlowPyrLKInitAlloc_32f_C1R(OpticalFlowState** ppState, RoiSize roiSize, int winSize,
                                                     int hint);

/* Tracks numFeat points. A point is a pair of floats (x, y) in pixels of level 0. The arrays must not overlap; like
 * images they may have any alignment.
 *
 * pPyr1, pPyr2  read: the levels 0 to maxLev of the previous and the next image. The scales are those of pPyr1
 * pPrev         read: the points in the previous image
 * pNext         read: a first estimate of the points in the next image; to start from no motion, copy pPrev to it.
 *               Written: the points found. A lost point gets its last estimate; where that has no value (the caller
 *               gave a NaN) the coordinate of pPrev, or 0 where that is no finite number either
 * pStatus       written: 0 for a point that was found, else the level at which it was lost, plus 1
 * pError        written: for a point that was found, the root mean square of the difference between its windows in
 *               the two images; 0 for a lost point
 * winSize       the side of the window; that of the state
 * maxLev        the coarsest level to begin with, at most 126
 * maxIter       the most steps that a point makes on a level
 * threshold     in pixels of a level: a step shorter than this is the last one. 0: never short enough
 * pState        a state; its working memory is written
 *
 * On each level, from maxLev down, with I and J the level in the previous and the next image and positions in double
 * precision:
 *   - dx, dy are the Scharr derivatives of I with BorderReplicate, times 0.03125.
 *   - The point is pPrev times rates[level]; the estimate arrives from the level before times rates[level] /
 *     rates[level + 1], through pNext in single precision. Windows are centred on them, rounded to single precision.
 *   - The windows of I, dx and dy are made as by zvpiCopySubpix (32f; of I, 8u32f and 16u32f) where they and their
 *     neighbours lie inside the level, else, and those of J always, as by zvpiCopySubpixIntersect: samples outside are
 *     the nearest pixels. All samples count.
 *   - Sums over a window: gxx, gxy, gyy of dx dx, dx dy, dy dy, and bx, by of d dx, d dy with d = I - J (d in single,
 *     all else in double precision). Sample (x, y) enters partial sum (x mod 8, y mod 2), row by row; then odd rows are
 *     added to even ones, and partial sums i + 4 to i, i + 2 to i, i + 1 to i.
 *   - The estimate moves by ((bx gyy - gxy by) / det, (by gxx - gxy bx) / det), det = gxx gyy - gxy gxy, at most
 *     maxIter times. It stops when the squared length of a step is less than threshold squared; or when in both
 *     coordinates the last two steps on the level add up to less than 0.0003452669770922512, moving back by half of
 *     the last one.
 * A point is lost on a level where det is less than 2.220446049250313e-16, where a window of I or J (at each step, and
 * on level 0 once more after the last one) has no column or no row inside the level, or where a step is no finite
 * number. Other points are unaffected.
 *
 * Status, in the order of the checks:
 *   ErrNullPtr  a pointer is null
 *   ErrSize     numFeat < 1, winSize < 1, or winSize is not that of the state
 *   ErrBadArg   maxLev < 0 or > 126, maxIter < 1, or threshold is negative or NaN; then maxLev is above the level of
 *               pPyr1 or pPyr2
 *   ErrNullPtr  an image of the levels 0 to maxLev is null
 *   ErrSize     such a level is empty, larger than the size of the state, or not of the same size in both pyramids
 *   ErrStep     the step of such a level < its width x the element size
 *   ErrStepNotMultiple  16u, 32f: such a step is not a multiple of the element size
 *   StatusOk */
ZVP_API Status zvpiOpticalFlowPyrLK_8u_C1R(const Pyramid* pPyr1, const Pyramid* pPyr2, const float* pPrev, float* pNext,
                                           int8_t* pStatus, float* pError, int numFeat, int winSize, int maxLev,
                                           int maxIter, float threshold, OpticalFlowState* pState);
ZVP_API Status zvpiOpticalFlowPyrLK_16u_C1R(const Pyramid* pPyr1, const Pyramid* pPyr2, const float* pPrev,
                                            float* pNext, int8_t* pStatus, float* pError, int numFeat, int winSize,
                                            int maxLev, int maxIter, float threshold, OpticalFlowState* pState);
ZVP_API Status zvpiOpticalFlowPyrLK_32f_C1R(const Pyramid* pPyr1, const Pyramid* pPyr2, const float* pPrev,
                                            float* pNext, int8_t* pStatus, float* pError, int numFeat, int winSize,
                                            int maxLev, int maxIter, float threshold, OpticalFlowState* pState);

/* Releases a state of any type.
 *
 * Status: ErrNullPtr when pState is null, else StatusOk */
ZVP_API Status zvpiOpticalFlowPyrLKFree_8u_C1R(OpticalFlowState* pState);
ZVP_API Status zvpiOpticalFlowPyrLKFree_16u_C1R(OpticalFlowState* pState);
ZVP_API Status zvpiOpticalFlowPyrLKFree_32f_C1R(OpticalFlowState* pState);

#ifdef __cplusplus
}
#endif

#endif
