// A picture of a run: how many times faster than the plain loops each row is.
#pragma once

#include <string>
#include <vector>

namespace bench {

// At least 1 to be seen: the scale is logarithmic.
struct Bars {
  std::string label;
  double scalar, vectorised;
};

// Writes an SVG file; false if it cannot.
bool writeChart(const std::string& path, const std::vector<Bars>& rows);

}  // namespace bench
