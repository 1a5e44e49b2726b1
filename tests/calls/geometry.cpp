// Sub-pixel copies.
#include <zvpcv/geometry.h>

#include "calls/calls.h"

namespace zvp::calls {
namespace {

void giveScale(Call& c) {
  if (!c.hasNext()) return;
  c.give(c.in.oneIn(2) ? c.in.number(-2, 2) : c.in.number(c.in.isWild() ? -16 : -13, 20));
  c.rejects({-14, INT_MIN}, ErrBadArg);
}

void copy(Call& c) {
  const RoiSize size = c.in.size();
  Spans spans = region(size.width, size.height);
  if (!spans.empty()) addRegion(spans, {0, 0}, double(size.width) + 1, double(size.height) + 1);
  c.isFinite = true;
  c.image(spans, size.width);
  c.image(size);
  c.give(size, kSize);
  c.give(c.in.real());
  c.give(c.in.real());
  giveScale(c);
}

void intersect(Call& c) {
  const RoiSize srcSize = c.in.otherSize(80, 12), size = c.in.size();
  c.isFinite = true;
  c.image(srcSize);
  c.give(srcSize, kSize);
  c.image(size);
  c.give(size, kSize);
  const float x = c.in.real();
  c.give(Point32f{x, c.in.real()});
  const auto &min = c.scalar(), &max = c.scalar();
  giveScale(c);
  c.promise("ranges fit the window", [&min, &max, size] {
    const auto low = min.get<Point>(), high = max.get<Point>();
    return low.x >= 0 && low.x <= size.width && low.y >= 0 && low.y <= size.height && high.x < size.width &&
           high.y < size.height;
  });
}

const Export kExports[] = {
    ZVP_EXPORT(intersect, zvpiCopySubpixIntersect_16u32f_C1R),
    ZVP_EXPORT(intersect, zvpiCopySubpixIntersect_16u_C1R),
    ZVP_EXPORT(intersect, zvpiCopySubpixIntersect_32f_C1R),
    ZVP_EXPORT(intersect, zvpiCopySubpixIntersect_8u16u_C1R_Sfs),
    ZVP_EXPORT(intersect, zvpiCopySubpixIntersect_8u32f_C1R),
    ZVP_EXPORT(intersect, zvpiCopySubpixIntersect_8u_C1R),
    ZVP_EXPORT(copy, zvpiCopySubpix_16u32f_C1R),
    ZVP_EXPORT(copy, zvpiCopySubpix_16u_C1R),
    ZVP_EXPORT(copy, zvpiCopySubpix_32f_C1R),
    ZVP_EXPORT(copy, zvpiCopySubpix_8u16u_C1R_Sfs),
    ZVP_EXPORT(copy, zvpiCopySubpix_8u32f_C1R),
    ZVP_EXPORT(copy, zvpiCopySubpix_8u_C1R),
};

}  // namespace

Exports geometryExports() { return kExports; }

}  // namespace zvp::calls
