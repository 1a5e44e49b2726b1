// Making a picture smaller.
#ifndef ZVP_EXAMPLES_DETECT_RESIZE_H
#define ZVP_EXAMPLES_DETECT_RESIZE_H

#include "common/image.h"

namespace examples {

// The image at a size that is not larger: each new pixel is the mean of the area it covers, and pixels that it covers
// in part count in part.
GrayImage shrinkByArea(const GrayImage& image, RoiSize size);

}  // namespace examples

#endif
