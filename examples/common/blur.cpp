#include "common/blur.h"

#include <zvpcv/filter.h>

#include <algorithm>
#include <array>
#include <numeric>

#include "common/error.h"

namespace examples {
namespace {

constexpr std::array<int16_t, 9> kTaps = {7, 17, 32, 46, 52, 46, 32, 17, 7};
constexpr int kSize = kTaps.size(), kRadius = kSize / 2;
constexpr int kSum = std::accumulate(kTaps.begin(), kTaps.end(), 0);

// The rows between the two passes hold pixels times 128, the finest scale at which 255 fits 16 bits.
constexpr int kScale = 128;
constexpr int kRowDivisor = kSum / kScale, kColumnDivisor = kSum * kScale;
static_assert(kRowDivisor * kScale == kSum);

// Rows of output made by one call. The rows in between stay in the cache, however high the image is.
constexpr int kBand = 16;
constexpr int kRingRows = kBand + kSize - 1;

// Blurs one image from the top to the bottom. Filtered rows lie in a ring: row y at y modulo the ring's size, where it
// stays until no later band needs it.
class BandBlur {
 public:
  explicit BandBlur(const GrayImage& image)
      : image_(image), ring_(image.width(), kRingRows), work_(workBytes(image.width())) {}

  GrayImage run() {
    GrayImage result(image_.width(), image_.height());
    for (int top = 0; top < image_.height(); top += kBand) {
      const int bottom = std::min(top + kBand, image_.height());
      filterRowsUpTo(std::min(bottom + kRadius, image_.height()));
      filterColumns(result, top, bottom);
    }
    return result;
  }

 private:
  static int workBytes(int width) {
    int rowBytes = 0, columnBytes = 0;
    require(zvpiFilterRowBorderPipelineGetBufferSize_8u16s_C1R({width, kRingRows}, kSize, &rowBytes),
            "zvpiFilterRowBorderPipelineGetBufferSize_8u16s_C1R");
    require(zvpiFilterColumnPipelineGetBufferSize_16s8u_C1R({width, kBand}, kSize, &columnBytes),
            "zvpiFilterColumnPipelineGetBufferSize_16s8u_C1R");
    return std::max(rowBytes, columnBytes);
  }

  int16_t* ringRow(int y) { return ring_.row(y % kRingRows); }

  // Filters the rows above end that have not been filtered yet.
  void filterRowsUpTo(int end) {
    if (filtered_ == end) return;
    std::array<int16_t*, kRingRows> rows{};
    for (int y = filtered_; y < end; ++y) rows[y - filtered_] = ringRow(y);
    require(zvpiFilterRowBorderPipeline_8u16s_C1R(image_.row(filtered_), image_.step(), rows.data(),
                                                  {image_.width(), end - filtered_}, kTaps.data(), kSize, kRadius,
                                                  BorderReplicate, 0, kRowDivisor, work_.data()),
            "zvpiFilterRowBorderPipeline_8u16s_C1R");
    filtered_ = end;
  }

  // Naming the first or last row several times continues the image beyond it.
  void filterColumns(GrayImage& result, int top, int bottom) {
    std::array<const int16_t*, kRingRows> rows{};
    for (int i = 0; i < bottom - top + kSize - 1; ++i)
      rows[i] = ringRow(std::clamp(top + i - kRadius, 0, image_.height() - 1));
    require(
        zvpiFilterColumnPipeline_16s8u_C1R(rows.data(), result.row(top), result.step(), {image_.width(), bottom - top},
                                           kTaps.data(), kSize, kColumnDivisor, work_.data()),
        "zvpiFilterColumnPipeline_16s8u_C1R");
  }

  const GrayImage& image_;
  Image<int16_t> ring_;
  std::vector<uint8_t> work_;
  int filtered_ = 0;
};

}  // namespace

GrayImage blur(const GrayImage& image) { return BandBlur(image).run(); }

}  // namespace examples
