// Speckle marking with a stack of pixels and a label for each.
#pragma once

#include <cmath>
#include <cstdlib>
#include <vector>

#include "image.h"

namespace bench::ZVP_LOOPS::plain {

inline int difference(int a, int b) { return std::abs(a - b); }
inline float difference(float a, float b) { return std::fabs(a - b); }

template <class T>
class Speckles {
 public:
  Speckles(RoiSize size, T marker, int maxSize, T tolerance)
      : marker_(marker),
        maxSize_(maxSize),
        tolerance_(tolerance),
        labels_(std::size_t(size.width) * std::size_t(size.height)),
        stack_(labels_.size()),
        isSpeckle_(labels_.size() + 1) {}

  void mark(const Image<T>& image) {
    const int width = image.width, height = image.height;
    std::fill(labels_.begin(), labels_.end(), 0);
    std::size_t next = 1;
    for (int y = 0; y < height; ++y) {
      T* row = image.row(y);
      for (int x = 0; x < width; ++x) {
        if (row[x] == marker_) continue;
        std::uint32_t& label = labels_[std::size_t(y) * std::size_t(width) + std::size_t(x)];
        if (label == 0) {
          label = std::uint32_t(next++);
          isSpeckle_[label] = regionSize(image, x, y, label) <= maxSize_;
        }
        if (isSpeckle_[label]) row[x] = marker_;
      }
    }
  }

 private:
  int regionSize(const Image<T>& image, int x, int y, std::uint32_t label) {
    std::size_t top = 0;
    int size = 1;
    stack_[top++] = {x, y};
    while (top > 0) {
      const Point p = stack_[--top];
      const T value = image.row(p.y)[p.x];
      const auto join = [&](int nx, int ny) {
        std::uint32_t& seen = labels_[std::size_t(ny) * std::size_t(image.width) + std::size_t(nx)];
        const T n = image.row(ny)[nx];
        if (seen != 0 || n == marker_ || difference(n, value) > tolerance_) return;
        seen = label;
        stack_[top++] = {nx, ny};
        ++size;
      };
      if (p.y > 0) join(p.x, p.y - 1);
      if (p.y + 1 < image.height) join(p.x, p.y + 1);
      if (p.x + 1 < image.width) join(p.x + 1, p.y);
      if (p.x > 0) join(p.x - 1, p.y);
    }
    return size;
  }

  T marker_;
  int maxSize_;
  T tolerance_;
  std::vector<std::uint32_t> labels_;
  std::vector<Point> stack_;
  std::vector<std::uint8_t> isSpeckle_;
};

}  // namespace bench::ZVP_LOOPS::plain
