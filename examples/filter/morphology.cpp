#include "morphology.h"

#include "common/error.h"

namespace examples {
namespace {

constexpr RoiSize kMaskSize = {7, 7};

// clang-format off
constexpr uint8_t kMask[] = {
    0, 0, 1, 1, 1, 0, 0,
    0, 1, 1, 1, 1, 1, 0,
    1, 1, 1, 1, 1, 1, 1,
    1, 1, 1, 1, 1, 1, 1,
    1, 1, 1, 1, 1, 1, 1,
    0, 1, 1, 1, 1, 1, 0,
    0, 0, 1, 1, 1, 0, 0,
};
// clang-format on
static_assert(sizeof kMask == size_t{kMaskSize.width * kMaskSize.height});

}  // namespace

Morphology::Morphology(RoiSize size) {
  int specBytes = 0, workBytes = 0;
  require(zvpiMorphAdvGetSize_8u_C1R(size, kMaskSize, &specBytes, &workBytes), "zvpiMorphAdvGetSize_8u_C1R");
  spec_.resize(specBytes);
  work_.resize(workBytes);
  require(zvpiMorphAdvInit_8u_C1R(size, kMask, kMaskSize, reinterpret_cast<MorphAdvSpec*>(spec_.data()), work_.data()),
          "zvpiMorphAdvInit_8u_C1R");
}

GrayImage Morphology::apply(const GrayImage& image, Operation operation, const char* call) {
  GrayImage result(image.width(), image.height());
  require(operation(image.data(), image.step(), result.data(), result.step(), image.size(), BorderReplicate, 0, spec(),
                    work_.data()),
          call);
  return result;
}

GrayImage Morphology::open(const GrayImage& image) {
  return apply(image, zvpiMorphOpenBorder_8u_C1R, "zvpiMorphOpenBorder_8u_C1R");
}

GrayImage Morphology::close(const GrayImage& image) {
  return apply(image, zvpiMorphCloseBorder_8u_C1R, "zvpiMorphCloseBorder_8u_C1R");
}

GrayImage Morphology::topHat(const GrayImage& image) {
  return apply(image, zvpiMorphTophatBorder_8u_C1R, "zvpiMorphTophatBorder_8u_C1R");
}

GrayImage Morphology::blackHat(const GrayImage& image) {
  return apply(image, zvpiMorphBlackhatBorder_8u_C1R, "zvpiMorphBlackhatBorder_8u_C1R");
}

GrayImage Morphology::gradient(const GrayImage& image) {
  return apply(image, zvpiMorphGradientBorder_8u_C1R, "zvpiMorphGradientBorder_8u_C1R");
}

}  // namespace examples
