// Element-wise arithmetic.
#include <zvpcv/arithmetic.h>

#include "calls/calls.h"

namespace zvp::calls {
namespace {

// Like elementwise(), but sources of 16 bits are checked before the other steps are.
void accumulate(Call& c) {
  const RoiSize size = c.in.size();
  while (c.next().depth > 0) c.image(size, c.next().element.size == 2 ? kLeadingStep : kStep);
  if (c.in.oneIn(8)) c.inPlace(0);
  c.give(size, kSize);
  c.values();
}

// Rows of the second source lie where the first one's do, whatever its own step says.
void average(Call& c) {
  const RoiSize size = c.in.size();
  c.share(c.image(size), Access::kRead);
  c.step(size.width);
  c.image(size);
  c.give(size, kSize);
  c.values();
}

const Export kExports[] = {
    ZVP_EXPORT(elementwise, zvpiAbsDiffC_16u_C1R),       ZVP_EXPORT(elementwise, zvpiAbsDiffC_32f_C1R),
    ZVP_EXPORT(elementwise, zvpiAbsDiffC_8u_C1R),        ZVP_EXPORT(elementwise, zvpiAbsDiff_16u_C1R),
    ZVP_EXPORT(elementwise, zvpiAbsDiff_32f_C1R),        ZVP_EXPORT(elementwise, zvpiAbsDiff_8u_C1R),
    ZVP_EXPORT(elementwise, zvpiAbsDiff_8u_C3R),         ZVP_EXPORT(accumulate, zvpiAddProduct_16u32f_C1IMR),
    ZVP_EXPORT(accumulate, zvpiAddProduct_16u32f_C1IR),  ZVP_EXPORT(accumulate, zvpiAddProduct_32f_C1IMR),
    ZVP_EXPORT(accumulate, zvpiAddProduct_32f_C1IR),     ZVP_EXPORT(accumulate, zvpiAddProduct_8s32f_C1IMR),
    ZVP_EXPORT(accumulate, zvpiAddProduct_8s32f_C1IR),   ZVP_EXPORT(accumulate, zvpiAddProduct_8u32f_C1IMR),
    ZVP_EXPORT(accumulate, zvpiAddProduct_8u32f_C1IR),   ZVP_EXPORT(accumulate, zvpiAddSquare_16u32f_C1IMR),
    ZVP_EXPORT(accumulate, zvpiAddSquare_16u32f_C1IR),   ZVP_EXPORT(accumulate, zvpiAddSquare_32f_C1IMR),
    ZVP_EXPORT(accumulate, zvpiAddSquare_32f_C1IR),      ZVP_EXPORT(accumulate, zvpiAddSquare_8s32f_C1IMR),
    ZVP_EXPORT(accumulate, zvpiAddSquare_8s32f_C1IR),    ZVP_EXPORT(accumulate, zvpiAddSquare_8u32f_C1IMR),
    ZVP_EXPORT(accumulate, zvpiAddSquare_8u32f_C1IR),    ZVP_EXPORT(accumulate, zvpiAddWeighted_16u32f_C1IMR),
    ZVP_EXPORT(accumulate, zvpiAddWeighted_16u32f_C1IR), ZVP_EXPORT(accumulate, zvpiAddWeighted_32f_C1IMR),
    ZVP_EXPORT(accumulate, zvpiAddWeighted_32f_C1IR),    ZVP_EXPORT(average, zvpiAddWeighted_32f_C1R),
    ZVP_EXPORT(accumulate, zvpiAddWeighted_8s32f_C1IMR), ZVP_EXPORT(accumulate, zvpiAddWeighted_8s32f_C1IR),
    ZVP_EXPORT(accumulate, zvpiAddWeighted_8u32f_C1IMR), ZVP_EXPORT(accumulate, zvpiAddWeighted_8u32f_C1IR),
    ZVP_EXPORT(accumulate, zvpiAdd_16u32f_C1IMR),        ZVP_EXPORT(accumulate, zvpiAdd_16u32f_C1IR),
    ZVP_EXPORT(accumulate, zvpiAdd_32f_C1IMR),           ZVP_EXPORT(accumulate, zvpiAdd_8s32f_C1IMR),
    ZVP_EXPORT(accumulate, zvpiAdd_8s32f_C1IR),          ZVP_EXPORT(accumulate, zvpiAdd_8u32f_C1IMR),
    ZVP_EXPORT(accumulate, zvpiAdd_8u32f_C1IR),
};

}  // namespace

Exports arithmeticExports() { return kExports; }

}  // namespace zvp::calls
