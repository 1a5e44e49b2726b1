#include "chart.h"

#include <algorithm>
#include <cmath>
#include <fstream>

namespace bench {
namespace {

constexpr int kRowHeight = 20, kTop = 56, kLabelWidth = 390, kDecadeWidth = 170, kDecades = 3, kRight = 70;
constexpr int kWidth = kLabelWidth + kDecades * kDecadeWidth + kRight;

double across(double value) {
  return kLabelWidth + kDecadeWidth * std::clamp(std::log10(std::max(value, 1.0)), 0.0, double{kDecades});
}

void text(std::ofstream& out, double x, int y, const char* anchor, const std::string& words) {
  out << "<text x=\"" << x << "\" y=\"" << y << "\" text-anchor=\"" << anchor << "\">" << words << "</text>\n";
}

std::string shortNumber(double value) {
  const int digits = value < 10 ? 1 : 0;
  std::string words = std::to_string(std::round(value * std::pow(10, digits)) / std::pow(10, digits));
  return words.substr(0, words.find('.') + (digits > 0 ? digits + 1 : 0));
}

}  // namespace

bool writeChart(const std::string& path, const std::string& title, const std::vector<Bar>& bars) {
  std::ofstream out(path);
  const int height = kTop + kRowHeight * static_cast<int>(bars.size()) + 12;
  out << "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 " << kWidth << ' ' << height
      << "\" font-family=\"sans-serif\" font-size=\"12\">\n<rect width=\"100%\" height=\"100%\" fill=\"#fff\"/>\n";
  text(out, 12, 20, "start", title);
  for (int decade = 0; decade <= kDecades; ++decade) {
    const double x = kLabelWidth + decade * kDecadeWidth;
    text(out, x, kTop - 10, "middle", shortNumber(std::pow(10, decade)) + " x");
    out << "<path d=\"M" << x << ' ' << kTop - 4 << 'V' << height - 8 << "\" stroke=\"#ccc\"/>\n";
  }
  int y = kTop;
  for (const Bar& bar : bars) {
    text(out, kLabelWidth - 8, y + 14, "end", bar.label);
    out << "<rect x=\"" << kLabelWidth << "\" y=\"" << y + 3 << "\" width=\"" << across(bar.value) - kLabelWidth
        << "\" height=\"" << kRowHeight - 6 << "\" fill=\"#2a78b5\"/>\n";
    text(out, across(bar.value) + 5, y + 14, "start", shortNumber(bar.value));
    y += kRowHeight;
  }
  out << "</svg>\n";
  return static_cast<bool>(out.flush());
}

}  // namespace bench
