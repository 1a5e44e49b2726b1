// Erosion and dilation of a region. All arguments are valid, but for the mode of the element: with an unknown one
// nothing is written.
#pragma once

#include "morph/sink.h"

namespace zvp::morph {

struct Filter {
  Flavour flavour;
  StructuringElement element;
  RoiSize roi;
  BorderType border;
  uint8_t* work;  // a work buffer of the prepared mask
};

// The source may be the destination, with the same step and no bits; else they are apart. For differences `rows` is a
// second work buffer. In place and for differences the region is at most as wide as the mask was prepared for.
void applyFilter(Extremum extremum, const Filter& filter, Image<const uint8_t> src, const Output& output,
                 uint8_t* rows = nullptr);

}  // namespace zvp::morph
