#include "pyramid.h"

#include <algorithm>

#include "common/error.h"

namespace examples {
namespace {

constexpr float kRate = 2.0f;

Pyramid* makeRecord(RoiSize size, int reductions) {
  Pyramid* record = nullptr;
  require(zvpiPyramidInitAlloc(&record, std::max(reductions, 1), size, kRate), "zvpiPyramidInitAlloc");
  return record;
}

int workBytes(int width) {
  int bytes = 0;
  require(zvpiPyrDownGetBufSize_Gauss5x5(width, DataType8u, 1, &bytes), "zvpiPyrDownGetBufSize_Gauss5x5");
  return bytes;
}

}  // namespace

GrayPyramid::GrayPyramid(const GrayImage& image, int reductions)
    : levels_{image}, record_(makeRecord(image.size(), reductions), zvpiPyramidFree) {
  std::vector<uint8_t> work(workBytes(image.width()));
  attach(0);
  for (int level = 1; level <= record_->level; ++level) reduce(level, work);
}

// The record knows where the pixels are; a moved image keeps them where they are.
void GrayPyramid::attach(int level) {
  record_->images[level] = levels_[level].data();
  record_->steps[level] = levels_[level].step();
}

void GrayPyramid::reduce(int level, std::vector<uint8_t>& work) {
  GrayImage smaller(record_->roiSizes[level].width, record_->roiSizes[level].height);
  const GrayImage& larger = levels_.back();
  require(zvpiPyrDown_Gauss5x5_8u_C1R(larger.data(), larger.step(), smaller.data(), smaller.step(), larger.size(),
                                      work.data()),
          "zvpiPyrDown_Gauss5x5_8u_C1R");
  levels_.push_back(std::move(smaller));
  attach(level);
}

}  // namespace examples
