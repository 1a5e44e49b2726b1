// JPEG photographs.
#ifndef ZVP_EXAMPLES_COMMON_JPEG_FILE_H
#define ZVP_EXAMPLES_COMMON_JPEG_FILE_H

#include <string>

#include "common/file.h"
#include "common/image.h"

namespace examples {

bool isJpeg(const Bytes& bytes);

// Throws Error where the bytes are no complete JPEG of grey or colour pixels; it begins with the name.
ColourImage decodeJpeg(const Bytes& bytes, const std::string& name);

}  // namespace examples

#endif
