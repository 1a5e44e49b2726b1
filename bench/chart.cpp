#include "chart.h"

#include <algorithm>
#include <cmath>
#include <fstream>

namespace bench {
namespace {

constexpr int kRowHeight = 32, kBarHeight = 12, kTop = 74, kLabelWidth = 390, kDecadeWidth = 170, kDecades = 3,
              kRight = 70;
constexpr int kWidth = kLabelWidth + kDecades * kDecadeWidth + kRight;

double across(double value) {
  return kLabelWidth + kDecadeWidth * std::clamp(std::log10(std::max(value, 1.0)), 0.0, double{kDecades});
}

constexpr const char *kScalarColour = "#9bbcd6", *kVectorisedColour = "#1f5f96";

void text(std::ofstream& out, double x, int y, const char* anchor, const std::string& words) {
  out << "<text x=\"" << x << "\" y=\"" << y << "\" text-anchor=\"" << anchor << "\">" << words << "</text>\n";
}

void rectangle(std::ofstream& out, double x, int y, double width, const char* colour) {
  out << "<rect x=\"" << x << "\" y=\"" << y << "\" width=\"" << width << "\" height=\"" << kBarHeight << "\" fill=\""
      << colour << "\"/>\n";
}

std::string shortNumber(double value) {
  const int digits = value < 10 ? 1 : 0;
  std::string words = std::to_string(std::round(value * std::pow(10, digits)) / std::pow(10, digits));
  return words.substr(0, words.find('.') + (digits > 0 ? digits + 1 : 0));
}

void bar(std::ofstream& out, int y, double value, const char* colour) {
  rectangle(out, kLabelWidth, y, across(value) - kLabelWidth, colour);
  text(out, across(value) + 5, y + kBarHeight - 2, "start", shortNumber(value));
}

void legend(std::ofstream& out, double x, const char* colour, const char* words) {
  rectangle(out, x, 30, kBarHeight, colour);
  text(out, x + kBarHeight + 5, 40, "start", words);
}

}  // namespace

bool writeChart(const std::string& path, const std::vector<Bars>& rows) {
  std::ofstream out(path);
  const int height = kTop + kRowHeight * static_cast<int>(rows.size()) + 12;
  out << "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 " << kWidth << ' ' << height
      << "\" font-family=\"sans-serif\" font-size=\"12\">\n<rect width=\"100%\" height=\"100%\" fill=\"#fff\"/>\n";
  text(out, 12, 20, "start", "How many times faster than a plain loop, on one thread");
  legend(out, 12, kScalarColour, "than scalar code");
  legend(out, 160, kVectorisedColour, "than what the compiler vectorises with -O3 for x86-64-v3");
  for (int decade = 0; decade <= kDecades; ++decade) {
    const double x = kLabelWidth + decade * kDecadeWidth;
    text(out, x, kTop - 10, "middle", shortNumber(std::pow(10, decade)) + " x");
    out << "<path d=\"M" << x << ' ' << kTop - 4 << 'V' << height - 8 << "\" stroke=\"#ccc\"/>\n";
  }
  int y = kTop;
  for (const Bars& row : rows) {
    text(out, kLabelWidth - 8, y + 18, "end", row.label);
    bar(out, y + 2, row.scalar, kScalarColour);
    bar(out, y + 2 + kBarHeight, row.vectorised, kVectorisedColour);
    y += kRowHeight;
  }
  out << "</svg>\n";
  return static_cast<bool>(out.flush());
}

}  // namespace bench
