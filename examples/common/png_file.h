// PNG pictures of every kind (grey, palette, transparent, 16 bits), read and written as 8-bit colour.
#ifndef ZVP_EXAMPLES_COMMON_PNG_FILE_H
#define ZVP_EXAMPLES_COMMON_PNG_FILE_H

#include <string>

#include "common/file.h"
#include "common/image.h"

namespace examples {

bool isPng(const Bytes& bytes);

// Transparent pixels are laid on white. Throws Error where the bytes are no complete PNG; it begins with the name.
ColourImage decodePng(const Bytes& bytes, const std::string& name);

void writePng(const std::string& path, const ColourImage& image);

}  // namespace examples

#endif
