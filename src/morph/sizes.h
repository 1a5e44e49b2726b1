// The sizes of morphology's objects and work buffers; they are part of the interface.
#pragma once

#include <stdint.h>

#include "core/bytes.h"
#include "zvpcv/types.h"

namespace zvp {

// What tells the members of a family apart.
struct Flavour {
  DataType type;
  int elementBytes, channels;
  bool bits;

  constexpr int pixelBytes() const { return elementBytes * channels; }
};

template <class T, int channels>
inline constexpr Flavour kFlavour = {};
template <int channels>
inline constexpr Flavour kFlavour<uint8_t, channels> = {DataType8u, 1, channels, false};
template <int channels>
inline constexpr Flavour kFlavour<uint16_t, channels> = {DataType16u, 2, channels, false};
template <int channels>
inline constexpr Flavour kFlavour<int16_t, channels> = {DataType16s, 2, channels, false};
template <int channels>
inline constexpr Flavour kFlavour<float, channels> = {DataType32f, 4, channels, false};
inline constexpr Flavour kBits = {DataType8u, 1, 1, true};  // computed as bytes

constexpr int64_t maskBytes(RoiSize mask) { return roundUp(int64_t{mask.width} * mask.height, 16); }

// The part of the work buffer that holds rows: enough for mask.height x mask.height + 1 rows without borders.
constexpr int64_t ringBytes(int roiWidth, RoiSize mask, int pixelBytes) {
  return (int64_t{mask.height} * mask.height + 1) * (int64_t{roiWidth} * pixelBytes + 32);
}

struct MorphSizes {
  int64_t spec, buffer;
};

// False when a size does not fit 31 bits. Widths and heights are positive.
bool morphSizes(Flavour flavour, int roiWidth, RoiSize mask, MorphSizes* sizes);

}  // namespace zvp
