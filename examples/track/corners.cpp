#include "corners.h"

#include <algorithm>
#include <cmath>

namespace examples {
namespace {

// Surroundings of 7 x 7 pixels; points nearer to an edge have none.
constexpr int kRadius = 3, kMargin = kRadius + 1;
// Corners weaker than this part of the strongest are left out.
constexpr float kWeakest = 0.01f;

struct Corner {
  float strength;
  int x, y;
};

// The smaller eigenvalue of the sums of products of the central differences.
float strengthAt(const GrayImage& image, int x, int y) {
  float xx = 0, xy = 0, yy = 0;
  for (int j = y - kRadius; j <= y + kRadius; ++j)
    for (int i = x - kRadius; i <= x + kRadius; ++i) {
      const float dx = float(*image.at(i + 1, j)) - float(*image.at(i - 1, j));
      const float dy = float(*image.at(i, j + 1)) - float(*image.at(i, j - 1));
      xx += dx * dx, xy += dx * dy, yy += dy * dy;
    }
  return (xx + yy) / 2 - std::hypot((xx - yy) / 2, xy);
}

std::vector<Corner> strongCorners(const GrayImage& image) {
  std::vector<Corner> corners;
  float strongest = 0;
  for (int y = kMargin; y < image.height() - kMargin; ++y)
    for (int x = kMargin; x < image.width() - kMargin; ++x) {
      corners.push_back({strengthAt(image, x, y), x, y});
      strongest = std::max(strongest, corners.back().strength);
    }
  std::erase_if(corners, [=](const Corner& c) { return c.strength <= strongest * kWeakest; });
  std::stable_sort(corners.begin(), corners.end(),
                   [](const Corner& a, const Corner& b) { return a.strength > b.strength; });
  return corners;
}

// Pixels near a point that was chosen.
class Taken {
 public:
  Taken(RoiSize size, int spacing) : map_(size.width, size.height), reach_(spacing - 1) {}

  bool at(int x, int y) const { return *map_.at(x, y) != 0; }
  void add(int x, int y) {
    const int left = std::max(x - reach_, 0), right = std::min(x + reach_, map_.width() - 1);
    for (int j = std::max(y - reach_, 0); j <= std::min(y + reach_, map_.height() - 1); ++j)
      std::fill(map_.at(left, j), map_.at(right, j) + 1, uint8_t{1});
  }

 private:
  GrayImage map_;
  int reach_;
};

}  // namespace

std::vector<Point32f> findCorners(const GrayImage& image, int most, int spacing) {
  std::vector<Point32f> chosen;
  Taken taken(image.size(), spacing);
  for (const Corner& c : strongCorners(image)) {
    if (int(chosen.size()) == most) break;
    if (taken.at(c.x, c.y)) continue;
    taken.add(c.x, c.y);
    chosen.push_back({float(c.x), float(c.y)});
  }
  return chosen;
}

}  // namespace examples
