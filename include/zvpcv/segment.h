/* Segmentation: marking of speckles. */
#ifndef ZVPCV_SEGMENT_H
#define ZVPCV_SEGMENT_H

#include <zvpcv/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Bytes of the buffer of zvpiMarkSpeckles: 13 x width x height, for every type.
 *
 * dataType      DataType8u, DataType16u, DataType16s or DataType32f
 * numChannels   1
 * pBufferSize   written
 *
 * Status, in the order of the checks:
 *   ErrNullPtr       pBufferSize is null
 *   ErrSize          width or height < 1
 *   ErrDataType      another data type
 *   ErrNumChannels   numChannels is not 1
 *   ErrSize          the size does not fit 31 bits
 *   StatusOk */
ZVP_API Status zvpiMarkSpecklesGetBufferSize(RoiSize roiSize, DataType dataType, int numChannels, int* pBufferSize);

/* Overwrites small regions of an image with a marker, in place: the noise of a disparity map, for example.
 *
 * Two pixels that share an edge belong to one region when neither is the marker and their values differ by at most
 * maxPixDiff; a region is everything that is connected so. A region of at most maxSpeckleSize pixels is a speckle.
 *
 * pSrcDst          read and written: roiSize.height rows of roiSize.width pixels, srcDstStep bytes apart. The step is
 *                  not checked: it may be negative and need not be a multiple of the element size. Rows must not
 *                  overlap
 * speckleVal       the marker. Pixels that hold it separate regions and stay as they are
 * maxSpeckleSize   in pixels; less than 1 marks nothing
 * maxPixDiff       the difference that still connects; a negative one connects nothing. Integer differences are exact,
 *                  32f ones are rounded to single precision
 * norm             1
 * pBuffer          work memory: 13 x width x height bytes, at any address
 *
 * 32f: -0 equals a marker of 0. A NaN is a region of its own, also where the marker is a NaN; infinite pixels are
 * regions of their own too, unless maxPixDiff is infinite, which connects them to finite ones.
 *
 * The query answers for images of up to about 165 million pixels; larger ones, below 2^31 pixels, work with a buffer
 * of 13 bytes a pixel all the same.
 *
 * Status, in the order of the checks:
 *   ErrNullPtr   pSrcDst or pBuffer is null
 *   ErrSize      width or height < 1
 *   ErrNorm      norm is not 1
 *   StatusOk */
ZVP_API Status zvpiMarkSpeckles_8u_C1IR(uint8_t* pSrcDst, int srcDstStep, RoiSize roiSize, uint8_t speckleVal,
                                        int maxSpeckleSize, uint8_t maxPixDiff, int norm, uint8_t* pBuffer);
ZVP_API Status zvpiMarkSpeckles_16u_C1IR(uint16_t* pSrcDst, int srcDstStep, RoiSize roiSize, uint16_t speckleVal,
                                         int maxSpeckleSize, uint16_t maxPixDiff, int norm, uint8_t* pBuffer);
ZVP_API Status zvpiMarkSpeckles_16s_C1IR(int16_t* pSrcDst, int srcDstStep, RoiSize roiSize, int16_t speckleVal,
                                         int maxSpeckleSize, int16_t maxPixDiff, int norm, uint8_t* pBuffer);
ZVP_API Status zvpiMarkSpeckles_32f_C1IR(float* pSrcDst, int srcDstStep, RoiSize roiSize, float speckleVal,
                                         int maxSpeckleSize, float maxPixDiff, int norm, uint8_t* pBuffer);

#ifdef __cplusplus
}
#endif

#endif
