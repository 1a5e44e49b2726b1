// Blurs a photograph and applies composite morphology to it; writes the results as one contact sheet.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <string>
#include <vector>

#include "common/blur.h"
#include "common/error.h"
#include "common/photo.h"
#include "common/png_file.h"
#include "common/program.h"
#include "morphology.h"
#include "sheet.h"

namespace {

using namespace examples;

struct Options {
  std::string photo;
  std::string output = "filtered.png";
};

void declareOptions(CLI::App& app, Options& options) {
  app.add_option("image", options.photo, "The photograph, a PNG or JPEG file")->required();
  app.add_option("-o,--output", options.output, "The picture to write, a PNG file")->capture_default_str();
}

struct Tile {
  const char* name;
  GrayImage picture;
};

std::vector<Tile> makeTiles(const GrayImage& photo) {
  Morphology morphology(photo.size());
  return {{"original", photo},
          {"Gaussian blur", blur(photo)},
          {"opening", morphology.open(photo)},
          {"closing", morphology.close(photo)},
          {"top-hat", morphology.topHat(photo)},
          {"black-hat", morphology.blackHat(photo)},
          {"gradient", morphology.gradient(photo)}};
}

Sheet layOut(const std::vector<Tile>& tiles) {
  Sheet sheet(tiles.front().picture.size(), static_cast<int>(tiles.size()));
  for (size_t i = 0; i < tiles.size(); ++i) sheet.place(static_cast<int>(i), tiles[i].picture);
  return sheet;
}

void printTiles(const std::vector<Tile>& tiles) {
  for (int i = 0; i < static_cast<int>(tiles.size()); ++i)
    std::printf("row %d, column %d: %s\n", i / Sheet::kColumns + 1, i % Sheet::kColumns + 1, tiles[i].name);
}

void run(const Options& options) {
  const std::vector<Tile> tiles = makeTiles(toGray(readPhoto(options.photo)));
  writePng(options.output, layOut(tiles).picture());
  printTiles(tiles);
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("Blurs a photograph and applies morphology to it; writes the results side by side.", "filter");
  Options options;
  declareOptions(app, options);
  return runProgram(app, argc, argv, [&options] { run(options); });
}
