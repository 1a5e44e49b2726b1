// Distance transforms and flood fill.
#include <zvpcv/distance.h>

#include <cmath>

#include "calls/calls.h"

namespace zvp::calls {
namespace {

void chamfer(Call& c) {
  const RoiSize size = c.in.size();
  c.image(size);
  if (c.next().depth > 0) c.image(size);
  if (c.is("8u_C1R") && c.in.oneIn(8)) c.inPlace(0);
  c.give(size, kSize);
  const int count = c.is("5x5") ? 3 : 2;
  const int most = c.in.pick({3, 300});
  const Operand& weights = c.array(count);
  for (int i = 0; i < count; ++i)
    weights.put(std::size_t(i), c.in.number(c.in.wildly(16) ? 0 : 1, most) / (c.is("32f") ? 7.0 : 1.0));
  for (int i = 0; i < 2 * count; ++i) {
    const Operand& bad = c.add(Operand(c.in, Access::kRead, weights.element(), count, true));
    for (int k = 0; k < count; ++k) bad.put(std::size_t(k), k != i / 2 ? 1 : i % 2 == 0 ? 0 : c.is("32f") ? NAN : -1);
    c.rejects({bad.start()}, ErrMetric);
  }
}

void trueDistance(Call& c) {
  const RoiSize size = c.in.size();
  c.image(size);
  c.image(size);
  c.give(size, kSize);
  c.scratch(c.bytesFrom("zvpiTrueDistanceTransformGetBufferSize_8u32f_C1R", {size}));
}

void weights(Call& c) {
  c.give(c.in.pick({3, 5}));
  c.rejects({2, 4, 6, 0, -3, INT_MAX}, ErrSize, kSize);
  const bool large = c.argument(0).as<int>() == 5;
  c.number(0, 2, ErrBadArg);
  c.array(large ? 3 : 2);
}
void weightsOfType(Call& c) {
  const int type = c.in.pick({30, 31, 32, 50, 51, 52});
  c.give(type);
  c.rejects({33, 55, 39, -1, INT_MAX}, ErrBadArg, kNull - 1);
  c.rejects({0, 42, 320, 502, -30}, ErrSize, kSize);
  c.array(type >= 50 ? 3 : 2);
}

void fill(Call& c) {
  const RoiSize size = c.in.size();
  c.image(size);
  c.give(size, kSize);
  const int x = c.in.number(0, std::max(size.width, 1) - 1);
  const Point seed{x, c.in.number(0, std::max(size.height, 1) - 1)};
  c.give(seed);
  c.rejects({Point{-1, 0}, Point{size.width, 0}, Point{0, -1}, Point{0, size.height}, Point{INT_MAX, INT_MIN}},
            ErrOutOfRange);
  for (int i = c.is("_Range") || c.is("_Grad") ? 3 : 1; i > 0; --i) c.channels() == 3 ? (void)c.array(3) : c.value();
  c.scalar();
  c.scratch(c.bytesFrom(c.is("_Grad") ? "zvpiFloodFillGetSize_Grad" : "zvpiFloodFillGetSize", {size}));
}

const Export kExports[] = {
    ZVP_EXPORT(chamfer, zvpiDistanceTransform_3x3_8u16u_C1R),
    ZVP_EXPORT(chamfer, zvpiDistanceTransform_3x3_8u32f_C1R),
    ZVP_EXPORT(chamfer, zvpiDistanceTransform_3x3_8u_C1IR),
    ZVP_EXPORT(chamfer, zvpiDistanceTransform_3x3_8u_C1R),
    ZVP_EXPORT(chamfer, zvpiDistanceTransform_5x5_8u16u_C1R),
    ZVP_EXPORT(chamfer, zvpiDistanceTransform_5x5_8u32f_C1R),
    ZVP_EXPORT(chamfer, zvpiDistanceTransform_5x5_8u_C1IR),
    ZVP_EXPORT(chamfer, zvpiDistanceTransform_5x5_8u_C1R),
    ZVP_EXPORT(query, zvpiFloodFillGetSize),
    ZVP_EXPORT(query, zvpiFloodFillGetSize_Grad),
    ZVP_EXPORT(fill, zvpiFloodFill_4Con_16u_C1IR),
    ZVP_EXPORT(fill, zvpiFloodFill_4Con_16u_C3IR),
    ZVP_EXPORT(fill, zvpiFloodFill_4Con_32f_C1IR),
    ZVP_EXPORT(fill, zvpiFloodFill_4Con_32f_C3IR),
    ZVP_EXPORT(fill, zvpiFloodFill_4Con_8u_C1IR),
    ZVP_EXPORT(fill, zvpiFloodFill_4Con_8u_C3IR),
    ZVP_EXPORT(fill, zvpiFloodFill_8Con_16u_C1IR),
    ZVP_EXPORT(fill, zvpiFloodFill_8Con_16u_C3IR),
    ZVP_EXPORT(fill, zvpiFloodFill_8Con_32f_C1IR),
    ZVP_EXPORT(fill, zvpiFloodFill_8Con_32f_C3IR),
    ZVP_EXPORT(fill, zvpiFloodFill_8Con_8u_C1IR),
    ZVP_EXPORT(fill, zvpiFloodFill_8Con_8u_C3IR),
    ZVP_EXPORT(fill, zvpiFloodFill_Grad4Con_16u_C1IR),
    ZVP_EXPORT(fill, zvpiFloodFill_Grad4Con_16u_C3IR),
    ZVP_EXPORT(fill, zvpiFloodFill_Grad4Con_32f_C1IR),
    ZVP_EXPORT(fill, zvpiFloodFill_Grad4Con_32f_C3IR),
    ZVP_EXPORT(fill, zvpiFloodFill_Grad4Con_8u_C1IR),
    ZVP_EXPORT(fill, zvpiFloodFill_Grad4Con_8u_C3IR),
    ZVP_EXPORT(fill, zvpiFloodFill_Grad8Con_16u_C1IR),
    ZVP_EXPORT(fill, zvpiFloodFill_Grad8Con_16u_C3IR),
    ZVP_EXPORT(fill, zvpiFloodFill_Grad8Con_32f_C1IR),
    ZVP_EXPORT(fill, zvpiFloodFill_Grad8Con_32f_C3IR),
    ZVP_EXPORT(fill, zvpiFloodFill_Grad8Con_8u_C1IR),
    ZVP_EXPORT(fill, zvpiFloodFill_Grad8Con_8u_C3IR),
    ZVP_EXPORT(fill, zvpiFloodFill_Range4Con_16u_C1IR),
    ZVP_EXPORT(fill, zvpiFloodFill_Range4Con_16u_C3IR),
    ZVP_EXPORT(fill, zvpiFloodFill_Range4Con_32f_C1IR),
    ZVP_EXPORT(fill, zvpiFloodFill_Range4Con_32f_C3IR),
    ZVP_EXPORT(fill, zvpiFloodFill_Range4Con_8u_C1IR),
    ZVP_EXPORT(fill, zvpiFloodFill_Range4Con_8u_C3IR),
    ZVP_EXPORT(fill, zvpiFloodFill_Range8Con_16u_C1IR),
    ZVP_EXPORT(fill, zvpiFloodFill_Range8Con_16u_C3IR),
    ZVP_EXPORT(fill, zvpiFloodFill_Range8Con_32f_C1IR),
    ZVP_EXPORT(fill, zvpiFloodFill_Range8Con_32f_C3IR),
    ZVP_EXPORT(fill, zvpiFloodFill_Range8Con_8u_C1IR),
    ZVP_EXPORT(fill, zvpiFloodFill_Range8Con_8u_C3IR),
    ZVP_EXPORT(weightsOfType, zvpiGetDistanceTransformMask),
    ZVP_EXPORT(weights, zvpiGetDistanceTransformMask_32f),
    ZVP_EXPORT(weights, zvpiGetDistanceTransformMask_32s),
    ZVP_EXPORT(query, zvpiTrueDistanceTransformGetBufferSize_8u32f_C1R),
    ZVP_EXPORT(trueDistance, zvpiTrueDistanceTransform_8u32f_C1R),
};

}  // namespace

Exports distanceExports() { return kExports; }

}  // namespace zvp::calls
