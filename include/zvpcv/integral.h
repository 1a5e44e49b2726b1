/* Integral images (summed-area tables) of values and of squared values, upright and tilted by 45 degrees, and the
 * standard deviation inside a rectangle placed at every position.
 *
 * Upright: F. Crow, Summed-Area Tables for Texture Mapping, 1984. Tilted: R. Lienhart, J. Maydt, An Extended Set of
 * Haar-like Features for Rapid Object Detection, 2002.
 *
 * Nothing here allocates memory. Source and tables must not overlap. */
#ifndef ZVPCV_INTEGRAL_H
#define ZVPCV_INTEGRAL_H

#include <zvpcv/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Upright integral images of a source of w = roiSize.width by h = roiSize.height pixels.
 *
 * pSrc          read: h rows of w pixels, srcStep bytes apart
 * pDst          written: h + 1 rows of w + 1 entries, dstStep bytes apart. Entry (r, c) is val plus the sum of the
 *               pixels in rows 0..r-1 and columns 0..c-1; row 0 and column 0 hold val
 * pSqr          written: the same for squared pixels and valSqr, sqrStep bytes apart (SqrIntegral only)
 * val, valSqr   start values; zvpiIntegral_32f_C1R starts at 0
 *
 * 32s tables wrap modulo 2^32. In the others an entry is the row's sum so far plus the entry above: a 32f table of an
 * 8u source keeps the row sum as a signed 32-bit integer, which wraps beyond 2^31 - 1 (rows longer than 8421504 pixels
 * can reach that), converts it to single precision and adds the entry above in single precision; 64f tables keep the
 * row sum exact and add the entry above in double precision; zvpiIntegral_32f_C1R adds pixel by pixel, left to right,
 * in single precision.
 *
 * Status, in the order of the checks:
 *   ErrNullPtr          a pointer is null
 *   ErrSize             width or height < 1
 *   ErrStep             srcStep < w x element size, dstStep < (w + 1) x 4, sqrStep < (w + 1) x element size
 *   ErrStepNotMultiple  a step that is not a multiple of its element size (4, or 8 for 64f)
 *   StatusOk */
ZVP_API Status zvpiIntegral_8u32s_C1R(const uint8_t* pSrc, int srcStep, int32_t* pDst, int dstStep, RoiSize roiSize,
                                      int32_t val);
ZVP_API Status zvpiIntegral_8u32f_C1R(const uint8_t* pSrc, int srcStep, float* pDst, int dstStep, RoiSize roiSize,
                                      float val);
ZVP_API Status zvpiIntegral_32f_C1R(const float* pSrc, int srcStep, float* pDst, int dstStep, RoiSize roiSize);
ZVP_API Status zvpiSqrIntegral_8u32s_C1R(const uint8_t* pSrc, int srcStep, int32_t* pDst, int dstStep, int32_t* pSqr,
                                         int sqrStep, RoiSize roiSize, int32_t val, int32_t valSqr);
ZVP_API Status zvpiSqrIntegral_8u32s64f_C1R(const uint8_t* pSrc, int srcStep, int32_t* pDst, int dstStep, double* pSqr,
                                            int sqrStep, RoiSize roiSize, int32_t val, double valSqr);
ZVP_API Status zvpiSqrIntegral_8u32f64f_C1R(const uint8_t* pSrc, int srcStep, float* pDst, int dstStep, double* pSqr,
                                            int sqrStep, RoiSize roiSize, float val, double valSqr);

/* Integral images tilted by 45 degrees, of a source of w = roiSize.width by h = roiSize.height pixels.
 *
 * pSrc          read: h rows of w pixels, srcStep bytes apart
 * pDst          written: h + 2 rows of w + 2 entries, dstStep bytes apart. Rows 0 and 1 hold val; for r >= 2 and the
 *               source row y = r - 2, with I(y, w) = 0,
 *                 T(r, 0)     = T(r-1, 1)
 *                 T(r, j)     = I(y, j) + I(y, j-1) + T(r-1, j-1) - (T(r-2, j) - T(r-1, j+1))    for 1 <= j <= w
 *                 T(r, w + 1) = T(r-1, w)
 * pSqr          written: the same for squared pixels and valSqr, sqrStep bytes apart (TiltedSqrIntegral only)
 * val, valSqr   start values
 *
 * 32s tables wrap modulo 2^32. 32f: for j < w in double precision as
 * (((T(r-1, j-1) - T(r-2, j)) + T(r-1, j+1)) + I(y, j-1)) + I(y, j), rounded once; for j = w in single precision in the
 * order above. 64f: the two squares are added as integers, the rest in double precision in the order above.
 *
 * Status, in the order of the checks: as the upright integrals, with w + 2 for w + 1. */
ZVP_API Status zvpiTiltedIntegral_8u32s_C1R(const uint8_t* pSrc, int srcStep, int32_t* pDst, int dstStep,
                                            RoiSize roiSize, int32_t val);
ZVP_API Status zvpiTiltedIntegral_8u32f_C1R(const uint8_t* pSrc, int srcStep, float* pDst, int dstStep, RoiSize roiSize,
                                            float val);
ZVP_API Status zvpiTiltedSqrIntegral_8u32s_C1R(const uint8_t* pSrc, int srcStep, int32_t* pDst, int dstStep,
                                               int32_t* pSqr, int sqrStep, RoiSize roiSize, int32_t val,
                                               int32_t valSqr);
ZVP_API Status zvpiTiltedSqrIntegral_8u32s64f_C1R(const uint8_t* pSrc, int srcStep, int32_t* pDst, int dstStep,
                                                  double* pSqr, int sqrStep, RoiSize roiSize, int32_t val,
                                                  double valSqr);
ZVP_API Status zvpiTiltedSqrIntegral_8u32f64f_C1R(const uint8_t* pSrc, int srcStep, float* pDst, int dstStep,
                                                  double* pSqr, int sqrStep, RoiSize roiSize, float val, double valSqr);

/* Standard deviation of the pixels inside rect, placed at every position of an output of roiSize.width by
 * roiSize.height pixels, from the upright integral images.
 *
 * pSrc          read: table of sums T, srcStep bytes apart; with rect = (x, y, width, height) output (i, j) reads rows
 *               i + y and i + y + height, columns j + x and j + x + width
 * pSqr          read: table Q of squares, sqrStep bytes apart, at the same entries
 * pDst          written: roiSize.height rows of roiSize.width pixels, dstStep bytes apart
 * scaleFactor   32s_C1RSfs: any value; the result is multiplied by 2^-scaleFactor
 *
 * With a, b the upper left and right entries and e, d the lower left and right ones:
 *   inv      = 1 / area in double precision, the area (width x height) being converted to single precision first
 *   mean     = ((a - b) + (d - e)) x inv; the bracket in the table's type (32f: single precision; 32s: wraps), then
 *              converted to double
 *   meanSq   = ((qa - qb) + (qd - qe)) x inv in double precision (32s squares: the bracket wraps)
 *   variance = meanSq - mean x mean in double precision
 *   32f result: the single-precision square root of the variance rounded to single precision; a negative variance is
 *   not clamped and gives NaN. 32s result: square root x 2^-scaleFactor in double precision, rounded to nearest even,
 *   saturated; a negative variance gives 0.
 *
 * Status, in the order of the checks:
 *   ErrNullPtr          a pointer is null
 *   ErrSize             roiSize.width or roiSize.height < 1
 *   ErrStep             srcStep or sqrStep < (roiSize.width + rect.x + rect.width) x element size,
 *                       dstStep < 4 x roiSize.width
 *   ErrStepNotMultiple  a step that is not a multiple of its element size (4, or 8 for 64f)
 *   ErrSize             rect.x < 0, rect.y < 0, rect.width < 1 or rect.height < 1
 *   StatusOk */
ZVP_API Status zvpiRectStdDev_32f_C1R(const float* pSrc, int srcStep, const double* pSqr, int sqrStep, float* pDst,
                                      int dstStep, RoiSize roiSize, Rect rect);
ZVP_API Status zvpiRectStdDev_32s32f_C1R(const int32_t* pSrc, int srcStep, const double* pSqr, int sqrStep, float* pDst,
                                         int dstStep, RoiSize roiSize, Rect rect);
ZVP_API Status zvpiRectStdDev_32s_C1RSfs(const int32_t* pSrc, int srcStep, const int32_t* pSqr, int sqrStep,
                                         int32_t* pDst, int dstStep, RoiSize roiSize, Rect rect, int scaleFactor);

/* Standard deviation of the pixels inside a rectangle tilted by 45 degrees, placed at every position, from the tilted
 * integral images. Arguments and results are those of the upright forms, except:
 *
 * rect          (x, y, W, H): its corners at output (i, j), as (column, row) of the tables, are
 *                 top (j+x+H, i+y), left (j+x, i+y+H), right (j+x+W+H, i+y+W), bottom (j+x+W, i+y+W+H)
 * bracket       (top - left) + (bottom - right)
 * area          2 x W x H, in double precision throughout
 * ErrStep       srcStep or sqrStep < (roiSize.width + W + x + y + H - 1) x element size, dstStep < 4 x roiSize.width */
ZVP_API Status zvpiTiltedRectStdDev_32f_C1R(const float* pSrc, int srcStep, const double* pSqr, int sqrStep,
                                            float* pDst, int dstStep, RoiSize roiSize, Rect rect);
ZVP_API Status zvpiTiltedRectStdDev_32s32f_C1R(const int32_t* pSrc, int srcStep, const double* pSqr, int sqrStep,
                                               float* pDst, int dstStep, RoiSize roiSize, Rect rect);
ZVP_API Status zvpiTiltedRectStdDev_32s_C1RSfs(const int32_t* pSrc, int srcStep, const int32_t* pSqr, int sqrStep,
                                               int32_t* pDst, int dstStep, RoiSize roiSize, Rect rect, int scaleFactor);

#ifdef __cplusplus
}
#endif

#endif
