// What a run measured, as a table, as tables in Markdown and as a picture.
#pragma once

#include <string>
#include <vector>

#include "cases.h"

namespace bench {

struct Times {  // ns per call; 0: not measured
  double library = 0, plain = 0, vectorised = 0, copy = 0;
};

struct Row {
  const Case* what;
  const Case* vectorised;  // null: none, or a processor that cannot run it
  const std::string* section;
  RoiSize size;  // empty: measured by the call
  Times times{};

  double perPixel(double ns) const { return size.width == 0 ? ns : ns / (double(size.width) * size.height); }
  std::string sizeText() const {
    return size.width == 0 ? "a call" : std::to_string(size.width) + "x" + std::to_string(size.height);
  }
  std::string name() const { return what->name + " " + sizeText(); }
};

void printTable(const std::vector<Row>& rows);

// A table for each section. `earlier` is a file with the output of a run with another build of the library, whose
// column stands beside; empty: none.
void printMarkdown(const std::vector<Row>& rows, const std::string& libraryPath, const std::string& earlier);

// How many times faster than the plain loops each row is; false if the file cannot be written.
bool drawChart(const std::vector<Row>& rows, const std::string& path);

}  // namespace bench
