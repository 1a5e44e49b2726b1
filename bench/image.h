// Images for the benchmarks: cheap handles to shared pixels, rows padded to whole cache lines.
#pragma once

#include <zvpcv/types.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <random>
#include <type_traits>

namespace bench {

constexpr int kCacheLine = 64;

template <class T>
class Image {
 public:
  Image(int w, int h)
      : width(w),
        height(h),
        step((w * int{sizeof(T)} + kCacheLine - 1) / kCacheLine * kCacheLine),
        pixels_(static_cast<T*>(std::aligned_alloc(kCacheLine, blockBytes())), std::free) {
    std::memset(data(), 0, blockBytes());
  }

  T* data() const { return pixels_.get(); }
  T* row(int y) const { return data() + std::ptrdiff_t{y} * (step / int{sizeof(T)}); }
  std::size_t bytes() const { return std::size_t(width) * std::size_t(height) * sizeof(T); }

  int width, height, step;

 private:
  std::size_t blockBytes() const { return std::size_t(step) * std::size_t(height); }

  std::shared_ptr<T> pixels_;
};

template <class T>
constexpr DataType kDataType = std::is_same_v<T, float>           ? DataType32f
                               : std::is_same_v<T, std::int16_t>  ? DataType16s
                               : std::is_same_v<T, std::uint16_t> ? DataType16u
                               : std::is_same_v<T, std::int8_t>   ? DataType8s
                                                                  : DataType8u;

template <class T>
bool same(const Image<T>& a, const Image<T>& b) {
  for (int y = 0; y < a.height; ++y)
    if (std::memcmp(a.row(y), b.row(y), std::size_t(a.width) * sizeof(T)) != 0) return false;
  return true;
}

// Of images of one size.
template <class T>
void copyPixels(const Image<T>& src, const Image<T>& dst) {
  std::memcpy(dst.data(), src.data(), std::size_t(src.step) * std::size_t(src.height));
}

// Seeded: every run measures the same pixels. Integers cover their type; floats are 0..255.
template <class T>
Image<T> randomImage(int width, int height, unsigned seed) {
  Image<T> image(width, height);
  std::mt19937 generator(seed);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      if constexpr (std::is_floating_point_v<T>) {
        image.row(y)[x] = std::uniform_real_distribution<T>(0, 255)(generator);
      } else {
        image.row(y)[x] = static_cast<T>(generator());
      }
    }
  }
  return image;
}

}  // namespace bench
