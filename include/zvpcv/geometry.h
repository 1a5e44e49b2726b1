/* Copies of windows at sub-pixel positions, by bilinear interpolation.
 *
 * Nothing here allocates memory. Source and destination must not overlap. */
#ifndef ZVPCV_GEOMETRY_H
#define ZVPCV_GEOMETRY_H

#include <zvpcv/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Shifts an image of w = roiSize.width by h = roiSize.height pixels by the fractional part of a displacement: pixel
 * (x, y) of the destination is the weighted sum of the source pixels (x, y), (x + 1, y), (x, y + 1), (x + 1, y + 1).
 *
 * pSrc          read: h + 1 rows of w + 1 pixels, srcStep bytes apart. The whole part of the displacement moves
 *               nothing: the region is read from pSrc on
 * pDst          written: h rows of w pixels, dstStep bytes apart
 * dx, dy        the displacement in pixels. Its fraction is f = d - trunc(d), in single precision, plus 1 if that is
 *               negative: -0.25 does what 0.75 does. Infinities and NaN count as 0
 * scaleFactor   8u16u: -13 or more; the result is multiplied by 2^-scaleFactor
 *
 * Members with 32f destinations: fx is raised to at least 1e-6; fy to at least 1e-6 (32f) or 1e-9 (8u32f, 16u32f). In
 * single precision, every operation rounded:
 *   w00 = (1 - fx)(1 - fy), w10 = fx (1 - fy), w01 = (1 - fx) fy, w11 = fx fy
 *   dst(x, y) = ((w00 s(x, y) + w10 s(x + 1, y)) + w01 s(x, y + 1)) + w11 s(x + 1, y + 1)
 * Members with integer destinations: weights have 14 fractional bits. With ax = trunc(0.5 + 16384 fx) in single
 * precision, bx = 16384 - ax, and ay, by alike, the weights are
 *   w00 = (bx by + 16384) >> 14, w10 = (ax by + 16384) >> 14, w01 = (bx ay + 16384) >> 14, w11 = (ax ay + 16384) >> 14
 * What their sum exceeds 16384 by is taken off the first of w00, w01, w10, w11 that is not smaller than any other.
 *   dst = (sum of products + 8192) >> 14                                       8u, 16u
 *   dst = (sum of products + 2^(scaleFactor + 13)) >> (scaleFactor + 14)       8u16u, saturated
 *
 * Status, in the order of the checks:
 *   ErrNullPtr          pSrc or pDst is null
 *   ErrSize             width or height < 1
 *   ErrStep             srcStep or dstStep < w x its element size
 *   ErrStepNotMultiple  a step of 16u or 32f elements that is not a multiple of their size
 *   ErrBadArg           scaleFactor < -13
 *   StatusOk */
ZVP_API Status zvpiCopySubpix_8u_C1R(const uint8_t* pSrc, int srcStep, uint8_t* pDst, int dstStep, RoiSize roiSize,
                                     float dx, float dy);
ZVP_API Status zvpiCopySubpix_16u_C1R(const uint16_t* pSrc, int srcStep, uint16_t* pDst, int dstStep, RoiSize roiSize,
                                      float dx, float dy);
ZVP_API Status zvpiCopySubpix_8u16u_C1R_Sfs(const uint8_t* pSrc, int srcStep, uint16_t* pDst, int dstStep,
                                            RoiSize roiSize, float dx, float dy, int scaleFactor);
ZVP_API Status zvpiCopySubpix_16u32f_C1R(const uint16_t* pSrc, int srcStep, float* pDst, int dstStep, RoiSize roiSize,
                                         float dx, float dy);
ZVP_API Status zvpiCopySubpix_8u32f_C1R(const uint8_t* pSrc, int srcStep, float* pDst, int dstStep, RoiSize roiSize,
                                        float dx, float dy);
ZVP_API Status zvpiCopySubpix_32f_C1R(const float* pSrc, int srcStep, float* pDst, int dstStep, RoiSize roiSize,
                                      float dx, float dy);

/* Copies a window centred on a point that may lie anywhere, also outside the source, and says which part of the window
 * comes from pixels inside the source. Samples outside the source are its nearest pixels.
 *
 * pSrc          read: srcRoiSize.height rows of srcRoiSize.width pixels, srcStep bytes apart, and no other memory
 * pDst          written: dstRoiSize.height rows of n = dstRoiSize.width pixels, dstStep bytes apart
 * point         the centre of the window in source pixels
 * pMin, pMax    written: the columns pMin->x to pMax->x and the rows pMin->y to pMax->y of the destination were
 *               computed from neighbours inside the source; there are none where pMax is less than pMin
 * scaleFactor   as above
 *
 * Per coordinate, in single precision, for a source of m columns (rows alike): the window starts at
 * t = point.x - 0.5 (n - 1); i = trunc(t + n) - n is its first column and f = t - i the fraction. Where t + n does not
 * fit 32 bits the window lies outside: before the first column, or (NaN too) behind the last one. Beyond +-2^24, where
 * single precision has no fractions, f is 0.
 *   i >= m      pMin = 0, pMax = -1
 *   otherwise   pMin = -i limited to 0 .. n, pMax = the smaller of n - 1 and m - 2 - i
 * Results are those of zvpiCopySubpix with these fractions, except that fx and fy are not raised, and that source
 * columns and rows are limited to the source: less than 0 is 0, more than m - 1 is m - 1. 8u and 16u saturate, because
 * rounding can make f a little less than 0. So it is before column -n, where all columns of the window are the same.
 *
 * Status, in the order of the checks:
 *   ErrNullPtr          pSrc, pDst, pMin or pMax is null
 *   ErrSize             a width or height < 1
 *   ErrStep             srcStep < srcRoiSize.width or dstStep < dstRoiSize.width, times the element size
 *   ErrStepNotMultiple  a step of 16u or 32f elements that is not a multiple of their size
 *   ErrBadArg           scaleFactor < -13
 *   StatusOk */
ZVP_API Status zvpiCopySubpixIntersect_8u_C1R(const uint8_t* pSrc, int srcStep, RoiSize srcRoiSize, uint8_t* pDst,
                                              int dstStep, RoiSize dstRoiSize, Point32f point, Point* pMin,
                                              Point* pMax);
ZVP_API Status zvpiCopySubpixIntersect_16u_C1R(const uint16_t* pSrc, int srcStep, RoiSize srcRoiSize, uint16_t* pDst,
                                               int dstStep, RoiSize dstRoiSize, Point32f point, Point* pMin,
                                               Point* pMax);
ZVP_API Status zvpiCopySubpixIntersect_8u16u_C1R_Sfs(const uint8_t* pSrc, int srcStep, RoiSize srcRoiSize,
                                                     uint16_t* pDst, int dstStep, RoiSize dstRoiSize, Point32f point,
                                                     Point* pMin, Point* pMax, int scaleFactor);
ZVP_API Status zvpiCopySubpixIntersect_16u32f_C1R(const uint16_t* pSrc, int srcStep, RoiSize srcRoiSize, float* pDst,
                                                  int dstStep, RoiSize dstRoiSize, Point32f point, Point* pMin,
                                                  Point* pMax);
ZVP_API Status zvpiCopySubpixIntersect_8u32f_C1R(const uint8_t* pSrc, int srcStep, RoiSize srcRoiSize, float* pDst,
                                                 int dstStep, RoiSize dstRoiSize, Point32f point, Point* pMin,
                                                 Point* pMax);
ZVP_API Status zvpiCopySubpixIntersect_32f_C1R(const float* pSrc, int srcStep, RoiSize srcRoiSize, float* pDst,
                                               int dstStep, RoiSize dstRoiSize, Point32f point, Point* pMin,
                                               Point* pMax);

#ifdef __cplusplus
}
#endif

#endif
