#include "common/png_file.h"

#include <png.h>

#include <algorithm>
#include <iterator>

#include "common/error.h"

namespace examples {
namespace {

// libpng's control structure; what libpng holds for it is released on every way out.
struct PngImage {
  PngImage() { image.version = PNG_IMAGE_VERSION; }
  ~PngImage() { png_image_free(&image); }
  PngImage(const PngImage&) = delete;
  PngImage& operator=(const PngImage&) = delete;

  png_image image{};
};

// libpng stops reading at the last pixel; whether the file goes on to its end chunk it does not ask.
bool hasEndChunk(const Bytes& bytes) {
  constexpr uint8_t kEnd[] = {0, 0, 0, 0, 'I', 'E', 'N', 'D', 0xae, 0x42, 0x60, 0x82};
  return std::search(bytes.begin(), bytes.end(), std::begin(kEnd), std::end(kEnd)) != bytes.end();
}

[[noreturn]] void fail(const std::string& name, const char* what, const png_image& image) {
  throw Error(name + ": " + what + ": " + image.message);
}

}  // namespace

bool isPng(const Bytes& bytes) {
  constexpr uint8_t kSignature[] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'};
  return bytes.size() >= std::size(kSignature) &&
         std::equal(std::begin(kSignature), std::end(kSignature), bytes.begin());
}

ColourImage decodePng(const Bytes& bytes, const std::string& name) {
  PngImage png;
  if (!png_image_begin_read_from_memory(&png.image, bytes.data(), bytes.size())) fail(name, "malformed PNG", png.image);
  if (int64_t{png.image.width} * png.image.height > kMaxPixels) throw Error(name + ": the PNG has too many pixels");
  png.image.format = PNG_FORMAT_RGB;
  ColourImage result(int(png.image.width), int(png.image.height));
  const png_color white{255, 255, 255};
  if (!png_image_finish_read(&png.image, &white, result.data(), result.step(), nullptr))
    fail(name, "malformed PNG", png.image);
  if (!hasEndChunk(bytes)) throw Error(name + ": malformed PNG: the end is missing");
  return result;
}

void writePng(const std::string& path, const ColourImage& image) {
  PngImage png;
  png.image.width = image.width();
  png.image.height = image.height();
  png.image.format = PNG_FORMAT_RGB;
  png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(png.image);
  Bytes bytes(size);
  if (!png_image_write_to_memory(&png.image, bytes.data(), &size, 0, image.data(), image.step(), nullptr))
    fail(path, "cannot make a PNG", png.image);
  bytes.resize(size);
  writeFile(path, bytes);
}

}  // namespace examples
