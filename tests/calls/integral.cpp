// Integral images and rectangular standard deviations.
#include <zvpcv/integral.h>

#include "calls/calls.h"

namespace zvp::calls {
namespace {

void tables(Call& c) {
  const RoiSize size = c.in.size();
  const double margin = c.is("Tilted") ? 2 : 1;
  c.isFinite = c.is("_32f_");
  c.image(size);
  while (c.next().depth > 0) c.image(size.width + margin, size.height + margin);
  c.give(size, kSize);
  c.values();
}

// The corners of a rectangle as positions relative to the one it is placed at; only for valid rectangles.
std::vector<Corner> corners(Rect r, bool isTilted) {
  const double x = r.x, y = r.y, w = r.width, h = r.height;
  if (isTilted) return {{x + h, y}, {x, y + h}, {x + w + h, y + w}, {x + w, y + w + h}};
  return {{x, y}, {x + w, y}, {x, y + h}, {x + w, y + h}};
}

void deviation(Call& c) {
  const RoiSize size = c.in.size();
  const Rect r = c.in.rect();
  const bool isTilted = c.is("Tilted");
  Spans spans;
  if (r.x >= 0 && r.y >= 0 && r.width > 0 && r.height > 0)
    for (const Corner corner : corners(r, isTilted)) addRegion(spans, corner, size.width, size.height);
  double row = double(size.width) + r.x + r.width;
  if (isTilted) row += double(r.y) + r.height - 1;
  c.image(spans, row);
  c.image(spans, row);
  c.image(size);
  c.give(size, kSize);
  c.give(r);
  if (!c.in.isWild()) {
    const int right = r.x + r.width, bottom = r.y + r.height;  // which the steps are for
    c.rejects({Rect{-1, r.y, right + 1, r.height}, Rect{r.x, -1, r.width, bottom + 1}, Rect{right, r.y, 0, r.height},
               Rect{r.x, bottom, r.width, 0}, Rect{right + 9, bottom + 9, -9, -9}},
              ErrSize);
    c.rejects({Rect{INT_MAX, r.y, INT_MAX, 1}}, ErrStep, kStep);
  }
  if (c.hasNext()) c.give(c.in.oneIn(2) ? c.in.integer(-2, 4) : c.in.number(-70, 70));
}

const Export kExports[] = {
    ZVP_EXPORT(tables, zvpiIntegral_32f_C1R),
    ZVP_EXPORT(tables, zvpiIntegral_8u32f_C1R),
    ZVP_EXPORT(tables, zvpiIntegral_8u32s_C1R),
    ZVP_EXPORT(deviation, zvpiRectStdDev_32f_C1R),
    ZVP_EXPORT(deviation, zvpiRectStdDev_32s32f_C1R),
    ZVP_EXPORT(deviation, zvpiRectStdDev_32s_C1RSfs),
    ZVP_EXPORT(tables, zvpiSqrIntegral_8u32f64f_C1R),
    ZVP_EXPORT(tables, zvpiSqrIntegral_8u32s64f_C1R),
    ZVP_EXPORT(tables, zvpiSqrIntegral_8u32s_C1R),
    ZVP_EXPORT(tables, zvpiTiltedIntegral_8u32f_C1R),
    ZVP_EXPORT(tables, zvpiTiltedIntegral_8u32s_C1R),
    ZVP_EXPORT(deviation, zvpiTiltedRectStdDev_32f_C1R),
    ZVP_EXPORT(deviation, zvpiTiltedRectStdDev_32s32f_C1R),
    ZVP_EXPORT(deviation, zvpiTiltedRectStdDev_32s_C1RSfs),
    ZVP_EXPORT(tables, zvpiTiltedSqrIntegral_8u32f64f_C1R),
    ZVP_EXPORT(tables, zvpiTiltedSqrIntegral_8u32s64f_C1R),
    ZVP_EXPORT(tables, zvpiTiltedSqrIntegral_8u32s_C1R),
};

}  // namespace

Exports integralExports() { return kExports; }

}  // namespace zvp::calls
