/* Morphology with a binary structuring element: erosion, dilation, and what is built from them.
 *
 * Structuring element (mask): maskSize.width x maskSize.height bytes, row by row without gaps; a byte that is not zero
 * makes its position a member. It is copied at initialisation. Output pixel (x, y) of an erosion (dilation) is the
 * minimum (maximum), channel by channel, of the source pixels (x + i - anchorX, y + j - anchorY) over all members
 * (i, j). A mask without members copies the source. The result of pixels that compare equal, the two zeros of 32f, is
 * the one of the last member in row-major order. 32f: NaN among the pixels under the mask makes the result any of
 * them; types.h says what that means for results of different builds.
 *
 * The algorithm is that of running extrema: windows double their length, and windows that share rows share their
 * extremum (M. van Herk, A fast algorithm for local minimum and maximum filters on rectangular and octagonal kernels,
 * 1992; J. Gil, M. Werman, Computing 2-D min, median, and max filters, 1993). Its cost grows with the number of
 * distinct runs in the rows of the mask and with the logarithm of their lengths.
 *
 * Elements: 1u one bit per pixel, the most significant bit of a byte leftmost, steps in bytes; 8u; 16u; 16s; 32f.
 *
 * Pixels outside the region, by the low four bits of borderType:
 *   BorderReplicate  the nearest pixel of the region, except on sides whose flag (BorderTopInMemory ...) is set: there
 *                    memory is read
 *   BorderInMemory   memory on all sides; flags change nothing
 * Rows and columns resolve apart from each other: with only the top in memory, pixel (-1, -1) is column 0 of row -1.
 * On a side in memory, anchorX columns to the left, maskWidth - anchorX - 1 to the right, anchorY rows above and
 * maskHeight - anchorY - 1 below are read. Bits above 0xFF are ignored.
 *
 * Source and destination may be the same pointer with equal steps, but for 1u; any other overlap is not allowed.
 *
 * A prepared mask is an object that holds a copy of the mask and what the filters need to know of it: MorphBorderSpec,
 * MorphState, MorphAdvSpec. Prepared masks and work buffers lie in the caller's memory, at any address. Filters read
 * the prepared mask and write the destination and the work buffer only. On 64-bit builds a prepared mask may be copied
 * byte by byte; on 32-bit builds it holds addresses and must stay where it was initialised. */
#ifndef ZVPCV_MORPHOLOGY_H
#define ZVPCV_MORPHOLOGY_H

#include <zvpcv/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* A mask prepared for regions up to a width. Eighteen 32-bit words: the places of the mask copy, the
 * selectors for dilation and for erosion, the decomposition tables and their record (0: none); maskWidth, maskHeight,
 * anchorX, anchorY, maskWidth - anchorX - 1, maskHeight - anchorY - 1; the length of a row with borders, the bytes of
 * rows with borders; DataType code, channels, the largest width; -1; the mode of the mask (0 general, 1 rectangle, 2 a
 * run in every row, 3 empty; other elements than 16u and 16s keep 0 or 3 only). Places are addresses on 32-bit builds
 * and offsets from the object's start on 64-bit builds. */
typedef struct MorphBorderSpec MorphBorderSpec;

/* The same with the caller's anchor and with work memory of its own: one call at a time. */
typedef struct MorphState MorphState;

/* Sizes, with A = maskSize.width x maskSize.height rounded up to 16, H = maskSize.height and W = roiWidth.
 *
 * roiWidth     width of the widest region, >= 1
 * maskSize     >= 1 x 1
 * pSpecSize    written: bytes of the prepared mask: 1u 3 A + 80; 16u, 16s 33 A + 16 H + 128; others the same plus the
 *              work buffer
 * pBufferSize  written: bytes of the work buffer: max(R, G) + round16(24 H) + A + round16(16 H + 48), where
 *              G = (H x H + 1) x (W x channels x element size + 32) + 20 H + 36 (1u: element size 1) and R is
 *              (2 W + 80) H + 32 for 1u and 8u, 2 (4 W + 80) H + 64 for 16u and 16s, (8 W channels + 80) H + 32 for 32f
 *
 * Status, in the order of the checks:
 *   ErrNullPtr  a pointer is null
 *   ErrSize     roiWidth, maskSize.width or maskSize.height < 1
 *   ErrSize     a size needs more than 31 bits
 *   StatusOk */
ZVP_API Status zvpiMorphologyBorderGetSize_1u_C1R(int roiWidth, RoiSize maskSize, int* pSpecSize, int* pBufferSize);
ZVP_API Status zvpiMorphologyBorderGetSize_8u_C1R(int roiWidth, RoiSize maskSize, int* pSpecSize, int* pBufferSize);
ZVP_API Status zvpiMorphologyBorderGetSize_8u_C3R(int roiWidth, RoiSize maskSize, int* pSpecSize, int* pBufferSize);
ZVP_API Status zvpiMorphologyBorderGetSize_8u_C4R(int roiWidth, RoiSize maskSize, int* pSpecSize, int* pBufferSize);
ZVP_API Status zvpiMorphologyBorderGetSize_16u_C1R(int roiWidth, RoiSize maskSize, int* pSpecSize, int* pBufferSize);
ZVP_API Status zvpiMorphologyBorderGetSize_16s_C1R(int roiWidth, RoiSize maskSize, int* pSpecSize, int* pBufferSize);
ZVP_API Status zvpiMorphologyBorderGetSize_32f_C1R(int roiWidth, RoiSize maskSize, int* pSpecSize, int* pBufferSize);
ZVP_API Status zvpiMorphologyBorderGetSize_32f_C3R(int roiWidth, RoiSize maskSize, int* pSpecSize, int* pBufferSize);
ZVP_API Status zvpiMorphologyBorderGetSize_32f_C4R(int roiWidth, RoiSize maskSize, int* pSpecSize, int* pBufferSize);

/* Prepares a mask. The anchor is the centre: ((maskSize.width - 1) >> 1, (maskSize.height - 1) >> 1).
 *
 * roiWidth  width of the widest region, >= 1
 * pMask     read: maskSize.width x maskSize.height bytes
 * pSpec     written: as many bytes as the size query says
 * pBuffer   a work buffer; it is not kept
 *
 * Status, in the order of the checks:
 *   ErrNullPtr  a pointer is null
 *   ErrSize     roiWidth, maskSize.width or maskSize.height < 1
 *   ErrSize     a size needs more than 31 bits
 *   StatusOk */
ZVP_API Status zvpiMorphologyBorderInit_1u_C1R(int roiWidth, const uint8_t* pMask, RoiSize maskSize,
                                               MorphBorderSpec* pSpec, uint8_t* pBuffer);
ZVP_API Status zvpiMorphologyBorderInit_8u_C1R(int roiWidth, const uint8_t* pMask, RoiSize maskSize,
                                               MorphBorderSpec* pSpec, uint8_t* pBuffer);
ZVP_API Status zvpiMorphologyBorderInit_8u_C3R(int roiWidth, const uint8_t* pMask, RoiSize maskSize,
                                               MorphBorderSpec* pSpec, uint8_t* pBuffer);
ZVP_API Status zvpiMorphologyBorderInit_8u_C4R(int roiWidth, const uint8_t* pMask, RoiSize maskSize,
                                               MorphBorderSpec* pSpec, uint8_t* pBuffer);
ZVP_API Status zvpiMorphologyBorderInit_16u_C1R(int roiWidth, const uint8_t* pMask, RoiSize maskSize,
                                                MorphBorderSpec* pSpec, uint8_t* pBuffer);
ZVP_API Status zvpiMorphologyBorderInit_16s_C1R(int roiWidth, const uint8_t* pMask, RoiSize maskSize,
                                                MorphBorderSpec* pSpec, uint8_t* pBuffer);
ZVP_API Status zvpiMorphologyBorderInit_32f_C1R(int roiWidth, const uint8_t* pMask, RoiSize maskSize,
                                                MorphBorderSpec* pSpec, uint8_t* pBuffer);
ZVP_API Status zvpiMorphologyBorderInit_32f_C3R(int roiWidth, const uint8_t* pMask, RoiSize maskSize,
                                                MorphBorderSpec* pSpec, uint8_t* pBuffer);
ZVP_API Status zvpiMorphologyBorderInit_32f_C4R(int roiWidth, const uint8_t* pMask, RoiSize maskSize,
                                                MorphBorderSpec* pSpec, uint8_t* pBuffer);

/* Erosion and dilation.
 *
 * pSrc          read: the region, roiSize.height rows of roiSize.width pixels, srcStep bytes apart, and its
 *               neighbours on sides in memory
 * pDst          written: the region, dstStep bytes apart; with 1u the other bits of its bytes keep their values
 * srcBitOffset  1u: position of the region's first pixel, counted from the most significant bit of the first byte of
 *               each row, >= 0; dstBitOffset likewise
 * borderValue   not used, C3 and C4: may be null; no border with a constant is accepted
 * pSpec         read; of the same element type and channels
 * pBuffer       written: the work buffer
 *
 * Status, in the order of the checks:
 *   ErrNullPtr              pSrc, pDst, pSpec or pBuffer is null
 *   ErrSize                 width or height < 1; 1u: a bit offset < 0
 *   ErrStep                 a step < width x channels x element size; 1u: < (width + 7) >> 3
 *   ErrStepNotMultiple      16u, 16s, 32f: a step that is not a multiple of the element size
 *   ErrBorderType           the low four bits of borderType are neither BorderReplicate nor BorderInMemory
 *   ErrInPlaceNotSupported  1u: pSrc is pDst
 *   ErrSize                 roiSize.width is larger than the roiWidth given at initialisation
 *   StatusOk                (nothing is written when the mode in the prepared mask is not one of 0 to 3) */
ZVP_API Status zvpiErodeBorder_1u_C1R(const uint8_t* pSrc, int srcStep, int srcBitOffset, uint8_t* pDst, int dstStep,
                                      int dstBitOffset, RoiSize roiSize, BorderType borderType, uint8_t borderValue,
                                      const MorphBorderSpec* pSpec, uint8_t* pBuffer);
ZVP_API Status zvpiErodeBorder_8u_C1R(const uint8_t* pSrc, int srcStep, uint8_t* pDst, int dstStep, RoiSize roiSize,
                                      BorderType borderType, uint8_t borderValue, const MorphBorderSpec* pSpec,
                                      uint8_t* pBuffer);
ZVP_API Status zvpiErodeBorder_8u_C3R(const uint8_t* pSrc, int srcStep, uint8_t* pDst, int dstStep, RoiSize roiSize,
                                      BorderType borderType, const uint8_t* borderValue, const MorphBorderSpec* pSpec,
                                      uint8_t* pBuffer);
ZVP_API Status zvpiErodeBorder_8u_C4R(const uint8_t* pSrc, int srcStep, uint8_t* pDst, int dstStep, RoiSize roiSize,
                                      BorderType borderType, const uint8_t* borderValue, const MorphBorderSpec* pSpec,
                                      uint8_t* pBuffer);
ZVP_API Status zvpiErodeBorder_16u_C1R(const uint16_t* pSrc, int srcStep, uint16_t* pDst, int dstStep, RoiSize roiSize,
                                       BorderType borderType, uint16_t borderValue, const MorphBorderSpec* pSpec,
                                       uint8_t* pBuffer);
ZVP_API Status zvpiErodeBorder_16s_C1R(const int16_t* pSrc, int srcStep, int16_t* pDst, int dstStep, RoiSize roiSize,
                                       BorderType borderType, int16_t borderValue, const MorphBorderSpec* pSpec,
                                       uint8_t* pBuffer);
ZVP_API Status zvpiErodeBorder_32f_C1R(const float* pSrc, int srcStep, float* pDst, int dstStep, RoiSize roiSize,
                                       BorderType borderType, float borderValue, const MorphBorderSpec* pSpec,
                                       uint8_t* pBuffer);
ZVP_API Status zvpiErodeBorder_32f_C3R(const float* pSrc, int srcStep, float* pDst, int dstStep, RoiSize roiSize,
                                       BorderType borderType, const float* borderValue, const MorphBorderSpec* pSpec,
                                       uint8_t* pBuffer);
ZVP_API Status zvpiErodeBorder_32f_C4R(const float* pSrc, int srcStep, float* pDst, int dstStep, RoiSize roiSize,
                                       BorderType borderType, const float* borderValue, const MorphBorderSpec* pSpec,
                                       uint8_t* pBuffer);
ZVP_API Status zvpiDilateBorder_1u_C1R(const uint8_t* pSrc, int srcStep, int srcBitOffset, uint8_t* pDst, int dstStep,
                                       int dstBitOffset, RoiSize roiSize, BorderType borderType, uint8_t borderValue,
                                       const MorphBorderSpec* pSpec, uint8_t* pBuffer);
ZVP_API Status zvpiDilateBorder_8u_C1R(const uint8_t* pSrc, int srcStep, uint8_t* pDst, int dstStep, RoiSize roiSize,
                                       BorderType borderType, uint8_t borderValue, const MorphBorderSpec* pSpec,
                                       uint8_t* pBuffer);
ZVP_API Status zvpiDilateBorder_8u_C3R(const uint8_t* pSrc, int srcStep, uint8_t* pDst, int dstStep, RoiSize roiSize,
                                       BorderType borderType, const uint8_t* borderValue, const MorphBorderSpec* pSpec,
                                       uint8_t* pBuffer);
ZVP_API Status zvpiDilateBorder_8u_C4R(const uint8_t* pSrc, int srcStep, uint8_t* pDst, int dstStep, RoiSize roiSize,
                                       BorderType borderType, const uint8_t* borderValue, const MorphBorderSpec* pSpec,
                                       uint8_t* pBuffer);
ZVP_API Status zvpiDilateBorder_16u_C1R(const uint16_t* pSrc, int srcStep, uint16_t* pDst, int dstStep, RoiSize roiSize,
                                        BorderType borderType, uint16_t borderValue, const MorphBorderSpec* pSpec,
                                        uint8_t* pBuffer);
ZVP_API Status zvpiDilateBorder_16s_C1R(const int16_t* pSrc, int srcStep, int16_t* pDst, int dstStep, RoiSize roiSize,
                                        BorderType borderType, int16_t borderValue, const MorphBorderSpec* pSpec,
                                        uint8_t* pBuffer);
ZVP_API Status zvpiDilateBorder_32f_C1R(const float* pSrc, int srcStep, float* pDst, int dstStep, RoiSize roiSize,
                                        BorderType borderType, float borderValue, const MorphBorderSpec* pSpec,
                                        uint8_t* pBuffer);
ZVP_API Status zvpiDilateBorder_32f_C3R(const float* pSrc, int srcStep, float* pDst, int dstStep, RoiSize roiSize,
                                        BorderType borderType, const float* borderValue, const MorphBorderSpec* pSpec,
                                        uint8_t* pBuffer);
ZVP_API Status zvpiDilateBorder_32f_C4R(const float* pSrc, int srcStep, float* pDst, int dstStep, RoiSize roiSize,
                                        BorderType borderType, const float* borderValue, const MorphBorderSpec* pSpec,
                                        uint8_t* pBuffer);

/* The size of a state: that of the MorphBorderSpec of the same element type and channels.
 *
 * pMask  not read, but must not be null
 * pSize  written: bytes of the state
 *
 * Status, in the order of the checks:
 *   ErrNullPtr  a pointer is null
 *   ErrSize     roiWidth, maskSize.width or maskSize.height < 1
 *   ErrSize     the size needs more than 31 bits
 *   StatusOk */
ZVP_API Status zvpiMorphologyGetSize_8u_C1R(int roiWidth, const uint8_t* pMask, RoiSize maskSize, int* pSize);
ZVP_API Status zvpiMorphologyGetSize_8u_C3R(int roiWidth, const uint8_t* pMask, RoiSize maskSize, int* pSize);
ZVP_API Status zvpiMorphologyGetSize_8u_C4R(int roiWidth, const uint8_t* pMask, RoiSize maskSize, int* pSize);
ZVP_API Status zvpiMorphologyGetSize_32f_C1R(int roiWidth, const uint8_t* pMask, RoiSize maskSize, int* pSize);
ZVP_API Status zvpiMorphologyGetSize_32f_C3R(int roiWidth, const uint8_t* pMask, RoiSize maskSize, int* pSize);
ZVP_API Status zvpiMorphologyGetSize_32f_C4R(int roiWidth, const uint8_t* pMask, RoiSize maskSize, int* pSize);

/* Fills a state in the caller's memory, or one that the call allocates.
 *
 * roiWidth  width of the widest region, >= 1
 * pMask     read: maskSize.width x maskSize.height bytes
 * anchor    inside the mask
 * pState    written: as many bytes as the size query says
 * ppState   written: the new state, for zvpiMorphologyFree
 *
 * Status, in the order of the checks:
 *   ErrNullPtr   a pointer is null
 *   ErrSize      roiWidth, maskSize.width or maskSize.height < 1
 *   ErrAnchor    anchor outside the mask
 *   ErrSize      Init: the size needs more than 31 bits
 *   ErrNoMemory  InitAlloc: the size needs more than 31 bits, or the allocation failed
 *   StatusOk */
ZVP_API Status zvpiMorphologyInit_8u_C1R(int roiWidth, const uint8_t* pMask, RoiSize maskSize, Point anchor,
                                         MorphState* pState);
ZVP_API Status zvpiMorphologyInit_8u_C3R(int roiWidth, const uint8_t* pMask, RoiSize maskSize, Point anchor,
                                         MorphState* pState);
ZVP_API Status zvpiMorphologyInit_8u_C4R(int roiWidth, const uint8_t* pMask, RoiSize maskSize, Point anchor,
                                         MorphState* pState);
ZVP_API Status zvpiMorphologyInit_32f_C1R(int roiWidth, const uint8_t* pMask, RoiSize maskSize, Point anchor,
                                          MorphState* pState);
ZVP_API Status zvpiMorphologyInit_32f_C3R(int roiWidth, const uint8_t* pMask, RoiSize maskSize, Point anchor,
                                          MorphState* pState);
ZVP_API Status zvpiMorphologyInit_32f_C4R(int roiWidth, const uint8_t* pMask, RoiSize maskSize, Point anchor,
                                          MorphState* pState);
ZVP_API Status zvpiMorphologyInitAlloc_8u_C1R(int roiWidth, const uint8_t* pMask, RoiSize maskSize, Point anchor,
                                              MorphState** ppState);
ZVP_API Status zvpiMorphologyInitAlloc_8u_C3R(int roiWidth, const uint8_t* pMask, RoiSize maskSize, Point anchor,
                                              MorphState** ppState);
ZVP_API Status zvpiMorphologyInitAlloc_8u_C4R(int roiWidth, const uint8_t* pMask, RoiSize maskSize, Point anchor,
                                              MorphState** ppState);
ZVP_API Status zvpiMorphologyInitAlloc_32f_C1R(int roiWidth, const uint8_t* pMask, RoiSize maskSize, Point anchor,
                                               MorphState** ppState);
ZVP_API Status zvpiMorphologyInitAlloc_32f_C3R(int roiWidth, const uint8_t* pMask, RoiSize maskSize, Point anchor,
                                               MorphState** ppState);
ZVP_API Status zvpiMorphologyInitAlloc_32f_C4R(int roiWidth, const uint8_t* pMask, RoiSize maskSize, Point anchor,
                                               MorphState** ppState);

/* Releases a state made by zvpiMorphologyInitAlloc.
 *
 * Status: ErrNullPtr for a null pointer, else StatusOk */
ZVP_API Status zvpiMorphologyFree(MorphState* pState);

/* Erosion and dilation with a state and a replicated border.
 *
 * pSrc    read: the region, roiSize.height rows of roiSize.width pixels, srcStep bytes apart
 * pDst    written: the region, dstStep bytes apart
 * pState  read, its work memory written; of the same element type and channels
 *
 * Status, in the order of the checks:
 *   ErrNullPtr          a pointer is null
 *   ErrSize             width or height < 1
 *   ErrStep             a step < width x channels x element size
 *   ErrStepNotMultiple  32f: a step that is not a multiple of 4
 *   ErrBadArg           borderType is not BorderReplicate
 *   ErrSize             roiSize.width is larger than the roiWidth given at initialisation
 *   StatusOk            (nothing is written when the mode in the state is not one of 0 to 3) */
ZVP_API Status zvpiErodeBorderReplicate_8u_C1R(const uint8_t* pSrc, int srcStep, uint8_t* pDst, int dstStep,
                                               RoiSize roiSize, BorderType borderType, MorphState* pState);
ZVP_API Status zvpiErodeBorderReplicate_8u_C3R(const uint8_t* pSrc, int srcStep, uint8_t* pDst, int dstStep,
                                               RoiSize roiSize, BorderType borderType, MorphState* pState);
ZVP_API Status zvpiErodeBorderReplicate_8u_C4R(const uint8_t* pSrc, int srcStep, uint8_t* pDst, int dstStep,
                                               RoiSize roiSize, BorderType borderType, MorphState* pState);
ZVP_API Status zvpiErodeBorderReplicate_32f_C1R(const float* pSrc, int srcStep, float* pDst, int dstStep,
                                                RoiSize roiSize, BorderType borderType, MorphState* pState);
ZVP_API Status zvpiErodeBorderReplicate_32f_C3R(const float* pSrc, int srcStep, float* pDst, int dstStep,
                                                RoiSize roiSize, BorderType borderType, MorphState* pState);
ZVP_API Status zvpiErodeBorderReplicate_32f_C4R(const float* pSrc, int srcStep, float* pDst, int dstStep,
                                                RoiSize roiSize, BorderType borderType, MorphState* pState);
ZVP_API Status zvpiDilateBorderReplicate_8u_C1R(const uint8_t* pSrc, int srcStep, uint8_t* pDst, int dstStep,
                                                RoiSize roiSize, BorderType borderType, MorphState* pState);
ZVP_API Status zvpiDilateBorderReplicate_8u_C3R(const uint8_t* pSrc, int srcStep, uint8_t* pDst, int dstStep,
                                                RoiSize roiSize, BorderType borderType, MorphState* pState);
ZVP_API Status zvpiDilateBorderReplicate_8u_C4R(const uint8_t* pSrc, int srcStep, uint8_t* pDst, int dstStep,
                                                RoiSize roiSize, BorderType borderType, MorphState* pState);
ZVP_API Status zvpiDilateBorderReplicate_32f_C1R(const float* pSrc, int srcStep, float* pDst, int dstStep,
                                                 RoiSize roiSize, BorderType borderType, MorphState* pState);
ZVP_API Status zvpiDilateBorderReplicate_32f_C3R(const float* pSrc, int srcStep, float* pDst, int dstStep,
                                                 RoiSize roiSize, BorderType borderType, MorphState* pState);
ZVP_API Status zvpiDilateBorderReplicate_32f_C4R(const float* pSrc, int srcStep, float* pDst, int dstStep,
                                                 RoiSize roiSize, BorderType borderType, MorphState* pState);

/* Opening, closing, top-hat, black-hat and gradient.
 *
 *   Open      erosion with the mask, then dilation with the mask rotated by 180 degrees
 *   Close     dilation with the mask, then erosion with the rotated mask
 *   Tophat    source minus opening
 *   Blackhat  closing minus source
 *   Gradient  dilation minus erosion, both with the mask
 * The anchor of both masks is the centre, ((width - 1) >> 1, (height - 1) >> 1), so that with an even
 * width or height opening and closing also move the image by a pixel along that axis. Differences of integers saturate
 * (a closing can fall below the source where the anchor is not a member); those of 1u are a AND NOT b.
 *
 * The intermediate image lies in the work buffer. On sides in memory it is larger than the region by the reach of the
 * mask, so that the second step finds the first one's results there; opening, closing, top-hat and black-hat therefore
 * read the source up to twice the reach of the mask beyond the region on those sides, the gradient once. */

/* A mask prepared for composite operations. Five 32-bit words: the places of the MorphBorderSpec for the mask and of
 * the one for the rotated mask; the place of the intermediate image at initialisation; its capacity in bytes; its
 * offset in the work buffer. The first MorphBorderSpec starts at byte 32, the second follows it. */
typedef struct MorphAdvSpec MorphAdvSpec;

/* Sizes, from S and B, the sizes of prepared mask and work buffer of zvpiMorphologyBorderGetSize for roiSize.width.
 *
 * roiSize      the widest region, and the height for which the intermediate image has room; >= 1 x 1
 * maskSize     >= 1 x 1
 * pSpecSize    written: 2 S + 32
 * pBufferSize  written: capacity + 2 B; the capacity is (roiSize.height + maskSize.height - 1) rows of
 *              roiSize.width + maskSize.width - 1 pixels, each rounded up to 32 bytes (1u: (pixels + 7) >> 3 bytes)
 *
 * Status, in the order of the checks:
 *   ErrNullPtr  a pointer is null
 *   ErrSize     a width or height < 1
 *   ErrSize     a size needs more than 31 bits
 *   StatusOk */

ZVP_API Status zvpiMorphAdvGetSize_1u_C1R(RoiSize roiSize, RoiSize maskSize, int* pSpecSize, int* pBufferSize);
ZVP_API Status zvpiMorphAdvGetSize_8u_C1R(RoiSize roiSize, RoiSize maskSize, int* pSpecSize, int* pBufferSize);
ZVP_API Status zvpiMorphAdvGetSize_8u_C3R(RoiSize roiSize, RoiSize maskSize, int* pSpecSize, int* pBufferSize);
ZVP_API Status zvpiMorphAdvGetSize_8u_C4R(RoiSize roiSize, RoiSize maskSize, int* pSpecSize, int* pBufferSize);
ZVP_API Status zvpiMorphAdvGetSize_16u_C1R(RoiSize roiSize, RoiSize maskSize, int* pSpecSize, int* pBufferSize);
ZVP_API Status zvpiMorphAdvGetSize_16s_C1R(RoiSize roiSize, RoiSize maskSize, int* pSpecSize, int* pBufferSize);
ZVP_API Status zvpiMorphAdvGetSize_32f_C1R(RoiSize roiSize, RoiSize maskSize, int* pSpecSize, int* pBufferSize);
ZVP_API Status zvpiMorphAdvGetSize_32f_C3R(RoiSize roiSize, RoiSize maskSize, int* pSpecSize, int* pBufferSize);
ZVP_API Status zvpiMorphAdvGetSize_32f_C4R(RoiSize roiSize, RoiSize maskSize, int* pSpecSize, int* pBufferSize);

/* Prepares a mask for composite operations.
 *
 * pMask    read: maskSize.width x maskSize.height bytes
 * pSpec    written: as many bytes as the size query says
 * pBuffer  a work buffer: the intermediate image's bytes are set to zero; it is not kept
 *
 * Status, in the order of the checks:
 *   ErrNullPtr  a pointer is null
 *   ErrSize     a width or height < 1
 *   ErrSize     a size needs more than 31 bits
 *   StatusOk */

ZVP_API Status zvpiMorphAdvInit_1u_C1R(RoiSize roiSize, const uint8_t* pMask, RoiSize maskSize, MorphAdvSpec* pSpec,
                                       uint8_t* pBuffer);
ZVP_API Status zvpiMorphAdvInit_8u_C1R(RoiSize roiSize, const uint8_t* pMask, RoiSize maskSize, MorphAdvSpec* pSpec,
                                       uint8_t* pBuffer);
ZVP_API Status zvpiMorphAdvInit_8u_C3R(RoiSize roiSize, const uint8_t* pMask, RoiSize maskSize, MorphAdvSpec* pSpec,
                                       uint8_t* pBuffer);
ZVP_API Status zvpiMorphAdvInit_8u_C4R(RoiSize roiSize, const uint8_t* pMask, RoiSize maskSize, MorphAdvSpec* pSpec,
                                       uint8_t* pBuffer);
ZVP_API Status zvpiMorphAdvInit_16u_C1R(RoiSize roiSize, const uint8_t* pMask, RoiSize maskSize, MorphAdvSpec* pSpec,
                                        uint8_t* pBuffer);
ZVP_API Status zvpiMorphAdvInit_16s_C1R(RoiSize roiSize, const uint8_t* pMask, RoiSize maskSize, MorphAdvSpec* pSpec,
                                        uint8_t* pBuffer);
ZVP_API Status zvpiMorphAdvInit_32f_C1R(RoiSize roiSize, const uint8_t* pMask, RoiSize maskSize, MorphAdvSpec* pSpec,
                                        uint8_t* pBuffer);
ZVP_API Status zvpiMorphAdvInit_32f_C3R(RoiSize roiSize, const uint8_t* pMask, RoiSize maskSize, MorphAdvSpec* pSpec,
                                        uint8_t* pBuffer);
ZVP_API Status zvpiMorphAdvInit_32f_C4R(RoiSize roiSize, const uint8_t* pMask, RoiSize maskSize, MorphAdvSpec* pSpec,
                                        uint8_t* pBuffer);

/* The same in an object that the call allocates; the work buffer of the operations remains the caller's.
 *
 * pMask   read: maskSize.width x maskSize.height bytes
 * ppSpec  written: the new prepared mask, for zvpiMorphAdvFree
 *
 * Status, in the order of the checks:
 *   ErrNullPtr   a pointer is null
 *   ErrSize      a width or height < 1
 *   ErrNoMemory  a size needs more than 31 bits, or the allocation failed
 *   StatusOk */

ZVP_API Status zvpiMorphAdvInitAlloc_8u_C1R(RoiSize roiSize, const uint8_t* pMask, RoiSize maskSize,
                                            MorphAdvSpec** ppSpec);
ZVP_API Status zvpiMorphAdvInitAlloc_8u_C3R(RoiSize roiSize, const uint8_t* pMask, RoiSize maskSize,
                                            MorphAdvSpec** ppSpec);
ZVP_API Status zvpiMorphAdvInitAlloc_8u_C4R(RoiSize roiSize, const uint8_t* pMask, RoiSize maskSize,
                                            MorphAdvSpec** ppSpec);
ZVP_API Status zvpiMorphAdvInitAlloc_32f_C1R(RoiSize roiSize, const uint8_t* pMask, RoiSize maskSize,
                                             MorphAdvSpec** ppSpec);
ZVP_API Status zvpiMorphAdvInitAlloc_32f_C3R(RoiSize roiSize, const uint8_t* pMask, RoiSize maskSize,
                                             MorphAdvSpec** ppSpec);
ZVP_API Status zvpiMorphAdvInitAlloc_32f_C4R(RoiSize roiSize, const uint8_t* pMask, RoiSize maskSize,
                                             MorphAdvSpec** ppSpec);

/* Releases a prepared mask made by zvpiMorphAdvInitAlloc.
 *
 * Status: ErrNullPtr for a null pointer, else StatusOk */
ZVP_API Status zvpiMorphAdvFree(MorphAdvSpec* pSpec);

/* The operations. Arguments as those of zvpiErodeBorder, with a MorphAdvSpec and its work buffer.
 *
 * Status, in the order of the checks:
 *   ErrNullPtr              pSrc, pDst, pSpec or pBuffer is null
 *   ErrSize                 width or height < 1; 1u: a bit offset < 0
 *   ErrStep                 a step < width x channels x element size; 1u: < (width + 7) >> 3
 *   ErrStepNotMultiple      16u, 16s, 32f: a step that is not a multiple of the element size
 *   ErrBorderType           the low four bits of borderType are neither BorderReplicate nor BorderInMemory
 *   ErrSize                 roiSize.width is larger than the width given at initialisation
 *   ErrSize                 the intermediate image needs more than its capacity
 *   ErrInPlaceNotSupported  1u: pSrc is pDst
 *   StatusOk                (a step whose MorphBorderSpec has a mode outside 0 to 3 writes nothing) */

ZVP_API Status zvpiMorphOpenBorder_1u_C1R(const uint8_t* pSrc, int srcStep, int srcBitOffset, uint8_t* pDst,
                                          int dstStep, int dstBitOffset, RoiSize roiSize, BorderType borderType,
                                          uint8_t borderValue, const MorphAdvSpec* pSpec, uint8_t* pBuffer);
ZVP_API Status zvpiMorphOpenBorder_8u_C1R(const uint8_t* pSrc, int srcStep, uint8_t* pDst, int dstStep, RoiSize roiSize,
                                          BorderType borderType, uint8_t borderValue, const MorphAdvSpec* pSpec,
                                          uint8_t* pBuffer);
ZVP_API Status zvpiMorphOpenBorder_8u_C3R(const uint8_t* pSrc, int srcStep, uint8_t* pDst, int dstStep, RoiSize roiSize,
                                          BorderType borderType, const uint8_t* borderValue, const MorphAdvSpec* pSpec,
                                          uint8_t* pBuffer);
ZVP_API Status zvpiMorphOpenBorder_8u_C4R(const uint8_t* pSrc, int srcStep, uint8_t* pDst, int dstStep, RoiSize roiSize,
                                          BorderType borderType, const uint8_t* borderValue, const MorphAdvSpec* pSpec,
                                          uint8_t* pBuffer);
ZVP_API Status zvpiMorphOpenBorder_16u_C1R(const uint16_t* pSrc, int srcStep, uint16_t* pDst, int dstStep,
                                           RoiSize roiSize, BorderType borderType, uint16_t borderValue,
                                           const MorphAdvSpec* pSpec, uint8_t* pBuffer);
ZVP_API Status zvpiMorphOpenBorder_16s_C1R(const int16_t* pSrc, int srcStep, int16_t* pDst, int dstStep,
                                           RoiSize roiSize, BorderType borderType, int16_t borderValue,
                                           const MorphAdvSpec* pSpec, uint8_t* pBuffer);
ZVP_API Status zvpiMorphOpenBorder_32f_C1R(const float* pSrc, int srcStep, float* pDst, int dstStep, RoiSize roiSize,
                                           BorderType borderType, float borderValue, const MorphAdvSpec* pSpec,
                                           uint8_t* pBuffer);
ZVP_API Status zvpiMorphOpenBorder_32f_C3R(const float* pSrc, int srcStep, float* pDst, int dstStep, RoiSize roiSize,
                                           BorderType borderType, const float* borderValue, const MorphAdvSpec* pSpec,
                                           uint8_t* pBuffer);
ZVP_API Status zvpiMorphOpenBorder_32f_C4R(const float* pSrc, int srcStep, float* pDst, int dstStep, RoiSize roiSize,
                                           BorderType borderType, const float* borderValue, const MorphAdvSpec* pSpec,
                                           uint8_t* pBuffer);
ZVP_API Status zvpiMorphCloseBorder_1u_C1R(const uint8_t* pSrc, int srcStep, int srcBitOffset, uint8_t* pDst,
                                           int dstStep, int dstBitOffset, RoiSize roiSize, BorderType borderType,
                                           uint8_t borderValue, const MorphAdvSpec* pSpec, uint8_t* pBuffer);
ZVP_API Status zvpiMorphCloseBorder_8u_C1R(const uint8_t* pSrc, int srcStep, uint8_t* pDst, int dstStep,
                                           RoiSize roiSize, BorderType borderType, uint8_t borderValue,
                                           const MorphAdvSpec* pSpec, uint8_t* pBuffer);
ZVP_API Status zvpiMorphCloseBorder_8u_C3R(const uint8_t* pSrc, int srcStep, uint8_t* pDst, int dstStep,
                                           RoiSize roiSize, BorderType borderType, const uint8_t* borderValue,
                                           const MorphAdvSpec* pSpec, uint8_t* pBuffer);
ZVP_API Status zvpiMorphCloseBorder_8u_C4R(const uint8_t* pSrc, int srcStep, uint8_t* pDst, int dstStep,
                                           RoiSize roiSize, BorderType borderType, const uint8_t* borderValue,
                                           const MorphAdvSpec* pSpec, uint8_t* pBuffer);
ZVP_API Status zvpiMorphCloseBorder_16u_C1R(const uint16_t* pSrc, int srcStep, uint16_t* pDst, int dstStep,
                                            RoiSize roiSize, BorderType borderType, uint16_t borderValue,
                                            const MorphAdvSpec* pSpec, uint8_t* pBuffer);
ZVP_API Status zvpiMorphCloseBorder_16s_C1R(const int16_t* pSrc, int srcStep, int16_t* pDst, int dstStep,
                                            RoiSize roiSize, BorderType borderType, int16_t borderValue,
                                            const MorphAdvSpec* pSpec, uint8_t* pBuffer);
ZVP_API Status zvpiMorphCloseBorder_32f_C1R(const float* pSrc, int srcStep, float* pDst, int dstStep, RoiSize roiSize,
                                            BorderType borderType, float borderValue, const MorphAdvSpec* pSpec,
                                            uint8_t* pBuffer);
ZVP_API Status zvpiMorphCloseBorder_32f_C3R(const float* pSrc, int srcStep, float* pDst, int dstStep, RoiSize roiSize,
                                            BorderType borderType, const float* borderValue, const MorphAdvSpec* pSpec,
                                            uint8_t* pBuffer);
ZVP_API Status zvpiMorphCloseBorder_32f_C4R(const float* pSrc, int srcStep, float* pDst, int dstStep, RoiSize roiSize,
                                            BorderType borderType, const float* borderValue, const MorphAdvSpec* pSpec,
                                            uint8_t* pBuffer);
ZVP_API Status zvpiMorphTophatBorder_1u_C1R(const uint8_t* pSrc, int srcStep, int srcBitOffset, uint8_t* pDst,
                                            int dstStep, int dstBitOffset, RoiSize roiSize, BorderType borderType,
                                            uint8_t borderValue, const MorphAdvSpec* pSpec, uint8_t* pBuffer);
ZVP_API Status zvpiMorphTophatBorder_8u_C1R(const uint8_t* pSrc, int srcStep, uint8_t* pDst, int dstStep,
                                            RoiSize roiSize, BorderType borderType, uint8_t borderValue,
                                            const MorphAdvSpec* pSpec, uint8_t* pBuffer);
ZVP_API Status zvpiMorphTophatBorder_8u_C3R(const uint8_t* pSrc, int srcStep, uint8_t* pDst, int dstStep,
                                            RoiSize roiSize, BorderType borderType, const uint8_t* borderValue,
                                            const MorphAdvSpec* pSpec, uint8_t* pBuffer);
ZVP_API Status zvpiMorphTophatBorder_8u_C4R(const uint8_t* pSrc, int srcStep, uint8_t* pDst, int dstStep,
                                            RoiSize roiSize, BorderType borderType, const uint8_t* borderValue,
                                            const MorphAdvSpec* pSpec, uint8_t* pBuffer);
ZVP_API Status zvpiMorphTophatBorder_16u_C1R(const uint16_t* pSrc, int srcStep, uint16_t* pDst, int dstStep,
                                             RoiSize roiSize, BorderType borderType, uint16_t borderValue,
                                             const MorphAdvSpec* pSpec, uint8_t* pBuffer);
ZVP_API Status zvpiMorphTophatBorder_16s_C1R(const int16_t* pSrc, int srcStep, int16_t* pDst, int dstStep,
                                             RoiSize roiSize, BorderType borderType, int16_t borderValue,
                                             const MorphAdvSpec* pSpec, uint8_t* pBuffer);
ZVP_API Status zvpiMorphTophatBorder_32f_C1R(const float* pSrc, int srcStep, float* pDst, int dstStep, RoiSize roiSize,
                                             BorderType borderType, float borderValue, const MorphAdvSpec* pSpec,
                                             uint8_t* pBuffer);
ZVP_API Status zvpiMorphTophatBorder_32f_C3R(const float* pSrc, int srcStep, float* pDst, int dstStep, RoiSize roiSize,
                                             BorderType borderType, const float* borderValue, const MorphAdvSpec* pSpec,
                                             uint8_t* pBuffer);
ZVP_API Status zvpiMorphTophatBorder_32f_C4R(const float* pSrc, int srcStep, float* pDst, int dstStep, RoiSize roiSize,
                                             BorderType borderType, const float* borderValue, const MorphAdvSpec* pSpec,
                                             uint8_t* pBuffer);
ZVP_API Status zvpiMorphBlackhatBorder_1u_C1R(const uint8_t* pSrc, int srcStep, int srcBitOffset, uint8_t* pDst,
                                              int dstStep, int dstBitOffset, RoiSize roiSize, BorderType borderType,
                                              uint8_t borderValue, const MorphAdvSpec* pSpec, uint8_t* pBuffer);
ZVP_API Status zvpiMorphBlackhatBorder_8u_C1R(const uint8_t* pSrc, int srcStep, uint8_t* pDst, int dstStep,
                                              RoiSize roiSize, BorderType borderType, uint8_t borderValue,
                                              const MorphAdvSpec* pSpec, uint8_t* pBuffer);
ZVP_API Status zvpiMorphBlackhatBorder_8u_C3R(const uint8_t* pSrc, int srcStep, uint8_t* pDst, int dstStep,
                                              RoiSize roiSize, BorderType borderType, const uint8_t* borderValue,
                                              const MorphAdvSpec* pSpec, uint8_t* pBuffer);
ZVP_API Status zvpiMorphBlackhatBorder_8u_C4R(const uint8_t* pSrc, int srcStep, uint8_t* pDst, int dstStep,
                                              RoiSize roiSize, BorderType borderType, const uint8_t* borderValue,
                                              const MorphAdvSpec* pSpec, uint8_t* pBuffer);
ZVP_API Status zvpiMorphBlackhatBorder_16u_C1R(const uint16_t* pSrc, int srcStep, uint16_t* pDst, int dstStep,
                                               RoiSize roiSize, BorderType borderType, uint16_t borderValue,
                                               const MorphAdvSpec* pSpec, uint8_t* pBuffer);
ZVP_API Status zvpiMorphBlackhatBorder_16s_C1R(const int16_t* pSrc, int srcStep, int16_t* pDst, int dstStep,
                                               RoiSize roiSize, BorderType borderType, int16_t borderValue,
                                               const MorphAdvSpec* pSpec, uint8_t* pBuffer);
ZVP_API Status zvpiMorphBlackhatBorder_32f_C1R(const float* pSrc, int srcStep, float* pDst, int dstStep,
                                               RoiSize roiSize, BorderType borderType, float borderValue,
                                               const MorphAdvSpec* pSpec, uint8_t* pBuffer);
ZVP_API Status zvpiMorphBlackhatBorder_32f_C3R(const float* pSrc, int srcStep, float* pDst, int dstStep,
                                               RoiSize roiSize, BorderType borderType, const float* borderValue,
                                               const MorphAdvSpec* pSpec, uint8_t* pBuffer);
ZVP_API Status zvpiMorphBlackhatBorder_32f_C4R(const float* pSrc, int srcStep, float* pDst, int dstStep,
                                               RoiSize roiSize, BorderType borderType, const float* borderValue,
                                               const MorphAdvSpec* pSpec, uint8_t* pBuffer);
ZVP_API Status zvpiMorphGradientBorder_1u_C1R(const uint8_t* pSrc, int srcStep, int srcBitOffset, uint8_t* pDst,
                                              int dstStep, int dstBitOffset, RoiSize roiSize, BorderType borderType,
                                              uint8_t borderValue, const MorphAdvSpec* pSpec, uint8_t* pBuffer);
ZVP_API Status zvpiMorphGradientBorder_8u_C1R(const uint8_t* pSrc, int srcStep, uint8_t* pDst, int dstStep,
                                              RoiSize roiSize, BorderType borderType, uint8_t borderValue,
                                              const MorphAdvSpec* pSpec, uint8_t* pBuffer);
ZVP_API Status zvpiMorphGradientBorder_8u_C3R(const uint8_t* pSrc, int srcStep, uint8_t* pDst, int dstStep,
                                              RoiSize roiSize, BorderType borderType, const uint8_t* borderValue,
                                              const MorphAdvSpec* pSpec, uint8_t* pBuffer);
ZVP_API Status zvpiMorphGradientBorder_8u_C4R(const uint8_t* pSrc, int srcStep, uint8_t* pDst, int dstStep,
                                              RoiSize roiSize, BorderType borderType, const uint8_t* borderValue,
                                              const MorphAdvSpec* pSpec, uint8_t* pBuffer);
ZVP_API Status zvpiMorphGradientBorder_16u_C1R(const uint16_t* pSrc, int srcStep, uint16_t* pDst, int dstStep,
                                               RoiSize roiSize, BorderType borderType, uint16_t borderValue,
                                               const MorphAdvSpec* pSpec, uint8_t* pBuffer);
ZVP_API Status zvpiMorphGradientBorder_16s_C1R(const int16_t* pSrc, int srcStep, int16_t* pDst, int dstStep,
                                               RoiSize roiSize, BorderType borderType, int16_t borderValue,
                                               const MorphAdvSpec* pSpec, uint8_t* pBuffer);
ZVP_API Status zvpiMorphGradientBorder_32f_C1R(const float* pSrc, int srcStep, float* pDst, int dstStep,
                                               RoiSize roiSize, BorderType borderType, float borderValue,
                                               const MorphAdvSpec* pSpec, uint8_t* pBuffer);
ZVP_API Status zvpiMorphGradientBorder_32f_C3R(const float* pSrc, int srcStep, float* pDst, int dstStep,
                                               RoiSize roiSize, BorderType borderType, const float* borderValue,
                                               const MorphAdvSpec* pSpec, uint8_t* pBuffer);
ZVP_API Status zvpiMorphGradientBorder_32f_C4R(const float* pSrc, int srcStep, float* pDst, int dstStep,
                                               RoiSize roiSize, BorderType borderType, const float* borderValue,
                                               const MorphAdvSpec* pSpec, uint8_t* pBuffer);

#ifdef __cplusplus
}
#endif

#endif
