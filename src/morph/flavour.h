// What tells the members of a family apart, and images of any of them.
#pragma once

#include <type_traits>

#include "core/data_type.h"
#include "core/rows.h"

namespace zvp::morph {

struct Flavour {
  DataType type;
  int elementBytes, channels;
  bool bits;  // one bit per pixel, computed as bytes

  constexpr int pixelBytes() const { return elementBytes * channels; }
};

template <class T, int channels>
inline constexpr Flavour kFlavour = {kDataType<T>, int{sizeof(T)}, channels, false};
inline constexpr Flavour kBits = {DataType8u, 1, 1, true};

// Rows of pixels of any flavour. Of bits, `bit` is the region's first one in every row; the most significant bit of a
// byte is the leftmost. It may lie before or behind the first byte.
template <class Byte>
struct Image {
  Byte* data;
  int step;
  int64_t bit = 0;

  Byte* row(int64_t y) const { return Rows<Byte>{data, step}.row(y); }
  Image at(Flavour flavour, int64_t x, int64_t y) const {
    return flavour.bits ? Image{row(y), step, bit + x} : Image{row(y) + x * flavour.pixelBytes(), step};
  }
  Image<const Byte> readable() const { return {data, step, bit}; }
};

template <class T>
auto imageOf(T* data, int step, int bit = 0) {
  using Byte = std::conditional_t<std::is_const_v<T>, const uint8_t, uint8_t>;
  return Image<Byte>{reinterpret_cast<Byte*>(data), step, bit};
}

}  // namespace zvp::morph
