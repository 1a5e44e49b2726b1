// The levels of a grey image, each half as wide and high as the one before.
#ifndef ZVP_EXAMPLES_TRACK_PYRAMID_H
#define ZVP_EXAMPLES_TRACK_PYRAMID_H

#include <zvpcv/pyramid.h>

#include <memory>
#include <vector>

#include "common/image.h"

namespace examples {

class GrayPyramid {
 public:
  // The image and up to `reductions` levels above it.
  GrayPyramid(const GrayImage& image, int reductions);

  const Pyramid* record() const { return record_.get(); }

 private:
  void attach(int level);
  void reduce(int level, std::vector<uint8_t>& work);

  std::vector<GrayImage> levels_;
  std::unique_ptr<Pyramid, Status (*)(Pyramid*)> record_;
};

}  // namespace examples

#endif
