// Pyramids that own their images, each of them against inaccessible pages.
#pragma once

#include <math.h>

#include <deque>
#include <memory>

#include "support/image.h"
#include "zvpcv/pyramid.h"

namespace zvp::test {

// A record that releases itself; null where the call that should make it fails.
using RecordPtr = std::unique_ptr<Pyramid, Status (*)(Pyramid*)>;
inline RecordPtr makeRecord(int level, RoiSize base, float rate) {
  Pyramid* record = nullptr;
  EXPECT_EQ(zvpiPyramidInitAlloc(&record, level, base, rate), StatusOk);
  return {record, zvpiPyramidFree};
}

template <class T>
class ImagePyramid {
 public:
  // pixel(level, y, x) gives the pixels.
  template <class Pixel>
  ImagePyramid(RoiSize size, int levels, float rate, Pixel pixel, int extra = 0, Placement placement = {})
      : record_(makeRecord(levels, size, rate)) {
    for (int l = 0; l <= record_->level; ++l) {
      const RoiSize roi = record_->roiSizes[l];
      const Image<T>& image = images_.emplace_back(roi.width, roi.height, extra, placement);
      image.draw([&](int y, int x) { return pixel(l, y, x); });
      record_->images[l] = reinterpret_cast<uint8_t*>(image.address());
      record_->steps[l] = image.step();
      frozen_.emplace_back(image);
    }
  }

  Pyramid* record() const { return record_.get(); }
  const Image<T>& operator[](int level) const { return images_[static_cast<size_t>(level)]; }

 private:
  RecordPtr record_;
  std::deque<Image<T>> images_;
  std::deque<Frozen> frozen_;
};

}  // namespace zvp::test
