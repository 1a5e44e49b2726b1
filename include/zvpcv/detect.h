/* Object detection: stages of a cascade of Haar-like features, evaluated over integral images (integral.h).
 *
 * P. Viola, M. Jones, Rapid Object Detection using a Boosted Cascade of Simple Features, 2001; tilted features:
 * R. Lienhart, J. Maydt, An Extended Set of Haar-like Features for Rapid Object Detection, 2002.
 *
 * The typical road: integral images of the frame; the standard deviation of every window (zvpiRectStdDev_32f_C1R); one
 * classifier object per stage; a mask of non-zero bytes; then the stages in turn, each of which clears the mask where
 * it rejects the window at that position. */
#ifndef ZVPCV_DETECT_H
#define ZVPCV_DETECT_H

#include <zvpcv/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* One stage. Created by an InitAlloc, released by the matching Free. The Apply and Get functions only read it, so it
 * may serve any number of threads at once; the Tilt functions change it. */
typedef struct HaarClassifier HaarClassifier;

/* Builds a classifier object from the caller's arrays, which are only read during the call.
 *
 * pState       written on success: the new object
 * pNum         [length] rectangles of each weak classifier, >= 1
 * pFeature     [sum of pNum] the rectangles of all classifiers, in classifier order: x, y >= 0; width, height >= 1
 * pWeight      [sum of pNum] the weight of each rectangle
 * pThreshold, pVal1, pVal2
 *              [length] a classifier adds pVal1 to the stage's sum where norm x threshold > its weighted sum, else
 *              pVal2
 * length       weak classifiers, >= 0
 *
 * The object keeps its classifiers in this order: all with two rectangles, then all with three, then all others, each
 * in input order; sums are formed in that order. 32f objects are for the Apply functions that end in 32f, 32s objects
 * for the ones that end in Sfs.
 *
 * The tilted forms take every rectangle as one turned by 45 degrees whose topmost corner is (x, y), and mark every
 * classifier as one to be evaluated on the tilted integral image.
 *
 * Status, in the order of the checks (*pState is untouched by every failure):
 *   ErrNullPtr   pState or an array is null
 *   ErrSize      length < 0
 *   ErrSize      an entry of pNum < 1
 *   ErrNoMemory  the object would need more than 2^31 - 1 bytes (48 + 24 x length + 36 x rectangles)
 *   ErrBadArg    a rectangle with x < 0, y < 0, width < 1 or height < 1, or whose x + width or y + height (tilted
 *                forms: y + width + height) exceeds 2^31 - 1
 *   ErrNoMemory  the allocation failed
 *   StatusOk */
ZVP_API Status zvpiHaarClassifierInitAlloc_32f(HaarClassifier** pState, const Rect* pFeature, const float* pWeight,
                                               const float* pThreshold, const float* pVal1, const float* pVal2,
                                               const int* pNum, int length);
ZVP_API Status zvpiHaarClassifierInitAlloc_32s(HaarClassifier** pState, const Rect* pFeature, const int32_t* pWeight,
                                               const int32_t* pThreshold, const int32_t* pVal1, const int32_t* pVal2,
                                               const int* pNum, int length);
ZVP_API Status zvpiTiltedHaarClassifierInitAlloc_32f(HaarClassifier** pState, const Rect* pFeature,
                                                     const float* pWeight, const float* pThreshold, const float* pVal1,
                                                     const float* pVal2, const int* pNum, int length);
ZVP_API Status zvpiTiltedHaarClassifierInitAlloc_32s(HaarClassifier** pState, const Rect* pFeature,
                                                     const int32_t* pWeight, const int32_t* pThreshold,
                                                     const int32_t* pVal1, const int32_t* pVal2, const int* pNum,
                                                     int length);

/* Releases an object; null is allowed. Both names are one function. Always StatusOk. */
ZVP_API Status zvpiHaarClassifierFree_32f(HaarClassifier* pState);
ZVP_API Status zvpiHaarClassifierFree_32s(HaarClassifier* pState);

/* Stores the extent of the features: the largest column and the largest row of any corner (x + width and y + height of
 * upright rectangles), at least 0; 0 x 0 without classifiers. Both names are one function.
 * Status: ErrNullPtr (pState or pSize is null), StatusOk. */
ZVP_API Status zvpiGetHaarClassifierSize_32f(HaarClassifier* pState, RoiSize* pSize);
ZVP_API Status zvpiGetHaarClassifierSize_32s(HaarClassifier* pState, RoiSize* pSize);

/* Turns chosen classifiers of an upright object into tilted ones; possible once per object. Both names do the same.
 *
 * pMask    one byte per classifier, in the order of the InitAlloc's arrays; non-zero: tilt this classifier
 * flag     how a rectangle (x, y, W, H) is turned, its corners then being, in the order of the weighted sum
 *          c0 - c1 - c2 + c3, as (column, row):
 *          0         (x, y+H), (x-H, y), (x+W, y+H-W), (x+W-H, y-W)
 *          non-zero  (x+W-H, y+H+W), (x-H, y+H), (x+W, y+W), (x, y)
 *          Corners may become negative; they wrap modulo 2^32.
 * pState   read and written. Positions are known modulo 2^24.
 *
 * Status, in the order of the checks:
 *   ErrNullPtr  pMask or pState is null
 *   ErrBadArg   the object is tilted already: built so, or by an earlier call in which a byte of pMask was non-zero
 *   StatusOk */
ZVP_API Status zvpiTiltHaarFeatures_32f(const uint8_t* pMask, int flag, HaarClassifier* pState);
ZVP_API Status zvpiTiltHaarFeatures_32s(const uint8_t* pMask, int flag, HaarClassifier* pState);

/* Evaluates one stage at every position whose mask byte is non-zero.
 *
 * pSrc       read: the integral image, srcStep bytes apart. Position (i, j) reads, for each corner (column, row) of
 *            each rectangle, the entry (i + row, j + column); nothing is read for positions whose mask byte is 0, apart
 *            from entries between two that selected positions of the same row read
 * pNorm      read: roiSize, the standard deviation at each position, normStep bytes apart
 * pMask      read and written: roiSize, maskStep bytes apart; cleared where the stage rejects, else left as it is
 * pPositive  written: how many positions remain
 * threshold  of the stage: a position is rejected where threshold > sum (so a sum that is equal passes)
 * pState     the stage; classifiers marked as tilted are evaluated on pSrc like the others
 *
 * For each classifier in the object's order, t is the sum over its rectangles of weight x (c0 - c1 - c2 + c3), with the
 * corners of (x, y, W, H) being c0 (x+W, y+H), c1 (x, y+H), c2 (x+W, y), c3 (x, y); pVal1 is added to the sum where
 * norm x threshold of the classifier > t, else pVal2.
 *   32f     ((c0 - c1) - c2) + c3, products and sums in single precision, starting from 0
 *   32s32f  the rectangle sum wraps in 32 bits and is then converted to single precision; the rest as 32f
 *   32s     the rectangle sum wraps in 32 bits; t, norm x threshold and the stage's sum are 64-bit integers that wrap.
 *           norm x threshold is taken times 2^-scaleFactor, rounded down; any scaleFactor is accepted (64 and above
 *           leave 0 or -1, -64 and below leave 0)
 *
 * Allocates a table of corner offsets for the time of the call.
 *
 * Status, in the order of the checks (the mask and *pPositive are untouched by every failure):
 *   ErrNullPtr          a pointer is null
 *   ErrSize             width or height < 1
 *   ErrStep             srcStep or normStep < 4 x width, or maskStep < width
 *   ErrStepNotMultiple  srcStep or normStep is not a multiple of 4
 *   ErrNoMemory         the table cannot be allocated; so also for an object without classifiers
 *   StatusOk */
ZVP_API Status zvpiApplyHaarClassifier_32f_C1R(const float* pSrc, int srcStep, const float* pNorm, int normStep,
                                               uint8_t* pMask, int maskStep, RoiSize roiSize, int* pPositive,
                                               float threshold, HaarClassifier* pState);
ZVP_API Status zvpiApplyHaarClassifier_32s32f_C1R(const int32_t* pSrc, int srcStep, const float* pNorm, int normStep,
                                                  uint8_t* pMask, int maskStep, RoiSize roiSize, int* pPositive,
                                                  float threshold, HaarClassifier* pState);
ZVP_API Status zvpiApplyHaarClassifier_32s_C1RSfs(const int32_t* pSrc, int srcStep, const int32_t* pNorm, int normStep,
                                                  uint8_t* pMask, int maskStep, RoiSize roiSize, int* pPositive,
                                                  int32_t threshold, HaarClassifier* pState, int scaleFactor);

/* The same for objects that mix upright and tilted classifiers. The tilted ones read pTilt, the tilted integral image,
 * tiltStep bytes apart: position (i, j) reads the entry (i + 1 + row, j + 1 + column) for each corner. Allocates
 * nothing; an object without classifiers has the sum 0 everywhere.
 *
 * Status, in the order of the checks (the mask and *pPositive are untouched by every failure):
 *   ErrNullPtr          a pointer is null
 *   ErrSize             width or height < 1
 *   ErrStep             srcStep, tiltStep or normStep < 4 x width, or maskStep < width
 *   ErrStepNotMultiple  srcStep, tiltStep or normStep is not a multiple of 4
 *   StatusOk */
ZVP_API Status zvpiApplyMixedHaarClassifier_32f_C1R(const float* pSrc, int srcStep, const float* pTilt, int tiltStep,
                                                    const float* pNorm, int normStep, uint8_t* pMask, int maskStep,
                                                    RoiSize roiSize, int* pPositive, float threshold,
                                                    HaarClassifier* pState);
ZVP_API Status zvpiApplyMixedHaarClassifier_32s32f_C1R(const int32_t* pSrc, int srcStep, const int32_t* pTilt,
                                                       int tiltStep, const float* pNorm, int normStep, uint8_t* pMask,
                                                       int maskStep, RoiSize roiSize, int* pPositive, float threshold,
                                                       HaarClassifier* pState);
ZVP_API Status zvpiApplyMixedHaarClassifier_32s_C1RSfs(const int32_t* pSrc, int srcStep, const int32_t* pTilt,
                                                       int tiltStep, const int32_t* pNorm, int normStep, uint8_t* pMask,
                                                       int maskStep, RoiSize roiSize, int* pPositive, int32_t threshold,
                                                       HaarClassifier* pState, int scaleFactor);

#ifdef __cplusplus
}
#endif

#endif
