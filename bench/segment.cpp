#include <zvpcv/segment.h>

#include <algorithm>

#include "cases.h"
#include "plain_segment.h"

namespace bench::ZVP_LOOPS {
namespace {

constexpr int kMaxSize = 50;

// A disparity map: surfaces that slope, a step every 80 columns, and one pixel in `outliers` an arbitrary value; some
// of those make a small patch.
template <class T>
Image<T> disparities(RoiSize size, unsigned outliers) {
  Image<T> map(size.width, size.height);
  std::mt19937 generator(1);
  for (int y = 0; y < size.height; ++y)
    for (int x = 0; x < size.width; ++x)
      map.row(y)[x] = static_cast<T>(40 + x / 80 * 20 + y / 16 + int(generator() % 2));
  for (int y = 0; y < size.height; ++y) {
    for (int x = 0; x < size.width; ++x) {
      if (generator() % outliers != 0) continue;
      const auto value = static_cast<T>(generator() % 250 + 1);
      const int side = generator() % 16 == 0 ? 4 : 1;
      for (int dy = 0; dy < std::min(side, size.height - y); ++dy)
        for (int dx = 0; dx < std::min(side, size.width - x); ++dx) map.row(y + dy)[x + dx] = value;
    }
  }
  return map;
}

// The image is restored before every run: all sides pay for that.
template <unsigned outliers, class T>
Work speckles(Status (*function)(T*, int, RoiSize, T, int, T, int, std::uint8_t*), RoiSize size) {
  const auto src = disparities<T>(size, outliers);
  int bytes = 0;
  zvpiMarkSpecklesGetBufferSize(size, kDataType<T>, 1, &bytes);
  const Image<std::uint8_t> buffer(bytes, 1);
  constexpr T kMarker = 0, kTolerance = 4;
  const auto plain = std::make_shared<plain::Speckles<T>>(size, kMarker, kMaxSize, kTolerance);
  return fills<T>(
      size.width, size.height, src.bytes(),
      [=](const auto& image) {
        copyPixels(src, image);
        function(image.data(), image.step, size, kMarker, kMaxSize, kTolerance, 1, buffer.data());
      },
      [=](const auto& image) {
        copyPixels(src, image);
        plain->mark(image);
      });
}

#define ZVP_SPECKLES(outliers, function, description) ZVP_CASE_OF(speckles<outliers>, function, ", " description)

}  // namespace

std::vector<Case> segmentCases() {
  return {
      ZVP_SPECKLES(50, zvpiMarkSpeckles_8u_C1IR, "some noise"),
      ZVP_SPECKLES(50, zvpiMarkSpeckles_16u_C1IR, "some noise"),
      ZVP_SPECKLES(50, zvpiMarkSpeckles_16s_C1IR, "some noise"),
      ZVP_SPECKLES(4, zvpiMarkSpeckles_16s_C1IR, "much noise"),
      ZVP_SPECKLES(50, zvpiMarkSpeckles_32f_C1IR, "some noise"),
  };
}

}  // namespace bench::ZVP_LOOPS
