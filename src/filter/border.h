// Where pixels outside the region of interest come from. Each axis resolves alone.
#pragma once

#include <stdint.h>
#include <string.h>

#include "simd/loose.h"
#include "zvpcv/types.h"

namespace zvp {

inline constexpr BorderType kBorderModeBits = 0xf;
inline constexpr BorderType kBorderSideFlags =
    BorderTopInMemory | BorderBottomInMemory | BorderLeftInMemory | BorderRightInMemory;

constexpr BorderType borderMode(BorderType type) { return type & kBorderModeBits; }

// What the filters accept: a mode, with or without flags. Other bits may stand beside flags only.
constexpr bool isFilterBorder(BorderType type) {
  constexpr BorderType kBitsBesideMode = 0xfff0;
  const BorderType mode = borderMode(type);
  const bool knownMode = (mode >= BorderConstant && mode <= BorderReflectEdge) || mode == BorderInMemory;
  return knownMode && ((type & kBitsBesideMode) == 0 || (type & kBorderSideFlags) != 0);
}

// The border along one axis: sides in memory are read, the others follow the mode.
struct AxisBorder {
  BorderType mode;
  bool beforeInMemory, afterInMemory;
};

constexpr bool sideInMemory(BorderType type, BorderType flag) {
  return borderMode(type) == BorderInMemory || (type & flag) != 0;
}
constexpr AxisBorder horizontalBorder(BorderType type) {
  return {borderMode(type), sideInMemory(type, BorderLeftInMemory), sideInMemory(type, BorderRightInMemory)};
}
constexpr AxisBorder verticalBorder(BorderType type) {
  return {borderMode(type), sideInMemory(type, BorderTopInMemory), sideInMemory(type, BorderBottomInMemory)};
}

// The coordinate that is read is none: the pixel is the border constant.
inline constexpr int64_t kNoSource = INT64_MIN;

constexpr int64_t floorModulo(int64_t x, int64_t period) {
  const int64_t remainder = x % period;
  return remainder < 0 ? remainder + period : remainder;
}

// The coordinate in 0 .. extent - 1 that x reads under a mode, or kNoSource.
constexpr int64_t modeCoordinate(int64_t x, int64_t extent, BorderType mode) {
  if (x >= 0 && x < extent) return x;
  switch (mode) {
    case BorderReplicate:
      return x < 0 ? 0 : extent - 1;
    case BorderWrap:
      return floorModulo(x, extent);
    case BorderReflect: {
      const int64_t once = x < 0 ? -x : 2 * (extent - 1) - x;
      if (once >= 0 && once < extent) return once;  // mostly, and a division costs more than the pixel
      if (extent == 1) return 0;
      const int64_t phase = floorModulo(x, 2 * (extent - 1));
      return phase < extent ? phase : 2 * (extent - 1) - phase;
    }
    case BorderReflectEdge: {
      const int64_t phase = floorModulo(x, 2 * extent);
      return phase < extent ? phase : 2 * extent - 1 - phase;
    }
    default:
      return kNoSource;
  }
}

// The coordinate that x reads: itself inside and on sides in memory.
constexpr int64_t sourceCoordinate(int64_t x, int64_t extent, AxisBorder border) {
  const bool read = x < 0 ? border.beforeInMemory : x < extent || border.afterInMemory;
  return read ? x : modeCoordinate(x, extent, border.mode);
}

// One pixel of a row that reaches past its ends. `constant` (one value per channel) is read for BorderConstant only.
template <int channels, class T>
ZVP_INLINE void copyBorderPixel(const T* row, int64_t x, int64_t width, AxisBorder border, const T* constant, T* dst) {
  const int64_t from = sourceCoordinate(x, width, border);
  memcpy(dst, from == kNoSource ? constant : row + from * channels, channels * sizeof(T));
}

// A call costs more than the few elements that a small kernel needs.
template <class T>
ZVP_INLINE void copyElements(const T* src, int64_t count, T* dst) {
  constexpr int64_t kFew = 12;
  if (count > kFew) {
    memcpy(dst, src, static_cast<size_t>(count) * sizeof(T));
    return;
  }
  for (int64_t i = 0; i < count; ++i) simd::store(dst + i, simd::load<T>(src + i));
}

// Pixels first .. first + count - 1 of a row that reaches past its ends; pixel 0 is the region's first.
template <int channels, class T>
void extendRow(const T* row, int64_t width, AxisBorder border, const T* constant, int64_t first, int64_t count,
               T* dst) {
  const int64_t end = first + count;
  int64_t x = first;
  for (; x < end && x < 0 && !border.beforeInMemory; ++x, dst += channels)
    copyBorderPixel<channels>(row, x, width, border, constant, dst);
  const int64_t readable = border.afterInMemory || end < width ? end : width;
  if (x < readable) {
    copyElements(row + x * channels, (readable - x) * channels, dst);
    dst += (readable - x) * channels;
    x = readable;
  }
  for (; x < end; ++x, dst += channels) copyBorderPixel<channels>(row, x, width, border, constant, dst);
}

}  // namespace zvp
