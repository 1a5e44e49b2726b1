// Local peaks.
#include <zvpcv/features.h>

#include "calls/calls.h"

namespace zvp::calls {
namespace {

void peaks(Call& c) {
  RoiSize size = c.in.size();
  if (!c.in.isWild()) size = {std::max(size.width, 2), std::max(size.height, 2)};
  const int bytes = c.bytesFrom("zvpiFindPeaks3x3GetBufferSize" + c.suffix(), {size.width});
  const int capacity = c.in.number(1, 200);
  if (capacity > 200) return;  // no memory holds so many peaks
  const int border = c.in.number(1, std::clamp(std::min(size.width, size.height) / 2, 1, 6));
  c.image(size);
  c.give(size, kSize);
  c.value();
  c.array(capacity);
  c.give(capacity);
  c.rejects({0, -1, INT_MIN}, ErrSize, kSize);
  c.scalar();
  c.number(0, 1, ErrBadArg);
  c.give(border);
  c.rejects({0, -1, INT_MIN, std::min(size.width, size.height) / 2 + 1, INT_MAX}, ErrSize, kSize);
  c.scratch(bytes);
}

const Export kExports[] = {
    ZVP_EXPORT(query, zvpiFindPeaks3x3GetBufferSize_32f_C1R),
    ZVP_EXPORT(query, zvpiFindPeaks3x3GetBufferSize_32s_C1R),
    ZVP_EXPORT(peaks, zvpiFindPeaks3x3_32f_C1R),
    ZVP_EXPORT(peaks, zvpiFindPeaks3x3_32s_C1R),
};

}  // namespace

Exports featuresExports() { return kExports; }

}  // namespace zvp::calls
