// Finds faces, or whatever a cascade has been trained for, in a photograph; prints and draws a box around each.
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <limits>
#include <string>
#include <vector>

#include "cascade.h"
#include "common/draw.h"
#include "common/error.h"
#include "common/photo.h"
#include "common/png_file.h"
#include "common/program.h"
#include "groups.h"
#include "scan.h"

namespace {

using namespace examples;

struct Options {
  std::string photo;
  std::string cascade = DEFAULT_CASCADE;
  std::string output = "detected.png";
  double scaleStep = 1.2;
  int minNeighbours = 3;
};

void declareOptions(CLI::App& app, Options& options) {
  const auto isRate = [](const std::string& text) {
    float value;
    const bool valid = CLI::detail::lexical_cast(text, value) && value > 1 && value <= 10;
    return valid ? "" : "must be a number above 1, at most 10";
  };
  app.add_option("image", options.photo, "The photograph, a PNG or JPEG file")->required();
  app.add_option("--cascade", options.cascade, "The cascade to apply")->capture_default_str();
  app.add_option("--scale-step", options.scaleStep,
                 "Ratio between one size of the photograph and the next, above 1, at most 10")
      ->check(isRate)
      ->capture_default_str();
  app.add_option("--min-neighbours", options.minNeighbours, "Windows that must agree on a box")
      ->check(CLI::Range(1, std::numeric_limits<int>::max()))
      ->capture_default_str();
  app.add_option("-o,--output", options.output, "The picture to write, a PNG file")->capture_default_str();
}

// A line on the terminal that each call replaces; the last one, at 1, clears it.
void showProgress(double done) {
  if (!isatty(STDERR_FILENO)) return;
  if (done < 1) {
    std::fprintf(stderr, "\rscanning: %2.0f %%", 100 * done);
  } else {
    std::fprintf(stderr, "\r%16s\r", "");
  }
}

ScanResult scanPhoto(const ColourImage& photo, const Options& options) {
  const Cascade cascade = loadCascade(options.cascade);
  if (std::min(photo.width(), photo.height()) < cascade.window)
    throw Error(options.photo + ": no position fits: the picture is " + std::to_string(photo.width()) + " x " +
                std::to_string(photo.height()) + " pixels, the window " + std::to_string(cascade.window));
  const ScanResult result = scan(toGray(photo), cascade, options.scaleStep, showProgress);
  showProgress(1);
  return result;
}

Rect toPixels(const Square& square) {
  const int side = static_cast<int>(std::lround(square.side));
  return {static_cast<int>(std::lround(square.x)), static_cast<int>(std::lround(square.y)), side, side};
}

void printBoxes(const std::vector<Group>& groups) {
  for (const Group& group : groups) {
    const Rect box = toPixels(group.mean);
    std::printf("%d %d %d %d\n", box.x, box.y, box.width, group.hits);
  }
}

void drawBoxes(ColourImage& photo, const std::vector<Group>& groups) {
  constexpr Colour kYellow{255, 220, 0};
  const int thickness = std::max({3, photo.width() / 400, photo.height() / 400});
  for (const Group& group : groups) drawBox(photo, toPixels(group.mean), thickness, kYellow);
}

void run(const Options& options) {
  ColourImage photo = readPhoto(options.photo);
  const auto start = std::chrono::steady_clock::now();
  const ScanResult result = scanPhoto(photo, options);
  const std::vector<Group> groups = groupHits(result.hits, options.minNeighbours);
  const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;

  drawBoxes(photo, groups);
  writePng(options.output, photo);
  printBoxes(groups);
  std::printf("boxes: %zu (x y side hits); raw hits: %zu in %lld windows at %d scales; time: %.3f s\n", groups.size(),
              result.hits.size(), static_cast<long long>(result.windows), result.scales, seconds.count());
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("Finds faces, or whatever a cascade has been trained for, in a photograph.", "detect");
  Options options;
  declareOptions(app, options);
  return runProgram(app, argc, argv, [&options] { run(options); });
}
