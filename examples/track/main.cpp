// Tracks points from one photograph to another and back; draws how they moved.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "arrows.h"
#include "common/error.h"
#include "common/photo.h"
#include "common/png_file.h"
#include "common/program.h"
#include "corners.h"
#include "tracker.h"

namespace {

using namespace examples;

struct Options {
  std::string previous, next;
  std::string output = "motion.png";
  int points = 1000;
};

constexpr int kSpacing = 8;         // pixels between points
constexpr float kTolerance = 0.5f;  // pixels between a point and where it is tracked back to

void declareOptions(CLI::App& app, Options& options) {
  app.add_option("previous", options.previous, "The first photograph, a PNG or JPEG file")->required();
  app.add_option("next", options.next, "The second one, of the same size")->required();
  app.add_option("-o,--output", options.output, "The picture to write, a PNG file")->capture_default_str();
  app.add_option("-n,--points", options.points, "The most points to track")
      ->check(CLI::Range(1, 100000))
      ->capture_default_str();
}

// Levels until the smaller side is no more than a window.
int usefulReductions(RoiSize size) {
  int reductions = 0;
  for (int side = std::min(size.width, size.height); side > 2 * Tracker::kWindow; side /= 2) ++reductions;
  return reductions;
}

struct Motion {
  Point32f from, to;

  float dx() const { return to.x - from.x; }
  float dy() const { return to.y - from.y; }
  float length() const { return std::hypot(dx(), dy()); }
};

struct Result {
  int points = 0, found = 0;
  std::vector<Motion> kept;  // that come back to where they started
};

Result trackThereAndBack(const GrayImage& previous, const GrayImage& next, int most) {
  const int reductions = usefulReductions(previous.size());
  const GrayPyramid there(previous, reductions), back(next, reductions);
  Tracker tracker(previous.size());
  const std::vector<Point32f> points = findCorners(previous, most, kSpacing);
  const std::vector<Match> matches = tracker.track(there, back, points);
  std::vector<Point32f> places;
  for (const Match& m : matches) places.push_back(m.place);
  const std::vector<Match> returns = tracker.track(back, there, places);

  Result result;
  result.points = int(points.size());
  for (size_t i = 0; i < points.size(); ++i) {
    if (!matches[i].found) continue;
    ++result.found;
    const Motion error{points[i], returns[i].place};
    if (returns[i].found && error.length() <= kTolerance) result.kept.push_back({points[i], places[i]});
  }
  return result;
}

// The value that `part` of all are not above.
template <class Value>
float quantile(const std::vector<Motion>& motions, float part, Value value) {
  if (motions.empty()) return 0;
  std::vector<float> values;
  for (const Motion& m : motions) values.push_back(value(m));
  const auto middle = values.begin() + std::ptrdiff_t(part * float(values.size() - 1));
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

void drawMotions(ColourImage& picture, const std::vector<Motion>& motions) {
  const float longest = quantile(motions, 0.95f, [](const Motion& m) { return m.length(); });
  for (const Motion& m : motions) drawArrow(picture, m.from, m.to, motionColour(m.length(), longest));
}

void printResult(const Result& result) {
  const auto& kept = result.kept;
  const double share = result.found > 0 ? 100.0 * double(kept.size()) / result.found : 0;
  std::printf("points: %d, found: %d, kept: %zu\n", result.points, result.found, kept.size());
  std::printf("consistent there and back within %.1f pixel: %.1f %%\n", double{kTolerance}, share);
  std::printf("median motion: %.2f, %.2f\n", double{quantile(kept, 0.5f, [](const Motion& m) { return m.dx(); })},
              double{quantile(kept, 0.5f, [](const Motion& m) { return m.dy(); })});
}

void run(const Options& options) {
  ColourImage picture = readPhoto(options.previous);
  const GrayImage previous = toGray(picture), next = toGray(readPhoto(options.next));
  if (previous.width() != next.width() || previous.height() != next.height())
    throw Error("the photographs differ in size");
  const Result result = trackThereAndBack(previous, next, options.points);
  drawMotions(picture, result.kept);
  writePng(options.output, picture);
  printResult(result);
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("Tracks points from one photograph to another and back; draws how they moved.", "track");
  Options options;
  declareOptions(app, options);
  return runProgram(app, argc, argv, [&options] { run(options); });
}
