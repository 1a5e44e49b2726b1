/* Image pyramids: the sizes of their levels, and the record that holds the levels of one image.
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
 * gave a NaN) the coordinate of pPrev, or 0 where that is no finite number either pStatus       written: 0 for a point
 * that was found, else the level at which it was lost, plus 1 pError        written: for a point that was found, the
 * root mean square of the difference between its windows in the two images; 0 for a lost point winSize       the side
 * of the window; that of the state maxLev        the coarsest level to begin with, at most 126 maxIter       the most
 * steps that a point makes on a level threshold     in pixels of a level: a step shorter than this is the last one. 0:
 * never short enough pState        a state; its working memory is written
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
 * maxIter times. It stops when the squared length of a step is less than threshold squared; or when in both coordinates
 * the last two steps on the level add up to less than 0.0003452669770922512, moving back by half of the last one. A
 * point is lost on a level where det is less than 2.220446049250313e-16, where a window of I or J (at each step, and on
 * level 0 once more after the last one) has no column or no row inside the level, or where a step is no finite number.
 * Other points are unaffected.
 *
 * Status, in the order of the checks:
 *   ErrNullPtr  a pointer is null
 *   ErrSize     numFeat < 1, winSize < 1, or winSize is not that of the state
 *   ErrBadArg   maxLev < 0 or > 126, maxIter < 1, or threshold is negative or NaN; then maxLev is above the level of
 *               pPyr1 or pPyr2
 *   ErrNullPtr  an image of the levels 0 to maxLev is null
 *   ErrSize     such a level is empty, larger than the size of the state, or not of the same size in both pyramids
 *   ErrStep     the step of such a level < its width x the element size
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
