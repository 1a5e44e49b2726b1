// Pyramids that own their images, each of them against inaccessible pages.
#pragma once

#include <math.h>

#include <deque>

#include "support/image.h"
#include "zvpcv/pyramid.h"

namespace zvp::test {

template <class T>
class ImagePyramid {
 public:
  // pixel(level, y, x) gives the pixels.
  template <class Pixel>
  ImagePyramid(RoiSize size, int levels, float rate, Pixel pixel, int extra = 0, Placement placement = {}) {
    EXPECT_EQ(zvpiPyramidInitAlloc(&record_, levels, size, rate), StatusOk);
    for (int l = 0; l <= record_->level; ++l) {
      const RoiSize roi = record_->roiSizes[l];
      const Image<T>& image = images_.emplace_back(roi.width, roi.height, extra, placement);
      for (int y = 0; y < roi.height; ++y)
        for (int x = 0; x < roi.width; ++x) image.set(y, x, pixel(l, y, x));
      record_->images[l] = reinterpret_cast<uint8_t*>(image.data());
      record_->steps[l] = image.step();
    }
  }
  ImagePyramid(const ImagePyramid&) = delete;
  ImagePyramid& operator=(const ImagePyramid&) = delete;
  ~ImagePyramid() { zvpiPyramidFree(record_); }

  Pyramid* record() const { return record_; }
  const Image<T>& operator[](int level) const { return images_[static_cast<size_t>(level)]; }

 private:
  Pyramid* record_ = nullptr;
  std::deque<Image<T>> images_;
};

}  // namespace zvp::test
