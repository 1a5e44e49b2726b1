#include "report.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <fstream>
#include <map>
#include <regex>

#include "chart.h"

namespace bench {
namespace {

std::string number(double value, const char* format) {
  char text[32];
  std::snprintf(text, sizeof text, format, value);
  return value > 0 ? text : "-";
}

double ratio(double a, double b) { return b > 0 ? a / b : 0; }

void printLine(std::size_t nameWidth, const std::array<std::string, 9>& cells) {
  std::printf("%-*s", static_cast<int>(nameWidth), cells[0].c_str());
  constexpr int kWidths[] = {0, 9, 9, 9, 9, 8, 8, 10, 10};
  for (std::size_t i = 1; i < cells.size(); ++i) std::printf(" %*s", kWidths[i], cells[i].c_str());
  std::puts("");
}

}  // namespace

void printTable(const std::vector<Row>& rows) {
  std::size_t longest = 0;
  for (const Row& row : rows) longest = std::max(longest, row.what->name.size());
  printLine(longest, {"", "", "library", "plain", "copy", "plain/", "library/", "plain-O3", "plain-O3/"});
  printLine(longest,
            {"operation", "size", "ns/pixel", "ns/pixel", "ns/pixel", "library", "copy", "ns/pixel", "library"});
  for (const Row& row : rows) {
    const Times& t = row.times;
    printLine(longest, {row.what->name, row.sizeText(), number(row.perPixel(t.library), "%.4f"),
                        number(row.perPixel(t.plain), "%.4f"), number(row.perPixel(t.copy), "%.4f"),
                        number(ratio(t.plain, t.library), "%.1f"), number(ratio(t.library, t.copy), "%.2f"),
                        number(row.perPixel(t.vectorised), "%.4f"), number(ratio(t.vectorised, t.library), "%.1f")});
  }
}

// --- Tables in Markdown ----------------------------------------------------------------------------------------------

namespace {

// The build that a library's path names: a variant for newer processors, or the baseline.
std::string buildOf(const std::string& path) {
  std::smatch match;
  return std::regex_search(path, match, std::regex("glibc-hwcaps/([^/]+)/")) ? match[1].str() : "baseline";
}

// The library's column of an earlier run's output.
struct EarlierRun {
  explicit EarlierRun(const std::string& path) {
    const std::regex row("(.*[^ ]) +([0-9]+x[0-9]+) +([0-9]+\\.[0-9]+) .*");
    std::ifstream in(path);
    std::smatch match;
    for (std::string line; std::getline(in, line);) {
      if (line.rfind("library: ", 0) == 0) build = buildOf(line);
      if (std::regex_match(line, match, row)) library[match[1].str() + " " + match[2].str()] = std::stod(match[3]);
    }
  }

  std::string build;                      // empty: there was none
  std::map<std::string, double> library;  // ns per pixel, by row
};

std::string threeDigits(double value) { return number(value, value < 1 ? "%.3f" : value < 10 ? "%.2f" : "%.0f"); }
std::string times(double a, double b) { return number(ratio(a, b), ratio(a, b) < 100 ? "%.1f" : "%.0f"); }

void printCells(const std::vector<std::string>& cells) {
  for (const std::string& cell : cells) std::printf("| %s ", cell.c_str());
  std::puts("|");
}

void printHead(const std::string& section, const std::string& build, const std::string& other) {
  std::vector<std::string> names = {
      "function", build, "plain", "plain -O3", "copy", "plain / " + build, "plain -O3 / " + build, build + " / copy"};
  if (!other.empty()) names.insert(names.end(), {other, "plain / " + other});
  std::printf("\n### %s\n\n", section.c_str());
  printCells(names);
  std::printf("|---");
  for (std::size_t i = 1; i < names.size(); ++i) std::printf("|--:");
  std::puts("|");
}

}  // namespace

void printMarkdown(const std::vector<Row>& rows, const std::string& libraryPath, const std::string& earlierOutput) {
  const std::string build = buildOf(libraryPath);
  const EarlierRun earlier(earlierOutput);
  const std::string* section = nullptr;
  for (const Row& row : rows) {
    if (row.section != section) printHead(*(section = row.section), build, earlier.build);
    const Times& t = row.times;
    std::vector<std::string> cells = {row.what->name.substr(4),           threeDigits(row.perPixel(t.library)),
                                      threeDigits(row.perPixel(t.plain)), threeDigits(row.perPixel(t.vectorised)),
                                      threeDigits(row.perPixel(t.copy)),  times(t.plain, t.library),
                                      times(t.vectorised, t.library),     times(t.library, t.copy)};
    if (!earlier.build.empty()) {
      const auto other = earlier.library.find(row.name());
      const double ns = other == earlier.library.end() ? 0 : other->second;
      cells.insert(cells.end(), {threeDigits(ns), times(row.perPixel(t.plain), ns)});
    }
    printCells(cells);
  }
}

bool drawChart(const std::vector<Row>& rows, const std::string& path) {
  std::vector<Bars> bars;
  for (const Row& row : rows) {
    const Times& t = row.times;
    if (t.plain > 0) bars.push_back({row.name().substr(4), ratio(t.plain, t.library), ratio(t.vectorised, t.library)});
  }
  return writeChart(path, bars);
}

}  // namespace bench
