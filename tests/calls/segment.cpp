// Speckle marking.
#include <zvpcv/segment.h>

#include "calls/calls.h"

namespace zvp::calls {
namespace {

void bufferSize(Call& c) {
  c.give(c.in.size(), kSize);
  c.rejects({RoiSize{50000, 50000}, RoiSize{INT_MAX, INT_MAX}}, ErrSize, kLater + 9);
  c.give(c.in.pick({DataType8u, DataType16u, DataType16s, DataType32f}));
  c.rejects({DataType8s, 0, 2, 6, 9, 11, 14, -1}, ErrDataType);
  c.number(1, 1, ErrNumChannels);
  c.scalar();
}

// Any step whose rows do not overlap: also negative ones, and ones that no element size divides.
void speckles(Call& c) {
  const RoiSize size = c.in.size();
  if (size.width > 1000 || size.height > 1000) return;  // no step is refused
  const int element = static_cast<int>(c.next().element.size);
  const int padding = int(c.in.integer(0, 2)) * (c.in.oneIn(4) ? 1 : element);
  const int distance = std::max(size.width, 0) * element + (c.in.isFar() ? Draw::kFarPadding : padding);
  c.imageWithAnyStep(region(size.width, size.height), c.in.oneIn(2) ? -distance : distance);
  c.give(size, kSize);
  c.give(c.in.integer(0, 3));
  c.give(c.in.number(0, 100));
  c.give(c.in.oneIn(4) ? c.in.integer(-128, 127) : c.in.integer(0, 2));
  c.number(1, 1, ErrNorm);
  c.scratch(c.bytesFrom("zvpiMarkSpecklesGetBufferSize", {size, DataType8u, 1}));
}

const Export kExports[] = {
    ZVP_EXPORT(bufferSize, zvpiMarkSpecklesGetBufferSize), ZVP_EXPORT(speckles, zvpiMarkSpeckles_16s_C1IR),
    ZVP_EXPORT(speckles, zvpiMarkSpeckles_16u_C1IR),       ZVP_EXPORT(speckles, zvpiMarkSpeckles_32f_C1IR),
    ZVP_EXPORT(speckles, zvpiMarkSpeckles_8u_C1IR),
};

}  // namespace

Exports segmentExports() { return kExports; }

}  // namespace zvp::calls
