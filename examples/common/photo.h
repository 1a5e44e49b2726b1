// Photographs, whatever format they are kept in.
#ifndef ZVP_EXAMPLES_COMMON_PHOTO_H
#define ZVP_EXAMPLES_COMMON_PHOTO_H

#include <string>

#include "common/image.h"

namespace examples {

// Reads a PNG or JPEG file, told apart by its first bytes. Throws Error.
ColourImage readPhoto(const std::string& path);

// The luma of ITU-R BT.601, rounded.
GrayImage toGray(const ColourImage& image);

}  // namespace examples

#endif
