/* Separable linear filters in two halves: a row pipeline filters every row with a one-dimensional kernel, a column
 * pipeline combines neighbouring rows. The rows between the two are the caller's, so that an image can be filtered band
 * by band through a small ring of rows that stays in the cache, and rows above and below the image are whatever the
 * caller names: naming its first row several times repeats it.
 *
 * Kernels are applied as correlations: tap 0 meets the leftmost or uppermost pixel. The row kernel has an anchor, the
 * tap that meets the output's own pixel; the column kernel has none: its tap i meets row y + i of the row array.
 *
 * Arithmetic of the integer members. R = 1.0f / (float)divisor in single precision.
 *   - If the absolute values of the taps add up to less than 65535, the sum of products is exact and S is the sum
 *     converted to single precision, times R. Otherwise every tap is converted to single precision and multiplied by R
 *     first, and S is the sum of products in single precision, tap 0 first, each product rounded before it is added.
 *   - Rounded outputs: S to the nearest integer, ties to even, saturated to the output type.
 *   - Truncated outputs: S clamped to the output type's range, then truncated toward zero.
 * Arithmetic of the Low members. r = the integer part of 16384.0f / (float)divisor.
 *   - Wrapped outputs: the sum of products modulo 2^16 as a signed 16-bit number; multiplied by r, shifted right by 14
 *     (arithmetically) and saturated, or, if the divisor is 1, as it is.
 *   - Unsaturated outputs: the low 16 bits of (sum of products x r) >> 14.
 * Arithmetic of the 32f members: the sum of products in single precision, tap 0 first, each product rounded before it
 * is added, starting with the first product.
 *
 * Sources, outputs and buffers must not overlap. Nothing here allocates memory. */
#ifndef ZVPCV_FILTER_H
#define ZVPCV_FILTER_H

#include <zvpcv/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Filters every row of an image of w = roiSize.width by h = roiSize.height pixels with a kernel of k = kernelSize taps:
 * output x of a row is the sum over i of tap i times pixel x + i - xAnchor of that row.
 *
 * pSrc          read: h rows of w pixels, srcStep bytes apart, and no other memory
 * ppDst         read: h pointers, in order; row y of w pixels is written to ppDst[y] (w values C1R, 3 w values C3R)
 * pKernel       read: k taps
 * xAnchor       0 to k - 1; the tap that meets the output's own pixel
 * borderType    BorderConstant, BorderReplicate, BorderWrap, BorderReflect or BorderReflectEdge, without flags: what
 *               stands for pixels left of the first and right of the last one
 * borderValue   the pixel of BorderConstant, otherwise unused. C3R: three values, one per channel; may be null unless
 *               borderType is BorderConstant
 * divisor       not 0 (integer members)
 * pBuffer       written: work memory of the size that the query of the same name gives; its contents mean nothing
 *
 * Integer members: outputs whose kernel stays inside the row are rounded (Low: wrapped); the first xAnchor and the last
 * k - 1 - xAnchor outputs of every row are truncated (Low: unsaturated). 32f: all outputs alike.
 *
 * Status, in the order of the checks:
 *   ErrNullPtr          pSrc, ppDst, pKernel or pBuffer is null
 *   ErrSize             width or height < 1; then kernelSize < 1
 *   ErrAnchor           xAnchor < 0 or xAnchor >= kernelSize
 *   ErrStep             srcStep < w x channels x element size
 *   ErrStepNotMultiple  srcStep is not a multiple of the element size (16s: 2, 32f: 4)
 *   ErrBadArg           borderType is none of the above
 *   ErrNullPtr          C3R: borderValue is null and borderType is BorderConstant
 *   ErrBadArg           divisor is 0 (integer members)
 *   ErrNullPtr          ppDst[y] is null, found when row y is reached: the rows before it have been written
 *   StatusOk */
ZVP_API Status zvpiFilterRowBorderPipeline_16s_C1R(const int16_t* pSrc, int srcStep, int16_t** ppDst, RoiSize roiSize,
                                                   const int16_t* pKernel, int kernelSize, int xAnchor,
                                                   BorderType borderType, int16_t borderValue, int divisor,
                                                   uint8_t* pBuffer);
ZVP_API Status zvpiFilterRowBorderPipeline_16s_C3R(const int16_t* pSrc, int srcStep, int16_t** ppDst, RoiSize roiSize,
                                                   const int16_t* pKernel, int kernelSize, int xAnchor,
                                                   BorderType borderType, const int16_t* borderValue, int divisor,
                                                   uint8_t* pBuffer);
ZVP_API Status zvpiFilterRowBorderPipeline_Low_16s_C1R(const int16_t* pSrc, int srcStep, int16_t** ppDst,
                                                       RoiSize roiSize, const int16_t* pKernel, int kernelSize,
                                                       int xAnchor, BorderType borderType, int16_t borderValue,
                                                       int divisor, uint8_t* pBuffer);
ZVP_API Status zvpiFilterRowBorderPipeline_Low_16s_C3R(const int16_t* pSrc, int srcStep, int16_t** ppDst,
                                                       RoiSize roiSize, const int16_t* pKernel, int kernelSize,
                                                       int xAnchor, BorderType borderType, const int16_t* borderValue,
                                                       int divisor, uint8_t* pBuffer);
ZVP_API Status zvpiFilterRowBorderPipeline_8u16s_C1R(const uint8_t* pSrc, int srcStep, int16_t** ppDst, RoiSize roiSize,
                                                     const int16_t* pKernel, int kernelSize, int xAnchor,
                                                     BorderType borderType, uint8_t borderValue, int divisor,
                                                     uint8_t* pBuffer);
ZVP_API Status zvpiFilterRowBorderPipeline_8u16s_C3R(const uint8_t* pSrc, int srcStep, int16_t** ppDst, RoiSize roiSize,
                                                     const int16_t* pKernel, int kernelSize, int xAnchor,
                                                     BorderType borderType, const uint8_t* borderValue, int divisor,
                                                     uint8_t* pBuffer);
ZVP_API Status zvpiFilterRowBorderPipeline_32f_C1R(const float* pSrc, int srcStep, float** ppDst, RoiSize roiSize,
                                                   const float* pKernel, int kernelSize, int xAnchor,
                                                   BorderType borderType, float borderValue, uint8_t* pBuffer);
ZVP_API Status zvpiFilterRowBorderPipeline_32f_C3R(const float* pSrc, int srcStep, float** ppDst, RoiSize roiSize,
                                                   const float* pKernel, int kernelSize, int xAnchor,
                                                   BorderType borderType, const float* borderValue, uint8_t* pBuffer);

/* Filters across rows with a kernel of k = kernelSize taps: output (x, y) is the sum over i of tap i times value x of
 * the row ppSrc[y + i].
 *
 * ppSrc         read: h + k - 1 pointers (h = roiSize.height), each to a row of w = roiSize.width pixels. A row may
 *               stand at several places of the array
 * pDst          written: h rows of w pixels, dstStep bytes apart
 * pKernel       read: k taps
 * divisor       not 0 (integer members)
 * pBuffer       written: work memory of the size that the query of the same name gives; its contents mean nothing
 *
 * A row of a C3R member is treated as 3 w values of one channel. Integer members: the last n mod 4 values of a row of n
 * values are truncated, the others rounded. Low and 32f: all outputs alike (Low: wrapped).
 *
 * Status, in the order of the checks:
 *   ErrNullPtr          ppSrc, pDst or pKernel is null
 *   ErrSize             width or height < 1; then kernelSize < 1
 *   ErrStep             dstStep < w x channels x element size of pDst (Low_16s_C3R: dstStep < 2 x w only; rows that
 *                       are closer than 6 x w overwrite each other's ends, from the top to the bottom)
 *   ErrStepNotMultiple  dstStep is not a multiple of the element size (16s: 2, 32f: 4)
 *   ErrNullPtr          pBuffer is null
 *   ErrBadArg           divisor is 0 (integer members)
 *   ErrNullPtr          one of the h + k - 1 row pointers is null; nothing has been written
 *   StatusOk */
ZVP_API Status zvpiFilterColumnPipeline_16s_C1R(const int16_t** ppSrc, int16_t* pDst, int dstStep, RoiSize roiSize,
                                                const int16_t* pKernel, int kernelSize, int divisor, uint8_t* pBuffer);
ZVP_API Status zvpiFilterColumnPipeline_16s_C3R(const int16_t** ppSrc, int16_t* pDst, int dstStep, RoiSize roiSize,
                                                const int16_t* pKernel, int kernelSize, int divisor, uint8_t* pBuffer);
ZVP_API Status zvpiFilterColumnPipeline_16s8u_C1R(const int16_t** ppSrc, uint8_t* pDst, int dstStep, RoiSize roiSize,
                                                  const int16_t* pKernel, int kernelSize, int divisor,
                                                  uint8_t* pBuffer);
ZVP_API Status zvpiFilterColumnPipeline_16s8u_C3R(const int16_t** ppSrc, uint8_t* pDst, int dstStep, RoiSize roiSize,
                                                  const int16_t* pKernel, int kernelSize, int divisor,
                                                  uint8_t* pBuffer);
ZVP_API Status zvpiFilterColumnPipeline_16s8s_C1R(const int16_t** ppSrc, int8_t* pDst, int dstStep, RoiSize roiSize,
                                                  const int16_t* pKernel, int kernelSize, int divisor,
                                                  uint8_t* pBuffer);
ZVP_API Status zvpiFilterColumnPipeline_16s8s_C3R(const int16_t** ppSrc, int8_t* pDst, int dstStep, RoiSize roiSize,
                                                  const int16_t* pKernel, int kernelSize, int divisor,
                                                  uint8_t* pBuffer);
ZVP_API Status zvpiFilterColumnPipeline_Low_16s_C1R(const int16_t** ppSrc, int16_t* pDst, int dstStep, RoiSize roiSize,
                                                    const int16_t* pKernel, int kernelSize, int divisor,
                                                    uint8_t* pBuffer);
ZVP_API Status zvpiFilterColumnPipeline_Low_16s_C3R(const int16_t** ppSrc, int16_t* pDst, int dstStep, RoiSize roiSize,
                                                    const int16_t* pKernel, int kernelSize, int divisor,
                                                    uint8_t* pBuffer);
ZVP_API Status zvpiFilterColumnPipeline_32f_C1R(const float** ppSrc, float* pDst, int dstStep, RoiSize roiSize,
                                                const float* pKernel, int kernelSize, uint8_t* pBuffer);
ZVP_API Status zvpiFilterColumnPipeline_32f_C3R(const float** ppSrc, float* pDst, int dstStep, RoiSize roiSize,
                                                const float* pKernel, int kernelSize, uint8_t* pBuffer);

/* Bytes of work memory that the pipeline of the same name needs; it may start at any address. With w = roiSize.width,
 * k = kernelSize and w rounded up to a multiple of 4 (w4) or 8 (w8):
 *
 *   row     16s_C1R 48 k + 112, 16s_C3R 40 k + 96, Low_16s_C1R 24 k + 96, Low_16s_C3R 208 k + 96,
 *           8u16s_C1R 36 k + 144, 8u16s_C3R 60 k + 144, 32f_C1R 64 k + 96, 32f_C3R 192 k + 64
 *   column  16s, 16s8u, 16s8s: C1R 12 w4 + 64, C3R 36 w4 + 64; Low_16s: C1R 12 w8 + 64, C3R 36 w8 + 64; 32f: 32
 *
 * pBufferSize   written: the number of bytes
 *
 * Status, in the order of the checks:
 *   ErrNullPtr  pBufferSize is null
 *   ErrSize     width, height or kernelSize < 1, or the size does not fit 31 bits
 *   StatusOk */
ZVP_API Status zvpiFilterRowBorderPipelineGetBufferSize_16s_C1R(RoiSize roiSize, int kernelSize, int* pBufferSize);
ZVP_API Status zvpiFilterRowBorderPipelineGetBufferSize_16s_C3R(RoiSize roiSize, int kernelSize, int* pBufferSize);
ZVP_API Status zvpiFilterRowBorderPipelineGetBufferSize_Low_16s_C1R(RoiSize roiSize, int kernelSize, int* pBufferSize);
ZVP_API Status zvpiFilterRowBorderPipelineGetBufferSize_Low_16s_C3R(RoiSize roiSize, int kernelSize, int* pBufferSize);
ZVP_API Status zvpiFilterRowBorderPipelineGetBufferSize_8u16s_C1R(RoiSize roiSize, int kernelSize, int* pBufferSize);
ZVP_API Status zvpiFilterRowBorderPipelineGetBufferSize_8u16s_C3R(RoiSize roiSize, int kernelSize, int* pBufferSize);
ZVP_API Status zvpiFilterRowBorderPipelineGetBufferSize_32f_C1R(RoiSize roiSize, int kernelSize, int* pBufferSize);
ZVP_API Status zvpiFilterRowBorderPipelineGetBufferSize_32f_C3R(RoiSize roiSize, int kernelSize, int* pBufferSize);
ZVP_API Status zvpiFilterColumnPipelineGetBufferSize_16s_C1R(RoiSize roiSize, int kernelSize, int* pBufferSize);
ZVP_API Status zvpiFilterColumnPipelineGetBufferSize_16s_C3R(RoiSize roiSize, int kernelSize, int* pBufferSize);
ZVP_API Status zvpiFilterColumnPipelineGetBufferSize_16s8u_C1R(RoiSize roiSize, int kernelSize, int* pBufferSize);
ZVP_API Status zvpiFilterColumnPipelineGetBufferSize_16s8u_C3R(RoiSize roiSize, int kernelSize, int* pBufferSize);
ZVP_API Status zvpiFilterColumnPipelineGetBufferSize_16s8s_C1R(RoiSize roiSize, int kernelSize, int* pBufferSize);
ZVP_API Status zvpiFilterColumnPipelineGetBufferSize_16s8s_C3R(RoiSize roiSize, int kernelSize, int* pBufferSize);
ZVP_API Status zvpiFilterColumnPipelineGetBufferSize_Low_16s_C1R(RoiSize roiSize, int kernelSize, int* pBufferSize);
ZVP_API Status zvpiFilterColumnPipelineGetBufferSize_Low_16s_C3R(RoiSize roiSize, int kernelSize, int* pBufferSize);
ZVP_API Status zvpiFilterColumnPipelineGetBufferSize_32f_C1R(RoiSize roiSize, int kernelSize, int* pBufferSize);
ZVP_API Status zvpiFilterColumnPipelineGetBufferSize_32f_C3R(RoiSize roiSize, int kernelSize, int* pBufferSize);

/* Scharr derivatives (H. Scharr, Optimal Operators in Digital Image Processing, 2000) of an image of w = roiSize.width
 * by h = roiSize.height pixels: Horiz along x, Vert along y. Both grow with the pixels: a ramp that rises by one from
 * pixel to pixel has the derivative 32.
 *
 * pSrc          read: h rows of w pixels, srcStep bytes apart; with flags also the neighbours on their sides
 * pDst          written: h rows of w pixels, dstStep bytes apart
 * borderType    a mode BorderConstant to BorderReflectEdge, with or without flags for sides that are in memory, or
 *               BorderInMemory. Each axis resolves alone
 * borderValue   the pixel of BorderConstant
 * pBuffer       written: work memory of the size that the query of the same name gives
 *
 * With s the source and its border, in single precision, every operation rounded, which is exact for pixels that are
 * whole numbers up to 2^19:
 *   Horiz  (3 dx(y - 1) + 10 dx(y)) + 3 dx(y + 1)    where dx(j) = s(x + 1, j) - s(x - 1, j)
 *   Vert   (3 dy(x - 1) + 10 dy(x)) + 3 dy(x + 1)    where dy(i) = s(i, y + 1) - s(i, y - 1)
 *
 * Status, in the order of the checks:
 *   ErrNullPtr          pSrc, pDst or pBuffer is null
 *   ErrSize             width or height < 1
 *   ErrStep             srcStep or dstStep < 4 w
 *   ErrStepNotMultiple  a step that is not a multiple of 4
 *   ErrBadArg           the mode is none of the above; or one of the bits 0xfff0 is set but no flag
 *   StatusOk */
ZVP_API Status zvpiFilterScharrHorizBorder_32f_C1R(const float* pSrc, int srcStep, float* pDst, int dstStep,
                                                   RoiSize roiSize, BorderType borderType, float borderValue,
                                                   uint8_t* pBuffer);
ZVP_API Status zvpiFilterScharrVertBorder_32f_C1R(const float* pSrc, int srcStep, float* pDst, int dstStep,
                                                  RoiSize roiSize, BorderType borderType, float borderValue,
                                                  uint8_t* pBuffer);

/* Bytes of work memory that the filter of the same name needs: 4 (w + 2). It may start at any address.
 *
 * pBufferSize   written: the number of bytes
 *
 * Status, in the order of the checks:
 *   ErrNullPtr  pBufferSize is null
 *   ErrSize     width or height < 1, or the size does not fit 31 bits
 *   StatusOk */
ZVP_API Status zvpiFilterScharrHorizBorderGetBufferSize_32f_C1R(RoiSize roiSize, int* pBufferSize);
ZVP_API Status zvpiFilterScharrVertBorderGetBufferSize_32f_C1R(RoiSize roiSize, int* pBufferSize);

/* Sobel derivative along x (I. Sobel, G. Feldman, A 3x3 Isotropic Gradient Operator for Image Processing, 1968; 5x5: its
 * extension by binomial smoothing) of an image of w = roiSize.width by h = roiSize.height pixels. It grows with the
 * pixels: a ramp that rises by one from pixel to pixel has the derivative 8 (3x3) or 128 (5x5).
 *
 * pSrc          read: h rows of w pixels, srcStep bytes apart; on sides that are in memory also 1 (3x3) or 2 (5x5)
 *               pixels beside the region, corners included
 * pDst          written: h rows of w pixels, dstStep bytes apart; not pSrc
 * maskSize      33 (3x3) or 55 (5x5)
 * borderType    a mode BorderConstant to BorderReflectEdge, with or without flags for sides that are in memory, or
 *               BorderInMemory. Each axis resolves alone; a pixel for which either gives the constant is the constant
 * borderValue   the pixel of BorderConstant
 * pBuffer       written: work memory of the size that the query gives; it serves every region at most as wide
 *
 * With s the source and its border, the exact sum, which always fits:
 *   3x3   m(x + 1) - m(x - 1)                                   where m(x) = s(x, y - 1) + 2 s(x, y) + s(x, y + 1)
 *   5x5   m(x + 2) - m(x - 2) + 2 (m(x + 1) - m(x - 1))         where m(x) is the sum of 1 4 6 4 1 times s(x, y - 2) to
 *                                                               s(x, y + 2)
 * Source, destination and buffer must not overlap.
 *
 * Status, in the order of the checks:
 *   ErrNullPtr              pSrc, pDst or pBuffer is null
 *   ErrSize                 width or height < 1
 *   ErrStep                 srcStep < w or dstStep < 2 w
 *   ErrStepNotMultiple      dstStep is not a multiple of 2
 *   ErrMaskSize             maskSize is neither 33 nor 55
 *   ErrBadArg               the mode is none of the above; or one of the bits 0xfff0 is set but no flag
 *   ErrInPlaceNotSupported  pSrc and pDst are equal
 *   StatusOk */
ZVP_API Status zvpiFilterSobelHorizBorder_8u16s_C1R(const uint8_t* pSrc, int srcStep, int16_t* pDst, int dstStep,
                                                    RoiSize roiSize, int maskSize, BorderType borderType,
                                                    uint8_t borderValue, uint8_t* pBuffer);

/* Bytes of work memory that the filter of the same name needs, at most 32 (w + 64). It may start at any address.
 *
 * pBufferSize   written: the number of bytes
 *
 * Status, in the order of the checks:
 *   ErrNullPtr   pBufferSize is null
 *   ErrSize      width or height < 1
 *   ErrMaskSize  maskSize is neither 33 nor 55
 *   ErrSize      the size does not fit 31 bits
 *   StatusOk */
ZVP_API Status zvpiFilterSobelHorizBorderGetBufferSize_8u16s_C1R(RoiSize roiSize, int maskSize, int* pBufferSize);

#ifdef __cplusplus
}
#endif

#endif
