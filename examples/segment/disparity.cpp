#include "disparity.h"

#include <zvpcv/arithmetic.h>
#include <zvpcv/integral.h>
#include <zvpcv/segment.h>

#include <algorithm>
#include <limits>

#include "common/error.h"

namespace examples {
namespace {

constexpr int kBlock = 7, kRadius = kBlock / 2;  // pixels

// Sums of absolute differences over blocks for one disparity, from an integral image.
class BlockSums {
 public:
  explicit BlockSums(RoiSize size) : differences_(size.width, size.height), table_(size.width + 1, size.height + 1) {}

  // Pixel x of the sums belongs to pixel x + disparity of the left picture.
  void compute(const GrayImage& left, const GrayImage& right, int disparity) {
    const RoiSize common{left.width() - disparity, left.height()};
    require(zvpiAbsDiff_8u_C1R(left.at(disparity, 0), left.step(), right.data(), right.step(), differences_.data(),
                               differences_.step(), common),
            "zvpiAbsDiff_8u_C1R");
    require(zvpiIntegral_8u32s_C1R(differences_.data(), differences_.step(), table_.data(), table_.step(), common, 0),
            "zvpiIntegral_8u32s_C1R");
  }

  // The block whose upper left pixel is (x, y).
  int32_t at(int x, int y) const {
    const int32_t *top = table_.at(x, y), *bottom = table_.at(x, y + kBlock);
    return bottom[kBlock] - bottom[0] - top[kBlock] + top[0];
  }

 private:
  GrayImage differences_;
  Image<int32_t> table_;
};

}  // namespace

Disparities matchBlocks(const GrayImage& left, const GrayImage& right) {
  Disparities best(left.width(), left.height(), kUnknown);
  Image<int32_t> least(left.width(), left.height(), std::numeric_limits<int32_t>::max());
  BlockSums sums(left.size());
  for (int d = 0; d <= kMaxDisparity && left.width() - d >= kBlock; ++d) {
    sums.compute(left, right, d);
    for (int y = 0; y + kBlock <= left.height(); ++y) {
      int32_t* leastRow = least.at(d + kRadius, y + kRadius);
      int16_t* bestRow = best.at(d + kRadius, y + kRadius);
      for (int x = 0; x + kBlock <= left.width() - d; ++x) {
        const int32_t sum = sums.at(x, y);
        if (sum < leastRow[x]) leastRow[x] = sum, bestRow[x] = int16_t(d);
      }
    }
  }
  return best;
}

void removeSpeckles(Disparities& map, int maxSize, int maxDifference) {
  constexpr int kCityBlock = 1;
  int bytes = 0;
  require(zvpiMarkSpecklesGetBufferSize(map.size(), DataType16s, 1, &bytes), "zvpiMarkSpecklesGetBufferSize");
  std::vector<uint8_t> buffer(bytes);
  require(zvpiMarkSpeckles_16s_C1IR(map.data(), map.step(), map.size(), kUnknown, maxSize, int16_t(maxDifference),
                                    kCityBlock, buffer.data()),
          "zvpiMarkSpeckles_16s_C1IR");
}

int countKnown(const Disparities& map) {
  const int16_t* first = map.data();
  const int16_t* end = first + size_t(map.width()) * map.height();
  return int(std::count_if(first, end, [](int16_t d) { return d != kUnknown; }));
}

}  // namespace examples
