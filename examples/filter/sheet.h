// Contact sheets: several pictures of one size, side by side.
#ifndef ZVP_EXAMPLES_FILTER_SHEET_H
#define ZVP_EXAMPLES_FILTER_SHEET_H

#include "common/image.h"

namespace examples {

class Sheet {
 public:
  static constexpr int kColumns = 4;

  // A white sheet with room for that many tiles. Throws Error where that makes too large a picture.
  Sheet(RoiSize tile, int tiles);

  // Lays the picture on the tile of that number, counted from 0 along the rows.
  void place(int number, const GrayImage& picture);

  const ColourImage& picture() const { return picture_; }

 private:
  RoiSize tile_;
  ColourImage picture_;
};

}  // namespace examples

#endif
