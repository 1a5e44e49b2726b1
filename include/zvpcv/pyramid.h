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

#ifdef __cplusplus
}
#endif

#endif
