#include "common/photo.h"

#include "common/error.h"
#include "common/jpeg_file.h"
#include "common/png_file.h"

namespace examples {

ColourImage readPhoto(const std::string& path) {
  const Bytes bytes = readFile(path);
  if (isPng(bytes)) return decodePng(bytes, path);
  if (isJpeg(bytes)) return decodeJpeg(bytes, path);
  throw Error(path + ": neither a PNG nor a JPEG file");
}

GrayImage toGray(const ColourImage& image) {
  GrayImage gray(image.width(), image.height());
  for (int y = 0; y < image.height(); ++y) {
    const uint8_t* rgb = image.row(y);
    uint8_t* out = gray.row(y);
    for (int x = 0; x < image.width(); ++x, rgb += 3)
      out[x] = static_cast<uint8_t>((299 * rgb[0] + 587 * rgb[1] + 114 * rgb[2] + 500) / 1000);
  }
  return gray;
}

}  // namespace examples
