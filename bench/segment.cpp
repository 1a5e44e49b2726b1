#include <zvpcv/segment.h>

#include <algorithm>

#include "cases.h"
#include "plain_segment.h"

namespace bench {
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

template <class T>
void copyTo(const Image<T>& src, const Image<T>& dst) {
  for (int y = 0; y < src.height; ++y) std::memcpy(dst.row(y), src.row(y), std::size_t(src.width) * sizeof(T));
}

// The image is restored before every run: both sides pay for that.
template <class T>
Work speckles(Status (*function)(T*, int, RoiSize, T, int, T, int, std::uint8_t*), DataType type, unsigned outliers,
              RoiSize size) {
  const auto src = disparities<T>(size, outliers);
  const Image<T> image(size.width, size.height), expected(size.width, size.height);
  int bytes = 0;
  zvpiMarkSpecklesGetBufferSize(size, type, 1, &bytes);
  const Image<std::uint8_t> buffer(bytes, 1);
  constexpr T kMarker = 0, kTolerance = 4;
  const auto plain = std::make_shared<plain::Speckles<T>>(expected, kMarker, kMaxSize, kTolerance);
  return {.library =
              [=] {
                copyTo(src, image);
                function(image.data(), image.step, size, kMarker, kMaxSize, kTolerance, 1, buffer.data());
              },
          .plain =
              [=] {
                copyTo(src, expected);
                plain->mark();
              },
          .bytes = 2 * src.bytes(),
          .agree = [=] { return same(image, expected); }};
}

#define ZVP_SPECKLES(suffix, T, type, outliers, description)                                      \
  Case {                                                                                          \
    "zvpiMarkSpeckles_" #suffix ", " description,                                                 \
        [](RoiSize size) { return speckles<T>(zvpiMarkSpeckles_##suffix, type, outliers, size); } \
  }

}  // namespace

std::vector<Case> segmentCases() {
  return {
      ZVP_SPECKLES(8u_C1IR, std::uint8_t, DataType8u, 50, "some noise"),
      ZVP_SPECKLES(16u_C1IR, std::uint16_t, DataType16u, 50, "some noise"),
      ZVP_SPECKLES(16s_C1IR, std::int16_t, DataType16s, 50, "some noise"),
      ZVP_SPECKLES(16s_C1IR, std::int16_t, DataType16s, 4, "much noise"),
      ZVP_SPECKLES(32f_C1IR, float, DataType32f, 50, "some noise"),
  };
}

}  // namespace bench
