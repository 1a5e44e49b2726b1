// Counts the coins in a photograph, or cleans the disparity map of a stereo pair; draws what it finds.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <string>

#include "coins.h"
#include "colours.h"
#include "common/error.h"
#include "common/photo.h"
#include "common/png_file.h"
#include "common/program.h"
#include "disparity.h"

namespace {

using namespace examples;

struct Options {
  std::string photo, right;
  std::string output = "segmented.png";
};

void declareOptions(CLI::App& app, Options& options) {
  app.add_option("image", options.photo, "The photograph, a PNG or JPEG file")->required();
  app.add_option("-r,--right", options.right,
                 "The right picture of a stereo camera whose left one is the photograph: maps how near things are "
                 "instead, and removes the speckles from the map");
  app.add_option("-o,--output", options.output, "The picture to write, a PNG file")->capture_default_str();
}

void countCoins(const Options& options) {
  const GrayImage photo = toGray(readPhoto(options.photo));
  const Coins coins = findCoins(photo);
  writePng(options.output, paintCoins(photo, coins));
  std::printf("coin    area     x     y  width  height\n");
  for (size_t i = 0; i < coins.found.size(); ++i) {
    const auto& [area, box] = coins.found[i];
    std::printf("%4zu %7d %5d %5d %6d %7d\n", i + 1, area, box.x, box.y, box.width, box.height);
  }
  std::printf("coins: %zu\n", coins.found.size());
}

void cleanDisparities(const Options& options) {
  constexpr int kMaxSpeckle = 400, kMaxStep = 1;  // pixels
  const GrayImage left = toGray(readPhoto(options.photo)), right = toGray(readPhoto(options.right));
  if (left.width() != right.width() || left.height() != right.height()) throw Error("the two pictures differ in size");
  const Disparities noisy = matchBlocks(left, right);
  Disparities clean = noisy;
  removeSpeckles(clean, kMaxSpeckle, kMaxStep);
  writePng(options.output, paintDisparities(noisy, clean));
  const int known = countKnown(noisy), kept = countKnown(clean);
  std::printf("matched: %d pixels\nspeckles: %d pixels\nkept: %d pixels\n", known, known - kept, kept);
}

void run(const Options& options) {
  if (options.right.empty()) {
    countCoins(options);
  } else {
    cleanDisparities(options);
  }
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("Counts the coins in a photograph, or cleans the disparity map of a stereo pair.", "segment");
  Options options;
  declareOptions(app, options);
  return runProgram(app, argc, argv, [&options] { run(options); });
}
