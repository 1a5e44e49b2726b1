// Composite morphology with a round mask.
#ifndef ZVP_EXAMPLES_FILTER_MORPHOLOGY_H
#define ZVP_EXAMPLES_FILTER_MORPHOLOGY_H

#include <zvpcv/morphology.h>

#include "common/image.h"

namespace examples {

// Prepared once for images of one size, then applied as often as needed. Beyond its edges an image goes on with its
// edge pixels.
class Morphology {
 public:
  explicit Morphology(RoiSize size);

  GrayImage open(const GrayImage& image);
  GrayImage close(const GrayImage& image);
  GrayImage topHat(const GrayImage& image);
  GrayImage blackHat(const GrayImage& image);
  GrayImage gradient(const GrayImage& image);

 private:
  using Operation = decltype(&zvpiMorphOpenBorder_8u_C1R);

  const MorphAdvSpec* spec() const { return reinterpret_cast<const MorphAdvSpec*>(spec_.data()); }
  GrayImage apply(const GrayImage& image, Operation operation, const char* call);

  std::vector<uint8_t> spec_, work_;
};

}  // namespace examples

#endif
