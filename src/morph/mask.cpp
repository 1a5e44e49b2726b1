#include "morph/mask.h"

#include <algorithm>

namespace zvp::morph {

MaskShape analyseMask(const uint8_t* mask, RoiSize size, Point anchor) {
  bool oneRunPerRow = true, sameRuns = true, coverAnchor = true;
  int firstRow = -1, lastRow = -1, memberRows = 0, left = 0, right = 0, firstLength = 0, firstStart = 0;
  forEachRun(mask, size, [&](int row, int first, int length) {
    if (memberRows == 0) {
      firstRow = row;
      left = firstStart = first;
      right = first + length;
      firstLength = length;
    }
    oneRunPerRow = oneRunPerRow && row != lastRow;
    sameRuns = sameRuns && first == firstStart && length == firstLength;
    coverAnchor = coverAnchor && first <= anchor.x && anchor.x < first + length;
    left = std::min(left, first);
    right = std::max(right, first + length);
    memberRows += row != lastRow ? 1 : 0;
    lastRow = row;
    return true;
  });
  MaskMode mode = kGeneralMask;
  if (memberRows == 0) {
    mode = kEmptyMask;
  } else if (oneRunPerRow && sameRuns && lastRow - firstRow + 1 == memberRows) {
    mode = kRectangle;
  } else if (oneRunPerRow && coverAnchor && firstRow <= anchor.y && anchor.y <= lastRow) {
    mode = kRowSegments;
  }
  return {mode, firstRow, memberRows, left, right - left};
}

}  // namespace zvp::morph
