#include "scan.h"

#include <zvpcv/zvpcv.h>

#include <algorithm>
#include <cmath>

#include "common/error.h"
#include "layers.h"

namespace examples {
namespace {

constexpr size_t kMaxHits = 20000;

// The image is scanned in tiles of this side: 255 x 256 x 256 < 2^24, so that every sum in a tile's integral image is
// exact in single precision, however large the photograph is. The tables of a tile fit the processor's cache, too.
constexpr int kTileSide = 256;

// What the library computes for a tile before the first stage.
struct Tables {
  Image<float> sums, norm;
  Image<uint8_t> mask;  // non-zero where no stage has rejected the window yet
};

// A flat window may have a variance just below 0, which the library reports as NaN: its deviation is 0.
void replaceNaN(Image<float>& deviations) {
  for (int y = 0; y < deviations.height(); ++y) {
    float* row = deviations.row(y);
    for (int x = 0; x < deviations.width(); ++x) row[x] = row[x] >= 0 ? row[x] : 0;
  }
}

Tables prepare(const GrayImage& image, Rect tile, RoiSize positions, Rect normRect) {
  Image<float> sums(tile.width + 1, tile.height + 1);
  Image<double> squares(tile.width + 1, tile.height + 1);
  require(zvpiSqrIntegral_8u32f64f_C1R(image.at(tile.x, tile.y), image.step(), sums.data(), sums.step(), squares.data(),
                                       squares.step(), {tile.width, tile.height}, 0, 0),
          "zvpiSqrIntegral_8u32f64f_C1R");

  Image<float> norm(positions.width, positions.height);
  require(zvpiRectStdDev_32f_C1R(sums.data(), sums.step(), squares.data(), squares.step(), norm.data(), norm.step(),
                                 positions, normRect),
          "zvpiRectStdDev_32f_C1R");
  replaceNaN(norm);
  return {std::move(sums), std::move(norm), Image<uint8_t>(positions.width, positions.height, 1)};
}

// Clears the mask where a stage rejects; returns whether anything is left.
bool applyStages(const Cascade& cascade, Tables& tables) {
  int positive = 0;
  for (const Stage& stage : cascade.stages) {
    require(zvpiApplyHaarClassifier_32f_C1R(tables.sums.data(), tables.sums.step(), tables.norm.data(),
                                            tables.norm.step(), tables.mask.data(), tables.mask.step(),
                                            tables.mask.size(), &positive, stage.threshold, stage.classifier.get()),
            "zvpiApplyHaarClassifier_32f_C1R");
    if (positive == 0) return false;
  }
  return true;
}

// One size of the photograph.
struct Level {
  const GrayImage& image;
  double scaleX, scaleY;  // pixels of the photograph per pixel, exactly, since sizes are rounded
  double side;            // of the window, in pixels of the photograph

  Level(const GrayImage& layer, RoiSize photo, int window)
      : image(layer),
        scaleX(double(photo.width) / image.width()),
        scaleY(double(photo.height) / image.height()),
        side(window * std::sqrt(scaleX * scaleY)) {}
};

void scanTile(const Level& level, Rect tile, const Cascade& cascade, ScanResult& result) {
  const RoiSize positions{tile.width - cascade.window + 1, tile.height - cascade.window + 1};
  Tables tables = prepare(level.image, tile, positions, cascade.normRect);
  result.windows += int64_t{positions.width} * positions.height;
  if (!applyStages(cascade, tables)) return;
  for (int y = 0; y < positions.height; ++y)
    for (int x = 0; x < positions.width; ++x)
      if (*tables.mask.at(x, y) != 0)
        result.hits.push_back({(tile.x + x) * level.scaleX, (tile.y + y) * level.scaleY, level.side});
  if (result.hits.size() > kMaxHits) throw Error("the cascade accepts too many windows to tell anything");
}

// Tiles overlap by the window's side less one, so that each position belongs to exactly one of them.
void scanLevel(const Level& level, const Cascade& cascade, ScanResult& result) {
  const int stride = kTileSide - cascade.window + 1;
  const int width = level.image.width(), height = level.image.height();
  for (int y = 0; y + cascade.window <= height; y += stride)
    for (int x = 0; x + cascade.window <= width; x += stride)
      scanTile(level, {x, y, std::min(kTileSide, width - x), std::min(kTileSide, height - y)}, cascade, result);
}

bool fits(int window, RoiSize size) { return window <= size.width && window <= size.height; }

}  // namespace

ScanResult scan(const GrayImage& image, const Cascade& cascade, double scaleStep, const Progress& progress) {
  ScanResult result;
  LayerReducer reducer(image.size(), static_cast<float>(scaleStep));
  for (GrayImage layer = image; fits(cascade.window, layer.size()); layer = reducer.next(layer)) {
    const Level level(layer, image.size(), cascade.window);
    progress(1 - 1 / (level.scaleX * level.scaleY));  // what is left shrinks like the area
    scanLevel(level, cascade, result);
    ++result.scales;
  }
  return result;
}

}  // namespace examples
