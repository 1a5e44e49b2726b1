#include "threshold.h"

#include <zvpcv/morphology.h>

#include <array>

#include "common/error.h"

namespace examples {

GrayImage flatten(const GrayImage& image, int extent) {
  const std::vector<uint8_t> mask(size_t(extent) * extent, 1);
  const RoiSize maskSize{extent, extent};
  int specBytes = 0, workBytes = 0;
  require(zvpiMorphAdvGetSize_8u_C1R(image.size(), maskSize, &specBytes, &workBytes), "zvpiMorphAdvGetSize_8u_C1R");
  std::vector<uint8_t> memory(specBytes), work(workBytes);
  auto* spec = reinterpret_cast<MorphAdvSpec*>(memory.data());
  require(zvpiMorphAdvInit_8u_C1R(image.size(), mask.data(), maskSize, spec, work.data()), "zvpiMorphAdvInit_8u_C1R");
  GrayImage flat(image.width(), image.height());
  require(zvpiMorphTophatBorder_8u_C1R(image.data(), image.step(), flat.data(), flat.step(), image.size(),
                                       BorderReplicate, 0, spec, work.data()),
          "zvpiMorphTophatBorder_8u_C1R");
  return flat;
}

int otsuThreshold(const GrayImage& image) {
  constexpr int kLevels = 256;
  std::array<double, kLevels> histogram{};
  const double pixels = double(image.width()) * image.height();
  double sum = 0;
  for (int y = 0; y < image.height(); ++y) {
    for (int x = 0; x < image.width(); ++x) {
      ++histogram[*image.at(x, y)];
      sum += *image.at(x, y);
    }
  }
  int best = 0;
  double greatest = 0, pixelsBelow = 0, sumBelow = 0;
  for (int level = 0; level < kLevels; ++level) {
    pixelsBelow += histogram[level];
    sumBelow += level * histogram[level];
    const double pixelsAbove = pixels - pixelsBelow;
    if (pixelsBelow == 0 || pixelsAbove == 0) continue;
    const double distance = sumBelow / pixelsBelow - (sum - sumBelow) / pixelsAbove;
    const double variance = pixelsBelow * pixelsAbove * distance * distance;
    if (variance > greatest) greatest = variance, best = level;
  }
  return best;
}

GrayImage above(const GrayImage& image, int threshold) {
  GrayImage result(image.width(), image.height());
  for (int y = 0; y < image.height(); ++y)
    for (int x = 0; x < image.width(); ++x) *result.at(x, y) = *image.at(x, y) > threshold ? 255 : 0;
  return result;
}

}  // namespace examples
