/* Types that every function of zvpCV shares.
 *
 * Image: a pointer to the first pixel of the region of interest and a step, the distance in bytes from the start of one
 * row to the start of the next. The pixels of a row are contiguous; a pixel of three channels is three consecutive
 * elements. Pointers may have any alignment, also one that does not suit the element type.
 *
 * Unless a function says otherwise, it checks its arguments in this order, the first failure decides, and a failing
 * call writes nothing:
 *   1. a null image pointer                                             ErrNullPtr
 *   2. a width or height < 1                                            ErrSize
 *   3. a step < width x channels x element size (so any negative step)  ErrStep
 *   4. a step that is not a multiple of an element size of 2, 4 or 8    ErrStepNotMultiple
 *   5. what the family adds
 *
 * Any function may run on any number of threads at once, provided that no two of them write the same memory.
 *
 * Results are the same bits in every build, with two exceptions, both of 32f pixels that are NaNs:
 *   - Where a result is a NaN, its sign and payload may differ between builds, but for absolute differences and
 *     accumulation (arithmetic.h), which define every bit.
 *   - In morphology a NaN among the pixels under the mask makes the result any of those pixels.
 *
 * Results are those of the default floating-point environment: rounding to nearest, subnormal numbers kept. The library
 * neither looks at the environment nor changes it. Where a caller has set another rounding mode, flush-to-zero or
 * denormals-are-zero (in MXCSR), floating-point operations follow that, with the results that this leads to; still no
 * byte outside the operands is touched. Integer results are the same in every environment, except those that pass
 * through floating point: of the filter pipelines (but not their Low members), of RectStdDev and CopySubpix, of pyramid
 * layers, and the sizes in pyramids. */
#ifndef ZVPCV_TYPES_H
#define ZVPCV_TYPES_H

#include <stdint.h>

#if defined(__GNUC__)
#define ZVP_API __attribute__((visibility("default")))
#else
#define ZVP_API
#endif

/* Result of every image function: 0 is success, a negative value an error (no output has been written), a positive
 * value a warning (the call has completed). */
#ifndef ZVP_STATUS
#define ZVP_STATUS
typedef int32_t Status;
#endif

enum {
  StatusOk = 0,
  WarnKernelNotSymmetric = 38,   /* a kernel is not symmetric; its left half was used, mirrored */
  ErrBadArg = -5,                /* an argument value outside its allowed set */
  ErrSize = -6,                  /* a width or height < 1, or another size that breaks its rule */
  ErrNullPtr = -8,               /* a required pointer is null */
  ErrNoMemory = -9,              /* an internal allocation failed; everything has been released */
  ErrOutOfRange = -11,           /* a point outside its allowed range */
  ErrDataType = -12,             /* a DataType code that the call does not accept */
  ErrStep = -14,                 /* a step smaller than the row in bytes */
  ErrMaskSize = -33,             /* a mask-size code other than 33 (3x3) or 55 (5x5) */
  ErrAnchor = -34,               /* an anchor outside the kernel or mask */
  ErrChannelOfInterest = -52,    /* a channel of interest outside 1 to 3 */
  ErrNumChannels = -53,          /* a channel count other than 1 or 3 */
  ErrMetric = -56,               /* a distance weight < 1 (integer) or <= 0 (float) */
  ErrStepNotMultiple = -108,     /* a step that is not a multiple of the element size */
  ErrBorderType = -225,          /* a border type outside the family's set */
  ErrNorm = -229,                /* a norm code that the function does not accept */
  ErrInPlaceNotSupported = -9997 /* source and destination equal where the function cannot work in place */
};

/* Size of the region of interest in pixels; passed by value. */
typedef struct RoiSize {
  int32_t width;
  int32_t height;
} RoiSize;

/* Where a filter takes the pixels outside the region of interest from: a mode in the low four bits, and flags that may
 * be added to it for sides whose neighbours are readable memory and are read from there. A mode that mirrors or wraps
 * past the other end of a row goes on until it is inside; a row of one pixel is repeated. */
typedef int32_t BorderType;

enum {
  BorderConstant = 0,          /* a constant given by the caller, one value per channel */
  BorderReplicate = 1,         /* the nearest edge pixel */
  BorderWrap = 2,              /* periodic: x = -1 reads x = width - 1 */
  BorderReflect = 3,           /* mirrored about the edge pixel: x = -1 reads x = 1 */
  BorderReflectEdge = 4,       /* mirrored, the edge pixel repeated: x = -1 reads x = 0 */
  BorderInMemory = 6,          /* all four sides are readable memory */
  BorderTopInMemory = 0x10,    /* flag: the rows above are readable memory */
  BorderBottomInMemory = 0x20, /* flag: the rows below */
  BorderLeftInMemory = 0x40,   /* flag: the columns to the left, at negative offsets from the first pixel of a row */
  BorderRightInMemory = 0x80   /* flag: the columns to the right */
};

/* Element type, where a query or a specification names one. */
typedef int32_t DataType;

enum { DataType8u = 1, DataType8s = 3, DataType16u = 5, DataType16s = 7, DataType32f = 13 };

typedef struct Point {
  int32_t x;
  int32_t y;
} Point;

typedef struct Point32f {
  float x;
  float y;
} Point32f;

/* Offset and size of a rectangle, in pixels (or table entries where a function says so). */
typedef struct Rect {
  int32_t x;
  int32_t y;
  int32_t width;
  int32_t height;
} Rect;

#endif
