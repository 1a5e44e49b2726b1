// The region that a call filters, what exists around it, and runs of members of the mask laid over its rows.
#pragma once

#include "filter/border.h"
#include "morph/prepared_mask.h"

namespace zvp::morph {

// Columns of a row, or rows of an image, that exist. Others repeat the nearest one.
struct Span {
  int64_t first, end;

  int64_t clamp(int64_t x) const { return std::clamp(x, first, end - 1); }
};

// Output columns that are computed together, over the whole height.
struct Strip {
  int64_t x0, x1;

  int64_t width() const { return x1 - x0; }
};

struct Region {
  RoiSize roi;
  Span rows, columns;

  Region(RoiSize size, BorderType border, const StructuringElement& e)
      : roi(size),
        rows(span(size.height, e.anchor.y, e.bottomExtent(), verticalBorder(border))),
        columns(span(size.width, e.anchor.x, e.rightExtent(), horizontalBorder(border))) {}

 private:
  static Span span(int extent, int before, int after, AxisBorder border) {
    return {border.beforeInMemory ? -int64_t{before} : 0, int64_t{extent} + (border.afterInMemory ? after : 0)};
  }
};

// Start is relative to the output pixel.
struct Run {
  int start, length;

  bool operator==(const Run&) const = default;
};

// Where the windows of a run lie for the output columns of a strip. Places are counted in elements, in a row from column
// 0 on, in an output row from the strip's first pixel on.
struct RunColumns {
  // Outputs whose windows reach beyond an end of the row.
  struct Edge {
    int64_t outputs;    // how many
    int64_t covered;    // pixels of the row in the outermost output's window; not positive if there are none
    ptrdiff_t end, to;  // the first pixel of the row from that end on; the outermost output
  };

  Run run;
  int channels, elements;  // elements: of the outputs whose windows lie inside the row
  ptrdiff_t from, to;      // the first of those windows, and its output
  int64_t pixels;          // of the row
  Edge left, right;

  static RunColumns of(Span columns, int channels, Run run, Strip strip) {
    const int64_t x0 = std::clamp(columns.first - run.start, strip.x0, strip.x1);
    const int64_t x1 = std::clamp(columns.end - run.start - run.length + 1, x0, strip.x1);
    const auto place = [channels](int64_t x) { return static_cast<ptrdiff_t>(x * channels); };
    return {
        run,
        channels,
        static_cast<int>((x1 - x0) * channels),
        place(x0 + run.start),
        place(x0 - strip.x0),
        columns.end - columns.first,
        {x0 - strip.x0, strip.x0 + run.start + run.length - columns.first, place(columns.first), 0},
        {strip.x1 - x1, columns.end - (strip.x1 - 1 + run.start), place(columns.end - 1), place(strip.width() - 1)}};
  }
};

}  // namespace zvp::morph
