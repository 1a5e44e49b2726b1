// A ring of filtered rows for every distinct run of a mask.
#pragma once

#include "core/rows.h"
#include "morph/region.h"

namespace zvp::morph {

// `depth` rows for every run, each `stride` bytes behind the one before.
struct Ring {
  uint8_t* rows = nullptr;
  int64_t stride = 0;
  int depth = 0;

  uint8_t* row(int run, int position) const { return rows + (int64_t{run} * depth + position) * stride; }
};

// Positions of image rows in a ring, for rows of ascending index; rows that do not exist are the nearest ones.
class RingCursor {
 public:
  RingCursor(Span rows, int depth, int64_t row) : rows_(rows), row_(rows.clamp(row)), depth_(depth) {
    position_ = static_cast<int>(static_cast<uint32_t>(row_ - rows.first) % static_cast<uint32_t>(depth));
  }

  // At most `depth` rows behind the one before.
  int at(int64_t row) {
    const int64_t next = rows_.clamp(row);
    position_ += static_cast<int>(next - row_);
    if (position_ >= depth_) position_ -= depth_;
    row_ = next;
    return position_;
  }

 private:
  Span rows_;
  int64_t row_;
  int depth_, position_;
};

}  // namespace zvp::morph
