// An image that owns its pixels, shaped as the library expects it: a pointer to the first pixel and a step in bytes.
#ifndef ZVP_EXAMPLES_COMMON_IMAGE_H
#define ZVP_EXAMPLES_COMMON_IMAGE_H

#include <zvpcv/types.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace examples {

template <class T, int Channels = 1>
class Image {
 public:
  Image(int width, int height, T fill = T{})
      : width_(width), height_(height), elements_(size_t(width) * Channels * height, fill) {}

  int width() const { return width_; }
  int height() const { return height_; }
  RoiSize size() const { return {width_, height_}; }
  int step() const { return width_ * Channels * int{sizeof(T)}; }

  T* data() { return elements_.data(); }
  const T* data() const { return elements_.data(); }
  T* at(int x, int y) { return data() + offset(x, y); }
  const T* at(int x, int y) const { return data() + offset(x, y); }
  T* row(int y) { return at(0, y); }
  const T* row(int y) const { return at(0, y); }

 private:
  size_t offset(int x, int y) const { return (size_t(y) * width_ + x) * Channels; }

  int width_, height_;
  std::vector<T> elements_;
};

using GrayImage = Image<uint8_t>;
using ColourImage = Image<uint8_t, 3>;  // red, green, blue

// More than any camera's photograph has; files that claim more are refused before memory is asked for.
inline constexpr int64_t kMaxPixels = int64_t{1} << 28;

}  // namespace examples

#endif
