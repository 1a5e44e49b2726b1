/* Distance maps of 8-bit images, and flood fill.
 *
 * Nothing here allocates memory. Unless a comment says that a function works in place, operands must not overlap. */
#ifndef ZVPCV_DISTANCE_H
#define ZVPCV_DISTANCE_H

#include <zvpcv/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Chamfer distance transforms: for every nonzero pixel the length of the shortest chain of steps to a zero pixel; zero
 * pixels get 0. A 3x3 transform steps to the eight neighbours, a 5x5 transform also by a knight's move.
 *
 * pSrc          read: h = roiSize.height rows of w = roiSize.width pixels, srcStep bytes apart
 * pDst          written: h rows of w pixels, dstStep bytes apart. zvpiDistanceTransform_*_8u_C1R may write to pSrc with
 *               the same step, which is what the C1IR members do with pSrcDst
 * pMetrics      read: the weights of a step: a (along a row or column) and b (diagonal), 5x5: also c (knight's move);
 *               integers >= 1, or floats > 0
 *
 * Result: that of two passes over the image. Forward, rows from top to bottom and pixels from left to right: a nonzero
 * pixel is the least of the type's maximum and, over the neighbours inside the region that lie above it or to its left
 * in the same row, neighbour + weight. Backward, in the opposite order: the least of the forward value and, over the
 * mirrored neighbours, neighbour + weight. Integer sums saturate at 255 or 65535; float sums are single precision, each
 * rounded once, and at most FLT_MAX. Where nothing reaches a zero pixel, the result is the maximum.
 *
 * G. Borgefors, Distance Transformations in Digital Images, 1986.
 *
 * Status, in the order of the checks:
 *   ErrNullPtr          pSrc, pDst (or pSrcDst) or pMetrics is null
 *   ErrSize             width or height < 1
 *   ErrStep             srcStep < w or dstStep < w x element size
 *   ErrStepNotMultiple  dstStep is not a multiple of the element size (16u: 2, 32f: 4)
 *   ErrMetric           a weight < 1 (integers), or <= 0 or NaN (floats)
 *   StatusOk */
ZVP_API Status zvpiDistanceTransform_3x3_8u_C1R(const uint8_t* pSrc, int srcStep, uint8_t* pDst, int dstStep,
                                                RoiSize roiSize, const int32_t* pMetrics);
ZVP_API Status zvpiDistanceTransform_3x3_8u_C1IR(uint8_t* pSrcDst, int srcDstStep, RoiSize roiSize,
                                                 const int32_t* pMetrics);
ZVP_API Status zvpiDistanceTransform_3x3_8u16u_C1R(const uint8_t* pSrc, int srcStep, uint16_t* pDst, int dstStep,
                                                   RoiSize roiSize, const int32_t* pMetrics);
ZVP_API Status zvpiDistanceTransform_3x3_8u32f_C1R(const uint8_t* pSrc, int srcStep, float* pDst, int dstStep,
                                                   RoiSize roiSize, const float* pMetrics);
ZVP_API Status zvpiDistanceTransform_5x5_8u_C1R(const uint8_t* pSrc, int srcStep, uint8_t* pDst, int dstStep,
                                                RoiSize roiSize, const int32_t* pMetrics);
ZVP_API Status zvpiDistanceTransform_5x5_8u_C1IR(uint8_t* pSrcDst, int srcDstStep, RoiSize roiSize,
                                                 const int32_t* pMetrics);
ZVP_API Status zvpiDistanceTransform_5x5_8u16u_C1R(const uint8_t* pSrc, int srcStep, uint16_t* pDst, int dstStep,
                                                   RoiSize roiSize, const int32_t* pMetrics);
ZVP_API Status zvpiDistanceTransform_5x5_8u32f_C1R(const uint8_t* pSrc, int srcStep, float* pDst, int dstStep,
                                                   RoiSize roiSize, const float* pMetrics);

/* The usual weights of chamfer transforms.
 *
 * kernelSize    3 or 5
 * norm          the distance that they approximate: 0 chessboard, 1 city block, 2 Euclidean
 * maskType      kernelSize x 10 + norm
 * pMetrics      written: a and b (kernelSize 3), or a, b and c (kernelSize 5):
 *
 *                 kernel  norm   integers   floats (the nearest in single precision)
 *                 3       0      1 1        1 1
 *                 3       1      1 2        1 2
 *                 3       2      2 3        0.955 1.3693
 *                 5       0      1 1 2      1 1 2
 *                 5       1      1 2 3      1 2 3
 *                 5       2      5 7 11     1 1.4 2.1969
 *
 * Status, in the order of the checks:
 *   ErrBadArg   zvpiGetDistanceTransformMask only: the last digit of maskType is not 0, 1 or 2
 *   ErrNullPtr  pMetrics is null
 *   ErrSize     kernelSize is not 3 or 5
 *   ErrBadArg   norm is not 0, 1 or 2
 *   StatusOk */
ZVP_API Status zvpiGetDistanceTransformMask_32s(int kernelSize, int norm, int32_t* pMetrics);
ZVP_API Status zvpiGetDistanceTransformMask_32f(int kernelSize, int norm, float* pMetrics);
ZVP_API Status zvpiGetDistanceTransformMask(int maskType, float* pMetrics);

/* Exact Euclidean distance transform: for every pixel the squared distance to the nearest zero pixel.
 *
 * pSrc          read: h = roiSize.height rows of w = roiSize.width pixels, srcStep bytes apart
 * pDst          written: h rows of w pixels, dstStep bytes apart: the squared distance, an integer, rounded once to
 *               single precision; no square root is taken. Zero pixels get 0; without any zero pixel every pixel gets
 *               FLT_MAX
 * pBuffer       written: work memory of the size that the query gives; it may start at any address and its contents
 *               mean nothing
 *
 * Time is proportional to w x h. A. Meijster, J. Roerdink, W. Hesselink, A General Algorithm for Computing Distance
 * Transforms in Linear Time, 2000.
 *
 * Status, in the order of the checks:
 *   ErrNullPtr          a pointer is null
 *   ErrSize             width or height < 1
 *   ErrStep             srcStep < w or dstStep < 4 x w
 *   ErrStepNotMultiple  dstStep is not a multiple of 4
 *   StatusOk */
ZVP_API Status zvpiTrueDistanceTransform_8u32f_C1R(const uint8_t* pSrc, int srcStep, float* pDst, int dstStep,
                                                   RoiSize roiSize, uint8_t* pBuffer);

/* Bytes of work memory of the exact transform: 24 x n + 56, n being the larger of width and height, each rounded up to
 * a multiple of 4.
 *
 * pBufferSize   written: the number of bytes
 *
 * Status, in the order of the checks:
 *   ErrNullPtr  pBufferSize is null
 *   ErrSize     width or height < 1, or the size does not fit 31 bits
 *   StatusOk */
ZVP_API Status zvpiTrueDistanceTransformGetBufferSize_8u32f_C1R(RoiSize roiSize, int* pBufferSize);

/* What a flood fill has filled. */
typedef struct ConnectedComponent {
  double area;     /* number of pixels */
  double value[3]; /* the new value of each channel; 0 for channels that the image does not have */
  Rect rect;       /* the smallest rectangle that holds them */
} ConnectedComponent;

/* Flood fill: gives a new value to the pixels that are connected with the seed by a rule. Pixels are neighbours when
 * they share an edge (4Con) or an edge or a corner (8Con). With s the seed's value before the fill, a pixel p joins if
 *   equality   p = s
 *   Range      s - minDelta <= p <= s + maxDelta
 *   Grad       q - minDelta <= p <= q + maxDelta for a neighbour q that has joined, with the values before the fill
 * in every channel. The seed itself always joins. Range bounds of integers saturate at the type's range; bounds of
 * floats are single-precision sums. Floats compare as numbers: -0 equals 0, and a NaN joins nothing.
 *
 * pImage        read and written in place: h = roiSize.height rows of w = roiSize.width pixels of one (C1IR) or three
 *               (C3IR) channels, imageStep bytes apart
 * seed          the start, in pixels: 0 <= x < w, 0 <= y < h
 * newVal        the new value; pNewVal: three of them
 * minDelta, maxDelta
 *               how far below and above a pixel may lie; pMinDelta, pMaxDelta: three of each
 * pRegion       written: what has been filled
 * pBuffer       written: work memory of the size that zvpiFloodFillGetSize (equality and Range) or
 *               zvpiFloodFillGetSize_Grad gives; it may start at any address and its contents mean nothing
 *
 * If the seed equals newVal in every channel, nothing is written, neither the image nor pRegion.
 *
 * Equality and Grad fill every pixel that the rule reaches, whatever the image. Range remembers the runs of pixels
 * whose surroundings it has still to look at in a stack of max(1, w x h / 4) records (rounded down); one more makes it
 * forget them all, and the fill ends early without a warning: the pixels filled so far keep the new value and count in
 * area, rect holds the runs that have been looked at. (Each record goes up or down from the run that found it; no
 * smooth shape comes near the limit, a comb of single columns on a low image does.) If newVal itself lies within the
 * bounds, Range fills like the others: every pixel that the rule reaches, each once.
 *
 * Time is proportional to the area filled; Grad, and Range with a newVal within the bounds, also clear w x h bytes.
 *
 * A. R. Smith, Tint Fill, 1979; P. Heckbert, A Seed Fill Algorithm, 1990.
 *
 * Status, in the order of the checks:
 *   ErrNullPtr          pImage, pRegion, pBuffer, or (C3IR) pNewVal, pMinDelta or pMaxDelta is null
 *   ErrSize             width or height < 1
 *   ErrStep             imageStep < w x channels x element size
 *   ErrStepNotMultiple  imageStep is not a multiple of the element size (16u: 2, 32f: 4)
 *   ErrOutOfRange       the seed lies outside the region
 *   StatusOk */
ZVP_API Status zvpiFloodFill_4Con_8u_C1IR(uint8_t* pImage, int imageStep, RoiSize roiSize, Point seed, uint8_t newVal,
                                          ConnectedComponent* pRegion, uint8_t* pBuffer);
ZVP_API Status zvpiFloodFill_4Con_8u_C3IR(uint8_t* pImage, int imageStep, RoiSize roiSize, Point seed,
                                          const uint8_t* pNewVal, ConnectedComponent* pRegion, uint8_t* pBuffer);
ZVP_API Status zvpiFloodFill_4Con_16u_C1IR(uint16_t* pImage, int imageStep, RoiSize roiSize, Point seed,
                                           uint16_t newVal, ConnectedComponent* pRegion, uint8_t* pBuffer);
ZVP_API Status zvpiFloodFill_4Con_16u_C3IR(uint16_t* pImage, int imageStep, RoiSize roiSize, Point seed,
                                           const uint16_t* pNewVal, ConnectedComponent* pRegion, uint8_t* pBuffer);
ZVP_API Status zvpiFloodFill_4Con_32f_C1IR(float* pImage, int imageStep, RoiSize roiSize, Point seed, float newVal,
                                           ConnectedComponent* pRegion, uint8_t* pBuffer);
ZVP_API Status zvpiFloodFill_4Con_32f_C3IR(float* pImage, int imageStep, RoiSize roiSize, Point seed,
                                           const float* pNewVal, ConnectedComponent* pRegion, uint8_t* pBuffer);
ZVP_API Status zvpiFloodFill_8Con_8u_C1IR(uint8_t* pImage, int imageStep, RoiSize roiSize, Point seed, uint8_t newVal,
                                          ConnectedComponent* pRegion, uint8_t* pBuffer);
ZVP_API Status zvpiFloodFill_8Con_8u_C3IR(uint8_t* pImage, int imageStep, RoiSize roiSize, Point seed,
                                          const uint8_t* pNewVal, ConnectedComponent* pRegion, uint8_t* pBuffer);
ZVP_API Status zvpiFloodFill_8Con_16u_C1IR(uint16_t* pImage, int imageStep, RoiSize roiSize, Point seed,
                                           uint16_t newVal, ConnectedComponent* pRegion, uint8_t* pBuffer);
ZVP_API Status zvpiFloodFill_8Con_16u_C3IR(uint16_t* pImage, int imageStep, RoiSize roiSize, Point seed,
                                           const uint16_t* pNewVal, ConnectedComponent* pRegion, uint8_t* pBuffer);
ZVP_API Status zvpiFloodFill_8Con_32f_C1IR(float* pImage, int imageStep, RoiSize roiSize, Point seed, float newVal,
                                           ConnectedComponent* pRegion, uint8_t* pBuffer);
ZVP_API Status zvpiFloodFill_8Con_32f_C3IR(float* pImage, int imageStep, RoiSize roiSize, Point seed,
                                           const float* pNewVal, ConnectedComponent* pRegion, uint8_t* pBuffer);
ZVP_API Status zvpiFloodFill_Range4Con_8u_C1IR(uint8_t* pImage, int imageStep, RoiSize roiSize, Point seed,
                                               uint8_t newVal, uint8_t minDelta, uint8_t maxDelta,
                                               ConnectedComponent* pRegion, uint8_t* pBuffer);
ZVP_API Status zvpiFloodFill_Range4Con_8u_C3IR(uint8_t* pImage, int imageStep, RoiSize roiSize, Point seed,
                                               const uint8_t* pNewVal, const uint8_t* pMinDelta,
                                               const uint8_t* pMaxDelta, ConnectedComponent* pRegion, uint8_t* pBuffer);
ZVP_API Status zvpiFloodFill_Range4Con_16u_C1IR(uint16_t* pImage, int imageStep, RoiSize roiSize, Point seed,
                                                uint16_t newVal, uint16_t minDelta, uint16_t maxDelta,
                                                ConnectedComponent* pRegion, uint8_t* pBuffer);
ZVP_API Status zvpiFloodFill_Range4Con_16u_C3IR(uint16_t* pImage, int imageStep, RoiSize roiSize, Point seed,
                                                const uint16_t* pNewVal, const uint16_t* pMinDelta,
                                                const uint16_t* pMaxDelta, ConnectedComponent* pRegion,
                                                uint8_t* pBuffer);
ZVP_API Status zvpiFloodFill_Range4Con_32f_C1IR(float* pImage, int imageStep, RoiSize roiSize, Point seed, float newVal,
                                                float minDelta, float maxDelta, ConnectedComponent* pRegion,
                                                uint8_t* pBuffer);
ZVP_API Status zvpiFloodFill_Range4Con_32f_C3IR(float* pImage, int imageStep, RoiSize roiSize, Point seed,
                                                const float* pNewVal, const float* pMinDelta, const float* pMaxDelta,
                                                ConnectedComponent* pRegion, uint8_t* pBuffer);
ZVP_API Status zvpiFloodFill_Range8Con_8u_C1IR(uint8_t* pImage, int imageStep, RoiSize roiSize, Point seed,
                                               uint8_t newVal, uint8_t minDelta, uint8_t maxDelta,
                                               ConnectedComponent* pRegion, uint8_t* pBuffer);
ZVP_API Status zvpiFloodFill_Range8Con_8u_C3IR(uint8_t* pImage, int imageStep, RoiSize roiSize, Point seed,
                                               const uint8_t* pNewVal, const uint8_t* pMinDelta,
                                               const uint8_t* pMaxDelta, ConnectedComponent* pRegion, uint8_t* pBuffer);
ZVP_API Status zvpiFloodFill_Range8Con_16u_C1IR(uint16_t* pImage, int imageStep, RoiSize roiSize, Point seed,
                                                uint16_t newVal, uint16_t minDelta, uint16_t maxDelta,
                                                ConnectedComponent* pRegion, uint8_t* pBuffer);
ZVP_API Status zvpiFloodFill_Range8Con_16u_C3IR(uint16_t* pImage, int imageStep, RoiSize roiSize, Point seed,
                                                const uint16_t* pNewVal, const uint16_t* pMinDelta,
                                                const uint16_t* pMaxDelta, ConnectedComponent* pRegion,
                                                uint8_t* pBuffer);
ZVP_API Status zvpiFloodFill_Range8Con_32f_C1IR(float* pImage, int imageStep, RoiSize roiSize, Point seed, float newVal,
                                                float minDelta, float maxDelta, ConnectedComponent* pRegion,
                                                uint8_t* pBuffer);
ZVP_API Status zvpiFloodFill_Range8Con_32f_C3IR(float* pImage, int imageStep, RoiSize roiSize, Point seed,
                                                const float* pNewVal, const float* pMinDelta, const float* pMaxDelta,
                                                ConnectedComponent* pRegion, uint8_t* pBuffer);
ZVP_API Status zvpiFloodFill_Grad4Con_8u_C1IR(uint8_t* pImage, int imageStep, RoiSize roiSize, Point seed,
                                              uint8_t newVal, uint8_t minDelta, uint8_t maxDelta,
                                              ConnectedComponent* pRegion, uint8_t* pBuffer);
ZVP_API Status zvpiFloodFill_Grad4Con_8u_C3IR(uint8_t* pImage, int imageStep, RoiSize roiSize, Point seed,
                                              const uint8_t* pNewVal, const uint8_t* pMinDelta,
                                              const uint8_t* pMaxDelta, ConnectedComponent* pRegion, uint8_t* pBuffer);
ZVP_API Status zvpiFloodFill_Grad4Con_16u_C1IR(uint16_t* pImage, int imageStep, RoiSize roiSize, Point seed,
                                               uint16_t newVal, uint16_t minDelta, uint16_t maxDelta,
                                               ConnectedComponent* pRegion, uint8_t* pBuffer);
ZVP_API Status zvpiFloodFill_Grad4Con_16u_C3IR(uint16_t* pImage, int imageStep, RoiSize roiSize, Point seed,
                                               const uint16_t* pNewVal, const uint16_t* pMinDelta,
                                               const uint16_t* pMaxDelta, ConnectedComponent* pRegion,
                                               uint8_t* pBuffer);
ZVP_API Status zvpiFloodFill_Grad4Con_32f_C1IR(float* pImage, int imageStep, RoiSize roiSize, Point seed, float newVal,
                                               float minDelta, float maxDelta, ConnectedComponent* pRegion,
                                               uint8_t* pBuffer);
ZVP_API Status zvpiFloodFill_Grad4Con_32f_C3IR(float* pImage, int imageStep, RoiSize roiSize, Point seed,
                                               const float* pNewVal, const float* pMinDelta, const float* pMaxDelta,
                                               ConnectedComponent* pRegion, uint8_t* pBuffer);
ZVP_API Status zvpiFloodFill_Grad8Con_8u_C1IR(uint8_t* pImage, int imageStep, RoiSize roiSize, Point seed,
                                              uint8_t newVal, uint8_t minDelta, uint8_t maxDelta,
                                              ConnectedComponent* pRegion, uint8_t* pBuffer);
ZVP_API Status zvpiFloodFill_Grad8Con_8u_C3IR(uint8_t* pImage, int imageStep, RoiSize roiSize, Point seed,
                                              const uint8_t* pNewVal, const uint8_t* pMinDelta,
                                              const uint8_t* pMaxDelta, ConnectedComponent* pRegion, uint8_t* pBuffer);
ZVP_API Status zvpiFloodFill_Grad8Con_16u_C1IR(uint16_t* pImage, int imageStep, RoiSize roiSize, Point seed,
                                               uint16_t newVal, uint16_t minDelta, uint16_t maxDelta,
                                               ConnectedComponent* pRegion, uint8_t* pBuffer);
ZVP_API Status zvpiFloodFill_Grad8Con_16u_C3IR(uint16_t* pImage, int imageStep, RoiSize roiSize, Point seed,
                                               const uint16_t* pNewVal, const uint16_t* pMinDelta,
                                               const uint16_t* pMaxDelta, ConnectedComponent* pRegion,
                                               uint8_t* pBuffer);
ZVP_API Status zvpiFloodFill_Grad8Con_32f_C1IR(float* pImage, int imageStep, RoiSize roiSize, Point seed, float newVal,
                                               float minDelta, float maxDelta, ConnectedComponent* pRegion,
                                               uint8_t* pBuffer);
ZVP_API Status zvpiFloodFill_Grad8Con_32f_C3IR(float* pImage, int imageStep, RoiSize roiSize, Point seed,
                                               const float* pNewVal, const float* pMinDelta, const float* pMaxDelta,
                                               ConnectedComponent* pRegion, uint8_t* pBuffer);

/* Bytes of work memory of a fill: 6 x w x h + 32 (equality and Range) or (w + 2) x (h + 2) + 6 x w x h + 32 (Grad), for
 * a region of w = roiSize.width by h = roiSize.height pixels.
 *
 * pBufferSize   written: the number of bytes
 *
 * Status, in the order of the checks:
 *   ErrNullPtr  pBufferSize is null
 *   ErrSize     width or height < 1, or the size does not fit 31 bits
 *   StatusOk */
ZVP_API Status zvpiFloodFillGetSize(RoiSize roiSize, int* pBufferSize);
ZVP_API Status zvpiFloodFillGetSize_Grad(RoiSize roiSize, int* pBufferSize);

#ifdef __cplusplus
}
#endif

#endif
