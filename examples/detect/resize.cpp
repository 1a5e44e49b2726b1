#include "resize.h"

#include <algorithm>
#include <vector>

namespace examples {
namespace {

// Calls use(i, share) for each of the size pixels that [begin, end) touches, with the share of the pixel inside.
template <class Use>
void forEachTouched(double begin, double end, int size, Use use) {
  for (int i = static_cast<int>(begin); i < std::min<double>(end, size); ++i)
    use(i, static_cast<float>(std::min(end, i + 1.0) - std::max<double>(begin, i)));
}

void addWeighted(const uint8_t* row, float weight, std::vector<float>& sums) {
  for (size_t x = 0; x < sums.size(); ++x) sums[x] += weight * row[x];
}

}  // namespace

GrayImage shrinkByArea(const GrayImage& image, RoiSize size) {
  GrayImage result(size.width, size.height);
  const double scaleX = double(image.width()) / size.width, scaleY = double(image.height()) / size.height;
  const auto perArea = static_cast<float>(1 / (scaleX * scaleY));
  std::vector<float> columnSums(image.width());
  for (int y = 0; y < size.height; ++y) {
    std::fill(columnSums.begin(), columnSums.end(), 0.0f);
    forEachTouched(y * scaleY, (y + 1) * scaleY, image.height(),
                   [&](int row, float share) { addWeighted(image.row(row), share, columnSums); });
    for (int x = 0; x < size.width; ++x) {
      float sum = 0;
      forEachTouched(x * scaleX, (x + 1) * scaleX, image.width(),
                     [&](int column, float share) { sum += share * columnSums[column]; });
      *result.at(x, y) = static_cast<uint8_t>(std::min(sum * perArea + 0.5f, 255.0f));
    }
  }
  return result;
}

}  // namespace examples
