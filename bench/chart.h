// A picture of a run: how many times faster than the plain loop each row is.
#pragma once

#include <string>
#include <vector>

namespace bench {

struct Bar {
  std::string label;
  double value;  // at least 1 to be seen: the scale is logarithmic
};

// Writes an SVG file; false if it cannot.
bool writeChart(const std::string& path, const std::string& title, const std::vector<Bar>& bars);

}  // namespace bench
